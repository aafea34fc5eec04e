// Gradients and alpha fills on a caller's DC, computed in a work bitmap with
// the arithmetic of gradients.h and alpha_fill.h. Areas are edges with right
// and bottom exclusive; an empty one, hDC 0 or a platform failure gives false.
#pragma once

#include "../frame/library_frame.h"
#include "gradients.h"

namespace tova {

bool drawLinearGradient(HDC dc, const RECT& r, COLORREF start, COLORREF end, gradients::Direction d);
bool drawCornerGradient(HDC dc, const RECT& r, COLORREF topLeft, COLORREF topRight, COLORREF bottomLeft,
                        COLORREF bottomRight);
bool drawRadialGradient(HDC dc, const RECT& r, COLORREF centre, COLORREF outer);
bool drawAlphaFill(HDC dc, const RECT& r, COLORREF color, int opacity);
bool drawAlphaGradient(HDC dc, const RECT& r, COLORREF start, COLORREF end, int startOpacity, int endOpacity,
                       gradients::Direction d);

}  // namespace tova
