#include "events.h"

#include "dispatch.h"
#include "object.h"

#include <algorithm>
#include <new>

namespace tova {

// ------------------------------------------------------------------ arguments

namespace {

ComPtr<IRecordInfo> recordNamed(const wchar_t* name) {
    ComPtr<IRecordInfo> record;
    ITypeLib* lib = typeLibrary();
    if (!lib) return record;
    for (UINT i = 0, n = lib->GetTypeInfoCount(); i < n; ++i) {
        Bstr found;
        TYPEKIND kind;
        if (FAILED(lib->GetTypeInfoType(i, &kind)) || kind != TKIND_RECORD) continue;
        if (FAILED(lib->GetDocumentation(i, found.put(), nullptr, nullptr, nullptr)) || found.str() != name) continue;
        ComPtr<ITypeInfo> info;
        if (SUCCEEDED(lib->GetTypeInfo(i, info.put()))) GetRecordInfoFromTypeInfo(info.get(), record.put());
        break;
    }
    return record;
}

// Record information of the two records, made once and released with the module.
IRecordInfo* rectRecord() {
    static const ComPtr<IRecordInfo> info = recordNamed(L"RECT");
    return info.get();
}
IRecordInfo* pointRecord() {
    static const ComPtr<IRecordInfo> info = recordNamed(L"POINTAPI");
    return info.get();
}

}  // namespace

namespace {

VARIANTARG argument(VARTYPE vt) {
    VARIANTARG a;
    VariantInit(&a);
    V_VT(&a) = vt;
    return a;
}

VARIANTARG recordArgument(void* record, IRecordInfo* info) {
    VARIANTARG a = argument(VT_RECORD | VT_BYREF);
    V_RECORD(&a) = record;
    V_RECORDINFO(&a) = info;
    return a;
}

}  // namespace

EventArgs& EventArgs::add(VARTYPE vt, void* p) {
    VARIANTARG a = argument(vt);
    V_BYREF(&a) = p;
    return push(a);
}

EventArgs& EventArgs::push(const VARIANTARG& a) {
    if (count_ == kMaxArgs) raise(kInvalidArgument);
    args_[count_++] = a;
    return *this;
}

EventArgs& EventArgs::ref(TOVA_RECT& r) { return push(recordArgument(&r, rectRecord())); }
EventArgs& EventArgs::ref(POINTAPI& p) { return push(recordArgument(&p, pointRecord())); }

EventArgs& EventArgs::val(long v) {
    VARIANTARG a = argument(VT_I4);
    V_I4(&a) = v;
    return push(a);
}
EventArgs& EventArgs::val(double v) {
    VARIANTARG a = argument(VT_R8);
    V_R8(&a) = v;
    return push(a);
}
EventArgs& EventArgs::valSingle(float v) {
    VARIANTARG a = argument(VT_R4);
    V_R4(&a) = v;
    return push(a);
}
EventArgs& EventArgs::valBool(VARIANT_BOOL v) {
    VARIANTARG a = argument(VT_BOOL);
    V_BOOL(&a) = v;
    return push(a);
}
EventArgs& EventArgs::val(IDispatch* v) {
    VARIANTARG a = argument(VT_DISPATCH);
    V_DISPATCH(&a) = v;
    return push(a);
}
EventArgs& EventArgs::val(BSTR v) {
    VARIANTARG a = argument(VT_BSTR);
    V_BSTR(&a) = v;
    return push(a);
}

DISPPARAMS EventArgs::params() {
    for (unsigned i = 0; i < count_; ++i) reversed_[i] = args_[count_ - 1 - i];
    return DISPPARAMS{count_ ? reversed_ : nullptr, nullptr, count_, 0};
}

// ------------------------------------------------------------- enumerators

namespace {

// A COM enumerator over a snapshot of items, for IEnumConnections and IEnumConnectionPoints.
template <class Enum, class Item, const IID* EnumIid>
class Enumerator final : public Enum {
public:
    explicit Enumerator(std::vector<Item> items) : items_(std::move(items)) { moduleAddRef(); }
    ~Enumerator() {
        for (Item& i : items_) release(i);
        moduleRelease();
    }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        if (riid == IID_IUnknown || riid == *EnumIid) {
            *ppv = static_cast<Enum*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs_); }
    STDMETHODIMP_(ULONG) Release() override {
        LONG n = InterlockedDecrement(&refs_);
        if (n == 0) delete this;
        return n;
    }
    STDMETHODIMP Next(ULONG count, Item* out, ULONG* fetched) override {
        if (!out || (count > 1 && !fetched)) return E_POINTER;
        ULONG n = 0;
        while (n < count && pos_ < items_.size()) {
            out[n] = items_[pos_++];
            addRef(out[n]);
            ++n;
        }
        if (fetched) *fetched = n;
        return n == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        size_t left = items_.size() - pos_;
        if (count > left) { pos_ = items_.size(); return S_FALSE; }
        pos_ += count;
        return S_OK;
    }
    STDMETHODIMP Reset() override { pos_ = 0; return S_OK; }
    STDMETHODIMP Clone(Enum** out) override {
        if (!out) return E_POINTER;
        std::vector<Item> copy = items_;
        for (Item& i : copy) addRef(i);
        auto* e = new (std::nothrow) Enumerator(std::move(copy));
        if (!e) return E_OUTOFMEMORY;
        e->pos_ = pos_;
        e->AddRef();
        *out = e;
        return S_OK;
    }

private:
    static void addRef(CONNECTDATA& c) { if (c.pUnk) c.pUnk->AddRef(); }
    static void release(CONNECTDATA& c) { if (c.pUnk) c.pUnk->Release(); }
    static void addRef(IConnectionPoint* p) { if (p) p->AddRef(); }
    static void release(IConnectionPoint* p) { if (p) p->Release(); }

