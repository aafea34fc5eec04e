// DictionaryMethods: positional access to the scripting runtime's Dictionary,
// which the caller creates or passes and which is changed in place.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class DictionaryMethods final : public Object<DictionaryMethods, _DictionaryMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP CreateDictionary(LONG* CompareMode, IDispatch** pRet) override;
    STDMETHODIMP GetKey(IDispatch* Dictionary, VARIANT* Index, BSTR* pRet) override;
    STDMETHODIMP GetIndex(IDispatch* Dictionary, VARIANT* Index, LONG* pRet) override;
    STDMETHODIMP IsObjectDictionary(IDispatch* Dictionary, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetItem(IDispatch* Dictionary, VARIANT* Index, VARIANT* pRet) override;
    STDMETHODIMP SetItem(IDispatch* Dictionary, VARIANT* Index, VARIANT* Item, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ChangeKey(IDispatch* Dictionary, BSTR* Key, BSTR* newKey, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ChangeIndex(IDispatch* Dictionary, BSTR* Key, LONG* newIndex, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ItemExists(IDispatch* Dictionary, BSTR* Key, VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetCount(IDispatch* Dictionary, LONG* pRet) override;
    STDMETHODIMP RemoveItem(IDispatch* Dictionary, VARIANT* Index, VARIANT_BOOL* pRet) override;

private:
    friend class Object<DictionaryMethods, _DictionaryMethods>;
    DictionaryMethods() = default;
};

}  // namespace tova
