// MouseTrack and MouseTrackEx on real windows, the pointer moved with
// SetCursorPos: hover once per rest, re-armed by the next move, leave.
#include "window_support.h"

#include <algorithm>

using namespace test;

namespace {

constexpr DISPID kHover = 1, kLeave = 2;

struct MouseLog : Sink {
    size_t count(DISPID id) const {
        size_t n = 0;
        for (const Call& c : calls) n += c.id == id;
        return n;
    }
};

// The pointer at a point of the window's client area.
void pointAt(HWND wnd, int x, int y) {
    POINT p{x, y};
    ClientToScreen(wnd, &p);
    SetCursorPos(p.x, p.y);
}

class MouseTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetCursorPos(5, 5);   // well outside the window
        pump(50);
        ASSERT_TRUE(w.hwnd());
        original = GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC);
    }
    void TearDown() override { SetCursorPos(5, 5); }
    bool waitFor(MouseLog& log, DISPID id, size_t n, DWORD ms = 2000) {
        pump(ms, [&] { return log.count(id) >= n; });
        return log.count(id) >= n;
    }
    void leftNothingBehind() {
        EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
        for (const std::string& n : propNames(w.hwnd()))
            EXPECT_EQ(0, propValue(w.hwnd(), n)) << "left behind: " << n;   // only zero counts stay
    }

    TestWindow w{100, 100, 200, 150};
    LONG_PTR original = 0;
};

TEST_F(MouseTest, ExHoversOncePerRestAndLeaves) {
    auto m = create<_MouseTrackEx>(CLSID_MouseTrackEx, IID__MouseTrackEx);
    ASSERT_TRUE(m);
    MouseLog log;
    log.connect(m.get(), DIID___MouseTrackEx);
    ASSERT_EQ(S_OK, m->AttachMouseTracking(w.handle()));
    VARIANT_BOOL attached = 0;
    m->IsAttached(w.handle(), &attached);
    EXPECT_EQ(VARIANT_TRUE, attached);

    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(waitFor(log, kHover, 1)) << "no hover";
    const Sink::Call& hover = log.calls.back();
    ASSERT_EQ(4u, hover.args.size());
    EXPECT_EQ(VT_I2, V_VT(&hover.args[0]));
    EXPECT_EQ(0, V_I2(&hover.args[0]));
    EXPECT_EQ(0, V_I2(&hover.args[1]));
    EXPECT_EQ(VT_R4, V_VT(&hover.args[2]));
    EXPECT_EQ(30.0f, V_R4(&hover.args[2]));
    EXPECT_EQ(40.0f, V_R4(&hover.args[3]));
    VARIANT_BOOL tracking = -1;
    m->get_Tracking(&tracking);
    EXPECT_EQ(VARIANT_FALSE, tracking) << "a hover ends the request";

    pump(300);
    EXPECT_EQ(1u, log.count(kHover)) << "no second hover without motion";
    pointAt(w.hwnd(), 60, 50);
    ASSERT_TRUE(waitFor(log, kHover, 2)) << "the next move and rest hovers again";

    SetCursorPos(5, 5);
    ASSERT_TRUE(waitFor(log, kLeave, 1)) << "no leave";
    m->DetachMouseTracking();
    m->IsAttached(0, &attached);
    EXPECT_EQ(VARIANT_TRUE, attached) << "the stored window is 0 after a detach";
    leftNothingBehind();
}

TEST_F(MouseTest, TrackDetectsAMethodThatWorks) {
    auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
    ASSERT_TRUE(m);
    MouseLog log;
    log.connect(m.get(), DIID___MouseTrack);
    ASSERT_EQ(S_OK, m->AttachMouseTracking(w.handle(), tovaMouseTrackDetect));
    MouseTrackMethodConstants method = tovaMouseTrackDetect;
    m->get_TrackMethod(&method);
    EXPECT_TRUE(method == tovaMouseTrackUser32 || method == tovaMouseTrackComCtl32) << method;
    std::printf("detected method: %d\n", static_cast<int>(method));
    pointAt(w.hwnd(), 20, 20);
    EXPECT_TRUE(waitFor(log, kHover, 1));
    SetCursorPos(5, 5);
    EXPECT_TRUE(waitFor(log, kLeave, 1));
    m->DetachMouseTracking();
    leftNothingBehind();
}

