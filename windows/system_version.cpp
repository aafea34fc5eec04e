#include "system_version.h"

namespace tova {

const ClassIdentity SystemVersionInfo::kClass = {L"SystemVersionInfo", &CLSID_SystemVersionInfo,
                                                 &IID__SystemVersionInfo, nullptr};

HRESULT createSystemVersionInfo(REFIID riid, void** ppv) { return SystemVersionInfo::create(riid, ppv); }

namespace version {

namespace {

// The 128-byte ANSI service-pack field, converted whole; the NUL cut follows.
std::wstring fromAnsi(const char (&field)[128]) {
    wchar_t wide[128];
    int n = MultiByteToWideChar(CP_ACP, 0, field, 128, wide, 128);
    return std::wstring(wide, n > 0 ? static_cast<size_t>(n) : 0);
}

}  // namespace

SystemTypeConstants classify(long platform, long major, long minor) {
    if (platform == VER_PLATFORM_WIN32_WINDOWS && major == 4) {
        if (minor == 0) return tovaOSWindows95;
        if (minor == 10) return tovaOSWindows98;
        if (minor >= 90) return tovaOSWindowsMe;
        return tovaOSUnknown;
    }
    if (platform == VER_PLATFORM_WIN32_NT) {
        if (major == 3 && minor >= 51) return tovaOSWindowsNT351;
        if (major == 4 && minor >= 0) return tovaOSWindowsNT4;
        if (major == 5) return minor == 0 ? tovaOSWindows2000 : minor >= 1 ? tovaOSWindowsXP : tovaOSUnknown;
    }
    return tovaOSUnknown;
}

std::wstring cutAtNul(const std::wstring& text) {
    size_t p = text.find(L'\0');
    return p == std::wstring::npos ? text : text.substr(0, p);
}

Info read(Query query) {
    Info info;
    OSVERSIONINFOEXA ex{};
    ex.dwOSVersionInfoSize = sizeof ex;   // 156
    OSVERSIONINFOA basic{};
    basic.dwOSVersionInfoSize = sizeof basic;   // 148
    if (query(reinterpret_cast<OSVERSIONINFOA*>(&ex))) {
        info.platform = static_cast<long>(ex.dwPlatformId);
        info.major = static_cast<long>(ex.dwMajorVersion);
        info.minor = static_cast<long>(ex.dwMinorVersion);
        info.build = static_cast<long>(ex.dwBuildNumber);
        info.csd = fromAnsi(ex.szCSDVersion);
        info.servicePackMajor = ex.wServicePackMajor;
        info.servicePackMinor = ex.wServicePackMinor;
    } else if (query(&basic)) {
        info.platform = static_cast<long>(basic.dwPlatformId);
        info.major = static_cast<long>(basic.dwMajorVersion);
        info.minor = static_cast<long>(basic.dwMinorVersion);
        // The 9x family keeps the version in the build field's high word.
        info.build = static_cast<long>(basic.dwBuildNumber);
        if (info.platform == VER_PLATFORM_WIN32_WINDOWS) info.build &= 0xFFFF;
        info.csd = fromAnsi(basic.szCSDVersion);
    }
    info.csd = cutAtNul(info.csd);
    return info;
}

}  // namespace version

static_assert(sizeof(OSVERSIONINFOEXA) == 156 && sizeof(OSVERSIONINFOA) == 148, "the version records' sizes");

SystemVersionInfo::SystemVersionInfo() : info_(version::read()) {
    type_ = version::classify(info_.platform, info_.major, info_.minor);
}

STDMETHODIMP SystemVersionInfo::get_Platform(SystemPlatformConstants* pRet) {
    return guard([&] { *required(pRet) = static_cast<SystemPlatformConstants>(info_.platform); });
}
STDMETHODIMP SystemVersionInfo::get_SystemType(SystemTypeConstants* pRet) {
    return guard([&] { *required(pRet) = type_; });
}
STDMETHODIMP SystemVersionInfo::get_MajorVersion(LONG* pRet) { return guard([&] { *required(pRet) = info_.major; }); }
STDMETHODIMP SystemVersionInfo::get_MinorVersion(LONG* pRet) { return guard([&] { *required(pRet) = info_.minor; }); }
STDMETHODIMP SystemVersionInfo::get_BuildNumber(LONG* pRet) { return guard([&] { *required(pRet) = info_.build; }); }
STDMETHODIMP SystemVersionInfo::get_CSDVersion(BSTR* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = Bstr(info_.csd).detach();
    });
}
STDMETHODIMP SystemVersionInfo::get_ServicePackMajor(LONG* pRet) {
    return guard([&] { *required(pRet) = info_.servicePackMajor; });
}
STDMETHODIMP SystemVersionInfo::get_ServicePackMinor(LONG* pRet) {
    return guard([&] { *required(pRet) = info_.servicePackMinor; });
}

}  // namespace tova
