#include "dispatch.h"

#include "errors.h"
#include "type_desc.h"

#include <array>
#include <cstring>
#include <new>
#include <utility>

namespace tova {

// ------------------------------------------------------------- type library

namespace {

HMODULE thisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

ITypeLib*& libraryPointer() {
    static ITypeLib* lib = [] {
        wchar_t path[MAX_PATH * 2];
        ITypeLib* loaded = nullptr;
        DWORD n = GetModuleFileNameW(thisModule(), path, MAX_PATH * 2);
        if (n > 0 && n < MAX_PATH * 2) LoadTypeLibEx(path, REGKIND_NONE, &loaded);
        return loaded;
    }();
    return lib;
}

}  // namespace

ITypeLib* typeLibrary() { return libraryPointer(); }

void releaseTypeLibrary() {
    ITypeLib*& lib = libraryPointer();
    if (lib) lib->Release();
    lib = nullptr;
}

ComPtr<ITypeInfo> typeInfoOf(REFGUID guid) {
    ComPtr<ITypeInfo> info;
    if (ITypeLib* lib = typeLibrary()) lib->GetTypeInfoOfGuid(guid, info.put());
    return info;
}

std::wstring foldName(const wchar_t* name) {
    std::wstring s = name ? name : L"";
    if (!s.empty()) CharLowerBuffW(&s[0], static_cast<DWORD>(s.size()));
    return s;
}

// ------------------------------------------------------- reading the types

namespace {

bool isInterfaceKind(TYPEKIND k) { return k == TKIND_INTERFACE || k == TKIND_DISPATCH || k == TKIND_COCLASS; }

// The kind of the user-defined type `href` refers to, through aliases (a
// picture parameter refers to stdole's IPictureDisp by an alias).
TYPEKIND userKind(ITypeInfo* owner, HREFTYPE href, int depth = 0) {
    ComPtr<ITypeInfo> ref;
    if (depth > 8 || FAILED(owner->GetRefTypeInfo(href, ref.put()))) return TKIND_MAX;
    TypeAttr ta(ref.get());
    if (!ta.attr) return TKIND_MAX;
    if (ta.attr->typekind == TKIND_ALIAS && ta.attr->tdescAlias.vt == VT_USERDEFINED)
        return userKind(ref.get(), ta.attr->tdescAlias.hreftype, depth + 1);
    return ta.attr->typekind;
}

void resolve(ITypeInfo* owner, const TYPEDESC& td, TypeRef& out, int depth = 0);

void resolveUser(ITypeInfo* owner, HREFTYPE href, TypeRef& out, int depth) {
    ComPtr<ITypeInfo> ref;
    if (FAILED(owner->GetRefTypeInfo(href, ref.put()))) { out.vt = VT_EMPTY; return; }
    TypeAttr ta(ref.get());
    if (!ta.attr) { out.vt = VT_EMPTY; return; }
    switch (ta.attr->typekind) {
    case TKIND_ENUM:
        out.vt = VT_I4;
        break;
    case TKIND_ALIAS:
        resolve(ref.get(), ta.attr->tdescAlias, out, depth + 1);
        break;
    case TKIND_RECORD: {
        out.vt = VT_RECORD;
        GetRecordInfoFromTypeInfo(ref.get(), out.record.put());
        out.recordSize = ta.attr->cbSizeInstance;
        ULONG longs = 0;
        for (UINT i = 0; i < ta.attr->cVars; ++i) {
            VarDesc vd(ref.get(), i);
            const bool isLong = vd.desc && (vd.desc->elemdescVar.tdesc.vt == VT_I4 || vd.desc->elemdescVar.tdesc.vt == VT_INT);
            if (!isLong) { longs = 0; break; }
            ++longs;
        }
        out.flatLongs = longs * 4 == ta.attr->cbSizeInstance ? longs : 0;
        break;
    }
    case TKIND_COCLASS: {
        // A coclass as a type stands for its default interface.
        HREFTYPE h;
        ComPtr<ITypeInfo> def;
        for (UINT i = 0; i < ta.attr->cImplTypes; ++i) {
            INT flags = 0;
            ref->GetImplTypeFlags(i, &flags);
            if ((flags & IMPLTYPEFLAG_FDEFAULT) && !(flags & IMPLTYPEFLAG_FSOURCE) &&
                SUCCEEDED(ref->GetRefTypeOfImplType(i, &h)) && SUCCEEDED(ref->GetRefTypeInfo(h, def.put()))) {
                TypeAttr da(def.get());
                out.vt = VT_DISPATCH;
                if (da.attr) out.iid = da.attr->guid;
                return;
            }
        }
        out.vt = VT_DISPATCH;
        break;
    }
    case TKIND_INTERFACE:
    case TKIND_DISPATCH:
        out.vt = (ta.attr->typekind == TKIND_DISPATCH || (ta.attr->wTypeFlags & TYPEFLAG_FDISPATCHABLE))
                     ? VT_DISPATCH : VT_UNKNOWN;
        out.iid = ta.attr->guid;
        break;
    default:
        out.vt = VT_EMPTY;
        break;
    }
}

void resolve(ITypeInfo* owner, const TYPEDESC& td, TypeRef& out, int depth) {
    if (depth > 8) { out.vt = VT_EMPTY; return; }
    switch (td.vt) {
    case VT_PTR: {
        const TYPEDESC& to = *td.lptdesc;
        // A pointer to an interface type is the interface reference itself.
        if (to.vt == VT_USERDEFINED && isInterfaceKind(userKind(owner, to.hreftype))) {
            resolveUser(owner, to.hreftype, out, depth + 1);
            return;
        }
        out.byref = true;
        resolve(owner, to, out, depth + 1);
        return;
    }
    case VT_USERDEFINED:
        resolveUser(owner, td.hreftype, out, depth);
        return;
    case VT_SAFEARRAY: {
        TypeRef element;
        resolve(owner, *td.lptdesc, element, depth + 1);
        out.vt = VT_ARRAY | element.vt;
        out.record = element.record;
        return;
    }
    case VT_INT: out.vt = VT_I4; return;
    case VT_UINT: out.vt = VT_UI4; return;
    case VT_HRESULT: out.vt = VT_ERROR; return;
    default: out.vt = td.vt; return;
    }
}

}  // namespace

DispatchTable::DispatchTable(REFIID iid) {
    ComPtr<ITypeInfo> info = typeInfoOf(iid);
    if (!info) return;
    ComPtr<ITypeInfo> vtableView;
    {
        TypeAttr ta(info.get());
        if (!ta.attr) return;
        HREFTYPE h;
        if (ta.attr->typekind == TKIND_DISPATCH) {
            dispatchInfo_ = info;
            if (SUCCEEDED(info->GetRefTypeOfImplType(-1, &h))) info->GetRefTypeInfo(h, vtableView.put());
        } else {
            vtableView = info;
            if (SUCCEEDED(info->GetRefTypeOfImplType(-1, &h))) info->GetRefTypeInfo(h, dispatchInfo_.put());
            if (!dispatchInfo_) dispatchInfo_ = info;
        }
    }
    if (!vtableView) return;

    TypeAttr ta(vtableView.get());
    if (!ta.attr) return;
    for (UINT f = 0; f < ta.attr->cFuncs; ++f) {
        FuncDesc fd(vtableView.get(), f);
        if (!fd.desc) continue;
        const FUNCDESC& d = *fd.desc;
        auto fn = std::make_unique<FunctionInfo>();
        fn->kind = d.invkind;
        fn->vtableOffset = d.oVft;
        fn->callConv = d.callconv;

        std::vector<BSTR> names(d.cParams + 1, nullptr);
        UINT got = 0;
        vtableView->GetNames(d.memid, names.data(), d.cParams + 1, &got);

        for (SHORT i = 0; i < d.cParams; ++i) {
            const ELEMDESC& e = d.lprgelemdescParam[i];
            USHORT flags = e.paramdesc.wParamFlags;
            if (flags & PARAMFLAG_FRETVAL) {
                fn->hasResult = true;
                // The result is declared as a pointer to the value.
                const TYPEDESC& td = e.tdesc.vt == VT_PTR ? *e.tdesc.lptdesc : e.tdesc;
                resolve(vtableView.get(), td, fn->result);
                continue;
            }
            ParamInfo p;
            resolve(vtableView.get(), e.tdesc, p.type);
            p.optional = (flags & PARAMFLAG_FOPT) != 0;
            if ((flags & PARAMFLAG_FHASDEFAULT) && e.paramdesc.pparamdescex) {
                p.hasDefault = true;
                p.optional = true;
                VariantCopy(&p.defaultValue, &e.paramdesc.pparamdescex->varDefaultValue);
            }
            fn->params.push_back(std::move(p));
            fn->paramNames.push_back(static_cast<UINT>(i + 1) < got ? foldName(names[i + 1]) : std::wstring());
        }

        Member& m = memberSlot(d.memid);
        if (got > 0 && names[0]) {
            m.name = names[0];
            byName_[foldName(names[0])] = d.memid;
        }
        for (BSTR n : names) SysFreeString(n);

        switch (d.invkind) {
        case INVOKE_PROPERTYGET: m.get = fn.get(); break;
        case INVOKE_PROPERTYPUT: m.put = fn.get(); break;
        case INVOKE_PROPERTYPUTREF: m.putref = fn.get(); break;
        default: m.method = fn.get(); break;
        }
        functions_.push_back(std::move(fn));
    }
}

DispatchTable::Member& DispatchTable::memberSlot(DISPID id) {
    if (id >= 0 && id < kDirectIds) {
        if (static_cast<size_t>(id) >= byId_.size()) byId_.resize(id + 1);
        return byId_[id];
    }
    return otherIds_[id];
}

const DispatchTable::Member* DispatchTable::member(DISPID id) const {
    const Member* m = nullptr;
    if (id >= 0 && static_cast<size_t>(id) < byId_.size()) {
        m = &byId_[id];
    } else {
        auto it = otherIds_.find(id);
        if (it != otherIds_.end()) m = &it->second;
    }
    if (m && !m->get && !m->put && !m->putref && !m->method) return nullptr;
    return m;
}

HRESULT DispatchTable::idsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const {
    if (!names || !ids) return E_POINTER;
    if (count == 0) return S_OK;
    for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
    auto it = byName_.find(foldName(names[0]));
    if (it == byName_.end()) return DISP_E_UNKNOWNNAME;
    ids[0] = it->second;
    if (count == 1) return S_OK;

    // Named arguments: their DISPIDs are the parameters' positions.
    const Member* m = member(it->second);
    const FunctionInfo* fn = m->method ? m->method : m->get ? m->get : m->put ? m->put : m->putref;
    HRESULT hr = S_OK;
    for (UINT i = 1; i < count; ++i) {
        std::wstring n = foldName(names[i]);
        for (size_t p = 0; p < fn->paramNames.size(); ++p) {
            if (fn->paramNames[p] == n) { ids[i] = static_cast<DISPID>(p); break; }
        }
        if (ids[i] == DISPID_UNKNOWN) hr = DISP_E_UNKNOWNNAME;
    }
    return hr;
}

// ------------------------------------------------------------------ invoking

namespace {

// Size of the value part of a VARIANT of type vt, for change detection.
size_t valueSize(VARTYPE vt) {
    if (vt == VT_DECIMAL) return sizeof(DECIMAL) - 2;
    size_t n = scalarBytes(vt);
    return n ? n : 8;
}

// Reads element `i` (0-based from the lower bound) of a one-dimensional array as a Variant.
HRESULT readElement(SAFEARRAY* sa, LONG i, VARIANT* out) {
    VARTYPE et = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(sa, &et))) return DISP_E_TYPEMISMATCH;
    LONG lb = 0;
    SafeArrayGetLBound(sa, 1, &lb);
    LONG index = lb + i;
    VariantInit(out);
    if (et == VT_VARIANT) return SafeArrayGetElement(sa, &index, out);
    if (et == VT_RECORD || et == VT_UNKNOWN || et == VT_DISPATCH) return DISP_E_TYPEMISMATCH;
    HRESULT hr = SafeArrayGetElement(sa, &index, &V_I4(out));
    if (SUCCEEDED(hr)) V_VT(out) = et;
    return hr;
}

