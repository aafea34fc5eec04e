#include "tooltip_control.h"

#include "subclass.h"
#include "../graphics/gdi_draw.h"

#include <windowsx.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tova::tip {

namespace {

// The messages of a tool's window: moves, leave, every button, the wheel, destruction.
constexpr UINT kMessages[] = {WM_MOUSEMOVE,  WM_MOUSELEAVE, WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_MBUTTONDOWN,
                              WM_MOUSEWHEEL, WM_XBUTTONDOWN, WM_DESTROY};
constexpr UINT_PTR kDelayTimer = 1, kDurationTimer = 2, kFrameTimer = 3;
constexpr UINT kFrameInterval = 10;

struct Scope {
    explicit Scope(int& n) : n_(n) { ++n_; }
    ~Scope() { --n_; }
    int& n_;
};

template <class T>
bool contains(const std::vector<T>& v, const T& x) {
    return std::find(v.begin(), v.end(), x) != v.end();
}
template <class T>
void erase(std::vector<T>& v, const T& x) {
    v.erase(std::remove(v.begin(), v.end(), x), v.end());
}

bool systemFlag(UINT action) {
    BOOL on = FALSE;
    return SystemParametersInfoW(action, 0, &on, 0) && on;
}

}  // namespace

LOGFONTW defaultFont() {
    NONCLIENTMETRICSW m{};
    // The size before Vista's padded border member, which older systems refuse.
    m.cbSize = offsetof(NONCLIENTMETRICSW, iPaddedBorderWidth);
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, m.cbSize, &m, 0)) return m.lfStatusFont;
    LOGFONTW f{};
    GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof f, &f);
    return f;
}

Controller::Controller(_ISubclass* client, IUnknown* owner, Events* events)
    : client_(client), owner_(owner), events_(events) {
    settings.delay = static_cast<long>(GetDoubleClickTime());
    settings.duration = 10 * settings.delay;
}

Controller::~Controller() {
    events_ = nullptr;
    // Queued detaches first: the popup that would run them goes with us.
    for (HWND w : std::vector<HWND>(detachPosted_)) detachWindow(w);
    for (HWND w : std::vector<HWND>(windows_)) detachWindow(w);
}

// ------------------------------------------------------------------ tools

Controller::Tool* Controller::find(long id) {
    for (Tool& t : tools_)
        if (t.id == id) return &t;
    return nullptr;
}

const Controller::Tool* Controller::find(long id) const { return const_cast<Controller*>(this)->find(id); }

bool Controller::hasTool(long id) const { return find(id) != nullptr; }

RECT Controller::toolRect(const Tool& t) const {
    RECT r = t.rect;
    if (t.whole) {
        GetClientRect(t.wnd, &r);
    } else if (t.follow) {
        TOVA_RECT f{};
        if (SUCCEEDED(t.follow->get_RECT(&f))) r = toWin32(f);
    }
    return r;
}

long Controller::hitTest(HWND wnd, POINT p) const {
    for (auto t = tools_.rbegin(); t != tools_.rend(); ++t) {   // the last added wins
        if (t->wnd != wnd) continue;
        const RECT r = toolRect(*t);
        if (PtInRect(&r, p)) return t->id;
    }
    return 0;
}

void Controller::attachWindow(HWND wnd) {
    if (contains(windows_, wnd)) return;
    if (contains(detachPosted_, wnd)) {   // still attached: its detach is only queued
        erase(detachPosted_, wnd);
        windows_.push_back(wnd);
        return;
    }
    size_t done = 0;
    try {
        for (UINT m : kMessages) {
            subclass::attach(client_, wnd, static_cast<long>(m));
            ++done;
        }
    } catch (...) {
        while (done > 0) subclass::detach(client_, wnd, static_cast<long>(kMessages[--done]));
        throw;
    }
    windows_.push_back(wnd);
}

