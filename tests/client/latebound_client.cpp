// A client that knows the library only by its ProgIDs and talks to it through
// IDispatch by member name, as a macro language or a script host does. No
// type library header: what it needs (one event interface GUID) is spelled out.
//
//   latebound_client            runs every check, last line "latebound client: OK"
//   latebound_client --create   only creates the three classes by ProgID
//   latebound_client --activation-context DLL_OR_MANIFEST PROGID...
//       without registration: activates the DLL's own manifest (or the same as
//       a file), creates every class named by CLSID and by ProgID, then runs
//       every check
//   latebound_client --manifest PROGID...
//       the same through the manifest of this program (latebound_client.exe.manifest
//       beside it, naming the DLL's assembly) instead
#include <windows.h>
#include <ole2.h>
#include <oleauto.h>
#include <ocidl.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

// The event interface of Rectangle: Changed(pPrevRECT) has DISPID 1.
const GUID kRectangleEvents = {0xBF052036, 0x5C18, 0x4C9A, {0x8F, 0x15, 0x13, 0x58, 0xFA, 0x0B, 0x21, 0xD5}};
const DISPID kChanged = 1;

int failures = 0;

void check(bool ok, const char* what) {
    if (ok) return;
    ++failures;
    std::printf("FAILED: %s\n", what);
}

VARIANT vLong(LONG v) {
    VARIANT r;
    VariantInit(&r);
    V_VT(&r) = VT_I4;
    V_I4(&r) = v;
    return r;
}

VARIANT vRef(VARIANT* target) {
    VARIANT r;
    VariantInit(&r);
    V_VT(&r) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&r) = target;
    return r;
}

VARIANT vDispatch(IDispatch* d) {
    VARIANT r;
    VariantInit(&r);
    V_VT(&r) = VT_DISPATCH;
    V_DISPATCH(&r) = d;
    return r;
}

// An array of Longs in a Variant, as a script builds it for a record.
VARIANT vLongArray(std::initializer_list<LONG> values) {
    SAFEARRAYBOUND b = {static_cast<ULONG>(values.size()), 0};
    SAFEARRAY* sa = SafeArrayCreate(VT_VARIANT, 1, &b);
    LONG i = 0;
    for (LONG v : values) {
        VARIANT e = vLong(v);
        SafeArrayPutElement(sa, &i, &e);
        ++i;
    }
    VARIANT r;
    VariantInit(&r);
    V_VT(&r) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&r) = sa;
    return r;
}

// Element i of a one-dimensional array in `v`, as a Long (or a sentinel).
LONG element(const VARIANT& v, LONG i) {
    if (!(V_VT(&v) & VT_ARRAY) || !V_ARRAY(&v)) return -99999;
    VARIANT e, l;
    VariantInit(&e);
    VariantInit(&l);
    LONG lb = 0;
    SafeArrayGetLBound(V_ARRAY(&v), 1, &lb);
    LONG index = lb + i;
    LONG out = -99999;
    if (SUCCEEDED(SafeArrayGetElement(V_ARRAY(&v), &index, &e)) && SUCCEEDED(VariantChangeType(&l, &e, 0, VT_I4)))
        out = V_I4(&l);
    VariantClear(&e);
    return out;
}

bool arrayIs(const VARIANT& v, LONG a, LONG b, LONG c, LONG d) {
    LONG lb = 0, ub = -1;
    if (V_VT(&v) != (VT_ARRAY | VT_VARIANT) || !V_ARRAY(&v)) return false;
    SafeArrayGetLBound(V_ARRAY(&v), 1, &lb);
    SafeArrayGetUBound(V_ARRAY(&v), 1, &ub);
    return ub - lb == 3 && element(v, 0) == a && element(v, 1) == b && element(v, 2) == c && element(v, 3) == d;
}

// One late-bound call by name. `args` in declaration order; with `named`, the
// last argument is passed under that parameter name instead of by position.
struct Call {
    HRESULT hr = E_FAIL;
    VARIANT result;
    EXCEPINFO excep;

