#include "errors.h"

#include "values.h"

namespace tova {

const wchar_t kLibrarySource[] = L"TOVA200";

namespace {

// The standard texts of the run-time errors the library raises, so that every
// host (not only those with their own table) shows a description.
const wchar_t* standardDescription(long n) {
    switch (n) {
    case 5: return L"Invalid procedure call or argument";
    case 6: return L"Overflow";
    case 7: return L"Out of memory";
    case 9: return L"Subscript out of range";
    case 11: return L"Division by zero";
    case 13: return L"Type mismatch";
    case 17: return L"Can't perform requested operation";
    case 52: return L"Bad file name or number";
    case 53: return L"File not found";
    case 91: return L"Object variable or With block variable not set";
    case 93: return L"Invalid pattern string";
    case 424: return L"Object required";
    case 438: return L"Object doesn't support this property or method";
    case 449: return L"Argument not optional";
    case 481: return L"Invalid picture";
    default: return L"Application-defined or object-defined error";
    }
}

void setErrorInfo(HRESULT hr, const wchar_t* source, const wchar_t* description) {
    ComPtr<ICreateErrorInfo> create;
    if (FAILED(CreateErrorInfo(create.put()))) return;
    create->SetGUID(GUID_NULL);
    create->SetSource(const_cast<LPOLESTR>(source));
    create->SetDescription(const_cast<LPOLESTR>(description));
    ComPtr<IErrorInfo> info = create.as<IErrorInfo>(IID_IErrorInfo);
    if (info) SetErrorInfo(0, info.get());
    (void)hr;
}

}  // namespace

HRESULT errorResult(long code) {
    if (code <= 1000) return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, code & 0xFFFF);
    return static_cast<HRESULT>(0x80040000UL | static_cast<unsigned long>(code));
}

void raise(long code, const wchar_t* source, const wchar_t* description) {
    HRESULT hr = errorResult(code);
    if (!source) source = kLibrarySource;
    if (!description) description = code <= 1000 ? standardDescription(code) : L"";
    setErrorInfo(hr, source, description);
    throw Raised{hr};
}

HRESULT reportFailure(HRESULT hr) {
    wchar_t* text = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                   nullptr, static_cast<DWORD>(hr), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    setErrorInfo(hr, kLibrarySource, text ? text : L"");
    if (text) LocalFree(text);
    return hr;
}

}  // namespace tova