HRESULT writeElement(SAFEARRAY* sa, LONG i, long value) {
    VARTYPE et = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(sa, &et))) return DISP_E_TYPEMISMATCH;
    LONG lb = 0;
    SafeArrayGetLBound(sa, 1, &lb);
    LONG index = lb + i;
    Variant v(value);
    if (et == VT_VARIANT) return SafeArrayPutElement(sa, &index, &v);
    Variant typed;
    HRESULT hr = VariantChangeType(&typed, &v, 0, et);
    if (FAILED(hr)) return hr;
    return SafeArrayPutElement(sa, &index, et == VT_BSTR ? static_cast<void*>(V_BSTR(&typed)) : &V_I4(&typed));
}

// One argument on its way to the vtable call.
struct Slot {
    enum class Back { None, Variant, Typed, Array, NewArray, ConvertedArray };

    VARIANTARG arg;          // what the call receives (by value or VT_BYREF pointer)
    VARIANT shallow;         // a caller's by-reference Variant, passed on without owning it
    VARTYPE callType = VT_EMPTY;
    Variant temp;            // a converted value the slot owns
    Back back = Back::None;
    VARIANT* target = nullptr;   // caller storage for the write-back
    VARTYPE valueType = VT_EMPTY;
    BYTE before[16];
    IUnknown* owned = nullptr;   // interface queried for the call
    // Records converted from arrays or made up for missing arguments.
    BYTE record[64];
    BYTE* recordPtr = nullptr;
    ULONG recordSize = 0;
    ULONG longs = 0;
    SAFEARRAY* array = nullptr;

