#!/bin/bash
# check-printers.sh <printers_sample.exe>: starts the sample, attaches gdb to it and compares what the pretty-printers show of its
# objects with printers/expected.txt. Exit status 77 (skipped) where this machine does not let one process look into another.
set -eu
here=$(dirname "$(readlink -f "$0")")
wine=$here/../support/wine
sample=$(readlink -f "$1")
buildTree=$(dirname "$(dirname "$sample")")
work=$buildTree/package/printers
export AUTOOLS_WINE_CACHE="${AUTOOLS_WINE_CACHE:-$buildTree/wine/cache}"

rm -rf "$work"
mkdir -p "$work"
mkfifo "$work/input"
prefix=$work/prefix
"$wine/prefix.sh" create "$prefix"
cleanUp()
{
    exec 8>&- || true # the sample ends with its input
    "$wine/prefix.sh" remove "$prefix"
}
trap cleanUp EXIT

exec 8<>"$work/input"
"$wine/wine-run.sh" "$prefix" "$sample" <"$work/input" >"$work/output" 8>&- &
process=$!
for ((i = 0; i < 300; ++i)); do
    ! grep -q ready "$work/output" || break
    sleep 0.1
done
grep -q ready "$work/output" || {
    echo "the sample did not start"
    exit 1
}

# The program is not what the system started (that is the emulator), so its symbols are named by hand.
LC_ALL=C.UTF-8 gdb --batch --nx -iex "set auto-load no" -ex "set width 0" -ex "file $sample" -ex "attach $process" \
    -ex "source $here/../../debugging/gdb/autools_printers.py" \
    -ex "print sampleText" -ex "print sampleEmpty" -ex "print sampleNames" -ex "print sampleNothing" \
    -ex "print *sampleRelease" -ex "print *sampleComponent" -ex detach >"$work/gdb" 2>"$work/gdb-errors" || true
if grep -qi 'ptrace: \|Operation not permitted' "$work/gdb-errors"; then
    echo "this machine does not let a debugger attach: $(head -1 "$work/gdb-errors")"
    exit 77
fi
if ! diff "$here/printers/expected.txt" <(grep '^\$' "$work/gdb"); then
    cat "$work/gdb" "$work/gdb-errors"
    exit 1
fi
