// FileMethods listings: GetFiles, GetSubfolders and GetNewestFile on a tree
// with awkward names, pattern forms, sorted pre-order, relative and full
// paths, links listed but not entered, long paths, soft failures; the same
// listings when folders are read entry by entry, as before Vista.
#include "file_fixtures.h"

#include "files/file_listing.h"

using namespace test;

namespace {

using Names = std::vector<std::wstring>;

class Listing : public ::testing::Test {
protected:
    FileScratch dir{L"tova_listing_"};
    ComPtr<_FileMethods> fm = fileMethods();

    // root: #1.txt [x].txt A.txt b.txt h.txt (hidden) page.htm page.html Ærø–日本.txt
    //       sub\c.txt sub\deep\d.txt Sub2\e.txt Sub2\f.dat
    void tree() {
        for (const wchar_t* f : {L"b.txt", L"A.txt", L"[x].txt", L"#1.txt", L"\u00C6r\u00F8\u2013\u65E5\u672C.txt",
                                 L"page.html", L"page.htm"})
            dir.file(f);
        dir.file(L"h.txt", "", FILE_ATTRIBUTE_HIDDEN);
        dir.folder(L"sub").file(L"sub\\c.txt").folder(L"sub\\deep").file(L"sub\\deep\\d.txt");
        dir.folder(L"Sub2").file(L"Sub2\\e.txt").file(L"Sub2\\f.dat");
    }

    // A late-bound call, as a script makes it: folder, pattern (missing when
    // VT_ERROR), IncludeSubfolders, FullPaths.
    Names get(const wchar_t* member, const std::wstring& folder, const VARIANT& pattern, bool deep = false, bool full = false) {
        Variant f;
        V_VT(&f) = VT_BSTR;
        V_BSTR(&f) = SysAllocStringLen(folder.data(), static_cast<UINT>(folder.size()));
        VARIANT d, u;
        V_VT(&d) = V_VT(&u) = VT_BOOL;
        V_BOOL(&d) = deep ? VARIANT_TRUE : VARIANT_FALSE;
        V_BOOL(&u) = full ? VARIANT_TRUE : VARIANT_FALSE;
        CallResult r;
        call(r, fm.get(), member, DISPATCH_METHOD, {f, pattern, d, u});
        EXPECT_EQ(S_OK, r.hr) << r.description().size();
        return strings(r.value);
    }
    std::wstring newest(const std::wstring& folder, Variant pattern, bool deep = false) {
        Bstr f(folder);
        BSTR p = f.get();
        Bstr out;
        EXPECT_EQ(S_OK, fm->GetNewestFile(&p, &pattern, deep ? VARIANT_TRUE : VARIANT_FALSE, out.put()));
        return out.str();
    }
};

Variant text(const wchar_t* s) { return Variant(s); }

Variant missing() {
    Variant v;
    V_VT(&v) = VT_ERROR;
    V_ERROR(&v) = DISP_E_PARAMNOTFOUND;
    return v;
}

// A Variant array of patterns, as Array("a", "b") gives.
Variant patterns(std::initializer_list<const wchar_t*> items) {
    tova::SafeArray sa(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(items.size())));
    LONG i = 0;
    for (const wchar_t* s : items) {
        Variant e(s);
        SafeArrayPutElement(sa.get(), &i, &e);
        ++i;
    }
    Variant v;
    V_VT(&v) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&v) = sa.detach();
    return v;
}

