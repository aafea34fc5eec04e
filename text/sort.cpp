// Sorting of arrays held in Variants, in place.
//
// The three sorts run their loops step for step as the library always has,
// bounds handling included: every element access is checked, and an index the
// array does not have raises 9 exactly where the loops reach it. The quicksort's
// pivot and exchange temporary are text, so an element that passes through the
// temporary comes back as text (arrays of Variants) or is converted back to the
// element type (typed arrays).
//
// For speed the array is locked once and its data indexed directly, Variants
// are moved by their bits rather than copied, same-typed Longs, Doubles and
// Strings compare inline, and Longs and Doubles are turned into text (and that
// text back into numbers) by our own code wherever that gives exactly what the
// runtime gives; that is checked against the runtime once per process and
// decimal separator, and the runtime does the work whenever the check failed.

#include "sort.h"

#include <atomic>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace tova {
namespace sorting {
namespace {

constexpr int kLT = VARCMP_LT;
constexpr int kEQ = VARCMP_EQ;
constexpr int kGT = VARCMP_GT;
constexpr long kInvalidUseOfNull = 94;
constexpr long kArrayLocked = 10;
const LCID kLocale = LOCALE_USER_DEFAULT;

inline bool atLeast(int c) { return c == kGT || c == kEQ; }  // >= (false for Null)
inline bool atMost(int c) { return c == kLT || c == kEQ; }   // <= (false for Null)

// ---------------------------------------------------------------------- errors

[[noreturn]] void raiseFailed(HRESULT hr) {
    if (hr == DISP_E_OVERFLOW) raise(kOverflow);
    if (hr == E_OUTOFMEMORY) raise(kOutOfMemory);
    raise(kTypeMismatch);
}

// An index the loops computed that the array does not have; overflow when
// the index no longer even fits a Long.
[[noreturn]] void raiseIndex(int64_t index) {
    raise(index > LONG_MAX || index < LONG_MIN ? kOverflow : kSubscriptOutOfRange);
}

inline int64_t checkedLong(int64_t v) {
    if (v > LONG_MAX || v < LONG_MIN) raise(kOverflow);
    return v;
}

// The value a by-reference Variant refers to, as a shallow view.
const VARIANT& dereferenced(const VARIANT& v, VARIANT& scratch) {
    const VARIANT* p = &v;
    while (V_VT(p) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(p)) p = V_VARIANTREF(p);
    if (!(V_VT(p) & VT_BYREF) || (V_VT(p) & VT_ARRAY)) return *p;
    const VARTYPE vt = V_VT(p) & ~VT_BYREF;
    VariantInit(&scratch);
    switch (vt) {
    case VT_I1: case VT_UI1: V_UI1(&scratch) = *V_UI1REF(p); break;
    case VT_I2: case VT_UI2: case VT_BOOL: V_UI2(&scratch) = *V_UI2REF(p); break;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_R4: case VT_ERROR: V_UI4(&scratch) = *V_UI4REF(p); break;
    case VT_I8: case VT_UI8: case VT_R8: case VT_CY: case VT_DATE: V_UI8(&scratch) = *V_UI8REF(p); break;
    case VT_BSTR: V_BSTR(&scratch) = *V_BSTRREF(p); break;
    case VT_DISPATCH: V_DISPATCH(&scratch) = *V_DISPATCHREF(p); break;
    case VT_UNKNOWN: V_UNKNOWN(&scratch) = *V_UNKNOWNREF(p); break;
    case VT_DECIMAL: V_DECIMAL(&scratch) = *V_DECIMALREF(p); break;
    default: return *p;  // left to the runtime, which refuses it
    }
    V_VT(&scratch) = vt;
    return scratch;
}

// ------------------------------------------------------------- numbers as text
//
// The runtime writes a Double with 15 significant digits ("%.15G", with the
// locale's decimal separator) and reads a number by accumulating its digits
// and dividing by powers of ten, at most 1e10 at a time. Both are reproduced
// here for the plain forms (no exponent, no grouping) and compared with the
// runtime itself before use.

const uint64_t kPow10[20] = {1ULL, 10ULL, 100ULL, 1000ULL, 10000ULL, 100000ULL, 1000000ULL, 10000000ULL,
                             100000000ULL, 1000000000ULL, 10000000000ULL, 100000000000ULL,
                             1000000000000ULL, 10000000000000ULL, 100000000000000ULL,
                             1000000000000000ULL, 10000000000000000ULL, 100000000000000000ULL,
                             1000000000000000000ULL, 10000000000000000000ULL};
const double kPow10d[11] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};

struct Numbers {
    wchar_t sep = 0;        // the decimal separator; 0 when it is not a single character
    bool ownLong = false;   // our text of a Long is the runtime's
    bool ownText = false;   // our text of a Double is the runtime's
    bool ownRead = false;   // our reading of a plain number is the runtime's
};

// "00".."99", for writing two digits at a time.
const char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

UINT formatLong(LONG v, wchar_t* out) {
    wchar_t digits[12];
    int k = 12;
    uint32_t u = v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
    while (u >= 100) {
        const uint32_t pair = (u % 100) * 2;
        u /= 100;
        digits[--k] = static_cast<wchar_t>(kDigitPairs[pair + 1]);
        digits[--k] = static_cast<wchar_t>(kDigitPairs[pair]);
    }
    if (u >= 10) {
        digits[--k] = static_cast<wchar_t>(kDigitPairs[u * 2 + 1]);
        digits[--k] = static_cast<wchar_t>(kDigitPairs[u * 2]);
    } else {
        digits[--k] = static_cast<wchar_t>(L'0' + u);
    }
    UINT n = 0;
    if (v < 0) out[n++] = L'-';
    while (k < 12) out[n++] = digits[k++];
    return n;
}

// 64 x 64 -> 128 bits, portable to the 32-bit build.
struct Wide {
    uint64_t hi, lo;
};
Wide multiply(uint64_t a, uint64_t b) {
    const uint64_t a0 = static_cast<uint32_t>(a), a1 = a >> 32, b0 = static_cast<uint32_t>(b), b1 = b >> 32;
    const uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
    const uint64_t mid = (p00 >> 32) + static_cast<uint32_t>(p01) + static_cast<uint32_t>(p10);
    return {p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32), (mid << 32) | static_cast<uint32_t>(p00)};
}

// The 15 significant digits the runtime writes for |x| (x finite, non-zero):
// q in [1e14, 1e15) with |x| ~ q * 10^(e10 - 14). False when x would be written
// with an exponent, or lies so near a rounding tie that only the runtime can
// say which way it goes.
bool significantDigits(double x, uint64_t& q, int& e10) {
    uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    const int biased = static_cast<int>((bits >> 52) & 0x7FF);
    if (biased == 0 || biased == 0x7FF) return false;  // subnormal (written with an exponent), or not finite
    const uint64_t m = (bits & ((1ULL << 52) - 1)) | (1ULL << 52);
    const int s = 1075 - biased;  // |x| = m / 2^s exactly
    if (s <= 0 || s >= 128) return false;
    // floor(log10(2^(e2 - 1))) with e2 = biased - 1022: at most one too small.
    int e = ((biased - 1023) * 78913) >> 18;
    for (int attempt = 0; attempt < 3; ++attempt) {
        const int k = 14 - e;
        if (k < 0 || k > 19) return false;
        const Wide p = multiply(m, kPow10[k]);  // |x| * 10^k = p / 2^s
        uint64_t whole, below;                  // p >> s, and the bits under it scaled to 2^64
        if (s < 64) {
            if (p.hi >> s) return false;
            whole = (p.hi << (64 - s)) | (p.lo >> s);
            below = p.lo << (64 - s);
        } else if (s == 64) {
            whole = p.hi;
            below = p.lo;
        } else {
            whole = p.hi >> (s - 64);
            below = (p.hi << (128 - s)) | (p.lo >> (s - 64));
        }
        if (whole >= kPow10[15]) { ++e; continue; }
        if (whole < kPow10[14]) { --e; continue; }
        const uint64_t half = 1ULL << 63, margin = 1ULL << 40;
        if (below > half - margin && below < half + margin) return false;
        if (below > half) ++whole;
        if (whole == kPow10[15]) {
            whole = kPow10[14];
            ++e;
        }
        if (e < -4 || e > 14) return false;  // written with an exponent
        q = whole;
        e10 = e;
        return true;
    }
    return false;
}

