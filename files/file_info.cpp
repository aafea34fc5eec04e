#include "file_info.h"

#include "../frame/library_frame.h"
#include "folder_walk.h"
#include "long_paths.h"

#include <cmath>
#include <vector>

namespace tova {
namespace files {

namespace {

// The attribute record of what `path` names; false for nothing, devices included
// (GetFileAttributesExW answers for NUL).
bool lookUp(const std::wstring& path, WIN32_FILE_ATTRIBUTE_DATA& data) {
    const std::wstring p = apiPath(path);
    return !p.empty() && !isDevicePath(p) && GetFileAttributesExW(p.c_str(), GetFileExInfoStandard, &data);
}

bool isFolder(const WIN32_FILE_ATTRIBUTE_DATA& d) { return (d.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

double bytes(DWORD high, DWORD low) { return static_cast<double>((static_cast<ULONGLONG>(high) << 32) | low); }

// ------------------------------------------------------------------ dates

// The proleptic Gregorian date `z` days from 1970-01-01.
void civilFromDays(long long z, SYSTEMTIME& st) {
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned m = mp + (mp < 10 ? 3 : -9);
    st.wYear = static_cast<WORD>(static_cast<long long>(yoe) + era * 400 + (m <= 2));
    st.wMonth = static_cast<WORD>(m);
    st.wDay = static_cast<WORD>(doy - (153 * mp + 2) / 5 + 1);
}

const long long kDateEpoch = -25569;  // 1899-12-30, the Date 0, in days from 1970-01-01
const double kMsPerDay = 86400000.0;

// SystemTimeToVariantTime and back drop the milliseconds: they are added
// here. Whole seconds convert as the system does, so that a date read back
// equals the script's literal it was set from. Before 1899-12-30 the time of
// day counts away from zero: -1.25 is 1899-12-29 06:00.
DATE toDate(const SYSTEMTIME& st) {
    SYSTEMTIME whole = st;
    whole.wMilliseconds = 0;
    DATE d = 0;
    if (!SystemTimeToVariantTime(&whole, &d)) return 0;
    const double ms = st.wMilliseconds / kMsPerDay;
    return d >= 0 ? d + ms : d - ms;
}

bool fromDate(DATE d, SYSTEMTIME& st) {
    // The automation Date range, 100-01-01 to 9999-12-31.
    if (!(d > -657435.0 && d < 2958466.0)) return false;
    long long day = static_cast<long long>(d);  // toward zero
    long long ms = std::llround(std::fabs(d - static_cast<double>(day)) * kMsPerDay);
    if (ms >= 86400000) { ms -= 86400000; ++day; }
    civilFromDays(day + kDateEpoch, st);
    st.wDayOfWeek = 0;
    st.wHour = static_cast<WORD>(ms / 3600000);
    st.wMinute = static_cast<WORD>(ms / 60000 % 60);
    st.wSecond = static_cast<WORD>(ms / 1000 % 60);
    st.wMilliseconds = static_cast<WORD>(ms % 1000);
    return true;
}

// The local time of a file time by the daylight rule of its own day.
DATE localDate(const FILETIME& ft) {
    SYSTEMTIME utc, local;
    if (!FileTimeToSystemTime(&ft, &utc) || !SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) return 0;
    return toDate(local);
}

bool fileTime(DATE localDate, FILETIME& ft) {
    SYSTEMTIME local, utc;
    return fromDate(localDate, local) && TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) &&
           SystemTimeToFileTime(&utc, &ft);
}

// ------------------------------------------------------------ attributes

const DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                        FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
                        FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

bool writeAttributes(const std::wstring& apiForm, DWORD bits) {
    bits &= kSettable;
    return SetFileAttributesW(apiForm.c_str(), bits ? bits : FILE_ATTRIBUTE_NORMAL) != 0;
}

// ---------------------------------------------------------------- names

// Creates Prefix + 8 hex digits + Suffix in `folder` by `make`, which answers
// true when made and leaves ERROR_FILE_EXISTS or ERROR_ALREADY_EXISTS when the
// name is taken; another name is tried then. The new path, or "".
template <class Make>
std::wstring createUnique(const std::wstring& folder, const std::wstring& prefix, const std::wstring& suffix,
                          Make make) {
    const std::wstring parent = folder.empty() ? tempFolder() : folder;
    const std::wstring api = apiPath(parent);
    if (api.empty() || !folderExists(parent)) return {};
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::wstring path = apiChild(api, prefix + uniqueDigits() + suffix);
        if (make(path)) return callerPath(path, parent);
        const DWORD e = GetLastError();
        if (e != ERROR_FILE_EXISTS && e != ERROR_ALREADY_EXISTS) return {};
    }
    return {};
}

}  // namespace

// ------------------------------------------------------ existence and state

bool fileExists(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    return lookUp(path, d) && !isFolder(d);
}

bool folderExists(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    return lookUp(path, d) && isFolder(d);
}

bool isFolderEmpty(const std::wstring& path) {
    if (!folderExists(path)) return false;
    WIN32_FIND_DATAW fd;
    FindHandle h(folders::findFirst(apiChild(apiPath(path), L"*"), fd));
    if (!h.ok()) return GetLastError() == ERROR_FILE_NOT_FOUND;  // a root without entries
    do {
        if (!folders::isDots(fd.cFileName)) return false;
    } while (FindNextFileW(h.get(), &fd));
    return true;
}

bool isFileInUse(const std::wstring& path) {
    if (!fileExists(path)) return false;
    // Reading is allowed for read-only files too; share mode 0 conflicts with any open handle.
    FileHandle h(CreateFileW(apiPath(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                             nullptr));
    if (h.ok()) return false;
    const DWORD e = GetLastError();
    return e == ERROR_SHARING_VIOLATION || e == ERROR_LOCK_VIOLATION;
}

// ------------------------------------------------ size, dates, attributes

double fileSize(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    return lookUp(path, d) && !isFolder(d) ? bytes(d.nFileSizeHigh, d.nFileSizeLow) : -1;
}

double folderSize(const std::wstring& path, bool subfolders) {
    if (!folderExists(path)) return -1;
    // A list of folders still to read rather than recursion: depth is bounded
    // only by the path length.
    std::vector<std::wstring> pending{apiPath(path)};
    double total = 0;
    bool first = true;
    while (!pending.empty()) {
        const std::wstring folder = std::move(pending.back());
        pending.pop_back();
        WIN32_FIND_DATAW fd;
        FindHandle h(folders::findFirst(apiChild(folder, L"*"), fd));
        if (!h.ok()) {
            if (first && GetLastError() != ERROR_FILE_NOT_FOUND) return -1;
            first = false;
            continue;  // unreadable subfolders are skipped
        }
        first = false;
        do {
            if (folders::isDots(fd.cFileName)) continue;
            if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) total += bytes(fd.nFileSizeHigh, fd.nFileSizeLow);
            else if (subfolders && !(fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
                pending.push_back(apiChild(folder, fd.cFileName));
        } while (FindNextFileW(h.get(), &fd));
    }
    return total;
}

DATE fileDate(const std::wstring& path, long which) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    if (!lookUp(path, d)) return 0;
    return localDate(which == 1 ? d.ftCreationTime : which == 2 ? d.ftLastAccessTime : d.ftLastWriteTime);
}

bool setFileDate(const std::wstring& path, DATE date, long which) {
    FILETIME ft;
    WIN32_FILE_ATTRIBUTE_DATA d;
    if (!lookUp(path, d) || !fileTime(date, ft)) return false;
    // Writing attributes is allowed on read-only files; backup semantics open folders.
    FileHandle h(CreateFileW(apiPath(path).c_str(), FILE_WRITE_ATTRIBUTES,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                             FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return h.ok() && SetFileTime(h.get(), which & 1 ? &ft : nullptr, which & 2 ? &ft : nullptr,
                                 which & 4 ? &ft : nullptr);
}

long attributes(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    return lookUp(path, d) ? static_cast<long>(d.dwFileAttributes) : -1;
}

bool setAttributes(const std::wstring& path, long bits) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    return lookUp(path, d) && writeAttributes(apiPath(path), static_cast<DWORD>(bits));
}

bool setAttributeBit(const std::wstring& path, DWORD bit, bool on) {
    WIN32_FILE_ATTRIBUTE_DATA d;
    if (!lookUp(path, d)) return false;
    return writeAttributes(apiPath(path), on ? d.dwFileAttributes | bit : d.dwFileAttributes & ~bit);
}

// ------------------------------------------------ temporary and unique names

std::wstring tempFolder() {
    DWORD n = GetTempPathW(0, nullptr);
    if (n == 0) return {};
    std::wstring path(n, L'\0');
    n = GetTempPathW(n, &path[0]);
    if (n == 0 || n >= path.size()) return {};
    path.resize(n);
    // Keep the backslash of a root: "C:" alone is the current folder of C.
    if (path.size() > 3 && path.back() == L'\\') path.pop_back();
    if (!folderExists(path)) CreateDirectoryW(apiPath(path, true).c_str(), nullptr);
    return folderExists(path) ? path : std::wstring();
}

std::wstring createTempFile(const std::wstring& prefix, const std::wstring& extension, const std::wstring& folder) {
    // A leading dot of the extension is the one the name gets; no extension, no dot.
    const std::wstring ext = !extension.empty() && extension[0] == L'.' ? extension.substr(1) : extension;
    return createUnique(folder, prefix, ext.empty() ? ext : L"." + ext, [](const std::wstring& path) {
        FileHandle h(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        return h.ok();
    });
}

std::wstring createTempFolder(const std::wstring& prefix, const std::wstring& parent) {
    return createUnique(parent, prefix, L"", [](const std::wstring& path) {
        return CreateDirectoryW(path.c_str(), nullptr) != 0;
    });
}

std::wstring uniqueFileName(const std::wstring& path) {
    const size_t start = nameStart(path);
    const std::wstring api = apiPath(path);
    if (start == path.size() || api.empty() || isDevicePath(api)) return {};
    std::wstring folder = api.substr(0, nameStart(api));
    if (folder.size() > 3 && folder[folder.size() - 2] != L':') folder.pop_back();  // C:\ keeps its backslash
    if (!folderExists(folder)) return {};
    auto free = [](const std::wstring& candidate) {
        WIN32_FILE_ATTRIBUTE_DATA d;
        if (GetFileAttributesExW(apiPath(candidate).c_str(), GetFileExInfoStandard, &d)) return false;
        const DWORD e = GetLastError();
        return e == ERROR_FILE_NOT_FOUND || e == ERROR_PATH_NOT_FOUND;
    };
    if (free(path)) return path;
    // Title and extension as ChangeFileExtension splits them: a leading dot starts none.
    size_t dot = path.find_last_of(L'.');
    if (dot == std::wstring::npos || dot <= start) dot = path.size();
    const std::wstring title = path.substr(0, dot), extension = path.substr(dot);
    for (int i = 2; i <= 9999; ++i) {
        std::wstring candidate = title + L" (" + std::to_wstring(i) + L")" + extension;
        if (free(candidate)) return candidate;
    }
    return {};
}

}  // namespace files
}  // namespace tova
