#include "window_placement.h"

#include "last_error.h"
#include "../frame/errors.h"

namespace tova::placement {

namespace {

bool isChild(HWND wnd) { return (GetWindowLongPtrW(wnd, GWL_STYLE) & WS_CHILD) != 0 && GetParent(wnd); }

bool done(BOOL ok) { return ok ? true : lastError::failed(); }

// Top-level windows other than tool windows keep their restored rectangle
// relative to the work area.
bool usesWorkspace(HWND wnd) {
    return !isChild(wnd) && !(GetWindowLongPtrW(wnd, GWL_EXSTYLE) & WS_EX_TOOLWINDOW);
}

POINT workOffsetOf(HWND wnd) {
    MONITORINFO m = {};
    m.cbSize = sizeof m;
    if (!GetMonitorInfoW(MonitorFromWindow(wnd, MONITOR_DEFAULTTONEAREST), &m)) return POINT{0, 0};
    return POINT{m.rcWork.left - m.rcMonitor.left, m.rcWork.top - m.rcMonitor.top};
}

bool place(HWND wnd, HWND after, int x, int y, int cx, int cy, UINT flags) {
    return done(SetWindowPos(wnd, after, x, y, cx, cy, flags | SWP_NOACTIVATE));
}

}  // namespace

bool isWindow(HWND wnd) {
    if (wnd && IsWindow(wnd)) return true;
    lastError::set(ERROR_INVALID_WINDOW_HANDLE);
    return false;
}

bool windowRect(HWND wnd, bool relativeToParent, RECT& out) {
    if (!isWindow(wnd)) return false;
    RECT r;
    if (!GetWindowRect(wnd, &r)) return lastError::failed();
    if (relativeToParent && isChild(wnd)) MapWindowPoints(nullptr, GetParent(wnd), reinterpret_cast<POINT*>(&r), 2);
    out = r;
    return true;
}

bool clientRect(HWND wnd, bool onScreen, RECT& out) {
    if (!isWindow(wnd)) return false;
    RECT r;
    if (!GetClientRect(wnd, &r)) return lastError::failed();
    if (onScreen) MapWindowPoints(wnd, nullptr, reinterpret_cast<POINT*>(&r), 2);
    out = r;
    return true;
}

bool move(HWND wnd, const RECT& r, bool repaint) {
    if (!isWindow(wnd)) return false;
    return done(MoveWindow(wnd, r.left, r.top, r.right - r.left, r.bottom - r.top, repaint));
}

bool setPosition(HWND wnd, long left, long top) {
    return isWindow(wnd) && place(wnd, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

bool setSize(HWND wnd, long width, long height) {
    if (width < 0 || height < 0) raise(kInvalidArgument);
    return isWindow(wnd) && place(wnd, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
}

RECT workspaceToScreen(RECT r, POINT o) { return RECT{r.left + o.x, r.top + o.y, r.right + o.x, r.bottom + o.y}; }
RECT screenToWorkspace(RECT r, POINT o) { return RECT{r.left - o.x, r.top - o.y, r.right - o.x, r.bottom - o.y}; }

bool restoredRect(HWND wnd, RECT& out) {
    if (!isWindow(wnd)) return false;
    WINDOWPLACEMENT wp = {};
    wp.length = sizeof wp;
    if (!GetWindowPlacement(wnd, &wp)) return lastError::failed();
    out = usesWorkspace(wnd) ? workspaceToScreen(wp.rcNormalPosition, workOffsetOf(wnd)) : wp.rcNormalPosition;
    return true;
}

bool setRestoredRect(HWND wnd, const RECT& r) {
    if (!isWindow(wnd)) return false;
    WINDOWPLACEMENT wp = {};
    wp.length = sizeof wp;
    if (!GetWindowPlacement(wnd, &wp)) return lastError::failed();
    wp.rcNormalPosition = usesWorkspace(wnd) ? screenToWorkspace(r, workOffsetOf(wnd)) : r;
    // The show command of the placement is applied too: keep the window as it is.
    if (!IsWindowVisible(wnd)) wp.showCmd = SW_HIDE;
    else if (IsIconic(wnd)) wp.showCmd = SW_SHOWMINNOACTIVE;
    else if (IsZoomed(wnd)) wp.showCmd = SW_SHOWMAXIMIZED;
    else wp.showCmd = SW_SHOWNOACTIVATE;
    return done(SetWindowPlacement(wnd, &wp));
}

POINT centredInside(const RECT& around, long width, long height, const RECT& area) {
    long x = around.left + ((around.right - around.left) - width) / 2;
    long y = around.top + ((around.bottom - around.top) - height) / 2;
    if (width <= area.right - area.left) x = x < area.left ? area.left : x + width > area.right ? area.right - width : x;
    if (height <= area.bottom - area.top) y = y < area.top ? area.top : y + height > area.bottom ? area.bottom - height : y;
    return POINT{x, y};
}

bool workArea(HWND wnd, RECT& out) {
    MONITORINFO m = {};
    m.cbSize = sizeof m;
    HMONITOR monitor = wnd ? MonitorFromWindow(wnd, MONITOR_DEFAULTTONEAREST) : MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY);
    if (!monitor || !GetMonitorInfoW(monitor, &m)) return lastError::failed();
    out = m.rcWork;
    return true;
}

bool centreOnScreen(HWND wnd) {
    if (!isWindow(wnd)) return false;
    RECT w, area{};
    if (!GetWindowRect(wnd, &w)) return lastError::failed();
    const long width = w.right - w.left, height = w.bottom - w.top;
    if (isChild(wnd)) {
        if (!GetClientRect(GetParent(wnd), &area)) return lastError::failed();
    } else if (!workArea(wnd, area)) {
        return false;
    }
    const POINT at{area.left + (area.right - area.left - width) / 2, area.top + (area.bottom - area.top - height) / 2};
    return place(wnd, nullptr, at.x, at.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

bool centreOnOwner(HWND wnd, HWND owner) {
    if (!isWindow(wnd)) return false;
    if (owner && !isWindow(owner)) return false;
    if (!owner) owner = GetWindow(wnd, GW_OWNER);
    if (!owner || isChild(wnd)) return centreOnScreen(wnd);
    RECT w, around, area{};
    if (!GetWindowRect(wnd, &w) || !GetWindowRect(owner, &around)) return lastError::failed();
    if (!workArea(owner, area)) return false;
    const POINT at = centredInside(around, w.right - w.left, w.bottom - w.top, area);
    return place(wnd, nullptr, at.x, at.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

bool setTopmost(HWND wnd, bool onTop) {
    if (!isWindow(wnd)) return false;
    if (isChild(wnd)) return lastError::set(ERROR_INVALID_PARAMETER), false;   // Z order among siblings only
    return place(wnd, onTop ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

bool isTopmost(HWND wnd) { return isWindow(wnd) && (GetWindowLongPtrW(wnd, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0; }

bool flash(HWND wnd, long flags, long count, long interval) {
    if ((flags & ~0xF) != 0 || count < 0 || interval < 0) raise(kInvalidArgument);
    if (!isWindow(wnd)) return false;
    FLASHWINFO f = {sizeof f, wnd, static_cast<DWORD>(flags), static_cast<UINT>(count), static_cast<DWORD>(interval)};
    FlashWindowEx(&f);   // its result is the previous caption state, not success
    return true;
}

long showState(HWND wnd) {
    if (!isWindow(wnd)) return -1;
    if (!IsWindowVisible(wnd)) return SW_HIDE;
    if (IsIconic(wnd)) return SW_SHOWMINIMIZED;
    if (IsZoomed(wnd)) return SW_SHOWMAXIMIZED;
    return SW_SHOWNORMAL;
}

bool setShowState(HWND wnd, long showCmd) {
    if (showCmd < SW_HIDE || showCmd > SW_FORCEMINIMIZE) raise(kInvalidArgument);
    if (!isWindow(wnd)) return false;
    // Another thread's window might hang: ask it without waiting.
    if (GetWindowThreadProcessId(wnd, nullptr) != GetCurrentThreadId()) return done(ShowWindowAsync(wnd, showCmd));
    ShowWindow(wnd, showCmd);   // its result is the previous visibility
    return true;
}

bool setOpacity(HWND wnd, BYTE alpha) {
    if (!isWindow(wnd)) return false;
    const LONG_PTR ex = GetWindowLongPtrW(wnd, GWL_EXSTYLE);
    COLORREF key = 0;
    BYTE old = 255;
    DWORD flags = 0;
    const bool keyed = (ex & WS_EX_LAYERED) && GetLayeredWindowAttributes(wnd, &key, &old, &flags) && (flags & LWA_COLORKEY);
    if (alpha == 255 && !keyed) {
        if (ex & WS_EX_LAYERED) SetWindowLongPtrW(wnd, GWL_EXSTYLE, ex & ~WS_EX_LAYERED);
        return true;
    }
    if (!(ex & WS_EX_LAYERED)) SetWindowLongPtrW(wnd, GWL_EXSTYLE, ex | WS_EX_LAYERED);
    return done(SetLayeredWindowAttributes(wnd, key, alpha, LWA_ALPHA | (keyed ? LWA_COLORKEY : 0)));
}

long opacity(HWND wnd) {
    if (!isWindow(wnd)) return -1;
    if (!(GetWindowLongPtrW(wnd, GWL_EXSTYLE) & WS_EX_LAYERED)) return 255;
    COLORREF key = 0;
    BYTE alpha = 255;
    DWORD flags = 0;
    if (!GetLayeredWindowAttributes(wnd, &key, &alpha, &flags)) return 255;   // layered by UpdateLayeredWindow
    return (flags & LWA_ALPHA) ? alpha : 255;
}

bool screenToClient(HWND wnd, POINT& p) { return isWindow(wnd) && done(ScreenToClient(wnd, &p)); }
bool clientToScreen(HWND wnd, POINT& p) { return isWindow(wnd) && done(ClientToScreen(wnd, &p)); }

}  // namespace tova::placement
