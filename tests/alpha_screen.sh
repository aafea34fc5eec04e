#!/bin/sh
# AlphaPaintPicture's opaque fallback, on the screens and Windows versions
# that need it.
#   alpha_screen.sh PREFIX BITS PROGRAM MODE
# MODE versions: the null display (32 bits per pixel) as Windows 95 and NT 4
#   (no blending: an opaque copy) and as Windows 98 and 2000 (blending).
# MODE depth16 / depth8: the program on an Xvfb screen of that depth, in a
#   desktop of its own with the X11 driver (the prefix's default desktop keeps
#   the null driver, so nothing else running in the prefix is disturbed).
#   Exits 77 (skipped) when Xvfb cannot start.
prefix=$1 bits=$2 program=$3 mode=$4
here=$(cd "$(dirname "$0")" && pwd)
wine_run=$here/../cmake/wine-run.sh
exe=$(basename "$program")
out=$(mktemp)
trap 'rm -f "$out"' EXIT
failed=0

winpath() { printf 'Z:%s\n' "$1" | sed 's|/|\\|g'; }

# Runs the program (through CMD ARGS...) expecting "blend" or "opaque".
check() {
    expect=$1 label=$2
    shift 2
    TOVA_EXPECT=$expect "$@" >"$out" 2>&1
    rc=$?
    [ $rc -eq 77 ] && { cat "$out"; exit 77; }
    tr -d '\r' <"$out" | grep -E '^screen:|FAILED|Failure|Expected|Which is|actual' | sed 's/^/    /'
    if grep -q '^\[  PASSED  \] 1 test' "$out" && ! grep -q FAILED "$out"; then
        echo "ok:   $label: $expect"
    else
        echo "FAIL: $label: expected $expect"
        tr -d '\r' <"$out" | tail -n 20
        failed=1
    fi
}

case $mode in
versions)
    key="HKCU\\Software\\Wine\\AppDefaults\\$exe"
    for v in win95:opaque nt40:opaque win98:blend win2k:blend; do
        version=${v%%:*} expect=${v#*:}
        "$wine_run" "$prefix" "$bits" reg add "$key" /v Version /d "$version" /f >/dev/null 2>&1 || { [ $? -eq 77 ] && exit 77; }
        check "$expect" "Windows version $version" "$wine_run" "$prefix" "$bits" "$program"
    done
    "$wine_run" "$prefix" "$bits" reg delete "$key" /f >/dev/null 2>&1
    ;;
depth16 | depth8)
    depth=${mode#depth}
    command -v Xvfb >/dev/null 2>&1 || { echo "SKIPPED: Xvfb is not installed"; exit 77; }
    # A free display number, then a server of the wanted depth.
    display=
    for n in $(seq 90 140); do
        [ -e "/tmp/.X$n-lock" ] || [ -e "/tmp/.X11-unix/X$n" ] || { display=$n; break; }
    done
    [ -n "$display" ] || { echo "SKIPPED: no free X display number"; exit 77; }
    Xvfb ":$display" -screen 0 "1024x768x$depth" -nolisten tcp >"$out.xvfb" 2>&1 &
    xvfb=$!
    trap 'kill $xvfb 2>/dev/null; rm -f "$out" "$out.xvfb"' EXIT
    started=0
    for _ in $(seq 50); do
        [ -e "/tmp/.X11-unix/X$display" ] && { started=1; break; }
        kill -0 $xvfb 2>/dev/null || break
        sleep 0.1
    done
    if [ $started -eq 0 ]; then
        echo "SKIPPED: Xvfb could not start a ${depth}-bit screen"
        cat "$out.xvfb"
        exit 77
    fi
    if [ "$depth" -ge 16 ]; then expect=blend; else expect=opaque; fi
    # explorer /desktop=NAME,SIZE,DRIVER runs the program in a new desktop with that driver.
    DISPLAY=":$display" check "$expect" "${depth}-bit screen" \
        "$wine_run" "$prefix" "$bits" explorer "/desktop=tova$depth,1024x768,x11" "$(winpath "$program")"
    ;;
*)
    echo "usage: alpha_screen.sh PREFIX BITS PROGRAM versions|depth16|depth8" >&2
    exit 2
    ;;
esac
[ $failed -eq 0 ] || exit 1
