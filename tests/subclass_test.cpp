// The subclassing engine through SubclassingMethods, with real windows and
// real SendMessage.
#include "window_support.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

using namespace test;

namespace {

constexpr UINT kMsg = WM_USER + 7;
constexpr UINT kOther = WM_USER + 8;

std::string str(long v) { return std::to_string(v); }

class SubclassTest : public ::testing::Test {
protected:
    void SetUp() override {
        sm = create<_SubclassingMethods>(CLSID_SubclassingMethods, IID__SubclassingMethods);
        ASSERT_TRUE(sm);
        ASSERT_TRUE(w.hwnd());
        h = str(w.handle());
        original = GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC);
        baseline = 0;
        baseline = catalogueCount();
    }

    HRESULT attach(Client& c, UINT m = kMsg) { return sm->AttachMessage(&c, w.handle(), static_cast<LONG>(m)); }
    HRESULT detach(Client& c, UINT m = kMsg) { return sm->DetachMessage(&c, w.handle(), static_cast<LONG>(m)); }
    LRESULT send(UINT m = kMsg, WPARAM wp = 0) { return SendMessageW(w.hwnd(), m, wp, 0); }
    long windowCount() { return static_cast<long>(propValue(w.hwnd(), "C" + h)); }
    long messageCount(UINT m = kMsg) { return static_cast<long>(propValue(w.hwnd(), h + "#" + str(m) + "C")); }
    LONG_PTR entry(long i, UINT m = kMsg) { return propValue(w.hwnd(), h + "#" + str(m) + "#" + str(i)); }
    static LONG_PTR address(Client& c) { return reinterpret_cast<LONG_PTR>(static_cast<_ISubclass*>(&c)); }
    long catalogueCount() {
        ComPtr<_SubclassDatabase> db;
        sm->GetSubclassDatabase(db.put());
        long n = -1;
        db->get_Count(&n);
        return n - baseline;
    }

    ComPtr<_SubclassingMethods> sm;
    TestWindow w;
    std::string h;
    LONG_PTR original = 0;
    long baseline = 0;   // records earlier cases left on purpose (see DetachingANeverAttached...)
};

TEST_F(SubclassTest, PropertiesAreNamedByteForByte) {
    Client a;
    ASSERT_EQ(S_OK, attach(a));
    std::string m = str(kMsg);
    EXPECT_EQ(original, propValue(w.hwnd(), h));          // "H": the previous procedure
    EXPECT_EQ(1, propValue(w.hwnd(), "C" + h));            // "C" in front: window-wide count
    EXPECT_EQ(1, propValue(w.hwnd(), h + "#" + m + "C"));  // "C" at the end: per-message count
    EXPECT_EQ(address(a), propValue(w.hwnd(), h + "#" + m + "#1"));
    EXPECT_NE(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
    EXPECT_EQ(S_OK, detach(a));
}

TEST_F(SubclassTest, TwoClientsAreCalledInAttachOrderAndTheLastResultWins) {
    std::vector<std::string> order;
    Client a(tovaMessageResponseConsume, 11), b(tovaMessageResponseConsume, 22);
    a.order = b.order = &order;
    a.name = "a";
    b.name = "b";
    ASSERT_EQ(S_OK, attach(a));
    ASSERT_EQ(S_OK, attach(b));
    EXPECT_EQ(22, send());
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), order);
    EXPECT_TRUE(w.seen.empty() || std::find(w.seen.begin(), w.seen.end(), kMsg) == w.seen.end())
        << "consumed: the window's own procedure is not called";
    EXPECT_EQ(2, windowCount());
    EXPECT_EQ(2, catalogueCount());
    detach(b);
    detach(a);
    EXPECT_EQ(0, catalogueCount());
}

TEST_F(SubclassTest, EngineHoldsOneReferenceOnlyDuringTheCall) {
    Client a(tovaMessageResponseConsume, 1);
    ULONG before = a.refs();
    ASSERT_EQ(S_OK, attach(a));
    EXPECT_EQ(before, a.refs()) << "no reference kept after attach";
    send();
    ASSERT_EQ(1u, a.calls.size());
    EXPECT_EQ(before + 1, a.calls[0].refsDuringCall);
    EXPECT_EQ(before, a.refs()) << "released after the call";
    detach(a);
    EXPECT_EQ(before, a.refs());
}

