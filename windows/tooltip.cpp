#include "tooltip.h"

#include "../graphics/gdi_draw.h"

namespace tova {

const ClassIdentity Tooltip::kClass = {L"Tooltip", &CLSID_Tooltip, &IID__Tooltip, &DIID___Tooltip};

HRESULT createTooltip(REFIID riid, void** ppv) { return Tooltip::create(riid, ppv); }

namespace {

constexpr DISPID kRequireTipText = 1, kBeforeShow = 2, kShow = 3, kHide = 4;
constexpr long kInfoText = static_cast<long>(0x80000017), kInfoBackground = static_cast<long>(0x80000018);

std::wstring str(BSTR s) { return s ? std::wstring(s, SysStringLen(s)) : std::wstring(); }

long inRange(long v, long low, long high) {
    if (v < low || v > high) raise(kInvalidArgument);
    return v;
}

long colour(long v) {
    if (translateColor(v) == -1) raise(kInvalidArgument);
    return v;
}

template <class T>
HRESULT get(T* pRet, T value) {
    return guard([&] { *required(pRet) = value; });
}

HRESULT getString(BSTR* pRet, const std::wstring& s) {
    return guard([&] { *required(pRet) = Bstr(s).detach(); });
}

}  // namespace

Tooltip::Tooltip() : face_(this), control_(&face_, static_cast<_Tooltip*>(this), this) {
    control_.settings.foreColor = kInfoText;
    control_.settings.backColor = kInfoBackground;
}

// ------------------------------------------------------------------ events

void Tooltip::requireTipText(HWND wnd, std::wstring& text) {
    Bstr s(text);   // a handler may replace it: what it holds last is freed, even on failure
    EventArgs args;
    args.val(fromHandle(wnd)).ref(s.ref());
    raiseEvent(kRequireTipText, args);
    text = s.str();
}

void Tooltip::beforeShow(long& duration) {
    EventArgs args;
    args.ref(duration);
    raiseEvent(kBeforeShow, args);
}

void Tooltip::show() {
    EventArgs args;
    raiseEvent(kShow, args);
}

void Tooltip::hide() {
    EventArgs args;
    raiseEvent(kHide, args);
}

// ------------------------------------------------------------------- tools

long Tooltip::addTool(LONG hWnd, const RECT* rect, _Rectangle* follow, BSTR text) {
    if (rect && IsRectEmpty(rect)) raise(kInvalidArgument);
    return control_.addTool(toHandle<HWND>(hWnd), rect, ComPtr<_Rectangle>(follow), str(text));
}

STDMETHODIMP Tooltip::AddTool(LONG hWnd, BSTR Text, LONG* pRet) {
    return guard([&] { *required(pRet) = addTool(hWnd, nullptr, nullptr, Text); });
}

STDMETHODIMP Tooltip::AddTool2(LONG hWnd, TOVA_RECT* pRECT, BSTR Text, LONG* pRet) {
    return guard([&] {
        const RECT r = toWin32(*required(pRECT));
        *required(pRet) = addTool(hWnd, &r, nullptr, Text);
    });
}

STDMETHODIMP Tooltip::AddTool3(LONG hWnd, LONG Left, LONG Top, LONG Right, LONG Bottom, BSTR Text, LONG* pRet) {
    return guard([&] {
        const RECT r{Left, Top, Right, Bottom};
        *required(pRet) = addTool(hWnd, &r, nullptr, Text);
    });
}

STDMETHODIMP Tooltip::AddTool4(LONG hWnd, _Rectangle* Rect, BSTR Text, LONG* pRet) {
    return guard([&] {
        if (!Rect) raise(kObjectNotSet);
        *required(pRet) = addTool(hWnd, nullptr, Rect, Text);
    });
}

STDMETHODIMP Tooltip::RemoveTool(LONG ToolID, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(control_.removeTool(ToolID)); });
}

STDMETHODIMP Tooltip::RemoveAllTools() { return guard([&] { control_.removeAllTools(); }); }

STDMETHODIMP Tooltip::get_ToolText(LONG ToolID, BSTR* pRet) {
    return guard([&] {
        if (!control_.hasTool(ToolID)) raise(kInvalidArgument);
        *required(pRet) = Bstr(control_.toolText(ToolID)).detach();
    });
}

STDMETHODIMP Tooltip::put_ToolText(LONG ToolID, BSTR Text) {
    return guard([&] {
        if (!control_.hasTool(ToolID)) raise(kInvalidArgument);
        control_.setToolText(ToolID, str(Text));
    });
}

