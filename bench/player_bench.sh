#!/usr/bin/env bash
# The player's latencies, measured from the recording of a private sound server's monitor (a
# silent stream keeps the sink running, so the recording keeps wall-clock time): Play to the
# first sound, the silence between two rows, Stop and a refill to silence. Runs the window's
# hearing test ROUNDS times (5) and prints the median and the worst of each figure.
# Usage: bench/player_bench.sh [BUILD_DIR [ROUNDS]]   (needs the packages of scripts/deps.sh and
# the right to make a private mount namespace, as root has)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
rounds=${2:-5}
cmake --build "$build" --target playerhearing_test kv_codec_folder >/dev/null
out=$(mktemp)
trap 'rm -f "$out"' EXIT
for _ in $(seq "$rounds"); do
  QT_QPA_PLATFORM=offscreen "$root/tests/sound/private-sound.sh" "$build/tests/playerhearing_test" 2>/dev/null \
    | grep -E ' ms$' >>"$out"
done
printf '%-40s %8s %8s %6s\n' figure median worst count
sed -E 's/ +([0-9]+) ms$/\t\1/' "$out" | sort -t$'\t' -k1,1 -k2,2n | awk -F'\t' '
  { v[$1] = v[$1] " " $2; n[$1]++ }
  END { for (k in v) { c = split(substr(v[k], 2), a, " "); printf "%-40s %6d ms %6d ms %6d\n", k, a[int((c + 1) / 2)], a[c], c } }' | sort
