#!/bin/bash
# bench/run.sh [name ...]: builds the measurements in release mode and runs them one after the other in a Windows prefix
# of their own. Each line is a ratio of two times taken in the same run. Exit status 1 when a promise was missed.
set -eu
cd "$(dirname "$(readlink -f "$0")")/.."
tree=$PWD/build/mingw-release
wine=$PWD/tests/support/wine
cmake --preset mingw-release -DAUTOOLS_BUILD_BENCH=ON >/dev/null
ninja -C "$tree" bench/all msxmlfront >/dev/null
if [ $# -eq 0 ]; then
    set -- $(sed -n 's/^autools_add_bench(\([a-z_]*\).*/\1/p' bench/CMakeLists.txt)
fi

export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$tree/wine/cache}" AUTOOLS_HEAP_CHECKS=0
prefix=$tree/wine/bench-$$
trap '"$wine/prefix.sh" remove "$prefix"' EXIT
"$wine/prefix.sh" create "$prefix" "$tree/bin/msxmlfront.dll"
status=0
for name in "$@"; do
    echo "== $name"
    "$wine/wine-run.sh" "$prefix" "$tree/bin/$name.exe" </dev/null || status=1
done
exit $status
