#!/bin/sh
# Sound that really comes out: a private PulseAudio server with a null sink,
# its monitor recorded while sound_tests plays, the recording measured.
#   sound_test.sh PREFIX BITS SOUND_TESTS_EXE
# Exits 0 on success, 1 on failure, 77 when the sound server or BITS is unavailable.
prefix=$1 bits=$2 exe=$3
here=$(cd "$(dirname "$0")" && pwd)
wine_run=$here/../cmake/wine-run.sh
for tool in pulseaudio parecord sox; do
    command -v $tool >/dev/null || { echo "SKIPPED: $tool not installed (tools/install-deps.sh)"; exit 77; }
done

work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work/runtime
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
recorder=
cleanup() {
    [ -n "$recorder" ] && kill "$recorder" 2>/dev/null
    pulseaudio --kill 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT

failed=0
pass() { echo "ok:   $*"; }
fail() { echo "FAIL: $*"; failed=1; }

sox -n -r 44100 -b 16 -c 2 "$work/tone1s.wav" synth 1 sine 440 vol 0.5
sox -n -r 44100 -b 16 -c 2 "$work/tone4s.wav" synth 4 sine 440 vol 0.5
sox -n -r 44100 -b 16 -c 2 "$work/short.wav" synth 1.5 sine 880 vol 0.5
winwork=$(printf 'Z:%s' "$work" | sed 's|/|\\|g')

# Runs the program's cases matching $1 with TOVA_SOUND_EXPECT=$2.
run() {
    TOVA_SOUND_EXPECT=$2 TOVA_SOUND_DIR=$winwork "$wine_run" "$prefix" "$bits" "$exe" --gtest_filter="$1" >"$work/out.txt" 2>&1
    rc=$?
    tr -d '\r' <"$work/out.txt"
    [ $rc -eq 77 ] && exit 77
    if [ $rc -eq 0 ]; then pass "sound_tests $1 ($2)"; else fail "sound_tests $1 ($2, exit $rc)"; fi
}

# A recording as one letter per 0.1 s: "." silence, "a" about 440 Hz, "b"
# about 880 Hz, "?" other sound (zero crossings of a 4 kHz mono copy).
profile() {
    sox --ignore-length "$1" -t dat -c 1 -r 4000 - remix 1 2>/dev/null | awk '
        /^;/ { next }
        { v = $2 + 0; a = v < 0 ? -v : v; if (a > peak) peak = a
          if (n > 0 && ((v >= 0) != (last >= 0))) cross++
          last = v; n++
          if (n == 400) { emit(); n = 0; peak = 0; cross = 0 } }
        function emit(f) {
            if (peak < 0.03) { printf "."; return }
            f = cross * 5   # crossings per 0.1 s -> Hz
            if (f > 350 && f < 530) printf "a"; else if (f > 760 && f < 1000) printf "b"; else printf "?"
        }
        END { print "" }'
}
# Seconds from the first to the last sounding tenth, and the sounding tenths.
span() { printf '%s' "$1" | awk '{ f = match($0, /[^.]/); l = f ? length($0) - match(reverse($0), /[^.]/) + 1 : 0
    print (f ? (l - f + 1) / 10 : 0) }
    function reverse(s, r, i) { r = ""; for (i = length(s); i > 0; i--) r = r substr(s, i, 1); return r }'; }
sounding() { printf '%s' "$1" | tr -d '.\n' | wc -c | awk '{ print $1 / 10 }'; }

# Plays case $1 while recording the sink; sets $prof to the recording's
# profile.
recorded() {
    parecord -d null.monitor --latency-msec=50 --file-format=wav "$work/$2.wav" &
    recorder=$!
    sleep 2
    run "$1" device
    sleep 0.7
    kill "$recorder" 2>/dev/null; wait "$recorder" 2>/dev/null
    recorder=
    prof=$(profile "$work/$2.wav")
    echo "      recording ($2): $prof"
}

# Runs phase $1 (a case pattern) and its check $2 up to three times. Under
# heavy load the sound server drops whole streams now and then (Wine closes a
# stream without draining it); a phase counts when one run shows the sound.
phase() {
    for attempt in 1 2 3; do
        recorded "$1" "$3"
        failed_before=$failed
        failed=0
        $2 >"$work/check.txt"
        cat "$work/check.txt"
        if [ $failed -eq 0 ]; then failed=$failed_before; return; fi
        failed=$failed_before
        [ $attempt -lt 3 ] && echo "      (attempt $attempt: sound lost or late; once more)"
    done
    failed=1
}

# Between two numbers (awk does the comparison).
within() { awk -v v="$1" -v lo="$2" -v hi="$3" 'BEGIN { exit !(v != "" && v + 0 >= lo && v + 0 <= hi) }'; }

# --- no server: no device.
run 'SoundTest.EmptyName*:SoundTest.NoDevice*' none

# --- with a server and a null sink.
pulseaudio -D --exit-idle-time=-1 --system=false -n \
    --load="module-null-sink sink_name=null" --load=module-native-protocol-unix 2>"$work/pulse.log" ||
    { cat "$work/pulse.log"; echo "SKIPPED: pulseaudio did not start"; exit 77; }
i=0
while ! pactl info >/dev/null 2>&1; do
    i=$((i + 1)); [ $i -gt 50 ] && { echo "SKIPPED: pulseaudio not answering"; exit 77; }
    sleep 0.1
done

run 'SoundTest.EmptyName*:SoundTest.MissingFile*' device

# One second of 440 Hz, played synchronously and then asynchronously.
check_tone() {
    s=$(sounding "$prof") w=$(span "$prof")
    # Mostly 440 Hz: the tenths where the tone starts or stops read as other sounds.
    tone=$(printf '%s' "$prof" | tr -cd 'a' | wc -c) other=$(printf '%s' "$prof" | tr -d '.a\n' | wc -c)
    if within "$s" 0.1 2 && [ "$tone" -ge 2 ] && [ "$tone" -gt "$other" ]; then
        pass "the 440 Hz tone came out ($s s)"
    else
        fail "no 440 Hz tone recorded"
    fi
    if within "$w" 0 1.5; then pass "within 1.5 s ($w s)"; else fail "sound spread over $w s"; fi
}
phase 'SoundTest.Synchronous*' check_tone synchronous
phase 'SoundTest.Asynchronous*' check_tone asynchronous

# 4 s of 440 Hz replaced after 0.3 s by 1.5 s of 880 Hz.
check_second() {
    w=$(span "$prof")
    if printf '%s' "$prof" | grep -q 'bb'; then pass "the second sound (880 Hz) came out"; else fail "no 880 Hz recorded"; fi
    if printf '%s' "$prof" | grep -q 'b.*aa'; then fail "the first sound went on after the second"; else pass "nothing of the first after the second"; fi
    if within "$w" 0 4; then pass "the first was cut short ($w s in all)"; else fail "sound spread over $w s"; fi
}
phase 'SoundTest.ASecondPlay*' check_second second

# 4 s of 440 Hz stopped after 0.3 s, by StopSound and by the object's end.
check_stopped() {
    w=$(span "$prof")
    if within "$(sounding "$prof")" 0.1 2; then pass "the sound started"; else fail "no sound recorded"; fi
    if within "$w" 0 1.5; then pass "a 4 s sound was silenced ($w s)"; else fail "sound spread over $w s"; fi
}
phase 'SoundTest.StopSound*' check_stopped stop
phase 'SoundTest.Releasing*' check_stopped release

if [ $failed -ne 0 ]; then echo "sound: FAILED"; exit 1; fi
echo "sound: OK"
