// What a Tooltip does: its tools on windows, the hover, tracking and
// on-demand showings with their events, timers and animation, and the
// subclassing of the tools' windows. The class in tooltip.h only checks and
// converts arguments.
#pragma once

#include "tooltip_window.h"

#include <memory>
#include <string>
#include <vector>

namespace tova::tip {

enum ShowMode : long { kShowOnHover = 0, kShowOnDemand = 1, kShowTrackCursor = 2 };
enum Animation : long { kAnimateSystem = -1, kAnimateNone = 0, kAnimateFade = 1, kAnimateSlide = 2 };

// What the client set; the class writes it, the controller reads it at each showing.
struct Settings {
    Look look;                  // font filled in at each showing
    long foreColor = 0, backColor = 0;   // as given (OLE_COLOR)
    std::wstring text;
    long showMode = kShowOnHover;
    long alignment = kAlignCursor;
    long animation = kAnimateSystem;
    long animationDuration = 200;
    long delay = 0, duration = 0;
    bool enabled = true;
};

class Controller : private Popup::Owner {
public:
    // Raised through the owning object; by-reference arguments are read back.
    struct Events {
        virtual void requireTipText(HWND wnd, std::wstring& text) = 0;
        virtual void beforeShow(long& duration) = 0;
        virtual void show() = 0;
        virtual void hide() = 0;
    };

    // `client` is the owner's subclassing face, `owner` keeps it alive across
    // the popup's timers.
    Controller(_ISubclass* client, IUnknown* owner, Events* events);
    ~Controller();   // raises nothing

    Settings settings;
    ComPtr<IFont> font;   // null: the system's status font

    // Tools. addTool raises the engine's errors, 5 for a window of another thread.
    long addTool(HWND wnd, const RECT* rect, ComPtr<_Rectangle> follow, const std::wstring& text);
    bool removeTool(long id);
    void removeAllTools();
    bool hasTool(long id) const;
    std::wstring toolText(long id) const;
    void setToolText(long id, const std::wstring& text);
    bool moveTool(long id, const RECT& rect);

    // Showing.
    bool inEvent() const { return inEvent_ > 0; }
    bool showAt(POINT screen, HWND wnd);
    void hideTip();
    void setEnabled(bool enabled);
    bool visible() const { return shown_ != nullptr; }
    HWND popupWindow() const { return popup_.hwnd(); }
    long currentTool() const;

    bool draw(HDC dc, int x, int y, const std::wstring& text);
    SIZE measureTip(const std::wstring& text);

    void windowProc(HWND wnd, UINT message, WPARAM wParam, LPARAM lParam);

private:
    struct Tool {
        long id;
        HWND wnd;
        RECT rect;
        bool whole;
        ComPtr<_Rectangle> follow;
        std::wstring text;
    };
    enum class Kind { Hover, Track, Demand };
    struct Shown {
        Kind kind;
        long tool;
        HWND wnd;
        Anchor anchor;
        std::wstring text;
        Content content;
        Placement placement;
        std::unique_ptr<Surface> surface;
        long animation = kAnimateNone;
        long duration = 0;
        DWORD start = 0;
    };

    void popupTimer(UINT_PTR id) override;
    void popupDetach(HWND wnd) override;

    Tool* find(long id);
    const Tool* find(long id) const;
    RECT toolRect(const Tool& t) const;
    long hitTest(HWND wnd, POINT client) const;
    void attachWindow(HWND wnd);
    void detachWindow(HWND wnd);
    void releaseWindowIfUnused(HWND wnd);
    void requestLeave(HWND wnd);

    void onMove(HWND wnd, POINT p);
    void onLeave(HWND wnd);
    void onDestroy(HWND wnd);
    void onDelay();
    void onFrame();

    void startPending(HWND wnd, long tool, long ms);
    void cancelPending();
    bool showNow(Kind kind, long tool, HWND wnd, const Anchor& anchor);
    bool lay(Shown& s);   // layout, placement and picture
    void frame(double p);
    void hideNow();
    void startDuration();
    void raiseHide();
    long effectiveAnimation() const;
    Anchor cursorAnchor(bool pointerBelow) const;
    LOGFONTW currentFont() const;

    _ISubclass* client_;
    IUnknown* owner_;
    Events* events_;   // null while the object ends
    Popup popup_{this};
    std::vector<Tool> tools_;
    long nextId_ = 1;
    std::vector<HWND> windows_;          // attached
    std::vector<HWND> leaveRequested_;   // leave asked since the pointer entered
    std::vector<HWND> detachPosted_;     // destroyed windows whose detach is queued
    int dispatching_ = 0;                // inside a window's message
    int inEvent_ = 0;
    unsigned generation_ = 0;            // changes with each showing and hiding
    HWND pendingWnd_ = nullptr;
    long pendingTool_ = 0;
    long pendingDelay_ = 0;
    long quiet_ = 0;                     // quiet until the pointer leaves it
    std::unique_ptr<Shown> shown_;
};

// The system's status font.
LOGFONTW defaultFont();

}  // namespace tova::tip
