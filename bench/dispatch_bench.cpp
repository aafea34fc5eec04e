// How much a late-bound call costs: the same Rectangle members (and MemoryDC's
// BackColor, a Variant by value) called through the vtable, through our
// IDispatch (cached DISPID and by name) and through the platform's
// ITypeInfo::Invoke on the same interface. Run it with either build. Prints ns per call, the
// best of three timed runs of about 0.3 s each. A figure, not a test.
//
//   dispatch_bench [milliseconds per run]

#include "frame/typelib.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

// ------------------------------------------------------------------ timing

double g_runSeconds = 0.3;
double g_ticksPerSecond = 0;

long long ticks() {
    LARGE_INTEGER t;
    QueryPerformanceCounter(&t);
    return t.QuadPart;
}

// Filled by a member that fails; every timed call shares it.
EXCEPINFO g_excep{};

void clearExcep(EXCEPINFO& e) {
    SysFreeString(e.bstrSource);
    SysFreeString(e.bstrDescription);
    SysFreeString(e.bstrHelpFile);
    std::memset(&e, 0, sizeof e);
}

struct Measured {
    double ns = 0;          // best of the runs, per call
    long long failures = 0; // calls that did not return S_OK
    HRESULT firstFailure = S_OK;
};

// Calls f() until the calls fill a run of g_runSeconds; reports the fastest of 3 runs.
template <class F>
Measured measure(F&& f) {
    Measured m;
    auto run = [&](long long n) {
        long long start = ticks();
        for (long long i = 0; i < n; ++i) {
            HRESULT hr = f(i);
            if (hr != S_OK) {
                if (m.failures++ == 0) m.firstFailure = hr;
                clearExcep(g_excep);
            }
        }
        return static_cast<double>(ticks() - start) / g_ticksPerSecond;
    };
    // Calibrate on a short run, then scale to the target length.
    long long n = 64;
    double t = run(n);
    while (t < 0.02 && n < (1LL << 40)) {
        n *= 2;
        t = run(n);
    }
    long long iterations = static_cast<long long>(static_cast<double>(n) * g_runSeconds / (t > 0 ? t : 1e-9));
    if (iterations < 1) iterations = 1;
    double best = 1e300;
    for (int r = 0; r < 3; ++r) {
        double s = run(iterations);
        if (s < best) best = s;
    }
    m.ns = best * 1e9 / static_cast<double>(iterations);
    return m;
}

struct Row {
    std::string member;
    std::string path;
    Measured m;
    bool ran = true;
};

std::vector<Row> g_rows;

void record(const char* member, const char* path, const Measured& m) {
    g_rows.push_back({member, path, m, true});
    std::printf("  measured %-14s %-44s %9.1f ns/call\n", member, path, m.ns);
    std::fflush(stdout);
}

void skipped(const char* member, const char* path) {
    Row r{member, path, Measured{}, false};
    g_rows.push_back(r);
}

// ------------------------------------------------------------------ helpers

void printFailure(const char* what, HRESULT hr, EXCEPINFO& e, UINT argErr) {
    std::printf("  %s: HRESULT 0x%08lX", what, static_cast<unsigned long>(hr));
    if (hr == DISP_E_EXCEPTION) {
        std::printf(" (scode 0x%08lX, %ls)", static_cast<unsigned long>(e.scode),
                    e.bstrDescription ? e.bstrDescription : L"no description");
    }
    if (hr == DISP_E_TYPEMISMATCH || hr == DISP_E_PARAMNOTFOUND) std::printf(" (argument %u)", argErr);
    std::printf("\n");
    clearExcep(e);
}

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);

HMODULE loadLibraryBesideExe() {
    wchar_t path[MAX_PATH * 2];
    DWORD n = GetModuleFileNameW(nullptr, path, MAX_PATH * 2);
    if (n == 0 || n >= MAX_PATH * 2) return nullptr;
    wchar_t* slash = std::wcsrchr(path, L'\\');
    std::wstring dll(path, slash ? static_cast<size_t>(slash - path + 1) : 0);
    dll += L"TOVA200.DLL";
    return LoadLibraryW(dll.c_str());
}

const char* typeKindName(TYPEKIND k) {
    switch (k) {
    case TKIND_DISPATCH: return "TKIND_DISPATCH";
    case TKIND_INTERFACE: return "TKIND_INTERFACE";
    default: return "other";
    }
}

TYPEKIND typeKindOf(ITypeInfo* info) {
    TYPEATTR* a = nullptr;
    if (FAILED(info->GetTypeAttr(&a)) || !a) return TKIND_MAX;
    TYPEKIND k = a->typekind;
    info->ReleaseTypeAttr(a);
    return k;
}