// v < 10^8 as eight BCD digits, the first in bits 28-31: the digits
// split in lanes of four, two, then one, all lanes at once.
uint64_t bcd8(uint32_t v) {
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
uint64_t bcd15(uint64_t q) {
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
UINT formatDigits(uint64_t q, int e, bool negative, wchar_t sep, wchar_t* out) {
    wchar_t* p = out;
    spellDigits(q, e, negative, [&](char c) { *p++ = c == '.' ? sep : static_cast<wchar_t>(c); });
    return static_cast<UINT>(p - out);
}

// Writes the runtime's text of x; returns its length, 0 when x is not ours to write.
UINT formatDouble(double x, wchar_t sep, wchar_t* out) {
    if (x == 0) {
        if (std::signbit(x)) return 0;
        out[0] = L'0';
        return 1;
    }
    uint64_t q;
    int e;
    if (!significantDigits(x, q, e)) return 0;
    return formatDigits(q, e, x < 0, sep, out);
}

// How the runtime turns the digits it read into a Double.
inline double scaleDown(double whole, int fractionDigits) {
    while (fractionDigits > 10) {
        whole /= kPow10d[10];
        fractionDigits -= 10;
    }
    return fractionDigits ? whole / kPow10d[fractionDigits] : whole;
}

// Reads [-]digits[<sep>digits] with at most 15 significant digits and no
// trailing zero after the separator, as the runtime reads it; false for any
// other form (the runtime then reads it).
bool readPlain(const wchar_t* s, UINT n, wchar_t sep, double& out) {
    UINT k = 0;
    const bool negative = n && s[0] == L'-';
    if (negative) k = 1;
    uint64_t m = 0;
    int significant = 0, fraction = 0;
    bool digits = false, inFraction = false;
    for (; k < n; ++k) {
        const wchar_t c = s[k];
        if (c >= L'0' && c <= L'9') {
            digits = true;
            if ((m || c != L'0') && ++significant > 15) return false;
            m = m * 10 + static_cast<unsigned>(c - L'0');
            if (inFraction && ++fraction > 30) return false;
        } else if (c == sep && digits && !inFraction) {
            inFraction = true;
        } else {
            return false;
        }
    }
    if (!digits || (inFraction && (fraction == 0 || s[n - 1] == L'0'))) return false;
    const double v = scaleDown(static_cast<double>(m), fraction);
    out = negative ? -v : v;
    return true;
}

inline bool same(BSTR a, const wchar_t* b, UINT n) {
    return textLength(a) == n && std::memcmp(a, b, n * sizeof(wchar_t)) == 0;
}

// Checks our conversions against the runtime's on a spread of values.
Numbers calibrate(wchar_t sep) {
    Numbers r;
    r.sep = sep;
    if (!sep || (sep >= L'0' && sep <= L'9') || sep == L'-') return r;

    r.ownLong = true;
    static const LONG longs[] = {0, 7, -7, 10, -10, 1000000, 123456789, -987654321, LONG_MIN, LONG_MAX};
    for (LONG v : longs) {
        wchar_t buf[16];
        const UINT n = formatLong(v, buf);
        Bstr theirs;
        if (FAILED(VarBstrFromI4(v, kLocale, 0, theirs.put())) || !same(theirs.get(), buf, n)) r.ownLong = false;
    }

    r.ownText = r.ownRead = true;
    int written = 0, read = 0;  // samples each of ours was checked on
    static const double fixed[] = {0.0, 0.1, 0.5, 1.0, 2.0 / 3, 1.0 / 3, -1.0 / 3, 0.30000000000000004, 123456.789,
                                   0.00012345678901234, 99999999999999.9, 1e14, 3.141592653589793,
                                   1234567890.12345, -0.000999999999999999, 9.99999999999999e-5};
    uint64_t seed = 0x9E3779B97F4A7C15ULL;
    for (int k = 0; k < 112; ++k) {
        double x;
        if (k < static_cast<int>(sizeof fixed / sizeof fixed[0])) {
            x = fixed[k];
        } else {
            seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
            const double mantissa = 1.0 + static_cast<double>(seed >> 11) / 9007199254740992.0 * 9.0;
            const int exponent = static_cast<int>((seed >> 3) % 19) - 4;
            x = mantissa * std::pow(10.0, exponent) * ((seed & 4) ? -1 : 1);
        }
        Bstr theirs;
        if (FAILED(VarBstrFromR8(x, kLocale, 0, theirs.put()))) continue;
        wchar_t buf[48];
        if (const UINT n = formatDouble(x, sep, buf)) {
            ++written;
            if (!same(theirs.get(), buf, n)) r.ownText = false;
        }
        double mine, runtime;
        if (readPlain(theirs.get(), textLength(theirs.get()), sep, mine)) {
            ++read;
            if (FAILED(VarR8FromStr(theirs.get(), kLocale, 0, &runtime)) || std::memcmp(&mine, &runtime, sizeof mine))
                r.ownRead = false;
        }
    }
    r.ownText = r.ownText && written >= 64;
    r.ownRead = r.ownRead && read >= 64;
    return r;
}

std::atomic<uint32_t> g_numbers{0};  // valid bit 31, flags bits 16-18, separator bits 0-15

Numbers numbers() {
    wchar_t buf[8];
    const int n = GetLocaleInfoW(kLocale, LOCALE_SDECIMAL, buf, 8);
    const wchar_t sep = n == 2 ? buf[0] : 0;
    const uint32_t packed = g_numbers.load(std::memory_order_acquire);
    if ((packed >> 31) && static_cast<wchar_t>(packed & 0xFFFF) == sep) {
        Numbers r;
        r.sep = sep;
        r.ownLong = (packed >> 16) & 1;
        r.ownText = (packed >> 17) & 1;
        r.ownRead = (packed >> 18) & 1;
        return r;
    }
    const Numbers r = calibrate(sep);
    g_numbers.store((1u << 31) | (uint32_t(r.ownRead) << 18) | (uint32_t(r.ownText) << 17) |
                        (uint32_t(r.ownLong) << 16) | sep,
                    std::memory_order_release);
    return r;
}

BSTR newText(const wchar_t* s, UINT n) {
    BSTR b = SysAllocStringLen(s, n);
    if (!b) raise(kOutOfMemory);
    return b;
}

BSTR textOfLong(LONG v, const Numbers& nums) {
    if (nums.ownLong) {
        wchar_t buf[16];
        return newText(buf, formatLong(v, buf));
    }
    BSTR b = nullptr;
    const HRESULT hr = VarBstrFromI4(v, kLocale, 0, &b);
    if (FAILED(hr)) raiseFailed(hr);
    return b;
}

BSTR textOfDouble(double x, const Numbers& nums) {
    if (nums.ownText) {
        wchar_t buf[48];
        if (const UINT n = formatDouble(x, nums.sep, buf)) return newText(buf, n);
    }
    BSTR b = nullptr;
    const HRESULT hr = VarBstrFromR8(x, kLocale, 0, &b);
    if (FAILED(hr)) raiseFailed(hr);
    return b;
}

// What the runtime's String conversion gives for v.
BSTR textOf(const VARIANT& value, const Numbers& nums) {
    VARIANT scratch;
    const VARIANT& v = dereferenced(value, scratch);
    switch (V_VT(&v)) {
    case VT_BSTR: return newText(V_BSTR(&v), textLength(V_BSTR(&v)));
    case VT_I4: return textOfLong(V_I4(&v), nums);
    case VT_R8: return textOfDouble(V_R8(&v), nums);
    case VT_NULL: raise(kInvalidUseOfNull);
    default: break;
    }
    Variant out;
    const HRESULT hr = VariantChangeTypeEx(&out, const_cast<VARIANT*>(&v), kLocale, 0, VT_BSTR);
    if (FAILED(hr)) raiseFailed(hr);
    BSTR b = V_BSTR(&out);
    V_VT(&out) = VT_EMPTY;
    return b;
}

// The number the runtime reads from a text compared with a number; false when
// it reads none. `s` ends in a null.
bool numberOfText(const wchar_t* s, UINT n, const Numbers& nums, double& out) {
    if (!s || !n || !*s) return false;
    if (nums.ownRead && readPlain(s, n, nums.sep, out)) return true;
    return SUCCEEDED(VarR8FromStr(const_cast<OLECHAR*>(s), kLocale, 0, &out));
}

// The number the runtime reads back from the text formatDigits writes.
double readBack(uint64_t q, int e, bool negative) {
    int fraction = 14 - e;
    while (fraction > 0 && q % 10 == 0) {
        q /= 10;
        --fraction;
    }
    const double v = scaleDown(static_cast<double>(q), fraction);
    return negative ? -v : v;
}

// x written as text and read back, both as the runtime does them; false when
// the text reads as no number.
bool throughText(double x, const Numbers& nums, double& out) {
    if (nums.ownText && nums.ownRead && x != 0) {
        uint64_t q;
        int e;
        if (significantDigits(x, q, e)) {
            out = readBack(q, e, x < 0);
            return true;
        }
    }
    Bstr text = Bstr::attach(textOfDouble(x, nums));
    return numberOfText(text.get(), text.length(), nums, out);
}

// -------------------------------------------------------------------- elements

size_t elementSize(VARTYPE vt) {
    switch (vt) {
    case VT_DECIMAL: return sizeof(DECIMAL);
    case VT_VARIANT: return sizeof(VARIANT);
    default: return scalarBytes(vt);
    }
}

// A typed element seen as a Variant, without owning what it refers to.
VARIANT viewOf(VARTYPE vt, const void* p) {
    if (vt == VT_VARIANT) return *static_cast<const VARIANT*>(p);
    VARIANT v;
    VariantInit(&v);
    if (vt == VT_DECIMAL) {
        std::memcpy(&V_DECIMAL(&v), p, sizeof(DECIMAL));
    } else {
        const size_t size = elementSize(vt);
        if (!size) raise(kTypeMismatch);  // records: no value a comparison could use
        std::memcpy(&V_UI1(&v), p, size);
    }
    V_VT(&v) = vt;
    return v;
}

// element = value, as the runtime assigns: a copy, converted to the element type.
void writeElement(VARTYPE vt, void* p, const VARIANT& value) {
    Variant copy;
    if (vt == VT_VARIANT) {
        const HRESULT hr = VariantCopy(&copy, const_cast<VARIANT*>(&value));
        if (FAILED(hr)) raiseFailed(hr);
        VariantClear(static_cast<VARIANT*>(p));
        copy.detachTo(static_cast<VARIANT*>(p));
        return;
    }
    VARIANT scratch;
    const VARIANT& v = dereferenced(value, scratch);
    HRESULT hr;
    if (V_VT(&v) == vt) {
        hr = VariantCopy(&copy, const_cast<VARIANT*>(&v));
    } else {
        if (V_VT(&v) == VT_NULL) raise(kInvalidUseOfNull);
        hr = VariantChangeTypeEx(&copy, const_cast<VARIANT*>(&v), kLocale, 0, vt);
    }
    if (FAILED(hr)) raiseFailed(hr);
    VARIANT old = viewOf(vt, p);
    VariantClear(&old);  // a string freed, an object released
    if (vt == VT_DECIMAL) {
        DECIMAL d = V_DECIMAL(&copy);
        d.wReserved = 0;
        std::memcpy(p, &d, sizeof d);
    } else {
        std::memcpy(p, &V_UI1(&copy), elementSize(vt));
    }
    V_VT(&copy) = VT_EMPTY;  // what it held now belongs to the element
}

// A copy of an element as a Variant.
void readElement(VARTYPE vt, const void* p, Variant& out) {
    VARIANT e = viewOf(vt, p);
    const HRESULT hr = VariantCopy(out.put(), &e);
    if (FAILED(hr)) raiseFailed(hr);
}

// The elements reachable by one index: all of a one-dimensional array, none of
// any other (a single index fails on those).
template <class T>
struct Elements {
    T* base;
    int64_t lb;
    uint64_t count;

    T& at(int64_t index) const {
        const uint64_t k = static_cast<uint64_t>(index - lb);
        if (k >= count) raiseIndex(index);
        return base[k];
    }
};

// Texts compare mostly on a key of their first eight code units, kept for each
// element in a parallel array that moves with the elements: the strings
// themselves, scattered over the heap, are read only when two keys agree. The
// key packs a unit per byte, zero-padded (a text that ends first is the
// smaller); a unit of 0xFF or more is packed as 0xFF and ends the key, so that
// keys that differ always order as their texts do.
inline uint64_t prefixOf(const OLECHAR* s, UINT n) {
    uint64_t k = 0;
    UINT i = 0;
    for (; i < 8 && i < n; ++i) {
        if (s[i] >= 0xFF) {  // 0xFF stands for every unit from there up; what follows is unknown
            k = (k << 8) | 0xFF;
            ++i;
            break;
        }
        k = (k << 8) | s[i];
    }
    return i < 8 ? k << (8 * (8 - i)) : k;
}
inline uint64_t prefixOf(BSTR s) { return prefixOf(s, textLength(s)); }

inline int comparePrefixed(uint64_t ka, BSTR a, uint64_t kb, BSTR b) {
    if (ka != kb) return ka < kb ? kLT : kGT;
    return compareTexts(a, b);
}

// --------------------------------------------------------------------- pivots

// The quicksort's pivot: an element's text, its key, and the number that text
// reads as. A string element's text is read only when needed: most partitions
// are small, and the string is elsewhere on the heap.
class Pivot {
public:
    explicit Pivot(const Numbers& nums) : nums_(nums) {}
    ~Pivot() {
        if (owned_) SysFreeString(owned_);
    }
    Pivot(const Pivot&) = delete;
    Pivot& operator=(const Pivot&) = delete;

    // Text of a string element: exchanges move that string but never free it.
    void borrow(BSTR s, uint64_t key) {
        text_ = s ? s : L"";
        bstr_ = s;
        key_ = key;
        measured_ = false;
    }
    void borrow(BSTR s) {
        borrow(s, 0);
        key_ = prefixOf(text_, length());
    }
    void own(BSTR s) {
        owned_ = s;
        borrow(s);
    }
    // Text written into buffer().
    wchar_t* buffer() { return buf_; }
    void buffered(UINT n) {
        buf_[n] = 0;
        text_ = buf_;
        length_ = n;
        key_ = prefixOf(text_, length_);
    }
    void knownNumber(double v) {
        state_ = kNumber;
        number_ = v;
    }
    void knownNoNumber() { state_ = kNoNumber; }

    const wchar_t* text() const { return text_; }
    UINT length() {
        if (!measured_) {
            length_ = textLength(bstr_);
            measured_ = true;
        }
        return length_;
    }
    uint64_t key() const { return key_; }
    // An element's text against the pivot's.
    int against(uint64_t key, BSTR s) {
        if (key != key_) return key < key_ ? kLT : kGT;
        // The scan from below meets the pivot's own element in every
        // partition: no need to fetch that string from the heap.
        if (s == bstr_ && s) return kEQ;
        return compareTexts(s, textLength(s), text_, length());
    }
    bool number(double& v) {
        if (state_ == kUnknown) state_ = numberOfText(text_, length(), nums_, number_) ? kNumber : kNoNumber;
        v = number_;
        return state_ == kNumber;
    }
    // The text as a String Variant, for the runtime's own comparison.
    const VARIANT& variant() {
        if (!bstr_) bstr_ = owned_ = newText(text_, length());
        VariantInit(&var_);
        V_VT(&var_) = VT_BSTR;
        V_BSTR(&var_) = bstr_;
        return var_;
    }

private:
    enum State { kUnknown, kNumber, kNoNumber };
    const Numbers& nums_;
    const wchar_t* text_ = L"";
    UINT length_ = 0;
    bool measured_ = true;
    BSTR bstr_ = nullptr;
    BSTR owned_ = nullptr;
    State state_ = kUnknown;
    double number_ = 0;
    uint64_t key_ = 0;
    wchar_t buf_[48];
    VARIANT var_;
};

// An element (a Variant) against the text pivot.
inline int againstPivot(const VARIANT& e, Pivot& p) {
    double n;
    switch (V_VT(&e)) {
    case VT_BSTR: return p.against(prefixOf(V_BSTR(&e)), V_BSTR(&e));
    case VT_I4: return p.number(n) ? compareNumbers(V_I4(&e), n) : kLT;
    case VT_R8: return p.number(n) ? compareNumbers(V_R8(&e), n) : kLT;
    default: return detail::compareOther(e, p.variant());
    }
}

// The pivot of a typed array of numbers: only the number its text reads as matters.
struct NumberPivot {
    explicit NumberPivot(const Numbers&) {}
    bool isNumber = false;
    double value = 0;
    int against(double e) const { return isNumber ? compareNumbers(e, value) : kLT; }
};

// ------------------------------------------------------------------------ ops
//
// What the sorts do to elements, per kind of array. Shell sort: take(i) holds
// element i (for moving kinds its slot is then a hole that shift() and put()
// refill), abandon() puts the array back as a copying sort leaves it when an
// error cuts an insertion short (the element being inserted lost, its last
// shifted neighbour doubled). Quicksort: exchange(i, j) is
// "t = text(a(i)): a(i) = a(j): a(j) = t", place(i, j, hi) is
// "t = text(a(j)): a(j) = a(i): a(i) = a(hi): a(hi) = t".

// Arrays of Variants: values move by their bits.
struct VariantOps {
    Elements<VARIANT> a;
    const Numbers& nums;
    uint64_t* keys;  // prefixes of the String elements, or null

    uint64_t& key(int64_t k) const { return keys[k - a.lb]; }

    struct Held {
        VARIANT v;
        uint64_t key;
    };
    Held take(int64_t i) const {
        const VARIANT& e = a.at(i);
        return {e, keys ? key(i) : 0};
    }
    int compareHeld(int64_t k, const Held& h) const {
        const VARIANT& e = a.at(k);
        if (keys && V_VT(&e) == VT_BSTR && V_VT(&h.v) == VT_BSTR)
            return comparePrefixed(key(k), V_BSTR(&e), h.key, V_BSTR(&h.v));
        return compare(e, h.v);
    }
    void shift(int64_t to, int64_t from) const {
        a.at(to) = a.at(from);
        if (keys) key(to) = key(from);
    }
    void put(int64_t j, const Held& h) const {
        a.at(j) = h.v;
        if (keys) key(j) = h.key;
    }
    void abandon(int64_t hole, int64_t i, int64_t h, Held& held) const noexcept {
        if (hole == i) return;  // the held value is still element i's own
        VARIANT& dst = a.base[hole - a.lb];
        VariantInit(&dst);  // its bits live on, one gap up
        if (FAILED(VariantCopy(&dst, &a.base[hole + h - a.lb]))) VariantInit(&dst);
        VariantClear(&held.v);
    }
    void compareSelf(int64_t i) const {
        const VARIANT& e = a.at(i);
        if (V_VT(&e) != VT_I4 && V_VT(&e) != VT_R8 && V_VT(&e) != VT_BSTR) compare(e, e);
    }

    using Pivot = sorting::Pivot;
    void pivotOf(int64_t k, Pivot& p) const {
        const VARIANT& e = a.at(k);
        switch (V_VT(&e)) {
        case VT_BSTR:
            if (keys) p.borrow(V_BSTR(&e), key(k)); else p.borrow(V_BSTR(&e));
            return;
        case VT_I4:
            if (nums.ownLong) {
                p.buffered(formatLong(V_I4(&e), p.buffer()));
                p.knownNumber(V_I4(&e));
                return;
            }
            break;
        case VT_R8: {
            const double x = V_R8(&e);
            uint64_t q;
            int d;
            if (nums.ownText && nums.ownRead && x != 0 && significantDigits(x, q, d)) {
                p.buffered(formatDigits(q, d, x < 0, nums.sep, p.buffer()));
                p.knownNumber(readBack(q, d, x < 0));
                return;
            }
            break;
        }
        default:
            break;
        }
        p.own(textOf(e, nums));
    }
    int againstPivot(int64_t k, Pivot& p) const {
        const VARIANT& e = a.at(k);
        if (V_VT(&e) == VT_BSTR && keys) return p.against(key(k), V_BSTR(&e));
        return sorting::againstPivot(e, p);
    }

    // The text of element k and its key, leaving the element with nothing of
    // its own (it is overwritten next).
    struct Text {
        BSTR s;
        uint64_t key;
    };
    Text takeText(int64_t k) const {
        VARIANT& e = a.at(k);
        BSTR s;
        switch (V_VT(&e)) {
        case VT_BSTR: return {V_BSTR(&e), keys ? key(k) : 0};
        case VT_I4: s = textOfLong(V_I4(&e), nums); break;
        case VT_R8: s = textOfDouble(V_R8(&e), nums); break;
        default:
            s = textOf(e, nums);
            VariantClear(&e);
            break;
        }
        return {s, keys ? prefixOf(s) : 0};  // a new string, still in cache
    }
    void store(int64_t k, const Text& t) const {
        VARIANT& e = a.at(k);
        V_VT(&e) = VT_BSTR;
        V_BSTR(&e) = t.s;
        if (keys) key(k) = t.key;
    }
    void exchange(int64_t i, int64_t j) const {
        a.at(j);
        const Text t = takeText(i);
        if (i != j) shift(i, j);
        store(j, t);
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        a.at(i);
        a.at(hi);
        const Text t = takeText(j);
        if (j != i) shift(j, i);
        if (i != hi) shift(i, hi);
        store(hi, t);
    }
};

// Typed arrays of Longs: a Long's text reads back as the same Long, so
// exchanges just move values.
struct LongOps {
    Elements<LONG> a;
    const Numbers& nums;

    using Held = LONG;
    LONG take(int64_t i) const { return a.at(i); }
    int compareHeld(int64_t k, LONG v) const { return compareLongs(a.at(k), v); }
    void shift(int64_t to, int64_t from) const { a.at(to) = a.at(from); }
    void put(int64_t j, LONG v) const { a.at(j) = v; }
    void abandon(int64_t, int64_t, int64_t, LONG) const noexcept {}
    void compareSelf(int64_t i) const { a.at(i); }

    using Pivot = NumberPivot;
    void pivotOf(int64_t k, Pivot& p) const {
        const LONG v = a.at(k);
        if (nums.ownLong) {
            p.isNumber = true;
            p.value = v;
        } else {
            Bstr t = Bstr::attach(textOfLong(v, nums));
            p.isNumber = numberOfText(t.get(), t.length(), nums, p.value);
        }
    }
    int againstPivot(int64_t k, const Pivot& p) const { return p.against(a.at(k)); }

    // The Long that text(v) is stored back as.
    LONG back(BSTR text) const {
        LONG r;
        const HRESULT hr = VarI4FromStr(text, kLocale, 0, &r);
        if (FAILED(hr)) raiseFailed(hr);
        return r;
    }
    void exchange(int64_t i, int64_t j) const {
        LONG& ei = a.at(i);
        LONG& ej = a.at(j);
        if (nums.ownLong) {
            const LONG t = ei;
            ei = ej;
            ej = t;
            return;
        }
        Bstr t = Bstr::attach(textOfLong(ei, nums));
        ei = ej;
        ej = back(t.get());
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        LONG& ej = a.at(j);
        LONG& ei = a.at(i);
        LONG& eh = a.at(hi);
        if (nums.ownLong) {
            const LONG t = ej;
            ej = ei;
            ei = eh;
            eh = t;
            return;
        }
        Bstr t = Bstr::attach(textOfLong(ej, nums));
        ej = ei;
        ei = eh;
        eh = back(t.get());
    }
};

// Typed arrays of Doubles: what passes through the text temporary comes back
// rounded to the 15 digits of its text.
struct DoubleOps {
    Elements<double> a;
    const Numbers& nums;

    using Held = double;
    double take(int64_t i) const { return a.at(i); }
    int compareHeld(int64_t k, double v) const { return compareNumbers(a.at(k), v); }
    void shift(int64_t to, int64_t from) const { a.at(to) = a.at(from); }
    void put(int64_t j, double v) const { a.at(j) = v; }
    void abandon(int64_t, int64_t, int64_t, double) const noexcept {}
    void compareSelf(int64_t i) const { a.at(i); }

    using Pivot = NumberPivot;
    void pivotOf(int64_t k, Pivot& p) const { p.isNumber = throughText(a.at(k), nums, p.value); }
    int againstPivot(int64_t k, const Pivot& p) const { return p.against(a.at(k)); }

    void exchange(int64_t i, int64_t j) const {
        double& ei = a.at(i);
        double& ej = a.at(j);
        double t;
        const bool number = throughText(ei, nums, t);
        ei = ej;
        if (!number) raise(kTypeMismatch);  // a text that is no number does not go into a Double
        ej = t;
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        double& ej = a.at(j);
        double& ei = a.at(i);
        double& eh = a.at(hi);
        double t;
        const bool number = throughText(ej, nums, t);
        ej = ei;
        ei = eh;
        if (!number) raise(kTypeMismatch);
        eh = t;
    }
};

// Typed arrays of Strings: a string's text is itself, so exchanges move pointers.
struct StringOps {
    Elements<BSTR> a;
    const Numbers& nums;
    uint64_t* keys;  // prefixes, or null

    uint64_t& key(int64_t k) const { return keys[k - a.lb]; }

    struct Held {
        BSTR s;
        uint64_t key;
    };
    Held take(int64_t i) const { return {a.at(i), keys ? key(i) : 0}; }
    int compareHeld(int64_t k, const Held& h) const {
        BSTR e = a.at(k);
        if (keys) return comparePrefixed(key(k), e, h.key, h.s);
        return compareTexts(e, h.s);
    }
    void shift(int64_t to, int64_t from) const {
        a.at(to) = a.at(from);
        if (keys) key(to) = key(from);
    }
    void put(int64_t j, const Held& h) const {
        a.at(j) = h.s;
        if (keys) key(j) = h.key;
    }
    void abandon(int64_t hole, int64_t i, int64_t h, Held& held) const noexcept {
        if (hole == i) return;
        BSTR up = a.base[hole + h - a.lb];
        a.base[hole - a.lb] = up ? SysAllocStringLen(up, textLength(up)) : nullptr;
        SysFreeString(held.s);
    }
    void compareSelf(int64_t i) const { a.at(i); }

    using Pivot = sorting::Pivot;
    void pivotOf(int64_t k, Pivot& p) const {
        if (keys) p.borrow(a.at(k), key(k)); else p.borrow(a.at(k));
    }
    int againstPivot(int64_t k, Pivot& p) const {
        BSTR e = a.at(k);
        return p.against(keys ? key(k) : prefixOf(e), e);
    }
    void exchange(int64_t i, int64_t j) const {
        a.at(i);
        a.at(j);
        if (i == j) return;
        const Held t = take(i);
        shift(i, j);
        put(j, t);
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        a.at(i);
        a.at(hi);
        const Held t = take(j);
        if (j != i) shift(j, i);
        if (i != hi) shift(i, hi);
        put(hi, t);
    }
};

// Any other typed array: each step copies and converts as the runtime assigns.
struct GenericOps {
    BYTE* base;
    int64_t lb;
    uint64_t count;
    VARTYPE vt;
    size_t size;
    const Numbers& nums;

    void* at(int64_t index) const {
        const uint64_t k = static_cast<uint64_t>(index - lb);
        if (k >= count) raiseIndex(index);
        return base + k * size;
    }
    VARIANT view(int64_t k) const { return viewOf(vt, at(k)); }

    using Held = Variant;
    Variant take(int64_t i) const {
        Variant v;
        readElement(vt, at(i), v);
        return v;
    }
    int compareHeld(int64_t k, const Variant& v) const { return compare(view(k), v); }
    void shift(int64_t to, int64_t from) const {
        const VARIANT e = view(from);
        writeElement(vt, at(to), e);
    }
    void put(int64_t j, const Variant& v) const { writeElement(vt, at(j), v); }
    void abandon(int64_t, int64_t, int64_t, const Variant&) const noexcept {}
    void compareSelf(int64_t i) const {
        const VARIANT e = view(i);
        compare(e, e);
    }

    using Pivot = sorting::Pivot;
    void pivotOf(int64_t k, Pivot& p) const { p.own(textOf(view(k), nums)); }
    int againstPivot(int64_t k, Pivot& p) const { return sorting::againstPivot(view(k), p); }

    void storeText(int64_t k, BSTR t) const {
        VARIANT v;
        VariantInit(&v);
        V_VT(&v) = VT_BSTR;
        V_BSTR(&v) = t;
        writeElement(vt, at(k), v);
    }
    void exchange(int64_t i, int64_t j) const {
        Bstr t = Bstr::attach(textOf(view(i), nums));
        shift(i, j);
        storeText(j, t.get());
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        Bstr t = Bstr::attach(textOf(view(j), nums));
        shift(j, i);
        shift(i, hi);
        storeText(hi, t.get());
    }
};

// ------------------------------------------------------------------ the sorts

// The Shell sort's gap runs up from lb (h = 3h + 1 until it passes ub) and back
// down (h = h / 3 rounded to nearest, never a half), ending when it is lb again.
inline int64_t firstGap(int64_t lb, int64_t ub) {
    int64_t h = lb;
    do {
        h = checkedLong(3 * h + 1);  // a negative lb only ever goes down: overflow
    } while (h <= ub);
    return h;
}

template <class Ops>
void shellPasses(const Ops& ops, int64_t lb, int64_t ub) {
    int64_t h = firstGap(lb, ub);
    do {
        h = (h + 1) / 3;
        const int64_t start = checkedLong(lb + h);
        if (h == 0) {
            // Each element compared with itself: nothing moves, but what cannot
            // be compared still fails here.
            for (int64_t i = start; i <= ub; ++i) ops.compareSelf(i);
            continue;
        }
        int64_t i = start, j = 0;
        bool holding = false;
        typename Ops::Held v{};
        try {
            for (; i <= ub; ++i) {
                v = ops.take(i);
                holding = true;
                j = i;
                while (ops.compareHeld(j - h, v) == kGT) {
                    ops.shift(j, j - h);
                    j -= h;
                    if (j < h) break;  // the guard is j against h, not j - h against lb
                }
                ops.put(j, v);
                holding = false;
            }
        } catch (...) {
            if (holding) ops.abandon(j, i, h, v);
            throw;
        }
    } while (h != lb);
}

// Shell sort of a zero-based array whose elements are all Longs, all Doubles
// or all Strings: no comparison can fail and no index can leave the array, so
// the passes run over a compact copy of what the comparisons need (with each
// element's starting index), and the elements are put in the resulting order
// afterwards, each moved once. Same comparisons, same result, far less memory
// traffic than moving 16- or 24-byte Variants through the gaps.
template <class Entry, class Compare>
struct ProxyOps {
    Entry* p;
    Compare cmp;

    using Held = Entry;
    Entry take(int64_t i) const { return p[i]; }
    int compareHeld(int64_t k, const Entry& v) const { return cmp(p[k], v); }
    void shift(int64_t to, int64_t from) const { p[to] = p[from]; }
    void put(int64_t j, const Entry& v) const { p[j] = v; }
    void abandon(int64_t, int64_t, int64_t, const Entry&) const noexcept {}
    void compareSelf(int64_t) const {}
};
template <class Entry, class Compare>
ProxyOps<Entry, Compare> proxyOps(Entry* p, Compare cmp) {
    return {p, cmp};
}

template <class T>
std::unique_ptr<T[]> spare(uint64_t n) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<size_t>(n)]);
}

