#!/bin/sh
# docs/reference.md is the generator's output for the 32-bit DLL; fails with a
# diff when it is not (run tools/reference.sh to regenerate it).
#   reference.sh PREFIX BITS GENERATOR_EXE DLL32
# BITS is the generator's. Exits 0 when current, 1 with a diff when not, 77
# when the generator cannot run here or the 32-bit DLL has not been built.
prefix=$1 bits=$2 exe=$3 dll=$4
[ -f "$dll" ] || { echo "SKIPPED: no 32-bit DLL at $dll (tools/build.sh 32)"; exit 77; }
here=$(cd "$(dirname "$0")" && pwd)
windll=$(printf 'Z:%s' "$(readlink -f "$dll")" | sed 's|/|\\|g')
out=$(mktemp)
trap 'rm -f "$out"' EXIT
timeout -s KILL 120 "$here/../cmake/wine-run.sh" "$prefix" "$bits" "$exe" "$windll" >"$out"
rc=$?
[ $rc -eq 77 ] && { cat "$out"; exit 77; }
[ $rc -ne 0 ] && { cat "$out"; echo "FAIL: the generator exited with code $rc"; exit 1; }
if ! diff -u "$here/../docs/reference.md" "$out"; then
    echo "FAIL: docs/reference.md is not the type library's reference: run tools/reference.sh"
    exit 1
fi
echo "ok: docs/reference.md matches the type library"
