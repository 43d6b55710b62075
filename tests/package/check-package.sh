#!/bin/bash
# check-package.sh consumer|without_tests <build tree>
#
#   consumer        installs the package, builds the small project beside this script against it, and runs its program with
#                   nothing but the package's `bin` in its path
#   without_tests   configures with BUILD_TESTING=OFF and looks for anything that belongs to tests
#
# CMAKE, GENERATOR, TOOLCHAIN and COMPILER say how the build tree was made.
set -eu
here=$(dirname "$(readlink -f "$0")")
buildTree=$(readlink -f "$2")
work=$buildTree/package/$1
configure=("$CMAKE" -G "$GENERATOR" "-DCMAKE_TOOLCHAIN_FILE=$TOOLCHAIN" "-DAUTOOLS_COMPILER=$COMPILER" -DCMAKE_BUILD_TYPE=Release)
rm -rf "$work"
mkdir -p "$work"

expectFile()
{
    if [ ! -f "$work/installed/$1" ]; then
        echo "not installed: $1"
        exit 1
    fi
}

case $1 in
consumer)
    "$CMAKE" --install "$buildTree" --prefix "$work/installed" >/dev/null
    for file in bin/{7xAutoUpdateTools,7xFileTransfer,libstdc++-6,libgcc_s_seh-1,libwinpthread-1}.dll \
        lib/lib7xAutoUpdateTools.dll.a include/7xAutoUpdateTools.h; do
        expectFile "$file"
    done
    "${configure[@]}" -S "$here/consumer" -B "$work/build" "-DCMAKE_PREFIX_PATH=$work/installed" >"$work/log" ||
        { cat "$work/log"; exit 1; }
    "$CMAKE" --build "$work/build"
    export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$buildTree/wine/cache}" WINEPATH="Z:$work/installed/bin"
    "$here/../support/wine/run-suite.sh" package_consumer "$work/build/consumer.exe"
    ;;
without_tests)
    # GoogleTest need not even be there.
    "${configure[@]}" -S "$here/../.." -B "$work" -DBUILD_TESTING=OFF -DAUTOOLS_BUILD_EXAMPLES=OFF \
        -DAUTOOLS_GOOGLETEST_DIR=/nowhere >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
    targets=$("$CMAKE" --build "$work" --target help)
    if ! grep -q '^7xAutoUpdateTools' <<<"$targets"; then
        echo "the library itself is not among the targets"
        exit 1
    fi
    if grep -E '_tests|gtest|autools_test_support|msxmlfront|autoupdatesrv|webconfigurator|updatecycle' <<<"$targets"; then
        echo "these belong to the tests and the examples"
        exit 1
    fi
    ;;
esac