    LONG refs_ = 0;
    std::vector<Item> items_;
    size_t pos_ = 0;
};

using ConnectionsEnum = Enumerator<IEnumConnections, CONNECTDATA, &IID_IEnumConnections>;
using PointsEnum = Enumerator<IEnumConnectionPoints, IConnectionPoint*, &IID_IEnumConnectionPoints>;

}  // namespace

HRESULT enumConnectionPoints(IConnectionPoint* const* points, ULONG count, IEnumConnectionPoints** out) {
    if (!out) return E_POINTER;
    std::vector<IConnectionPoint*> items(points, points + count);
    for (IConnectionPoint* p : items) p->AddRef();
    auto* e = new (std::nothrow) PointsEnum(std::move(items));
    if (!e) return E_OUTOFMEMORY;
    e->AddRef();
    *out = e;
    return S_OK;
}

// --------------------------------------------------------- connection point

ConnectionPoint::ConnectionPoint(IConnectionPointContainer* owner, REFIID events)
    : owner_(owner), events_(events) {}

ConnectionPoint::~ConnectionPoint() {
    std::vector<Sink> sinks;
    sinks.swap(sinks_);
    for (Sink& s : sinks) s.sink->Release();
}

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID riid, void** ppv) {
    if (!ppv) return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IConnectionPoint) {
        *ppv = static_cast<IConnectionPoint*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) ConnectionPoint::AddRef() { return owner_->AddRef(); }
STDMETHODIMP_(ULONG) ConnectionPoint::Release() { return owner_->Release(); }

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* iid) {
    if (!iid) return E_POINTER;
    *iid = events_;
    return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
    if (!container) return E_POINTER;
    *container = owner_;
    owner_->AddRef();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
    if (!cookie) return E_POINTER;
    *cookie = 0;
    if (!sink) return E_POINTER;
    IDispatch* d = nullptr;
    if (FAILED(sink->QueryInterface(events_, reinterpret_cast<void**>(&d))) || !d) {
        if (FAILED(sink->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&d))) || !d)
            return CONNECT_E_CANNOTCONNECT;
    }
    try {
        sinks_.push_back(Sink{nextCookie_, d});
    } catch (...) {
        d->Release();
        return E_OUTOFMEMORY;
    }
    *cookie = nextCookie_++;
    return S_OK;
}

STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) {
    auto it = std::find_if(sinks_.begin(), sinks_.end(), [&](const Sink& s) { return s.cookie == cookie; });
    if (it == sinks_.end()) return CONNECT_E_NOCONNECTION;
    IDispatch* d = it->sink;
    sinks_.erase(it);
    d->Release();
    return S_OK;
}

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** e) {
    if (!e) return E_POINTER;
    *e = nullptr;
    std::vector<CONNECTDATA> items;
    for (const Sink& s : sinks_) {
        s.sink->AddRef();
        items.push_back(CONNECTDATA{s.sink, s.cookie});
    }
    auto* en = new (std::nothrow) ConnectionsEnum(std::move(items));
    if (!en) return E_OUTOFMEMORY;
    en->AddRef();
    *e = en;
    return S_OK;
}

void ConnectionPoint::fire(DISPID id, EventArgs& args) {
    if (sinks_.empty()) return;
    ComPtr<IConnectionPointContainer> keepAlive(owner_);
    // A handler may advise or unadvise while the event is delivered.
    std::vector<ComPtr<IDispatch>> targets;
    targets.reserve(sinks_.size());
    for (const Sink& s : sinks_) targets.emplace_back(s.sink);
    DISPPARAMS dp = args.params();
    for (auto& t : targets) {
        Variant result;
        EXCEPINFO excep{};
        UINT argErr = 0;
        t->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &dp, &result, &excep, &argErr);
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrHelpFile);
    }
}

}  // namespace tova
