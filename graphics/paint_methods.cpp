#include "paint_methods.h"

#include "arguments.h"
#include "colour_math.h"
#include "colourise.h"
#include "gdi_draw.h"
#include "picture_bytes.h"
#include "picture_effects.h"
#include "picture_placement.h"
#include "section_pixels.h"

#include <cmath>

namespace tova {

const ClassIdentity PaintMethods::kClass = {L"PaintMethods", &CLSID_PaintMethods, &IID__PaintMethods, nullptr};

HRESULT createPaintMethods(REFIID riid, void** ppv) { return PaintMethods::create(riid, ppv); }

namespace {

bool paintOrRaise(PaintFailure failure) {
    switch (failure) {
    case PaintFailure::None: return true;
    case PaintFailure::BadPicture: raise(kInvalidPicture);
    case PaintFailure::BadArgument: raise(kInvalidArgument);
    case PaintFailure::Platform: break;
    }
    return false;
}

PaintRequest request(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, LONG SrcX = 0, LONG SrcY = 0,
                     LONG SrcWidth = 0, LONG SrcHeight = 0) {
    PaintRequest r;
    r.dc = toHandle<HDC>(hDC);
    r.x = X, r.y = Y, r.width = Width, r.height = Height;
    r.srcX = SrcX, r.srcY = SrcY, r.srcWidth = SrcWidth, r.srcHeight = SrcHeight;
    return r;
}

// TransparentColor: -1 for none, otherwise a colour (5 when it is not one).
PaintRequest& leaveOut(PaintRequest& r, LONG transparentColor) {
    if (transparentColor != -1) {
        r.transparent = true;
        r.transparentColor = colourArgument(transparentColor);
    }
    return r;
}

colour::Rgb rgbArgument(LONG color) { return colour::fromColorRef(colourArgument(color)); }

}  // namespace

// ------------------------------------------------------------------ plain painting

STDMETHODIMP PaintMethods::StretchPaintNormalStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                    IPictureDisp* Picture, LONG SrcX, LONG SrcY, LONG SrcWidth,
                                                    LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = toVB(paintOrRaise(
            paintPicture(Picture, request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight))));
    });
}

STDMETHODIMP PaintMethods::StretchPaintTransparentStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                         IPictureDisp* Picture, LONG TransparentColor, LONG SrcX,
                                                         LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                                         VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        r.transparent = true;
        r.transparentColor = colourArgument(TransparentColor);
        *pRet = toVB(paintOrRaise(paintPicture(Picture, r)));
    });
}

// ------------------------------------------------------------------------- effects

STDMETHODIMP PaintMethods::StretchPaintMaskedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                    IPictureDisp* Picture, IPictureDisp* MaskPicture, LONG SrcX,
                                                    LONG SrcY, LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        *pRet = toVB(paintOrRaise(paintMasked(Picture, MaskPicture, r)));
    });
}

STDMETHODIMP PaintMethods::StretchPaintDisabledStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                      IPictureDisp* Picture, LONG TransparentColor, BYTE Lighten,
                                                      LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                                      VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        *pRet = toVB(paintOrRaise(paintDisabled(Picture, leaveOut(r, TransparentColor), Lighten)));
    });
}

STDMETHODIMP PaintMethods::StretchPaintEmbossedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                      IPictureDisp* Picture, LONG TransparentColor,
                                                      LONG HighlightColor, LONG ShadowColor, LONG SrcX, LONG SrcY,
                                                      LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        const COLORREF light = colourArgument(HighlightColor), dark = colourArgument(ShadowColor);
        *pRet = toVB(paintOrRaise(paintEmbossed(Picture, leaveOut(r, TransparentColor), light, dark)));
    });
}

STDMETHODIMP PaintMethods::StretchPaintShadowedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                      IPictureDisp* Picture, LONG TransparentColor,
                                                      LONG ShadowColor, LONG OffsetX, LONG OffsetY, BYTE Opacity,
                                                      LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                                      VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        const COLORREF shadow = colourArgument(ShadowColor);
        *pRet = toVB(
            paintOrRaise(paintShadowed(Picture, leaveOut(r, TransparentColor), shadow, OffsetX, OffsetY, Opacity)));
    });
}

STDMETHODIMP PaintMethods::StretchPaintAlphaStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                   IPictureDisp* Picture, BYTE Opacity, LONG TransparentColor,
                                                   VARIANT_BOOL HasAlphaChannel, LONG SrcX, LONG SrcY,
                                                   LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        *pRet = toVB(
            paintOrRaise(paintAlpha(Picture, leaveOut(r, TransparentColor), Opacity, fromVB(HasAlphaChannel))));
    });
}

