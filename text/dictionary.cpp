#include "dictionary.h"

#include <initializer_list>
#include <utility>
#include <vector>

namespace tova {
namespace dictionary {

// ------------------------------------------------------------ the dictionary

// Scripting.Dictionary's own dual interface, in vtable order (no header of the
// runtime ships with the compiler). Declared outside the anonymous namespace: in
// there the compiler would take it that nothing implements it and drop the calls.
struct ScriptingDictionary : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE putref_Item(VARIANT* key, VARIANT* item) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Item(VARIANT* key, VARIANT* item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT* key, VARIANT* item) = 0;
    virtual HRESULT STDMETHODCALLTYPE Add(VARIANT* key, VARIANT* item) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Count(LONG* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Exists(VARIANT* key, VARIANT_BOOL* exists) = 0;
    virtual HRESULT STDMETHODCALLTYPE Items(VARIANT* items) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Key(VARIANT* key, VARIANT* newKey) = 0;
    virtual HRESULT STDMETHODCALLTYPE Keys(VARIANT* keys) = 0;
    virtual HRESULT STDMETHODCALLTYPE Remove(VARIANT* key) = 0;
    virtual HRESULT STDMETHODCALLTYPE RemoveAll() = 0;
    virtual HRESULT STDMETHODCALLTYPE put_CompareMode(LONG mode) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CompareMode(LONG* mode) = 0;
    virtual HRESULT STDMETHODCALLTYPE _NewEnum(IUnknown** items) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_HashVal(VARIANT* key, VARIANT* hash) = 0;
};

namespace {

const CLSID kDictionaryClass = {0xEE09B103, 0x97E0, 0x11CF, {0x97, 0x8F, 0x00, 0xA0, 0x24, 0x63, 0xE0, 0x6F}};
const IID kDictionaryInterface = {0x42C642C1, 0x97E1, 0x11CF, {0x97, 0x8F, 0x00, 0xA0, 0x24, 0x63, 0xE0, 0x6F}};

enum Member { kItem, kAdd, kCount, kExists, kItems, kKey, kKeys, kRemove, kRemoveAll, kCompare, kMembers };
const wchar_t* const kMemberNames[kMembers] = {L"Item",  L"Add",  L"Count",  L"Exists",    L"Items",
                                               L"Key",   L"Keys", L"Remove", L"RemoveAll", L"CompareMode"};

bool isMissingMember(HRESULT hr) { return hr == E_NOTIMPL || hr == DISP_E_MEMBERNOTFOUND; }

// One dictionary for the length of one call: through the scripting Dictionary's
// vtable when the object has it, otherwise by name, the DISPIDs looked up once.
class Access {
public:
    explicit Access(IDispatch* d) : disp_(d) {
        if (d) d->QueryInterface(kDictionaryInterface, direct_.putVoid());
    }
    explicit operator bool() const { return disp_ != nullptr; }

