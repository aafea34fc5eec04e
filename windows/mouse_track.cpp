#include "mouse_track.h"

#include "subclass.h"

namespace tova {

const ClassIdentity MouseTrack::kClass = {L"MouseTrack", &CLSID_MouseTrack, &IID__MouseTrack, &DIID___MouseTrack};
const ClassIdentity MouseTrackEx::kClass = {L"MouseTrackEx", &CLSID_MouseTrackEx, &IID__MouseTrackEx,
                                            &DIID___MouseTrackEx};

HRESULT createMouseTrack(REFIID riid, void** ppv) { return MouseTrack::create(riid, ppv); }
HRESULT createMouseTrackEx(REFIID riid, void** ppv) { return MouseTrackEx::create(riid, ppv); }

namespace mouse {

namespace {

constexpr long kDetect = -1, kUser32 = 0, kComCtl32 = 1, kWorkAround = 2;
constexpr UINT kActivate = WM_ACTIVATE, kMove = WM_MOUSEMOVE, kLeftUp = WM_LBUTTONUP, kMiddleUp = WM_MBUTTONUP,
               kRightUp = WM_RBUTTONUP, kHover = 0x02A1, kLeave = 0x02A3;
constexpr DWORD kStart = 0x00000003;      // hover and leave
constexpr DWORD kCancel = 0x80000003;     // cancel hover and leave
constexpr DWORD kHoverTime = 10;
constexpr DISPID kHoverEvent = 1, kLeaveEvent = 2;

using TrackFunction = BOOL(WINAPI*)(TRACKMOUSEEVENT*);

// Both services are looked up at run time: systems without them use the work-around.
TrackFunction user32Track() {
    static TrackFunction f = reinterpret_cast<TrackFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("user32.dll"), "TrackMouseEvent")));
    return f;
}

// The common-controls library stays loaded once it is used, as a declared
// import would.
TrackFunction comctlTrack() {
    static TrackFunction f = [] {
        HMODULE m = LoadLibraryA("ComCtl32.dll");
        return m ? reinterpret_cast<TrackFunction>(reinterpret_cast<void*>(GetProcAddress(m, "_TrackMouseEvent")))
                 : nullptr;
    }();
    return f;
}

struct ComCtlVersion {   // DLLVERSIONINFO
    DWORD cbSize, dwMajorVersion, dwMinorVersion, dwBuildNumber, dwPlatformID;
};

// Whether the common-controls library is recent enough (above 4.70).
bool comctlIsGood() {
    HMODULE m = LoadLibraryA("ComCtl32.dll");
    if (!m) return false;
    bool good = false;
    using GetVersion = HRESULT(CALLBACK*)(ComCtlVersion*);
    if (auto get = reinterpret_cast<GetVersion>(reinterpret_cast<void*>(GetProcAddress(m, "DllGetVersion")))) {
        ComCtlVersion v{};
        v.cbSize = sizeof v;   // 20
        if (get(&v) == 0)
            good = v.dwMajorVersion > 4 || (v.dwMajorVersion == 4 && v.dwMinorVersion > 70);
    }
    FreeLibrary(m);
    return good;
}

bool buttonsUp() {
    return GetAsyncKeyState(VK_LBUTTON) == 0 && GetAsyncKeyState(VK_MBUTTON) == 0 &&
           GetAsyncKeyState(VK_RBUTTON) == 0;
}

}  // namespace

void hoverArguments(WPARAM wParam, LPARAM lParam, short& button, short& shift, float& x, float& y) {
    button = 0;
    if ((wParam & MK_LBUTTON) && (wParam & MK_RBUTTON)) button = 3;
    else if (wParam & MK_LBUTTON) button = 1;
    else if (wParam & MK_RBUTTON) button = 2;
    if (wParam & MK_MBUTTON) button |= 4;
    shift = 0;
    if (wParam & MK_CONTROL) shift = 2;
    if (wParam & MK_SHIFT) shift = (wParam & MK_CONTROL) ? 3 : 1;
    const long l = static_cast<long>(lParam);
    x = static_cast<float>(l & 65535);
    y = static_cast<float>(l / 65536);
}

void Tracker::detect() {
    comctl_ = true;
    workAround_ = false;
    // The size of the wide record, kept as it always was although the narrow
    // function is called: systems that refuse it fall through to the
    // common-controls test.
    union {
        OSVERSIONINFOA a;
        unsigned char bytes[276];
    } v{};
    v.a.dwOSVersionInfoSize = 276;
    if (GetVersionExA(&v.a)) {
        if ((v.a.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS && v.a.dwMajorVersion >= 5) ||
            (v.a.dwPlatformId == VER_PLATFORM_WIN32_NT && v.a.dwMajorVersion >= 4))
            comctl_ = false;
    }
    if (comctl_ && !comctlIsGood()) {
        comctl_ = false;
        workAround_ = true;
    }
    method_ = comctl_ ? kComCtl32 : workAround_ ? kWorkAround : kUser32;
}

void Tracker::attach(HWND wnd, long forceMethod) {
    detach();
    comctl_ = workAround_ = false;
    if (forceMethod != kDetect) {
        comctl_ = forceMethod == kComCtl32;
        workAround_ = forceMethod == kWorkAround;
        method_ = forceMethod;
    } else {
        detect();
    }
    wnd_ = wnd;
    if (!wnd) return;
    subclass::attach(client_, wnd, kMove);
    if (workAround_) {
        subclass::attach(client_, wnd, kLeftUp);
        subclass::attach(client_, wnd, kMiddleUp);
        subclass::attach(client_, wnd, kRightUp);
        // No test for a parent: a window without one makes this attach raise.
        parent_ = GetParent(wnd);
        subclass::attach(client_, parent_, kActivate);
    } else {
        subclass::attach(client_, wnd, kHover);
        subclass::attach(client_, wnd, kLeave);
    }
}

