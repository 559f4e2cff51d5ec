#!/usr/bin/env bash
# Installs what building, running and testing Harbor needs on Debian, as root.
# Does nothing when everything is already there.
set -euo pipefail
packages=(
  build-essential cmake ninja-build pkg-config ccache clang libclang-rt-dev
  libsdl2-dev libx11-dev libgl-dev libgl1-mesa-dri
  libgtest-dev libbenchmark-dev libtinyxml2-dev libimgui-dev
  xvfb xauth xdotool x11-utils openbox imagemagick gdb
)
missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
