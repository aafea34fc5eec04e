// Self-registration: the classes, their ProgIDs, the interfaces and the type
// library, machine-wide (HKLM\Software\Classes) or for the current user only
// (HKCU\Software\Classes). The installer package and the side-by-side manifest
// are generated from the same facts and entries, so all three agree.
#pragma once

#include "typelib.h"

#include <string>
#include <vector>

namespace tova {

enum class RegistrationScope { Machine, User };

HRESULT registerServer(RegistrationScope scope);
// Removes everything registerServer writes; keys another build of the
// library shares (the type library of the other bitness) stay.
HRESULT unregisterServer(RegistrationScope scope);

// What registration publishes, read from a type library and the class list.
struct RegistrationFacts {
    struct Class { std::wstring name, clsid, progId; };
    struct Interface { std::wstring name, iid; };
    std::wstring libid;
    std::wstring version;         // as the registry spells it: hexadecimal ("1.16")
    std::wstring decimalVersion;  // as the library declares it ("1.22")
    std::wstring help;
    std::vector<Class> classes;   // the creatable and global classes
    std::vector<Interface> interfaces;
};
bool registrationFacts(ITypeLib* lib, RegistrationFacts& facts);

// One value under Software\Classes; an empty name is the key's default value.
struct RegistryEntry { std::wstring key, name, value; };
// Every value registration writes, in order, for a server at dllPath whose
// type library registers under `platform` ("win32" or "win64").
std::vector<RegistryEntry> registrationEntries(const RegistrationFacts& facts, const std::wstring& dllPath,
                                               const std::wstring& helpDir, const wchar_t* platform);

}  // namespace tova
