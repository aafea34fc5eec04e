// The string helpers behind StringMethods.

#include "strings.h"

#include "wildcard.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace tova {
namespace strings {

namespace {

constexpr size_t npos = std::wstring::npos;

// ------------------------------------------------------------------ errors

// The run-time error an automation failure stands for.
[[noreturn]] void raiseFor(HRESULT hr) {
    switch (hr) {
    case DISP_E_BADINDEX: raise(kSubscriptOutOfRange);
    case DISP_E_OVERFLOW: raise(kOverflow);
    case E_OUTOFMEMORY: raise(kOutOfMemory);
    case DISP_E_ARRAYISLOCKED: raise(10, nullptr, L"This array is fixed or temporarily locked");
    default: raise(kTypeMismatch);
    }
}

[[noreturn]] void raiseInvalidNull() { raise(94, nullptr, L"Invalid use of Null"); }

// Raises a failure that came from another object, keeping its number, source
// and description.
[[noreturn]] void passOn(HRESULT hr, const std::wstring& source, const std::wstring& description) {
    const long low = static_cast<long>(hr & 0xFFFF);
    if (HRESULT_FACILITY(hr) == FACILITY_CONTROL && low <= 1000)
        raise(low, source.empty() ? nullptr : source.c_str(), description.empty() ? nullptr : description.c_str());
    ComPtr<ICreateErrorInfo> create;
    if (SUCCEEDED(CreateErrorInfo(create.put()))) {
        create->SetGUID(GUID_NULL);
        create->SetSource(const_cast<LPOLESTR>(source.empty() ? kLibrarySource : source.c_str()));
        create->SetDescription(const_cast<LPOLESTR>(description.c_str()));
        ComPtr<IErrorInfo> info = create.as<IErrorInfo>(IID_IErrorInfo);
        if (info) SetErrorInfo(0, info.get());
    }
    throw Raised{hr};
}

// ------------------------------------------------------------------ Variants

// What a Variant holds, looking through references: a shallow copy that owns
// nothing (never clear it). Null gives Empty.
VARIANT view(const VARIANT* v) {
    VARIANT out;
    VariantInit(&out);
    if (!v) return out;
    for (int depth = 0; V_VT(v) == (VT_BYREF | VT_VARIANT); ++depth) {
        if (!V_VARIANTREF(v) || depth > 16) return out;
        v = V_VARIANTREF(v);
    }
    if (!(V_VT(v) & VT_BYREF)) {
        std::memcpy(&out, v, sizeof out);
        return out;
    }
    const VARTYPE vt = V_VT(v) & ~VT_BYREF;
    if (vt == VT_RECORD) {  // the same two pointers, by reference or not
        std::memcpy(&out, v, sizeof out);
    } else if (!V_BYREF(v)) {
        return out;
    } else if (vt & VT_ARRAY) {
        V_ARRAY(&out) = *V_ARRAYREF(v);
    } else if (vt == VT_DECIMAL) {
        out.decVal = *V_DECIMALREF(v);
    } else if (size_t n = scalarBytes(vt)) {
        std::memcpy(&V_UI1(&out), V_BYREF(v), n);
    }
    V_VT(&out) = vt;
    return out;
}

VARIANT given(const VARIANT* v) {
    if (isMissing(v)) {
        VARIANT empty;
        VariantInit(&empty);
        return empty;
    }
    return view(v);
}

// Element `index` of the one-dimensional array a Variant view holds.
Variant elementAt(const VARIANT& array, long index) {
    SAFEARRAY* sa = V_ARRAY(&array);
    if (!sa || SafeArrayGetDim(sa) != 1) raise(kSubscriptOutOfRange);
    const VARTYPE vt = V_VT(&array) & VT_TYPEMASK;
    Variant out;
    LONG i = index;
    HRESULT hr;
    if (vt == VT_VARIANT) {
        hr = SafeArrayGetElement(sa, &i, static_cast<VARIANT*>(&out));
    } else if (vt == VT_DECIMAL) {
        DECIMAL d{};
        hr = SafeArrayGetElement(sa, &i, &d);
        if (SUCCEEDED(hr)) { out.decVal = d; V_VT(&out) = VT_DECIMAL; }
    } else if (scalarBytes(vt)) {
        hr = SafeArrayGetElement(sa, &i, &V_UI1(&out));
        if (SUCCEEDED(hr)) V_VT(&out) = vt;
    } else {
        raise(kTypeMismatch);
    }
    if (FAILED(hr)) raiseFor(hr);
    return out;
}

// The text of a value, as the runtime's conversion to String gives it. Null
// gives "" where the text is concatenated (nullIsEmpty) and raises 94 where a
// String is required.
std::wstring textOf(const VARIANT& value, bool nullIsEmpty) {
    VARIANT x = view(&value);
    switch (V_VT(&x)) {
    case VT_EMPTY: return {};
    case VT_NULL:
        if (nullIsEmpty) return {};
        raiseInvalidNull();
    case VT_BSTR: return V_BSTR(&x) ? std::wstring(V_BSTR(&x), SysStringLen(V_BSTR(&x))) : std::wstring();
    default: break;
    }
    if (V_VT(&x) & VT_ARRAY) raise(kTypeMismatch);
    Variant s;
    HRESULT hr = VariantChangeTypeEx(&s, &x, LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, VT_BSTR);
    if (FAILED(hr)) raiseFor(hr);
    return V_BSTR(&s) ? std::wstring(V_BSTR(&s), SysStringLen(V_BSTR(&s))) : std::wstring();
}

// ------------------------------------------------------------------ text

std::wstring mapCase(const std::wstring& s, DWORD flag) {
    if (s.empty()) return s;
    std::wstring out(s.size(), L'\0');
    const int n = static_cast<int>(s.size());
    if (s.size() <= 0x7FFFFFFF && LCMapStringW(LOCALE_USER_DEFAULT, flag, s.data(), n, &out[0], n) == n) return out;
    // The mapping must keep every character in its place; when the locale's
    // does not, the one-for-one mapping of the user interface does.
    out = s;
    if (flag == LCMAP_UPPERCASE)
        CharUpperBuffW(&out[0], static_cast<DWORD>(out.size()));
    else
        CharLowerBuffW(&out[0], static_cast<DWORD>(out.size()));
    return out;
}

wchar_t upperChar(wchar_t c) { return mapCase(std::wstring(1, c), LCMAP_UPPERCASE)[0]; }
wchar_t lowerChar(wchar_t c) { return mapCase(std::wstring(1, c), LCMAP_LOWERCASE)[0]; }

// Every occurrence of `find`, left to right without overlaps, replaced by
// `with`; case-insensitively when ignoreCase. An empty `find` replaces nothing.
std::wstring replaceAll(const std::wstring& s, const std::wstring& find, const std::wstring& with, bool ignoreCase) {
    if (find.empty() || s.size() < find.size()) return s;
    const std::wstring hay = ignoreCase ? upperCase(s) : s;
    const std::wstring needle = ignoreCase ? upperCase(find) : find;
    size_t from = 0, at = hay.find(needle);
    if (at == npos) return s;
    std::wstring out;
    out.reserve(s.size());
    for (; at != npos; at = hay.find(needle, from)) {
        out.append(s, from, at - from);
        out += with;
        from = at + needle.size();
    }
    out.append(s, from, npos);
    return out;
}

const wchar_t kLetters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const wchar_t kDigits[] = L"0123456789";
const wchar_t kHexDigits[] = L"0123456789ABCDEF";
// Carriage return, form feed, line feed, the pair CR LF, tab, vertical tab, space.
const wchar_t kWhiteSpace[] = L"\r\f\n\r\n\t\v ";

// ------------------------------------------------------------------ ANSI text

std::string toAnsi(const std::wstring& s) {
    if (s.empty()) return {};
    const int n = static_cast<int>(s.size());
    const int bytes = WideCharToMultiByte(CP_ACP, 0, s.data(), n, nullptr, 0, nullptr, nullptr);
    std::string out(bytes > 0 ? bytes : 0, '\0');
    if (bytes > 0) WideCharToMultiByte(CP_ACP, 0, s.data(), n, &out[0], bytes, nullptr, nullptr);
    return out;
}

std::wstring fromAnsi(const char* s, size_t length) {
    if (!length) return {};
    const int n = static_cast<int>(length);
    const int chars = MultiByteToWideChar(CP_ACP, 0, s, n, nullptr, 0);
    std::wstring out(chars > 0 ? chars : 0, L'\0');
    if (chars > 0) MultiByteToWideChar(CP_ACP, 0, s, n, &out[0], chars);
    return out;
}

// ------------------------------------------------------------------ binary record sizes
//
// The binary record writer (a Variant written to a file opened for binary
// access) lays a value out as:
//   Variant  a 2-byte type tag, then the data of its type. Empty and Null are the
//            tag alone (inside arrays: a lone Empty or Null is measured as 0).
//   Byte 1, Integer 2, Boolean 2, Long 4, Single 4, Error 4, Double 8,
//   Currency 8, Date 8, LongLong 8; Decimal 14 (its 16 bytes less the 2 that
//   hold the tag).
//   String   a length descriptor, then the characters in the ANSI code page (one
//            byte each, two for a double-byte character). The descriptor is the
//            byte count in 2 bytes; from 65535 bytes on it is FF FF followed by
//            the count in 4 bytes.
//   Array    the tag (VT_ARRAY plus the element type), then a descriptor: the
//            number of dimensions in 2 bytes and, per dimension, its element
//            count and lower bound in 4 bytes each; then the elements in memory
//            order: typed elements as their data alone (strings with their
//            length descriptors), Variant elements each as a whole Variant with
//            its own tag (nested arrays included). An array never dimensioned
//            is the tag and a count of 0 dimensions.
// Objects, records and the types the runtime has no name for (signed bytes,
// unsigned integers, machine integers) cannot be written: the writer fails and
// the size is 0, as for a write whose error was swallowed.

constexpr int64_t kCannotWrite = -1;
constexpr int kMaxNesting = 64;

int64_t dataSize(VARTYPE vt) {
    switch (vt) {
    case VT_UI1: return 1;
    case VT_I2: case VT_BOOL: return 2;
    case VT_I4: case VT_R4: case VT_ERROR: return 4;
    case VT_R8: case VT_CY: case VT_DATE: case VT_I8: return 8;
    case VT_DECIMAL: return 14;
    default: return kCannotWrite;
    }
}

int64_t stringSize(BSTR s) {
    const UINT length = SysStringLen(s);
    const int64_t bytes =
        length ? WideCharToMultiByte(CP_ACP, 0, s, static_cast<int>(length), nullptr, 0, nullptr, nullptr) : 0;
    return (bytes >= 0xFFFF ? 6 : 2) + bytes;
}

int64_t variantSize(const VARIANT* v, int depth);

// Descriptor and elements of an array (the tag not included).
int64_t arraySize(SAFEARRAY* sa, VARTYPE element, int depth) {
    if (!sa || sa->cDims == 0) return 2;
    int64_t count = 1;
    for (USHORT d = 0; d < sa->cDims && count; ++d) {
        count *= sa->rgsabound[d].cElements;
        if (count > 0x7FFFFFFF) return kCannotWrite;  // beyond what a file of the runtime can hold
    }
    int64_t size = 2 + 8 * static_cast<int64_t>(sa->cDims);
    if (element == VT_BSTR || element == VT_VARIANT) {
        if (count == 0) return size;
        ArrayData data(sa);
        if (!data.locked()) return kCannotWrite;
        const char* p = static_cast<const char*>(data.data());
        for (int64_t i = 0; i < count; ++i, p += sa->cbElements) {
            const int64_t one = element == VT_BSTR ? stringSize(*reinterpret_cast<const BSTR*>(p))
                                                   : variantSize(reinterpret_cast<const VARIANT*>(p), depth + 1);
            if (one < 0) return kCannotWrite;
            size += one;
        }
        return size;
    }
    const int64_t each = dataSize(element);
    if (each < 0) return kCannotWrite;
    return size + each * count;
}

// A whole Variant: tag and data.
int64_t variantSize(const VARIANT* v, int depth) {
    if (depth > kMaxNesting) return kCannotWrite;
    VARIANT x = view(v);
    const VARTYPE vt = V_VT(&x);
    if (vt == VT_EMPTY || vt == VT_NULL) return 2;
    if (vt & VT_ARRAY) {
        const int64_t a = arraySize(V_ARRAY(&x), vt & VT_TYPEMASK, depth);
        return a < 0 ? kCannotWrite : 2 + a;
    }
    if (vt == VT_BSTR) return 2 + stringSize(V_BSTR(&x));
    const int64_t d = dataSize(vt);
    return d < 0 ? kCannotWrite : 2 + d;
}

// ------------------------------------------------------------------ resources

// A string from a reader object: ReadString(ResourceID, LocaleID) by name.
std::wstring readFromReader(IUnknown* reader, long resourceId, long localeId) {
    if (!reader) return {};
    ComPtr<IDispatch> d;
    if (FAILED(reader->QueryInterface(IID_IDispatch, d.putVoid())) || !d) raise(kNotSupported);
    LPOLESTR name = const_cast<LPOLESTR>(L"ReadString");
    DISPID id = DISPID_UNKNOWN;
    if (FAILED(d->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id))) raise(kNotSupported);
    VARIANT args[2];  // last argument first
    VariantInit(&args[0]);
    VariantInit(&args[1]);
    V_VT(&args[0]) = VT_I4;
    V_I4(&args[0]) = localeId;
    V_VT(&args[1]) = VT_I4;
    V_I4(&args[1]) = resourceId;
    DISPPARAMS params{args, nullptr, 2, 0};
    Variant result;
    EXCEPINFO excep{};
    UINT argErr = 0;
    HRESULT hr = d->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &params,
                           &result, &excep, &argErr);
    if (hr == DISP_E_EXCEPTION) {
        if (excep.pfnDeferredFillIn) excep.pfnDeferredFillIn(&excep);
        const std::wstring source = excep.bstrSource ? excep.bstrSource : L"";
        const std::wstring description = excep.bstrDescription ? excep.bstrDescription : L"";
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
        HRESULT code = excep.scode;
        if (!code) code = excep.wCode ? MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, excep.wCode) : E_FAIL;
        passOn(code, source, description);
    }
    if (FAILED(hr)) {
        switch (hr) {
        case DISP_E_MEMBERNOTFOUND: case DISP_E_UNKNOWNNAME: raise(kNotSupported);
        case DISP_E_TYPEMISMATCH: raise(kTypeMismatch);
        case DISP_E_OVERFLOW: raise(kOverflow);
        case DISP_E_BADPARAMCOUNT: raise(450, nullptr, L"Wrong number of arguments or invalid property assignment");
        case DISP_E_PARAMNOTOPTIONAL: raise(449);
        default: throw Raised{reportFailure(hr)};
        }
    }
    return textOf(result, false);
}

}  // namespace

