#!/usr/bin/env bash
# Builds the program and starts the window, on FOLDER when one is given: ./scripts/run.sh [FOLDER]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh" >&2
build=${KV_BUILD_DIR:-$root/build}
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    echo "run.sh: no display for the window; use $build/bin/kestrelvane-cli (list, options, convert) instead" >&2
    exit 1
fi
exec "$build/bin/kestrelvane" "$@"
