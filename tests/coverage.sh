#!/bin/bash
# tests/coverage.sh [suite pattern]: which lines and branches of src/ the tests run.
#
# Builds the preset mingw-coverage, runs all suites (or those that the pattern names) and prints the files, worst first, with
# the totals; a page for each file lies in build/mingw-coverage/coverage. The exit status is 1 when fewer than 95 % of the
# lines or 90 % of the branches were run, or a suite failed.
#
# Not counted: the branches that the compiler adds for exceptions, at each call and in code that no source line stands for.
# A process that is killed or crashes on purpose does not say what it has run.
#
#   COVERAGE_BUILD=0    takes the build and the counts as they are: only reports
set -eu
cd "$(dirname "$(readlink -f "$0")")/.."
required_lines=95
required_branches=90
tree=$PWD/build/mingw-coverage
export CCACHE_BASEDIR=$PWD AUTOOLS_SUITE_TIMEOUT=1700

status=0
if [ "${COVERAGE_BUILD:-1}" != 0 ]; then
    cmake --preset mingw-coverage -Wno-dev >/dev/null
    ninja -C "$tree" >"$tree/build.log" || {
        tail -40 "$tree/build.log"
        exit 1
    }
    find "$tree" -name '*.gcda' -delete
    ctest --test-dir "$tree" -j2 --output-on-failure -R "${1:-.}" -E '^(library_.*|reference|package_.*|native)$' || status=1
fi

mkdir -p "$tree/coverage"
gcovr --root . --filter 'src/' --object-directory "$tree" "$tree/src" \
    --gcov-executable x86_64-w64-mingw32-gcov-posix --gcov-ignore-parse-errors \
    --exclude-throw-branches --exclude-unreachable-branches \
    --json-summary "$tree/coverage/summary.json" --html-details "$tree/coverage/index.html"

python3 - "$tree/coverage/summary.json" $required_lines $required_branches "${AUTOOLS_FIGURES:-}" <<'REPORT' || status=1
import json, sys

summary = json.load(open(sys.argv[1]))

def percent(file, what):
    return 100.0 * file[f"{what}_covered"] / file[f"{what}_total"] if file[f"{what}_total"] else 100.0

worst = sorted(summary["files"], key=lambda file: percent(file, "branch") + percent(file, "line"))
print(f"{'file':48} {'lines':>7} {'missed':>6} {'branches':>9} {'missed':>6}")
for file in worst:
    lines, branches = file["line_total"] - file["line_covered"], file["branch_total"] - file["branch_covered"]
    if lines or branches:
        print(f"{file['filename'][4:]:48} {percent(file, 'line'):6.1f}% {lines:6} {percent(file, 'branch'):8.1f}% {branches:6}")
kept = True
for what, required in (("line", float(sys.argv[2])), ("branch", float(sys.argv[3]))):
    reached = summary[f"{what}_percent"]
    met = reached >= required
    kept = kept and met
    word = "lines" if what == "line" else "branches"
    text = f"{reached:.1f} % ({summary[f'{what}_covered']} of {summary[f'{what}_total']})"
    print(f"{word} of src/: {text}, required {required:.0f} %: {'kept' if met else 'MISSED'}")
    if sys.argv[4]:
        with open(sys.argv[4].removeprefix("Z:"), "a") as figures:
            figures.write(f"coverage: {word} of src/|{text}|{required:.0f} %|{'kept' if met else 'MISSED'}\n")
sys.exit(0 if kept else 1)
REPORT
exit $status