    Slot() { VariantInit(&arg); }
    ~Slot() {
        if (owned) owned->Release();
        if (recordPtr && recordPtr != record) CoTaskMemFree(recordPtr);
    }

    void passPointer(void* p) {
        callType = VT_BYREF | VT_I4;  // any by-reference type: the call takes the pointer
        V_VT(&arg) = callType;
        V_BYREF(&arg) = p;
    }
    void remember(const void* p, size_t n) { std::memcpy(before, p, n < sizeof before ? n : sizeof before); }
    bool changed(const void* p, size_t n) const { return std::memcmp(before, p, n < sizeof before ? n : sizeof before) != 0; }
};

// Converts `src` (no VT_BYREF|VT_VARIANT wrapper) into `dst` of type vt.
HRESULT coerce(VARIANT* dst, VARIANT* src, VARTYPE vt, LCID lcid) {
    VariantClear(dst);
    if (V_VT(src) == vt) return VariantCopy(dst, src);
    if ((vt & VT_ARRAY) && vt != (VT_ARRAY | VT_VARIANT)) {
        VARTYPE have = V_VT(src) & ~VT_BYREF;
        if (have != vt) return DISP_E_TYPEMISMATCH;
    }
    return VariantChangeTypeEx(dst, src, lcid, 0, vt);
}

