#include "pattern_fills.h"

#include "gdi_draw.h"

#include <algorithm>

namespace tova {

bool fillHatched(HDC dc, const RECT& r, long hatch, long color, long backColor) {
    if (hatch < HS_HORIZONTAL || hatch > HS_DIAGCROSS) raise(kInvalidArgument);
    const COLORREF fore = colourArgument(color);
    const COLORREF back = backColor == -1 ? 0 : colourArgument(backColor);
    Brush brush(CreateHatchBrush(static_cast<int>(hatch), fore));
    if (!dc || !brush) return false;
    // Mode and colour are set before the brush is selected: Wine realises a
    // hatch brush once and ignores later changes.
    const int oldMode = SetBkMode(dc, backColor == -1 ? TRANSPARENT : OPAQUE);
    const COLORREF oldBack = SetBkColor(dc, back);
    bool ok = false;
    {
        Selection in(dc, brush.get());
        ok = in.ok() && PatBlt(dc, r.left, r.top, r.right - r.left, r.bottom - r.top, PATCOPY);
    }
    if (oldBack != CLR_INVALID) SetBkColor(dc, oldBack);
    if (oldMode) SetBkMode(dc, oldMode);
    return ok;
}

bool fillPattern(HDC dc, const RECT& r, HBITMAP bitmap, long originX, long originY) {
    BITMAP bm{};
    if (GetObjectType(bitmap) != OBJ_BITMAP || !GetObjectW(bitmap, sizeof bm, &bm) || bm.bmWidth < 1 ||
        bm.bmHeight < 1)
        raise(kInvalidArgument);
    Brush brush(CreatePatternBrush(bitmap));
    if (!dc || !brush) return false;
    // The origin modulo the tile: the same pattern, and within any system's range.
    auto wrap = [](long v, long n) { return static_cast<int>(((v % n) + n) % n); };
    POINT old{};
    if (!SetBrushOrgEx(dc, wrap(originX, bm.bmWidth), wrap(originY, bm.bmHeight), &old)) return false;
    bool ok = false;
    {
        Selection in(dc, brush.get());
        ok = in.ok() && PatBlt(dc, r.left, r.top, r.right - r.left, r.bottom - r.top, PATCOPY);
    }
    SetBrushOrgEx(dc, old.x, old.y, nullptr);
    return ok;
}

bool drawFrame3D(HDC dc, const RECT& r, long style, long width, long highlight, long shadow) {
    if (style < tovaFrameRaised || style > tovaFrameBump || width < 1) raise(kInvalidArgument);
    Brush light(CreateSolidBrush(colourArgument(highlight)));
    Brush dark(CreateSolidBrush(colourArgument(shadow)));
    if (!dc || !light || !dark || r.right <= r.left || r.bottom <= r.top) return false;
    // Rings from the outside in: raised ones light at top and left, sunken ones dark.
    const bool outerRaised = style == tovaFrameRaised || style == tovaFrameBump;
    const long long rings = style >= tovaFrameEtched ? 2LL * width : width;
    // Rings wholly outside the clip box are skipped, so a huge width on a
    // huge rectangle costs what can be seen.
    RECT clip{};
    const int kind = GetClipBox(dc, &clip);
    if (kind == ERROR || kind == NULLREGION) return true;
    long long first = std::min({static_cast<long long>(clip.left) - r.left, static_cast<long long>(clip.top) - r.top,
                                static_cast<long long>(r.right) - clip.right,
                                static_cast<long long>(r.bottom) - clip.bottom});
    first = std::max(0LL, first);
    const long long last = std::min(rings, first + (clip.right - clip.left) + (clip.bottom - clip.top) + 2);
    RECT ring = r;
    InflateRect(&ring, -static_cast<int>(std::min<long long>(first, 1LL << 30)),
                -static_cast<int>(std::min<long long>(first, 1LL << 30)));
    for (long long i = first; i < last && ring.right > ring.left && ring.bottom > ring.top; ++i) {
        const bool raised = i < width ? outerRaised : !outerRaised;
        HBRUSH first = raised ? light.get() : dark.get(), second = raised ? dark.get() : light.get();
        const RECT top{ring.left, ring.top, ring.right - 1, ring.top + 1};
        const RECT left{ring.left, ring.top, ring.left + 1, ring.bottom - 1};
        const RECT bottom{ring.left, ring.bottom - 1, ring.right, ring.bottom};
        const RECT right{ring.right - 1, ring.top, ring.right, ring.bottom};
        FillRect(dc, &top, first);
        FillRect(dc, &left, first);
        FillRect(dc, &bottom, second);
        FillRect(dc, &right, second);
        InflateRect(&ring, -1, -1);
    }
    return true;
}

}  // namespace tova
