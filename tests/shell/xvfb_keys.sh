#!/usr/bin/env bash
# Drives the real window under Xvfb with key presses only: two folders in the
# two panes, End selects the file, F5 and Return copy it to the other pane's
# folder, F8 puts it in the trash. Usage: xvfb_keys.sh TREL OUTDIR
set -euo pipefail
trel=$(realpath "$1")
out=$(realpath -m "$2")
mkdir -p "$out"
export LSAN_OPTIONS="suppressions=$(dirname "$(realpath "$0")")/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
command -v xdotool >/dev/null || { echo "SKIP: xdotool is not installed"; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
home="$work/home"
mkdir -p "$home" "$work/left" "$work/right" "$work/data"
printf 'bytes to keep' > "$work/left/key copy.txt"
cat > "$home/Trel10.ini" <<INI
[Folders]
Folder0=$work/left/
Folder1=$work/right/
[Options]
Show Tips at Startup=0
INI
fail() { echo "FAIL: $*"; cat "$work/stderr.txt" 2>/dev/null; exit 1; }

cat > "$work/drive.sh" <<DRIVE
#!/usr/bin/env bash
set -u
QT_QPA_PLATFORM=xcb TREL_HOME="$home" XDG_DATA_HOME="$work/data" TREL_QUIT_AFTER_MS=9000 TREL_SCREENSHOT="$out/trel-keys.png" \
  "$trel" 2>"$work/stderr.txt" &
pid=\$!
win=""
for _ in \$(seq 300); do
  win=\$(xdotool search --onlyvisible --name "Trel" 2>/dev/null | head -n 1) && [[ -n "\$win" ]] && break
  sleep 0.1
done
[[ -n "\$win" ]] || { echo "no window"; kill \$pid; exit 1; }
sleep 1
xdotool windowfocus --sync "\$win" 2>/dev/null || true
key() { xdotool key --clearmodifiers "\$@"; sleep 0.6; }
key End
key F5
key Return
[[ -f "$work/right/key copy.txt" ]] && echo "copied" || echo "not copied"
# Without a window manager nobody gives the focus back after the dialog.
xdotool windowfocus --sync "\$win" 2>/dev/null || true
key F8
[[ -f "$work/left/key copy.txt" ]] && echo "still there" || echo "gone"
wait \$pid
DRIVE
chmod +x "$work/drive.sh"
result=$(xvfb-run -a -s "-screen 0 1280x1024x24" "$work/drive.sh") || fail "the run failed: $result"
echo "$result"
grep -qx copied <<<"$result" || fail "F5 and Return did not copy"
[[ $(cat "$work/right/key copy.txt") == "bytes to keep" ]] || fail "the copy differs"
grep -qx gone <<<"$result" || fail "F8 did not delete"
ls "$work/data/Trash/files/key copy.txt" >/dev/null 2>&1 || ls "$work"/.Trash-*/files/"key copy.txt" >/dev/null 2>&1 ||
  fail "the file is not in the trash"
[[ -s "$out/trel-keys.png" ]] || fail "no screenshot"
echo "ok"
