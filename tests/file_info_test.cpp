// FileMethods' existence, size, date, attribute, temporary-name, path-form,
// drive and program members through the DLL, against fixtures made with raw
// Win32 in a scratch folder per test and, where it answers correctly, the
// live scripting file-system object. Runs with TZ=Europe/Berlin (see
// CMakeLists.txt) so that dates cross a daylight-saving change.
#include "support.h"

#include "files/long_paths.h"

#include <winioctl.h>

#include <algorithm>
#include <tuple>
#include <type_traits>
#include <cstdio>

using namespace test;

namespace {

const HRESULT kError5 = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, 5);

// A String argument passed by reference, alive for the call's full expression.
struct In {
    explicit In(const std::wstring& s) : b(s), p(b.get()) {}
    operator BSTR*() { return &p; }
    operator BSTR() { return p; }
    Bstr b;
    BSTR p;
};

template <class R>
struct Out {
    R v{};
    R* put() { return &v; }
    R get() const { return v; }
};
template <>
struct Out<VARIANT_BOOL> {
    VARIANT_BOOL v = 1;  // neither True nor False, so an unset result shows
    VARIANT_BOOL* put() { return &v; }
    bool get() const { EXPECT_TRUE(v == VARIANT_TRUE || v == VARIANT_FALSE); return v != 0; }
};
template <>
struct Out<BSTR> {
    Bstr v;
    BSTR* put() { return v.put(); }
    std::wstring get() const { return v.str(); }
};

template <class R>
using Member2 = HRESULT (STDMETHODCALLTYPE _FileMethods::*)(BSTR*, BSTR*, R*);

std::string narrow(const std::wstring& w) {
    std::string s;
    for (wchar_t c : w) s += c < 128 ? static_cast<char>(c) : '?';
    return s;
}

// The live scripting file-system object, late-bound; null when it cannot be made.
ComPtr<IDispatch> fileSystemObject() {
    CLSID clsid;
    ComPtr<IDispatch> fso;
    if (SUCCEEDED(CLSIDFromProgID(L"Scripting.FileSystemObject", &clsid)))
        CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, fso.putVoid());
    return fso;
}

// A late-bound call or property get (args in declaration order) and its value.
Variant lb(IDispatch* d, const wchar_t* name, std::vector<VARIANT> args = {}) {
    CallResult r;
    call(r, d, name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, std::move(args));
    EXPECT_EQ(S_OK, r.hr) << narrow(name) << ": " << narrow(r.description());
    return r.value;
}
VARIANT vText(const Bstr& b) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = b.get();
    return v;
}
ComPtr<IDispatch> object(const Variant& v) {
    return ComPtr<IDispatch>(V_VT(&v) == VT_DISPATCH ? V_DISPATCH(&v) : nullptr);
}
std::wstring text(const Variant& v) {
    Variant t;
    if (FAILED(VariantChangeType(&t, const_cast<Variant*>(&v), 0, VT_BSTR))) return L"<not text>";
    return V_BSTR(&t) ? V_BSTR(&t) : L"";
}
bool truth(const Variant& v) { return V_VT(&v) == VT_BOOL && V_BOOL(&v) != 0; }
double number(const Variant& v) {
    Variant t;
    return SUCCEEDED(VariantChangeType(&t, const_cast<Variant*>(&v), 0, VT_R8)) ? V_R8(&t) : -12345;
}

HANDLE open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition = OPEN_EXISTING) {
    return CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

void makeFile(const std::wstring& path, const std::string& bytes = "abc", DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, h) << narrow(path);
    DWORD n = 0;
    WriteFile(h, bytes.data(), static_cast<DWORD>(bytes.size()), &n, nullptr);
    CloseHandle(h);
}

void makeFolder(const std::wstring& path) { ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr)) << narrow(path); }

// A Date from its parts, milliseconds included (SystemTimeToVariantTime drops them).
DATE date(int y, int mo, int d, int h, int mi, int s, int ms) {
    SYSTEMTIME st{static_cast<WORD>(y), static_cast<WORD>(mo), 0, static_cast<WORD>(d), static_cast<WORD>(h),
                  static_cast<WORD>(mi), static_cast<WORD>(s), 0};
    DATE v = 0;
    SystemTimeToVariantTime(&st, &v);
    return v + ms / 86400000.0;
}

