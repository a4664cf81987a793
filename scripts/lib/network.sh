# A network of its own for a script that needs one, gone when the script ends. To be sourced by
# bash; needs root, iproute2 and dnsmasq.
#
#   enter_network SERVERS ARGUMENT...  runs the script once more, with these arguments, in a network
#                                      namespace where SERVERS are the system's name servers, and
#                                      exits with its status; in there, it just returns
#   make_silent_network                the loopback, and a card behind which 10.55.0.9 never answers
#   make_machine_with_gateway OPTION...
#                                      the loopback, and a card with a way out through $gateway, a name
#                                      server that knows only what dnsmasq's options tell it; what must be
#                                      killed in the end is in the array processes
#   start_dnsmasq ADDRESS OPTION...    a name server that knows only what the options tell it; its
#                                      process is in $started. The array dnsmasqRunner, if set, is
#                                      the command that runs it.

enter_network() {
    local servers=$1 server status=0
    shift
    [ -z "${TERVANE_NAMESPACE:-}" ] || return 0
    namespace=tervane-$(basename "$0" .sh)-$$
    trap 'ip netns del "$namespace"; rm -rf "/etc/netns/$namespace"' EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    mkdir -p "/etc/netns/$namespace"
    for server in $servers; do
        echo "nameserver $server"
    done >"/etc/netns/$namespace/resolv.conf"
    ip netns add "$namespace"
    TERVANE_NAMESPACE=$namespace ip netns exec "$namespace" "$0" "$@" || status=$?
    exit $status
}

make_silent_network() {
    ip link set lo up
    ip link add near type veth peer name far
    ip link set far up
    ip link set near up
    ip address add 10.55.0.1/24 dev near
    # Known, but not there.
    ip neighbour add 10.55.0.9 lladdr 02:00:00:00:00:09 dev near
}

start_dnsmasq() {
    "${dnsmasqRunner[@]}" dnsmasq --keep-in-foreground --conf-file=/dev/null --pid-file= --no-resolv --no-hosts \
        --listen-address="$1" --bind-interfaces "${@:2}" &
    started=$!
}

gateway=10.56.0.1

# The gateway is in a network of its own, too, which lasts as long as the process that keeps it.
make_machine_with_gateway() {
    local keeper
    unshare --net sleep infinity &
    keeper=$!
    processes=("$keeper")
    while [ "$(readlink /proc/$keeper/ns/net)" = "$(readlink /proc/self/ns/net)" ]; do
        sleep 0.05
    done
    dnsmasqRunner=(nsenter --net=/proc/$keeper/ns/net)
    ip link add near type veth peer name far netns $keeper
    "${dnsmasqRunner[@]}" ip address add $gateway/24 dev far
    "${dnsmasqRunner[@]}" ip link set far up
    start_dnsmasq $gateway "$@"
    processes+=("$started")
    ip link set lo up
    ip address add 10.56.0.2/24 dev near
    ip link set near up
    ip route add default via $gateway
}

# run_unskipped ARCH PROGRAM FILTER: runs those tests of a program; all that they need is here, so
# that none may be skipped.
run_unskipped() {
    local log=$wineWorld/log status=0
    wine_run "$1" 240 "$2" --gtest_color=no --gtest_filter="$3" | tee "$log" || status=$?
    if grep -q SKIPPED "$log" || ! grep -q '\[  PASSED  \] [1-9]' "$log"; then
        echo "a test was skipped or not run although all that it needs is here"
        status=1
    fi
    return $status
}
