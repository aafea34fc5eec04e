#include "path_forms.h"

#include "../frame/library_frame.h"
#include "folder_walk.h"
#include "long_paths.h"

#include <vector>

namespace tova {
namespace files {

namespace {

bool isSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

bool isLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// X:\ or X:/, or a UNC or \\?\ path: no folder needed to place it.
bool fullyQualified(const std::wstring& p) {
    return (p.size() >= 3 && isLetter(p[0]) && p[1] == L':' && isSeparator(p[2])) ||
           (p.size() >= 2 && isSeparator(p[0]) && isSeparator(p[1]));
}

// A qualified path without the \\?\ prefix, split into its root (C:\ or
// \\server\share\) and its components.
struct Split {
    std::wstring root;
    std::vector<std::wstring> parts;
};

Split split(const std::wstring& path) {
    Split s;
    std::wstring p = callerPath(qualified(path), L"");
    size_t i = 0;
    if (p.size() >= 3 && p[1] == L':') i = 3;
    else if (p.compare(0, 2, L"\\\\") == 0) {
        i = p.find(L'\\', 2);
        i = i == std::wstring::npos ? p.size() : p.find(L'\\', i + 1);
        i = i == std::wstring::npos ? p.size() : i + 1;
    } else {
        return s;
    }
    s.root = p.substr(0, i);
    while (i < p.size()) {
        size_t next = p.find(L'\\', i);
        if (next == std::wstring::npos) next = p.size();
        if (next > i) s.parts.push_back(p.substr(i, next - i));
        i = next + 1;
    }
    return s;
}

// GetShortPathNameW or GetLongPathNameW of an existing path, in the caller's form.
template <DWORD(WINAPI* Convert)(LPCWSTR, LPWSTR, DWORD)>
std::wstring converted(const std::wstring& path) {
    const std::wstring api = apiPath(path);
    if (api.empty() || isDevicePath(api)) return {};
    DWORD n = Convert(api.c_str(), nullptr, 0);
    if (n == 0) return {};
    std::wstring out(n, L'\0');
    n = Convert(api.c_str(), &out[0], n);
    if (n == 0 || n >= out.size()) return {};
    out.resize(n);
    return callerPath(out, path);
}

bool isDeviceName(const std::wstring& name) {
    // The part before the first dot, trailing spaces ignored, as Windows reads it.
    std::wstring base = name.substr(0, name.find(L'.'));
    while (!base.empty() && base.back() == L' ') base.pop_back();
    static const wchar_t* const kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
    for (const wchar_t* d : kDevices)
        if (sameText(base, d)) return true;
    return base.size() == 4 && (sameText(base.substr(0, 3), L"COM") || sameText(base.substr(0, 3), L"LPT")) &&
           base[3] >= L'1' && base[3] <= L'9';
}

}  // namespace

std::wstring combinePath(const std::wstring& path, const std::wstring& more) {
    if (fullyQualified(more) || path.empty()) return more;
    size_t end = path.find_last_not_of(L"\\/");
    if (end == std::wstring::npos) return L"\\" + more.substr(std::min(more.find_first_not_of(L"\\/"), more.size()));
    const std::wstring head = path.substr(0, end + 1);
    const std::wstring tail = more.substr(std::min(more.find_first_not_of(L"\\/"), more.size()));
    // "C:" + "x" stays drive-relative, as the scripting object builds it.
    if (head == path && head.size() == 2 && head[1] == L':') return head + tail;
    return head + L"\\" + tail;
}

std::wstring fullPath(const std::wstring& path) { return qualified(path); }

std::wstring relativePath(const std::wstring& fromFolder, const std::wstring& toPath) {
    const Split from = split(fromFolder), to = split(toPath);
    if (from.root.empty() || to.root.empty() || !sameText(from.root, to.root)) return {};
    size_t common = 0;
    while (common < from.parts.size() && common < to.parts.size() && sameText(from.parts[common], to.parts[common]))
        ++common;
    std::wstring out;
    for (size_t i = common; i < from.parts.size(); ++i) out += out.empty() ? L".." : L"\\..";
    for (size_t i = common; i < to.parts.size(); ++i) out += (out.empty() ? L"" : L"\\") + to.parts[i];
    return out.empty() ? L"." : out;
}

std::wstring shortPath(const std::wstring& path) { return converted<GetShortPathNameW>(path); }

std::wstring longPath(const std::wstring& path) { return converted<GetLongPathNameW>(path); }

std::wstring canonicalPath(const std::wstring& path, bool resolveLinks) {
    const std::wstring api = apiPath(path);
    if (api.empty() || isDevicePath(api)) return {};
    if (resolveLinks) {
        FileHandle h(CreateFileW(api.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (!h.ok()) return {};
        const DWORD flags = FILE_NAME_NORMALIZED | VOLUME_NAME_DOS;
        DWORD n = GetFinalPathNameByHandleW(h.get(), nullptr, 0, flags);
        std::wstring out(n, L'\0');
        if (n > 0) n = GetFinalPathNameByHandleW(h.get(), &out[0], n, flags);
        if (n > 0 && n < out.size()) {
            out.resize(n);
            return callerPath(out, path);
        }
        // Wine answers only up to MAX_PATH: the path exists, so give it as stored.
    }
    // Each existing component as the directory stores it (a short name becomes
    // the long one); from the first missing one on, as written.
    const Split s = split(api);
    if (s.root.empty()) return {};
    std::wstring out = s.root;
    if (out[1] == L':') out[0] = static_cast<wchar_t>(out[0] >= L'a' ? out[0] - 32 : out[0]);
    bool found = true;
    for (const std::wstring& part : s.parts) {
        WIN32_FIND_DATAW fd{};
        if (found) {
            FindHandle h(folders::findFirst(apiChild(out, part), fd));
            found = h.ok();
        }
        out = (out.back() == L'\\' ? out : out + L"\\") + (found ? fd.cFileName : part);
    }
    return callerPath(out, path);
}

std::wstring changeExtension(const std::wstring& path, const std::wstring& newExtension) {
    const size_t start = nameStart(path);
    if (start == path.size()) return {};
    size_t dot = path.find_last_of(L'.');
    if (dot == std::wstring::npos || dot <= start || path.find_first_not_of(L'.', start) == std::wstring::npos)
        dot = path.size();
    const bool dotted = !newExtension.empty() && newExtension[0] == L'.';
    const std::wstring extension = dotted ? newExtension.substr(1) : newExtension;
    return path.substr(0, dot) + (extension.empty() ? L"" : L"." + extension);
}

std::wstring makeValidFileName(const std::wstring& name, const std::wstring& replacement) {
    if (name.empty()) return {};
    std::wstring out;
    for (wchar_t c : name) {
        if (c < 32 || wcschr(L"\\/:*?\"<>|", c)) out += replacement;
        else out += c;
    }
    const size_t end = out.find_last_not_of(L". ");
    out.erase(end == std::wstring::npos ? 0 : end + 1);
    // A name of dots and spaces alone names nothing: it becomes the replacement.
    const std::wstring mark = replacement.empty() ? L"_" : replacement;
    if (out.empty()) return mark;
    return isDeviceName(out) ? mark + out : out;
}

}  // namespace files
}  // namespace tova
