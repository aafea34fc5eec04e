#include "tooltip_paint.h"

namespace tova::tip {

namespace {

HBITMAP makeSection(HDC dc, SIZE size, uint32_t** bits) {
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = size.cx;
    bi.bmiHeader.biHeight = -size.cy;   // top-down
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    bi.bmiHeader.biCompression = BI_RGB;
    void* p = nullptr;
    HBITMAP b = size.cx > 0 && size.cy > 0 ? CreateDIBSection(dc, &bi, DIB_RGB_COLORS, &p, nullptr, 0) : nullptr;
    *bits = b ? static_cast<uint32_t*>(p) : nullptr;
    return b;
}

HICON standardIcon(long kind) {
    const SIZE s = iconSize();
    // IDI_INFORMATION, IDI_WARNING, IDI_ERROR as wide resource names.
    LPCWSTR id = MAKEINTRESOURCEW(kind == kIconInfo ? 32516 : kind == kIconWarning ? 32515 : 32513);
    // Shared icons belong to the system: never destroyed.
    return static_cast<HICON>(LoadImageW(nullptr, id, IMAGE_ICON, s.cx, s.cy, LR_SHARED));
}

RECT offset(RECT r, POINT by) {
    OffsetRect(&r, by.x, by.y);
    return r;
}

}  // namespace

Surface::Surface(SIZE size)
    : size_(size), dc_(nullptr), bitmap_(makeSection(dc_.get(), size, &bits_)), selected_(dc_.get(), bitmap_.get()) {}

GdiObject<HRGN> shapeRegion(const Content& content, const Shape& shape, bool balloon) {
    const POINT o = shape.bodyOrigin;
    const SIZE b = content.body;
    if (!balloon) return GdiObject<HRGN>(CreateRectRgn(o.x, o.y, o.x + b.cx, o.y + b.cy));
    // Region edges are exclusive: one more pixel makes the ellipses meet the body's size.
    GdiObject<HRGN> body(CreateRoundRectRgn(o.x, o.y, o.x + b.cx + 1, o.y + b.cy + 1, kCorner, kCorner));
    if (!body || shape.stem == Side::None) return body;
    GdiObject<HRGN> stem(CreatePolygonRgn(shape.stemPoints, 3, WINDING));
    if (stem) CombineRgn(body.get(), body.get(), stem.get(), RGN_OR);
    return body;
}

std::unique_ptr<Surface> render(const Look& look, const Fonts& fonts, const std::wstring& text,
                                const Content& content, const Shape& shape) {
    auto surface = std::make_unique<Surface>(shape.window);
    Surface mask(shape.window);
    GdiObject<HRGN> region = shapeRegion(content, shape, look.balloon);
    if (!surface->ok() || !mask.ok() || !region) return nullptr;
    HDC dc = surface->dc();
    Brush back(CreateSolidBrush(look.back)), fore(CreateSolidBrush(look.fore));
    Brush white(CreateSolidBrush(RGB(255, 255, 255)));
    if (!back || !fore || !white) return nullptr;
    FillRgn(dc, region.get(), back.get());
    FrameRgn(dc, region.get(), fore.get(), 1, 1);
    FillRgn(mask.dc(), region.get(), white.get());

    const POINT o = shape.bodyOrigin;
    if (content.hasIcon) {
        HICON icon = look.icon == kIconCustom ? look.customIcon : standardIcon(look.icon);
        const RECT r = offset(content.icon, o);
        if (icon) DrawIconEx(dc, r.left, r.top, icon, r.right - r.left, r.bottom - r.top, 0, nullptr, DI_NORMAL);
    }
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, look.fore);
    if (content.hasTitle) {
        Selection sel(dc, fonts.bold());
        RECT r = offset(content.title, o);
        DrawTextW(dc, look.title.c_str(), static_cast<int>(look.title.size()), &r, DT_NOPREFIX | DT_EXPANDTABS);
    }
    {
        Selection sel(dc, fonts.normal());
        RECT r = offset(content.text, o);
        DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &r, textFormat(look));
    }
    GdiFlush();
    // GDI leaves alpha undefined: the shape decides it, and outside it nothing stays.
    const size_t n = static_cast<size_t>(shape.window.cx) * static_cast<size_t>(shape.window.cy);
    uint32_t* px = surface->bits();
    const uint32_t* m = mask.bits();
    for (size_t i = 0; i < n; ++i) px[i] = (m[i] & 0xFFFFFF) ? (px[i] | 0xFF000000u) : 0;
    return surface;
}

bool compose(HDC dc, int x, int y, const Surface& s) {
    const SIZE size = s.size();
    Surface work(size);
    if (!work.ok()) return false;
    if (!BitBlt(work.dc(), 0, 0, size.cx, size.cy, dc, x, y, SRCCOPY)) {
        const BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
        return AlphaBlend(dc, x, y, size.cx, size.cy, s.dc(), 0, 0, size.cx, size.cy, blend) != FALSE;
    }
    GdiFlush();
    const size_t n = static_cast<size_t>(size.cx) * static_cast<size_t>(size.cy);
    const uint32_t* src = s.bits();
    uint32_t* dst = work.bits();
    for (size_t i = 0; i < n; ++i) {
        const uint32_t sp = src[i], dp = dst[i];
        const unsigned pa = sp >> 24;
        uint32_t out = 0;
        for (int shift = 0; shift < 24; shift += 8)
            out |= static_cast<uint32_t>(blendChannel((sp >> shift) & 0xFF, (dp >> shift) & 0xFF, pa, 255)) << shift;
        dst[i] = out;
    }
    return BitBlt(dc, x, y, size.cx, size.cy, work.dc(), 0, 0, SRCCOPY) != FALSE;
}

}  // namespace tova::tip
