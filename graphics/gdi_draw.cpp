#include "gdi_draw.h"

namespace tova {

long translateColor(long color) {
    COLORREF rgb = 0;
    if (FAILED(OleTranslateColor(static_cast<OLE_COLOR>(color), nullptr, &rgb))) return -1;
    return static_cast<long>(rgb);
}

namespace {

COLORREF colorArgument(long color) {
    long rgb = translateColor(color);
    if (rgb == -1) raise(kInvalidArgument);
    return static_cast<COLORREF>(rgb);
}

HPEN makePen(const ShapeStyle& s, Pen& owned) {
    if (s.borderStyle < PS_SOLID || s.borderStyle > PS_INSIDEFRAME || s.borderWidth < 0) raise(kInvalidArgument);
    if (s.borderStyle == PS_NULL) return static_cast<HPEN>(GetStockObject(NULL_PEN));
    COLORREF c = colorArgument(s.borderColor);
    owned = Pen(CreatePen(static_cast<int>(s.borderStyle), static_cast<int>(s.borderWidth), c));
    return owned.get();
}

HBRUSH makeBrush(const ShapeStyle& s, Brush& owned) {
    switch (s.backStyle) {
    case BS_NULL:
        return static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    case BS_SOLID:
        owned = Brush(CreateSolidBrush(colorArgument(s.backColor)));
        return owned.get();
    case BS_HATCHED:
        if (s.hatch < HS_HORIZONTAL || s.hatch > HS_DIAGCROSS) raise(kInvalidArgument);
        owned = Brush(CreateHatchBrush(static_cast<int>(s.hatch), colorArgument(s.backColor)));
        return owned.get();
    default:
        // Pattern brushes need a pattern bitmap, which these routines do not take.
        raise(kInvalidArgument);
    }
}

}  // namespace

bool drawShape(Shape shape, HDC dc, const RECT& r, const ShapeStyle& style) {
    // Arguments are checked before the device context so that bad styles are always reported.
    Pen pen;
    Brush brush;
    HPEN p = makePen(style, pen);
    HBRUSH b = makeBrush(style, brush);
    if (!dc || !p || !b) return false;
    Selection penIn(dc, p);
    Selection brushIn(dc, b);
    if (!penIn.ok() || !brushIn.ok()) return false;
    switch (shape) {
    case Shape::Rectangle:
        return ::Rectangle(dc, r.left, r.top, r.right, r.bottom) != 0;
    case Shape::RoundRect:
        return ::RoundRect(dc, r.left, r.top, r.right, r.bottom, static_cast<int>(style.cornerWidth),
                           static_cast<int>(style.cornerHeight)) != 0;
    case Shape::Ellipse:
        return ::Ellipse(dc, r.left, r.top, r.right, r.bottom) != 0;
    }
    return false;
}

}  // namespace tova
