// The subclassing client's face of a library object whose default interface is
// another (MouseTrack, MouseTrackEx, Tooltip): forwards identity to the owner
// and each message to its subclassMessage. It answers "preprocess", so the
// window's own procedure always runs first, and returns 0.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

struct SubclassIid {
    static const IID& get() { return IID__ISubclass; }
};

template <class Owner>
class SubclassFace final : public Dispatching<_ISubclass, SubclassIid> {
public:
    explicit SubclassFace(Owner* owner) : owner_(owner) {}

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override { return owner_->QueryInterface(riid, ppv); }
    STDMETHODIMP_(ULONG) AddRef() override { return owner_->AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return owner_->Release(); }
    STDMETHODIMP get_MessageResponse(MessageResponseConstants* pRet) override {
        if (!pRet) return E_POINTER;
        *pRet = tovaMessageResponsePreprocess;
        return S_OK;
    }
    STDMETHODIMP WindowProc(LONG hWnd, LONG Message, LONG_PTR wParam, LONG_PTR lParam, LONG_PTR* pRet) override {
        return guard([&] {
            owner_->subclassMessage(toHandle<HWND>(hWnd), static_cast<UINT>(Message), wParam, lParam);
            if (pRet) *pRet = 0;
        });
    }

private:
    Owner* owner_;
};

}  // namespace tova
