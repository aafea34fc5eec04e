#include "server_registration.h"

#include "last_error.h"
#include "words_guids.h"
#include "../frame/values.h"

#include <objbase.h>

#include <vector>

namespace tova::servers {

namespace {

// A loaded module, freed when it goes.
class Module {
public:
    explicit Module(const std::wstring& path)
        : h_(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {}
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module() { if (h_) FreeLibrary(h_); }
    HMODULE get() const { return h_; }

private:
    HMODULE h_;
};

template <class F>
F entryPoint(HMODULE module, const char* name) {
    return reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Opens Software\Classes\<path> as the merged classes root does, the user's
// first: Wine's HKEY_CLASSES_ROOT shows the machine's classes only, so a
// per-user registration would be missed there.
bool openClassKey(const std::wstring& path, RegistryKey& key) {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        if (RegOpenKeyExW(root, (L"Software\\Classes\\" + path).c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS)
            return true;
    }
    return false;
}

// The default string value of a class key; false when there is none.
bool readDefault(const std::wstring& path, std::wstring& out, bool expand = false) {
    RegistryKey key;
    if (!openClassKey(path, key)) return false;
    DWORD type = 0, bytes = 0;
    if (RegQueryValueExW(key.get(), nullptr, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
        return false;
    std::vector<wchar_t> data(bytes / sizeof(wchar_t) + 1, L'\0');
    if (RegQueryValueExW(key.get(), nullptr, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &bytes) !=
        ERROR_SUCCESS)
        return false;
    out = data.data();
    if (expand && type == REG_EXPAND_SZ) {
        std::vector<wchar_t> expanded(32768);
        const DWORD n = ExpandEnvironmentStringsW(out.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
        if (n && n <= expanded.size()) out = expanded.data();
    }
    return !out.empty();
}

}  // namespace

bool registerServer(const std::wstring& path, bool install, bool perUser) {
    if (path.empty()) {
        lastError::set(ERROR_MOD_NOT_FOUND);
        return false;
    }
    // Wine leaves 0 in GetLastError for some load failures of a missing file.
    Module module(path);
    if (!module.get()) return lastError::failed(ERROR_MOD_NOT_FOUND);
    HRESULT hr;
    if (perUser) {
        using Install = HRESULT(STDAPICALLTYPE*)(BOOL, LPCWSTR);
        auto entry = entryPoint<Install>(module.get(), "DllInstall");
        if (!entry) return lastError::failed(ERROR_PROC_NOT_FOUND);
        hr = entry(install, L"user");
    } else {
        using Register = HRESULT(STDAPICALLTYPE*)();
        auto entry = entryPoint<Register>(module.get(), install ? "DllRegisterServer" : "DllUnregisterServer");
        if (!entry) return lastError::failed(ERROR_PROC_NOT_FOUND);
        hr = entry();
    }
    if (FAILED(hr)) {
        lastError::set(static_cast<DWORD>(hr));
        return false;
    }
    return true;
}

bool classOf(const std::wstring& name, CLSID& out) {
    if (name.empty()) {
        lastError::set(ERROR_INVALID_PARAMETER);
        return false;
    }
    if (name[0] == L'{') {
        if (guids::parse(name, out)) return true;
        lastError::set(static_cast<DWORD>(CO_E_CLASSSTRING));
        return false;
    }
    HRESULT hr = CLSIDFromProgID(name.c_str(), &out);
    if (SUCCEEDED(hr)) return true;
    std::wstring text;
    if (readDefault(name + L"\\CLSID", text) && guids::parse(text, out)) return true;
    lastError::set(static_cast<DWORD>(hr));
    return false;
}

std::wstring clsidText(const CLSID& clsid) { return guids::format(clsid, true); }

std::wstring progIdOf(const CLSID& clsid) {
    LPOLESTR progId = nullptr;
    const HRESULT hr = ProgIDFromCLSID(clsid, &progId);
    if (SUCCEEDED(hr) && progId) {
        std::wstring out = progId;
        CoTaskMemFree(progId);
        return out;
    }
    std::wstring text;
    if (readDefault(L"CLSID\\" + clsidText(clsid) + L"\\ProgID", text)) return text;
    lastError::set(static_cast<DWORD>(FAILED(hr) ? hr : REGDB_E_CLASSNOTREG));
    return {};
}

std::wstring serverPath(const CLSID& clsid) {
    const std::wstring key = L"CLSID\\" + clsidText(clsid);
    std::wstring path;
    if (readDefault(key + L"\\InprocServer32", path, true) || readDefault(key + L"\\LocalServer32", path, true))
        return path;
    lastError::set(static_cast<DWORD>(REGDB_E_CLASSNOTREG));
    return {};
}

}  // namespace tova::servers
