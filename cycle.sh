#!/bin/bash
# cycle.sh [updatecycle options]: builds the library and runs the first half of an update cycle with it.
#
# Installs what is missing (as root or with sudo), builds the DLL, the sample host and a sample Web Configurator, starts
# the latter on the loopback, and lets the host fetch, show and save this workstation's product list. Everything runs in a
# Windows prefix of its own below build/, which stays there to be looked into. The exit status is the host's.
#
#   ./cycle.sh --cid Tk9EQVRBLUNJRDAx      a certificate for which the server has no data
#   CYCLE_RULE="delay=3000" ./cycle.sh     a slow server; also "status=503", "cut=1000", "file=malformed.xml"
#   CYCLE_PRESET=mingw-debug ./cycle.sh    another build tree
set -u
cd "$(dirname "$(readlink -f "$0")")" || exit 1
export CCACHE_BASEDIR=$PWD
preset=${CYCLE_PRESET:-mingw-release}
tree=$PWD/build/$preset
wine=$PWD/tests/support/wine
prefix=$tree/wine/cycle
export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$tree/wine/cache}" AUTOOLS_HEAP_CHECKS=0

step()
{
    printf '\n== %s\n' "$*"
}

# attempt <command...>: shows its output only when it fails.
attempt()
{
    "$@" >"$tree/cycle.log" 2>&1 || {
        cat "$tree/cycle.log"
        echo "failed: $*"
        exit 1
    }
}

mkdir -p "$tree/wine"
exec 9>"$tree/wine/cycle.lock"
flock -n 9 || {
    echo "another cycle runs in $tree"
    exit 1
}

step "Packages"
scripts/install-packages.sh build || exit 1

step "Building in build/$preset"
[ -e "$tree/bin/updatecycle.exe" ] || echo "(a minute or two the first time)"
if [ ! -e "$tree/build.ninja" ]; then
    attempt cmake --preset "$preset" -DBUILD_TESTING=OFF -DAUTOOLS_BUILD_BENCH=OFF
fi
attempt cmake --build "$tree" --target updatecycle webconfigurator_program msxmlfront
echo "built $(cd "$tree/bin" && echo *.dll updatecycle.exe webconfigurator.exe)"

step "Windows prefix"
"$wine/prefix.sh" remove "$prefix" 9>&- || exit 1
"$wine/prefix.sh" create "$prefix" "$tree/bin/msxmlfront.dll" 9>&- || exit 1
trap '"$wine/prefix.sh" stop "$prefix" 9>&-' EXIT
echo "$prefix"

step "Web Configurator"
# It serves until its input ends, and says on which port before anything else.
rules=()
[ -z "${CYCLE_RULE:-}" ] || rules=(--rule "$CYCLE_RULE")
coproc SERVER {
    exec "$wine/wine-run.sh" "$prefix" "$tree/bin/webconfigurator.exe" \
        --templates "Z:$PWD/examples/webconfigurator/templates" "${rules[@]}" 9>&-
}
serverOutput=${SERVER[0]} serverInput=${SERVER[1]} server=$SERVER_PID
if ! read -r -t 60 word port <&"$serverOutput" || [ "$word" != port ]; then
    echo "the Web Configurator did not start"
    exit 1
fi
port=${port%$'\r'}
echo "serves on 127.0.0.1:$port"

step "Update cycle"
"$wine/wine-run.sh" "$prefix" "$tree/bin/updatecycle.exe" --server "127.0.0.1:$port" --cid UzFNUExFLUNJRC0x \
    --data 'C:\Velmora\Data' "$@" </dev/null 9>&-
status=$?

step "What the Web Configurator was asked"
exec {serverInput}>&-
cat <&"$serverOutput"
wait "$server"

step "Exit code $status"
exit $status
