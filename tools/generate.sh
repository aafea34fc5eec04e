#!/bin/sh
# Regenerates the files that are made from the built type library and are kept
# in the tree, so that they cannot drift from it (tests check they are current):
#   docs/reference.md                 the member reference (tools/reference.sh)
#   installer/registry32.wxi, 64.wxi  the installer package's registry values
#   frame/tova200.manifest.in         the DLL's side-by-side manifest
# Reads the 32-bit DLL's library, the one most callers load; exits 77 where
# this machine cannot run 32-bit programs (the kept files then stay as they are).
set -e
cd "$(dirname "$0")/.."
ninja -C build/win32 TOVA200 registration_data >/dev/null
dll=$(printf 'Z:%s' "$PWD/build/win32/bin/TOVA200.DLL" | sed 's|/|\\|g')
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
gen() {   # OUTPUT ARGS...: writes OUTPUT only when its content changes
    out=$1; shift
    rc=0
    timeout -s KILL 120 cmake/wine-run.sh "$PWD/build/wineprefix" 32 build/win32/bin/registration_data.exe "$dll" "$@" \
        >"$tmp/out" || rc=$?
    [ $rc -eq 0 ] || { cat "$tmp/out"; exit $rc; }
    cmp -s "$tmp/out" "$out" || { cp "$tmp/out" "$out"; echo "$out: regenerated"; }
}
gen installer/registry32.wxi wxs 32
gen installer/registry64.wxi wxs 64
gen frame/tova200.manifest.in manifest
tools/reference.sh
