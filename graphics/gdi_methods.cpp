#include "gdi_methods.h"

#include "gdi_draw.h"
#include "memory_dc.h"

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

}  // namespace tova
