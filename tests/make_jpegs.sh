#!/bin/sh
# Reference JPEG files for the JPEG tests, made with libjpeg-turbo's cjpeg from
# one synthetic picture (96 x 64: red above, blue below, with smooth shading):
#   picture.ppm        the picture itself (text PPM), to measure errors against
#   baseline.jpg       quality 90, baseline
#   progressive.jpg    quality 90, progressive
#   grey.jpg           quality 90, one channel
# Without cjpeg it makes nothing, and the tests that need the files skip.
#   make_jpegs.sh DIR
dir=$1
mkdir -p "$dir" || exit 1
rm -f "$dir"/*.jpg "$dir/picture.ppm"
command -v cjpeg >/dev/null 2>&1 || { echo "cjpeg not installed: no reference JPEG files"; exit 0; }
awk 'BEGIN {
    w = 96; h = 64
    print "P3"; print w, h; print 255
    for (y = 0; y < h; y++) {
        line = ""
        for (x = 0; x < w; x++) {
            if (y < h / 2) { r = 160 + int(x * 90 / w); g = 40 + int(y * 2); b = 30 }
            else { r = 20; g = 60 + int(x * 60 / w); b = 150 + int((y - h / 2) * 3) }
            line = line r " " g " " b " "
        }
        print line
    }
}' >"$dir/picture.ppm" || exit 1
cjpeg -quality 90 -outfile "$dir/baseline.jpg" "$dir/picture.ppm" &&
cjpeg -quality 90 -progressive -outfile "$dir/progressive.jpg" "$dir/picture.ppm" &&
cjpeg -quality 90 -grayscale -outfile "$dir/grey.jpg" "$dir/picture.ppm" || exit 1
ls -l "$dir"