    Call(IDispatch* obj, const wchar_t* member, WORD flags, std::vector<VARIANT> args, const wchar_t* named = nullptr) {
        VariantInit(&result);
        std::memset(&excep, 0, sizeof excep);
        LPOLESTR names[2] = {const_cast<LPOLESTR>(member), const_cast<LPOLESTR>(named)};
        DISPID ids[2] = {DISPID_UNKNOWN, DISPID_UNKNOWN};
        hr = obj->GetIDsOfNames(IID_NULL, names, named ? 2 : 1, LOCALE_USER_DEFAULT, ids);
        if (FAILED(hr)) return;
        std::vector<VARIANT> reversed(args.rbegin(), args.rend());
        DISPID namedId = ids[1];
        if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) namedId = DISPID_PROPERTYPUT;
        const bool hasNamed = named || namedId == DISPID_PROPERTYPUT;
        DISPPARAMS dp = {reversed.empty() ? nullptr : reversed.data(), hasNamed ? &namedId : nullptr,
                         static_cast<UINT>(reversed.size()), hasNamed ? 1u : 0u};
        UINT argErr = 0;
        hr = obj->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &dp, &result, &excep, &argErr);
    }
    ~Call() {
        VariantClear(&result);
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
    }
    LONG asLong() {
        VARIANT l;
        VariantInit(&l);
        if (FAILED(hr) || FAILED(VariantChangeType(&l, &result, 0, VT_I4))) return -99999;
        return V_I4(&l);
    }
    bool isBool(VARIANT_BOOL b) const { return SUCCEEDED(hr) && V_VT(&result) == VT_BOOL && V_BOOL(&result) == b; }
};

LONG get(IDispatch* obj, const wchar_t* property) {
    return Call(obj, property, DISPATCH_PROPERTYGET, {}).asLong();
}

HRESULT put(IDispatch* obj, const wchar_t* property, LONG value) {
    return Call(obj, property, DISPATCH_PROPERTYPUT, {vLong(value)}).hr;
}

bool edgesAre(IDispatch* r, LONG l, LONG t, LONG rt, LONG b) {
    return get(r, L"Left") == l && get(r, L"Top") == t && get(r, L"Right") == rt && get(r, L"Bottom") == b;
}

IDispatch* create(const wchar_t* progId) {
    CLSID clsid;
    IDispatch* d = nullptr;
    if (FAILED(CLSIDFromProgID(progId, &clsid))) return nullptr;
    if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&d))))
        return nullptr;
    return d;
}

// Receives Changed: counts the calls and keeps the previous edges it was given.
class ChangedSink : public IDispatch {
public:
    int calls = 0;
    bool argumentsOk = true;
    LONG previous[4] = {0, 0, 0, 0};

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == kRectangleEvents) {
            *ppv = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs_); }
    STDMETHODIMP_(ULONG) Release() override { return InterlockedDecrement(&refs_); }  // lives on the stack
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* dp, VARIANT*, EXCEPINFO*, UINT*) override {
        if (id != kChanged) return DISP_E_MEMBERNOTFOUND;
        ++calls;
        const VARIANT* a = dp && dp->cArgs == 1 ? &dp->rgvarg[0] : nullptr;
        if (!a || V_VT(a) != (VT_RECORD | VT_BYREF) || !V_RECORDINFO(a) || !V_RECORD(a)) {
            argumentsOk = false;
            return S_OK;
        }
        ULONG size = 0;
        BSTR name = nullptr;
        V_RECORDINFO(a)->GetSize(&size);
        V_RECORDINFO(a)->GetName(&name);
        if (size != sizeof previous || !name || lstrcmpiW(name, L"RECT") != 0) argumentsOk = false;
        SysFreeString(name);
        if (size == sizeof previous) std::memcpy(previous, V_RECORD(a), sizeof previous);
        return S_OK;
    }
    bool previousIs(LONG l, LONG t, LONG r, LONG b) const {
        return previous[0] == l && previous[1] == t && previous[2] == r && previous[3] == b;
    }

private:
    LONG refs_ = 1;
};

// A memory device context, with GDI reached at run time: the client links
// nothing but the COM libraries.
class MemoryDC {
public:
    MemoryDC() {
        HMODULE gdi = LoadLibraryW(L"gdi32.dll");
        if (!gdi) return;
        load(gdi, "CreateCompatibleDC", createDC_);
        load(gdi, "CreateCompatibleBitmap", createBitmap_);
        load(gdi, "SelectObject", select_);
        load(gdi, "DeleteObject", deleteObject_);
        load(gdi, "DeleteDC", deleteDC_);
        if (!createDC_ || !createBitmap_ || !select_ || !deleteObject_ || !deleteDC_) return;
        dc_ = createDC_(nullptr);
        if (dc_) bitmap_ = createBitmap_(dc_, 64, 64);
        if (bitmap_) old_ = select_(dc_, bitmap_);
    }
    ~MemoryDC() {
        if (old_) select_(dc_, old_);
        if (bitmap_) deleteObject_(bitmap_);
        if (dc_) deleteDC_(dc_);
    }
    // The library takes device contexts as Longs: handles fit 32 bits on both platforms.
    LONG handle() const { return bitmap_ ? static_cast<LONG>(reinterpret_cast<LONG_PTR>(dc_)) : 0; }

private:
    template <class F>
    static void load(HMODULE module, const char* name, F& f) {
        // Through void(*)(): the generic function pointer type.
        f = reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
    }

