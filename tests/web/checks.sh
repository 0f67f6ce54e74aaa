# What each web server of deploy/ must do, as functions check_NAME; sourced by script/webservers.
# They find the server at $url and $tls_url, its site at $site and what is peculiar to it in $chunked_status.

soap_type='text/xml; charset=utf-8'
sent='<SendStdMessageResult>OK job'
limit=16777216

complaints=()

# expect WHAT ACTUAL WANTED
expect() { [[ $2 == "$3" ]] || complaints+=("$1: $2 instead of $3"); }
# expect_text TEXT: in the last answer
expect_text() {
    grep -qF -e "$1" "$work/answer" || complaints+=("$1 is not in: $(head -c 300 "$work/answer" | tr '\n' ' ')")
}

# ask CURL-ARGUMENT...: sets seen to the status and the type of the answer, which lies in $work/answer, and to what
# else went wrong: an answer that was cut off has its status, too.
ask() {
    : >"$work/answer"
    seen=$(curl --noproxy '*' -sS -m 30 -o "$work/answer" -w '%{http_code} %{content_type}' "$@" \
        2>>"$work/curl.err") || seen+=" curl: $?"
}
post() { ask -H 'Content-Type: text/xml' --data-binary "@$1" "${@:2}"; }

# How often the program was started.
starts() { grep -c 'STARTED' "$site/logs/soap_log.txt" || true; }

# Fails, too, where a proxy of the server's environment is asked to reach the paging server.
check_message() {
    post "$work/requests/SendStdMessage.xml" -H 'Proxy: http://127.0.0.1:1' "$url"
    expect answer "$seen" "200 $soap_type"
    expect_text "$sent"
}

check_get() {
    ask "$url"
    expect answer "$seen" "200 $soap_type"
    expect_text '<faultstring>2004 Invalid command</faultstring>'
}

check_description() {
    ask "${url%/cgi-bin/*}/quorbel.wsdl"
    expect answer "$seen" "200 $soap_type"
    cmp -s "$work/answer" "$site/web/quorbel.wsdl" || complaints+=("not the site's file")

    # Where toolkits look for it; a client that posts there means the service.
    ask "$url?WSDL"
    expect 'answer to ?WSDL' "$seen" "200 $soap_type"
    cmp -s "$work/answer" "$site/web/quorbel.wsdl" || complaints+=("?WSDL: not the site's file")
    post "$work/requests/SendStdMessage.xml" "$url?wsdl"
    expect_text "$sent"
}

# The page for browsers, by both its addresses, under its policy.
check_page() {
    local path
    for path in / /quorbel.html; do
        ask "${url%/cgi-bin/*}$path"
        expect "answer to $path" "$seen" '200 text/html; charset=utf-8'
        cmp -s "$work/answer" "$site/web/index.html" || complaints+=("$path: not the site's page")
        curl -sS -m 30 -o "$work/answer" -D "$work/headers" "${url%/cgi-bin/*}$path"
        grep -qi "^content-security-policy: default-src 'none';" "$work/headers" || complaints+=("$path: no policy")
    done
}

# The access log says who asked, with an id: the client's or one of the server's own.
check_access_log() {
    local log=$site/web-logs/$server-access.log line='^127\.0\.0\.1 .*GET /cgi-bin/quorbel-soap .* id='
    ask -H 'X-Request-Id: client-4711' "$url"
    wait_for grep -qE "${line}client-4711\$" "$log" || complaints+=("the client's id is not in $log")
    ask "$url"
    wait_for grep -qE "$line[0-9A-Za-z@_-]{16,}\$" "$log" || complaints+=("no id of the server's own in $log")
}

# The program's delivery journal names the same id and the same client.
check_journal() {
    local journal=$site/logs/deliveries_log.txt
    post "$work/requests/SendStdMessage.xml" -H 'X-Request-Id: journal-4711' "$url"
    expect_text "$sent"
    grep -q ' id=journal-4711 .* outcome=answered .* client=127\.0\.0\.1 ' "$journal" ||
        complaints+=("not in the journal, whose end is: $(tail -n 1 "$journal")")
}