// ------------------------------------------------------------------ Variants

bool getArrayBounds(const VARIANT* v, long& lower, long& upper) {
    lower = upper = 0;
    VARIANT x = view(v);
    if (!(V_VT(&x) & VT_ARRAY) || !V_ARRAY(&x)) return false;
    LONG l = 0, u = 0;
    if (FAILED(SafeArrayGetLBound(V_ARRAY(&x), 1, &l)) || FAILED(SafeArrayGetUBound(V_ARRAY(&x), 1, &u)))
        return false;
    lower = l;
    upper = u;
    return true;
}

bool isString(const VARIANT* v) {
    VARIANT x = view(v);
    return V_VT(&x) == VT_BSTR;
}

bool isVariantValid(const VARIANT* v, VARTYPE expectedType, bool allowArray, bool allowEmpty) {
    if (isMissing(v)) return false;
    VARIANT x = view(v);
    const VARTYPE vt = V_VT(&x);
    bool ok = true;
    if (vt == VT_EMPTY && !allowEmpty) ok = false;
    if ((vt & VT_ARRAY) && !allowArray) ok = false;
    return ok && vt == expectedType;
}

long sizeOfVariant(const VARIANT* v) {
    VARIANT x = view(v);
    if (V_VT(&x) == VT_EMPTY || V_VT(&x) == VT_NULL) return 0;
    const int64_t size = variantSize(&x, 0);
    return size < 0 || size > 0x7FFFFFFF ? 0 : static_cast<long>(size);
}