TEST_F(SubclassTest, PreprocessRunsThePreviousProcedureFirstAndKeepsTheClientResult) {
    Client a(tovaMessageResponsePreprocess, 77);
    a.handler = [&](HWND, UINT m, WPARAM, LPARAM, LONG_PTR* r) {
        EXPECT_NE(w.seen.end(), std::find(w.seen.begin(), w.seen.end(), m)) << "previous procedure ran first";
        *r = 77;
        return S_OK;
    };
    ASSERT_EQ(S_OK, attach(a));
    EXPECT_EQ(77, send());
    EXPECT_EQ(1u, a.calls.size());
    detach(a);
}

TEST_F(SubclassTest, PostProcessRunsTheClientFirstAndReturnsThePreviousResult) {
    Client a(tovaMessageResponsePostProcess, 77);
    a.handler = [&](HWND, UINT m, WPARAM, LPARAM, LONG_PTR* r) {
        EXPECT_EQ(w.seen.end(), std::find(w.seen.begin(), w.seen.end(), m)) << "client runs first";
        *r = 77;
        return S_OK;
    };
    ASSERT_EQ(S_OK, attach(a));
    EXPECT_EQ(kOwnResult, send());
    EXPECT_EQ(1, std::count(w.seen.begin(), w.seen.end(), kMsg));
    detach(a);
}

TEST_F(SubclassTest, OnlyTheFirstDecidesPreprocessingAndOnlyTheLastPostProcessing) {
    // First answers PostProcess, last answers Preprocess: the previous procedure never runs.
    Client a(tovaMessageResponsePostProcess, 1), b(tovaMessageResponsePreprocess, 2);
    attach(a);
    attach(b);
    EXPECT_EQ(2, send());
    EXPECT_EQ(0, std::count(w.seen.begin(), w.seen.end(), kMsg));
    detach(b);
    detach(a);
}

TEST_F(SubclassTest, MessagesWithoutClientsGoToThePreviousProcedureUnchanged) {
    Client a(tovaMessageResponseConsume, 5);
    attach(a);
    EXPECT_EQ(kOwnResult, send(kOther, 3));
    EXPECT_TRUE(a.calls.empty());
    EXPECT_EQ(1, std::count(w.seen.begin(), w.seen.end(), kOther));
    detach(a);
}

TEST_F(SubclassTest, AttachingTwiceRaisesAndLeavesTheWindowCountRaised) {
    Client a;
    ASSERT_EQ(S_OK, attach(a));
    HRESULT hr = attach(a);
    EXPECT_EQ(static_cast<HRESULT>(0x8004331A), hr);
    ErrorText e = lastError();
    EXPECT_EQ(L"TOVA200.WindowProc", e.source);
    EXPECT_EQ(L"Message already handled by another class", e.description);
    EXPECT_EQ(2, windowCount());
    EXPECT_EQ(1, messageCount());
    EXPECT_EQ(1, catalogueCount());
    detach(a);
    detach(a);   // balances the count left raised: the window is restored
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
}

TEST_F(SubclassTest, DetachingANeverAttachedClientRemovesTheLastOne) {
    Client a, b, stranger;
    attach(a);
    attach(b);
    EXPECT_EQ(S_OK, detach(stranger));
    EXPECT_EQ(1, messageCount());
    EXPECT_EQ(address(a), entry(1));
    EXPECT_FALSE(hasProp(w.hwnd(), h + "#" + str(kMsg) + "#2"));
    EXPECT_EQ(2, catalogueCount()) << "the catalogue has no record of the stranger to remove";
    detach(a);
    EXPECT_EQ(1, catalogueCount()) << "b's record stays: b is no longer attached, but was never detached";
}

TEST_F(SubclassTest, DetachClosesTheGap) {
    Client a, b, c;
    attach(a);
    attach(b);
    attach(c);
    detach(a);
    EXPECT_EQ(2, messageCount());
    EXPECT_EQ(address(b), entry(1));
    EXPECT_EQ(address(c), entry(2));
    detach(b);
    detach(c);
}

