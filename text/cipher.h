// Hexadecimal text encoding, random strings and the light symmetric text
// cipher (the work behind EncryptMethods). Character codes are those of the
// system's ANSI code page.
//
// Every function converts its text to ANSI codes once (characters the code
// page lacks become its replacement or best-fit character, as the platform
// converts them), works on the codes 0..255 and converts the result back one
// code per character. So text outside the code page does not survive a round
// trip: it comes back as the replacement character. In a double-byte code
// page a character needing two bytes has no code of its own and counts as the
// replacement character (Decrypt drops it, having nothing to match it with).
#pragma once

#include <cstddef>
#include <string>

namespace tova {
namespace cipher {

// Two upper-case hexadecimal digits per character.
std::wstring hexise(const std::wstring& text);
// Raises 13 for a pair that is not hexadecimal. An odd final digit is read alone.
std::wstring dehexise(const std::wstring& text);
// `length` random characters (codes 0..255, NUL included); a negative length
// gives "". With a non-empty delimiter and a frequency above 0 it builds
// length / frequency + 1 groups of `delimiterFrequency` characters joined by the
// delimiter, so more than `length` characters. A negative frequency counts as 0
// (no grouping). Raises 7 when the result would exceed a string's size.
std::wstring randomString(long length, const std::wstring& delimiter, long delimiterFrequency);
// The code randomString draws for one character at `timer` seconds since midnight.
int randomCode(double timer);
// The keys are doubled in place until they reach the text's length.
// A level <= 0 returns the text unchanged (keys untouched); an empty key with a
// non-empty text raises 5 (keys untouched).
std::wstring encrypt(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level);
std::wstring decrypt(const std::wstring& text, std::wstring& keyA, std::wstring& keyB, long level);

// A key as the caller holds it. Doubled (key = key & key) for a text, it
// repeats these characters, so the cipher reads one period and never needs
// the doubled key itself.
struct Key {
    const wchar_t* text;
    std::size_t length;
};
// The length a key of `period` (> 0) characters reaches, doubled until it
// holds at least `length` characters.
std::size_t doubledLength(std::size_t period, std::size_t length);
// Writes `key` doubled to `doubled` characters (a doubledLength) into `out`.
void writeDoubled(Key key, wchar_t* out, std::size_t doubled);
// The cipher over text[0, length), written to `out`, which has room for
// `length` characters (a BSTR, say, or the text itself); returns how many were
// written: `length`, or fewer when Decrypt drops characters. The keys are read
// as if doubled for the text; the caller writes the doubled keys back. Raises 5
// for an empty key when level > 0 and the text is not empty.
std::size_t encrypt(const wchar_t* text, std::size_t length, Key keyA, Key keyB, long level, wchar_t* out);
std::size_t decrypt(const wchar_t* text, std::size_t length, Key keyA, Key keyB, long level, wchar_t* out);

}  // namespace cipher
}  // namespace tova