HRESULT prepareRecord(Slot& s, const ParamInfo& p, VARIANT* src) {
    VARIANT* varRef = nullptr;
    VARIANT* v = src;
    if (v && V_VT(v) == (VT_BYREF | VT_VARIANT)) { varRef = V_VARIANTREF(v); v = varRef; }
    const TypeRef& t = p.type;

    if (v && (V_VT(v) & ~VT_BYREF) == VT_RECORD) {
        IRecordInfo* ri = V_RECORDINFO(v);
        GUID a = GUID_NULL, b = GUID_NULL;
        if (ri) ri->GetGuid(&a);
        if (t.record) t.record->GetGuid(&b);
        if (!ri || a != b || !V_RECORD(v)) return DISP_E_TYPEMISMATCH;
        s.passPointer(V_RECORD(v));
        return S_OK;
    }

    s.recordSize = t.recordSize ? t.recordSize : 1;
    s.recordPtr = s.recordSize <= sizeof s.record ? s.record
                                                  : static_cast<BYTE*>(CoTaskMemAlloc(s.recordSize));
    if (!s.recordPtr) return E_OUTOFMEMORY;
    std::memset(s.recordPtr, 0, s.recordSize);
    s.passPointer(s.recordPtr);

    if (!v || V_VT(v) == VT_EMPTY || isMissing(v)) {
        // A script variable that holds nothing yet receives the record as an array.
        if (varRef && V_VT(varRef) == VT_EMPTY && t.flatLongs) {
            s.back = Slot::Back::NewArray;
            s.target = varRef;
            s.longs = t.flatLongs;
        }
        return S_OK;
    }
    if ((V_VT(v) & VT_ARRAY) && t.flatLongs) {
        SAFEARRAY* sa = (V_VT(v) & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
        LONG lb = 0, ub = -1;
        if (!sa || SafeArrayGetDim(sa) != 1 || FAILED(SafeArrayGetLBound(sa, 1, &lb)) ||
            FAILED(SafeArrayGetUBound(sa, 1, &ub)) || ub - lb + 1 != static_cast<LONG>(t.flatLongs))
            return DISP_E_TYPEMISMATCH;
        LONG* fields = reinterpret_cast<LONG*>(s.recordPtr);
        for (ULONG i = 0; i < t.flatLongs; ++i) {
            Variant e, l;
            HRESULT hr = readElement(sa, static_cast<LONG>(i), &e);
            if (SUCCEEDED(hr)) hr = VariantChangeType(&l, &e, 0, VT_I4);
            if (FAILED(hr)) return DISP_E_TYPEMISMATCH;
            fields[i] = V_I4(&l);
        }
        // Only an array the caller passed by reference receives the changes.
        if (varRef || (V_VT(v) & VT_BYREF)) {
            s.remember(s.recordPtr, s.recordSize);
            s.back = Slot::Back::Array;
            s.array = sa;
            s.longs = t.flatLongs;
        }
        return S_OK;
    }
    return DISP_E_TYPEMISMATCH;
}

HRESULT prepareInterface(Slot& s, const ParamInfo& p, VARIANT* v) {
    if (V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
    IUnknown* unk = nullptr;
    switch (V_VT(v)) {
    case VT_EMPTY: case VT_NULL: break;
    case VT_DISPATCH: case VT_UNKNOWN: unk = V_UNKNOWN(v); break;
    case VT_DISPATCH | VT_BYREF: case VT_UNKNOWN | VT_BYREF: unk = *V_UNKNOWNREF(v); break;
    default: return DISP_E_TYPEMISMATCH;
    }
    if (unk) {
        IID iid = p.type.iid;
        if (iid == IID_NULL) iid = p.type.vt == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
        if (FAILED(unk->QueryInterface(iid, reinterpret_cast<void**>(&s.owned))) || !s.owned)
            return DISP_E_TYPEMISMATCH;
    }
    s.callType = VT_UNKNOWN;
    V_VT(&s.arg) = VT_UNKNOWN;
    V_UNKNOWN(&s.arg) = s.owned;
    return S_OK;
}

HRESULT prepareVariant(Slot& s, const ParamInfo& p, VARIANT* src) {
    VARIANT* varRef = V_VT(src) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(src) : nullptr;
    VARIANT* v = varRef ? varRef : src;
    bool indirect = (V_VT(v) & VT_BYREF) != 0;
    if (!p.type.byref) {
        s.callType = VT_VARIANT;
        if (indirect) {
            HRESULT hr = VariantCopyInd(&s.temp, v);
            if (FAILED(hr)) return hr;
            s.arg = s.temp;  // shallow: the slot's temp owns it
        } else {
            s.arg = *v;      // shallow: the caller owns it for the duration of the call
        }
        return S_OK;
    }
    if (varRef && !indirect) {
        s.passPointer(varRef);
        return S_OK;
    }
    if (indirect) {
        // A typed variable by reference (VB's ByRef Long, a typed array): the
        // member receives the reference itself and works on the caller's storage.
        s.shallow = *v;
        s.passPointer(&s.shallow);
        return S_OK;
    }
    HRESULT hr = VariantCopy(&s.temp, v);
    if (FAILED(hr)) return hr;
    s.passPointer(&s.temp);
    return S_OK;
}

// A copy of `src` (any array) with elements of type `to`, same bounds; nullptr when
// an element does not convert.
SAFEARRAY* convertArray(SAFEARRAY* src, VARTYPE to, LCID lcid) {
    VARTYPE from = VT_EMPTY;
    UINT dims = SafeArrayGetDim(src);
    if (dims == 0 || dims > 8 || FAILED(SafeArrayGetVartype(src, &from))) return nullptr;
    SAFEARRAYBOUND bounds[8];
    for (UINT d = 0; d < dims; ++d) {
        LONG lb = 0, ub = -1;
        SafeArrayGetLBound(src, d + 1, &lb);
        SafeArrayGetUBound(src, d + 1, &ub);
        bounds[d] = SAFEARRAYBOUND{static_cast<ULONG>(ub - lb + 1), lb};
    }
    SafeArray out(SafeArrayCreate(to, dims, bounds));
    if (!out.get()) return nullptr;
    ArrayData in(src), put(out.get());
    if (!in.locked() || !put.locked()) return nullptr;
    const ULONG n = [&] { ULONG c = 1; for (UINT d = 0; d < dims; ++d) c *= bounds[d].cElements; return c; }();
    const UINT inSize = SafeArrayGetElemsize(src), outSize = SafeArrayGetElemsize(out.get());
    auto* inBytes = static_cast<BYTE*>(in.data());
    auto* outBytes = static_cast<BYTE*>(put.data());
    for (ULONG i = 0; i < n; ++i) {
        VARIANT view;
        VariantInit(&view);
        VARIANT* element = &view;
        if (from == VT_VARIANT) {
            element = reinterpret_cast<VARIANT*>(inBytes + i * inSize);
        } else {
            V_VT(&view) = from;
            std::memcpy(&V_I4(&view), inBytes + i * inSize, inSize < 8 ? inSize : 8);
        }
        Variant converted;
        if (FAILED(to == VT_VARIANT ? VariantCopy(&converted, element)
                                    : VariantChangeTypeEx(&converted, element, lcid, 0, to)))
            return nullptr;
        if (to == VT_VARIANT) {
            converted.detachTo(reinterpret_cast<VARIANT*>(outBytes + i * outSize));
        } else {
            std::memcpy(outBytes + i * outSize, &V_I4(&converted), outSize);
            V_VT(&converted) = VT_EMPTY;  // the array owns strings and objects now
        }
    }
    return out.detach();
}

// A typed array parameter given a Variant (a script's variable): the member
// works on a converted copy, which goes back to the caller as a Variant array.
HRESULT prepareTypedArray(Slot& s, const ParamInfo& p, VARIANT* v, VARIANT* varRef, LCID lcid) {
    const VARTYPE element = p.type.vt & ~VT_ARRAY;
    V_VT(&s.temp) = p.type.vt;
    V_ARRAY(&s.temp) = nullptr;
    if (V_VT(v) & VT_ARRAY) {
        SAFEARRAY* sa = (V_VT(v) & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
        if (sa && !(V_ARRAY(&s.temp) = convertArray(sa, element, lcid))) return DISP_E_TYPEMISMATCH;
    } else if (V_VT(v) != VT_EMPTY) {
        return DISP_E_TYPEMISMATCH;
    }
    s.passPointer(&V_ARRAY(&s.temp));
    if (varRef || (V_VT(v) & VT_BYREF)) {
        s.back = Slot::Back::ConvertedArray;
        s.target = v;
    }
    return S_OK;
}

HRESULT prepareValue(Slot& s, const ParamInfo& p, VARIANT* src, LCID lcid) {
    const VARTYPE vt = p.type.vt;
    VARIANT* varRef = V_VT(src) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(src) : nullptr;
    VARIANT* v = varRef ? varRef : src;

    if (p.type.byref) {
        if (V_VT(v) == (VT_BYREF | vt)) {            // the caller's typed variable
            s.passPointer(V_BYREF(v));
            return S_OK;
        }
        if (varRef && V_VT(v) == vt) {                // a Variant variable of the right type
            s.passPointer(&V_I4(v));
            return S_OK;
        }
        if (vt & VT_ARRAY) return prepareTypedArray(s, p, v, varRef, lcid);
        HRESULT hr = coerce(&s.temp, v, vt, lcid);
        if (FAILED(hr)) return hr;
        s.passPointer(&V_I4(&s.temp));
        s.valueType = vt;
        s.remember(&V_I4(&s.temp), valueSize(vt));
        if (varRef && !(V_VT(v) & VT_BYREF)) {
            s.back = Slot::Back::Variant;
            s.target = varRef;
        } else if (V_VT(v) & VT_BYREF) {
            s.back = Slot::Back::Typed;
            s.target = v;
        }
        return S_OK;
    }

    s.callType = vt;
    if (V_VT(v) == vt) {
        s.arg = *v;  // shallow: by-value arguments are the caller's for the duration
        return S_OK;
    }
    if (V_VT(v) == (VT_BYREF | vt) && !(vt & VT_ARRAY) && vt != VT_DECIMAL) {
        V_VT(&s.arg) = vt;
        std::memcpy(&V_I4(&s.arg), V_BYREF(v), valueSize(vt));
        return S_OK;
    }
    HRESULT hr = coerce(&s.temp, v, vt, lcid);
    if (FAILED(hr)) return hr;
    s.arg = s.temp;
    return S_OK;
}

// Puts a value for an omitted optional parameter into the slot.
HRESULT prepareMissing(Slot& s, const ParamInfo& p, LCID lcid) {
    if (p.hasDefault) {
        Variant def(p.defaultValue);
        HRESULT hr = coerce(&s.temp, &def, p.type.vt, lcid);
        if (FAILED(hr)) return hr;
        if (p.type.byref) {
            s.passPointer(p.type.vt == VT_VARIANT ? static_cast<void*>(&s.temp) : &V_I4(&s.temp));
        } else {
            s.callType = p.type.vt;
            s.arg = s.temp;
        }
        return S_OK;
    }
    if (p.type.vt == VT_VARIANT) {
        V_VT(&s.temp) = VT_ERROR;
        V_ERROR(&s.temp) = DISP_E_PARAMNOTFOUND;
        if (p.type.byref) {
            s.passPointer(&s.temp);
        } else {
            s.callType = VT_VARIANT;
            s.arg = s.temp;
        }
        return S_OK;
    }
    if (p.type.vt == VT_RECORD) return prepareRecord(s, p, nullptr);
    if (p.type.byref) {
        // Left out, and no default the type library could hold: the member sees null.
        s.passPointer(nullptr);
        return S_OK;
    }
    // Optional typed parameters without a declared default start from zero.
    V_VT(&s.temp) = p.type.vt;
    std::memset(&V_I4(&s.temp), 0, 8);
    s.callType = p.type.vt;
    s.arg = s.temp;
    return S_OK;
}

HRESULT prepare(Slot& s, const ParamInfo& p, VARIANT* src, LCID lcid) {
    const TypeRef& t = p.type;
    if (t.vt == VT_RECORD) return prepareRecord(s, p, src);
    if ((t.vt == VT_DISPATCH || t.vt == VT_UNKNOWN) && !t.byref) return prepareInterface(s, p, src);
    if (t.vt == VT_VARIANT) return prepareVariant(s, p, src);
    return prepareValue(s, p, src, lcid);
}

void writeBack(Slot& s) {
    switch (s.back) {
    case Slot::Back::None:
        return;
    case Slot::Back::Variant:
        if (!s.changed(&V_I4(&s.temp), valueSize(s.valueType))) return;
        VariantClear(s.target);
        *s.target = s.temp;            // moves the converted value into the caller's variable
        VariantInit(&s.temp);
        return;
    case Slot::Back::Typed: {
        if (!s.changed(&V_I4(&s.temp), valueSize(V_VT(&s.temp)))) return;
        VARTYPE want = V_VT(s.target) & ~VT_BYREF;
        Variant converted;
        if (want == VT_VARIANT) {
            VariantClear(V_VARIANTREF(s.target));
            VariantCopy(V_VARIANTREF(s.target), &s.temp);
            return;
        }
        if (FAILED(VariantChangeType(&converted, &s.temp, 0, want))) return;
        if (want == VT_BSTR) {
            SysFreeString(*V_BSTRREF(s.target));
            *V_BSTRREF(s.target) = V_BSTR(&converted);
            V_VT(&converted) = VT_EMPTY;
        } else if (want == VT_DISPATCH || want == VT_UNKNOWN) {
            if (*V_UNKNOWNREF(s.target)) (*V_UNKNOWNREF(s.target))->Release();
            *V_UNKNOWNREF(s.target) = V_UNKNOWN(&converted);
            V_VT(&converted) = VT_EMPTY;
        } else if (!(want & VT_ARRAY)) {
            std::memcpy(V_BYREF(s.target), &V_I4(&converted), valueSize(want));
        }
        return;
    }
    case Slot::Back::Array: {
        if (!s.changed(s.recordPtr, s.recordSize)) return;
        const LONG* fields = reinterpret_cast<const LONG*>(s.recordPtr);
        for (ULONG i = 0; i < s.longs; ++i) writeElement(s.array, static_cast<LONG>(i), fields[i]);
        return;
    }
    case Slot::Back::ConvertedArray: {
        // Back into the caller's Variant (or typed array variable) in its own element type.
        VARIANT* target = s.target;
        const bool typed = (V_VT(target) & VT_BYREF) != 0;
        VARTYPE element = typed ? (V_VT(target) & ~(VT_BYREF | VT_ARRAY)) : VT_VARIANT;
        if (element == VT_EMPTY) element = VT_VARIANT;
        SAFEARRAY* result = V_ARRAY(&s.temp);
        SAFEARRAY* back = result ? convertArray(result, element, LOCALE_USER_DEFAULT) : nullptr;
        if (result && !back) return;
        if (typed) {
            if (*V_ARRAYREF(target)) SafeArrayDestroy(*V_ARRAYREF(target));
            *V_ARRAYREF(target) = back;
        } else {
            VariantClear(target);
            if (back) {
                V_VT(target) = VT_ARRAY | element;
                V_ARRAY(target) = back;
            }
        }
        return;
    }
    case Slot::Back::NewArray: {
        SAFEARRAYBOUND b{s.longs, 0};
        SAFEARRAY* sa = SafeArrayCreate(VT_VARIANT, 1, &b);
        if (!sa) return;
        const LONG* fields = reinterpret_cast<const LONG*>(s.recordPtr);
        for (ULONG i = 0; i < s.longs; ++i) writeElement(sa, static_cast<LONG>(i), fields[i]);
        VariantClear(s.target);
        V_VT(s.target) = VT_ARRAY | VT_VARIANT;
        V_ARRAY(s.target) = sa;
        return;
    }
    }
}

// Calls without the platform's general call helper. Both conventions pass the
// arguments as machine words, the 32-bit one all of them on the stack; the
// 64-bit one puts floating-point values into other registers, so such calls
// (and calls with more words than the table below holds) go to the helper.
constexpr UINT kDirectWords = 16;

// Appends the words argument `a`, declared as `type`, takes in the call.
bool appendWords(VARTYPE type, const VARIANTARG& a, ULONG_PTR* w, UINT& n) {
    auto put = [&](const void* p, UINT words) {
        if (n + words > kDirectWords) return false;
        std::memcpy(w + n, p, words * sizeof(ULONG_PTR));
        n += words;
        return true;
    };
    auto word = [&](ULONG_PTR v) { return put(&v, 1); };
    if (type & VT_BYREF) return word(reinterpret_cast<ULONG_PTR>(V_BYREF(&a)));
    switch (type) {
    case VT_I4: case VT_INT: case VT_ERROR: return word(static_cast<ULONG_PTR>(static_cast<LONG_PTR>(V_I4(&a))));
    case VT_UI4: case VT_UINT: return word(V_UI4(&a));
    case VT_I2: case VT_BOOL: return word(static_cast<ULONG_PTR>(static_cast<LONG_PTR>(V_I2(&a))));
    case VT_UI2: return word(V_UI2(&a));
    case VT_I1: return word(static_cast<ULONG_PTR>(static_cast<LONG_PTR>(V_I1(&a))));
    case VT_UI1: return word(V_UI1(&a));
    case VT_BSTR: case VT_UNKNOWN: case VT_DISPATCH: return word(reinterpret_cast<ULONG_PTR>(V_BYREF(&a)));
#ifdef _WIN64
    // A Variant by value travels as a pointer to the caller's copy (the slot's).
    case VT_VARIANT: return word(reinterpret_cast<ULONG_PTR>(&a));
    case VT_I8: case VT_UI8: case VT_CY: return put(&V_I8(&a), 1);
#else
    // The whole 16 bytes of a Variant by value; 8-byte values take two words.
    case VT_VARIANT: return put(&a, sizeof(VARIANT) / sizeof(ULONG_PTR));
    case VT_I8: case VT_UI8: case VT_CY: case VT_R8: case VT_DATE: return put(&V_I8(&a), 2);
    case VT_R4: return put(&V_R4(&a), 1);
#endif
    default: return false;
    }
}

using WordCall = HRESULT (*)(void* entry, void* instance, const ULONG_PTR* w);

// The member called with words w[0..N-1], N the length of the sequence.
template <class Sequence>
struct Words;
template <size_t... I>
struct Words<std::index_sequence<I...>> {
    static HRESULT call(void* entry, void* instance, const ULONG_PTR* w) {
        using Member = HRESULT(STDMETHODCALLTYPE*)(void*, decltype(static_cast<void>(I), ULONG_PTR())...);
        return reinterpret_cast<Member>(entry)(instance, w[I]...);
    }
};

// One entry per count of words, 0 to kDirectWords.
template <size_t... N>
constexpr std::array<WordCall, sizeof...(N)> wordCalls(std::index_sequence<N...>) {
    return {&Words<std::make_index_sequence<N>>::call...};
}

bool callDirect(void* instance, const FunctionInfo& fn, const VARTYPE* types, VARIANTARG** args, UINT count,
                HRESULT& result) {
#ifndef _WIN64
    if (fn.callConv != CC_STDCALL) return false;
#endif
    ULONG_PTR w[kDirectWords];
    UINT n = 0;
    for (UINT i = 0; i < count; ++i)
        if (!appendWords(types[i], *args[i], w, n)) return false;
    static constexpr auto calls = wordCalls(std::make_index_sequence<kDirectWords + 1>());
    void* entry = (*static_cast<void***>(instance))[fn.vtableOffset / static_cast<SHORT>(sizeof(void*))];
    result = calls[n](entry, instance, w);
    return true;
}

// Storage for a member's result.
struct ResultSlot {
    Variant value;
    void* record = nullptr;
    IRecordInfo* info = nullptr;
    ~ResultSlot() { if (record && info) info->RecordDestroy(record); }
};

constexpr UINT kInlineArgs = 16;

// Slots for one call, on the stack for the usual argument counts.
class SlotArray {
public:
    explicit SlotArray(UINT n) : n_(n) {
        slots_ = n <= kInlineArgs + 1 ? reinterpret_cast<Slot*>(inline_) : static_cast<Slot*>(::operator new(sizeof(Slot) * n));
        for (UINT i = 0; i < n; ++i) new (&slots_[i]) Slot();
    }
    ~SlotArray() {
        for (UINT i = 0; i < n_; ++i) slots_[i].~Slot();
        if (slots_ != reinterpret_cast<Slot*>(inline_)) ::operator delete(slots_);
    }
    SlotArray(const SlotArray&) = delete;
    SlotArray& operator=(const SlotArray&) = delete;
    Slot& operator[](UINT i) { return slots_[i]; }

private:
    UINT n_;
    Slot* slots_;
    alignas(Slot) unsigned char inline_[sizeof(Slot) * (kInlineArgs + 1)];
};

}  // namespace

void fillExcepInfo(HRESULT hr, EXCEPINFO* excep) {
    if (!excep) return;
    std::memset(excep, 0, sizeof *excep);
    excep->scode = hr;
    ComPtr<IErrorInfo> info;
    if (GetErrorInfo(0, info.put()) == S_OK && info) {
        info->GetSource(&excep->bstrSource);
        info->GetDescription(&excep->bstrDescription);
        info->GetHelpFile(&excep->bstrHelpFile);
        info->GetHelpContext(&excep->dwHelpContext);
    } else {
        excep->bstrSource = SysAllocString(kLibrarySource);
    }
}

HRESULT DispatchTable::invoke(void* instance, DISPID id, LCID lcid, WORD flags, DISPPARAMS* params,
                              VARIANT* result, EXCEPINFO* excep, UINT* argErr) const {
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    if (!params) params = &none;
    const Member* m = member(id);
    if (!m) return DISP_E_MEMBERNOTFOUND;

    // Choose the accessor the flags ask for; VB-style hosts combine METHOD and PROPERTYGET.
    const FunctionInfo* fn = nullptr;
    bool put = false;
    if (flags & DISPATCH_PROPERTYPUTREF) {
        fn = m->putref ? m->putref : m->put;
        put = true;
    } else if (flags & DISPATCH_PROPERTYPUT) {
        fn = m->put ? m->put : m->putref;
        put = true;
    } else {
        if (flags & DISPATCH_METHOD) fn = m->method;
        if (!fn && (flags & (DISPATCH_PROPERTYGET | DISPATCH_METHOD))) fn = m->get;
        if (!fn && (flags & DISPATCH_PROPERTYGET)) fn = m->method;
    }
    if (!fn) return DISP_E_MEMBERNOTFOUND;

    const UINT nParams = static_cast<UINT>(fn->params.size());
    if (params->cArgs < params->cNamedArgs) return E_INVALIDARG;
    const UINT named = params->cNamedArgs;
    UINT positional = params->cArgs - named;

    // Which caller argument goes to which parameter (rgvarg is in reverse order).
    VARIANT* inlineSources[kInlineArgs] = {};
    std::vector<VARIANT*> heapSources;
    VARIANT** sources = inlineSources;
    if (nParams > kInlineArgs) { heapSources.assign(nParams, nullptr); sources = heapSources.data(); }

    const UINT limit = put ? nParams - 1 : nParams;  // parameters fed by arguments
    if (put) {
        if (nParams == 0) return DISP_E_BADPARAMCOUNT;
        VARIANT* value = nullptr;
        for (UINT i = 0; i < named; ++i)
            if (params->rgdispidNamedArgs[i] == DISPID_PROPERTYPUT) value = &params->rgvarg[i];
        if (!value) {
            // Some callers pass the new value positionally, as the last argument.
            if (positional == 0) return DISP_E_PARAMNOTOPTIONAL;
            value = &params->rgvarg[0];
            --positional;
        }
        sources[nParams - 1] = value;
    }
    if (positional > limit) return DISP_E_BADPARAMCOUNT;
    for (UINT i = 0; i < positional; ++i) sources[i] = &params->rgvarg[params->cArgs - 1 - i];
    for (UINT i = 0; i < named; ++i) {
        DISPID d = params->rgdispidNamedArgs[i];
        if (d == DISPID_PROPERTYPUT) continue;
        if (d < 0 || static_cast<UINT>(d) >= limit) {
            if (argErr) *argErr = i;
            return DISP_E_PARAMNOTFOUND;
        }
        sources[d] = &params->rgvarg[i];
    }

    SlotArray slots(nParams + 1);
    VARTYPE types[kInlineArgs + 1];
    VARIANTARG* args[kInlineArgs + 1];
    std::vector<VARTYPE> heapTypes;
    std::vector<VARIANTARG*> heapArgs;
    VARTYPE* callTypes = types;
    VARIANTARG** callArgs = args;
    if (nParams > kInlineArgs) {
        heapTypes.resize(nParams + 1);
        heapArgs.resize(nParams + 1);
        callTypes = heapTypes.data();
        callArgs = heapArgs.data();
    }

    for (UINT i = 0; i < nParams; ++i) {
        const ParamInfo& p = fn->params[i];
        Slot& s = slots[i];
        HRESULT hr;
        if (isMissing(sources[i])) {
            if (!p.optional) return i >= positional && named == 0 ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTOPTIONAL;
            hr = prepareMissing(s, p, lcid);
        } else {
            hr = prepare(s, p, sources[i], lcid);
        }
        if (FAILED(hr)) {
            if (argErr) {
                for (UINT k = 0; k < params->cArgs; ++k)
                    if (&params->rgvarg[k] == sources[i]) *argErr = k;
            }
            return hr == E_OUTOFMEMORY ? hr : DISP_E_TYPEMISMATCH;
        }
        callTypes[i] = s.callType;
        callArgs[i] = &s.arg;
    }

    ResultSlot res;
    UINT count = nParams;
    if (fn->hasResult) {
        Slot& s = slots[nParams];
        const TypeRef& r = fn->result;
        if (r.vt == VT_RECORD) {
            if (!r.record) return DISP_E_TYPEMISMATCH;
            res.info = r.record.get();
            res.record = res.info->RecordCreate();
            if (!res.record) return E_OUTOFMEMORY;
            s.passPointer(res.record);
        } else if (r.vt == VT_VARIANT) {
            s.passPointer(&res.value);
        } else {
            s.passPointer(&V_I4(&res.value));
        }
        callTypes[count] = s.callType;
        callArgs[count] = &s.arg;
        ++count;
    }

    HRESULT memberResult;
    if (!callDirect(instance, *fn, callTypes, callArgs, count, memberResult)) {
        VARIANT ret;
        VariantInit(&ret);
        HRESULT hr = DispCallFunc(instance, static_cast<ULONG_PTR>(fn->vtableOffset), fn->callConv, VT_I4,
                                  count, callTypes, callArgs, &ret);
        if (FAILED(hr)) return hr;
        memberResult = V_I4(&ret);
    }
    if (FAILED(memberResult)) {
        if (!excep) return memberResult;
        fillExcepInfo(memberResult, excep);
        return DISP_E_EXCEPTION;
    }

    for (UINT i = 0; i < nParams; ++i) writeBack(slots[i]);

    if (fn->hasResult) {
        const TypeRef& r = fn->result;
        if (r.vt == VT_RECORD) {
            if (result) {
                VariantInit(result);
                V_VT(result) = VT_RECORD;
                V_RECORD(result) = res.record;
                V_RECORDINFO(result) = res.info;
                res.info->AddRef();
                res.record = nullptr;
            }
        } else {
            if (r.vt != VT_VARIANT) V_VT(&res.value) = r.vt;
            if (result) {
                VariantInit(result);
                res.value.detachTo(result);
            }
        }
    } else if (result) {
        VariantInit(result);
    }
    return S_OK;
}

}  // namespace tova
