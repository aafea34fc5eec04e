// Fixtures of the FileMethods tests, made with raw Win32 calls only: a
// scratch folder per test, files of given bytes, the FileMethods object.
#pragma once

#include "support.h"

#include <string>

namespace test {

// A folder of its own under the temporary folder, removed with its contents
// (also beyond the classic length limit) when the test ends, with helpers
// that make and read its files.
class FileScratch {
public:
    explicit FileScratch(const wchar_t* tag) {
        static int serial = 0;
        wchar_t temp[MAX_PATH + 1];
        const DWORD n = GetTempPathW(MAX_PATH + 1, temp);
        root_ = std::wstring(temp, n) + tag + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++serial);
        removeTree(long_(root_));   // a crashed run's, under a reused process id
        CreateDirectoryW(root_.c_str(), nullptr);
    }
    ~FileScratch() { removeTree(long_(root_)); }
    FileScratch(const FileScratch&) = delete;
    FileScratch& operator=(const FileScratch&) = delete;

    const std::wstring& root() const { return root_; }
    std::wstring operator/(const std::wstring& relative) const { return root_ + L"\\" + relative; }

    FileScratch& folder(const std::wstring& relative) {
        EXPECT_TRUE(CreateDirectoryW(long_(*this / relative).c_str(), nullptr));
        return *this;
    }
    FileScratch& file(const std::wstring& relative, const std::string& bytes = std::string(),
                  DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
        HANDLE h = CreateFileW(long_(*this / relative).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes,
                               nullptr);
        EXPECT_NE(INVALID_HANDLE_VALUE, h);
        DWORD written = 0;
        if (h != INVALID_HANDLE_VALUE) {
            if (!bytes.empty()) WriteFile(h, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
            CloseHandle(h);
        }
        return *this;
    }
    // The bytes of a file, or "<missing>".
    std::string bytes(const std::wstring& relative) const {
        HANDLE h = CreateFileW(long_(*this / relative).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                               nullptr);
        if (h == INVALID_HANDLE_VALUE) return "<missing>";
        LARGE_INTEGER size{};
        GetFileSizeEx(h, &size);
        std::string s(static_cast<size_t>(size.QuadPart), '\0');
        DWORD got = 0;
        if (!s.empty()) ReadFile(h, &s[0], static_cast<DWORD>(s.size()), &got, nullptr);
        CloseHandle(h);
        return s.substr(0, got);
    }
    // Names in the scratch folder starting with `prefix` (leftovers of a write).
    int count(const std::wstring& prefix) const {
        int n = 0;
        WIN32_FIND_DATAW fd;
        HANDLE h = FindFirstFileW((root_ + L"\\" + prefix + L"*").c_str(), &fd);
        if (h == INVALID_HANDLE_VALUE) return 0;
        do ++n;
        while (FindNextFileW(h, &fd));
        FindClose(h);
        return n;
    }

    static std::wstring long_(const std::wstring& path) { return L"\\\\?\\" + path; }

private:
    std::wstring root_;
};

inline ComPtr<_FileMethods> fileMethods() { return create<_FileMethods>(CLSID_FileMethods, IID__FileMethods); }

}  // namespace test
