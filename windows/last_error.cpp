#include "last_error.h"

namespace tova::lastError {

namespace {
// Trivially destructible, so the compiler's thread storage is safe here.
thread_local DWORD code = 0;
}  // namespace

void clear() { code = 0; }
void set(DWORD c) { code = c; }
DWORD get() { return code; }

bool failed(DWORD fallback) {
    const DWORD e = GetLastError();
    code = e ? e : fallback;
    return false;
}

}  // namespace tova::lastError