TEST_F(Listing, SortedInPreOrderByPattern) {
    tree();
    const struct {
        const wchar_t* member;
        Variant pattern;
        bool deep;
        Names names;
    } cases[] = {
        {L"GetFiles", missing(), false,
         {L"#1.txt", L"A.txt", L"b.txt", L"h.txt", L"page.htm", L"page.html", L"[x].txt",
          L"\u00C6r\u00F8\u2013\u65E5\u672C.txt"}},
        {L"GetFiles", text(L"*.htm"), false, {L"page.htm"}},   // the short name PAGE~1.HTM never matches
        {L"GetFiles", text(L"[[]x].txt"), false, {L"[x].txt"}},
        {L"GetFiles", text(L"[#]#.TXT"), false, {L"#1.txt"}},
        {L"GetFiles", text(L"*\u65E5*"), false, {L"\u00C6r\u00F8\u2013\u65E5\u672C.txt"}},
        {L"GetFiles", patterns({L"*.htm", L"b*"}), false, {L"b.txt", L"page.htm"}},
        {L"GetFiles", text(L""), true, {}},
        {L"GetFiles", text(L"[a"), false, {}},                 // invalid: matches nothing
        {L"GetFiles", text(L"?.txt"), true,
         {L"A.txt", L"b.txt", L"h.txt", L"sub\\c.txt", L"sub\\deep\\d.txt", L"Sub2\\e.txt"}},
        {L"GetFiles", text(L"*.dat"), true, {L"Sub2\\f.dat"}},
        {L"GetSubfolders", missing(), false, {L"sub", L"Sub2"}},
        {L"GetSubfolders", missing(), true, {L"sub", L"sub\\deep", L"Sub2"}},
        {L"GetSubfolders", text(L"d*"), true, {L"sub\\deep"}},   // non-matching folders are still entered
        {L"GetSubfolders", text(L"*.txt"), true, {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.names, get(c.member, dir.root(), c.pattern, c.deep)) << &c - cases;
}

TEST_F(Listing, FullPathsInTheCallersForm) {
    tree();
    EXPECT_EQ((Names{dir / L"sub\\c.txt", dir / L"sub\\deep\\d.txt"}), get(L"GetFiles", dir / L"sub", missing(), true, true));
    EXPECT_EQ((Names{dir / L"sub\\deep"}), get(L"GetSubfolders", dir / L"sub\\.\\", missing(), false, true));
    const std::wstring prefixed = FileScratch::long_(dir / L"sub");
    EXPECT_EQ((Names{prefixed + L"\\c.txt"}), get(L"GetFiles", prefixed, missing(), false, true));
}

TEST_F(Listing, NothingThereIsEmptyNoMatchIsNoElements) {
    tree();
    dir.folder(L"empty");
    const struct {
        std::wstring folder;
        Names names;
    } cases[] = {
        {dir / L"empty", {}},
        {dir / L"missing", {L"<Empty>"}},
        {dir / L"A.txt", {L"<Empty>"}},   // a file is no folder
        {L"", {L"<Empty>"}},
        {dir / L"*", {L"<Empty>"}},       // wildcards name nothing
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.names, get(L"GetFiles", c.folder, missing())) << c.folder.size();
        EXPECT_EQ(c.names, get(L"GetSubfolders", c.folder, missing(), true)) << c.folder.size();
        EXPECT_EQ(L"", newest(c.folder, missing(), true));
    }
}

// Starts a Unix program (Wine runs them), without waiting: the handle of a
// Unix process does not wait for it. Callers wait for its effect.
bool unixCommand(std::string command) {
    STARTUPINFOA si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return false;
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return true;
}

// Waits up to 10 s until `path` exists or not; its attributes.
DWORD awaitPath(const std::wstring& path, bool present) {
    DWORD a = GetFileAttributesW(path.c_str());
    for (int i = 0; i < 1000 && (a != INVALID_FILE_ATTRIBUTES) != present; ++i, Sleep(10)) a = GetFileAttributesW(path.c_str());
    return a;
}

// A Linux symbolic link `link` to `target` (Unix paths), removed when it
// goes: once its target is gone the platform cannot delete it.
struct UnixLink {
    std::string link;
    std::wstring path;
    UnixLink(const std::string& target, std::string name, std::wstring windowsPath) : link(std::move(name)), path(std::move(windowsPath)) {
        if (unixCommand("/bin/ln -s " + target + " " + link)) awaitPath(path, true);
    }
    ~UnixLink() {
        if (unixCommand("/bin/rm -f " + link)) awaitPath(path, false);
    }
};

// A Linux symbolic link to a folder (the platform shows it as a reparse point)
// is listed but never entered: its target's tree is not this folder's.
TEST_F(Listing, LinksListedNeverEntered) {
    dir.folder(L"real").file(L"real\\inside.txt").folder(L"other").file(L"other\\outside.txt");
    using UnixName = char*(CDECL*)(LPCWSTR);
    auto unixName = reinterpret_cast<UnixName>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (!unixName) GTEST_SKIP() << "not under Wine";
    char* unixRoot = unixName(dir.root().c_str());
    const std::string root = unixRoot;
    HeapFree(GetProcessHeap(), 0, unixRoot);
    UnixLink link(root + "/other", root + "/real/link", dir / L"real\\link");
    const DWORD attributes = GetFileAttributesW(link.path.c_str());
    const DWORD reparse = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    ASSERT_NE(INVALID_FILE_ATTRIBUTES, attributes);
    ASSERT_EQ(reparse, attributes & reparse);
    // And until a listing shows it (once, a 32-bit run did not yet).
    for (int tries = 0; tries < 100; ++tries) {
        WIN32_FIND_DATAW fd;
        HANDLE h = FindFirstFileW((dir / L"real\\l*").c_str(), &fd);
        if (h != INVALID_HANDLE_VALUE) {
            FindClose(h);
            break;
        }
        Sleep(20);
    }
    EXPECT_EQ((Names{L"link"}), get(L"GetSubfolders", dir / L"real", missing(), true));
    EXPECT_EQ((Names{L"inside.txt"}), get(L"GetFiles", dir / L"real", missing(), true));
    EXPECT_EQ((Names{L"outside.txt"}), get(L"GetFiles", dir / L"real\\link", missing(), true));   // named, it is read
}

TEST_F(Listing, PathsBeyondTheClassicLimit) {
    std::wstring relative;
    for (int i = 0; i < 6; ++i) {
        relative += (i ? L"\\" : L"") + std::wstring(60, static_cast<wchar_t>(L'a' + i));
        dir.folder(relative);
    }
    dir.file(relative + L"\\deep.txt");
    ASSERT_GT((dir / relative).size(), 300u);
    EXPECT_EQ((Names{relative + L"\\deep.txt"}), get(L"GetFiles", dir.root(), missing(), true));
    EXPECT_EQ((Names{dir / relative + L"\\deep.txt"}), get(L"GetFiles", dir / relative, missing(), false, true));
    EXPECT_EQ(dir / relative + L"\\deep.txt", newest(dir.root(), missing(), true));
}

TEST_F(Listing, NewestFileFollowsSetDatesTiesByName) {
    tree();
    auto stamp = [&](const wchar_t* name, int day) {
        HANDLE h = CreateFileW((dir / name).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        SYSTEMTIME st = {2024, 3, 0, static_cast<WORD>(day), 12, 0, 0, 0};
        FILETIME ft;
        SystemTimeToFileTime(&st, &ft);
        EXPECT_TRUE(SetFileTime(h, nullptr, nullptr, &ft));
        CloseHandle(h);
    };
    for (const wchar_t* f : {L"#1.txt", L"A.txt", L"b.txt", L"h.txt", L"page.htm", L"page.html", L"[x].txt",
                             L"\u00C6r\u00F8\u2013\u65E5\u672C.txt", L"sub\\c.txt", L"sub\\deep\\d.txt", L"Sub2\\e.txt",
                             L"Sub2\\f.dat"})
        stamp(f, 1);
    stamp(L"b.txt", 5);
    stamp(L"sub\\deep\\d.txt", 9);
    stamp(L"page.htm", 9);
    const struct {
        Variant pattern;
        bool deep;
        std::wstring path;
    } cases[] = {
        {missing(), false, dir / L"page.htm"},
        {text(L"*.txt"), false, dir / L"b.txt"},
        {text(L"*.txt"), true, dir / L"sub\\deep\\d.txt"},
        {text(L"*.dat"), true, dir / L"Sub2\\f.dat"},
        {text(L"[!bp]*"), false, dir / L"#1.txt"},   // all on one day: the first by name
        {text(L"*.none"), true, L""},
    };
    for (const auto& c : cases) EXPECT_EQ(c.path, newest(dir.root(), c.pattern, c.deep));
}

// Systems before Vista read a folder one FindNextFileW call per entry, and
// some servers refuse queries above 64 KB: the same listings and the same
// soft failures. "many" holds more than 64 KB of entries.
TEST_F(Listing, EveryWayOfReadingListsAlike) {
    tree();
    dir.folder(L"empty").folder(L"many");
    for (int i = 0; i < 300; ++i) dir.file(L"many\\" + std::wstring(100, L'm') + std::to_wstring(i));
    const tova::folders::Criteria all(nullptr);
    using tova::files::Reading;
    auto list = [&](Reading how, bool folders, const std::wstring& folder, bool deep, bool full) {
        std::vector<Bstr> names;
        tova::files::readFoldersForTests(how);
        const bool read = folders ? tova::files::listSubfolders(folder, all, deep, full, names)
                                  : tova::files::listFiles(folder, all, deep, full, names);
        tova::files::readFoldersForTests(Reading::buffered);
        Names out;
        for (const Bstr& n : names) out.push_back(n.str());
        return read ? out : Names{L"<Empty>"};
    };
    EXPECT_EQ(300u, list(Reading::buffered, false, dir / L"many", false, false).size());
    for (Reading how : {Reading::entryByEntry, Reading::refusingLargeQueries})
        for (const std::wstring& folder : {dir.root(), dir / L"many", dir / L"empty", dir / L"A.txt", dir / L"missing"})
            for (bool deep : {false, true}) {
                EXPECT_EQ(get(L"GetFiles", folder, missing(), deep, deep), list(how, false, folder, deep, deep))
                    << folder.size();
                EXPECT_EQ(get(L"GetSubfolders", folder, missing(), deep), list(how, true, folder, deep, false))
                    << folder.size();
            }
}

}  // namespace