    HRESULT count(long& n) {
        if (direct_) {
            LONG c = 0;
            HRESULT hr = direct_->get_Count(&c);
            n = c;
            return hr;
        }
        Variant r;
        HRESULT hr = invoke(kCount, DISPATCH_PROPERTYGET | DISPATCH_METHOD, {}, &r);
        return SUCCEEDED(hr) ? toLong(r, n) : hr;
    }
    HRESULT exists(const VARIANT& key, bool& yes) {
        yes = false;
        if (direct_) {
            VARIANT_BOOL b = VARIANT_FALSE;
            HRESULT hr = direct_->Exists(mut(key), &b);
            yes = SUCCEEDED(hr) && b;
            return hr;
        }
        Variant r;
        HRESULT hr = invoke(kExists, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {key}, &r);
        if (SUCCEEDED(hr)) hr = VariantChangeType(&r, &r, 0, VT_BOOL);
        yes = SUCCEEDED(hr) && V_BOOL(&r);
        return hr;
    }
    // Only for keys known to exist: a missing one would be added.
    HRESULT item(const VARIANT& key, Variant& out) {
        if (direct_) return direct_->get_Item(mut(key), out.put());
        return invoke(kItem, DISPATCH_PROPERTYGET | DISPATCH_METHOD, {key}, out.put());
    }
    HRESULT putItem(const VARIANT& key, const VARIANT& value, bool reference) {
        HRESULT hr = E_NOTIMPL;
        if (direct_) {
            if (reference) hr = direct_->putref_Item(mut(key), mut(value));
            if (!reference || isMissingMember(hr)) hr = direct_->put_Item(mut(key), mut(value));
            return hr;
        }
        if (reference) hr = invoke(kItem, DISPATCH_PROPERTYPUTREF, {key, value}, nullptr);
        if (!reference || isMissingMember(hr)) hr = invoke(kItem, DISPATCH_PROPERTYPUT, {key, value}, nullptr);
        return hr;
    }
    HRESULT add(const VARIANT& key, const VARIANT& value) {
        if (direct_) return direct_->Add(mut(key), mut(value));
        return invoke(kAdd, DISPATCH_METHOD, {key, value}, nullptr);
    }
    HRESULT keys(Variant& out) {
        if (direct_) return direct_->Keys(out.put());
        return invoke(kKeys, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {}, out.put());
    }
    // The key at 0-based `position` through the dictionary's enumerator, which
    // walks to it without copying the other keys. S_FALSE when it cannot.
    HRESULT enumeratedKey(long position, Variant& out) {
        if (!direct_) return S_FALSE;
        ComPtr<IUnknown> unknown;
        if (FAILED(direct_->_NewEnum(unknown.put())) || !unknown) return S_FALSE;
        ComPtr<IEnumVARIANT> e = unknown.as<IEnumVARIANT>(IID_IEnumVARIANT);
        // Skip's own answer is not trusted (Wine's says S_FALSE after a full skip);
        // an enumerator skipped past the end has nothing for Next.
        if (!e || (position > 0 && FAILED(e->Skip(static_cast<ULONG>(position))))) return S_FALSE;
        ULONG got = 0;
        return e->Next(1, out.put(), &got) == S_OK && got == 1 ? S_OK : S_FALSE;
    }
    HRESULT items(Variant& out) {
        if (direct_) return direct_->Items(out.put());
        return invoke(kItems, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {}, out.put());
    }
    HRESULT rename(const VARIANT& key, const VARIANT& newKey) {
        if (direct_) return direct_->put_Key(mut(key), mut(newKey));
        return invoke(kKey, DISPATCH_PROPERTYPUT, {key, newKey}, nullptr);
    }
    HRESULT remove(const VARIANT& key) {
        if (direct_) return direct_->Remove(mut(key));
        return invoke(kRemove, DISPATCH_METHOD, {key}, nullptr);
    }
    HRESULT removeAll() {
        if (direct_) return direct_->RemoveAll();
        return invoke(kRemoveAll, DISPATCH_METHOD, {}, nullptr);
    }
    HRESULT compareMode(long& mode) {
        if (direct_) {
            LONG m = 0;
            HRESULT hr = direct_->get_CompareMode(&m);
            mode = m;
            return hr;
        }
        Variant r;
        HRESULT hr = invoke(kCompare, DISPATCH_PROPERTYGET, {}, &r);
        return SUCCEEDED(hr) ? toLong(r, mode) : hr;
    }
    HRESULT setCompareMode(long mode) {
        if (direct_) return direct_->put_CompareMode(mode);
        Variant m(mode);
        return invoke(kCompare, DISPATCH_PROPERTYPUT, {m}, nullptr);
    }

private:
    // The dictionary only reads its [in] arguments.
    static VARIANT* mut(const VARIANT& v) { return const_cast<VARIANT*>(&v); }

    static HRESULT toLong(Variant& v, long& n) {
        HRESULT hr = VariantChangeType(&v, &v, 0, VT_I4);
        n = SUCCEEDED(hr) ? V_I4(&v) : 0;
        return hr;
    }

