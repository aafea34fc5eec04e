// The registry work behind RegistryMethods.

#include "registry.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tova {
namespace registry {

namespace {

// Every open and create asks for read control and all key-specific rights
// (query, set, create subkey, enumerate, notify, create link), also when the
// call only reads: a key the caller may only read does not open.
constexpr REGSAM kAccess = 0x2003F;
constexpr DWORD kBufferSize = 1024;
// The longest value name the platform allows, with its NUL.
constexpr DWORD kLongestValueName = 16384;

using Key = RegistryKey;

HKEY rootKey(long root) { return toHandle<HKEY>(root); }

bool openKey(long root, const std::wstring& keyName, Key& key) {
    return RegOpenKeyExA(rootKey(root), toAnsi(keyName).c_str(), 0, kAccess, key.put()) == ERROR_SUCCESS && key;
}

// Creates the key or opens it when it exists. The class text "1" and the
// security record (length 50, no descriptor, inheritable) are fixed values of
// this class; the platform ignores the record for keys.
bool createKey(long root, const std::wstring& keyName, Key& key) {
    char keyClass[] = "1";
    SECURITY_ATTRIBUTES security{};
    security.nLength = 50;
    security.lpSecurityDescriptor = nullptr;
    security.bInheritHandle = TRUE;
    DWORD disposition = 0;
    return RegCreateKeyExA(rootKey(root), toAnsi(keyName).c_str(), 0, keyClass, 0, kAccess, &security, key.put(),
                           &disposition) == ERROR_SUCCESS &&
           key;
}

size_t cutAtNul(const char* s, size_t n) {
    const void* nul = std::memchr(s, 0, n);
    return nul ? static_cast<size_t>(static_cast<const char*>(nul) - s) : n;
}

// What GetKeyValue gives when it cannot read: the default as text.
std::wstring defaultText(const VARIANT* v) {
    if (!v) return std::wstring();
    while (V_VT(v) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(v)) v = V_VARIANTREF(v);
    if (V_VT(v) == VT_ERROR && V_ERROR(v) == DISP_E_PARAMNOTFOUND) return std::wstring();   // left out
    if (V_VT(v) == VT_NULL || V_VT(v) == (VT_BYREF | VT_NULL)) raise(94, nullptr, L"Invalid use of Null");
    Variant text;
    if (FAILED(VariantChangeTypeEx(&text, const_cast<VARIANT*>(v), LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, VT_BSTR)))
        raise(kTypeMismatch);
    return std::wstring(V_BSTR(&text), SysStringLen(V_BSTR(&text)));
}

// The text GetKeyValue gives for a REG_DWORD: the bytes up to the first NUL,
// last byte first, each as its hexadecimal digits without leading zeros, read
// as one hexadecimal number. A number whose bytes are all 16 or more reads
// true (0x2A gives "42"); a zero byte ends the text and a byte below 16 loses
// its leading digit (0x105 gives "21"). Kept so on purpose: clients compare
// against these texts. Digits beyond a Long's eight give `fallback`.
std::wstring dwordText(const unsigned char* bytes, size_t n, const std::wstring& fallback) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    for (size_t i = n; i-- > 0;) {
        const unsigned b = bytes[i];
        if (b >= 16) hex += kDigits[b >> 4];
        hex += kDigits[b & 15];
    }
    if (hex.size() > 8) return fallback;
    uint32_t value = 0;
    for (char c : hex) value = value * 16 + static_cast<uint32_t>(std::strchr(kDigits, c) - kDigits);
    return std::to_wstring(static_cast<int32_t>(value));  // eight digits with the top bit set: a negative Long
}

// A one-dimensional, zero-based array of `n` elements of `vt`.
SafeArray newArray(VARTYPE vt, size_t n) {
    SafeArray a(SafeArrayCreateVector(vt, 0, static_cast<ULONG>(n)));
    if (!a.get()) throw std::bad_alloc();
    return a;
}

void putArray(VARIANT* out, VARTYPE vt, SafeArray a) {
    VariantClear(out);
    V_VT(out) = VT_ARRAY | vt;
    V_ARRAY(out) = a.detach();
}

SafeArray stringArray(const std::vector<std::wstring>& items) {
    SafeArray a = newArray(VT_BSTR, items.size());
    ArrayData d(a.get());
    auto* out = static_cast<BSTR*>(d.data());
    for (size_t i = 0; i < items.size(); ++i) {
        out[i] = SysAllocStringLen(items[i].data(), static_cast<UINT>(items[i].size()));
        if (!out[i]) throw std::bad_alloc();
    }
    return a;
}

SafeArray byteArray(const unsigned char* bytes, size_t n) {
    SafeArray a = newArray(VT_UI1, n);
    ArrayData d(a.get());
    if (n) std::memcpy(d.data(), bytes, n);
    return a;
}

// The data of one value, in the form GetAllKeyValues gives it.
void valueData(DWORD type, const unsigned char* data, DWORD size, VARIANT* out) {
    auto number = [&](bool bigEndian) {
        uint32_t v = 0;
        for (DWORD i = 0; i < 4 && i < size; ++i) {
            const uint32_t b = data[i];
            v = bigEndian ? (v << 8) | b : v | (b << (8 * i));
        }
        if (bigEndian && size < 4) v <<= 8 * (4 - size);
        V_VT(out) = VT_I4;
        V_I4(out) = static_cast<int32_t>(v);
    };
    const char* text = reinterpret_cast<const char*>(data);
    switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ: {
        // Text loses its terminating NUL; text stored without one keeps every character.
        DWORD n = size && data[size - 1] == 0 ? size - 1 : size;
        std::wstring s = fromAnsi(text, n);
        V_VT(out) = VT_BSTR;
        V_BSTR(out) = SysAllocStringLen(s.data(), static_cast<UINT>(s.size()));
        if (!V_BSTR(out)) throw std::bad_alloc();
        return;
    }
    case REG_DWORD: number(false); return;
    case REG_DWORD_BIG_ENDIAN: number(true); return;
    case REG_MULTI_SZ: {
        // The strings up to the empty one that ends the list.
        std::vector<std::wstring> items;
        size_t at = 0;
        while (at < size) {
            size_t n = cutAtNul(text + at, size - at);
            if (n == 0) break;
            items.push_back(fromAnsi(text + at, n));
            at += n + 1;
        }
        putArray(out, VT_BSTR, stringArray(items));
        return;
    }
    default: putArray(out, VT_UI1, byteArray(data, size)); return;
    }
}

