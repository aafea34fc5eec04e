#include "gdi_methods.h"

#include "arguments.h"
#include "colour_math.h"
#include "gdi_draw.h"
#include "gdi_objects.h"
#include "gradient_fills.h"
#include "memory_dc.h"
#include "pattern_fills.h"
#include "point_lists.h"
#include "regions.h"

#include <cmath>

namespace tova {

const ClassIdentity GDIMethods::kClass = {L"GDIMethods", &CLSID_GDIMethods, &IID__GDIMethods, nullptr};

HRESULT createGDIMethods(REFIID riid, void** ppv) { return GDIMethods::create(riid, ppv); }

namespace {

ShapeStyle style(LONG borderColor, LONG borderStyle, LONG borderWidth, LONG backColor, LONG backStyle, LONG hatch) {
    ShapeStyle s;
    s.borderColor = borderColor;
    s.borderStyle = borderStyle;
    s.borderWidth = borderWidth;
    s.backColor = backColor;
    s.backStyle = backStyle;
    s.hatch = hatch;
    return s;
}

LineStyle line(LONG color, LONG style, LONG width) {
    LineStyle s;
    s.color = color;
    s.style = style;
    s.width = width;
    return s;
}

RECT edges(LONG left, LONG top, LONG right, LONG bottom) { return RECT{left, top, right, bottom}; }

// The work of the members that come as edges and as a RECT.
bool linearGradient(LONG dc, const RECT& r, LONG start, LONG end, LONG direction) {
    const COLORREF s = colourArgument(start), e = colourArgument(end);
    return drawLinearGradient(toHandle<HDC>(dc), r, s, e, directionArgument(direction));
}

bool cornerGradient(LONG dc, const RECT& r, LONG tl, LONG tr, LONG bl, LONG br) {
    const COLORREF a = colourArgument(tl), b = colourArgument(tr), c = colourArgument(bl), d = colourArgument(br);
    return drawCornerGradient(toHandle<HDC>(dc), r, a, b, c, d);
}

bool radialGradient(LONG dc, const RECT& r, LONG centre, LONG outer) {
    const COLORREF c = colourArgument(centre), o = colourArgument(outer);
    return drawRadialGradient(toHandle<HDC>(dc), r, c, o);
}

bool alphaFill(LONG dc, const RECT& r, LONG color, BYTE opacity) {
    return drawAlphaFill(toHandle<HDC>(dc), r, colourArgument(color), opacity);
}

bool alphaGradient(LONG dc, const RECT& r, LONG start, LONG end, BYTE startOpacity, BYTE endOpacity,
                   LONG direction) {
    const COLORREF s = colourArgument(start), e = colourArgument(end);
    return drawAlphaGradient(toHandle<HDC>(dc), r, s, e, startOpacity, endOpacity, directionArgument(direction));
}

}  // namespace

STDMETHODIMP GDIMethods::DrawRectangle(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG BorderColor,
                                       PenStyleConstants BorderStyle, LONG BorderWidth, LONG BackColor,
                                       BrushStyleConstants BackStyle, HatchStyleConstants Hatch, VARIANT_BOOL* pRet) {
    return guard([&] {
        ShapeStyle s = style(BorderColor, BorderStyle, BorderWidth, BackColor, BackStyle, Hatch);
        *required(pRet) = toVB(drawShape(Shape::Rectangle, toHandle<HDC>(hDC), RECT{Left, Top, Right, Bottom}, s));
    });
}

STDMETHODIMP GDIMethods::DrawRoundRect(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG BorderColor,
                                       PenStyleConstants BorderStyle, LONG BorderWidth, LONG BackColor,
                                       BrushStyleConstants BackStyle, HatchStyleConstants Hatch, LONG CornerWidth,
                                       LONG CornerHeight, VARIANT_BOOL* pRet) {
    return guard([&] {
        ShapeStyle s = style(BorderColor, BorderStyle, BorderWidth, BackColor, BackStyle, Hatch);
        s.cornerWidth = CornerWidth;
        s.cornerHeight = CornerHeight;
        *required(pRet) = toVB(drawShape(Shape::RoundRect, toHandle<HDC>(hDC), RECT{Left, Top, Right, Bottom}, s));
    });
}

STDMETHODIMP GDIMethods::DrawEllipse(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG BorderColor,
                                     PenStyleConstants BorderStyle, LONG BorderWidth, LONG BackColor,
                                     BrushStyleConstants BackStyle, HatchStyleConstants Hatch, VARIANT_BOOL* pRet) {
    return guard([&] {
        ShapeStyle s = style(BorderColor, BorderStyle, BorderWidth, BackColor, BackStyle, Hatch);
        *required(pRet) = toVB(drawShape(Shape::Ellipse, toHandle<HDC>(hDC), RECT{Left, Top, Right, Bottom}, s));
    });
}

STDMETHODIMP GDIMethods::CreateMemoryDC(LONG Width, LONG Height, LONG BackColor, LONG ForeColor, _MemoryDC** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (Width < 1 || Height < 1) raise(kInvalidArgument);
        ComPtr<MemoryDC> dc = MemoryDC::make();
        if (!dc->build(Width, Height)) return;
        // Only a given back colour clears the surface; a colour that does not
        // translate becomes -1, which the platform refuses.
        if (BackColor != -1) {
            Variant back(translateColor(BackColor));
            dc->put_BackColor(back);
            dc->Clear();
        }
        if (ForeColor != -1) {
            Variant fore(translateColor(ForeColor));
            dc->put_ForeColor(fore);
        }
        *pRet = dc.detach();
    });
}

