# Shared by the scripts that drive the DLL through Wine's own programs:
# paths, running a program of the build's bitness, registry queries and
# exports, and the lock on the prefix's registration. The caller sets
# prefix, bits (32 or 64) and, before exporting, nothing else.
# shellcheck shell=sh
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

# SUFFIX [VIEW...]: both class roots into $work/HIVE[VIEW].SUFFIX.reg. A VIEW
# (32 or 64) exports that registry view; without one, the program's own.
export_classes() {
    suffix=$1; shift
    [ $# -gt 0 ] || set -- ""
    for view in "$@"; do
        for hive in hklm hkcu; do
            if [ $hive = hklm ]; then key=$HKLM_CLASSES; else key=$HKCU_CLASSES; fi
            reg export "$key" "$(winpath "$work/$hive$view.$suffix.reg")" ${view:+/reg:$view} /y ||
                { fail "reg export $key ${view:+/reg:$view}"; cat "$out"; }
        done
    done
}

# [VIEW...]: the exports "before" and "after" are the same.
compare_exports() {
    [ $# -gt 0 ] || set -- ""
    for view in "$@"; do
        for hive in hklm hkcu; do
            f=$work/$hive$view
            if cmp -s "$f.before.reg" "$f.after.reg"; then
                pass "$hive${view:+ ($view-bit view)} classes afterwards identical to before"
            else
                fail "$hive${view:+ ($view-bit view)} classes differ afterwards:"
                for when in before after; do iconv -f UTF-16 -t UTF-8 "$f.$when.reg" >"$f.$when.txt" 2>/dev/null; done
                diff -u "$f.before.txt" "$f.after.txt" | head -n 30
            fi
        done
    done
}
