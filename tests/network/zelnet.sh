#!/usr/bin/env bash
# Runs those tests of the network library that need a network of their own: zelnet.sh ARCH [PROGRAM]
#
# In a network namespace that is gone afterwards there are two scripted name servers, a real one
# (dnsmasq), and an address that does not answer. The system's network parameters name the scripted
# ones, and in a second run, if no other program is named, the real one.
set -euo pipefail
cd "$(dirname "$0")/../.."
. scripts/lib/wine.sh
. scripts/lib/network.sh

arch=$1
program=${2:-build/$arch/tests/test_zelnet.exe}
firstServer=127.0.0.21
secondServer=127.0.0.22
realServer=127.0.0.53

start_servers() {
    exec 5< <(exec tests/network/dns_server.py $firstServer $secondServer)
    servers=($!)
    read -r -t 30 <&5
    start_dnsmasq $realServer --local=/example/ \
        --host-record=real.example,10.0.0.53 --cname=alias.example,real.example \
        --host-record=here.example,127.0.0.1 --address=/many.example/10.0.0.99
    servers+=("$started")
}

inside() {
    make_silent_network
    wine_start
    servers=()
    trap 'kill "${servers[@]}" 2>/dev/null || true; wine_stop' EXIT
    start_servers
    local status=0
    run_unskipped "$arch" "$program" '*Namespace*-*RealServer*' || status=$?
    if [ $# -lt 2 ]; then
        echo "nameserver $realServer" >/etc/resolv.conf # the namespace's own
        TERVANE_REAL_SERVER=1 run_unskipped "$arch" "$program" '*RealServer*' || status=$?
    fi
    return $status
}

if reason=$(wine_lacks "$arch"); then
    echo "$reason"
    exit 77
fi
enter_network "$firstServer $secondServer" "$@"
inside "$@"
