#!/usr/bin/env bash
# Installs what the build needs, then configures and builds the 32-bit DLL and
# the 64-bit build of the same source under build/win32 and build/win64. With
# both built, it regenerates the files kept in the tree that come from the type
# library (tools/generate.sh) and builds the installer packages
# build/TOVA200-x64.msi and build/TOVA200-x86.msi (tools/package.sh).
# Usage: tools/build.sh [32|64 ...]   (default: both)
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
bits=("$@")
[ ${#bits[@]} -gt 0 ] || bits=(32 64)
for b in "${bits[@]}"; do
    dir=build/win$b
    if [ ! -f "$dir/build.ninja" ]; then
        cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release \
              -DCMAKE_TOOLCHAIN_FILE="cmake/toolchain-mingw$b.cmake" >/dev/null
    fi
    ninja -C "$dir"
done
[ -f build/win32/bin/TOVA200.DLL ] && [ -f build/win64/bin/TOVA200.DLL ] || exit 0
rc=0
tools/generate.sh || rc=$?
case $rc in
    0) # A regenerated manifest is a resource of both DLLs.
       for b in 32 64; do ninja -C "build/win$b" >/dev/null; done ;;
    77) echo "build.sh: the generated files were not checked (no 32-bit programs here)" ;;
    *) exit $rc ;;
esac
tools/package.sh
