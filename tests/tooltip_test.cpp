// Tooltip headless under Wine's null driver: real windows, the pointer moved
// with SetCursorPos, the popup measured with GetWindowRect and the picture
// read back from DrawTip.
#include "window_support.h"

#include "bench/graphics_cycles.h"

#include <thread>

using namespace test;

namespace {

constexpr DISPID kRequire = 1, kBefore = 2, kShow = 3, kHide = 4;

// Logs the events as letters with their times; answers RequireTipText and
// BeforeShow when told to.
struct TipLog : Sink {
    const wchar_t* answer = nullptr;   // TipText written back
    long duration = -1;                // AnimationDuration written back when >= 0
    std::function<void(DISPID)> also;
    std::string order;
    std::vector<DWORD> times;

    TipLog() {
        handler = [this](DISPID id, DISPPARAMS* p) {
            order += "?RBSH"[id];
            times.push_back(GetTickCount());
            if (id == kRequire && answer) {
                SysFreeString(*V_BSTRREF(&p->rgvarg[0]));
                *V_BSTRREF(&p->rgvarg[0]) = SysAllocString(answer);
            }
            if (id == kBefore && duration >= 0) *V_I4REF(&p->rgvarg[0]) = duration;
            if (also) also(id);
        };
    }
    DWORD at(char event) const { return times[order.find(event)]; }
    bool waitFor(const std::string& expected, DWORD ms = 3000) {
        pump(ms, [&] { return order == expected; });
        return order == expected;
    }
};

ComPtr<_Tooltip> newTip() { return create<_Tooltip>(CLSID_Tooltip, IID__Tooltip); }

void pointAt(HWND wnd, int x, int y) {
    POINT p{x, y};
    ClientToScreen(wnd, &p);
    SetCursorPos(p.x, p.y);
}

RECT windowRect(HWND wnd) {
    RECT r{};
    GetWindowRect(wnd, &r);
    return r;
}

HWND popupOf(_Tooltip* t) {
    LONG h = 0;
    t->get_hWnd(&h);
    return tova::toHandle<HWND>(h);
}

SIZE measure(_Tooltip* t, const wchar_t* text) {
    SIZE s{};
    VARIANT_BOOL ok;
    Variant v(text);
    t->MeasureTip(&s.cx, &s.cy, v, &ok);
    return s;
}

bool isVisible(_Tooltip* t) {
    VARIANT_BOOL v = 0;
    t->get_Visible(&v);
    return v != 0;
}

long addTool(_Tooltip* t, HWND wnd, const wchar_t* text, const RECT* r = nullptr) {
    long id = 0;
    Bstr s(text);
    const long h = tova::fromHandle(wnd);
    if (r) {
        TOVA_RECT tr = tova::fromWin32(*r);
        t->AddTool2(h, &tr, s.get(), &id);
    } else {
        t->AddTool(h, s.get(), &id);
    }
    return id;
}

// A solid red 16 x 16 icon, fully opaque.
HICON redIcon() {
    BITMAPINFO bi{};
    bi.bmiHeader = {sizeof(BITMAPINFOHEADER), 16, 16, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    DWORD* bits = nullptr;
    HBITMAP colour = CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits), nullptr, 0);
    for (int i = 0; i < 256; ++i) bits[i] = 0x00FF0000;
    HBITMAP mask = CreateBitmap(16, 16, 1, 1, nullptr);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, mask);
    PatBlt(dc, 0, 0, 16, 16, BLACKNESS);
    SelectObject(dc, old);
    DeleteDC(dc);
    ICONINFO ii{TRUE, 0, 0, mask, colour};
    HICON icon = CreateIconIndirect(&ii);
    DeleteObject(colour);
    DeleteObject(mask);
    return icon;
}

class TooltipTest : public ::testing::Test {
protected:
    void SetUp() override {
        SetCursorPos(5, 5);
        pump(50);
        ASSERT_TRUE(w.hwnd());
        ASSERT_TRUE(t);
        log.connect(t.get(), DIID___Tooltip);
        t->put_Delay(50);
        t->put_Animation(tovaTipAnimateNone);
    }
    void TearDown() override { SetCursorPos(5, 5); }