TEST_F(SubclassTest, DetachingTheLastRestoresTheWindowAndKeepsAZeroCount) {
    Client a;
    attach(a);
    detach(a);
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
    EXPECT_FALSE(hasProp(w.hwnd(), h));
    EXPECT_FALSE(hasProp(w.hwnd(), "C" + h));
    EXPECT_TRUE(hasProp(w.hwnd(), h + "#" + str(kMsg) + "C"));
    EXPECT_EQ(0, messageCount());
    EXPECT_FALSE(hasProp(w.hwnd(), h + "#" + str(kMsg) + "#1"));
    EXPECT_EQ(kOwnResult, send());
}

TEST_F(SubclassTest, DetachFromANeverSubclassedWindowLeavesMinusOne) {
    Client a;
    EXPECT_EQ(S_OK, detach(a));
    EXPECT_TRUE(hasProp(w.hwnd(), "C" + h));
    EXPECT_EQ(-1, windowCount());
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
}

TEST_F(SubclassTest, InvalidWindowRaises) {
    Client a;
    TestWindow gone;
    long dead = gone.handle();
    gone.destroy();
    EXPECT_EQ(static_cast<HRESULT>(0x8004331B), sm->AttachMessage(&a, dead, kMsg));
    ErrorText e = lastError();
    EXPECT_EQ(L"TOVA200.WindowProc", e.source);
    EXPECT_EQ(L"Invalid window", e.description);
    EXPECT_EQ(static_cast<HRESULT>(0x8004331B), sm->AttachMessage(&a, 0, kMsg));
    EXPECT_EQ(0, catalogueCount());
}

TEST_F(SubclassTest, AClientFailingItsCallDoesNotStopTheOthers) {
    Client bad, good(tovaMessageResponseConsume, 9);
    bad.handler = [](HWND, UINT, WPARAM, LPARAM, LONG_PTR*) { return E_FAIL; };
    attach(bad);
    attach(good);
    EXPECT_EQ(9, send());
    EXPECT_EQ(1u, good.calls.size());
    detach(good);
    attach(good);   // now last again; the failing client alone decides nothing
    detach(good);
    detach(bad);
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
}

TEST_F(SubclassTest, CurrentMessageAndCallOldWindowProcFromInsideAClient) {
    Client a;
    LONG current = 0;
    LONG_PTR old = 0;
    a.handler = [&](HWND wnd, UINT m, WPARAM wp, LPARAM lp, LONG_PTR* r) {
        sm->get_CurrentMessage(&current);
        sm->CallOldWindowProc(static_cast<LONG>(reinterpret_cast<LONG_PTR>(wnd)), m, wp, lp, &old);
        *r = 1;
        return S_OK;
    };
    attach(a);
    EXPECT_EQ(1, send());
    EXPECT_EQ(static_cast<LONG>(kMsg), current);
    EXPECT_EQ(kOwnResult, old);
    LONG after = 0;
    sm->get_CurrentMessage(&after);
    EXPECT_EQ(static_cast<LONG>(kMsg), after) << "kept after dispatch";
    detach(a);
}

TEST_F(SubclassTest, AClientMayDetachItselfDuringItsCall) {
    Client a, b(tovaMessageResponseConsume, 3);
    a.handler = [&](HWND, UINT, WPARAM, LPARAM, LONG_PTR* r) {
        detach(a);
        *r = 1;
        return S_OK;
    };
    attach(a);
    attach(b);
    // b moved to position 1 while a ran: position 2 is empty and goes to the
    // previous procedure.
    EXPECT_EQ(kOwnResult, send());
    EXPECT_EQ(1, messageCount());
    EXPECT_EQ(3, send());
    detach(b);
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
}

TEST_F(SubclassTest, AWindowDestroyedWhileAttachedDoesNotCrash) {
    Client a(tovaMessageResponsePostProcess);
    {
        TestWindow other;
        long hw = other.handle();
        ASSERT_EQ(S_OK, sm->AttachMessage(&a, hw, WM_DESTROY));
        ASSERT_EQ(S_OK, sm->AttachMessage(&a, hw, WM_NCDESTROY));
        other.destroy();
        EXPECT_EQ(2u, a.calls.size());
        EXPECT_EQ(S_OK, sm->DetachMessage(&a, hw, WM_DESTROY));
        EXPECT_EQ(S_OK, sm->DetachMessage(&a, hw, WM_NCDESTROY));
    }
    EXPECT_EQ(0, catalogueCount());
}

