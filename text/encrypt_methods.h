// EncryptMethods: global helpers for hexadecimal text, random strings and the
// light symmetric text cipher.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class EncryptMethods final : public Object<EncryptMethods, _EncryptMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP Hexise(BSTR* Text, BSTR* pRet) override;
    STDMETHODIMP DeHexise(BSTR* Text, BSTR* pRet) override;
    STDMETHODIMP GenerateRandomString(LONG Length, BSTR* Delimiter, LONG DelimiterFreq, BSTR* pRet) override;
    STDMETHODIMP Encrypt(BSTR* Text, BSTR* KeyA, BSTR* KeyB, LONG Level, BSTR* pRet) override;
    STDMETHODIMP Decrypt(BSTR* Text, BSTR* KeyA, BSTR* KeyB, LONG Level, BSTR* pRet) override;

private:
    friend class Object<EncryptMethods, _EncryptMethods>;
    EncryptMethods() = default;
};

}  // namespace tova
