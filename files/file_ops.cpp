#include "file_ops.h"

#include "../frame/errors.h"
#include "../frame/values.h"
#include "long_paths.h"
#include "recycle_bin.h"
#include "safe_write.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace tova {
namespace files {

namespace {

const DWORD kNoAttributes = INVALID_FILE_ATTRIBUTES;

DWORD attributesOf(const std::wstring& p) { return p.empty() ? kNoAttributes : GetFileAttributesW(p.c_str()); }
bool isFile(DWORD a) { return a != kNoAttributes && !(a & FILE_ATTRIBUTE_DIRECTORY); }
bool isFolder(DWORD a) { return a != kNoAttributes && (a & FILE_ATTRIBUTE_DIRECTORY); }
bool isLink(DWORD a) { return a != kNoAttributes && (a & FILE_ATTRIBUTE_REPARSE_POINT); }

std::wstring withoutTrailingSlash(std::wstring p) {
    while (p.size() > 1 && (p.back() == L'\\' || p.back() == L'/') && p[p.size() - 2] != L':') p.pop_back();
    return p;
}
std::wstring parentOf(const std::wstring& p) {
    const size_t slash = p.find_last_of(L'\\');
    return slash == std::wstring::npos ? std::wstring() : p.substr(0, slash);
}
std::wstring nameOf(const std::wstring& p) {
    const size_t slash = p.find_last_of(L'\\');
    return slash == std::wstring::npos ? p : p.substr(slash + 1);
}
bool endsWithSlash(const std::wstring& p) { return !p.empty() && (p.back() == L'\\' || p.back() == L'/'); }

// The path without the \\?\ form, for comparing paths however they were spelt.
std::wstring plain(const std::wstring& p) { return withoutTrailingSlash(callerPath(p, L"")); }

// True when `inner` is `outer` or lies below it.
bool within(const std::wstring& inner, const std::wstring& outer) {
    const std::wstring i = plain(inner), o = plain(outer);
    if (i.size() < o.size() || !sameText(i.substr(0, o.size()), o)) return false;
    return i.size() == o.size() || i[o.size()] == L'\\' || o.back() == L'\\';
}

std::wstring environment(const wchar_t* name) {
    wchar_t buffer[MAX_PATH * 2];
    const DWORD n = GetEnvironmentVariableW(name, buffer, MAX_PATH * 2);
    return n > 0 && n < MAX_PATH * 2 ? apiPath(buffer) : std::wstring();
}

// Drive and share roots, the Windows folder, the user's profile and the folders
// above them: a slip of a script must not empty a disk or a home.
void refuseProtected(const std::wstring& folder) {
    const std::wstring p = plain(folder);
    wchar_t volume[MAX_PATH * 2];
    if (GetVolumePathNameW(folder.c_str(), volume, MAX_PATH * 2) && sameText(plain(volume), p)) raise(kInvalidArgument);
    if (p.size() <= 3 || (p.compare(0, 2, L"\\\\") == 0 && std::count(p.begin() + 2, p.end(), L'\\') <= 1))
        raise(kInvalidArgument);
    wchar_t windows[MAX_PATH];
    const UINT n = GetWindowsDirectoryW(windows, MAX_PATH);
    for (const std::wstring& keep : {n ? std::wstring(windows, n) : std::wstring(), environment(L"USERPROFILE")})
        if (!keep.empty() && within(apiPath(keep), folder)) raise(kInvalidArgument);
}

// A target named by a folder (existing, or ending in a backslash) gets the source's name.
std::wstring fileTarget(const std::wstring& source, const std::wstring& destination) {
    std::wstring d = apiPath(destination);
    if (d.empty()) return d;
    if (endsWithSlash(destination) || isFolder(attributesOf(d))) d = withoutTrailingSlash(d) + L"\\" + nameOf(source);
    return d;
}

bool copyInto(const std::wstring& source, const std::wstring& target, bool overwrite) {
    return replaceWith(target, overwrite, [&](const std::wstring& temp) {
        return CopyFileExW(source.c_str(), temp.c_str(), nullptr, nullptr, nullptr, 0) && flushFile(temp);
    });
}

// A rename that only changes letter case goes through a temporary name: the
// platform may report success and leave the name as it was.
bool renameTo(const std::wstring& from, const std::wstring& to) {
    if (!sameText(from, to)) return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
    if (from == to) return true;
    const std::wstring middle = temporarySibling(parentOf(from), L".ren");
    if (!MoveFileExW(from.c_str(), middle.c_str(), 0)) return false;
    if (MoveFileExW(middle.c_str(), to.c_str(), 0)) return true;
    MoveFileExW(middle.c_str(), from.c_str(), 0);
    return false;
}

bool removeFile(const std::wstring& path, bool force) {
    const DWORD a = attributesOf(path);
    if (a & FILE_ATTRIBUTE_READONLY) {
        if (!force || !SetFileAttributesW(path.c_str(), a & ~FILE_ATTRIBUTE_READONLY)) return false;
    }
    if (DeleteFileW(path.c_str())) return true;
    if (a & FILE_ATTRIBUTE_READONLY) SetFileAttributesW(path.c_str(), a);
    return false;
}

// Calls fn(path, entry) for each entry of `folder` but . and .. (the find
// handle owned: fn may throw).
template <class F>
void forEachEntry(const std::wstring& folder, F fn) {
    WIN32_FIND_DATAW fd;
    FindHandle h(folders::findFirst(folder + L"\\*", fd));
    if (!h.ok()) return;
    do {
        if (!folders::isDots(fd.cFileName)) fn(folder + L"\\" + fd.cFileName, fd);
    } while (FindNextFileW(h.get(), &fd));
}

bool hasReadOnlyItem(const std::wstring& folder) {
    bool found = false;
    forEachEntry(folder, [&](const std::wstring& path, const WIN32_FIND_DATAW& fd) {
        if (found) return;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_READONLY) found = true;
        else if ((fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !(fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
            found = hasReadOnlyItem(path);
    });
    return found;
}

// Deletes a tree; links are removed, never followed.
bool removeTree(const std::wstring& folder, bool force) {
    bool ok = true;
    forEachEntry(folder, [&](const std::wstring& path, const WIN32_FIND_DATAW& fd) {
        const DWORD a = fd.dwFileAttributes;
        if (a & FILE_ATTRIBUTE_DIRECTORY) {
            if (force && (a & FILE_ATTRIBUTE_READONLY)) SetFileAttributesW(path.c_str(), a & ~FILE_ATTRIBUTE_READONLY);
            ok = ((a & FILE_ATTRIBUTE_REPARSE_POINT) ? RemoveDirectoryW(path.c_str()) != 0 : removeTree(path, force)) && ok;
        } else {
            ok = removeFile(path, force) && ok;
        }
    });
    const DWORD a = attributesOf(folder);
    if (force && a != kNoAttributes && (a & FILE_ATTRIBUTE_READONLY))
        SetFileAttributesW(folder.c_str(), a & ~FILE_ATTRIBUTE_READONLY);
    return RemoveDirectoryW(folder.c_str()) && ok;
}

// Copies the tree `source` into the existing folder `target`, files replaced
// safely with `overwrite`; links are skipped.
bool copyTree(const std::wstring& source, const std::wstring& target, bool overwrite) {
    bool ok = true;
    forEachEntry(source, [&](const std::wstring& path, const WIN32_FIND_DATAW& fd) {
        if (!ok || (fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) return;
        const std::wstring to = target + L"\\" + fd.cFileName;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            ok = (isFolder(attributesOf(to)) || CreateDirectoryW(to.c_str(), nullptr)) && copyTree(path, to, overwrite);
        } else {
            ok = copyInto(path, to, overwrite) || (!overwrite && isFile(attributesOf(to)));
        }
    });
    return ok;
}

// A new copy of a tree, built under a temporary sibling name and renamed when
// complete, so that a failure leaves no half copy.
bool copyNewTree(const std::wstring& source, const std::wstring& target) {
    const std::wstring building = temporarySibling(parentOf(target), L"");
    if (!CreateDirectoryW(building.c_str(), nullptr)) return false;
    if (copyTree(source, building, false) && MoveFileExW(building.c_str(), target.c_str(), 0)) return true;
    removeTree(building, true);
    return false;
}

}  // namespace

bool copyFile(const std::wstring& source, const std::wstring& destination, bool overwrite) {
    const std::wstring s = apiPath(source), d = fileTarget(s, destination);
    if (!isFile(attributesOf(s)) || d.empty() || sameText(plain(s), plain(d))) return false;
    return isFolder(attributesOf(parentOf(d))) && copyInto(s, d, overwrite);
}

bool moveFile(const std::wstring& source, const std::wstring& destination, bool overwrite) {
    const std::wstring s = apiPath(source), d = fileTarget(s, destination);
    if (!isFile(attributesOf(s)) || d.empty() || !isFolder(attributesOf(parentOf(d)))) return false;
    if (sameText(plain(s), plain(d))) return renameTo(s, d);
    if (attributesOf(d) == kNoAttributes && MoveFileExW(s.c_str(), d.c_str(), MOVEFILE_WRITE_THROUGH)) return true;
    // Across volumes, or over an existing file: a safe copy, then the source goes.
    return copyInto(s, d, overwrite) && removeFile(s, false);
}

bool renameFile(const std::wstring& path, const std::wstring& newName) {
    const std::wstring p = apiPath(path);
    if (!isFile(attributesOf(p))) return false;
    const std::wstring to = parentOf(p) + L"\\" + newName;
    if (!sameText(plain(p), plain(to)) && attributesOf(to) != kNoAttributes) return false;
    return renameTo(p, to);
}

bool deleteFile(const std::wstring& path, bool toRecycleBin, bool force) {
    const std::wstring p = apiPath(path);
    const DWORD a = attributesOf(p);
    if (!isFile(a)) return false;
    if (toRecycleBin) {
        if ((a & FILE_ATTRIBUTE_READONLY) && !force) return false;
        return recycle({p}) && attributesOf(p) == kNoAttributes;
    }
    return removeFile(p, force);
}

bool createFolder(const std::wstring& path) {
    const std::wstring p = withoutTrailingSlash(apiPath(path, true));
    if (p.empty()) return false;
    const DWORD a = attributesOf(p);
    if (a != kNoAttributes) return isFolder(a);
    const std::wstring parent = parentOf(p);
    if (!parent.empty() && parent != p && attributesOf(parent) == kNoAttributes && !createFolder(parent)) return false;
    return CreateDirectoryW(p.c_str(), nullptr) || isFolder(attributesOf(p));
}

bool renameFolder(const std::wstring& path, const std::wstring& newName) {
    const std::wstring p = withoutTrailingSlash(apiPath(path));
    if (p.empty()) return false;
    refuseProtected(p);
    if (!isFolder(attributesOf(p))) return false;
    const std::wstring to = parentOf(p) + L"\\" + newName;
    if (!sameText(plain(p), plain(to)) && attributesOf(to) != kNoAttributes) return false;
    return renameTo(p, to);
}

bool deleteFolder(const std::wstring& path, bool toRecycleBin, bool force) {
    const std::wstring p = withoutTrailingSlash(apiPath(path));
    if (p.empty()) return false;
    refuseProtected(p);
    const DWORD a = attributesOf(p);
    if (!isFolder(a)) return false;
    if (isLink(a)) return RemoveDirectoryW(p.c_str()) != 0;  // the link, not its target
    if (!force && hasReadOnlyItem(p)) return false;
    if (toRecycleBin) return recycle({p}) && attributesOf(p) == kNoAttributes;
    // Renamed first: the platform refuses while a file inside is open, and then
    // nothing has been deleted yet.
    const std::wstring doomed = temporarySibling(parentOf(p), L"");
    if (!MoveFileExW(p.c_str(), doomed.c_str(), 0)) return false;
    if (removeTree(doomed, force)) return true;
    MoveFileExW(doomed.c_str(), p.c_str(), 0);  // what could not go stays where it was
    return false;
}

bool copyFolder(const std::wstring& source, const std::wstring& destination, bool overwrite) {
    const std::wstring s = withoutTrailingSlash(apiPath(source));
    std::wstring d = apiPath(destination);
    if (s.empty() || d.empty() || !isFolder(attributesOf(s))) return false;
    d = withoutTrailingSlash(d);
    if (endsWithSlash(destination)) d += L"\\" + nameOf(s);
    if (within(d, s)) raise(kInvalidArgument);
    if (!isFolder(attributesOf(parentOf(d)))) return false;
    const DWORD existing = attributesOf(d);
    if (existing == kNoAttributes) return copyNewTree(s, d);
    return isFolder(existing) && overwrite && copyTree(s, d, true);
}

bool moveFolder(const std::wstring& source, const std::wstring& destination) {
    const std::wstring s = withoutTrailingSlash(apiPath(source));
    std::wstring d = apiPath(destination);
    if (s.empty() || d.empty()) return false;
    refuseProtected(s);
    if (!isFolder(attributesOf(s))) return false;
    d = withoutTrailingSlash(d);
    if (endsWithSlash(destination)) d += L"\\" + nameOf(s);
    if (within(d, s)) raise(kInvalidArgument);
    if (attributesOf(d) != kNoAttributes || !isFolder(attributesOf(parentOf(d)))) return false;
    if (MoveFileExW(s.c_str(), d.c_str(), 0)) return true;
    if (GetLastError() != ERROR_NOT_SAME_DEVICE) return false;
    // Another volume: the copy is complete before the source is deleted.
    return copyNewTree(s, d) && removeTree(s, true);
}

long deleteFiles(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool toRecycleBin,
                 bool force) {
    const std::wstring f = withoutTrailingSlash(apiPath(folder));
    if (f.empty()) return 0;
    if (subfolders) refuseProtected(f);
    if (!isFolder(attributesOf(f))) return 0;
    std::vector<std::wstring> doomed;
    std::vector<std::wstring> pending{f};
    while (!pending.empty()) {
        const std::wstring current = pending.back();
        pending.pop_back();
        forEachEntry(current, [&](const std::wstring& path, const WIN32_FIND_DATAW& fd) {
            const DWORD a = fd.dwFileAttributes;
            if (a & FILE_ATTRIBUTE_DIRECTORY) {
                if (subfolders && !(a & FILE_ATTRIBUTE_REPARSE_POINT)) pending.push_back(path);
            } else if (criteria.matches(fd.cFileName, wcslen(fd.cFileName)) && (force || !(a & FILE_ATTRIBUTE_READONLY))) {
                doomed.push_back(path);
            }
        });
    }
    long count = 0;
    if (toRecycleBin) {
        if (doomed.empty() || !recycle(doomed)) return 0;
        for (const std::wstring& p : doomed) count += attributesOf(p) == kNoAttributes;
        return count;
    }
    for (const std::wstring& p : doomed) count += removeFile(p, force);
    return count;
}

}  // namespace files
}  // namespace tova
