#include "misc_methods.h"

#include "environment_timing.h"
#include "decimal_rounding.h"
#include "message_pump.h"
#include "sound.h"
#include "timer.h"
#include "value_helpers.h"

namespace tova {

const ClassIdentity MiscMethods::kClass = {L"MiscMethods", &CLSID_MiscMethods, &IID__MiscMethods, nullptr};

HRESULT createMiscMethods(REFIID riid, void** ppv) { return MiscMethods::create(riid, ppv); }

MiscMethods::MiscMethods() = default;
MiscMethods::~MiscMethods() = default;   // the player stops and closes its device

// Enabled first, then Interval: the timer starts on the second assignment.
STDMETHODIMP MiscMethods::CreateTimer(LONG* Interval, VARIANT_BOOL* Enabled, _Timer** pRet) {
    return guard([&] {
        required(pRet);
        long interval = *required(Interval);
        bool enabled = Enabled ? fromVB(*Enabled) : true;
        ComPtr<Timer> t = Timer::make();
        t->setEnabled(enabled);
        t->setInterval(interval);
        *pRet = t.detach();
    });
}

// Blocks; no message is processed meanwhile. A negative time waits not at all
// rather than for ever.
STDMETHODIMP MiscMethods::Pause(LONG* Interval) {
    return guard([&] {
        long ms = *required(Interval);
        Sleep(ms > 0 ? static_cast<DWORD>(ms) : 0);
    });
}

STDMETHODIMP MiscMethods::CanPlayWaveForms(VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(sound::canPlayWaveForms()); });
}

STDMETHODIMP MiscMethods::BeginPlaySound(BSTR* Filename, VARIANT_BOOL* Asynchronous, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        BSTR name = *required(Filename);
        bool asynchronous = Asynchronous ? fromVB(*Asynchronous) : true;
        if (SysStringLen(name) == 0 || !sound::canPlayWaveForms()) return;
        if (!player_) player_ = std::make_unique<sound::Player>();
        if (!player_->ready()) return;
        *pRet = toVB(player_->play(std::wstring(name, SysStringLen(name)), asynchronous));
    });
}

STDMETHODIMP MiscMethods::StopSound() {
    return guard([&] {
        if (player_) player_->stop();
    });
}

// ------------------------------------------------------------ message pump

STDMETHODIMP MiscMethods::DoEvents(LONG* pRet) {
    return guard([&] { *required(pRet) = pump::doEvents(); });
}

STDMETHODIMP MiscMethods::WaitWithEvents(LONG Interval, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(pump::waitWithEvents(Interval)); });
}

// ----------------------------------------------------------- value helpers

namespace {

// A Variant result made aside: a member that fails halfway hands back nothing.
template <class Make>
HRESULT variantResult(VARIANT* pRet, Make&& make) {
    return guard([&] {
        VariantInit(required(pRet));
        Variant r;
        make(&r);
        r.detachTo(pRet);
    });
}

}  // namespace

STDMETHODIMP MiscMethods::IIf(VARIANT Condition, VARIANT TrueValue, VARIANT FalseValue, VARIANT* pRet) {
    return variantResult(pRet, [&](VARIANT* r) { values::iif(Condition, TrueValue, FalseValue, r); });
}

STDMETHODIMP MiscMethods::NullToValue(VARIANT Value, VARIANT ValueIfNull, VARIANT* pRet) {
    return variantResult(pRet, [&](VARIANT* r) { values::nullToValue(Value, &ValueIfNull, r); });
}

STDMETHODIMP MiscMethods::SafeDivide(VARIANT Numerator, VARIANT Denominator, VARIANT ValueIfZero, VARIANT* pRet) {
    return variantResult(pRet, [&](VARIANT* r) { values::safeDivide(Numerator, Denominator, &ValueIfZero, r); });
}

STDMETHODIMP MiscMethods::Clamp(DOUBLE Value, DOUBLE Minimum, DOUBLE Maximum, DOUBLE* pRet) {
    return guard([&] { *required(pRet) = values::clamp(Value, Minimum, Maximum); });
}

STDMETHODIMP MiscMethods::MinOf(VARIANT Values, VARIANT* pRet) {
    return variantResult(pRet, [&](VARIANT* r) { values::extreme(Values, false, r); });
}

STDMETHODIMP MiscMethods::MaxOf(VARIANT Values, VARIANT* pRet) {
    return variantResult(pRet, [&](VARIANT* r) { values::extreme(Values, true, r); });
}

STDMETHODIMP MiscMethods::RoundNumber(VARIANT Value, LONG Decimals, RoundingModeConstants Mode, VARIANT* pRet) {
    return variantResult(pRet, [&](VARIANT* r) { values::roundNumber(Value, Decimals, Mode, r); });
}

STDMETHODIMP MiscMethods::Modulo(DOUBLE Dividend, DOUBLE Divisor, DOUBLE* pRet) {
    return guard([&] {
        if (Divisor == 0) raise(kDivisionByZero);   // as Mod does
        *required(pRet) = rounding::modulo(Dividend, Divisor);
    });
}

STDMETHODIMP MiscMethods::ArrayCount(VARIANT Values, LONG Dimension, LONG* pRet) {
    return guard([&] { *required(pRet) = values::arrayCount(Values, Dimension); });
}

// ------------------------------------------------- process, thread, clock

STDMETHODIMP MiscMethods::CurrentProcessId(LONG* pRet) {
    return guard([&] { *required(pRet) = static_cast<LONG>(GetCurrentProcessId()); });
}

STDMETHODIMP MiscMethods::CurrentThreadId(LONG* pRet) {
    return guard([&] { *required(pRet) = static_cast<LONG>(GetCurrentThreadId()); });
}

STDMETHODIMP MiscMethods::StartStopwatch(DOUBLE* pRet) {
    return guard([&] { *required(pRet) = timing::milliseconds(); });
}

STDMETHODIMP MiscMethods::ReadStopwatch(DOUBLE Start, DOUBLE* pRet) {
    return guard([&] { *required(pRet) = timing::milliseconds() - Start; });
}

}  // namespace tova