STDMETHODIMP PaintMethods::StretchPaintAlphaGradientStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                           IPictureDisp* Picture, BYTE StartOpacity,
                                                           BYTE EndOpacity, GradientDirectionConstants Direction,
                                                           LONG TransparentColor, LONG SrcX, LONG SrcY,
                                                           LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        const gradients::Direction d = directionArgument(Direction);
        *pRet = toVB(paintOrRaise(
            paintAlphaGradient(Picture, leaveOut(r, TransparentColor), StartOpacity, EndOpacity, d)));
    });
}

STDMETHODIMP PaintMethods::StretchPaintColourisedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                        IPictureDisp* Picture, LONG Color, BYTE Amount,
                                                        LONG TransparentColor, LONG SrcX, LONG SrcY, LONG SrcWidth,
                                                        LONG SrcHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height, SrcX, SrcY, SrcWidth, SrcHeight);
        const COLORREF c = colourArgument(Color);
        *pRet = toVB(paintOrRaise(paintColourised(Picture, leaveOut(r, TransparentColor), c, Amount)));
    });
}

// ----------------------------------------------------------------------- placement

STDMETHODIMP PaintMethods::PaintTiledStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                            IPictureDisp* Picture, LONG OffsetX, LONG OffsetY,
                                            LONG TransparentColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height);
        *pRet = toVB(paintOrRaise(paintTiled(Picture, leaveOut(r, TransparentColor), OffsetX, OffsetY)));
    });
}

STDMETHODIMP PaintMethods::PaintCentredStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                              IPictureDisp* Picture, LONG TransparentColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        PaintRequest r = request(hDC, X, Y, Width, Height);
        *pRet = toVB(paintOrRaise(paintCentred(Picture, leaveOut(r, TransparentColor))));
    });
}

STDMETHODIMP PaintMethods::PaintFittedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                             IPictureDisp* Picture, PictureFitConstants Fit, LONG TransparentColor,
                                             VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        if (Fit < tovaFitInside || Fit > tovaFitCover) raise(kInvalidArgument);
        PaintRequest r = request(hDC, X, Y, Width, Height);
        *pRet = toVB(paintOrRaise(paintFitted(Picture, leaveOut(r, TransparentColor), static_cast<tova::Fit>(Fit))));
    });
}

// ------------------------------------------------------------- pictures and icons

STDMETHODIMP PaintMethods::PictureFromDC(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (Width < 1 || Height < 1) raise(kInvalidArgument);
        *pRet = pictureFromDC(toHandle<HDC>(hDC), X, Y, Width, Height).detach();
    });
}

STDMETHODIMP PaintMethods::PictureFromDC2(LONG hDC, TOVA_RECT* pRECT, IPictureDisp** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        const RECT r = rectArgument(pRECT);
        if (r.right - r.left < 1 || r.bottom - r.top < 1) raise(kInvalidArgument);
        *pRet = pictureFromDC(toHandle<HDC>(hDC), r.left, r.top, r.right - r.left, r.bottom - r.top).detach();
    });
}

STDMETHODIMP PaintMethods::PictureFromHandle(LONG Handle, PictureHandleTypeConstants HandleType,
                                             VARIANT_BOOL OwnHandle, IPictureDisp** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        HANDLE h = toHandle<HANDLE>(Handle);
        const bool bitmap = HandleType == tovaPictureBitmap;
        if ((!bitmap && HandleType != tovaPictureIcon) ||
            (bitmap ? GetObjectType(h) != OBJ_BITMAP : !isIcon(static_cast<HICON>(h))))
            raise(kInvalidArgument);
        *pRet = pictureFromHandle(h, HandleType, fromVB(OwnHandle)).detach();
    });
}

STDMETHODIMP PaintMethods::PictureDimensions(IPictureDisp* Picture, LONG* Width, LONG* Height, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet), required(Width), required(Height);
        PictureFacts f;
        if (!readPicture(Picture, f)) raise(kInvalidPicture);
        *Width = f.width, *Height = f.height;
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP PaintMethods::PaintIcon(LONG hDC, LONG X, LONG Y, LONG hIcon, LONG Width, LONG Height,
                                     VARIANT_BOOL Disabled, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        HICON icon = toHandle<HICON>(hIcon);
        if (!isIcon(icon) || Width < 0 || Height < 0) raise(kInvalidArgument);
        *pRet = toVB(paintIcon(toHandle<HDC>(hDC), X, Y, icon, Width, Height, fromVB(Disabled)));
    });
}

// ------------------------------------------------------------ colourising in place

STDMETHODIMP PaintMethods::GreyscaleDIB(IDispatch* Section, BYTE Amount) {
    return guard([&] { colourise::greyscale(sectionPixels(Section), Amount); });
}

