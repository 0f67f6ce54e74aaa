# Shared by the scripts of this folder; sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
PATH=$PATH:/usr/sbin:/sbin # lighttpd stands there, which is not in every user's path

# Each argument on a line of its own.
say() { printf '%s\n' "$@"; }

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# The comment at the head of the calling script, which is its manual.
usage() {
    sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"
    exit "$1"
}

# Asks the given command 20 times a second, for ten seconds at most, until it says yes.
wait_for() {
    local tries
    for ((tries = 0; tries < 200; tries++)); do
        if "$@"; then return 0; fi
        sleep 0.05
    done
    return 1
}

failures=0
# must WHAT COMMAND...: says how that went, and counts failures.
must() {
    if "${@:2}" >>"$work/checks.log" 2>&1; then
        say "  ok     $1"
    else
        say "  WRONG  $1"
        failures=$((failures + 1))
    fi
}

# newer_package PACKAGE TREE NEWER: a package that is newer and comes with other samples, made in the directory TREE.
newer_package() {
    dpkg-deb -R "$1" "$2"
    sed -i 's/^Version: .*/&+newer/' "$2/DEBIAN/control"
    find "$2/usr/local/corvane/share/deploy" -type f ! -name '*.lua' -exec sed -i '$a # newer' {} +
    dpkg-deb --root-owner-group -b "$2" "$3" >/dev/null
}