// ------------------------------------------------------------ lines and polygons

STDMETHODIMP GDIMethods::DrawLine(LONG hDC, LONG X1, LONG Y1, LONG X2, LONG Y2, LONG Color, PenStyleConstants Style,
                                  LONG Width, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(drawLine(toHandle<HDC>(hDC), POINT{X1, Y1}, POINT{X2, Y2}, line(Color, Style, Width)));
    });
}

STDMETHODIMP GDIMethods::DrawLine2(LONG hDC, POINTAPI* pFrom, POINTAPI* pTo, LONG Color, PenStyleConstants Style,
                                   LONG Width, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        const POINTAPI& a = *required(pFrom);
        const POINTAPI& b = *required(pTo);
        *pRet = toVB(drawLine(toHandle<HDC>(hDC), POINT{a.X, a.Y}, POINT{b.X, b.Y}, line(Color, Style, Width)));
    });
}

STDMETHODIMP GDIMethods::DrawPolyline(LONG hDC, VARIANT* Points, LONG Color, PenStyleConstants Style, LONG Width,
                                      VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = toVB(drawPolyline(toHandle<HDC>(hDC), pointList(Points, 2), line(Color, Style, Width)));
    });
}

STDMETHODIMP GDIMethods::DrawPolygon(LONG hDC, VARIANT* Points, LONG BorderColor, PenStyleConstants BorderStyle,
                                     LONG BorderWidth, LONG BackColor, BrushStyleConstants BackStyle,
                                     HatchStyleConstants Hatch, PolyFillModeConstants FillMode, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        ShapeStyle s = style(BorderColor, BorderStyle, BorderWidth, BackColor, BackStyle, Hatch);
        *pRet = toVB(drawPolygon(toHandle<HDC>(hDC), pointList(Points, 3), s, FillMode));
    });
}

// ---------------------------------------------------------------------- gradients

STDMETHODIMP GDIMethods::DrawLinearGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom,
                                            LONG StartColor, LONG EndColor, GradientDirectionConstants Direction,
                                            VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(linearGradient(hDC, edges(Left, Top, Right, Bottom), StartColor, EndColor, Direction));
    });
}

STDMETHODIMP GDIMethods::DrawLinearGradient2(LONG hDC, TOVA_RECT* pRECT, LONG StartColor, LONG EndColor,
                                             GradientDirectionConstants Direction, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(linearGradient(hDC, rectArgument(pRECT), StartColor, EndColor, Direction));
    });
}

STDMETHODIMP GDIMethods::DrawCornerGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom,
                                            LONG TopLeftColor, LONG TopRightColor, LONG BottomLeftColor,
                                            LONG BottomRightColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(cornerGradient(hDC, edges(Left, Top, Right, Bottom), TopLeftColor, TopRightColor,
                                              BottomLeftColor, BottomRightColor));
    });
}

STDMETHODIMP GDIMethods::DrawCornerGradient2(LONG hDC, TOVA_RECT* pRECT, LONG TopLeftColor, LONG TopRightColor,
                                             LONG BottomLeftColor, LONG BottomRightColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(cornerGradient(hDC, rectArgument(pRECT), TopLeftColor, TopRightColor,
                                              BottomLeftColor, BottomRightColor));
    });
}

STDMETHODIMP GDIMethods::DrawRadialGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom,
                                            LONG CentreColor, LONG OuterColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(radialGradient(hDC, edges(Left, Top, Right, Bottom), CentreColor, OuterColor));
    });
}

STDMETHODIMP GDIMethods::DrawRadialGradient2(LONG hDC, TOVA_RECT* pRECT, LONG CentreColor, LONG OuterColor,
                                             VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(radialGradient(hDC, rectArgument(pRECT), CentreColor, OuterColor)); });
}

// -------------------------------------------------------------------- alpha fills

STDMETHODIMP GDIMethods::DrawAlphaFill(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG Color,
                                       BYTE Opacity, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(alphaFill(hDC, edges(Left, Top, Right, Bottom), Color, Opacity)); });
}

