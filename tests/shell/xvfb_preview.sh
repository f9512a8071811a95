#!/usr/bin/env bash
# The preview under Xvfb: a compiled sample filter is chosen with the preview
# on, and the Preview window's pixels must equal `trel-cli apply` of the same
# filter on the same picture. Usage: xvfb_preview.sh TREL TREL_CLI SAMPLES OUTDIR
set -euo pipefail
trel=$(realpath "$1")
cli=$(realpath "$2")
samples=$(realpath "$3")
out=$(realpath -m "$4")
mkdir -p "$out"
export LSAN_OPTIONS="suppressions=$(dirname "$(realpath "$0")")/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
work=$(mktemp -d)
trap '[[ -n "${KEEP:-}" ]] || rm -rf "$work"' EXIT
home="$work/home"
mkdir -p "$home" "$work/plugins"
fail() { echo "FAIL: $*"; cat "$work/stderr.txt" 2>/dev/null; exit 1; }

# A compiled sample and a picture small enough to be previewed unscaled.
TREL_HOME="$home" "$cli" convert --to 8bf -o "$work/plugins" "$samples/WarmTone.afs" >/dev/null \
  || fail "the sample did not compile"
plugin=$(ls "$work/plugins"/*.8bf | head -1)
[[ -f "$plugin" ]] || fail "no plugin"
# trel-cli filled the program folder; a part of its Test.bmp fits the preview box unscaled.
picture="$work/picture.bmp"
python3 - "$home/Test.bmp" "$picture" <<'PY'
import struct, sys
data = open(sys.argv[1], 'rb').read()
off, w, h, bpp = struct.unpack_from('<I', data, 10)[0], *struct.unpack_from('<iiHH', data, 18)[:2], struct.unpack_from('<H', data, 28)[0]
stride = (w * 3 + 3) & ~3
nw, nh = 200, 150
rows = []
for y in range(nh):                      # bottom-up rows of the lower part
    start = off + (y + 100) * stride + 100 * 3
    rows.append(data[start:start + nw * 3] + b'\0' * (((nw * 3 + 3) & ~3) - nw * 3))
pix = b''.join(rows)
hdr = b'BM' + struct.pack('<IHHI', 54 + len(pix), 0, 0, 54) + struct.pack('<IiiHHIIiiII', 40, nw, nh, 1, 24, 0, len(pix), 2835, 2835, 0, 0)
open(sys.argv[2], 'wb').write(hdr + pix)
PY
printf '[Settings]\nPreviewPic=%s\n' "$picture" > "$home/Trel10.ini"

TREL_HOME="$home" TREL_QUIT_AFTER_MS=2500 TREL_SCREENSHOT="$out/trel-preview-main.png" \
  TREL_PREVIEW_PLUGIN="$plugin" TREL_PREVIEW_SHOT="$out/preview.bmp" \
  xvfb-run -a -s "-screen 0 1280x1024x24" "$trel" >"$work/stdout.txt" 2>"$work/stderr.txt" || fail "trel failed"
[[ -s "$out/preview.bmp" ]] || fail "the preview showed nothing"
[[ -s "$out/preview.bmp.png" ]] || fail "no picture of the Preview window"
"$cli" apply "$plugin" "$picture" -o "$out/expected.bmp" >/dev/null || fail "trel-cli apply failed"

python3 - "$out/preview.bmp" "$out/expected.bmp" <<'PY' || fail "the preview differs from trel-cli apply"
import struct, sys
def load(p):
    d = open(p, 'rb').read()
    off = struct.unpack_from('<I', d, 10)[0]
    w, h = struct.unpack_from('<ii', d, 18)
    bpp = struct.unpack_from('<H', d, 28)[0]
    bpp_bytes = bpp // 8
    stride = (w * bpp_bytes + 3) & ~3
    px = []
    for y in range(abs(h)):
        row = off + y * stride
        px.append([tuple(d[row + x * bpp_bytes: row + x * bpp_bytes + 3]) for x in range(w)])
    return w, abs(h), px
a, b = load(sys.argv[1]), load(sys.argv[2])
if a[:2] != b[:2]:
    sys.exit(f"sizes {a[:2]} and {b[:2]}")
diff = sum(1 for ra, rb in zip(a[2], b[2]) for pa, pb in zip(ra, rb) if pa != pb)
print(f"{a[0]}x{a[1]} pixels, {diff} differ")
sys.exit(1 if diff else 0)
PY
cmp -s "$picture" "$out/preview.bmp" && fail "the preview is the unfiltered picture"
echo ok
