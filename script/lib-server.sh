# A site's web server and its stand-in paging server, for script/demo and script/server; sourced, not run.
# Both listen on the loopback address only and end with stop_servers.

servers=() # process ids
form=cgi # or resident: how the web server reaches the program

stop_servers() {
    ((${#servers[@]})) || return 0
    kill "${servers[@]}" 2>/dev/null || true
    wait "${servers[@]}" 2>/dev/null || true
    servers=()
}

# start_standin WORK: prints its commands into WORK/standin.log; sets server_url.
start_standin() {
    local port_file=$1/standin.port
    rm -f "$port_file"
    "$root/build/release/bin/paging-standin" --port-file "$port_file" >"$1/standin.log" 2>&1 &
    servers+=($!)
    wait_for test -s "$port_file" || fail "the stand-in paging server did not start, see $1/standin.log"
    server_url=http://127.0.0.1:$(<"$port_file")/cgi/cmd
}

# start_web SITE PORT: 0 takes a free port; sets web_url and wsdl_url.
start_web() {
    local site=$1 wanted=$2 port tries
    for ((tries = 0; tries < 20; tries++)); do
        port=$((wanted ? wanted : 20000 + RANDOM % 10000)) # below the ports the kernel hands out itself
        if try_web "$site" "$port"; then
            web_url=http://127.0.0.1:$port/cgi-bin/quorbel-soap
            wsdl_url=http://127.0.0.1:$port/quorbel.wsdl
            return 0
        fi
        if ((wanted)); then fail "lighttpd cannot listen on port $port: $(tail -n 1 "$site/web-logs/stderr")"; fi
    done
    fail "lighttpd did not start, see $site/web-logs/stderr"
}

# web_config FILE SITE PORT TLS_PORT CERTIFICATE [USER]: a file of deploy/ for SITE on the loopback address, served as
# USER or, without one, as whoever starts the server. What the server writes lies in SITE/web-logs and SITE/run.
web_config() {
    local user="/^ *(server\.(user|group)name|[Uu]ser|[Gg]roup)\\b/d"
    if [[ ${6-} ]]; then user="s|www-data|$6|"; fi
    sed -E "$user
        s|/usr/local/corvane/share/deploy/snippets/|@SITE@/snippets/|
        s|/usr/local/corvane|@SITE@|g
        s|/var/log/quorbel-web|@SITE@/web-logs|
        s|/run/quorbel|@SITE@/run/quorbel|
        s|\"/run\"|\"@SITE@/run\"|
        s|/var/lib/nginx/|@SITE@/run/|
        s|/etc/ssl/private/quorbel.pem|$5|
        s|^(server.port = )80$|\1$3|
        s|0\.0\.0\.0:80\b|127.0.0.1:$3|
        s|(0\.0\.0\.0\|\*):443\b|127.0.0.1:$4|
        s|0\.0\.0\.0|127.0.0.1|
        s|@SITE@|$2|g" "$root/deploy/$1"
}

# prepare_web SITE [USER]: the folders and the included files that web_config names.
prepare_web() {
    local name
    mkdir -p "$1/run" "$1/snippets"
    "$1/bin/quorbel-setup" --user "${2:-$(id -un)}" --web-logs "$1/web-logs" >/dev/null
    for name in "$root"/deploy/snippets/*; do
        web_config "snippets/${name##*/}" "$1" - - - "${2-}" >"$1/snippets/${name##*/}"
    done
}

# start_resident SITE: the resident program, where the web server's configuration looks for it.
start_resident() {
    mkdir -p "$1/run/quorbel"
    env -i "$1/bin/quorbel-soapd" --site "$1" --socket "$1/run/quorbel/soapd.sock" 2>"$1/run/soapd.log" &
    servers+=($!)
    wait_for test -S "$1/run/quorbel/soapd.sock" || fail "the resident program did not start, see $1/run/soapd.log"
}

try_web() {
    local site=$1 pid
    prepare_web "$site"
    web_config lighttpd.conf "$site" "$2" - - | sed "/snippets/s/-cgi/-$form/" >"$site/lighttpd.conf"
    rm -f "$site/run/quorbel-lighttpd.pid"
    lighttpd -D -f "$site/lighttpd.conf" 2>>"$site/web-logs/stderr" &
    pid=$!
    wait_for web_decided "$site" "$pid" || true
    if web_listens "$site" "$pid"; then
        servers+=("$pid")
        return 0
    fi
    kill "$pid" 2>/dev/null || true
    wait "$pid" || true
    return 1
}

# lighttpd writes its process id once it listens. A taken port would answer a mere connection attempt too.
web_listens() { [[ -s $1/run/quorbel-lighttpd.pid && $(<"$1/run/quorbel-lighttpd.pid") == "$2" ]]; }
web_decided() { web_listens "$@" || ! kill -0 "$2" 2>/dev/null; }

# fill_requests DIR: copies of the sample requests that name the stand-in as their paging server.
fill_requests() {
    local sample
    mkdir -p "$1"
    for sample in "$root"/script/requests/*.xml; do
        sed "s|@URL@|$server_url|g" "$sample" >"$1/${sample##*/}"
    done
}

# fresh_work NAME: sets work to the empty directory build/NAME, which this process has to itself.
fresh_work() {
    work=$root/build/$1
    mkdir -p "$root/build"
    exec {work_lock}>"$work.lock"
    flock -n "$work_lock" || fail "another script/$1 of this checkout is running"
    rm -rf "$work"
    mkdir -p "$work"
}
