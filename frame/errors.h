// Error reporting. Members raise; the frame turns what they raise into an
// HRESULT with error info (vtable callers) or EXCEPINFO (dispatch callers).
//
// raise(n) with n <= 1000 is a standard run-time error: HRESULT 0x800A0000 | n,
// which VB-style hosts report as error n. Larger codes are library errors:
// 0x80040000 | code with the library's source and description.
#pragma once

#include "error_codes.h"
#include "typelib.h"

#include <new>

namespace tova {

// The name the library reports as error source: the file name without extension.
extern const wchar_t kLibrarySource[];

// What a raise carries up to the boundary of a member.
struct Raised {
    HRESULT hr;
};

// The HRESULT that raise(code) reports.
HRESULT errorResult(long code);

// Records error info for `hr` (from a failure that was not raised) and returns it.
HRESULT reportFailure(HRESULT hr);

// Runs a member body; anything it raises becomes the member's HRESULT.
template <class F>
HRESULT guard(F&& body) noexcept {
    try {
        body();
        return S_OK;
    } catch (const Raised& e) {
        return e.hr;
    } catch (const std::bad_alloc&) {
        return reportFailure(E_OUTOFMEMORY);
    } catch (...) {
        return reportFailure(E_UNEXPECTED);
    }
}

// Checks a pointer that the interface contract says is never null.
template <class T>
inline T* required(T* p) {
    if (!p) raise(kInvalidArgument);
    return p;
}

}  // namespace tova
