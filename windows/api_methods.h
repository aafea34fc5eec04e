// APIMethods: global operating-system helpers. For now the drawing routines
// that the geometry classes delegate to.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class APIMethods final : public Object<APIMethods, _APIMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP DrawEdge(LONG hDC, TOVA_RECT* pRECT, EdgeStyleConstants EdgeStyle, EdgeModeConstants EdgeMode,
                          LONG* pRet) override;
    STDMETHODIMP DrawText(LONG hDC, BSTR* Text, TOVA_RECT* pRECT, DrawTextFormatConstants wFormat, LONG* pRet) override;
    STDMETHODIMP DrawGradient(LONG hDC, LONG* Left, LONG* Top, LONG* Right, LONG* Bottom, LONG StartColor,
                              LONG EndColor, VARIANT_BOOL Vertical, VARIANT_BOOL* pRet) override;

private:
    friend class Object<APIMethods, _APIMethods>;
    APIMethods() = default;
};

}  // namespace tova