    // `args` in declaration order; for property puts the last one is the value.
    HRESULT invoke(Member m, WORD flags, std::initializer_list<VARIANT> args, VARIANT* result) {
        if (!known_[m]) {
            LPOLESTR name = const_cast<LPOLESTR>(kMemberNames[m]);
            HRESULT hr = disp_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &ids_[m]);
            if (FAILED(hr)) return hr;
            known_[m] = true;
        }
        VARIANT rg[2];
        UINT n = 0;
        for (auto it = args.end(); it != args.begin() && n < 2;) rg[n++] = *--it;
        DISPID putId = DISPID_PROPERTYPUT;
        const bool put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
        DISPPARAMS dp{n ? rg : nullptr, put ? &putId : nullptr, n, put ? 1u : 0u};
        EXCEPINFO ex{};
        HRESULT hr = disp_->Invoke(ids_[m], IID_NULL, LOCALE_USER_DEFAULT, flags, &dp, result, &ex, nullptr);
        SysFreeString(ex.bstrSource);
        SysFreeString(ex.bstrDescription);
        SysFreeString(ex.bstrHelpFile);
        if (hr == DISP_E_EXCEPTION && FAILED(ex.scode)) hr = ex.scode;
        return hr;
    }

    IDispatch* disp_;
    ComPtr<ScriptingDictionary> direct_;
    DISPID ids_[kMembers] = {};
    bool known_[kMembers] = {};
};

// --------------------------------------------------------------- values

// The value behind by-reference Variants.
const VARIANT& deref(const VARIANT& v) {
    const VARIANT* p = &v;
    while (V_VT(p) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(p)) p = V_VARIANTREF(p);
    return *p;
}

VARTYPE baseType(const VARIANT& v) { return V_VT(&v) & ~VT_BYREF; }

bool isString(const VARIANT& v) { return baseType(v) == VT_BSTR; }

BSTR stringOf(const VARIANT& v) { return (V_VT(&v) & VT_BYREF) ? *V_BSTRREF(&v) : V_BSTR(&v); }

// IsObject: an object reference, Nothing included.
bool isObject(const VARIANT& raw) {
    const VARIANT& v = deref(raw);
    return baseType(v) == VT_DISPATCH || baseType(v) == VT_UNKNOWN;
}

// A non-owning String argument.
VARIANT stringArg(BSTR s) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = s;
    return v;
}

// CStr: the text form of a key.
bool textOf(const VARIANT& raw, Bstr& out) {
    const VARIANT& v = deref(raw);
    if (isString(v)) {
        out = Bstr(stringOf(v), SysStringLen(stringOf(v)));
        return true;
    }
    Variant s;
    if (FAILED(VariantChangeTypeEx(&s, const_cast<VARIANT*>(&v), LOCALE_USER_DEFAULT, VARIANT_ALPHABOOL, VT_BSTR)))
        return false;
    out = Bstr::attach(V_BSTR(&s));
    V_VT(&s) = VT_EMPTY;
    return true;
}

// A non-String index read as a number, to the nearest Long (ties to even).
bool positionOf(const VARIANT& v, long& position) {
    Variant n;
    if (FAILED(VariantChangeTypeEx(&n, const_cast<VARIANT*>(&v), LOCALE_USER_DEFAULT, 0, VT_R8))) return false;
    position = roundToLong(V_R8(&n));
    return true;
}

bool sameText(BSTR a, BSTR b, long mode) {
    const UINT la = SysStringLen(a), lb = SysStringLen(b);
    if (mode == kBinaryCompare)
        return la == lb && (la == 0 || std::char_traits<wchar_t>::compare(a, b, la) == 0);
    return CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, a ? a : L"", static_cast<int>(la), b ? b : L"",
                          static_cast<int>(lb)) == CSTR_EQUAL;
}

std::wstring upperCase(BSTR s) {
    std::wstring out(s ? s : L"", SysStringLen(s));
    if (!out.empty())
        LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_UPPERCASE, out.data(), static_cast<int>(out.size()), &out[0],
                     static_cast<int>(out.size()));
    return out;
}

// The array Keys or Items returned, read in place (one dimension, any lower bound).
class Snapshot {
public:
    Snapshot() = default;
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() {
        if (locked_) SafeArrayUnlock(V_ARRAY(&array_));
    }