// Builds a DISPPARAMS for a property put of one value.
struct PutParams {
    VARIANTARG value;
    LONG storage = 0;
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS dp;
    explicit PutParams(bool byref) {
        VariantInit(&value);
        if (byref) {
            V_VT(&value) = VT_BYREF | VT_I4;
            V_I4REF(&value) = &storage;
        } else {
            V_VT(&value) = VT_I4;
        }
        dp = DISPPARAMS{&value, &named, 1, 1};
    }
    void set(LONG v) {
        if (V_VT(&value) & VT_BYREF) storage = v; else V_I4(&value) = v;
    }
};

// Four arguments for SetRectangle3 (reverse order in rgvarg).
struct FourParams {
    VARIANTARG args[4];
    LONG storage[4] = {};
    DISPPARAMS dp;
    bool byref;
    explicit FourParams(bool byref_) : byref(byref_) {
        for (auto& a : args) VariantInit(&a);
        for (int i = 0; i < 4; ++i) {
            if (byref) {
                V_VT(&args[i]) = VT_BYREF | VT_I4;
                V_I4REF(&args[i]) = &storage[i];
            } else {
                V_VT(&args[i]) = VT_I4;
            }
        }
        dp = DISPPARAMS{args, nullptr, 4, 0};
    }
    // Left, Top, Right, Bottom in declaration order.
    void set(LONG l, LONG t, LONG r, LONG b) {
        LONG v[4] = {b, r, t, l};
        for (int i = 0; i < 4; ++i) {
            if (byref) storage[i] = v[i]; else V_I4(&args[i]) = v[i];
        }
    }
};

