// APIMethods: programs and documents, and server registration. Another
// process is api_helper_process (a sleep with an exit code, or a titled
// window with an edit control); documents and URLs open through a file type
// and a URL scheme the tests register, never the host's browser. The program
// runs holding the prefix's registry lock (tests/CMakeLists.txt) and leaves
// the registry as it found it.
#include "api_support.h"
#include "window_support.h"

#include <shlwapi.h>

#include <fstream>

using namespace test;

namespace {

std::wstring moduleFolder(HMODULE module) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(module, path, MAX_PATH);
    std::wstring s = path;
    return s.substr(0, s.rfind(L'\\'));
}

std::wstring helper(const std::wstring& arguments) {
    return L"\"" + moduleFolder(nullptr) + L"\\api_helper_process.exe\" " + arguments;
}

bool exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// Waits up to 5 s for `done`, dispatching messages.
bool within5s(const std::function<bool()>& done) {
    pump(5000, done);
    return done();
}

int ticks = 0;
void CALLBACK countTick(HWND, UINT, UINT_PTR, DWORD) { ++ticks; }

TEST(ApiProcesses, RunAndWaitGivesExitCodesTimeOutsAndStartErrors) {
    auto a = api();
    VARIANT_BOOL ok = VARIANT_FALSE;
    LONG code = -1;
    ASSERT_EQ(S_OK, a->RunAndWait(Bstr(L"cmd.exe /c exit 3").get(), &code, -1, SW_HIDE, nullptr, VARIANT_FALSE, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(3, code);
    EXPECT_EQ(0, lastDllError(a.get()));

    a->RunAndWait(Bstr(helper(L"sleep 1500 4")).get(), &code, 200, SW_HIDE, nullptr, VARIANT_FALSE, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(259, code);
    EXPECT_EQ(259, lastDllError(a.get())) << "still running";

    code = 42;
    a->RunAndWait(Bstr(L"no_such_program_tova.exe").get(), &code, -1, SW_HIDE, nullptr, VARIANT_FALSE, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(42, code) << "kept when nothing started";
    EXPECT_EQ(2, lastDllError(a.get()));

    // A folder and a variable with characters beyond Latin-1 reach the program.
    Scratch dir;
    const std::wstring folder = dir(L"Ω 😀");
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    SetEnvironmentVariableW(L"TOVA_X", L"Ω1");
    ASSERT_EQ(S_OK, a->RunAndWait(Bstr(L"cmd.exe /c if \"%TOVA_X%\"==\"Ω1\" echo x> here.txt").get(), &code, 10000,
                                  SW_HIDE, Bstr(folder).get(), VARIANT_FALSE, &ok));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(exists(folder + L"\\here.txt"));
    SetEnvironmentVariableW(L"TOVA_X", nullptr);

    EXPECT_EQ(5, errorNumber(a->RunAndWait(Bstr(L"cmd.exe /c exit 1").get(), &code, -2, SW_HIDE, nullptr, VARIANT_FALSE, &ok)));
    EXPECT_EQ(5, errorNumber(a->RunAndWait(Bstr(L"cmd.exe /c exit 1").get(), &code, -1, static_cast<ShowWindowConstants>(12),
                                           nullptr, VARIANT_FALSE, &ok)));
}

TEST(ApiProcesses, ThreadTimersTickOnlyWhileAWaitPumps) {
    auto a = api();
    VARIANT_BOOL ok = VARIANT_FALSE;
    LONG code = -1;
    for (bool pumping : {true, false}) {
        ticks = 0;
        const UINT_PTR timer = SetTimer(nullptr, 0, 20, countTick);
        a->RunAndWait(Bstr(helper(L"sleep 300 5")).get(), &code, -1, SW_HIDE, nullptr, pumping ? VARIANT_TRUE : VARIANT_FALSE, &ok);
        const int seen = ticks;
        KillTimer(nullptr, timer);
        EXPECT_TRUE(ok);
        EXPECT_EQ(5, code);
        if (pumping)
            EXPECT_GE(seen, 5) << "a 20 ms timer during a 300 ms wait";
        else
            EXPECT_EQ(0, seen);
    }
}

struct Found {
    DWORD pid;
    HWND wnd;
};

BOOL CALLBACK findByProcess(HWND wnd, LPARAM data) {
    auto* f = reinterpret_cast<Found*>(data);
    DWORD pid = 0;
    GetWindowThreadProcessId(wnd, &pid);
    if (pid != f->pid || !IsWindowVisible(wnd)) return TRUE;
    f->wnd = wnd;
    return FALSE;
}

std::wstring textOf(HWND wnd) {
    wchar_t buffer[256] = {};
    DWORD_PTR n = 0;
    SendMessageTimeoutW(wnd, WM_GETTEXT, 256, reinterpret_cast<LPARAM>(buffer), SMTO_BLOCK, 2000, &n);
    return buffer;
}

TEST(ApiProcesses, RunProcessKeepsTheProcessUntilWaitForProcessSeesItEnd) {
    auto a = api();
    const std::wstring title = L"Tova helper Ω 😀";
    LONG id = 0;
    ASSERT_EQ(S_OK, a->RunProcess(Bstr(helper(L"window \"" + title + L"\" \"Grüße\"")).get(), SW_SHOWNORMAL, nullptr, &id));
    ASSERT_NE(0, id);
    EXPECT_EQ(0, lastDllError(a.get()));

    Found f{static_cast<DWORD>(id), nullptr};
    EXPECT_TRUE(within5s([&] { EnumWindows(findByProcess, reinterpret_cast<LPARAM>(&f)); return f.wnd != nullptr; }));
    ASSERT_TRUE(f.wnd);
    EXPECT_EQ(title, textOf(f.wnd));
    EXPECT_EQ(L"Grüße", textOf(FindWindowExW(f.wnd, nullptr, L"EDIT", nullptr)));

    VARIANT_BOOL ok = VARIANT_TRUE;
    LONG code = -1;
    a->WaitForProcess(id, 0, &code, VARIANT_FALSE, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(259, lastDllError(a.get()));
    PostMessageW(f.wnd, WM_CLOSE, 0, 0);
    // The process has ended before this wait starts: the handle kept since
    // RunProcess still answers, with the exit code.
    Sleep(500);
    ASSERT_EQ(S_OK, a->WaitForProcess(id, 5000, &code, VARIANT_TRUE, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(9, code);
    a->WaitForProcess(0, 0, &code, VARIANT_FALSE, &ok);
    EXPECT_FALSE(ok) << "no process";
    EXPECT_EQ(87, lastDllError(a.get()));

    EXPECT_EQ(S_OK, a->RunProcess(Bstr(L"no_such_program_tova.exe").get(), SW_HIDE, nullptr, &id));
    EXPECT_EQ(0, id);
    EXPECT_EQ(2, lastDllError(a.get()));
}

// ------------------------------------------------------ documents and URLs

// A key under HKLM\Software\Classes (where Wine looks for associations) with
// a default value, removed with everything under it when the test ends.
class ClassKey {
public:
    explicit ClassKey(std::wstring name) : name_(L"Software\\Classes\\" + std::move(name)) {}
    ~ClassKey() { RegDeleteTreeW(HKEY_LOCAL_MACHINE, name_.c_str()); }
    ClassKey(const ClassKey&) = delete;
    ClassKey& operator=(const ClassKey&) = delete;
    bool set(const std::wstring& sub, const wchar_t* value, const std::wstring& data) {
        HKEY k = nullptr;
        const std::wstring path = sub.empty() ? name_ : name_ + L"\\" + sub;
        if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &k, nullptr)) return false;
        const LONG r = RegSetValueExW(k, value, 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()),
                                      static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(k);
        return r == ERROR_SUCCESS;
    }

private:
    std::wstring name_;
};

TEST(ApiShell, DocumentsAndUrlsOpenWithTheirProgramOnly) {
    auto a = api();
    ClassKey extension(L".tovatest"), type(L"TovaTest.Document"), scheme(L"tovatest");
    ASSERT_TRUE(extension.set(L"", nullptr, L"TovaTest.Document"));
    ASSERT_TRUE(type.set(L"shell\\open\\command", nullptr, L"cmd.exe /c copy \"%1\" \"%1.opened\""));
    Scratch dir;
    ASSERT_TRUE(scheme.set(L"", L"URL Protocol", L""));
    ASSERT_TRUE(scheme.set(L"shell\\open\\command", nullptr, L"cmd.exe /c echo %1> \"" + dir(L"url.txt") + L"\""));

    const std::wstring document = dir(L"Grüße Ω.tovatest");
    std::ofstream(document.c_str()) << "x";
    Bstr program;
    ASSERT_EQ(S_OK, a->FindExecutable(Bstr(document).get(), program.put()));
    EXPECT_TRUE(lower(program.str()).size() > 8 && lower(program.str()).substr(program.length() - 8) == L"\\cmd.exe")
        << program.str();
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, a->OpenDocument(Bstr(document).get(), nullptr, 0, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(0, lastDllError(a.get()));
    EXPECT_TRUE(within5s([&] { return exists(document + L".opened"); }));

    const std::wstring plain = dir(L"plain.tovanone");
    std::ofstream(plain.c_str()) << "x";
    a->OpenDocument(Bstr(plain).get(), nullptr, 0, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(1155, lastDllError(a.get())) << "no association";
    a->FindExecutable(Bstr(plain).get(), program.put());
    EXPECT_EQ(L"", program.str());
    EXPECT_EQ(1155, lastDllError(a.get()));
    a->OpenDocument(Bstr(dir(L"missing.tovatest")).get(), nullptr, 0, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(2, lastDllError(a.get()));

    ASSERT_EQ(S_OK, a->OpenURL(Bstr(L"tovatest:hello").get(), 0, &ok));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(within5s([&] { return exists(dir(L"url.txt")); }));
    wchar_t cmd[MAX_PATH];
    GetSystemDirectoryW(cmd, MAX_PATH);
    for (const std::wstring& text : {std::wstring(L"not a url"), std::wstring(cmd) + L"\\cmd.exe"}) {
        a->OpenURL(Bstr(text).get(), 0, &ok);
        EXPECT_FALSE(ok) << text;
        EXPECT_EQ(87, lastDllError(a.get()));
    }

    ASSERT_EQ(S_OK, a->ShellExecute(Bstr(L"cmd.exe").get(), Bstr(L"/c echo x> shell.txt").get(), nullptr,
                                    Bstr(dir.root()).get(), SW_HIDE, 0, &ok));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(within5s([&] { return exists(dir(L"shell.txt")); }));
    a->ShellExecute(Bstr(L"no_such_program_tova.exe").get(), nullptr, nullptr, nullptr, SW_HIDE, 0, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(2, lastDllError(a.get()));
}

// ------------------------------------------------------------ registration

const wchar_t kRectangle[] = L"{6DC90197-D0A5-40D0-902B-93CCC0174361}";

bool keyExists(HKEY root, const std::wstring& path) {
    HKEY k = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &k) != ERROR_SUCCESS) return false;
    RegCloseKey(k);
    return true;
}

const std::wstring kMachineServer = std::wstring(L"Software\\Classes\\CLSID\\") + kRectangle + L"\\InprocServer32";
const std::wstring kUserClass = std::wstring(L"Software\\Classes\\CLSID\\") + kRectangle;

// Puts the library's registrations back as they were, per machine and per user.
class RegistrationState {
public:
    explicit RegistrationState(std::wstring dll)
        : dll_(std::move(dll)), machine_(keyExists(HKEY_LOCAL_MACHINE, kMachineServer)),
          user_(keyExists(HKEY_CURRENT_USER, kUserClass)) {}
    ~RegistrationState() {
        auto a = api();
        VARIANT_BOOL ok;
        for (VARIANT_BOOL perUser : {VARIANT_FALSE, VARIANT_TRUE}) {
            if (perUser ? user_ : machine_)
                a->RegisterServer(Bstr(dll_).get(), perUser, &ok);
            else
                a->UnregisterServer(Bstr(dll_).get(), perUser, &ok);
        }
    }
    RegistrationState(const RegistrationState&) = delete;
    RegistrationState& operator=(const RegistrationState&) = delete;

private:
    std::wstring dll_;
    bool machine_, user_;
};

TEST(ApiRegistration, RegistersPerMachineAndPerUserAndReadsClasses) {
    auto a = api();
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(library(), path, MAX_PATH);
    const Bstr dll(path);
    RegistrationState restore(path);
    VARIANT_BOOL ok = VARIANT_FALSE;
    a->UnregisterServer(dll.get(), VARIANT_TRUE, &ok);

    ASSERT_EQ(S_OK, a->RegisterServer(dll.get(), VARIANT_FALSE, &ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(0, lastDllError(a.get()));
    Bstr s;
    a->ProgIDToCLSID(Bstr(L"TOVA32.Rectangle").get(), s.put());
    EXPECT_EQ(kRectangle, s.str());
    a->CLSIDToProgID(Bstr(lower(kRectangle)).get(), s.put());
    EXPECT_EQ(L"TOVA32.Rectangle", s.str());
    a->GetServerPath(Bstr(L"TOVA32.Rectangle").get(), s.put());
    EXPECT_EQ(lower(path), lower(s.str()));
    for (const wchar_t* name : {L"TOVA32.Rectangle", kRectangle}) {
        a->IsClassRegistered(Bstr(name).get(), &ok);
        EXPECT_TRUE(ok) << name;
    }

    ASSERT_EQ(S_OK, a->UnregisterServer(dll.get(), VARIANT_FALSE, &ok));
    EXPECT_TRUE(ok);
    a->GetServerPath(Bstr(kRectangle).get(), s.put());
    EXPECT_EQ(L"", s.str());
    a->IsClassRegistered(Bstr(kRectangle).get(), &ok);
    EXPECT_FALSE(ok);
    a->ProgIDToCLSID(Bstr(L"TOVA32.NoSuchClass").get(), s.put());
    EXPECT_EQ(L"", s.str());
    EXPECT_NE(0, lastDllError(a.get()));

    // Per user: under HKCU\Software\Classes only, and found there.
    ASSERT_EQ(S_OK, a->RegisterServer(dll.get(), VARIANT_TRUE, &ok));
    EXPECT_TRUE(ok);
    EXPECT_TRUE(keyExists(HKEY_CURRENT_USER, kUserClass));
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, kMachineServer));
    a->IsClassRegistered(Bstr(L"TOVA32.Rectangle").get(), &ok);
    EXPECT_TRUE(ok);
    a->GetServerPath(Bstr(kRectangle).get(), s.put());
    EXPECT_EQ(lower(path), lower(s.str()));
    ASSERT_EQ(S_OK, a->UnregisterServer(dll.get(), VARIANT_TRUE, &ok));
    EXPECT_TRUE(ok);
    EXPECT_FALSE(keyExists(HKEY_CURRENT_USER, kUserClass));
}

TEST(ApiRegistration, LoadAndEntryPointFailuresKeepTheirCodes) {
    auto a = api();
    VARIANT_BOOL ok = VARIANT_TRUE;
    wchar_t system[MAX_PATH];
    GetSystemDirectoryW(system, MAX_PATH);
    for (VARIANT_BOOL perUser : {VARIANT_FALSE, VARIANT_TRUE}) {
        a->RegisterServer(Bstr(L"C:\\no\\such\\server.dll").get(), perUser, &ok);
        EXPECT_FALSE(ok);
        EXPECT_EQ(126, lastDllError(a.get()));
        a->UnregisterServer(Bstr(std::wstring(system) + L"\\kernel32.dll").get(), perUser, &ok);
        EXPECT_FALSE(ok);
        EXPECT_EQ(127, lastDllError(a.get())) << "no entry point";
    }
    // A DLL of the other bitness (the 32-bit system folder seen from 64 bits,
    // the 64-bit one through sysnative from 32 bits).
    BOOL wow64 = FALSE;
    IsWow64Process(GetCurrentProcess(), &wow64);
    std::wstring other;
    if (sizeof(void*) == 8) {
        GetSystemWow64DirectoryW(system, MAX_PATH);
        other = std::wstring(system) + L"\\ole32.dll";
    } else if (wow64) {
        GetWindowsDirectoryW(system, MAX_PATH);
        other = std::wstring(system) + L"\\sysnative\\ole32.dll";
    }
    if (other.empty()) GTEST_SKIP() << "a 32-bit system has no other bitness";
    a->RegisterServer(Bstr(other).get(), VARIANT_FALSE, &ok);
    EXPECT_FALSE(ok);
    EXPECT_EQ(193, lastDllError(a.get())) << lower(other);
}

}  // namespace
