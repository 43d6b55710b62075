#!/bin/bash
# Private Windows prefixes.
#
#   prefix.sh create <prefix> [front.dll]   clones the prepared template (made on first use) and starts its session;
#                                           with a DLL, that one stands before MSXML (see tests/support/msxmlfront)
#   prefix.sh restart <prefix>              restarts Windows: ends everything that runs in this prefix and boots it again,
#                                           which carries out what was left for the next start (moves, deletions,
#                                           commands to be run once)
#   prefix.sh stop <prefix>                 ends the session: everything that runs in this prefix, and nothing else
#   prefix.sh remove <prefix>               the same, then deletes the prefix
#   prefix.sh template                      prepares the template and prints its folder
#
# AUTOOLS_WINE_CACHE names the folder of the template (about 700 MB); several callers may use it at once. It is prepared
# again when this script or Wine changes.
set -eu
here=$(dirname "$(readlink -f "$0")")
. "$here/environment.sh"

# Runs a part of Wine itself; nothing of ours stays open in what it leaves running (9 is the lock of the template).
quietly()
{
    "${wineStart[@]}" "$@" </dev/null >/dev/null 2>&1 9>&-
}

# A primed session: the server stays until it is told to go, services and desktop are up. Without it every test program
# would boot Windows again.
startSession()
{
    quietly "$wineServer" -p
    quietly "$wine64" wineboot
}

stopSession()
{
    quietly "$wineServer" -k || true
    quietly "$wineServer" -w || true
}

# A prefix has full copies of Wine's programs and libraries. They are moved aside once and linked to, so that a clone is
# small and quick. (Links to the installed Wine itself would let a test overwrite it.)
shareSystemFiles()
{
    local windows=$WINEPREFIX/drive_c/windows shared=$1 file
    (cd "$windows" && find . -type f -size +8k \
        -regex '.*\.\(dll\|exe\|com\|sys\|drv\|ocx\|cpl\|acm\|ax\|ds\|nls\|tlb\|msstyles\)') |
        while read -r file; do
            mkdir -p "$shared/$(dirname "$file")"
            mv "$windows/$file" "$shared/$file"
            ln -s "$shared/$file" "$windows/$file"
        done
}

# The user's folders are links into the home of whoever builds. They become folders of the prefix.
unlinkUserFolders()
{
    local link
    find "$WINEPREFIX/drive_c/users" -type l | while read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

# No windows on a screen; a crash ends the program at once, with the exception as exit status; the heap keeps check bytes
# behind every block (looked at when asked for: to check the whole heap at each call takes minutes); nothing is added to
# the menus of the desktop outside.
writeSettings()
{
    cat >"$WINEPREFIX/drive_c/settings.reg" <<'SETTINGS'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\Drivers]
"Graphics"="null"

[HKEY_CURRENT_USER\Software\Wine\DllOverrides]
"winemenubuilder.exe"=""

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\AeDebug]
"Debugger"=""

[HKEY_LOCAL_MACHINE\System\CurrentControlSet\Control\Session Manager]
"GlobalFlag"=dword:00000070
SETTINGS
    quietly "$wine64" regedit /S 'C:\settings.reg'
    rm "$WINEPREFIX/drive_c/settings.reg"
}

prepareTemplate()
{
    local cache recipe
    cache=${AUTOOLS_WINE_CACHE:?must name a folder for the prepared Windows prefix}
    mkdir -p "$cache"
    cache=$(readlink -f "$cache")
    recipe=$({ "$wine64" --version; cat "$here/prefix.sh" "$here/environment.sh"; } | sha256sum | cut -c1-12)
    template=$cache/$recipe/prefix
    (
        flock 9
        [ -e "$cache/$recipe/ready" ] && exit 0
        echo "preparing the Windows prefix in $cache/$recipe (once)" >&2
        rm -rf "${cache:?}/$recipe"
        mkdir -p "$template"
        export WINEPREFIX=$template WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
        quietly "$wineServer" -p
        quietly "$wine64" wineboot -i
        writeSettings
        stopSession
        unlinkUserFolders
        shareSystemFiles "$cache/$recipe/system"
        : >"$cache/$recipe/ready"
    ) 9>"$cache/lock"
}

# Puts the front DLL in the place of the MSXML document's in-process server.
registerFront()
{
    cp "$1" "$WINEPREFIX/drive_c/windows/system32/msxmlfront.dll"
    sed -i '/^\[Software\\\\Classes\\\\CLSID\\\\{2933BF90-7B36-11D2-B20E-00C04F983E60}\\\\InprocServer32\]/I,/^$/s/^@=.*/@="C:\\\\windows\\\\system32\\\\msxmlfront.dll"/' \
        "$WINEPREFIX/system.reg"
    grep -q 'msxmlfront' "$WINEPREFIX/system.reg"
}

case ${1:-} in
template)
    prepareTemplate
    echo "$template"
    ;;
create)
    prepareTemplate
    mkdir -p "$(dirname "$2")"
    cp -a "$template" "$2"
    WINEPREFIX=$(readlink -f "$2")
    export WINEPREFIX
    [ -z "${3:-}" ] || registerFront "$3"
    # Measurements switch the check bytes off.
    [ "${AUTOOLS_HEAP_CHECKS:-1}" != 0 ] ||
        sed -i 's/^"GlobalFlag"=dword:.*/"GlobalFlag"=dword:00000000/' "$WINEPREFIX/system.reg"
    startSession
    ;;
restart)
    WINEPREFIX=$(readlink -f "$2")
    export WINEPREFIX
    stopSession
    startSession
    ;;
stop | remove)
    [ -d "$2/drive_c" ] || exit 0
    WINEPREFIX=$(readlink -f "$2")
    export WINEPREFIX
    stopSession
    [ "$1" = stop ] || rm -rf "$WINEPREFIX"
    ;;
*)
    sed -n '2,/^set -eu/{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
    ;;
esac
