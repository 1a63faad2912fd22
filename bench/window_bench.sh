#!/usr/bin/env bash
# The window's speed goals (see bench/window_bench.cpp). Builds its workload once under
# bench/work/window (hard links, so 1,000 MP3s cost the disk one file) and runs the benchmark
# three times. Usage: bench/window_bench.sh [BUILD_DIR]   (needs sox and lame)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
work=$root/bench/work/window
cmake -S "$root" -B "$build" -DKV_BUILD_BENCH=ON >/dev/null
cmake --build "$build" --target window_bench kv_codec_folder >/dev/null

if [ ! -f "$work/done" ]; then
  rm -rf "$work" && mkdir -p "$work/prog" "$work/mp3" "$work/wav" "$work/tree/big"
  sox -n -r 44100 -c 2 -b 16 "$work/src.wav" synth 180 pinknoise vol 0.4
  lame --silent -V 2 "$work/src.wav" "$work/src.mp3"
  for i in $(seq -w 1 1000); do ln "$work/src.mp3" "$work/mp3/track$i.mp3"; done
  sox -n -r 44100 -c 2 -b 16 "$work/one.wav" synth 1 sine 440 vol 0.3
  for i in $(seq -w 1 10000); do ln "$work/one.wav" "$work/wav/clip$i.wav"; done
  for d in $(seq -w 1 1000); do
    mkdir "$work/tree/big/folder$d"
    (cd "$work/tree/big/folder$d" && touch $(printf 'file%03d.wav ' $(seq 1 100)))
  done
  rm -f "$work/src.wav"
  touch "$work/done"
fi
rm -rf "$work/prog" && mkdir -p "$work/prog" && cp -r "$build/bin/codec" "$work/prog/"
for run in 1 2 3; do
  echo "run $run"
  "$build/bin/window_bench" "$work" 2>/dev/null
done
