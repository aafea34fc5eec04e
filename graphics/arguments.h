// Argument conversions the graphics members share.
#pragma once

#include "../frame/library_frame.h"
#include "gradients.h"

namespace tova {

// An optional Variant number: `fallback` when left out; 13 when not a number.
inline double optionalDouble(const VARIANT& v, double fallback) {
    if (isMissing(&v)) return fallback;
    Variant d;
    if (FAILED(VariantChangeType(d.put(), const_cast<VARIANT*>(&v), 0, VT_R8))) raise(kTypeMismatch);
    return V_R8(&d);
}

// A GradientDirectionConstants value; 5 outside it.
inline gradients::Direction directionArgument(long d) {
    if (d < tovaGradientHorizontal || d > tovaGradientDiagonalUp) raise(kInvalidArgument);
    return static_cast<gradients::Direction>(d);
}

inline RECT rectArgument(const TOVA_RECT* r) { return toWin32(*required(const_cast<TOVA_RECT*>(r))); }

}  // namespace tova
