#!/usr/bin/env bash
# Builds the whole test suite, the window's tests included, with AddressSanitizer, LeakSanitizer
# and UndefinedBehaviorSanitizer (gcc) into build-asan/ (or $KV_ASAN_BUILD_DIR) and runs every
# test there. Any report ends the process it came from, so it fails its test.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh" sanitizers
build=${KV_ASAN_BUILD_DIR:-$root/build-asan}
jobs=$(nproc 2>/dev/null || echo 2)
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

start=$SECONDS
# -O1 keeps the instrumented tests quick; -g1 keeps the file and line of every frame of a report
# but leaves out the variables, which makes a heavy source compile about a fifth faster.
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS_DEBUG="-g1 -O1" -DKV_SANITIZE=ON -DKV_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null
cmake --build "$build" -j "$jobs"
built=$SECONDS

# The programs the tests start (kestrelvane-cli, the window) inherit these; the codecs they start
# get an empty environment and are not instrumented anyway.
export ASAN_OPTIONS=halt_on_error=1:detect_leaks=1:detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
status=0
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$jobs") || status=$?
echo "sanitizers: build $((built - start)) s, tests $((SECONDS - built)) s"
exit "$status"
