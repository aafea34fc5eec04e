// APIMethods: window placement, state and identity, finding windows,
// messages, the task bar and the work area.
#include "api_methods.h"

namespace tova {

STDMETHODIMP APIMethods::GetWindowRect(LONG, TOVA_RECT*, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowRect3(LONG, LONG*, LONG*, LONG*, LONG*, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetClientRect(LONG, TOVA_RECT*, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::MoveWindow(LONG, TOVA_RECT*, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::MoveWindow3(LONG, LONG, LONG, LONG, LONG, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::MoveWindow4(LONG, _Rectangle*, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetWindowPosition(LONG, LONG, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetWindowSize(LONG, LONG, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetRestoredRect(LONG, TOVA_RECT*, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetRestoredRect(LONG, TOVA_RECT*, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::CentreWindowOnScreen(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::CentreWindowOnOwner(LONG, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetAlwaysOnTop(LONG, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::IsAlwaysOnTop(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FlashWindow(LONG, FlashWindowConstants, LONG, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetShowState(LONG, ShowWindowConstants*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetShowState(LONG, ShowWindowConstants, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetWindowOpacity(LONG, BYTE, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowOpacity(LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ScreenToClient(LONG, POINTAPI*, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ClientToScreen(LONG, POINTAPI*, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::IsWindow(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::IsWindowVisible(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::IsWindowEnabled(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::EnableWindow(LONG, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowText(LONG, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetWindowText(LONG, BSTR, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetClassName(LONG, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetParentWindow(LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetOwnerWindow(LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetParentWindow(LONG, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowProcessId(LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowThreadId(LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowStyle(LONG, VARIANT_BOOL, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::ModifyWindowStyle(LONG, LONG, LONG, VARIANT_BOOL, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetForegroundWindow(LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SetForegroundWindow(LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWindowFromPoint(LONG, LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FindWindow(BSTR, BSTR, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FindChildWindow(LONG, BSTR, BSTR, LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::FindWindowLike(BSTR, BSTR, LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetChildWindows(LONG, BSTR, VARIANT_BOOL, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetTopLevelWindows(LONG, VARIANT_BOOL, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SendMessage(LONG, LONG, LONG_PTR, LONG_PTR, LONG, LONG_PTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::SendMessageString(LONG, LONG, LONG_PTR, BSTR, LONG, LONG_PTR*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::PostMessage(LONG, LONG, LONG_PTR, LONG_PTR, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetTaskbarRect(TOVA_RECT*, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetTaskbarEdge(TaskbarEdgeConstants*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::IsTaskbarAutoHide(VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWorkArea(TOVA_RECT*, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP APIMethods::GetWorkArea3(LONG*, LONG*, LONG*, LONG*, LONG, VARIANT_BOOL*) { return E_NOTIMPL; }

}  // namespace tova
