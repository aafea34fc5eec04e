#include "string_methods.h"

#include "strings.h"

namespace tova {

const ClassIdentity StringMethods::kClass = {L"StringMethods", &CLSID_StringMethods, &IID__StringMethods, nullptr};

HRESULT createStringMethods(REFIID riid, void** ppv) { return StringMethods::create(riid, ppv); }

namespace {

std::wstring text(BSTR s) { return s ? std::wstring(s, SysStringLen(s)) : std::wstring(); }
std::wstring text(const BSTR* s) { return s ? text(*s) : std::wstring(); }

void result(BSTR* out, const std::wstring& s) { *required(out) = Bstr(s).detach(); }

// A by-reference string the caller may leave out (a null pointer): `fallback` then.
std::wstring textOr(const BSTR* s, const wchar_t* fallback) { return s ? text(*s) : std::wstring(fallback); }

template <class T>
T valueOr(const T* p, T fallback) { return p ? *p : fallback; }

}  // namespace

STDMETHODIMP StringMethods::GetFileDrive(BSTR* PathSpec, BSTR* pRet) {
    return guard([&] { result(pRet, strings::fileDrive(text(required(PathSpec)))); });
}

STDMETHODIMP StringMethods::GetFilePath(BSTR* PathSpec, BSTR* pRet) {
    return guard([&] { result(pRet, strings::filePath(text(required(PathSpec)))); });
}

STDMETHODIMP StringMethods::GetFileTitle(BSTR* PathSpec, VARIANT_BOOL WithExt, BSTR* pRet) {
    return guard([&] { result(pRet, strings::fileTitle(text(required(PathSpec)), fromVB(WithExt))); });
}

STDMETHODIMP StringMethods::GetFileExtension(BSTR* PathSpec, BSTR* pRet) {
    return guard([&] { result(pRet, strings::fileExtension(text(required(PathSpec)))); });
}

STDMETHODIMP StringMethods::GetBackupFilename(BSTR* FileSpec, BSTR* NewExtension, BSTR* pRet) {
    return guard([&] {
        result(pRet, strings::backupFilename(text(required(FileSpec)), textOr(NewExtension, L"BAK")));
    });
}

STDMETHODIMP StringMethods::ConvertString(BSTR* Text, BSTR* pRet) {
    return guard([&] {
        Bstr converted(strings::properCase(text(required(Text))));
        Bstr copy(converted);
        required(pRet);
        // The caller's variable takes the proper-cased text too.
        SysFreeString(*Text);
        *Text = converted.detach();
        *pRet = copy.detach();
    });
}

STDMETHODIMP StringMethods::FormatHex(LONG* Value, LONG Digits, BSTR* pRet) {
    return guard([&] { result(pRet, strings::formatHex(*required(Value), Digits)); });
}

STDMETHODIMP StringMethods::IsVariantValid(VARIANT* pVar, VARTYPE ExpectedType, VARIANT_BOOL AllowArray,
                                           VARIANT_BOOL AllowEmpty, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(strings::isVariantValid(pVar, ExpectedType, fromVB(AllowArray), fromVB(AllowEmpty)));
    });
}

STDMETHODIMP StringMethods::SizeOfVariant(VARIANT* pVar, LONG* pRet) {
    return guard([&] { *required(pRet) = strings::sizeOfVariant(pVar); });
}

STDMETHODIMP StringMethods::TrimDirString(BSTR* Filename, LONG MaxLength, BSTR* pRet) {
    return guard([&] { result(pRet, strings::trimDirString(text(required(Filename)), MaxLength)); });
}

STDMETHODIMP StringMethods::ReadResStringEx(LONG* ResourceID, LONG* LocaleID, VARIANT* Source, VARIANT* Identifiers,
                                            VARIANT* Values, VARIANT* ClientAppName, VARIANT* ClientAppVersion,
                                            BSTR* pRet) {
    return guard([&] {
        result(pRet, strings::readResString(*required(ResourceID), *required(LocaleID), required(Source),
                                            Identifiers, Values, ClientAppName, ClientAppVersion));
    });
}

STDMETHODIMP StringMethods::ConvResString(BSTR* ResString, VARIANT* Identifiers, VARIANT* Values,
                                          VARIANT* ClientAppName, VARIANT* ClientAppVersion, BSTR* pRet) {
    return guard([&] {
        result(pRet, strings::convResString(text(required(ResString)), Identifiers, Values, ClientAppName,
                                            ClientAppVersion));
    });
}

STDMETHODIMP StringMethods::IsString(VARIANT* Var, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isString(Var)); });
}

STDMETHODIMP StringMethods::IsCharset(BSTR* Char, BSTR* Charset, ComparisonConstants* Compare, VARIANT_BOOL* pRet) {
    return guard([&] {
        const long compare = valueOr<ComparisonConstants>(Compare, tovaCompareBinary);
        *required(pRet) = toVB(strings::isCharset(text(required(Char)), text(required(Charset)), compare));
    });
}

STDMETHODIMP StringMethods::IsAlpha(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isAlpha(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsDigit(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isDigit(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsHexDigit(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isHexDigit(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsAlphaDigit(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isAlphaDigit(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsLowerCase(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isLowerCase(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsUpperCase(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isUpperCase(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsSpace(BSTR* Char, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(strings::isSpace(text(required(Char)))); });
}

STDMETHODIMP StringMethods::IsLike(BSTR* LHS, BSTR* RHS, ComparisonConstants* Compare, VARIANT_BOOL* pRet) {
    return guard([&] {
        const long compare = valueOr<ComparisonConstants>(Compare, tovaCompareText);
        *required(pRet) = toVB(strings::isLike(text(required(LHS)), text(required(RHS)), compare));
    });
}

STDMETHODIMP StringMethods::GetAccessKey(BSTR Caption, BSTR* pRet) {
    return guard([&] { result(pRet, strings::accessKey(text(Caption))); });
}

STDMETHODIMP StringMethods::INIReadString(BSTR* Filename, BSTR* Section, BSTR* KeyName, BSTR* Default, BSTR* pRet) {
    return guard([&] {
        result(pRet, strings::iniReadString(text(required(Filename)), text(required(Section)),
                                            text(required(KeyName)), textOr(Default, L"")));
    });
}

STDMETHODIMP StringMethods::INIReadInteger(BSTR* Filename, BSTR* Section, BSTR* KeyName, LONG* Default,
                                           LONG* pRet) {
    return guard([&] {
        *required(pRet) = strings::iniReadInteger(text(required(Filename)), text(required(Section)),
                                                  text(required(KeyName)), valueOr<LONG>(Default, 0));
    });
}

STDMETHODIMP StringMethods::INIReadSection(BSTR* Filename, BSTR* Section, SAFEARRAY** KeyNames, SAFEARRAY** Values,
                                           VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(strings::iniReadSection(text(required(Filename)), text(required(Section)),
                                                       required(KeyNames), required(Values)));
    });
}

STDMETHODIMP StringMethods::INIWriteString(BSTR* Filename, BSTR* Section, BSTR* KeyName, BSTR* Value,
                                           VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(strings::iniWriteString(text(required(Filename)), text(required(Section)),
                                                       text(required(KeyName)), text(required(Value))));
    });
}

STDMETHODIMP StringMethods::INIWriteSection(BSTR* Filename, BSTR* Section, VARIANT* KeyNames, VARIANT* Values,
                                            VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(strings::iniWriteSection(text(required(Filename)), text(required(Section)),
                                                        required(KeyNames), required(Values)));
    });
}

}  // namespace tova
