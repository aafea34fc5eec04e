// Tooltip: an owner-drawn tip for windows and rectangles of windows ("tools"),
// shown on hover, following the pointer or on demand, with title, icon,
// balloon shape and animation. A client of the subclassing engine, like
// MouseTrack. The members check and convert; tooltip_control does the work.
#pragma once

#include "subclass_face.h"
#include "tooltip_control.h"

namespace tova {

class Tooltip final : public Object<Tooltip, _Tooltip>, private tip::Controller::Events {
public:
    static const ClassIdentity kClass;

    // Tools
    STDMETHODIMP AddTool(LONG hWnd, BSTR Text, LONG* pRet) override;
    STDMETHODIMP AddTool2(LONG hWnd, TOVA_RECT* pRECT, BSTR Text, LONG* pRet) override;
    STDMETHODIMP AddTool3(LONG hWnd, LONG Left, LONG Top, LONG Right, LONG Bottom, BSTR Text, LONG* pRet) override;
    STDMETHODIMP AddTool4(LONG hWnd, _Rectangle* Rect, BSTR Text, LONG* pRet) override;
    STDMETHODIMP RemoveTool(LONG ToolID, VARIANT_BOOL* pRet) override;
    STDMETHODIMP RemoveAllTools() override;
    STDMETHODIMP get_ToolText(LONG ToolID, BSTR* pRet) override;
    STDMETHODIMP put_ToolText(LONG ToolID, BSTR Text) override;
    STDMETHODIMP MoveTool(LONG ToolID, TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    // Content and look
    STDMETHODIMP get_Text(BSTR* pRet) override;
    STDMETHODIMP put_Text(BSTR Text) override;
    STDMETHODIMP get_Title(BSTR* pRet) override;
    STDMETHODIMP put_Title(BSTR Title) override;
    STDMETHODIMP get_Icon(TooltipIconConstants* pRet) override;
    STDMETHODIMP put_Icon(TooltipIconConstants Icon) override;
    STDMETHODIMP get_IconHandle(LONG* pRet) override;
    STDMETHODIMP put_IconHandle(LONG IconHandle) override;
    STDMETHODIMP get_MaxWidth(LONG* pRet) override;
    STDMETHODIMP put_MaxWidth(LONG MaxWidth) override;
    STDMETHODIMP get_Font(IFontDisp** pRet) override;
    STDMETHODIMP putref_Font(IFontDisp* Font) override;
    STDMETHODIMP get_ForeColor(LONG* pRet) override;
    STDMETHODIMP put_ForeColor(LONG ForeColor) override;
    STDMETHODIMP get_BackColor(LONG* pRet) override;
    STDMETHODIMP put_BackColor(LONG BackColor) override;
    // Behaviour
    STDMETHODIMP get_ShowMode(TooltipShowModeConstants* pRet) override;
    STDMETHODIMP put_ShowMode(TooltipShowModeConstants ShowMode) override;
    STDMETHODIMP get_Alignment(TooltipAlignmentConstants* pRet) override;
    STDMETHODIMP put_Alignment(TooltipAlignmentConstants Alignment) override;
    STDMETHODIMP get_Balloon(VARIANT_BOOL* pRet) override;
    STDMETHODIMP put_Balloon(VARIANT_BOOL Balloon) override;
    STDMETHODIMP get_Animation(TooltipAnimationConstants* pRet) override;
    STDMETHODIMP put_Animation(TooltipAnimationConstants Animation) override;
    STDMETHODIMP get_AnimationDuration(LONG* pRet) override;
    STDMETHODIMP put_AnimationDuration(LONG AnimationDuration) override;
    STDMETHODIMP get_Delay(LONG* pRet) override;
    STDMETHODIMP put_Delay(LONG Delay) override;
    STDMETHODIMP get_Duration(LONG* pRet) override;
    STDMETHODIMP put_Duration(LONG Duration) override;
    STDMETHODIMP get_Enabled(VARIANT_BOOL* pRet) override;
    STDMETHODIMP put_Enabled(VARIANT_BOOL Enabled) override;
    // Showing and state
    STDMETHODIMP ShowTip(LONG X, LONG Y, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ShowTip2(POINTAPI* pPOINT, LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP HideTip() override;
    STDMETHODIMP get_Visible(VARIANT_BOOL* pRet) override;
    STDMETHODIMP get_hWnd(LONG* pRet) override;
    STDMETHODIMP get_CurrentTool(LONG* pRet) override;
    STDMETHODIMP DrawTip(LONG hDC, LONG X, LONG Y, VARIANT Text, VARIANT_BOOL* pRet) override;
    STDMETHODIMP MeasureTip(LONG* Width, LONG* Height, VARIANT Text, VARIANT_BOOL* pRet) override;

    void subclassMessage(HWND wnd, UINT message, WPARAM wParam, LPARAM lParam) {
        control_.windowProc(wnd, message, wParam, lParam);
    }

private:
    friend class Object<Tooltip, _Tooltip>;
    Tooltip();
    ~Tooltip() override = default;
    void* queryOther(REFIID riid) { return riid == IID__ISubclass ? static_cast<_ISubclass*>(&face_) : nullptr; }

    void requireTipText(HWND wnd, std::wstring& text) override;
    void beforeShow(long& duration) override;
    void show() override;
    void hide() override;

    long addTool(LONG hWnd, const RECT* rect, _Rectangle* follow, BSTR text);
    bool showTip(POINT p, LONG hWnd);
    std::wstring textOr(const VARIANT& text) const;

    SubclassFace<Tooltip> face_;
    tip::Controller control_;
};

}  // namespace tova
