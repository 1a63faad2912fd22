#!/usr/bin/env bash
# Regenerates the tone files the listening tests play, named tone-PITCH.EXT: one second of a sine,
# mono, 44.1 kHz, at half of full scale with 5 ms fades, in each format the program plays. The
# pitches are far apart and none is a multiple of another, so a recording tells each file from
# the others within 10 ms. The same tools give the same bytes (sox without dither, oggenc with a
# fixed serial number). Needs sox, lame, oggenc and mpcenc (scripts/deps.sh).
set -euo pipefail
cd "$(dirname "$0")"
for pitch in 440 660 990 1480; do
  sox -D -n -r 44100 -c 1 -b 16 "tone-$pitch.wav" synth 1 sine "$pitch" vol 0.5 fade 0.005 1 0.005
  lame --quiet -b 64 "tone-$pitch.wav" "tone-$pitch.mp3"
  oggenc --quiet -q 2 --serial "$pitch" -o "tone-$pitch.ogg" "tone-$pitch.wav"
  # Without --overwrite mpcenc would wait for an answer about the existing target.
  mpcenc --silent --overwrite "tone-$pitch.wav" "tone-$pitch.mpc"
done
