#include "work_area.h"

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

bool writeSurface(HDC dc, int x, int y, const Surface32& surface) {
    return BitBlt(dc, x, y, surface.width(), surface.height(), surface.dc(), 0, 0, SRCCOPY) != 0;
}

bool platformBlend(HDC dc, int x, int y, const Surface32& layer) {
    BLENDFUNCTION f{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    return AlphaBlend(dc, x, y, layer.width(), layer.height(), layer.dc(), 0, 0, layer.width(), layer.height(),
                      f) != 0;
}

}  // namespace tova
