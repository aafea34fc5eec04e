// The class model: every public class derives from Object<Derived, Interface>,
// which supplies reference counting, IDispatch through the type library,
// IProvideClassInfo2, ISupportErrorInfo and, for classes with events, the
// connection point. A class declares its identity in a static `kClass`.
#pragma once

#include "dispatch.h"
#include "errors.h"
#include "events.h"

#include <atomic>
#include <new>

namespace tova {

enum class Instancing { Creatable, Global, NotCreatable };

struct ClassIdentity {
    const wchar_t* name;
    const CLSID* clsid;
    const IID* iid;      // default interface
    const IID* events;   // event interface, or nullptr
};

// Live objects and server locks, for DllCanUnloadNow.
void moduleAddRef();
void moduleRelease();
long moduleCount();

// IDispatch for `Interface` through its description in the type library,
// whose IID `Iid::get()` gives: a class's default interface and any further
// dual interface it implements use the same code.
template <class Interface, class Iid>
class Dispatching : public Interface {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        ITypeInfo* t = table().typeInfo();
        if (!t) return TYPE_E_ELEMENTNOTFOUND;
        t->AddRef();
        *info = t;
        return S_OK;
    }
    STDMETHODIMP GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        return table().idsOfNames(names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                        EXCEPINFO* excep, UINT* argErr) override {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        return table().invoke(static_cast<Interface*>(this), id, lcid, flags, params, result, excep, argErr);
    }

protected:
    static const DispatchTable& table() {
        static const DispatchTable t(Iid::get());
        return t;
    }
};

// The IID of a class's default interface.
template <class Derived>
struct DefaultIid {
    static const IID& get() { return *Derived::kClass.iid; }
};

template <class Derived, class Interface>
class Object : public Dispatching<Interface, DefaultIid<Derived>>,
               public IProvideClassInfo2,
               public ISupportErrorInfo,
               public IConnectionPointContainer {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    // ---- IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        const ClassIdentity& c = Derived::kClass;
        void* p = nullptr;
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == *c.iid)
            p = static_cast<Interface*>(this);
        else if (riid == IID_IProvideClassInfo || riid == IID_IProvideClassInfo2)
            p = static_cast<IProvideClassInfo2*>(this);
        else if (riid == IID_ISupportErrorInfo)
            p = static_cast<ISupportErrorInfo*>(this);
        else if (riid == IID_IConnectionPointContainer && c.events)
            p = static_cast<IConnectionPointContainer*>(this);
        else
            p = static_cast<Derived*>(this)->queryOther(riid);
        *ppv = p;
        if (!p) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs_; }
    STDMETHODIMP_(ULONG) Release() override {
        long n = --refs_;
        if (n == 0) delete static_cast<Derived*>(this);
        return static_cast<ULONG>(n);
    }

    // ---- IProvideClassInfo2
    STDMETHODIMP GetClassInfo(ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = typeInfoOf(*Derived::kClass.clsid).detach();
        return *info ? S_OK : TYPE_E_ELEMENTNOTFOUND;
    }
    STDMETHODIMP GetGUID(DWORD kind, GUID* guid) override {
        if (!guid) return E_POINTER;
        if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID || !Derived::kClass.events) {
            *guid = GUID_NULL;
            return E_INVALIDARG;
        }
        *guid = *Derived::kClass.events;
        return S_OK;
    }

    // ---- ISupportErrorInfo
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID riid) override {
        return riid == *Derived::kClass.iid || riid == IID_IDispatch ? S_OK : S_FALSE;
    }

    // ---- IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** e) override {
        IConnectionPoint* p = &events_;
        return enumConnectionPoints(&p, Derived::kClass.events ? 1 : 0, e);
    }
    STDMETHODIMP FindConnectionPoint(REFIID riid, IConnectionPoint** point) override {
        if (!point) return E_POINTER;
        *point = nullptr;
        if (!Derived::kClass.events || riid != *Derived::kClass.events) return CONNECT_E_NOCONNECTION;
        *point = &events_;
        events_.AddRef();
        return S_OK;
    }

    // Creates an object of the class and returns its interface `riid`.
    static HRESULT create(REFIID riid, void** ppv) {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        Derived* obj = new (std::nothrow) Derived();
        if (!obj) return E_OUTOFMEMORY;
        obj->AddRef();
        HRESULT hr = obj->QueryInterface(riid, ppv);
        obj->Release();
        return hr;
    }

    // A new object held by a reference of its own.
    static ComPtr<Derived> make() {
        ComPtr<Derived> p(new Derived());
        return p;
    }

protected:
    Object() : events_(this, Derived::kClass.events ? *Derived::kClass.events : IID_NULL) { moduleAddRef(); }
    virtual ~Object() { moduleRelease(); }

    // Further interfaces a class implements (none by default).
    void* queryOther(REFIID) { return nullptr; }

    // Raises event `id` of the class's event interface to every sink.
    void raiseEvent(DISPID id, EventArgs& args) { events_.fire(id, args); }
    bool hasSinks() const { return events_.connected(); }

private:
    std::atomic<long> refs_{0};
    ConnectionPoint events_;
};

}  // namespace tova
