#include "gdi_draw.h"

namespace tova {

long translateColor(long color) {
    COLORREF rgb = 0;
    if (FAILED(OleTranslateColor(static_cast<OLE_COLOR>(color), nullptr, &rgb))) return -1;
    return static_cast<long>(rgb);
}

COLORREF colourArgument(long color) {
    long rgb = translateColor(color);
    if (rgb == -1) raise(kInvalidArgument);
    return static_cast<COLORREF>(rgb);
}

namespace {

HPEN makePen(long color, long style, long width, Pen& owned) {
    if (style < PS_SOLID || style > PS_INSIDEFRAME || width < 0) raise(kInvalidArgument);
    if (style == PS_NULL) return static_cast<HPEN>(GetStockObject(NULL_PEN));
    COLORREF c = colourArgument(color);
    owned = Pen(CreatePen(static_cast<int>(style), static_cast<int>(width), c));
    return owned.get();
}

HPEN makePen(const ShapeStyle& s, Pen& owned) { return makePen(s.borderColor, s.borderStyle, s.borderWidth, owned); }

HBRUSH makeBrush(const ShapeStyle& s, Brush& owned) {
    switch (s.backStyle) {
    case BS_NULL:
        return static_cast<HBRUSH>(GetStockObject(NULL_BRUSH));
    case BS_SOLID:
        owned = Brush(CreateSolidBrush(colourArgument(s.backColor)));
        return owned.get();
    case BS_HATCHED:
        if (s.hatch < HS_HORIZONTAL || s.hatch > HS_DIAGCROSS) raise(kInvalidArgument);
        owned = Brush(CreateHatchBrush(static_cast<int>(s.hatch), colourArgument(s.backColor)));
        return owned.get();
    default:
        // Pattern brushes need a pattern bitmap, which these routines do not take.
        raise(kInvalidArgument);
    }
}

// Draws with the style's pen and brush selected into dc, put back after.
template <class Draw>
bool withPenAndBrush(HDC dc, const ShapeStyle& style, Draw&& draw) {
    // Arguments are checked before the device context so that bad styles are always reported.
    Pen pen;
    Brush brush;
    HPEN p = makePen(style, pen);
    HBRUSH b = makeBrush(style, brush);
    if (!dc || !p || !b) return false;
    Selection penIn(dc, p);
    Selection brushIn(dc, b);
    return penIn.ok() && brushIn.ok() && draw();
}

}  // namespace

bool drawShape(Shape shape, HDC dc, const RECT& r, const ShapeStyle& style) {
    return withPenAndBrush(dc, style, [&] {
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
    });
}

bool drawLine(HDC dc, POINT from, POINT to, const LineStyle& style) {
    Pen pen;
    HPEN p = makePen(style.color, style.style, style.width, pen);
    if (!dc || !p) return false;
    Selection in(dc, p);
    POINT old{};
    if (!in.ok() || !MoveToEx(dc, from.x, from.y, &old)) return false;
    const bool ok = LineTo(dc, to.x, to.y) != 0;
    MoveToEx(dc, old.x, old.y, nullptr);
    return ok;
}

bool drawPolyline(HDC dc, const std::vector<POINT>& points, const LineStyle& style) {
    Pen pen;
    HPEN p = makePen(style.color, style.style, style.width, pen);
    if (!dc || !p) return false;
    Selection in(dc, p);
    return in.ok() && Polyline(dc, points.data(), static_cast<int>(points.size()));
}

bool drawPolygon(HDC dc, const std::vector<POINT>& points, const ShapeStyle& style, long fillMode) {
    if (fillMode != ALTERNATE && fillMode != WINDING) raise(kInvalidArgument);
    return withPenAndBrush(dc, style, [&] {
        const int oldMode = SetPolyFillMode(dc, static_cast<int>(fillMode));
        const bool ok = ::Polygon(dc, points.data(), static_cast<int>(points.size())) != 0;
        if (oldMode) SetPolyFillMode(dc, oldMode);
        return ok;
    });
}

}  // namespace tova
