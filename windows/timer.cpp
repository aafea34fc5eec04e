#include "timer.h"

#include "../frame/thread_slot.h"

#include <vector>

namespace tova {

const ClassIdentity Timer::kClass = {L"Timer", &CLSID_Timer, &IID__Timer, &DIID___Timer};

HRESULT createTimer(REFIID riid, void** ppv) { return Timer::create(riid, ppv); }

namespace timers {

namespace {

constexpr DISPID kTimerEvent = 1;

SetTimerFunction makeTimer = &SetTimer;

// The thread's running timers, in start order. Created with the first start,
// dropped as soon as it is empty; at the thread's end the timers still in it
// are killed and released (their own stop then finds no table).
struct Running {
    std::vector<ComPtr<Timer>> list;
    ~Running() {
        for (const ComPtr<Timer>& t : list) KillTimer(nullptr, t->timerId());
    }
};
ThreadSlot<Running> table;

void CALLBACK timerProc(HWND, UINT, UINT_PTR id, DWORD) {
    Running* r = table.find();
    if (!r) return;
    for (const ComPtr<Timer>& entry : r->list)
        if (entry->timerId() == id) {
            ComPtr<Timer> t = entry;   // the handler may stop it: it lives to the end of the tick
            t->tick();
            return;
        }
}

}  // namespace

void setTimerFunction(SetTimerFunction f) { makeTimer = f ? f : &SetTimer; }

size_t runningCount() {
    const Running* r = table.find();
    return r ? r->list.size() : 0;
}

void fail(long code) {
    const wchar_t* text = code == kTooManyTimers ? L"Too Many Timers"
                          : code == kCantCreateTimer ? L"Can't create system timer" : nullptr;
    if (code <= 1000) raise(code);
    raise(code, kLibrarySource, text ? text : L"");
}

// Table operations, friends in all but name: Timer calls them from start/stop.
bool add(Timer* t) {
    table.get().list.push_back(ComPtr<Timer>(t));
    return true;
}

// Removes the entry holding this object with this identifier; returns the
// table's reference so the caller can let it go when it is done.
ComPtr<Timer> take(Timer* t, UINT_PTR id, bool& found) {
    found = false;
    ComPtr<Timer> kept;
    Running* r = table.find();
    if (!r) return kept;
    std::vector<ComPtr<Timer>>& l = r->list;
    for (size_t i = l.size(); i-- > 0;)
        if (l[i].get() == t && l[i]->timerId() == id) {
            kept = std::move(l[i]);
            l.erase(l.begin() + static_cast<std::ptrdiff_t>(i));
            found = true;
            break;
        }
    if (l.empty()) table.drop();
    return kept;
}

UINT_PTR make(UINT interval) { return makeTimer(nullptr, 0, interval, &timerProc); }

}  // namespace timers

Timer::~Timer() {
    // The final stop: nothing is raised from a destructor.
    tag_.clear();
    try {
        setInterval(0);
    } catch (...) {
    }
}

bool Timer::start() {
    id_ = timers::make(static_cast<UINT>(interval_));
    if (id_ == 0) return false;
    elapsed_ = 0;
    return timers::add(this);
}

void Timer::stop() {
    bool found = false;
    // Held until the end: the table's reference may be the last one.
    ComPtr<Timer> kept = timers::take(this, id_, found);
    if (found) {
        KillTimer(nullptr, id_);
        elapsed_ = 0;
    }
}

void Timer::tick() {
    elapsed_ += static_cast<double>(interval_);
    if (!enabled_) return;
    EventArgs args;
    args.val(elapsed_);
    raiseEvent(timers::kTimerEvent, args);
}

void Timer::setInterval(long v) {
    if (v == interval_) return;
    if (interval_ > 0) stop();
    interval_ = v;
    if (v >= 1 && enabled_ && !start()) timers::fail(timers::kCantCreateTimer);
}

void Timer::setEnabled(bool b) {
    if (b == enabled_) return;
    enabled_ = b;
    if (interval_ > 0) stop();
    if (enabled_ && interval_ >= 1 && !start()) timers::fail(timers::kCantCreateTimer);
}

STDMETHODIMP Timer::get_Tag(VARIANT* pRet) {
    return guard([&] {
        required(pRet);
        VariantInit(pRet);
        HRESULT hr = VariantCopy(pRet, &tag_);
        if (FAILED(hr)) raise(kOutOfMemory);
    });
}

// A let: an object given is stored by its default value, as a value copy.
STDMETHODIMP Timer::put_Tag(VARIANT* Tag) {
    return guard([&] {
        VARIANT* v = required(Tag);
        Variant value;
        HRESULT hr = VariantCopyInd(&value, v);
        if (FAILED(hr)) raise(kTypeMismatch);
        if (V_VT(&value) == VT_DISPATCH || V_VT(&value) == VT_UNKNOWN) {
            Variant plain;
            if (FAILED(VariantChangeType(&plain, &value, 0, VT_BSTR)) &&
                FAILED(VariantChangeType(&plain, &value, 0, VT_R8)))
                raise(kNotSupported);   // an object without a default value
            value = std::move(plain);
        }
        tag_ = std::move(value);
    });
}

STDMETHODIMP Timer::get_ElapsedTime(double* pRet) { return guard([&] { *required(pRet) = elapsed_; }); }
STDMETHODIMP Timer::get_Interval(LONG* pRet) { return guard([&] { *required(pRet) = interval_; }); }
STDMETHODIMP Timer::get_Enabled(VARIANT_BOOL* pRet) { return guard([&] { *required(pRet) = toVB(enabled_); }); }
STDMETHODIMP Timer::put_Interval(LONG* Interval) { return guard([&] { setInterval(*required(Interval)); }); }
STDMETHODIMP Timer::put_Enabled(VARIANT_BOOL* Enabled) {
    return guard([&] { setEnabled(fromVB(*required(Enabled))); });
}

}  // namespace tova
