#include "picture_placement.h"

#include "bitmaps.h"
#include "picture_effects.h"
#include "work_area.h"

#include <algorithm>

namespace tova {

namespace {

long floorDiv(long a, long b) { return a >= 0 ? a / b : -((-a + b - 1) / b); }

// Paints the part of the picture placed at (px, py), own size, that lies in the area.
bool paintClipped(const PictureFacts& f, const PaintRequest& area, long px, long py) {
    const long left = std::max(px, area.x), top = std::max(py, area.y);
    const long right = std::min(px + f.width, area.x + area.width), bottom = std::min(py + f.height, area.y + area.height);
    if (right <= left || bottom <= top) return true;
    PaintRequest r = area;
    r.x = left, r.y = top, r.width = right - left, r.height = bottom - top;
    r.srcX = left - px, r.srcY = top - py, r.srcWidth = r.width, r.srcHeight = r.height;
    return paintResolved(f, r);
}

// Reads the picture and gives an area size of 0 the picture's own.
PaintFailure start(IPictureDisp* picture, PaintRequest& area, PictureFacts& f) {
    if (!readPicture(picture, f)) return PaintFailure::BadPicture;
    if (area.width < 0 || area.height < 0) return PaintFailure::BadArgument;
    if (area.width == 0) area.width = f.width;
    if (area.height == 0) area.height = f.height;
    return area.dc ? PaintFailure::None : PaintFailure::Platform;
}

}  // namespace

PaintFailure paintTiled(IPictureDisp* picture, const PaintRequest& request, long offsetX, long offsetY) {
    PictureFacts f;
    PaintRequest area = request;
    PaintFailure failure = start(picture, area, f);
    if (failure != PaintFailure::None) return failure;
    // Only the visible part is composed, from one rasterised copy of the
    // picture: a tiny picture over a large area costs one pass over its pixels.
    RECT visible{};
    const RECT whole{area.x, area.y, area.x + area.width, area.y + area.height};
    if (!visiblePart(area.dc, whole, visible)) return PaintFailure::None;
    PaintRequest one = area;
    one.x = one.y = one.srcX = one.srcY = 0;
    one.width = one.srcWidth = f.width;
    one.height = one.srcHeight = f.height;
    Surface32 tile(f.width, f.height), layer(visible.right - visible.left, visible.bottom - visible.top);
    if (!layer.ok() || !rasterise(f, one, false, tile)) return PaintFailure::Platform;
    const gradients::Pixels32 t = tile.pixels(), l = layer.pixels();
    auto wrap = [](long long v, long n) { return static_cast<int>(((v % n) + n) % n); };
    for (int y = 0; y < l.height; ++y) {
        const uint32_t* src = t.row(wrap(static_cast<long long>(visible.top) + y - area.y - offsetY, f.height));
        uint32_t* dst = l.row(y);
        int tx = wrap(static_cast<long long>(visible.left) - area.x - offsetX, f.width);
        for (int x = 0; x < l.width; ++x) {
            dst[x] = src[tx];
            if (++tx == f.width) tx = 0;
        }
    }
    return composeLayer(area.dc, visible.left, visible.top, layer) ? PaintFailure::None : PaintFailure::Platform;
}

PaintFailure paintCentred(IPictureDisp* picture, const PaintRequest& request) {
    PictureFacts f;
    PaintRequest area = request;
    PaintFailure failure = start(picture, area, f);
    if (failure != PaintFailure::None) return failure;
    const long x = area.x + floorDiv(area.width - f.width, 2), y = area.y + floorDiv(area.height - f.height, 2);
    return paintClipped(f, area, x, y) ? PaintFailure::None : PaintFailure::Platform;
}

PaintFailure paintFitted(IPictureDisp* picture, const PaintRequest& request, Fit fit) {
    PictureFacts f;
    PaintRequest area = request;
    PaintFailure failure = start(picture, area, f);
    if (failure != PaintFailure::None) return failure;
    // Width-bound when the area is relatively taller than the picture.
    const bool widthBound = static_cast<long long>(area.width) * f.height <= static_cast<long long>(area.height) * f.width;
    long w, h;
    if (widthBound != (fit == Fit::Cover)) {
        w = area.width;
        h = MulDiv(f.height, area.width, f.width);
    } else {
        h = area.height;
        w = MulDiv(f.width, area.height, f.height);
    }
    if (fit == Fit::ShrinkOnly && (w > f.width || h > f.height)) w = f.width, h = f.height;
    if (w < 1 || h < 1) return PaintFailure::Platform;
    PaintRequest r = area;
    r.x = area.x + floorDiv(area.width - w, 2), r.y = area.y + floorDiv(area.height - h, 2);
    r.width = w, r.height = h;
    r.srcX = r.srcY = 0, r.srcWidth = f.width, r.srcHeight = f.height;
    if (w <= area.width && h <= area.height) return paintResolved(f, r) ? PaintFailure::None : PaintFailure::Platform;
    // Cover: clipped to the area, the DC's own clipping put back afterwards.
    const int saved = SaveDC(area.dc);
    if (!saved) return PaintFailure::Platform;
    bool ok = IntersectClipRect(area.dc, area.x, area.y, area.x + area.width, area.y + area.height) != ERROR &&
              paintResolved(f, r);
    RestoreDC(area.dc, saved);
    return ok ? PaintFailure::None : PaintFailure::Platform;
}

ComPtr<IPictureDisp> pictureFromDC(HDC dc, long x, long y, long w, long h) {
    if (!dc) return nullptr;
    ScreenDc screen(nullptr);
    if (!screen.get()) return nullptr;
    Bitmap bitmap(CreateCompatibleBitmap(screen.get(), w, h));
    MemoryDc copy(screen.get());
    if (!bitmap || !copy.get()) return nullptr;
    {
        Selection in(copy.get(), bitmap.get());
        if (!in.ok() || !BitBlt(copy.get(), 0, 0, w, h, dc, x, y, SRCCOPY)) return nullptr;
    }
    return pictureOf(bitmap.release());
}

bool isIcon(HICON icon) {
    ICONINFO info{};
    if (!icon || !GetIconInfo(icon, &info)) return false;
    Bitmap mask(info.hbmMask), colour(info.hbmColor);   // copies made for us
    return true;
}

ComPtr<IPictureDisp> pictureFromHandle(HANDLE handle, int type, bool own) {
    PICTDESC desc{};
    desc.cbSizeofstruct = sizeof desc;
    desc.picType = static_cast<UINT>(type);
    HANDLE copy = own ? handle
                      : (type == PICTYPE_BITMAP ? CopyImage(handle, IMAGE_BITMAP, 0, 0, 0)
                                                : static_cast<HANDLE>(CopyIcon(static_cast<HICON>(handle))));
    if (!copy) return nullptr;
    if (type == PICTYPE_BITMAP)
        desc.bmp.hbitmap = static_cast<HBITMAP>(copy);
    else
        desc.icon.hicon = static_cast<HICON>(copy);
    ComPtr<IPictureDisp> picture;
    if (FAILED(OleCreatePictureIndirect(&desc, IID_IPictureDisp, TRUE, picture.putVoid())) || !picture) {
        // A copy of ours goes; a handle handed to us stays the caller's when no picture took it.
        if (!own) type == PICTYPE_BITMAP ? DeleteObject(copy) : DestroyIcon(static_cast<HICON>(copy));
        return nullptr;
    }
    return picture;
}

bool paintIcon(HDC dc, long x, long y, HICON icon, long w, long h, bool disabled) {
    if (!dc) return false;
    if (w == 0 || h == 0) {
        ICONINFO info{};
        if (!GetIconInfo(icon, &info)) return false;
        Bitmap mask(info.hbmMask), colour(info.hbmColor);   // copies made for us
        BITMAP bm{};
        GetObjectW(info.hbmColor ? info.hbmColor : info.hbmMask, sizeof bm, &bm);
        const long iw = bm.bmWidth, ih = info.hbmColor ? bm.bmHeight : bm.bmHeight / 2;
        if (w == 0) w = iw;
        if (h == 0) h = ih;
    }
    if (disabled) return paintIconDisabled(dc, icon, x, y, w, h);
    return DrawIconEx(dc, x, y, icon, w, h, 0, nullptr, DI_NORMAL) != 0;
}

}  // namespace tova