SYSTEMTIME utcWriteTime(const std::wstring& path) {
    SYSTEMTIME st{};
    FILETIME c, a, w;
    HANDLE h = open(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    if (h != INVALID_HANDLE_VALUE && GetFileTime(h, &c, &a, &w)) FileTimeToSystemTime(&w, &st);
    if (h != INVALID_HANDLE_VALUE) CloseHandle(h);
    return st;
}

// A letter no drive uses.
std::wstring freeLetter() {
    const DWORD used = GetLogicalDrives();
    for (int i = 25; i >= 3; --i)
        if (!(used >> i & 1)) return std::wstring(1, static_cast<wchar_t>(L'A' + i));
    return L"";
}

class FileInfoTest : public ::testing::Test {
protected:
    void SetUp() override {
        fm = create<_FileMethods>(CLSID_FileMethods, IID__FileMethods);
        ASSERT_TRUE(fm);
    }

    // A member by its vtable entry: std::wstring arguments pass as Strings, the rest as they are.
    template <class... P, class... A>
    auto ask(HRESULT (STDMETHODCALLTYPE _FileMethods::*m)(P...), const A&... a) {
        Out<std::remove_pointer_t<std::tuple_element_t<sizeof...(P) - 1, std::tuple<P...>>>> out;
        EXPECT_EQ(S_OK, (fm.get()->*m)(pass(a)..., out.put()));
        return out.get();
    }
    static In pass(const std::wstring& s) { return In(s); }
    static In pass(const wchar_t* s) { return In(s); }
    template <class T>
    static T pass(T v) { return v; }

    DATE getDate(const std::wstring& p, FileDateConstants w = tovaFileDateModified) {
        return ask(&_FileMethods::GetFileDate, p, w);
    }
    bool setDate(const std::wstring& p, DATE d, long w = tovaFileDateModified) {
        return ask(&_FileMethods::SetFileDate, p, d, static_cast<FileDateConstants>(w));
    }
    long attributes(const std::wstring& p) { return ask(&_FileMethods::GetAttributes, p); }
    bool setAttributes(const std::wstring& p, long a) {
        return ask(&_FileMethods::SetAttributes, p, static_cast<FileAttributeConstants>(a));
    }
    double folderSize(const std::wstring& p, bool sub) { return ask(&_FileMethods::GetFolderSize, p, tova::toVB(sub)); }
    std::wstring canonical(const std::wstring& p, bool resolve) {
        return ask(&_FileMethods::GetCanonicalPath, p, tova::toVB(resolve));
    }

    ComPtr<_FileMethods> fm;
    Scratch dir;
};

// ------------------------------------------------------------ 1. creation

TEST_F(FileInfoTest, CreatedByProgIdAndCalledLateBound) {
    using Register = HRESULT(STDAPICALLTYPE*)();
    auto reg = reinterpret_cast<Register>(GetProcAddress(library(), "DllRegisterServer"));
    auto unreg = reinterpret_cast<Register>(GetProcAddress(library(), "DllUnregisterServer"));
    ASSERT_TRUE(reg && unreg);
    ASSERT_EQ(S_OK, reg());
    CLSID clsid{};
    ComPtr<IDispatch> d;
    EXPECT_EQ(S_OK, CLSIDFromProgID(L"TOVA32.FileMethods", &clsid));
    EXPECT_TRUE(IsEqualCLSID(clsid, CLSID_FileMethods));
    EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, d.putVoid()));
    if (d) {
        makeFile(dir(L"a.txt"));
        Bstr path(dir(L"a.txt")), a(L"C:\\a"), b(L"b");
        Variant p = lb(d.get(), L"FileExists", {vText(path)});
        EXPECT_EQ(VT_BOOL, V_VT(&p));
        EXPECT_EQ(VARIANT_TRUE, V_BOOL(&p));
        EXPECT_EQ(L"C:\\a\\b", text(lb(d.get(), L"CombinePath", {vText(a), vText(b)})));
        EXPECT_EQ(3.0, number(lb(d.get(), L"GetFileSize", {vText(path)})));
    }
    d.reset();
    EXPECT_EQ(S_OK, unreg());
}

// ------------------------------------------------------- 3. soft failures

TEST_F(FileInfoTest, EmptyAndWildcardPathsGiveTheSoftFailure) {
    makeFile(dir(L"a.txt"));
    for (const std::wstring& p : {std::wstring(), dir(L"*.txt"), dir(L"a.tx?")}) {
        for (auto m : {&_FileMethods::FileExists, &_FileMethods::FolderExists, &_FileMethods::DriveExists,
                       &_FileMethods::IsDriveReady, &_FileMethods::IsFolderEmpty, &_FileMethods::IsFileInUse})
            EXPECT_FALSE(ask(m, p)) << narrow(p);
        for (auto m : {&_FileMethods::GetFileSize, &_FileMethods::GetDriveFreeSpace, &_FileMethods::GetDriveTotalSpace})
            EXPECT_EQ(-1, ask(m, p)) << narrow(p);
        EXPECT_EQ(-1, folderSize(p, true));
        for (auto m : {&_FileMethods::GetUniqueFileName, &_FileMethods::GetShortPath, &_FileMethods::GetLongPath,
                       &_FileMethods::GetVolumeLabel, &_FileMethods::GetFileVersion})
            EXPECT_EQ(L"", ask(m, p)) << narrow(p);
        EXPECT_EQ(L"", canonical(p, false));
        EXPECT_EQ(L"", canonical(p, true));
        EXPECT_EQ(0, getDate(p));
        EXPECT_FALSE(setDate(p, date(2020, 1, 1, 0, 0, 0, 0)));
        EXPECT_EQ(-1, attributes(p));
        EXPECT_FALSE(setAttributes(p, 0));
        LONG serial = 1;
        EXPECT_EQ(S_OK, fm->GetVolumeSerialNumber(In(p), &serial));
        EXPECT_EQ(0, serial);
    }
    // Text-only members: "" in, "" out.
    for (auto m : {&_FileMethods::GetFullPath, &_FileMethods::GetAssociatedProgram})
        EXPECT_EQ(L"", ask(m, L""));
    for (auto m : {&_FileMethods::CombinePath, &_FileMethods::GetRelativePath, &_FileMethods::ChangeFileExtension})
        EXPECT_EQ(L"", ask(m, L"", L""));
    Out<BSTR> valid;
    EXPECT_EQ(S_OK, fm->MakeValidFileName(In(L""), In(L"_"), valid.put()));
    EXPECT_EQ(L"", valid.get());
    DriveTypeConstants type{};
    EXPECT_EQ(S_OK, fm->GetDriveType(In(L""), &type));
    EXPECT_EQ(DRIVE_NO_ROOT_DIR, type);
    EXPECT_EQ(L"", ask(&_FileMethods::CreateTempFile, L"t", L"tmp", dir(L"missing")));
    EXPECT_EQ(L"", ask(&_FileMethods::CreateTempFolder, L"t", dir(L"missing")));
}

