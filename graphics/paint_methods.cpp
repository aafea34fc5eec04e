#include "paint_methods.h"

#include "bitmaps.h"
#include "gdi_draw.h"

namespace tova {

const ClassIdentity PaintMethods::kClass = {L"PaintMethods", &CLSID_PaintMethods, &IID__PaintMethods, nullptr};

HRESULT createPaintMethods(REFIID riid, void** ppv) { return PaintMethods::create(riid, ppv); }

namespace {

struct PictureFacts {
    ComPtr<IPicture> picture;
    SHORT type = PICTYPE_NONE;
    HANDLE handle = nullptr;
    long width = 0, height = 0;              // pixels
    OLE_XSIZE_HIMETRIC hmWidth = 0;
    OLE_YSIZE_HIMETRIC hmHeight = 0;
};

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

// Renders the picture's source rectangle into dc at (x, y, w, h) through IPicture.
bool render(const PictureFacts& f, HDC dc, long x, long y, long w, long h, long sx, long sy, long sw, long sh) {
    // Render takes the source in HIMETRIC, measured from the bottom edge.
    const double kx = static_cast<double>(f.hmWidth) / f.width, ky = static_cast<double>(f.hmHeight) / f.height;
    OLE_XPOS_HIMETRIC hx = static_cast<OLE_XPOS_HIMETRIC>(sx * kx);
    OLE_YPOS_HIMETRIC hy = static_cast<OLE_YPOS_HIMETRIC>(f.hmHeight - sy * ky);
    OLE_XSIZE_HIMETRIC hw = static_cast<OLE_XSIZE_HIMETRIC>(sw * kx);
    OLE_YSIZE_HIMETRIC hh = -static_cast<OLE_YSIZE_HIMETRIC>(sh * ky);
    return SUCCEEDED(f.picture->Render(dc, x, y, w, h, hx, hy, hw, hh, nullptr));
}

}  // namespace

PaintFailure paintPicture(IPictureDisp* disp, const PaintRequest& r) {
    PictureFacts f;
    if (!readPicture(disp, f)) return PaintFailure::BadPicture;
    if (r.width < 0 || r.height < 0 || r.srcWidth < 0 || r.srcHeight < 0) return PaintFailure::BadArgument;
    const long sw = r.srcWidth > 0 ? r.srcWidth : f.width - r.srcX;
    const long sh = r.srcHeight > 0 ? r.srcHeight : f.height - r.srcY;
    const long dw = r.width > 0 ? r.width : sw;
    const long dh = r.height > 0 ? r.height : sh;
    if (sw <= 0 || sh <= 0 || !r.dc) return PaintFailure::Platform;

    if (f.type == PICTYPE_BITMAP) {
        MemoryDc source(r.dc);
        if (source.get()) {
            Selection in(source.get(), f.handle);
            // A bitmap that is selected elsewhere cannot be selected here: render it instead.
            if (in.ok()) {
                BOOL ok = r.transparent
                              ? TransparentBlt(r.dc, r.x, r.y, dw, dh, source.get(), r.srcX, r.srcY, sw, sh,
                                               r.transparentColor)
                              : StretchBlt(r.dc, r.x, r.y, dw, dh, source.get(), r.srcX, r.srcY, sw, sh, SRCCOPY);
                return ok ? PaintFailure::None : PaintFailure::Platform;
            }
        }
    }
    if (!r.transparent)
        return render(f, r.dc, r.x, r.y, dw, dh, r.srcX, r.srcY, sw, sh) ? PaintFailure::None : PaintFailure::Platform;

    // Transparent icons and metafiles: render over the transparent colour, then leave it out.
    MemoryDc work(r.dc);
    Bitmap canvas(CreateCompatibleBitmap(r.dc, dw, dh));
    if (!work.get() || !canvas) return PaintFailure::Platform;
    Selection in(work.get(), canvas.get());
    Brush fill(CreateSolidBrush(r.transparentColor));
    RECT all{0, 0, dw, dh};
    if (!in.ok() || !fill || !FillRect(work.get(), &all, fill.get()) ||
        !render(f, work.get(), 0, 0, dw, dh, r.srcX, r.srcY, sw, sh))
        return PaintFailure::Platform;
    return TransparentBlt(r.dc, r.x, r.y, dw, dh, work.get(), 0, 0, dw, dh, r.transparentColor)
               ? PaintFailure::None
               : PaintFailure::Platform;
}

namespace {

bool paintOrRaise(IPictureDisp* picture, const PaintRequest& r) {
    switch (paintPicture(picture, r)) {
    case PaintFailure::None: return true;
    case PaintFailure::BadPicture: raise(kInvalidPicture);
    case PaintFailure::BadArgument: raise(kInvalidArgument);
    case PaintFailure::Platform: break;
    }
    return false;
}

PaintRequest request(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, LONG SrcX, LONG SrcY, LONG SrcWidth,
                     LONG SrcHeight) {
    PaintRequest r;
    r.dc = toHandle<HDC>(hDC);
    r.x = X, r.y = Y, r.width = Width, r.height = Height;
    r.srcX = SrcX, r.srcY = SrcY, r.srcWidth = SrcWidth, r.srcHeight = SrcHeight;
    return r;
}

}  // namespace

STDMETHODIMP PaintMethods::StretchPaintNormalStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                    IPictureDisp* Picture, LONG SrcX, LONG SrcY, LONG SrcWidth,
                                                    LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = toVB(paintOrRaise(Picture, request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight)));
    });
}

STDMETHODIMP PaintMethods::StretchPaintTransparentStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                         IPictureDisp* Picture, LONG TransparentColor, LONG SrcX,
                                                         LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                                         VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        long rgb = translateColor(TransparentColor);
        if (rgb == -1) raise(kInvalidArgument);
        r.transparent = true;
        r.transparentColor = static_cast<COLORREF>(rgb);
        *pRet = toVB(paintOrRaise(Picture, r));
    });
}

}  // namespace tova
