#include "rectangle.h"

#include "../graphics/gdi_draw.h"
#include "../windows/api_draw.h"
#include "rect_math.h"
#include "tag.h"

namespace tova {

const ClassIdentity Rectangle::kClass = {L"Rectangle", &CLSID_Rectangle, &IID__Rectangle, &DIID___Rectangle};

HRESULT createRectangle(REFIID riid, void** ppv) { return Rectangle::create(riid, ppv); }

namespace {

constexpr DISPID kChanged = 1;

// The edges of another rectangle object; nullptr gives false.
bool edgesOf(_Rectangle* other, TOVA_RECT& out) {
    if (!other) return false;
    HRESULT hr = other->get_RECT(&out);
    if (FAILED(hr)) throw Raised{hr};
    return true;
}

template <class T>
T valueOr(const T* p, T fallback) { return p ? *p : fallback; }

}  // namespace

template <class F>
void Rectangle::change(F&& move) {
    TOVA_RECT previous = edges_;
    move(edges_);
    if (rect::equal(previous, edges_) || !hasSinks()) return;
    EventArgs args;
    args.ref(previous);
    raiseEvent(kChanged, args);
}

// ------------------------------------------------------------------ edges

STDMETHODIMP Rectangle::get_RECT(TOVA_RECT* pRet) {
    return guard([&] { *required(pRet) = edges_; });
}

STDMETHODIMP Rectangle::get_Left(LONG* pRet) { return guard([&] { *required(pRet) = edges_.Left; }); }
STDMETHODIMP Rectangle::get_Top(LONG* pRet) { return guard([&] { *required(pRet) = edges_.Top; }); }
STDMETHODIMP Rectangle::get_Right(LONG* pRet) { return guard([&] { *required(pRet) = edges_.Right; }); }
STDMETHODIMP Rectangle::get_Bottom(LONG* pRet) { return guard([&] { *required(pRet) = edges_.Bottom; }); }

STDMETHODIMP Rectangle::put_Left(LONG* v) {
    return guard([&] { long x = *required(v); change([&](TOVA_RECT& r) { r.Left = x; }); });
}
STDMETHODIMP Rectangle::put_Top(LONG* v) {
    return guard([&] { long x = *required(v); change([&](TOVA_RECT& r) { r.Top = x; }); });
}
STDMETHODIMP Rectangle::put_Right(LONG* v) {
    return guard([&] { long x = *required(v); change([&](TOVA_RECT& r) { r.Right = x; }); });
}
STDMETHODIMP Rectangle::put_Bottom(LONG* v) {
    return guard([&] { long x = *required(v); change([&](TOVA_RECT& r) { r.Bottom = x; }); });
}

STDMETHODIMP Rectangle::get_Width(LONG* pRet) {
    return guard([&] { *required(pRet) = edges_.Right - edges_.Left; });
}
STDMETHODIMP Rectangle::get_Height(LONG* pRet) {
    return guard([&] { *required(pRet) = edges_.Bottom - edges_.Top; });
}

// A negative size is ignored silently.
STDMETHODIMP Rectangle::put_Width(LONG* v) {
    return guard([&] {
        long w = *required(v);
        if (w >= 0) change([&](TOVA_RECT& r) { r.Right = r.Left + w; });
    });
}
STDMETHODIMP Rectangle::put_Height(LONG* v) {
    return guard([&] {
        long h = *required(v);
        if (h >= 0) change([&](TOVA_RECT& r) { r.Bottom = r.Top + h; });
    });
}

STDMETHODIMP Rectangle::get_MidX(LONG* pRet) {
    return guard([&] { *required(pRet) = rect::mid(edges_.Left, edges_.Right); });
}
STDMETHODIMP Rectangle::get_MidY(LONG* pRet) {
    return guard([&] { *required(pRet) = rect::mid(edges_.Top, edges_.Bottom); });
}
STDMETHODIMP Rectangle::get_MidPoint(POINTAPI* pRet) {
    return guard([&] {
        *required(pRet) = POINTAPI{rect::mid(edges_.Left, edges_.Right), rect::mid(edges_.Top, edges_.Bottom)};
    });
}

// -------------------------------------------------------------------- Tag

STDMETHODIMP Rectangle::get_Tag(VARIANT* pRet) { return guard([&] { readTag(tag_, pRet); }); }
STDMETHODIMP Rectangle::put_Tag(VARIANT* Tag) { return guard([&] { storeTag(tag_, Tag); }); }
STDMETHODIMP Rectangle::putref_Tag(VARIANT* Tag) { return put_Tag(Tag); }

// ----------------------------------------------------------------- setting

STDMETHODIMP Rectangle::SetRectangle(TOVA_RECT* pRECT) {
    return guard([&] {
        TOVA_RECT n = *required(pRECT);
        change([&](TOVA_RECT& r) { r = n; });
    });
}

STDMETHODIMP Rectangle::SetRectangle2(_Rectangle* other) {
    return guard([&] {
        TOVA_RECT n;
        if (edgesOf(other, n)) change([&](TOVA_RECT& r) { r = n; });
    });
}

STDMETHODIMP Rectangle::SetRectangle3(LONG* Left, LONG* Top, LONG* Right, LONG* Bottom) {
    return guard([&] {
        TOVA_RECT n{*required(Left), *required(Top), *required(Right), *required(Bottom)};
        change([&](TOVA_RECT& r) { r = n; });
    });
}

STDMETHODIMP Rectangle::SetRectangle4(LONG* Left, LONG* Top, LONG* Width, LONG* Height) {
    return guard([&] {
        long l = *required(Left), t = *required(Top), w = *required(Width), h = *required(Height);
        if (w < 0 || h < 0) return;  // nothing changes, not even Left and Top
        change([&](TOVA_RECT& r) { r = TOVA_RECT{l, t, l + w, t + h}; });
    });
}

STDMETHODIMP Rectangle::Reset() {
    return guard([&] { change([](TOVA_RECT& r) { r = TOVA_RECT{0, 0, 0, 0}; }); });
}

STDMETHODIMP Rectangle::Offset(LONG* dX, LONG* dy) {
    return guard([&] {
        long x = valueOr(dX, 0L), y = valueOr(dy, 0L);
        change([&](TOVA_RECT& r) { r.Left += x; r.Right += x; r.Top += y; r.Bottom += y; });
    });
}

STDMETHODIMP Rectangle::Inflate(LONG* dX, LONG* dy) {
    return guard([&] {
        long x = valueOr(dX, 0L), y = valueOr(dy, 0L);
        change([&](TOVA_RECT& r) { r.Left -= x; r.Right += x; r.Top -= y; r.Bottom += y; });
    });
}

STDMETHODIMP Rectangle::Deflate(LONG* dX, LONG* dy) {
    return guard([&] {
        long x = valueOr(dX, 0L), y = valueOr(dy, 0L);
        change([&](TOVA_RECT& r) { r.Left += x; r.Right -= x; r.Top += y; r.Bottom -= y; });
    });
}

STDMETHODIMP Rectangle::ScaleRectangle(float* Zoom) {
    return guard([&] {
        float z = *required(Zoom);
        TOVA_RECT scaled = edges_;
        if (rect::scale(scaled, z)) change([&](TOVA_RECT& r) { r = scaled; });
    });
}

// ----------------------------------------------------------------- fitting

STDMETHODIMP Rectangle::FitToDC(LONG hDC, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        HDC dc = toHandle<HDC>(hDC);
        if (!dc) return;
        HGDIOBJ bitmap = GetCurrentObject(dc, OBJ_BITMAP);
        BITMAP bm{};
        if (!bitmap || GetObjectW(bitmap, sizeof bm, &bm) == 0) return;
        change([&](TOVA_RECT& r) { r = TOVA_RECT{0, 0, bm.bmWidth, bm.bmHeight}; });
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP Rectangle::FitToWindow(LONG hWnd, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        RECT rc;
        if (!GetWindowRect(toHandle<HWND>(hWnd), &rc)) return;
        change([&](TOVA_RECT& r) { r = fromWin32(rc); });
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP Rectangle::FitToClientWindow(LONG hWnd, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        RECT rc;
        if (!GetClientRect(toHandle<HWND>(hWnd), &rc)) return;
        change([&](TOVA_RECT& r) { r = fromWin32(rc); });
        *pRet = VARIANT_TRUE;
    });
}

// ------------------------------------------------------------- state stack
// Last in, first out, whatever the published help strings say.

STDMETHODIMP Rectangle::PushState(VARIANT_BOOL* pRet) {
    return guard([&] {
        stack_.push_back(edges_);
        *required(pRet) = VARIANT_TRUE;
    });
}

STDMETHODIMP Rectangle::PopState(VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        if (stack_.empty()) return;
        TOVA_RECT saved = stack_.back();
        // The handler of Changed runs while the entry is still on the stack; it
        // may drop the client's last reference, and the stack is needed after it.
        ComPtr<Rectangle> self(this);
        change([&](TOVA_RECT& r) { r = saved; });
        if (!stack_.empty()) stack_.pop_back();
        if (stack_.empty()) std::vector<TOVA_RECT>().swap(stack_);
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP Rectangle::Peek(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRECT) = TOVA_RECT{0, 0, 0, 0};
        *required(pRet) = toVB(!stack_.empty());
        if (!stack_.empty()) *pRECT = stack_.back();
    });
}