STDMETHODIMP Tooltip::MoveTool(LONG ToolID, TOVA_RECT* pRECT, VARIANT_BOOL* pRet) {
    return guard([&] {
        const RECT r = toWin32(*required(pRECT));
        if (control_.hasTool(ToolID) && IsRectEmpty(&r)) raise(kInvalidArgument);
        *required(pRet) = toVB(control_.moveTool(ToolID, r));
    });
}

// --------------------------------------------------------- content and look

STDMETHODIMP Tooltip::get_Text(BSTR* pRet) { return getString(pRet, control_.settings.text); }
STDMETHODIMP Tooltip::put_Text(BSTR Text) { return guard([&] { control_.settings.text = str(Text); }); }
STDMETHODIMP Tooltip::get_Title(BSTR* pRet) { return getString(pRet, control_.settings.look.title); }
STDMETHODIMP Tooltip::put_Title(BSTR Title) { return guard([&] { control_.settings.look.title = str(Title); }); }

STDMETHODIMP Tooltip::get_Icon(TooltipIconConstants* pRet) {
    return get(pRet, static_cast<TooltipIconConstants>(control_.settings.look.icon));
}

STDMETHODIMP Tooltip::put_Icon(TooltipIconConstants Icon) {
    return guard([&] { control_.settings.look.icon = inRange(Icon, tovaTipIconNone, tovaTipIconCustom); });
}

STDMETHODIMP Tooltip::get_IconHandle(LONG* pRet) { return get(pRet, fromHandle(control_.settings.look.customIcon)); }

STDMETHODIMP Tooltip::put_IconHandle(LONG IconHandle) {
    return guard([&] {
        tip::Look& look = control_.settings.look;
        look.customIcon = toHandle<HICON>(IconHandle);
        look.icon = IconHandle ? tovaTipIconCustom : tovaTipIconNone;
    });
}

STDMETHODIMP Tooltip::get_MaxWidth(LONG* pRet) { return get(pRet, control_.settings.look.maxWidth); }
STDMETHODIMP Tooltip::put_MaxWidth(LONG MaxWidth) {
    return guard([&] { control_.settings.look.maxWidth = inRange(MaxWidth, 0, 0x7FFF); });
}

STDMETHODIMP Tooltip::get_Font(IFontDisp** pRet) {
    return guard([&] {
        required(pRet);
        *pRet = nullptr;
        if (!control_.font) {
            // The default as an object of the client's, so that changing it changes the tip.
            LOGFONTW f = tip::defaultFont();
            WindowDc screen(nullptr);
            const int dpi = screen.get() ? GetDeviceCaps(screen.get(), LOGPIXELSY) : 96;
            FONTDESC d{sizeof d, f.lfFaceName, {}, static_cast<SHORT>(f.lfWeight), f.lfCharSet, f.lfItalic,
                       f.lfUnderline, f.lfStrikeOut};
            d.cySize.int64 = static_cast<LONGLONG>(MulDiv(f.lfHeight < 0 ? -f.lfHeight : f.lfHeight, 72 * 10000, dpi));
            ComPtr<IFont> font;
            if (FAILED(OleCreateFontIndirect(&d, IID_IFont, font.putVoid()))) raise(kOutOfMemory);
            control_.font = font;
        }
        control_.font->QueryInterface(IID_IFontDisp, reinterpret_cast<void**>(pRet));
    });
}

STDMETHODIMP Tooltip::putref_Font(IFontDisp* Font) {
    return guard([&] {
        ComPtr<IFont> f;
        if (Font && FAILED(Font->QueryInterface(IID_IFont, f.putVoid()))) raise(kInvalidArgument);
        control_.font = f;
    });
}

STDMETHODIMP Tooltip::get_ForeColor(LONG* pRet) { return get(pRet, control_.settings.foreColor); }
STDMETHODIMP Tooltip::put_ForeColor(LONG ForeColor) {
    return guard([&] { control_.settings.foreColor = colour(ForeColor); });
}
STDMETHODIMP Tooltip::get_BackColor(LONG* pRet) { return get(pRet, control_.settings.backColor); }
STDMETHODIMP Tooltip::put_BackColor(LONG BackColor) {
    return guard([&] { control_.settings.backColor = colour(BackColor); });
}

// --------------------------------------------------------------- behaviour

STDMETHODIMP Tooltip::get_ShowMode(TooltipShowModeConstants* pRet) {
    return get(pRet, static_cast<TooltipShowModeConstants>(control_.settings.showMode));
}
STDMETHODIMP Tooltip::put_ShowMode(TooltipShowModeConstants ShowMode) {
    return guard([&] {
        control_.settings.showMode = inRange(ShowMode, tovaTipShowOnHover, tovaTipShowTrackCursor);
    });
}

