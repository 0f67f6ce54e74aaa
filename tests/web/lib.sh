# Starts the servers of deploy/ for script/webservers; sourced after script/lib.sh and script/lib-server.sh.
# Everything listens on the loopback address and ends with stop_groups.

owner=www-data # as whom the servers serve when root starts them
host_folder= # or where the configurations of servers lie that serve other things, too
as_owner=()
if ((EUID == 0)); then as_owner=(--user "$owner"); fi

# What must not reach the program, although whoever starts the web server has it in his environment.
hostile=(
    {http,https,all}_proxy=http://127.0.0.1:1 {HTTP,HTTPS,ALL}_PROXY=http://127.0.0.1:1
    {no_proxy,NO_PROXY}=none.example SSL_CERT_FILE=/none SSL_CERT_DIR=/none CURL_CA_BUNDLE=/none
    OPENSSL_CONF=/none LD_LIBRARY_PATH=/none LD_BIND_NOW=1
)

groups=() # process groups, each a server with the programs that it runs

# in_background LOG COMMAND...: in a process group of its own; sets group.
in_background() {
    env "${hostile[@]}" setsid "${@:2}" >>"$1" 2>&1 </dev/null &
    group=$!
    groups+=("$group")
}

# end_group SIGNAL GROUP
end_group() {
    kill "-$1" -- "-$2" 2>/dev/null || true
    wait "$2" 2>/dev/null || true
}

# stop_groups [FIRST]: all, or those from the FIRST one on.
stop_groups() {
    local first=${1:-0} group
    for group in "${groups[@]:first}"; do end_group TERM "$group"; done
    groups=("${groups[@]:0:first}")
}

# free_port: one below those that the kernel hands out itself, and that nobody listens on now.
free_port() {
    local port
    while port=$((20000 + RANDOM % 10000)) && (: <"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do :; done
    echo "$port"
}

# make_certificate: the servers' certificate in $work/server.pem, whose authority is $work/ca.pem.
make_certificate() {
    openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 \
        -keyout "$work/key.pem" -out "$work/ca.pem" 2>"$work/openssl.err" || fail "$(<"$work/openssl.err")"
    cat "$work/ca.pem" "$work/key.pem" >"$work/server.pem"
}

# new_site DIR [LEVEL]: one that the servers' user can write; it logs everything unless told otherwise.
new_site() {
    "$root/script/site" --level "${2:-trace}" "${as_owner[@]}" "$1"
    prepare_web "$1" "${as_owner[1]-}"
}

# fill NAME SITE PORT TLS_PORT: a configuration of deploy/ that serves HTTPS, too.
fill() {
    local user=
    if ((EUID == 0)); then user=$owner; fi
    web_config "$1" "$2" "$3" "$4" "$work/server.pem" "$user" | sed 's|#tls ||'
}

# run_resident SITE: the resident program, where the web servers' configurations look for it.
run_resident() {
    local as=()
    if ((EUID == 0)); then as=(setpriv --reuid "$owner" --regid "$owner" --clear-groups); fi
    install -d ${as_owner[1]:+-o "$owner"} "$1/run/quorbel"
    in_background "$1/web-logs/soapd" env -i "${as[@]}" "$1/bin/quorbel-soapd" --site "$1" --socket "$1/run/quorbel/soapd.sock"
    wait_for test -S "$1/run/quorbel/soapd.sock"
}

# run_NAME SITE: starts a server as its file in deploy/ says, with the configuration SITE/NAME.conf.
run_lighttpd() {
    in_background "$1/web-logs/stderr" env -i PATH=/usr/sbin:/usr/bin:/bin lighttpd -D -f "$1/lighttpd.conf"
}
run_apache() {
    in_background "$1/web-logs/stderr" env -i PATH=/usr/sbin:/usr/bin:/bin apache2 -D FOREGROUND -f "$1/apache.conf"
}
run_nginx() {
    [[ $form == resident ]] || run_fcgiwrap "$1"
    in_background "$1/web-logs/stderr" nginx -e "$1/web-logs/nginx.log" -c "$1/nginx.conf" -g 'daemon off;'
}

run_fcgiwrap() {
    fill quorbel-fcgiwrap "$1" - - >"$1/quorbel-fcgiwrap"
    in_background "$1/web-logs/stderr" sh "$1/quorbel-fcgiwrap"
    wait_for test -S "$1/run/quorbel-fcgiwrap.sock"
}

set_urls() {
    url=http://127.0.0.1:$1/cgi-bin/quorbel-soap
    tls_url=https://127.0.0.1:$2/cgi-bin/quorbel-soap
}

answers() { curl --noproxy '*' -s -m 10 -o "$work/answer" "$url"; }
answers_or_ended() { answers || ! kill -0 "$group" 2>/dev/null; }

# start_web_server NAME SITE [SED COMMAND]: with its configuration changed by the command, what it includes too; sets
# port, url, tls_url and group. A port that somebody took since it was chosen ends the server, then another one is tried.
start_web_server() {
    local tries tls_port others=${#groups[@]}
    for tries in 1 2 3; do
        port=$(free_port) tls_port=$(free_port)
        set_urls "$port" "$tls_port"
        fill "$host_folder$1.conf" "$2" "$port" "$tls_port" | sed "s/#$form //; /snippets/s/-cgi/-$form/" >"$2/$1.conf"
        if (($# > 2)); then sed -i "$3" "$2/$1.conf" "$2"/snippets/*; fi
        if try_web_server "$1" "$2"; then return 0; fi
        stop_groups "$others"
    done
    cat "$2"/web-logs/{stderr,"$1.log"} >&2 || true
    fail "$1 did not start"
}

try_web_server() {
    if [[ $form == resident ]]; then run_resident "$2"; fi
    "run_$1" "$2"
    wait_for answers_or_ended && answers && kill -0 "$group" 2>/dev/null
}
