#include "encrypt_methods.h"

#include "cipher.h"

namespace tova {

const ClassIdentity EncryptMethods::kClass = {L"EncryptMethods", &CLSID_EncryptMethods, &IID__EncryptMethods,
                                              nullptr};

HRESULT createEncryptMethods(REFIID riid, void** ppv) { return EncryptMethods::create(riid, ppv); }

namespace {

std::wstring text(const BSTR* s) { return s && *s ? std::wstring(*s, SysStringLen(*s)) : std::wstring(); }

void result(BSTR* out, const std::wstring& s) { *required(out) = Bstr(s).detach(); }

// A String of `n` characters, for the result or a doubled key.
Bstr allocate(size_t n) {
    if (n > 0x7FFFFFF0u) raise(kOutOfMemory);
    Bstr s = Bstr::attach(SysAllocStringLen(nullptr, static_cast<UINT>(n)));
    if (!s.get()) raise(kOutOfMemory);
    return s;
}

cipher::Key keyOf(BSTR s) { return cipher::Key{s ? s : L"", SysStringLen(s)}; }

// The result is written straight into the returned string, and the keys,
// doubled for the text, straight into the Strings that go back to the
// caller's variables: for a long text these are the biggest costs there are.
template <class F>
void withKeys(BSTR* Text, BSTR* KeyA, BSTR* KeyB, LONG Level, BSTR* pRet, F cipherFn) {
    const BSTR t = *required(Text);
    const size_t n = SysStringLen(t);
    const cipher::Key a = keyOf(*required(KeyA)), b = keyOf(*required(KeyB));
    required(pRet);
    Bstr out = allocate(n);
    size_t written = cipherFn(t ? t : L"", n, a, b, Level, out.get());
    if (written < n) out = Bstr(out.get(), written);
    // Only a real run lengthens the keys (an empty key has been refused by now).
    Bstr doubledA, doubledB;
    if (Level > 0 && n > 0) {
        const size_t na = cipher::doubledLength(a.length, n), nb = cipher::doubledLength(b.length, n);
        if (na != a.length) {
            doubledA = allocate(na);
            cipher::writeDoubled(a, doubledA.get(), na);
        }
        if (nb != b.length) {
            doubledB = allocate(nb);
            cipher::writeDoubled(b, doubledB.get(), nb);
        }
    }
    if (doubledA.get()) { SysFreeString(*KeyA); *KeyA = doubledA.detach(); }
    if (doubledB.get()) { SysFreeString(*KeyB); *KeyB = doubledB.detach(); }
    *pRet = out.detach();
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
        withKeys(Text, KeyA, KeyB, Level, pRet, [](auto... args) { return cipher::encrypt(args...); });
    });
}

STDMETHODIMP EncryptMethods::Decrypt(BSTR* Text, BSTR* KeyA, BSTR* KeyB, LONG Level, BSTR* pRet) {
    return guard([&] {
        withKeys(Text, KeyA, KeyB, Level, pRet, [](auto... args) { return cipher::decrypt(args...); });
    });
}

}  // namespace tova
