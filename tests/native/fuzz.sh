#!/bin/bash
# tests/native/fuzz.sh [--short] [target ...]: coverage-guided fuzzing of the portable targets (tests/native/fuzz), each
# answer compared with its model, under the address and undefined-behaviour sanitizers. 10,000,000 inputs a target, 5,000 in
# the short form. Exit status 1 when one faulted, differed or stopped early; the input that did it stays in
# build/native/fuzz/<target> and is repeated by naming it to build/native/fuzz/fuzz_<target>.
#
#   AUTOOLS_SEED      where the search starts
#   AUTOOLS_FIGURES   a file that gets the figures as lines, as tests/torture/run.sh collects them
set -eu
cd "$(dirname "$(readlink -f "$0")")/../.."
inputs=10000000
if [ "${1:-}" = --short ]; then
    inputs=5000
    shift
fi
export CCACHE_BASEDIR=$PWD
clang=$(command -v clang++-14 || command -v clang++)
cmake -S tests/native -B build/native -G Ninja -Wno-dev -DCMAKE_CXX_COMPILER="$clang" \
    -DCMAKE_C_COMPILER="${clang/clang++/clang}" "-DCMAKE_CXX_COMPILER_LAUNCHER=$(command -v ccache || true)" >/dev/null
if [ $# -eq 0 ]; then
    mapfile -t targets < <(sed -n 's/^native_fuzzer(\([A-Za-z0-9]*\).*/\1/p' tests/native/fuzz/CMakeLists.txt)
    set -- "${targets[@]}"
fi
ninja -C build/native "${@/#/fuzz_}" >build/native/fuzzers.log || {
    tail -40 build/native/fuzzers.log
    exit 1
}
# Short histories of blocks, which are many: a report is wanted in full when its input is repeated, not here.
export ASAN_OPTIONS=malloc_context_size=0:quarantine_size_mb=8:detect_leaks=0
status=0
figure()
{
    printf '%-60s %12s  required %-14s %s\n' "$1" "$2" "$3" "$4"
    [ -z "${AUTOOLS_FIGURES:-}" ] || echo "$1|$2|$3|$4" >>"${AUTOOLS_FIGURES#Z:}"
    [ "$4" = kept ] || status=1
}
for target in "$@"; do
    case $target in
    LogEscaping) longest=4096 ;; # what matters happens at 2,047 characters
    *) longest=128 ;;
    esac
    folder=build/native/fuzz/$target
    rm -rf "$folder"
    mkdir -p "$folder"
    faults=0
    build/native/fuzz/fuzz_"$target" -runs=$inputs -seed="$(((${AUTOOLS_SEED:-20260115} % 4294967295)))" -max_len=$longest \
        -artifact_prefix="$folder/" -print_final_stats=1 -reload=0 >"$folder/log.txt" 2>&1 || faults=1
    ran=$(sed -n 's/^stat::number_of_executed_units: *//p' "$folder/log.txt")
    kept=kept
    if [ $faults != 0 ]; then
        kept=MISSED
        grep -avE '^#[0-9]' "$folder/log.txt" | tail -40
    fi
    figure "guided fuzz $target: faults and differences" $faults 0 $kept
    kept=kept
    [ "${ran:-0}" -ge $inputs ] || kept=MISSED
    figure "guided fuzz $target: inputs" "${ran:-0}" ">= $inputs" $kept
done
exit $status
