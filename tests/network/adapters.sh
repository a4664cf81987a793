#!/usr/bin/env bash
# Runs the tests of live adapters and of DHCP leases with network interfaces that are known:
# adapters.sh ARCH
#
# In a network namespace that is gone afterwards there are four cards with addresses of every kind
# and a default route; then they vanish, and only the loopback is left.
set -euo pipefail
cd "$(dirname "$0")/../.."
. scripts/lib/wine.sh
. scripts/lib/network.sh

arch=$1
programs=build/$arch/tests

make_cards() {
    ip link set lo up
    ip link add first address 02:10:5a:00:00:01 type veth peer name second address 02:10:5a:00:00:02
    ip link add third address 02:10:5a:00:00:03 type veth peer name fourth address 44:45:53:54:00:04
    ip address add 10.55.1.1/24 dev first
    ip address add 10.56.2.1/16 dev second
    ip address add 172.20.0.1/20 dev fourth
    for card in first second fourth; do ip link set $card up; done
    ip route add default via 10.55.1.254 dev first
}

run_both() {
    local network=$1
    run_unskipped "$arch" "$programs/test_platform.exe" "*${network^}Network*:RealMachine*"
    run_unskipped "$arch" "$programs/test_dll.exe" "*${network^}Network*:AdapterInfo*"
}

# Wine enters the cards into its registry when it is started for the second time.
await_cards() {
    local key='HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkCards'
    timeout 30 wineserver -k
    for _ in {1..20}; do
        ! wine_run x64 60 reg.exe query "$key" /s | grep -q fourth || return 0
        sleep 0.5
    done
    echo "the cards do not appear in the registry"
    return 1
}

inside() {
    make_cards
    wine_start
    await_cards
    run_both full
    ip link del first
    ip link del third
    timeout 30 wineserver -k # it remembers the interfaces
    run_both empty
}

if reason=$(wine_lacks "$arch"); then
    echo "$reason"
    exit 77
fi
enter_network "" "$@"
inside
