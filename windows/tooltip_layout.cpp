#include "tooltip_layout.h"

#include <algorithm>

namespace tova::tip {

Fonts::Fonts(const LOGFONTW& font) : normal_(CreateFontIndirectW(&font)) {
    LOGFONTW b = font;
    b.lfWeight = FW_BOLD;
    bold_ = GdiObject<HFONT>(CreateFontIndirectW(&b));
}

UINT textFormat(const Look& look) {
    return DT_NOPREFIX | DT_EXPANDTABS | (look.maxWidth > 0 ? DT_WORDBREAK : 0);
}

SIZE iconSize() { return SIZE{GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON)}; }

namespace {

SIZE textExtent(HDC dc, HFONT font, const std::wstring& s, UINT format, long maxWidth) {
    if (s.empty()) return SIZE{0, 0};
    Selection sel(dc, font);
    RECT r{0, 0, maxWidth > 0 ? maxWidth : 0x7FFF, 0};
    DrawTextW(dc, s.c_str(), static_cast<int>(s.size()), &r, format | DT_CALCRECT);
    return SIZE{r.right - r.left, r.bottom - r.top};
}

RECT at(long x, long y, SIZE s) { return RECT{x, y, x + s.cx, y + s.cy}; }

}  // namespace

Content measure(HDC dc, const Fonts& fonts, const Look& look, const std::wstring& text) {
    Content c;
    const long inset = kBorder + (look.balloon ? kBalloonPadding : kPadding);
    const SIZE icon = iconSize();
    c.hasIcon = look.icon != kIconNone && (look.icon != kIconCustom || look.customIcon);
    c.hasTitle = !look.title.empty();
    const SIZE textSize = textExtent(dc, fonts.normal(), text, textFormat(look), look.maxWidth);
    const long iconWidth = c.hasIcon ? icon.cx + kIconGap : 0;
    long width, height;
    if (c.hasTitle) {
        const SIZE titleSize = textExtent(dc, fonts.bold(), look.title, DT_NOPREFIX | DT_EXPANDTABS, 0);
        const long header = std::max(c.hasIcon ? icon.cy : 0L, titleSize.cy);
        if (c.hasIcon) c.icon = at(inset, inset, icon);
        c.title = at(inset + iconWidth, inset, titleSize);
        c.text = at(inset, inset + header + kTitleGap, textSize);
        width = std::max(iconWidth + titleSize.cx, textSize.cx);
        height = header + kTitleGap + textSize.cy;
    } else {
        if (c.hasIcon) c.icon = at(inset, inset, icon);
        c.text = at(inset + iconWidth, inset, textSize);
        width = iconWidth + textSize.cx;
        height = std::max(c.hasIcon ? icon.cy : 0L, textSize.cy);
    }
    c.body = SIZE{width + 2 * inset, height + 2 * inset};
    return c;
}

Side stemSideOf(long alignment) {
    switch (alignment) {
    case kAlignAbove: return Side::Bottom;
    case kAlignRight: return Side::Left;
    case kAlignLeft: return Side::Right;
    default: return Side::Top;   // below, and below the pointer
    }
}

Shape shapeOf(SIZE body, bool balloon, Side stem, int tipOffset) {
    Shape s;
    s.window = body;
    if (!balloon || stem == Side::None) return s;
    s.stem = stem;
    const bool vertical = stem == Side::Top || stem == Side::Bottom;
    const long along = vertical ? body.cx : body.cy;
    // The base keeps clear of the rounded corners; a body too small for that centres it.
    const long low = kStemMargin + kStemBase / 2, high = along - kStemMargin - kStemBase / 2;
    const long base = low <= high ? std::clamp<long>(tipOffset, low, high) : along / 2;
    const long tip = std::clamp<long>(tipOffset, 0, std::max(0L, along - 1));
    // The base reaches two pixels into the body, so that the frame runs round
    // the stem and not across it.
    switch (stem) {
    case Side::Top:
        s.window.cy += kStemLength;
        s.bodyOrigin = POINT{0, kStemLength};
        s.stemPoints[0] = POINT{base - kStemBase / 2, kStemLength + 2};
        s.stemPoints[1] = POINT{base + kStemBase / 2, kStemLength + 2};
        s.stemPoints[2] = POINT{tip, 0};
        break;
    case Side::Bottom:
        s.window.cy += kStemLength;
        s.stemPoints[0] = POINT{base - kStemBase / 2, body.cy - 2};
        s.stemPoints[1] = POINT{base + kStemBase / 2, body.cy - 2};
        s.stemPoints[2] = POINT{tip, body.cy + kStemLength};
        break;
    case Side::Left:
        s.window.cx += kStemLength;
        s.bodyOrigin = POINT{kStemLength, 0};
        s.stemPoints[0] = POINT{kStemLength + 2, base - kStemBase / 2};
        s.stemPoints[1] = POINT{kStemLength + 2, base + kStemBase / 2};
        s.stemPoints[2] = POINT{0, tip};
        break;
    case Side::Right:
        s.window.cx += kStemLength;
        s.stemPoints[0] = POINT{body.cx - 2, base - kStemBase / 2};
        s.stemPoints[1] = POINT{body.cx - 2, base + kStemBase / 2};
        s.stemPoints[2] = POINT{body.cx + kStemLength, tip};
        break;
    case Side::None:
        break;
    }
    return s;
}

