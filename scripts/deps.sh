#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the codec folder need, only those missing.
# Usage: scripts/deps.sh [sanitizers] [fuzz], the groups adding what scripts/test-sanitizers.sh
# and scripts/fuzz.sh need besides.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev libgl-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  lame madplay vorbis-tools musepack-tools alsa-utils sox
  # The CLI test that counts its queries of the file system.
  strace
  # The tests that listen to the players run their own sound server.
  pulseaudio pulseaudio-utils libasound2-plugins
  locales
  qt6-svg-dev libqt6svg6
  xvfb xauth imagemagick xdotool
  python3-pyatspi at-spi2-core dbus-x11
  appstream man-db
)
for group in "$@"; do
  case $group in
    # gcc's AddressSanitizer and UndefinedBehaviorSanitizer runtimes.
    sanitizers) packages+=(libasan8 libubsan1) ;;
    # clang with its runtimes, libFuzzer's among them.
    fuzz) packages+=(clang libclang-rt-dev) ;;
    *) echo "deps.sh: unknown group $group (sanitizers, fuzz)" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

sudo=()
[ "$(id -u)" -ne 0 ] && sudo=(sudo)
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}" >&2
  "${sudo[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
fi

# The tests run the program under these locales: digits, separators and minus signs differ.
for l in en_US de_DE ru_RU sv_SE ar_EG; do
  if ! locale -a 2>/dev/null | grep -qix "$l\.utf-\?8"; then
    echo "Generating locale $l.UTF-8" >&2
    "${sudo[@]}" localedef -i "$l" -f UTF-8 "$l.UTF-8"
  fi
done
