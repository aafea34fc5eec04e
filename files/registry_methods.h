// RegistryMethods: global, stateless helpers that read, write, enumerate and
// delete registry keys and values in one call each, over the registry module.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class RegistryMethods final : public Object<RegistryMethods, _RegistryMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP UpdateKey(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, BSTR* SubKeyValue,
                           VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetKeyValue(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, VARIANT* Default,
                             BSTR* pRet) override;
    STDMETHODIMP UpdateKeyEx(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, SAFEARRAY** ByteArray,
                             VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetKeyValueEx(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, SAFEARRAY** ByteArray,
                               VARIANT_BOOL* pRet) override;
    STDMETHODIMP GetAllSubKeys(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT* pRet) override;
    STDMETHODIMP GetAllKeyValues(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT* pRet) override;
    STDMETHODIMP DeleteKey(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DeleteKeyValue(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DeleteAllKeyValues(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT_BOOL* pRet) override;

private:
    friend class Object<RegistryMethods, _RegistryMethods>;
    RegistryMethods() = default;
};

}  // namespace tova
