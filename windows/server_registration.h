// In-process servers registered and unregistered through their own entry
// points, and what the registry says of a class. Soft failures give false or
// "" with LastDllError: the load error (193 other bitness, 126 missing), 127
// for a missing entry point, else the server's HRESULT.
#pragma once

#include <windows.h>

#include <string>

namespace tova::servers {

// DllRegisterServer / DllUnregisterServer, or DllInstall(install, "user")
// for a registration under HKCU\Software\Classes.
bool registerServer(const std::wstring& path, bool install, bool perUser);

// A ProgID or "{CLSID}" resolved to its class; false when unknown.
bool classOf(const std::wstring& name, CLSID& out);
// The CLSID, braced, upper case.
std::wstring clsidText(const CLSID& clsid);
std::wstring progIdOf(const CLSID& clsid);
// InprocServer32's path, else LocalServer32's command, expanded; "" for none.
std::wstring serverPath(const CLSID& clsid);

}  // namespace tova::servers
