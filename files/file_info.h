// Existence, state, size, dates and attributes of files and folders, and
// temporary and unique names: the work behind those FileMethods members.
// Paths arrive as the caller wrote them; soft failures are results.
#pragma once

#include <string>

#include <windows.h>
#include <oleauto.h>

namespace tova {
namespace files {

bool fileExists(const std::wstring& path);
bool folderExists(const std::wstring& path);
bool isFolderEmpty(const std::wstring& path);
bool isFileInUse(const std::wstring& path);

double fileSize(const std::wstring& path);                      // -1 when not a file
double folderSize(const std::wstring& path, bool subfolders);   // -1 when unreadable
// `which` is exactly one of 1 (created), 2 (accessed), 4 (modified); 0 when unreadable.
DATE fileDate(const std::wstring& path, long which);
// `which` is any combination of 1, 2 and 4; `date` local, from 1601 on.
bool setFileDate(const std::wstring& path, DATE date, long which);
long attributes(const std::wstring& path);                      // -1 when nothing is there
bool setAttributes(const std::wstring& path, long attributes);  // attributes >= 0
bool setAttributeBit(const std::wstring& path, DWORD bit, bool on);

std::wstring tempFolder();
std::wstring createTempFile(const std::wstring& prefix, const std::wstring& extension, const std::wstring& folder);
std::wstring createTempFolder(const std::wstring& prefix, const std::wstring& parent);
std::wstring uniqueFileName(const std::wstring& path);

}  // namespace files
}  // namespace tova
