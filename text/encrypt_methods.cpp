#include "encrypt_methods.h"

#include "cipher.h"

namespace tova {

const ClassIdentity EncryptMethods::kClass = {L"EncryptMethods", &CLSID_EncryptMethods, &IID__EncryptMethods,
                                              nullptr};

HRESULT createEncryptMethods(REFIID riid, void** ppv) { return EncryptMethods::create(riid, ppv); }

namespace {

std::wstring text(const BSTR* s) { return s && *s ? std::wstring(*s, SysStringLen(*s)) : std::wstring(); }

void result(BSTR* out, const std::wstring& s) { *required(out) = Bstr(s).detach(); }

// The keys are doubled for the text and go back to the caller's variables; the
// result is written straight into the returned string.
template <class F>
void withKeys(BSTR* Text, BSTR* KeyA, BSTR* KeyB, BSTR* pRet, F cipherFn) {
    const BSTR t = *required(Text);
    const size_t n = SysStringLen(t);
    std::wstring a = text(required(KeyA)), b = text(required(KeyB));
    const size_t lengthA = a.size(), lengthB = b.size();
    Bstr out = Bstr::attach(SysAllocStringLen(nullptr, static_cast<UINT>(n)));
    if (!out.get()) raise(kOutOfMemory);
    size_t written = cipherFn(t ? t : L"", n, a, b, out.get());
    if (written < n) out = Bstr(out.get(), written);
    if (a.size() != lengthA) { SysFreeString(*KeyA); *KeyA = Bstr(a).detach(); }
    if (b.size() != lengthB) { SysFreeString(*KeyB); *KeyB = Bstr(b).detach(); }
    *required(pRet) = out.detach();
}

}  // namespace

STDMETHODIMP EncryptMethods::Hexise(BSTR* Text, BSTR* pRet) {
    return guard([&] { result(pRet, cipher::hexise(text(required(Text)))); });
}

STDMETHODIMP EncryptMethods::DeHexise(BSTR* Text, BSTR* pRet) {
    return guard([&] { result(pRet, cipher::dehexise(text(required(Text)))); });
}

STDMETHODIMP EncryptMethods::GenerateRandomString(LONG Length, BSTR* Delimiter, LONG DelimiterFreq, BSTR* pRet) {
    return guard([&] { result(pRet, cipher::randomString(Length, text(Delimiter), DelimiterFreq)); });
}

STDMETHODIMP EncryptMethods::Encrypt(BSTR* Text, BSTR* KeyA, BSTR* KeyB, LONG Level, BSTR* pRet) {
    return guard([&] {
        withKeys(Text, KeyA, KeyB, pRet,
                 [&](const wchar_t* t, size_t n, std::wstring& a, std::wstring& b, wchar_t* out) {
                     return cipher::encrypt(t, n, a, b, Level, out);
                 });
    });
}

STDMETHODIMP EncryptMethods::Decrypt(BSTR* Text, BSTR* KeyA, BSTR* KeyB, LONG Level, BSTR* pRet) {
    return guard([&] {
        withKeys(Text, KeyA, KeyB, pRet,
                 [&](const wchar_t* t, size_t n, std::wstring& a, std::wstring& b, wchar_t* out) {
                     return cipher::decrypt(t, n, a, b, Level, out);
                 });
    });
}

}  // namespace tova
