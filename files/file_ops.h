// Copying, moving, renaming, deleting and creating files and folders, with
// nothing lost on failure (safe_write.h) and the protected folders refused
// (error 5): the work behind those FileMethods members.
#pragma once

#include "folder_walk.h"

#include <string>

namespace tova {
namespace files {

bool copyFile(const std::wstring& source, const std::wstring& destination, bool overwrite);
bool moveFile(const std::wstring& source, const std::wstring& destination, bool overwrite);
bool renameFile(const std::wstring& path, const std::wstring& newName);  // newName checked by the caller
bool deleteFile(const std::wstring& path, bool toRecycleBin, bool force);
bool copyFolder(const std::wstring& source, const std::wstring& destination, bool overwrite);
bool moveFolder(const std::wstring& source, const std::wstring& destination);
bool renameFolder(const std::wstring& path, const std::wstring& newName);
bool deleteFolder(const std::wstring& path, bool toRecycleBin, bool force);
bool createFolder(const std::wstring& path);
long deleteFiles(const std::wstring& folder, const folders::Criteria& criteria, bool subfolders, bool toRecycleBin,
                 bool force);

}  // namespace files
}  // namespace tova
