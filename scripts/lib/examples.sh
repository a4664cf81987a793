# The example scripts and the hosts they run in. To be sourced by bash, after wine.sh.
#
# build/ARCH/tools/script_host.exe runs every example, as Windows' cscript does. Wine's own cscript
# lacks the members of WScript that events need, so it runs only the examples that do without them.
#
# An example ends with the line "Done." once it has come through. Its exit status alone proves
# little: Wine's cscript gives 0 for a script that stopped with an error.

example_files() {
    [ ! -d examples ] || find examples -name '*.js' -o -name '*.vbs' | sort
}

needs_script_host() {
    grep -qE 'WScript\.(Sleep|ConnectObject|DisconnectObject|CreateObject)' "$1"
}

# Whether the output in this file is that of an example that has come to its end.
came_through() { [ "$(tr -d '\r' <"$1" | tail -n 1)" = "Done." ]; }

# run_example HOST ARCH SECONDS FILE, with HOST cscript or script_host; the output goes to stdout.
run_example() {
    local host=$1 arch=$2 seconds=$3 file=$4
    case $host in
    cscript) wine_run "$arch" "$seconds" cscript.exe //nologo "$(wine_path "$file")" ;;
    script_host)
        wine_run "$arch" "$seconds" "build/$arch/tools/script_host.exe" //nologo \
            "$(wine_path "$file")"
        ;;
    esac
}

# Register or, with /u as second argument, unregister the built DLL with Wine's own regsvr32.
register_dll() {
    wine_run "$1" 60 regsvr32.exe /s "${@:2}" "$(wine_path "build/$1/Tervane.DLL")"
}
