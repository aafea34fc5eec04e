// PaintMethods: global helpers that paint pictures onto device contexts,
// make pictures, and colourise DIB sections in place. Each member checks and
// converts its arguments and calls the module that does the work.
#pragma once

#include "../frame/library_frame.h"
#include "pictures.h"

namespace tova {

class PaintMethods final : public Object<PaintMethods, _PaintMethods> {
public:
    static const ClassIdentity kClass;

    // Plain painting
    STDMETHODIMP StretchPaintNormalStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                          LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                          VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintTransparentStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                               IPictureDisp* Picture, LONG TransparentColor, LONG SrcX, LONG SrcY,
                                               LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) override;

    // Effects
    STDMETHODIMP StretchPaintMaskedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                          IPictureDisp* MaskPicture, LONG SrcX, LONG SrcY, LONG SrcWidth,
                                          LONG SrcHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintDisabledStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                            IPictureDisp* Picture, LONG TransparentColor, BYTE Lighten, LONG SrcX,
                                            LONG SrcY, LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintEmbossedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                            IPictureDisp* Picture, LONG TransparentColor, LONG HighlightColor,
                                            LONG ShadowColor, LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                            VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintShadowedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                            IPictureDisp* Picture, LONG TransparentColor, LONG ShadowColor,
                                            LONG OffsetX, LONG OffsetY, BYTE Opacity, LONG SrcX, LONG SrcY,
                                            LONG SrcWidth, LONG SrcHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintAlphaStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                         BYTE Opacity, LONG TransparentColor, VARIANT_BOOL HasAlphaChannel,
                                         LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                         VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintAlphaGradientStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                                 IPictureDisp* Picture, BYTE StartOpacity, BYTE EndOpacity,
                                                 GradientDirectionConstants Direction, LONG TransparentColor,
                                                 LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                                 VARIANT_BOOL* pRet) override;
    STDMETHODIMP StretchPaintColourisedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height,
                                              IPictureDisp* Picture, LONG Color, BYTE Amount, LONG TransparentColor,
                                              LONG SrcX, LONG SrcY, LONG SrcWidth, LONG SrcHeight,
                                              VARIANT_BOOL* pRet) override;

    // Placement
    STDMETHODIMP PaintTiledStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                  LONG OffsetX, LONG OffsetY, LONG TransparentColor, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PaintCentredStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                    LONG TransparentColor, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PaintFittedStdPic(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp* Picture,
                                   PictureFitConstants Fit, LONG TransparentColor, VARIANT_BOOL* pRet) override;

    // Pictures and icons
    STDMETHODIMP PictureFromDC(LONG hDC, LONG X, LONG Y, LONG Width, LONG Height, IPictureDisp** pRet) override;
    STDMETHODIMP PictureFromDC2(LONG hDC, TOVA_RECT* pRECT, IPictureDisp** pRet) override;
    STDMETHODIMP PictureFromHandle(LONG Handle, PictureHandleTypeConstants HandleType, VARIANT_BOOL OwnHandle,
                                   IPictureDisp** pRet) override;
    STDMETHODIMP PictureDimensions(IPictureDisp* Picture, LONG* Width, LONG* Height, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PaintIcon(LONG hDC, LONG X, LONG Y, LONG hIcon, LONG Width, LONG Height, VARIANT_BOOL Disabled,
                           VARIANT_BOOL* pRet) override;

    // Colourising in place
    STDMETHODIMP GreyscaleDIB(IDispatch* Section, BYTE Amount) override;
    STDMETHODIMP ColouriseDIB(IDispatch* Section, LONG Color, BYTE Amount) override;
    STDMETHODIMP TintDIB(IDispatch* Section, LONG Color, BYTE Amount) override;
    STDMETHODIMP SepiaDIB(IDispatch* Section, BYTE Amount) override;
    STDMETHODIMP InvertDIB(IDispatch* Section) override;
    STDMETHODIMP AdjustDIB(IDispatch* Section, LONG Brightness, LONG Contrast, VARIANT Gamma) override;
    STDMETHODIMP ReplaceColorDIB(IDispatch* Section, LONG OldColor, LONG NewColor, BYTE Tolerance,
                                 LONG* pRet) override;

    // Byte arrays
    STDMETHODIMP CPictureByteArray(VARIANT Source, CPictureByteArrayConversionConstants Conversion, LONG Quality,
                                   VARIANT* pRet) override;

private:
    friend class Object<PaintMethods, _PaintMethods>;
    PaintMethods() = default;
};

}  // namespace tova
