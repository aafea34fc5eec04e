// Regions made for a caller (the caller's to free), and filling them.
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

// Raises 5 for a shape outside RegionShapeConstants or a fill mode outside
// PolyFillModeConstants; null on a platform failure.
HRGN createRegion(const RECT& r, long shape, long cornerWidth, long cornerHeight);
HRGN createPolygonRegion(const std::vector<POINT>& points, long fillMode);
// The pixels of `bitmap` other than `transparent` (-1: the top-left pixel's
// colour) as runs per row. Raises 5 when bitmap is not a bitmap.
HRGN regionFromBitmap(HBITMAP bitmap, long transparent);
// A new region; raises 5 for a mode outside RGN_AND..RGN_COPY or an input that
// is not a region (hRgn2 is not looked at for RGN_COPY).
HRGN combineRegions(HRGN a, HRGN b, long mode);
// Fills, then frames `frameWidth` wide unless frameColor is -1.
bool fillRegion(HDC dc, HRGN region, long color, long frameColor, long frameWidth);

}  // namespace tova
