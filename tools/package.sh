#!/bin/sh
# Builds the Windows Installer packages from the two DLLs (tools/build.sh
# calls it after building both):
#   TOVA200-x64.msi   for 64-bit Windows: the 32-bit and the 64-bit DLL
#   TOVA200-x86.msi   for 32-bit Windows: the 32-bit DLL
# Usage: tools/package.sh [OUTDIR [x64|x86 ...]]   (default: build, both)
# TOVA_PACKAGE_DLL32 and TOVA_PACKAGE_DLL64 name other DLLs than the builds'.
set -e
outdir=$(realpath "${1:-$(dirname "$0")/../build}")
[ $# -gt 0 ] && shift
[ $# -gt 0 ] || set -- x64 x86
root=$(realpath "$(dirname "$0")/..")
dll32=$(realpath -m "${TOVA_PACKAGE_DLL32:-$root/build/win32/bin/TOVA200.DLL}")
dll64=$(realpath -m "${TOVA_PACKAGE_DLL64:-$root/build/win64/bin/TOVA200.DLL}")
cd "$root"
# wixl takes sources relative to the working folder only.
dll32=$(realpath --relative-to=. "$dll32")
dll64=$(realpath --relative-to=. "$dll64")
version=$(sed -n 's/^project(TOVA200 VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
sql() { msibuild "$1" -q "$2"; }
for platform in "$@"; do
    out=$outdir/TOVA200-$platform.msi
    wixl -a "$platform" -I installer -D Platform="$platform" -D Version="$version" \
         -D Dll32="$dll32" -D Dll64="$dll64" -o "$out.tmp" installer/tova200.wxs
    # wixl writes HKMU as root 4; Windows Installer's HKMU is -1.
    sql "$out.tmp" 'UPDATE `Registry` SET `Root` = -1 WHERE `Root` = 4'
    # wixl cannot write component conditions (installer/tova200.wxs says why).
    for b in 32 64; do
        [ $b = 64 ] && [ "$platform" = x86 ] && continue
        sql "$out.tmp" "UPDATE \`Component\` SET \`Condition\` = '(ALLUSERS AND (TOVA_MACHINE_PACKAGE$b OR NOT TOVA_MACHINE_CLASSES$b)) OR (NOT ALLUSERS AND (TOVA_USER_PACKAGE$b OR NOT TOVA_USER_CLASSES$b))' WHERE \`Component\` = 'Registration$b'"
    done
    mv "$out.tmp" "$out"
    echo "$out"
done
