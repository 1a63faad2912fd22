#!/usr/bin/env bash
# Configures and builds into build/ (or $KV_BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
build=${KV_BUILD_DIR:-$root/build}
jobs=$(nproc 2>/dev/null || echo 2)
# ccache, when present, makes rebuilds in several work trees cheap; the build works without it.
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@" >/dev/null
cmake --build "$build" -j "$jobs"