void Controller::detachWindow(HWND wnd) {
    for (size_t i = std::size(kMessages); i > 0; --i) subclass::detach(client_, wnd, static_cast<long>(kMessages[i - 1]));
    erase(windows_, wnd);
    erase(detachPosted_, wnd);
    erase(leaveRequested_, wnd);
}

void Controller::releaseWindowIfUnused(HWND wnd) {
    for (const Tool& t : tools_)
        if (t.wnd == wnd) return;
    if (!contains(windows_, wnd)) return;
    if (dispatching_ > 0) {   // the engine is walking a window's list now
        erase(windows_, wnd);
        detachPosted_.push_back(wnd);
        popup_.postDetach(wnd);
    } else {
        detachWindow(wnd);
    }
}

long Controller::addTool(HWND wnd, const RECT* rect, ComPtr<_Rectangle> follow, const std::wstring& text) {
    if (IsWindow(wnd) && subclass::isWindowLocal(wnd) && GetWindowThreadProcessId(wnd, nullptr) != GetCurrentThreadId())
        raise(kInvalidArgument);
    attachWindow(wnd);   // raises the engine's errors
    popup_.create();
    Tool t{nextId_++, wnd, rect ? *rect : RECT{}, !rect && !follow, std::move(follow), text};
    tools_.push_back(std::move(t));
    return tools_.back().id;
}

bool Controller::removeTool(long id) {
    Tool* t = find(id);
    if (!t) return false;
    const HWND wnd = t->wnd;
    if (shown_ && shown_->tool == id) hideNow();
    if (pendingTool_ == id) cancelPending();
    if (quiet_ == id) quiet_ = 0;
    tools_.erase(std::remove_if(tools_.begin(), tools_.end(), [&](const Tool& x) { return x.id == id; }), tools_.end());
    releaseWindowIfUnused(wnd);
    return true;
}

void Controller::removeAllTools() {
    std::vector<long> ids;
    for (const Tool& t : tools_) ids.push_back(t.id);
    for (long id : ids) removeTool(id);
}

std::wstring Controller::toolText(long id) const {
    const Tool* t = find(id);
    return t ? t->text : std::wstring();
}

void Controller::setToolText(long id, const std::wstring& text) {
    Tool* t = find(id);
    if (!t) return;
    t->text = text;
    // A visible tip shows the change at once, without events.
    if (visible() && shown_->tool == id && !text.empty()) {
        shown_->text = text;
        if (lay(*shown_)) frame(1.0);
    }
}

bool Controller::moveTool(long id, const RECT& rect) {
    Tool* t = find(id);
    if (!t) return false;
    t->rect = rect;
    t->whole = false;
    t->follow.reset();
    return true;
}

// -------------------------------------------------------------- messages

