// Copy, move, rename, delete and create, and the swap under every whole-file
// write: nothing is lost when a step fails, protected folders are refused.
#include "support.h"

#include "raises.h"
#include "files/file_ops.h"
#include "files/recycle_bin.h"
#include "files/long_paths.h"
#include "files/safe_write.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace tova;
using namespace test;

namespace {

void writeRaw(const std::wstring& path, const std::string& bytes) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, h);
    DWORD n = 0;
    WriteFile(h, bytes.data(), static_cast<DWORD>(bytes.size()), &n, nullptr);
    CloseHandle(h);
}

std::string readRaw(const std::wstring& path) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    if (h == INVALID_HANDLE_VALUE) return "<missing>";
    std::string s(1 << 16, '\0');
    DWORD n = 0;
    ReadFile(h, &s[0], static_cast<DWORD>(s.size()), &n, nullptr);
    CloseHandle(h);
    s.resize(n);
    return s;
}

std::vector<std::wstring> names(const std::wstring& folder) {
    std::vector<std::wstring> out;
    WIN32_FIND_DATAW fd;
    HANDLE h = FindFirstFileW((folder + L"\\*").c_str(), &fd);
    if (h == INVALID_HANDLE_VALUE) return out;
    do {
        if (wcscmp(fd.cFileName, L".") && wcscmp(fd.cFileName, L"..")) out.push_back(fd.cFileName);
    } while (FindNextFileW(h, &fd));
    FindClose(h);
    return out;
}

bool exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

bool write(const std::wstring& path, const std::string& bytes, bool overwrite = true) {
    return files::writeWholeFile(files::apiPath(path), bytes.data(), bytes.size(), overwrite);
}

// Replaces the swap's platform calls for one test.
class FailingCalls {
public:
    FailingCalls(decltype(files::detail::ReplaceCalls::replaceFile) r, decltype(files::detail::ReplaceCalls::moveFile) m)
        : saved_(files::detail::replaceCalls()) {
        if (r) files::detail::replaceCalls().replaceFile = r;
        if (m) files::detail::replaceCalls().moveFile = m;
    }
    ~FailingCalls() { files::detail::replaceCalls() = saved_; }

private:
    files::detail::ReplaceCalls saved_;
};

}  // namespace

