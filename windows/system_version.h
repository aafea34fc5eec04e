// SystemVersionInfo: the operating system's version, read once when the object
// is made, and its classification into the Windows releases the library knows.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {

namespace version {

struct Info {
    long platform = -1;   // tovaPlatformUnknown
    long major = 0, minor = 0, build = 0;
    std::wstring csd;
    long servicePackMajor = 0, servicePackMinor = 0;
};

// The release for a platform and version; nothing after major version 5 is
// known, on purpose: newer systems are reported as unknown.
SystemTypeConstants classify(long platform, long major, long minor);
// The service-pack text up to its first NUL.
std::wstring cutAtNul(const std::wstring& text);
// Reads the version: the extended record first, then the basic one. The
// query function can be replaced to see a system that refuses the extended record.
using Query = BOOL(WINAPI*)(OSVERSIONINFOA*);
Info read(Query query = &GetVersionExA);

}  // namespace version

class SystemVersionInfo final : public Object<SystemVersionInfo, _SystemVersionInfo> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_Platform(SystemPlatformConstants* pRet) override;
    STDMETHODIMP get_SystemType(SystemTypeConstants* pRet) override;
    STDMETHODIMP get_MajorVersion(LONG* pRet) override;
    STDMETHODIMP get_MinorVersion(LONG* pRet) override;
    STDMETHODIMP get_BuildNumber(LONG* pRet) override;
    STDMETHODIMP get_CSDVersion(BSTR* pRet) override;
    STDMETHODIMP get_ServicePackMajor(LONG* pRet) override;
    STDMETHODIMP get_ServicePackMinor(LONG* pRet) override;

private:
    friend class Object<SystemVersionInfo, _SystemVersionInfo>;
    SystemVersionInfo();

    version::Info info_;
    SystemTypeConstants type_ = tovaOSUnknown;
};

}  // namespace tova