    bool load(Access& a, Member which) {
        HRESULT hr = which == kKeys ? a.keys(array_) : a.items(array_);
        if (FAILED(hr)) return false;
        VARTYPE vt = V_VT(&array_);
        if (vt & VT_BYREF) {
            Variant plain;
            if (FAILED(VariantCopyInd(&plain, const_cast<VARIANT*>(&deref(array_))))) return false;
            array_ = std::move(plain);
            vt = V_VT(&array_);
        }
        if (!(vt & VT_ARRAY) || !V_ARRAY(&array_) || SafeArrayGetDim(V_ARRAY(&array_)) != 1) return false;
        SAFEARRAY* sa = V_ARRAY(&array_);
        LONG lb = 0, ub = -1;
        if (FAILED(SafeArrayGetLBound(sa, 1, &lb)) || FAILED(SafeArrayGetUBound(sa, 1, &ub))) return false;
        size_ = ub >= lb ? ub - lb + 1 : 0;
        if ((vt & VT_TYPEMASK) == VT_VARIANT) {
            if (FAILED(SafeArrayLock(sa))) return false;
            locked_ = true;
            data_ = static_cast<const VARIANT*>(sa->pvData);
            return true;
        }
        // Arrays of a plain type: each element into a Variant of that type.
        const VARTYPE element = vt & VT_TYPEMASK;
        if (element == VT_DECIMAL || element == VT_RECORD) return false;
        copies_.resize(size_);
        for (long i = 0; i < size_; ++i) {
            LONG at = lb + i;
            if (FAILED(SafeArrayGetElement(sa, &at, &V_UI8(&copies_[i])))) return false;
            V_VT(&copies_[i]) = element;
        }
        data_ = copies_.data();
        return true;
    }
    long size() const { return size_; }
    const VARIANT& operator[](long i) const { return data_[i]; }

private:
    Variant array_;
    bool locked_ = false;
    const VARIANT* data_ = nullptr;
    std::vector<Variant> copies_;
    long size_ = 0;
};

// ------------------------------------------------------------- operations

long countOf(Access& a) {
    long n = 0;
    return a && SUCCEEDED(a.count(n)) && n > 0 ? n : 0;
}

bool existsIn(Access& a, BSTR key) {
    bool yes = false;
    return a && SUCCEEDED(a.exists(stringArg(key), yes)) && yes;
}

// The key at 0-based `position`: walked to by the enumerator, or read from Keys.
bool keyAt(Access& a, long position, Variant& key) {
    if (position < 0) return false;
    if (a.enumeratedKey(position, key) == S_OK) return true;
    Snapshot keys;
    if (!keys.load(a, kKeys) || position >= keys.size()) return false;
    return SUCCEEDED(VariantCopy(key.put(), const_cast<VARIANT*>(&keys[position])));
}

// What an index selects: its key as text, and whether Exists has confirmed that text.
struct Resolved {
    Bstr key;
    bool confirmed = false;
};

bool resolve(Access& a, const VARIANT& rawIndex, Resolved& r) {
    const long n = countOf(a);
    if (n == 0) return false;
    const VARIANT& index = deref(rawIndex);
    if (isString(index)) {
        BSTR s = stringOf(index);
        if (SysStringLen(s) == 0 || !existsIn(a, s)) return false;
        r.key = Bstr(s, SysStringLen(s));
        r.confirmed = true;
        return true;
    }
    long p = 0;
    if (!positionOf(index, p) || p < 1 || p > n) return false;
    Variant k;
    return keyAt(a, p - 1, k) && textOf(k, r.key) && r.key.length() > 0;
}

// The key's text exists as a key (a position may name a key that is no String).
bool confirm(Access& a, Resolved& r) {
    if (!r.confirmed) r.confirmed = existsIn(a, r.key.get());
    return r.confirmed;
}

// Decided by the first item alone, read through its own key.
bool firstIsObject(Access& a) {
    Variant first, item;
    return countOf(a) > 0 && keyAt(a, 0, first) && SUCCEEDED(a.item(first, item)) && isObject(item);
}

// Set x = item: object references only.
Variant byReference(Variant&& raw) {
    if (isObject(raw)) return std::move(raw);
    return Variant();
}

