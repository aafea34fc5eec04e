#include "registration.h"

#include "catalogue.h"
#include "dispatch.h"

#include <string>

namespace tova {

namespace {

const wchar_t kProgIdPrefix[] = L"TOVA32.";
// The automation marshaler for dual and dispatch interfaces.
const wchar_t kAutomationMarshaler[] = L"{00020424-0000-0000-C000-000000000046}";
#ifdef _WIN64
const wchar_t kPlatform[] = L"win64";
#else
const wchar_t kPlatform[] = L"win32";
#endif

class RegKey {
public:
    RegKey() = default;
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;
    ~RegKey() { if (h_) RegCloseKey(h_); }

    LONG create(HKEY parent, const std::wstring& path) {
        reset();
        return RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &h_, nullptr);
    }
    LONG open(HKEY parent, const std::wstring& path) {
        reset();
        return RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &h_);
    }
    LONG set(const wchar_t* name, const std::wstring& value) {
        return RegSetValueExW(h_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                              static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    }
    DWORD subkeyCount() const {
        DWORD n = 0;
        if (RegQueryInfoKeyW(h_, nullptr, nullptr, nullptr, &n, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr) != ERROR_SUCCESS)
            return 1;
        return n;
    }
    HKEY get() const { return h_; }
    void reset() { if (h_) { RegCloseKey(h_); h_ = nullptr; } }

private:
    HKEY h_ = nullptr;
};

std::wstring guidText(REFGUID g) {
    wchar_t b[40];
    StringFromGUID2(g, b, 40);
    return b;
}

std::wstring modulePath() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&modulePath), &module);
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD n = GetModuleFileNameW(module, &path[0], static_cast<DWORD>(path.size()));
        if (n == 0) return std::wstring();
        if (n < path.size()) { path.resize(n); return path; }
        path.resize(path.size() * 2);
    }
}

LONG openRoot(RegistrationScope scope, RegKey& root) {
    HKEY base = scope == RegistrationScope::User ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    return root.create(base, L"Software\\Classes");
}

}  // namespace

bool registrationFacts(ITypeLib* lib, RegistrationFacts& f) {
    TLIBATTR* attr = nullptr;
    if (!lib || FAILED(lib->GetLibAttr(&attr))) return false;
    f.libid = guidText(attr->guid);
    wchar_t v[32];
    wsprintfW(v, L"%x.%x", attr->wMajorVerNum, attr->wMinorVerNum);
    f.version = v;
    wsprintfW(v, L"%u.%u", attr->wMajorVerNum, attr->wMinorVerNum);
    f.decimalVersion = v;
    lib->ReleaseTLibAttr(attr);
    Bstr help;
    lib->GetDocumentation(-1, nullptr, help.put(), nullptr, nullptr);
    f.help = help.str();

    f.classes.clear();
    size_t count = 0;
    const ClassEntry* entries = classEntries(&count);
    for (size_t i = 0; i < count; ++i) {
        const ClassEntry& e = entries[i];
        if (e.instancing == Instancing::NotCreatable) continue;
        f.classes.push_back({e.name, guidText(*e.clsid), std::wstring(kProgIdPrefix) + e.name});
    }

    f.interfaces.clear();
    for (UINT i = 0, n = lib->GetTypeInfoCount(); i < n; ++i) {
        TYPEKIND kind;
        if (FAILED(lib->GetTypeInfoType(i, &kind)) || (kind != TKIND_INTERFACE && kind != TKIND_DISPATCH)) continue;
        ComPtr<ITypeInfo> info;
        if (FAILED(lib->GetTypeInfo(i, info.put()))) continue;
        TYPEATTR* ta = nullptr;
        if (FAILED(info->GetTypeAttr(&ta))) continue;
        GUID iid = ta->guid;
        info->ReleaseTypeAttr(ta);
        Bstr name;
        lib->GetDocumentation(i, name.put(), nullptr, nullptr, nullptr);
        f.interfaces.push_back({name.str(), guidText(iid)});
    }
    return true;
}

