#!/usr/bin/env bash
# Rebuilds the JPEG test files: a small synthetic picture of odd size, coded
# by libjpeg-turbo's cjpeg/jpegtran in the variants the decoder must read,
# and djpeg's decode of each (.ppm/.pgm) as the reference the test compares to.
# Needs python3 and libjpeg-turbo-progs. Run from anywhere.
set -euo pipefail
cd "$(dirname "$0")"
python3 - <<'PY'
import math, random
random.seed(7)
w, h = 61, 43
out = bytearray()
for y in range(h):
    for x in range(w):
        # Smooth shading, a disc with a hard edge, stripes and a little noise.
        r = 120 + 80 * math.sin(x / 9.0) + 30 * math.cos(y / 7.0)
        g = 60 + 2.5 * y + 40 * math.sin((x + y) / 11.0)
        b = 200 - 2.0 * x + 20 * math.cos(x * y / 150.0)
        if (x - 38) ** 2 + (y - 20) ** 2 < 120:
            r, g, b = 240, 220, 40
        if 5 <= x < 20 and (y // 3) % 2 == 0:
            r, g, b = r * 0.3, g * 0.3, b * 0.3
        n = random.uniform(-6, 6)
        out += bytes(max(0, min(255, int(v + n))) for v in (r, g, b))
open('source.ppm', 'wb').write(b'P6\n%d %d\n255\n' % (w, h) + out)
PY
enc() { name=$1; shift; cjpeg "$@" source.ppm > "$name.jpg"; }
enc baseline420 -quality 85 -sample 2x2
enc baseline444 -quality 85 -sample 1x1
enc baseline422 -quality 85 -sample 2x1
enc baseline440 -quality 85 -sample 1x2
enc baseline411 -quality 85 -sample 4x1
enc grey -quality 85 -grayscale
enc progressive420 -quality 85 -sample 2x2 -progressive
enc progressive444 -quality 92 -sample 1x1 -progressive
enc progressive_grey -quality 85 -grayscale -progressive
enc restart420 -quality 85 -sample 2x2 -restart 2B
enc progressive_restart -quality 85 -sample 2x2 -progressive -restart 1
enc optimized -quality 60 -sample 2x2 -optimize
# Sequential, one scan per component.
printf '0: 0 63 0 0;\n1: 0 63 0 0;\n2: 0 63 0 0;\n' > scans.txt
enc multiscan -quality 85 -sample 2x2 -scans scans.txt
rm scans.txt
# Metadata segments before the frame: an Exif block, an ICC-like APP2 and a comment.
python3 - <<'PY'
d = open('baseline420.jpg', 'rb').read()
def seg(marker, payload):
    n = len(payload) + 2
    return bytes([0xFF, marker, n >> 8, n & 255]) + payload
extra = seg(0xE1, b'Exif\0\0' + bytes(range(256)) * 2) + seg(0xE2, b'ICC_PROFILE\0' + b'\xff' * 300) \
        + seg(0xFE, b'a comment')
open('metadata.jpg', 'wb').write(d[:2] + extra + d[2:])
PY
for f in *.jpg; do
    case $f in grey.jpg|progressive_grey.jpg) djpeg -pnm "$f" > "${f%.jpg}.pgm" ;;
               *) djpeg -pnm "$f" > "${f%.jpg}.ppm" ;; esac
done
