#!/usr/bin/env bash
# Runs the Plugin View's X display test under Xvfb and keeps its screenshot.
# Usage: pluginview_xvfb.sh SHELL_TESTS OUTDIR
set -euo pipefail
tests=$(realpath "$1")
out=$(realpath -m "$2")
mkdir -p "$out"
export LSAN_OPTIONS="suppressions=$(dirname "$(realpath "$0")")/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
QT_QPA_PLATFORM=xcb TREL_PLUGINVIEW_SHOT="$out/plugin-view.png" \
  xvfb-run -a -s "-screen 0 1280x1024x24" "$tests" --gtest_filter='PluginViewXvfb.*'
[[ -s "$out/plugin-view.png" ]] || { echo "FAIL: no screenshot"; exit 1; }
