#!/usr/bin/env bash
# The window's soak (see bench/soak_bench.cpp): FILES one-second WAVs (half mono, half stereo,
# 44.1 kHz; hard links of two files under different names) converted to MP3 with 8 slots and
# decoded back, ROUNDS rounds in one window process, with the codec entries of the build's
# bin/codec/. Goals: resident memory within 5 MB of round 1's end, no descriptor or child left,
# every target valid; the exit status is the benchmark's.
#   bench/soak_bench.sh [BUILD_DIR] [FILES] [ROUNDS]     (defaults: build, 1000, 3)
# Needs sox to make the WAVs and lame, which the codec entries run; both are installed when missing.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-${KV_BUILD_DIR:-$root/build}}
count=${2:-1000}
rounds=${3:-3}

missing=()
for tool in sox lame; do
    command -v "$tool" >/dev/null || missing+=("$tool")
done
if [ ${#missing[@]} -gt 0 ]; then
    sudo=()
    [ "$(id -u)" -ne 0 ] && sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cmake -S "$root" -B "$build" -DKV_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target soak_bench kv_codec_folder >/dev/null

work=$(mktemp -d "${TMPDIR:-/tmp}/kv-soak.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/prog" "$work/wav"
cp -r "$build/bin/codec" "$work/prog/"
sox -q -n -r 44100 -c 1 -b 16 "$work/mono.wav" synth 1 pinknoise vol 0.3 fade 0.05 1 0.05
sox -q -n -r 44100 -c 2 -b 16 "$work/stereo.wav" synth 1 pinknoise vol 0.3 fade 0.05 1 0.05
for ((i = 1; i <= count; i++)); do
    if ((i % 2)); then kind=mono; else kind=stereo; fi
    ln "$work/$kind.wav" "$work/wav/$(printf 'clip%05d' "$i").wav"
done

echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg) on $(nproc) processors"
status=0
# Niced: the machine may be shared; the codecs inherit it.
nice -n 5 "$build/bin/soak_bench" "$work" "$rounds" || status=$?
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
exit "$status"