STDMETHODIMP Rectangle::ClearStack() {
    std::vector<TOVA_RECT>().swap(stack_);
    return S_OK;
}

// -------------------------------------------------------------------- tests

STDMETHODIMP Rectangle::IsVisible(LONG hDC, VARIANT_BOOL* pRet) {
    return guard([&] {
        RECT rc = toWin32(edges_);
        *required(pRet) = toVB(RectVisible(toHandle<HDC>(hDC), &rc) != 0);
    });
}

STDMETHODIMP Rectangle::PointInMe(POINTAPI* pPOINT, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(rect::contains(edges_, required(pPOINT)->X, pPOINT->Y)); });
}

STDMETHODIMP Rectangle::PointInMe2(LONG* X, LONG* Y, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(rect::contains(edges_, *required(X), *required(Y))); });
}

STDMETHODIMP Rectangle::Equals(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(rect::equal(edges_, *required(pRECT))); });
}

// Unlike the other "2" members, Equals2 does not check for a missing object:
// passing Nothing raises error 91, as published.
STDMETHODIMP Rectangle::Equals2(_Rectangle* other, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        TOVA_RECT o;
        if (!edgesOf(other, o)) raise(kObjectNotSet);
        *pRet = toVB(rect::equal(edges_, o));
    });
}

