// Self-registration: the classes, their ProgIDs, the interfaces and the type
// library, machine-wide (HKLM\Software\Classes) or for the current user only
// (HKCU\Software\Classes).
#pragma once

#include "typelib.h"

namespace tova {

enum class RegistrationScope { Machine, User };

HRESULT registerServer(RegistrationScope scope);
// Removes everything registerServer writes; keys another build of the
// library shares (the type library of the other bitness) stay.
HRESULT unregisterServer(RegistrationScope scope);

}  // namespace tova