# Where the servers' user can plant a link, root must neither write nor make anything.
check_root_writes() {
    local folder found
    ((EUID == 0)) || return 0
    found=$(find "$site/logs" "$site/spool" -user root)
    [[ ! $found ]] || complaints+=("root made $found")
    while read -r folder; do
        if setpriv --reuid "$owner" --regid "$owner" --clear-groups test -w "$folder"; then
            complaints+=("$folder belongs to $owner, and root writes there")
        fi
    done < <(grep -hiE '^[^#]*(pid|log|sock|runtime|temp_path)' "$site/$server.conf" "$site/snippets/$server"* |
        grep -oE "$site[^\"; ]*" | grep -vE '/cgi-bin/|/soapd.sock' | xargs -n 1 dirname | sort -u)
}

# A server that includes the snippet serves its own pages as before, and nothing of the site.
check_others() {
    local path
    ask "${url%/cgi-bin/*}/"
    [[ $seen == '200 text/html'* ]] || complaints+=("its own page: $seen")
    expect_text 'our own page'
    for path in /config/dir /web/cgi-bin/quorbel-soap /cgi-bin/quorbel-soap/x /quorbel.wsdl/; do
        ask --path-as-is "${url%/cgi-bin/*}$path"
        [[ $seen == 40[34]* ]] || complaints+=("$path: $seen")
    done
}

check_hidden() {
    local path before
    before=$(starts)
    for path in /index.html /config/dir /cgi-bin/../config/dir /cgi-bin/ /cgi-bin/quorbel-soap/x /quorbel.wsdl/; do
        ask --path-as-is "${url%/cgi-bin/*}$path"
        [[ $seen == 40[34]* ]] || complaints+=("$path: $seen")
    done
    expect 'starts of the program' "$(starts)" "$before"
}

check_chunked() {
    post "$work/requests/SendStdMessage.xml" -H 'Transfer-Encoding: chunked' "$url"
    expect status "${seen%% *}" "$chunked_status"
    [[ $chunked_status != 200 ]] || expect_text "$sent"
}

# padded SIZE: a request of that many bytes
padded() {
    cat "$work/requests/SendStdMessage.xml"
    printf '%*s' $(($1 - $(stat -c %s "$work/requests/SendStdMessage.xml"))) ''
}

check_limit() {
    local before size
    padded $limit >"$work/largest"
    padded $((limit + 1)) >"$work/too-large"
    before=$(starts)
    for size in 99999999999 99999999999999999999999; do
        ask -H "Content-Length: $size" -H 'Expect:' --data-binary x "$url"
        [[ $seen == 4[01][03]* ]] || complaints+=("$size bytes: $seen")
    done
    post "$work/too-large" "$url"
    expect 'answer to one byte too much' "${seen%% *}" 413
    expect 'starts of the program' "$(starts)" "$before"

    post "$work/largest" "$url"
    expect_text "$sent"
    post "$work/too-large" -H 'Transfer-Encoding: chunked' "$url"
    [[ $seen == 41[13]* ]] || complaints+=("one byte too much in chunks: $seen")
}

check_tls() {
    post "$work/requests/SendStdMessage.xml" --cacert "$work/ca.pem" "$tls_url"
    expect answer "$seen" "200 $soap_type"
    expect_text "$sent"
}

check_environment() {
    local variable
    install -m 755 "$root/tests/web/show-environment.sh" "$site/web/cgi-bin/quorbel-soap"
    ask -H 'Proxy: http://127.0.0.1:1' -H 'X-Request-Id: client-4711' "$url"
    for variable in REQUEST_METHOD=GET REMOTE_ADDR=127.0.0.1 HTTP_X_REQUEST_ID=client-4711; do expect_text "$variable"; done
    for variable in "${hostile[@]%%=*}"; do
        if grep -q "^$variable=" "$work/answer"; then complaints+=("$variable reached the program"); fi
    done
    new_site "$site"
}

# An answer that the program gives before it has read the request must arrive whole, too.
check_early_answer() {
    local body
    mv "$site/config/dir" "$site/config/away"
    for body in "$work/requests/SendStdMessage.xml" "$work/largest"; do
        post "$body" "$url"
        expect answer "$seen" "200 $soap_type"
        expect_text '<faultstring>2301 Invalid log directory</faultstring>'
    done
    mv "$site/config/away" "$site/config/dir"
}

# The limit of the configuration is the one that ends a request, and it is longer than two paging servers' time.
check_timeout() {
    grep -q '\b660' "$site/snippets/$server-$form.conf" || complaints+=("no limit of 660 seconds")
    stop_groups
    start_web_server "$server" "$site" 's/\b660/1/'
    post "$work/slow.xml" "$url"
    expect 'answer to a request that takes too long' "${seen%% *}" 504
}