STDMETHODIMP Rectangle::Overlaps(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return guard([&] {
        const TOVA_RECT& o = *required(pRECT);
        bool vert = rect::overlapsVert(edges_, o);
        bool horiz = rect::overlapsHoriz(edges_, o);
        *required(pRet) = toVB(vert && horiz);
    });
}

STDMETHODIMP Rectangle::Overlaps2(_Rectangle* other, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        TOVA_RECT o;
        if (edgesOf(other, o)) Overlaps(&o, pRet);
    });
}

STDMETHODIMP Rectangle::OverlapsHoriz(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(rect::overlapsHoriz(edges_, *required(pRECT))); });
}

STDMETHODIMP Rectangle::OverlapsHoriz2(_Rectangle* other, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        TOVA_RECT o;
        if (edgesOf(other, o)) *pRet = toVB(rect::overlapsHoriz(edges_, o));
    });
}

STDMETHODIMP Rectangle::OverlapsVert(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(rect::overlapsVert(edges_, *required(pRECT))); });
}

STDMETHODIMP Rectangle::OverlapsVert2(_Rectangle* other, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        TOVA_RECT o;
        if (edgesOf(other, o)) *pRet = toVB(rect::overlapsVert(edges_, o));
    });
}

STDMETHODIMP Rectangle::Clone(_Rectangle** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        ComPtr<Rectangle> copy = make();
        copy->edges_ = edges_;  // a new object has no sinks: setting its edges raises nothing
        *pRet = copy.detach();
    });
}

