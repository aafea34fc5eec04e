// APIMethods on real windows: placement, show state, opacity, identity,
// finding, messages, the task bar and fonts, as Wine's null display driver
// keeps them (no pixels reach a screen: styles and attributes tell).
#include "api_support.h"
#include "window_support.h"

#include "windows/taskbar.h"
#include "windows/window_placement.h"

#include <algorithm>
#include <thread>

using namespace test;

namespace {

long handleOf(HWND w) { return static_cast<long>(reinterpret_cast<LONG_PTR>(w)); }

// A child window of the system's static class, destroyed with the test.
struct Child {
    HWND wnd;
    Child(HWND parent, int x, int y, const wchar_t* cls = L"STATIC", const wchar_t* text = L"")
        : wnd(CreateWindowExW(0, cls, text, WS_CHILD | WS_VISIBLE, x, y, 50, 40, parent, nullptr, nullptr, nullptr)) {}
    ~Child() { if (IsWindow(wnd)) DestroyWindow(wnd); }
    long handle() const { return handleOf(wnd); }
};

long deadWindow() {
    TestWindow w;
    const long h = w.handle();
    w.destroy();
    return h;
}

TEST(ApiWindowPlacement, RectanglesMovesAndSizes) {
    auto a = api();
    TestWindow top(10, 20, 300, 200);
    Child child(top.hwnd(), 5, 6), grandchild(child.wnd, 1, 2);
    LONG l = 0, t = 0, w = 0, h = 0;
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->GetWindowRect3(top.handle(), &l, &t, &w, &h, VARIANT_FALSE, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(10, l);
    EXPECT_EQ(20, t);
    EXPECT_EQ(300, w);
    EXPECT_EQ(200, h);
    TOVA_RECT r{};
    a->GetWindowRect(child.handle(), &r, VARIANT_TRUE, &ok);
    EXPECT_EQ(5, r.Left);
    EXPECT_EQ(6, r.Top);
    EXPECT_EQ(55, r.Right);
    a->MoveWindow(child.handle(), &r, VARIANT_TRUE, &ok);
    a->GetWindowRect(child.handle(), &r, VARIANT_TRUE, &ok);
    EXPECT_EQ(5, r.Left) << "MoveWindow takes what GetWindowRect gives";
    a->GetClientRect(child.handle(), &r, VARIANT_FALSE, &ok);
    EXPECT_EQ((TOVA_RECT{0, 0, 50, 40}.Right), r.Right);
    a->SetWindowPosition(top.handle(), 30, 40, &ok);
    a->SetWindowSize(top.handle(), 250, 150, &ok);
    a->GetWindowRect3(top.handle(), &l, &t, &w, &h, VARIANT_FALSE, &ok);
    EXPECT_EQ(30, l);
    EXPECT_EQ(250, w);
    a->MoveWindow3(top.handle(), 12, 22, 200, 100, VARIANT_TRUE, &ok);
    auto rect = newRectangle();
    LONG v = 40;
    rect->put_Left(&v);
    rect->put_Top(&v);
    v = 240;
    rect->put_Right(&v);
    v = 140;
    rect->put_Bottom(&v);
    a->MoveWindow4(top.handle(), rect.get(), VARIANT_TRUE, &ok);
    a->GetWindowRect3(top.handle(), &l, &t, &w, &h, VARIANT_FALSE, &ok);
    EXPECT_EQ(40, l);
    EXPECT_EQ(200, w);
    EXPECT_EQ(91, errorNumber(a->MoveWindow4(top.handle(), nullptr, VARIANT_TRUE, &ok)));

    // A getter given no window keeps its outputs.
    l = -7;
    a->GetWindowRect3(deadWindow(), &l, &t, &w, &h, VARIANT_FALSE, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(-7, l);
    EXPECT_EQ(1400, lastDllError(a.get()));
    POINTAPI p{0, 0};
    a->ClientToScreen(child.handle(), &p, &ok);
    RECT cr;
    GetWindowRect(child.wnd, &cr);
    EXPECT_EQ(cr.left, p.X);
    a->ScreenToClient(child.handle(), &p, &ok);
    EXPECT_EQ(0, p.X);
}

TEST(ApiWindowPlacement, CentringStaysOnScreen) {
    auto a = api();
    TOVA_RECT work{};
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->GetWorkArea(&work, 0, &ok);
    ASSERT_TRUE(ok);
    TestWindow w(0, 0, 301, 201);
    a->CentreWindowOnScreen(w.handle(), &ok);
    EXPECT_TRUE(ok);
    RECT r;
    GetWindowRect(w.hwnd(), &r);
    EXPECT_NEAR((work.Left + work.Right) / 2.0, (r.left + r.right) / 2.0, 1);
    EXPECT_NEAR((work.Top + work.Bottom) / 2.0, (r.top + r.bottom) / 2.0, 1);

    // An owned window over an owner at the right edge is kept inside the work area.
    TestWindow owner(work.Right - 100, 100, 100, 100);
    HWND owned = CreateWindowExW(0, L"STATIC", L"owned", WS_POPUP | WS_VISIBLE, 0, 0, 300, 200, owner.hwnd(), nullptr, nullptr, nullptr);
    a->CentreWindowOnOwner(handleOf(owned), 0, &ok);
    EXPECT_TRUE(ok);
    GetWindowRect(owned, &r);
    EXPECT_EQ(work.Right, r.right);
    EXPECT_EQ(150 - 100, r.top) << "centred vertically on the owner";
    DestroyWindow(owned);
    // The arithmetic alone: centred on the area when it fits, else left as it comes.
    const POINT inside = tova::placement::centredInside(RECT{900, 0, 1000, 100}, 300, 50, RECT{0, 0, 1024, 768});
    EXPECT_EQ(724, inside.x);
    const POINT wide = tova::placement::centredInside(RECT{0, 0, 100, 100}, 2000, 50, RECT{0, 0, 1024, 768});
    EXPECT_EQ(-950, wide.x);
}

TEST(ApiWindowPlacement, TopmostFlashShowStatesAndOpacity) {
    auto a = api();
    TestWindow w(10, 20, 300, 200);
    Child child(w.hwnd(), 5, 6);
    VARIANT_BOOL ok = VARIANT_FALSE, b = VARIANT_FALSE;
    a->SetAlwaysOnTop(w.handle(), VARIANT_TRUE, &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(GetWindowLongPtrW(w.hwnd(), GWL_EXSTYLE) & WS_EX_TOPMOST);
    a->IsAlwaysOnTop(w.handle(), &b);
    EXPECT_TRUE(b);
    a->SetAlwaysOnTop(w.handle(), VARIANT_FALSE, &ok);
    EXPECT_FALSE(GetWindowLongPtrW(w.hwnd(), GWL_EXSTYLE) & WS_EX_TOPMOST);
    a->SetAlwaysOnTop(child.handle(), VARIANT_TRUE, &ok);
    EXPECT_FALSE(ok);

    a->FlashWindow(w.handle(), FLASHW_ALL, 2, 0, &ok);
    EXPECT_TRUE(ok);
    a->FlashWindow(deadWindow(), FLASHW_STOP, 0, 0, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(1400, lastDllError(a.get()));

    ShowWindowConstants state{};
    a->SetShowState(w.handle(), SW_MINIMIZE, &ok);
    a->GetShowState(w.handle(), &state);
    EXPECT_EQ(SW_SHOWMINIMIZED, state);
    TOVA_RECT r{};
    a->GetRestoredRect(w.handle(), &r, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ((TOVA_RECT{10, 20, 310, 220}.Left), r.Left);
    EXPECT_EQ(220, r.Bottom);
    a->SetShowState(w.handle(), SW_MAXIMIZE, &ok);
    a->GetShowState(w.handle(), &state);
    EXPECT_EQ(SW_SHOWMAXIMIZED, state);
    TOVA_RECT moved{50, 60, 250, 160};
    a->SetRestoredRect(w.handle(), &moved, &ok);
    EXPECT_TRUE(ok);
    a->GetShowState(w.handle(), &state);
    EXPECT_EQ(SW_SHOWMAXIMIZED, state) << "the show state is kept";
    a->SetShowState(w.handle(), SW_RESTORE, &ok);
    RECT now;
    GetWindowRect(w.hwnd(), &now);
    EXPECT_EQ(50, now.left);
    EXPECT_EQ(160, now.bottom);
    EXPECT_EQ(5, errorNumber(a->SetShowState(w.handle(), static_cast<ShowWindowConstants>(12), &ok)));
    a->SetShowState(w.handle(), SW_HIDE, &ok);
    a->SetRestoredRect(w.handle(), &moved, &ok);
    EXPECT_FALSE(IsWindowVisible(w.hwnd())) << "hidden stays hidden";
    a->GetShowState(deadWindow(), &state);
    EXPECT_EQ(-1, state);
    // The workspace conversion, with a work area that does not start at the monitor's corner.
    const RECT ws = tova::placement::screenToWorkspace(RECT{100, 50, 200, 150}, POINT{40, 0});
    EXPECT_EQ(60, ws.left);
    EXPECT_EQ(100, tova::placement::workspaceToScreen(ws, POINT{40, 0}).left);

    LONG alpha = 0;
    a->SetWindowOpacity(w.handle(), 128, &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(GetWindowLongPtrW(w.hwnd(), GWL_EXSTYLE) & WS_EX_LAYERED);
    a->GetWindowOpacity(w.handle(), &alpha);
    EXPECT_EQ(128, alpha);
    a->SetWindowOpacity(w.handle(), 255, &ok);
    EXPECT_FALSE(GetWindowLongPtrW(w.hwnd(), GWL_EXSTYLE) & WS_EX_LAYERED);
    a->GetWindowOpacity(w.handle(), &alpha);
    EXPECT_EQ(255, alpha);
    a->GetWindowOpacity(deadWindow(), &alpha);
    EXPECT_EQ(-1, alpha);
}

TEST(ApiWindowIdentity, TextFamilyIdsStylesAndFinding) {
    auto a = api();
    auto misc = create<_MiscMethods>(CLSID_MiscMethods, IID__MiscMethods);
    const std::wstring title = L"Gr\u00FC\u00DFe \u03A9 \U0001F600";
    TestWindow w(10, 20, 300, 200);
    Child child(w.hwnd(), 5, 6, L"STATIC", L"first"), second(w.hwnd(), 60, 6, L"BUTTON", L"second"),
        grandchild(child.wnd, 1, 2);
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->SetWindowText(w.handle(), Bstr(title).get(), &ok);
    EXPECT_TRUE(ok);
    Bstr s;
    a->GetWindowText(w.handle(), s.put());
    EXPECT_EQ(title, s.str());
    a->GetClassName(second.handle(), s.put());
    EXPECT_EQ(0, lstrcmpiW(L"Button", s.get()));
    LONG h = 0, id = 0;
    a->GetParentWindow(child.handle(), &h);
    EXPECT_EQ(w.handle(), h);
    a->GetParentWindow(w.handle(), &h);
    EXPECT_EQ(0, h) << "a top-level window has no parent";
    a->GetWindowProcessId(w.handle(), &id);
    LONG mine = 0;
    misc->CurrentProcessId(&mine);
    EXPECT_EQ(mine, id);
    a->GetWindowThreadId(w.handle(), &id);
    misc->CurrentThreadId(&mine);
    EXPECT_EQ(mine, id);

    Variant list;
    a->GetChildWindows(w.handle(), Bstr(L"").get(), VARIANT_TRUE, &list);
    EXPECT_EQ(3u, arrayLongs(list).size());
    a->GetChildWindows(w.handle(), Bstr(L"").get(), VARIANT_FALSE, list.put());
    EXPECT_EQ(2u, arrayLongs(list).size());
    a->GetChildWindows(w.handle(), Bstr(L"button").get(), VARIANT_TRUE, list.put());
    EXPECT_EQ(std::vector<long>{second.handle()}, arrayLongs(list));
    a->GetChildWindows(grandchild.handle(), Bstr(L"").get(), VARIANT_TRUE, list.put());
    EXPECT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&list));
    EXPECT_TRUE(arrayLongs(list).empty());
    a->GetChildWindows(deadWindow(), Bstr(L"").get(), VARIANT_TRUE, list.put());
    EXPECT_EQ(VT_EMPTY, V_VT(&list));
    a->GetTopLevelWindows(static_cast<LONG>(GetCurrentProcessId()), VARIANT_FALSE, list.put());
    const std::vector<long> own = arrayLongs(list);
    EXPECT_NE(own.end(), std::find(own.begin(), own.end(), w.handle()));
    for (long x : own) {
        DWORD pid = 0;
        GetWindowThreadProcessId(reinterpret_cast<HWND>(static_cast<LONG_PTR>(x)), &pid);
        EXPECT_EQ(GetCurrentProcessId(), pid);
    }
    LONG found = 0;
    a->FindChildWindow(w.handle(), Bstr(L"").get(), Bstr(L"").get(), child.handle(), &found);
    EXPECT_EQ(second.handle(), found) << "the sibling after hWndAfter";
    a->FindWindowLike(Bstr(L"Gr*e \u03A9*").get(), Bstr(L"*").get(), 0, &found);
    EXPECT_EQ(w.handle(), found);
    a->FindWindowLike(Bstr(L"SEC*").get(), Bstr(L"*").get(), w.handle(), &found);
    EXPECT_EQ(second.handle(), found) << "descendants, any case";
    EXPECT_EQ(93, errorNumber(a->FindWindowLike(Bstr(L"[z-a]").get(), Bstr(L"*").get(), 0, &found)));

    a->SetParentWindow(grandchild.handle(), w.handle(), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(w.hwnd(), GetParent(grandchild.wnd));
    EXPECT_TRUE(GetWindowLongPtrW(grandchild.wnd, GWL_STYLE) & WS_CHILD);
    LONG style = 0;
    a->ModifyWindowStyle(w.handle(), WS_MAXIMIZEBOX, 0, VARIANT_FALSE, &ok);
    a->GetWindowStyle(w.handle(), VARIANT_FALSE, &style);
    EXPECT_FALSE(style & WS_MAXIMIZEBOX);
    EXPECT_TRUE(style & WS_MINIMIZEBOX);
    a->EnableWindow(w.handle(), VARIANT_FALSE, &ok);
    a->IsWindowEnabled(w.handle(), &ok);
    EXPECT_FALSE(ok);
    a->EnableWindow(w.handle(), VARIANT_TRUE, &ok);
    a->IsWindow(deadWindow(), &ok);
    EXPECT_FALSE(ok);
}

LRESULT CALLBACK sleepyProc(HWND wnd, UINT msg, WPARAM wp, LPARAM lp) {
    if (msg == WM_USER + 7) Sleep(1500);
    return DefWindowProcW(wnd, msg, wp, lp);
}

TEST(ApiWindowMessages, SendWithTimeoutPostAndForeground) {
    auto a = api();
    TestWindow w(10, 20, 300, 200);
    SetWindowTextW(w.hwnd(), L"twelve chars");
    LONG_PTR r = 0;
    a->SendMessage(w.handle(), WM_GETTEXTLENGTH, 0, 0, 0, &r);
    EXPECT_EQ(12, r);
    a->SendMessageString(w.handle(), WM_SETTEXT, 0, Bstr(L"new").get(), 200, &r);
    EXPECT_EQ(1, r);
    wchar_t text[16];
    GetWindowTextW(w.hwnd(), text, 16);
    EXPECT_EQ(std::wstring(L"new"), text);

    // A window whose thread sleeps: the timeout ends the wait.
    HWND sleepy = nullptr;
    HANDLE made = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread other([&] {
        WNDCLASSW wc{};
        wc.lpfnWndProc = sleepyProc;
        wc.lpszClassName = L"tova_sleepy";
        wc.hInstance = GetModuleHandleW(nullptr);
        RegisterClassW(&wc);
        sleepy = CreateWindowExW(0, L"tova_sleepy", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr, wc.hInstance, nullptr);
        SetEvent(made);
        MSG m;
        const DWORD end = GetTickCount() + 3000;
        while (GetTickCount() < end) {
            while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&m);
            Sleep(5);
        }
        DestroyWindow(sleepy);
    });
    WaitForSingleObject(made, 5000);
    CloseHandle(made);
    PostMessageW(sleepy, WM_USER + 7, 0, 0);
    Sleep(50);
    const DWORD start = GetTickCount();
    a->SendMessage(handleOf(sleepy), WM_NULL, 0, 0, 200, &r);
    EXPECT_LT(GetTickCount() - start, 1000u);
    EXPECT_EQ(0, r);
    EXPECT_EQ(ERROR_TIMEOUT, lastDllError(a.get()));
    EXPECT_EQ(5, errorNumber(a->SendMessage(w.handle(), WM_NULL, 0, 0, -1, &r)));
    other.join();

    VARIANT_BOOL ok = VARIANT_FALSE;
    const LONG_PTR wide = sizeof(void*) == 8 ? static_cast<LONG_PTR>(0x100000000LL) : 0x7FFFFFFF;
    a->PostMessage(w.handle(), WM_USER + 3, wide, -1, &ok);
    EXPECT_TRUE(ok);
    MSG m;
    ASSERT_TRUE(PeekMessageW(&m, w.hwnd(), WM_USER + 3, WM_USER + 3, PM_REMOVE));
    EXPECT_EQ(static_cast<WPARAM>(wide), m.wParam) << "a 64-bit wParam arrives whole";

    TestWindow second(400, 300, 200, 150);
    a->SetForegroundWindow(w.handle(), &ok);
    EXPECT_TRUE(ok);
    LONG fg = 0;
    a->GetForegroundWindow(&fg);
    EXPECT_EQ(w.handle(), fg);
    a->SetForegroundWindow(second.handle(), &ok);
    a->GetForegroundWindow(&fg);
    EXPECT_EQ(second.handle(), fg);
    a->GetWindowFromPoint(500, 375, &fg);
    EXPECT_EQ(second.handle(), fg);
}

UINT_PTR WINAPI noTaskbar(DWORD, PAPPBARDATA) { return 0; }

TEST(ApiTaskbar, ConsistentWithTheScreenOrAbsent) {
    auto a = api();
    TOVA_RECT bar{}, work{}, mon{};
    VARIANT_BOOL ok = VARIANT_FALSE, has = VARIANT_FALSE;
    TaskbarEdgeConstants edge{};
    a->GetTaskbarRect(&bar, &has);
    a->GetTaskbarEdge(&edge);
    a->GetMonitorRect(&mon, 0, &ok);
    a->GetWorkArea(&work, 0, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(has != VARIANT_FALSE, edge != tovaTaskbarEdgeUnknown);
    if (has) {
        const long onEdge[] = {bar.Left, bar.Top, bar.Right, bar.Bottom};
        const long screen[] = {mon.Left, mon.Top, mon.Right, mon.Bottom};
        EXPECT_EQ(screen[edge], onEdge[edge]) << "the bar lies on its edge";
    }
    EXPECT_TRUE(work.Left >= mon.Left && work.Top >= mon.Top && work.Right <= mon.Right && work.Bottom <= mon.Bottom);
    LONG l = 0, t = 0, w = 0, h = 0;
    a->GetWorkArea3(&l, &t, &w, &h, 0, &ok);
    EXPECT_EQ(work.Right - work.Left, w);

    // A machine without a task bar: the module with the shell's answer replaced.
    const auto shell = tova::taskbar::replaceQuery(noTaskbar);
    RECT none{1, 2, 3, 4};
    EXPECT_FALSE(tova::taskbar::rect(none));
    EXPECT_EQ(1, none.left);
    EXPECT_EQ(-1, tova::taskbar::edge());
    EXPECT_FALSE(tova::taskbar::autoHide());
    tova::taskbar::replaceQuery(shell);
}

long width(_APIMethods* a, const wchar_t* text, IFontDisp* font) {
    LONG w = -1;
    VARIANT f = font ? vObject(font) : vMissing();
    a->GetTextWidth(Bstr(text).get(), f, &w);
    return w;
}

TEST(ApiFonts, NamesHandlesObjectsAndMeasures) {
    auto a = api();
    Variant names;
    a->GetFontNames(VARIANT_FALSE, 1, &names);
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&names));
    const std::vector<std::wstring> list = strings(names);
    ASSERT_FALSE(list.empty());
    for (size_t i = 1; i < list.size(); ++i) EXPECT_LT(lstrcmpiW(list[i - 1].c_str(), list[i].c_str()), 0) << "sorted, once";
    for (const std::wstring& n : list) EXPECT_NE(L'@', n[0]);
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->FontExists(Bstr(list.front()).get(), &ok);
    EXPECT_TRUE(ok);
    a->FontExists(Bstr(L"No Such Font").get(), &ok);
    EXPECT_FALSE(ok);

    ComPtr<IFontDisp> font, back;
    a->CreateStdFont(Bstr(list.front()).get(), 12.0f, VARIANT_FALSE, VARIANT_FALSE, VARIANT_FALSE, VARIANT_FALSE, font.put());
    ASSERT_TRUE(font);
    LONG h = 0;
    a->CreateFontHandle(font.get(), 0, &h);
    HFONT hf = reinterpret_cast<HFONT>(static_cast<LONG_PTR>(h));
    ASSERT_EQ(static_cast<DWORD>(OBJ_FONT), GetObjectType(hf));
    LOGFONTW lf{};
    GetObjectW(hf, sizeof lf, &lf);
    EXPECT_EQ(-16, lf.lfHeight);
    EXPECT_EQ(list.front(), std::wstring(lf.lfFaceName));
    a->FontHandleToStdFont(h, back.put());
    ASSERT_TRUE(back);
    ComPtr<IFont> f = back.as<IFont>(IID_IFont);
    Bstr name;
    CY size{};
    f->get_Name(name.put());
    f->get_Size(&size);
    EXPECT_EQ(list.front(), name.str());
    EXPECT_NEAR(12.0, size.int64 / 10000.0, 1.0);

    // Measures: additive, wider letters wider, lines stacked, larger sizes larger.
    EXPECT_EQ(0, width(a.get(), L"", font.get()));
    EXPECT_EQ(width(a.get(), L"abcd", font.get()), width(a.get(), L"ab", font.get()) + width(a.get(), L"cd", font.get()));
    EXPECT_LT(width(a.get(), L"iiii", font.get()), width(a.get(), L"WWWW", font.get()));
    EXPECT_EQ(width(a.get(), L"abcd", font.get()), width(a.get(), L"ab\r\nabcd", font.get()));
    LONG one = 0, two = 0;
    a->GetTextHeight(Bstr(L"x").get(), vObject(font.get()), &one);
    a->GetTextHeight(Bstr(L"x\r\ny").get(), vObject(font.get()), &two);
    EXPECT_EQ(2 * one, two);
    a->GetTextHeight(Bstr(L"").get(), vObject(font.get()), &two);
    EXPECT_EQ(0, two);
    ComPtr<IFontDisp> big;
    a->CreateStdFont(Bstr(list.front()).get(), 24.0f, VARIANT_FALSE, VARIANT_FALSE, VARIANT_FALSE, VARIANT_FALSE, big.put());
    EXPECT_GT(width(a.get(), L"abcd", big.get()), width(a.get(), L"abcd", font.get()));
    EXPECT_GT(width(a.get(), L"abcd", nullptr), 0) << "the message font when left out";
    {
        Canvas c(8, 8);
        HGDIOBJ old = SelectObject(c.dc(), hf);
        LONG w2 = 0;
        a->GetTextWidth2(c.handle(), Bstr(L"a&b\tc").get(), &w2);
        EXPECT_EQ(width(a.get(), L"a&b\tc", font.get()), w2);
        SelectObject(c.dc(), old);
    }
    LONG w0 = -1;
    a->GetTextWidth2(0, Bstr(L"x").get(), &w0);
    EXPECT_EQ(0, w0);
    EXPECT_EQ(13, errorNumber(a->GetTextWidth(Bstr(L"x").get(), Variant(L"not a font"), &w0)));
    EXPECT_EQ(91, errorNumber(a->CreateFontHandle(nullptr, 0, &h)));

    a->DeleteGDIObject(static_cast<LONG>(reinterpret_cast<LONG_PTR>(hf)), &ok);
    EXPECT_TRUE(ok);
    a->DeleteGDIObject(static_cast<LONG>(reinterpret_cast<LONG_PTR>(hf)), &ok);
    EXPECT_FALSE(ok) << "once";

    for (long which = 0; which <= 5; ++which) {
        ComPtr<IFontDisp> sys;
        a->GetSystemFont(static_cast<SystemFontConstants>(which), sys.put());
        ASSERT_TRUE(sys) << which;
        CY s{};
        sys.as<IFont>(IID_IFont)->get_Size(&s);
        EXPECT_GT(s.int64, 0) << which;
    }
    ComPtr<IFontDisp> none;
    EXPECT_EQ(5, errorNumber(a->GetSystemFont(static_cast<SystemFontConstants>(6), none.put())));
}

}  // namespace
