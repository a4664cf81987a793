# Runs Windows programs in a throwaway world: a Wine prefix, a home folder and a virtual display of
# its own, all gone when the script that made it ends, however it ends. To be sourced by bash.
#
#   wine_start                        makes the world, exports WINEPREFIX, HOME and DISPLAY
#   wine_lacks ARCH                   true, with the reason on stdout, if ARCH cannot run here
#   wine_run ARCH SECONDS PROGRAM...  runs a program with that loader and a time limit (status 124)
#   wine_path FILE                    the Windows name of a file
#
# One 64-bit prefix runs both architectures. System tools named without a folder (regsvr32.exe,
# cscript.exe) are those of the loader's own architecture.

wine_loader() {
    case $1 in
    x86) echo /usr/lib/wine/wine ;;
    x64) echo /usr/lib/wine/wine64 ;;
    esac
}

wine_lacks() {
    [ ! -x "$(wine_loader "$1")" ] || return 1
    [ "$1" = x86 ] && echo "32-bit Wine is not installed" || echo "64-bit Wine is not installed"
}

wine_path() {
    local path
    path=$(realpath -m -- "$1")
    echo "Z:${path//\//\\}"
}

# Programs run in the caller's process group, so that Ctrl+C and the end of the caller reach them.
wine_run() {
    local arch=$1 seconds=$2
    shift 2
    timeout --foreground -k 5 "$seconds" "$(wine_loader "$arch")" "$@" </dev/null
}

wine_stop() {
    trap - EXIT
    if [ -n "${WINEPREFIX:-}" ] && [ "$WINEPREFIX" = "${wineWorld:-}/prefix" ]; then
        timeout 30 wineserver -k || true
    fi
    [ -z "${wineDisplayPid:-}" ] || kill "$wineDisplayPid" 2>/dev/null || true
    [ -z "${wineWorld:-}" ] || rm -rf "$wineWorld"
}

# -noreset, because without it the server forgets all windows when its last client leaves.
wine_start_display() {
    local display=
    mkfifo "$wineWorld/display"
    Xvfb -displayfd 3 -noreset -nolisten tcp -screen 0 1024x768x24 \
        3>"$wineWorld/display" >/dev/null 2>&1 </dev/null &
    wineDisplayPid=$!
    read -r -t 30 display <"$wineWorld/display" || true
    if [ -z "$display" ]; then
        echo "cannot start a virtual display" >&2
        return 1
    fi
    export DISPLAY=:$display
}

wine_start() {
    wineWorld=$(mktemp -d)
    trap wine_stop EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    mkdir "$wineWorld/home"
    export HOME=$wineWorld/home WINEPREFIX=$wineWorld/prefix WINEARCH=win64 WINEDEBUG=-all
    export LC_ALL=C.UTF-8
    # No menu entries on the real desktop, no questions for components that are not there.
    export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d"
    wine_start_display
    wine_run x64 180 wineboot.exe -i >/dev/null 2>&1 || {
        echo "cannot make a Wine prefix" >&2
        return 1
    }
    # A crash must end the program with a failure, not wait in a dialog for somebody to click.
    wine_run x64 60 reg.exe add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 \
        /f >/dev/null
}