    HDC(WINAPI* createDC_)(HDC) = nullptr;
    HBITMAP(WINAPI* createBitmap_)(HDC, int, int) = nullptr;
    HGDIOBJ(WINAPI* select_)(HDC, HGDIOBJ) = nullptr;
    BOOL(WINAPI* deleteObject_)(HGDIOBJ) = nullptr;
    BOOL(WINAPI* deleteDC_)(HDC) = nullptr;
    HDC dc_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
};

int createOnly() {
    const wchar_t* progIds[] = {L"TOVA32.Rectangle", L"TOVA32.GDIMethods", L"TOVA32.APIMethods"};
    for (const wchar_t* p : progIds) {
        IDispatch* d = create(p);
        std::printf("%ls: %s\n", p, d ? "created" : "NOT created");
        if (!d) ++failures;
        else d->Release();
    }
    return failures ? 1 : 0;
}

void rectangleChecks(IDispatch* r) {
    // Events first, so that every later change is counted.
    IConnectionPointContainer* cpc = nullptr;
    IConnectionPoint* cp = nullptr;
    ChangedSink sink;
    DWORD cookie = 0;
    check(SUCCEEDED(r->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&cpc))) && cpc,
          "Rectangle is a connection point container");
    if (cpc) check(SUCCEEDED(cpc->FindConnectionPoint(kRectangleEvents, &cp)) && cp, "FindConnectionPoint(events)");
    if (cp) check(SUCCEEDED(cp->Advise(&sink, &cookie)), "Advise");

    // Edges through property put and get.
    check(put(r, L"Left", 10) == S_OK && put(r, L"Top", 20) == S_OK && put(r, L"Right", 110) == S_OK &&
              put(r, L"Bottom", 70) == S_OK, "putting the edges");
    check(edgesAre(r, 10, 20, 110, 70), "edges read back 10,20,110,70");
    check(get(r, L"Width") == 100 && get(r, L"Height") == 50, "Width 100, Height 50");
    check(sink.calls == 4, "one Changed per edge put");
    check(sink.argumentsOk, "Changed receives a RECT record by reference");
    check(sink.previousIs(10, 20, 110, 0), "Changed carries the edges before the last put");

    // A named argument alone: dX keeps its default.
    {
        Call c(r, L"Offset", DISPATCH_METHOD, {vLong(5)}, L"dy");
        check(c.hr == S_OK, "Offset with the named argument dy");
    }
    check(edgesAre(r, 10, 25, 110, 75), "Offset dy:=5 moves only vertically");
    check(sink.calls == 5 && sink.previousIs(10, 20, 110, 70), "Offset raises Changed with the previous edges");
    {
        Call c(r, L"Offset", DISPATCH_METHOD, {vLong(0)}, L"dy");
        check(c.hr == S_OK && sink.calls == 5, "no Changed when nothing moves");
    }

    // A by-reference Empty Variant receives the record as an array of Longs.
    {
        Call push(r, L"PushState", DISPATCH_METHOD, {});
        check(push.isBool(VARIANT_TRUE), "PushState returns True");
        VARIANT empty;
        VariantInit(&empty);
        Call peek(r, L"Peek", DISPATCH_METHOD, {vRef(&empty)});
        check(peek.isBool(VARIANT_TRUE), "Peek returns True");
        check(arrayIs(empty, 10, 25, 110, 75), "Peek writes the pushed edges into an Empty Variant as an array");
        VariantClear(&empty);
    }
    // An array passed for a record, by value.
    {
        VARIANT edges = vLongArray({1, 2, 3, 4});
        Call c(r, L"SetRectangle", DISPATCH_METHOD, {edges});
        check(c.hr == S_OK && edgesAre(r, 1, 2, 3, 4), "SetRectangle with an array");
        VariantClear(&edges);
        Call pop(r, L"PopState", DISPATCH_METHOD, {});
        check(pop.isBool(VARIANT_TRUE) && edgesAre(r, 10, 25, 110, 75), "PopState restores the pushed edges");
    }

    // Errors arrive as exceptions with the library as their source.
    {
        Call c(r, L"Equals2", DISPATCH_METHOD, {vDispatch(nullptr)});
        check(c.hr == DISP_E_EXCEPTION, "Equals2(Nothing) fails with DISP_E_EXCEPTION");
        check(c.excep.scode == static_cast<SCODE>(0x800A005B), "Equals2(Nothing) raises error 91");
        check(c.excep.bstrSource && lstrcmpW(c.excep.bstrSource, L"TOVA200") == 0, "the error's source is TOVA200");
    }
    {
        Call c(r, L"Overlaps2", DISPATCH_METHOD, {vDispatch(nullptr)});
        check(c.isBool(VARIANT_FALSE), "Overlaps2(Nothing) is False");
    }
    {
        IDispatch* other = create(L"TOVA32.Rectangle");
        check(other != nullptr, "a second Rectangle");
        if (other) {
            Call set(other, L"SetRectangle2", DISPATCH_METHOD, {vDispatch(r)});
            Call eq(r, L"Equals2", DISPATCH_METHOD, {vDispatch(other)});
            check(set.hr == S_OK && eq.isBool(VARIANT_TRUE), "SetRectangle2 and Equals2 with another Rectangle");
            other->Release();
        }
    }

    if (cp) {
        check(SUCCEEDED(cp->Unadvise(cookie)), "Unadvise");
        const int before = sink.calls;
        Call c(r, L"Offset", DISPATCH_METHOD, {vLong(1), vLong(1)});
        check(c.hr == S_OK && sink.calls == before, "no Changed after Unadvise");
        cp->Release();
    }
    if (cpc) cpc->Release();
}

