#include "words_guids.h"

#include "../frame/errors.h"
#include "../frame/values.h"

#include <cmath>
#include <cstring>
#include <cwctype>

namespace tova {

namespace words {

namespace {
unsigned long low32(LONG_PTR v) { return static_cast<unsigned long>(static_cast<ULONG_PTR>(v) & 0xFFFFFFFFu); }
long word(unsigned long w, bool isSigned) { return isSigned ? static_cast<short>(w) : static_cast<long>(w); }
void requireShift(long bits) {
    if (bits < 0 || bits > 31) raise(kInvalidArgument);
}
}  // namespace

long hiWord(LONG_PTR value, bool isSigned) { return word((low32(value) >> 16) & 0xFFFF, isSigned); }
long loWord(LONG_PTR value, bool isSigned) { return word(low32(value) & 0xFFFF, isSigned); }
long makeLong(long low, long high) {
    return static_cast<long>(((static_cast<unsigned long>(high) & 0xFFFF) << 16) | (static_cast<unsigned long>(low) & 0xFFFF));
}
long hiByte(LONG_PTR value) { return static_cast<long>((low32(value) >> 8) & 0xFF); }
long loByte(LONG_PTR value) { return static_cast<long>(low32(value) & 0xFF); }
double longToUnsigned(long value) { return static_cast<double>(static_cast<unsigned long>(value)); }

long unsignedToLong(double value) {
    const double r = std::nearbyint(value);   // as CLng: ties to even
    if (!(r >= -2147483648.0 && r <= 4294967295.0)) raise(kOverflow);
    return r > 2147483647.0 ? static_cast<long>(static_cast<unsigned long>(r)) : static_cast<long>(r);
}

long integerToUnsigned(short value) { return static_cast<unsigned short>(value); }

short unsignedToInteger(long value) {
    if (value < -32768 || value > 65535) raise(kOverflow);
    return static_cast<short>(static_cast<unsigned short>(value & 0xFFFF));
}

long shiftLeft(long value, long bits) {
    requireShift(bits);
    return static_cast<long>(static_cast<unsigned long>(value) << bits);
}

long shiftRight(long value, long bits, bool arithmetic) {
    requireShift(bits);
    if (arithmetic) return value >> bits;   // the compilers here shift signed values arithmetically
    return static_cast<long>(static_cast<unsigned long>(value) >> bits);
}

}  // namespace words

namespace guids {

std::wstring format(const GUID& g, bool braces) {
    wchar_t text[40] = {};
    if (!StringFromGUID2(g, text, 40)) return {};
    std::wstring s(text);
    for (wchar_t& c : s) c = static_cast<wchar_t>(std::towupper(c));
    return braces ? s : s.substr(1, 36);
}

std::wstring create(bool braces) {
    GUID g;
    if (FAILED(CoCreateGuid(&g))) return {};
    return format(g, braces);
}

bool parse(const std::wstring& text, GUID& out) {
    std::wstring s = text;
    if (s.size() == 36) s = L"{" + s + L"}";
    if (s.size() != 38 || s.front() != L'{' || s.back() != L'}') return false;
    for (size_t i = 1; i < 37; ++i) {
        const bool dash = i == 9 || i == 14 || i == 19 || i == 24;
        if (dash ? s[i] != L'-' : !std::iswxdigit(s[i])) return false;
    }
    return SUCCEEDED(IIDFromString(s.c_str(), &out));
}

bool fromBytes(const VARIANT& bytes, GUID& out) {
    const VARIANT* v = &bytes;
    while (V_VT(v) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(v)) v = V_VARIANTREF(v);
    SAFEARRAY* a = arrayIn(*v);
    LONG lo = 0, hi = -1;
    if (!a || SafeArrayGetDim(a) != 1 || FAILED(SafeArrayGetLBound(a, 1, &lo)) || FAILED(SafeArrayGetUBound(a, 1, &hi)) ||
        hi - lo != 15)
        return false;
    const VARTYPE vt = V_VT(v) & VT_TYPEMASK;
    unsigned char b[16];
    for (LONG i = 0; i < 16; ++i) {
        LONG index = lo + i;
        if (vt == VT_UI1) {
            if (FAILED(SafeArrayGetElement(a, &index, &b[i]))) return false;
            continue;
        }
        if (vt != VT_VARIANT) return false;
        Variant e, n;
        if (FAILED(SafeArrayGetElement(a, &index, &e)) || FAILED(VariantChangeType(&n, &e, 0, VT_I4)) || V_I4(&n) < 0 ||
            V_I4(&n) > 255)
            return false;
        b[i] = static_cast<unsigned char>(V_I4(&n));
    }
    std::memcpy(&out, b, 16);
    return true;
}

}  // namespace guids

}  // namespace tova
