// Longs and Doubles as text, and text as numbers, exactly as the automation
// runtime converts them, for the sorts. Internal to the library.
//
// The runtime writes a Double with 15 significant digits ("%.15G", with the
// locale's decimal separator) and reads a number by accumulating its digits
// and dividing by powers of ten, at most 1e10 at a time. Both are reproduced
// here for the plain forms (no exponent, no grouping) and compared with the
// runtime itself before use (numbers()); the runtime does the work whenever
// that check failed. What the sorts run per element is inline here.
#pragma once

#include "sort_parts.h"

#include <cstdint>

namespace tova {
namespace sorting {

// Which of our conversions give exactly what the runtime gives.
struct Numbers {
    wchar_t sep = 0;            // the decimal separator; 0 when it is not a single character
    bool ownLong = false;       // our text of a Long is the runtime's
    bool ownText = false;       // our text of a Double is the runtime's
    bool ownRead = false;       // our reading of a plain number is the runtime's
    bool extendedRead = false;  // that reading scales in extended precision (scaled())
};

// Checked against the runtime once per process and decimal separator (the
// user locale's, looked up on every call).
Numbers numbers();

// ------------------------------------------------------------ numbers as text

UINT formatLong(LONG v, wchar_t* out);

// The 15 significant digits the runtime writes for |x| (x finite, non-zero):
// q in [1e14, 1e15) with |x| ~ q * 10^(e10 - 14). False when x would be written
// with an exponent, or lies so near a rounding tie that only the runtime can
// say which way it goes.
bool significantDigits(double x, uint64_t& q, int& e10);

// v < 10^8 as eight BCD digits, the first in bits 28-31: the digits
// split in lanes of four, two, then one, all lanes at once.
inline uint64_t bcd8(uint32_t v) {
    uint64_t x = (static_cast<uint64_t>(v / 10000) << 32) | (v % 10000);
    const uint64_t hundreds = ((x * 5243) >> 19) & 0x0000007F0000007FULL;  // y / 100 for y < 43699
    x = (hundreds << 16) | (x - hundreds * 100);
    const uint64_t tens = ((x * 103) >> 10) & 0x000F000F000F000FULL;  // y / 10 for y < 179
    x = (tens << 8) | (x - tens * 10);
    x = (x | (x >> 4)) & 0x00FF00FF00FF00FFULL;
    x = (x | (x >> 8)) & 0x0000FFFF0000FFFFULL;
    return (x | (x >> 16)) & 0xFFFFFFFFULL;
}

// q < 10^15 as fifteen BCD digits, the first in bits 56-59.
inline uint64_t bcd15(uint64_t q) {
    return (bcd8(static_cast<uint32_t>(q / 100000000)) << 32) | bcd8(static_cast<uint32_t>(q % 100000000));
}

// Spells the text of the number with digits q and exponent e (as
// significantDigits gives them), a character at a time: '-', '.' for the
// decimal separator, and the digits.
template <class Put>
void spellDigits(uint64_t q, int e, bool negative, Put&& put) {
    const uint64_t bcd = bcd15(q);
    auto digit = [bcd](int k) { return static_cast<char>('0' + ((bcd >> (4 * (14 - k))) & 0xF)); };
    const int whole = e >= 0 ? e + 1 : 0;  // digits before the separator
    int last = 14;
    while (last >= whole && !((bcd >> (4 * (14 - last))) & 0xF)) --last;
    if (negative) put('-');
    if (e >= 0)
        for (int k = 0; k <= e; ++k) put(digit(k));
    else
        put('0');
    if (last >= whole) {
        put('.');
        for (int z = e + 1; z < 0; ++z) put('0');
        for (int k = whole; k <= last; ++k) put(digit(k));
    }
}

// Writes that text; returns its length.
inline UINT formatDigits(uint64_t q, int e, bool negative, wchar_t sep, wchar_t* out) {
    wchar_t* p = out;
    spellDigits(q, e, negative, [&](char c) { *p++ = c == '.' ? sep : static_cast<wchar_t>(c); });
    return static_cast<UINT>(p - out);
}

// ------------------------------------------------------------ text as numbers

// How the runtime turns the digits it read into a Double: dividing by powers
// of ten, at most 1e10 at a time.
// Two ways to scale, as the runtimes differ by bitness: 64-bit in double, 32-bit in x87 extended precision.
inline constexpr double kPow10d[11] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};
inline constexpr long double kPow10x[11] = {1e0L, 1e1L, 1e2L, 1e3L, 1e4L, 1e5L, 1e6L, 1e7L, 1e8L, 1e9L, 1e10L};

// In double precision.
inline double scaleDown(double whole, int fractionDigits) {
    while (fractionDigits > 10) {
        whole /= kPow10d[10];
        fractionDigits -= 10;
    }
    return fractionDigits ? whole / kPow10d[fractionDigits] : whole;
}

// In extended precision, rounded to a Double once at the end. `whole` is
// below 2^63, as every plain text's digits are.
inline double scaleDownExtended(uint64_t whole, int fractionDigits) {
    long double x = static_cast<long double>(static_cast<int64_t>(whole));
    while (fractionDigits > 10) {
        x /= kPow10x[10];
        fractionDigits -= 10;
    }
    return static_cast<double>(fractionDigits ? x / kPow10x[fractionDigits] : x);
}

// The Double the runtime makes of the digits `whole` with that many after the separator.
inline double scaled(uint64_t whole, int fractionDigits, const Numbers& nums) {
    return nums.extendedRead ? scaleDownExtended(whole, fractionDigits)
                             : scaleDown(static_cast<double>(whole), fractionDigits);
}

// Reads [-]digits[<sep>digits] with at most 15 significant digits and no
// trailing zero after the separator, as the runtime reads it; false for any
// other form (the runtime then reads it).
bool readPlain(const wchar_t* s, UINT n, const Numbers& nums, double& out);

// The number the runtime reads back from the text formatDigits writes.
inline double readBack(uint64_t q, int e, bool negative, const Numbers& nums) {
    int fraction = 14 - e;
    while (fraction > 0 && q % 10 == 0) {
        q /= 10;
        --fraction;
    }
    const double v = scaled(q, fraction, nums);
    return negative ? -v : v;
}

// ------------------------------------------------------------- values as text

inline BSTR newText(const wchar_t* s, UINT n) {
    BSTR b = SysAllocStringLen(s, n);
    if (!b) raise(kOutOfMemory);
    return b;
}

inline BSTR textOfLong(LONG v, const Numbers& nums) {
    if (nums.ownLong) {
        wchar_t buf[16];
        return newText(buf, formatLong(v, buf));
    }
    BSTR b = nullptr;
    const HRESULT hr = VarBstrFromI4(v, kLocale, 0, &b);
    if (FAILED(hr)) raiseFailed(hr);
    return b;
}

BSTR textOfDouble(double x, const Numbers& nums);

// What the runtime's String conversion gives for a value.
BSTR textOf(const VARIANT& value, const Numbers& nums);

// The number the runtime reads from a text compared with a number; false when
// it reads none. `s` ends in a null.
inline bool numberOfText(const wchar_t* s, UINT n, const Numbers& nums, double& out) {
    if (!s || !n || !*s) return false;
    if (nums.ownRead && readPlain(s, n, nums, out)) return true;
    return SUCCEEDED(VarR8FromStr(const_cast<OLECHAR*>(s), kLocale, 0, &out));
}

// x written as text and read back, both as the runtime does them; false when
// the text reads as no number.
bool throughText(double x, const Numbers& nums, double& out);

}  // namespace sorting
}  // namespace tova
