// APIMethods, the system helpers: words and GUIDs, LastDllError, folders,
// screen, colours, keyboard and pointer, clipboard, environment, timing and
// error texts, as Wine 8 with its null display driver shows them (one 1024 x
// 768 monitor at 96 DPI, a 64-bit prefix).
#include "api_support.h"
#include "window_support.h"

#include <cwctype>
#include <thread>

using namespace test;

namespace {


bool endsWith(const std::wstring& s, const std::wstring& tail) {
    return s.size() >= tail.size() && lower(s.substr(s.size() - tail.size())) == lower(tail);
}

// A window handle that surely names no window: one that was destroyed.
long deadWindow() {
    TestWindow w;
    const long h = w.handle();
    w.destroy();
    return h;
}

TEST(ApiWords, WordsBytesUnsignedViewsAndShifts) {
    auto a = api();
    ASSERT_TRUE(a);
    LONG l = 0;
    a->HiWord(0x12345678, VARIANT_FALSE, &l);
    EXPECT_EQ(0x1234, l);
    a->LoWord(0x1234FFFF, VARIANT_FALSE, &l);
    EXPECT_EQ(65535, l);
    a->LoWord(0x1234FFFF, VARIANT_TRUE, &l);
    EXPECT_EQ(-1, l);
#ifdef _WIN64
    a->HiWord(0x1FFFF0000LL, VARIANT_FALSE, &l);
    EXPECT_EQ(65535, l) << "only the low 32 bits of a 64-bit value count";
#endif
    a->HiByte(0x1234, &l);
    EXPECT_EQ(0x12, l);
    a->LoByte(0x1234, &l);
    EXPECT_EQ(0x34, l);
    a->MakeLong(0xFFFF, 0xFFFF, &l);
    EXPECT_EQ(-1, l);
    a->MakeLong(0x15678, 0x1234, &l);
    EXPECT_EQ(0x12345678, l);

    for (double u : {0.0, 2147483647.0, 2147483648.0, 4294967295.0}) {
        double back = -1;
        ASSERT_EQ(S_OK, a->UnsignedToLong(u, &l)) << u;
        a->LongToUnsigned(l, &back);
        EXPECT_EQ(u, back);
    }
    EXPECT_EQ(6, errorNumber(a->UnsignedToLong(4294967296.0, &l)));
    EXPECT_EQ(6, errorNumber(a->UnsignedToLong(-2147483649.0, &l)));
    SHORT s = 0;
    ASSERT_EQ(S_OK, a->UnsignedToInteger(65535, &s));
    EXPECT_EQ(-1, s);
    a->IntegerToUnsigned(s, &l);
    EXPECT_EQ(65535, l);
    EXPECT_EQ(6, errorNumber(a->UnsignedToInteger(65536, &s)));

    ASSERT_EQ(S_OK, a->ShiftLeft(1, 31, &l));
    EXPECT_EQ(static_cast<LONG>(0x80000000), l);
    a->ShiftLeft(0x0F0000FF, 8, &l);
    EXPECT_EQ(0x0000FF00, l) << "bits past 31 are lost";
    a->ShiftRight(static_cast<LONG>(0x80000000), 31, VARIANT_FALSE, &l);
    EXPECT_EQ(1, l);
    a->ShiftRight(static_cast<LONG>(0x80000000), 31, VARIANT_TRUE, &l);
    EXPECT_EQ(-1, l);
    EXPECT_EQ(5, errorNumber(a->ShiftLeft(1, 32, &l)));
    EXPECT_EQ(5, errorNumber(a->ShiftRight(1, -1, VARIANT_FALSE, &l)));
}

TEST(ApiGuids, CreateCheckAndConvertToBytesAndBack) {
    auto a = api();
    Bstr g1, g2, bare;
    a->CreateGUID(VARIANT_TRUE, g1.put());
    a->CreateGUID(VARIANT_TRUE, g2.put());
    a->CreateGUID(VARIANT_FALSE, bare.put());
    EXPECT_EQ(38u, g1.length());
    EXPECT_NE(g1.str(), g2.str());
    EXPECT_EQ(36u, bare.length());
    EXPECT_EQ(std::wstring::npos, g1.str().find_first_of(L"abcdef")) << "upper case";
    VARIANT_BOOL b = VARIANT_FALSE;
    for (const Bstr* g : {&g1, &bare}) {
        a->IsGUID(g->get(), &b);
        EXPECT_TRUE(b) << g->str();
    }
    for (const wchar_t* no : {L"", L"TOVA32.Rectangle", L" {00112233-4455-6677-8899-AABBCCDDEEFF}",
                              L"{00112233-4455-6677-8899-AABBCCDDEEFG}", L"00112233445566778899AABBCCDDEEFF"}) {
        a->IsGUID(Bstr(no).get(), &b);
        EXPECT_FALSE(b) << no;
    }
    Variant bytes;
    a->GUIDToBytes(Bstr(L"{00112233-4455-6677-8899-aabbccddeeff}").get(), &bytes);
    ASSERT_EQ(VT_ARRAY | VT_UI1, V_VT(&bytes));
    const unsigned char* p = static_cast<const unsigned char*>(V_ARRAY(&bytes)->pvData);
    const unsigned char start[] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 0x88};
    EXPECT_EQ(0, memcmp(start, p, sizeof start));
    Bstr back;
    a->BytesToGUID(bytes, VARIANT_TRUE, back.put());
    EXPECT_EQ(L"{00112233-4455-6677-8899-AABBCCDDEEFF}", back.str());
    Variant none;
    a->GUIDToBytes(Bstr(L"nope").get(), &none);
    EXPECT_EQ(VT_EMPTY, V_VT(&none));