TEST_F(SubclassTest, CatalogueListsAttachments) {
    Client a, b;
    attach(a);
    attach(b, kOther);
    ComPtr<_SubclassDatabase> db;
    ASSERT_EQ(S_OK, sm->GetSubclassDatabase(db.put()));
    long n = 0;
    db->get_Count(&n);
    ASSERT_EQ(2, n - baseline);
    long index = baseline + 2;
    ComPtr<_SubclassRecord> r;
    ASSERT_EQ(S_OK, db->get_Item(&index, r.put()));
    LONG_PTR ptr = 0;
    LONG hw = 0, msg = 0;
    r->get_PtrIWP(&ptr);
    r->get_hWnd(&hw);
    r->get_Msg(&msg);
    EXPECT_EQ(address(b), ptr);
    EXPECT_EQ(w.handle(), hw);
    EXPECT_EQ(static_cast<LONG>(kOther), msg);
    index = n + 1;
    ComPtr<_SubclassRecord> none;
    EXPECT_EQ(static_cast<HRESULT>(0x800A0009), db->get_Item(&index, none.put()));
    index = 0;
    EXPECT_EQ(static_cast<HRESULT>(0x800A0009), db->get_Item(&index, none.put()));
    // The default member, as coll(i) calls it.
    VARIANT arg = vLong(baseline + 1);
    DISPPARAMS dp{&arg, nullptr, 1, 0};
    Variant item;
    EXCEPINFO ex{};
    ASSERT_EQ(S_OK, db->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &dp, &item, &ex,
                               nullptr));
    EXPECT_EQ(VT_DISPATCH, V_VT(&item));
    arg = vLong(n + 1);
    EXPECT_EQ(DISP_E_EXCEPTION, db->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &dp,
                                           item.put(), &ex, nullptr));
    EXPECT_EQ(static_cast<SCODE>(0x800A0009), ex.scode);
    SysFreeString(ex.bstrSource);
    SysFreeString(ex.bstrDescription);
    detach(a);
    detach(b, kOther);
    db->get_Count(&n);
    EXPECT_EQ(0, n - baseline);
    // The same catalogue object for the thread.
    ComPtr<_SubclassDatabase> again;
    sm->GetSubclassDatabase(again.put());
    EXPECT_EQ(db.get(), again.get());
}

TEST_F(SubclassTest, EachThreadHasItsOwnCatalogue) {
    Client a;
    attach(a);
    long otherCount = -1;
    _SubclassDatabase* other = nullptr;
    std::thread t([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            auto m = create<_SubclassingMethods>(CLSID_SubclassingMethods, IID__SubclassingMethods);
            m->GetSubclassDatabase(&other);
            other->get_Count(&otherCount);
        }
        CoUninitialize();
    });
    t.join();
    EXPECT_EQ(0, otherCount);
    // The thread's catalogue went with the thread: ours is the last reference.
    EXPECT_EQ(0u, other->Release());
    EXPECT_EQ(1, catalogueCount());
    detach(a);
}

TEST_F(SubclassTest, TextMessagesPassThroughTheAnsiProcedure) {
    // The engine's procedure is an ANSI one: text on its way to a Unicode
    // window's own procedure goes through the system's conversion, so
    // characters outside the ANSI code page do not survive it.
    Client a(tovaMessageResponsePostProcess);
    ASSERT_EQ(S_OK, attach(a, WM_SETTEXT));
    EXPECT_TRUE(SetWindowTextW(w.hwnd(), L"plain text"));
    wchar_t text[64] = L"";
    GetWindowTextW(w.hwnd(), text, 64);
    EXPECT_STREQ(L"plain text", text);
    ASSERT_EQ(1u, a.calls.size());
    SetWindowTextW(w.hwnd(), L"\x3A9\x3B1");
    GetWindowTextW(w.hwnd(), text, 64);
    EXPECT_STRNE(L"\x3A9\x3B1", text) << "converted through the ANSI code page";
    detach(a, WM_SETTEXT);
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
}

