// Integer rectangle arithmetic shared by the geometry classes. Edges are used
// as stored, never normalised.
#pragma once

#include "../frame/library_frame.h"

namespace tova {
namespace rect {

inline bool equal(const TOVA_RECT& a, const TOVA_RECT& b) {
    return a.Left == b.Left && a.Top == b.Top && a.Right == b.Right && a.Bottom == b.Bottom;
}

// (a + b) / 2 in double precision, rounded to nearest with ties to even.
inline long mid(long a, long b) { return roundToLong((static_cast<double>(a) + static_cast<double>(b)) / 2.0); }

// Half-open, as Win32 PtInRect: left and top edges inside, right and bottom outside.
inline bool contains(const TOVA_RECT& r, long x, long y) {
    return r.Left <= x && x < r.Right && r.Top <= y && y < r.Bottom;
}

// Closed-interval overlap of [aLow, aHigh] with [bLow, bHigh] on the stored values.
// The containment clause is implied by the first two; it is part of the
// published definition and decides for inverted rectangles.
inline bool overlapsSpan(long aLow, long aHigh, long bLow, long bHigh) {
    auto between = [](long x, long p, long q) { return p <= x && x <= q; };
    return between(aLow, bLow, bHigh) || between(aHigh, bLow, bHigh) ||
           (aLow >= bLow && aHigh <= bHigh) || (aLow < bLow && aHigh > bHigh);
}

inline bool overlapsHoriz(const TOVA_RECT& a, const TOVA_RECT& b) {
    return overlapsSpan(a.Left, a.Right, b.Left, b.Right);
}
inline bool overlapsVert(const TOVA_RECT& a, const TOVA_RECT& b) {
    return overlapsSpan(a.Top, a.Bottom, b.Top, b.Bottom);
}

// Each edge times `zoom` in single precision, rounded half to even. False (and
// `r` unchanged) unless zoom > 0; raises 6 when an edge leaves the Long range.
inline bool scale(TOVA_RECT& r, float zoom) {
    if (!(zoom > 0.0f)) return false;
    auto edge = [zoom](long c) {
        float product = static_cast<float>(c) * zoom;
        if (!(product >= -2147483648.0f && product < 2147483648.0f)) raise(kOverflow);
        return roundToLong(product);
    };
    TOVA_RECT scaled{edge(r.Left), edge(r.Top), edge(r.Right), edge(r.Bottom)};
    r = scaled;
    return true;
}

}  // namespace rect
}  // namespace tova
