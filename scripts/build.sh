#!/usr/bin/env bash
# Configures and builds Trel. Usage: scripts/build.sh [--sanitize] (build folder: build/ or build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build
flags=(-DTREL_WERROR=ON)
if [[ "${1:-}" == "--sanitize" ]]; then
  dir=build-asan
  flags+=(-DTREL_SANITIZE=ON -DTREL_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug)
fi
cmake -S . -B "$dir" -G Ninja "${flags[@]}" >/dev/null
cmake --build "$dir" -j "$(nproc)"
echo "$dir"
