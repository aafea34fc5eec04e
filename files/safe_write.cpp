#include "safe_write.h"

#include "long_paths.h"

#include <windows.h>


namespace tova {
namespace files {

namespace detail {

ReplaceCalls& replaceCalls() {
    static ReplaceCalls calls = {&::ReplaceFileW, &::MoveFileExW};
    return calls;
}

}  // namespace detail

namespace {

std::wstring folderOf(const std::wstring& path) {
    const size_t slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring(L".") : path.substr(0, slash);
}

// The temporary file: created empty (CREATE_NEW reserves the name), removed
// by the destructor unless it has taken the target's place.
class TempFile {
public:
    explicit TempFile(const std::wstring& folder) {
        for (int attempt = 0; attempt < 16 && path_.empty(); ++attempt) {
            std::wstring name = temporarySibling(folder, L".tmp");
            HANDLE h = CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
            if (h != INVALID_HANDLE_VALUE) {
                CloseHandle(h);
                path_ = name;
            } else if (GetLastError() != ERROR_FILE_EXISTS && GetLastError() != ERROR_ALREADY_EXISTS) {
                break;
            }
        }
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() {
        if (path_.empty()) return;
        SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(path_.c_str());
    }
    const std::wstring& path() const { return path_; }
    void release() { path_.clear(); }

private:
    std::wstring path_;
};

bool writeAll(const std::wstring& path, const void* data, size_t size) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return false;
    const char* p = static_cast<const char*>(data);
    bool ok = true;
    while (ok && size > 0) {
        const DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size);
        DWORD written = 0;
        ok = WriteFile(h, p, chunk, &written, nullptr) && written == chunk;
        p += chunk;
        size -= chunk;
    }
    ok = ok && FlushFileBuffers(h);
    return CloseHandle(h) && ok;
}

// Flushes a temporary file that `fill` wrote by other means (a copy).
bool flush(const std::wstring& path) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) return false;
    const bool ok = FlushFileBuffers(h) != 0;
    return CloseHandle(h) && ok;
}

// Puts `temp` in place of the existing `target`, whose content stays whole
// whatever fails.
bool swapIn(const std::wstring& target, TempFile& temp) {
    const detail::ReplaceCalls& calls = detail::replaceCalls();
    const std::wstring backup = temporarySibling(folderOf(target), L".bak");
    if (calls.replaceFile(target.c_str(), temp.path().c_str(), backup.c_str(), REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                          nullptr)) {
        temp.release();  // it is the target now
        DeleteFileW(backup.c_str());
        return true;
    }
    switch (GetLastError()) {
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT:  // 1176: both kept their names
    case ERROR_UNABLE_TO_REMOVE_REPLACED:
        return false;
    case ERROR_UNABLE_TO_MOVE_REPLACEMENT_2:  // 1177: the target is under the backup name
        calls.moveFile(backup.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH);
        return false;
    default:
        break;
    }
    // Volumes that refuse ReplaceFileW: two renames, undone if the second fails.
    if (!calls.moveFile(target.c_str(), backup.c_str(), MOVEFILE_WRITE_THROUGH)) return false;
    if (!calls.moveFile(temp.path().c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH)) {
        calls.moveFile(backup.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH);
        return false;
    }
    temp.release();
    SetFileAttributesW(backup.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(backup.c_str());
    return true;
}

}  // namespace

std::wstring temporarySibling(const std::wstring& folder, const wchar_t* suffix) {
    return folder + L"\\~tova" + uniqueDigits() + suffix;
}

bool replaceWith(const std::wstring& target, bool overwrite, const std::function<bool(const std::wstring&)>& fill) {
    if (target.empty()) return false;
    WIN32_FILE_ATTRIBUTE_DATA existing;
    const bool exists = GetFileAttributesExW(target.c_str(), GetFileExInfoStandard, &existing) != 0;
    // Checked here, not left to the platform: an administrator (and root under
    // Wine) may open a read-only file for writing.
    if (exists && (!overwrite || (existing.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY))))
        return false;
    TempFile temp(folderOf(target));
    if (temp.path().empty() || !fill(temp.path())) return false;
    if (!exists) {
        // Without replacing: a file that appeared meanwhile survives.
        if (!detail::replaceCalls().moveFile(temp.path().c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH)) return false;
        temp.release();
        return true;
    }
    return swapIn(target, temp);
}

bool writeWholeFile(const std::wstring& target, const void* data, size_t size, bool overwrite) {
    return replaceWith(target, overwrite, [&](const std::wstring& temp) { return writeAll(temp, data, size); });
}

bool flushFile(const std::wstring& path) { return flush(path); }

}  // namespace files
}  // namespace tova
