// MiscMethods: global helpers. Timers made and started in one call, a plain
// blocking pause, and wave sound through a hidden player of its own.
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

private:
    friend class Object<MiscMethods, _MiscMethods>;
    MiscMethods();
    ~MiscMethods() override;

    std::unique_ptr<sound::Player> player_;   // made on the first play, never shown
};

}  // namespace tova
