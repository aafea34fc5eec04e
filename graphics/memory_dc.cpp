#include "memory_dc.h"

#include "../geometry/rectangle.h"
#include "bitmaps.h"
#include "paint_methods.h"

#include <vector>

namespace tova {

const ClassIdentity MemoryDC::kClass = {L"MemoryDC", &CLSID_MemoryDC, &IID__MemoryDC, nullptr};

HRESULT createMemoryDC(REFIID riid, void** ppv) { return MemoryDC::create(riid, ppv); }

// ------------------------------------------------------------ the surface

bool MemoryDC::build(long width, long height) {
    destroy();
    if (width < 1 || height < 1) return false;
    ScreenDc screen(nullptr);
    if (!screen.get()) return false;
    HBITMAP bitmap = CreateCompatibleBitmap(screen.get(), width, height);
    if (!bitmap) return false;
    dc_ = CreateCompatibleDC(screen.get());
    HGDIOBJ previous = dc_ ? ::SelectObject(dc_, bitmap) : nullptr;
    if (!previous || previous == HGDI_ERROR) {
        destroy();
        DeleteObject(bitmap);
        return false;
    }
    initialBitmap_ = previous;
    surface_ = bitmap;
    initialFont_ = GetCurrentObject(dc_, OBJ_FONT);
    initialBrush_ = GetCurrentObject(dc_, OBJ_BRUSH);
    initialPen_ = GetCurrentObject(dc_, OBJ_PEN);
    // A new surface draws text without a background box and stretches colour
    // on colour, unlike a fresh platform DC.
    SetBkMode(dc_, TRANSPARENT);
    ::SetStretchBltMode(dc_, COLORONCOLOR);
    width_ = width;
    height_ = height;
    return true;
}

void MemoryDC::destroy() {
    if (dc_) {
        // Put the fresh DC's objects back; anything else that comes out was
        // left selected by the client, who handed it to us with the surface.
        for (HGDIOBJ initial : {initialPen_, initialBrush_, initialFont_, initialBitmap_}) {
            if (!initial) continue;
            HGDIOBJ out = ::SelectObject(dc_, initial);
            if (out && out != HGDI_ERROR && out != initial && out != surface_) DeleteObject(out);
        }
        DeleteDC(dc_);
    }
    if (surface_) DeleteObject(surface_);
    // The initial objects are stock objects: nothing to delete.
    dc_ = nullptr;
    surface_ = nullptr;
    initialBitmap_ = initialFont_ = initialPen_ = initialBrush_ = nullptr;
    width_ = height_ = 0;
}

STDMETHODIMP MemoryDC::SetDimensions(LONG* Width, LONG* Height, VARIANT_BOOL* ForceNewDC, VARIANT_BOOL* pRet) {
    return guard([&] {
        long w = *required(Width), h = *required(Height);
        bool force = ForceNewDC ? fromVB(*ForceNewDC) : true;
        required(pRet);
        if (!(w > 0 && h >= 1)) {
            destroy();
            *pRet = VARIANT_FALSE;
            return;
        }
        // Any change of size, and by default every call, gives a new uncleared surface.
        if (force || w != width_ || h != height_) build(w, h);
        *pRet = toVB(dc_ && width_ == w && height_ == h);
    });
}

// ------------------------------------------------------------- properties

STDMETHODIMP MemoryDC::get_hDC(LONG* pRet) { return guard([&] { *required(pRet) = fromHandle(dc_); }); }
STDMETHODIMP MemoryDC::get_Width(LONG* pRet) { return guard([&] { *required(pRet) = width_; }); }
STDMETHODIMP MemoryDC::get_Height(LONG* pRet) { return guard([&] { *required(pRet) = height_; }); }

STDMETHODIMP MemoryDC::GetHandle(GDIObjectTypeConstants* ObjectType, LONG* pRet) {
    return guard([&] {
        long kind = *required(ObjectType);
        required(pRet);
        *pRet = 0;
        if (!dc_ || kind == tovaGDIObjectUnknown) return;
        UINT type = 0;
        switch (kind) {
        case tovaGDIObjectPen: type = OBJ_PEN; break;
        case tovaGDIObjectBrush: type = OBJ_BRUSH; break;
        case tovaGDIObjectFont: type = OBJ_FONT; break;
        case tovaGDIObjectBitmap: type = OBJ_BITMAP; break;
        default: return;  // no such object type: 0
        }
        *pRet = fromHandle(GetCurrentObject(dc_, type));
    });
}

STDMETHODIMP MemoryDC::get_Picture(IPictureDisp** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (!dc_ || width_ < 1 || height_ < 1) return;
        *pRet = pictureOf(compatibleCopy(dc_, width_, height_, dc_)).detach();
    });
}

STDMETHODIMP MemoryDC::get_BackMode(DeviceContextBackModeConstants* pRet) {
    return guard([&] {
        *required(pRet) = static_cast<DeviceContextBackModeConstants>(dc_ ? GetBkMode(dc_) : 0);
    });
}