// ------------------------------------------------------------------ paths

std::wstring fileDrive(const std::wstring& path) {
    const size_t colon = path.find(L':');
    return colon == npos ? std::wstring() : path.substr(0, colon);
}

std::wstring filePath(const std::wstring& path) {
    if (path.empty()) return {};
    const size_t slash = path.rfind(L'\\');
    if (slash == npos) raise(kInvalidArgument);  // nothing left to cut the last character from
    return path.substr(0, slash);
}

std::wstring fileTitle(const std::wstring& path, bool withExtension) {
    const size_t slash = path.rfind(L'\\');
    std::wstring title = slash == npos ? path : path.substr(slash + 1);
    if (!withExtension) {
        const size_t dot = title.find(L'.');
        if (dot != npos) title.resize(dot);
    }
    return title;
}

std::wstring fileExtension(const std::wstring& path) {
    const size_t dot = path.rfind(L'.');
    return dot == npos ? path : path.substr(dot + 1);
}

std::wstring backupFilename(const std::wstring& fileSpec, const std::wstring& newExtension) {
    if (fileSpec.empty()) return {};
    std::wstring name = fileTitle(fileSpec, false);
    if (!newExtension.empty()) {
        if (newExtension[0] != L'.') name += L'.';
        name += newExtension;
    }
    return name;
}

