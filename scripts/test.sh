#!/usr/bin/env bash
# Builds everything and runs every test.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh"
build=${KV_BUILD_DIR:-$root/build}
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$(nproc 2>/dev/null || echo 2)"
