// Folders of the system and the host, the true version of the operating
// system and what the caller's process is. Folders come without a trailing
// backslash except roots; "" is the soft failure, with LastDllError set.
#pragma once

#include "system_version.h"

#include <windows.h>

#include <string>

namespace tova::systemInfo {

std::wstring windowsFolder();
std::wstring systemFolder();
std::wstring systemWow64Folder();   // "" on 32-bit Windows
std::wstring specialFolder(long csidl, bool create);
std::wstring knownFolder(const std::wstring& folderId, bool create);
std::wstring currentFolder();
bool setCurrentFolder(const std::wstring& path);
std::wstring hostPath();

// The version the system really has, not the one a program without a
// manifest (or with a compatibility setting) is told.
using TrueVersion = version::Info;
bool trueVersion(TrueVersion& out);
std::wstring versionString(const TrueVersion& v);
bool atLeast(const TrueVersion& v, long major, long minor, long build);

bool is64BitSystem();
bool isUserAdmin();

// Strips the trailing backslash of a folder that is not a root.
std::wstring folderForm(std::wstring path);

}  // namespace tova::systemInfo