// Gives *bytes a new zeroed zero-based Byte array of n elements in place of
// the caller's array.
void replaceBytes(SAFEARRAY** bytes, size_t n) {
    SafeArray fresh = newArray(VT_UI1, n);
    if (*bytes) {
        HRESULT hr = SafeArrayDestroy(*bytes);
        if (FAILED(hr)) raise(10, nullptr, L"This array is fixed or temporarily locked");
    }
    *bytes = fresh.detach();
}

// The caller's array must be one that a resize may replace.
void checkResizable(SAFEARRAY* bytes) {
    if (!bytes) return;
    if (bytes->cLocks || (bytes->fFeatures & (FADF_FIXEDSIZE | FADF_STATIC | FADF_EMBEDDED)))
        raise(10, nullptr, L"This array is fixed or temporarily locked");
    if (bytes->cbElements != 1) raise(kTypeMismatch);
}

}  // namespace

std::string toAnsi(const std::wstring& s) {
    if (s.empty()) return std::string();
    int n = WideCharToMultiByte(CP_ACP, 0, s.data(), static_cast<int>(s.size()), nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(n > 0 ? n : 0), '\0');
    if (n > 0) WideCharToMultiByte(CP_ACP, 0, s.data(), static_cast<int>(s.size()), &out[0], n, nullptr, nullptr);
    return out;
}

std::wstring fromAnsi(const char* s, size_t n) {
    if (!n) return std::wstring();
    int w = MultiByteToWideChar(CP_ACP, 0, s, static_cast<int>(n), nullptr, 0);
    std::wstring out(static_cast<size_t>(w > 0 ? w : 0), L'\0');
    if (w > 0) MultiByteToWideChar(CP_ACP, 0, s, static_cast<int>(n), &out[0], w);
    return out;
}

