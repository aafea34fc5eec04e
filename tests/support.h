// What the tests share: the DLL loaded as a client loads it, object creation
// through its class factories, late-bound calls and an event sink.
#pragma once

#include <gtest/gtest.h>

#include "frame/typelib.h"
#include "frame/values.h"

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace test {

using tova::Bstr;
using tova::ComPtr;
using tova::Variant;

// TOVA200.DLL, loaded from the test program's folder (not through the registry).
HMODULE library();

// Creates an object of `clsid` through the DLL's DllGetClassObject.
template <class I>
ComPtr<I> create(REFCLSID clsid, REFIID iid) {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto get = reinterpret_cast<GetClassObject>(GetProcAddress(library(), "DllGetClassObject"));
    ComPtr<IClassFactory> factory;
    ComPtr<I> object;
    if (get && SUCCEEDED(get(clsid, IID_IClassFactory, factory.putVoid())))
        factory->CreateInstance(nullptr, iid, object.putVoid());
    return object;
}

inline ComPtr<_Rectangle> newRectangle() { return create<_Rectangle>(CLSID_Rectangle, IID__Rectangle); }

// A DIB section of either DIB class made at w x h; null when it cannot be made.
template <class I>
ComPtr<I> createDib(REFCLSID clsid, REFIID iid, long w, long h) {
    ComPtr<I> d = create<I>(clsid, iid);
    VARIANT_BOOL ok = VARIANT_FALSE;
    if (d) d->Create(w, h, &ok);
    return ok ? d : ComPtr<I>();
}

// The address of a DIB section's pixels.
template <class I>
uint8_t* dibBits(I* d) {
#ifdef _WIN64
    hyper p = 0;  // addresses are pointer-sized in the 64-bit type library
#else
    LONG p = 0;
#endif
    d->get_DIBSectionBitsPtr(&p);
    return reinterpret_cast<uint8_t*>(static_cast<LONG_PTR>(p));
}

// A late-bound call by name. `args` are in declaration order; `named` gives
// names for the last named.size() arguments.
struct CallResult {
    HRESULT hr = E_FAIL;
    Variant value;
    EXCEPINFO excep{};
    UINT argErr = UINT_MAX;
    ~CallResult() {
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
    }
    std::wstring source() const { return excep.bstrSource ? excep.bstrSource : L""; }
    std::wstring description() const { return excep.bstrDescription ? excep.bstrDescription : L""; }
};

DISPID dispid(IDispatch* d, const wchar_t* name);
void call(CallResult& r, IDispatch* d, const wchar_t* name, WORD flags, std::vector<VARIANT> args,
          std::vector<const wchar_t*> named = {});
// Property put with the value as the named DISPID_PROPERTYPUT argument.
HRESULT put(IDispatch* d, const wchar_t* name, VARIANT value, WORD flags = DISPATCH_PROPERTYPUT);

// Source and description of the thread's error info (taken, so it is cleared).
struct ErrorText {
    std::wstring source, description;
};
ErrorText lastError();

// Variant helpers (shallow: the caller keeps what they point at alive).
VARIANT vLong(long v);
VARIANT vDouble(double v);
VARIANT vRef(VARIANT* target);      // VT_BYREF|VT_VARIANT
VARIANT vLongRef(long* target);     // VT_BYREF|VT_I4
VARIANT vMissing();
VARIANT vObject(IDispatch* d);

// Records of the library, for late-bound calls.
IRecordInfo* rectInfo();
// A Variant array of Longs.
Variant longArray(std::initializer_list<long> values);
std::vector<long> arrayLongs(const VARIANT& v);
// The strings of a Variant array result; {"<Empty>"} for Empty, {"<other>"} for anything else.
inline std::vector<std::wstring> strings(const VARIANT& v) {
    if (V_VT(&v) == VT_EMPTY) return {L"<Empty>"};
    if (V_VT(&v) != (VT_ARRAY | VT_VARIANT) || SafeArrayGetDim(V_ARRAY(&v)) != 1) return {L"<other>"};
    LONG lo = 0, hi = -1;
    SafeArrayGetLBound(V_ARRAY(&v), 1, &lo);
    SafeArrayGetUBound(V_ARRAY(&v), 1, &hi);
    std::vector<std::wstring> out;
    for (LONG i = lo; i <= hi; ++i) {
        Variant e;
        SafeArrayGetElement(V_ARRAY(&v), &i, &e);
        out.push_back(V_VT(&e) == VT_BSTR ? std::wstring(V_BSTR(&e), SysStringLen(V_BSTR(&e))) : L"<not a String>");
    }
    return out;
}

// Runs this test program again with the Windows version Wine reports set to
// `version` (win98, nt40, ...) and only the tests `filter`, with
// TOVA_CONFIGURED_VERSION set to the version in its environment. The child's
// exit code; `started` tells whether it ran at all (`error` why not).
struct Rerun {
    bool started = false;
    DWORD error = 0;
    DWORD code = 1;
};
Rerun rerunAsVersion(const char* version, const std::string& filter);
// The version the program was started as by rerunAsVersion, or null.
inline const char* configuredVersion() { return std::getenv("TOVA_CONFIGURED_VERSION"); }

// ------------------------------------------------------------ scratch folders

// The temporary folder, ending in a backslash.
std::wstring tempFolder();
// Deletes a folder and everything in it, read-only entries too; links to
// folders are removed, never entered. Nothing happens when it is missing.
void removeTree(const std::wstring& path);

// A folder of one test's own under the temporary folder, removed with its
// contents afterwards. `(rel)` is the path of an entry inside.
class Scratch {
public:
    Scratch();
    ~Scratch() { removeTree(root_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    const std::wstring& root() const { return root_; }
    std::wstring operator()(const std::wstring& rel) const { return rel.empty() ? root_ : root_ + L"\\" + rel; }

private:
    std::wstring root_;
};

// An event sink that records what it receives and can run a handler.
class Sink : public IDispatch {
public:
    struct Call {
        DISPID id;
        std::vector<Variant> args;   // in declaration order, dereferenced copies
    };
    std::vector<Call> calls;
    std::function<void(DISPID, DISPPARAMS*)> handler;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs_; }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override;

    // Connects to `source` for event interface `iid`; disconnects when destroyed.
    void connect(IUnknown* source, REFIID iid);
    void disconnect();
    ~Sink() { disconnect(); }

private:
    long refs_ = 1;
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

// A 32-bit device-independent bitmap selected into a memory DC, for pixel checks.
class Canvas {
public:
    Canvas(int width, int height, COLORREF background = RGB(1, 2, 3));
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    HDC dc() const { return dc_; }
    long handle() const { return static_cast<long>(reinterpret_cast<LONG_PTR>(dc_)); }
    COLORREF pixel(int x, int y) const;

private:
    HDC dc_;
    HBITMAP bitmap_;
    HGDIOBJ old_;
    DWORD* bits_ = nullptr;
    int width_, height_;
};

}  // namespace test
