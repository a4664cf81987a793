# The example scripts and the hosts they run in. To be sourced by bash, after wine.sh.
#
# build/ARCH/tools/script_host.exe runs every example, as Windows' cscript does. Wine's own cscript
# lacks the members of WScript that events need, so it runs only the examples that do without them.
#
# An example ends with the line "Done." once it has come through. Its exit status alone proves
# little: Wine's cscript gives 0 for a script that stopped with an error.

# Those that contact nothing but this machine; scripts/steps/test-report runs report.js.
example_files() {
    find examples \( -name '*.js' -o -name '*.vbs' \) ! -name 'diagnose.*' \
        ! -name 'connectivity.*' ! -name 'report.*' | sort
}

# Those that test the gateway and the name servers that they find; scripts/steps/network-examples
# gives them some.
examples_off_this_machine() { find examples -name 'diagnose.*' -o -name 'connectivity.*' | sort; }

needs_script_host() {
    grep -qE 'WScript\.(Sleep|ConnectObject|DisconnectObject|CreateObject)' "$1"
}

# run_in_host HOST ARCH SECONDS FILE [ARGUMENT]...
run_in_host() {
    local host=$1 arch=$2 seconds=$3 file=$4
    shift 4
    case $host in
    cscript) wine_run "$arch" "$seconds" cscript.exe //nologo "$(wine_path "$file")" "$@" ;;
    script_host)
        wine_run "$arch" "$seconds" "build/$arch/tools/script_host.exe" //nologo \
            "$(wine_path "$file")" "$@"
        ;;
    esac
}

# The examples that send and fetch mail, or try ports, get a mail server of their own for that time.
run_with_mail_server() {
    local server smtpPort popPort status=0
    exec 6< <(exec scripts/lib/mail_server.py)
    server=$!
    read -r -t 30 smtpPort popPort <&6 || true
    case $4 in
    *send-mail.*) run_in_host "$@" 127.0.0.1 "$smtpPort" || status=$? ;;
    *read-mail.*) run_in_host "$@" 127.0.0.1 someone secret "$popPort" || status=$? ;;
    *connectivity.*)
        run_in_host "$@" "$TERVANE_EXAMPLE_NAME" "$smtpPort" "$popPort" || status=$?
        ;;
    esac
    kill "$server" 2>/dev/null || true
    exec 6<&-
    return $status
}

example_in_host() {
    case $4 in
    *-mail.* | *connectivity.*) run_with_mail_server "$@" ;;
    *diagnose.*) run_in_host "$@" ${TERVANE_EXAMPLE_NAME:+"$TERVANE_EXAMPLE_NAME"} ;;
    *) run_in_host "$@" ;;
    esac
}

# run_example HOST ARCH SECONDS FILE, with HOST cscript or script_host: shows what the example
# prints. False, with a reason, also if the example did not come to its end.
run_example() {
    local log status
    log=$(mktemp)
    example_in_host "$@" 2>&1 | tr -d '\r' | tee "$log"
    status=${PIPESTATUS[0]}
    if [ "$status" -eq 0 ] && [ "$(tail -n 1 "$log")" != Done. ]; then
        echo "The example stopped before its end."
        status=1
    fi
    rm -f "$log"
    return "$status"
}

# report_on_machine ARCH FILE: writes the page of examples/report.js. It is well also when something
# looks wrong with the machine.
report_on_machine() {
    local status=0
    printf '\n=== examples/report.js (%s, script_host)\n' "$1"
    run_in_host script_host "$1" 120 examples/report.js "$(wine_path "$2")" || status=$?
    [ $status -le 1 ] && [ -s "$2" ]
}

# Register or, with /u as second argument, unregister the built DLL with Wine's own regsvr32.
register_dll() {
    wine_run "$1" 60 regsvr32.exe /s "${@:2}" "$(wine_path "build/$1/Tervane.DLL")"
}

# Puts a "rasapi32.dll" of the tests in the place of Wine's, which has neither devices nor entries
# and lacks functions.
use_test_dial_up() {
    local folder=$WINEPREFIX/drive_c/windows/system32
    [ "$1" = x64 ] || folder=$WINEPREFIX/drive_c/windows/syswow64
    cp --remove-destination "build/$1/tests/fake_ras/rasapi32.dll" "$folder/"
    export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;rasapi32=n"
}
