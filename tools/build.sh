#!/usr/bin/env bash
# Installs what the build needs, then configures and builds the 32-bit DLL and
# the 64-bit build of the same source under build/win32 and build/win64.
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
