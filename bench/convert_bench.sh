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
# The options the default settings give Make Mp3.
options=(--preset extreme --silent --priority)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

make_set() { # name count seconds
    local dir=$work/$1
    mkdir -p "$dir"
    for ((i = 1; i <= $2; i++)); do
        sox -q -n -r 44100 -c 2 -b 16 "$dir/track $i.wav" synth "$3" pinknoise vol 0.3 fade 0.1 "$3" 0.1
    done
}

now() { date +%s.%N; }

run_cli() { # dir
    rm -f "$1"/*.mp3
    local t0; t0=$(now)
    "$cli" convert --to mp3 --jobs 2 "$1" > /dev/null 2>&1
    awk -v a="$(now)" -v b="$t0" 'BEGIN { printf "%.3f\n", a - b }'
}

run_xargs() { # dir
    rm -f "$1"/*.mp3
    local t0; t0=$(now)
    for f in "$1"/*.wav; do printf '%s\0%s\0' "$f" "${f%.wav}.mp3"; done |
        xargs -0 -n 2 -P 2 "$codec" "${options[@]}"
    awk -v a="$(now)" -v b="$t0" 'BEGIN { printf "%.3f\n", a - b }'
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
    local ma mb
    ma=$(printf '%s\n' "${a[@]}" | median)
    mb=$(printf '%s\n' "${b[@]}" | median)
    printf '%-22s cli %7.2f s  xargs %7.2f s  ratio %.3f (goal <= %s)\n' \
        "$2 x $3 s:" "$ma" "$mb" "$(awk -v a="$ma" -v b="$mb" 'BEGIN { print a / b }')" "$4"
    printf '    cli rounds: %s\n    xargs rounds: %s\n' "${a[*]}" "${b[*]}"
}

echo "kestrelvane-cli convert --to mp3 --jobs 2 vs xargs -P 2, median of $rounds rounds each"
bench short 40 5 1.05
bench long 12 180 1.02
