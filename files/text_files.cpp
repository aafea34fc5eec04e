#include "text_files.h"

// Placeholder: every member gives its soft failure until the module is written.

namespace tova {
namespace files {

bool readText(const std::wstring&, long, std::wstring&) { return false; }
bool readLines(const std::wstring&, long, std::vector<std::wstring>&) { return false; }
bool writeText(const std::wstring&, const std::wstring&, long, bool) { return false; }
bool appendLine(const std::wstring&, const std::wstring&, long) { return false; }
long countLines(const std::wstring&) { return -1; }
void readBinary(const std::wstring&, double, long, VARIANT*) {}
bool writeBinary(const std::wstring&, SAFEARRAY*, bool) { return false; }
bool compareFiles(const std::wstring&, const std::wstring&) { return false; }
std::wstring fileHash(const std::wstring&, long) { return {}; }

}  // namespace files
}  // namespace tova
