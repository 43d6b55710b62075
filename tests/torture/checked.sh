#!/bin/bash
# tests/torture/checked.sh guard|ubsan [suite pattern]: runs all test suites in a build that watches itself and says as
# figures how many cases failed.
#
#   guard   every block of memory ends at a no-access page and stays out of reach once freed: preset mingw-guard
#   ubsan   undefined behaviour ends the program: preset mingw-ubsan
#
# With AUTOOLS_FIGURES naming a file, the figures are lines of it, as tests/torture/run.sh collects them. Exit status 1 when
# a suite failed or nothing ran. Not run: what looks at the library file or its package instead of running it, the suite
# that counts the allocations of an ordinary process, and the torture suites, which run.sh runs itself.
set -eu
cd "$(dirname "$(readlink -f "$0")")/../.."
kind=${1:-}
case $kind in
guard) what="guard pages" ;;
ubsan) what="undefined behaviour" ;;
*)
    sed -n '2,/^set -eu/{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
    ;;
esac
preset=mingw-$kind
tree=$PWD/build/$preset
export CCACHE_BASEDIR=$PWD AUTOOLS_SUITE_TIMEOUT=1700
cmake --preset "$preset" -Wno-dev >/dev/null
ninja -C "$tree" >"$tree/build.log" || {
    tail -40 "$tree/build.log"
    exit 1
}

rm -rf "$tree/test-results" "$tree/guard-blocks.txt"
status=0
AUTOOLS_GUARD_REPORT="Z:$tree/guard-blocks.txt" ctest --test-dir "$tree" -R "${2:-.}" --output-on-failure -j2 \
    -E '^(library_.*|reference|package_.*|torture_.*|native|headers.*)$' || status=1

# Suites and cases that ran, and those that did not pass: a suite that crashed has no report and counts as one.
ran=$(find "$tree/test-results" -name '*.xml' 2>/dev/null | wc -l)
read -r cases failed < <(find "$tree/test-results" -name '*.xml' -exec sed -n \
    's/^<testsuites tests="\([0-9]*\)" failures="\([0-9]*\)".*/\1 \2/p' {} + |
    awk '{ cases += $1; failed += $2 } END { print cases + 0, failed + 0 }')
if [ $status != 0 ] && [ "$failed" = 0 ]; then
    failed=1
fi
[ "$ran" != 0 ] || failed=1
figure()
{
    echo "$1: $2, required $3: $4"
    [ -z "${AUTOOLS_FIGURES:-}" ] || echo "$1|$2|$3|$4" >>"${AUTOOLS_FIGURES#Z:}"
}
kept=kept
[ "$failed" = 0 ] || kept=MISSED
figure "$what: faults and failures in $cases cases of $ran suites" "$failed" 0 $kept
if [ -s "$tree/guard-blocks.txt" ]; then
    awk '{ guarded += $2; unguarded += $3; ++processes }
        END { printf "%d processes, %d blocks, %d of them beyond what can be guarded at a time\n", processes, guarded + unguarded, unguarded }' \
        "$tree/guard-blocks.txt"
fi
[ $kept = kept ]
