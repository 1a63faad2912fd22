#!/usr/bin/env bash
# Configures and builds into build/ (or $KV_BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
build=${KV_BUILD_DIR:-$root/build}
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$build" -j "$jobs"
