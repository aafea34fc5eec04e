#include "file_listing.h"

#include "long_paths.h"

#include "../frame/library_frame.h"

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <memory>

namespace tova {
namespace files {

namespace {

// A string for the result: out of memory is an error, never an empty name.
Bstr text(const wchar_t* s, size_t n) {
    Bstr b(s, n);
    if (!b.get()) raise(kOutOfMemory);
    return b;
}
Bstr text(const std::wstring& s) { return text(s.data(), s.size()); }

struct Entry {
    Bstr name;    // kept as the result's string: a flat listing hands it on without a copy
    FILETIME written;
    bool hit;     // matches the criteria (and is of the kind listed)
    bool enter;   // a subfolder the walk goes into
};

// The listings' order: code units compared ignoring case by the system's
// upper-case table (the order NTFS keeps a folder in), the same in every
// locale; names equal but for case (case-sensitive volumes) by code unit.
// ASCII is compared here: the system is asked only from the first other
// character on, which decides alike since everything before it was equal.
bool before(const Entry& a, const Entry& b) {
    const wchar_t *p = a.name.get(), *q = b.name.get();
    const size_t m = a.name.length(), k = b.name.length(), n = std::min(m, k);
    size_t i = 0;
    for (; i < n; ++i) {
        unsigned x = p[i], y = q[i];
        if (x >= 0x80 || y >= 0x80) break;
        if (x - 'a' < 26) x -= 32;
        if (y - 'a' < 26) y -= 32;
        if (x != y) return x < y;
    }
    const int r = i == n ? (m < k ? CSTR_LESS_THAN : m > k ? CSTR_GREATER_THAN : CSTR_EQUAL)
                         : CompareStringOrdinal(p + i, static_cast<int>(m - i), q + i, static_cast<int>(k - i), TRUE);
    return r == CSTR_EQUAL ? std::wcsncmp(p, q, n + 1) < 0 : r == CSTR_LESS_THAN;
}

// NTFS, and Wine, give a folder in this order already: checking costs a pass.
void sortEntries(std::vector<Entry>& entries) {
    if (!std::is_sorted(entries.begin(), entries.end(), before)) std::sort(entries.begin(), entries.end(), before);
}

std::atomic<Reading> reading{Reading::buffered};

using QueryFolder = BOOL(WINAPI*)(HANDLE, FILE_INFO_BY_HANDLE_CLASS, LPVOID, DWORD);

QueryFolder platformQuery() {
    static const QueryFolder query = reinterpret_cast<QueryFolder>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetFileInformationByHandleEx")));
    return query;
}

// Each query call has a cost of its own (about 50 µs under Wine): a folder
// that fills the first 64 KB is read on a megabyte at a time. Servers that
// refuse a query above 64 KB get 64 KB.
constexpr DWORD kFirstBytes = 64 * 1024, kLaterBytes = 1024 * 1024;

BOOL WINAPI refusingLargeQueries(HANDLE h, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID buffer, DWORD size) {
    if (size <= kFirstBytes) return platformQuery()(h, kind, buffer, size);
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

// Reading a folder's entries by the buffer (Vista on) costs a third less
// than one FindNextFileW call per entry; older systems lack it.
QueryFolder queryFolder() {
    switch (reading.load()) {
    case Reading::entryByEntry: return nullptr;
    case Reading::refusingLargeQueries: return refusingLargeQueries;
    default: return platformQuery();
    }
}

// The queries' buffer, grown and never cleared: a query writes what it gives.
class QueryBuffer {
public:
    BYTE* get(DWORD size) {
        if (size > size_) {
            data_.reset(new LONGLONG[size / sizeof(LONGLONG)]);   // entries are 8-byte aligned
            size_ = size;
        }
        return reinterpret_cast<BYTE*>(data_.get());
    }

private:
    std::unique_ptr<LONGLONG[]> data_;
    DWORD size_ = 0;
};

// Calls take(name, length, attributes, last write) for every entry of
// `folder` (ending in \), dots included. False when it cannot be read.
template <class Take>
bool readEntries(const std::wstring& folder, QueryBuffer& buffer, Take&& take) {
    if (QueryFolder query = queryFolder()) {
        HANDLE raw = CreateFileW(folder.c_str(), FILE_LIST_DIRECTORY | SYNCHRONIZE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (raw == INVALID_HANDLE_VALUE) return false;
        ObjectHandle h(raw);
        DWORD size = kFirstBytes, largest = kLaterBytes;
        FILE_INFO_BY_HANDLE_CLASS kind = FileIdBothDirectoryRestartInfo;
        for (;;) {
            BYTE* const start = buffer.get(size);
            if (!query(h.get(), kind, start, size)) {
                if (size == kFirstBytes || GetLastError() != ERROR_INVALID_PARAMETER) break;
                size = largest = kFirstBytes;
                continue;
            }
            kind = FileIdBothDirectoryInfo;
            const BYTE* bytes = start;
            for (;;) {
                auto* e = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(bytes);
                take(e->FileName, e->FileNameLength / sizeof(wchar_t), e->FileAttributes,
                     FILETIME{e->LastWriteTime.LowPart, static_cast<DWORD>(e->LastWriteTime.HighPart)});
                if (!e->NextEntryOffset) {
                    // Full when the longest entry would not have fitted after this one.
                    const size_t used = bytes - start + sizeof(FILE_ID_BOTH_DIR_INFO) + e->FileNameLength;
                    if (used + sizeof(FILE_ID_BOTH_DIR_INFO) + 255 * sizeof(wchar_t) + 8 > size) size = largest;
                    break;
                }
                bytes += e->NextEntryOffset;
            }
        }
        // The end of the entries; only an empty root has none at all (no . and ..).
        // Anything else on the first call (a file, say) is a folder that cannot be read.
        const DWORD end = GetLastError();
        return end == ERROR_NO_MORE_FILES || end == ERROR_FILE_NOT_FOUND || kind == FileIdBothDirectoryInfo;
    }
    WIN32_FIND_DATAW fd;
    FindHandle h(folders::findFirst(folder + L'*', fd));
    if (!h.ok()) {
        if (GetLastError() != ERROR_FILE_NOT_FOUND) return false;
        const DWORD a = GetFileAttributesW(folder.c_str());
        return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
    }
    do take(fd.cFileName, std::wcslen(fd.cFileName), fd.dwFileAttributes, fd.ftLastWriteTime);
    while (FindNextFileW(h.get(), &fd));
    return true;
}

enum class Kind { files, folders };

// Reads one folder: the files wanted into `files`, its subfolders (those
// listed or entered) into `subfolders`. False when it cannot be read.
bool readFolder(const std::wstring& folder, const folders::Criteria& criteria, Kind kind, bool deep,
                QueryBuffer& buffer, std::vector<Entry>& files, std::vector<Entry>& subfolders) {
    return readEntries(folder, buffer, [&](const wchar_t* name, size_t length, DWORD attributes, FILETIME written) {
        if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
            if (folders::isDots(name, length)) return;
            const bool hit = kind == Kind::folders && criteria.matches(name, length);
            // Links are listed, never entered: one pointing up the tree would never end.
            const bool enter = deep && !(attributes & FILE_ATTRIBUTE_REPARSE_POINT);
            if (hit || enter) subfolders.push_back({text(name, length), written, hit, enter});
        } else if (kind == Kind::files && criteria.matches(name, length)) {
            files.push_back({text(name, length), written, true, false});
        }
    });
}

// Walks `base` (a folder path ending in \) in sorted pre-order, calling
// visit(relative folder, entry) for every entry listed (the folder "" or
// ending in \; the entry's name may be taken): a folder's files before
// its subfolders' files; a subfolder before its own subfolders. An explicit
// stack, since a tree can be deeper than the thread's stack allows. False when
// `base` itself cannot be read; unreadable subfolders are skipped.
template <class Visit>
bool walk(const std::wstring& base, const folders::Criteria& criteria, Kind kind, bool deep, Visit&& visit) {
    // Subfolders waiting, named by their path relative to base; base itself first.
    std::vector<Entry> stack;
    stack.push_back({Bstr(), FILETIME{}, false, true});
    bool top = true;
    std::vector<Entry> files, subfolders;
    QueryBuffer buffer;
    while (!stack.empty()) {
        Entry folder = std::move(stack.back());
        stack.pop_back();
        const std::wstring relative = folder.name.length() ? folder.name.str() + L'\\' : std::wstring();
        if (folder.hit) visit(std::wstring(), folder);   // may take the name
        if (!folder.enter) continue;
        files.clear();
        subfolders.clear();
        const bool read = readFolder(base + relative, criteria, kind, deep, buffer, files, subfolders);
        if (top && !read) return false;
        top = false;
        sortEntries(files);
        for (Entry& f : files) visit(relative, f);
        sortEntries(subfolders);
        for (auto d = subfolders.rbegin(); d != subfolders.rend(); ++d) {
            if (!relative.empty()) d->name = text(relative + d->name.str());
            stack.push_back(std::move(*d));
        }
    }
    return true;
}

// The qualified folder in the \\?\ form, ending in \; empty when `folder` names none.
std::wstring walkBase(const std::wstring& folder) {
    std::wstring base = extendedPath(apiPath(folder));
    if (!base.empty() && base.back() != L'\\') base += L'\\';
    return base;
}

bool list(const std::wstring& folder, const folders::Criteria& criteria, Kind kind, bool subfolders, bool fullPaths,
          std::vector<Bstr>& out) {
    const std::wstring base = walkBase(folder);
    if (base.empty()) return false;
    return walk(base, criteria, kind, subfolders, [&](const std::wstring& relative, Entry& e) {
        if (fullPaths) out.push_back(text(callerPath(base + relative + e.name.str(), folder)));
        else if (relative.empty()) out.push_back(std::move(e.name));
        else out.push_back(text(relative + e.name.str()));
    });
}

}  // namespace

bool listFiles(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
               std::vector<Bstr>& out) {
    return list(folder, criteria, Kind::files, subfolders, fullPaths, out);
}

bool listSubfolders(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
                    std::vector<Bstr>& out) {
    return list(folder, criteria, Kind::folders, subfolders, fullPaths, out);
}

std::wstring newestFile(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders) {
    const std::wstring base = walkBase(folder);
    if (base.empty()) return {};
    std::wstring newest;
    FILETIME latest{};
    bool found = false;
    // Later in listing order wins only when written strictly later: ties go by name.
    walk(base, criteria, Kind::files, subfolders, [&](const std::wstring& relative, const Entry& e) {
        if (!found || CompareFileTime(&e.written, &latest) > 0) {
            newest = relative + e.name.str();
            latest = e.written;
            found = true;
        }
    });
    return found ? callerPath(base + newest, folder) : std::wstring();
}

void readFoldersForTests(Reading how) { reading = how; }

}  // namespace files
}  // namespace tova