TEST_F(SubclassTest, IsWindowLocal) {
    VARIANT_BOOL local = 0;
    sm->IsWindowLocal(w.handle(), &local);
    EXPECT_EQ(VARIANT_TRUE, local);
    sm->IsWindowLocal(0, &local);
    EXPECT_EQ(VARIANT_FALSE, local);
}

TEST_F(SubclassTest, ManyAttachDetachOrdersLeaveNothingBehind) {
    std::vector<Client> clients(6);
    const UINT msgs[] = {kMsg, kOther, WM_USER + 9};
    for (auto& c : clients)
        for (UINT m : msgs) ASSERT_EQ(S_OK, attach(c, m));
    for (UINT m : msgs) send(m);
    for (size_t i = 0; i < clients.size(); i += 2)
        for (UINT m : msgs) detach(clients[i], m);
    for (UINT m : msgs) send(m);
    for (size_t i = clients.size(); i-- > 1;)
        if (i % 2)
            for (UINT m : msgs) detach(clients[i], m);
    EXPECT_EQ(original, GetWindowLongPtrA(w.hwnd(), GWLP_WNDPROC));
    for (const std::string& n : propNames(w.hwnd()))
        EXPECT_NE(std::string::npos, n.find('C')) << "left behind: " << n;   // only zero counts stay
    EXPECT_EQ(0, catalogueCount());
}

TEST_F(SubclassTest, LateBoundErrorsCarryNumberSourceAndDescription) {
    Client a;
    CallResult r;
    call(r, sm.get(), L"AttachMessage", DISPATCH_METHOD, {vObject(&a), vLong(0), vLong(kMsg)});
    EXPECT_EQ(DISP_E_EXCEPTION, r.hr);
    EXPECT_EQ(static_cast<SCODE>(0x8004331B), r.excep.scode);
    EXPECT_EQ(L"TOVA200.WindowProc", r.source());
    EXPECT_EQ(L"Invalid window", r.description());
}

// The host of a window in another process (run by ExternalWindowRaises).
TEST(WindowHost, Run) {
    const char* title = std::getenv("TOVA_WINDOW_HOST");
    if (!title) GTEST_SKIP() << "only as a helper process";
    HWND wnd = CreateWindowExA(0, "STATIC", title, WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    pump(20000, [&] { return !IsWindow(wnd) || FindWindowA(nullptr, "tova-host-quit"); });
    DestroyWindow(wnd);
}

TEST_F(SubclassTest, ExternalWindowRaises) {
    char exe[MAX_PATH];
    GetModuleFileNameA(nullptr, exe, MAX_PATH);
    std::string title = "tova-host-" + std::to_string(GetCurrentProcessId());
    SetEnvironmentVariableA("TOVA_WINDOW_HOST", title.c_str());
    std::string cmd = std::string("\"") + exe + "\" --gtest_filter=WindowHost.Run";
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(CreateProcessA(nullptr, &cmd[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi));
    SetEnvironmentVariableA("TOVA_WINDOW_HOST", nullptr);
    HWND other = nullptr;
    pump(15000, [&] { return (other = FindWindowA(nullptr, title.c_str())) != nullptr; });
    ASSERT_TRUE(other) << "helper window did not appear";
    Client a;
    long hw = static_cast<long>(reinterpret_cast<LONG_PTR>(other));
    VARIANT_BOOL local = -1;
    sm->IsWindowLocal(hw, &local);
    EXPECT_EQ(VARIANT_FALSE, local);
    EXPECT_EQ(static_cast<HRESULT>(0x8004331C), sm->AttachMessage(&a, hw, kMsg));
    EXPECT_EQ(L"Can't modify external window", lastError().description);
    PostMessageA(other, WM_CLOSE, 0, 0);
    TerminateProcess(pi.hProcess, 0);
    WaitForSingleObject(pi.hProcess, 5000);
    CloseHandle(pi.hProcess);
    CloseHandle(pi.hThread);
}

}  // namespace
