#!/usr/bin/env bash
# Runs the dialog tests of host_tests (the template's dialog, and a plugin
# that opens its dialog in a preview) on a virtual X server, in a Wine prefix
# of their own. Wine ties a prefix's desktop to the display of the session's
# first process; the prefix the other host tests share runs without one, so
# a dialog there would never reach the screen. The session here is ended while
# its display still lives. Usage: dialog_xvfb.sh HOST_TESTS WINE64 WINESERVER PREFIX
set -u
tests=$1 wine=$2 wineserver=$3
export WINEPREFIX=$4 WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
"$wineserver" -k 2>/dev/null
exec xvfb-run -a -s "-screen 0 1280x1024x24" bash -c '
  test -f "$WINEPREFIX/system.reg" || "$1" wineboot -i >/dev/null 2>&1
  "$0" --gtest_filter="PluginDialogXvfb.*:WindowsPluginTest.APluginThatShowsItsDialogInAPreviewIsStopped"
  status=$?
  "$2" -k 2>/dev/null
  exit $status' "$tests" "$wine" "$wineserver"