std::wstring trimDirString(const std::wstring& filename, long maxLength) {
    if (filename.empty()) return {};
    const int64_t length = static_cast<int64_t>(filename.size());
    if (length <= maxLength) return filename;
    const std::wstring title = fileTitle(filename, true);
    const int64_t tail = title.empty() ? static_cast<int64_t>(maxLength) - 6 : static_cast<int64_t>(title.size()) + 1;
    // 1-based positions; a search that would start before the text starts at its beginning.
    int64_t i = length - tail;
    if (i < 1) i = 1;
    while (i <= length && filename[static_cast<size_t>(i - 1)] != L'\\') ++i;
    if (i > length) i = length + 1;  // none found, or a search that starts past the end
    return filename.substr(0, 3) + L"..." + filename.substr(static_cast<size_t>(i - 1));
}

// ------------------------------------------------------------------ text

std::wstring upperCase(const std::wstring& s) { return mapCase(s, LCMAP_UPPERCASE); }
std::wstring lowerCase(const std::wstring& s) { return mapCase(s, LCMAP_LOWERCASE); }

std::wstring properCase(const std::wstring& text) {
    // Upper-casing the character after the last space (or the first character of
    // nothing) is upper-casing past the end: checked before anything changes.
    if (text.empty() || text.back() == L' ') raise(kInvalidArgument);
    std::wstring s = lowerCase(text);
    s[0] = upperChar(s[0]);
    for (size_t i = 0; i + 1 < s.size(); ++i)
        if (s[i] == L' ') s[i + 1] = upperChar(s[i + 1]);
    return s;
}

