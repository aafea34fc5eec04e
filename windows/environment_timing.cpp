#include "environment_timing.h"

#include "last_error.h"
#include "../frame/errors.h"

#include <mutex>

namespace tova {

namespace environment {

namespace {

// Functions that take the buffer's size and write it back: the size needed
// when it was too small.
template <class F>
std::wstring sizedInOut(F call) {
    DWORD n = 256;
    for (int attempt = 0; attempt < 3; ++attempt) {
        std::wstring s(n, L'\0');
        DWORD size = n;
        if (call(&s[0], &size)) {
            s.resize(wcsnlen(s.c_str(), n));   // the size written back may count the NUL or not
            return s;
        }
        if (GetLastError() != ERROR_MORE_DATA && GetLastError() != ERROR_INSUFFICIENT_BUFFER) break;
        n = size > n ? size + 1 : n * 2;
    }
    lastError::failed();
    return {};
}

struct EnvironmentBlock {
    wchar_t* p = GetEnvironmentStringsW();
    ~EnvironmentBlock() { if (p) FreeEnvironmentStringsW(p); }
};

}  // namespace

std::wstring computerName(long format) {
    if (format < 0 || format > 7) raise(kInvalidArgument);
    return sizedInOut([format](wchar_t* b, DWORD* n) {
        return GetComputerNameExW(static_cast<COMPUTER_NAME_FORMAT>(format), b, n);
    });
}

std::wstring userName() {
    return sizedInOut([](wchar_t* b, DWORD* n) { return GetUserNameW(b, n); });
}

std::wstring variable(const std::wstring& name) {
    if (name.empty()) return lastError::set(ERROR_ENVVAR_NOT_FOUND), std::wstring();
    SetLastError(0);
    DWORD n = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
    // A set but empty variable needs a buffer of 1 and gives 0 characters.
    for (int attempt = 0; attempt < 3 && n; ++attempt) {
        std::wstring s(n, L'\0');
        const DWORD got = GetEnvironmentVariableW(name.c_str(), &s[0], n);
        if (got < n) {
            s.resize(got);
            if (got == 0 && GetLastError()) lastError::failed();
            return s;
        }
        n = got;
    }
    lastError::failed(ERROR_ENVVAR_NOT_FOUND);
    return {};
}

bool setVariable(const std::wstring& name, const std::wstring* value) {
    if (name.empty() || name.find(L'=') != std::wstring::npos) return lastError::set(ERROR_INVALID_PARAMETER), false;
    return SetEnvironmentVariableW(name.c_str(), value ? value->c_str() : nullptr) ? true : lastError::failed();
}

std::wstring expand(const std::wstring& text) {
    DWORD n = static_cast<DWORD>(text.size()) + 64;
    for (int attempt = 0; attempt < 3; ++attempt) {
        std::wstring s(n, L'\0');
        const DWORD got = ExpandEnvironmentStringsW(text.c_str(), &s[0], n);
        if (got == 0) return lastError::failed(), std::wstring();
        if (got <= n) {
            s.resize(got - 1);
            return s;
        }
        n = got;
    }
    lastError::set(ERROR_INSUFFICIENT_BUFFER);
    return {};
}

std::vector<std::pair<std::wstring, std::wstring>> variables() {
    std::vector<std::pair<std::wstring, std::wstring>> out;
    EnvironmentBlock block;
    if (!block.p) return lastError::failed(), out;
    for (const wchar_t* p = block.p; *p; p += wcslen(p) + 1) {
        if (*p == L'=') continue;
        const wchar_t* eq = wcschr(p, L'=');
        if (!eq) continue;
        out.emplace_back(std::wstring(p, eq), std::wstring(eq + 1));
    }
    return out;
}

}  // namespace environment

namespace timing {

double tickCount() {
    using Get64 = ULONGLONG(WINAPI*)();
    static const Get64 get64 = reinterpret_cast<Get64>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetTickCount64")));
    if (get64) return static_cast<double>(get64());
    // Before Vista: the 32-bit count, with its wraps counted here.
    static std::mutex lock;
    static DWORD last = 0;
    static ULONGLONG wraps = 0;
    std::lock_guard<std::mutex> hold(lock);
    const DWORD now = ::GetTickCount();
    if (now < last) ++wraps;
    last = now;
    return static_cast<double>((wraps << 32) | now);
}

double performanceCounter() {
    LARGE_INTEGER c = {};
    QueryPerformanceCounter(&c);
    return static_cast<double>(c.QuadPart);
}

double performanceFrequency() {
    LARGE_INTEGER f = {};
    QueryPerformanceFrequency(&f);
    return static_cast<double>(f.QuadPart);
}

double milliseconds() {
    static const double frequency = performanceFrequency();
    return frequency > 0 ? performanceCounter() * 1000.0 / frequency : tickCount();
}

bool beep(long frequency, long duration) {
    if (frequency < 37 || frequency > 32767 || duration < 0) raise(kInvalidArgument);
    return ::Beep(static_cast<DWORD>(frequency), static_cast<DWORD>(duration)) ? true : lastError::failed();
}

bool messageBeep(long soundType) {
    switch (soundType) {
    case -1: case 0: case 16: case 32: case 48: case 64: break;
    default: raise(kInvalidArgument);
    }
    return ::MessageBeep(static_cast<UINT>(soundType)) ? true : lastError::failed();
}

std::wstring errorText(long code, long languageId) {
    DWORD c = static_cast<DWORD>(code);
    // An HRESULT that wraps a Win32 code reads as that code.
    if ((c & 0xFFFF0000u) == 0x80070000u) c &= 0xFFFF;
    wchar_t* text = nullptr;
    const DWORD n = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                   nullptr, c, static_cast<DWORD>(languageId), reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    if (n == 0 || !text) {
        if (text) LocalFree(text);
        lastError::failed(ERROR_MR_MID_NOT_FOUND);
        return {};
    }
    std::wstring s(text, n);
    LocalFree(text);
    // One line: breaks inside become spaces, those at the end go.
    for (wchar_t& ch : s)
        if (ch == L'\r' || ch == L'\n') ch = L' ';
    while (!s.empty() && s.back() == L' ') s.pop_back();
    size_t w = 0;
    for (size_t r = 0; r < s.size(); ++r)
        if (!(s[r] == L' ' && w > 0 && s[w - 1] == L' ')) s[w++] = s[r];
    s.resize(w);
    return s;
}

}  // namespace timing

}  // namespace tova