void globalChecks() {
    IDispatch* gdi = create(L"TOVA32.GDIMethods");
    IDispatch* api = create(L"TOVA32.APIMethods");
    check(gdi != nullptr, "TOVA32.GDIMethods created by ProgID");
    check(api != nullptr, "TOVA32.APIMethods created by ProgID");
    if (gdi) {
        Call c(gdi, L"DrawRectangle", DISPATCH_METHOD, {vLong(0), vLong(0), vLong(0), vLong(10), vLong(10)});
        check(c.isBool(VARIANT_FALSE), "GDIMethods.DrawRectangle with hDC 0 returns False");
        gdi->Release();
    }
    if (api) {
        {
            Call c(api, L"DrawGradient", DISPATCH_METHOD,
                   {vLong(0), vLong(0), vLong(0), vLong(10), vLong(10), vLong(0), vLong(0xFFFFFF)});
            check(c.isBool(VARIANT_FALSE), "APIMethods.DrawGradient with hDC 0 returns False");
        }
        // BF_ADJUST shrinks the rectangle by the edge width, written back into the caller's array.
        MemoryDC dc;
        check(dc.handle() != 0, "a memory device context");
        if (dc.handle()) {
            VARIANT rect = vLongArray({0, 0, 20, 20});
            const LONG edgeRaised = 5, bfRectAdjust = 15 | 8192;
            Call c(api, L"DrawEdge", DISPATCH_METHOD, {vLong(dc.handle()), vRef(&rect), vLong(edgeRaised), vLong(bfRectAdjust)});
            check(c.hr == S_OK && c.asLong() != 0, "APIMethods.DrawEdge on a memory DC succeeds");
            check(arrayIs(rect, 2, 2, 18, 18), "DrawEdge with BF_ADJUST writes the shrunk rectangle back");
            VariantClear(&rect);
        }
        api->Release();
    }
}

// True when the object describes itself by the interface `name`.
bool isA(IDispatch* d, const std::wstring& name) {
    ITypeInfo* info = nullptr;
    BSTR got = nullptr;
    bool same = SUCCEEDED(d->GetTypeInfo(0, 0, &info)) && info &&
                SUCCEEDED(info->GetDocumentation(MEMBERID_NIL, &got, nullptr, nullptr, nullptr)) && got &&
                name == got;
    SysFreeString(got);
    if (info) info->Release();
    return same;
}

// The library's identity, as a host that binds early asks for it.
const GUID kLibId = {0x42A85E29, 0xD8AA, 0x46DB, {0x8A, 0x1E, 0x05, 0x72, 0x39, 0x50, 0xD2, 0x8C}};