std::wstring formatHex(long value, long digits) {
    uint32_t u = static_cast<uint32_t>(value);
    std::wstring s;
    do {
        s.insert(s.begin(), L"0123456789ABCDEF"[u & 15]);
        u >>= 4;
    } while (u);
    if (digits > static_cast<long>(s.size())) s.insert(0, static_cast<size_t>(digits) - s.size(), L'0');
    return s;
}

std::wstring accessKey(const std::wstring& caption) {
    const std::wstring s = replaceAll(caption, L"&&", L"#", false);
    for (size_t i = s.size(); i-- > 1;)
        if (s[i] != L'&' && s[i - 1] == L'&') return std::wstring(1, s[i]);
    return {};
}

// ------------------------------------------------------------------ character classes

bool isCharset(const std::wstring& ch, const std::wstring& charset, long compare) {
    if (ch.empty()) return false;
    wchar_t c = ch[0];
    std::wstring set;
    if (compare == 0) {
        set = charset;
    } else if (compare == 1) {
        c = upperChar(c);
        set = upperCase(charset);
    } else {
        return false;
    }
    return !set.empty() && set.find(c) != npos;
}

bool isAlpha(const std::wstring& ch) { return isCharset(ch, kLetters, 1); }
bool isDigit(const std::wstring& ch) { return isCharset(ch, kDigits, 1); }
bool isHexDigit(const std::wstring& ch) { return isCharset(ch, kHexDigits, 1); }
bool isAlphaDigit(const std::wstring& ch) { return isDigit(ch) || isAlpha(ch); }
bool isSpace(const std::wstring& ch) { return isCharset(ch, kWhiteSpace, 1); }

