#!/usr/bin/env bash
# The real window under Xvfb with a window manager (openbox), driven by keys
# and the mouse as a user would:
#  - Shift+F6, a new name, Return: the file is renamed and not opened;
#  - a drag of a file from the left pane onto the right one asks for the
#    folder and moves it there.
# Usage: xvfb_wm.sh TREL OUTDIR
set -euo pipefail
trel=$(realpath "$1")
out=$(realpath -m "$2")
mkdir -p "$out"
export LSAN_OPTIONS="suppressions=$(dirname "$(realpath "$0")")/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
command -v xdotool >/dev/null || { echo "SKIP: xdotool is not installed"; exit 0; }
command -v openbox >/dev/null || { echo "SKIP: openbox is not installed"; exit 0; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
home="$work/home"
mkdir -p "$home" "$work/left" "$work/right" "$work/data" "$work/bin"
printf 'notes' > "$work/left/notes.txt"
# Whatever the desktop would open is written down instead.
cat > "$work/bin/xdg-open" <<OPEN
#!/bin/sh
echo "\$@" >> "$work/opened.txt"
OPEN
chmod +x "$work/bin/xdg-open"
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
openbox >/dev/null 2>&1 &
wm=\$!
sleep 1
PATH="$work/bin:\$PATH" QT_QPA_PLATFORM=xcb TREL_HOME="$home" XDG_DATA_HOME="$work/data" \
  TREL_QUIT_AFTER_MS=14000 TREL_SCREENSHOT="$out/trel-wm.png" "$trel" 2>"$work/stderr.txt" &
pid=\$!
win=""
for _ in \$(seq 300); do
  win=\$(xdotool search --onlyvisible --name "Trel" 2>/dev/null | head -n 1) && [[ -n "\$win" ]] && break
  sleep 0.1
done
[[ -n "\$win" ]] || { echo "no window"; kill \$pid \$wm; exit 1; }
sleep 1.5
xdotool windowactivate --sync "\$win" 2>/dev/null || true
key() { xdotool key --clearmodifiers "\$@"; sleep 0.6; }
key End
key shift+F6
xdotool type --delay 30 "renamed.txt"; sleep 0.3
key Return
sleep 1
[[ -f "$work/left/renamed.txt" && ! -e "$work/left/notes.txt" ]] && echo "renamed" || echo "not renamed"
[[ -e "$work/opened.txt" ]] && echo "opened" || echo "not opened"
# The renamed file, selected, is dragged by the mouse onto the right pane; the
# drop asks for the target folder as Move does, and Return takes the offered one.
drag() {
  xdotool mousemove --window "\$win" --sync 60 139; sleep 0.3
  xdotool mousedown 1; sleep 0.3
  for step in 1 2 3 4 5 6 7 8; do
    xdotool mousemove --window "\$win" --sync \$((60 + step * 80)) \$((139 + step * 20)); sleep 0.1
  done
  sleep 0.3
  xdotool mouseup 1; sleep 1
}
drag
key Return
sleep 0.5
[[ -f "$work/right/renamed.txt" ]] && echo "dropped" || echo "not dropped"
[[ -e "$work/left/renamed.txt" ]] && echo "source stays" || echo "source moved"
wait \$pid
echo "trel exit \$?"
kill \$wm 2>/dev/null
DRIVE
chmod +x "$work/drive.sh"
result=$(xvfb-run -a -s "-screen 0 1280x1024x24" "$work/drive.sh") || fail "the run failed: $result"
echo "$result"
grep -qx renamed <<<"$result" || fail "Shift+F6, a name and Return did not rename"
grep -qx "not opened" <<<"$result" || fail "the Return of the rename opened the file: $(cat "$work/opened.txt")"
grep -qx "trel exit 0" <<<"$result" || fail "the program did not end cleanly"
grep -qx dropped <<<"$result" || fail "the drag onto the other pane did not arrive"
grep -qx "source moved" <<<"$result" || fail "a drop between the panes moves"
[[ $(cat "$work/right/renamed.txt") == "notes" ]] || fail "the dropped file differs"
[[ -s "$out/trel-wm.png" ]] || fail "no screenshot"
echo "ok"
