#!/usr/bin/env bash
# Rebuilds the JPEG decoder's seeds: a small picture of odd size in every
# variant the decoder reads, coded by cjpeg (libjpeg-turbo-progs). Small on
# purpose: the fuzzer mutates them thousands of times a second.
set -euo pipefail
cd "$(dirname "$0")/jpeg_decode"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
python3 - "$tmp/source.ppm" <<'PY'
import math, sys
w, h = 19, 11
px = bytearray()
for y in range(h):
    for x in range(w):
        r = 128 + 100 * math.sin(x / 3.0)
        g = 20 * y if (x // 4) % 2 else 200 - 15 * y
        b = 255 if (x - 12) ** 2 + (y - 5) ** 2 < 10 else 40 + 9 * x
        px += bytes(max(0, min(255, int(v))) for v in (r, g, b))
open(sys.argv[1], 'wb').write(b'P6\n%d %d\n255\n' % (w, h) + px)
PY
enc() { name=$1; shift; cjpeg "$@" "$tmp/source.ppm" > "$name.jpg"; }
enc baseline420 -quality 75 -sample 2x2
enc baseline444 -quality 75 -sample 1x1
enc baseline422 -quality 75 -sample 2x1
enc baseline411 -quality 75 -sample 4x1
enc grey -quality 75 -grayscale
enc progressive420 -quality 75 -sample 2x2 -progressive
enc progressive_grey -quality 75 -grayscale -progressive
enc restart420 -quality 75 -sample 2x2 -restart 1B
enc progressive_restart -quality 75 -sample 1x1 -progressive -restart 1B
enc optimized -quality 50 -sample 2x2 -optimize
printf '0: 0 63 0 0;\n1: 0 63 0 0;\n2: 0 63 0 0;\n' > "$tmp/scans.txt"
enc multiscan -quality 75 -sample 2x2 -scans "$tmp/scans.txt"
