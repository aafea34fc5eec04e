// MouseTrack and MouseTrackEx: MouseHover and MouseLeave for any window of the
// process. Both are clients of the subclassing engine (they answer
// "preprocess", so the window's own procedure always runs first). MouseTrack
// picks the platform's TrackMouseEvent, the common controls' _TrackMouseEvent,
// or, where neither exists, a work-around with mouse capture; MouseTrackEx
// always uses TrackMouseEvent.
#pragma once

#include "subclass_face.h"

namespace tova {

namespace mouse {

// What both classes share: the watched window, the method and the messages.
class Tracker {
public:
    // Raised by the tracker through its owner.
    struct Events {
        virtual void hover(short& button, short& shift, float& x, float& y) = 0;
        virtual void leave() = 0;
    };

    Tracker(_ISubclass* client, Events* events, bool extended) : client_(client), events_(events), extended_(extended) {}

    // MouseTrack: method by detection or as forced; then the messages of the method.
    void attach(HWND wnd, long forceMethod);
    // MouseTrackEx: TrackMouseEvent of user32, always.
    void attachExtended(HWND wnd);
    void start();
    void detach();
    void windowProc(UINT message, WPARAM wParam, LPARAM lParam);

    bool tracking() const { return tracking_; }
    long method() const { return method_; }
    HWND window() const { return wnd_; }

private:
    void detect();
    bool request(DWORD flags);
    void released(LPARAM lParam);

    _ISubclass* client_;   // the owner's face; no reference of its own
    Events* events_;
    bool extended_;
    bool tracking_ = false;
    HWND wnd_ = nullptr;
    HWND parent_ = nullptr;
    bool comctl_ = false;
    bool workAround_ = false;
    long method_ = 0;
};

// Hover's arguments from WM_MOUSEHOVER's wParam and lParam.
void hoverArguments(WPARAM wParam, LPARAM lParam, short& button, short& shift, float& x, float& y);

}  // namespace mouse

class MouseTrack final : public Object<MouseTrack, _MouseTrack>, private mouse::Tracker::Events {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_TrackMethod(MouseTrackMethodConstants* pRet) override;
    STDMETHODIMP AttachMouseTracking(LONG hWnd, MouseTrackMethodConstants ForceMethod) override;
    STDMETHODIMP StartMouseTracking() override;
    STDMETHODIMP DetachMouseTracking() override;
    STDMETHODIMP get_Tracking(VARIANT_BOOL* pRet) override;

    void subclassMessage(HWND, UINT message, WPARAM wParam, LPARAM lParam) {
        tracker_.windowProc(message, wParam, lParam);
    }

private:
    friend class Object<MouseTrack, _MouseTrack>;
    MouseTrack() : face_(this), tracker_(&face_, this, false) {}
    ~MouseTrack() override;
    void* queryOther(REFIID riid) { return riid == IID__ISubclass ? static_cast<_ISubclass*>(&face_) : nullptr; }

    void hover(short& button, short& shift, float& x, float& y) override;
    void leave() override;

    SubclassFace<MouseTrack> face_;
    mouse::Tracker tracker_;
};

class MouseTrackEx final : public Object<MouseTrackEx, _MouseTrackEx>, private mouse::Tracker::Events {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP IsAttached(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP AttachMouseTracking(LONG hWnd) override;
    STDMETHODIMP StartMouseTracking() override;
    STDMETHODIMP DetachMouseTracking() override;
    STDMETHODIMP get_Tracking(VARIANT_BOOL* pRet) override;

    void subclassMessage(HWND, UINT message, WPARAM wParam, LPARAM lParam) {
        tracker_.windowProc(message, wParam, lParam);
    }

private:
    friend class Object<MouseTrackEx, _MouseTrackEx>;
    MouseTrackEx() : face_(this), tracker_(&face_, this, true) {}
    ~MouseTrackEx() override;
    void* queryOther(REFIID riid) { return riid == IID__ISubclass ? static_cast<_ISubclass*>(&face_) : nullptr; }

    void hover(short& button, short& shift, float& x, float& y) override;
    void leave() override;

    SubclassFace<MouseTrackEx> face_;
    mouse::Tracker tracker_;
};

}  // namespace tova
