// The run-time error number a call raises, 0 when it raises none: for the test
// files that the Windows build and the native sanitizer build both compile.
#pragma once

#include "frame/error_codes.h"

#include <utility>

#ifdef _WIN32
#include "frame/errors.h"

template <class F>
long raisedCode(F&& body) {
    const HRESULT hr = tova::guard(std::forward<F>(body));
    return hr == S_OK ? 0 : HRESULT_CODE(hr);
}
#else
#include "tests/native/platform.h"

template <class F>
long raisedCode(F&& body) {
    try {
        body();
        return 0;
    } catch (const tova::native::Raised& e) {
        return e.code;
    }
}
#endif