bool updateKey(long root, const std::wstring& keyName, const std::wstring& valueName, const std::wstring& value) {
    if (keyName.empty() || valueName.empty()) return false;
    if (value.empty()) {
        deleteKeyValue(root, keyName, valueName);
        return true;   // whether or not there was a value to delete
    }
    Key key;
    if (!createKey(root, keyName, key)) return false;
    // The length counts the characters only, without a terminating NUL.
    const std::string bytes = toAnsi(value);
    return RegSetValueExA(key.get(), toAnsi(valueName).c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size())) ==
           ERROR_SUCCESS;
}

std::wstring getKeyValue(long root, const std::wstring& keyName, const std::wstring& valueName,
                         const VARIANT* defaultValue) {
    std::wstring result = defaultText(defaultValue);
    if (keyName.empty() || valueName.empty()) return result;
    Key key;
    if (!openKey(root, keyName, key)) return result;
    // One query into a fixed buffer: a value longer than it reads as a failure.
    unsigned char buffer[kBufferSize] = {};
    DWORD size = kBufferSize, type = 0;
    if (RegQueryValueExA(key.get(), toAnsi(valueName).c_str(), nullptr, &type, buffer, &size) != ERROR_SUCCESS)
        return result;
    const size_t n = cutAtNul(reinterpret_cast<const char*>(buffer), kBufferSize);
    switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ: return fromAnsi(reinterpret_cast<const char*>(buffer), n);
    case REG_DWORD: return n ? dwordText(buffer, n, result) : std::wstring(L"0");
    default: return result;
    }
}

bool updateKeyEx(long root, const std::wstring& keyName, const std::wstring& valueName, SAFEARRAY* bytes) {
    if (keyName.empty() || valueName.empty() || !bytes) return false;
    if (bytes->cbElements != 1) raise(kTypeMismatch);
    size_t count = 1;
    for (USHORT d = 0; d < bytes->cDims; ++d) count *= bytes->rgsabound[d].cElements;
    if (!bytes->cDims) count = 0;
    Key key;
    if (!createKey(root, keyName, key)) return false;
    ArrayData data(bytes);
    if (!data.locked()) return false;
    return RegSetValueExA(key.get(), toAnsi(valueName).c_str(), 0, REG_BINARY,
                          static_cast<const BYTE*>(data.data()), static_cast<DWORD>(count)) == ERROR_SUCCESS;
}

bool getKeyValueEx(long root, const std::wstring& keyName, const std::wstring& valueName, SAFEARRAY** bytes) {
    if (keyName.empty() || valueName.empty()) return false;
    checkResizable(*bytes);
    Key key;
    if (!openKey(root, keyName, key)) return false;
    const std::string name = toAnsi(valueName);
    auto query = [&](DWORD& size) {
        ArrayData data(*bytes);
        return RegQueryValueExA(key.get(), name.c_str(), nullptr, nullptr, static_cast<BYTE*>(data.data()), &size);
    };
    replaceBytes(bytes, kBufferSize);
    DWORD size = kBufferSize;
    LONG rc = query(size);
    if (rc == ERROR_MORE_DATA && size > 0) {
        // A larger value: one more try with the size it reported.
        replaceBytes(bytes, size);
        rc = query(size);
    }
    if (rc != ERROR_SUCCESS || size == 0) return false;
    SAFEARRAYBOUND bound{size, 0};
    if (FAILED(SafeArrayRedim(*bytes, &bound))) return false;
    return true;
}

