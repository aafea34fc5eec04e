#!/bin/sh
# A file kept in the tree is what its generator makes of the 32-bit DLL's type
# library now; fails with a diff when not (tools/generate.sh regenerates all).
#   generated.sh PREFIX BITS DLL32 FILE GENERATOR_EXE [ARGS...]
# BITS is the generator's; it is run as GENERATOR_EXE DLL32 ARGS. Exits 0 when
# current, 1 with a diff when not, 77 when the generator cannot run here or
# the 32-bit DLL has not been built.
prefix=$1 bits=$2 dll=$3 file=$4 exe=$5
shift 5
[ -f "$dll" ] || { echo "SKIPPED: no 32-bit DLL at $dll (tools/build.sh 32)"; exit 77; }
here=$(cd "$(dirname "$0")" && pwd)
windll=$(printf 'Z:%s' "$(readlink -f "$dll")" | sed 's|/|\\|g')
out=$(mktemp)
trap 'rm -f "$out"' EXIT
timeout -s KILL 120 "$here/../cmake/wine-run.sh" "$prefix" "$bits" "$exe" "$windll" "$@" >"$out"
rc=$?
[ $rc -eq 77 ] && { cat "$out"; exit 77; }
[ $rc -ne 0 ] && { cat "$out"; echo "FAIL: the generator exited with code $rc"; exit 1; }
if ! diff -u "$file" "$out"; then
    echo "FAIL: $file is not what the type library gives now: run tools/generate.sh"
    exit 1
fi
echo "ok: $file matches the type library"
