#!/usr/bin/env bash
# Listing speed and memory of `kestrelvane-cli list` on two workloads it builds itself:
#  (a) 200 copies of one 3-minute VBR MP3 (about 2.8 MB each), compared with `cat` reading the
#      same files and with `mediainfo` on the same folder;
#  (b) 10,000 one-second WAV files.
# Goals: (a) at most 2x cat and faster than mediainfo; (b) under 0.3 s; peak memory under 30 MB.
# Usage: bench/list_bench.sh [BUILD_DIR]   (needs sox, lame, hyperfine, mediainfo, GNU time)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
cli=$build/bin/kestrelvane-cli
work=$root/bench/work/list
[ -x "$cli" ] || { echo "build first: $cli missing" >&2; exit 2; }
for tool in sox lame hyperfine mediainfo /usr/bin/time; do
  command -v "$tool" >/dev/null || { echo "missing $tool (apt-get install sox lame hyperfine mediainfo time)" >&2; exit 2; }
done

mkdir -p "$work/mp3" "$work/wav"
if [ ! -f "$work/mp3/done" ]; then
  sox -n -r 44100 -c 2 -b 16 "$work/src.wav" synth 180 pinknoise vol 0.4
  lame --silent -V 2 "$work/src.wav" "$work/src.mp3"
  for i in $(seq -w 1 200); do cp "$work/src.mp3" "$work/mp3/track$i.mp3"; done
  rm -f "$work/src.wav"
  touch "$work/mp3/done"
fi
if [ ! -f "$work/wav/done" ]; then
  sox -n -r 44100 -c 2 -b 16 "$work/one.wav" synth 1 sine 440 vol 0.3
  for i in $(seq -w 1 10000); do cp "$work/one.wav" "$work/wav/clip$i.wav"; done
  touch "$work/wav/done"
fi

# Page cache warm for every contender.
cat "$work"/mp3/*.mp3 >/dev/null
cat "$work"/wav/*.wav >/dev/null

json=$work/results.json
hyperfine --style basic --warmup 2 --runs 10 --export-json "$json" \
  -n cat "cat $work/mp3/*.mp3 > /dev/null" \
  -n list-mp3 "$cli list --kind mp3 $work/mp3 > /dev/null" \
  -n list-wav "$cli list $work/wav > /dev/null" >&2
hyperfine --style basic --warmup 1 --runs 3 --export-json "$work/mediainfo.json" \
  -n mediainfo "mediainfo $work/mp3 > /dev/null" >&2

peak() { /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -n 1; }
mem_mp3=$(peak "$cli" list --kind mp3 "$work/mp3")
mem_wav=$(peak "$cli" list "$work/wav")

python3 - "$json" "$work/mediainfo.json" "$mem_mp3" "$mem_wav" <<'PY'
import json, sys
r = {x["command"]: x["mean"] for x in json.load(open(sys.argv[1]))["results"]}
mi = json.load(open(sys.argv[2]))["results"][0]["mean"]
mem_mp3, mem_wav = int(sys.argv[3]) / 1024, int(sys.argv[4]) / 1024
ratio = r["list-mp3"] / r["cat"]
rows = [
    ("(a) list 200 MP3s", f'{r["list-mp3"]*1000:.1f} ms', f'{ratio:.2f}x cat ({r["cat"]*1000:.1f} ms)', ratio <= 2.0),
    ("(a) vs mediainfo", f'{mi*1000:.1f} ms', "list must be faster", r["list-mp3"] < mi),
    ("(b) list 10,000 WAVs", f'{r["list-wav"]*1000:.1f} ms', "< 300 ms", r["list-wav"] < 0.3),
    ("peak memory (a)", f"{mem_mp3:.1f} MB", "< 30 MB", mem_mp3 < 30),
    ("peak memory (b)", f"{mem_wav:.1f} MB", "< 30 MB", mem_wav < 30),
]
for name, value, goal, ok in rows:
    print(f"{name:24} {value:>12}   {goal:32} {'ok' if ok else 'MISSED'}")
sys.exit(0 if all(ok for *_, ok in rows) else 1)
PY
