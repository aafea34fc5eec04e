// What the demo programs share: stopping with a message when a call fails,
// creating objects by ProgID as any client does, and receiving events.
#pragma once

#include "frame/typelib.h"
#include "frame/values.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace demo {

// The program's name for its messages: its file name without folder and ".exe".
inline const std::string& name() {
    static const std::string n = [] {
        char path[MAX_PATH] = "";
        GetModuleFileNameA(nullptr, path, MAX_PATH);
        std::string s(path);
        size_t slash = s.find_last_of("\\/");
        if (slash != std::string::npos) s.erase(0, slash + 1);
        size_t dot = s.rfind('.');
        if (dot != std::string::npos) s.erase(dot);
        return s;
    }();
    return n;
}

// Stops the demo with a message when a call fails; the library describes its
// errors through the error object.
inline void check(HRESULT hr, const char* what) {
    if (SUCCEEDED(hr)) return;
    std::fprintf(stderr, "%s: %s failed (HRESULT 0x%08lX)", name().c_str(), what, static_cast<unsigned long>(hr));
    IErrorInfo* info = nullptr;
    if (GetErrorInfo(0, &info) == S_OK && info) {
        BSTR source = nullptr, description = nullptr;
        info->GetSource(&source);
        info->GetDescription(&description);
        std::fprintf(stderr, ": %ls: %ls", source ? source : L"", description ? description : L"");
        SysFreeString(source);
        SysFreeString(description);
        info->Release();
    }
    std::fprintf(stderr, "\n");
    std::exit(1);
}

template <class T>
tova::ComPtr<T> create(const wchar_t* progId, REFIID iid) {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(progId, &clsid))) {
        std::fprintf(stderr, "%s: %ls is not registered (regsvr32 TOVA200.DLL first)\n", name().c_str(), progId);
        std::exit(1);
    }
    tova::ComPtr<T> object;
    check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid()), "CoCreateInstance");
    return object;
}

// An event sink that hands each event to a function. It lives on the stack of
// the code that connects it, so its reference counts only keep COM's
// bookkeeping right. Arguments arrive last first: rgvarg[cArgs - 1] is the first.
class Sink : public IDispatch {
public:
    Sink(REFIID events, std::function<void(DISPID, DISPPARAMS*)> f) : events_(events), f_(std::move(f)) {}
    ~Sink() { disconnect(); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == events_) {
            *ppv = static_cast<IDispatch*>(this);
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override {
        if (p) f_(id, p);
        return S_OK;
    }

    void connect(IUnknown* source) {
        tova::ComPtr<IConnectionPointContainer> cpc;
        check(source->QueryInterface(IID_IConnectionPointContainer, cpc.putVoid()), "connection points");
        check(cpc->FindConnectionPoint(events_, point_.put()), "FindConnectionPoint");
        check(point_->Advise(this, &cookie_), "Advise");
    }
    void disconnect() {
        if (point_) point_->Unadvise(cookie_);
        point_.reset();
    }

private:
    IID events_;
    std::function<void(DISPID, DISPPARAMS*)> f_;
    tova::ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

}  // namespace demo
