// Shapes drawn with a border pen and a fill brush: the work behind GDIMethods
// and the drawing members of the geometry classes.
#pragma once

#include "../frame/library_frame.h"

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

// Draws `shape` within `edges` (right and bottom exclusive). False when the
// device context is 0 or the platform fails; raises 5 for a style, width or
// colour that is not valid (pattern brushes need a pattern and are refused).
bool drawShape(Shape shape, HDC dc, const RECT& edges, const ShapeStyle& style);

}  // namespace tova
