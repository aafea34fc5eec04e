// Timer and MiscMethods.CreateTimer/Pause: real thread timers pumped by a
// message loop.
#include "window_support.h"

#include "windows/timer.h"

#include <thread>

using namespace test;

namespace {

// Receives Timer events without holding the timer: only the timer table
// keeps a running timer alive.
class Ticks : public IDispatch {
public:
    std::vector<double> values;
    std::function<void(double)> handler;
    long refs = 1;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == DIID___Timer) {
            *ppv = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs; }
    STDMETHODIMP_(ULONG) Release() override { return --refs; }
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override {
        EXPECT_EQ(1, id);
        EXPECT_EQ(1u, p->cArgs);
        EXPECT_EQ(VT_R8, V_VT(&p->rgvarg[0]));
        values.push_back(V_R8(&p->rgvarg[0]));
        if (handler) handler(values.back());
        return S_OK;
    }

    // Advises and lets go of the connection point at once.
    void listen(IUnknown* timer) {
        ComPtr<IConnectionPointContainer> cpc;
        timer->QueryInterface(IID_IConnectionPointContainer, cpc.putVoid());
        ComPtr<IConnectionPoint> cp;
        ASSERT_EQ(S_OK, cpc->FindConnectionPoint(DIID___Timer, cp.put()));
        DWORD cookie = 0;
        ASSERT_EQ(S_OK, cp->Advise(this, &cookie));
    }
};

ComPtr<_Timer> newTimer() { return create<_Timer>(CLSID_Timer, IID__Timer); }

void setInterval(_Timer* t, long v) { ASSERT_EQ(S_OK, t->put_Interval(&v)); }
void setEnabled(_Timer* t, bool b) {
    VARIANT_BOOL v = b ? VARIANT_TRUE : VARIANT_FALSE;
    ASSERT_EQ(S_OK, t->put_Enabled(&v));
}
double elapsed(_Timer* t) {
    double d = -1;
    t->get_ElapsedTime(&d);
    return d;
}

TEST(Timer, StartsStoppedAndTicksOnlyWhenEnabledWithAnInterval) {
    auto t = newTimer();
    ASSERT_TRUE(t);
    long interval = -1;
    VARIANT_BOOL enabled = -1;
    t->get_Interval(&interval);
    t->get_Enabled(&enabled);
    EXPECT_EQ(0, interval);
    EXPECT_EQ(VARIANT_FALSE, enabled);
    EXPECT_EQ(0.0, elapsed(t.get()));
    Ticks ticks;
    ticks.listen(t.get());
    setEnabled(t.get(), true);
    pump(100);
    setInterval(t.get(), -5);
    pump(100);
    EXPECT_TRUE(ticks.values.empty()) << "no system timer below an interval of 1";
    setEnabled(t.get(), false);
    setInterval(t.get(), 20);
    pump(100);
    EXPECT_TRUE(ticks.values.empty()) << "disabled";
}

TEST(Timer, ElapsedTimeIsTheSumOfIntervals) {
    auto t = newTimer();
    Ticks ticks;
    ticks.listen(t.get());
    setInterval(t.get(), 100);
    setEnabled(t.get(), true);
    pump(2000, [&] { return ticks.values.size() >= 3; });
    ASSERT_GE(ticks.values.size(), 3u);
    EXPECT_EQ(100.0, ticks.values[0]);
    EXPECT_EQ(200.0, ticks.values[1]);
    EXPECT_EQ(300.0, ticks.values[2]);
    setEnabled(t.get(), false);
    EXPECT_EQ(0.0, elapsed(t.get())) << "stopping resets it";
}

TEST(Timer, ChangesRestartOrLeaveTheCount) {
    auto t = newTimer();
    Ticks ticks;
    ticks.listen(t.get());
    setInterval(t.get(), 10);
    setEnabled(t.get(), true);
    pump(1000, [&] { return ticks.values.size() >= 2; });
    double before = elapsed(t.get());
    ASSERT_GE(before, 20.0);
    setInterval(t.get(), 10);   // the same value: nothing happens
    EXPECT_EQ(before, elapsed(t.get()));
    setEnabled(t.get(), true);  // the same value: nothing happens
    EXPECT_EQ(before, elapsed(t.get()));
    setInterval(t.get(), 15);   // a new interval restarts from 0
    EXPECT_EQ(0.0, elapsed(t.get()));
    ticks.values.clear();
    pump(1000, [&] { return !ticks.values.empty(); });
    ASSERT_FALSE(ticks.values.empty());
    EXPECT_EQ(15.0, ticks.values[0]);
    setEnabled(t.get(), false);
    setEnabled(t.get(), true);  // off and on again: from 0
    EXPECT_EQ(0.0, elapsed(t.get()));
    setEnabled(t.get(), false);
}

