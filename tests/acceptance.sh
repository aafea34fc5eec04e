#!/bin/sh
# Drives the registered DLL as its users do, with the platform's own tools.
#   acceptance.sh PREFIX BITS DLL CASE CLIENT_EXE
# CASE: registration | user_registration | registration_free | latebound |
# vbscript | jscript, or a
# script case NAME_vbscript running tests/scripts/NAME.vbs (see the end).
# BITS 32 uses the 32-bit system programs (syswow64) of the 64-bit prefix.
# Exits 0 on success, 1 on failure, 77 when this machine cannot run BITS.
prefix=$1 bits=$2 dll=$3 case=$4 client=$5
[ $# -ge 4 ] || { echo "usage: acceptance.sh PREFIX BITS DLL CASE [CLIENT_EXE]" >&2; exit 2; }
. "$(cd "$(dirname "$0")" && pwd)/wine_lib.sh"

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

# Use without registration, in a prefix where nothing is registered: the client
# activates the DLL's manifest (from the DLL, then from the manifest file beside
# it), then runs as an application whose own manifest names the DLL's assembly,
# with a copy of the DLL beside it. Every class by CLSID and ProgID, events,
# and the registry as before.
free_run() {   # DESCRIPTION EXE ARGS...
    what=$1; shift
    # shellcheck disable=SC2086  # one ProgID a word
    win "$@" $progids
    if [ "$(last_line "$out")" = "latebound client: OK" ]; then pass "without registration, through $what"
    else fail "without registration, through $what:"; grep -v '^ok' "$out"; fi
}
registration_free_case() {
    clean_start
    export_classes before
    progids=$(sed -n 's|.*Key="Software\\Classes\\\(TOVA32\.[A-Za-z]*\)".*|\1|p' "$here/../installer/registry32.wxi")
    manifest=${dll%.DLL}.manifest
    app=$work/app
    mkdir -p "$app"
    cp "$client" "$dll" "$app/"
    { echo '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>'
      echo '<assembly xmlns="urn:schemas-microsoft-com:asm.v1" manifestVersion="1.0">'
      echo '  <dependency><dependentAssembly>'
      grep -o '<assemblyIdentity [^>]*>' "$manifest"
      echo '  </dependentAssembly></dependency>'
      echo '</assembly>'; } >"$app/$(basename "$client").manifest"
    free_run "the DLL's manifest" "$clientwin" --activation-context "$dllwin"
    free_run "the manifest file" "$clientwin" --activation-context "$(winpath "$manifest")"
    free_run "the application's manifest" "$(winpath "$app/$(basename "$client")")" --manifest
    export_classes after
    compare_exports
}

[ -f "$dll" ] || { echo "FAIL: no DLL at $dll"; exit 1; }
case $case in
registration | user_registration | latebound | registration_free) [ -f "$client" ] || { echo "FAIL: no client at '$client'"; exit 1; } ;;
esac
case $case in
registration) registration_case machine ;;
user_registration) registration_case user ;;
registration_free) registration_free_case ;;
vbscript) client_case "rectangle.vbs: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/rectangle.vbs")" ;;
jscript) client_case "rectangle.js: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/rectangle.js")" ;;
latebound) client_case "latebound client: OK" "$clientwin" ;;
*_vbscript)
    script=${case%_vbscript}.vbs
    [ -f "$here/scripts/$script" ] || { echo "unknown case '$case'" >&2; exit 2; }
    client_case "$script: OK" "$sys\\cscript.exe" //nologo "$(winpath "$here/scripts/$script")" ;;
*) echo "unknown case '$case'" >&2; exit 2 ;;
esac

if [ $failed -ne 0 ]; then echo "acceptance $case: FAILED"; exit 1; fi
echo "acceptance $case: OK"
