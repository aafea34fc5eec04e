// Tick delivery with 1,000 running timers: the time a tick spends in
// DispatchMessage for Timer objects (table walk, ElapsedTime, the event to a
// connected sink or to none) next to bare thread timers with an empty callback.
// Timers run at 10 ms, the shortest interval; figures are per delivered tick.
#include "windows/timer.h"

#include "bench/clock.h"

#include <cstdio>
#include <vector>

using namespace tova;

namespace {

constexpr int kTimers = 1000;
constexpr double kSeconds = 3.0;

long bareTicks = 0;
void CALLBACK bareProc(HWND, UINT, UINT_PTR, DWORD) { ++bareTicks; }

// A sink that counts.
class Counter : public IDispatch {
public:
    long ticks = 0;
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == DIID___Timer) {
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
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        ++ticks;
        return S_OK;
    }
};

struct Result {
    long ticks = 0;
    double inDispatch = 0;   // seconds spent delivering ticks
};

// Pumps for kSeconds; times DispatchMessage of WM_TIMER only.
Result pumpTimers(const long& counter) {
    Result r;
    long before = counter;
    MSG m;
    double end = benchSeconds() + kSeconds;
    while (benchSeconds() < end) {
        // Bounded: 1,000 timers keep the queue from ever running dry.
        while (benchSeconds() < end && PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
            if (m.message == WM_TIMER) {
                double t0 = benchSeconds();
                DispatchMessageW(&m);
                r.inDispatch += benchSeconds() - t0;
            } else {
                DispatchMessageW(&m);
            }
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 1, QS_ALLINPUT);
    }
    r.ticks = counter - before;
    return r;
}

void print(const char* what, const Result& r) {
    std::printf("  %-34s %7ld ticks in %.0f s (%6.0f/s), %6.2f us per tick\n", what, r.ticks, kSeconds,
                r.ticks / kSeconds, r.ticks ? r.inDispatch / r.ticks * 1e6 : 0.0);
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::printf("Tick delivery with %d running timers at 10 ms:\n", kTimers);
    {
        std::vector<UINT_PTR> ids;
        for (int i = 0; i < kTimers; ++i) ids.push_back(SetTimer(nullptr, 0, 10, bareProc));
        print("bare SetTimer, empty callback", pumpTimers(bareTicks));
        for (UINT_PTR id : ids) KillTimer(nullptr, id);
    }
    for (int withSinks = 0; withSinks < 2; ++withSinks) {
        Counter counter;
        std::vector<ComPtr<tova::Timer>> timers;
        std::vector<DWORD> cookies;
        double t0 = benchSeconds();
        for (int i = 0; i < kTimers; ++i) {
            ComPtr<tova::Timer> t = tova::Timer::make();
            t->setInterval(10);
            t->setEnabled(true);
            if (withSinks) {
                ComPtr<IConnectionPoint> cp;
                ComPtr<IConnectionPointContainer> cpc = t.as<IConnectionPointContainer>(IID_IConnectionPointContainer);
                cpc->FindConnectionPoint(DIID___Timer, cp.put());
                DWORD cookie = 0;
                cp->Advise(&counter, &cookie);
            }
            timers.push_back(t);
        }
        double started = benchSeconds() - t0;
        // Ticks without a sink are counted from ElapsedTime afterwards.
        static long none = 0;
        Result r = pumpTimers(withSinks ? counter.ticks : none);
        if (!withSinks) {
            double sum = 0;
            for (auto& t : timers) {
                double e = 0;
                t->get_ElapsedTime(&e);
                sum += e;
            }
            r.ticks = static_cast<long>(sum / 10);   // ElapsedTime adds the interval per tick
        }
        print(withSinks ? "Timer objects, one sink each" : "Timer objects, no sink", r);
        t0 = benchSeconds();
        for (auto& t : timers) t->setEnabled(false);
        double stopped = benchSeconds() - t0;
        std::printf("  %-34s start %.1f us, stop %.1f us per timer\n", "", started / kTimers * 1e6,
                    stopped / kTimers * 1e6);
    }
    CoUninitialize();
    return 0;
}
