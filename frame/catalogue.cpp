#include "catalogue.h"

namespace tova {

namespace {

std::atomic<long> liveCount{0};

#define TOVA_ENTRY(name, kind) {L## #name, &CLSID_##name, Instancing::kind, &create##name},
const ClassEntry kEntries[] = {TOVA_CLASSES(TOVA_ENTRY)};
#undef TOVA_ENTRY

class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(const ClassEntry& entry) : entry_(entry) { moduleAddRef(); }
    ~ClassFactory() { moduleRelease(); }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        if (riid == IID_IUnknown || riid == IID_IClassFactory) {
            *ppv = static_cast<IClassFactory*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs_; }
    STDMETHODIMP_(ULONG) Release() override {
        long n = --refs_;
        if (n == 0) delete this;
        return static_cast<ULONG>(n);
    }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return entry_.create(riid, ppv);
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        if (lock) moduleAddRef(); else moduleRelease();
        return S_OK;
    }

private:
    const ClassEntry& entry_;
    std::atomic<long> refs_{0};
};

}  // namespace

void moduleAddRef() { ++liveCount; }
void moduleRelease() { --liveCount; }
long moduleCount() { return liveCount.load(); }

const ClassEntry* classEntries(size_t* count) {
    *count = sizeof kEntries / sizeof kEntries[0];
    return kEntries;
}

const ClassEntry* findClass(REFCLSID clsid) {
    for (const ClassEntry& e : kEntries)
        if (*e.clsid == clsid) return &e;
    return nullptr;
}

HRESULT classFactory(REFCLSID clsid, REFIID riid, void** ppv) {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    const ClassEntry* e = findClass(clsid);
    if (!e || e->instancing == Instancing::NotCreatable) return CLASS_E_CLASSNOTAVAILABLE;
    auto* f = new (std::nothrow) ClassFactory(*e);
    if (!f) return E_OUTOFMEMORY;
    f->AddRef();
    HRESULT hr = f->QueryInterface(riid, ppv);
    f->Release();
    return hr;
}

}  // namespace tova
