// Drives and volumes, and what the system knows of programs: the drive and
// program members of FileMethods. A drive is given as a letter (C, C:), a
// root, a path on it or a \\server\share path.
#pragma once

#include <string>
#include <vector>

namespace tova {
namespace files {

bool driveExists(const std::wstring& drive);
bool isDriveReady(const std::wstring& drive);
std::vector<std::wstring> driveRoots();
long driveType(const std::wstring& drive);            // a Win32 DRIVE_ value
double driveFreeSpace(const std::wstring& drive);     // -1 when unknown
double driveTotalSpace(const std::wstring& drive);    // -1 when unknown
std::wstring volumeLabel(const std::wstring& drive);
long volumeSerialNumber(const std::wstring& drive);   // 0 when not ready
std::wstring fileVersion(const std::wstring& path);
std::wstring associatedProgram(const std::wstring& pathOrExtension);

}  // namespace files
}  // namespace tova
