#!/bin/sh
# Runs a Windows program under Wine in the build's private prefix.
#   wine-run.sh PREFIX BITS PROGRAM [ARGS...]
# BITS is 32 or 64. Exits 77 (a skipped test) when this machine cannot run
# 32-bit programs: some kernels have IA-32 emulation switched off.
# Wine's helper processes inherit the program's output: it goes to a file
# first, so that nothing outlives the test holding the caller's pipes.
prefix=$1 bits=$2
shift 2
"$(dirname "$0")/../tools/wine-prefix.sh" "$prefix" >/dev/null || exit 1
if [ "$bits" = 32 ]; then
    loader=/usr/lib/wine/wine
    if ! "$loader" --version >/dev/null 2>&1; then
        echo "SKIPPED: this machine cannot run 32-bit programs (IA-32 emulation is off)"
        exit 77
    fi
else
    loader=/usr/lib/wine/wine64
fi
# No debugger on a crash: the program just fails, and no debugger process keeps
# the prefix's server (and whoever waits for it) alive.
export WINEPREFIX="$prefix" WINEDEBUG="${WINEDEBUG:--all}" WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d"
out=$(mktemp)
"$loader" "$@" >"$out" 2>&1
rc=$?
cat "$out"
# A failure that printed nothing (the loader or server gave up) still says what ran.
[ $rc -ne 0 ] && [ ! -s "$out" ] && echo "wine-run: $1 exited with code $rc and printed nothing"
rm -f "$out"
exit $rc
