// Writing a whole file so that nothing is lost: the bytes go to a temporary
// file (~tova + 8 hexadecimal digits + .tmp) in the target's folder, flushed
// and closed, which then takes the target's place. A new target is moved in
// without replacing (a file that appeared meanwhile survives); an existing one
// is replaced keeping its creation time, attributes and security. On any
// failure the temporary file goes and the target is as it was.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include <windows.h>

namespace tova {
namespace files {

// `target` in the form of apiPath(). False when `target` exists and
// `overwrite` is False, when it is read-only or a folder, or on any failure.
bool writeWholeFile(const std::wstring& target, const void* data, size_t size, bool overwrite);

// The same with the temporary file's content produced by `fill`, which gets
// the temporary file's path and returns False to abandon (a copy fills it
// with CopyFileExW).
bool replaceWith(const std::wstring& target, bool overwrite, const std::function<bool(const std::wstring&)>& fill);

// A name in `folder` no one uses: ~tova + 8 hexadecimal digits + suffix (the
// form a stray leftover of the library has, whoever made it).
std::wstring temporarySibling(const std::wstring& folder, const wchar_t* suffix);

// Flushes a file written by other means (a copy filling the temporary file).
bool flushFile(const std::wstring& path);

namespace detail {
// The platform calls of the swap, replaceable so that tests can make each
// step fail the ways the platform can.
struct ReplaceCalls {
    BOOL(WINAPI* replaceFile)(LPCWSTR, LPCWSTR, LPCWSTR, DWORD, LPVOID, LPVOID);
    BOOL(WINAPI* moveFile)(LPCWSTR, LPCWSTR, DWORD);
};
ReplaceCalls& replaceCalls();
}  // namespace detail

}  // namespace files
}  // namespace tova
