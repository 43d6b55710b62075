#!/bin/bash
# cycle.sh [updatecycle options]: builds the library and runs update cycles with it.
#
# Installs what is missing (as root or with sudo), builds the DLL, the sample host and a sample Web Configurator, starts
# the latter on the loopback, and takes a workstation with two certificates through seven update cycles and a restart:
# install, nothing to do, replace a file in use, wait for the installation hours, go on without the server, lose a revoked
# certificate, remove. Everything runs in a Windows prefix of its own below
# build/, which stays there to be looked into. The exit status is 0 only when every cycle did what it claims.
#
# With options or a rule it runs one cycle of one certificate, whose exit status is the host's (updatecycle --help lists them):
#
#   ./cycle.sh --list                      the product list only
#   ./cycle.sh --hours 3-4                 an installation outside its hours waits
#   ./cycle.sh --cid Tk9EQVRBLUNJRDAx      a certificate for which the server has no data
#   CYCLE_RULE="delay=3000" ./cycle.sh     a slow server; also "status=503", "cut=1000", "page=words.txt, status=404"
#   CYCLE_PRESET=mingw-debug ./cycle.sh    another build tree
set -u
cd "$(dirname "$(readlink -f "$0")")" || exit 1
export CCACHE_BASEDIR=$PWD
preset=${CYCLE_PRESET:-mingw-release}
tree=$PWD/build/$preset

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

step "Packages"
scripts/install-packages.sh build || exit 1

step "Building in build/$preset"
mkdir -p "$tree"
[ -e "$tree/bin/updatecycle.exe" ] || echo "(a minute or two the first time)"
if [ ! -e "$tree/build.ninja" ]; then
    attempt cmake --preset "$preset" -DBUILD_TESTING=OFF -DAUTOOLS_BUILD_BENCH=OFF
fi
attempt cmake --build "$tree" --target updatecycle webconfigurator_program autool \
    sample_depot samplecertificate autoupdatesrv msxmlfront
echo "built $(cd "$tree/bin" && echo *.dll updatecycle.exe webconfigurator.exe autool.exe)"

exec examples/cycles.sh "$tree" "$tree/wine/cycle" "$@"
