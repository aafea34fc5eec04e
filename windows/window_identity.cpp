#include "window_identity.h"

#include "last_error.h"
#include "window_placement.h"

namespace tova::identity {

namespace {

constexpr UINT kHungWait = 1000;   // ms another process's window gets to answer

bool ask(HWND wnd, UINT message, WPARAM w, LPARAM l, DWORD_PTR& result) {
    if (SendMessageTimeoutW(wnd, message, w, l, SMTO_ABORTIFHUNG | SMTO_BLOCK, kHungWait, &result)) return true;
    lastError::failed(ERROR_TIMEOUT);
    return false;
}

}  // namespace

std::wstring text(HWND wnd) {
    if (!placement::isWindow(wnd)) return {};
    DWORD_PTR length = 0;
    if (!ask(wnd, WM_GETTEXTLENGTH, 0, 0, length)) return {};
    // The length may count more than WM_GETTEXT gives (it may count ANSI bytes).
    std::wstring s(length + 1, L'\0');
    DWORD_PTR got = 0;
    if (!ask(wnd, WM_GETTEXT, s.size(), reinterpret_cast<LPARAM>(&s[0]), got)) return {};
    s.resize(wcsnlen(s.c_str(), s.size()));
    return s;
}

bool setText(HWND wnd, const std::wstring& text) {
    if (!placement::isWindow(wnd)) return false;
    DWORD_PTR ok = 0;
    if (!ask(wnd, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()), ok)) return false;
    return ok ? true : (lastError::set(ERROR_INVALID_DATA), false);
}

std::wstring className(HWND wnd) {
    if (!placement::isWindow(wnd)) return {};
    wchar_t name[257] = L"";
    const int n = GetClassNameW(wnd, name, 257);
    if (n <= 0) return lastError::failed(), std::wstring();
    return std::wstring(name, static_cast<size_t>(n));
}

HWND parent(HWND wnd) {
    if (!placement::isWindow(wnd)) return nullptr;
    HWND p = GetAncestor(wnd, GA_PARENT);
    return p == GetDesktopWindow() ? nullptr : p;
}

HWND owner(HWND wnd) { return placement::isWindow(wnd) ? GetWindow(wnd, GW_OWNER) : nullptr; }

bool setParent(HWND wnd, HWND newParent) {
    if (!placement::isWindow(wnd) || (newParent && !placement::isWindow(newParent))) return false;
    // The style first, as SetParent expects: a child has WS_CHILD and no WS_POPUP.
    const LONG_PTR style = GetWindowLongPtrW(wnd, GWL_STYLE);
    SetWindowLongPtrW(wnd, GWL_STYLE, newParent ? ((style | WS_CHILD) & ~static_cast<LONG_PTR>(WS_POPUP)) : (style & ~WS_CHILD));
    SetLastError(0);
    if (!SetParent(wnd, newParent) && GetLastError()) {
        SetWindowLongPtrW(wnd, GWL_STYLE, style);
        return lastError::failed();
    }
    SetWindowPos(wnd, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    return true;
}

long styles(HWND wnd, bool extended) {
    if (!placement::isWindow(wnd)) return 0;
    return static_cast<long>(GetWindowLongPtrW(wnd, extended ? GWL_EXSTYLE : GWL_STYLE));
}

bool modifyStyles(HWND wnd, long remove, long add, bool extended) {
    if (!placement::isWindow(wnd)) return false;
    const int which = extended ? GWL_EXSTYLE : GWL_STYLE;
    const unsigned long old = static_cast<unsigned long>(GetWindowLongPtrW(wnd, which));
    const unsigned long now = (old & ~static_cast<unsigned long>(remove)) | static_cast<unsigned long>(add);
    SetLastError(0);
    if (!SetWindowLongPtrW(wnd, which, static_cast<LONG_PTR>(static_cast<LONG>(now))) && GetLastError())
        return lastError::failed();
    SetWindowPos(wnd, nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    return true;
}

bool bringToFront(HWND wnd) {
    if (!placement::isWindow(wnd)) return false;
    if (IsIconic(wnd)) ShowWindow(wnd, SW_RESTORE);
    return SetForegroundWindow(wnd) ? true : lastError::failed(ERROR_ACCESS_DENIED);
}

}  // namespace tova::identity