    TestWindow w{100, 100, 200, 150};
    ComPtr<_Tooltip> t = newTip();
    TipLog log;
};

TEST_F(TooltipTest, EventsComeInOrderAndAnswersAreReadBack) {
    t->put_Animation(tovaTipAnimateFade);
    const long id = addTool(t.get(), w.hwnd(), L"Hello");
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BS")) << log.order;
    EXPECT_EQ(200, V_I4(&log.calls[0].args[0])) << "BeforeShow starts with AnimationDuration";
    EXPECT_TRUE(isVisible(t.get()));
    SetCursorPos(5, 5);
    ASSERT_TRUE(log.waitFor("BSH")) << log.order;
    EXPECT_FALSE(isVisible(t.get()));

    // Empty text asks the client, and the answer is what shows.
    t->put_ToolText(id, Bstr(L"").get());
    log.order.clear();
    log.calls.clear();
    log.answer = L"Dyn";
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("RBS")) << log.order;
    EXPECT_EQ(w.handle(), V_I4(&log.calls[0].args[0]));
    EXPECT_STREQ(L"", V_BSTR(&log.calls[0].args[1]));
    const RECT r = windowRect(popupOf(t.get()));
    const SIZE s = measure(t.get(), L"Dyn");
    EXPECT_EQ(s.cx, r.right - r.left);
    EXPECT_EQ(s.cy, r.bottom - r.top);
    SetCursorPos(5, 5);
    ASSERT_TRUE(log.waitFor("RBSH")) << log.order;

    // An empty answer: nothing more.
    log.order.clear();
    log.answer = L"";
    pointAt(w.hwnd(), 30, 40);
    pump(400);
    EXPECT_EQ("R", log.order);
    EXPECT_FALSE(IsWindowVisible(popupOf(t.get())));
}

TEST_F(TooltipTest, AnimationTakesTheDurationBeforeShowLeaves) {
    t->put_Text(Bstr(L"Timing").get());
    t->put_Animation(tovaTipAnimateFade);
    t->put_AnimationDuration(400);
    VARIANT_BOOL ok = 0;
    ASSERT_EQ(S_OK, t->ShowTip(300, 200, 0, &ok));
    EXPECT_TRUE(ok);
    ASSERT_TRUE(log.waitFor("BS")) << log.order;
    EXPECT_GE(log.at('S') - log.at('B'), 390u);
    std::printf("fade 400 ms: Show %lu ms after BeforeShow\n", log.at('S') - log.at('B'));

    // 0 from BeforeShow: Show within the same call.
    log.order.clear();
    log.times.clear();
    log.duration = 0;
    t->ShowTip(300, 200, 0, &ok);
    EXPECT_EQ("HBS", log.order) << "the visible tip hides first";

    // Unrolling: at half time part of the height, the top fixed below the anchor.
    log.order.clear();
    log.times.clear();
    log.duration = -1;
    t->put_Animation(tovaTipAnimateSlide);
    t->put_Alignment(tovaTipAlignBelow);
    const SIZE full = measure(t.get(), L"Timing");
    t->ShowTip(300, 200, 0, &ok);
    ASSERT_EQ("HB", log.order);
    pump(200, [&] { return GetTickCount() - log.at('B') >= 200; });
    const RECT half = windowRect(popupOf(t.get()));
    EXPECT_EQ(202, half.top);
    EXPECT_GE(half.bottom - half.top, full.cy * 20 / 100);
    EXPECT_LE(half.bottom - half.top, full.cy * 80 / 100);
    ASSERT_TRUE(log.waitFor("HBS"));
    EXPECT_EQ(full.cy, windowRect(popupOf(t.get())).bottom - 202);
}