STDMETHODIMP PaintMethods::ColouriseDIB(IDispatch* Section, LONG Color, BYTE Amount) {
    return guard([&] {
        const colourise::PixelRows px = sectionPixels(Section);
        colourise::colourise(px, rgbArgument(Color), Amount);
    });
}

STDMETHODIMP PaintMethods::TintDIB(IDispatch* Section, LONG Color, BYTE Amount) {
    return guard([&] {
        const colourise::PixelRows px = sectionPixels(Section);
        colourise::tint(px, rgbArgument(Color), Amount);
    });
}

STDMETHODIMP PaintMethods::SepiaDIB(IDispatch* Section, BYTE Amount) {
    return guard([&] { colourise::sepia(sectionPixels(Section), Amount); });
}

STDMETHODIMP PaintMethods::InvertDIB(IDispatch* Section) {
    return guard([&] { colourise::invert(sectionPixels(Section)); });
}

STDMETHODIMP PaintMethods::AdjustDIB(IDispatch* Section, LONG Brightness, LONG Contrast, VARIANT Gamma) {
    return guard([&] {
        const colourise::PixelRows px = sectionPixels(Section);
        const double gamma = optionalDouble(Gamma, 1);
        if (Brightness < -255 || Brightness > 255 || Contrast < -100 || Contrast > 100 || !(gamma >= 0.1) ||
            !(gamma <= 10))
            raise(kInvalidArgument);
        colourise::adjust(px, Brightness, Contrast, gamma);
    });
}

STDMETHODIMP PaintMethods::ReplaceColorDIB(IDispatch* Section, LONG OldColor, LONG NewColor, BYTE Tolerance,
                                           LONG* pRet) {
    return guard([&] {
        required(pRet);
        const colourise::PixelRows px = sectionPixels(Section);
        *pRet = colourise::replace(px, rgbArgument(OldColor), rgbArgument(NewColor), Tolerance);
    });
}

// --------------------------------------------------------------------- byte arrays

STDMETHODIMP PaintMethods::CPictureByteArray(VARIANT Source, CPictureByteArrayConversionConstants Conversion,
                                             LONG Quality, VARIANT* pRet) {
    return guard([&] {
        VariantInit(required(pRet));
        if (Conversion != tovaPictureConvBMP && Conversion != tovaPictureConvJPEG) raise(kInvalidArgument);
        const VARIANT* v = &Source;
        while (V_VT(v) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(v)) v = V_VARIANTREF(v);
        const VARTYPE vt = V_VT(v) & ~VT_BYREF;
        if (vt == (VT_ARRAY | VT_UI1)) {
            // Bytes to a picture: the format is read from the bytes themselves.
            SAFEARRAY* a = arrayIn(*v);
            if (!a || SafeArrayGetDim(a) != 1) raise(kInvalidArgument);
            ArrayData data(a);
            if (!data.locked()) raise(kInvalidArgument);
            ComPtr<IPictureDisp> picture =
                pictureFromBytes(static_cast<const uint8_t*>(data.data()), a->rgsabound[0].cElements);
            if (!picture) raise(kInvalidPicture);
            V_VT(pRet) = VT_DISPATCH;
            V_DISPATCH(pRet) = picture.detach();
            return;
        }
        if (vt != VT_DISPATCH && vt != VT_UNKNOWN) raise(kInvalidArgument);
        IUnknown* object = (V_VT(v) & VT_BYREF) ? (V_UNKNOWNREF(v) ? *V_UNKNOWNREF(v) : nullptr) : V_UNKNOWN(v);
        ComPtr<IPictureDisp> picture = ComPtr<IUnknown>(object).as<IPictureDisp>(IID_IPictureDisp);
        if (!picture) raise(kInvalidPicture);
        if (Conversion == tovaPictureConvJPEG && (Quality < 1 || Quality > 100)) raise(kInvalidArgument);
        PictureFacts facts;
        if (!readPicture(picture.get(), facts)) raise(kInvalidPicture);
        std::vector<uint8_t> bytes;
        const PictureFormat format = Conversion == tovaPictureConvJPEG ? PictureFormat::Jpeg : PictureFormat::Bmp;
        if (!pictureToBytes(picture.get(), format, Quality, bytes)) return;
        SafeArray out(SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size())));
        if (!out.get()) raise(kOutOfMemory);
        {
            ArrayData data(out.get());
            if (!data.locked()) return;
            std::memcpy(data.data(), bytes.data(), bytes.size());
        }
        V_VT(pRet) = VT_ARRAY | VT_UI1;
        V_ARRAY(pRet) = out.detach();
    });
}

}  // namespace tova
