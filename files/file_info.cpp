#include "file_info.h"

// Placeholder: every member gives its soft failure until the module is written.

namespace tova {
namespace files {

bool fileExists(const std::wstring&) { return false; }
bool folderExists(const std::wstring&) { return false; }
bool driveExists(const std::wstring&) { return false; }
bool isDriveReady(const std::wstring&) { return false; }
bool isFolderEmpty(const std::wstring&) { return false; }
bool isFileInUse(const std::wstring&) { return false; }
double fileSize(const std::wstring&) { return -1; }
double folderSize(const std::wstring&, bool) { return -1; }
DATE fileDate(const std::wstring&, long) { return 0; }
bool setFileDate(const std::wstring&, DATE, long) { return false; }
long attributes(const std::wstring&) { return -1; }
bool setAttributes(const std::wstring&, long) { return false; }
bool setAttributeBit(const std::wstring&, DWORD, bool) { return false; }
std::wstring tempFolder() { return {}; }
std::wstring createTempFile(const std::wstring&, const std::wstring&, const std::wstring&) { return {}; }
std::wstring createTempFolder(const std::wstring&, const std::wstring&) { return {}; }
std::wstring uniqueFileName(const std::wstring&) { return {}; }

}  // namespace files
}  // namespace tova
