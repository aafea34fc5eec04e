#!/usr/bin/env bash
# JPEG speed and quality: our codec (64-bit, under Wine) next to libjpeg-turbo's
# cjpeg/djpeg run natively on the same synthetic 12-megapixel photograph.
# Usage: bench/jpeg_bench.sh [QUALITY]   (default 90)
set -euo pipefail
cd "$(dirname "$0")/.."
q=${1:-90}
ninja -C build/win64 -j2 jpeg_bench >/dev/null
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
run() { cmake/wine-run.sh "$PWD/build/wineprefix" 64 build/win64/bin/jpeg_bench.exe "$@"; }
z() { echo "Z:$tmp/$1"; }

run synth "$(z photo.ppm)"
read -r w h < <(head -c 20 "$tmp/photo.ppm" | sed -n 2p)
mp=$(echo "$w * $h / 1000000" | bc -l)

# Best of five runs, in seconds.
best() {
    local b=999999999999 t0 t1
    for _ in 1 2 3 4 5; do
        t0=$(date +%s%N); "$@"; t1=$(date +%s%N)
        b=$(( (t1 - t0) < b ? (t1 - t0) : b ))
    done
    echo "$b / 1000000000" | bc -l
}
cjpeg -quality "$q" -outfile "$tmp/ref.jpg" "$tmp/photo.ppm"
jpegtran -progressive -outfile "$tmp/ref_prog.jpg" "$tmp/ref.jpg"
djpeg -outfile "$tmp/ref.ppm" "$tmp/ref.jpg"
tenc=$(best cjpeg -quality "$q" -outfile /dev/null "$tmp/photo.ppm")
tdec=$(best djpeg -outfile /dev/null "$tmp/ref.jpg")
tprog=$(best djpeg -outfile /dev/null "$tmp/ref_prog.jpg")
printf "picture: %dx%d (%.1f MP), quality %d\n" "$w" "$h" "$mp" "$q"
printf "libjpeg-turbo encode q%d: %7.1f MP/s  %9d bytes  mean error %s\n" "$q" "$(echo "$mp / $tenc" | bc -l)" \
    "$(stat -c %s "$tmp/ref.jpg")" "$(run compare "$(z photo.ppm)" "$(z ref.ppm)")"
printf "libjpeg-turbo decode baseline   : %7.1f MP/s\n" "$(echo "$mp / $tdec" | bc -l)"
printf "libjpeg-turbo decode progressive: %7.1f MP/s\n" "$(echo "$mp / $tprog" | bc -l)"
run run "$(z photo.ppm)" "$(z ref.jpg)" "$(z ref_prog.jpg)" "$(z ref.ppm)" "$(z ours.jpg)" "$q"
# Our file judged by the reference decoder, so both errors come from one decoder.
djpeg -outfile "$tmp/ours.ppm" "$tmp/ours.jpg"
printf "ours encode, decoded by djpeg: mean error %s\n" "$(run compare "$(z photo.ppm)" "$(z ours.ppm)")"
