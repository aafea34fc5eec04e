#include "path_forms.h"

// Placeholder: every member gives its soft failure until the module is written.

namespace tova {
namespace files {

std::wstring combinePath(const std::wstring&, const std::wstring&) { return {}; }
std::wstring fullPath(const std::wstring&) { return {}; }
std::wstring relativePath(const std::wstring&, const std::wstring&) { return {}; }
std::wstring shortPath(const std::wstring&) { return {}; }
std::wstring longPath(const std::wstring&) { return {}; }
std::wstring canonicalPath(const std::wstring&, bool) { return {}; }
std::wstring changeExtension(const std::wstring&, const std::wstring&) { return {}; }
std::wstring makeValidFileName(const std::wstring&, const std::wstring&) { return {}; }

}  // namespace files
}  // namespace tova
