// GDIMethods: global GDI drawing helpers. Each member checks and converts its
// arguments and calls the module that does the work.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class GDIMethods final : public Object<GDIMethods, _GDIMethods> {
public:
    static const ClassIdentity kClass;

    // Shapes
    STDMETHODIMP DrawRectangle(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG BorderColor,
                               PenStyleConstants BorderStyle, LONG BorderWidth, LONG BackColor,
                               BrushStyleConstants BackStyle, HatchStyleConstants Hatch, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawRoundRect(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG BorderColor,
                               PenStyleConstants BorderStyle, LONG BorderWidth, LONG BackColor,
                               BrushStyleConstants BackStyle, HatchStyleConstants Hatch, LONG CornerWidth,
                               LONG CornerHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawEllipse(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG BorderColor,
                             PenStyleConstants BorderStyle, LONG BorderWidth, LONG BackColor,
                             BrushStyleConstants BackStyle, HatchStyleConstants Hatch, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CreateMemoryDC(LONG Width, LONG Height, LONG BackColor, LONG ForeColor, _MemoryDC** pRet) override;

    // Lines and polygons
    STDMETHODIMP DrawLine(LONG hDC, LONG X1, LONG Y1, LONG X2, LONG Y2, LONG Color, PenStyleConstants Style,
                          LONG Width, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawLine2(LONG hDC, POINTAPI* pFrom, POINTAPI* pTo, LONG Color, PenStyleConstants Style, LONG Width,
                           VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawPolyline(LONG hDC, VARIANT* Points, LONG Color, PenStyleConstants Style, LONG Width,
                              VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawPolygon(LONG hDC, VARIANT* Points, LONG BorderColor, PenStyleConstants BorderStyle,
                             LONG BorderWidth, LONG BackColor, BrushStyleConstants BackStyle,
                             HatchStyleConstants Hatch, PolyFillModeConstants FillMode, VARIANT_BOOL* pRet) override;

    // Gradients
    STDMETHODIMP DrawLinearGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG StartColor,
                                    LONG EndColor, GradientDirectionConstants Direction, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawLinearGradient2(LONG hDC, TOVA_RECT* pRECT, LONG StartColor, LONG EndColor,
                                     GradientDirectionConstants Direction, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawCornerGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG TopLeftColor,
                                    LONG TopRightColor, LONG BottomLeftColor, LONG BottomRightColor,
                                    VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawCornerGradient2(LONG hDC, TOVA_RECT* pRECT, LONG TopLeftColor, LONG TopRightColor,
                                     LONG BottomLeftColor, LONG BottomRightColor, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawRadialGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG CentreColor,
                                    LONG OuterColor, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawRadialGradient2(LONG hDC, TOVA_RECT* pRECT, LONG CentreColor, LONG OuterColor,
                                     VARIANT_BOOL* pRet) override;

    // Alpha fills
    STDMETHODIMP DrawAlphaFill(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG Color, BYTE Opacity,
                               VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawAlphaFill2(LONG hDC, TOVA_RECT* pRECT, LONG Color, BYTE Opacity, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawAlphaGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG StartColor,
                                   LONG EndColor, BYTE StartOpacity, BYTE EndOpacity,
                                   GradientDirectionConstants Direction, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawAlphaGradient2(LONG hDC, TOVA_RECT* pRECT, LONG StartColor, LONG EndColor, BYTE StartOpacity,
                                    BYTE EndOpacity, GradientDirectionConstants Direction,
                                    VARIANT_BOOL* pRet) override;

    // Pattern fills and frames
    STDMETHODIMP FillHatched(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, HatchStyleConstants Hatch,
                             LONG Color, LONG BackColor, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FillHatched2(LONG hDC, TOVA_RECT* pRECT, HatchStyleConstants Hatch, LONG Color, LONG BackColor,
                              VARIANT_BOOL* pRet) override;
    STDMETHODIMP FillPattern(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG hBitmap, LONG OriginX,
                             LONG OriginY, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FillPattern2(LONG hDC, TOVA_RECT* pRECT, LONG hBitmap, LONG OriginX, LONG OriginY,
                              VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawFrame3D(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, Frame3DStyleConstants Style,
                             LONG Width, LONG HighlightColor, LONG ShadowColor, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawFrame3D2(LONG hDC, TOVA_RECT* pRECT, Frame3DStyleConstants Style, LONG Width,
                              LONG HighlightColor, LONG ShadowColor, VARIANT_BOOL* pRet) override;

    // GDI objects (CreateFont is CreateFontA or CreateFontW here, as in the generated header)
    STDMETHODIMP CreatePen(LONG Color, PenStyleConstants Style, LONG Width, LONG* pRet) override;
    STDMETHODIMP CreateBrush(LONG Color, BrushStyleConstants Style, HatchStyleConstants Hatch, LONG hBitmap,
                             LONG* pRet) override;
    STDMETHODIMP CreateFont(BSTR FaceName, float Size, VARIANT_BOOL Bold, VARIANT_BOOL Italic,
                            VARIANT_BOOL Underline, VARIANT_BOOL Strikethrough, VARIANT Angle, LONG hDC,
                            LONG* pRet) override;
    STDMETHODIMP CreateFont2(IFontDisp* Font, VARIANT Angle, LONG hDC, LONG* pRet) override;
    STDMETHODIMP DeleteGDIObject(LONG hObject, VARIANT_BOOL* pRet) override;

    // Regions
    STDMETHODIMP CreateRegion(LONG Left, LONG Top, LONG Right, LONG Bottom, RegionShapeConstants Shape,
                              LONG CornerWidth, LONG CornerHeight, LONG* pRet) override;
    STDMETHODIMP CreatePolygonRegion(VARIANT* Points, PolyFillModeConstants FillMode, LONG* pRet) override;
    STDMETHODIMP CreateRegionFromBitmap(LONG hBitmap, LONG TransparentColor, LONG* pRet) override;
    STDMETHODIMP CombineRegions(LONG hRgn1, LONG hRgn2, RegionCombineConstants Mode, LONG* pRet) override;
    STDMETHODIMP FillRegion(LONG hDC, LONG hRgn, LONG Color, LONG FrameColor, LONG FrameWidth,
                            VARIANT_BOOL* pRet) override;

    // Colour helpers
    STDMETHODIMP TranslateColor(LONG Color, LONG* pRet) override;
    STDMETHODIMP BlendColors(LONG Color1, LONG Color2, BYTE Amount, LONG* pRet) override;
    STDMETHODIMP ColorToHSL(LONG Color, double* Hue, double* Saturation, double* Lightness) override;
    STDMETHODIMP HSLToColor(double Hue, double Saturation, double Lightness, LONG* pRet) override;

private:
    friend class Object<GDIMethods, _GDIMethods>;
    GDIMethods() = default;
};

}  // namespace tova