// Position k takes the Variant that was at order[k]: each cycle followed once.
void applyOrder(VARIANT* v, uint32_t* order, uint64_t n) {
    for (uint64_t start = 0; start < n; ++start) {
        if (order[start] == start) continue;
        const VARIANT first = v[start];
        uint64_t k = start;
        for (;;) {
            const uint64_t from = order[k];
            order[k] = static_cast<uint32_t>(k);
            if (from == start) {
                v[k] = first;
                break;
            }
            v[k] = v[from];
            k = from;
        }
    }
}

template <class Entry, class Compare>
void shellOverProxies(Entry* p, uint64_t n, Compare cmp) {
    shellPasses(proxyOps(p, cmp), 0, static_cast<int64_t>(n) - 1);
}

struct NumberEntry {
    double value;
    uint32_t index;
};
struct KeyEntry {
    uint64_t key;
    uint32_t index;
};
struct TextEntry {
    uint64_t key;
    BSTR text;
};

// False when the array is not of that kind (or memory is short): then the
// sort runs directly on the elements.
bool shellByProxy(BYTE* data, VARTYPE vt, uint64_t n) {
    if (n < 2 || n > UINT32_MAX) return false;
    if (vt == VT_BSTR) {
        BSTR* s = reinterpret_cast<BSTR*>(data);
        auto p = spare<TextEntry>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = {prefixOf(s[k]), s[k]};
        shellOverProxies(p.get(), n, [](const TextEntry& a, const TextEntry& b) {
            return comparePrefixed(a.key, a.text, b.key, b.text);
        });
        for (uint64_t k = 0; k < n; ++k) s[k] = p[k].text;
        return true;
    }
    if (vt != VT_VARIANT) return false;
    VARIANT* v = reinterpret_cast<VARIANT*>(data);
    const VARTYPE kind = V_VT(&v[0]);
    if (kind != VT_I4 && kind != VT_R8 && kind != VT_BSTR) return false;
    for (uint64_t k = 1; k < n; ++k)
        if (V_VT(&v[k]) != kind) return false;
    auto order = spare<uint32_t>(n);
    if (!order) return false;
    if (kind == VT_I4) {
        // The value, made unsigned-ordered, over the index.
        auto p = spare<uint64_t>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = (uint64_t(uint32_t(V_I4(&v[k])) ^ 0x80000000u) << 32) | k;
        shellOverProxies(p.get(), n, [](uint64_t a, uint64_t b) {
            return (a >> 32) == (b >> 32) ? kEQ : (a >> 32) < (b >> 32) ? kLT : kGT;
        });
        for (uint64_t k = 0; k < n; ++k) order[k] = static_cast<uint32_t>(p[k]);
    } else if (kind == VT_R8) {
        auto p = spare<NumberEntry>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = {V_R8(&v[k]), static_cast<uint32_t>(k)};
        shellOverProxies(p.get(), n,
                         [](const NumberEntry& a, const NumberEntry& b) { return compareNumbers(a.value, b.value); });
        for (uint64_t k = 0; k < n; ++k) order[k] = p[k].index;
    } else {
        auto p = spare<KeyEntry>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = {prefixOf(V_BSTR(&v[k])), static_cast<uint32_t>(k)};
        shellOverProxies(p.get(), n, [v](const KeyEntry& a, const KeyEntry& b) {
            if (a.key != b.key) return a.key < b.key ? kLT : kGT;
            return compareTexts(V_BSTR(&v[a.index]), V_BSTR(&v[b.index]));
        });
        for (uint64_t k = 0; k < n; ++k) order[k] = p[k].index;
    }
    applyOrder(v, order.get(), n);
    return true;
}