    // Numbers of a Variant array count as bytes, from any lower bound; 15 do not.
    SAFEARRAYBOUND bound{16, 1};
    SAFEARRAY* sa = SafeArrayCreate(VT_VARIANT, 1, &bound);
    for (LONG i = 1; i <= 16; ++i) {
        Variant v(static_cast<long>(i == 1 ? 0x33 : 0));
        SafeArrayPutElement(sa, &i, &v);
    }
    Variant numbers;
    V_VT(&numbers) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&numbers) = sa;
    a->BytesToGUID(numbers, VARIANT_FALSE, back.put());
    EXPECT_EQ(L"00000033-0000-0000-0000-000000000000", back.str());
    SAFEARRAYBOUND fifteen{15, 0};
    SafeArrayRedim(sa, &fifteen);
    a->BytesToGUID(numbers, VARIANT_TRUE, back.put());
    EXPECT_EQ(L"", back.str());
}

// LastDllError belongs to the calling thread, and every member sets it anew.
TEST(ApiLastError, KeptPerThreadAndClearedBySuccess) {
    auto a = api();
    TOVA_RECT r{1, 2, 3, 4};
    VARIANT_BOOL ok = VARIANT_TRUE;
    a->GetMonitorRect(&r, deadWindow(), &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(1, r.Left) << "a failing getter keeps its record";
    EXPECT_EQ(1400, lastDllError(a.get()));
    std::thread([&] {
        ComPtr<_APIMethods> other = api();
        LONG c = 0;
        other->HTMLToColor(Bstr(L"nope").get(), &c);
        EXPECT_NE(0, lastDllError(other.get()));
        LONG w = 0;
        other->HiWord(1, VARIANT_FALSE, &w);
        EXPECT_EQ(0, lastDllError(other.get()));
    }).join();
    EXPECT_EQ(1400, lastDllError(a.get())) << "another thread's calls leave it alone";
    LONG w = 0;
    a->HiWord(1, VARIANT_FALSE, &w);
    EXPECT_EQ(0, lastDllError(a.get()));
}

TEST(ApiFolders, SystemSpecialKnownAndCurrentFolders) {
    auto a = api();
    Bstr s;
    wchar_t root[MAX_PATH] = L"";
    GetEnvironmentVariableW(L"SystemRoot", root, MAX_PATH);
    a->GetWindowsFolder(s.put());
    EXPECT_EQ(lower(root), lower(s.str()));
    a->GetSystemFolder(s.put());
    EXPECT_TRUE(endsWith(s.str(), L"\\system32")) << "redirected for 32-bit programs, not renamed: " << s.str();
    a->GetSystemWow64Folder(s.put());
    EXPECT_TRUE(endsWith(s.str(), L"\\syswow64")) << "the prefix is 64-bit: " << s.str();
    a->GetTempFolder(s.put());
    EXPECT_NE(L'\\', s.str().back());
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(s.get()));

    Bstr appData, profile;
    a->GetSpecialFolder(CSIDL_APPDATA, VARIANT_FALSE, appData.put());
    a->GetSpecialFolder(CSIDL_PROFILE, VARIANT_FALSE, profile.put());
    EXPECT_EQ(lower(profile.str() + L"\\AppData\\Roaming"), lower(appData.str()));
    for (long virtualOrUnknown : {1L, 60L}) {
        a->GetSpecialFolder(static_cast<SpecialFolderConstants>(virtualOrUnknown), VARIANT_TRUE, s.put());
        EXPECT_EQ(L"", s.str()) << virtualOrUnknown;
        EXPECT_NE(0, lastDllError(a.get()));
    }
    a->GetKnownFolder(Bstr(L"{374DE290-123F-4565-9164-39C4925E467B}").get(), VARIANT_FALSE, s.put());
    EXPECT_TRUE(endsWith(s.str(), L"\\Downloads")) << s.str();
    a->GetKnownFolder(Bstr(L"{00000000-0000-0000-0000-000000000001}").get(), VARIANT_FALSE, s.put());
    EXPECT_EQ(L"", s.str());

    Bstr before;
    a->GetCurrentFolder(before.put());
    VARIANT_BOOL ok = VARIANT_TRUE;
    a->SetCurrentFolder(Bstr(L"C:\\no such folder here").get(), &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, lastDllError(a.get()));
    a->SetCurrentFolder(Bstr(root).get(), &ok);
    EXPECT_TRUE(ok);
    a->GetCurrentFolder(s.put());
    EXPECT_EQ(lower(root), lower(s.str()));
    a->SetCurrentFolder(before.get(), &ok);

    wchar_t exe[MAX_PATH];
    GetModuleFileNameW(nullptr, exe, MAX_PATH);
    a->GetHostPath(s.put());
    EXPECT_EQ(std::wstring(exe), s.str());

    VARIANT_BOOL b = VARIANT_FALSE;
    a->Is64BitSystem(&b);
    EXPECT_TRUE(b);
    a->Is64BitProcess(&b);
    EXPECT_EQ(sizeof(void*) == 8, b != VARIANT_FALSE);
    a->IsUserAdmin(&b);
    EXPECT_EQ(IsUserAnAdmin() != FALSE, b != VARIANT_FALSE);
}

