// Hatch and bitmap-pattern fills and 3D frames on a caller's DC. The DC's
// background mode and colour, brush origin and selections are left as found.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

// Hatch lines of `color`; between them `backColor`, or the destination when
// there is none (backColor -1). Raises 5 for a hatch or colour that is not one.
bool fillHatched(HDC dc, const RECT& r, long hatch, long color, long backColor);
// Tiles `bitmap` (still the caller's) with a copy's top-left at the origin in
// device coordinates. Raises 5 when bitmap is not a bitmap.
bool fillPattern(HDC dc, const RECT& r, HBITMAP bitmap, long originX, long originY);
// `width` rings (2 x width for etched and bump) inside the edges. Raises 5 for
// a style outside Frame3DStyleConstants, a width below 1 or a bad colour.
bool drawFrame3D(HDC dc, const RECT& r, long style, long width, long highlight, long shadow);

}  // namespace tova
