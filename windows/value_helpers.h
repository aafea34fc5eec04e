// The value helpers of MiscMethods over VARIANTs: a function-style If, Null
// replacement, division without error 11, clamping, the extremes of a list,
// rounding by decimal digits and element counts.
#pragma once

#include <oaidl.h>

namespace tova::values {

// Each writes a new value into `out` (VariantInit'ed by the caller).
void iif(const VARIANT& condition, const VARIANT& whenTrue, const VARIANT& whenFalse, VARIANT* out);
void nullToValue(const VARIANT& value, const VARIANT* ifNull, VARIANT* out);
void safeDivide(const VARIANT& numerator, const VARIANT& denominator, const VARIANT* ifZero, VARIANT* out);
double clamp(double value, double minimum, double maximum);
void extreme(const VARIANT& values, bool largest, VARIANT* out);
void roundNumber(const VARIANT& value, long decimals, long mode, VARIANT* out);
long arrayCount(const VARIANT& values, long dimension);

}  // namespace tova::values
