#include "api_methods.h"

#include "api_draw.h"

namespace tova {

const ClassIdentity APIMethods::kClass = {L"APIMethods", &CLSID_APIMethods, &IID__APIMethods, nullptr};

HRESULT createAPIMethods(REFIID riid, void** ppv) { return APIMethods::create(riid, ppv); }

STDMETHODIMP APIMethods::DrawEdge(LONG hDC, TOVA_RECT* pRECT, EdgeStyleConstants EdgeStyle,
                                  EdgeModeConstants EdgeMode, LONG* pRet) {
    return api([&] {
        RECT rc = toWin32(*required(pRECT));
        *required(pRet) = drawEdge(toHandle<HDC>(hDC), rc, EdgeStyle, EdgeMode);
        *pRECT = fromWin32(rc);
    });
}

STDMETHODIMP APIMethods::DrawText(LONG hDC, BSTR* Text, TOVA_RECT* pRECT, DrawTextFormatConstants wFormat,
                                  LONG* pRet) {
    return api([&] {
        std::wstring text = Bstr(*required(Text), SysStringLen(*Text)).str();
        const std::wstring original = text;
        RECT rc = toWin32(*required(pRECT));
        long result = drawText(toHandle<HDC>(hDC), text, rc, wFormat);
        *pRECT = fromWin32(rc);
        if (text != original && !SysReAllocStringLen(Text, text.data(), static_cast<UINT>(text.size())))
            raise(kOutOfMemory);
        *required(pRet) = result;
    });
}

STDMETHODIMP APIMethods::DrawGradient(LONG hDC, LONG* Left, LONG* Top, LONG* Right, LONG* Bottom, LONG StartColor,
                                      LONG EndColor, VARIANT_BOOL Vertical, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT rc{*required(Left), *required(Top), *required(Right), *required(Bottom)};
        *required(pRet) = toVB(drawGradient(toHandle<HDC>(hDC), rc, StartColor, EndColor, fromVB(Vertical)));
    });
}

}  // namespace tova
