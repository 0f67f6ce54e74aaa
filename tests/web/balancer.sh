# Two nodes behind the load balancer of deploy/haproxy.cfg: functions check_balancer_NAME, run in this order;
# sourced by script/webservers.

concurrent=8 # requests at a time
node_limit=3 # of them in a node; the others wait

nodes_command() { socat -t 5 stdio "$work/haproxy.sock" <<<"$1"; }
# node_is NUMBER STATUS
node_is() { nodes_command 'show stat' | grep -q "^nodes,node$1,.*,$2,"; }
node_is_idle() { [[ $(nodes_command 'show stat' | grep "^nodes,node$1," | cut -d, -f 5) == 0 ]]; }

node_groups=()
node_ports=()

start_balancer() {
    local number balancer_port tls_port
    for number in 1 2; do
        new_site "$work/node$number"
        start_web_server lighttpd "$work/node$number" 's|#balancer ||; s|10\.0\.0\.1\b|127.0.0.1|'
        node_groups[number]=$group
        node_ports[number]=$port
    done
    balancer_port=$(free_port) tls_port=$(free_port)
    fill haproxy.cfg - "$balancer_port" "$tls_port" |
        sed "s|10.0.0.11:80|127.0.0.1:${node_ports[1]}|; s|10.0.0.12:80|127.0.0.1:${node_ports[2]}|" |
        sed "s|/run/haproxy/admin.sock|$work/haproxy.sock|; s|inter 5s|inter 500ms|; s|maxconn 100|maxconn $node_limit|" \
            >"$work/haproxy.cfg"
    in_background "$work/haproxy.log" haproxy -db -f "$work/haproxy.cfg"
    set_urls "$balancer_port" "$tls_port"
    wait_for answers || fail "haproxy did not start, see $work/haproxy.log"
}

# restart_node NUMBER: where it was.
restart_node() {
    run_lighttpd "$work/node$1"
    node_groups[$1]=$group
}

# load FIRST LAST: a request for each number, which is its message. The statuses go into $work/statuses, a line
# "NUMBER STATUS" for each, and the answers into $work/answers.
load() {
    local request="<SendStdMessage><szURL>$slow_url</szURL><szRecipientName>night</szRecipientName>"
    request+='<szMessage>number {}.</szMessage></SendStdMessage>'
    rm -rf "$work/answers"
    mkdir "$work/answers"
    seq "$1" "$2" | xargs -P $concurrent -I '{}' curl --noproxy '*' -s -m 60 -o "$work/answers/{}" \
        -w '{} %{http_code}\n' -d "$request" "$url" >"$work/statuses" || true
}
answered() { [[ -f $work/statuses ]] && (($(wc -l <"$work/statuses") >= $1)); }

# expect_each_once REQUESTS: each was answered and its command was sent once, or it was not and the command was
# sent once at most. Sets lost to the number of the latter.
expect_each_once() {
    local number status times
    lost=0
    expect requests "$(wc -l <"$work/statuses")" "$1"
    while read -r number status; do
        times=$(grep -c "message=number $number\.$" "$work/balanced.log" || true)
        if [[ $status == 200 ]] && grep -qF "$sent" "$work/answers/$number"; then
            expect "commands of request $number" "$times" 1
        else
            lost=$((lost + 1))
            ((times <= 1)) || complaints+=("request $number reached the paging server $times times")
        fi
    done <"$work/statuses"
}

check_balancer_tls() { check_tls; }

# The node that served it knows the client's address and the id that the balancer gave.
check_balancer_client() {
    local id line='^127\.0\.0\.2 .*POST .* id='
    post "$work/requests/SendStdMessage.xml" --interface 127.0.0.2 "$url"
    expect_text "$sent"
    wait_for grep -qE "$line" "$work"/node?/web-logs/lighttpd-access.log || complaints+=('no node knows the client')
    id=$(sed -nE "s/$line//p" "$work"/node?/web-logs/lighttpd-access.log)
    grep -qE " id=$id .* client=127\.0\.0\.2 " "$work"/node?/logs/deliveries_log.txt ||
        complaints+=("no node's journal has the client and the id $id")
    grep -qF "{$id}" "$work/haproxy.log" || complaints+=("the id $id is not in HAProxy's log")
}

# A node that its operator takes out first loses nothing.
check_balancer_maintenance() {
    local requests
    rm -f "$work/statuses"
    load 1 150 &
    requests=$!
    wait_for answered 30 || complaints+=("too slow")
    nodes_command 'set server nodes/node1 state drain' >/dev/null
    wait_for node_is_idle 1 || complaints+=("node1 does not finish")
    end_group KILL "${node_groups[1]}"
    wait $requests
    expect_each_once 150
    expect 'lost requests' "$lost" 0

    restart_node 1
    nodes_command 'set server nodes/node1 state ready' >/dev/null
    wait_for node_is 1 UP || complaints+=("node1 does not come back")
}

# A node whose program cannot log answers with status 200 as ever, and is out all the same.
check_balancer_broken_site() {
    mv "$work/node1/config/dir" "$work/node1/config/away"
    wait_for node_is 1 DOWN || complaints+=("a site without its configuration counts as well")
    load 201 220
    expect_each_once 20
    expect 'lost requests' "$lost" 0
    mv "$work/node1/config/away" "$work/node1/config/dir"
    wait_for node_is 1 UP || complaints+=("node1 does not come back")
}

# A node that dies takes along what it had begun and nothing else: every request that did not reach it went to
# the other node, and none was sent twice.
check_balancer_death() {
    local requests retried
    rm -f "$work/statuses"
    load 301 500 &
    requests=$!
    wait_for answered 60 || complaints+=("too slow")
    end_group KILL "${node_groups[2]}"
    wait $requests
    expect_each_once 200
    # What it had, and what it still took while the kernel closed its sockets one by one.
    ((lost <= 2 * concurrent)) || complaints+=("$lost requests were lost, more than the node can have had")
    # HAProxy's letters: S or s and then C or Q, ended while it connected or the request was in the queue.
    expect 'lost requests that were never sent' "$(grep -cE ' [Ss][CQ][^ ]{2} ' "$work/haproxy.log")" 0
    retried=$(grep -cE '/\+[1-9] ' "$work/haproxy.log" || true)
    ((retried > 0)) || complaints+=("the node was never tried after its death")
    say "         $lost of 200 requests were lost with the node, $retried went to the other one after it"
}

# No node had more than its share; what was too much for both waited. HAProxy logs A/B/C/<in this node>/<retries>
# and then <waited for this node>/<for any node>.
check_balancer_limit() {
    local most waited
    read -r most waited < <(sed -nE 's|.* [0-9]+/[0-9]+/[0-9]+/([0-9]+)/\+?[0-9]+ ([0-9]+)/([0-9]+) .*|\1 \2 \3|p' \
        "$work/haproxy.log" | awk '$1 > most { most = $1 } { waited += $2 + $3 } END { print most, waited + 0 }')
    ((most <= node_limit)) || complaints+=("a node had $most requests at a time")
    ((waited > 0)) || complaints+=("no request had to wait")
}
