// Pictures painted with an effect: masked, disabled, embossed, shadowed,
// alpha-blended (constant or graded) and colourised. Each rasterises the
// picture at destination size into a 32-bit layer, changes the layer with the
// arithmetic of colour_math.h and blends it over the destination area, read
// and written back (a DC that cannot be read gets AlphaBlend). Temporaries are
// freed on every path; nothing raises.
#pragma once

#include "gradients.h"
#include "pictures.h"

namespace tova {

class Surface32;

PaintFailure paintMasked(IPictureDisp* picture, IPictureDisp* mask, const PaintRequest& request);
PaintFailure paintDisabled(IPictureDisp* picture, const PaintRequest& request, int lighten);
PaintFailure paintEmbossed(IPictureDisp* picture, const PaintRequest& request, COLORREF highlight, COLORREF shadow);
PaintFailure paintShadowed(IPictureDisp* picture, const PaintRequest& request, COLORREF shadow, long offsetX,
                           long offsetY, int opacity);
PaintFailure paintAlpha(IPictureDisp* picture, const PaintRequest& request, int opacity, bool alphaChannel);
PaintFailure paintAlphaGradient(IPictureDisp* picture, const PaintRequest& request, int startOpacity,
                                int endOpacity, gradients::Direction direction);
PaintFailure paintColourised(IPictureDisp* picture, const PaintRequest& request, COLORREF color, int amount);

// Blends a premultiplied layer over dc at (x, y), exactly where dc can be read.
bool composeLayer(HDC dc, long x, long y, Surface32& layer);

// An icon handle at x, y, w x h, greyed as a disabled picture.
bool paintIconDisabled(HDC dc, HICON icon, long x, long y, long w, long h);

}  // namespace tova
