#include "gdi_objects.h"

#include "bitmaps.h"
#include "colour_math.h"
#include "gdi_draw.h"

#include <cmath>

namespace tova {

HPEN createPen(long color, long style, long width) {
    if (style < PS_SOLID || style > PS_INSIDEFRAME || width < 0) raise(kInvalidArgument);
    return CreatePen(static_cast<int>(style), static_cast<int>(width), colourArgument(color));
}

HBRUSH createBrush(long color, long style, long hatch, HBITMAP bitmap) {
    const COLORREF c = colourArgument(color);
    switch (style) {
    case BS_SOLID: return CreateSolidBrush(c);
    case BS_NULL: return static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    case BS_HATCHED:
        if (hatch < HS_HORIZONTAL || hatch > HS_DIAGCROSS) raise(kInvalidArgument);
        return CreateHatchBrush(static_cast<int>(hatch), c);
    case BS_PATTERN:
    case BS_PATTERN8X8:
        if (GetObjectType(bitmap) != OBJ_BITMAP) raise(kInvalidArgument);
        return CreatePatternBrush(bitmap);
    default:
        // DIB patterns need packed DIB memory, which a Long cannot carry safely.
        raise(kInvalidArgument);
    }
}

HFONT createFont(const FontRequest& f) {
    if (f.face.empty() || !(f.size > 0) || !std::isfinite(f.size) || !std::isfinite(f.angle) ||
        std::fabs(f.angle) > 1e8 || f.size > 1e6)
        raise(kInvalidArgument);
    int dpi = 0;
    if (f.dc) {
        dpi = GetDeviceCaps(f.dc, LOGPIXELSY);
    } else {
        ScreenDc screen(nullptr);
        dpi = screen.get() ? GetDeviceCaps(screen.get(), LOGPIXELSY) : 0;
    }
    if (dpi <= 0) return nullptr;
    LOGFONTW lf{};
    lf.lfHeight = -colour::roundHalfAway(f.size * dpi / 72);
    lf.lfWeight = f.weight >= 0 ? f.weight : (f.bold ? FW_BOLD : FW_NORMAL);
    lf.lfItalic = f.italic;
    lf.lfUnderline = f.underline;
    lf.lfStrikeOut = f.strikethrough;
    lf.lfCharSet = f.charset;
    lf.lfEscapement = lf.lfOrientation = colour::roundHalfAway(f.angle * 10);
    lf.lfOutPrecision = OUT_DEFAULT_PRECIS;
    lf.lfClipPrecision = CLIP_DEFAULT_PRECIS;
    lf.lfQuality = DEFAULT_QUALITY;
    lf.lfPitchAndFamily = DEFAULT_PITCH | FF_DONTCARE;
    lstrcpynW(lf.lfFaceName, f.face.c_str(), LF_FACESIZE);
    return CreateFontIndirectW(&lf);
}

bool deleteGdiObject(HGDIOBJ object) {
    if (!object) return false;
    switch (GetObjectType(object)) {
    case OBJ_PEN: case OBJ_EXTPEN: case OBJ_BRUSH: case OBJ_FONT: case OBJ_BITMAP: case OBJ_REGION: break;
    default: return false;  // device contexts, palettes, metafiles and non-objects are not ours to free
    }
    // Stock objects would survive DeleteObject anyway; saying False tells the caller so.
    for (int i = WHITE_BRUSH; i <= DC_PEN; ++i)
        if (GetStockObject(i) == object) return false;
    return DeleteObject(object) != 0;
}

}  // namespace tova
