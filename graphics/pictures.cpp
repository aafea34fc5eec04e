#include "pictures.h"

#include "bitmaps.h"
#include "work_area.h"

#include <algorithm>
#include <vector>

namespace tova {

bool readPicture(IPictureDisp* disp, PictureFacts& f) {
    if (!disp) return false;
    f.picture = ComPtr<IPictureDisp>(disp).as<IPicture>(IID_IPicture);
    if (!f.picture) return false;
    OLE_HANDLE h = 0;
    if (FAILED(f.picture->get_Type(&f.type)) || FAILED(f.picture->get_Handle(&h)) || !h) return false;
    f.handle = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(h));
    if (f.type == PICTYPE_NONE || f.type == PICTYPE_UNINITIALIZED) return false;
    f.picture->get_Width(&f.hmWidth);
    f.picture->get_Height(&f.hmHeight);
    if (f.type == PICTYPE_BITMAP) {
        BITMAP bm{};
        if (!GetObjectW(f.handle, sizeof bm, &bm)) return false;
        f.width = bm.bmWidth;
        f.height = bm.bmHeight;
    } else {
        // Icons and metafiles know their size in HIMETRIC only.
        ScreenDc screen(nullptr);
        int dx = screen.get() ? GetDeviceCaps(screen.get(), LOGPIXELSX) : 96;
        int dy = screen.get() ? GetDeviceCaps(screen.get(), LOGPIXELSY) : 96;
        f.width = MulDiv(f.hmWidth, dx, 2540);
        f.height = MulDiv(f.hmHeight, dy, 2540);
    }
    return f.width > 0 && f.height > 0;
}

namespace {

// Renders the picture's source rectangle into dc at (x, y, w, h) through IPicture.
bool render(const PictureFacts& f, HDC dc, long x, long y, long w, long h, long sx, long sy, long sw, long sh) {
    // A whole icon is drawn by DrawIconEx: Wine's picture renders icons
    // without their alpha channel, DrawIconEx blends it on both systems.
    if (f.type == PICTYPE_ICON && sx == 0 && sy == 0 && sw == f.width && sh == f.height)
        return DrawIconEx(dc, x, y, static_cast<HICON>(f.handle), w, h, 0, nullptr, DI_NORMAL) != 0;
    // Render takes the source in HIMETRIC, measured from the bottom edge.
    const double kx = static_cast<double>(f.hmWidth) / f.width, ky = static_cast<double>(f.hmHeight) / f.height;
    OLE_XPOS_HIMETRIC hx = static_cast<OLE_XPOS_HIMETRIC>(sx * kx);
    OLE_YPOS_HIMETRIC hy = static_cast<OLE_YPOS_HIMETRIC>(f.hmHeight - sy * ky);
    OLE_XSIZE_HIMETRIC hw = static_cast<OLE_XSIZE_HIMETRIC>(sw * kx);
    OLE_YSIZE_HIMETRIC hh = -static_cast<OLE_YSIZE_HIMETRIC>(sh * ky);
    return SUCCEEDED(f.picture->Render(dc, x, y, w, h, hx, hy, hw, hh, nullptr));
}

uint32_t pixelOf(COLORREF c) { return GetRValue(c) << 16 | GetGValue(c) << 8 | GetBValue(c); }

}  // namespace

PaintFailure resolve(const PictureFacts& f, PaintRequest& r) {
    if (r.width < 0 || r.height < 0 || r.srcWidth < 0 || r.srcHeight < 0) return PaintFailure::BadArgument;
    if (r.srcWidth == 0) r.srcWidth = f.width - r.srcX;
    if (r.srcHeight == 0) r.srcHeight = f.height - r.srcY;
    if (r.width == 0) r.width = r.srcWidth;
    if (r.height == 0) r.height = r.srcHeight;
    return r.srcWidth <= 0 || r.srcHeight <= 0 ? PaintFailure::Platform : PaintFailure::None;
}

bool paintResolved(const PictureFacts& f, const PaintRequest& r) {
    if (!r.dc) return false;
    const long dw = r.width, dh = r.height, sw = r.srcWidth, sh = r.srcHeight;
    if (f.type == PICTYPE_BITMAP) {
        MemoryDc source(r.dc);
        if (source.get()) {
            Selection in(source.get(), f.handle);
            // A bitmap that is selected elsewhere cannot be selected here: render it instead.
            if (in.ok()) {
                return r.transparent ? TransparentBlt(r.dc, r.x, r.y, dw, dh, source.get(), r.srcX, r.srcY, sw, sh,
                                                      r.transparentColor)
                                     : StretchBlt(r.dc, r.x, r.y, dw, dh, source.get(), r.srcX, r.srcY, sw, sh,
                                                  SRCCOPY);
            }
        }
    }
    if (!r.transparent) return render(f, r.dc, r.x, r.y, dw, dh, r.srcX, r.srcY, sw, sh);

    // Transparent icons and metafiles: render over the transparent colour, then leave it out.
    MemoryDc work(r.dc);
    Bitmap canvas(CreateCompatibleBitmap(r.dc, dw, dh));
    if (!work.get() || !canvas) return false;
    Selection in(work.get(), canvas.get());
    Brush fill(CreateSolidBrush(r.transparentColor));
    RECT all{0, 0, dw, dh};
    if (!in.ok() || !fill || !FillRect(work.get(), &all, fill.get()) ||
        !render(f, work.get(), 0, 0, dw, dh, r.srcX, r.srcY, sw, sh))
        return false;
    return TransparentBlt(r.dc, r.x, r.y, dw, dh, work.get(), 0, 0, dw, dh, r.transparentColor) != 0;
}