// x = item: an object gives its default value.
Variant byValue(Variant&& raw) {
    const VARIANT& v = deref(raw);
    const VARTYPE t = baseType(v);
    if (t == VT_UNKNOWN) return Variant();
    if (t == VT_DISPATCH) {
        IDispatch* d = (V_VT(&v) & VT_BYREF) ? *V_DISPATCHREF(&v) : V_DISPATCH(&v);
        if (!d) return Variant();
        DISPPARAMS none{};
        Variant value;
        HRESULT hr = d->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET | DISPATCH_METHOD,
                               &none, &value, nullptr, nullptr);
        if (FAILED(hr) || isObject(value)) return Variant();
        return value;
    }
    Variant out;
    if (FAILED(VariantCopyInd(&out, const_cast<VARIANT*>(&v)))) return Variant();
    return out;
}

// Position (1-based) of `key` among the keys compared under the dictionary's mode.
long locate(Access& a, BSTR key) {
    long mode = kBinaryCompare;
    if (FAILED(a.compareMode(mode))) mode = kBinaryCompare;
    Snapshot keys;
    if (!keys.load(a, kKeys)) return 0;
    for (long i = 0; i < keys.size(); ++i) {
        Bstr text;
        if (textOf(keys[i], text) && sameText(text.get(), key, mode)) return i + 1;
    }
    return 0;
}

// Moves the entry at 0-based `current` to `target`, rebuilding from the snapshots.
bool move(Access& a, const Snapshot& keys, const Snapshot& items, long current, long target) {
    const long n = keys.size();
    if (items.size() != n || current < 0 || current >= n || target < 0 || target >= n) return false;
    if (current == target) return true;
    if (target == n - 1) {
        // Additions go to the end: taking the entry out and adding it back is enough.
        if (FAILED(a.remove(keys[current]))) return false;
        return SUCCEEDED(a.add(keys[current], items[current]));
    }
    std::vector<long> order;
    order.reserve(n);
    for (long i = 0; i < n; ++i)
        if (i != current) order.push_back(i);
    order.insert(order.begin() + target, current);
    if (FAILED(a.removeAll())) return false;
    bool ok = true;
    for (long i : order) ok = SUCCEEDED(a.add(keys[i], items[i])) && ok;  // add all that can be
    return ok;
}

Variant plainCopy(const VARIANT& v) {
    Variant out;
    if (FAILED(VariantCopyInd(&out, const_cast<VARIANT*>(&deref(v))))) out.clear();
    return out;
}

}  // namespace

Selector select(const VARIANT& rawIndex) {
    Selector s;
    const VARIANT& index = deref(rawIndex);
    if (isString(index)) {
        s.kind = Selector::kKey;
        s.key = stringOf(index);
    } else if (positionOf(index, s.position)) {
        s.kind = Selector::kPosition;
    }
    return s;
}

bool objectOf(const VARIANT& rawIndex, IUnknown*& object) {
    const VARIANT& v = deref(rawIndex);
    if (!isObject(v)) return false;
    if (baseType(v) == VT_DISPATCH)
        object = (V_VT(&v) & VT_BYREF) ? *V_DISPATCHREF(&v) : V_DISPATCH(&v);
    else
        object = (V_VT(&v) & VT_BYREF) ? *V_UNKNOWNREF(&v) : V_UNKNOWN(&v);
    return true;
}

// ------------------------------------------------------------------- public

ComPtr<IDispatch> create(long compareMode) {
    ComPtr<IDispatch> d;
    if (FAILED(CoCreateInstance(kDictionaryClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, d.putVoid())))
        return nullptr;
    Access(d.get()).setCompareMode(compareMode);
    return d;
}

std::wstring key(IDispatch* dict, const VARIANT& index) {
    Access a(dict);
    Resolved r;
    return resolve(a, index, r) ? r.key.str() : std::wstring();
}

std::wstring key(IDispatch* dict, long position) { return key(dict, Variant(position)); }

long index(IDispatch* dict, const VARIANT& rawIndex) {
    Access a(dict);
    const long n = countOf(a);
    if (n == 0) return 0;
    const VARIANT& ix = deref(rawIndex);
    if (!isString(ix)) {
        long p = 0;
        return positionOf(ix, p) && p >= 1 && p <= n ? p : 0;
    }
    BSTR s = stringOf(ix);
    if (SysStringLen(s) == 0 || !existsIn(a, s)) return 0;
    return locate(a, s);
}