namespace {

Side opposite(Side s) {
    switch (s) {
    case Side::Top: return Side::Bottom;
    case Side::Bottom: return Side::Top;
    case Side::Left: return Side::Right;
    case Side::Right: return Side::Left;
    default: return s;
    }
}

// The window's top-left and the stem tip for a tip whose stem (or, for a
// rectangle, whose anchor) is on `side` of its body.
struct Candidate {
    POINT topLeft;
    POINT tip;
    SIZE window;
};

Candidate candidate(SIZE body, bool balloon, Side side, const Anchor& a) {
    const RECT& r = a.rect;
    const long midX = (r.left + r.right) / 2, midY = (r.top + r.bottom) / 2;
    const long stem = balloon ? kStemLength : 0, gap = balloon ? 0 : kAnchorGap;
    Candidate c;
    c.window = body;
    if (side == Side::Top || side == Side::Bottom) c.window.cy += stem;
    else c.window.cx += stem;
    if (a.cursor) {
        // The pointer's hotspot: below the pointer image, or above the hotspot once flipped.
        const POINT p{r.left, r.top};
        c.tip = p;
        const long left = balloon ? p.x - kCursorStemOffset : p.x;
        c.topLeft = side == Side::Top ? POINT{left, balloon ? p.y : p.y + a.cursorBelow}
                                      : POINT{left, p.y - c.window.cy};
        return c;
    }
    switch (side) {
    case Side::Top:   // below the anchor
        c.tip = POINT{midX, r.bottom};
        c.topLeft = POINT{midX - body.cx / 2, r.bottom + gap};
        break;
    case Side::Bottom:   // above it
        c.tip = POINT{midX, r.top - 1};
        c.topLeft = POINT{midX - body.cx / 2, r.top - gap - c.window.cy};
        break;
    case Side::Left:   // on its right
        c.tip = POINT{r.right, midY};
        c.topLeft = POINT{r.right + gap, midY - body.cy / 2};
        break;
    case Side::Right:   // on its left
        c.tip = POINT{r.left - 1, midY};
        c.topLeft = POINT{r.left - gap - c.window.cx, midY - body.cy / 2};
        break;
    case Side::None:
        break;
    }
    return c;
}

// Whether a window at that place crosses the work area's edge on the side it grows towards.
bool overflows(const Candidate& c, Side side, const RECT& work) {
    switch (side) {
    case Side::Top: return c.topLeft.y + c.window.cy > work.bottom;
    case Side::Bottom: return c.topLeft.y < work.top;
    case Side::Left: return c.topLeft.x + c.window.cx > work.right;
    case Side::Right: return c.topLeft.x < work.left;
    default: return false;
    }
}

}  // namespace

Placement place(SIZE body, bool balloon, long alignment, const Anchor& anchor, const RECT& work) {
    Side side = stemSideOf(alignment);
    Candidate c = candidate(body, balloon, side, anchor);
    if (overflows(c, side, work)) {
        const Candidate flipped = candidate(body, balloon, opposite(side), anchor);
        if (!overflows(flipped, opposite(side), work)) {
            side = opposite(side);
            c = flipped;
        }
    }
    // Then inside the work area, the top-left edge winning when it is too small.
    c.topLeft.x = std::max(work.left, std::min(c.topLeft.x, work.right - c.window.cx));
    c.topLeft.y = std::max(work.top, std::min(c.topLeft.y, work.bottom - c.window.cy));
    Placement p;
    p.topLeft = c.topLeft;
    p.side = side;
    const bool vertical = side == Side::Top || side == Side::Bottom;
    const long tipOffset = vertical ? c.tip.x - c.topLeft.x : c.tip.y - c.topLeft.y;
    p.shape = shapeOf(body, balloon, side, tipOffset);
    return p;
}

int cursorHeightBelowHotspot() {
    CURSORINFO ci{};
    ci.cbSize = sizeof ci;
    ICONINFO ii{};
    if (GetCursorInfo(&ci) && ci.hCursor && GetIconInfo(ci.hCursor, &ii)) {
        GdiObject<HBITMAP> mask(ii.hbmMask), colour(ii.hbmColor);
        BITMAP bm{};
        if (mask && GetObjectW(mask.get(), sizeof bm, &bm)) {
            const long height = colour ? bm.bmHeight : bm.bmHeight / 2;
            if (height > static_cast<long>(ii.yHotspot)) return static_cast<int>(height - ii.yHotspot);
        }
    }
    return GetSystemMetrics(SM_CYCURSOR) / 2;
}

RECT workAreaAt(POINT p) {
    MONITORINFO mi{};
    mi.cbSize = sizeof mi;
    if (GetMonitorInfoW(MonitorFromPoint(p, MONITOR_DEFAULTTONEAREST), &mi)) return mi.rcWork;
    RECT r{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &r, 0);
    return r;
}

}  // namespace tova::tip