// Descending, converted to a Boolean where the sort first tests it.
class Direction {
public:
    explicit Direction(const VARIANT* arg) : arg_(arg) {}
    bool descending() {
        if (!known_) {
            value_ = convert();
            known_ = true;
        }
        return value_;
    }

private:
    bool convert() const {
        if (!arg_) return false;
        VARIANT scratch;
        const VARIANT& v = dereferenced(*arg_, scratch);
        switch (V_VT(&v)) {
        case VT_ERROR:
            if (V_ERROR(&v) == DISP_E_PARAMNOTFOUND) return false;  // missing
            raise(kTypeMismatch);
        case VT_NULL: raise(kInvalidUseOfNull);
        case VT_BOOL: return V_BOOL(&v) != 0;
        default: break;
        }
        Variant b;
        const HRESULT hr = VariantChangeTypeEx(&b, const_cast<VARIANT*>(&v), kLocale, 0, VT_BOOL);
        if (FAILED(hr)) raiseFailed(hr);
        return V_BOOL(&b) != 0;
    }

    const VARIANT* arg_;
    bool known_ = false;
    bool value_ = false;
};

// The quicksort's ranges: `partition(lo, hi)` partitions one and returns
// where its pivot went; the larger side waits on a stack of 33 entries (entry
// 0 holds the whole range, pushes go to 1..32) while the smaller goes first.
template <class Partition>
void quickRanges(int64_t lo, int64_t hi, Partition&& partition) {
    int64_t pendingLo[33], pendingHi[33];
    int sp = 0;
    pendingLo[0] = lo;
    pendingHi[0] = hi;
    for (;;) {
        if (hi > lo) {
            const int64_t i = partition(lo, hi);
            if (++sp > 32) raise(kSubscriptOutOfRange);
            if (i - lo > hi - i) {
                pendingLo[sp] = lo;
                pendingHi[sp] = checkedLong(i - 1);
                lo = checkedLong(i + 1);
            } else {
                pendingLo[sp] = checkedLong(i + 1);
                pendingHi[sp] = hi;
                hi = checkedLong(i - 1);
            }
        } else {
            if (sp == 0) return;
            lo = pendingLo[sp];
            hi = pendingHi[sp];
            --sp;
        }
    }
}

