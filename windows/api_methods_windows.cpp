// APIMethods: window placement, state and identity, finding windows,
// messages, the task bar and the work area.
#include "api_methods.h"

#include "api_values.h"
#include "taskbar.h"
#include "window_finding.h"
#include "window_identity.h"
#include "window_placement.h"

namespace tova {

using apiValues::answer;
using apiValues::text;
using apiValues::toRecord;

namespace {

HWND window(LONG h) { return toHandle<HWND>(h); }

// Left, top, width and height of a rectangle into by-reference Longs.
void toEdges(const RECT& r, LONG* left, LONG* top, LONG* width, LONG* height) {
    *left = r.left, *top = r.top, *width = r.right - r.left, *height = r.bottom - r.top;
}

bool toPoint(bool ok, const POINT& p, POINTAPI* out) {
    if (ok) out->X = p.x, out->Y = p.y;
    return ok;
}

}  // namespace

void apiValues::windowList(const std::vector<HWND>& windows, VARIANT* out) {
    SafeArray list(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(windows.size())));
    if (!list.get()) raise(kOutOfMemory);
    for (LONG i = 0; i < static_cast<LONG>(windows.size()); ++i) {
        Variant v(fromHandle(windows[static_cast<size_t>(i)]));
        if (FAILED(SafeArrayPutElement(list.get(), &i, &v))) raise(kOutOfMemory);
    }
    V_VT(out) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(out) = list.detach();
}

// --------------------------------------------------------- window placement

STDMETHODIMP APIMethods::GetWindowRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL RelativeToParent, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT r;
        required(pRECT);
        answer(pRet, toRecord(placement::windowRect(window(hWnd), fromVB(RelativeToParent), r), r, pRECT));
    });
}
STDMETHODIMP APIMethods::GetWindowRect3(LONG hWnd, LONG* Left, LONG* Top, LONG* Width, LONG* Height,
                                        VARIANT_BOOL RelativeToParent, VARIANT_BOOL* pRet) {
    return api([&] {
        required(Left), required(Top), required(Width), required(Height);
        RECT r;
        const bool ok = placement::windowRect(window(hWnd), fromVB(RelativeToParent), r);
        if (ok) toEdges(r, Left, Top, Width, Height);
        answer(pRet, ok);
    });
}
STDMETHODIMP APIMethods::GetClientRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL ScreenCoordinates, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT r;
        required(pRECT);
        answer(pRet, toRecord(placement::clientRect(window(hWnd), fromVB(ScreenCoordinates), r), r, pRECT));
    });
}
STDMETHODIMP APIMethods::MoveWindow(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL Repaint, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::move(window(hWnd), toWin32(*required(pRECT)), fromVB(Repaint))); });
}
STDMETHODIMP APIMethods::MoveWindow3(LONG hWnd, LONG Left, LONG Top, LONG Width, LONG Height, VARIANT_BOOL Repaint,
                                     VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::move(window(hWnd), RECT{Left, Top, Left + Width, Top + Height}, fromVB(Repaint))); });
}
STDMETHODIMP APIMethods::MoveWindow4(LONG hWnd, _Rectangle* Rectangle, VARIANT_BOOL Repaint, VARIANT_BOOL* pRet) {
    return api([&] {
        if (!Rectangle) raise(kObjectNotSet);
        TOVA_RECT r{};
        if (FAILED(Rectangle->get_RECT(&r))) raise(kObjectNotSet);
        answer(pRet, placement::move(window(hWnd), toWin32(r), fromVB(Repaint)));
    });
}
STDMETHODIMP APIMethods::SetWindowPosition(LONG hWnd, LONG Left, LONG Top, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::setPosition(window(hWnd), Left, Top)); });
}
STDMETHODIMP APIMethods::SetWindowSize(LONG hWnd, LONG Width, LONG Height, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::setSize(window(hWnd), Width, Height)); });
}
STDMETHODIMP APIMethods::GetRestoredRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT r;
        required(pRECT);
        answer(pRet, toRecord(placement::restoredRect(window(hWnd), r), r, pRECT));
    });
}
STDMETHODIMP APIMethods::SetRestoredRect(LONG hWnd, TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::setRestoredRect(window(hWnd), toWin32(*required(pRECT)))); });
}
STDMETHODIMP APIMethods::CentreWindowOnScreen(LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::centreOnScreen(window(hWnd))); });
}
STDMETHODIMP APIMethods::CentreWindowOnOwner(LONG hWnd, LONG hWndOwner, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::centreOnOwner(window(hWnd), window(hWndOwner))); });
}
STDMETHODIMP APIMethods::SetAlwaysOnTop(LONG hWnd, VARIANT_BOOL OnTop, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::setTopmost(window(hWnd), fromVB(OnTop))); });
}
STDMETHODIMP APIMethods::IsAlwaysOnTop(LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::isTopmost(window(hWnd))); });
}
STDMETHODIMP APIMethods::FlashWindow(LONG hWnd, FlashWindowConstants Flags, LONG Count, LONG Interval, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::flash(window(hWnd), Flags, Count, Interval)); });
}
STDMETHODIMP APIMethods::GetShowState(LONG hWnd, ShowWindowConstants* pRet) {
    return api([&] { *required(pRet) = static_cast<ShowWindowConstants>(placement::showState(window(hWnd))); });
}
STDMETHODIMP APIMethods::SetShowState(LONG hWnd, ShowWindowConstants ShowCmd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::setShowState(window(hWnd), ShowCmd)); });
}
STDMETHODIMP APIMethods::SetWindowOpacity(LONG hWnd, BYTE Opacity, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::setOpacity(window(hWnd), Opacity)); });
}
STDMETHODIMP APIMethods::GetWindowOpacity(LONG hWnd, LONG* pRet) {
    return api([&] { *required(pRet) = placement::opacity(window(hWnd)); });
}
STDMETHODIMP APIMethods::ScreenToClient(LONG hWnd, POINTAPI* pPOINT, VARIANT_BOOL* pRet) {
    return api([&] {
        POINT p{required(pPOINT)->X, pPOINT->Y};
        answer(pRet, toPoint(placement::screenToClient(window(hWnd), p), p, pPOINT));
    });
}
STDMETHODIMP APIMethods::ClientToScreen(LONG hWnd, POINTAPI* pPOINT, VARIANT_BOOL* pRet) {
    return api([&] {
        POINT p{required(pPOINT)->X, pPOINT->Y};
        answer(pRet, toPoint(placement::clientToScreen(window(hWnd), p), p, pPOINT));
    });
}