std::vector<RegistryEntry> registrationEntries(const RegistrationFacts& lib, const std::wstring& dllPath,
                                               const std::wstring& helpDir, const wchar_t* platform) {
    std::vector<RegistryEntry> out;
    auto add = [&](const std::wstring& key, const wchar_t* name, const std::wstring& value) {
        out.push_back({key, name ? name : L"", value});
    };
    for (const RegistrationFacts::Class& c : lib.classes) {
        const std::wstring clsidKey = L"CLSID\\" + c.clsid;
        add(c.progId, nullptr, c.name);
        add(c.progId + L"\\CLSID", nullptr, c.clsid);
        add(clsidKey, nullptr, c.name);
        add(clsidKey + L"\\InprocServer32", nullptr, dllPath);
        add(clsidKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
        add(clsidKey + L"\\ProgID", nullptr, c.progId);
        add(clsidKey + L"\\VersionIndependentProgID", nullptr, c.progId);
        add(clsidKey + L"\\TypeLib", nullptr, lib.libid);
        add(clsidKey + L"\\Version", nullptr, lib.version);
    }
    for (const RegistrationFacts::Interface& i : lib.interfaces) {
        const std::wstring key = L"Interface\\" + i.iid;
        add(key, nullptr, i.name);
        add(key + L"\\ProxyStubClsid", nullptr, kAutomationMarshaler);
        add(key + L"\\ProxyStubClsid32", nullptr, kAutomationMarshaler);
        add(key + L"\\TypeLib", nullptr, lib.libid);
        add(key + L"\\TypeLib", L"Version", lib.version);
    }
    const std::wstring libKey = L"TypeLib\\" + lib.libid + L"\\" + lib.version;
    add(libKey, nullptr, lib.help);
    add(libKey + L"\\0\\" + platform, nullptr, dllPath);
    add(libKey + L"\\FLAGS", nullptr, L"0");
    add(libKey + L"\\HELPDIR", nullptr, helpDir);
    return out;
}

HRESULT registerServer(RegistrationScope scope) {
    RegistrationFacts lib;
    if (!registrationFacts(typeLibrary(), lib)) return SELFREG_E_TYPELIB;
    const std::wstring path = modulePath();
    if (path.empty()) return SELFREG_E_CLASS;
    RegKey root;
    LONG rc = openRoot(scope, root);
    if (rc != ERROR_SUCCESS) return HRESULT_FROM_WIN32(rc);
    const std::wstring dir = path.substr(0, path.find_last_of(L'\\'));
    for (const RegistryEntry& e : registrationEntries(lib, path, dir, kPlatform)) {
        RegKey k;
        LONG err = k.create(root.get(), e.key);
        if (err == ERROR_SUCCESS) err = k.set(e.name.empty() ? nullptr : e.name.c_str(), e.value);
        if (err != ERROR_SUCCESS) return HRESULT_FROM_WIN32(err);
    }
    return S_OK;
}

HRESULT unregisterServer(RegistrationScope scope) {
    RegistrationFacts lib;
    if (!registrationFacts(typeLibrary(), lib)) return SELFREG_E_TYPELIB;
    RegKey root;
    LONG rc = openRoot(scope, root);
    if (rc != ERROR_SUCCESS) return HRESULT_FROM_WIN32(rc);

    for (const RegistrationFacts::Class& c : lib.classes) {
        RegDeleteTreeW(root.get(), c.progId.c_str());
        RegDeleteTreeW(root.get(), (L"CLSID\\" + c.clsid).c_str());
    }
    for (const RegistrationFacts::Interface& i : lib.interfaces)
        RegDeleteTreeW(root.get(), (L"Interface\\" + i.iid).c_str());

    // The type library's key may also hold the other bitness's registration.
    const std::wstring libRoot = L"TypeLib\\" + lib.libid;
    const std::wstring libKey = libRoot + L"\\" + lib.version;
    RegDeleteTreeW(root.get(), (libKey + L"\\0\\" + kPlatform).c_str());
    RegKey k;
    if (k.open(root.get(), libKey + L"\\0") == ERROR_SUCCESS && k.subkeyCount() == 0) {
        k.reset();
        RegDeleteTreeW(root.get(), libKey.c_str());
    } else if (k.open(root.get(), libKey + L"\\0") != ERROR_SUCCESS) {
        RegDeleteTreeW(root.get(), libKey.c_str());
    }
    if (k.open(root.get(), libRoot) == ERROR_SUCCESS && k.subkeyCount() == 0) {
        k.reset();
        RegDeleteTreeW(root.get(), libRoot.c_str());
    }
    return S_OK;
}

}  // namespace tova
