#!/usr/bin/env bash
# Builds the program and starts it on a folder (the home folder when none is given).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/build.sh" >&2
build=${KV_BUILD_DIR:-$root/build}
exec "$build/bin/kestrelvane-cli" list "${@:-$HOME}"
