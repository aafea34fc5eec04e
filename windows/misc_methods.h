// MiscMethods: global helpers. Timers made and started in one call, a plain
// blocking pause, wave sound through a hidden player of its own, and what
// scripting languages lack: a message pump, value helpers, exact rounding,
// process and thread ids, a stopwatch.
#pragma once

#include "../frame/library_frame.h"

#include <memory>

namespace tova {

namespace sound {
class Player;
}

class MiscMethods final : public Object<MiscMethods, _MiscMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP CreateTimer(LONG* Interval, VARIANT_BOOL* Enabled, _Timer** pRet) override;
    STDMETHODIMP Pause(LONG* Interval) override;
    STDMETHODIMP CanPlayWaveForms(VARIANT_BOOL* pRet) override;
    STDMETHODIMP BeginPlaySound(BSTR* Filename, VARIANT_BOOL* Asynchronous, VARIANT_BOOL* pRet) override;
    STDMETHODIMP StopSound() override;
    STDMETHODIMP DoEvents(LONG* pRet) override;
    STDMETHODIMP WaitWithEvents(LONG Interval, VARIANT_BOOL* pRet) override;
    STDMETHODIMP IIf(VARIANT Condition, VARIANT TrueValue, VARIANT FalseValue, VARIANT* pRet) override;
    STDMETHODIMP NullToValue(VARIANT Value, VARIANT ValueIfNull, VARIANT* pRet) override;
    STDMETHODIMP SafeDivide(VARIANT Numerator, VARIANT Denominator, VARIANT ValueIfZero, VARIANT* pRet) override;
    STDMETHODIMP Clamp(DOUBLE Value, DOUBLE Minimum, DOUBLE Maximum, DOUBLE* pRet) override;
    STDMETHODIMP MinOf(VARIANT Values, VARIANT* pRet) override;
    STDMETHODIMP MaxOf(VARIANT Values, VARIANT* pRet) override;
    STDMETHODIMP RoundNumber(VARIANT Value, LONG Decimals, RoundingModeConstants Mode, VARIANT* pRet) override;
    STDMETHODIMP Modulo(DOUBLE Dividend, DOUBLE Divisor, DOUBLE* pRet) override;
    STDMETHODIMP ArrayCount(VARIANT Values, LONG Dimension, LONG* pRet) override;
    STDMETHODIMP CurrentProcessId(LONG* pRet) override;
    STDMETHODIMP CurrentThreadId(LONG* pRet) override;
    STDMETHODIMP StartStopwatch(DOUBLE* pRet) override;
    STDMETHODIMP ReadStopwatch(DOUBLE Start, DOUBLE* pRet) override;

private:
    friend class Object<MiscMethods, _MiscMethods>;
    MiscMethods();
    ~MiscMethods() override;

    std::unique_ptr<sound::Player> player_;   // made on the first play, never shown
};

}  // namespace tova