bool isLowerCase(const std::wstring& ch) { return ch.empty() || lowerChar(ch[0]) == ch[0]; }
bool isUpperCase(const std::wstring& ch) { return ch.empty() || upperChar(ch[0]) == ch[0]; }

bool isLike(const std::wstring& text, const std::wstring& pattern, long compare) {
    return tova::isLike(text.data(), text.size(), pattern.data(), pattern.size(), compare != 0);
}

// ------------------------------------------------------------------ resource strings

std::wstring convResString(const std::wstring& text, const VARIANT* identifiers, const VARIANT* values,
                           const VARIANT* appName, const VARIANT* appVersion) {
    if (text.empty()) return {};
    std::wstring s = text;
    const VARIANT ids = given(identifiers), vals = given(values);
    long il, iu, vl, vu;
    const bool idsArray = getArrayBounds(&ids, il, iu), valsArray = getArrayBounds(&vals, vl, vu);
    if (idsArray && valsArray) {
        if (il == vl && iu == vu) {
            for (int64_t i = il; i <= iu; ++i) {
                const std::wstring find = textOf(elementAt(ids, static_cast<long>(i)), false);
                s = replaceAll(s, find, textOf(elementAt(vals, static_cast<long>(i)), false), true);
            }
        }
    } else {
        const std::wstring find = textOf(ids, false);
        s = replaceAll(s, find, textOf(vals, false), true);
    }
    s = replaceAll(s, L"<CR>", L"\r\n", false);
    s = replaceAll(s, L"<TAB>", L"\t", false);
    if (!isMissing(appName) && isString(appName))
        s = replaceAll(s, L"<APPTITLE>", textOf(view(appName), false), true);
    if (!isMissing(appVersion)) {
        const VARIANT version = view(appVersion);
        long l, u;
        if (getArrayBounds(&version, l, u)) {
            std::wstring joined;
            for (int64_t i = l; i <= u; ++i) {
                if (i > l) joined += L'.';
                joined += textOf(elementAt(version, static_cast<long>(i)), false);
            }
            s = replaceAll(s, L"<VERSION>", joined, true);
        } else if (V_VT(&version) == VT_BSTR) {
            s = replaceAll(s, L"<VERSION>", textOf(version, false), true);
        }
    }
    return s;
}

std::wstring loadStringResource(HMODULE module, long resourceId, long localeId) {
    if (resourceId < 0 || resourceId > 0xFFFF) return {};
    // Strings live in blocks of 16: block id / 16 + 1, entry id % 16, each entry
    // a count of UTF-16 code units followed by them.
    const LPCWSTR kStringTable = MAKEINTRESOURCEW(6);  // RT_STRING, wide
    const LPCWSTR block = MAKEINTRESOURCEW(resourceId / 16 + 1);
    const LANGID language = LANGIDFROMLCID(static_cast<LCID>(localeId));
    HRSRC found = FindResourceExW(module, kStringTable, block, language);
    if (!found && language != MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL))
        found = FindResourceExW(module, kStringTable, block, MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL));
    if (!found) return {};
    HGLOBAL loaded = LoadResource(module, found);
    const DWORD bytes = SizeofResource(module, found);
    const WCHAR* p = loaded ? static_cast<const WCHAR*>(LockResource(loaded)) : nullptr;
    if (!p) return {};
    const WCHAR* end = p + bytes / sizeof(WCHAR);
    for (long entry = resourceId % 16; entry > 0; --entry) {
        if (p >= end) return {};
        p += 1 + *p;
    }
    if (p >= end) return {};
    size_t n = *p++;
    if (n > static_cast<size_t>(end - p)) n = static_cast<size_t>(end - p);
    return std::wstring(p, n);
}