template <class Ops>
void quickPasses(const Ops& ops, int64_t lo, int64_t hi, Direction& direction) {
    quickRanges(lo, hi, [&](int64_t lo, int64_t hi) {
        typename Ops::Pivot pivot(ops.nums);
        ops.pivotOf(hi, pivot);
        const bool descending = direction.descending();
        int64_t i = checkedLong(lo - 1), j = hi;
        // Both sides of "j = lo Or ..." are evaluated: no short circuit.
        if (!descending) {
            do {
                do ++i; while (!atLeast(ops.againstPivot(i, pivot)));
                do --j; while (!(atMost(ops.againstPivot(j, pivot)) | (j == lo)));
                ops.exchange(i, j);
            } while (j > i);
        } else {
            do {
                do ++i; while (!atMost(ops.againstPivot(i, pivot)));
                do --j; while (!(atLeast(ops.againstPivot(j, pivot)) | (j == lo)));
                ops.exchange(i, j);
            } while (j > i);
        }
        ops.place(i, j, hi);
        return i;
    });
}

// --------------------------------------------------------------- the arrays

// The caller's array, however the Variant holds it; null when it holds none.
SAFEARRAY* arrayOf(VARIANT* v, VARTYPE& vt) {
    for (int depth = 0; v && V_VT(v) == (VT_BYREF | VT_VARIANT) && depth < 16; ++depth) v = V_VARIANTREF(v);
    if (!v || !(V_VT(v) & VT_ARRAY)) return nullptr;
    vt = V_VT(v) & VT_TYPEMASK;
    SAFEARRAY* psa = (V_VT(v) & VT_BYREF) ? (V_ARRAYREF(v) ? *V_ARRAYREF(v) : nullptr) : V_ARRAY(v);
    // An array never dimensioned has no bounds to read.
    if (!psa || psa->cDims == 0) raise(kSubscriptOutOfRange);
    if (vt != VT_RECORD && elementSize(vt) != psa->cbElements) raise(kTypeMismatch);
    return psa;
}

