#include "input_clipboard.h"

#include "last_error.h"
#include "window_placement.h"
#include "../frame/errors.h"

#include <cstring>

namespace tova {

namespace input {

namespace {
void requireKey(long virtualKey) {
    if (virtualKey < 1 || virtualKey > 254) raise(kInvalidArgument);
}
}  // namespace

bool isKeyDown(long virtualKey) {
    requireKey(virtualKey);
    return (GetAsyncKeyState(virtualKey) & 0x8000) != 0;
}

bool isKeyToggled(long virtualKey) {
    requireKey(virtualKey);
    return (GetKeyState(virtualKey) & 1) != 0;
}

bool setKeyToggle(long virtualKey, bool on) {
    requireKey(virtualKey);
    if (((GetKeyState(virtualKey) & 1) != 0) == on) return true;
    INPUT keys[2] = {};
    for (INPUT& k : keys) {
        k.type = INPUT_KEYBOARD;
        k.ki.wVk = static_cast<WORD>(virtualKey);
    }
    keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
    return SendInput(2, keys, sizeof(INPUT)) == 2 ? true : lastError::failed();
}

long shiftState() {
    long s = 0;
    if (GetAsyncKeyState(VK_SHIFT) & 0x8000) s |= 1;
    if (GetAsyncKeyState(VK_CONTROL) & 0x8000) s |= 2;
    if (GetAsyncKeyState(VK_MENU) & 0x8000) s |= 4;
    return s;
}

bool cursorPosition(HWND wnd, POINT& out) {
    if (!placement::isWindowOrNone(wnd)) return false;
    POINT p;
    if (!GetCursorPos(&p)) return lastError::failed();
    if (wnd && !ScreenToClient(wnd, &p)) return lastError::failed();
    out = p;
    return true;
}

bool setCursorPosition(HWND wnd, POINT at) {
    if (!placement::isWindowOrNone(wnd)) return false;
    if (wnd && !ClientToScreen(wnd, &at)) return lastError::failed();
    return SetCursorPos(at.x, at.y) ? true : lastError::failed();
}

}  // namespace input

namespace clipboard {

namespace {

// A message-only window of a system class owns what the library puts on the
// clipboard: without an owner the clipboard refuses new data after emptying.
// Its window procedure is the system's, so it outlives nothing of the library.
class Owner {
public:
    Owner() : wnd_(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {}
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { if (wnd_) DestroyWindow(wnd_); }
    HWND get() const { return wnd_; }

private:
    HWND wnd_;
};

// Opens the clipboard, retrying every 10 ms for 250 ms while another program has it.
class Opened {
public:
    explicit Opened(HWND owner) {
        for (int attempt = 0; attempt < 26; ++attempt) {
            if (OpenClipboard(owner)) {
                open_ = true;
                return;
            }
            error_ = GetLastError();
            if (attempt < 25) Sleep(10);
        }
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    ~Opened() { if (open_) CloseClipboard(); }
    // False with LastDllError 5 (or the refusal's own code) when it stayed busy.
    bool ok() const {
        if (!open_) lastError::set(error_ ? error_ : ERROR_ACCESS_DENIED);
        return open_;
    }

private:
    bool open_ = false;
    DWORD error_ = 0;
};

struct GlobalMemory {
    HGLOBAL h = nullptr;
    ~GlobalMemory() { if (h) GlobalFree(h); }
};

// A movable block locked while in scope; get() is null when it would not lock.
class Locked {
public:
    explicit Locked(HGLOBAL h) : h_(h), p_(GlobalLock(h)) {}
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    ~Locked() { if (p_) GlobalUnlock(h_); }
    void* get() const { return p_; }

private:
    HGLOBAL h_;
    void* p_;
};

}  // namespace

std::wstring text() {
    Opened clip(nullptr);
    if (!clip.ok()) return {};
    HANDLE data = GetClipboardData(CF_UNICODETEXT);
    if (!data) return lastError::set(0), std::wstring();   // no text is no failure
    Locked locked(data);
    const wchar_t* p = static_cast<const wchar_t*>(locked.get());
    if (!p) return lastError::failed(), std::wstring();
    const size_t capacity = GlobalSize(data) / sizeof(wchar_t);
    size_t n = 0;
    while (n < capacity && p[n]) ++n;
    return std::wstring(p, n);
}

bool setText(const std::wstring& text) {
    GlobalMemory memory;
    memory.h = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    if (!memory.h) return lastError::failed(ERROR_NOT_ENOUGH_MEMORY);
    {
        Locked locked(memory.h);
        if (!locked.get()) return lastError::failed();
        std::memcpy(locked.get(), text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }
    Owner owner;
    Opened clip(owner.get());
    if (!clip.ok()) return false;
    if (!EmptyClipboard()) return lastError::failed();
    if (!SetClipboardData(CF_UNICODETEXT, memory.h)) return lastError::failed();
    memory.h = nullptr;   // the system's now
    return true;
}

bool clear() {
    Opened clip(nullptr);
    if (!clip.ok()) return false;
    return EmptyClipboard() ? true : lastError::failed();
}

}  // namespace clipboard

}  // namespace tova
