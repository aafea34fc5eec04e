// Copy, move, rename, delete and create, and the swap under every whole-file
// write: nothing is lost when a step fails, protected folders are refused.
#include "support.h"

#include "files/file_ops.h"
#include "files/long_paths.h"
#include "files/safe_write.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tova;

namespace {

// A folder of its own per test, removed with everything in it.
class Scratch {
public:
    Scratch() {
        wchar_t temp[MAX_PATH];
        GetTempPathW(MAX_PATH, temp);
        static int n = 0;
        root_ = std::wstring(temp) + L"tova_ops_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++n);
        CreateDirectoryW(root_.c_str(), nullptr);
    }
    ~Scratch() { removeTree(root_); }
    std::wstring operator/(const std::wstring& name) const { return root_ + L"\\" + name; }
    const std::wstring& root() const { return root_; }

    static void removeTree(const std::wstring& path) {
        WIN32_FIND_DATAW fd;
        HANDLE h = FindFirstFileW((path + L"\\*").c_str(), &fd);
        if (h != INVALID_HANDLE_VALUE) {
            do {
                std::wstring name = fd.cFileName;
                if (name == L"." || name == L"..") continue;
                std::wstring child = path + L"\\" + name;
                SetFileAttributesW(child.c_str(), FILE_ATTRIBUTE_NORMAL);
                if ((fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !(fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
                    removeTree(child);
                else if (!DeleteFileW(child.c_str()))
                    RemoveDirectoryW(child.c_str());
            } while (FindNextFileW(h, &fd));
            FindClose(h);
        }
        RemoveDirectoryW(path.c_str());
    }

private:
    std::wstring root_;
};

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
    EXPECT_TRUE(write(s / L"new.txt", "one"));
    EXPECT_EQ("one", readRaw(s / L"new.txt"));
    EXPECT_FALSE(write(s / L"new.txt", "two", false)) << "no overwrite asked";
    EXPECT_TRUE(write(s / L"new.txt", "two"));
    EXPECT_EQ("two", readRaw(s / L"new.txt"));
    EXPECT_TRUE(write(s / L"empty.txt", ""));
    EXPECT_EQ("", readRaw(s / L"empty.txt"));

    SetFileAttributesW((s / L"new.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(write(s / L"new.txt", "three")) << "read-only target";
    SetFileAttributesW((s / L"new.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ("two", readRaw(s / L"new.txt"));
    CreateDirectoryW((s / L"dir").c_str(), nullptr);
    EXPECT_FALSE(write(s / L"dir", "x")) << "a folder is no file";
    EXPECT_FALSE(write(s / L"missing\\x.txt", "x")) << "missing folder";
    EXPECT_FALSE(write(L"", "x"));

    // A target held open without delete sharing cannot be replaced: it stays whole.
    HANDLE held = CreateFileW((s / L"new.txt").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_FALSE(write(s / L"new.txt", "four"));
    CloseHandle(held);
    EXPECT_EQ("two", readRaw(s / L"new.txt"));
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
    const std::wstring target = s / L"kept.txt";
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
