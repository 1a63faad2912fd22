#!/usr/bin/env bash
# private-sound.sh PROGRAM [ARGS...]
#
# Runs PROGRAM in a sound world of its own: private mount and process namespaces, a fresh tmpfs
# over /run/user and /dev/shm, and a pulseaudio server whose only sink is a null sink fed with a
# silent stream, so that whatever plays can be recorded from its monitor. The machine's own sound
# server, sound cards, runtime folders and home are never touched, and every process started in
# here (the server, the program, anything the program leaves behind) ends with the run.
#
# PROGRAM gets XDG_RUNTIME_DIR=/run/user/UID and PULSE_SERVER (clients started with an empty
# environment find the server through that folder too), KV_SOUND_SINK, KV_SOUND_MONITOR (the source
# to record) and KV_SOUND_RATE (the sink's sampling rate, mono 16-bit).
#
# Exit status: PROGRAM's; 77 (ctest's "skipped") when no private namespace or mount can be had;
# 1 when the server cannot be set up although it should.
set -euo pipefail

sink=kvsink
rate=44100

skip() {
  echo "private-sound: skipped: $*" >&2
  exit 77
}
fail() {
  echo "private-sound: $*" >&2
  exit 1
}

if [ "${KV_PRIVATE_SOUND_INSIDE:-}" != 1 ]; then
  [ $# -ge 1 ] || fail "usage: private-sound.sh PROGRAM [ARGS...]"
  command -v unshare >/dev/null || skip "unshare is not installed"
  for tool in pulseaudio pactl pacat; do
    command -v "$tool" >/dev/null || fail "$tool is missing (scripts/deps.sh installs it)"
  done
  # Root gets the namespaces as it is; anyone else through a user namespace of their own, where
  # the kernel allows one. A process namespace ends everything inside when its first process ends,
  # and --kill-child ends that one when unshare itself is killed (a test's time limit).
  user=()
  [ "$(id -u)" -eq 0 ] || user=(--map-root-user)
  ns=(unshare "${user[@]}" --mount --propagation private --pid --fork --kill-child --mount-proc)
  if ! reason=$("${ns[@]}" true 2>&1); then
    skip "no private namespace (${reason:-unshare failed})"
  fi
  export KV_PRIVATE_SOUND_INSIDE=1
  exec "${ns[@]}" "$BASH" "$(readlink -f "$0")" "$@"
fi
unset KV_PRIVATE_SOUND_INSIDE

uid=$(id -u)
home=$(getent passwd "$uid" | cut -d: -f6 || true)
runtime=/run/user/$uid

# /run is the machine's tmpfs; an empty /run/user is created where no login manager made one.
[ -d /run/user ] || mkdir -p /run/user 2>/dev/null || skip "/run/user is missing and cannot be created"
mount -t tmpfs -o mode=0755,size=16m private-sound /run/user 2>/dev/null || skip "cannot mount a tmpfs over /run/user"
# The server's shared memory would otherwise be files in the machine's /dev/shm, left behind by a
# killed run.
mount -t tmpfs -o mode=1777,size=64m private-shm /dev/shm || fail "cannot mount a tmpfs over /dev/shm"
mkdir -m 0700 "$runtime"
own=$runtime/private-sound
mkdir -m 0700 "$own" "$own/home" "$own/client"

# Every client of this world, even one started with no environment at all, reads its cookie here
# instead of creating one in the user's home, and none starts a server of its own.
head -c 256 /dev/urandom >"$own/client/cookie"
cat >"$own/client/private-sound.conf" <<EOF
cookie-file = $own/client/cookie
autospawn = no
EOF
[ -d /etc/pulse/client.conf.d ] || fail "/etc/pulse/client.conf.d is missing (is libpulse0 installed?)"
mount --bind "$own/client" /etc/pulse/client.conf.d
# A user's own client.conf is read instead of the system's: covered by the same settings.
if [ -n "$home" ] && [ -d "$home/.config/pulse" ]; then
  cp "$own/client/private-sound.conf" "$own/client/client.conf"
  mount --bind "$own/client" "$home/.config/pulse"
fi

# ALSA players (aplay, and ogg123 through libao's ALSA driver) must reach this server. On Debian
# the pulse plugin is ALSA's default while a server runs (pulseaudio's hook in
# /etc/alsa/conf.d/99-pulse.conf), but a machine's /etc/asound.conf or ~/.asoundrc may name a
# sound card instead: those that exist are covered, here only, by a file that names the server.
printf '%s\n' 'pcm.!default { type pulse }' 'ctl.!default { type pulse }' >"$own/asound.conf"
for conf in /etc/asound.conf ${home:+"$home/.asoundrc"}; do
  if [ -f "$conf" ]; then
    mount --bind "$own/asound.conf" "$conf"
  fi
done

server=
silence=
stop() {
  for pid in $silence $server; do
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
}
trap stop EXIT

# Root may run the server as an ordinary per-user one (it only warns). No real-time or raised
# priority: a test's server must not compete with the machine. No CPU limiter: on a busy machine
# it would kill the server in the middle of a test.
env -i HOME="$own/home" XDG_RUNTIME_DIR="$runtime" PATH=/usr/bin:/bin \
  pulseaudio --daemonize=no --system=no -n --exit-idle-time=-1 --disallow-exit \
  --realtime=no --high-priority=no --no-cpu-limit --use-pid-file=no \
  --log-target="file:$own/server.log" --log-level=warning \
  -L "module-native-protocol-unix auth-cookie-enabled=0" \
  -L "module-null-sink sink_name=$sink format=s16le rate=$rate channels=1" &
server=$!

export XDG_RUNTIME_DIR=$runtime
for v in $(compgen -e); do
  case $v in PULSE_* | ALSA_CONFIG_PATH) unset "$v" ;; esac
