#!/usr/bin/env bash
# Installs what is missing, builds Trel and runs every test.
# Usage: scripts/test.sh [--sanitize]   (address and undefined-behaviour sanitizers)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
dir=$(bash scripts/build.sh "$@" | tail -n 1)
export QT_QPA_PLATFORM=offscreen
# The tests' trash, file associations and program folders stay in the build
# folder, never in the home of whoever runs them.
export XDG_DATA_HOME="$PWD/$dir/test-home/data" XDG_CONFIG_HOME="$PWD/$dir/test-home/config"
mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$dir" --output-on-failure -j "$(nproc)"
