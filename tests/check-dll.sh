#!/bin/sh
# What TOVA200.DLL is made of, read on the build host (no Wine needed):
#   check-dll.sh DLL TRIPLE      (TRIPLE: i686-w64-mingw32 or x86_64-w64-mingw32)
# - it imports Windows system DLLs only: no compiler runtime DLL may be needed
#   on the user's machine;
# - it exports exactly the five entry points of a self-registering server,
#   under their plain names;
# - its resources hold the type library and a version resource 2.0.0.38.
dll=$1 triple=$2
if [ ! -f "$dll" ] || [ -z "$triple" ]; then echo "usage: check-dll.sh DLL TRIPLE" >&2; exit 2; fi
objdump=$triple-objdump
objcopy=$triple-objcopy
command -v "$objdump" >/dev/null || { echo "FAIL: $objdump not found"; exit 1; }

failed=0
pass() { echo "ok:   $*"; }
fail() { echo "FAIL: $*"; failed=1; }

headers=$(mktemp) rsrc=$(mktemp)
trap 'rm -f "$headers" "$rsrc"' EXIT
"$objdump" -p "$dll" >"$headers" || { echo "FAIL: $objdump -p $dll"; exit 1; }

# --- imports: each DLL name must be a Windows system library.
imports=$(sed -n 's/^[[:space:]]*DLL Name:[[:space:]]*//p' "$headers" | tr -d '\r')
[ -n "$imports" ] || fail "no import table found"
system_dlls=' kernel32.dll user32.dll gdi32.dll advapi32.dll ole32.dll oleaut32.dll msvcrt.dll'
system_dlls="$system_dlls shell32.dll shlwapi.dll comctl32.dll comdlg32.dll uxtheme.dll version.dll"
system_dlls="$system_dlls winmm.dll msimg32.dll ntdll.dll rpcrt4.dll combase.dll ws2_32.dll imm32.dll "
for name in $imports; do
    lower=$(echo "$name" | tr '[:upper:]' '[:lower:]')
    case "$lower" in
    api-ms-win-*.dll) pass "imports $name (system API set)" ;;
    *)
        case "$system_dlls" in
        *" $lower "*) pass "imports $name" ;;
        *) fail "imports $name, which is not a Windows system DLL" ;;
        esac ;;
    esac
done

# --- exports: the names listed after the name pointer table, nothing else.
# binutils prints "[Ordinal/Name Pointer] Table" (older: without the base).
exports=$(awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next }
               on && /^[[:space:]]*$/ { exit }
               on && /\[/ { print $NF }' "$headers" | tr -d '\r' | sort | tr '\n' ' ')
expected='DllCanUnloadNow DllGetClassObject DllInstall DllRegisterServer DllUnregisterServer '
if [ "$exports" = "$expected" ]; then
    pass "exports exactly: $exports"
else
    fail "exports '$exports', expected '$expected'"
fi

# --- resources: a TYPELIB entry and a version resource (type 16).
if grep -q 'Entry: name: .*: TYPELIB,' "$headers"; then
    pass "resource type TYPELIB present"
else
    fail "no TYPELIB resource"
fi
if grep -Eq '^[0-9a-f]+ +Entry: ID: 0x0+10,' "$headers"; then
    pass "version resource present"
else
    fail "no version resource (RT_VERSION)"
fi

# The raw resource section as one hex string, to find the binary structures.
if "$objcopy" -O binary --only-section=.rsrc "$dll" "$rsrc" 2>/dev/null && [ -s "$rsrc" ]; then
    hex=$(od -An -v -tx1 "$rsrc" | tr -d ' \n')
    # A type library starts with the "MSFT" signature.
    case "$hex" in
    *4d534654*) pass "type library data (MSFT) present" ;;
    *) fail "no type library data (MSFT signature) in .rsrc" ;;
    esac
    # VS_FIXEDFILEINFO: signature FEEF04BD, structure version 1.0, then the file
    # version 2.0 / 0.38 (little-endian DWORDs 0x00020000 0x00000026).
    case "$hex" in
    *bd04effe000001000000020026000000*) pass "fixed file version 2.0.0.38" ;;
    *bd04effe*) fail "fixed file version is not 2.0.0.38" ;;
    *) fail "no VS_FIXEDFILEINFO in .rsrc" ;;
    esac
else
    fail "cannot extract .rsrc with $objcopy"
fi
# The version strings are UTF-16.
if strings -el "$dll" | grep -qx '2\.0\.0\.38'; then
    pass "FileVersion string 2.0.0.38"
else
    fail "no version string 2.0.0.38"
fi

if [ $failed -ne 0 ]; then
    echo "check-dll: FAILED"
    exit 1
fi
echo "check-dll: OK"