STDMETHODIMP GDIMethods::DrawAlphaFill2(LONG hDC, TOVA_RECT* pRECT, LONG Color, BYTE Opacity, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(alphaFill(hDC, rectArgument(pRECT), Color, Opacity)); });
}

STDMETHODIMP GDIMethods::DrawAlphaGradient(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom,
                                           LONG StartColor, LONG EndColor, BYTE StartOpacity, BYTE EndOpacity,
                                           GradientDirectionConstants Direction, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(alphaGradient(hDC, edges(Left, Top, Right, Bottom), StartColor, EndColor,
                                             StartOpacity, EndOpacity, Direction));
    });
}

STDMETHODIMP GDIMethods::DrawAlphaGradient2(LONG hDC, TOVA_RECT* pRECT, LONG StartColor, LONG EndColor,
                                            BYTE StartOpacity, BYTE EndOpacity, GradientDirectionConstants Direction,
                                            VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(
            alphaGradient(hDC, rectArgument(pRECT), StartColor, EndColor, StartOpacity, EndOpacity, Direction));
    });
}

// ------------------------------------------------------- pattern fills and frames

STDMETHODIMP GDIMethods::FillHatched(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom,
                                     HatchStyleConstants Hatch, LONG Color, LONG BackColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) =
            toVB(fillHatched(toHandle<HDC>(hDC), edges(Left, Top, Right, Bottom), Hatch, Color, BackColor));
    });
}

STDMETHODIMP GDIMethods::FillHatched2(LONG hDC, TOVA_RECT* pRECT, HatchStyleConstants Hatch, LONG Color,
                                      LONG BackColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(fillHatched(toHandle<HDC>(hDC), rectArgument(pRECT), Hatch, Color, BackColor));
    });
}

STDMETHODIMP GDIMethods::FillPattern(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom, LONG hBitmap,
                                     LONG OriginX, LONG OriginY, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(fillPattern(toHandle<HDC>(hDC), edges(Left, Top, Right, Bottom),
                                           toHandle<HBITMAP>(hBitmap), OriginX, OriginY));
    });
}

STDMETHODIMP GDIMethods::FillPattern2(LONG hDC, TOVA_RECT* pRECT, LONG hBitmap, LONG OriginX, LONG OriginY,
                                      VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(
            fillPattern(toHandle<HDC>(hDC), rectArgument(pRECT), toHandle<HBITMAP>(hBitmap), OriginX, OriginY));
    });
}

STDMETHODIMP GDIMethods::DrawFrame3D(LONG hDC, LONG Left, LONG Top, LONG Right, LONG Bottom,
                                     Frame3DStyleConstants Style, LONG Width, LONG HighlightColor, LONG ShadowColor,
                                     VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(drawFrame3D(toHandle<HDC>(hDC), edges(Left, Top, Right, Bottom), Style, Width,
                                           HighlightColor, ShadowColor));
    });
}

STDMETHODIMP GDIMethods::DrawFrame3D2(LONG hDC, TOVA_RECT* pRECT, Frame3DStyleConstants Style, LONG Width,
                                      LONG HighlightColor, LONG ShadowColor, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) =
            toVB(drawFrame3D(toHandle<HDC>(hDC), rectArgument(pRECT), Style, Width, HighlightColor, ShadowColor));
    });
}

// -------------------------------------------------------------------- GDI objects

STDMETHODIMP GDIMethods::CreatePen(LONG Color, PenStyleConstants Style, LONG Width, LONG* pRet) {
    return guard([&] { *required(pRet) = fromHandle(createPen(Color, Style, Width)); });
}

STDMETHODIMP GDIMethods::CreateBrush(LONG Color, BrushStyleConstants Style, HatchStyleConstants Hatch, LONG hBitmap,
                                     LONG* pRet) {
    return guard([&] { *required(pRet) = fromHandle(createBrush(Color, Style, Hatch, toHandle<HBITMAP>(hBitmap))); });
}

STDMETHODIMP GDIMethods::CreateFont(BSTR FaceName, float Size, VARIANT_BOOL Bold, VARIANT_BOOL Italic,
                                    VARIANT_BOOL Underline, VARIANT_BOOL Strikethrough, VARIANT Angle, LONG hDC,
                                    LONG* pRet) {
    return guard([&] {
        required(pRet);
        FontRequest f;
        f.face = Bstr(FaceName).str();
        f.size = Size;
        f.bold = fromVB(Bold), f.italic = fromVB(Italic), f.underline = fromVB(Underline);
        f.strikethrough = fromVB(Strikethrough);
        f.angle = optionalDouble(Angle, 0);
        f.dc = toHandle<HDC>(hDC);
        *pRet = fromHandle(createFont(f));
    });
}

