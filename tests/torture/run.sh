#!/bin/bash
# tests/torture/run.sh [--short] [suite ...]: runs the torture suites in their long form and prints a table of their figures:
# what was measured, what was reached, what is required.
#
# The suites that go through memory (topics fuzz, registry and streams) run under guard pages in the long form: preset
# mingw-guard. Without a suite named, the long form also runs all ordinary suites in the builds that watch themselves
# (checked.sh) and the portable sources natively, their coverage-guided fuzzing included.
#
# Exit status 1 when a figure was missed, a suite failed or nothing was measured.
#   --short         the short form, as the tests run it
#   AUTOOLS_SEED    where the random inputs start (printed)
set -eu
cd "$(dirname "$(readlink -f "$0")")/../.."
form=long
if [ "${1:-}" = --short ]; then
    form=short
    shift
fi
tree=$PWD/build/mingw-debug
cmake --preset mingw-debug -Wno-dev >/dev/null
suites()
{
    ctest --test-dir "$tree" -N "$@" | sed -n 's/.*: torture_\([a-z_]*\)$/\1/p'
}
memory=
everything=0
if [ $form = long ]; then
    memory=" $(suites -L '^(fuzz|registry|streams)$' | tr '\n' ' ')"
fi
if [ $# -eq 0 ]; then
    everything=1
    mapfile -t all < <(suites)
    set -- "${all[@]}"
fi

export AUTOOLS_TORTURE=$form AUTOOLS_SUITE_TIMEOUT=3600 AUTOOLS_SEED="${AUTOOLS_SEED:-20260115}"
echo "form $form, seed $AUTOOLS_SEED"
export CCACHE_BASEDIR=$PWD
figures=$tree/torture-figures.txt
rm -f "$figures"
status=0
for suite in "$@"; do
    built=$tree
    if [[ "$memory" = *" $suite "* ]]; then
        built=$PWD/build/mingw-guard
        [ -e "$built/build.ninja" ] || cmake --preset mingw-guard -Wno-dev >/dev/null
    fi
    ninja -C "$built" "torture_${suite}_tests" >/dev/null
    AUTOOLS_FIGURES="Z:$figures" ctest --test-dir "$built" -R "^torture_${suite}\$" --output-on-failure || status=1
done
if [ $form = long ] && [ $everything = 1 ]; then
    export AUTOOLS_FIGURES=$figures
    unset AUTOOLS_TORTURE AUTOOLS_SUITE_TIMEOUT
    tests/torture/checked.sh guard || status=1
    tests/torture/checked.sh ubsan || status=1
    if tests/native/run.sh; then
        echo "portable sources natively: faults|0|0|kept" >>"$figures"
    else
        echo "portable sources natively: faults|some|0|MISSED" >>"$figures"
        status=1
    fi
    tests/native/fuzz.sh || status=1
fi

echo
[ -s "$figures" ] || {
    echo "no figure was measured"
    exit 1
}
awk -F'|' '{ printf "%-78s %16s  required %-18s %s\n", $1, $2, $3, $4 } /MISSED$/ { missed = 1 } END { exit missed }' "$figures" || status=1
exit $status
