#!/bin/bash
# test.sh: installs what is missing, builds everything with GCC and with Clang, and runs the tests.
#
# The last line is "N passed, N failed", with ", N skipped" where tests skip themselves; the exit status tells it too.
set -u
cd "$(dirname "$(readlink -f "$0")")" || exit 1
export CCACHE_BASEDIR=$PWD

passed=0
failed=0
skipped=0
finish()
{
    echo
    echo "$passed passed, $failed failed$([ $skipped = 0 ] || echo ", $skipped skipped")"
    [ $failed = 0 ] && [ $passed != 0 ]
    exit
}

# check <what> <command...>: one thing that must work and is no test of CTest's.
check()
{
    local what=$1
    shift
    if "$@"; then
        passed=$((passed + 1))
    else
        echo "FAILED: $what"
        failed=$((failed + 1))
        return 1
    fi
}

build()
{
    cmake --preset "$1" -Wno-dev >"build/$1.log" || {
        cat "build/$1.log"
        return 1
    }
    cmake --build --preset "$1"
}

# The sum of one suite's GoogleTest report: "<passed> <failed> <skipped>".
suiteCounts()
{
    sed -n 's/.*<testsuite .* tests="\([0-9]*\)" failures="\([0-9]*\)" disabled="\([0-9]*\)" skipped="\([0-9]*\)".*/\1 \2 \3 \4/p' "$1" |
        awk '{ tests += $1; failures += $2; skipped += $3 + $4 } END { print tests - failures - skipped, failures + 0, skipped + 0 }'
}

# "<state> <name>" of each test in CTest's report. One that says itself that it cannot run here is "skipped"; CTest calls it
# "notrun", as it does one whose program is missing.
states()
{
    awk 'function part(text, before) { sub(".*" before "=\"", "", text); sub("\".*", "", text); return text }
        /<testcase / { if (name != "") print state, name; name = part($0, "<testcase name"); state = part($0, " status") }
        /<skipped message="SKIP_RETURN_CODE=/ { state = "skipped" }
        END { if (name != "") print state, name }' "$1"
}

# Counts the cases of each suite, and each other test as one. A suite that failed without a failed case (it crashed, took
# too long, never started) counts as one failure.
count()
{
    local name state suitePassed suiteFailed suiteSkipped
    while read -r state name; do
        suitePassed=0 suiteFailed=0 suiteSkipped=0
        if [ -s "build/mingw-debug/test-results/$name.xml" ]; then
            read -r suitePassed suiteFailed suiteSkipped < <(suiteCounts "build/mingw-debug/test-results/$name.xml")
        elif [ "$state" = run ]; then
            suitePassed=1
        elif [ "$state" = skipped ]; then
            suiteSkipped=1
        fi
        if [ "$state" != run ] && [ "$state" != skipped ] && [ "$suiteFailed" = 0 ]; then
            suiteFailed=1
        fi
        if [ "$suiteFailed" != 0 ]; then
            echo "FAILED: $name ($suiteFailed)"
        fi
        passed=$((passed + suitePassed))
        failed=$((failed + suiteFailed))
        skipped=$((skipped + suiteSkipped))
    done < <(states "$1")
}

mkdir -p build
check "installing the packages" scripts/install-packages.sh test || finish
check "building with GCC" build mingw-debug || finish
passed=0 # neither of these is a test

report=$PWD/build/mingw-debug/ctest.xml
rm -rf build/mingw-debug/test-results "$report"
ctest --preset mingw-debug --output-junit "$report"
if [ -s "$report" ]; then
    count "$report"
else
    echo "FAILED: the tests did not run"
    failed=$((failed + 1))
fi

check "building with Clang" build mingw-clang
finish
