#!/bin/bash
# run-suite.sh <suite name> <program> [arguments]: runs one test program in a Windows prefix of its own.
#
# The program finds a freshly cloned prefix with a running session: its own registry, files, services. Its current
# folder is C:\suite. Results go to <build tree>/test-results/<suite name>.xml. The exit status is the program's; 124 when
# it took too long. Afterwards the session is ended and the prefix deleted, also after a signal; what a killed run left
# behind is removed by the next one.
#
#   AUTOOLS_KEEP_PREFIX=1      keeps the prefix and says where it is (look into it with wine-run.sh)
#   AUTOOLS_SUITE_TIMEOUT      seconds, 280 by default
#   AUTOOLS_SUITE_RESTART=1    restarts Windows in between: the cases of the test suite AfterRestart run after that, all
#                              others before
#   AUTOOLS_WINE_CACHE         folder of the prepared prefix, to share it between build trees; see prefix.sh
# All other variables reach the program (WINEDLLOVERRIDES, WINEDEBUG, GTEST_FILTER, ...).
set -u
here=$(dirname "$(readlink -f "$0")")
if [ $# -lt 2 ]; then
    sed -n '2,/^set -u/{/^#/s/^# \{0,1\}//p}' "$0" >&2
    exit 2
fi
if [ ! -f "$2" ]; then
    echo "$2 has not been built" >&2
    exit 1
fi
suite=$1
program=$(readlink -f "$2")
shift 2

buildTree=$(dirname "$program")
while [ ! -e "$buildTree/CMakeCache.txt" ] && [ "$buildTree" != / ]; do
    buildTree=$(dirname "$buildTree")
done
if [ "$buildTree" = / ]; then
    echo "$program is not in a build tree" >&2
    exit 2
fi
export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$buildTree/wine/cache}"
mkdir -p "$buildTree/wine/suites" "$buildTree/test-results"

# Each run holds the lock of its prefix for as long as it lives: a lock that is free belongs to a run that was killed.
for lock in "$buildTree"/wine/suites/*.lock; do
    [ -e "$lock" ] || continue
    (
        flock -n 9 || exit 0
        "$here/prefix.sh" remove "${lock%.lock}" 9>&-
        rm -f "$lock"
    ) 9<"$lock"
done

prefix=$buildTree/wine/suites/$suite-$$
exec 9>"$prefix.lock"
flock 9

running=
cleanUp()
{
    trap '' HUP INT TERM
    if [ -n "$running" ]; then
        kill "$running" 2>/dev/null
        wait "$running" 2>/dev/null
    fi
    if [ "${AUTOOLS_KEEP_PREFIX:-0}" != 0 ]; then
        "$here/prefix.sh" stop "$prefix" 9>&-
        echo "prefix kept: $prefix"
    else
        "$here/prefix.sh" remove "$prefix" 9>&-
    fi
    rm -f "$prefix.lock"
}
trap cleanUp EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

results=$buildTree/test-results/$suite.xml
rm -f "$results"
front=$buildTree/bin/msxmlfront.dll
[ -f "$front" ] || front= # another project's program
if ! "$here/prefix.sh" create "$prefix" "$front" 9>&-; then
    echo "no prefix for the suite $suite" >&2
    exit 1
fi
mkdir "$prefix/drive_c/suite"
cd "$prefix/drive_c/suite" || exit 1

# runProgram [arguments]: what the caller asked for comes last and wins.
runProgram()
{
    timeout --kill-after=5 "${AUTOOLS_SUITE_TIMEOUT:-280}" \
        "$here/wine-run.sh" "$prefix" "$program" "--gtest_output=xml:Z:$results" "$@" </dev/null 9>&- &
    running=$!
    wait "$running"
    status=$?
    running=
}

if [ "${AUTOOLS_SUITE_RESTART:-0}" = 0 ]; then
    runProgram "$@"
else
    runProgram --gtest_filter=-AfterRestart.* "$@"
    if [ $status = 0 ]; then
        "$here/prefix.sh" restart "$prefix" 9>&-
        results=$buildTree/test-results/$suite-restarted.xml
        rm -f "$results"
        runProgram --gtest_filter=AfterRestart.* "$@"
    fi
fi
cd /
if [ $status = 124 ] || [ $status = 137 ]; then
    echo "the suite $suite took longer than ${AUTOOLS_SUITE_TIMEOUT:-280} seconds"
    status=124
elif [ $status != 0 ] && [ ! -s "$results" ]; then
    echo "the suite $suite ended before it could report, with exit status $status"
fi
exit $status
