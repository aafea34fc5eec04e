#include "system_info.h"

#include "last_error.h"
#include "words_guids.h"

#include <shlobj.h>

#include <memory>

namespace tova::systemInfo {

namespace {

// Functions of the "length, or the size needed" kind (GetWindowsDirectoryW ...).
template <class F>
std::wstring sized(F call) {
    std::wstring s(MAX_PATH, L'\0');
    for (int attempt = 0; attempt < 3; ++attempt) {
        const UINT n = call(&s[0], static_cast<UINT>(s.size()));
        if (n == 0) return lastError::failed(), std::wstring();
        if (n < s.size()) {
            s.resize(n);
            return folderForm(s);
        }
        s.assign(n, L'\0');
    }
    lastError::set(ERROR_INSUFFICIENT_BUFFER);
    return {};
}

template <class F>
F procedure(const wchar_t* module, const char* name) {
    HMODULE m = GetModuleHandleW(module);
    return m ? reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(m, name))) : nullptr;
}

struct CoTaskString {
    wchar_t* p = nullptr;
    ~CoTaskString() { CoTaskMemFree(p); }
};

struct Sid {
    PSID p = nullptr;
    ~Sid() { if (p) FreeSid(p); }
};

}  // namespace

std::wstring folderForm(std::wstring path) {
    if (path.size() > 3 && path.back() == L'\\') path.pop_back();
    return path;
}

std::wstring windowsFolder() { return sized([](wchar_t* b, UINT n) { return GetWindowsDirectoryW(b, n); }); }
std::wstring systemFolder() { return sized([](wchar_t* b, UINT n) { return GetSystemDirectoryW(b, n); }); }

std::wstring systemWow64Folder() {
    using Get = UINT(WINAPI*)(LPWSTR, UINT);
    Get get = procedure<Get>(L"kernel32.dll", "GetSystemWow64DirectoryW");
    if (!get) return lastError::set(ERROR_CALL_NOT_IMPLEMENTED), std::wstring();
    return sized(get);
}

std::wstring specialFolder(long csidl, bool create) {
    if (csidl < 0 || csidl > 0xFF) return lastError::set(ERROR_INVALID_PARAMETER), std::wstring();
    wchar_t path[MAX_PATH] = {};
    const HRESULT hr = SHGetFolderPathW(nullptr, csidl | (create ? static_cast<int>(CSIDL_FLAG_CREATE) : 0), nullptr, SHGFP_TYPE_CURRENT, path);
    if (hr != S_OK || !path[0]) return lastError::set(hr == S_FALSE ? ERROR_FILE_NOT_FOUND : hr), std::wstring();
    return folderForm(path);
}

std::wstring knownFolder(const std::wstring& folderId, bool create) {
    using Get = HRESULT(WINAPI*)(REFGUID, DWORD, HANDLE, PWSTR*);
    Get get = procedure<Get>(L"shell32.dll", "SHGetKnownFolderPath");
    if (!get) return lastError::set(ERROR_CALL_NOT_IMPLEMENTED), std::wstring();
    GUID id;
    if (!guids::parse(folderId, id)) return lastError::set(E_INVALIDARG), std::wstring();
    CoTaskString path;
    const HRESULT hr = get(id, create ? static_cast<DWORD>(KF_FLAG_CREATE) : 0, nullptr, &path.p);
    if (FAILED(hr) || !path.p) return lastError::set(FAILED(hr) ? hr : E_FAIL), std::wstring();
    return folderForm(path.p);
}

std::wstring currentFolder() {
    return sized([](wchar_t* b, UINT n) { return static_cast<UINT>(GetCurrentDirectoryW(n, b)); });
}

bool setCurrentFolder(const std::wstring& path) {
    if (path.empty()) return lastError::set(ERROR_PATH_NOT_FOUND), false;
    return SetCurrentDirectoryW(path.c_str()) ? true : lastError::failed();
}

std::wstring hostPath() {
    std::wstring s(MAX_PATH, L'\0');
    while (s.size() <= 32768) {
        const DWORD n = GetModuleFileNameW(nullptr, &s[0], static_cast<DWORD>(s.size()));
        if (n == 0) return lastError::failed(), std::wstring();
        if (n < s.size()) return s.substr(0, n);
        s.assign(s.size() * 2, L'\0');
    }
    lastError::set(ERROR_INSUFFICIENT_BUFFER);
    return {};
}

bool trueVersion(TrueVersion& out) {
    using Get = LONG(WINAPI*)(OSVERSIONINFOEXW*);
    OSVERSIONINFOEXW v = {};
    v.dwOSVersionInfoSize = sizeof v;
    Get get = procedure<Get>(L"ntdll.dll", "RtlGetVersion");
    bool ok = get && get(&v) == 0;
    if (!ok) {
        v.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
        ok = GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&v)) != 0;
    }
    if (!ok) return lastError::failed();
    out.platform = static_cast<long>(v.dwPlatformId);
    out.major = static_cast<long>(v.dwMajorVersion);
    out.minor = static_cast<long>(v.dwMinorVersion);
    out.build = static_cast<long>(v.dwBuildNumber & 0xFFFF);
    out.csd = v.szCSDVersion;
    return true;
}

std::wstring versionString(const TrueVersion& v) {
    std::wstring s = std::to_wstring(v.major) + L"." + std::to_wstring(v.minor) + L"." + std::to_wstring(v.build);
    if (!v.csd.empty()) s += L" " + v.csd;
    return s;
}

bool atLeast(const TrueVersion& v, long major, long minor, long build) {
    if (v.major != major) return v.major > major;
    if (v.minor != minor) return v.minor > minor;
    return v.build >= build;
}

bool is64BitSystem() {
#ifdef _WIN64
    return true;
#else
    using Query = BOOL(WINAPI*)(HANDLE, PBOOL);
    Query query = procedure<Query>(L"kernel32.dll", "IsWow64Process");
    BOOL wow = FALSE;
    if (query && !query(GetCurrentProcess(), &wow)) return lastError::failed();
    return wow != FALSE;
#endif
}

bool isUserAdmin() {
    SID_IDENTIFIER_AUTHORITY nt = SECURITY_NT_AUTHORITY;
    Sid admins;
    if (!AllocateAndInitializeSid(&nt, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                                  &admins.p))
        return lastError::failed();
    BOOL member = FALSE;
    if (!CheckTokenMembership(nullptr, admins.p, &member)) return lastError::failed();
    return member != FALSE;
}

}  // namespace tova::systemInfo
