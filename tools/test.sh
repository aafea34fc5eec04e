#!/usr/bin/env bash
# Builds both DLLs and runs every test: unit tests under Wine, the DLL checks,
# registration round trips and the script and late-bound clients. 32-bit
# programs are reported as skipped on machines that cannot run them. Then the
# modules that know nothing of Windows, built natively under the sanitizers:
# their unit tests and TOVA_FUZZ_SECONDS (default 30) of fuzzing per target.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/build.sh
prefix="$PWD/build/wineprefix"
tools/wine-prefix.sh "$prefix"
# One server for the whole run: left to itself it exits a few seconds after
# each program, and a program starting just then loses its connection
# ("recvmsg: Connection reset by peer").
# A server left by earlier programs cannot be made persistent: end it first.
WINEPREFIX="$prefix" wineserver -k 2>/dev/null || true
WINEPREFIX="$prefix" timeout 60 wineserver -w 2>/dev/null || true
WINEPREFIX="$prefix" wineserver -p
status=0
for b in 32 64; do
    echo "== ${b}-bit build"
    ctest --test-dir "build/win$b" --output-on-failure --timeout 600 || status=1
done
# The server and whatever the tests left running end with the run.
WINEPREFIX="$prefix" wineserver -k 2>/dev/null || true
WINEPREFIX="$prefix" timeout 60 wineserver -w 2>/dev/null || true
echo "== native build under the sanitizers"
tests/native/run.sh || status=1
exit $status