STDMETHODIMP GDIMethods::CreateFont2(IFontDisp* Font, VARIANT Angle, LONG hDC, LONG* pRet) {
    return guard([&] {
        required(pRet);
        ComPtr<IFont> font = ComPtr<IFontDisp>(Font).as<IFont>(IID_IFont);
        if (!font) raise(kInvalidArgument);
        FontRequest f;
        Bstr name;
        CY size{};
        BOOL italic = FALSE, underline = FALSE, strike = FALSE;
        SHORT weight = FW_NORMAL, charset = DEFAULT_CHARSET;
        if (FAILED(font->get_Name(name.put())) || FAILED(font->get_Size(&size))) raise(kInvalidArgument);
        font->get_Italic(&italic);
        font->get_Underline(&underline);
        font->get_Strikethrough(&strike);
        font->get_Weight(&weight);
        font->get_Charset(&charset);
        f.face = name.str();
        f.size = static_cast<double>(size.int64) / 10000;
        f.italic = italic, f.underline = underline, f.strikethrough = strike;
        f.weight = weight;
        f.charset = static_cast<BYTE>(charset);
        f.angle = optionalDouble(Angle, 0);
        f.dc = toHandle<HDC>(hDC);
        *pRet = fromHandle(createFont(f));
    });
}

STDMETHODIMP GDIMethods::DeleteGDIObject(LONG hObject, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(deleteGdiObject(toHandle<HGDIOBJ>(hObject))); });
}

// ------------------------------------------------------------------------ regions

STDMETHODIMP GDIMethods::CreateRegion(LONG Left, LONG Top, LONG Right, LONG Bottom, RegionShapeConstants Shape,
                                      LONG CornerWidth, LONG CornerHeight, LONG* pRet) {
    return guard([&] {
        *required(pRet) = fromHandle(createRegion(edges(Left, Top, Right, Bottom), Shape, CornerWidth, CornerHeight));
    });
}

STDMETHODIMP GDIMethods::CreatePolygonRegion(VARIANT* Points, PolyFillModeConstants FillMode, LONG* pRet) {
    return guard([&] { *required(pRet) = fromHandle(createPolygonRegion(pointList(Points, 3), FillMode)); });
}

STDMETHODIMP GDIMethods::CreateRegionFromBitmap(LONG hBitmap, LONG TransparentColor, LONG* pRet) {
    return guard([&] {
        *required(pRet) = fromHandle(regionFromBitmap(toHandle<HBITMAP>(hBitmap), TransparentColor));
    });
}

STDMETHODIMP GDIMethods::CombineRegions(LONG hRgn1, LONG hRgn2, RegionCombineConstants Mode, LONG* pRet) {
    return guard([&] {
        *required(pRet) = fromHandle(combineRegions(toHandle<HRGN>(hRgn1), toHandle<HRGN>(hRgn2), Mode));
    });
}

STDMETHODIMP GDIMethods::FillRegion(LONG hDC, LONG hRgn, LONG Color, LONG FrameColor, LONG FrameWidth,
                                    VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) =
            toVB(fillRegion(toHandle<HDC>(hDC), toHandle<HRGN>(hRgn), Color, FrameColor, FrameWidth));
    });
}

// ------------------------------------------------------------------ colour helpers

STDMETHODIMP GDIMethods::TranslateColor(LONG Color, LONG* pRet) {
    return guard([&] { *required(pRet) = translateColor(Color); });
}

STDMETHODIMP GDIMethods::BlendColors(LONG Color1, LONG Color2, BYTE Amount, LONG* pRet) {
    return guard([&] {
        required(pRet);
        const colour::Rgb a = colour::fromColorRef(colourArgument(Color1));
        const colour::Rgb b = colour::fromColorRef(colourArgument(Color2));
        *pRet = static_cast<LONG>(colour::toColorRef(colour::mix(a, b, Amount)));
    });
}

STDMETHODIMP GDIMethods::ColorToHSL(LONG Color, double* Hue, double* Saturation, double* Lightness) {
    return guard([&] {
        required(Hue), required(Saturation), required(Lightness);
        const colour::Hsl h = colour::toHsl(colour::fromColorRef(colourArgument(Color)));
        *Hue = h.h, *Saturation = h.s, *Lightness = h.l;
    });
}

STDMETHODIMP GDIMethods::HSLToColor(double Hue, double Saturation, double Lightness, LONG* pRet) {
    return guard([&] {
        required(pRet);
        if (!std::isfinite(Hue) || !(Saturation >= 0 && Saturation <= 1) || !(Lightness >= 0 && Lightness <= 1))
            raise(kInvalidArgument);
        *pRet = static_cast<LONG>(colour::toColorRef(colour::fromHsl(colour::Hsl{Hue, Saturation, Lightness})));
    });
}

}  // namespace tova
