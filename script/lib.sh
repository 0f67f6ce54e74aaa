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
