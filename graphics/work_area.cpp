#include "work_area.h"

#include <algorithm>
#include <cstring>

namespace tova {

Surface32::Surface32(int width, int height) : width_(width), height_(height) {
    if (width < 1 || height < 1 || static_cast<long long>(width) * height > kMaxWorkPixels) return;
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = width;
    bi.bmiHeader.biHeight = -height;  // top-down: row y at bits + y * width
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    dc_ = CreateCompatibleDC(nullptr);
    if (!dc_) return;
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(dc_, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!bitmap_) return;
    old_ = SelectObject(dc_, bitmap_);
    if (!old_ || old_ == HGDI_ERROR) {
        old_ = nullptr;
        return;
    }
    bits_ = static_cast<uint32_t*>(bits);
}

Surface32::~Surface32() {
    if (old_) SelectObject(dc_, old_);
    if (bitmap_) DeleteObject(bitmap_);
    if (dc_) DeleteDC(dc_);
}

void Surface32::clear() {
    if (bits_) std::memset(bits_, 0, static_cast<size_t>(width_) * height_ * 4);
}

bool readableDc(HDC dc) {
    const DWORD type = GetObjectType(dc);
    if (type != OBJ_DC && type != OBJ_MEMDC) return false;
    return GetDeviceCaps(dc, TECHNOLOGY) == DT_RASDISPLAY;
}

bool visiblePart(HDC dc, const RECT& area, RECT& visible) {
    RECT clip{};
    const int kind = GetClipBox(dc, &clip);
    if (kind == ERROR || kind == NULLREGION) return false;
    return IntersectRect(&visible, &area, &clip) != 0;
}

bool editArea(HDC dc, int x, int y, int w, int h, const std::function<void(const gradients::Pixels32&)>& edit) {
    Surface32 s(w, h);
    if (!dc || !s.ok() || !BitBlt(s.dc(), 0, 0, w, h, dc, x, y, SRCCOPY)) return false;
    GdiFlush();  // the DIB's memory is read directly
    edit(s.pixels());
    return BitBlt(dc, x, y, w, h, s.dc(), 0, 0, SRCCOPY) != 0;
}

namespace {

// About 256 KB of pixels per band.
int bandRows(int w, int h) { return std::max(1, std::min(h, (1 << 16) / std::max(w, 1))); }

}  // namespace

namespace {

// The visible part of `area` as a rectangle and the band work bitmap for it.
struct Banding {
    RECT visible{};
    int width = 0, height = 0, rows = 0;
    bool any = false;
    Banding(HDC dc, const RECT& area) {
        any = visiblePart(dc, area, visible);
        width = visible.right - visible.left;
        height = visible.bottom - visible.top;
        rows = bandRows(width, height);
    }
    gradients::Pixels32 band(const Surface32& s, const RECT& area, int top, int n) const {
        gradients::Pixels32 px = s.pixels();
        px.height = n;
        px.x0 = visible.left - area.left, px.y0 = visible.top - area.top + top;
        px.areaWidth = area.right - area.left, px.areaHeight = area.bottom - area.top;
        return px;
    }
};

}  // namespace

namespace {

// The area's visible part, band by band through one surface: each band read
// from dc first when `read`, changed by `change`, written back. Bands of
// `rowsAlike` areas are alike: the first is made once and written again.
bool bands(HDC dc, const RECT& area, bool read, bool rowsAlike,
           const std::function<void(const gradients::Pixels32&)>& change) {
    if (!dc) return false;
    Banding b(dc, area);
    if (!b.any) return true;
    Surface32 s(b.width, b.rows);
    if (!s.ok()) return false;
    const int x = b.visible.left, y = b.visible.top;
    for (int top = 0; top < b.height; top += b.rows) {
        const int n = std::min(b.rows, b.height - top);
        if (read && !BitBlt(s.dc(), 0, 0, b.width, n, dc, x, y + top, SRCCOPY)) return false;
        if (top == 0 || !rowsAlike) {
            GdiFlush();
            change(b.band(s, area, top, rowsAlike ? b.rows : n));
        }
        if (!BitBlt(dc, x, y + top, b.width, n, s.dc(), 0, 0, SRCCOPY)) return false;
    }
    return true;
}

}  // namespace

bool editBands(HDC dc, const RECT& area, const std::function<void(const gradients::Pixels32&)>& edit) {
    return bands(dc, area, true, false, edit);
}

bool writeBands(HDC dc, const RECT& area, const std::function<void(const gradients::Pixels32&)>& fill,
                bool rowsAlike) {
    return bands(dc, area, false, rowsAlike, fill);
}

bool writeSurface(HDC dc, int x, int y, const Surface32& surface) {
    return BitBlt(dc, x, y, surface.width(), surface.height(), surface.dc(), 0, 0, SRCCOPY) != 0;
}

bool platformBlend(HDC dc, int x, int y, const Surface32& layer) {
    BLENDFUNCTION f{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    return AlphaBlend(dc, x, y, layer.width(), layer.height(), layer.dc(), 0, 0, layer.width(), layer.height(),
                      f) != 0;
}

}  // namespace tova
