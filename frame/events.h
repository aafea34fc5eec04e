// Connection points: how objects raise events to their clients' sinks.
#pragma once

#include "values.h"

#include <vector>

namespace tova {

// The arguments of one event, given in declaration order. By-reference
// arguments point at the raiser's variables, so whatever a sink writes is
// there when the raise returns; each sink sees what the previous one left.
class EventArgs {
public:
    EventArgs& ref(long& v) { return add(VT_BYREF | VT_I4, &v); }
    EventArgs& ref(short& v) { return add(VT_BYREF | VT_I2, &v); }
    EventArgs& ref(float& v) { return add(VT_BYREF | VT_R4, &v); }
    EventArgs& ref(double& v) { return add(VT_BYREF | VT_R8, &v); }
    EventArgs& refBool(VARIANT_BOOL& v) { return add(VT_BYREF | VT_BOOL, &v); }
    EventArgs& ref(BSTR& v) { return add(VT_BYREF | VT_BSTR, &v); }
    EventArgs& ref(TOVA_RECT& r);
    EventArgs& ref(POINTAPI& p);
    EventArgs& val(long v);
    EventArgs& val(double v);
    EventArgs& valSingle(float v);
    EventArgs& valBool(VARIANT_BOOL v);
    EventArgs& val(IDispatch* v);   // borrowed for the raise
    EventArgs& val(BSTR v);         // borrowed for the raise

    // In DISPPARAMS order (last argument first).
    DISPPARAMS params();

private:
    EventArgs& add(VARTYPE vt, void* p);
    EventArgs& push(const VARIANTARG& a);

    // Events have few parameters: raising one allocates nothing.
    static constexpr unsigned kMaxArgs = 8;
    VARIANTARG args_[kMaxArgs];
    VARIANTARG reversed_[kMaxArgs];
    unsigned count_ = 0;
};

class ConnectionPoint : public IConnectionPoint {
public:
    // `owner` is the object the point belongs to: the point lives inside it and
    // counts its references on it.
    ConnectionPoint(IConnectionPointContainer* owner, REFIID events);
    ~ConnectionPoint();
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    // IConnectionPoint
    STDMETHODIMP GetConnectionInterface(IID* iid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** container) override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** e) override;

    REFIID events() const { return events_; }
    bool connected() const { return !sinks_.empty(); }

    // Delivers event `id` to every connected sink, synchronously. The owner
    // stays alive until every sink has returned, even if a handler releases it.
    void fire(DISPID id, EventArgs& args);

private:
    struct Sink {
        DWORD cookie;
        IDispatch* sink;
    };
    IConnectionPointContainer* owner_;
    IID events_;
    std::vector<Sink> sinks_;
    DWORD nextCookie_ = 1;
};

// An enumerator over a snapshot of COM pointers (IEnumConnectionPoints).
HRESULT enumConnectionPoints(IConnectionPoint* const* points, ULONG count, IEnumConnectionPoints** out);

}  // namespace tova
