#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need.
# Safe to run again: it does nothing when everything is present.
set -euo pipefail

pkgs=(wine wine32:i386 wine64 libwine-dev g++-mingw-w64-i686 g++-mingw-w64-x86-64
      mingw-w64-tools cmake ninja-build googletest xvfb xauth)
# Reference JPEG files for the JPEG tests and the codec benchmark (cjpeg, djpeg).
pkgs+=(libjpeg-turbo-progs)
# The installer packages: wixl builds them, msibuild finishes their tables.
pkgs+=(wixl msitools)
# The native build of the portable modules under the sanitizers (tests/native):
# clang, libFuzzer with the sanitizer runtimes, and llvm-symbolizer for
# readable stack traces in their reports.
pkgs+=(clang-14 libclang-rt-14-dev llvm-14)
# Sound tests: a null sink whose monitor is recorded and measured.
pkgs+=(pulseaudio pulseaudio-utils sox)

missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo dpkg --add-architecture i386
# A failing i386 security index is reported as an error; the main index is enough.
$sudo apt-get -o DPkg::Lock::Timeout=600 update || true
$sudo apt-get -o DPkg::Lock::Timeout=600 install -y -t bookworm --no-install-recommends "${pkgs[@]}"
