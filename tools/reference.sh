#!/bin/sh
# Regenerates docs/reference.md from the 32-bit DLL's type library (the one
# most callers load), building the generator and the DLL in build/win32 first.
set -e
cd "$(dirname "$0")/.."
ninja -C build/win32 TOVA200 typelib_reference >/dev/null
dll=$(printf 'Z:%s' "$PWD/build/win32/bin/TOVA200.DLL" | sed 's|/|\\|g')
out=$(mktemp)
trap 'rm -f "$out"' EXIT
timeout -s KILL 120 cmake/wine-run.sh "$PWD/build/wineprefix" 32 build/win32/bin/typelib_reference.exe "$dll" >"$out"
cp "$out" docs/reference.md
echo "docs/reference.md: $(wc -c <docs/reference.md) bytes"
