// Longs and Doubles as text, and text as numbers, as the automation runtime
// converts them; checked against the runtime before use.

#include "number_text.h"

#include <atomic>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace tova {
namespace sorting {
namespace {

const uint64_t kPow10[20] = {1ULL, 10ULL, 100ULL, 1000ULL, 10000ULL, 100000ULL, 1000000ULL, 10000000ULL,
                             100000000ULL, 1000000000ULL, 10000000000ULL, 100000000000ULL,
                             1000000000000ULL, 10000000000000ULL, 100000000000000ULL,
                             1000000000000000ULL, 10000000000000000ULL, 100000000000000000ULL,
                             1000000000000000000ULL, 10000000000000000000ULL};

// "00".."99", for writing two digits at a time.
const char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

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

// The plain form readPlain reads, as its digits (an integer), how many of
// them follow the separator, and the sign; false for any other form.
inline bool plainDigits(const wchar_t* s, UINT n, wchar_t sep, uint64_t& m, int& fraction, bool& negative) {
    UINT k = 0;
    negative = n && s[0] == L'-';
    if (negative) k = 1;
    m = 0;
    fraction = 0;
    int significant = 0;
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
    return digits && !(inFraction && (fraction == 0 || s[n - 1] == L'0'));
}

inline bool same(BSTR a, const wchar_t* b, UINT n) {
    return textLength(a) == n && std::memcmp(a, b, n * sizeof(wchar_t)) == 0;
}

// Checks our conversions against the runtime's on a spread of values, and
// finds which way of scaling the runtime reads with.
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

    r.ownText = true;
    bool doubleRead = true, extendedRead = true;  // each way of scaling agrees on every sample so far
    int written = 0, read = 0;                    // samples each of ours was checked on
    // The last two (ln 10 and -log10 e to 15 digits) read differently in the
    // two ways of scaling: the check tells the ways apart whatever the random
    // samples turn out to be.
    static const double fixed[] = {0.0, 0.1, 0.5, 1.0, 2.0 / 3, 1.0 / 3, -1.0 / 3, 0.30000000000000004, 123456.789,
                                   0.00012345678901234, 99999999999999.9, 1e14, 3.141592653589793,
                                   1234567890.12345, -0.000999999999999999, 9.99999999999999e-5,
                                   2.30258509299405, -0.434294481903252};
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
        uint64_t m;
        int fraction;
        bool negative;
        if (plainDigits(theirs.get(), textLength(theirs.get()), sep, m, fraction, negative)) {
            ++read;
            double runtime;
            if (FAILED(VarR8FromStr(theirs.get(), kLocale, 0, &runtime))) {
                doubleRead = extendedRead = false;
                continue;
            }
            const double inDouble = scaleDown(static_cast<double>(m), fraction);
            const double inExtended = scaleDownExtended(m, fraction);
            const double mine[2] = {negative ? -inDouble : inDouble, negative ? -inExtended : inExtended};
            if (std::memcmp(&mine[0], &runtime, sizeof runtime)) doubleRead = false;
            if (std::memcmp(&mine[1], &runtime, sizeof runtime)) extendedRead = false;
        }
    }
    r.ownText = r.ownText && written >= 64;
    r.ownRead = (doubleRead || extendedRead) && read >= 64;
    r.extendedRead = r.ownRead && !doubleRead;
    return r;
}

// The x87's precision control (bits 8-9 of its control word). A host may
// lower it, as some graphics libraries do; that changes what the 32-bit
// runtime's reading gives (and what scaleDownExtended gives alike), so the
// check is made again for the new setting.
uint32_t x87Precision() {
#if defined(__i386__) || defined(__x86_64__)
    unsigned short cw = 0;
    __asm__ volatile("fnstcw %0" : "=m"(cw));
    return (cw >> 8) & 3u;
#else
    return 0;
#endif
}

// Valid bit 31, the x87 precision bits 20-21, flags bits 16-19, separator bits 0-15.
std::atomic<uint32_t> g_numbers{0};

}  // namespace

Numbers numbers() {
    wchar_t buf[8];
    const int n = GetLocaleInfoW(kLocale, LOCALE_SDECIMAL, buf, 8);
    const wchar_t sep = n == 2 ? buf[0] : 0;
    const uint32_t precision = x87Precision();
    const uint32_t packed = g_numbers.load(std::memory_order_acquire);
    if ((packed >> 31) && static_cast<wchar_t>(packed & 0xFFFF) == sep && ((packed >> 20) & 3u) == precision) {
        Numbers r;
        r.sep = sep;
        r.ownLong = (packed >> 16) & 1;
        r.ownText = (packed >> 17) & 1;
        r.ownRead = (packed >> 18) & 1;
        r.extendedRead = (packed >> 19) & 1;
        return r;
    }
    const Numbers r = calibrate(sep);
    g_numbers.store((1u << 31) | (precision << 20) | (uint32_t(r.extendedRead) << 19) | (uint32_t(r.ownRead) << 18) |
                        (uint32_t(r.ownText) << 17) | (uint32_t(r.ownLong) << 16) | sep,
                    std::memory_order_release);
    return r;
}

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

bool readPlain(const wchar_t* s, UINT n, const Numbers& nums, double& out) {
    uint64_t m;
    int fraction;
    bool negative;
    if (!plainDigits(s, n, nums.sep, m, fraction, negative)) return false;
    const double v = scaled(m, fraction, nums);
    out = negative ? -v : v;
    return true;
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

bool throughText(double x, const Numbers& nums, double& out) {
    if (nums.ownText && nums.ownRead && x != 0) {
        uint64_t q;
        int e;
        if (significantDigits(x, q, e)) {
            out = readBack(q, e, x < 0, nums);
            return true;
        }
    }
    Bstr text = Bstr::attach(textOfDouble(x, nums));
    return numberOfText(text.get(), text.length(), nums, out);
}

// ----------------------------------------------------------------- public

BSTR toText(const VARIANT& value) { return textOf(value, numbers()); }

bool readNumber(BSTR text, double* value) {
    return numberOfText(text, textLength(text), numbers(), *required(value));
}

}  // namespace sorting
}  // namespace tova
