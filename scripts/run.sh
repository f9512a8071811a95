#!/usr/bin/env bash
# Installs what is missing, builds Trel and runs it on the demo collection: trel-cli
# reads each shipped sample filter, then the program opens the demo collection
# (filters written for Trel, compiled into plugins at build time, two of them
# disabled, and an FFL library) in Plugin View with a preview of the first
# filter, in a window on your display, or without one under Xvfb, where a
# screenshot of the window is saved as build/trel-demo.png.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
dir=$(bash scripts/build.sh | tail -n 1)
cli="$dir/src/cli/trel-cli"
for sample in data/samples/*.afs data/samples/*.pff data/samples/*.txt; do
  echo "== trel-cli show $sample"
  "$cli" show "$sample"
done
echo "== trel-cli ffl list data/samples/Samples.ffl"
"$cli" ffl list data/samples/Samples.ffl
echo "== trel-cli convert --to 8bf, then scan"
out=$(mktemp -d)
"$cli" convert --to 8bf -o "$out" data/samples/*.afs data/samples/*.txt
"$cli" scan "$out"
rm -rf "$out"

demo="$PWD/$dir/demo/"
echo "== trel-cli scan $demo (two of the plugins are disabled)"
"$cli" scan "$demo"
echo "== trel $demo"
if [[ -n "${DISPLAY:-}" ]]; then
  TREL_START_VIEW=plugin "$dir/src/app/trel" "$demo"
else
  TREL_START_VIEW=plugin TREL_QUIT_AFTER_MS=5000 TREL_SCREENSHOT="$PWD/build/trel-demo.png" \
    xvfb-run -a "$dir/tests/support/trel_unattended" "$demo"
  echo "Screenshot of the window: build/trel-demo.png"
fi