TEST_F(MouseTest, ForcedCommonControlsMethod) {
    auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
    MouseLog log;
    log.connect(m.get(), DIID___MouseTrack);
    ASSERT_EQ(S_OK, m->AttachMouseTracking(w.handle(), tovaMouseTrackComCtl32));
    MouseTrackMethodConstants method = tovaMouseTrackDetect;
    m->get_TrackMethod(&method);
    EXPECT_EQ(tovaMouseTrackComCtl32, method);
    pointAt(w.hwnd(), 20, 20);
    EXPECT_TRUE(waitFor(log, kHover, 1));
    SetCursorPos(5, 5);
    EXPECT_TRUE(waitFor(log, kLeave, 1));
    m->DetachMouseTracking();
}

TEST_F(MouseTest, HoverArgumentsEncodeButtonsAndShift) {
    auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
    MouseLog log;
    log.connect(m.get(), DIID___MouseTrack);
    ASSERT_EQ(S_OK, m->AttachMouseTracking(w.handle(), tovaMouseTrackUser32));
    struct Case {
        WPARAM keys;
        short button, shift;
    } cases[] = {
        {MK_LBUTTON, 1, 0},
        {MK_RBUTTON, 2, 0},
        {MK_LBUTTON | MK_RBUTTON, 3, 0},
        {MK_MBUTTON, 4, 0},
        {MK_LBUTTON | MK_RBUTTON | MK_MBUTTON, 7, 0},
        {MK_CONTROL, 0, 2},
        {MK_SHIFT, 0, 1},
        {MK_SHIFT | MK_CONTROL | MK_RBUTTON | MK_MBUTTON, 6, 3},
    };
    for (const Case& c : cases) {
        log.calls.clear();
        SendMessageW(w.hwnd(), WM_MOUSEHOVER, c.keys, MAKELPARAM(12, 34));
        ASSERT_EQ(1u, log.count(kHover));
        const Sink::Call& h = log.calls[0];
        EXPECT_EQ(c.button, V_I2(&h.args[0])) << c.keys;
        EXPECT_EQ(c.shift, V_I2(&h.args[1])) << c.keys;
        EXPECT_EQ(12.0f, V_R4(&h.args[2]));
        EXPECT_EQ(34.0f, V_R4(&h.args[3]));
    }
    EXPECT_TRUE(std::find(w.seen.begin(), w.seen.end(), static_cast<UINT>(WM_MOUSEHOVER)) != w.seen.end())
        << "the window's own procedure runs first";
    m->DetachMouseTracking();
}

