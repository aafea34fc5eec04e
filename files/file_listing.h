// Sorted listings of a folder's files and subfolders by pattern, and the
// newest matching file: the listing members of FileMethods.
#pragma once

#include "folder_walk.h"

#include <string>
#include <vector>

namespace tova {
namespace files {

// False when the folder cannot be read. Names are sorted case-insensitively;
// with `subfolders` the subfolders' entries follow in pre-order, relative to
// `folder` unless `fullPaths`.
bool listFiles(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
               std::vector<std::wstring>& out);
bool listSubfolders(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool fullPaths,
                    std::vector<std::wstring>& out);
std::wstring newestFile(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders);

}  // namespace files
}  // namespace tova
