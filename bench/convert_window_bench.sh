#!/usr/bin/env bash
# The window's conversion goals (see bench/convert_window_bench.cpp):
#  - 40 five-second WAVs to MP3 with 2 slots, against `xargs -P 2` running the same codec entry
#    with the same arguments (goal: within 5 %); rounds alternate so machine drift hits both;
#  - the longest gap between two ticks of tmrEncode during an 8-slot run (goal: no stall over
#    16 ms, so at most 116 ms between ticks of a 100 ms timer).
#   bench/convert_window_bench.sh [BUILD_DIR] [ROUNDS]      (needs sox)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-${KV_BUILD_DIR:-$root/build}}
rounds=${2:-3}
cmake -S "$root" -B "$build" -DKV_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target convert_window_bench kv_codec_folder >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/prog" "$work/wav"
cp -r "$build/bin/codec" "$work/prog/"
codec=$work/prog/codec/lame
for ((i = 1; i <= 40; i++)); do
    sox -q -n -r 44100 -c 2 -b 16 "$work/wav/track $i.wav" synth 5 pinknoise vol 0.3 fade 0.1 5 0.1
done

run_window() { # slots -> "WALL CPU GAP_MS LONGEST_EVENT_MS LONGEST_EVENT_CPU_MS OWN_CPU"
    rm -f "$work/wav"/*.mp3
    "$build/bin/convert_window_bench" "$work/prog/" "$work/wav" "$1" 2>/dev/null
}

run_xargs() { # -> "WALL CPU"
    rm -f "$work/wav"/*.mp3
    /usr/bin/time -f '%e %U %S' -o "$work/time" sh -c 'for f in "$1"/*.wav; do printf "%s\0%s\0" "$f" "${f%.wav}.mp3"; done |
        xargs -0 -n 2 -P 2 "$2" --preset extreme --silent --priority' sh "$work/wav" "$codec" >/dev/null 2>&1
    awk '{ printf "%s %.2f\n", $1, $2 + $3 }' "$work/time"
}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

a=() b=()
for ((r = 0; r < rounds; r++)); do
    if ((r % 2 == 0)); then
        a+=("$(run_window 2)"); b+=("$(run_xargs)")
    else
        b+=("$(run_xargs)"); a+=("$(run_window 2)")
    fi
done
ma=$(printf '%s\n' "${a[@]}" | awk '{ print $1 }' | median)
mb=$(printf '%s\n' "${b[@]}" | awk '{ print $1 }' | median)
# Elapsed time per CPU-second cancels the drift of this machine's CPU speed between rounds.
ea=$(printf '%s\n' "${a[@]}" | awk '{ print $1 * 2 / $2 }' | median)
eb=$(printf '%s\n' "${b[@]}" | awk '{ print $1 * 2 / $2 }' | median)
echo "40 x 5 s WAV -> MP3, 2 slots, median of $rounds rounds"
printf 'window %.2f s  xargs %.2f s  ratio %.3f (goal <= 1.05);  wall per CPU-second ratio %.3f\n' \
    "$ma" "$mb" "$(awk -v a="$ma" -v b="$mb" 'BEGIN { print a / b }')" "$(awk -v a="$ea" -v b="$eb" 'BEGIN { print a / b }')"
printf '  window rounds (wall cpu gap-ms event-ms event-cpu-ms own-cpu): %s\n  xargs rounds (wall cpu): %s\n' "${a[*]}" "${b[*]}"

for ((r = 0; r < rounds; r++)); do
    run_window 8 | awk '{ printf "8 slots: longest gap between tmrEncode ticks %s ms (goal <= 116); longest event %s ms, of which %s ms on the event thread'"'"'s CPU\n", $3, $4, $5 }'
done
