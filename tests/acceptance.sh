#!/bin/sh
# Drives the registered DLL as its users do, with the platform's own tools.
#   acceptance.sh PREFIX BITS DLL CASE CLIENT_EXE
# CASE: registration | user_registration | vbscript | text_vbscript | windows_vbscript | jscript | latebound
# BITS 32 uses the 32-bit system programs (syswow64) of the 64-bit prefix.
# Exits 0 on success, 1 on failure, 77 when this machine cannot run BITS.
prefix=$1 bits=$2 dll=$3 case=$4 client=$5
[ $# -ge 4 ] || { echo "usage: acceptance.sh PREFIX BITS DLL CASE [CLIENT_EXE]" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)
wine_run=$here/../cmake/wine-run.sh

CLSID_RECTANGLE='{6DC90197-D0A5-40D0-902B-93CCC0174361}'
LIBID='{42A85E29-D8AA-46DB-8A1E-05723950D28C}'
LIBVERSION=1.16   # 1.22 as the registry spells it: hexadecimal
if [ "$bits" = 32 ]; then sys='C:\windows\syswow64' platform=win32; else sys='C:\windows\system32' platform=win64; fi
HKLM_CLASSES='HKLM\Software\Classes'
HKCU_CLASSES='HKCU\Software\Classes'

# Linux path -> the path Wine programs see (drive Z: is the root).
winpath() {
    case "$1" in /*) p=$1 ;; *) p=$(pwd)/$1 ;; esac
    printf 'Z:%s\n' "$p" | sed 's|/|\\|g'
}

# The cases register and unregister in a prefix that other runs share: anyone
# who changes its registration takes this lock too (ctest's RESOURCE_LOCK only
# orders the tests of one ctest run).
mkdir -p "$(dirname "$prefix")"
exec 8>"$prefix.registry.lock"
flock -w 600 8 || { echo "FAIL: could not lock $prefix.registry.lock"; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
out=$work/out.txt
failed=0
pass() { printf "ok:   %s\n" "$*"; }
fail() { printf "FAIL: %s\n" "$*"; failed=1; }

# Runs a Windows program; its output (CR stripped) lands in $out. Gives up
# with 77 when this machine cannot run BITS.
win() {
    "$wine_run" "$prefix" "$bits" "$@" >"$out" 2>&1
    rc=$?
    tr -d '\r' <"$out" >"$out.tmp" && mv "$out.tmp" "$out"
    if [ $rc -eq 77 ]; then cat "$out"; exit 77; fi
    return $rc
}

reg() { win "$sys\\reg.exe" "$@"; }
regsvr32() { win "$sys\\regsvr32.exe" "$@"; }
key_exists() { reg query "$1" >/dev/null 2>&1; }
# The data of a REG_SZ value (the default value without a name).
reg_value() {
    if [ -z "$2" ]; then reg query "$1" /ve || return 1; name='(Default)'; else reg query "$1" /v "$2" || return 1; name=$2; fi
    sed -n "s/^ *$name *REG_SZ *//p" "$out" | head -n 1
}
upper() { printf '%s' "$1" | tr '[:lower:]' '[:upper:]'; }
expect_value() {   # KEY NAME EXPECTED DESCRIPTION (case-insensitive comparison)
    got=$(reg_value "$1" "$2")
    if [ "$(upper "$got")" = "$(upper "$3")" ]; then pass "$4"; else fail "$4: got '$got', expected '$3'"; fi
}
last_line() { grep -v '^[[:space:]]*$' "$1" | tail -n 1; }

dllwin=$(winpath "$dll")
clientwin=$(winpath "${client:-none}")

# A previous failed run must not poison this one: unregister both scopes,
# ignoring errors. The per-user classes key and its usual containers always
# exist on a user profile; unregistering rightly leaves them in place.
clean_start() {
    regsvr32 /u /s "$dllwin"
    regsvr32 /u /s /n /i:user "$dllwin"
    for k in "" '\CLSID' '\Interface' '\TypeLib'; do reg add "$HKCU_CLASSES$k" /f; done
}

register() {
    if regsvr32 /s "$dllwin"; then pass "regsvr32 /s TOVA200.DLL"; else fail "regsvr32 /s TOVA200.DLL (exit $rc)"; return 1; fi
}
unregister() {
    if regsvr32 /u /s "$dllwin"; then pass "regsvr32 /u /s TOVA200.DLL"; else fail "regsvr32 /u /s TOVA200.DLL (exit $rc)"; fi
}

export_classes() {   # SUFFIX: both class roots into $work/{hklm,hkcu}.SUFFIX.reg
    for hive in hklm hkcu; do
        if [ $hive = hklm ]; then key=$HKLM_CLASSES; else key=$HKCU_CLASSES; fi
        reg export "$key" "$(winpath "$work/$hive.$1.reg")" /y ||
            { fail "reg export $key"; cat "$out"; }
    done
}

compare_exports() {
    for hive in hklm hkcu; do
        if cmp -s "$work/$hive.before.reg" "$work/$hive.after.reg"; then
            pass "$hive classes after unregistration identical to before registration"
        else
            fail "$hive classes differ after unregistration:"
            for f in before after; do iconv -f UTF-16 -t UTF-8 "$work/$hive.$f.reg" >"$work/$hive.$f.txt" 2>/dev/null; done
            diff -u "$work/$hive.before.txt" "$work/$hive.after.txt" | head -n 60
        fi
    done
}

# Registration round trip in one scope: machine or user.
registration_case() {
    scope=$1
    if [ "$scope" = user ]; then root=$HKCU_CLASSES other=$HKLM_CLASSES flags='/s /n /i:user'
    else root=$HKLM_CLASSES other=$HKCU_CLASSES flags='/s'; fi
    clean_start
    export_classes before

    # shellcheck disable=SC2086  # the flags are separate words
    if regsvr32 $flags "$dllwin"; then pass "regsvr32 $flags ($scope)"; else fail "regsvr32 $flags ($scope, exit $rc)"; cat "$out"; fi

    expect_value "$root\\TOVA32.Rectangle\\CLSID" "" "$CLSID_RECTANGLE" "$root\\TOVA32.Rectangle\\CLSID"
    for cls in GDIMethods APIMethods; do
        if key_exists "$root\\TOVA32.$cls\\CLSID"; then pass "$root\\TOVA32.$cls\\CLSID"; else fail "$root\\TOVA32.$cls\\CLSID missing"; fi
    done
    inproc="$root\\CLSID\\$CLSID_RECTANGLE\\InprocServer32"
    expect_value "$inproc" "" "$dllwin" "InprocServer32 is the DLL"
    expect_value "$inproc" ThreadingModel Apartment "ThreadingModel Apartment"
    expect_value "$root\\TypeLib\\$LIBID\\$LIBVERSION\\0\\$platform" "" "$dllwin" "TypeLib\\$LIBID\\$LIBVERSION\\0\\$platform"
    if key_exists "$other\\TOVA32.Rectangle"; then fail "keys also written under $other"; else pass "nothing under $other"; fi
    if [ "$scope" = machine ]; then
        expect_value 'HKCR\TOVA32.Rectangle\CLSID' "" "$CLSID_RECTANGLE" 'HKCR\TOVA32.Rectangle\CLSID'
    fi

    # Creation by ProgID, through the merged classes view.
    if [ "$scope" = user ] && ! key_exists 'HKCR\TOVA32.Rectangle\CLSID'; then
        # Wine (8) looks up classes under HKLM only: per-user classes never reach HKCR.
        printf "%s\n" "note: HKCR does not show per-user classes on this platform; creation by ProgID not checked"
    elif win "$clientwin" --create; then
        pass "created by ProgID"; sed 's/^/      /' "$out"
    else
        fail "creation by ProgID"; cat "$out"
    fi

    # shellcheck disable=SC2086
    if regsvr32 /u $flags "$dllwin"; then pass "regsvr32 /u $flags ($scope)"; else fail "regsvr32 /u $flags ($scope, exit $rc)"; cat "$out"; fi
    if key_exists "$root\\TOVA32.Rectangle"; then fail "TOVA32.Rectangle still registered"; else pass "TOVA32.Rectangle gone"; fi
    export_classes after
    compare_exports
}

# Runs a client program against the machine registration; the client's last
# line must be exactly $1.
client_case() {
    success=$1
    shift
    clean_start
    register || { echo "acceptance $case: FAILED"; exit 1; }
    win "$@"
    rc_client=$rc
    cp "$out" "$work/client.txt"
    cat "$work/client.txt"
    unregister
    if [ "$(last_line "$work/client.txt")" = "$success" ]; then pass "last line is '$success'"; else fail "last line is not '$success' (exit $rc_client)"; fi
}

[ -f "$dll" ] || { echo "FAIL: no DLL at $dll"; exit 1; }
case $case in
registration | user_registration | latebound) [ -f "$client" ] || { echo "FAIL: no client at '$client'"; exit 1; } ;;
esac
case $case in
registration) registration_case machine ;;
user_registration) registration_case user ;;
vbscript) client_case "rectangle.vbs: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/rectangle.vbs")" ;;
text_vbscript) client_case "text.vbs: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/text.vbs")" ;;
windows_vbscript) client_case "windows.vbs: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/windows.vbs")" ;;
jscript) client_case "rectangle.js: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/rectangle.js")" ;;
latebound) client_case "latebound client: OK" "$clientwin" ;;
*) echo "unknown case '$case'" >&2; exit 2 ;;
esac

if [ $failed -ne 0 ]; then echo "acceptance $case: FAILED"; exit 1; fi
echo "acceptance $case: OK"
