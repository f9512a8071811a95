#!/usr/bin/env bash
# Configures and builds Trel. Usage: scripts/build.sh [--sanitize] (build folder: build/ or build-asan/)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build
flags=(-DTREL_WERROR=ON)
# CI sets TREL_BUILD_BENCH=OFF: the benchmarks are not run there, so not built.
[[ -n "${TREL_BUILD_BENCH:-}" ]] && flags+=(-DTREL_BUILD_BENCH="$TREL_BUILD_BENCH")
# CI sets TREL_DEBUG_INFO=OFF: nobody steps through its build, and debug info
# costs a third of the time of compiling the test programs.
# Both ways are passed, so that a build folder doesn't keep the other choice.
debug=-g
[[ "${TREL_DEBUG_INFO:-ON}" == OFF ]] && debug=
flags+=(-DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 $debug -DNDEBUG" -DCMAKE_C_FLAGS_RELWITHDEBINFO="-O2 $debug -DNDEBUG")
if [[ "${1:-}" == "--sanitize" ]]; then
  dir=build-asan
  flags+=(-DTREL_SANITIZE=ON -DTREL_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug)
fi
# Build output goes to stderr; stdout carries only the build folder for callers.
cmake -S . -B "$dir" -G Ninja "${flags[@]}" >&2
cmake --build "$dir" -j "$(nproc)" >&2
echo "$dir"