const DISPID kLeft = 2;

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        double ms = std::atof(argv[1]);
        if (ms > 0) g_runSeconds = ms / 1000.0;
    }
    LARGE_INTEGER f;
    QueryPerformanceFrequency(&f);
    g_ticksPerSecond = static_cast<double>(f.QuadPart);

    HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(hr)) {
        std::printf("CoInitializeEx failed: 0x%08lX\n", static_cast<unsigned long>(hr));
        return 1;
    }
    HMODULE dll = loadLibraryBesideExe();
    if (!dll) {
        std::printf("cannot load TOVA200.DLL beside the program (error %lu)\n", GetLastError());
        CoUninitialize();
        return 1;
    }
    auto getClassObject = reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(dll, "DllGetClassObject")));
    IClassFactory* factory = nullptr;
    _Rectangle* rect = nullptr;
    if (getClassObject) getClassObject(CLSID_Rectangle, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (factory) factory->CreateInstance(nullptr, IID__Rectangle, reinterpret_cast<void**>(&rect));
    if (!rect) {
        std::printf("cannot create a Rectangle\n");
        if (factory) factory->Release();
        FreeLibrary(dll);
        CoUninitialize();
        return 1;
    }

    // Type information: the dispatch view from IDispatch::GetTypeInfo, the vtable
    // view (what ITypeInfo::Invoke calls through) behind it.
    ITypeInfo* dispInfo = nullptr;
    ITypeInfo* vtblInfo = nullptr;
    hr = rect->GetTypeInfo(0, LOCALE_USER_DEFAULT, &dispInfo);
    if (SUCCEEDED(hr) && dispInfo) {
        TYPEKIND k = typeKindOf(dispInfo);
        std::printf("IDispatch::GetTypeInfo: %s\n", typeKindName(k));
        if (k == TKIND_DISPATCH) {
            HREFTYPE h = 0;
            hr = dispInfo->GetRefTypeOfImplType(-1, &h);
            if (SUCCEEDED(hr)) hr = dispInfo->GetRefTypeInfo(h, &vtblInfo);
            if (FAILED(hr)) std::printf("no vtable view of the dual interface: 0x%08lX\n", static_cast<unsigned long>(hr));
        } else {
            vtblInfo = dispInfo;
            vtblInfo->AddRef();
        }
        if (vtblInfo) std::printf("ITypeInfo::Invoke uses: %s\n", typeKindName(typeKindOf(vtblInfo)));
    } else {
        std::printf("IDispatch::GetTypeInfo failed: 0x%08lX\n", static_cast<unsigned long>(hr));
    }

    volatile LONG sink = 0;
    EXCEPINFO& excep = g_excep;
    UINT argErr = 0;
    DISPPARAMS noArgs{nullptr, nullptr, 0, 0};
    wchar_t leftName[] = L"Left";
    LPOLESTR names[] = {leftName};

    // Sanity: every path reads and writes the same edge.
    {
        LONG v = 17;
        rect->put_Left(&v);
        VARIANT r;
        VariantInit(&r);
        hr = rect->Invoke(kLeft, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &noArgs, &r, &excep, &argErr);
        if (hr != S_OK || V_VT(&r) != VT_I4 || V_I4(&r) != 17) {
            std::printf("our Invoke does not read Left back: 0x%08lX vt %d\n", static_cast<unsigned long>(hr), V_VT(&r));
        }
        VariantClear(&r);
        clearExcep(excep);
    }

    std::printf("timing: best of 3 runs of %.0f ms each\n", g_runSeconds * 1000);

    // ---------------------------------------------------------------- Left get
    record("Left get", "vtable (_Rectangle::get_Left)", measure([&](long long) {
        LONG v;
        HRESULT h = rect->get_Left(&v);
        sink = v;
        return h;
    }));
    record("Left get", "our Invoke, cached DISPID", measure([&](long long) {
        VARIANT r;
        VariantInit(&r);
        HRESULT h = rect->Invoke(kLeft, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &noArgs, &r,
                                 &excep, &argErr);
        sink = V_I4(&r);
        VariantClear(&r);
        return h;
    }));
    record("Left get", "our GetIDsOfNames + Invoke", measure([&](long long) {
        DISPID id = DISPID_UNKNOWN;
        HRESULT h = rect->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
        if (h != S_OK) return h;
        VARIANT r;
        VariantInit(&r);
        h = rect->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &noArgs, &r, &excep, &argErr);
        sink = V_I4(&r);
        VariantClear(&r);
        return h;
    }));

    bool platformGetOk = false;
    if (vtblInfo) {
        VARIANT r;
        VariantInit(&r);
        hr = vtblInfo->Invoke(rect, kLeft, DISPATCH_PROPERTYGET, &noArgs, &r, &excep, &argErr);
        if (hr == S_OK && V_VT(&r) == VT_I4 && V_I4(&r) == 17) {
            platformGetOk = true;
        } else if (hr == S_OK) {
            std::printf("  platform Left get: S_OK but vt %d value %ld\n", V_VT(&r), static_cast<long>(V_I4(&r)));
        } else {
            printFailure("platform Left get refused", hr, excep, argErr);
        }
        VariantClear(&r);
    }
    if (platformGetOk) {
        record("Left get", "platform ITypeInfo::Invoke", measure([&](long long) {
            VARIANT r;
            VariantInit(&r);
            HRESULT h = vtblInfo->Invoke(rect, kLeft, DISPATCH_PROPERTYGET, &noArgs, &r, &excep, &argErr);
            sink = V_I4(&r);
            VariantClear(&r);
            return h;
        }));
    } else {
        skipped("Left get", "platform ITypeInfo::Invoke");
    }

    // ---------------------------------------------------------------- Left let
    // Alternating values, so that every call moves the edge.
    record("Left let", "vtable (_Rectangle::put_Left)", measure([&](long long i) {
        LONG v = static_cast<LONG>(i & 1);
        return rect->put_Left(&v);
    }));
    {
        PutParams p(false);
        record("Left let", "our Invoke, cached DISPID (VT_I4)", measure([&](long long i) {
            p.set(static_cast<LONG>(i & 1));
            return rect->Invoke(kLeft, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &p.dp, nullptr,
                                &excep, &argErr);
        }));
        record("Left let", "our GetIDsOfNames + Invoke (VT_I4)", measure([&](long long i) {
            DISPID id = DISPID_UNKNOWN;
            HRESULT h = rect->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
            if (h != S_OK) return h;
            p.set(static_cast<LONG>(i & 1));
            return rect->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &p.dp, nullptr, &excep,
                                &argErr);
        }));
    }

    // The parameter is a LONG*: find out which value form the platform takes.
    const char* platformLetForm = nullptr;
    bool platformLetByref = false;
    if (vtblInfo) {
        for (int form = 0; form < 2; ++form) {
            bool byref = form == 1;
            PutParams p(byref);
            p.set(23);
            LONG zero = 0;
            rect->put_Left(&zero);
            hr = vtblInfo->Invoke(rect, kLeft, DISPATCH_PROPERTYPUT, &p.dp, nullptr, &excep, &argErr);
            LONG now = -1;
            rect->get_Left(&now);
            const char* name = byref ? "VT_BYREF|VT_I4" : "VT_I4";
            if (hr == S_OK && now == 23) {
                std::printf("  platform Left let accepts %s\n", name);
                if (!platformLetForm) {
                    platformLetForm = name;
                    platformLetByref = byref;
                }
            } else if (hr == S_OK) {
                std::printf("  platform Left let with %s: S_OK but Left is %ld\n", name, static_cast<long>(now));
            } else {
                char what[80];
                std::snprintf(what, sizeof what, "platform Left let refuses %s", name);
                printFailure(what, hr, excep, argErr);
            }
        }
    }
    if (platformLetForm) {
        PutParams p(platformLetByref);
        std::string path = std::string("platform ITypeInfo::Invoke (") + platformLetForm + ")";
        record("Left let", path.c_str(), measure([&](long long i) {
            p.set(static_cast<LONG>(i & 1));
            return vtblInfo->Invoke(rect, kLeft, DISPATCH_PROPERTYPUT, &p.dp, nullptr, &excep, &argErr);
        }));
    } else {
        skipped("Left let", "platform ITypeInfo::Invoke");
    }

    // ----------------------------------------------------------- SetRectangle3
    DISPID setRect3 = DISPID_UNKNOWN;
    {
        wchar_t n[] = L"SetRectangle3";
        LPOLESTR nn[] = {n};
        rect->GetIDsOfNames(IID_NULL, nn, 1, LOCALE_USER_DEFAULT, &setRect3);
    }
    record("SetRectangle3", "vtable", measure([&](long long i) {
        LONG b = static_cast<LONG>(i & 1);
        LONG l = 1 + b, t = 2, r = 30, bo = 40;
        return rect->SetRectangle3(&l, &t, &r, &bo);
    }));
    {
        FourParams p(false);
        p.set(1, 2, 3, 4);
        hr = rect->Invoke(setRect3, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &p.dp, nullptr, &excep, &argErr);
        LONG l = 0, b = 0;
        rect->get_Left(&l);
        rect->get_Bottom(&b);
        if (hr != S_OK || l != 1 || b != 4) {
            std::printf("  our SetRectangle3 (VT_I4): 0x%08lX, Left %ld Bottom %ld\n", static_cast<unsigned long>(hr),
                        static_cast<long>(l), static_cast<long>(b));
            clearExcep(excep);
        }
        record("SetRectangle3", "our Invoke, cached DISPID (4 x VT_I4)", measure([&](long long i) {
            p.set(1 + static_cast<LONG>(i & 1), 2, 30, 40);
            return rect->Invoke(setRect3, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &p.dp, nullptr, &excep,
                                &argErr);
        }));
    }
    const char* platformSetForm = nullptr;
    bool platformSetByref = false;
    if (vtblInfo) {
        for (int form = 0; form < 2; ++form) {
            bool byref = form == 1;
            FourParams p(byref);
            p.set(5, 6, 7, 8);
            rect->Reset();
            hr = vtblInfo->Invoke(rect, setRect3, DISPATCH_METHOD, &p.dp, nullptr, &excep, &argErr);
            LONG l = 0, b = 0;
            rect->get_Left(&l);
            rect->get_Bottom(&b);
            const char* name = byref ? "4 x VT_BYREF|VT_I4" : "4 x VT_I4";
            if (hr == S_OK && l == 5 && b == 8) {
                std::printf("  platform SetRectangle3 accepts %s\n", name);
                if (!platformSetForm) {
                    platformSetForm = name;
                    platformSetByref = byref;
                }
            } else if (hr == S_OK) {
                std::printf("  platform SetRectangle3 with %s: S_OK but Left %ld Bottom %ld\n", name,
                            static_cast<long>(l), static_cast<long>(b));
            } else {
                char what[80];
                std::snprintf(what, sizeof what, "platform SetRectangle3 refuses %s", name);
                printFailure(what, hr, excep, argErr);
            }
        }
    }
    if (platformSetForm) {
        FourParams p(platformSetByref);
        std::string path = std::string("platform ITypeInfo::Invoke (") + platformSetForm + ")";
        record("SetRectangle3", path.c_str(), measure([&](long long i) {
            p.set(1 + static_cast<LONG>(i & 1), 2, 30, 40);
            return vtblInfo->Invoke(rect, setRect3, DISPATCH_METHOD, &p.dp, nullptr, &excep, &argErr);
        }));
    } else {
        skipped("SetRectangle3", "platform ITypeInfo::Invoke");
    }
    clearExcep(excep);

    // ------------------------------------------------------- BackColor let
    // A Variant by value: on 32-bit its 16 bytes go on the stack.
    _MemoryDC* surface = nullptr;
    if (getClassObject) {
        IClassFactory* f = nullptr;
        getClassObject(CLSID_MemoryDC, IID_IClassFactory, reinterpret_cast<void**>(&f));
        if (f) {
            f->CreateInstance(nullptr, IID__MemoryDC, reinterpret_cast<void**>(&surface));
            f->Release();
        }
    }
    if (surface) {
        LONG w = 4, h = 4;
        VARIANT_BOOL force = VARIANT_TRUE, ok = VARIANT_FALSE;
        surface->SetDimensions(&w, &h, &force, &ok);
        DISPID backColor = DISPID_UNKNOWN;
        wchar_t n[] = L"BackColor";
        LPOLESTR nn[] = {n};
        surface->GetIDsOfNames(IID_NULL, nn, 1, LOCALE_USER_DEFAULT, &backColor);
        PutParams p(false);
        record("BackColor let", "vtable (_MemoryDC::put_BackColor)", measure([&](long long i) {
            p.set(static_cast<LONG>(i & 0xFFFFFF));
            return surface->put_BackColor(p.value);
        }));
        record("BackColor let", "our Invoke, cached DISPID (VT_I4)", measure([&](long long i) {
            p.set(static_cast<LONG>(i & 0xFFFFFF));
            return surface->Invoke(backColor, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &p.dp, nullptr,
                                   &excep, &argErr);
        }));
        ITypeInfo* surfaceInfo = nullptr;
        ITypeInfo* surfaceVtbl = nullptr;
        if (SUCCEEDED(surface->GetTypeInfo(0, LOCALE_USER_DEFAULT, &surfaceInfo)) && surfaceInfo) {
            HREFTYPE ref = 0;
            if (typeKindOf(surfaceInfo) == TKIND_DISPATCH && SUCCEEDED(surfaceInfo->GetRefTypeOfImplType(-1, &ref)))
                surfaceInfo->GetRefTypeInfo(ref, &surfaceVtbl);
            surfaceInfo->Release();
        }
        if (surfaceVtbl) {
            p.set(197121);
            hr = surfaceVtbl->Invoke(surface, backColor, DISPATCH_PROPERTYPUT, &p.dp, nullptr, &excep, &argErr);
            if (hr == S_OK) {
                record("BackColor let", "platform ITypeInfo::Invoke (VT_I4)", measure([&](long long i) {
                    p.set(static_cast<LONG>(i & 0xFFFFFF));
                    return surfaceVtbl->Invoke(surface, backColor, DISPATCH_PROPERTYPUT, &p.dp, nullptr, &excep,
                                               &argErr);
                }));
            } else {
                printFailure("platform BackColor let refused", hr, excep, argErr);
                skipped("BackColor let", "platform ITypeInfo::Invoke");
            }
            surfaceVtbl->Release();
        }
        surface->Release();
    }
    clearExcep(excep);

    // ------------------------------------------------------------------ table
    std::printf("\n%-14s %-46s %12s\n", "member", "path", "ns/call");
    std::printf("%-14s %-46s %12s\n", "--------------", "----------------------------------------------",
                "------------");
    for (const Row& r : g_rows) {
        if (!r.ran) {
            std::printf("%-14s %-46s %12s\n", r.member.c_str(), r.path.c_str(), "refused");
            continue;
        }
        std::printf("%-14s %-46s %12.1f", r.member.c_str(), r.path.c_str(), r.m.ns);
        if (r.m.failures)
            std::printf("   (%lld failed calls, first 0x%08lX)", r.m.failures,
                        static_cast<unsigned long>(r.m.firstFailure));
        std::printf("\n");
    }

    auto find = [](const char* member, const char* pathStart) -> const Row* {
        for (const Row& r : g_rows)
            if (r.ran && r.member == member && r.path.compare(0, std::strlen(pathStart), pathStart) == 0) return &r;
        return nullptr;
    };
    auto ratio = [&](const char* member, char* out, size_t n) {
        const Row* ours = find(member, "our Invoke, cached");
        const Row* platform = find(member, "platform");
        if (ours && platform && platform->m.ns > 0) std::snprintf(out, n, "%.2f", ours->m.ns / platform->m.ns);
        else std::snprintf(out, n, "n/a");
    };
    char getRatio[32], letRatio[32], setRatio[32];
    ratio("Left get", getRatio, sizeof getRatio);
    ratio("Left let", letRatio, sizeof letRatio);
    ratio("SetRectangle3", setRatio, sizeof setRatio);
    std::printf("\nSetRectangle3: ours/platform = %s\n", setRatio);
    std::printf("ratio: ours/platform for Left get = %s, Left let = %s (goal <= 0.50)\n", getRatio, letRatio);
    (void)sink;

    if (vtblInfo) vtblInfo->Release();
    if (dispInfo) dispInfo->Release();
    rect->Release();
    factory->Release();
    CoUninitialize();
    FreeLibrary(dll);
    return 0;
}