STDMETHODIMP Tooltip::get_Alignment(TooltipAlignmentConstants* pRet) {
    return get(pRet, static_cast<TooltipAlignmentConstants>(control_.settings.alignment));
}
STDMETHODIMP Tooltip::put_Alignment(TooltipAlignmentConstants Alignment) {
    return guard([&] { control_.settings.alignment = inRange(Alignment, tovaTipAlignCursor, tovaTipAlignLeft); });
}

STDMETHODIMP Tooltip::get_Balloon(VARIANT_BOOL* pRet) { return get(pRet, toVB(control_.settings.look.balloon)); }
STDMETHODIMP Tooltip::put_Balloon(VARIANT_BOOL Balloon) {
    return guard([&] { control_.settings.look.balloon = fromVB(Balloon); });
}

STDMETHODIMP Tooltip::get_Animation(TooltipAnimationConstants* pRet) {
    return get(pRet, static_cast<TooltipAnimationConstants>(control_.settings.animation));
}
STDMETHODIMP Tooltip::put_Animation(TooltipAnimationConstants Animation) {
    return guard([&] {
        control_.settings.animation = inRange(Animation, tovaTipAnimateSystem, tovaTipAnimateSlide);
    });
}

STDMETHODIMP Tooltip::get_AnimationDuration(LONG* pRet) { return get(pRet, control_.settings.animationDuration); }
STDMETHODIMP Tooltip::put_AnimationDuration(LONG AnimationDuration) {
    return guard([&] { control_.settings.animationDuration = inRange(AnimationDuration, 0, 0x7FFFFFFF); });
}

STDMETHODIMP Tooltip::get_Delay(LONG* pRet) { return get(pRet, control_.settings.delay); }
STDMETHODIMP Tooltip::put_Delay(LONG Delay) {
    return guard([&] { control_.settings.delay = inRange(Delay, 0, 0x7FFFFFFF); });
}

STDMETHODIMP Tooltip::get_Duration(LONG* pRet) { return get(pRet, control_.settings.duration); }
STDMETHODIMP Tooltip::put_Duration(LONG Duration) {
    return guard([&] { control_.settings.duration = inRange(Duration, 0, 0x7FFFFFFF); });
}

STDMETHODIMP Tooltip::get_Enabled(VARIANT_BOOL* pRet) { return get(pRet, toVB(control_.settings.enabled)); }
STDMETHODIMP Tooltip::put_Enabled(VARIANT_BOOL Enabled) {
    return guard([&] { control_.setEnabled(fromVB(Enabled)); });
}

// --------------------------------------------------------- showing and state

bool Tooltip::showTip(POINT p, LONG hWnd) {
    if (control_.inEvent()) raise(kCannotPerform);
    const HWND wnd = toHandle<HWND>(hWnd);
    if (wnd) {
        if (!IsWindow(wnd)) return false;
        ClientToScreen(wnd, &p);
    }
    return control_.showAt(p, wnd);
}

STDMETHODIMP Tooltip::ShowTip(LONG X, LONG Y, LONG hWnd, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(showTip(POINT{X, Y}, hWnd)); });
}

STDMETHODIMP Tooltip::ShowTip2(POINTAPI* pPOINT, LONG hWnd, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pPOINT);
        *required(pRet) = toVB(showTip(POINT{pPOINT->X, pPOINT->Y}, hWnd));
    });
}

STDMETHODIMP Tooltip::HideTip() { return guard([&] { control_.hideTip(); }); }
STDMETHODIMP Tooltip::get_Visible(VARIANT_BOOL* pRet) { return get(pRet, toVB(control_.visible())); }
STDMETHODIMP Tooltip::get_hWnd(LONG* pRet) { return get(pRet, fromHandle(control_.popupWindow())); }
STDMETHODIMP Tooltip::get_CurrentTool(LONG* pRet) { return get(pRet, control_.currentTool()); }

std::wstring Tooltip::textOr(const VARIANT& text) const {
    if (isMissing(&text)) return control_.settings.text;
    Variant s;
    if (FAILED(VariantChangeType(&s, const_cast<VARIANT*>(&text), 0, VT_BSTR))) raise(kTypeMismatch);
    return str(V_BSTR(&s));
}

STDMETHODIMP Tooltip::DrawTip(LONG hDC, LONG X, LONG Y, VARIANT Text, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(control_.draw(toHandle<HDC>(hDC), X, Y, textOr(Text))); });
}

STDMETHODIMP Tooltip::MeasureTip(LONG* Width, LONG* Height, VARIANT Text, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(Width);
        required(Height);
        const SIZE s = control_.measureTip(textOr(Text));
        *Width = s.cx;
        *Height = s.cy;
        *required(pRet) = toVB(s.cx > 0);
    });
}

}  // namespace tova
