// LastDllError: the code of the calling thread's last soft failure in
// APIMethods. Each member clears it on entry and the modules record a failure
// when they give a soft result, so that it always speaks of the latest call.
#pragma once

#include <windows.h>

namespace tova::lastError {

void clear();
void set(DWORD code);
DWORD get();

// Records GetLastError() (or `fallback` when the platform left 0) and returns
// false: `return lastError::failed();` ends a member's soft failure.
bool failed(DWORD fallback = ERROR_GEN_FAILURE);

}  // namespace tova::lastError