TEST(Timer, ARunningTimerOutlivesItsClientUntilStoppedFromItsOwnEvent) {
    Ticks ticks;
    _Timer* raw = nullptr;
    {
        auto t = newTimer();
        ticks.listen(t.get());
        setInterval(t.get(), 10);
        setEnabled(t.get(), true);
        raw = t.get();
    }   // the client's last reference goes: the table keeps the timer
    EXPECT_GT(ticks.refs, 1) << "the timer holds the sink";
    ticks.handler = [&](double) {
        if (ticks.values.size() == 3) {
            VARIANT_BOOL off = VARIANT_FALSE;
            raw->put_Enabled(&off);   // alive for the length of its own event
        }
    };
    pump(1000, [&] { return ticks.refs == 1; });
    EXPECT_EQ(3u, ticks.values.size());
    EXPECT_EQ(1, ticks.refs) << "the stopped timer ended and let go of its sink";
}

// The thread's table of running timers goes with the thread: its timers are
// killed and released, and they let go of their sinks.
TEST(Timer, RunningTimersEndWithTheirThread) {
    Ticks ticks;
    std::thread t([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            auto timer = newTimer();
            ticks.listen(timer.get());
            setInterval(timer.get(), 10);
            setEnabled(timer.get(), true);
        }
        pump(50);
        CoUninitialize();
    });
    t.join();
    EXPECT_FALSE(ticks.values.empty());
    EXPECT_EQ(1, ticks.refs) << "the timer ended with its thread";
}

TEST(Timer, ThousandsStartAndStop) {
    std::vector<ComPtr<_Timer>> timers;
    for (int i = 0; i < 3000; ++i) {
        timers.push_back(newTimer());
        setInterval(timers.back().get(), 50 + i % 7);
        setEnabled(timers.back().get(), true);
    }
    std::vector<Ticks> sinks(50);
    for (size_t i = 0; i < sinks.size(); ++i) sinks[i].listen(timers[i * 60].get());
    pump(1500, [&] {
        for (auto& s : sinks)
            if (s.values.empty()) return false;
        return true;
    });
    for (auto& s : sinks) EXPECT_FALSE(s.values.empty());
    // Stop in an order unlike the start order, half of them by dropping to 0.
    for (size_t i = timers.size(); i-- > 0;) {
        if (i % 2) setInterval(timers[i].get(), 0);
        else setEnabled(timers[i].get(), false);
    }
    for (auto& s : sinks) s.values.clear();
    pump(100);
    for (auto& s : sinks) EXPECT_TRUE(s.values.empty());
    timers.clear();
    for (auto& s : sinks) EXPECT_EQ(1, s.refs);
}

TEST(Timer, ReleasingARunningTimerThatWasStoppedEndsIt) {
    Ticks ticks;
    {
        auto t = newTimer();
        ticks.listen(t.get());
        setInterval(t.get(), 10);
        setEnabled(t.get(), true);
        setInterval(t.get(), 0);
    }
    EXPECT_EQ(1, ticks.refs);
}

TEST(Timer, TagHoldsValues) {
    auto t = newTimer();
    Variant v(L"label");
    ASSERT_EQ(S_OK, t->put_Tag(&v));
    Variant got;
    t->get_Tag(got.put());
    ASSERT_EQ(VT_BSTR, V_VT(&got));
    EXPECT_STREQ(L"label", V_BSTR(&got));
    // An object is stored by its default value.
    auto inner = newTimer();
    setInterval(inner.get(), 5);
    Variant obj(static_cast<IDispatch*>(inner.get()));
    EXPECT_NE(S_OK, t->put_Tag(&obj)) << "a Timer has no default value";
}

