#include "file_ops.h"

// Placeholder: every member gives its soft failure until the module is written.

namespace tova {
namespace files {

bool copyFile(const std::wstring&, const std::wstring&, bool) { return false; }
bool moveFile(const std::wstring&, const std::wstring&, bool) { return false; }
bool renameFile(const std::wstring&, const std::wstring&) { return false; }
bool deleteFile(const std::wstring&, bool, bool) { return false; }
bool copyFolder(const std::wstring&, const std::wstring&, bool) { return false; }
bool moveFolder(const std::wstring&, const std::wstring&) { return false; }
bool renameFolder(const std::wstring&, const std::wstring&) { return false; }
bool deleteFolder(const std::wstring&, bool, bool) { return false; }
bool createFolder(const std::wstring&) { return false; }
long deleteFiles(const std::wstring&, const folders::Criteria&, bool, bool, bool) { return 0; }

}  // namespace files
}  // namespace tova
