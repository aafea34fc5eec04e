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
bool before(const Entry& a, const Entry& b) {
    const int r = CompareStringOrdinal(a.name.data(), static_cast<int>(a.name.size()), b.name.data(),
                                       static_cast<int>(b.name.size()), TRUE);
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
// visit(relative name, entry) for every entry listed: a folder's files before
// its subfolders' files; a subfolder before its own subfolders. An explicit
// stack, since a tree can be deeper than the thread's stack allows. False when
// `base` itself cannot be read; unreadable subfolders are skipped.
template <class Visit>
bool walk(const std::wstring& base, const folders::Criteria& criteria, Kind kind, bool deep, Visit&& visit) {
    struct Pending {
        std::wstring relative;   // "" for base, else ending in \ when entered
        Entry entry;
    };
    std::vector<Pending> stack;
    stack.push_back({std::wstring(), Entry{std::wstring(), FILETIME{}, false, true}});
    bool top = true;
    std::vector<Entry> files, subfolders;
    while (!stack.empty()) {
        Pending p = std::move(stack.back());
        stack.pop_back();
        if (p.entry.hit) visit(p.relative, p.entry);
        if (!p.entry.enter) continue;
        if (!p.relative.empty()) p.relative += L'\\';
        files.clear();
        subfolders.clear();
        const bool read = readFolder(base + p.relative + L'*', criteria, kind, deep, files, subfolders);
        if (top && !read) return false;
        top = false;
        std::sort(files.begin(), files.end(), before);
        for (const Entry& f : files) visit(p.relative + f.name, f);
        std::sort(subfolders.begin(), subfolders.end(), before);
        for (auto d = subfolders.rbegin(); d != subfolders.rend(); ++d)
            stack.push_back({p.relative + d->name, std::move(*d)});
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
    return walk(base, criteria, kind, subfolders, [&](const std::wstring& relative, const Entry&) {
        out.push_back(fullPaths ? callerPath(base + relative, folder) : relative);
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
            newest = relative;
            latest = e.written;
            found = true;
        }
    });
    return found ? callerPath(base + newest, folder) : std::wstring();
}

}  // namespace files
}  // namespace tova
