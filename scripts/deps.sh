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

# 32-bit Windows plugins also need wine32, which needs the i386 architecture.
# Some mirrors serve an i386 index out of step with amd64 (the security
# index most often), and then wine32 cannot be installed next to wine64: the
# set-up goes on without it, the 32-bit tests skip saying so, and those
# plugins get a message naming the package.
# A failed try is remembered for a day, so that each test run does not
# fetch the indexes again.
stamp="${XDG_CACHE_HOME:-$HOME/.cache}/trel/wine32-unavailable"
if [[ -n "$(find "$stamp" -mmin -1440 2>/dev/null)" ]]; then
  echo "wine32 (i386) could not be installed at $(date -r "$stamp" '+%F %R'); not tried again today" \
       "(remove $stamp to try now). 32-bit plugins will say that the 32-bit Wine is missing." >&2
elif ! dpkg-query -W -f='${Status}' wine32:i386 2>/dev/null | grep -q 'install ok installed'; then
  added=0
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    dpkg --add-architecture i386 && added=1
  fi
  export DEBIAN_FRONTEND=noninteractive
  if apt-get update -qq && apt-get install -y -qq --no-install-recommends wine32:i386; then
    echo "wine32 installed: 32-bit plugins run too."
  else
    echo "wine32 (i386) could not be installed from this mirror; going on without it." \
         "32-bit plugins will say that the 32-bit Wine is missing." >&2
    # Without any i386 package the architecture is taken back, so that a
    # broken i386 index does not fail later updates.
    if ((added)) && ! dpkg -l | grep -q ':i386'; then dpkg --remove-architecture i386 || true; fi
    apt-get update -qq || true
    mkdir -p "$(dirname "$stamp")" && touch "$stamp" || true
  fi
fi