void getAllSubKeys(long root, const std::wstring& keyName, VARIANT* result) {
    VariantClear(result);
    Key key;
    if (!openKey(root, keyName, key)) return;
    std::vector<std::wstring> names;
    for (DWORD i = 0;; ++i) {
        char name[kBufferSize];
        DWORD n = kBufferSize;
        if (RegEnumKeyExA(key.get(), i, name, &n, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        names.push_back(fromAnsi(name, cutAtNul(name, n)));
    }
    putArray(result, VT_BSTR, stringArray(names));
}

void getAllKeyValues(long root, const std::wstring& keyName, VARIANT* result) {
    VariantClear(result);
    Key key;
    if (!openKey(root, keyName, key)) return;
    struct Entry {
        std::wstring name;
        Variant data;
    };
    std::vector<Entry> entries;
    std::vector<char> name(kBufferSize);
    std::vector<unsigned char> data(kBufferSize);
    for (DWORD i = 0;; ++i) {
        LONG rc;
        DWORD nameLength, size, type;
        // ERROR_MORE_DATA: a larger buffer for the data, or for a name longer
        // than 1024 bytes, and the same index again. A value that keeps growing
        // under us is given up after a few tries.
        for (int attempt = 0;; ++attempt) {
            nameLength = static_cast<DWORD>(name.size());
            size = static_cast<DWORD>(data.size());
            type = 0;
            rc = RegEnumValueA(key.get(), i, name.data(), &nameLength, nullptr, &type, data.data(), &size);
            if (rc != ERROR_MORE_DATA || attempt == 4) break;
            if (size > data.size()) data.resize(size);
            else if (name.size() < kLongestValueName * 2) name.resize(kLongestValueName * 2);
            else break;
        }
        if (rc == ERROR_MORE_DATA) continue;   // this one could not be read; the others still can
        if (rc != ERROR_SUCCESS) break;
        if (size < 1 || type < 1) continue;
        Entry e;
        e.name = fromAnsi(name.data(), cutAtNul(name.data(), std::min<size_t>(nameLength, name.size())));
        valueData(type, data.data(), size, &e.data);
        entries.push_back(std::move(e));
    }
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {static_cast<ULONG>(entries.size()), 0}};
    SafeArray table(SafeArrayCreate(VT_VARIANT, 2, bounds));
    if (!table.get()) throw std::bad_alloc();
    for (size_t i = 0; i < entries.size(); ++i) {
        LONG at[2] = {0, static_cast<LONG>(i)};
        Variant name(entries[i].name.c_str());
        if (FAILED(SafeArrayPutElement(table.get(), at, &name))) throw std::bad_alloc();
        at[0] = 1;
        if (FAILED(SafeArrayPutElement(table.get(), at, &entries[i].data))) throw std::bad_alloc();
    }
    putArray(result, VT_VARIANT, std::move(table));
}

bool deleteKey(long root, const std::wstring& keyName) {
    if (keyName.empty()) return false;
    return RegDeleteKeyA(rootKey(root), toAnsi(keyName).c_str()) == ERROR_SUCCESS;
}

bool deleteKeyValue(long root, const std::wstring& keyName, const std::wstring& valueName) {
    if (keyName.empty() || valueName.empty()) return false;
    Key key;
    if (!openKey(root, keyName, key)) return false;
    return RegDeleteValueA(key.get(), toAnsi(valueName).c_str()) == ERROR_SUCCESS;
}

bool deleteAllKeyValues(long root, const std::wstring& keyName) {
    if (keyName.empty()) return false;
    Key key;
    if (!openKey(root, keyName, key)) return false;
    // Names first, deletions afterwards: deleting while enumerating would
    // shift the indices under the enumeration.
    std::vector<std::string> names;
    std::vector<char> name(kBufferSize);
    for (DWORD i = 0;;) {
        DWORD n = static_cast<DWORD>(name.size());
        LONG rc = RegEnumValueA(key.get(), i, name.data(), &n, nullptr, nullptr, nullptr, nullptr);
        if (rc == ERROR_MORE_DATA && name.size() < kLongestValueName * 2) {
            name.resize(kLongestValueName * 2);
            continue;
        }
        if (rc != ERROR_SUCCESS) break;
        names.emplace_back(name.data(), cutAtNul(name.data(), std::min<size_t>(n, name.size())));
        ++i;
    }
    for (const std::string& n : names)
        if (!n.empty()) RegDeleteValueA(key.get(), n.c_str());
    return true;
}

}  // namespace registry
}  // namespace tova
