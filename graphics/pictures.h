// Pictures (StdPicture: bitmap, icon, metafile) as the painting members see
// them: their facts, painting them plainly or leaving one colour out, and
// rasterising them into a premultiplied 32-bit layer for the effects.
#pragma once

#include "../frame/library_frame.h"

#include <functional>

namespace tova {

class Surface32;

struct PictureFacts {
    ComPtr<IPicture> picture;
    SHORT type = PICTYPE_NONE;
    HANDLE handle = nullptr;
    long width = 0, height = 0;  // pixels (icons and metafiles at the screen's resolution)
    OLE_XSIZE_HIMETRIC hmWidth = 0;
    OLE_YSIZE_HIMETRIC hmHeight = 0;
};

// False for Nothing, a picture without a handle or without a size.
bool readPicture(IPictureDisp* disp, PictureFacts& facts);

// Where a picture goes and which part of it. Sizes of 0 mean the picture's own
// size: a 0 source width is the rest of the picture from SrcX, a 0 destination
// width the source width (likewise for heights).
struct PaintRequest {
    HDC dc = nullptr;
    long x = 0, y = 0, width = 0, height = 0;
    long srcX = 0, srcY = 0, srcWidth = 0, srcHeight = 0;
    bool transparent = false;
    COLORREF transparentColor = 0;  // left out when transparent is set
};

enum class PaintFailure { None, BadPicture, BadArgument, Platform };

// The request with its 0 sizes resolved for `facts`; BadArgument for negative
// sizes, Platform for an empty source.
PaintFailure resolve(const PictureFacts& facts, PaintRequest& request);

// Paints `picture` (bitmap, icon or metafile). Returns what went wrong, if
// anything; never raises.
PaintFailure paintPicture(IPictureDisp* picture, const PaintRequest& request);
// The same for a picture already read, with the request resolved.
bool paintResolved(const PictureFacts& facts, const PaintRequest& request);

// Rasterises the request's source rectangle at the destination size into
// `layer` (premultiplied; alpha 255 where covered). Bitmaps are stretched in
// the stretch mode of request.dc; icons and metafiles are rendered over black
// and over white, so that their own transparency survives. With alphaChannel a
// 32-bit bitmap's own premultiplied alpha is kept. The transparent colour, if
// any, is left out (alpha 0).
bool rasterise(const PictureFacts& facts, const PaintRequest& request, bool alphaChannel, Surface32& layer);
// The same for anything `draw` paints at (0, 0) in the layer's size on the DC
// it is given: drawn over black and over white, equal renders covered.
bool rasteriseDrawing(const std::function<bool(HDC)>& draw, Surface32& layer);

}  // namespace tova
