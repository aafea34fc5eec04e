// APIMethods: fonts and text measurement.
#include "api_methods.h"

namespace tova {

STDMETHODIMP APIMethods::GetTextWidth(BSTR, VARIANT, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetTextWidth2(LONG, BSTR, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetTextHeight(BSTR, VARIANT, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetTextHeight2(LONG, BSTR, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetFontNames(VARIANT_BOOL, LONG, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FontExists(BSTR, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::CreateFontHandle(IFontDisp*, LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::CreateStdFont(BSTR, FLOAT, VARIANT_BOOL, VARIANT_BOOL, VARIANT_BOOL, VARIANT_BOOL, IFontDisp**) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FontHandleToStdFont(LONG, IFontDisp**) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetSystemFont(SystemFontConstants, IFontDisp**) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::DeleteGDIObject(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }

}  // namespace tova
