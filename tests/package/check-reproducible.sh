#!/bin/bash
# check-reproducible.sh <work folder>: builds the library in two folders, with the settings of a release, and compares the bytes. The
# second build compiles everything itself: what a compiler cache keeps of the first would prove nothing. Optimising is left out,
# as it takes most of the time and knows nothing of folders.
#
# CMAKE, GENERATOR, TOOLCHAIN and COMPILER say how.
set -eu
source=$(readlink -f "$(dirname "$(readlink -f "$0")")/../..")
work=$1
rm -rf "$work"
mkdir -p "$work/first" "$work/second/in/another/folder"
build()
{
    "$CMAKE" -G "$GENERATOR" "-DCMAKE_TOOLCHAIN_FILE=$TOOLCHAIN" "-DAUTOOLS_COMPILER=$COMPILER" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-O0 \
        -DBUILD_TESTING=OFF -DAUTOOLS_BUILD_EXAMPLES=OFF -DAUTOOLS_BUILD_TOOLS=OFF -S "$source" -B "$1" >"$1.log" &&
        "$CMAKE" --build "$1" --parallel 2 --target 7xAutoUpdateTools 7xFileTransfer >>"$1.log" || {
        cat "$1.log"
        exit 1
    }
}
# A base folder for the compiler cache rewrites paths before the compiler sees them; a release is not built like that.
unset CCACHE_BASEDIR
build "$work/first"
sleep 1 # another second, should anything take the time with it
CCACHE_DISABLE=1 build "$work/second/in/another/folder"
status=0
for dll in 7xAutoUpdateTools.dll 7xFileTransfer.dll; do
    cmp "$work/first/bin/$dll" "$work/second/in/another/folder/bin/$dll" || status=1
done
exit $status