TEST_F(TooltipTest, ButtonsDurationAndOtherToolsHide) {
    addTool(t.get(), w.hwnd(), L"Whole");
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BS"));
    SendMessageW(w.hwnd(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(30, 40));
    EXPECT_EQ("BSH", log.order);
    pointAt(w.hwnd(), 35, 45);
    pump(300);
    EXPECT_EQ("BSH", log.order) << "quiet until the pointer leaves";
    SetCursorPos(5, 5);
    pump(100);
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BSHBS")) << log.order;

    // Duration.
    SetCursorPos(5, 5);
    ASSERT_TRUE(log.waitFor("BSHBSH"));
    log.order.clear();
    log.times.clear();
    t->put_Duration(300);
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BSH", 3000)) << log.order;
    const DWORD lived = log.at('H') - log.at('S');
    std::printf("Duration 300: hidden after %lu ms\n", lived);
    EXPECT_GE(lived, 290u);
    EXPECT_LT(lived, 700u);
}

TEST_F(TooltipTest, TheLastAddedToolWinsAndMovingOnWaitsAFifth) {
    t->put_Delay(250);
    addTool(t.get(), w.hwnd(), L"Whole");
    const RECT a{0, 0, 60, 60}, b{80, 0, 140, 60};
    const long ida = addTool(t.get(), w.hwnd(), L"A", &a);
    const long idb = addTool(t.get(), w.hwnd(), L"B", &b);
    long current = 0;
    log.also = [&](DISPID id) {
        if (id == kBefore) t->get_CurrentTool(&current);
    };
    pointAt(w.hwnd(), 20, 20);
    ASSERT_TRUE(log.waitFor("BS"));
    EXPECT_EQ(ida, current);
    pointAt(w.hwnd(), 100, 20);
    ASSERT_TRUE(log.waitFor("BSHBS")) << log.order;
    EXPECT_EQ(idb, current);
    const DWORD wait = log.times[3] - log.times[2];
    std::printf("from A to B: BeforeShow %lu ms after Hide (Delay 250)\n", wait);
    EXPECT_LT(wait, 200u);
}

TEST_F(TooltipTest, ARectangleToolFollowsItsRectangleAndTextChangesShowAtOnce) {
    auto rect = newRectangle();
    TOVA_RECT first{0, 0, 50, 50}, moved{80, 60, 140, 120};
    rect->SetRectangle(&first);
    long id = 0;
    ASSERT_EQ(S_OK, t->AddTool4(w.handle(), rect.get(), Bstr(L"Follow").get(), &id));
    pointAt(w.hwnd(), 100, 80);
    pump(300);
    EXPECT_EQ("", log.order) << "outside the rectangle";
    rect->SetRectangle(&moved);
    pointAt(w.hwnd(), 101, 81);
    ASSERT_TRUE(log.waitFor("BS"));
    long current = 0;
    t->get_CurrentTool(&current);
    EXPECT_EQ(id, current);

    const wchar_t* longer = L"A much longer text than before";
    t->put_ToolText(id, Bstr(longer).get());
    const RECT r = windowRect(popupOf(t.get()));
    EXPECT_EQ(measure(t.get(), longer).cx, r.right - r.left);
    EXPECT_EQ("BS", log.order) << "no events for a change";
}

TEST_F(TooltipTest, TrackingFollowsThePointerWithoutEvents) {
    t->put_ShowMode(tovaTipShowTrackCursor);
    addTool(t.get(), w.hwnd(), L"Track");
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BS"));
    const RECT before = windowRect(popupOf(t.get()));
    pointAt(w.hwnd(), 50, 50);
    pump(500, [&] { return windowRect(popupOf(t.get())).left != before.left; });
    const RECT after = windowRect(popupOf(t.get()));
    EXPECT_EQ(before.left + 20, after.left);
    EXPECT_EQ(before.top + 10, after.top);
    EXPECT_EQ("BS", log.order);
}

TEST_F(TooltipTest, PlacementFlipsAndShiftsAtTheWorkAreasEdges) {
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    t->put_Text(Bstr(L"Placed").get());
    const SIZE s = measure(t.get(), L"Placed");
    VARIANT_BOOL ok;
    t->ShowTip(300, 200, 0, &ok);
    RECT r = windowRect(popupOf(t.get()));
    EXPECT_EQ(300, r.left);
    EXPECT_EQ(200, r.top);

    t->put_Alignment(tovaTipAlignBelow);
    t->ShowTip(300, work.bottom - 5, 0, &ok);
    r = windowRect(popupOf(t.get()));
    EXPECT_EQ(work.bottom - 5 - 2, r.bottom) << "flipped above";

    t->ShowTip(work.right - 3, 200, 0, &ok);
    r = windowRect(popupOf(t.get()));
    EXPECT_EQ(work.right, r.right) << "shifted inside";
    EXPECT_EQ(202, r.top);
    EXPECT_EQ(s.cx, r.right - r.left);
}

TEST_F(TooltipTest, DrawTipPaintsTheShapesAndIcons) {
    const COLORREF fore = RGB(0, 0, 200), back = RGB(255, 255, 200), red = RGB(255, 0, 0), sentinel = RGB(1, 2, 3);
    HICON icon = redIcon();
    t->put_ForeColor(static_cast<long>(fore));
    t->put_BackColor(static_cast<long>(back));
    t->put_IconHandle(tova::fromHandle(icon));
    Variant text(L"Hi");
    VARIANT_BOOL ok = 0;
    {
        Canvas c(200, 100);
        ASSERT_EQ(S_OK, t->DrawTip(c.handle(), 0, 0, text, &ok));
        ASSERT_TRUE(ok);
        const SIZE s = measure(t.get(), L"Hi");
        for (POINT p : {POINT{0, 0}, POINT{s.cx - 1, 0}, POINT{0, s.cy - 1}, POINT{s.cx - 1, s.cy - 1}})
            EXPECT_EQ(fore, c.pixel(p.x, p.y)) << p.x << "," << p.y;
        EXPECT_EQ(back, c.pixel(1, 1));
        EXPECT_EQ(back, c.pixel(4, 4));
        EXPECT_EQ(red, c.pixel(5, 5));
        EXPECT_EQ(red, c.pixel(20, 20));
        EXPECT_EQ(sentinel, c.pixel(s.cx, 0));
        EXPECT_EQ(sentinel, c.pixel(0, s.cy));
    }
    {   // A balloon, stem up.
        t->put_Balloon(VARIANT_TRUE);
        t->put_Alignment(tovaTipAlignBelow);
        Canvas c(200, 100);
        t->DrawTip(c.handle(), 0, 0, text, &ok);
        ASSERT_TRUE(ok);
        EXPECT_EQ(sentinel, c.pixel(0, 12)) << "the rounded corner";
        EXPECT_EQ(red, c.pixel(9, 21));
        EXPECT_EQ(red, c.pixel(24, 36));
        int row = -1, col = -1;
        for (int y = 0; y < 3 && row < 0; ++y)
            for (int x = 0; x < 60; ++x)
                if (c.pixel(x, y) == fore) {
                    row = y, col = x;
                    break;
                }
        EXPECT_LE(row, 1);
        EXPECT_NEAR(16, col, 1) << "the stem's tip";
    }
    {   // Wrapping.
        t->put_Balloon(VARIANT_FALSE);
        t->put_IconHandle(0);
        const wchar_t* sentence = L"a few short words that wrap into some lines";
        const SIZE one = measure(t.get(), sentence);
        t->put_MaxWidth(80);
        const SIZE wrapped = measure(t.get(), sentence);
        EXPECT_LE(wrapped.cx, 90);
        EXPECT_GT(wrapped.cy, one.cy);
    }
    DestroyIcon(icon);
}

TEST_F(TooltipTest, LivesBesideMouseTrackOnTheSameWindow) {
    for (bool trackFirst : {true, false}) {
        SCOPED_TRACE(trackFirst ? "MouseTrack attached first" : "Tooltip attached first");
        ComPtr<_Tooltip> tip = newTip();
        TipLog tips;
        tips.connect(tip.get(), DIID___Tooltip);
        tip->put_Delay(50);
        auto m = create<_MouseTrackEx>(CLSID_MouseTrackEx, IID__MouseTrackEx);
        Sink mouse;
        mouse.connect(m.get(), DIID___MouseTrackEx);
        if (trackFirst) m->AttachMouseTracking(w.handle());
        const long id = addTool(tip.get(), w.hwnd(), L"Both");
        if (!trackFirst) m->AttachMouseTracking(w.handle());
        pointAt(w.hwnd(), 30, 40);
        pump(3000, [&] { return tips.order == "BS" && !mouse.calls.empty(); });
        EXPECT_EQ("BS", tips.order);
        ASSERT_FALSE(mouse.calls.empty());
        EXPECT_EQ(1, mouse.calls[0].id) << "MouseHover";
        const RECT r = windowRect(popupOf(tip.get()));
        EXPECT_EQ(w.hwnd(), WindowFromPoint(POINT{(r.left + r.right) / 2, (r.top + r.bottom) / 2}));
        SetCursorPos(5, 5);
        pump(3000, [&] { return tips.order == "BSH" && mouse.calls.back().id == 2; });
        EXPECT_EQ("BSH", tips.order);
        EXPECT_EQ(2, mouse.calls.back().id) << "MouseLeave";
        VARIANT_BOOL removed;
        tip->RemoveTool(id, &removed);
        m->DetachMouseTracking();
        tips.disconnect();
        mouse.disconnect();
    }
}

TEST_F(TooltipTest, DestroyingTheWindowOrReleasingTheObjectLeavesNothing) {
    auto methods = create<_SubclassingMethods>(CLSID_SubclassingMethods, IID__SubclassingMethods);
    ComPtr<_SubclassDatabase> db;
    methods->GetSubclassDatabase(db.put());
    long records = 0, before = 0;
    db->get_Count(&before);

    TestWindow other(100, 300, 150, 100);
    const long a = addTool(t.get(), other.hwnd(), L"One");
    const RECT corner{0, 0, 10, 10};
    const long b = addTool(t.get(), other.hwnd(), L"Two", &corner);
    db->get_Count(&records);
    EXPECT_EQ(before + 8, records);
    pointAt(other.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BS"));
    other.destroy();
    EXPECT_EQ("BSH", log.order);
    VARIANT_BOOL removed = -1;
    t->RemoveTool(a, &removed);
    EXPECT_FALSE(removed);
    t->RemoveTool(b, &removed);
    EXPECT_FALSE(removed);
    pump(100, [&] { return db->get_Count(&records), records == before; });
    EXPECT_EQ(before, records) << "the detach posted to the popup ran";

    // Releasing a visible object.
    const LONG_PTR original = GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC);
    addTool(t.get(), w.hwnd(), L"Three");
    EXPECT_NE(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
    pointAt(w.hwnd(), 30, 40);
    ASSERT_TRUE(log.waitFor("BSHBS"));
    const HWND popup = popupOf(t.get());
    log.disconnect();
    t.reset();
    EXPECT_FALSE(IsWindow(popup));
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
    for (const std::string& n : propNames(w.hwnd())) EXPECT_EQ(0, propValue(w.hwnd(), n)) << n;
    db->get_Count(&records);
    EXPECT_EQ(before, records);
}

TEST_F(TooltipTest, BadArgumentsRaiseAndChangeNothing) {
    const long id = addTool(t.get(), w.hwnd(), L"Tool");
    TOVA_RECT empty{5, 5, 5, 20};
    long got = 0;
    VARIANT_BOOL ok = -1;
    Bstr none(L"");
    struct Case {
        const char* what;
        std::function<HRESULT()> call;
        long code;
    } cases[] = {
        {"AddTool of no window", [&] { return t->AddTool(0, none.get(), &got); }, 13083},
        {"AddTool2 of an empty rectangle", [&] { return t->AddTool2(w.handle(), &empty, none.get(), &got); }, 5},
        {"AddTool4 of Nothing", [&] { return t->AddTool4(w.handle(), nullptr, none.get(), &got); }, 91},
        {"ToolText of an unknown id", [&] { return t->put_ToolText(id + 1, none.get()); }, 5},
        {"MoveTool to an empty rectangle", [&] { return t->MoveTool(id, &empty, &ok); }, 5},
        {"Icon 5", [&] { return t->put_Icon(static_cast<TooltipIconConstants>(5)); }, 5},
        {"MaxWidth -1", [&] { return t->put_MaxWidth(-1); }, 5},
        {"ForeColor not a colour", [&] { return t->put_ForeColor(static_cast<long>(0x800000FF)); }, 5},
        {"BackColor not a colour", [&] { return t->put_BackColor(static_cast<long>(0x800000FF)); }, 5},
        {"ShowMode 3", [&] { return t->put_ShowMode(static_cast<TooltipShowModeConstants>(3)); }, 5},
        {"Alignment 5", [&] { return t->put_Alignment(static_cast<TooltipAlignmentConstants>(5)); }, 5},
        {"Animation -2", [&] { return t->put_Animation(static_cast<TooltipAnimationConstants>(-2)); }, 5},
        {"AnimationDuration -1", [&] { return t->put_AnimationDuration(-1); }, 5},
        {"Delay -1", [&] { return t->put_Delay(-1); }, 5},
        {"Duration -1", [&] { return t->put_Duration(-1); }, 5},
    };
    for (const Case& c : cases) EXPECT_EQ(c.code, HRESULT_CODE(c.call())) << c.what;
    long delay = 0;
    t->get_Delay(&delay);
    EXPECT_EQ(50, delay);

    // Soft failures.
    TOVA_RECT r{0, 0, 10, 10};
    t->MoveTool(id + 1, &r, &ok);
    EXPECT_FALSE(ok);
    t->RemoveTool(id + 1, &ok);
    EXPECT_FALSE(ok);
    Variant text(L"x"), nothing(L"");
    t->DrawTip(0, 0, 0, text, &ok);
    EXPECT_FALSE(ok);
    SIZE s{1, 1};
    t->MeasureTip(&s.cx, &s.cy, nothing, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(0, s.cx + s.cy);
    t->put_Enabled(VARIANT_FALSE);
    t->ShowTip(10, 10, 0, &ok);
    EXPECT_FALSE(ok);
    t->put_Enabled(VARIANT_TRUE);

    // A window of another thread.
    HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, nullptr), done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HWND foreign = nullptr;
    std::thread owner([&] {
        foreign = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
        SetEvent(ready);
        WaitForSingleObject(done, 5000);
        DestroyWindow(foreign);
    });
    WaitForSingleObject(ready, 5000);
    EXPECT_EQ(5, HRESULT_CODE(t->AddTool(tova::fromHandle(foreign), none.get(), &got)));
    SetEvent(done);
    owner.join();
    CloseHandle(ready);
    CloseHandle(done);

    // ShowTip inside its own events.
    HRESULT inside = S_OK;
    log.also = [&](DISPID e) {
        VARIANT_BOOL shown;
        if (e == kRequire || e == kBefore) inside = t->ShowTip(1, 1, 0, &shown);
    };
    log.answer = L"asked";
    t->ShowTip(10, 10, 0, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ("RBS", log.order);
    EXPECT_EQ(17, HRESULT_CODE(inside));
}

BOOL CALLBACK countWindow(HWND, LPARAM n) {
    ++*reinterpret_cast<long*>(n);
    return TRUE;
}

// Create, add a tool, show in every shape and animation, hide, release: no
// GDI object, window or window property stays.
TEST(TooltipLeaks, CyclesLeaveNothingBehind) {
    TestWindow w;
    HICON icon = redIcon();
    auto windows = [] {
        long n = 0;
        EnumThreadWindows(GetCurrentThreadId(), countWindow, reinterpret_cast<LPARAM>(&n));
        return n;
    };
    auto cycle = [&](long i) {
        ComPtr<_Tooltip> t = newTip();
        TipLog log;
        log.connect(t.get(), DIID___Tooltip);
        long id = 0;
        t->AddTool(w.handle(), Bstr(L"").get(), &id);
        log.answer = L"Leak test";
        t->put_Balloon(i % 2 ? VARIANT_TRUE : VARIANT_FALSE);
        t->put_Alignment(static_cast<TooltipAlignmentConstants>(i % 5));
        t->put_Animation(static_cast<TooltipAnimationConstants>(i % 3));
        t->put_AnimationDuration(20);
        t->put_Title(Bstr(i % 3 ? L"Title" : L"").get());
        if (i % 5 == 4) t->put_IconHandle(tova::fromHandle(icon));
        else t->put_Icon(static_cast<TooltipIconConstants>(i % 5));
        VARIANT_BOOL ok;
        t->ShowTip(200, 200, w.handle(), &ok);
        if (i % 4 == 0) pump(40, [&] { return log.order.find('S') != std::string::npos; });
        if (i % 2) t->HideTip();
        log.disconnect();
    };
    for (long i = 0; i < 5; ++i) cycle(i);   // the system's shared icons and screen DCs stay with the process
    const DWORD gdi = cycles::gdiObjects();
    const long wins = windows();
    const DWORD start = GetTickCount();
    constexpr long kCycles = 300;
    for (long i = 1; i <= kCycles; ++i) cycle(i);
    std::printf("%ld cycles in %lu ms; GDI objects %lu -> %lu, windows %ld -> %ld\n", kCycles, GetTickCount() - start,
                gdi, cycles::gdiObjects(), wins, windows());
    EXPECT_EQ(gdi, cycles::gdiObjects());
    EXPECT_EQ(wins, windows());
    for (const std::string& n : propNames(w.hwnd())) EXPECT_EQ(0, propValue(w.hwnd(), n)) << n;
    DestroyIcon(icon);
}

// Where the system has no per-pixel alpha windows (the 9x line, NT 4): a plain
// popup clipped by the shape's region; fade shows at once, unrolling resizes.
TEST(TooltipFallback, PlainPopupUnderOlderSystems) {
    if (!configuredVersion()) GTEST_SKIP() << "run as an older system by TooltipFallback.UnderEachOlderSystem";
    TestWindow w;
    ComPtr<_Tooltip> t = newTip();
    TipLog log;
    log.connect(t.get(), DIID___Tooltip);
    t->put_Text(Bstr(L"Plain").get());
    t->put_Balloon(VARIANT_TRUE);
    t->put_Alignment(tovaTipAlignBelow);
    t->put_Animation(tovaTipAnimateFade);
    VARIANT_BOOL ok = 0;
    t->ShowTip(300, 200, 0, &ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ("BS", log.order) << "no fade without alpha: shown at once";
    EXPECT_EQ(0, V_I4(&log.calls[0].args[0]));
    const HWND popup = popupOf(t.get());
    EXPECT_EQ(0, GetWindowLongW(popup, GWL_EXSTYLE) & WS_EX_LAYERED);
    tova::GdiObject<HRGN> rgn(CreateRectRgn(0, 0, 0, 0));
    ASSERT_NE(ERROR, GetWindowRgn(popup, rgn.get()));
    EXPECT_FALSE(PtInRegion(rgn.get(), 0, 12)) << "the balloon's corner is outside";
    EXPECT_TRUE(PtInRegion(rgn.get(), 20, 30));
    const RECT r = windowRect(popup);
    EXPECT_NE(popup, WindowFromPoint(POINT{r.left + 20, r.top + 30})) << "transparent to the mouse";

    t->put_Animation(tovaTipAnimateSlide);
    t->put_AnimationDuration(400);
    log.order.clear();
    log.times.clear();
    const SIZE full = measure(t.get(), L"Plain");
    t->ShowTip(300, 200, 0, &ok);
    pump(200, [&] { return GetTickCount() - log.at('B') >= 200; });
    const RECT half = windowRect(popup);
    EXPECT_GE(half.bottom - half.top, full.cy * 20 / 100);
    EXPECT_LE(half.bottom - half.top, full.cy * 80 / 100);
    ASSERT_TRUE(log.waitFor("HBS"));
    EXPECT_EQ(full.cy, windowRect(popup).bottom - windowRect(popup).top);
}

TEST(TooltipFallback, UnderEachOlderSystem) {
    if (configuredVersion()) GTEST_SKIP() << "inside a configured run";
    for (const char* version : {"nt40", "win98"}) {
        const Rerun r = rerunAsVersion(version, "TooltipFallback.PlainPopupUnderOlderSystems");
        EXPECT_TRUE(r.started) << version << ", error " << r.error;
        EXPECT_EQ(0u, r.code) << "as " << version;
    }
}

}  // namespace
