#!/usr/bin/env bash
# Regenerates the tones the listening tests play, tone-PITCH.EXT: one second of a sine at half of
# full scale, 5 ms fades, pitches far apart. Same tools, same bytes (sox without dither, oggenc
# with a fixed serial number). Needs sox, lame, oggenc and mpcenc (scripts/deps.sh).
set -euo pipefail
cd "$(dirname "$0")"
for pitch in 440 660 990 1480; do
  sox -D -n -r 44100 -c 1 -b 16 "tone-$pitch.wav" synth 1 sine "$pitch" vol 0.5 fade 0.005 1 0.005
  lame --quiet -b 64 "tone-$pitch.wav" "tone-$pitch.mp3"
  oggenc --quiet -q 2 --serial "$pitch" -o "tone-$pitch.ogg" "tone-$pitch.wav"
  # Without --overwrite mpcenc would wait for an answer about the existing target.
  mpcenc --silent --overwrite "tone-$pitch.wav" "tone-$pitch.mpc"
done
