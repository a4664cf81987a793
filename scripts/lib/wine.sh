# Runs Windows programs in a throwaway world: a Wine prefix, a home folder and a virtual display of
# its own, all gone when the script that made it ends, however it ends. To be sourced by bash.
#
#   wine_start                        makes the world, exports WINEPREFIX, HOME and DISPLAY
#   wine_template FOLDER              makes a prefix there, which every later wine_start copies
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

wine_environment() {
    mkdir "$1/home"
    export HOME=$1/home WINEPREFIX=$1/prefix WINEARCH=win64 WINEDEBUG=-all LC_ALL=C.UTF-8
    # No menu entries on the real desktop, no questions for components that are not there.
    export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=d"
}

# On a busy machine the first start of a prefix has failed where the next one succeeded.
wine_make_prefix() {
    local try
    for try in 1 2 3; do
        ! wine_run x64 120 wineboot.exe -i >"$WINEPREFIX.log" 2>&1 || return 0
        timeout 30 wineserver -k || true
        rm -rf "$WINEPREFIX"
    done
    echo "cannot make a Wine prefix" >&2
    tail -n 20 "$WINEPREFIX.log" >&2
    return 1
}

# The system's files, a gigabyte that nobody writes to, are shared with the template; the registry is
# written in place where its files have two names, so it is copied.
wine_copy_prefix() {
    cp -al "$1" "$WINEPREFIX" 2>/dev/null || { rm -rf "$WINEPREFIX" && cp -a "$1" "$WINEPREFIX"; } || return
    rm -rf "$WINEPREFIX"/*.reg "$WINEPREFIX/drive_c/users"
    cp -a "$1"/*.reg "$WINEPREFIX" && cp -a "$1/drive_c/users" "$WINEPREFIX/drive_c"
}

# The user's folders lie in the prefix itself, since a copy has a home folder of its own.
wine_unlink_home() {
    find "$WINEPREFIX/drive_c/users" -type l -exec rm {} \; -exec mkdir {} \;
}

# The network driver makes the list of cards for one session only when there is none, and no card can
# be stored in such a list; the copies of a prefix find one that stays.
wine_keep_card_list() {
    local cards='HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion\NetworkCards'
    wine_run x64 60 reg.exe delete "$cards" /f >/dev/null 2>&1 || true
    wine_run x64 60 reg.exe add "$cards" /f >/dev/null
}

wine_template() {
    (
        wine_environment "$1"
        wine_make_prefix && wine_keep_card_list && timeout 60 wineserver -w && wine_unlink_home
    ) && export wineTemplate=$1/prefix
}

wine_start() {
    wineWorld=$(mktemp -d)
    trap wine_stop EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
    wine_environment "$wineWorld"
    wine_start_display
    if [ -n "${wineTemplate:-}" ]; then
        wine_copy_prefix "$wineTemplate"
    else
        wine_make_prefix
    fi || return
    # A crash must end the program with a failure, not wait in a dialog for somebody to click.
    wine_run x64 60 reg.exe add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 \
        /f >/dev/null
}
