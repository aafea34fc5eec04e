// Pens, brushes and fonts made for a caller, who owns them and frees them with
// deleteGdiObject. Bad arguments raise 5 before anything is made; a platform
// failure gives a null handle.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

HPEN createPen(long color, long style, long width);
// BS_NULL gives the stock hollow brush (not the caller's to free, but freeing
// it is harmless); pattern styles take `bitmap`, which stays the caller's.
HBRUSH createBrush(long color, long style, long hatch, HBITMAP bitmap);

struct FontRequest {
    std::wstring face;
    double size = 0;  // points
    bool bold = false, italic = false, underline = false, strikethrough = false;
    long weight = -1;  // overrides bold when 0 or more
    BYTE charset = DEFAULT_CHARSET;
    double angle = 0;  // degrees, counter-clockwise
    HDC dc = nullptr;  // whose vertical resolution sizes the font (null: the screen)
};
HFONT createFont(const FontRequest& request);

// Frees a pen, brush, font, bitmap or region. False for anything else, a
// stock object (left alone) or a failure.
bool deleteGdiObject(HGDIOBJ object);

}  // namespace tova
