#!/usr/bin/env bash
# JPEG speed and quality: our codec (the 32-bit DLL's build and the 64-bit one,
# under Wine) next to libjpeg-turbo's cjpeg/djpeg run natively on the same
# synthetic 12-megapixel photograph.
# Usage: bench/jpeg_bench.sh [QUALITY [BITS...]]   (default 90, then 32 and 64)
set -euo pipefail
cd "$(dirname "$0")/.."
q=${1:-90}
shift || true
all_bits=("$@")
[ ${#all_bits[@]} -gt 0 ] || all_bits=(32 64)
for b in "${all_bits[@]}"; do ninja -C "build/win$b" -j2 jpeg_bench >/dev/null; done
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
bits=${all_bits[0]}
run() { cmake/wine-run.sh "$PWD/build/wineprefix" "$bits" "build/win$bits/bin/jpeg_bench.exe" "$@"; }
z() { echo "Z:$tmp/$1"; }

run synth "$(z photo.ppm)"
read -r w h < <(head -c 20 "$tmp/photo.ppm" | sed -n 2p)
mp=$(awk -v w="$w" -v h="$h" 'BEGIN { print w * h / 1e6 }')

# Ten runs: the best wall-clock time and the least processor time (user +
# system, which other processes on a busy machine do not inflate), in seconds.
measure() {
    local bw=1e9 bc=1e9 t0 t1 u s TIMEFORMAT='%3U %3S'
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        t0=$(date +%s.%N)
        read -r u s < <({ time "$@" >/dev/null 2>&1; } 2>&1)
        t1=$(date +%s.%N)
        read -r bw bc < <(awk -v a="$t0" -v b="$t1" -v u="$u" -v s="$s" -v bw="$bw" -v bc="$bc" \
            'BEGIN { w = b - a; c = u + s; print (w < bw ? w : bw), (c < bc ? c : bc) }')
    done
    echo "$bw $bc"
}
rate() { awk -v mp="$mp" -v w="$1" -v c="$2" 'BEGIN { printf "%6.1f MP/s wall, %6.1f MP/s cpu", mp / w, (c > 0 ? mp / c : 0) }'; }
cjpeg -quality "$q" -outfile "$tmp/ref.jpg" "$tmp/photo.ppm"
jpegtran -progressive -outfile "$tmp/ref_prog.jpg" "$tmp/ref.jpg"
djpeg -outfile "$tmp/ref.ppm" "$tmp/ref.jpg"
read -r encw encc < <(measure cjpeg -quality "$q" -outfile /dev/null "$tmp/photo.ppm")
read -r decw decc < <(measure djpeg -outfile /dev/null "$tmp/ref.jpg")
read -r progw progc < <(measure djpeg -outfile /dev/null "$tmp/ref_prog.jpg")
printf "picture: %dx%d (%.1f MP), quality %d; load average %s\n" "$w" "$h" "$mp" "$q" "$(cut -d' ' -f1 /proc/loadavg)"
printf "libjpeg-turbo encode q%d    : %s  %9d bytes  mean error %s\n" "$q" "$(rate "$encw" "$encc")" \
    "$(stat -c %s "$tmp/ref.jpg")" "$(run compare "$(z photo.ppm)" "$(z ref.ppm)")"
printf "libjpeg-turbo decode baseline   : %s\n" "$(rate "$decw" "$decc")"
printf "libjpeg-turbo decode progressive: %s\n" "$(rate "$progw" "$progc")"
for bits in "${all_bits[@]}"; do
    echo "-- ours, ${bits}-bit"
    run run "$(z photo.ppm)" "$(z ref.jpg)" "$(z ref_prog.jpg)" "$(z ref.ppm)" "$(z ours.jpg)" "$q"
    # Our file judged by the reference decoder, so both errors come from one decoder.
    djpeg -outfile "$tmp/ours.ppm" "$tmp/ours.jpg"
    printf "ours encode, decoded by djpeg: mean error %s\n" "$(run compare "$(z photo.ppm)" "$(z ours.ppm)")"
done
