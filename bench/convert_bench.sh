#!/usr/bin/env bash
# WAV -> MP3 throughput of `kestrelvane-cli convert --jobs 2` against `xargs -P 2` running the
# same codec entry with the same arguments. Builds its own workload with sox; rounds alternate
# A and B so drift in machine load hits both alike.
#
#   bench/convert_bench.sh [BUILD_DIR] [ROUNDS]
# BUILD_DIR defaults to build/ (or $KV_BUILD_DIR); ROUNDS (default 3) per variant and workload.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-${KV_BUILD_DIR:-$root/build}}
rounds=${2:-3}
cli=$build/bin/kestrelvane-cli
codec=$build/bin/codec/lame
[ -x "$cli" ] && [ -x "$codec" ] || { echo "build kestrelvane-cli into $build first" >&2; exit 2; }
# xargs runs the options the default settings give Make Mp3: "--preset extreme --silent --priority".
command -v /usr/bin/time >/dev/null || { echo "needs GNU time (apt-get install time)" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

make_set() { # name count seconds
    local dir=$work/$1
    mkdir -p "$dir"
    for ((i = 1; i <= $2; i++)); do
        sox -q -n -r 44100 -c 2 -b 16 "$dir/track $i.wav" synth "$3" pinknoise vol 0.3 fade 0.1 "$3" 0.1
    done
}

# Prints "WALL CPU": elapsed seconds and the user+system seconds of the command and its children.
timed() {
    /usr/bin/time -f '%e %U %S' -o "$work/time" "$@" > /dev/null 2>&1
    awk '{ printf "%s %.2f\n", $1, $2 + $3 }' "$work/time"
}

run_cli() { # dir
    rm -f "$1"/*.mp3
    timed "$cli" convert --to mp3 --jobs 2 "$1"
}

run_xargs() { # dir
    rm -f "$1"/*.mp3
    timed sh -c 'for f in "$1"/*.wav; do printf "%s\0%s\0" "$f" "${f%.wav}.mp3"; done |
        xargs -0 -n 2 -P 2 "$2" --preset extreme --silent --priority' sh "$1" "$codec"
}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

bench() { # name count seconds goal
    make_set "$1" "$2" "$3"
    local a=() b=()
    for ((r = 0; r < rounds; r++)); do
        if ((r % 2 == 0)); then
            a+=("$(run_cli "$work/$1")"); b+=("$(run_xargs "$work/$1")")
        else
            b+=("$(run_xargs "$work/$1")"); a+=("$(run_cli "$work/$1")")
        fi
    done
    # The raw ratio compares medians of elapsed time. This machine's CPU speed drifts between
    # rounds, so the elapsed time per CPU-second (how well the two slots are kept busy) is
    # reported too: it cancels the drift and shows the scheduling overhead alone.
    local ma mb ea eb
    ma=$(printf '%s\n' "${a[@]}" | awk '{ print $1 }' | median)
    mb=$(printf '%s\n' "${b[@]}" | awk '{ print $1 }' | median)
    ea=$(printf '%s\n' "${a[@]}" | awk '{ print $1 * 2 / $2 }' | median)
    eb=$(printf '%s\n' "${b[@]}" | awk '{ print $1 * 2 / $2 }' | median)
    printf '%-12s cli %7.2f s  xargs %7.2f s  ratio %.3f (goal <= %s);' \
        "$2 x $3 s:" "$ma" "$mb" "$(awk -v a="$ma" -v b="$mb" 'BEGIN { print a / b }')" "$4"
    printf '  wall per CPU-second: cli %.3f xargs %.3f ratio %.3f\n' "$ea" "$eb" \
        "$(awk -v a="$ea" -v b="$eb" 'BEGIN { print a / b }')"
    printf '    cli rounds (wall cpu): %s\n    xargs rounds (wall cpu): %s\n' "${a[*]}" "${b[*]}"
}

echo "kestrelvane-cli convert --to mp3 --jobs 2 vs xargs -P 2, median of $rounds rounds each"
bench short 40 5 1.05
bench long 12 180 1.02