std::wstring readResString(long resourceId, long localeId, const VARIANT* source, const VARIANT* identifiers,
                           const VARIANT* values, const VARIANT* appName, const VARIANT* appVersion) {
    const VARIANT from = given(source);
    const VARTYPE vt = V_VT(&from);
    if (vt == VT_EMPTY || vt == VT_NULL || (vt & VT_ARRAY)) return {};
    std::wstring raw;
    if (vt == VT_BSTR) {
        std::wstring file = textOf(from, false);
        if (file.empty()) return {};
        // A relative name is the file in the current folder, for the check and the load alike
        // (the loader would otherwise search its own path).
        wchar_t full[MAX_PATH * 4];
        const DWORD fullLength = GetFullPathNameW(file.c_str(), MAX_PATH * 4, full, nullptr);
        if (fullLength > 0 && fullLength < MAX_PATH * 4) file.assign(full, fullLength);
        const DWORD attributes = GetFileAttributesW(file.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) return {};
        HMODULE module =
            LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
        if (module) {
            raw = loadStringResource(module, resourceId, localeId);
            FreeLibrary(module);
        }
    } else if (vt == VT_DISPATCH || vt == VT_UNKNOWN) {
        raw = readFromReader(V_UNKNOWN(&from), resourceId, localeId);
    } else {
        // A module handle: a Long, or in the 64-bit build any pointer-sized number.
        Variant number;
        VARIANT copy = from;
#ifdef _WIN64
        HRESULT hr = VariantChangeTypeEx(&number, &copy, LOCALE_USER_DEFAULT, 0, VT_I8);
        if (FAILED(hr)) raiseFor(hr);
        HMODULE module = reinterpret_cast<HMODULE>(static_cast<LONG_PTR>(V_I8(&number)));
#else
        HRESULT hr = VariantChangeTypeEx(&number, &copy, LOCALE_USER_DEFAULT, 0, VT_I4);
        if (FAILED(hr)) raiseFor(hr);
        HMODULE module = reinterpret_cast<HMODULE>(static_cast<LONG_PTR>(V_I4(&number)));
#endif
        raw = loadStringResource(module, resourceId, localeId);
    }
    return convResString(raw, identifiers, values, appName, appVersion);
}

// ------------------------------------------------------------------ settings files

namespace {

void erase(SAFEARRAY** array) {
    if (!array || !*array) return;
    HRESULT hr = SafeArrayDestroy(*array);
    if (FAILED(hr)) raiseFor(hr);
    *array = nullptr;
}

SAFEARRAY* stringArray(const std::vector<std::wstring>& items) {
    SAFEARRAY* sa = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(items.size()));
    if (!sa) raise(kOutOfMemory);
    SafeArray owner(sa);
    ArrayData data(sa);
    BSTR* elements = static_cast<BSTR*>(data.data());
    for (size_t i = 0; i < items.size(); ++i) {
        if (items[i].empty()) continue;  // an empty string is a null BSTR
        elements[i] = SysAllocStringLen(items[i].data(), static_cast<UINT>(items[i].size()));
        if (!elements[i]) raise(kOutOfMemory);
    }
    return owner.detach();
}

// A Variant's array, or a one-element array (lower bound 0) around a value that is not one.
struct ArrayArgument {
    explicit ArrayArgument(const VARIANT* v) : value(view(v)), wrapper(wrap(value)) {}
    VARIANT value;  // a view, not owned
    SafeArray wrapper;

private:
    static SAFEARRAY* wrap(VARIANT& value) {
        if (V_VT(&value) & VT_ARRAY) return nullptr;
        SafeArray sa(SafeArrayCreateVector(VT_VARIANT, 0, 1));
        if (!sa.get()) raise(kOutOfMemory);
        LONG zero = 0;
        HRESULT hr = SafeArrayPutElement(sa.get(), &zero, &value);
        if (FAILED(hr)) raiseFor(hr);
        VariantInit(&value);
        V_VT(&value) = VT_ARRAY | VT_VARIANT;
        V_ARRAY(&value) = sa.get();
        return sa.detach();
    }
};

}  // namespace