// ------------------------------------------------ window state and identity

STDMETHODIMP APIMethods::IsWindow(LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, hWnd && ::IsWindow(window(hWnd))); });
}
STDMETHODIMP APIMethods::IsWindowVisible(LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::isWindow(window(hWnd)) && ::IsWindowVisible(window(hWnd))); });
}
STDMETHODIMP APIMethods::IsWindowEnabled(LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, placement::isWindow(window(hWnd)) && ::IsWindowEnabled(window(hWnd))); });
}
STDMETHODIMP APIMethods::EnableWindow(LONG hWnd, VARIANT_BOOL Enable, VARIANT_BOOL* pRet) {
    return api([&] {
        const bool ok = placement::isWindow(window(hWnd));
        if (ok) ::EnableWindow(window(hWnd), fromVB(Enable));   // its result is the previous state
        answer(pRet, ok);
    });
}
STDMETHODIMP APIMethods::GetWindowText(LONG hWnd, BSTR* pRet) {
    return api([&] { answer(pRet, identity::text(window(hWnd))); });
}
STDMETHODIMP APIMethods::SetWindowText(LONG hWnd, BSTR Text, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, identity::setText(window(hWnd), text(Text))); });
}
STDMETHODIMP APIMethods::GetClassName(LONG hWnd, BSTR* pRet) {
    return api([&] { answer(pRet, identity::className(window(hWnd))); });
}
STDMETHODIMP APIMethods::GetParentWindow(LONG hWnd, LONG* pRet) {
    return api([&] { *required(pRet) = fromHandle(identity::parent(window(hWnd))); });
}
STDMETHODIMP APIMethods::GetOwnerWindow(LONG hWnd, LONG* pRet) {
    return api([&] { *required(pRet) = fromHandle(identity::owner(window(hWnd))); });
}
STDMETHODIMP APIMethods::SetParentWindow(LONG hWnd, LONG hWndNewParent, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, identity::setParent(window(hWnd), window(hWndNewParent))); });
}
STDMETHODIMP APIMethods::GetWindowProcessId(LONG hWnd, LONG* pRet) {
    return api([&] {
        DWORD pid = 0;
        if (placement::isWindow(window(hWnd))) GetWindowThreadProcessId(window(hWnd), &pid);
        *required(pRet) = static_cast<LONG>(pid);
    });
}
STDMETHODIMP APIMethods::GetWindowThreadId(LONG hWnd, LONG* pRet) {
    return api([&] {
        *required(pRet) = placement::isWindow(window(hWnd)) ? static_cast<LONG>(GetWindowThreadProcessId(window(hWnd), nullptr)) : 0;
    });
}
STDMETHODIMP APIMethods::GetWindowStyle(LONG hWnd, VARIANT_BOOL Extended, LONG* pRet) {
    return api([&] { *required(pRet) = identity::styles(window(hWnd), fromVB(Extended)); });
}
STDMETHODIMP APIMethods::ModifyWindowStyle(LONG hWnd, LONG RemoveStyle, LONG AddStyle, VARIANT_BOOL Extended, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, identity::modifyStyles(window(hWnd), RemoveStyle, AddStyle, fromVB(Extended))); });
}
STDMETHODIMP APIMethods::GetForegroundWindow(LONG* pRet) {
    return api([&] { *required(pRet) = fromHandle(::GetForegroundWindow()); });
}
STDMETHODIMP APIMethods::SetForegroundWindow(LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, identity::bringToFront(window(hWnd))); });
}
STDMETHODIMP APIMethods::GetWindowFromPoint(LONG X, LONG Y, LONG* pRet) {
    return api([&] { *required(pRet) = fromHandle(WindowFromPoint(POINT{X, Y})); });
}

