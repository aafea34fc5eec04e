// Conversions the APIMethods class files share: strings in and out, Boolean
// answers, records and lists of windows.
#pragma once

#include "../frame/library_frame.h"

#include <string>
#include <vector>

namespace tova::apiValues {

inline std::wstring text(BSTR b) { return b ? std::wstring(b, SysStringLen(b)) : std::wstring(); }
inline void answer(BSTR* out, const std::wstring& s) { *required(out) = Bstr(s).detach(); }
inline void answer(VARIANT_BOOL* out, bool b) { *required(out) = toVB(b); }

// Writes a record only when the member succeeded: a failing getter keeps it.
inline bool toRecord(bool ok, const RECT& r, TOVA_RECT* out) {
    if (ok) *out = fromWin32(r);
    return ok;
}

// Window handles as a zero-based Variant array of Longs.
void windowList(const std::vector<HWND>& windows, VARIANT* out);

}  // namespace tova::apiValues
