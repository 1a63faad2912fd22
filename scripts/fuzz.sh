#!/usr/bin/env bash
# Fuzzes one entry point of tests/fuzz with libFuzzer, AddressSanitizer and UndefinedBehaviorSanitizer.
#   scripts/fuzz.sh                  lists the targets
#   scripts/fuzz.sh TARGET SECONDS   builds TARGET with clang into build-fuzz/ (or $KV_FUZZ_BUILD_DIR)
#                                    and runs it for SECONDS
# Exit status 0 when the run found nothing. A finding ends the run with a non-zero status and the
# path of the input that caused it; keep that input under tests/fuzz/TARGET/regressions/, where the
# ordinary test run replays it. The inputs the run adds stay in build-fuzz/corpus/TARGET for the
# next run; the kept seeds are only read.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
mapfile -t targets < <(cd "$root/tests/fuzz" && ls fuzz_*.cpp | sed 's/^fuzz_//; s/\.cpp$//')

if [ $# -eq 0 ]; then
    printf '%s\n' "${targets[@]}"
    exit 0
fi
usage() { echo "usage: scripts/fuzz.sh [TARGET SECONDS]; targets: ${targets[*]}" >&2; exit 2; }
[ $# -eq 2 ] || usage
target=$1 seconds=$2
[[ " ${targets[*]} " == *" $target "* ]] || usage
[[ $seconds =~ ^[1-9][0-9]*$ ]] || usage

"$root/scripts/deps.sh" fuzz
build=${KV_FUZZ_BUILD_DIR:-$root/build-fuzz}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
# Only the libraries the targets need: no tests, no window. -O1 keeps a finding's stack readable.
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" -DKV_BUILD_FUZZ=ON -DKV_BUILD_TESTS=OFF -DKV_BUILD_GUI=OFF \
    "${launcher[@]}" >/dev/null
cmake --build "$build" --target "fuzz_$target" -j "$(nproc 2>/dev/null || echo 2)"

corpus=$build/corpus/$target
findings=$build/findings/$target
log=$build/fuzz-$target.log
mkdir -p "$corpus" "$findings"
kept=("$root/tests/fuzz/$target/seeds")
[ -d "$root/tests/fuzz/$target/regressions" ] && kept+=("$root/tests/fuzz/$target/regressions")

# An input that takes over 10 s or 2 GB is a finding too: the readers must give up on their own.
status=0
ASAN_OPTIONS=halt_on_error=1:detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
    "$build/tests/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" "${kept[@]}" >"$log" 2>&1 || status=$?

runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
echo "fuzz $target: ${runs:-?} executions, ${speed:-?} per second, corpus $(ls "$corpus" | wc -l) inputs (log: $log)"
if [ "$status" -ne 0 ]; then
    grep -E '^==[0-9]+==ERROR|^SUMMARY|runtime error|property broken|ERROR: libFuzzer' "$log" | head -5 >&2 || true
    found=$(sed -n 's/.*Test unit written to \(.*\)$/\1/p' "$log" | tail -1)
    echo "fuzz $target: finding ${found:-(no input written; see the log)}" >&2
    [ -n "$found" ] && echo "keep it: cp '$found' '$root/tests/fuzz/$target/regressions/'" >&2
    exit 1
fi