TEST(ApiScreen, OneMonitorAt96Dpi) {
    auto a = api();
    LONG width = 0, height = 0, count = 0, depth = 0, dpi = 0, pixels = 0;
    a->GetScreenWidth(&width);
    a->GetScreenHeight(&height);
    a->GetMonitorCount(&count);
    a->GetColorDepth(&depth);
    a->GetScreenDPI(VARIANT_TRUE, &dpi);
    EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), width);
    EXPECT_EQ(GetSystemMetrics(SM_CYSCREEN), height);
    EXPECT_EQ(1, count);
    EXPECT_EQ(32, depth);
    EXPECT_EQ(96, dpi);
    LONG metric = -1;
    a->GetSystemMetric(SM_CXSCREEN, &metric);
    EXPECT_EQ(width, metric);
    a->GetSystemMetric(static_cast<SystemMetricConstants>(12345), &metric);
    EXPECT_EQ(0, metric);

    TOVA_RECT virt{}, mon{};
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->GetVirtualScreenRect(&virt, &ok);
    EXPECT_TRUE(ok);
    TestWindow w;
    a->GetMonitorRect(&mon, w.handle(), &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(0, memcmp(&virt, &mon, sizeof mon)) << "one monitor is the whole virtual screen";
    EXPECT_EQ(width, mon.Right - mon.Left);

    FLOAT twips = 0;
    a->GetTwipsPerPixel(VARIANT_FALSE, &twips);
    EXPECT_EQ(15.0f, twips);
    a->PointsToPixels(12.0f, VARIANT_FALSE, 0, &pixels);
    EXPECT_EQ(16, pixels);
    a->PointsToPixels(-1.5f, VARIANT_FALSE, 0, &pixels);
    EXPECT_EQ(-2, pixels) << "half away from zero";
    Canvas c(4, 4);
    a->PointsToPixels(12.0f, VARIANT_TRUE, c.handle(), &pixels);
    EXPECT_EQ(16, pixels) << "a memory DC has the screen's DPI";
}

