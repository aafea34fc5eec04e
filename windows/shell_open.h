// Programs, documents and URLs opened through the shell, and the program a
// document opens with. Failures give false or "" with LastDllError set; the
// shell's SE_ERR_ codes are turned into Win32 codes (no association: 1155).
#pragma once

#include <windows.h>

#include <string>

namespace tova::shell {

struct Open {
    std::wstring file, parameters, verb, folder;
    int showCmd = SW_SHOWNORMAL;
    HWND owner = nullptr;
};

// ShellExecuteExW without the shell's own error boxes; true when started.
bool execute(const Open& what);
// An existing file or folder with its program (missing: 2, none: 1155).
bool openDocument(const std::wstring& path, const std::wstring& verb, HWND owner);
// A URL with its scheme's program; text that is no URL starts nothing (87).
bool openUrl(const std::wstring& url, HWND owner);
// The program that opens an existing document; "" when none.
std::wstring findExecutable(const std::wstring& document);

}  // namespace tova::shell
