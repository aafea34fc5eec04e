// Paths as the wide file functions take them, and the checks every
// FileMethods member shares: any length (\\?\ beyond the classic limit),
// an empty path or a wildcard naming nothing, names that must be valid.
#pragma once

#include <string>
#include <vector>

#include "../frame/values.h"

namespace tova {
namespace files {

// `path` qualified against the current folder (GetFullPathNameW) and, beyond
// 259 characters (247 for a folder about to be created), in the \\?\ or
// \\?\UNC\ form. Empty for an empty path, a path holding * or ?, or one that
// cannot be qualified: callers treat that as "nothing there".
std::wstring apiPath(const std::wstring& path, bool creatingFolder = false);

// A qualified path (from apiPath) in the \\?\ form whatever its length: for
// walks, whose entries may pass the limit their folder is within. Device
// paths (\\.\) stay as they are.
std::wstring extendedPath(const std::wstring& qualified);

// GetFullPathNameW of `path`, any length, without the checks or the prefix of
// apiPath: text only. Empty when it fails.
std::wstring qualified(const std::wstring& path);

// `name` in the folder `apiFolder` (a result of apiPath), itself in the
// \\?\ form when the join passes 259 characters: for search patterns ("*")
// and the entries of a walk.
std::wstring apiChild(const std::wstring& apiFolder, const std::wstring& name);

// True for a qualified path naming a device (\\.\NUL, what NUL and
// C:\x\con.txt qualify to): such paths exist but name no file or folder.
bool isDevicePath(const std::wstring& apiPath);

// A path the library computed, in the form the caller used: with the
// \\?\ prefix exactly when `callerPath` had it.
std::wstring callerPath(const std::wstring& computed, const std::wstring& callerPath);

// Where the last component of `path` starts: after the last \, / or the
// colon of X: (the length when the path ends in a separator).
size_t nameStart(const std::wstring& path);

// True when two paths or names are equal ignoring case, as file systems compare them.
bool sameText(const std::wstring& a, const std::wstring& b);

// 8 upper-case hexadecimal digits of a new GUID: the unique part of the
// library's temporary and unique names.
std::wstring uniqueDigits();

// Raises 5 unless `name` is a valid last component: not empty, not . or ..,
// without \ / : * ? " < > | or control characters.
void requireValidName(const std::wstring& name);
// The same test, without raising: for parts (prefixes, extensions) that may be empty.
bool hasInvalidNameCharacter(const std::wstring& text);

}  // namespace files
}  // namespace tova
