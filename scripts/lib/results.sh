# Test results, one line each in the file named by $results: pass, fail or skip, then the test's name,
# then the reason, separated by tabs. To be sourced by bash. Failures are shown as they happen.

passed() { printf 'pass\t%s\t\n' "$1" >>"$results"; }

skipped() {
    printf 'skip\t%s\t%s\n' "$1" "$2" >>"$results"
    printf 'skipped: %s: %s\n' "$1" "$2"
}

failed() {
    printf 'fail\t%s\t%s\n' "$1" "$2" >>"$results"
    printf 'FAILED: %s: %s\n' "$1" "$2"
}

show_log() { tail -n 60 "$1" | tr -d '\r' | sed 's/^/    | /'; }

# judge NAME STATUS LOG: turns a program's exit status into a result; 77 means that the program
# found nothing to work with here and says why in its last line.
judge() {
    case $2 in
    0) passed "$1" ;;
    77) skipped "$1" "$(tail -n 1 "$3")" ;;
    124 | 137) failed "$1" "ran out of time" && show_log "$3" ;;
    *) failed "$1" "exit status $2" && show_log "$3" ;;
    esac
}

declare -A running=()

# Starts a command with a time limit beside what follows; its process is then in $started.
start() {
    local seconds=$1
    shift
    timeout -k 60 "$seconds" "$@" </dev/null &
    started=$!
    running[$started]=1
}

# Waits for a started process; its exit status is then in $status.
finish_started() {
    status=0
    wait "$1" || status=$?
    unset "running[$1]"
}

# Ends what is still running; for the script's own end, however it comes.
stop_running() {
    local process
    for process in "${!running[@]}"; do
        kill "$process" 2>/dev/null && wait "$process"
    done
}

# step NAME SECONDS COMMAND...: runs a command as one test with a time limit.
step() {
    local name=$1 log
    shift
    log=$(mktemp)
    start "$@" >"$log" 2>&1
    finish_started "$started"
    judge "$name" "$status" "$log"
    rm -f "$log"
}