STDMETHODIMP MemoryDC::put_BackMode(DeviceContextBackModeConstants v) {
    return guard([&] { if (dc_ && v != 0) SetBkMode(dc_, v); });
}

STDMETHODIMP MemoryDC::get_StretchBltMode(StretchBltModeConstants* pRet) {
    return guard([&] {
        *required(pRet) = static_cast<StretchBltModeConstants>(dc_ ? GetStretchBltMode(dc_) : 0);
    });
}

STDMETHODIMP MemoryDC::put_StretchBltMode(StretchBltModeConstants v) {
    return guard([&] { if (dc_ && v != 0) ::SetStretchBltMode(dc_, v); });
}

namespace {

// A colour Variant as a Long; raises the automation conversion error.
COLORREF colorValue(VARIANT& v) {
    Variant l;
    HRESULT hr = VariantChangeType(&l, &v, 0, VT_I4);
    if (FAILED(hr)) raise(hr == DISP_E_OVERFLOW ? kOverflow : kTypeMismatch);
    return static_cast<COLORREF>(V_I4(&l));
}

void colorResult(HDC dc, COLORREF (WINAPI *get)(HDC), VARIANT* out) {
    VariantInit(out);
    if (!dc) {
        V_VT(out) = VT_NULL;
        return;
    }
    V_VT(out) = VT_I4;
    V_I4(out) = static_cast<LONG>(get(dc));
}

bool isNull(const VARIANT& v) {
    const VARIANT* p = V_VT(&v) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(&v) : &v;
    return V_VT(p) == VT_NULL;
}

}  // namespace

STDMETHODIMP MemoryDC::get_BackColor(VARIANT* pRet) {
    return guard([&] { colorResult(dc_, GetBkColor, required(pRet)); });
}

STDMETHODIMP MemoryDC::put_BackColor(VARIANT v) {
    return guard([&] {
        if (isNull(v) || !dc_) return;
        SetBkColor(dc_, colorValue(v));
    });
}

STDMETHODIMP MemoryDC::get_ForeColor(VARIANT* pRet) {
    return guard([&] { colorResult(dc_, GetTextColor, required(pRet)); });
}

STDMETHODIMP MemoryDC::put_ForeColor(VARIANT v) {
    return guard([&] {
        if (isNull(v) || !dc_) return;
        SetTextColor(dc_, colorValue(v));
    });
}

STDMETHODIMP MemoryDC::get_ColorDepth(LONG* pRet) {
    return guard([&] { *required(pRet) = dc_ ? GetDeviceCaps(dc_, BITSPIXEL) : 0; });
}

// ---------------------------------------------------------------- drawing

STDMETHODIMP MemoryDC::SelectObject(LONG hObject, LONG* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = 0;
        if (!dc_) return;
        HGDIOBJ old = ::SelectObject(dc_, toHandle<HGDIOBJ>(hObject));
        *pRet = old == HGDI_ERROR ? 0 : fromHandle(old);
    });
}

STDMETHODIMP MemoryDC::CopyPicture(IPictureDisp* Picture, LONG X, LONG Y, LONG Width, LONG Height,
                                   LONG TransparentColor) {
    return guard([&] {
        if (!Picture || !dc_) return;
        PaintRequest r;
        r.dc = dc_;
        r.x = X, r.y = Y, r.width = Width, r.height = Height;
        if (TransparentColor != -1) {
            r.transparent = true;
            r.transparentColor = static_cast<COLORREF>(TransparentColor);
        }
        paintPicture(Picture, r);  // this class raises nothing of its own
    });
}

bool MemoryDC::measure(BSTR text, SIZE& size) const {
    size = SIZE{0, 0};
    const int length = static_cast<int>(SysStringLen(text));
    if (!dc_ || length == 0) return false;
    int bytes = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    if (bytes <= 0) return false;
    std::vector<char> ansi(static_cast<size_t>(bytes));
    WideCharToMultiByte(CP_ACP, 0, text, length, ansi.data(), bytes, nullptr, nullptr);
    // The count is the text's length in UTF-16 units, not in converted bytes:
    // deliberately so (multi-byte code pages measure short); never more than
    // the bytes there are.
    int count = length < bytes ? length : bytes;
    if (!GetTextExtentPoint32A(dc_, ansi.data(), count, &size)) {
        size = SIZE{0, 0};
        return false;
    }
    return true;
}

STDMETHODIMP MemoryDC::TextWidth(BSTR* Text, LONG* pRet) {
    return guard([&] {
        SIZE s;
        measure(*required(Text), s);
        *required(pRet) = s.cx;
    });
}

STDMETHODIMP MemoryDC::TextHeight(BSTR* Text, LONG* pRet) {
    return guard([&] {
        SIZE s;
        measure(*required(Text), s);
        *required(pRet) = s.cy;
    });
}