// ------------------------------------------------ finding windows, messages

STDMETHODIMP APIMethods::FindWindow(BSTR Title, BSTR ClassName, LONG* pRet) {
    return api([&] { *required(pRet) = fromHandle(finding::find(nullptr, nullptr, text(Title), text(ClassName), true)); });
}
STDMETHODIMP APIMethods::FindChildWindow(LONG hWndParent, BSTR Title, BSTR ClassName, LONG hWndAfter, LONG* pRet) {
    return api([&] {
        *required(pRet) = fromHandle(finding::find(window(hWndParent), window(hWndAfter), text(Title), text(ClassName), false));
    });
}
STDMETHODIMP APIMethods::FindWindowLike(BSTR TitlePattern, BSTR ClassPattern, LONG hWndParent, LONG* pRet) {
    return api([&] { *required(pRet) = fromHandle(finding::findLike(text(TitlePattern), text(ClassPattern), window(hWndParent))); });
}
STDMETHODIMP APIMethods::GetChildWindows(LONG hWndParent, BSTR ClassName, VARIANT_BOOL Recursive, VARIANT* pRet) {
    return api([&] {
        VariantInit(required(pRet));
        std::vector<HWND> found;
        if (finding::children(window(hWndParent), text(ClassName), fromVB(Recursive), found)) apiValues::windowList(found, pRet);
    });
}
STDMETHODIMP APIMethods::GetTopLevelWindows(LONG ProcessId, VARIANT_BOOL VisibleOnly, VARIANT* pRet) {
    return api([&] {
        VariantInit(required(pRet));
        apiValues::windowList(finding::topLevel(static_cast<DWORD>(ProcessId), fromVB(VisibleOnly)), pRet);
    });
}
STDMETHODIMP APIMethods::SendMessage(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, LONG Timeout, LONG_PTR* pRet) {
    return api([&] {
        *required(pRet) = finding::send(window(hWnd), static_cast<UINT>(Message), static_cast<WPARAM>(wParam), lParam, Timeout);
    });
}
STDMETHODIMP APIMethods::SendMessageString(LONG hWnd, LONG Message, LONG_PTR wParam, BSTR Text, LONG Timeout, LONG_PTR* pRet) {
    return api([&] {
        const std::wstring copy = text(Text);   // the window may keep or change what it is given; never the caller's
        *required(pRet) = finding::send(window(hWnd), static_cast<UINT>(Message), static_cast<WPARAM>(wParam),
                                        reinterpret_cast<LPARAM>(copy.c_str()), Timeout);
    });
}
STDMETHODIMP APIMethods::PostMessage(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, finding::post(window(hWnd), static_cast<UINT>(Message), static_cast<WPARAM>(wParam), lParam)); });
}

// ------------------------------------------------- task bar and work area

STDMETHODIMP APIMethods::GetTaskbarRect(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT r;
        required(pRECT);
        answer(pRet, toRecord(taskbar::rect(r), r, pRECT));
    });
}
STDMETHODIMP APIMethods::GetTaskbarEdge(TaskbarEdgeConstants* pRet) {
    return api([&] { *required(pRet) = static_cast<TaskbarEdgeConstants>(taskbar::edge()); });
}
STDMETHODIMP APIMethods::IsTaskbarAutoHide(VARIANT_BOOL* pRet) {
    return api([&] { answer(pRet, taskbar::autoHide()); });
}
STDMETHODIMP APIMethods::GetWorkArea(TOVA_RECT* pRECT, LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] {
        RECT r;
        required(pRECT);
        const bool ok = (!hWnd || placement::isWindow(window(hWnd))) && placement::workArea(window(hWnd), r);
        answer(pRet, toRecord(ok, r, pRECT));
    });
}
STDMETHODIMP APIMethods::GetWorkArea3(LONG* Left, LONG* Top, LONG* Width, LONG* Height, LONG hWnd, VARIANT_BOOL* pRet) {
    return api([&] {
        required(Left), required(Top), required(Width), required(Height);
        RECT r;
        const bool ok = (!hWnd || placement::isWindow(window(hWnd))) && placement::workArea(window(hWnd), r);
        if (ok) toEdges(r, Left, Top, Width, Height);
        answer(pRet, ok);
    });
}

}  // namespace tova
