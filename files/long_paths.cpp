#include "long_paths.h"

#include "../frame/library_frame.h"

namespace tova {
namespace files {

namespace {

bool hasPrefix(const std::wstring& p) { return p.compare(0, 4, L"\\\\?\\") == 0; }

// A qualified path in the \\?\ form when it is longer than `limit`.
std::wstring beyond(const std::wstring& full, size_t limit) {
    if (full.size() <= limit || hasPrefix(full)) return full;
    if (full.compare(0, 2, L"\\\\") == 0) return L"\\\\?\\UNC\\" + full.substr(2);
    return L"\\\\?\\" + full;
}

}  // namespace

std::wstring apiPath(const std::wstring& path, bool creatingFolder) {
    // The ? of a \\?\ prefix is no wildcard.
    if (path.empty() || path.find_first_of(L"*?", hasPrefix(path) ? 4 : 0) != std::wstring::npos) return {};
    if (hasPrefix(path)) return path;
    const std::wstring full = qualified(path);
    return full.empty() ? full : beyond(full, creatingFolder ? 247 : 259);
}

std::wstring qualified(const std::wstring& path) {
    if (path.empty()) return {};
    DWORD n = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (n == 0) return {};
    std::wstring full(n, L'\0');
    n = GetFullPathNameW(path.c_str(), n, &full[0], nullptr);
    if (n == 0 || n >= full.size()) return {};
    full.resize(n);
    return full;
}

std::wstring extendedPath(const std::wstring& qualified) {
    if (qualified.empty() || hasPrefix(qualified) || qualified.compare(0, 4, L"\\\\.\\") == 0) return qualified;
    if (qualified.compare(0, 2, L"\\\\") == 0) return L"\\\\?\\UNC\\" + qualified.substr(2);
    return L"\\\\?\\" + qualified;
}

std::wstring apiChild(const std::wstring& folder, const std::wstring& name) {
    std::wstring path = folder;
    if (!path.empty() && path.back() != L'\\') path += L'\\';
    return beyond(path + name, 259);
}

bool isDevicePath(const std::wstring& p) { return p.compare(0, 4, L"\\\\.\\") == 0; }

std::wstring callerPath(const std::wstring& computed, const std::wstring& caller) {
    if (hasPrefix(caller)) return beyond(computed, 0);
    if (!hasPrefix(computed)) return computed;
    if (computed.compare(0, 8, L"\\\\?\\UNC\\") == 0) return L"\\\\" + computed.substr(8);
    return computed.substr(4);
}

size_t nameStart(const std::wstring& path) {
    const size_t sep = path.find_last_of(L"\\/:");
    return sep == std::wstring::npos ? 0 : sep + 1;
}

bool sameText(const std::wstring& a, const std::wstring& b) {
    return CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

std::wstring uniqueDigits() {
    GUID g;
    if (FAILED(CoCreateGuid(&g))) g.Data1 = GetTickCount() ^ (GetCurrentThreadId() << 16);
    std::wstring digits(8, L'0');
    for (unsigned long v = g.Data1, i = 8; i-- > 0; v >>= 4) digits[i] = L"0123456789ABCDEF"[v & 15];
    return digits;
}

bool hasInvalidNameCharacter(const std::wstring& text) {
    for (wchar_t c : text)
        if (c < 32 || wcschr(L"\\/:*?\"<>|", c)) return true;
    return false;
}

void requireValidName(const std::wstring& name) {
    if (name.empty() || name == L"." || name == L".." || hasInvalidNameCharacter(name)) raise(kInvalidArgument);
}

}  // namespace files
}  // namespace tova