struct Bounds {
    int64_t lb, ub;
    uint64_t count;  // elements one index reaches: 0 unless the array is one-dimensional
};

Bounds firstDimension(const SAFEARRAY* psa) {
    const SAFEARRAYBOUND& d = psa->rgsabound[psa->cDims - 1];  // stored last to first
    const int64_t lb = d.lLbound;
    return {lb, checkedLong(lb + static_cast<int64_t>(d.cElements) - 1), psa->cDims == 1 ? d.cElements : 0u};
}

class Locked {
public:
    explicit Locked(SAFEARRAY* psa) : data_(psa) {
        if (!data_.locked()) raise(kArrayLocked);
    }
    BYTE* data() const { return static_cast<BYTE*>(data_.data()); }

private:
    ArrayData data_;
};

// Prefixes of the String elements, when there are any to compare: null when
// memory is short (texts are then compared from the start).
std::unique_ptr<uint64_t[]> prefixes(const VARIANT* v, uint64_t count, bool always) {
    bool any = always;
    for (uint64_t k = 0; k < count && !any; ++k) any = V_VT(&v[k]) == VT_BSTR;
    if (!any || !count) return nullptr;
    std::unique_ptr<uint64_t[]> keys(new (std::nothrow) uint64_t[count]);
    if (keys)
        for (uint64_t k = 0; k < count; ++k) keys[k] = V_VT(&v[k]) == VT_BSTR ? prefixOf(V_BSTR(&v[k])) : 0;
    return keys;
}
std::unique_ptr<uint64_t[]> prefixes(const BSTR* s, uint64_t count) {
    if (!count) return nullptr;
    std::unique_ptr<uint64_t[]> keys(new (std::nothrow) uint64_t[count]);
    if (keys)
        for (uint64_t k = 0; k < count; ++k) keys[k] = prefixOf(s[k]);
    return keys;
}

// Runs `run` with the ops for the array's element type. `quick`: the
// quicksort, which turns elements into Strings as it goes.
template <class Run>
void withOps(SAFEARRAY* psa, VARTYPE vt, const Bounds& b, const Numbers& nums, bool quick, Run&& run) {
    Locked lock(psa);
    BYTE* data = lock.data();
    switch (vt) {
    case VT_VARIANT: {
        auto* v = reinterpret_cast<VARIANT*>(data);
        const auto keys = prefixes(v, b.count, quick);
        run(VariantOps{{v, b.lb, b.count}, nums, keys.get()});
        break;
    }
    case VT_I4: run(LongOps{{reinterpret_cast<LONG*>(data), b.lb, b.count}, nums}); break;
    case VT_R8: run(DoubleOps{{reinterpret_cast<double*>(data), b.lb, b.count}, nums}); break;
    case VT_BSTR: {
        auto* s = reinterpret_cast<BSTR*>(data);
        const auto keys = prefixes(s, b.count);
        run(StringOps{{s, b.lb, b.count}, nums, keys.get()});
        break;
    }
    default: run(GenericOps{data, b.lb, b.count, vt, psa->cbElements, nums}); break;
    }
}

// ------------------------------------------------- numbers sorted in place
//
// An array of Variants holding only Longs, or only Doubles whose text is ours
// to write, is the common case and the costly one: the quicksort turns nearly
// every element into a String as it moves. So the passes run in the array's
// own memory, each element's place holding its number or, once the element
// has gone through the text temporary, what its text is written from and a
// key that orders as that text does; the Strings are made in one last pass.
// The comparisons and exchanges are those quickPasses makes, with no heap
// traffic inside the loops and no string read back from the heap.

// A number's text packed four bits a character, the first character highest:
// 0 past the end, then '-', the separator and the digits ranked as their code
// units rank, so keys order as the texts do. Sixteen characters fit: all of a
// Long's text, most of a Double's.
class TextPacking {
public:
    explicit TextPacking(wchar_t separator) {
        if (separator < L'-') rankSep_ = 1, rankMinus_ = 2, rankZero_ = 3;
        else if (separator < L'0') rankMinus_ = 1, rankSep_ = 2, rankZero_ = 3;
        else rankMinus_ = 1, rankZero_ = 2, rankSep_ = 12;
    }
    // The key of a Long's text.
    uint64_t pack(LONG v) const {
        const uint32_t u = v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
        const uint64_t digits = (bcd8(u / 100000000) << 32) | bcd8(u % 100000000);
        int n = 16;  // digits, leading zeros not counted
        while (n > 1 && !(digits >> (4 * (n - 1)))) --n;
        uint64_t k = (digits + rankZero_ * (kOnes >> (4 * (16 - n)))) << (4 * (16 - n));
        if (v < 0) k = (static_cast<uint64_t>(rankMinus_) << 60) | (k >> 4);
        return k;
    }

    // The key of the text formatDigits writes, made from the digits' BCD
    // rather than the characters: this runs for nearly every element.
    uint64_t pack(uint64_t q, int e, bool negative) const {
        if (q == 0) return static_cast<uint64_t>(rankZero_) << 60;  // "0"
        const uint64_t bcd = bcd15(q);
        int zeros = 0;  // trailing zero digits
        while (!((bcd >> (4 * zeros)) & 0xF)) ++zeros;
        // The 15 digits as ranks, the first in the top nibble.
        uint64_t k = (bcd + rankZero_ * (kOnes >> 4)) << 4;
        const int whole = e >= 0 ? e + 1 : 0;     // digits before the separator
        const bool fraction = 14 - zeros >= whole;  // a nonzero digit after it
        const int kept = fraction ? 15 - zeros : whole;
        k &= ~0ULL << (64 - 4 * kept);
        if (e >= 0) {
            if (fraction) {  // the separator after the whole digits
                const uint64_t high = k & (~0ULL << (64 - 4 * whole));
                k = high | (static_cast<uint64_t>(rankSep_) << (60 - 4 * whole)) | ((k & ~high) >> 4);
            }
        } else {  // "0", the separator, -e - 1 zeros, then the digits
            for (int z = e + 1; z < 0; ++z) k = (static_cast<uint64_t>(rankZero_) << 60) | (k >> 4);
            k = (static_cast<uint64_t>(rankZero_) << 60) | (static_cast<uint64_t>(rankSep_) << 56) | (k >> 8);
        }
        if (negative) k = (static_cast<uint64_t>(rankMinus_) << 60) | (k >> 4);
        return k;
    }

private:
    static constexpr uint64_t kOnes = 0x1111111111111111ULL;

    unsigned rankMinus_, rankSep_, rankZero_;
};

// The key of an element that is still a number is at or above kNumber: no
// text packs to one (no character has rank 15). Below that mark it may carry
// what the number's text will be written from.
constexpr uint64_t kNumber = 0xFULL << 60;
inline bool isNumber(uint64_t key) { return key >= kNumber; }

// Longs: the number is all its text needs.
struct LongTexts {
    using Value = LONG;
    // The cell of an element; false when it is not a number of this kind, ours to write.
    static bool take(const VARIANT& v, const Numbers& nums, uint64_t& key, Value& x) {
        if (V_VT(&v) != VT_I4 || !nums.ownLong) return false;
        key = kNumber;
        x = V_I4(&v);
        return true;
    }
    static void number(VARIANT& v, Value x) {
        V_VT(&v) = VT_I4;
        V_I4(&v) = x;
    }
    static double numberOf(Value x) { return x; }
    static double numberOr0(Value x, bool number) { return number ? x : 0; }
    // A number's cell turned to text: returns its key (a Long's value stays).
    static uint64_t toText(uint64_t, Value& x, const TextPacking& packing) { return packing.pack(x); }
    // The text of a text cell.
    static UINT write(Value x, const Numbers&, wchar_t* out) { return formatLong(x, out); }
    static double readBackNumber(uint64_t, Value x) { return x; }
    static double readBackText(Value x) { return x; }
    static void textAsNumber(VARIANT& v, Value x) { number(v, x); }
    static bool sameText(Value a, Value b) { return a == b; }
};

