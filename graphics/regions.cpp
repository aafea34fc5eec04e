#include "regions.h"

#include "bitmaps.h"
#include "gdi_draw.h"

#include <memory>

namespace tova {

using Region = GdiObject<HRGN>;

namespace {

void checkRegion(HRGN r) {
    if (GetObjectType(r) != OBJ_REGION) raise(kInvalidArgument);
}

}  // namespace

HRGN createRegion(const RECT& r, long shape, long cornerWidth, long cornerHeight) {
    switch (shape) {
    case tovaRegionRectangle: return CreateRectRgn(r.left, r.top, r.right, r.bottom);
    case tovaRegionEllipse: return CreateEllipticRgn(r.left, r.top, r.right, r.bottom);
    case tovaRegionRoundRect:
        return CreateRoundRectRgn(r.left, r.top, r.right, r.bottom, static_cast<int>(cornerWidth),
                                  static_cast<int>(cornerHeight));
    default: raise(kInvalidArgument);
    }
}

HRGN createPolygonRegion(const std::vector<POINT>& points, long fillMode) {
    if (fillMode != ALTERNATE && fillMode != WINDING) raise(kInvalidArgument);
    return CreatePolygonRgn(points.data(), static_cast<int>(points.size()), static_cast<int>(fillMode));
}

HRGN regionFromBitmap(HBITMAP bitmap, long transparent) {
    BITMAP bm{};
    if (GetObjectType(bitmap) != OBJ_BITMAP || !GetObjectW(bitmap, sizeof bm, &bm)) raise(kInvalidArgument);
    const COLORREF key = transparent == -1 ? 0 : colourArgument(transparent);
    const int w = bm.bmWidth, h = bm.bmHeight;
    if (w < 1 || h < 1) return CreateRectRgn(0, 0, 0, 0);
    // The pixels as 32-bit top-down rows, whatever the bitmap's format.
    std::vector<uint32_t> px(static_cast<size_t>(w) * h);
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = w;
    bi.bmiHeader.biHeight = -h;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    {
        ScreenDc screen(nullptr);
        if (!screen.get() || GetDIBits(screen.get(), bitmap, 0, h, px.data(), &bi, DIB_RGB_COLORS) != h)
            return nullptr;
    }
    const uint32_t skip = transparent == -1 ? (px[0] & 0xFFFFFF)
                                            : (GetRValue(key) << 16 | GetGValue(key) << 8 | GetBValue(key));
    std::vector<RECT> runs;
    for (int y = 0; y < h; ++y) {
        const uint32_t* row = &px[static_cast<size_t>(y) * w];
        for (int x = 0; x < w;) {
            while (x < w && (row[x] & 0xFFFFFF) == skip) ++x;
            const int start = x;
            while (x < w && (row[x] & 0xFFFFFF) != skip) ++x;
            if (x > start) runs.push_back(RECT{start, y, x, y + 1});
        }
    }
    const size_t bytes = sizeof(RGNDATAHEADER) + runs.size() * sizeof(RECT);
    std::unique_ptr<uint8_t[]> data(new uint8_t[bytes]);
    RGNDATA* rd = reinterpret_cast<RGNDATA*>(data.get());
    rd->rdh.dwSize = sizeof(RGNDATAHEADER);
    rd->rdh.iType = RDH_RECTANGLES;
    rd->rdh.nCount = static_cast<DWORD>(runs.size());
    rd->rdh.nRgnSize = static_cast<DWORD>(runs.size() * sizeof(RECT));
    rd->rdh.rcBound = RECT{0, 0, w, h};
    if (!runs.empty()) memcpy(rd->Buffer, runs.data(), runs.size() * sizeof(RECT));
    return ExtCreateRegion(nullptr, static_cast<DWORD>(bytes), rd);
}

HRGN combineRegions(HRGN a, HRGN b, long mode) {
    if (mode < RGN_AND || mode > RGN_COPY) raise(kInvalidArgument);
    checkRegion(a);
    if (mode != RGN_COPY) checkRegion(b);
    Region out(CreateRectRgn(0, 0, 0, 0));
    if (!out || CombineRgn(out.get(), a, mode == RGN_COPY ? nullptr : b, static_cast<int>(mode)) == ERROR)
        return nullptr;
    return out.release();
}

bool fillRegion(HDC dc, HRGN region, long color, long frameColor, long frameWidth) {
    checkRegion(region);
    Brush fill(CreateSolidBrush(colourArgument(color)));
    Brush frame;
    if (frameColor != -1) {
        if (frameWidth < 1) raise(kInvalidArgument);
        frame = Brush(CreateSolidBrush(colourArgument(frameColor)));
        if (!frame) return false;
    }
    if (!dc || !fill || !FillRgn(dc, region, fill.get())) return false;
    return !frame || FrameRgn(dc, region, frame.get(), static_cast<int>(frameWidth), static_cast<int>(frameWidth));
}

}  // namespace tova