STDMETHODIMP MemoryDC::TextDimensions(BSTR* Text, LONG* TextWidth, LONG* TextHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        BSTR text = *required(Text);
        required(pRet);
        if (TextWidth) *TextWidth = 0;
        if (TextHeight) *TextHeight = 0;
        SIZE s;
        measure(text, s);
        if (TextWidth) *TextWidth = s.cx;
        if (TextHeight) *TextHeight = s.cy;
        *pRet = toVB(dc_ != nullptr);
    });
}

void MemoryDC::fill(const RECT& r, COLORREF color) {
    // The colour goes to the brush untranslated: system colours are not colours here.
    Brush brush(CreateSolidBrush(color));
    if (brush) FillRect(dc_, &r, brush.get());
}

STDMETHODIMP MemoryDC::Clear() {
    return guard([&] {
        if (dc_) fill(RECT{0, 0, width_, height_}, GetBkColor(dc_));
    });
}

STDMETHODIMP MemoryDC::Fill(TOVA_RECT* pRECT, LONG* Color) {
    return guard([&] {
        RECT r = toWin32(*required(pRECT));
        COLORREF c = static_cast<COLORREF>(*required(Color));
        if (dc_) fill(r, c);
    });
}

STDMETHODIMP MemoryDC::get_CurrentX(LONG* pRet) {
    return guard([&] {
        POINT p{0, 0};
        *required(pRet) = dc_ && GetCurrentPositionEx(dc_, &p) ? p.x : 0;
    });
}

STDMETHODIMP MemoryDC::put_CurrentX(LONG v) {
    return guard([&] {
        POINT p;
        if (dc_ && GetCurrentPositionEx(dc_, &p)) MoveToEx(dc_, v, p.y, nullptr);
    });
}

STDMETHODIMP MemoryDC::get_CurrentY(LONG* pRet) {
    return guard([&] {
        POINT p{0, 0};
        *required(pRet) = dc_ && GetCurrentPositionEx(dc_, &p) ? p.y : 0;
    });
}

STDMETHODIMP MemoryDC::put_CurrentY(LONG v) {
    return guard([&] {
        POINT p;
        if (dc_ && GetCurrentPositionEx(dc_, &p)) MoveToEx(dc_, p.x, v, nullptr);
    });
}

// ----------------------------------------------------------------- pixels

STDMETHODIMP MemoryDC::GetPixel(LONG* X, LONG* Y, LONG* pRet) {
    return guard([&] {
        long x = *required(X), y = *required(Y);
        *required(pRet) = dc_ ? static_cast<LONG>(::GetPixel(dc_, x, y)) : 0;
    });
}

STDMETHODIMP MemoryDC::GetPixel2(POINTAPI* pPOINT, LONG* pRet) {
    if (!pPOINT) return guard([] { raise(kInvalidArgument); });
    return GetPixel(&pPOINT->X, &pPOINT->Y, pRet);
}

STDMETHODIMP MemoryDC::SetPixel(LONG* X, LONG* Y, LONG* Color, LONG* pRet) {
    return guard([&] {
        long x = *required(X), y = *required(Y);
        COLORREF c = static_cast<COLORREF>(*required(Color));
        *required(pRet) = dc_ ? static_cast<LONG>(::SetPixel(dc_, x, y, c)) : 0;
    });
}

STDMETHODIMP MemoryDC::SetPixel2(POINTAPI* pPOINT, LONG* Color, LONG* pRet) {
    if (!pPOINT) return guard([] { raise(kInvalidArgument); });
    return SetPixel(&pPOINT->X, &pPOINT->Y, Color, pRet);
}

STDMETHODIMP MemoryDC::get_Rectangle(_Rectangle** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (!dc_) return;
        ComPtr<Rectangle> r = Rectangle::make();
        VARIANT_BOOL fitted = VARIANT_FALSE;
        if (FAILED(r->FitToDC(fromHandle(dc_), &fitted)) || !fitted) return;
        *pRet = r.detach();
    });
}

STDMETHODIMP MemoryDC::AlphaBlend(LONG hDestDC, LONG DestX, LONG DestY, LONG DestWidth, LONG DestHeight,
                                  LONG SourceX, LONG SourceY, LONG SourceWidth, LONG SourceHeight,
                                  unsigned char Opacity, VARIANT_BOOL HasAlphaChannel, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        if (!dc_ || width_ < 1 || height_ < 1) return;
        if (DestWidth < 1) DestWidth = width_;
        if (SourceWidth < 1) SourceWidth = width_;
        if (DestHeight < 1) DestHeight = height_;
        if (SourceHeight < 1) SourceHeight = height_;
        // An Opacity of 0 (the default) blends nothing visible: callers pass it.
        BLENDFUNCTION blend{AC_SRC_OVER, 0, Opacity,
                            static_cast<BYTE>(fromVB(HasAlphaChannel) ? AC_SRC_ALPHA : 0)};
        *pRet = toVB(::AlphaBlend(toHandle<HDC>(hDestDC), DestX, DestY, DestWidth, DestHeight, dc_, SourceX,
                                  SourceY, SourceWidth, SourceHeight, blend) != 0);
    });
}

}  // namespace tova