TEST(Timer, LateBoundProperties) {
    auto t = newTimer();
    ASSERT_EQ(S_OK, put(t.get(), L"Interval", vLong(25)));
    VARIANT on;
    VariantInit(&on);
    V_VT(&on) = VT_BOOL;
    V_BOOL(&on) = VARIANT_TRUE;
    ASSERT_EQ(S_OK, put(t.get(), L"Enabled", on));
    Ticks ticks;
    ticks.listen(t.get());
    pump(1000, [&] { return !ticks.values.empty(); });
    ASSERT_FALSE(ticks.values.empty());
    EXPECT_EQ(25.0, ticks.values[0]);
    CallResult r;
    call(r, t.get(), L"ElapsedTime", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(VT_R8, V_VT(&r.value));
    ASSERT_EQ(S_OK, put(t.get(), L"Interval", vLong(0)));
}

TEST(MiscMethods, CreateTimerStartsUnlessDisabled) {
    auto misc = create<_MiscMethods>(CLSID_MiscMethods, IID__MiscMethods);
    ASSERT_TRUE(misc);
    long interval = 10;
    ComPtr<_Timer> t;
    ASSERT_EQ(S_OK, misc->CreateTimer(&interval, nullptr, t.put()));
    Ticks ticks;
    ticks.listen(t.get());
    pump(1000, [&] { return !ticks.values.empty(); });
    EXPECT_FALSE(ticks.values.empty());
    setEnabled(t.get(), false);

    VARIANT_BOOL off = VARIANT_FALSE;
    ComPtr<_Timer> idle;
    ASSERT_EQ(S_OK, misc->CreateTimer(&interval, &off, idle.put()));
    long got = 0;
    idle->get_Interval(&got);
    EXPECT_EQ(10, got);
    Ticks none;
    none.listen(idle.get());
    pump(100);
    EXPECT_TRUE(none.values.empty());

    // Late bound, with the optional argument left out.
    CallResult r;
    call(r, misc.get(), L"CreateTimer", DISPATCH_METHOD, {vLong(0)});
    ASSERT_EQ(S_OK, r.hr);
    EXPECT_EQ(VT_DISPATCH, V_VT(&r.value));
}

TEST(MiscMethods, PauseBlocksWithoutTicks) {
    auto misc = create<_MiscMethods>(CLSID_MiscMethods, IID__MiscMethods);
    auto t = newTimer();
    Ticks ticks;
    ticks.listen(t.get());
    setInterval(t.get(), 10);
    setEnabled(t.get(), true);
    long ms = 150;
    ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, misc->Pause(&ms));
    ULONGLONG took = GetTickCount64() - start;
    EXPECT_GE(took, 130u) << "the tick count's own granularity aside";
    EXPECT_TRUE(ticks.values.empty()) << "no message processing during the pause";
    ms = -1;
    start = GetTickCount64();
    EXPECT_EQ(S_OK, misc->Pause(&ms));
    EXPECT_LT(GetTickCount64() - start, 100u) << "a negative time does not block";
    setEnabled(t.get(), false);
}

// The module linked in directly: a refused system timer.
UINT_PTR WINAPI refuse(HWND, UINT_PTR, UINT, TIMERPROC) { return 0; }

TEST(TimerModule, NoSystemTimerRaises13652AndKeepsTheValue) {
    auto t = tova::Timer::make();
    tova::timers::setTimerFunction(&refuse);
    VARIANT_BOOL on = VARIANT_TRUE;
    EXPECT_EQ(S_OK, t->put_Enabled(&on)) << "no interval yet: nothing to start";
    long v = 100;
    EXPECT_EQ(static_cast<HRESULT>(0x80043554), t->put_Interval(&v));
    ErrorText e = lastError();
    EXPECT_EQ(L"TOVA200", e.source);
    EXPECT_EQ(L"Can't create system timer", e.description);
    long got = 0;
    t->get_Interval(&got);
    EXPECT_EQ(100, got) << "the value stays";
    EXPECT_EQ(0u, tova::timers::runningCount());
    tova::timers::setTimerFunction(nullptr);
    VARIANT_BOOL off = VARIANT_FALSE;
    EXPECT_EQ(S_OK, t->put_Enabled(&off));
    EXPECT_EQ(S_OK, t->put_Enabled(&on));
    EXPECT_EQ(1u, tova::timers::runningCount());
    t.reset();
    EXPECT_EQ(1u, tova::timers::runningCount()) << "a running timer lives on in the table";
}

}  // namespace
