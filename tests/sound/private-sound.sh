#!/usr/bin/env bash
# private-sound.sh PROGRAM [ARGS...]
#
# Runs PROGRAM in private mount and process namespaces with a pulseaudio server whose only sink is
# a null sink, so that whatever plays can be recorded from its monitor (KV_SOUND_MONITOR, at
# KV_SOUND_RATE, mono 16-bit); the machine's own sound server, cards and home are never touched.
# Exit status: PROGRAM's; 77 (ctest's "skipped") when no private namespace or mount can be had.
set -euo pipefail
sink=kvsink rate=44100
skip() { echo "private-sound: skipped: $*" >&2; exit 77; }
fail() { echo "private-sound: $*" >&2; exit 1; }

if [ "${KV_PRIVATE_SOUND_INSIDE:-}" != 1 ]; then
  for tool in pulseaudio pactl pacat; do command -v "$tool" >/dev/null || fail "$tool is missing (scripts/deps.sh installs it)"; done
  # Anyone but root gets the namespaces through a user namespace, where the kernel allows one.
  # This script is the namespace's first process, so whatever it starts ends with it, and
  # --kill-child ends it when unshare itself is killed (a test's time limit).
  user=()
  [ "$(id -u)" -eq 0 ] || user=(--map-root-user)
  ns=(unshare "${user[@]}" --mount --propagation private --pid --fork --kill-child --mount-proc)
  reason=$("${ns[@]}" true 2>&1) || skip "no private namespace (${reason:-unshare failed})"
  export KV_PRIVATE_SOUND_INSIDE=1
  exec "${ns[@]}" "$BASH" "$(readlink -f "$0")" "$@"
fi
unset KV_PRIVATE_SOUND_INSIDE
uid=$(id -u)
home=$(getent passwd "$uid" | cut -d: -f6 || true)
runtime=/run/user/$uid own=/run/user/$uid/private-sound

mkdir -p /run/user 2>/dev/null || true
mount -t tmpfs -o mode=0755,size=16m private-sound /run/user 2>/dev/null || skip "cannot mount a tmpfs over /run/user"
# Else the server's shared memory would be files in the machine's /dev/shm.
mount -t tmpfs -o mode=1777,size=64m private-shm /dev/shm || fail "cannot mount a tmpfs over /dev/shm"
mkdir -m 0700 "$runtime" "$own" "$own/home" "$own/client"

# Every client, even one started with no environment, reads its cookie here instead of the
# user's home and starts no server of its own; a user's own client.conf is covered too.
head -c 256 /dev/urandom >"$own/client/cookie"
printf '%s\n' "cookie-file = $own/client/cookie" "autospawn = no" >"$own/client/private-sound.conf"
mount --bind "$own/client" /etc/pulse/client.conf.d
if [ -n "$home" ] && [ -d "$home/.config/pulse" ]; then
  cp "$own/client/private-sound.conf" "$own/client/client.conf"
  mount --bind "$own/client" "$home/.config/pulse"
fi
# ALSA players (aplay, ogg123) reach the server through the pulse plugin, ALSA's default while a
# server runs; a machine's /etc/asound.conf or ~/.asoundrc naming a card is covered, here only.
printf '%s\n' 'pcm.!default { type pulse }' 'ctl.!default { type pulse }' >"$own/asound.conf"
for conf in /etc/asound.conf ${home:+"$home/.asoundrc"}; do
  [ ! -f "$conf" ] || mount --bind "$own/asound.conf" "$conf"
done

# Root may run an ordinary per-user server. No real-time or raised priority: a test's server must
# not compete with the machine; no CPU limiter: on a busy machine it would kill the server.
env -i HOME="$own/home" XDG_RUNTIME_DIR="$runtime" PATH=/usr/bin:/bin \
  pulseaudio --daemonize=no --system=no -n --exit-idle-time=-1 --disallow-exit \
  --realtime=no --high-priority=no --no-cpu-limit --use-pid-file=no \
  --log-target="file:$own/server.log" --log-level=warning \
  -L "module-native-protocol-unix auth-cookie-enabled=0" \
  -L "module-null-sink sink_name=$sink format=s16le rate=$rate channels=1" &
server=$!
export XDG_RUNTIME_DIR=$runtime
for v in $(compgen -e); do case $v in PULSE_* | ALSA_CONFIG_PATH) unset "$v" ;; esac; done
export PULSE_SERVER=unix:$runtime/pulse/native
for _ in $(seq 200); do kill -0 "$server" 2>/dev/null && ! pactl info >/dev/null 2>&1 || break; sleep 0.05; done
pactl info >/dev/null 2>&1 || { cat "$own/server.log" >&2 2>/dev/null || true; fail "the sound server did not start"; }
pactl set-default-sink "$sink"

# A silent stream keeps the sink running between two sounds, so recorded positions follow the
# clock; the sink is held suspended until the stream is there, so it never begins with a long block.
pactl suspend-sink "$sink" 1
pacat --playback --raw --device="$sink" --format=s16le --rate="$rate" --channels=1 --latency-msec=10 \
  --client-name=private-sound-silence </dev/zero &
for _ in $(seq 100); do [ -z "$(pactl list short sink-inputs)" ] || break; sleep 0.02; done
pactl suspend-sink "$sink" 0
# The codec entries start players with no environment; they must land here, not on a sound card.
env -i XDG_RUNTIME_DIR="$runtime" /usr/bin/aplay -L 2>/dev/null | grep -A1 -x default | grep -q PulseAudio \
  || fail "ALSA's default device is not the sound server (is libasound2-plugins installed?)"

export KV_SOUND_MONITOR=$sink.monitor KV_SOUND_RATE=$rate
# Under set -e PROGRAM's failure is the script's exit status.
"$@"