TEST_F(FileInfoTest, ExistenceAgreesWithTheScriptingObject) {
    makeFile(dir(L"a.txt"));
    makeFile(dir(L"\u00C6r\u00F8\u2013\u65E5\u672C.txt"));
    makeFile(dir(L"hidden.txt"), "x", FILE_ATTRIBUTE_HIDDEN);
    makeFolder(dir(L"empty"));
    const std::wstring missing = freeLetter();
    struct Case {
        std::wstring path;
        bool file, folder;
    } cases[] = {
        {dir(L"a.txt"), true, false},
        {dir(L"\u00C6r\u00F8\u2013\u65E5\u672C.txt"), true, false},
        {dir(L"hidden.txt"), true, false},
        {dir(L"A.TXT"), true, false},
        {dir(L"empty"), false, true},
        {dir(L"empty\\"), false, true},
        {dir(L"none.txt"), false, false},
        {L"NUL", false, false},
        {dir(L"nul"), false, false},
        {L"C:\\", false, true},
        {missing + L":\\", false, false},
    };
    ComPtr<IDispatch> fso = fileSystemObject();
    for (const Case& c : cases) {
        EXPECT_EQ(c.file, ask(&_FileMethods::FileExists, c.path)) << narrow(c.path);
        EXPECT_EQ(c.folder, ask(&_FileMethods::FolderExists, c.path)) << narrow(c.path);
        if (!fso || c.path == L"NUL" || c.path == dir(L"nul")) continue;  // devices: our departure
        Bstr p(c.path);
        EXPECT_EQ(c.file, truth(lb(fso.get(), L"FileExists", {vText(p)}))) << narrow(c.path);
        EXPECT_EQ(c.folder, truth(lb(fso.get(), L"FolderExists", {vText(p)}))) << narrow(c.path);
    }
    EXPECT_TRUE(ask(&_FileMethods::IsFolderEmpty, dir(L"empty")));
    EXPECT_FALSE(ask(&_FileMethods::IsFolderEmpty, dir(L"")));
    EXPECT_FALSE(ask(&_FileMethods::IsFolderEmpty, dir(L"a.txt")));
    makeFile(dir(L"empty\\.hidden"), "", FILE_ATTRIBUTE_HIDDEN);
    EXPECT_FALSE(ask(&_FileMethods::IsFolderEmpty, dir(L"empty")));
}