// Doubles: the digits of a number's text are worked out once, when the cell
// is made, and kept under the mark of its key; once text, the cell keeps them
// in place of the Double, which no longer matters (the text reads back as
// another number).
struct DoubleTexts {
    union Value {
        double x;         // while a number
        uint64_t digits;  // as text: q in bits 0-49, e + 4 in bits 50-54, the sign in bit 55
    };
    static bool take(const VARIANT& v, const Numbers& nums, uint64_t& key, Value& x) {
        if (V_VT(&v) != VT_R8 || !nums.ownText || !nums.ownRead) return false;
        const double d = V_R8(&v);
        uint64_t q = 0;
        int e = 0;
        if (d != 0 ? !significantDigits(d, q, e) : std::signbit(d)) return false;  // "0" is q = 0, e = 0
        key = kNumber | q | (static_cast<uint64_t>(e + 4) << 50) | (static_cast<uint64_t>(d < 0) << 55);
        x.x = d;
        return true;
    }
    static void number(VARIANT& v, Value x) {
        V_VT(&v) = VT_R8;
        V_R8(&v) = x.x;
    }
    static double numberOf(Value x) { return x.x; }
    // Without a branch, and without reading a text cell's digits as a Double
    // (a denormal, slow where the x87 loads it).
    static double numberOr0(Value x, bool number) {
        Value v;
        v.digits = number ? x.digits : 0;
        return v.x;
    }
    static uint64_t toText(uint64_t key, Value& x, const TextPacking& packing) {
        x.digits = key & ~kNumber;
        return packing.pack(q(x), e(x), negative(x));
    }
    static uint64_t q(Value x) { return x.digits & ((1ULL << 50) - 1); }
    static int e(Value x) { return static_cast<int>((x.digits >> 50) & 31) - 4; }
    static bool negative(Value x) { return (x.digits >> 55) & 1; }
    static UINT write(Value x, const Numbers& nums, wchar_t* out) {
        return formatDigits(q(x), e(x), negative(x), nums.sep, out);
    }
    static double readBackNumber(uint64_t key, Value) {
        Value t;
        t.digits = key & ~kNumber;
        return readBackText(t);
    }
    static double readBackText(Value x) { return readBack(q(x), e(x), negative(x)); }
    static void textAsNumber(VARIANT& v, Value x) {
        V_VT(&v) = VT_R8;
        V_R8(&v) = readBackText(x);
    }
    static bool sameText(Value a, Value b) { return a.digits == b.digits; }
};

template <class Texts>
class NumberCells {
    using Value = typename Texts::Value;
    struct Contents {
        uint64_t key;  // at or above kNumber while a number, else the key of its text
        Value value;
    };
    union Cell {
        Contents c;
        VARIANT v;
    };
    static_assert(sizeof(Cell) == sizeof(VARIANT), "a cell is a Variant's place");

public:
    NumberCells(VARIANT* v, int64_t lb, uint64_t count, const Numbers& nums)
        : cells_(reinterpret_cast<Cell*>(v) - lb), lb_(lb), ub_(lb + static_cast<int64_t>(count) - 1), nums_(nums),
          packing_(nums.sep) {}

    // True, with every element a cell, when they are all numbers of the kind,
    // ours to write; false, changing nothing, when they are not.
    bool take() {
        for (int64_t k = lb_; k <= ub_; ++k) {
            uint64_t key;
            Value x;
            if (!Texts::take(cells_[k].v, nums_, key, x)) {
                while (--k >= lb_) Texts::number(cells_[k].v, cells_[k].c.value);
                return false;
            }
            cells_[k].c = Contents{key, x};
        }
        return true;
    }
    // Each element back from its cell: the number, or a String of its text.
    // When memory runs out the rest hold the numbers their texts read as, and
    // false is returned.
    bool give() noexcept {
        bool complete = true;
        for (int64_t k = lb_; k <= ub_; ++k) {
            const Contents c = cells_[k].c;
            VARIANT& v = cells_[k].v;
            VariantInit(&v);
            if (isNumber(c.key)) {
                Texts::number(v, c.value);
                continue;
            }
            wchar_t buf[48];
            BSTR text = complete ? SysAllocStringLen(buf, Texts::write(c.value, nums_, buf)) : nullptr;
            if (text) {
                V_VT(&v) = VT_BSTR;
                V_BSTR(&v) = text;
            } else {
                complete = false;
                Texts::textAsNumber(v, c.value);
            }
        }
        return complete;
    }

    // quickPasses over the cells.
    void sort(int64_t lo, int64_t hi, Direction& direction) {
        quickRanges(lo, hi, [&](int64_t lo, int64_t hi) {
            at(hi);  // the pivot is read before Descending is first converted
            return direction.descending() ? partition<true>(lo, hi) : partition<false>(lo, hi);
        });
    }

private:
    // The pivot's cell, turned to text when a text is first compared with it,
    // and the number its text reads as, worked out when first needed.
    struct Pivot {
        Contents c;
        bool numberKnown;
        double number;
    };

    Contents& at(int64_t index) const {
        if (index < lb_ || index > ub_) raiseIndex(index);
        return cells_[index].c;
    }
    void toText(Contents& c) const {
        if (isNumber(c.key)) c.key = Texts::toText(c.key, c.value, packing_);
    }

    // An element against the pivot: -1, 0 or 1.
    int order(const Contents& e, Pivot& p) const {
        if (isNumber(e.key)) {
            if (p.numberKnown) {
                const double x = Texts::numberOf(e.value);
                return x < p.number ? -1 : x > p.number ? 1 : 0;
            }
        } else if (e.key != p.c.key && !isNumber(p.c.key)) {
            return e.key < p.c.key ? -1 : 1;
        }
        return settle(e, p);
    }
    // The rest of order(), kept out of the scanning loops.
    __attribute__((noinline)) int settle(const Contents& e, Pivot& p) const {
        if (isNumber(e.key)) {
            knowNumber(p);
            const double x = Texts::numberOf(e.value);
            return x < p.number ? -1 : x > p.number ? 1 : 0;
        }
        toText(p.c);
        if (e.key != p.c.key) return e.key < p.c.key ? -1 : 1;
        // Texts that agree in their first sixteen characters.
        if ((e.key & 0xF) == 0 || Texts::sameText(e.value, p.c.value)) return 0;
        wchar_t a[48], b[48];
        const int c = compareTexts(a, Texts::write(e.value, nums_, a), b, Texts::write(p.c.value, nums_, b));
        return c == kLT ? -1 : c == kGT ? 1 : 0;
    }
    void knowNumber(Pivot& p) const {
        if (p.numberKnown) return;
        p.number = isNumber(p.c.key) ? Texts::readBackNumber(p.c.key, p.c.value) : Texts::readBackText(p.c.value);
        p.numberKnown = true;
    }

    void exchange(int64_t i, int64_t j) {
        Contents t = cells_[i].c;
        toText(t);
        cells_[i].c = cells_[j].c;
        cells_[j].c = t;
    }

    // One partition of lo..hi, as quickPasses makes it; returns where the pivot went.
    template <bool Descending>
    int64_t partition(int64_t lo, int64_t hi) {
        Pivot p{cells_[hi].c, false, 0};  // hi checked by sort()
        constexpr int passed = Descending ? 1 : -1;  // what the scan from below passes over
        int64_t i = checkedLong(lo - 1), j = hi;
        if (hi - lo > kFewCells) exchangeInBlocks<Descending>(p, i, j);
        do {
            do ++i; while (order(at(i), p) == passed);
            do --j; while (order(cells_[j].c, p) == -passed && j != lo);  // j stays within lo..hi
            exchange(i, j);
        } while (j > i);
        Contents t = cells_[j].c;
        toText(t);
        cells_[j].c = cells_[i].c;
        cells_[i].c = cells_[hi].c;
        cells_[hi].c = t;
        return i;
    }

    // The scans' exchanges up to where they meet, made without a branch per
    // comparison (a mispredicted branch costs more than the comparison): a
    // block of untouched cells at each end is classified at once, the cells
    // where each scan would stop noted in order, and the k-th stop from below
    // exchanged with the k-th from above, just as the scans pair them. Until
    // the scans meet they see only cells no exchange has touched, so the
    // pairs are the same. i and j are left at the last pair exchanged; the
    // scans go on from there, across the meeting point, one cell at a time.
    static constexpr int kBlock = 64;
    static constexpr int kFewCells = 16;  // partitions this small are scanned a cell at a time