std::wstring iniReadString(const std::wstring& file, const std::wstring& section, const std::wstring& key,
                           const std::wstring& defaultValue) {
    if (section.empty() || file.empty() || key.empty()) return {};
    char buffer[1024];
    const DWORD n = GetPrivateProfileStringA(toAnsi(section).c_str(), toAnsi(key).c_str(),
                                             toAnsi(defaultValue).c_str(), buffer, sizeof buffer,
                                             toAnsi(file).c_str());
    return fromAnsi(buffer, n);
}

long iniReadInteger(const std::wstring& file, const std::wstring& section, const std::wstring& key,
                    long defaultValue) {
    if (section.empty() || file.empty() || key.empty()) return defaultValue;
    return static_cast<long>(
        GetPrivateProfileIntA(toAnsi(section).c_str(), toAnsi(key).c_str(), defaultValue, toAnsi(file).c_str()));
}

bool iniReadSection(const std::wstring& file, const std::wstring& section, SAFEARRAY** keyNames,
                    SAFEARRAY** values) {
    erase(keyNames);
    erase(values);
    if (section.empty() || file.empty()) return false;
    std::vector<char> buffer(32767);
    const DWORD n = GetPrivateProfileSectionA(toAnsi(section).c_str(), buffer.data(),
                                              static_cast<DWORD>(buffer.size()), toAnsi(file).c_str());
    if (n == 0) return false;
    // key=value NUL key=value NUL ... NUL: without the final terminator, one line per NUL-separated part.
    const std::wstring text = fromAnsi(buffer.data(), n - 1);
    std::vector<std::wstring> keys, vals;
    if (n > 1) {
        for (size_t start = 0;;) {
            const size_t end = text.find(L'\0', start);
            const std::wstring line = text.substr(start, end == npos ? npos : end - start);
            const size_t eq = line.find(L'=');
            keys.push_back(eq == npos ? std::wstring() : line.substr(0, eq));
            vals.push_back(eq == npos ? std::wstring() : line.substr(eq + 1));
            if (end == npos) break;
            start = end + 1;
        }
    }
    if (!keys.empty() && keyNames && values) {
        SafeArray k(stringArray(keys)), v(stringArray(vals));
        *keyNames = k.detach();
        *values = v.detach();
    }
    return true;
}

bool iniWriteString(const std::wstring& file, const std::wstring& section, const std::wstring& key,
                    const std::wstring& value) {
    if (section.empty() || file.empty() || key.empty()) return false;
    return WritePrivateProfileStringA(toAnsi(section).c_str(), toAnsi(key).c_str(), toAnsi(value).c_str(),
                                      toAnsi(file).c_str()) != FALSE;
}

bool iniWriteSection(const std::wstring& file, const std::wstring& section, const VARIANT* keyNames,
                     const VARIANT* values) {
    if (section.empty() || file.empty()) return false;
    const ArrayArgument keys(keyNames), vals(values);
    long kl, ku, vl, vu;
    if (!getArrayBounds(&keys.value, kl, ku) || !getArrayBounds(&vals.value, vl, vu)) return false;
    if (static_cast<int64_t>(vu) - vl < static_cast<int64_t>(ku) - kl) return false;
    std::wstring text;
    for (int64_t i = kl; i <= ku; ++i) {
        text += textOf(elementAt(keys.value, static_cast<long>(i)), true);
        text += L'=';
        text += textOf(elementAt(vals.value, static_cast<long>(i)), true);
        text += L'\0';
    }
    // The lines end in NUL and the whole in a second one (c_str's).
    const std::string ansi = toAnsi(text);
    return WritePrivateProfileSectionA(toAnsi(section).c_str(), ansi.c_str(), toAnsi(file).c_str()) != FALSE;
}

}  // namespace strings
}  // namespace tova
