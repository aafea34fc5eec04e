// The tip's popup: topmost, never activated, transparent to the mouse. Where
// the system has per-pixel alpha windows it is layered and given each frame
// with UpdateLayeredWindow; elsewhere (the 9x line, NT before 5.0) it is a
// plain popup clipped by the shape's region, painted in WM_PAINT and
// answering HTTRANSPARENT. Timers of the tip run on it.
#pragma once

#include "tooltip_paint.h"

namespace tova::tip {

class Popup {
public:
    // Where the popup's timers and posted work go.
    struct Owner {
        virtual void popupTimer(UINT_PTR id) = 0;
        virtual void popupDetach(HWND wnd) = 0;
    };

    explicit Popup(Owner* owner) : owner_(owner) {}
    ~Popup();
    Popup(const Popup&) = delete;
    Popup& operator=(const Popup&) = delete;

    // Makes the window when it is not there yet; false when it cannot be made.
    bool create();
    HWND hwnd() const { return wnd_; }
    // Whether frames can carry alpha (fade); without, the tip shows at once.
    bool layered() const { return layered_; }

    // Shows the part `part` of the surface (whose top-left is at `topLeft` on
    // the screen), at constant alpha `alpha`. The surface must live until hide().
    bool show(const Surface& surface, GdiObject<HRGN> shape, POINT topLeft, RECT part, BYTE alpha);
    // Moves the tip, now drawn on `surface` (the same picture, drawn again).
    void moveTo(POINT topLeft, const Surface& surface);
    void hide();

    void setTimer(UINT_PTR id, UINT ms);
    void killTimer(UINT_PTR id);
    // Detaching from a window inside its own destruction would change the
    // engine's list while it walks it: done from the popup's queue instead.
    void postDetach(HWND wnd);

private:
    static LRESULT CALLBACK proc(HWND, UINT, WPARAM, LPARAM);
    bool showPlain(GdiObject<HRGN> shape, POINT at, SIZE size);
    void paint();

    Owner* owner_;
    HWND wnd_ = nullptr;
    bool layered_ = false;
    bool visible_ = false;
    const Surface* surface_ = nullptr;   // the picture WM_PAINT shows (plain popup)
    POINT partOffset_{};
};

}  // namespace tova::tip
