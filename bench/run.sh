#!/bin/bash
# bench/run.sh [name ...]: builds the measurements in release mode and runs them one after the other in a Windows prefix
# of their own, which lies in memory. Everything, Wine's server too, is pinned to one processor: so both sides of a
# comparison meet the same machine. At the end it prints a table of all figures. Exit status 1 when one was missed.
#
#   AUTOOLS_BENCH_CPU       the processor, 0 by default
#   AUTOOLS_BENCH_ROUNDS    the best of so many runs, 5 by default: more on a machine that has other things to do
set -eu
cd "$(dirname "$(readlink -f "$0")")/.."
tree=$PWD/build/mingw-release
wine=$PWD/tests/support/wine
cmake --preset mingw-release -DAUTOOLS_BUILD_BENCH=ON >/dev/null
ninja -C "$tree" bench/all msxmlfront 7xFileTransfer >/dev/null
if [ $# -eq 0 ]; then
    set -- $(sed -n 's/^autools_add_bench(\([a-z0-9_]*\).*/\1/p' bench/CMakeLists.txt)
fi

taskset -p -c "${AUTOOLS_BENCH_CPU:-0}" $$ >/dev/null
export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$tree/wine/cache}" AUTOOLS_HEAP_CHECKS=0
memory=/dev/shm
[ -d $memory ] && [ -w $memory ] || memory=$tree/wine
prefix=$(mktemp -d "$memory/autools-bench-XXXXXX")
trap '"$wine/prefix.sh" remove "$prefix/prefix"; rm -rf "$prefix"' EXIT
"$wine/prefix.sh" create "$prefix/prefix" "$tree/bin/msxmlfront.dll"
# Loading is measured of what is installed: without the debug symbols.
cmake --install "$tree" --component runtime --prefix "$prefix/installed" >/dev/null
objcopy=$(sed -n 's/^AUTOOLS_OBJCOPY:FILEPATH=//p' "$tree/CMakeCache.txt")
"$objcopy" --strip-all "$tree/bin/look_ups.dll" "$prefix/installed/bin/look_ups.dll"
cp "$tree/bin/load_bench.exe" "$prefix/installed/bin"
: >"$prefix/figures"
export AUTOOLS_FIGURES="Z:$prefix/figures"
status=0
for name in "$@"; do
    program=$tree/bin/$name.exe
    [ "$name" != load_bench ] || program=$prefix/installed/bin/$name.exe
    "$wine/wine-run.sh" "$prefix/prefix" "$program" </dev/null >"$prefix/output" 2>&1 || {
        status=1
        # A measurement that was made is in the table; anything else says here what went wrong.
        grep -v '|kept$\||MISSED$' "$prefix/output" || true
        [ -s "$prefix/output" ] || echo "$name ended without a word"
    }
done

printf '%-76s | %-38s | %-33s | %s\n' figure reached required ''
while IFS='|' read -r what reached required verdict; do
    printf '%-76s | %-38s | %-33s | %s\n' "$what" "$reached" "$required" "$verdict"
done < <(tr -d '\r' <"$prefix/figures")
exit $status
