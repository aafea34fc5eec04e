// StringMethods: global helpers over path strings, text, character classes,
// resource strings, Variants and settings files.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class StringMethods final : public Object<StringMethods, _StringMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP GetFileDrive(BSTR* PathSpec, BSTR* pRet) override;
    STDMETHODIMP GetFilePath(BSTR* PathSpec, BSTR* pRet) override;
    STDMETHODIMP GetFileTitle(BSTR* PathSpec, VARIANT_BOOL WithExt, BSTR* pRet) override;
    STDMETHODIMP GetFileExtension(BSTR* PathSpec, BSTR* pRet) override;
    STDMETHODIMP GetBackupFilename(BSTR* FileSpec, BSTR* NewExtension, BSTR* pRet) override;
    STDMETHODIMP ConvertString(BSTR* Text, BSTR* pRet) override;
    STDMETHODIMP FormatHex(LONG* Value, LONG Digits, BSTR* pRet) override;
    STDMETHODIMP IsVariantValid(VARIANT* pVar, VARTYPE ExpectedType, VARIANT_BOOL AllowArray, VARIANT_BOOL AllowEmpty,
                                VARIANT_BOOL* pRet) override;
    STDMETHODIMP SizeOfVariant(VARIANT* pVar, LONG* pRet) override;
    STDMETHODIMP TrimDirString(BSTR* Filename, LONG MaxLength, BSTR* pRet) override;
    STDMETHODIMP ReadResStringEx(LONG* ResourceID, LONG* LocaleID, VARIANT* Source, VARIANT* Identifiers,
                                 VARIANT* Values, VARIANT* ClientAppName, VARIANT* ClientAppVersion,
                                 BSTR* pRet) override;
    STDMETHODIMP ConvResString(BSTR* ResString, VARIANT* Identifiers, VARIANT* Values, VARIANT* ClientAppName,
                               VARIANT* ClientAppVersion, BSTR* pRet) override;
    STDMETHODIMP IsString(VARIANT* Var, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsCharset(BSTR* Char, BSTR* Charset, ComparisonConstants* Compare, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsAlpha(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsDigit(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsHexDigit(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsAlphaDigit(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsLowerCase(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsUpperCase(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsSpace(BSTR* Char, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IsLike(BSTR* LHS, BSTR* RHS, ComparisonConstants* Compare, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetAccessKey(BSTR Caption, BSTR* pRet) override;
    STDMETHODIMP INIReadString(BSTR* Filename, BSTR* Section, BSTR* KeyName, BSTR* Default, BSTR* pRet) override;
    STDMETHODIMP INIReadInteger(BSTR* Filename, BSTR* Section, BSTR* KeyName, LONG* Default, LONG* pRet) override;
    STDMETHODIMP INIReadSection(BSTR* Filename, BSTR* Section, SAFEARRAY** KeyNames, SAFEARRAY** Values,
                                VARIANT_BOOL* pRet) override;
    STDMETHODIMP INIWriteString(BSTR* Filename, BSTR* Section, BSTR* KeyName, BSTR* Value,
                                VARIANT_BOOL* pRet) override;
    STDMETHODIMP INIWriteSection(BSTR* Filename, BSTR* Section, VARIANT* KeyNames, VARIANT* Values,
                                 VARIANT_BOOL* pRet) override;

private:
    friend class Object<StringMethods, _StringMethods>;
    StringMethods() = default;
};

}  // namespace tova
