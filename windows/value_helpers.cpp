#include "value_helpers.h"

#include "decimal_rounding.h"
#include "../frame/errors.h"
#include "../frame/values.h"

#include <cmath>

namespace tova::values {

namespace {

const VARIANT& deref(const VARIANT& v) {
    const VARIANT* p = &v;
    while (V_VT(p) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(p)) p = V_VARIANTREF(p);
    return *p;
}

bool isNullOrEmpty(const VARIANT& v) {
    const VARTYPE t = V_VT(&deref(v));
    return t == VT_NULL || t == VT_EMPTY;
}

void copyOf(const VARIANT& v, VARIANT* out) {
    const HRESULT hr = VariantCopyInd(out, const_cast<VARIANT*>(&v));
    if (FAILED(hr)) raise(hr == E_OUTOFMEMORY ? kOutOfMemory : kTypeMismatch);
}

// As the automation runtime converts; its refusals raise 6 or 13.
void convert(const VARIANT& v, VARTYPE to, VARIANT& out) {
    const HRESULT hr = VariantChangeType(&out, const_cast<VARIANT*>(&deref(v)), 0, to);
    if (FAILED(hr)) raise(hr == DISP_E_OVERFLOW ? kOverflow : kTypeMismatch);
}

double toDouble(const VARIANT& v) {
    Variant d;
    convert(v, VT_R8, d);
    return V_R8(&d);
}

enum class Kind { Skip, Number, Text };

Kind kindOf(VARTYPE t) {
    switch (t) {
    case VT_EMPTY: case VT_NULL: return Kind::Skip;
    case VT_BSTR: return Kind::Text;
    case VT_I1: case VT_UI1: case VT_I2: case VT_UI2: case VT_I4: case VT_UI4: case VT_I8: case VT_UI8:
    case VT_INT: case VT_UINT: case VT_R4: case VT_R8: case VT_CY: case VT_DATE: case VT_BOOL: case VT_DECIMAL:
        return Kind::Number;
    default: raise(kTypeMismatch);
    }
}

// ------------------------------------------------------------- rounding

// The 96-bit mantissa of a Decimal as digits, and back.
rounding::Decimal fromDecimal(const DECIMAL& d) {
    uint32_t w[3] = {d.Hi32, d.Mid32, d.Lo32};
    std::string digits;
    while (w[0] || w[1] || w[2]) {
        uint64_t rest = 0;
        for (uint32_t& x : w) {
            const uint64_t cur = (rest << 32) | x;
            x = static_cast<uint32_t>(cur / 10);
            rest = cur % 10;
        }
        digits.insert(digits.begin(), static_cast<char>('0' + rest));
    }
    rounding::Decimal r;
    r.negative = (d.sign & DECIMAL_NEG) != 0;
    r.digits = digits;
    r.exponent = -static_cast<int>(d.scale);
    return r;
}

DECIMAL toDecimal(const rounding::Decimal& r) {
    DECIMAL d = {};
    const int scale = r.exponent < 0 ? -r.exponent : 0;
    const std::string digits = r.digits + std::string(r.exponent > 0 ? r.exponent : 0, '0');
    uint32_t w[3] = {0, 0, 0};   // high, mid, low
    for (char c : digits) {
        uint64_t carry = static_cast<uint64_t>(c - '0');
        for (int i = 2; i >= 0; --i) {
            const uint64_t cur = static_cast<uint64_t>(w[i]) * 10 + carry;
            w[i] = static_cast<uint32_t>(cur);
            carry = cur >> 32;
        }
        if (carry) raise(kOverflow);
    }
    if (scale > 28) raise(kOverflow);
    d.scale = static_cast<BYTE>(scale);
    d.sign = r.negative && !r.digits.empty() ? DECIMAL_NEG : 0;
    d.Hi32 = w[0];
    d.Mid32 = w[1];
    d.Lo32 = w[2];
    return d;
}

}  // namespace

void iif(const VARIANT& condition, const VARIANT& whenTrue, const VARIANT& whenFalse, VARIANT* out) {
    bool truth = false;
    if (!isNullOrEmpty(condition)) {
        Variant b;
        convert(condition, VT_BOOL, b);
        truth = V_BOOL(&b) != VARIANT_FALSE;
    }
    copyOf(truth ? whenTrue : whenFalse, out);
}

void nullToValue(const VARIANT& value, const VARIANT* ifNull, VARIANT* out) {
    if (!isNullOrEmpty(value)) return copyOf(value, out);
    if (!isMissing(ifNull)) copyOf(*ifNull, out);
}

void safeDivide(const VARIANT& numerator, const VARIANT& denominator, const VARIANT* ifZero, VARIANT* out) {
    if (V_VT(&deref(numerator)) == VT_NULL || V_VT(&deref(denominator)) == VT_NULL) {
        V_VT(out) = VT_NULL;
        return;
    }
    const double n = toDouble(numerator), d = toDouble(denominator);
    if (d == 0) {
        if (isMissing(ifZero)) {
            V_VT(out) = VT_I4;
            V_I4(out) = 0;
        } else {
            copyOf(*ifZero, out);
        }
        return;
    }
    const double q = n / d;
    if (!std::isfinite(q)) raise(kOverflow);
    V_VT(out) = VT_R8;
    V_R8(out) = q;
}

double clamp(double value, double minimum, double maximum) {
    if (minimum > maximum) raise(kInvalidArgument);
    return value < minimum ? minimum : value > maximum ? maximum : value;
}

void extreme(const VARIANT& values, bool largest, VARIANT* out) {
    const VARIANT& v = deref(values);
    const VARIANT* best = nullptr;
    Kind seen = Kind::Skip;
    VARIANT element;   // a typed array's element, viewed in place (never cleared)
    auto consider = [&](const VARIANT& e) {
        const Kind k = kindOf(V_VT(&e));
        if (k == Kind::Skip) return;
        if (seen != Kind::Skip && seen != k) raise(kTypeMismatch);
        seen = k;
        if (!best) {
            VariantCopy(out, const_cast<VARIANT*>(&e));
            best = out;
            return;
        }
        const HRESULT c = VarCmp(const_cast<VARIANT*>(&e), out, LOCALE_USER_DEFAULT, 0);
        if (c == VARCMP_NULL || FAILED(c)) raise(kTypeMismatch);
        if ((largest && c == VARCMP_GT) || (!largest && c == VARCMP_LT)) {
            VariantClear(out);
            VariantCopy(out, const_cast<VARIANT*>(&e));
        }
    };
    if (!(V_VT(&v) & VT_ARRAY)) {
        consider(v);
    } else {
        SAFEARRAY* a = arrayIn(v);
        const VARTYPE t = V_VT(&v) & VT_TYPEMASK;
        if (a && a->cDims > 0) {
            size_t count = 1;
            for (USHORT i = 0; i < a->cDims; ++i) count *= a->rgsabound[i].cElements;
            ArrayData data(a);
            if (!data.locked()) raise(kTypeMismatch);
            const char* p = static_cast<const char*>(data.data());
            for (size_t i = 0; i < count; ++i, p += a->cbElements) {
                if (t == VT_VARIANT) {
                    consider(deref(*reinterpret_cast<const VARIANT*>(p)));
                    continue;
                }
                const size_t bytes = scalarBytes(t);
                if (!bytes || bytes > a->cbElements) raise(kTypeMismatch);
                VariantInit(&element);
                V_VT(&element) = t;
                std::memcpy(&V_I1(&element), p, bytes);
                consider(element);
            }
        }
    }
    if (!best) V_VT(out) = VT_NULL;
}

void roundNumber(const VARIANT& value, long decimals, long mode, VARIANT* out) {
    if (decimals < -28 || decimals > 28 || mode < 0 || mode > 5) raise(kInvalidArgument);
    const rounding::Mode m = static_cast<rounding::Mode>(mode);
    const VARIANT& v = deref(value);
    switch (V_VT(&v)) {
    case VT_NULL:
        V_VT(out) = VT_NULL;
        return;
    case VT_CY: {
        const LONGLONG units = V_CY(&v).int64;
        const uint64_t magnitude = units < 0 ? 0 - static_cast<uint64_t>(units) : static_cast<uint64_t>(units);
        const rounding::Decimal r = rounding::round(rounding::fromInteger(magnitude, units < 0, -4), decimals, m);
        uint64_t scaled = 0;
        if (!rounding::toScaledInteger(r, -4, scaled) || scaled > (r.negative ? 0x8000000000000000ull : 0x7FFFFFFFFFFFFFFFull))
            raise(kOverflow);
        V_VT(out) = VT_CY;
        V_CY(out).int64 = r.negative ? static_cast<LONGLONG>(0 - scaled) : static_cast<LONGLONG>(scaled);
        return;
    }
    case VT_DECIMAL: {
        const DECIMAL d = toDecimal(rounding::round(fromDecimal(V_DECIMAL(&v)), decimals, m));
        V_DECIMAL(out) = d;   // sets the whole record, the type field included
        V_VT(out) = VT_DECIMAL;
        return;
    }
    case VT_R4: {
        // A Single's own digits: 2.675! is 2.675, not 2.67499995...
        const double r = rounding::toDouble(rounding::round(rounding::fromDouble(V_R4(&v), 7), decimals, m));
        V_VT(out) = VT_R8;
        V_R8(out) = r;
        return;
    }
    default: {
        const double d = toDouble(v);
        const rounding::Decimal digits = rounding::fromDouble(d, 15);
        V_VT(out) = VT_R8;
        // A value already within its places stays exactly what it was.
        V_R8(out) = !std::isfinite(d) || digits.digits.empty() || digits.exponent >= -decimals
                        ? d : rounding::toDouble(rounding::round(digits, decimals, m));
        return;
    }
    }
}

long arrayCount(const VARIANT& values, long dimension) {
    const VARIANT& v = deref(values);
    SAFEARRAY* a = arrayIn(v);
    if (!a || dimension < 1 || dimension > static_cast<long>(SafeArrayGetDim(a))) return 0;
    LONG lo = 0, hi = -1;
    if (FAILED(SafeArrayGetLBound(a, static_cast<UINT>(dimension), &lo)) ||
        FAILED(SafeArrayGetUBound(a, static_cast<UINT>(dimension), &hi)) || hi < lo)
        return 0;
    return hi - lo + 1;
}

}  // namespace tova::values
