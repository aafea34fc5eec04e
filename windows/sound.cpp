#include "sound.h"

#include <mmsystem.h>

#include <atomic>
#include <cwchar>

namespace tova {
namespace sound {

namespace {

const wchar_t kWindowClass[] = L"TovaWavePlayer";
std::atomic<long> classUsers{0};   // players alive, on any thread; the class goes with the last

HINSTANCE thisModule() {
    HMODULE m = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&canPlayWaveForms), &m);
    return m;
}

// Lets the thread's pending messages be processed once, as a host's "do
// events" does; a quit request taken on the way is put back.
void processPending() {
    MSG m;
    while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
        if (m.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(m.wParam));
            return;
        }
        TranslateMessage(&m);
        DispatchMessageW(&m);
    }
}

}  // namespace

bool canPlayWaveForms() { return waveOutGetNumDevs() >= 1; }

Player::Player() {
    HINSTANCE module = thisModule();
    WNDCLASSW wc{};
    wc.lpfnWndProc = &Player::proc;
    wc.hInstance = module;
    wc.lpszClassName = kWindowClass;
    if (classUsers > 0 || RegisterClassW(&wc) || GetLastError() == ERROR_CLASS_ALREADY_EXISTS) {
        wnd_ = CreateWindowExW(0, kWindowClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, module, nullptr);
        if (wnd_) {
            ++classUsers;
            SetWindowLongPtrW(wnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        }
    }
    wchar_t alias[40];
    std::swprintf(alias, 40, L"tova_wave_%p", static_cast<void*>(this));
    alias_ = alias;
}

Player::~Player() {
    stop();
    if (wnd_) {
        SetWindowLongPtrW(wnd_, GWLP_USERDATA, 0);
        DestroyWindow(wnd_);
        if (--classUsers == 0) UnregisterClassW(kWindowClass, thisModule());
    }
}

DWORD Player::send(const std::wstring& command, bool notify) {
    return mciSendStringW(command.c_str(), nullptr, 0, notify ? wnd_ : nullptr);
}

void Player::run(const wchar_t* verb) {
    lastCommand_ = verb;
    send(std::wstring(verb) + L" " + alias_ + L" wait", false);
    processPending();
}

bool Player::play(const std::wstring& file, bool asynchronous) {
    if (!wnd_) return false;
    run(L"stop");
    run(L"close");
    lastCommand_ = L"open";
    // Errors of the device are not reported: the can-play check below answers.
    send(L"open \"" + file + L"\" type waveaudio alias " + alias_ + L" wait", false);
    processPending();
    wchar_t answer[16] = L"";
    if (mciSendStringW((L"capability " + alias_ + L" can play").c_str(), answer, 16, nullptr) != 0 ||
        std::wcscmp(answer, L"true") != 0)
        return false;
    lastCommand_ = L"play";
    if (asynchronous)
        send(L"play " + alias_ + L" notify", true);
    else
        send(L"play " + alias_ + L" wait", false);
    return true;
}

void Player::stop() { run(L"close"); }

void Player::completed(WPARAM flags, LPARAM device) {
    // Only the end of the play in progress closes the device: a play that was
    // stopped or replaced reports too, possibly after the next one started.
    if (flags != MCI_NOTIFY_SUCCESSFUL) return;
    if (static_cast<MCIDEVICEID>(device) != mciGetDeviceIDW(alias_.c_str())) return;
    std::wstring last = lastCommand_;
    CharLowerW(&last[0]);
    if (last == L"play") {
        run(L"stop");
        run(L"close");
    }
}

LRESULT CALLBACK Player::proc(HWND wnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    if (msg == MM_MCINOTIFY) {
        if (auto* self = reinterpret_cast<Player*>(GetWindowLongPtrW(wnd, GWLP_USERDATA))) self->completed(wParam, lParam);
        return 0;
    }
    return DefWindowProcW(wnd, msg, wParam, lParam);
}

}  // namespace sound
}  // namespace tova
