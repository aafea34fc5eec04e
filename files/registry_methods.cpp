#include "registry_methods.h"

#include "registry.h"

namespace tova {

const ClassIdentity RegistryMethods::kClass = {L"RegistryMethods", &CLSID_RegistryMethods, &IID__RegistryMethods,
                                               nullptr};

HRESULT createRegistryMethods(REFIID riid, void** ppv) { return RegistryMethods::create(riid, ppv); }

namespace {

std::wstring text(const BSTR* s) {
    BSTR b = *required(s);
    return b ? std::wstring(b, SysStringLen(b)) : std::wstring();
}

// The enumeration's 32 bits as the Long the registry functions take.
long root(RootKeyTypeEnum r) { return static_cast<long>(static_cast<int32_t>(r)); }

}  // namespace

STDMETHODIMP RegistryMethods::UpdateKey(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, BSTR* SubKeyValue,
                                        VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(registry::updateKey(root(KeyRoot), text(KeyName), text(SubKeyName), text(SubKeyValue)));
    });
}

STDMETHODIMP RegistryMethods::GetKeyValue(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName, VARIANT* Default,
                                          BSTR* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = Bstr(registry::getKeyValue(root(KeyRoot), text(KeyName), text(SubKeyName), Default)).detach();
    });
}

STDMETHODIMP RegistryMethods::UpdateKeyEx(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName,
                                          SAFEARRAY** ByteArray, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) =
            toVB(registry::updateKeyEx(root(KeyRoot), text(KeyName), text(SubKeyName), *required(ByteArray)));
    });
}

STDMETHODIMP RegistryMethods::GetKeyValueEx(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName,
                                            SAFEARRAY** ByteArray, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) =
            toVB(registry::getKeyValueEx(root(KeyRoot), text(KeyName), text(SubKeyName), required(ByteArray)));
    });
}

STDMETHODIMP RegistryMethods::GetAllSubKeys(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT* pRet) {
    return guard([&] {
        Variant result;
        registry::getAllSubKeys(root(KeyRoot), text(KeyName), &result);
        result.detachTo(required(pRet));
    });
}

STDMETHODIMP RegistryMethods::GetAllKeyValues(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT* pRet) {
    return guard([&] {
        Variant result;
        registry::getAllKeyValues(root(KeyRoot), text(KeyName), &result);
        result.detachTo(required(pRet));
    });
}

STDMETHODIMP RegistryMethods::DeleteKey(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(registry::deleteKey(root(KeyRoot), text(KeyName))); });
}

STDMETHODIMP RegistryMethods::DeleteKeyValue(RootKeyTypeEnum KeyRoot, BSTR* KeyName, BSTR* SubKeyName,
                                             VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = toVB(registry::deleteKeyValue(root(KeyRoot), text(KeyName), text(SubKeyName)));
    });
}

STDMETHODIMP RegistryMethods::DeleteAllKeyValues(RootKeyTypeEnum KeyRoot, BSTR* KeyName, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(registry::deleteAllKeyValues(root(KeyRoot), text(KeyName))); });
}

}  // namespace tova