PaintFailure paintPicture(IPictureDisp* disp, const PaintRequest& request) {
    PictureFacts f;
    if (!readPicture(disp, f)) return PaintFailure::BadPicture;
    PaintRequest r = request;
    PaintFailure failure = resolve(f, r);
    if (failure != PaintFailure::None) return failure;
    return paintResolved(f, r) ? PaintFailure::None : PaintFailure::Platform;
}

bool rasteriseDrawing(const std::function<bool(HDC)>& draw, Surface32& layer) {
    Surface32 white(layer.width(), layer.height());
    if (!layer.ok() || !white.ok()) return false;
    layer.clear();
    const gradients::Pixels32 b = layer.pixels(), w = white.pixels();
    for (int y = 0; y < w.height; ++y) std::fill(w.row(y), w.row(y) + w.width, 0x00FFFFFFu);
    if (!draw(layer.dc()) || !draw(white.dc())) return false;
    GdiFlush();
    for (int y = 0; y < b.height; ++y) {
        uint32_t* over = b.row(y);
        const uint32_t* under = w.row(y);
        for (int x = 0; x < b.width; ++x) {
            // Over black a pixel is its premultiplied colour; white shows how much was covered.
            const uint32_t k = over[x], v = under[x];
            int cover = 255;
            for (int shift = 0; shift < 24; shift += 8)
                cover = std::min(cover, 255 - (static_cast<int>((v >> shift) & 0xFF) - static_cast<int>((k >> shift) & 0xFF)));
            cover = std::max(cover, 0);
            uint32_t c = k & 0xFFFFFF;
            if (cover == 0) c = 0;
            over[x] = c | static_cast<uint32_t>(cover) << 24;
        }
    }
    return true;
}

namespace {

// A 32-bit bitmap's own pixels, alpha included, scaled to the layer by nearest neighbour.
bool copyWithAlpha(const PictureFacts& f, const PaintRequest& r, Surface32& layer) {
    BITMAP bm{};
    if (!GetObjectW(f.handle, sizeof bm, &bm) || bm.bmBitsPixel != 32) return false;
    std::vector<uint32_t> px(static_cast<size_t>(f.width) * f.height);
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = f.width;
    bi.bmiHeader.biHeight = -f.height;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    ScreenDc screen(nullptr);
    if (!screen.get() || GetDIBits(screen.get(), static_cast<HBITMAP>(f.handle), 0, f.height, px.data(), &bi,
                                   DIB_RGB_COLORS) != f.height)
        return false;
    const gradients::Pixels32 out = layer.pixels();
    for (int y = 0; y < out.height; ++y) {
        const long sy = std::min<long>(f.height - 1, r.srcY + static_cast<long long>(y) * r.srcHeight / out.height);
        for (int x = 0; x < out.width; ++x) {
            const long sx = std::min<long>(f.width - 1, r.srcX + static_cast<long long>(x) * r.srcWidth / out.width);
            out.row(y)[x] = sy >= 0 && sx >= 0 ? px[static_cast<size_t>(sy) * f.width + sx] : 0;
        }
    }
    return true;
}

}  // namespace

bool rasterise(const PictureFacts& f, const PaintRequest& r, bool alphaChannel, Surface32& layer) {
    if (!layer.ok()) return false;
    const uint32_t key = pixelOf(r.transparentColor);
    if (f.type == PICTYPE_BITMAP) {
        if (alphaChannel && copyWithAlpha(f, r, layer)) return true;
        MemoryDc source(layer.dc());
        if (!source.get()) return false;
        Selection in(source.get(), f.handle);
        if (in.ok()) {
            const int mode = r.dc ? GetStretchBltMode(r.dc) : 0;
            if (mode) SetStretchBltMode(layer.dc(), mode);
            if (!StretchBlt(layer.dc(), 0, 0, layer.width(), layer.height(), source.get(), r.srcX, r.srcY,
                            r.srcWidth, r.srcHeight, SRCCOPY))
                return false;
            GdiFlush();
            const gradients::Pixels32 px = layer.pixels();
            for (int y = 0; y < px.height; ++y)
                for (uint32_t *p = px.row(y), *e = p + px.width; p < e; ++p)
                    *p = r.transparent && (*p & 0xFFFFFF) == key ? 0 : (*p | 0xFF000000u);
            return true;
        }
    }
    if (!rasteriseDrawing([&](HDC dc) { return render(f, dc, 0, 0, layer.width(), layer.height(), r.srcX, r.srcY,
                                                      r.srcWidth, r.srcHeight); },
                          layer))
        return false;
    if (r.transparent) {
        const gradients::Pixels32 px = layer.pixels();
        for (int y = 0; y < px.height; ++y)
            for (uint32_t *p = px.row(y), *e = p + px.width; p < e; ++p)
                if ((*p >> 24) == 255 && (*p & 0xFFFFFF) == key) *p = 0;
    }
    return true;
}

}  // namespace tova
