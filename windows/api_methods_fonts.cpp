// APIMethods: fonts and text measurement.
#include "api_methods.h"

#include "api_values.h"
#include "fonts_text.h"

namespace tova {

using apiValues::answer;
using apiValues::text;

namespace {

// The font of an optional Font argument: none when it is left out, Empty or
// Nothing; a value that is no font raises 13.
ComPtr<IFont> fontOf(const VARIANT& v) {
    if (isMissing(&v)) return {};
    const VARIANT* p = &v;
    while (V_VT(p) == (VT_BYREF | VT_VARIANT)) p = V_VARIANTREF(p);
    if (V_VT(p) == VT_EMPTY || V_VT(p) == VT_NULL) return {};
    IUnknown* object = nullptr;
    if (V_VT(p) == VT_DISPATCH || V_VT(p) == VT_UNKNOWN) object = V_UNKNOWN(p);
    else if (V_VT(p) == (VT_BYREF | VT_DISPATCH) || V_VT(p) == (VT_BYREF | VT_UNKNOWN)) object = *V_UNKNOWNREF(p);
    else raise(kTypeMismatch);
    if (!object) return {};
    ComPtr<IFont> font;
    if (FAILED(object->QueryInterface(IID_IFont, font.putVoid()))) raise(kTypeMismatch);
    return font;
}

ComPtr<IFont> requiredFont(IFontDisp* font) {
    if (!font) raise(kObjectNotSet);
    ComPtr<IFont> f;
    if (FAILED(font->QueryInterface(IID_IFont, f.putVoid()))) raise(kTypeMismatch);
    return f;
}

}  // namespace

STDMETHODIMP APIMethods::GetTextWidth(BSTR Text, VARIANT Font, LONG* pRet) {
    return api([&] { *required(pRet) = fonts::measure(text(Text), fontOf(Font).get(), false); });
}
STDMETHODIMP APIMethods::GetTextWidth2(LONG hDC, BSTR Text, LONG* pRet) {
    return api([&] { *required(pRet) = fonts::measure(toHandle<HDC>(hDC), text(Text), false); });
}
STDMETHODIMP APIMethods::GetTextHeight(BSTR Text, VARIANT Font, LONG* pRet) {
    return api([&] { *required(pRet) = fonts::measure(text(Text), fontOf(Font).get(), true); });
}
STDMETHODIMP APIMethods::GetTextHeight2(LONG hDC, BSTR Text, LONG* pRet) {
    return api([&] { *required(pRet) = fonts::measure(toHandle<HDC>(hDC), text(Text), true); });
}
STDMETHODIMP APIMethods::GetFontNames(VARIANT_BOOL FixedPitchOnly, LONG Charset, VARIANT* pRet) {
    return api([&] {
        VariantInit(required(pRet));
        toVariantArray(fonts::familyNames(fromVB(FixedPitchOnly), Charset), pRet);
    });
}
STDMETHODIMP APIMethods::FontExists(BSTR FontName, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, fonts::exists(text(FontName))); });
}
STDMETHODIMP APIMethods::CreateFontHandle(IFontDisp* Font, LONG hDC, LONG* pRet) {
    return api([&] {
        required(pRet);
        *pRet = fromHandle(fonts::createHandle(requiredFont(Font).get(), toHandle<HDC>(hDC)));
    });
}
STDMETHODIMP APIMethods::CreateStdFont(BSTR FaceName, FLOAT Size, VARIANT_BOOL Bold, VARIANT_BOOL Italic,
                                       VARIANT_BOOL Underline, VARIANT_BOOL Strikethrough, IFontDisp** pRet) {
    return api([&] {
        *required(pRet) = fonts::create(text(FaceName), Size, fromVB(Bold), fromVB(Italic), fromVB(Underline),
                                        fromVB(Strikethrough)).detach();
    });
}
STDMETHODIMP APIMethods::FontHandleToStdFont(LONG hFont, IFontDisp** pRet) {
    return api([&] { *required(pRet) = fonts::fromHandle(toHandle<HFONT>(hFont)).detach(); });
}
STDMETHODIMP APIMethods::GetSystemFont(SystemFontConstants Which, IFontDisp** pRet) {
    return api([&] { *required(pRet) = fonts::systemFont(Which).detach(); });
}
STDMETHODIMP APIMethods::DeleteGDIObject(LONG hObject, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, fonts::deleteObject(toHandle<HGDIOBJ>(hObject))); });
}

}  // namespace tova
