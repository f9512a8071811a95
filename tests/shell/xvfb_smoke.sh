#!/usr/bin/env bash
# Starts trel twice on an empty settings store under Xvfb and checks the first
# run, the state written at the end and the second run. Usage: xvfb_smoke.sh TREL OUTDIR
set -euo pipefail
trel=$(realpath "$1")
out=$(realpath -m "$2")
mkdir -p "$out"
# A sanitizer build reports the D-Bus library's own allocations as leaks.
export LSAN_OPTIONS="suppressions=$(dirname "$(realpath "$0")")/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
home="$work/home"
here="$work/folder"
mkdir -p "$home" "$here/sub"
printf 'x' > "$here/one.8bf"
cd "$here"

run() {
  TREL_HOME="$home" TREL_QUIT_AFTER_MS=1200 TREL_SCREENSHOT="$1" \
    xvfb-run -a -s "-screen 0 1280x1024x24" "$trel" 2>"$work/stderr.txt"
}
fail() { echo "FAIL: $*"; cat "$work/stderr.txt" 2>/dev/null; exit 1; }

first=$(run "$out/trel-window.png") || fail "the first start failed"
echo "$first"
[[ $(grep -c '^auto-accepted: Trel$' <<<"$first") == 1 ]] || fail "the first start shows the welcome once"
grep -q '^auto-accepted: Tip of the Day$' <<<"$first" || fail "the tip of the day shows at the first start"
[[ -s "$out/trel-window.png" ]] || fail "no screenshot"
ini="$home/Trel10.ini"
[[ -f "$ini" ]] || fail "no settings file"
for key in Folder0 Folder1 Sortkey0 Sortkey1 SortDirection0 SortDirection1 Pattern1 Pattern2 \
           FileViewMode0 FileViewMode1 Width Height Maximize LastX LastY; do
  grep -q "^$key=" "$ini" || fail "$key missing"
done
grep -qx "Folder0=$here/" "$ini" || fail "Folder0 is not the process's folder"
grep -qx "Folder1=$here/" "$ini" || fail "Folder1 is not the process's folder"
grep -qx "FileViewMode0=3" "$ini" || fail "pane 0 is not in Details mode"
grep -qx "FileViewMode1=3" "$ini" || fail "pane 1 is not in Details mode"
[[ -f "$home/TipOfDay.txt" ]] || fail "the program folder was not filled"

# The second start: a typed mask and a view mode to restore, no welcome.
sed -i 's/^Pattern1=.*/Pattern1=-*.8bf/; s/^FileViewMode1=.*/FileViewMode1=4/' "$ini"
second=$(run "$out/trel-window-second.png") || fail "the second start failed"
echo "$second"
grep -q '^auto-accepted: Trel$' <<<"$second" && fail "the welcome came back"
grep -qx 'Pattern1=-\*.8bf' "$ini" || fail "the typed mask was not kept"
grep -qx 'FileViewMode1=4' "$ini" || fail "the Classic mode was not kept"
grep -qx "Folder0=$here/" "$ini" || fail "Folder0 changed"
echo "ok"