void Controller::windowProc(HWND wnd, UINT message, WPARAM, LPARAM lParam) {
    Scope s(dispatching_);
    switch (message) {
    case WM_MOUSEMOVE:
        onMove(wnd, POINT{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        break;
    case WM_MOUSELEAVE:
        onLeave(wnd);
        break;
    case WM_DESTROY:
        onDestroy(wnd);
        break;
    default:   // a button or the wheel
        hideTip();
        break;
    }
}

// A new request replaces the thread's current one: the flags and hover time
// already asked for this window (a MouseTrack's hover) are kept.
void Controller::requestLeave(HWND wnd) {
    if (contains(leaveRequested_, wnd)) return;
    TRACKMOUSEEVENT q{};
    q.cbSize = sizeof q;
    q.dwFlags = TME_QUERY;
    DWORD flags = 0, hover = HOVER_DEFAULT;
    if (TrackMouseEvent(&q) && q.hwndTrack == wnd) {
        flags = q.dwFlags & (TME_HOVER | TME_LEAVE | TME_NONCLIENT);
        if (flags & TME_HOVER) hover = q.dwHoverTime;
    }
    TRACKMOUSEEVENT t{};
    t.cbSize = sizeof t;
    t.dwFlags = flags | TME_LEAVE;
    t.hwndTrack = wnd;
    t.dwHoverTime = hover;
    if (TrackMouseEvent(&t)) leaveRequested_.push_back(wnd);
}

void Controller::onMove(HWND wnd, POINT p) {
    requestLeave(wnd);
    if (!settings.enabled) return;
    const long hit = hitTest(wnd, p);
    if (quiet_ && hit != quiet_) quiet_ = 0;
    if (shown_ && shown_->kind != Kind::Demand) {
        if (hit == shown_->tool && shown_->wnd == wnd) {
            if (shown_->kind == Kind::Track) {
                const Placement before = shown_->placement;
                shown_->anchor = cursorAnchor(settings.alignment == kAlignCursor);
                if (lay(*shown_)) {
                    const Placement& now = shown_->placement;
                    if (std::equal(std::begin(now.shape.stemPoints), std::end(now.shape.stemPoints),
                                   std::begin(before.shape.stemPoints),
                                   [](POINT a, POINT b) { return a.x == b.x && a.y == b.y; }) &&
                        now.side == before.side)
                        popup_.moveTo(now.topLeft, *shown_->surface);
                    else
                        frame(1.0);
                }
            } else {
                startDuration();
            }
            return;
        }
        hideNow();
        if (hit && settings.showMode != kShowOnDemand) startPending(wnd, hit, settings.delay / 5);
        return;
    }
    if (shown_ || settings.showMode == kShowOnDemand) return;   // an on-demand tip: hover waits
    if (hit && hit != quiet_) startPending(wnd, hit, hit == pendingTool_ ? pendingDelay_ : settings.delay);
    else cancelPending();
}

void Controller::onLeave(HWND wnd) {
    erase(leaveRequested_, wnd);
    if (pendingWnd_ == wnd) cancelPending();
    if (shown_ && shown_->wnd == wnd && shown_->kind != Kind::Demand) hideNow();
    if (const Tool* q = find(quiet_)) {
        if (q->wnd == wnd) quiet_ = 0;
    }
}

void Controller::onDestroy(HWND wnd) {
    std::vector<long> ids;
    for (const Tool& t : tools_)
        if (t.wnd == wnd) ids.push_back(t.id);
    for (long id : ids) removeTool(id);   // the last one queues the detach: we are inside the engine
}

void Controller::popupDetach(HWND wnd) {
    if (contains(detachPosted_, wnd)) detachWindow(wnd);
}

void Controller::popupTimer(UINT_PTR id) {
    ComPtr<IUnknown> keep(owner_);   // a handler may let the object go
    switch (id) {
    case kDelayTimer:
        onDelay();
        break;
    case kDurationTimer:
        popup_.killTimer(kDurationTimer);
        if (shown_) {
            const long tool = shown_->kind == Kind::Demand ? 0 : shown_->tool;
            hideNow();
            if (tool) quiet_ = tool;
        }
        break;
    case kFrameTimer:
        onFrame();
        break;
    default:
        break;
    }
}

// ---------------------------------------------------------------- showing

void Controller::startPending(HWND wnd, long tool, long ms) {
    pendingWnd_ = wnd;
    pendingTool_ = tool;
    pendingDelay_ = ms;
    if (ms <= 0) {
        popup_.killTimer(kDelayTimer);
        onDelay();
    } else {
        popup_.setTimer(kDelayTimer, static_cast<UINT>(ms));
    }
}

void Controller::cancelPending() {
    popup_.killTimer(kDelayTimer);
    pendingWnd_ = nullptr;
    pendingTool_ = 0;
}

void Controller::onDelay() {
    popup_.killTimer(kDelayTimer);
    const Tool* t = find(pendingTool_);
    if (!t || !settings.enabled) return cancelPending();
    // The pointer must still rest on the tool.
    POINT p;
    GetCursorPos(&p);
    POINT client = p;
    ScreenToClient(t->wnd, &client);
    const RECT r = toolRect(*t);
    if (WindowFromPoint(p) != t->wnd || !PtInRect(&r, client)) return cancelPending();
    const bool tracking = settings.showMode == kShowTrackCursor;
    Anchor a;
    if (tracking || settings.alignment == kAlignCursor) {
        a = cursorAnchor(settings.alignment == kAlignCursor);
    } else {
        a.rect = r;
        MapWindowPoints(t->wnd, nullptr, reinterpret_cast<POINT*>(&a.rect), 2);
    }
    const long tool = t->id;
    const HWND wnd = t->wnd;
    const bool shown = showNow(tracking ? Kind::Track : Kind::Hover, tool, wnd, a);
    // Without text nothing happens until the next move.
    if (!shown && pendingTool_ == tool) pendingTool_ = 0, pendingWnd_ = nullptr;
}

Anchor Controller::cursorAnchor(bool pointerBelow) const {
    POINT p;
    GetCursorPos(&p);
    Anchor a;
    a.rect = RECT{p.x, p.y, p.x, p.y};
    a.cursor = pointerBelow;
    if (pointerBelow) a.cursorBelow = cursorHeightBelowHotspot();
    return a;
}

bool Controller::showAt(POINT screen, HWND wnd) {
    Anchor a;
    a.rect = RECT{screen.x, screen.y, screen.x, screen.y};
    a.cursor = settings.alignment == kAlignCursor;   // the top-left, or the stem tip, on the point
    cancelPending();
    return showNow(Kind::Demand, 0, wnd, a);
}

long Controller::effectiveAnimation() const {
    long a = settings.animation;
    if (a == kAnimateSystem)
        a = !systemFlag(SPI_GETTOOLTIPANIMATION) ? kAnimateNone
            : systemFlag(SPI_GETTOOLTIPFADE)     ? kAnimateFade
                                                 : kAnimateSlide;
    if (a == kAnimateFade && !popup_.layered()) a = kAnimateNone;   // a plain popup has no alpha
    return a;
}

LOGFONTW Controller::currentFont() const {
    LOGFONTW f{};
    HFONT h = nullptr;
    if (font && SUCCEEDED(font->get_hFont(&h)) && h && GetObjectW(h, sizeof f, &f)) return f;
    return defaultFont();
}

bool Controller::lay(Shown& s) {
    Look& look = settings.look;
    look.font = currentFont();
    Fonts fonts(look.font);
    WindowDc screen(nullptr);
    if (!fonts.normal() || !screen.get()) return false;
    s.content = measure(screen.get(), fonts, look, s.text);
    const POINT at{s.anchor.rect.left, s.anchor.rect.top};
    s.placement = place(s.content.body, look.balloon, settings.alignment, s.anchor, workAreaAt(at));
    auto surface = render(look, fonts, s.text, s.content, s.placement.shape);
    if (!surface) return false;
    s.surface = std::move(surface);
    return true;
}

bool Controller::showNow(Kind kind, long tool, HWND wnd, const Anchor& anchor) {
    hideNow();
    const unsigned showing = ++generation_;
    if (!settings.enabled || !popup_.create()) return false;
    auto s = std::make_unique<Shown>();
    s->kind = kind;
    s->tool = tool;
    s->wnd = wnd;
    s->anchor = anchor;
    const Tool* t = find(tool);
    s->text = t ? t->text : settings.text;
    if (s->text.empty()) {
        if (events_) {
            Scope e(inEvent_);
            events_->requireTipText(wnd, s->text);
        }
        if (showing != generation_ || s->text.empty()) return false;
    }
    settings.look.fore = static_cast<COLORREF>(translateColor(settings.foreColor));
    settings.look.back = static_cast<COLORREF>(translateColor(settings.backColor));
    if (!lay(*s)) return false;
    s->animation = effectiveAnimation();
    long duration = s->animation == kAnimateNone ? 0 : settings.animationDuration;
    if (events_) {
        Scope e(inEvent_);
        events_->beforeShow(duration);
    }
    if (showing != generation_) return false;   // called off by the handler
    s->duration = std::max(0L, duration);
    if (s->animation == kAnimateNone) s->duration = 0;
    s->start = GetTickCount();
    shown_ = std::move(s);
    if (shown_->kind != Kind::Track) startDuration();
    if (shown_->duration == 0) {
        frame(1.0);
        if (events_) events_->show();
    } else {
        frame(0.0);
        popup_.setTimer(kFrameTimer, kFrameInterval);
    }
    return true;
}

void Controller::onFrame() {
    if (!shown_) return popup_.killTimer(kFrameTimer);
    const double p = std::min(1.0, static_cast<double>(GetTickCount() - shown_->start) / shown_->duration);
    frame(p);
    if (p >= 1.0) {
        popup_.killTimer(kFrameTimer);
        if (events_) events_->show();
    }
}

// One frame at progress p: fade by constant alpha, unroll from the anchor's side.
void Controller::frame(double p) {
    Shown& s = *shown_;
    const SIZE size = s.surface->size();
    RECT part{0, 0, size.cx, size.cy};
    BYTE alpha = 255;
    if (p < 1.0 && s.animation == kAnimateFade) {
        alpha = static_cast<BYTE>(std::lround(255 * p));
    } else if (p < 1.0 && s.animation == kAnimateSlide) {
        const Side side = s.placement.side;
        const bool vertical = side == Side::Top || side == Side::Bottom;
        const long extent = std::max(1L, std::lround((vertical ? size.cy : size.cx) * p));
        switch (side) {
        case Side::Bottom: part.top = size.cy - extent; break;
        case Side::Left: part.right = extent; break;
        case Side::Right: part.left = size.cx - extent; break;
        default: part.bottom = extent; break;
        }
    }
    popup_.show(*s.surface, shapeRegion(s.content, s.placement.shape, settings.look.balloon), s.placement.topLeft,
                part, alpha);
}

void Controller::startDuration() {
    if (settings.duration > 0) popup_.setTimer(kDurationTimer, static_cast<UINT>(settings.duration));
    else popup_.killTimer(kDurationTimer);
}

void Controller::hideNow() {
    ++generation_;
    popup_.killTimer(kFrameTimer);
    popup_.killTimer(kDurationTimer);
    if (!shown_) return;
    popup_.hide();
    shown_.reset();
    if (events_) events_->hide();
}

void Controller::hideTip() {
    const long tool = currentTool();
    cancelPending();
    hideNow();
    if (tool) quiet_ = tool;
}

void Controller::setEnabled(bool enabled) {
    settings.enabled = enabled;
    if (!enabled) {
        cancelPending();
        hideNow();
    }
}

long Controller::currentTool() const {
    if (shown_ && shown_->kind != Kind::Demand) return shown_->tool;
    return pendingTool_;
}

// ------------------------------------------------------------ DrawTip, MeasureTip

SIZE Controller::measureTip(const std::wstring& text) {
    if (text.empty()) return SIZE{0, 0};
    Look& look = settings.look;
    look.font = currentFont();
    Fonts fonts(look.font);
    WindowDc screen(nullptr);
    if (!fonts.normal() || !screen.get()) return SIZE{0, 0};
    const Content c = measure(screen.get(), fonts, look, text);
    return shapeOf(c.body, look.balloon, stemSideOf(settings.alignment), kCursorStemOffset).window;
}

bool Controller::draw(HDC dc, int x, int y, const std::wstring& text) {
    if (text.empty() || !dc) return false;
    Look& look = settings.look;
    look.font = currentFont();
    look.fore = static_cast<COLORREF>(translateColor(settings.foreColor));
    look.back = static_cast<COLORREF>(translateColor(settings.backColor));
    Fonts fonts(look.font);
    WindowDc screen(nullptr);
    if (!fonts.normal() || !screen.get()) return false;
    const Content c = measure(screen.get(), fonts, look, text);
    const Shape shape = shapeOf(c.body, look.balloon, stemSideOf(settings.alignment), kCursorStemOffset);
    auto surface = render(look, fonts, text, c, shape);
    return surface && compose(dc, x, y, *surface);
}

}  // namespace tova::tip
