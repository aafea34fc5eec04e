// Timer: a periodic event without a window. A running timer (Enabled and
// Interval >= 1) owns one thread timer made with SetTimer and sits in its
// thread's table of running timers, which holds a counted reference: a running
// timer lives on after its client has let go of it, until it is stopped.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class Timer final : public Object<Timer, _Timer> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_Tag(VARIANT* pRet) override;
    STDMETHODIMP put_Tag(VARIANT* Tag) override;
    STDMETHODIMP get_ElapsedTime(double* pRet) override;
    STDMETHODIMP get_Interval(LONG* pRet) override;
    STDMETHODIMP put_Interval(LONG* Interval) override;
    STDMETHODIMP get_Enabled(VARIANT_BOOL* pRet) override;
    STDMETHODIMP put_Enabled(VARIANT_BOOL* Enabled) override;

    // For the thread's table and its timer callback.
    UINT_PTR timerId() const { return id_; }
    void tick();

    // Assignments as the properties make them; raise 13652 when no system timer can be made.
    void setInterval(long v);
    void setEnabled(bool b);

private:
    friend class Object<Timer, _Timer>;
    Timer() = default;
    ~Timer() override;

    bool start();
    void stop();

    long interval_ = 0;
    UINT_PTR id_ = 0;      // not cleared on stop: the table matches object and identifier
    bool enabled_ = false;
    double elapsed_ = 0;
    Variant tag_;
};

namespace timers {

// Error numbers of the timer (raised as 0x80040000 | number).
enum : long { kTooManyTimers = 13651, kCantCreateTimer = 13652 };
[[noreturn]] void fail(long code);

// Running timers of the calling thread.
size_t runningCount();

// The function that makes system timers; tests replace it to see a refusal.
using SetTimerFunction = UINT_PTR(WINAPI*)(HWND, UINT_PTR, UINT, TIMERPROC);
void setTimerFunction(SetTimerFunction f);   // nullptr: SetTimer

}  // namespace timers
}  // namespace tova
