#include "tooltip_window.h"

#include <atomic>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace tova::tip {

namespace {

const wchar_t kClass[] = L"TovaTooltip";
constexpr UINT kDetachMessage = WM_APP + 1;
std::atomic<long> classUsers{0};   // popups alive; the class goes with the last

HINSTANCE thisModule() { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

using UpdateLayered = BOOL(WINAPI*)(HWND, HDC, POINT*, SIZE*, HDC, POINT*, COLORREF, BLENDFUNCTION*, DWORD);

// Per-pixel alpha windows: looked up at run time, and not used on the systems
// that lack them even where a newer system reports an old version.
UpdateLayered updateLayered() {
    static const UpdateLayered f = []() -> UpdateLayered {
        OSVERSIONINFOW v{};
        v.dwOSVersionInfoSize = sizeof v;
        if (!GetVersionExW(&v) || v.dwPlatformId != VER_PLATFORM_WIN32_NT || v.dwMajorVersion < 5) return nullptr;
        return reinterpret_cast<UpdateLayered>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "UpdateLayeredWindow")));
    }();
    return f;
}

}  // namespace

Popup::~Popup() {
    if (!wnd_) return;
    SetWindowLongPtrW(wnd_, GWLP_USERDATA, 0);
    DestroyWindow(wnd_);   // its timers go with it
    if (--classUsers == 0) UnregisterClassW(kClass, thisModule());
}

bool Popup::create() {
    if (wnd_) return true;
    WNDCLASSW wc{};
    wc.lpfnWndProc = &Popup::proc;
    wc.hInstance = thisModule();
    wc.lpszClassName = kClass;
    wc.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));   // IDC_ARROW;
    if (classUsers == 0 && !RegisterClassW(&wc) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) return false;
    layered_ = updateLayered() != nullptr;
    const DWORD ex = WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE | (layered_ ? WS_EX_LAYERED | WS_EX_TRANSPARENT : 0);
    wnd_ = CreateWindowExW(ex, kClass, L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, thisModule(), nullptr);
    if (!wnd_) {
        if (classUsers == 0) UnregisterClassW(kClass, thisModule());
        return false;
    }
    ++classUsers;
    SetWindowLongPtrW(wnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    return true;
}

bool Popup::show(const Surface& surface, GdiObject<HRGN> shape, POINT topLeft, RECT part, BYTE alpha) {
    if (!wnd_) return false;
    partOffset_ = POINT{part.left, part.top};
    POINT at{topLeft.x + part.left, topLeft.y + part.top};
    SIZE size{part.right - part.left, part.bottom - part.top};
    surface_ = &surface;
    if (layered_) {
        POINT src = partOffset_;
        BLENDFUNCTION blend{AC_SRC_OVER, 0, alpha, AC_SRC_ALPHA};
        if (updateLayered()(wnd_, nullptr, &at, &size, surface.dc(), &src, 0, &blend, ULW_ALPHA)) {
            if (!visible_) SetWindowPos(wnd_, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
            visible_ = true;
            return true;
        }
        // Refused: the plain popup from now on.
        layered_ = false;
        SetWindowLongPtrW(wnd_, GWL_EXSTYLE, WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE);
    }
    return showPlain(std::move(shape), at, size);
}

bool Popup::showPlain(GdiObject<HRGN> shape, POINT at, SIZE size) {
    if (shape) {
        OffsetRgn(shape.get(), -partOffset_.x, -partOffset_.y);
        // Taken by the window on success; ours to delete (by the owner) otherwise.
        if (SetWindowRgn(wnd_, shape.get(), FALSE)) shape.release();
    }
    SetWindowPos(wnd_, HWND_TOPMOST, at.x, at.y, size.cx, size.cy, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    visible_ = true;
    InvalidateRect(wnd_, nullptr, FALSE);
    UpdateWindow(wnd_);
    return true;
}

void Popup::moveTo(POINT topLeft, const Surface& surface) {
    if (!wnd_ || !visible_) return;
    surface_ = &surface;
    SetWindowPos(wnd_, nullptr, topLeft.x + partOffset_.x, topLeft.y + partOffset_.y, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Popup::hide() {
    surface_ = nullptr;
    if (!wnd_ || !visible_) return;
    visible_ = false;
    ShowWindow(wnd_, SW_HIDE);
    if (!layered_) SetWindowRgn(wnd_, nullptr, FALSE);
}

void Popup::setTimer(UINT_PTR id, UINT ms) {
    if (wnd_) SetTimer(wnd_, id, ms, nullptr);
}

void Popup::killTimer(UINT_PTR id) {
    if (wnd_) KillTimer(wnd_, id);
}

void Popup::postDetach(HWND wnd) {
    if (wnd_) PostMessageW(wnd_, kDetachMessage, reinterpret_cast<WPARAM>(wnd), 0);
}

void Popup::paint() {
    PAINTSTRUCT ps;
    HDC dc = BeginPaint(wnd_, &ps);
    if (dc && surface_) {
        RECT r;
        GetClientRect(wnd_, &r);
        BitBlt(dc, 0, 0, r.right, r.bottom, surface_->dc(), partOffset_.x, partOffset_.y, SRCCOPY);
    }
    EndPaint(wnd_, &ps);
}

LRESULT CALLBACK Popup::proc(HWND wnd, UINT msg, WPARAM w, LPARAM l) {
    auto* self = reinterpret_cast<Popup*>(GetWindowLongPtrW(wnd, GWLP_USERDATA));
    if (self) {
        switch (msg) {
        case WM_TIMER:
            self->owner_->popupTimer(w);
            return 0;
        case kDetachMessage:
            self->owner_->popupDetach(reinterpret_cast<HWND>(w));
            return 0;
        case WM_PAINT:
            self->paint();
            return 0;
        case WM_NCHITTEST:
            return HTTRANSPARENT;
        case WM_MOUSEACTIVATE:
            return MA_NOACTIVATE;
        default:
            break;
        }
    }
    return DefWindowProcW(wnd, msg, w, l);
}

}  // namespace tova::tip