// Every class named, through the activation context in force: its CLSID as the
// type library (found by its registered identity) gives it and as its ProgID
// resolves, then an object by each.
void createEveryClass(int count, char** progIds) {
    ITypeLib* lib = nullptr;
    check(SUCCEEDED(LoadRegTypeLib(kLibId, 1, 22, 0, &lib)) && lib, "the type library found by its LIBID 1.22");
    for (int i = 0; i < count && lib; ++i) {
        wchar_t progId[100];
        MultiByteToWideChar(CP_ACP, 0, progIds[i], -1, progId, 100);
        std::string what = progIds[i];
        wchar_t* name = progId + 7;  // after "TOVA32."
        CLSID fromLib = CLSID_NULL;
        for (UINT t = 0, n = lib->GetTypeInfoCount(); t < n; ++t) {
            TYPEKIND kind;
            BSTR typeName = nullptr;
            if (SUCCEEDED(lib->GetTypeInfoType(t, &kind)) && kind == TKIND_COCLASS &&
                SUCCEEDED(lib->GetDocumentation(t, &typeName, nullptr, nullptr, nullptr)) &&
                lstrcmpW(typeName, name) == 0) {
                ITypeInfo* info = nullptr;
                TYPEATTR* attr = nullptr;
                if (SUCCEEDED(lib->GetTypeInfo(t, &info)) && SUCCEEDED(info->GetTypeAttr(&attr))) {
                    fromLib = attr->guid;
                    info->ReleaseTypeAttr(attr);
                }
                if (info) info->Release();
            }
            SysFreeString(typeName);
        }
        check(fromLib != CLSID_NULL, (what + ": a class of the type library").c_str());
        // Through an activation context a ProgID may resolve to an alias that
        // the context maps to the class: what counts is the object it makes.
        const std::wstring interfaceName = std::wstring(L"_") + name;
        IDispatch* d = nullptr;
        check(SUCCEEDED(CoCreateInstance(fromLib, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                         reinterpret_cast<void**>(&d))) && d && isA(d, interfaceName),
              (what + ": created by CLSID").c_str());
        if (d) d->Release();
        d = create(progId);
        check(d && isA(d, interfaceName), (what + ": created by ProgID").c_str());
        if (d) d->Release();
    }
    if (lib) lib->Release();
}

// Creates the activation context of the assembly manifest that the DLL carries
// as resource 1, or of a manifest file.
HANDLE createContext(const char* source) {
    wchar_t path[MAX_PATH];
    MultiByteToWideChar(CP_ACP, 0, source, -1, path, MAX_PATH);
    const size_t n = std::strlen(source);
    const bool file = n > 9 && lstrcmpiA(source + n - 9, ".manifest") == 0;
    ACTCTXW ctx = {};
    ctx.cbSize = sizeof ctx;
    ctx.lpSource = path;
    if (!file) {
        ctx.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
        ctx.lpResourceName = MAKEINTRESOURCEW(1);
    }
    HANDLE h = CreateActCtxW(&ctx);
    check(h != INVALID_HANDLE_VALUE, file ? "CreateActCtx from the manifest file" : "CreateActCtx from the DLL's manifest");
    return h;
}

}  // namespace

int main(int argc, char** argv) {
    if (FAILED(CoInitialize(nullptr))) {
        std::printf("FAILED: CoInitialize\n");
        return 1;
    }
    int rc;
    const bool fromDll = argc > 2 && std::strcmp(argv[1], "--activation-context") == 0;
    const bool fromExe = argc > 1 && std::strcmp(argv[1], "--manifest") == 0;
    HANDLE context = INVALID_HANDLE_VALUE;
    ULONG_PTR cookie = 0;
    if (fromDll) {
        context = createContext(argv[2]);
        if (context != INVALID_HANDLE_VALUE) check(ActivateActCtx(context, &cookie) != FALSE, "ActivateActCtx");
    }
    if (fromDll || fromExe) {
        const int first = fromDll ? 3 : 2;
        createEveryClass(argc - first, argv + first);
    }
    if (argc > 1 && std::strcmp(argv[1], "--create") == 0) {
        rc = createOnly();
    } else {
        IDispatch* r = create(L"TOVA32.Rectangle");
        check(r != nullptr, "TOVA32.Rectangle created by ProgID");
        if (r) {
            rectangleChecks(r);
            r->Release();
        }
        globalChecks();
        if (failures == 0) std::printf("latebound client: OK\n");
        else std::printf("latebound client: %d check(s) failed\n", failures);
        rc = failures ? 1 : 0;
    }
    if (cookie) DeactivateActCtx(0, cookie);
    if (context != INVALID_HANDLE_VALUE) ReleaseActCtx(context);
    CoUninitialize();
    return rc;
}
