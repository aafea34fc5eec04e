#include "dictionary_methods.h"

#include "dictionary.h"

namespace tova {

const ClassIdentity DictionaryMethods::kClass = {L"DictionaryMethods", &CLSID_DictionaryMethods,
                                                 &IID__DictionaryMethods, nullptr};

HRESULT createDictionaryMethods(REFIID riid, void** ppv) { return DictionaryMethods::create(riid, ppv); }

namespace {

std::wstring text(const BSTR* s) { return *s ? std::wstring(*s, SysStringLen(*s)) : std::wstring(); }

BSTR toBstr(const std::wstring& s) {
    BSTR b = SysAllocStringLen(s.data(), static_cast<UINT>(s.size()));
    if (!b) raise(kOutOfMemory);
    return b;
}

}  // namespace

STDMETHODIMP DictionaryMethods::CreateDictionary(LONG* CompareMode, IDispatch** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = dictionary::create(CompareMode ? *CompareMode : dictionary::kTextCompare).detach();
    });
}

STDMETHODIMP DictionaryMethods::GetKey(IDispatch* Dictionary, VARIANT* Index, BSTR* pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        *pRet = toBstr(dictionary::key(Dictionary, *required(Index)));
    });
}

STDMETHODIMP DictionaryMethods::GetIndex(IDispatch* Dictionary, VARIANT* Index, LONG* pRet) {
    return guard([&] { *required(pRet) = dictionary::index(Dictionary, *required(Index)); });
}

STDMETHODIMP DictionaryMethods::IsObjectDictionary(IDispatch* Dictionary, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(dictionary::isObjectDictionary(Dictionary)); });
}

STDMETHODIMP DictionaryMethods::GetItem(IDispatch* Dictionary, VARIANT* Index, VARIANT* pRet) {
    return guard([&] {
        VariantInit(required(pRet));
        dictionary::item(Dictionary, *required(Index)).detachTo(pRet);
    });
}

STDMETHODIMP DictionaryMethods::SetItem(IDispatch* Dictionary, VARIANT* Index, VARIANT* Item, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(dictionary::setItem(Dictionary, *required(Index), *required(Item)));
    });
}

STDMETHODIMP DictionaryMethods::ChangeKey(IDispatch* Dictionary, BSTR* Key, BSTR* newKey, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(dictionary::changeKey(Dictionary, text(required(Key)), text(required(newKey))));
    });
}

STDMETHODIMP DictionaryMethods::ChangeIndex(IDispatch* Dictionary, BSTR* Key, LONG* newIndex, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(dictionary::changeIndex(Dictionary, text(required(Key)), *required(newIndex)));
    });
}

STDMETHODIMP DictionaryMethods::ItemExists(IDispatch* Dictionary, BSTR* Key, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(dictionary::exists(Dictionary, text(required(Key)))); });
}

STDMETHODIMP DictionaryMethods::GetCount(IDispatch* Dictionary, LONG* pRet) {
    return guard([&] { *required(pRet) = dictionary::count(Dictionary); });
}

STDMETHODIMP DictionaryMethods::RemoveItem(IDispatch* Dictionary, VARIANT* Index, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(dictionary::remove(Dictionary, *required(Index))); });
}

}  // namespace tova
