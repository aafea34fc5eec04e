#!/bin/sh
# The installer package under Wine, as an administrator and a user use it.
#   installer.sh PREFIX BITS DLL32 DLL64
# BITS 32 checks the 32-bit package (build/TOVA200-x86.msi's content: the
# 32-bit DLL); BITS 64 the 64-bit one (both DLLs, each host bitness). The
# package is built from the given DLLs into a temporary folder. Cases:
#   per machine: msiexec /i, every class by ProgID from each host bitness,
#       msiexec /x, then the classes of both registry views are as before;
#   per user: the same under HKCU\Software\Classes;
#   over regsvr32: a registration made before stays in charge through the
#       package's install and removal.
# Exits 0 on success, 1 on failure, 77 when this machine cannot run 32-bit programs.
prefix=$1 bits=$2 dll32=$3 dll64=$4
[ $# -eq 4 ] || { echo "usage: installer.sh PREFIX BITS DLL32 DLL64" >&2; exit 2; }
. "$(cd "$(dirname "$0")" && pwd)/wine_lib.sh"
command -v wixl >/dev/null || { echo "FAIL: wixl is not installed (tools/install-deps.sh)"; exit 1; }

if [ "$bits" = 64 ]; then platform=x64 hosts="32 64"; else platform=x86 hosts=32; fi
# Each case runs the programs of the prefix's own (64-bit) side, which sees
# both registry views; the 32-bit side must be runnable all the same.
"$wine_run" "$prefix" 32 cmd /c exit 0 >/dev/null 2>&1 || [ $? -ne 77 ] ||
    { echo "SKIPPED: this machine cannot run 32-bit programs"; exit 77; }
bits=64 sys='C:\windows\system32'

tools=$here/../tools
TOVA_PACKAGE_DLL32=$dll32 TOVA_PACKAGE_DLL64=$dll64 "$tools/package.sh" "$work" $platform >"$out" 2>&1 ||
    { cat "$out"; echo "FAIL: the package could not be built"; exit 1; }
msi=$(winpath "$work/TOVA200-$platform.msi")
progids=$(sed -n 's|.*Key="Software\\Classes\\\(TOVA32\.[A-Za-z]*\)".*|\1|p' "$here/../installer/registry32.wxi")
rect_inproc="CLSID\\$CLSID_RECTANGLE\\InprocServer32"

host() {   # BITS PROGRAM ARGS...: a system program of that bitness
    hb=$1 hp=$2; shift 2
    if [ "$hb" = 32 ]; then hs='C:\windows\syswow64'; else hs='C:\windows\system32'; fi
    "$wine_run" "$prefix" "$hb" "$hs\\$hp" "$@"
}
dll_of() { if [ "$1" = 32 ]; then winpath "$dll32"; else winpath "$dll64"; fi; }
script=$(winpath "$here/scripts/installed.vbs")

msiexec() {   # ACTION DESCRIPTION [PROPERTIES...]
    action=$1 what=$2; shift 2
    if win msiexec "$action" "$msi" /qn "$@"; then pass "$what"; else fail "$what (exit $rc)"; fi
}
# Every class by ProgID, from a host of each bitness the package serves.
create_all() {   # DESCRIPTION
    for h in $hosts; do
        host $h cscript.exe //nologo "$script" $progids 2>&1 | tr -d '\r' >"$work/create.txt"
        if [ "$(last_line "$work/create.txt")" = "installed.vbs: OK" ]; then pass "$1: every class from a $h-bit host"
        else fail "$1: classes from a $h-bit host:"; grep -v '^ok' "$work/create.txt"; fi
    done
}
views() { for h in $hosts; do printf '%s ' $h; done; }

# What a first use of msiexec and the script host adds to the registry belongs
# to the prefix, not to the package: make it before the first export.
win msiexec /x "$msi" /qn
for h in $hosts; do host $h cscript.exe //nologo "$script" >/dev/null 2>&1; done
for k in "" '\CLSID' '\Interface' '\TypeLib'; do reg add "$HKCU_CLASSES$k" /f; done
for k in Features Products UpgradeCodes; do reg add "$HKLM_CLASSES\Installer\$k" /f; done

# Nothing of the package is left: no marker key, no file.
nothing_left() {   # DESCRIPTION
    left=
    for h in $hosts; do
        for k in 'HKLM\Software\TOVA32' 'HKCU\Software\TOVA32'; do
            reg query "$k" /reg:$h && left="$left $k ($h-bit view)"
        done
    done
    for d in "Program Files/TOVA32 (64-bit)" "Program Files (x86)/TOVA32"; do
        [ -e "$prefix/drive_c/$d" ] && left="$left C:/$d"
    done
    if [ -z "$left" ]; then pass "$1: nothing left"; else fail "$1: left behind:$left"; fi
}

# --- per machine
export_classes before $(views)
msiexec /i "msiexec /i (per machine)"
for h in $hosts; do
    reg query "$HKLM_CLASSES\\$rect_inproc" /ve /reg:$h
    if grep -qi 'TOVA32.*TOVA200.DLL' "$out"; then pass "HKLM classes ($h-bit view) name the installed DLL"
    else fail "HKLM classes ($h-bit view):"; cat "$out"; fi
done
create_all "per machine"
msiexec /x "msiexec /x (per machine)"
nothing_left "per machine"
export_classes after $(views)
compare_exports $(views)

# --- per user (Windows takes MSIINSTALLPERUSER=1 alone; Wine decides the
# context by ALLUSERS only, so it is cleared as well)
msiexec /i "msiexec /i (per user)" MSIINSTALLPERUSER=1 ALLUSERS=
if key_exists "$HKCU_CLASSES\\$rect_inproc" && ! key_exists "$HKLM_CLASSES\\TOVA32.Rectangle"; then
    pass "classes under HKCU only"
else fail "per-user classes are not under HKCU only"; fi
# Wine (8) looks up classes under HKLM only: creation through per-user
# classes is checked only where HKCR shows them.
if key_exists 'HKCR\TOVA32.Rectangle\CLSID'; then create_all "per user"
else echo "note: HKCR does not show per-user classes on this platform; creation by ProgID not checked"; fi
msiexec /x "msiexec /x (per user)" ALLUSERS=
nothing_left "per user"
export_classes after $(views)
compare_exports $(views)

# --- over a regsvr32 registration
for h in $hosts; do host $h regsvr32.exe /s "$(dll_of $h)" >/dev/null 2>&1 || fail "regsvr32 ($h-bit)"; done
export_classes registered $(views)
msiexec /i "msiexec /i over regsvr32"
create_all "installed over regsvr32"
msiexec /x "msiexec /x over regsvr32"
create_all "removed over regsvr32"
export_classes after $(views)
for v in $(views); do
    for hive in hklm hkcu; do cp "$work/$hive$v.registered.reg" "$work/$hive$v.before.reg"; done
done
compare_exports $(views)
for h in $hosts; do host $h regsvr32.exe /u /s "$(dll_of $h)" >/dev/null 2>&1 || fail "regsvr32 /u ($h-bit)"; done

if [ $failed -ne 0 ]; then echo "installer $platform: FAILED"; exit 1; fi
echo "installer $platform: OK"
