#!/usr/bin/env bash
# The portable cores under AddressSanitizer and UndefinedBehaviorSanitizer:
# builds them natively with clang in build/native, runs their unit tests,
# replays every kept reproducer (tests/native/regressions/<target>/), then
# fuzzes each target for TOVA_FUZZ_SECONDS seconds (default 30), one at a time.
# A finding fails the run and leaves its input in build/native/findings/.
# Usage: tests/native/run.sh [target ...]   (default: all)
set -euo pipefail
cd "$(dirname "$0")/../.."
tools/install-deps.sh
src=tests/native
out=build/native
seconds=${TOVA_FUZZ_SECONDS:-30}
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(jpeg_decode jpeg_encode jpeg_round_trip wildcard cipher pixels bmp)

if [ ! -f "$out/build.ninja" ]; then
    cmake -S "$src" -B "$out" -G Ninja -DCMAKE_CXX_COMPILER=clang++-14 >/dev/null
fi
ninja -C "$out" -j2
export ASAN_OPTIONS=detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1
export ASAN_SYMBOLIZER_PATH=/usr/lib/llvm-14/bin/llvm-symbolizer

status=0
echo "== native unit tests of the cores"
"$out/core_tests" --gtest_brief=1 || status=1

mkdir -p "$out/findings" "$out/logs"
for t in "${targets[@]}"; do
    kept=("$src"/regressions/"$t"/*)
    if [ -e "${kept[0]}" ]; then
        echo "== $t: ${#kept[@]} kept reproducers"
        "$out/fuzz_$t" "${kept[@]}" >"$out/logs/$t.regressions.log" 2>&1 ||
            { status=1; tail -n 40 "$out/logs/$t.regressions.log"; }
    fi
    echo "== $t: fuzzing for ${seconds}s"
    # New inputs go to the first folder, kept between runs; the seeds in the
    # repository are only read.
    mkdir -p "$out/corpus/$t"
    opts=(-max_total_time="$seconds" -timeout=20 -print_final_stats=1 -artifact_prefix="$out/findings/$t-")
    [ -f "$src/$t.dict" ] && opts+=(-dict="$src/$t.dict")
    if "$out/fuzz_$t" "${opts[@]}" "$out/corpus/$t" "$src/corpus/$t" >"$out/logs/$t.log" 2>&1; then
        grep -h 'stat::number_of_executed_units' "$out/logs/$t.log" | sed 's/^stat::number_of_executed_units: */   executions: /'
    else
        status=1
        tail -n 60 "$out/logs/$t.log"
        echo "== $t: FINDING; its input is in $out/findings/ (replay: $out/fuzz_$t <file>)"
    fi
done
exit $status
