#!/usr/bin/env bash
# Installs the Debian packages Trel builds and tests with, when any is missing.
set -euo pipefail
packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev libgl-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  nlohmann-json3-dev libcli11-dev
  zip unzip xvfb xauth xdotool openbox python3
  wine64 mingw-w64
  xdg-utils shared-mime-info
  clang libclang-rt-14-dev ccache
)
# 32-bit Windows plugins also need wine32, which needs the i386 architecture
# (dpkg --add-architecture i386; apt-get update; apt-get install wine32:i386).
# It is left out here; without it those plugins get a message naming it.
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
