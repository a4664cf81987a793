#!/usr/bin/env bash
# Runs those tests of the network library that need a network of their own: zelnet.sh ARCH [PROGRAM]
#
# In a network namespace that is gone afterwards there are two scripted name servers, which the
# system's network parameters name, a real one (dnsmasq), and an address that does not answer pings.
set -euo pipefail
cd "$(dirname "$0")/../.."
. scripts/lib/wine.sh

arch=$1
program=${2:-build/$arch/tests/test_zelnet.exe}
firstServer=127.0.0.21
secondServer=127.0.0.22
realServer=127.0.0.53

outside() {
    name=tervane-zelnet-$$
    trap 'ip netns del "$name"; rm -rf "/etc/netns/$name"' EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    mkdir -p "/etc/netns/$name"
    printf 'nameserver %s\nnameserver %s\n' $firstServer $secondServer >"/etc/netns/$name/resolv.conf"
    ip netns add "$name"
    TERVANE_NAMESPACE=$name ip netns exec "$name" "$0" "$arch" "$program"
}

make_network() {
    ip link set lo up
    ip link add near type veth peer name far
    ip link set far up
    ip link set near up
    ip address add 10.55.0.1/24 dev near
    # Known, but not there.
    ip neighbour add 10.55.0.9 lladdr 02:00:00:00:00:09 dev near
}

start_servers() {
    exec 5< <(exec tests/network/dns_server.py $firstServer $secondServer)
    servers=($!)
    read -r -t 30 <&5
    dnsmasq --keep-in-foreground --conf-file=/dev/null --pid-file= --no-resolv --no-hosts \
        --listen-address=$realServer --bind-interfaces --local=/example/ \
        --host-record=real.example,10.0.0.53 --cname=alias.example,real.example \
        --address=/many.example/10.0.0.99 &
    servers+=($!)
}

inside() {
    local log status=0
    make_network
    wine_start
    servers=()
    trap 'kill "${servers[@]}" 2>/dev/null || true; wine_stop' EXIT
    start_servers
    log=$wineWorld/log
    wine_run "$arch" 240 "$program" --gtest_color=no --gtest_filter='*Namespace*' | tee "$log" ||
        status=$?
    if grep -q SKIPPED "$log"; then
        echo "a test was skipped although all that it needs is here"
        status=1
    fi
    return $status
}

if reason=$(wine_lacks "$arch"); then
    echo "$reason"
    exit 77
fi
if [ -z "${TERVANE_NAMESPACE:-}" ]; then
    outside
else
    inside
fi