TEST_F(MouseTest, WorkAroundCapturesAndReportsLeaveOnButtonUpOutside) {
    TestWindow parent(300, 100, 300, 200);
    // Not a static control: those are transparent to WindowFromPoint.
    HWND child = CreateWindowExW(0, L"TovaTestWindow", L"", WS_CHILD | WS_VISIBLE, 10, 10, 100, 80, parent.hwnd(), nullptr,
                                 nullptr, nullptr);
    ASSERT_TRUE(child);
    long childHandle = static_cast<long>(reinterpret_cast<LONG_PTR>(child));
    auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
    MouseLog log;
    log.connect(m.get(), DIID___MouseTrack);
    ASSERT_EQ(S_OK, m->AttachMouseTracking(childHandle, tovaMouseTrackWorkAround));
    MouseTrackMethodConstants method{};
    m->get_TrackMethod(&method);
    EXPECT_EQ(tovaMouseTrackWorkAround, method);

    SendMessageW(child, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    VARIANT_BOOL tracking = 0;
    m->get_Tracking(&tracking);
    EXPECT_EQ(VARIANT_TRUE, tracking);
    EXPECT_EQ(child, GetCapture());

    // Released inside: captured again, no leave.
    pointAt(child, 5, 5);
    pump(50);
    SendMessageW(child, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    EXPECT_EQ(0u, log.count(kLeave));
    EXPECT_EQ(child, GetCapture());
    // Released outside while another button is held: no leave.
    INPUT down{};
    down.type = INPUT_MOUSE;
    down.mi.dwFlags = MOUSEEVENTF_RIGHTDOWN;
    SendInput(1, &down, sizeof down);
    pump(50);
    if (GetAsyncKeyState(VK_RBUTTON) != 0) {
        SendMessageW(child, WM_LBUTTONUP, 0, MAKELPARAM(500, 5));
        EXPECT_EQ(0u, log.count(kLeave)) << "the right button is still down";
    } else {
        ADD_FAILURE() << "SendInput did not press the right button";
    }
    INPUT up = down;
    up.mi.dwFlags = MOUSEEVENTF_RIGHTUP;
    SendInput(1, &up, sizeof up);
    pump(50);
    if (GetCapture() != child) SendMessageW(child, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    ASSERT_EQ(child, GetCapture());
    // Released outside with every button up: leave.
    SendMessageW(child, WM_LBUTTONUP, 0, MAKELPARAM(500, 5));
    EXPECT_EQ(1u, log.count(kLeave));
    m->get_Tracking(&tracking);
    EXPECT_EQ(VARIANT_FALSE, tracking);
    EXPECT_NE(child, GetCapture());

    // Activation of the parent while tracking: leave.
    SendMessageW(child, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    SendMessageW(parent.hwnd(), WM_ACTIVATE, WA_INACTIVE, 0);
    EXPECT_EQ(2u, log.count(kLeave));
    m->DetachMouseTracking();
    EXPECT_EQ(nullptr, GetPropA(parent.hwnd(), ("C" + std::to_string(parent.handle())).c_str()));
    DestroyWindow(child);
}

TEST_F(MouseTest, WorkAroundOnAWindowWithoutParentRaisesInvalidWindow) {
    auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
    EXPECT_EQ(static_cast<HRESULT>(0x8004331B), m->AttachMouseTracking(w.handle(), tovaMouseTrackWorkAround));
    m->DetachMouseTracking();
    leftNothingBehind();
}

TEST_F(MouseTest, ReleasedWhileTrackingCleansUp) {
    MouseLog log;
    {
        auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
        log.connect(m.get(), DIID___MouseTrack);
        ASSERT_EQ(S_OK, m->AttachMouseTracking(w.handle(), tovaMouseTrackUser32));
        pointAt(w.hwnd(), 50, 50);
        pump(1000, [&] {
            VARIANT_BOOL t = 0;
            m->get_Tracking(&t);
            return t != 0;
        });
        log.disconnect();   // the sink's connection point holds the object
    }
    leftNothingBehind();
    pointAt(w.hwnd(), 70, 70);
    pump(200);   // no hover reaches the object that is gone
    EXPECT_EQ(0u, log.calls.size());
}

TEST_F(MouseTest, AttachToAnInvalidWindowRaises) {
    auto m = create<_MouseTrackEx>(CLSID_MouseTrackEx, IID__MouseTrackEx);
    TestWindow gone;
    long dead = gone.handle();
    gone.destroy();
    EXPECT_EQ(static_cast<HRESULT>(0x8004331B), m->AttachMouseTracking(dead));
    EXPECT_EQ(L"Invalid window", lastError().description);
}

TEST_F(MouseTest, LateBoundAttachWithTheDefaultMethod) {
    auto m = create<_MouseTrack>(CLSID_MouseTrack, IID__MouseTrack);
    CallResult r;
    call(r, m.get(), L"AttachMouseTracking", DISPATCH_METHOD, {vLong(w.handle())});
    EXPECT_EQ(S_OK, r.hr);
    CallResult method;
    call(method, m.get(), L"TrackMethod", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(VT_I4, V_VT(&method.value));
    EXPECT_NE(tovaMouseTrackWorkAround, V_I4(&method.value));
    CallResult d;
    call(d, m.get(), L"DetachMouseTracking", DISPATCH_METHOD, {});
    leftNothingBehind();
}

}  // namespace
