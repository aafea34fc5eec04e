// Pictures placed in an area (tiled, centred, fitted), pictures made from DC
// areas and handles, and icon handles drawn. Nothing here raises.
#pragma once

#include "pictures.h"

namespace tova {

// request.x/y/width/height is the area (sizes of 0: the picture's own); the
// picture keeps its own size.
// Offsets move the first tile from the area's top-left.
PaintFailure paintTiled(IPictureDisp* picture, const PaintRequest& area, long offsetX, long offsetY);
PaintFailure paintCentred(IPictureDisp* picture, const PaintRequest& area);
enum class Fit { Inside, ShrinkOnly, Cover };
PaintFailure paintFitted(IPictureDisp* picture, const PaintRequest& area, Fit fit);

// A screen-compatible copy of the w x h area of dc at (x, y); empty on failure.
ComPtr<IPictureDisp> pictureFromDC(HDC dc, long x, long y, long w, long h);
// A picture of a bitmap (type PICTYPE_BITMAP) or icon (PICTYPE_ICON): of a copy,
// or of the handle itself when `own`. Empty on failure.
ComPtr<IPictureDisp> pictureFromHandle(HANDLE handle, int type, bool own);
// Whether `handle` is an icon (or cursor).
bool isIcon(HICON icon);
// The icon at its own size (w, h 0) or w x h; greyed when disabled.
bool paintIcon(HDC dc, long x, long y, HICON icon, long w, long h, bool disabled);

}  // namespace tova
