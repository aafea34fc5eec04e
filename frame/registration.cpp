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

struct LibraryFacts {
    std::wstring libid;
    std::wstring version;   // as the type-library keys spell it: hexadecimal
    std::wstring help;
};

bool libraryFacts(LibraryFacts& f) {
    ITypeLib* lib = typeLibrary();
    TLIBATTR* attr = nullptr;
    if (!lib || FAILED(lib->GetLibAttr(&attr))) return false;
    f.libid = guidText(attr->guid);
    wchar_t v[32];
    wsprintfW(v, L"%x.%x", attr->wMajorVerNum, attr->wMinorVerNum);
    f.version = v;
    lib->ReleaseTLibAttr(attr);
    Bstr help;
    lib->GetDocumentation(-1, nullptr, help.put(), nullptr, nullptr);
    f.help = help.str();
    return true;
}

// Calls `fn(iid, name)` for every interface the library describes.
template <class F>
void forEachInterface(F fn) {
    ITypeLib* lib = typeLibrary();
    for (UINT i = 0, n = lib->GetTypeInfoCount(); i < n; ++i) {
        TYPEKIND kind;
        if (FAILED(lib->GetTypeInfoType(i, &kind)) || (kind != TKIND_INTERFACE && kind != TKIND_DISPATCH)) continue;
        ComPtr<ITypeInfo> info;
        if (FAILED(lib->GetTypeInfo(i, info.put()))) continue;
        TYPEATTR* attr = nullptr;
        if (FAILED(info->GetTypeAttr(&attr))) continue;
        GUID iid = attr->guid;
        info->ReleaseTypeAttr(attr);
        Bstr name;
        lib->GetDocumentation(i, name.put(), nullptr, nullptr, nullptr);
        fn(iid, name.str());
    }
}

// Calls `fn(entry, progId, clsidKey)` for every class clients create through the registry.
template <class F>
bool forEachRegisteredClass(F fn) {
    size_t count = 0;
    const ClassEntry* entries = classEntries(&count);
    for (size_t i = 0; i < count; ++i) {
        const ClassEntry& e = entries[i];
        if (e.instancing == Instancing::NotCreatable) continue;
        if (!fn(e, std::wstring(kProgIdPrefix) + e.name, L"CLSID\\" + guidText(*e.clsid))) return false;
    }
    return true;
}

}  // namespace

HRESULT registerServer(RegistrationScope scope) {
    LibraryFacts lib;
    if (!libraryFacts(lib)) return SELFREG_E_TYPELIB;
    const std::wstring path = modulePath();
    if (path.empty()) return SELFREG_E_CLASS;
    RegKey root;
    LONG rc = openRoot(scope, root);
    if (rc != ERROR_SUCCESS) return HRESULT_FROM_WIN32(rc);

    bool classesOk = forEachRegisteredClass([&](const ClassEntry& e, const std::wstring& progId,
                                                const std::wstring& clsidKey) {
        const std::wstring clsid = guidText(*e.clsid);
        RegKey k;
        return k.create(root.get(), progId) == ERROR_SUCCESS && k.set(nullptr, e.name) == ERROR_SUCCESS &&
               k.create(root.get(), progId + L"\\CLSID") == ERROR_SUCCESS && k.set(nullptr, clsid) == ERROR_SUCCESS &&
               k.create(root.get(), clsidKey) == ERROR_SUCCESS && k.set(nullptr, e.name) == ERROR_SUCCESS &&
               k.create(root.get(), clsidKey + L"\\InprocServer32") == ERROR_SUCCESS &&
               k.set(nullptr, path) == ERROR_SUCCESS && k.set(L"ThreadingModel", L"Apartment") == ERROR_SUCCESS &&
               k.create(root.get(), clsidKey + L"\\ProgID") == ERROR_SUCCESS && k.set(nullptr, progId) == ERROR_SUCCESS &&
               k.create(root.get(), clsidKey + L"\\VersionIndependentProgID") == ERROR_SUCCESS &&
               k.set(nullptr, progId) == ERROR_SUCCESS &&
               k.create(root.get(), clsidKey + L"\\TypeLib") == ERROR_SUCCESS && k.set(nullptr, lib.libid) == ERROR_SUCCESS &&
               k.create(root.get(), clsidKey + L"\\Version") == ERROR_SUCCESS && k.set(nullptr, lib.version) == ERROR_SUCCESS;
    });
    if (!classesOk) return SELFREG_E_CLASS;

    bool ok = true;
    forEachInterface([&](REFGUID iid, const std::wstring& name) {
        const std::wstring key = L"Interface\\" + guidText(iid);
        RegKey k;
        ok = ok && k.create(root.get(), key) == ERROR_SUCCESS && k.set(nullptr, name) == ERROR_SUCCESS &&
             k.create(root.get(), key + L"\\ProxyStubClsid") == ERROR_SUCCESS && k.set(nullptr, kAutomationMarshaler) == ERROR_SUCCESS &&
             k.create(root.get(), key + L"\\ProxyStubClsid32") == ERROR_SUCCESS && k.set(nullptr, kAutomationMarshaler) == ERROR_SUCCESS &&
             k.create(root.get(), key + L"\\TypeLib") == ERROR_SUCCESS && k.set(nullptr, lib.libid) == ERROR_SUCCESS &&
             k.set(L"Version", lib.version) == ERROR_SUCCESS;
    });
    if (!ok) return SELFREG_E_TYPELIB;

    const std::wstring libKey = L"TypeLib\\" + lib.libid + L"\\" + lib.version;
    std::wstring dir = path.substr(0, path.find_last_of(L'\\'));
    RegKey k;
    ok = k.create(root.get(), libKey) == ERROR_SUCCESS && k.set(nullptr, lib.help) == ERROR_SUCCESS &&
         k.create(root.get(), libKey + L"\\0\\" + kPlatform) == ERROR_SUCCESS && k.set(nullptr, path) == ERROR_SUCCESS &&
         k.create(root.get(), libKey + L"\\FLAGS") == ERROR_SUCCESS && k.set(nullptr, L"0") == ERROR_SUCCESS &&
         k.create(root.get(), libKey + L"\\HELPDIR") == ERROR_SUCCESS && k.set(nullptr, dir) == ERROR_SUCCESS;
    return ok ? S_OK : SELFREG_E_TYPELIB;
}

HRESULT unregisterServer(RegistrationScope scope) {
    LibraryFacts lib;
    if (!libraryFacts(lib)) return SELFREG_E_TYPELIB;
    RegKey root;
    LONG rc = openRoot(scope, root);
    if (rc != ERROR_SUCCESS) return HRESULT_FROM_WIN32(rc);

    forEachRegisteredClass([&](const ClassEntry&, const std::wstring& progId, const std::wstring& clsidKey) {
        RegDeleteTreeW(root.get(), progId.c_str());
        RegDeleteTreeW(root.get(), clsidKey.c_str());
        return true;
    });
    forEachInterface([&](REFGUID iid, const std::wstring&) {
        RegDeleteTreeW(root.get(), (L"Interface\\" + guidText(iid)).c_str());
    });

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
