// Point lists as callers pass them: an array of POINTAPI records, or a flat
// array of numbers x1, y1, x2, y2 ... (what scripts can build).
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

// The points of `v`; raises 5 for anything else, an odd count of numbers or
// fewer than `minimum` points.
std::vector<POINT> pointList(const VARIANT* v, size_t minimum);

}  // namespace tova
