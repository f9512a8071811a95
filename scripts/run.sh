#!/usr/bin/env bash
# Installs what is missing, builds Trel and runs it on the shipped sample data:
# trel-cli reads each sample filter, then the program opens the samples folder in
# its left pane (in a window on your display, or without one under Xvfb, where a
# screenshot of the window is saved as build/trel-samples.png).
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

echo "== trel $PWD/data/samples/"
if [[ -n "${DISPLAY:-}" ]]; then
  "$dir/src/app/trel" "$PWD/data/samples/"
else
  TREL_AUTO_ACCEPT=1 TREL_QUIT_AFTER_MS=3000 TREL_SCREENSHOT="$PWD/build/trel-samples.png" \
    xvfb-run -a "$dir/src/app/trel" "$PWD/data/samples/"
  echo "Screenshot of the window: build/trel-samples.png"
fi