done
export PULSE_SERVER=unix:$runtime/pulse/native
ready=
for _ in $(seq 200); do
  kill -0 "$server" 2>/dev/null || break
  if pactl info >/dev/null 2>&1; then
    ready=yes
    break
  fi
  sleep 0.05
done
if [ -z "$ready" ]; then
  cat "$own/server.log" >&2 2>/dev/null || true
  fail "the sound server did not start"
fi
pactl set-default-sink "$sink"

# A silent stream for the whole run: the sink and its monitor keep running between two sounds,
# so recorded positions follow the clock. Its low latency keeps the sink's blocks short: during a
# long one, a recording that starts waits for its end (two seconds for an idle null sink). The
# sink is held suspended until the stream is there, so it never begins with a long block.
pactl suspend-sink "$sink" 1
pacat --playback --raw --device="$sink" --format=s16le --rate="$rate" --channels=1 --latency-msec=10 \
  --client-name=private-sound-silence </dev/zero &
silence=$!
for _ in $(seq 100); do
  [ -n "$(pactl list short sink-inputs)" ] && break
  sleep 0.02
done
pactl suspend-sink "$sink" 0
flowing=$(head -c 64 < <(timeout 10 parec --raw --device="$sink.monitor" --latency-msec=10 2>/dev/null) | wc -c)
[ "$flowing" -eq 64 ] || fail "the sink's monitor delivers nothing"

# The codec entries start players with no environment; they must land here, not on a sound card.
if ! env -i XDG_RUNTIME_DIR="$runtime" /usr/bin/aplay -L 2>/dev/null | grep -A1 -x default | grep -q PulseAudio; then
  fail "ALSA's default device is not the sound server (is libasound2-plugins installed?)"
fi

export KV_SOUND_SINK=$sink KV_SOUND_MONITOR=$sink.monitor KV_SOUND_RATE=$rate
set +e
"$@"
status=$?
set -e
exit "$status"
