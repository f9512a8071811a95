#!/usr/bin/env bash
# Installs what is missing, builds Trel and runs it on the shipped sample data.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
dir=$(bash scripts/build.sh | tail -n 1)
for sample in data/samples/*; do
  echo "== trel-cli show $sample"
  "$dir/src/cli/trel-cli" show "$sample"
done
