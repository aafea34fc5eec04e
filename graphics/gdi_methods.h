// GDIMethods: global GDI drawing helpers.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class GDIMethods final : public Object<GDIMethods, _GDIMethods> {
public:
    static const ClassIdentity kClass;

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

private:
    friend class Object<GDIMethods, _GDIMethods>;
    GDIMethods() = default;
};

}  // namespace tova
