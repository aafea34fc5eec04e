// The geometry of a tip: what its content measures, the shape around it (a
// rectangle, or a rounded body with a stem) and where it goes on the screen.
// Everything here is arithmetic over sizes the text measurement gives, so
// that the popup, DrawTip and MeasureTip agree to the pixel.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova::tip {

enum Alignment : long { kAlignCursor = 0, kAlignBelow = 1, kAlignAbove = 2, kAlignRight = 3, kAlignLeft = 4 };
enum IconKind : long { kIconNone = 0, kIconInfo = 1, kIconWarning = 2, kIconError = 3, kIconCustom = 4 };

// The side of the body the stem leaves from, facing the anchor.
enum class Side { None, Top, Bottom, Left, Right };

constexpr int kBorder = 1;
constexpr int kPadding = 4, kBalloonPadding = 8;
constexpr int kIconGap = 6;        // icon to title (or text)
constexpr int kTitleGap = 4;       // header to text
constexpr int kStemLength = 12, kStemBase = 16, kStemMargin = 8;
constexpr int kCorner = 16;        // the balloon's corner ellipse
constexpr int kAnchorGap = 2;      // a rectangle tip's distance from its anchor
constexpr int kCursorStemOffset = 16;   // a cursor balloon's body starts this far left of the hotspot

// What the client chose for the look of every tip.
struct Look {
    std::wstring title;
    long icon = kIconNone;
    HICON customIcon = nullptr;   // borrowed
    long maxWidth = 0;
    LOGFONTW font{};
    COLORREF fore = 0, back = 0;  // translated
    bool balloon = false;
};

// The content laid out in the body, relative to the body's top-left.
struct Content {
    SIZE body{};
    RECT icon{}, title{}, text{};   // empty when absent
    bool hasIcon = false, hasTitle = false;
};

// The body and stem in the window's own coordinates.
struct Shape {
    SIZE window{};
    POINT bodyOrigin{};
    Side stem = Side::None;
    POINT stemPoints[3]{};          // base, base, tip
};

// The text font and its bold form, made for one layout or paint.
class Fonts {
public:
    explicit Fonts(const LOGFONTW& font);
    HFONT normal() const { return normal_.get(); }
    HFONT bold() const { return bold_.get(); }

private:
    GdiObject<HFONT> normal_, bold_;
};

// Text flags shared by measuring and drawing.
UINT textFormat(const Look& look);
// The small-icon size of the screen.
SIZE iconSize();

// Lays out title, icon and text; `dc` only measures.
Content measure(HDC dc, const Fonts& fonts, const Look& look, const std::wstring& text);

// The shape of a body of that size: a rectangle, or a balloon with its stem on
// `stem`, its tip `tipOffset` pixels along that side of the window.
Shape shapeOf(SIZE body, bool balloon, Side stem, int tipOffset);

// Where a tip goes.
struct Anchor {
    RECT rect{};          // a tool's screen rectangle, or a point as an empty rectangle
    bool cursor = false;  // the anchor is the pointer's hotspot (rect.left, rect.top)
    int cursorBelow = 0;  // height of the pointer image below the hotspot
};
struct Placement {
    POINT topLeft{};      // of the window, on the screen
    Side side = Side::Top;   // the side facing the anchor, after flipping
    Shape shape;
};
Placement place(SIZE body, bool balloon, long alignment, const Anchor& anchor, const RECT& workArea);

// The stem side a client's alignment asks for, before any flipping.
Side stemSideOf(long alignment);

// The pointer's height below its hotspot (SM_CYCURSOR / 2 when it cannot be told).
int cursorHeightBelowHotspot();
// The work area of the monitor nearest the point.
RECT workAreaAt(POINT p);

}  // namespace tova::tip
