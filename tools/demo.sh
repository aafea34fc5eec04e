#!/usr/bin/env bash
# Builds the library and shows it at work under Wine: registers TOVA200.DLL in
# the private prefix build/wineprefix, runs examples/demo.vbs (Rectangle from a
# script) and draw_demo (a picture drawn with the library, saved as
# build/demo.bmp), then unregisters the DLL.
# Usage: tools/demo.sh [64|32]   (default 64; 32 needs a machine that can run
# 32-bit programs and exits 77 where it cannot)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
bits=${1:-64}
case $bits in
    64) sysdir='C:\windows\system32' ;;
    # In the 64-bit prefix the 32-bit system programs live in syswow64.
    32) sysdir='C:\windows\syswow64' ;;
    *) echo "usage: tools/demo.sh [64|32]" >&2; exit 2 ;;
esac

# Packages, then both builds: the 64-bit one first, as the demo runs it here.
tools/build.sh 64 32

prefix=$root/build/wineprefix
dll=$root/build/win$bits/bin/TOVA200.DLL
picture=$root/build/demo.bmp

# Linux path -> the same file seen from Wine (drive Z: is the Linux root).
winpath() { printf 'Z:%s' "${1//\//\\}"; }

wine_run() { cmake/wine-run.sh "$prefix" "$bits" "$@"; }

# The tests register and unregister in the same prefix: one at a time.
exec 8>"$prefix.registry.lock"
flock 8

echo
echo "== Registering $(winpath "$dll") ($bits-bit) in the Wine prefix build/wineprefix"
set +e
wine_run "$sysdir\\regsvr32.exe" /s "$(winpath "$dll")"
rc=$?
set -e
if [ $rc -eq 77 ]; then
    echo "The demo is skipped: this machine cannot run 32-bit programs (try tools/demo.sh 64)."
    exit 77
fi
if [ $rc -ne 0 ]; then
    echo "demo: regsvr32 failed (exit code $rc)" >&2
    exit 1
fi

unregister() {
    echo
    echo "== Unregistering TOVA200.DLL"
    wine_run "$sysdir\\regsvr32.exe" /s /u "$(winpath "$dll")" ||
        echo "demo: regsvr32 /u failed" >&2
    # Let the prefix's server finish before the caller goes on.
    WINEPREFIX="$prefix" timeout 60 wineserver -w 2>/dev/null || WINEPREFIX="$prefix" wineserver -k 2>/dev/null || true
}
trap unregister EXIT

status=0

echo
echo "== examples/demo.vbs: Rectangle from VBScript (cscript)"
# A script error stops cscript silently with exit code 0 under Wine: the last
# line of the script tells whether it ran to the end.
out=$(wine_run "$sysdir\\cscript.exe" //nologo "$(winpath "$root/examples/demo.vbs")" | tr -d '\r') || true
printf '%s\n' "$out"
if ! grep -qx 'demo.vbs: done' <<<"$out"; then
    echo "demo: demo.vbs stopped before its end (a script error?)" >&2
    status=1
fi

echo
echo "== draw_demo: a picture drawn with Rectangle, Polygon, GDIMethods and APIMethods"
rm -f "$picture"
out=$(wine_run "build/win$bits/bin/draw_demo.exe" "$(winpath "$picture")" | tr -d '\r') || status=1
printf '%s\n' "$out"
if ! grep -qx 'draw_demo: done' <<<"$out" || [ ! -s "$picture" ]; then
    echo "demo: draw_demo did not finish" >&2
    status=1
fi

echo; echo "== examples/graphics_demo.vbs: a picture drawn off-screen, saved as JPEG and BMP in build/"; out=$(wine_run "$sysdir\\cscript.exe" //nologo "$(winpath "$root/examples/graphics_demo.vbs")" "$(winpath "$root/build")" | tr -d '\r') || true; printf '%s\n' "$out"; grep -qx 'graphics_demo.vbs: done' <<<"$out" || { echo "demo: graphics_demo.vbs stopped before its end (a script error?)" >&2; status=1; }
echo
echo "== files_demo: a folder search with a progress bar from its events, then the registry"
out=$(wine_run "build/win$bits/bin/files_demo.exe" | tr -d '\r') || status=1
printf '%s\n' "$out"
grep -qx 'files_demo: done' <<<"$out" || { echo "demo: files_demo did not finish" >&2; status=1; }
echo; echo "== windows_demo: a timer, hover and leave in a small window, a tooltip, the version, a chime"; out=$(wine_run "build/win$bits/bin/windows_demo.exe" 2>&1 | tr -d '\r' | grep -v '^ALSA lib') || status=1; printf '%s\n' "$out"; grep -qx 'windows_demo: done' <<<"$out" || { echo "demo: windows_demo did not finish" >&2; status=1; }

echo
if [ $status -eq 0 ]; then
    echo "The demo ran to the end. The picture is $picture (320x200 .bmp)."
else
    echo "The demo failed; see the messages above." >&2
fi
exit $status