long index(IDispatch* dict, const std::wstring& key) {
    Bstr k(key);
    return index(dict, stringArg(k.get()));
}

bool isObjectDictionary(IDispatch* dict) {
    Access a(dict);
    return a && firstIsObject(a);
}

Variant item(IDispatch* dict, const VARIANT& index) {
    Access a(dict);
    Resolved r;
    if (!resolve(a, index, r) || !confirm(a, r)) return Variant();
    const bool objects = firstIsObject(a);
    Variant raw;
    if (FAILED(a.item(stringArg(r.key.get()), raw))) return Variant();
    return objects ? byReference(std::move(raw)) : byValue(std::move(raw));
}

Variant item(IDispatch* dict, long position) { return item(dict, Variant(position)); }

Variant item(IDispatch* dict, const std::wstring& key) {
    Bstr k(key);
    return item(dict, stringArg(k.get()));
}

bool setItem(IDispatch* dict, const VARIANT& index, const VARIANT& value) {
    Access a(dict);
    Resolved r;
    if (!resolve(a, index, r) || !confirm(a, r)) return false;
    Variant v = plainCopy(value);
    return SUCCEEDED(a.putItem(stringArg(r.key.get()), v, isObject(v)));
}

bool changeKey(IDispatch* dict, const std::wstring& key, const std::wstring& newKey) {
    Access a(dict);
    if (!a || key.empty() || newKey.empty()) return false;
    Bstr from(key), to(newKey);
    if (!existsIn(a, from.get()) || existsIn(a, to.get())) return false;
    const long before = locate(a, from.get());
    if (FAILED(a.rename(stringArg(from.get()), stringArg(to.get())))) return false;
    // Some runtimes rename by adding the new key at the end and dropping the old
    // one: put the entry back where it was.
    Snapshot keys, items;
    if (before == 0 || !keys.load(a, kKeys)) return true;
    long now = -1;
    for (long i = 0; i < keys.size() && now < 0; ++i)
        if (isString(deref(keys[i])) && sameText(stringOf(deref(keys[i])), to.get(), kBinaryCompare)) now = i;
    if (now < 0 || now == before - 1) return true;
    return items.load(a, kItems) && move(a, keys, items, now, before - 1);
}

bool changeIndex(IDispatch* dict, const std::wstring& key, long newIndex) {
    Access a(dict);
    if (!a || key.empty() || newIndex < 1) return false;
    const long n = countOf(a);
    Bstr k(key);
    if (n == 0 || !existsIn(a, k.get())) return false;
    const long target = newIndex - 1;
    if (target > n - 1) return false;
    Snapshot items, keys;
    if (!items.load(a, kItems) || !keys.load(a, kKeys)) return false;
    // Located ignoring case whatever the dictionary's mode: the first key equal
    // to `key` in upper case is the one that moves.
    const std::wstring wanted = upperCase(k.get());
    long current = -1;
    for (long i = 0; i < keys.size() && current < 0; ++i) {
        Bstr text;
        if (textOf(keys[i], text) && upperCase(text.get()) == wanted) current = i;
    }
    if (current < 0) return false;
    return move(a, keys, items, current, target);
}

bool exists(IDispatch* dict, const std::wstring& key) {
    Access a(dict);
    Bstr k(key);
    return existsIn(a, k.get());
}

long count(IDispatch* dict) {
    Access a(dict);
    return countOf(a);
}

bool remove(IDispatch* dict, const VARIANT& index) {
    Access a(dict);
    Resolved r;
    if (!resolve(a, index, r)) return false;
    a.remove(stringArg(r.key.get()));
    bool still = true;
    return SUCCEEDED(a.exists(stringArg(r.key.get()), still)) && !still;
}

bool add(IDispatch* dict, const std::wstring& key, const VARIANT& value) {
    Access a(dict);
    if (!a) return false;
    Bstr k(key);
    Variant v = plainCopy(value);
    return SUCCEEDED(a.add(stringArg(k.get()), v));
}

}  // namespace dictionary
}  // namespace tova
