#include "file_listing.h"

// Placeholder: every member gives its soft failure until the module is written.

namespace tova {
namespace files {

bool listFiles(const std::wstring&, const folders::Criteria&, bool, bool, std::vector<std::wstring>&) { return false; }
bool listSubfolders(const std::wstring&, const folders::Criteria&, bool, bool, std::vector<std::wstring>&) { return false; }
std::wstring newestFile(const std::wstring&, const folders::Criteria&, bool) { return {}; }

}  // namespace files
}  // namespace tova