TEST_F(FileInfoTest, FileInUseWhileHeld) {
    makeFile(dir(L"a.txt"));
    makeFile(dir(L"ro.txt"), "x", FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(ask(&_FileMethods::IsFileInUse, dir(L"a.txt")));
    EXPECT_FALSE(ask(&_FileMethods::IsFileInUse, dir(L"ro.txt")));
    EXPECT_FALSE(ask(&_FileMethods::IsFileInUse, dir(L"")));
    for (DWORD share : {0ul, static_cast<unsigned long>(FILE_SHARE_READ | FILE_SHARE_WRITE)}) {
        HANDLE h = open(dir(L"a.txt"), GENERIC_READ, share);
        ASSERT_NE(INVALID_HANDLE_VALUE, h);
        EXPECT_TRUE(ask(&_FileMethods::IsFileInUse, dir(L"a.txt"))) << share;
        CloseHandle(h);
        EXPECT_FALSE(ask(&_FileMethods::IsFileInUse, dir(L"a.txt")));
    }
}

// --------------------------------------------- 4. sizes, dates, attributes

TEST_F(FileInfoTest, SizesAreExactBeyondFourGigabytes) {
    const double big = 5000000000.0;
    makeFolder(dir(L"sub"));
    makeFile(dir(L"sub\\three.bin"), "abc");
    {
        HANDLE h = CreateFileW(dir(L"big.bin").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        ASSERT_NE(INVALID_HANDLE_VALUE, h);
        DWORD ignored;
        DeviceIoControl(h, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &ignored, nullptr);
        LARGE_INTEGER end;
        end.QuadPart = 5000000000LL;
        EXPECT_TRUE(SetFilePointerEx(h, end, nullptr, FILE_BEGIN) && SetEndOfFile(h));
        CloseHandle(h);
    }
    EXPECT_EQ(big, ask(&_FileMethods::GetFileSize, dir(L"big.bin")));
    EXPECT_EQ(3.0, ask(&_FileMethods::GetFileSize, dir(L"sub\\three.bin")));
    EXPECT_EQ(-1.0, ask(&_FileMethods::GetFileSize, dir(L"sub")));
    EXPECT_EQ(-1.0, ask(&_FileMethods::GetFileSize, dir(L"none")));
    EXPECT_EQ(big + 3, folderSize(dir(L""), true));
    EXPECT_EQ(big, folderSize(dir(L""), false));
    EXPECT_EQ(3.0, folderSize(dir(L"sub"), true));
    EXPECT_EQ(-1.0, folderSize(dir(L"sub\\three.bin"), true));
    EXPECT_EQ(-1.0, folderSize(dir(L"none"), true));
    if (ComPtr<IDispatch> fso = fileSystemObject()) {
        Bstr p(dir(L"sub\\three.bin"));
        EXPECT_EQ(3.0, number(lb(object(lb(fso.get(), L"GetFile", {vText(p)})).get(), L"Size")));
    }
}

TEST_F(FileInfoTest, DatesByTheDaylightRuleOfTheirOwnDay) {
    makeFile(dir(L"a.txt"));
    makeFile(dir(L"ro.txt"), "x", FILE_ATTRIBUTE_READONLY);
    makeFolder(dir(L"sub"));
    struct Case {
        DATE local;
        WORD utcHour, utcMs;
    } cases[] = {
        {date(2023, 7, 1, 12, 34, 56, 789), 10, 789},  // summer time, UTC+2
        {date(2023, 1, 15, 12, 0, 0, 0), 11, 0},       // winter time, UTC+1
    };
    for (const std::wstring& path : {dir(L"a.txt"), dir(L"ro.txt"), dir(L"sub")}) {
        for (const Case& c : cases) {
            ASSERT_TRUE(setDate(path, c.local)) << narrow(path);
            EXPECT_NEAR(c.local, getDate(path), 0.4 / 86400000) << narrow(path);
            const SYSTEMTIME utc = utcWriteTime(path);
            EXPECT_EQ(c.utcHour, utc.wHour) << narrow(path);
            EXPECT_EQ(c.utcMs, utc.wMilliseconds) << narrow(path);
        }
        // Accessed alone, then all three: each reads back as set.
        const DATE accessed = date(2021, 3, 4, 5, 6, 7, 8), all = date(1999, 12, 31, 23, 59, 59, 999);
        EXPECT_TRUE(setDate(path, accessed, tovaFileDateAccessed));
        EXPECT_NEAR(accessed, getDate(path, tovaFileDateAccessed), 0.4 / 86400000);
        EXPECT_NEAR(cases[1].local, getDate(path), 0.4 / 86400000);
        EXPECT_TRUE(setDate(path, all, tovaFileDateAll));
        EXPECT_NEAR(all, getDate(path, tovaFileDateAccessed), 0.4 / 86400000);
        EXPECT_NEAR(all, getDate(path), 0.4 / 86400000);
    }
    EXPECT_FALSE(setDate(dir(L"none"), cases[0].local));
    // Wine keeps file times as a 32-bit Unix time (1901-12-13 to 2038-01-19),
    // so Dates before 1899-12-30 (negative) cannot be shown here.
    const DATE early = date(1902, 3, 4, 5, 6, 7, 890);
    EXPECT_TRUE(setDate(dir(L"a.txt"), early));
    EXPECT_NEAR(early, getDate(dir(L"a.txt")), 0.4 / 86400000);
    // What the disk cannot decide: error 5.
    DATE d = 0;
    VARIANT_BOOL ok = 0;
    for (long which : {0, 3, 5, 6, 7, 8, -1})
        EXPECT_EQ(kError5, fm->GetFileDate(In(dir(L"a.txt")), static_cast<FileDateConstants>(which), &d)) << which;
    for (long which : {0, 8, -1})
        EXPECT_EQ(kError5, fm->SetFileDate(In(dir(L"a.txt")), cases[0].local, FileDateConstants(which), &ok)) << which;
    EXPECT_EQ(kError5, fm->SetFileDate(In(dir(L"a.txt")), date(1600, 12, 31, 0, 0, 0, 0), tovaFileDateModified, &ok));
    // The scripting object converts with today's bias: compare a date of today.
    if (ComPtr<IDispatch> fso = fileSystemObject()) {
        SYSTEMTIME now;
        GetLocalTime(&now);
        const DATE today = date(now.wYear, now.wMonth, now.wDay, 9, 30, 15, 0);
        EXPECT_TRUE(setDate(dir(L"a.txt"), today));
        Bstr p(dir(L"a.txt"));
        Variant modified = lb(object(lb(fso.get(), L"GetFile", {vText(p)})).get(), L"DateLastModified");
        EXPECT_EQ(VT_DATE, V_VT(&modified));
        EXPECT_NEAR(today, V_DATE(&modified), 0.5 / 86400);
    }
}

TEST_F(FileInfoTest, AttributesSetOnlyTheSettableBits) {
    makeFile(dir(L"a.txt"));
    makeFolder(dir(L"sub"));
    const long hidden = FILE_ATTRIBUTE_HIDDEN, readOnly = FILE_ATTRIBUTE_READONLY, folder = FILE_ATTRIBUTE_DIRECTORY;
    EXPECT_EQ(static_cast<long>(GetFileAttributesW(dir(L"a.txt").c_str())), attributes(dir(L"a.txt")));
    EXPECT_EQ(-1, attributes(dir(L"none")));
    EXPECT_EQ(-1, attributes(L"NUL"));
    // Read-modify-write on a folder: the directory bit is ignored.
    EXPECT_TRUE(setAttributes(dir(L"sub"), attributes(dir(L"sub")) | hidden));
    EXPECT_EQ(folder | hidden, attributes(dir(L"sub")) & (folder | hidden));
    EXPECT_TRUE(setAttributes(dir(L"sub"), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(folder, attributes(dir(L"sub")) & (folder | hidden));
    struct Case {
        const wchar_t* member;
        long set, expected;  // expected & (readOnly | hidden)
    } cases[] = {
        {L"SetAttributes", readOnly | hidden | FILE_ATTRIBUTE_COMPRESSED, readOnly | hidden},
        {L"SetReadOnly", 0, hidden},
        {L"SetHidden", 0, 0},
        {L"SetReadOnly", 1, readOnly},
        {L"SetHidden", 1, readOnly | hidden},
        {L"SetAttributes", FILE_ATTRIBUTE_NORMAL, 0},
    };
    ComPtr<IDispatch> d = fm.as<IDispatch>(IID_IDispatch);
    Bstr p(dir(L"a.txt"));
    for (const Case& c : cases) {
        VARIANT arg = std::wstring(c.member) == L"SetAttributes" ? vLong(c.set) : VARIANT{};
        if (std::wstring(c.member) != L"SetAttributes") {
            V_VT(&arg) = VT_BOOL;
            V_BOOL(&arg) = c.set ? VARIANT_TRUE : VARIANT_FALSE;
        }
        Variant r = lb(d.get(), c.member, {vText(p), arg});
        EXPECT_EQ(VARIANT_TRUE, V_BOOL(&r)) << narrow(c.member);
        EXPECT_EQ(c.expected, attributes(dir(L"a.txt")) & (readOnly | hidden)) << narrow(c.member) << " " << c.set;
    }
    if (ComPtr<IDispatch> fso = fileSystemObject()) {
        SetFileAttributesW(dir(L"a.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
        ComPtr<IDispatch> f = object(lb(fso.get(), L"GetFile", {vText(p)}));
        EXPECT_EQ(attributes(dir(L"a.txt")), number(lb(f.get(), L"Attributes")));
    }
    VARIANT_BOOL ok = 0;
    EXPECT_EQ(kError5, fm->SetAttributes(In(dir(L"a.txt")), static_cast<FileAttributeConstants>(-1), &ok));
    EXPECT_FALSE(setAttributes(dir(L"none"), hidden));
}

// ------------------------------------------------ temporary and unique names

TEST_F(FileInfoTest, TemporaryAndUniqueNames) {
    const std::wstring temp = test::tempFolder();
    Out<BSTR> folder;
    EXPECT_EQ(S_OK, fm->GetTempFolder(folder.put()));
    EXPECT_EQ(temp.substr(0, temp.size() - 1), folder.get());
    if (ComPtr<IDispatch> fso = fileSystemObject())
        EXPECT_EQ(0, _wcsicmp(folder.get().c_str(), text(lb(fso.get(), L"GetSpecialFolder", {vLong(2)})).c_str()));

    struct Case {
        std::wstring prefix, extension, expectedEnd;
    } cases[] = {{L"tova", L"tmp", L".tmp"}, {L"ab", L".log", L".log"}, {L"", L"", L""}, {L"\u65E5", L"txt", L".txt"}};
    for (const Case& c : cases) {
        const std::wstring a = ask(&_FileMethods::CreateTempFile, c.prefix, c.extension, dir(L""));
        const std::wstring b = ask(&_FileMethods::CreateTempFile, c.prefix, c.extension, dir(L""));
        ASSERT_EQ(dir(L"").size() + 1 + c.prefix.size() + 8 + c.expectedEnd.size(), a.size()) << narrow(a);
        EXPECT_NE(a, b);
        const std::wstring start = dir(L"") + L"\\" + c.prefix;
        EXPECT_EQ(start, a.substr(0, start.size()));
        EXPECT_EQ(c.expectedEnd, a.substr(a.size() - c.expectedEnd.size()));
        EXPECT_EQ(std::wstring::npos, a.substr(start.size(), 8).find_first_not_of(L"0123456789ABCDEF")) << narrow(a);
        EXPECT_EQ(0.0, ask(&_FileMethods::GetFileSize, a));
        const std::wstring f = ask(&_FileMethods::CreateTempFolder, c.prefix, dir(L""));
        EXPECT_EQ(dir(L"").size() + 1 + c.prefix.size() + 8, f.size());
        EXPECT_TRUE(ask(&_FileMethods::IsFolderEmpty, f));
    }
    const std::wstring inTemp = ask(&_FileMethods::CreateTempFile, L"tova", L"tmp", L"");
    EXPECT_EQ(folder.get() + L"\\", inTemp.substr(0, folder.get().size() + 1));
    DeleteFileW(inTemp.c_str());
    Out<BSTR> r;
    EXPECT_EQ(kError5, fm->CreateTempFile(In(L"a\\b"), In(L"tmp"), In(L""), r.put()));
    EXPECT_EQ(kError5, fm->CreateTempFile(In(L"a"), In(L"t*"), In(L""), r.put()));
    EXPECT_EQ(kError5, fm->CreateTempFolder(In(L"a:"), In(L""), r.put()));

    makeFile(dir(L"a.txt"));
    makeFile(dir(L"a (2).txt"));
    makeFolder(dir(L".profile"));
    struct Unique {
        std::wstring in, out;
    } unique[] = {
        {dir(L"b.txt"), dir(L"b.txt")},
        {dir(L"a.txt"), dir(L"a (3).txt")},
        {dir(L".profile"), dir(L".profile (2)")},
        {dir(L"none\\a.txt"), L""},
        {dir(L""), dir(L"") + L" (2)"},
    };
    for (const Unique& u : unique) EXPECT_EQ(u.out, ask(&_FileMethods::GetUniqueFileName, u.in)) << narrow(u.in);
}

// ------------------------------------------------------------------ 9. paths

TEST_F(FileInfoTest, PathTextTables) {
    struct Case {
        Member2<BSTR> member;
        std::wstring a, b, expected;
    } cases[] = {
        {&_FileMethods::CombinePath, L"C:\\a", L"b", L"C:\\a\\b"},
        {&_FileMethods::CombinePath, L"C:\\a\\", L"\\b", L"C:\\a\\b"},
        {&_FileMethods::CombinePath, L"C:\\a", L"D:\\x", L"D:\\x"},
        {&_FileMethods::CombinePath, L"C:\\a", L"\\\\srv\\s", L"\\\\srv\\s"},
        {&_FileMethods::CombinePath, L"C:\\a", L"", L"C:\\a\\"},
        {&_FileMethods::CombinePath, L"C:\\", L"b", L"C:\\b"},
        {&_FileMethods::CombinePath, L"C:", L"b", L"C:b"},
        {&_FileMethods::CombinePath, L"a/", L"/b", L"a\\b"},
        {&_FileMethods::CombinePath, L"", L"b", L"b"},
        {&_FileMethods::CombinePath, L"\\", L"b", L"\\b"},
        {&_FileMethods::GetRelativePath, L"C:\\a\\b", L"C:\\a\\c\\d.txt", L"..\\c\\d.txt"},
        {&_FileMethods::GetRelativePath, L"C:\\A", L"c:\\a", L"."},
        {&_FileMethods::GetRelativePath, L"C:\\a\\", L"C:\\a\\b\\c", L"b\\c"},
        {&_FileMethods::GetRelativePath, L"C:\\a\\b\\c", L"C:\\", L"..\\..\\.."},
        {&_FileMethods::GetRelativePath, L"C:\\ab", L"C:\\a\\b", L"..\\a\\b"},
        {&_FileMethods::GetRelativePath, L"C:\\a", L"D:\\a", L""},
        {&_FileMethods::GetRelativePath, L"\\\\srv\\s\\a", L"\\\\SRV\\S\\b", L"..\\b"},
        {&_FileMethods::GetRelativePath, L"\\\\srv\\s\\a", L"\\\\srv\\t\\a", L""},
        {&_FileMethods::ChangeFileExtension, L"C:\\x.d\\file", L"txt", L"C:\\x.d\\file.txt"},
        {&_FileMethods::ChangeFileExtension, L"C:\\x\\.profile", L".txt", L"C:\\x\\.profile.txt"},
        {&_FileMethods::ChangeFileExtension, L"a.tar.gz", L"zip", L"a.tar.zip"},
        {&_FileMethods::ChangeFileExtension, L"a.tar.gz", L"", L"a.tar"},
        {&_FileMethods::ChangeFileExtension, L"a.", L"txt", L"a.txt"},
        {&_FileMethods::ChangeFileExtension, L"C:file.c", L"h", L"C:file.h"},
        {&_FileMethods::ChangeFileExtension, L"C:\\x\\", L"txt", L""},
    };
    for (const Case& c : cases) EXPECT_EQ(c.expected, ask(c.member, c.a, c.b)) << narrow(c.a) << " | " << narrow(c.b);

    struct Valid {
        std::wstring name, replacement, expected;
    } valid[] = {
        {L"a:b*c?.txt ", L"_", L"a_b_c_.txt"},
        {L"CON", L"_", L"_CON"},
        {L"con.txt", L"_", L"_con.txt"},
        {L"con .txt", L"_", L"_con .txt"},
        {L"CONOUT$", L"_", L"_CONOUT$"},
        {L"Com1.tar.gz", L"-", L"-Com1.tar.gz"},
        {L"COM10", L"_", L"COM10"},
        {L"...", L"_", L"_"},
        {L"a<b>|\"c\"\t", L"", L"abc"},
        {L"\u65E5/\u672C", L"\u2013", L"\u65E5\u2013\u672C"},
        {L"nul", L"", L"_nul"},
    };
    for (const Valid& v : valid) {
        Out<BSTR> r;
        EXPECT_EQ(S_OK, fm->MakeValidFileName(In(v.name), In(v.replacement), r.put()));
        EXPECT_EQ(v.expected, r.get()) << narrow(v.name);
    }
    Out<BSTR> r;
    EXPECT_EQ(kError5, fm->MakeValidFileName(In(L"a"), In(L"/"), r.put()));
    EXPECT_EQ(kError5, fm->ChangeFileExtension(In(L"a"), In(L"t?t"), r.put()));
}

TEST_F(FileInfoTest, PathFormsOnDisk) {
    makeFolder(dir(L"Long Folder Name"));
    makeFile(dir(L"Long Folder Name\\Mixed Case File.text"));
    const std::wstring file = dir(L"Long Folder Name\\Mixed Case File.text");
    wchar_t current[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, current);
    SetCurrentDirectoryW(dir(L"").c_str());
    struct Case {
        std::wstring in, expected;
    } full[] = {
        {L"x.txt", dir(L"x.txt")},
        {L"a/b/../c", dir(L"a\\c")},
        {L".\\Long Folder Name", dir(L"Long Folder Name")},
        {L"C:\\a\\.\\b\\..", L"C:\\a"},
    };
    ComPtr<IDispatch> fso = fileSystemObject();
    for (const Case& c : full) {
        EXPECT_EQ(c.expected, ask(&_FileMethods::GetFullPath, c.in)) << narrow(c.in);
        Bstr p(c.in);
        if (fso && c.in.find(L'L') != std::wstring::npos)  // existing: the scripting object is right there
            EXPECT_EQ(c.expected, text(lb(fso.get(), L"GetAbsolutePathName", {vText(p)})));
    }
    SetCurrentDirectoryW(current);

    // Short and long forms round-trip; the canonical form spells as stored.
    const std::wstring shortForm = ask(&_FileMethods::GetShortPath, file);
    ASSERT_NE(L"", shortForm);
    EXPECT_EQ(std::wstring::npos, shortForm.substr(dir(L"").size()).find(L' ')) << narrow(shortForm);
    EXPECT_EQ(file, ask(&_FileMethods::GetLongPath, shortForm));
    EXPECT_EQ(file, canonical(shortForm, false));
    EXPECT_EQ(L"", ask(&_FileMethods::GetShortPath, dir(L"none")));
    EXPECT_EQ(L"", ask(&_FileMethods::GetLongPath, dir(L"none")));
    std::wstring upper = file;
    CharUpperW(&upper[0]);
    EXPECT_EQ(file, canonical(upper, false));
    EXPECT_EQ(L"C:\\windows\\win.ini", canonical(L"c:\\WINDOWS\\SYSTEM32\\..\\WIN.INI", false));
    EXPECT_EQ(dir(L"Long Folder Name\\NEW.txt"), canonical(dir(L"LONG FOLDER NAME\\NEW.txt"), false));
    EXPECT_EQ(L"", canonical(dir(L"none"), true));
    EXPECT_EQ(file, canonical(upper, true));
    // A link resolves to its target: Wine makes the profile's Desktop a Linux
    // symbolic link to the home folder (CreateSymbolicLinkW makes nothing here).
    wchar_t profile[MAX_PATH] = L"", home[MAX_PATH] = L"";
    GetEnvironmentVariableW(L"USERPROFILE", profile, MAX_PATH);
    if (GetEnvironmentVariableW(L"HOME", home, MAX_PATH) && home[0] == L'/') {
        std::wstring target = L"Z:" + std::wstring(home);
        std::replace(target.begin(), target.end(), L'/', L'\\');
        const std::wstring desktop = std::wstring(profile) + L"\\Desktop";
        EXPECT_EQ(target, canonical(desktop, true));
        EXPECT_EQ(desktop, canonical(desktop, false));
    }
}

TEST_F(FileInfoTest, LongPathsPassEveryMember) {
    // The \\?\ form starts exactly above 259 characters (247 for a folder being created).
    const std::wstring base = L"C:\\";
    for (size_t length : {247u, 248u, 259u, 260u}) {
        const std::wstring p = base + std::wstring(length - base.size(), L'x');
        EXPECT_EQ(length > 259, tova::files::apiPath(p).compare(0, 4, L"\\\\?\\") == 0) << length;
        EXPECT_EQ(length > 247, tova::files::apiPath(p, true).compare(0, 4, L"\\\\?\\") == 0) << length;
    }
    EXPECT_EQ(L"\\\\?\\UNC\\srv\\s\\" + std::wstring(300, L'y'),
              tova::files::apiPath(L"\\\\srv\\s\\" + std::wstring(300, L'y')));
    // A tree 400 characters deep, made through the prefix.
    std::wstring folder = dir(L"");
    while (folder.size() < 380) {
        folder += L"\\" + std::wstring(40, L'd');
        ASSERT_TRUE(CreateDirectoryW((L"\\\\?\\" + folder).c_str(), nullptr));
    }
    const std::wstring file = folder + L"\\file name.txt";
    makeFile(L"\\\\?\\" + file, "12345");
    ASSERT_GT(file.size(), 400u);
    EXPECT_TRUE(ask(&_FileMethods::FileExists, file));
    EXPECT_TRUE(ask(&_FileMethods::FolderExists, folder));
    EXPECT_FALSE(ask(&_FileMethods::IsFolderEmpty, folder));
    EXPECT_FALSE(ask(&_FileMethods::IsFileInUse, file));
    EXPECT_EQ(5.0, ask(&_FileMethods::GetFileSize, file));
    EXPECT_EQ(5.0, folderSize(dir(L""), true));
    const DATE when = date(2022, 2, 2, 2, 2, 2, 2);
    EXPECT_TRUE(setDate(file, when));
    EXPECT_NEAR(when, getDate(file), 0.4 / 86400000);
    EXPECT_TRUE(setAttributes(file, FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(FILE_ATTRIBUTE_HIDDEN, attributes(file) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(file, ask(&_FileMethods::GetFullPath, file));
    EXPECT_EQ(file, ask(&_FileMethods::GetLongPath, ask(&_FileMethods::GetShortPath, file)));
    EXPECT_EQ(file, canonical(file, false));
    EXPECT_EQ(file, canonical(file, true));
    EXPECT_EQ(L"\\\\?\\" + file, canonical(L"\\\\?\\" + file, false));
    EXPECT_EQ(folder + L"\\file name (2).txt", ask(&_FileMethods::GetUniqueFileName, file));
    EXPECT_EQ(folder.size() + 14, ask(&_FileMethods::CreateTempFile, L"t", L"tmp", folder).size());
    EXPECT_EQ(folder.size() + 10, ask(&_FileMethods::CreateTempFolder, L"t", folder).size());
    EXPECT_EQ(static_cast<long>(DRIVE_FIXED), static_cast<long>([&] {
                  DriveTypeConstants t{};
                  fm->GetDriveType(In(file), &t);
                  return t;
              }()));
    EXPECT_LT(0.0, ask(&_FileMethods::GetDriveTotalSpace, file));
    EXPECT_EQ(L"", ask(&_FileMethods::GetFileVersion, file));
}

// --------------------------------------------------------- 10. drives, programs

TEST_F(FileInfoTest, DrivesAgreeWithTheScriptingObject) {
    Variant drives;
    ASSERT_EQ(S_OK, fm->GetDrives(&drives));
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&drives));
    LONG lower = 1, upper = -1;
    SafeArrayGetLBound(V_ARRAY(&drives), 1, &lower);
    SafeArrayGetUBound(V_ARRAY(&drives), 1, &upper);
    EXPECT_EQ(0, lower);
    std::vector<std::wstring> roots;
    for (LONG i = 0; i <= upper; ++i) {
        Variant v;
        SafeArrayGetElement(V_ARRAY(&drives), &i, &v);
        roots.push_back(text(v));
    }
    for (const wchar_t* root : {L"C:\\", L"Z:\\"})
        EXPECT_NE(roots.end(), std::find(roots.begin(), roots.end(), root)) << narrow(root);

    const std::wstring missing = freeLetter();
    struct Case {
        std::wstring drive;
        bool exists;
        long type;
    } cases[] = {
        {L"C", true, DRIVE_FIXED},        {L"c:", true, DRIVE_FIXED},         {L"C:\\", true, DRIVE_FIXED},
        {L"c:\\windows\\none", true, DRIVE_FIXED}, {L"Z:\\", true, DRIVE_FIXED}, {missing, false, DRIVE_NO_ROOT_DIR},
        {missing + L":\\x", false, DRIVE_NO_ROOT_DIR}, {L"foo", false, DRIVE_FIXED},
    };
    ComPtr<IDispatch> fso = fileSystemObject();
    for (const Case& c : cases) {
        EXPECT_EQ(c.exists, ask(&_FileMethods::DriveExists, c.drive)) << narrow(c.drive);
        DriveTypeConstants type{};
        EXPECT_EQ(S_OK, fm->GetDriveType(In(c.drive), &type));
        EXPECT_EQ(c.type, static_cast<long>(type)) << narrow(c.drive);
        if (fso && c.drive.size() <= 3) {
            Bstr d(c.drive);
            EXPECT_EQ(c.exists, truth(lb(fso.get(), L"DriveExists", {vText(d)}))) << narrow(c.drive);
        }
    }
    EXPECT_TRUE(ask(&_FileMethods::IsDriveReady, L"C:"));
    EXPECT_FALSE(ask(&_FileMethods::IsDriveReady, missing));

    for (const wchar_t* letter : {L"C", L"Z"}) {
        wchar_t root[] = L"?:\\", label[MAX_PATH + 1] = L"";
        root[0] = letter[0];
        DWORD serial = 0;
        ULARGE_INTEGER available, total;
        ASSERT_TRUE(GetVolumeInformationW(root, label, MAX_PATH + 1, &serial, nullptr, nullptr, nullptr, 0));
        ASSERT_TRUE(GetDiskFreeSpaceExW(root, &available, &total, nullptr));
        EXPECT_EQ(std::wstring(label), ask(&_FileMethods::GetVolumeLabel, letter));
        LONG serialOut = 0;
        EXPECT_EQ(S_OK, fm->GetVolumeSerialNumber(In(root), &serialOut));
        EXPECT_EQ(static_cast<LONG>(serial), serialOut);
        EXPECT_EQ(static_cast<double>(total.QuadPart), ask(&_FileMethods::GetDriveTotalSpace, root));
        const double free = ask(&_FileMethods::GetDriveFreeSpace, root);
        EXPECT_NEAR(static_cast<double>(available.QuadPart), free, free / 100);
        if (!fso) continue;
        Bstr b(letter);
        ComPtr<IDispatch> drive = object(lb(fso.get(), L"GetDrive", {vText(b)}));
        ASSERT_TRUE(drive);
        EXPECT_EQ(std::wstring(label), text(lb(drive.get(), L"VolumeName")));
        EXPECT_EQ(static_cast<double>(serialOut), number(lb(drive.get(), L"SerialNumber")));
        EXPECT_EQ(static_cast<double>(total.QuadPart), number(lb(drive.get(), L"TotalSize")));
        EXPECT_NEAR(free, number(lb(drive.get(), L"AvailableSpace")), free / 100);
    }
    EXPECT_EQ(L"", ask(&_FileMethods::GetVolumeLabel, missing));
    EXPECT_EQ(-1.0, ask(&_FileMethods::GetDriveFreeSpace, missing));
}

TEST_F(FileInfoTest, VersionsAndAssociations) {
    wchar_t dll[MAX_PATH];
    GetModuleFileNameW(library(), dll, MAX_PATH);
    EXPECT_EQ(L"2.0.0.38", ask(&_FileMethods::GetFileVersion, dll));
    makeFile(dir(L"a.txt"));
    EXPECT_EQ(L"", ask(&_FileMethods::GetFileVersion, dir(L"a.txt")));
    EXPECT_EQ(L"", ask(&_FileMethods::GetFileVersion, dir(L"none.dll")));
    if (ComPtr<IDispatch> fso = fileSystemObject()) {
        Bstr p(dll);
        EXPECT_EQ(L"2.0.0.38", text(lb(fso.get(), L"GetFileVersion", {vText(p)})));
    }
    for (const wchar_t* ini : {L".ini", L"ini", L"C:\\x\\y.INI", L"settings.ini"}) {
        std::wstring program = ask(&_FileMethods::GetAssociatedProgram, ini);
        CharLowerW(&program[0]);
        ASSERT_GT(program.size(), 12u) << narrow(ini);
        EXPECT_EQ(L"\\notepad.exe", program.substr(program.size() - 12)) << narrow(ini);
        EXPECT_EQ(L':', program[1]) << narrow(program);
    }
    for (const wchar_t* none : {L".zzqq", L"C:\\x\\Makefile", L"C:\\x\\.ini", L"a.b\\c"})
        EXPECT_EQ(L"", ask(&_FileMethods::GetAssociatedProgram, none)) << narrow(none);
}

}  // namespace
