// SystemVersionInfo: the classification table, and the object under each
// Windows version that Wine can pretend to be (configured per program under
// HKCU\Software\Wine\AppDefaults\<exe>\Version, read when a program starts:
// the test runs itself again for each).
#include "support.h"

#include "windows/system_version.h"

#include <cstdlib>
#include <cstring>

using namespace test;
using tova::version::classify;
using tova::version::cutAtNul;

namespace {

TEST(VersionTable, Classification) {
    EXPECT_EQ(tovaOSWindows95, classify(1, 4, 0));
    EXPECT_EQ(tovaOSWindows98, classify(1, 4, 10));
    EXPECT_EQ(tovaOSWindowsMe, classify(1, 4, 90));
    EXPECT_EQ(tovaOSWindowsMe, classify(1, 4, 95));
    EXPECT_EQ(tovaOSUnknown, classify(1, 4, 3));
    EXPECT_EQ(tovaOSUnknown, classify(1, 5, 0));
    EXPECT_EQ(tovaOSUnknown, classify(2, 3, 50));
    EXPECT_EQ(tovaOSWindowsNT351, classify(2, 3, 51));
    EXPECT_EQ(tovaOSWindowsNT4, classify(2, 4, 0));
    EXPECT_EQ(tovaOSWindows2000, classify(2, 5, 0));
    EXPECT_EQ(tovaOSWindowsXP, classify(2, 5, 1));
    EXPECT_EQ(tovaOSWindowsXP, classify(2, 5, 2));
    EXPECT_EQ(tovaOSUnknown, classify(2, 6, 0)) << "nothing after major version 5";
    EXPECT_EQ(tovaOSUnknown, classify(2, 10, 0));
    EXPECT_EQ(tovaOSUnknown, classify(0, 4, 0));
    EXPECT_EQ(tovaOSUnknown, classify(-1, 0, 0));
}

TEST(VersionTable, ServicePackTextIsCutAtItsFirstNul) {
    EXPECT_EQ(L"A", cutAtNul(std::wstring(L"A\0BC", 4)));
    EXPECT_EQ(L"", cutAtNul(std::wstring(L"\0x", 2)));
    EXPECT_EQ(L"Service Pack 3", cutAtNul(L"Service Pack 3"));
}

// A system of the 9x family that knows only the basic record.
BOOL WINAPI olderSystem(OSVERSIONINFOA* v) {
    if (v->dwOSVersionInfoSize != sizeof(OSVERSIONINFOA)) return FALSE;
    v->dwPlatformId = 1;
    v->dwMajorVersion = 4;
    v->dwMinorVersion = 10;
    v->dwBuildNumber = 0x040A08AE;
    std::memcpy(v->szCSDVersion, "A\0junk", 7);
    return TRUE;
}
BOOL WINAPI noSystem(OSVERSIONINFOA*) { return FALSE; }

TEST(VersionRead, FallsBackToTheBasicRecord) {
    tova::version::Info i = tova::version::read(&olderSystem);
    EXPECT_EQ(1, i.platform);
    EXPECT_EQ(10, i.minor);
    EXPECT_EQ(0x08AE, i.build) << "the 9x build field's high word is dropped";
    EXPECT_EQ(L"A", i.csd);
    EXPECT_EQ(0, i.servicePackMajor);
    EXPECT_EQ(tovaOSWindows98, classify(i.platform, i.major, i.minor));
    tova::version::Info none = tova::version::read(&noSystem);
    EXPECT_EQ(-1, none.platform);
    EXPECT_EQ(0, none.major);
    EXPECT_EQ(L"", none.csd);
}

struct Expected {
    const char* name;
    long platform;
    SystemTypeConstants type;
};
const Expected kSystems[] = {
    {"win95", 1, tovaOSWindows95},   {"win98", 1, tovaOSWindows98}, {"winme", 1, tovaOSWindowsMe},
    {"nt40", 2, tovaOSWindowsNT4},   {"win2k", 2, tovaOSWindows2000}, {"winxp", 2, tovaOSWindowsXP},
    {"win2003", 2, tovaOSWindowsXP}, {"win7", 2, tovaOSUnknown},
};

long getLong(_SystemVersionInfo* v, HRESULT (STDMETHODCALLTYPE _SystemVersionInfo::*get)(LONG*)) {
    LONG x = -12345;
    EXPECT_EQ(S_OK, (v->*get)(&x));
    return x;
}

// The object against what the system reports to this program.
TEST(SystemVersionInfo, MatchesTheSystem) {
    auto v = create<_SystemVersionInfo>(CLSID_SystemVersionInfo, IID__SystemVersionInfo);
    ASSERT_TRUE(v);
    OSVERSIONINFOEXA ex{};
    ex.dwOSVersionInfoSize = sizeof ex;
    ASSERT_TRUE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&ex)));
    SystemPlatformConstants platform{};
    SystemTypeConstants type{};
    v->get_Platform(&platform);
    v->get_SystemType(&type);
    EXPECT_EQ(static_cast<long>(ex.dwPlatformId), platform);
    EXPECT_EQ(static_cast<long>(ex.dwMajorVersion), getLong(v.get(), &_SystemVersionInfo::get_MajorVersion));
    EXPECT_EQ(static_cast<long>(ex.dwMinorVersion), getLong(v.get(), &_SystemVersionInfo::get_MinorVersion));
    EXPECT_EQ(static_cast<long>(ex.dwBuildNumber), getLong(v.get(), &_SystemVersionInfo::get_BuildNumber));
    EXPECT_EQ(ex.wServicePackMajor, getLong(v.get(), &_SystemVersionInfo::get_ServicePackMajor));
    EXPECT_EQ(ex.wServicePackMinor, getLong(v.get(), &_SystemVersionInfo::get_ServicePackMinor));
    Bstr csd;
    v->get_CSDVersion(csd.put());
    wchar_t wide[128] = L"";
    MultiByteToWideChar(CP_ACP, 0, ex.szCSDVersion, -1, wide, 128);
    EXPECT_EQ(std::wstring(wide), csd.str());

    // APIMethods reads the true version, which Wine's configuration sets too.
    auto api = create<_APIMethods>(CLSID_APIMethods, IID__APIMethods);
    Bstr text;
    SystemTypeConstants apiType{};
    VARIANT_BOOL seven = VARIANT_FALSE, eight = VARIANT_TRUE;
    api->GetOSVersionString(text.put());
    api->GetSystemType(&apiType);
    api->IsOSVersionAtLeast(6, 1, 0, &seven);
    api->IsOSVersionAtLeast(6, 2, 0, &eight);
    EXPECT_EQ(type, apiType);

    const char* configured = configuredVersion();
    if (configured && std::strcmp(configured, "win7") == 0) {
        EXPECT_EQ(L"6.1.7601 Service Pack 1", text.str());
        EXPECT_TRUE(seven);
        EXPECT_FALSE(eight);
    } else if (configured && std::strcmp(configured, "winxp") == 0) {
        EXPECT_EQ(L"5.", text.str().substr(0, 2));
        EXPECT_FALSE(seven);
    }
    if (!configured) {
        // Wine's default: Windows 7, which the table does not know.
        EXPECT_EQ(classify(platform, ex.dwMajorVersion, ex.dwMinorVersion), type);
        return;
    }
    for (const Expected& e : kSystems)
        if (std::strcmp(e.name, configured) == 0) {
            EXPECT_EQ(e.platform, platform) << configured;
            EXPECT_EQ(e.type, type) << configured << " " << ex.dwMajorVersion << "." << ex.dwMinorVersion;
            std::printf("%s: platform %ld, %lu.%lu build %ld, \"%ls\", SP %u.%u -> SystemType %d\n", configured,
                        static_cast<long>(platform), ex.dwMajorVersion, ex.dwMinorVersion,
                        getLong(v.get(), &_SystemVersionInfo::get_BuildNumber), csd.str().c_str(),
                        ex.wServicePackMajor, ex.wServicePackMinor, static_cast<int>(type));
            return;
        }
    FAIL() << "unknown configured version " << configured;
}

// Runs this program again as each configured system.
TEST(SystemVersionInfo, UnderEachConfiguredSystem) {
    if (configuredVersion()) GTEST_SKIP() << "inside a configured run";
    for (const Expected& e : kSystems) {
        const Rerun r = rerunAsVersion(e.name, "SystemVersionInfo.MatchesTheSystem");
        EXPECT_TRUE(r.started) << e.name << ", error " << r.error;
        EXPECT_EQ(0u, r.code) << "as " << e.name;
    }
}

}  // namespace