// ----------------------------------------------------------------- drawing

STDMETHODIMP Rectangle::Fill(LONG hDC, LONG* Color, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        long color = *required(Color);
        HDC dc = toHandle<HDC>(hDC);
        if (!dc) return;
        // The colour is used as it stands: system colours are not translated here.
        Brush brush(CreateSolidBrush(static_cast<COLORREF>(color)));
        if (!brush) return;
        RECT rc = toWin32(edges_);
        *pRet = toVB(FillRect(dc, &rc, brush.get()) != 0);
    });
}

HRESULT Rectangle::drawShape(int shape, LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle,
                             LONG* BorderWidth, LONG* BackColor, BrushStyleConstants* BackStyle,
                             HatchStyleConstants* Hatch) {
    return guard([&] {
        ShapeStyle s;
        s.borderColor = valueOr(BorderColor, s.borderColor);
        s.borderStyle = BorderStyle ? static_cast<long>(*BorderStyle) : s.borderStyle;
        s.borderWidth = valueOr(BorderWidth, s.borderWidth);
        s.backColor = valueOr(BackColor, s.backColor);
        s.backStyle = BackStyle ? static_cast<long>(*BackStyle) : s.backStyle;
        s.hatch = Hatch ? static_cast<long>(*Hatch) : s.hatch;
        tova::drawShape(static_cast<Shape>(shape), toHandle<HDC>(hDC), toWin32(edges_), s);
    });
}

STDMETHODIMP Rectangle::Draw(LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                             LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) {
    return drawShape(static_cast<int>(Shape::Rectangle), hDC, BorderColor, BorderStyle, BorderWidth, BackColor,
                     BackStyle, Hatch);
}

STDMETHODIMP Rectangle::DrawRound(LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                                  LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) {
    return drawShape(static_cast<int>(Shape::RoundRect), hDC, BorderColor, BorderStyle, BorderWidth, BackColor,
                     BackStyle, Hatch);
}

STDMETHODIMP Rectangle::DrawEllipse(LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                                    LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) {
    return drawShape(static_cast<int>(Shape::Ellipse), hDC, BorderColor, BorderStyle, BorderWidth, BackColor,
                     BackStyle, Hatch);
}

STDMETHODIMP Rectangle::DrawEdge(LONG hDC, EdgeStyleConstants* EdgeStyle, EdgeModeConstants* EdgeMode, LONG* pRet) {
    return guard([&] {
        RECT rc = toWin32(edges_);  // the routine may adjust its copy; the edges stay
        *required(pRet) = drawEdge(toHandle<HDC>(hDC), rc, *required(EdgeStyle), *required(EdgeMode));
    });
}

STDMETHODIMP Rectangle::DrawFocusRect(LONG hDC, LONG* pRet) {
    return guard([&] {
        RECT rc = toWin32(edges_);
        *required(pRet) = ::DrawFocusRect(toHandle<HDC>(hDC), &rc);
    });
}

STDMETHODIMP Rectangle::DrawText(LONG hDC, BSTR* Text, DrawTextFormatConstants* wFormat, LONG* pRet) {
    return guard([&] {
        std::wstring text = Bstr(*required(Text), SysStringLen(*Text)).str();
        const std::wstring original = text;
        long format = *required(wFormat);
        long result = 0;
        change([&](TOVA_RECT& r) {
            RECT rc = toWin32(r);
            result = drawText(toHandle<HDC>(hDC), text, rc, format);
            r = fromWin32(rc);
        });
        if (text != original && !SysReAllocStringLen(Text, text.data(), static_cast<UINT>(text.size())))
            raise(kOutOfMemory);
        *required(pRet) = result;
    });
}

STDMETHODIMP Rectangle::DrawGradient(LONG hDC, LONG* StartColor, LONG* EndColor, VARIANT_BOOL* Vertical) {
    return guard([&] {
        drawGradient(toHandle<HDC>(hDC), toWin32(edges_), *required(StartColor), *required(EndColor),
                     fromVB(valueOr(Vertical, static_cast<VARIANT_BOOL>(VARIANT_FALSE))));
    });
}

}  // namespace tova
