// Shapes drawn with a border pen and a fill brush: the work behind GDIMethods
// and the drawing members of the geometry classes.
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

enum class Shape { Rectangle, RoundRect, Ellipse };

struct ShapeStyle {
    long borderColor = 0x80000008;   // system colour of window text
    long borderStyle = PS_SOLID;
    long borderWidth = 1;
    long backColor = 0x80000005;     // system colour of window background
    long backStyle = BS_SOLID;
    long hatch = HS_CROSS;
    long cornerWidth = 16;           // RoundRect only
    long cornerHeight = 16;
};

// The RGB value of an OLE_COLOR (system colours translated); -1 when it is not a colour.
long translateColor(long color);

// The RGB value of a colour argument; raises 5 when it is not a colour.
COLORREF colourArgument(long color);

// A pen as the line members take it.
struct LineStyle {
    long color = 0x80000008;
    long style = PS_SOLID;
    long width = 1;
};

// Draws `shape` within `edges` (right and bottom exclusive). False when the
// device context is 0 or the platform fails; raises 5 for a style, width or
// colour that is not valid (pattern brushes need a pattern and are refused).
bool drawShape(Shape shape, HDC dc, const RECT& edges, const ShapeStyle& style);

// A line to `to`, which is left out (as LineTo); the DC's current position is kept.
bool drawLine(HDC dc, POINT from, POINT to, const LineStyle& style);
bool drawPolyline(HDC dc, const std::vector<POINT>& points, const LineStyle& style);
// A filled polygon; fillMode ALTERNATE or WINDING (else 5).
bool drawPolygon(HDC dc, const std::vector<POINT>& points, const ShapeStyle& style, long fillMode);

}  // namespace tova