void Tracker::attachExtended(HWND wnd) {
    detach();
    wnd_ = wnd;
    if (!wnd) return;
    subclass::attach(client_, wnd, kMove);
    subclass::attach(client_, wnd, kHover);
    subclass::attach(client_, wnd, kLeave);
}

bool Tracker::request(DWORD flags) {
    TRACKMOUSEEVENT t{};
    t.cbSize = sizeof t;
    t.dwFlags = flags;
    t.hwndTrack = wnd_;
    t.dwHoverTime = kHoverTime;
    TrackFunction f = (!extended_ && comctl_) ? comctlTrack() : user32Track();
    return f && f(&t);
}

void Tracker::start() {
    if (tracking_) return;
    if (!extended_ && workAround_) {
        SetCapture(wnd_);
        tracking_ = true;
        return;
    }
    tracking_ = request(kStart);
}

void Tracker::detach() {
    if (!wnd_) return;
    if (tracking_) {
        if (extended_ || !workAround_) request(kCancel);
        tracking_ = false;
    }
    if (extended_) {
        subclass::detach(client_, wnd_, kLeave);
        subclass::detach(client_, wnd_, kHover);
        subclass::detach(client_, wnd_, kMove);
    } else {
        subclass::detach(client_, wnd_, kMove);
        if (workAround_) {
            ReleaseCapture();
            subclass::detach(client_, wnd_, kLeftUp);
            subclass::detach(client_, wnd_, kMiddleUp);
            subclass::detach(client_, wnd_, kRightUp);
            if (parent_) subclass::detach(client_, parent_, kActivate);
        } else {
            subclass::detach(client_, wnd_, kHover);
            subclass::detach(client_, wnd_, kLeave);
        }
    }
    parent_ = nullptr;
    wnd_ = nullptr;
}

// A button released during the work-around's capture: back inside, capture
// again; outside with every button up, the pointer has left.
void Tracker::released(LPARAM lParam) {
    const long l = static_cast<long>(lParam);
    POINT p{l & 65535, l / 65536};
    RECT client{};
    GetClientRect(wnd_, &client);
    const bool inside = PtInRect(&client, p) != 0;
    POINT screen = p;
    ClientToScreen(wnd_, &screen);
    const bool over = WindowFromPoint(screen) == wnd_;
    if (inside && over) {
        tracking_ = false;
        start();
    } else if (buttonsUp()) {
        tracking_ = false;
        ReleaseCapture();
        events_->leave();
    }
}

void Tracker::windowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case kActivate:
        if (tracking_) {
            tracking_ = false;
            ReleaseCapture();
            events_->leave();
        }
        break;
    case kMove:
        if (!tracking_) start();
        break;
    case kLeftUp:
    case kMiddleUp:
    case kRightUp:
        if (!extended_ && workAround_) released(lParam);
        else if (!tracking_) start();
        break;
    case kHover: {
        tracking_ = false;   // the next move asks again
        short button, shift;
        float x, y;
        hoverArguments(wParam, lParam, button, shift, x, y);
        events_->hover(button, shift, x, y);
        break;
    }
    case kLeave:
        tracking_ = false;
        events_->leave();
        break;
    default:
        break;
    }
}

}  // namespace mouse

// ------------------------------------------------------------------ MouseTrack

MouseTrack::~MouseTrack() { tracker_.detach(); }

void MouseTrack::hover(short& button, short& shift, float& x, float& y) {
    EventArgs args;
    args.ref(button).ref(shift).ref(x).ref(y);
    raiseEvent(mouse::kHoverEvent, args);
}

void MouseTrack::leave() {
    EventArgs args;
    raiseEvent(mouse::kLeaveEvent, args);
}

STDMETHODIMP MouseTrack::get_TrackMethod(MouseTrackMethodConstants* pRet) {
    return guard([&] { *required(pRet) = static_cast<MouseTrackMethodConstants>(tracker_.method()); });
}

STDMETHODIMP MouseTrack::AttachMouseTracking(LONG hWnd, MouseTrackMethodConstants ForceMethod) {
    return guard([&] { tracker_.attach(toHandle<HWND>(hWnd), ForceMethod); });
}

STDMETHODIMP MouseTrack::StartMouseTracking() { return guard([&] { tracker_.start(); }); }
STDMETHODIMP MouseTrack::DetachMouseTracking() { return guard([&] { tracker_.detach(); }); }
STDMETHODIMP MouseTrack::get_Tracking(VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(tracker_.tracking()); });
}

// ---------------------------------------------------------------- MouseTrackEx

MouseTrackEx::~MouseTrackEx() { tracker_.detach(); }

void MouseTrackEx::hover(short& button, short& shift, float& x, float& y) {
    EventArgs args;
    args.ref(button).ref(shift).ref(x).ref(y);
    raiseEvent(mouse::kHoverEvent, args);
}

void MouseTrackEx::leave() {
    EventArgs args;
    raiseEvent(mouse::kLeaveEvent, args);
}

STDMETHODIMP MouseTrackEx::IsAttached(LONG hWnd, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(toHandle<HWND>(hWnd) == tracker_.window()); });
}

STDMETHODIMP MouseTrackEx::AttachMouseTracking(LONG hWnd) {
    return guard([&] { tracker_.attachExtended(toHandle<HWND>(hWnd)); });
}

STDMETHODIMP MouseTrackEx::StartMouseTracking() { return guard([&] { tracker_.start(); }); }
STDMETHODIMP MouseTrackEx::DetachMouseTracking() { return guard([&] { tracker_.detach(); }); }
STDMETHODIMP MouseTrackEx::get_Tracking(VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(tracker_.tracking()); });
}

}  // namespace tova
