#include "file_listing.h"

#include "long_paths.h"

#include <algorithm>
#include <cwchar>

namespace tova {
namespace files {

namespace {

struct Entry {
    std::wstring name;
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
    const wchar_t *p = a.name.data(), *q = b.name.data();
    const size_t n = std::min(a.name.size(), b.name.size());
    size_t i = 0;
    for (; i < n; ++i) {
        unsigned x = p[i], y = q[i];
        if (x >= 0x80 || y >= 0x80) break;
        if (x - 'a' < 26) x -= 32;
        if (y - 'a' < 26) y -= 32;
        if (x != y) return x < y;
    }
    const int r = i == n ? (a.name.size() < b.name.size() ? CSTR_LESS_THAN : a.name.size() > b.name.size() ? CSTR_GREATER_THAN : CSTR_EQUAL)
                         : CompareStringOrdinal(p + i, static_cast<int>(a.name.size() - i), q + i,
                                                static_cast<int>(b.name.size() - i), TRUE);
    return r == CSTR_EQUAL ? a.name < b.name : r == CSTR_LESS_THAN;
}

enum class Kind { files, folders };

// Reads one folder: the files wanted into `files`, its subfolders (those
// listed or entered) into `subfolders`. False when it cannot be read.
bool readFolder(const std::wstring& pattern, const folders::Criteria& criteria, Kind kind, bool deep,
                std::vector<Entry>& files, std::vector<Entry>& subfolders) {
    WIN32_FIND_DATAW fd;
    FindHandle h(folders::findFirst(pattern, fd));
    if (!h.ok()) {
        // Only an empty root has no entries at all; every other folder lists . and ..
        if (GetLastError() != ERROR_FILE_NOT_FOUND) return false;
        const DWORD a = GetFileAttributesW(pattern.substr(0, pattern.size() - 1).c_str());
        return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
    }
    do {
        const size_t length = std::wcslen(fd.cFileName);
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            if (folders::isDots(fd.cFileName)) continue;
            const bool hit = kind == Kind::folders && criteria.matches(fd.cFileName, length);
            // Links are listed, never entered: one pointing up the tree would never end.
            const bool enter = deep && !(fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT);
            if (hit || enter) subfolders.push_back({std::wstring(fd.cFileName, length), fd.ftLastWriteTime, hit, enter});
        } else if (kind == Kind::files && criteria.matches(fd.cFileName, length)) {
            files.push_back({std::wstring(fd.cFileName, length), fd.ftLastWriteTime, true, false});
        }
    } while (FindNextFileW(h.get(), &fd));
    return true;
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
    std::vector<Entry> stack{Entry{std::wstring(), FILETIME{}, false, true}};
    bool top = true;
    std::vector<Entry> files, subfolders;
    while (!stack.empty()) {
        Entry folder = std::move(stack.back());
        stack.pop_back();
        const std::wstring relative = folder.name.empty() ? folder.name : folder.name + L'\\';
        if (folder.hit) visit(std::wstring(), folder);   // may take the name
        if (!folder.enter) continue;
        files.clear();
        subfolders.clear();
        const bool read = readFolder(base + relative + L'*', criteria, kind, deep, files, subfolders);
        if (top && !read) return false;
        top = false;
        std::sort(files.begin(), files.end(), before);
        for (Entry& f : files) visit(relative, f);
        std::sort(subfolders.begin(), subfolders.end(), before);
        for (auto d = subfolders.rbegin(); d != subfolders.rend(); ++d) {
            d->name.insert(0, relative);
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
          std::vector<std::wstring>& out) {
    const std::wstring base = walkBase(folder);
    if (base.empty()) return false;
    return walk(base, criteria, kind, subfolders, [&](const std::wstring& relative, Entry& e) {
        if (fullPaths) out.push_back(callerPath(base + relative + e.name, folder));
        else if (relative.empty()) out.push_back(std::move(e.name));
        else out.push_back(relative + e.name);
    });
}

}  // namespace

bool listFiles(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
               std::vector<std::wstring>& out) {
    return list(folder, criteria, Kind::files, subfolders, fullPaths, out);
}

bool listSubfolders(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
                    std::vector<std::wstring>& out) {
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
            newest = relative + e.name;
            latest = e.written;
            found = true;
        }
    });
    return found ? callerPath(base + newest, folder) : std::wstring();
}

}  // namespace files
}  // namespace tova
