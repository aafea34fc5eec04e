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

// How folders are read, for the tests: by the buffer (the default), one
// FindNextFileW call per entry as before Vista, or by the buffer from a
// server that refuses queries above 64 KB.
enum class Reading { buffered, entryByEntry, refusingLargeQueries };
void readFoldersForTests(Reading how);

}  // namespace files
}  // namespace tova
