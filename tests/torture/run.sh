#!/bin/bash
# tests/torture/run.sh [--short] [suite ...]: runs the torture suites in their long form and prints a table of their figures:
# what was measured, what was reached, what is required.
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
preset=mingw-debug
tree=$PWD/build/$preset
cmake --preset $preset >/dev/null
if [ $# -eq 0 ]; then
    mapfile -t suites < <(cd "$tree" && ctest -N | sed -n 's/.*: torture_\([a-z_]*\)$/\1/p')
    set -- "${suites[@]}"
fi

export AUTOOLS_TORTURE=$form AUTOOLS_SUITE_TIMEOUT=3600 AUTOOLS_SEED="${AUTOOLS_SEED:-20260115}"
echo "form $form, seed $AUTOOLS_SEED"
figures=$tree/torture-figures.txt
rm -f "$figures"
status=0
for suite in "$@"; do
    ninja -C "$tree" "torture_${suite}_tests" >/dev/null
    AUTOOLS_FIGURES="Z:$figures" ctest --test-dir "$tree" -R "^torture_${suite}\$" --output-on-failure || status=1
done

echo
[ -s "$figures" ] || {
    echo "no figure was measured"
    exit 1
}
awk -F'|' '{ printf "%-78s %16s  required %-18s %s\n", $1, $2, $3, $4 } /MISSED$/ { missed = 1 } END { exit missed }' "$figures" || status=1
exit $status
