#!/usr/bin/env bash
# Regenerates docs/screenshot.png (and the help document's copy): the window under Xvfb, in
# English, listing a folder of MP3 files with every file counted; with the default output also
# docs/screenshot-play.png, the player playing the third file, and docs/screenshot-convert.png,
# the window converting a folder of WAV files to MP3. Usage: scripts/screenshot.sh [LANG [OUT]]
# where LANG "ru" switches the window to Russian first and OUT is where the picture goes;
# KV_SHOT_WIDTH and KV_SHOT_HEIGHT set the window size (1024 x 700).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KV_BUILD_DIR:-$root/build}
cmake --build "$build" --target kestrelvane >/dev/null
language=${1:-en}
out=${2:-$root/docs/screenshot.png}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A program folder of its own, so no configuration file of the build reaches the picture.
mkdir -p "$work/prog" "$work/Music/Evening Concert"
cp "$build/bin/kestrelvane" "$work/prog/"
cp -r "$build/bin/codec" "$build/bin/help" "$work/prog/"
i=1
for track in "Overture:220:9" "Allegro:330:7" "Adagio:262:12" "Minuet:294:6" "Rondo:392:8" "Finale:440:10"; do
    IFS=: read -r name freq secs <<<"$track"
    sox -q -n -r 44100 -c 2 -b 16 "$work/t.wav" synth "$secs" sine "$freq" sine "$((freq * 3 / 2))" vol 0.4
    lame --quiet -V "$((i % 4 + 1))" "$work/t.wav" "$work/Music/Evening Concert/0$i $name.mp3"
    i=$((i + 1))
done
rm -f "$work/t.wav"

width=${KV_SHOT_WIDTH:-1024} height=${KV_SHOT_HEIGHT:-700}
# The tree shows every folder on the way down to the music. In a private mount namespace a
# small tmpfs over /home gives it a tidy path (/home/user/Music) whatever the machine holds;
# without one the music stays in the temporary folder.
private=()
if unshare -m --propagation private true 2>/dev/null; then
    private=(unshare -m --propagation private)
elif unshare -rm --propagation private true 2>/dev/null; then
    private=(unshare -rm --propagation private)
fi
# Runs the window on the folder FOLDER (below the music) under Xvfb and then the script BODY,
# which sees $win, $pid and $music.
shoot() {
    local folder=$1 body=$2
    cat >"$work/session.sh" <<INNER
#!/usr/bin/env bash
set -e
export LANG=C.UTF-8 LC_ALL=C.UTF-8
music="$work/Music"
if [ -n "${private[*]}" ] && mount -t tmpfs -o size=48g,mode=755 music /home 2>/dev/null; then
    mkdir -p /home/user && cp -r "$work/Music" /home/user/Music && music=/home/user/Music
fi
"$work/prog/kestrelvane" "\$music/$folder" &
pid=\$!
win=\$(xdotool search --sync --name '^Kestrelvane\$' | head -1)
xdotool windowmove "\$win" 0 0 windowsize "\$win" $width $height
sleep 1
xdotool windowactivate --sync "\$win" 2>/dev/null || xdotool windowfocus --sync "\$win"
$body
INNER
    chmod +x "$work/session.sh"
    xvfb-run -a -s "-screen 0 ${width}x${height}x24" "${private[@]}" "$work/session.sh"
}

shoot "Evening Concert" "$(cat <<BODY
xdotool key --window "\$win" ctrl+2 ctrl+shift+a
[ "$language" = ru ] && sleep 0.5 && xdotool mousemove --window "\$win" $((width - 75)) $((height - 10)) click 1
sleep 1
import -window root -crop ${width}x${height}+0+0 +repage "$out"
kill \$pid
BODY
)"
if [ "$language" = en ] && [ "$out" = "$root/docs/screenshot.png" ]; then
    cp "$out" "$root/help/rus/screenshot.png"
    echo "$out"
    # The player with a file playing: a sound server of its own lets the file play on (without a
    # sound device every player ends at once).
    if "$root/tests/sound/private-sound.sh" true 2>/dev/null; then
        out=$root/docs/screenshot-play.png
        saved=("${private[@]}")
        private=("$root/tests/sound/private-sound.sh")
        shoot "Evening Concert" "$(cat <<BODY
xdotool key --window "\$win" ctrl+2 alt+l Down Down Return
sleep 3.4
import -window root -crop ${width}x${height}+0+0 +repage "$out"
kill \$pid
BODY
)"
        private=("${saved[@]}")
        echo "$out"
    fi
    out=$root/docs/screenshot-convert.png
    # Twelve WAVs of a minute and a half: on any machine the run is still going a moment after the
    # first file is done, which is when the remaining time and the bar appear.
    mkdir -p "$work/Music/Recordings"
    for i in $(seq -w 1 12); do
        sox -q -n -r 44100 -c 2 -b 16 "$work/Music/Recordings/Take $i.wav" synth 90 pinknoise vol 0.3
    done
    shoot Recordings "$(cat <<BODY
xdotool key --window "\$win" ctrl+shift+a ctrl+shift+m
# A target more than there are slots: the first file is done and the next one started.
slots=\$(nproc); [ "\$slots" -gt 8 ] && slots=8
until [ "\$(ls "\$music/Recordings/" | grep -c '\\.mp3\$')" -gt "\$slots" ]; do sleep 0.2; done
sleep 0.3
import -window root -crop ${width}x${height}+0+0 +repage "$out"
# The window cannot be closed during a run: it and the codecs it started are ended here.
# Each codec runs in a process group of its own, named by its pid.
for c in \$(pgrep -P "\$pid" || true); do kill -- -"\$c" 2>/dev/null || true; done
kill \$pid 2>/dev/null || true
BODY
)"
fi
echo "$out"
