#include "drives.h"

// Placeholder: every member gives its soft failure until the module is written.

namespace tova {
namespace files {

std::vector<std::wstring> driveRoots() { return {}; }
long driveType(const std::wstring&) { return 0; }
double driveFreeSpace(const std::wstring&) { return -1; }
double driveTotalSpace(const std::wstring&) { return -1; }
std::wstring volumeLabel(const std::wstring&) { return {}; }
long volumeSerialNumber(const std::wstring&) { return 0; }
std::wstring fileVersion(const std::wstring&) { return {}; }
std::wstring associatedProgram(const std::wstring&) { return {}; }

}  // namespace files
}  // namespace tova