    template <bool Descending>
    void exchangeInBlocks(Pivot& p, int64_t& i, int64_t& j) {
        knowNumber(p);
        toText(p.c);
        const double pivotNumber = p.number;
        const uint64_t key = p.c.key;
        constexpr int passed = Descending ? 1 : -1;
        // Whether each scan stops at cell k, 1 or 0; false when a text agrees
        // with the pivot's in the first sixteen characters (order() decides).
        auto classify = [&](int64_t k, bool fromBelow, unsigned& stop) {
            const Contents& e = cells_[k].c;
            const bool number = isNumber(e.key);
            const double x = Texts::numberOr0(e.value, number);
            const bool less = number ? x < pivotNumber : e.key < key;
            const bool more = number ? x > pivotNumber : e.key > key;
            stop = fromBelow != Descending ? !less : !more;
            return number | (e.key != key) | ((e.key & 0xF) == 0);
        };
        // Notes the stops among `size` cells from `start`, one way, in scan order.
        auto note = [&](int64_t start, int64_t size, int step, bool fromBelow, uint8_t* at) {
            int found = 0;
            bool plain = true;
            for (int k = 0; k < size; ++k) {
                unsigned stop;
                plain &= classify(start + step * k, fromBelow, stop);
                at[found] = static_cast<uint8_t>(k);
                found += stop;
            }
            if (plain) return found;
            found = 0;
            const int goesOn = fromBelow ? passed : -passed;
            for (int k = 0; k < size; ++k)
                if (order(cells_[start + step * k].c, p) != goesOn) at[found++] = static_cast<uint8_t>(k);
            return found;
        };
        uint8_t below[kBlock], above[kBlock];  // offsets of the stops from each block's start
        int inBelow = 0, inAbove = 0, firstBelow = 0, firstAbove = 0;
        int64_t belowStart = 0, aboveStart = 0;
        int64_t from = i + 1, to = j - 1;  // the cells not yet classified
        for (;;) {
            if (inBelow == 0) {
                const int64_t left = to - from + 1;
                if (left <= 0) break;
                // Both ends empty: each takes at most half of what is left.
                const int64_t size = std::min<int64_t>(kBlock, inAbove ? left : (left + 1) / 2);
                belowStart = from;
                firstBelow = 0;
                inBelow = note(from, size, 1, true, below);
                from += size;
            }
            if (inAbove == 0) {
                const int64_t left = to - from + 1;
                if (left <= 0) break;
                const int64_t size = std::min<int64_t>(kBlock, left);
                aboveStart = to;
                firstAbove = 0;
                inAbove = note(to, size, -1, false, above);
                to -= size;
            }
            const int pairs = inBelow < inAbove ? inBelow : inAbove;
            for (int k = 0; k < pairs; ++k)
                exchange(belowStart + below[firstBelow + k], aboveStart - above[firstAbove + k]);
            if (pairs) {
                i = belowStart + below[firstBelow + pairs - 1];
                j = aboveStart - above[firstAbove + pairs - 1];
            }
            inBelow -= pairs;
            inAbove -= pairs;
            firstBelow += pairs;
            firstAbove += pairs;
        }
    }

    Cell* cells_;  // indexed by the array's own indexes
    int64_t lb_, ub_;
    const Numbers& nums_;
    TextPacking packing_;
};

template <class Texts>
bool quickSortCells(VARIANT* v, const Bounds& b, int64_t hi, Direction& direction, const Numbers& nums) {
    NumberCells<Texts> cells(v, b.lb, b.count, nums);
    if (!cells.take()) return false;
    try {
        cells.sort(b.lb, hi, direction);
    } catch (...) {
        cells.give();  // the array as the error left it
        throw;
    }
    if (!cells.give()) raise(kOutOfMemory);
    return true;
}

// False, changing nothing, when the array is not of that kind.
bool quickSortNumbers(SAFEARRAY* psa, VARTYPE vt, const Bounds& b, int64_t hi, Direction& direction,
                      const Numbers& nums) {
    if (vt != VT_VARIANT || b.count < 2 || hi <= b.lb) return false;
    Locked lock(psa);
    VARIANT* v = reinterpret_cast<VARIANT*>(lock.data());
    switch (V_VT(v)) {
    case VT_I4: return quickSortCells<LongTexts>(v, b, hi, direction, nums);
    case VT_R8: return quickSortCells<DoubleTexts>(v, b, hi, direction, nums);
    default: return false;
    }
}

bool missing(const VARIANT* v) {
    if (!v) return true;
    VARIANT scratch;
    const VARIANT& d = dereferenced(*v, scratch);
    return V_VT(&d) == VT_ERROR && V_ERROR(&d) == DISP_E_PARAMNOTFOUND;
}

// numEls as a Long.
int64_t lastIndex(const VARIANT& arg) {
    VARIANT scratch;
    const VARIANT& v = dereferenced(arg, scratch);
    switch (V_VT(&v)) {
    case VT_I4: return V_I4(&v);
    case VT_NULL: raise(kInvalidUseOfNull);
    case VT_ERROR: raise(kTypeMismatch);
    default: break;
    }
    Variant l;
    const HRESULT hr = VariantChangeTypeEx(&l, const_cast<VARIANT*>(&v), kLocale, 0, VT_I4);
    if (FAILED(hr)) raiseFailed(hr);
    return V_I4(&l);
}

}  // namespace

// ------------------------------------------------------------------ compare

namespace detail {

bool numberTextKey(const VARIANT& number, uint64_t* key) {
    const Numbers nums = numbers();
    const TextPacking packing(nums.sep);
    uint64_t mark;
    LongTexts::Value l;
    DoubleTexts::Value d;
    if (LongTexts::take(number, nums, mark, l)) *key = LongTexts::toText(mark, l, packing);
    else if (DoubleTexts::take(number, nums, mark, d)) *key = DoubleTexts::toText(mark, d, packing);
    else return false;
    return true;
}

int compareOther(const VARIANT& left, const VARIANT& right) {
    VARIANT sa, sb;
    const VARIANT& a = dereferenced(left, sa);
    const VARIANT& b = dereferenced(right, sb);
    const VARTYPE ta = V_VT(&a), tb = V_VT(&b);
    if ((ta == VT_I4 || ta == VT_R8) && (tb == VT_I4 || tb == VT_R8))
        return compareNumbers(ta == VT_I4 ? V_I4(&a) : V_R8(&a), tb == VT_I4 ? V_I4(&b) : V_R8(&b));
    if (ta == VT_BSTR && tb == VT_BSTR) return compareTexts(V_BSTR(&a), V_BSTR(&b));
    // A text against anything else: the runtime reads the text as a number when
    // the other side is marked as a typed value (VT_RESERVED), else the text
    // would simply be the greater.
    VARIANT l = a, r = b;
    if (ta == VT_BSTR) V_VT(&r) |= VT_RESERVED;
    else if (tb == VT_BSTR) V_VT(&l) |= VT_RESERVED;
    const HRESULT hr = VarCmp(&l, &r, kLocale, 0);
    if (FAILED(hr)) raise(kTypeMismatch);
    return hr;
}

}  // namespace detail

BSTR toText(const VARIANT& value) { return textOf(value, numbers()); }

bool readNumber(BSTR text, double* value) {
    return numberOfText(text, textLength(text), numbers(), *required(value));
}

// -------------------------------------------------------------------- sorts

bool shellSort(VARIANT* array) {
    VARTYPE vt;
    SAFEARRAY* psa = arrayOf(array, vt);
    if (!psa) return false;
    const Bounds b = firstDimension(psa);
    if (b.lb == 0) {
        Locked lock(psa);
        if (shellByProxy(lock.data(), vt, b.count)) return true;
    }
    withOps(psa, vt, b, Numbers{}, false, [&](const auto& ops) { shellPasses(ops, b.lb, b.ub); });
    return true;
}

bool shellSortByColumn(VARIANT* array, long column) {
    VARTYPE vt;
    SAFEARRAY* psa = arrayOf(array, vt);
    if (!psa || psa->cDims != 2) return false;
    const SAFEARRAYBOUND& rows = psa->rgsabound[1];  // dimension 1 (stored last to first)
    const SAFEARRAYBOUND& cols = psa->rgsabound[0];  // dimension 2
    const int64_t lb = rows.lLbound, ub = checkedLong(lb + static_cast<int64_t>(rows.cElements) - 1);
    const int64_t lc = cols.lLbound, nc = cols.cElements;
    if (column < lc || column >= lc + nc) return false;

    Locked lock(psa);
    BYTE* data = lock.data();
    const size_t size = psa->cbElements;
    const uint64_t nr = rows.cElements;
    // Element (r, c): the first index runs fastest.
    auto cell = [&](int64_t r, int64_t c) -> void* {
        const uint64_t k = static_cast<uint64_t>(r - lb);
        if (k >= nr) raiseIndex(r);
        return data + (k + static_cast<uint64_t>(c - lc) * nr) * size;
    };

    std::vector<Variant> saved(static_cast<size_t>(nc));
    int64_t h = firstGap(lb, ub);
    do {
        h = (h + 1) / 3;
        const int64_t start = checkedLong(lb + h);
        for (int64_t i = start; i <= ub; ++i) {
            if (h == 0) {  // every row in place: only the comparison can fail
                const VARIANT e = viewOf(vt, cell(i, column));
                compare(e, e);
                continue;
            }
            for (int64_t c = 0; c < nc; ++c) readElement(vt, cell(i, lc + c), saved[static_cast<size_t>(c)]);
            const Variant& key = saved[static_cast<size_t>(column - lc)];
            int64_t j = i;
            while (compare(viewOf(vt, cell(j - h, column)), key) == kGT) {
                for (int64_t c = 0; c < nc; ++c) {
                    const VARIANT e = viewOf(vt, cell(j - h, lc + c));
                    writeElement(vt, cell(j, lc + c), e);
                }
                j -= h;
                if (j < h) break;
            }
            for (int64_t c = 0; c < nc; ++c) writeElement(vt, cell(j, lc + c), saved[static_cast<size_t>(c)]);
        }
    } while (h != lb);
    return true;
}

bool quickSort(VARIANT* array, const VARIANT* numEls, const VARIANT* descending) {
    VARTYPE vt;
    SAFEARRAY* psa = arrayOf(array, vt);
    if (!psa) return false;
    const Bounds b = firstDimension(psa);
    const int64_t hi = missing(numEls) ? b.ub : lastIndex(*numEls);
    Direction direction(missing(descending) ? nullptr : descending);
    const Numbers nums = numbers();
    if (quickSortNumbers(psa, vt, b, hi, direction, nums)) return true;
    withOps(psa, vt, b, nums, true, [&](const auto& ops) { quickPasses(ops, b.lb, hi, direction); });
    return true;
}

}  // namespace sorting
}  // namespace tova
