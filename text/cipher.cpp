#include "cipher.h"

#include "cipher_platform.h"
#include "frame/error_codes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tova {
namespace cipher {

namespace {

// ------------------------------------------------------------------ keys

// Doubles `key` (key = key & key) until it holds at least `length` characters,
// in O(length). Returns its length before, which is its period afterwards.
size_t doubleKey(std::wstring& key, size_t length) {
    size_t period = key.size();
    size_t target = period;
    while (target < length) target *= 2;
    // Room first, so the appends never move the characters they copy.
    key.reserve(target);
    while (key.size() < target) key.append(key.data(), key.size());
    return period;
}

// Texts go through in chunks this long, converted into a buffer on the stack.
constexpr size_t kChunk = 8192;

enum class Direction { kEncrypt, kDecrypt };

// One period of each doubled key, as codes.
struct KeyCodes {
    std::vector<unsigned char> a, b;
};

// One period of each key, as codes, for a text of `length` (> 0) characters.
KeyCodes keyCodes(Key keyA, Key keyB, size_t length) {
    // Doubling an empty key never reaches the length: the loop would run forever,
    // so this is refused as an invalid argument before anything changes.
    if (keyA.length == 0 || keyB.length == 0) raise(kInvalidArgument);
    KeyCodes k;
    k.a.resize(std::min(keyA.length, length));
    k.b.resize(std::min(keyB.length, length));
    toCodes(keyA.text, k.a.size(), k.a.data());
    toCodes(keyB.text, k.b.size(), k.b.data());
    return k;
}

// Checks the keys, doubles them for a text of `length` (> 0) characters and
// reads one period of each.
KeyCodes prepareKeys(std::wstring& keyA, std::wstring& keyB, size_t length) {
    if (keyA.empty() || keyB.empty()) raise(kInvalidArgument);
    const size_t periodA = doubleKey(keyA, length);
    const size_t periodB = doubleKey(keyB, length);
    return keyCodes(Key{keyA.data(), periodA}, Key{keyB.data(), periodB}, length);
}

// Runs `level` (> 0) rounds over in[0, length) into `o`; returns the number of
// characters written.
size_t transform(const wchar_t* in, size_t length, const KeyCodes& keys, long level, Direction direction,
                 wchar_t* o) {
    const unsigned char* ka = keys.a.data();
    const unsigned char* kb = keys.b.data();
    const size_t na = keys.a.size(), nb = keys.b.size();
    auto keySum = [&](size_t i) { return static_cast<unsigned>(ka[i % na] + kb[i % nb]); };

    // Every round adds (or takes away) b + c at each position, the same at
    // every round since the doubled keys no longer change, and positions never
    // move: `level` rounds are one pass adding level * (b + c) mod 256. No
    // recursion, and any level costs the same. Decrypt's search for the x with
    // (x + b + c) mod 256 = t has exactly that one answer, x = t - b - c.
    const unsigned rounds = static_cast<unsigned>(level) & 255u;
    const unsigned factor = direction == Direction::kEncrypt ? rounds : (256u - rounds) & 255u;

    const wchar_t* chr = ansi().chr;
    unsigned char codes[kChunk];
    std::vector<size_t> missing;
    size_t written = 0;
    for (size_t start = 0; start < length; start += kChunk) {
        const size_t count = std::min(kChunk, length - start);
        missing.clear();
        toCodes(in + start, count, codes, direction == Direction::kDecrypt ? &missing : nullptr);
        if (missing.empty() && written == start) {
            size_t ia = start % na, ib = start % nb;
            for (size_t k = 0; k < count; ++k) {
                o[start + k] = chr[(codes[k] + factor * (ka[ia] + kb[ib])) & 255u];
                if (++ia == na) ia = 0;
                if (++ib == nb) ib = 0;
            }
            written += count;
            continue;
        }
        // Decrypt finds no code that encrypts to a character without one, so
        // its first round drops it, and the later rounds work on the shorter
        // text: round one at the original position, the others at the new one.
        auto skip = missing.begin();
        for (size_t k = 0; k < count; ++k) {
            if (skip != missing.end() && *skip == k) {
                ++skip;
                continue;
            }
            unsigned x = codes[k] - keySum(start + k) - (rounds + 255u) * keySum(written);
            o[written++] = chr[x & 255u];
        }
    }
    return written;
}

std::wstring cipher(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level,
                    Direction direction) {
    if (level <= 0) return text;
    const size_t length = text.size();
    if (length == 0) return std::wstring();
    KeyCodes keys = prepareKeys(keyA, keyB, length);
    std::wstring out(length, L'\0');
    // Read after the doubling: should the caller have passed one variable as
    // text and key, doubling only appended to it.
    out.resize(transform(text.data(), length, keys, level, direction, &out[0]));
    return out;
}

size_t cipher(const wchar_t* text, size_t length, Key keyA, Key keyB, long level, Direction direction,
              wchar_t* out) {
    if (length == 0) return 0;
    if (level <= 0) {
        std::memmove(out, text, length * sizeof(wchar_t));
        return length;
    }
    KeyCodes keys = keyCodes(keyA, keyB, length);
    return transform(text, length, keys, level, direction, out);
}

// ------------------------------------------------------------------ random

int hexDigit(wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    return -1;
}

}  // namespace

std::wstring hexise(const std::wstring& text) {
    static const wchar_t kDigits[] = L"0123456789ABCDEF";
    std::wstring out(text.size() * 2, L'\0');
    wchar_t* o = &out[0];
    unsigned char codes[kChunk];
    for (size_t start = 0; start < text.size(); start += kChunk) {
        const size_t count = std::min(kChunk, text.size() - start);
        toCodes(text.data() + start, count, codes);
        for (size_t k = 0; k < count; ++k) {
            *o++ = kDigits[codes[k] >> 4];
            *o++ = kDigits[codes[k] & 15];
        }
    }
    return out;
}

std::wstring dehexise(const std::wstring& text) {
    const wchar_t* chr = ansi().chr;
    std::wstring out((text.size() + 1) / 2, L'\0');
    for (size_t i = 0; i < text.size(); i += 2) {
        int code = 0;
        for (size_t j = i; j < std::min(i + 2, text.size()); ++j) {
            int digit = hexDigit(text[j]);
            if (digit < 0) raise(kTypeMismatch);
            code = code * 16 + digit;
        }
        out[i / 2] = chr[code];
    }
    return out;
}

int randomCode(double timer) {
    // Seeding takes the bits of the number, folded into the generator's 24-bit
    // state; then one step of its linear congruential generator gives r in [0, 1).
    uint64_t bits;
    std::memcpy(&bits, &timer, sizeof bits);
    uint32_t v = static_cast<uint32_t>(bits >> 32) ^ static_cast<uint32_t>(bits);
    uint32_t x = ((((v & 0xFFFFu) ^ (v >> 16)) << 8) | (v >> 24)) & 0xFFFFFFu;
    x = (x * 1140671485u + 12820163u) & 0xFFFFFFu;
    double r = x / 16777216.0;
    return static_cast<int>(std::nearbyint(r * 255.0));  // ties to even
}

std::wstring randomString(long length, const std::wstring& delimiter, long delimiterFrequency) {
    if (length < 0) return std::wstring();
    const bool grouped = !delimiter.empty() && delimiterFrequency > 0;
    const long long groups = grouped ? length / delimiterFrequency + 1 : 1;
    const long long perGroup = grouped ? delimiterFrequency : length;
    const long long total = groups * perGroup + (groups - 1) * static_cast<long long>(delimiter.size());
    if (total > 0x3FFFFFFFLL) raise(kOutOfMemory);

    const wchar_t* chr = ansi().chr;
    std::wstring out;
    out.reserve(static_cast<size_t>(total));
    for (long long g = 0; g < groups; ++g) {
        if (g > 0) out += delimiter;
        // Re-seeded from the timer for every character, so characters drawn
        // within one tick of the timer repeat.
        for (long long i = 0; i < perGroup; ++i) out.push_back(chr[randomCode(timer())]);
    }
    return out;
}

std::wstring encrypt(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level) {
    return cipher(text, keyA, keyB, level, Direction::kEncrypt);
}

std::wstring decrypt(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level) {
    return cipher(text, keyA, keyB, level, Direction::kDecrypt);
}

size_t doubledLength(size_t period, size_t length) {
    size_t target = period;
    while (target < length) target *= 2;
    return target;
}

void writeDoubled(Key key, wchar_t* out, size_t doubled) {
    if (doubled == 0) return;
    std::memcpy(out, key.text, std::min(key.length, doubled) * sizeof(wchar_t));
    for (size_t have = key.length; have < doubled; have *= 2)
        std::memcpy(out + have, out, std::min(have, doubled - have) * sizeof(wchar_t));
}

size_t encrypt(const wchar_t* text, size_t length, Key keyA, Key keyB, long level, wchar_t* out) {
    return cipher(text, length, keyA, keyB, level, Direction::kEncrypt, out);
}

size_t decrypt(const wchar_t* text, size_t length, Key keyA, Key keyB, long level, wchar_t* out) {
    return cipher(text, length, keyA, keyB, level, Direction::kDecrypt, out);
}

}  // namespace cipher
}  // namespace tova