TEST(SafeWrite, WritesNewAndExistingFilesAndRefusesWhatItMustNot) {
    Scratch s;
    EXPECT_TRUE(write(s(L"new.txt"), "one"));
    EXPECT_EQ("one", readRaw(s(L"new.txt")));
    EXPECT_FALSE(write(s(L"new.txt"), "two", false)) << "no overwrite asked";
    EXPECT_TRUE(write(s(L"new.txt"), "two"));
    EXPECT_EQ("two", readRaw(s(L"new.txt")));
    EXPECT_TRUE(write(s(L"empty.txt"), ""));
    EXPECT_EQ("", readRaw(s(L"empty.txt")));

    SetFileAttributesW((s(L"new.txt")).c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(write(s(L"new.txt"), "three")) << "read-only target";
    SetFileAttributesW((s(L"new.txt")).c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ("two", readRaw(s(L"new.txt")));
    CreateDirectoryW((s(L"dir")).c_str(), nullptr);
    EXPECT_FALSE(write(s(L"dir"), "x")) << "a folder is no file";
    EXPECT_FALSE(write(s(L"missing\\x.txt"), "x")) << "missing folder";
    EXPECT_FALSE(write(L"", "x"));

    // A target held open without delete sharing cannot be replaced: it stays whole.
    HANDLE held = CreateFileW((s(L"new.txt")).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_FALSE(write(s(L"new.txt"), "four"));
    CloseHandle(held);
    EXPECT_EQ("two", readRaw(s(L"new.txt")));
    for (const std::wstring& n : names(s.root())) EXPECT_NE(0u, n.find(L"~tova")) << "left behind: " << n.c_str();

    // Beyond the classic path limit.
    std::wstring deep = s.root();
    while (deep.size() < 300) {
        deep += L"\\" + std::wstring(40, L'd');
        CreateDirectoryW(files::apiPath(deep, true).c_str(), nullptr);
    }
    EXPECT_TRUE(write(deep + L"\\long.txt", "deep"));
    EXPECT_EQ("deep", readRaw(files::apiPath(deep + L"\\long.txt")));
}

namespace {
DWORD g_replaceError = 0;
BOOL WINAPI failingReplace(LPCWSTR target, LPCWSTR replacement, LPCWSTR backup, DWORD, LPVOID, LPVOID) {
    // 1177 happens after the target was moved to the backup name.
    if (g_replaceError == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2) MoveFileExW(target, backup, 0);
    SetLastError(g_replaceError);
    return FALSE;
}
int g_moves = 0;
BOOL WINAPI secondMoveFails(LPCWSTR from, LPCWSTR to, DWORD flags) {
    if (++g_moves == 2) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return MoveFileExW(from, to, flags);
}
}  // namespace

TEST(SafeWrite, EveryFailingStepOfTheSwapLeavesTheOldContent) {
    Scratch s;
    const std::wstring target = s(L"kept.txt");
    writeRaw(target, "old");
    for (DWORD error : {DWORD(ERROR_UNABLE_TO_MOVE_REPLACEMENT), DWORD(ERROR_UNABLE_TO_MOVE_REPLACEMENT_2),
                        DWORD(ERROR_UNABLE_TO_REMOVE_REPLACED)}) {
        g_replaceError = error;
        FailingCalls calls(&failingReplace, nullptr);
        EXPECT_FALSE(write(target, "new")) << error;
        EXPECT_EQ("old", readRaw(target)) << error;
    }
    {
        // A volume refusing ReplaceFileW gets two renames; the second fails.
        g_replaceError = ERROR_INVALID_FUNCTION;
        g_moves = 0;
        FailingCalls calls(&failingReplace, &secondMoveFails);
        EXPECT_FALSE(write(target, "new"));
        EXPECT_EQ("old", readRaw(target));
    }
    {
        g_replaceError = ERROR_INVALID_FUNCTION;
        FailingCalls calls(&failingReplace, nullptr);
        EXPECT_TRUE(write(target, "renamed in")) << "the two renames";
        EXPECT_EQ("renamed in", readRaw(target));
    }
    EXPECT_EQ(std::vector<std::wstring>{L"kept.txt"}, names(s.root())) << "no temporary or backup left";
}

namespace {

folders::Criteria pattern(const wchar_t* p) {
    Variant v(p);
    return folders::Criteria(&v);
}

}  // namespace

TEST(FileOps, CopyAndMoveFilesByTheTargetRules) {
    Scratch s;
    writeRaw(s(L"a.txt"), "A");
    CreateDirectoryW((s(L"into")).c_str(), nullptr);
    struct Case { const wchar_t* to; bool overwrite; bool ok; const wchar_t* lands; };
    for (const Case& c : {Case{L"b.txt", false, true, L"b.txt"}, Case{L"b.txt", false, false, L"b.txt"},
                          Case{L"into", false, true, L"into\\a.txt"}, Case{L"new\\", false, false, L"new\\a.txt"},
                          Case{L"a.txt", true, false, L"a.txt"}, Case{L"missing\\x.txt", false, false, L"missing\\x.txt"}}) {
        EXPECT_EQ(c.ok, files::copyFile(s(L"a.txt"), s(c.to), c.overwrite)) << c.to;
        if (c.ok) EXPECT_EQ("A", readRaw(s(c.lands))) << c.to;
    }
    writeRaw(s(L"b.txt"), "B");
    EXPECT_TRUE(files::copyFile(s(L"a.txt"), s(L"b.txt"), true));
    EXPECT_EQ("A", readRaw(s(L"b.txt")));
    SetFileAttributesW((s(L"b.txt")).c_str(), FILE_ATTRIBUTE_READONLY);
    writeRaw(s(L"c.txt"), "C");
    EXPECT_FALSE(files::copyFile(s(L"c.txt"), s(L"b.txt"), true)) << "never over a read-only file";
    EXPECT_FALSE(files::moveFile(s(L"c.txt"), s(L"b.txt"), true));
    EXPECT_EQ("A", readRaw(s(L"b.txt")));
    EXPECT_EQ("C", readRaw(s(L"c.txt")));
    SetFileAttributesW((s(L"b.txt")).c_str(), FILE_ATTRIBUTE_NORMAL);

    EXPECT_TRUE(files::moveFile(s(L"c.txt"), s(L"into\\"), false));
    EXPECT_FALSE(exists(s(L"c.txt")));
    EXPECT_EQ("C", readRaw(s(L"into\\c.txt")));
    EXPECT_FALSE(files::moveFile(s(L"into\\c.txt"), s(L"b.txt"), false));
    EXPECT_TRUE(files::moveFile(s(L"into\\c.txt"), s(L"b.txt"), true));
    EXPECT_EQ("C", readRaw(s(L"b.txt")));
    EXPECT_TRUE(files::moveFile(s(L"b.txt"), s(L"B.TXT"), false)) << "a change of case is a rename";
    const std::vector<std::wstring> listed = names(s.root());
    EXPECT_EQ(1, std::count(listed.begin(), listed.end(), std::wstring(L"B.TXT")));
    EXPECT_FALSE(files::copyFile(L"", s(L"x.txt"), false));
    EXPECT_FALSE(files::copyFile(s(L"*.txt"), s(L"x.txt"), false));
}

TEST(FileOps, RenameDeleteAndCreate) {
    Scratch s;
    writeRaw(s(L"a.txt"), "A");
    writeRaw(s(L"b.txt"), "B");
    EXPECT_FALSE(files::renameFile(s(L"a.txt"), L"b.txt")) << "taken";
    EXPECT_TRUE(files::renameFile(s(L"a.txt"), L"A.txt"));
    EXPECT_TRUE(files::renameFile(s(L"A.txt"), L"c.txt"));
    EXPECT_EQ("A", readRaw(s(L"c.txt")));

    SetFileAttributesW((s(L"c.txt")).c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(files::deleteFile(s(L"c.txt"), false, false));
    EXPECT_TRUE(exists(s(L"c.txt")));
    EXPECT_TRUE(files::deleteFile(s(L"c.txt"), false, true));
    EXPECT_FALSE(files::deleteFile(s(L"c.txt"), false, true)) << "nothing left to delete";
    EXPECT_FALSE(files::deleteFile(s.root(), false, true)) << "a folder is no file";

    EXPECT_TRUE(files::createFolder(s(L"x\\y\\z")));
    EXPECT_TRUE(files::createFolder(s(L"x\\y\\z\\"))) << "exists already";
    EXPECT_FALSE(files::createFolder(s(L"b.txt\\sub"))) << "a file in the way";
    EXPECT_FALSE(files::createFolder(s(L"b.txt")));
    EXPECT_FALSE(files::createFolder(L""));
    std::wstring deep = s(L"deep");
    while (deep.size() < 320) deep += L"\\" + std::wstring(30, L'q');
    EXPECT_TRUE(files::createFolder(deep));
    EXPECT_TRUE(exists(files::apiPath(deep)));
    EXPECT_TRUE(files::renameFolder(s(L"x"), L"X2"));
    EXPECT_FALSE(files::renameFolder(s(L"X2"), L"deep")) << "taken";
}

TEST(FileOps, FolderCopiesAreWholeOrAbsent) {
    Scratch s;
    CreateDirectoryW((s(L"src")).c_str(), nullptr);
    CreateDirectoryW((s(L"src\\sub")).c_str(), nullptr);
    writeRaw(s(L"src\\1.txt"), "1");
    writeRaw(s(L"src\\sub\\2.txt"), "2");
    EXPECT_TRUE(files::copyFolder(s(L"src"), s(L"copy"), false));
    EXPECT_EQ("2", readRaw(s(L"copy\\sub\\2.txt")));
    EXPECT_TRUE(files::copyFolder(s(L"src"), s(L"copy\\"), false)) << "into it";
    EXPECT_EQ("1", readRaw(s(L"copy\\src\\1.txt")));
    writeRaw(s(L"src\\1.txt"), "one");
    EXPECT_FALSE(files::copyFolder(s(L"src"), s(L"copy"), false)) << "exists";
    EXPECT_EQ("1", readRaw(s(L"copy\\1.txt")));
    EXPECT_TRUE(files::copyFolder(s(L"src"), s(L"copy"), true)) << "merged";
    EXPECT_EQ("one", readRaw(s(L"copy\\1.txt")));
    EXPECT_EQ(kInvalidArgument, raisedCode([&] { files::copyFolder(s(L"src"), s(L"src\\sub\\deeper"), false); }));

    // A file that cannot be read stops the copy: no destination, no temporary folder.
    HANDLE held = CreateFileW((s(L"src\\sub\\2.txt")).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_FALSE(files::copyFolder(s(L"src"), s(L"failed"), false));
    CloseHandle(held);
    for (const std::wstring& n : names(s.root()))
        EXPECT_TRUE(n == L"src" || n == L"copy") << "left behind: " << n.c_str();

    EXPECT_TRUE(files::moveFolder(s(L"copy"), s(L"moved")));
    EXPECT_FALSE(exists(s(L"copy")));
    EXPECT_FALSE(files::moveFolder(s(L"moved"), s(L"src"))) << "no merging";
    EXPECT_EQ(kInvalidArgument, raisedCode([&] { files::moveFolder(s(L"moved"), s(L"moved\\in")); }));
}

TEST(FileOps, DeletesRespectReadOnlyItemsAndProtectedFolders) {
    Scratch s;
    CreateDirectoryW((s(L"tree")).c_str(), nullptr);
    CreateDirectoryW((s(L"tree\\sub")).c_str(), nullptr);
    writeRaw(s(L"tree\\a.log"), "a");
    writeRaw(s(L"tree\\b.txt"), "b");
    writeRaw(s(L"tree\\sub\\c.log"), "c");
    writeRaw(s(L"tree\\sub\\d.log"), "d");
    SetFileAttributesW((s(L"tree\\sub\\d.log")).c_str(), FILE_ATTRIBUTE_READONLY);

    EXPECT_EQ(1, files::deleteFiles(s(L"tree"), pattern(L"*.log"), false, false, false));
    EXPECT_EQ(1, files::deleteFiles(s(L"tree"), pattern(L"*.log"), true, false, false)) << "read-only skipped";
    EXPECT_EQ(0, files::deleteFiles(s(L"tree"), pattern(L""), true, false, true)) << "an empty pattern matches nothing";
    EXPECT_FALSE(files::deleteFolder(s(L"tree"), false, false)) << "a read-only item inside";
    EXPECT_EQ("b", readRaw(s(L"tree\\b.txt")));
    EXPECT_TRUE(files::deleteFolder(s(L"tree"), false, true));
    EXPECT_FALSE(exists(s(L"tree")));
    EXPECT_EQ(std::vector<std::wstring>{}, names(s.root())) << "nothing left under another name";

    // Roots, the Windows folder, the profile and what lies above them.
    wchar_t windows[MAX_PATH];
    GetWindowsDirectoryW(windows, MAX_PATH);
    CreateDirectoryW((s(L"profile")).c_str(), nullptr);
    writeRaw(s(L"profile\\keep.txt"), "k");
    wchar_t saved[MAX_PATH] = L"";
    GetEnvironmentVariableW(L"USERPROFILE", saved, MAX_PATH);
    SetEnvironmentVariableW(L"USERPROFILE", (s(L"profile")).c_str());
    for (const std::wstring& p : {std::wstring(L"C:\\"), std::wstring(L"c:"), std::wstring(windows), s(L"profile"), s.root()}) {
        EXPECT_EQ(kInvalidArgument, raisedCode([&] { files::deleteFolder(p, false, true); })) << p.c_str();
        EXPECT_EQ(kInvalidArgument, raisedCode([&] { files::deleteFiles(p, pattern(L"*"), true, false, true); }));
        EXPECT_EQ(kInvalidArgument, raisedCode([&] { files::renameFolder(p, L"other"); })) << p.c_str();
    }
    SetEnvironmentVariableW(L"USERPROFILE", saved);
    EXPECT_EQ("k", readRaw(s(L"profile\\keep.txt")));
}

TEST(FileOps, RecycleBinNeverDeletesPermanently) {
    // The sink refuses items the shell would destroy.
    EXPECT_EQ(S_OK, files::detail::preDeleteVerdict(0x80));
    EXPECT_NE(S_OK, files::detail::preDeleteVerdict(0));
    Scratch s;
    writeRaw(s(L"recycled.txt"), "r");
    EXPECT_TRUE(files::deleteFile(s(L"recycled.txt"), true, false));
    EXPECT_FALSE(exists(s(L"recycled.txt")));
#ifdef TOVA_TRASH
    EXPECT_EQ("r", readRaw(std::wstring(TOVA_TRASH) + L"\\recycled.txt")) << "in the recycle bin";
#endif
}

namespace {

VARIANT vText(const wchar_t* s) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = SysAllocString(s);
    return v;
}

// The error a late-bound call raises (its scode's low word), 0 for none.
long lateBoundError(IDispatch* d, const wchar_t* name, std::vector<VARIANT> args) {
    CallResult r;
    call(r, d, name, DISPATCH_METHOD, std::move(args));
    if (r.hr == S_OK) return 0;
    if (r.hr != DISP_E_EXCEPTION) ADD_FAILURE() << name << " returned " << std::hex << r.hr;
    return r.hr == DISP_E_EXCEPTION ? HRESULT_CODE(r.excep.scode) : -1;
}

}  // namespace

// Arguments wrong whatever the disk holds raise 5 (13 for Data); as script hosts pass them.
TEST(FileMethodsClass, RaisesTheDesignedErrors) {
    ComPtr<IDispatch> fm = create<IDispatch>(CLSID_FileMethods, IID_IDispatch);
    ASSERT_TRUE(fm);
    Scratch s;
    writeRaw(s(L"a.txt"), "A");
    const std::wstring a = s(L"a.txt");
    Variant longs = longArray({1, 2});
    struct Case { const wchar_t* member; std::vector<VARIANT> args; long error; };
    const Case cases[] = {
        {L"RenameFile", {vText(a.c_str()), vText(L"b:c")}, kInvalidArgument},
        {L"RenameFile", {vText(a.c_str()), vText(L"..")}, kInvalidArgument},
        {L"RenameFolder", {vText(s.root().c_str()), vText(L"")}, kInvalidArgument},
        {L"GetFileDate", {vText(a.c_str()), vLong(3)}, kInvalidArgument},
        {L"GetFileDate", {vText(a.c_str()), vLong(8)}, kInvalidArgument},
        {L"SetFileDate", {vText(a.c_str()), vDouble(45000), vLong(0)}, kInvalidArgument},
        {L"SetFileDate", {vText(a.c_str()), vDouble(-200000), vLong(4)}, kInvalidArgument},
        {L"SetAttributes", {vText(a.c_str()), vLong(-1)}, kInvalidArgument},
        {L"ReadBinaryFile", {vText(a.c_str()), vDouble(-1)}, kInvalidArgument},
        {L"ReadBinaryFile", {vText(a.c_str()), vDouble(0), vLong(-2)}, kInvalidArgument},
        {L"ReadTextFile", {vText(a.c_str()), vLong(6)}, kInvalidArgument},
        {L"GetFileHash", {vText(a.c_str()), vLong(0)}, kInvalidArgument},
        {L"CreateTempFile", {vText(L"a/b")}, kInvalidArgument},
        {L"MakeValidFileName", {vText(L"x"), vText(L"?")}, kInvalidArgument},
        {L"WriteBinaryFile", {vText(a.c_str()), longs}, kTypeMismatch},
        {L"DeleteFolder", {vText(L"C:\\")}, kInvalidArgument},
        {L"FileExists", {vText(L"")}, 0},
        {L"DeleteFolder", {vText(L"")}, 0},
        {L"DeleteFiles", {vText(L""), vText(L"*")}, 0},
    };
    for (const Case& c : cases) EXPECT_EQ(c.error, lateBoundError(fm.get(), c.member, c.args)) << c.member;
    EXPECT_EQ("A", readRaw(a));
}
