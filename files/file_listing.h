// Sorted listings of a folder's files and subfolders by pattern, and the
// newest matching file: the listing members of FileMethods.
#pragma once

#include "folder_walk.h"

#include "../frame/values.h"

#include <string>
#include <vector>

namespace tova {
namespace files {

// False when the folder cannot be read. Names are sorted case-insensitively;
// with `subfolders` the subfolders' entries follow in pre-order, relative to
// `folder` unless `fullPaths`.
bool listFiles(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
               std::vector<Bstr>& out);
bool listSubfolders(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
                    std::vector<Bstr>& out);
std::wstring newestFile(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders);

// Reads folders one FindNextFileW call per entry, as on systems before Vista,
// when `only`: for the tests.
void useFindFirstFile(bool only);

}  // namespace files
}  // namespace tova
