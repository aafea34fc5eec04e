#include "misc_methods.h"

#include "sound.h"
#include "timer.h"

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

}  // namespace tova
