#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the codec folder need, only those missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev libgl-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  lame madplay vorbis-tools musepack-tools alsa-utils sox
  qt6-svg-dev libqt6svg6
  xvfb xauth imagemagick xdotool
  python3-pyatspi at-spi2-core dbus-x11
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=()
[ "$(id -u)" -ne 0 ] && sudo=(sudo)
echo "Installing: ${missing[*]}" >&2
"${sudo[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