TEST(ApiColours, TranslateMakeSplitBlendAndHtml) {
    auto a = api();
    LONG c = 0, window = 0;
    a->TranslateColor(static_cast<LONG>(0x80000005), 0, &c);
    a->GetSystemColor(COLOR_WINDOW, &window);
    EXPECT_EQ(static_cast<LONG>(GetSysColor(COLOR_WINDOW)), window);
    EXPECT_EQ(window, c);
    a->GetSystemColor(static_cast<SystemColorConstants>(0x80000008), &c);
    EXPECT_EQ(static_cast<LONG>(GetSysColor(COLOR_WINDOWTEXT)), c);
    a->TranslateColor(static_cast<LONG>(0x800000FF), 0, &c);
    EXPECT_EQ(-1, c);
    a->GetSystemColor(static_cast<SystemColorConstants>(99), &c);
    EXPECT_EQ(-1, c);

    a->MakeColor(300, 0, 0, &c);
    EXPECT_EQ(255, c);
    a->MakeColor(1, 2, 3, &c);
    EXPECT_EQ(0x030201, c);
    EXPECT_EQ(5, errorNumber(a->MakeColor(-1, 0, 0, &c)));
    LONG r = -1, g = -1, b = -1;
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->SplitColor(0x030201, &r, &g, &b, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(1, r);
    EXPECT_EQ(3, b);
    a->SplitColor(static_cast<LONG>(0x800000FF), &r, &g, &b, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(1, r) << "outputs kept";

    a->BlendColors(0, 0xFFFFFF, vMissing(), &c);
    EXPECT_EQ(0x808080, c);
    a->BlendColors(0x0000FF, 0xFF0000, vDouble(0.25), &c);
    EXPECT_EQ(0x4000BF, c);
    EXPECT_EQ(5, errorNumber(a->BlendColors(0, 0, vDouble(1.5), &c)));

    Bstr html;
    a->ColorToHTML(0x30201, html.put());
    EXPECT_EQ(L"#010203", html.str());
    a->HTMLToColor(html.get(), &c);
    EXPECT_EQ(0x30201, c);
    a->HTMLToColor(Bstr(L"#fff").get(), &c);
    EXPECT_EQ(0xFFFFFF, c);
    for (const wchar_t* bad : {L"#12345", L"123456", L"#12345G", L""}) {
        a->HTMLToColor(Bstr(bad).get(), &c);
        EXPECT_EQ(-1, c) << bad;
    }
}

TEST(ApiInput, KeysAndPointer) {
    auto a = api();
    TestWindow w(50, 60, 300, 200);
    SetForegroundWindow(w.hwnd());
    pump(50);
    VARIANT_BOOL b = VARIANT_FALSE, ok = VARIANT_FALSE;
    EXPECT_EQ(5, errorNumber(a->IsKeyDown(0, &b)));
    EXPECT_EQ(5, errorNumber(a->IsKeyToggled(255, &b)));

    INPUT shift[2] = {};
    shift[0].type = shift[1].type = INPUT_KEYBOARD;
    shift[0].ki.wVk = shift[1].ki.wVk = VK_SHIFT;
    shift[1].ki.dwFlags = KEYEVENTF_KEYUP;
    SendInput(1, &shift[0], sizeof(INPUT));
    ShiftStateConstants state{};
    a->IsKeyDown(VK_SHIFT, &b);
    a->GetShiftState(&state);
    SendInput(1, &shift[1], sizeof(INPUT));
    EXPECT_TRUE(b);
    EXPECT_EQ(tovaShiftMask, state);
    a->GetShiftState(&state);
    EXPECT_EQ(0, state);

    VARIANT_BOOL numLock = VARIANT_FALSE;
    a->IsNumLockOn(&numLock);
    a->SetKeyToggle(VK_NUMLOCK, numLock ? VARIANT_FALSE : VARIANT_TRUE, &ok);
    EXPECT_TRUE(ok);
    pump(50);
    a->IsNumLockOn(&b);
    EXPECT_NE(numLock != VARIANT_FALSE, b != VARIANT_FALSE) << "seen once the thread reads its input";
    a->SetKeyToggle(VK_NUMLOCK, numLock, &ok);
    pump(50);
    a->IsKeyToggled(VK_NUMLOCK, &b);
    EXPECT_EQ(numLock != VARIANT_FALSE, b != VARIANT_FALSE);

    a->SetCursorPosition(100, 120, 0, &ok);
    EXPECT_TRUE(ok);
    POINTAPI p{};
    a->GetCursorPosition(&p, 0, &ok);
    EXPECT_EQ(100, p.X);
    EXPECT_EQ(120, p.Y);
    POINT client{100, 120};
    ScreenToClient(w.hwnd(), &client);
    LONG x = 0, y = 0;
    a->GetCursorPosition2(&x, &y, w.handle(), &ok);
    EXPECT_EQ(client.x, x);
    EXPECT_EQ(client.y, y);
    a->SetCursorPosition(5, 6, w.handle(), &ok);
    a->GetCursorPosition2(&x, &y, w.handle(), &ok);
    EXPECT_EQ(5, x);
    EXPECT_EQ(6, y);
    a->GetCursorPosition(&p, deadWindow(), &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(1400, lastDllError(a.get()));
}

// Another thread holds the clipboard open for `ms` while the test writes it.
bool setWhileHeld(_APIMethods* a, DWORD ms) {
    tova::ObjectHandle opened(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread holder([&] {
        const BOOL held = OpenClipboard(nullptr);
        SetEvent(opened.get());
        Sleep(ms);
        if (held) CloseClipboard();
    });
    WaitForSingleObject(opened.get(), 5000);
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->SetClipboardText(Bstr(L"held").get(), &ok);
    holder.join();
    return ok != VARIANT_FALSE;
}

TEST(ApiClipboard, UnicodeRoundTripClearAndBusyRetries) {
    auto a = api();
    const std::wstring text = L"Gr\u00FC\u00DFe \u03A9 \U0001F600";
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->SetClipboardText(Bstr(text).get(), &ok);
    ASSERT_TRUE(ok);
    Bstr got;
    a->GetClipboardText(got.put());
    EXPECT_EQ(text, got.str());
    a->ClearClipboard(&ok);
    EXPECT_TRUE(ok);
    a->GetClipboardText(got.put());
    EXPECT_EQ(L"", got.str());
    EXPECT_EQ(0, lastDllError(a.get()));

    EXPECT_TRUE(setWhileHeld(a.get(), 50)) << "a short hold only delays";
    EXPECT_FALSE(setWhileHeld(a.get(), 1000));
    EXPECT_EQ(ERROR_ACCESS_DENIED, lastDllError(a.get()));
}

TEST(ApiEnvironment, VariablesSetReadListedExpandedAndInherited) {
    auto a = api();
    const std::wstring omega = L"\u03A91";
    Bstr value(omega);
    VARIANT_BOOL ok = VARIANT_FALSE;
    BSTR raw = value.get();
    a->SetEnvironmentVariable(Bstr(L"TOVA_X").get(), &raw, &ok);
    EXPECT_TRUE(ok);
    Bstr got;
    a->GetEnvironmentVariable(Bstr(L"TOVA_X").get(), got.put());
    EXPECT_EQ(omega, got.str());

    Variant all;
    a->GetEnvironmentVariables(&all);
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&all));
    ASSERT_EQ(2u, SafeArrayGetDim(V_ARRAY(&all)));
    LONG hi = -1;
    SafeArrayGetUBound(V_ARRAY(&all), 2, &hi);
    bool listed = false;
    for (LONG i = 0; i <= hi; ++i) {
        Variant name, val;
        LONG at[2] = {0, i};
        SafeArrayGetElement(V_ARRAY(&all), at, &name);
        at[0] = 1;
        SafeArrayGetElement(V_ARRAY(&all), at, &val);
        ASSERT_EQ(VT_BSTR, V_VT(&name));
        EXPECT_NE(L'=', V_BSTR(&name)[0]) << "hidden drive entries are left out";
        if (std::wstring(V_BSTR(&name)) == L"TOVA_X") listed = std::wstring(V_BSTR(&val)) == omega;
    }
    EXPECT_TRUE(listed);

    // Programs started from here inherit it.
    wchar_t cmd[] = L"cmd.exe /c if \"%TOVA_X%\"==\"\u03A91\" exit 7";
    STARTUPINFOW si{sizeof si};
    PROCESS_INFORMATION pi{};
    ASSERT_TRUE(CreateProcessW(nullptr, cmd, nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &si, &pi));
    const tova::ObjectHandle process(pi.hProcess), thread(pi.hThread);
    WaitForSingleObject(pi.hProcess, 30000);
    DWORD code = 0;
    GetExitCodeProcess(pi.hProcess, &code);
    EXPECT_EQ(7u, code);

    a->SetEnvironmentVariable(Bstr(L"TOVA_X").get(), nullptr, &ok);
    EXPECT_TRUE(ok);
    a->GetEnvironmentVariable(Bstr(L"TOVA_X").get(), got.put());
    EXPECT_EQ(L"", got.str());
    EXPECT_EQ(ERROR_ENVVAR_NOT_FOUND, lastDllError(a.get()));

    a->ExpandEnvironmentStrings(Bstr(L"%SystemRoot%|%NOPE_TOVA%").get(), got.put());
    wchar_t root[MAX_PATH] = L"";
    GetEnvironmentVariableW(L"SystemRoot", root, MAX_PATH);
    EXPECT_EQ(std::wstring(root) + L"|%NOPE_TOVA%", got.str());

    a->GetUserName(got.put());
    EXPECT_NE(L"", got.str());
    a->GetComputerName(tovaComputerNameNetBIOS, got.put());
    EXPECT_NE(L"", got.str());
    EXPECT_EQ(5, errorNumber(a->GetComputerName(static_cast<ComputerNameFormatConstants>(8), got.put())));
}

TEST(ApiTiming, ClocksAgreeAndBeepsCheckTheirArguments) {
    auto a = api();
    double t0 = 0, t1 = 0, c0 = 0, c1 = 0, f = 0;
    a->GetTickCount(&t0);
    a->GetPerformanceCounter(&c0);
    Sleep(100);
    a->GetTickCount(&t1);
    a->GetPerformanceCounter(&c1);
    a->GetPerformanceFrequency(&f);
    ASSERT_GT(f, 0);
    const double byCounter = (c1 - c0) * 1000 / f;
    EXPECT_GE(t1 - t0, 80);
    EXPECT_LE(t1 - t0, 1000);
    EXPECT_NEAR(t1 - t0, byCounter, 33);

    VARIANT_BOOL ok = VARIANT_FALSE;
    EXPECT_EQ(5, errorNumber(a->Beep(20, 10, &ok)));
    EXPECT_EQ(5, errorNumber(a->Beep(800, -1, &ok)));
    EXPECT_EQ(5, errorNumber(a->MessageBeep(static_cast<MessageBeepConstants>(7), &ok)));
    EXPECT_EQ(S_OK, a->MessageBeep(tovaBeepSimple, &ok));

    Bstr text, same;
    a->GetErrorText(2, 0, text.put());
    EXPECT_NE(L"", text.str());
    EXPECT_EQ(std::wstring::npos, text.str().find_first_of(L"\r\n"));
    a->GetErrorText(static_cast<LONG>(0x80070005), 0, text.put());
    a->GetErrorText(5, 0, same.put());
    EXPECT_EQ(same.str(), text.str());
    a->GetErrorText(123456, 0, text.put());
    EXPECT_EQ(L"", text.str());
    EXPECT_EQ(ERROR_MR_MID_NOT_FOUND, lastDllError(a.get()));
}

// The type library: the design's DISPIDs, whatever order the halves landed in.
TEST(ApiTypeLibrary, MembersKeepTheirDispids) {
    auto a = api();
    auto m = create<_MiscMethods>(CLSID_MiscMethods, IID__MiscMethods);
    const std::pair<const wchar_t*, DISPID> apiIds[] = {{L"DrawGradient", 3}, {L"HiWord", 4}, {L"ShiftRight", 14},
        {L"CreateGUID", 15}, {L"GetWindowsFolder", 19}, {L"GetPlatform", 28}, {L"PointsToPixels", 45},
        {L"TranslateColor", 127}, {L"IsKeyDown", 134}, {L"GetClipboardText", 143}, {L"GetTickCount", 152},
        {L"LastDllError", 158}};
    for (const auto& [name, id] : apiIds) EXPECT_EQ(id, dispid(a.get(), name)) << name;
    const std::pair<const wchar_t*, DISPID> miscIds[] = {{L"StopSound", 5}, {L"DoEvents", 6}, {L"RoundNumber", 14},
                                                         {L"ReadStopwatch", 20}};
    for (const auto& [name, id] : miscIds) EXPECT_EQ(id, dispid(m.get(), name)) << name;
}

}  // namespace
