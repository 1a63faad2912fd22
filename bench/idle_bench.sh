#!/usr/bin/env bash
# Processor time of an idle window: once after start-up, once after the player played a folder
# through and stopped. Each is measured over SECONDS (30) from /proc/PID/stat, under Xvfb, with
# keys sent by xdotool. Usage: bench/idle_bench.sh [BUILD_DIR [SECONDS]]   (needs sox, lame,
# xvfb-run, xdotool; installed with apt-get when missing and run as root)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
seconds=${2:-30}
for tool in sox:sox lame:lame xvfb-run:xvfb xdotool:xdotool; do
  command -v "${tool%%:*}" >/dev/null || { [ "$(id -u)" -eq 0 ] && apt-get install -y -qq "${tool#*:}" >/dev/null; }
done
cmake --build "$build" --target kestrelvane >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/prog" "$work/music"
cp "$build/bin/kestrelvane" "$work/prog/" && cp -r "$build/bin/codec" "$work/prog/"
for f in 440 660 990; do
  sox -q -n -r 44100 -c 1 -b 16 "$work/t.wav" synth 1 sine "$f"
  lame --quiet -b 64 "$work/t.wav" "$work/music/tone $f.mp3"
done
rm "$work/t.wav"

cat >"$work/session.sh" <<INNER
#!/usr/bin/env bash
set -e
ticks() { awk '{ print \$14 + \$15 }' /proc/\$1/stat; }
"$work/prog/kestrelvane" "$work/music" 2>/dev/null & pid=\$!
win=\$(xdotool search --sync --name '^Kestrelvane\$' | head -1)
sleep 2
a=\$(ticks \$pid); sleep $seconds; b=\$(ticks \$pid)
echo "idle window: \$((b - a)) ticks of \$(getconf CLK_TCK) per second over $seconds s"
xdotool windowactivate --sync "\$win" 2>/dev/null || xdotool windowfocus --sync "\$win"
# Show Mp3, the first row, Play; without a sound device every file ends at once and the list
# runs through. Then Stop, and the player is idle.
xdotool key --window "\$win" ctrl+2 alt+l Home F5
sleep 3
xdotool key --window "\$win" F6
sleep 1
a=\$(ticks \$pid); sleep $seconds; b=\$(ticks \$pid)
echo "idle player after playing: \$((b - a)) ticks over $seconds s"
kill \$pid
INNER
chmod +x "$work/session.sh"
xvfb-run -a -s "-screen 0 1024x768x24" "$work/session.sh"
