// What the APIMethods tests share: the object, LastDllError, the number of a
// raised error.
#pragma once

#include "support.h"

#include <cwctype>
#include <string>

namespace test {

inline ComPtr<_APIMethods> api() { return create<_APIMethods>(CLSID_APIMethods, IID__APIMethods); }

inline long lastDllError(_APIMethods* a) {
    LONG e = -1;
    a->get_LastDllError(&e);
    return e;
}

// 0 for success, else the error number a host would report.
inline long errorNumber(HRESULT hr) { return hr == S_OK ? 0 : HRESULT_CODE(hr); }

inline std::wstring lower(std::wstring s) {
    for (wchar_t& c : s) c = static_cast<wchar_t>(std::towlower(c));
    return s;
}

}  // namespace test
