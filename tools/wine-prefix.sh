#!/bin/sh
# Creates the private Wine prefix PREFIX (64-bit, so that it runs 32- and
# 64-bit programs) with Wine's null graphics driver: windows, timers and
# mouse tracking then work without a display. Does nothing if it exists.
prefix=$1
[ -n "$prefix" ] || { echo "usage: wine-prefix.sh PREFIX" >&2; exit 2; }
[ -f "$prefix/.tova-ready" ] && exit 0
mkdir -p "$(dirname "$prefix")"
lock="$prefix.lock"
# Two test programs may ask at once: one creates, the other waits.
exec 9>"$lock"
flock 9
[ -f "$prefix/.tova-ready" ] && exit 0
export WINEPREFIX="$prefix" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d"
log="$prefix.log"
{
    /usr/lib/wine/wine64 wineboot -i &&
    /usr/lib/wine/wine64 reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f &&
    wineserver -w
} >"$log" 2>&1 || { cat "$log" >&2; exit 1; }
touch "$prefix/.tova-ready"
