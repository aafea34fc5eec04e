// windows_demo: the windows and system classes of the registered TOVA200.DLL at
// work in a small window: a Timer ticking through the message loop, hover and
// leave reported by MouseTrackEx while the pointer is moved over the window,
// a Tooltip balloon over the window with its text asked for by an event, the
// system's version, and a short sound where a wave device exists.
//
//   windows_demo
//
// Objects are created by ProgID and called early-bound through the generated
// header; events arrive on a small IDispatch sink.
#include "frame/typelib.h"
#include "frame/values.h"
#include "demo_support.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using tova::Bstr;
using tova::ComPtr;

using demo::check;
using demo::create;
using demo::Sink;

namespace {

HWND tovaHandle(_Tooltip* tip) {
    LONG h = 0;
    tip->get_hWnd(&h);
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(h));
}

void pump(DWORD ms, const std::function<bool()>& done) {
    ULONGLONG end = GetTickCount64() + ms;
    MSG m;
    while (GetTickCount64() < end && !done()) {
        while (GetTickCount64() < end && PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&m);
            DispatchMessageW(&m);
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
}

// A short chime as a wave file: 0.4 s, 660 Hz, fading out.
std::wstring writeChime() {
    wchar_t dir[MAX_PATH], path[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    GetTempFileNameW(dir, L"tov", 0, path);
    const int rate = 22050, n = rate * 2 / 5;
    std::vector<short> samples(n);
    for (int i = 0; i < n; ++i)
        samples[i] = static_cast<short>(12000 * std::sin(2 * 3.14159265 * 660 * i / rate) * (1.0 - double(i) / n));
    struct {
        char riff[4] = {'R', 'I', 'F', 'F'};
        DWORD size;
        char wave[4] = {'W', 'A', 'V', 'E'}, fmt[4] = {'f', 'm', 't', ' '};
        DWORD fmtSize = 16;
        WORD format = 1, channels = 1;
        DWORD rate, bytesPerSecond;
        WORD align = 2, bits = 16;
        char data[4] = {'d', 'a', 't', 'a'};
        DWORD dataSize;
    } h;
    h.rate = rate;
    h.bytesPerSecond = rate * 2;
    h.dataSize = static_cast<DWORD>(n * 2);
    h.size = 36 + h.dataSize;
    HANDLE f = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (f == INVALID_HANDLE_VALUE) return L"";
    DWORD written = 0;
    WriteFile(f, &h, sizeof h, &written, nullptr);
    WriteFile(f, samples.data(), h.dataSize, &written, nullptr);
    CloseHandle(f);
    return path;
}

LRESULT CALLBACK demoProc(HWND w, UINT m, WPARAM wp, LPARAM lp) { return DefWindowProcW(w, m, wp, lp); }

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    {
        WNDCLASSW wc{};
        wc.lpfnWndProc = demoProc;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = L"TovaWindowsDemo";
        RegisterClassW(&wc);
        HWND wnd = CreateWindowExW(0, wc.lpszClassName, L"windows demo", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 200, 200,
                                   240, 160, nullptr, nullptr, wc.hInstance, nullptr);
        if (!wnd) {
            std::fprintf(stderr, "windows_demo: no window could be made\n");
            return 1;
        }
        const LONG handle = static_cast<LONG>(reinterpret_cast<LONG_PTR>(wnd));
        std::printf("A window of 240 x 160 at (200, 200).\n");

        // --- version
        auto version = create<_SystemVersionInfo>(L"TOVA32.SystemVersionInfo", IID__SystemVersionInfo);
        SystemPlatformConstants platform{};
        SystemTypeConstants type{};
        LONG major = 0, minor = 0, build = 0;
        Bstr csd;
        version->get_Platform(&platform);
        version->get_SystemType(&type);
        version->get_MajorVersion(&major);
        version->get_MinorVersion(&minor);
        version->get_BuildNumber(&build);
        version->get_CSDVersion(csd.put());
        std::printf("SystemVersionInfo: platform %d, version %ld.%ld build %ld \"%ls\", SystemType %d%s.\n",
                    static_cast<int>(platform), major, minor, build, csd.str().c_str(), static_cast<int>(type),
                    type == tovaOSUnknown ? " (releases after 5.x are not classified)" : "");

        // --- a timer: five ticks of 100 ms through this loop
        auto misc = create<_MiscMethods>(L"TOVA32.MiscMethods", IID__MiscMethods);
        int ticks = 0;
        ComPtr<_Timer> timer;
        Sink timerSink(DIID___Timer, [&](DISPID, DISPPARAMS* p) {
            ++ticks;
            std::printf("    Timer: ElapsedTime = %.0f\n", V_R8(&p->rgvarg[0]));
            if (ticks == 5) {
                VARIANT_BOOL off = VARIANT_FALSE;
                timer->put_Enabled(&off);   // stopped from its own event
            }
        });
        LONG interval = 100;
        VARIANT_BOOL off = VARIANT_FALSE;
        check(misc->CreateTimer(&interval, &off, timer.put()), "CreateTimer");
        timerSink.connect(timer.get());
        std::printf("CreateTimer(100) ticks through the message loop; the fifth tick stops it:\n");
        VARIANT_BOOL on = VARIANT_TRUE;
        timer->put_Enabled(&on);
        pump(3000, [&] { return ticks >= 5; });
        timerSink.disconnect();

        // --- hover and leave
        auto track = create<_MouseTrackEx>(L"TOVA32.MouseTrackEx", IID__MouseTrackEx);
        int hovers = 0, leaves = 0;
        Sink mouseSink(DIID___MouseTrackEx, [&](DISPID id, DISPPARAMS* p) {
            if (id == 1) {
                ++hovers;
                // Arguments in reverse order: Y, X, Shift, Button (all by reference).
                std::printf("    MouseHover: Button %d, Shift %d, X %.0f, Y %.0f\n", *V_I2REF(&p->rgvarg[3]),
                            *V_I2REF(&p->rgvarg[2]), *V_R4REF(&p->rgvarg[1]), *V_R4REF(&p->rgvarg[0]));
            } else {
                ++leaves;
                std::printf("    MouseLeave\n");
            }
        });
        mouseSink.connect(track.get());
        check(track->AttachMouseTracking(handle), "AttachMouseTracking");
        std::printf("MouseTrackEx watches the window; the pointer moves in, rests, moves and leaves:\n");
        auto moveTo = [&](int x, int y) {
            POINT pt{x, y};
            ClientToScreen(wnd, &pt);
            SetCursorPos(pt.x, pt.y);
        };
        SetCursorPos(5, 5);
        pump(100, [] { return false; });
        moveTo(40, 30);
        pump(1500, [&] { return hovers >= 1; });
        moveTo(90, 60);
        pump(1500, [&] { return hovers >= 2; });
        SetCursorPos(5, 5);
        pump(1500, [&] { return leaves >= 1; });
        track->DetachMouseTracking();
        mouseSink.disconnect();
        std::printf("%d hover(s) and %d leave(s).\n", hovers, leaves);

        // --- a tooltip over the window
        auto tip = create<_Tooltip>(L"TOVA32.Tooltip", IID__Tooltip);
        std::string events;
        Sink tipSink(DIID___Tooltip, [&](DISPID id, DISPPARAMS* p) {
            static const char* const names[] = {"", "RequireTipText", "BeforeShow", "Show", "Hide"};
            events += std::string(events.empty() ? "" : ", ") + names[id];
            if (id == 1) {   // TipText (by reference) is the first argument from the end
                SysFreeString(*V_BSTRREF(&p->rgvarg[0]));
                *V_BSTRREF(&p->rgvarg[0]) = SysAllocString(L"Text asked for by RequireTipText");
            } else if (id == 2) {
                std::printf("    BeforeShow: AnimationDuration %ld ms, made 100\n", *V_I4REF(&p->rgvarg[0]));
                *V_I4REF(&p->rgvarg[0]) = 100;
            }
        });
        tipSink.connect(tip.get());
        tip->put_Title(Bstr(L"TOVA32.Tooltip").get());
        tip->put_Icon(tovaTipIconInfo);
        tip->put_Balloon(VARIANT_TRUE);
        tip->put_Animation(tovaTipAnimateFade);
        tip->put_Delay(200);
        long tool = 0;
        check(tip->AddTool(handle, Bstr(L"").get(), &tool), "AddTool");
        std::printf("A Tooltip balloon on the window; the pointer rests on it, then leaves:\n");
        moveTo(60, 40);
        pump(3000, [&] { return events.find(", Show") != std::string::npos; });   // not BeforeShow
        RECT tipRect{};
        GetWindowRect(tovaHandle(tip.get()), &tipRect);
        std::printf("    shown at (%ld, %ld), %ld x %ld\n", tipRect.left, tipRect.top, tipRect.right - tipRect.left,
                    tipRect.bottom - tipRect.top);
        SetCursorPos(5, 5);
        pump(1500, [&] { return events.find("Hide") != std::string::npos; });
        std::printf("    events: %s\n", events.c_str());
        tipSink.disconnect();

        // --- sound
        VARIANT_BOOL can = VARIANT_FALSE;
        misc->CanPlayWaveForms(&can);
        if (can) {
            std::wstring chime = writeChime();
            BSTR name = SysAllocString(chime.c_str());
            VARIANT_BOOL wait = VARIANT_FALSE, played = VARIANT_FALSE;
            misc->BeginPlaySound(&name, &wait, &played);
            std::printf("A wave device exists: a 0.4 s chime %s.\n", played ? "played" : "could not be played");
            SysFreeString(name);
            misc->StopSound();
            DeleteFileW(chime.c_str());
        } else {
            std::printf("No wave output device here: CanPlayWaveForms is False, so no sound.\n");
        }
        DestroyWindow(wnd);
        if (ticks < 5) std::printf("windows_demo: the timer did not tick five times\n");
        if (ticks >= 5) std::printf("windows_demo: done\n");
    }
    CoUninitialize();
    return 0;
}
