// Rectangle: one integer rectangle with tests, fitting, drawing and a stack of
// saved states. Every change of the edges raises Changed with the edges as
// they were, once per call and only when an edge moved.
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

class Rectangle final : public Object<Rectangle, _Rectangle> {
public:
    static const ClassIdentity kClass;

    const TOVA_RECT& edges() const { return edges_; }

    STDMETHODIMP get_RECT(TOVA_RECT* pRet) override;
    STDMETHODIMP get_Left(LONG* pRet) override;
    STDMETHODIMP put_Left(LONG* Left) override;
    STDMETHODIMP get_Top(LONG* pRet) override;
    STDMETHODIMP put_Top(LONG* Top) override;
    STDMETHODIMP get_Right(LONG* pRet) override;
    STDMETHODIMP put_Right(LONG* Right) override;
    STDMETHODIMP get_Bottom(LONG* pRet) override;
    STDMETHODIMP put_Bottom(LONG* Bottom) override;
    STDMETHODIMP get_Width(LONG* pRet) override;
    STDMETHODIMP put_Width(LONG* Width) override;
    STDMETHODIMP get_Height(LONG* pRet) override;
    STDMETHODIMP put_Height(LONG* Height) override;
    STDMETHODIMP get_Tag(VARIANT* pRet) override;
    STDMETHODIMP put_Tag(VARIANT* Tag) override;
    STDMETHODIMP SetRectangle(TOVA_RECT* pRECT) override;
    STDMETHODIMP SetRectangle2(_Rectangle* other) override;
    STDMETHODIMP SetRectangle3(LONG* Left, LONG* Top, LONG* Right, LONG* Bottom) override;
    STDMETHODIMP SetRectangle4(LONG* Left, LONG* Top, LONG* Width, LONG* Height) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Offset(LONG* dX, LONG* dy) override;
    STDMETHODIMP Inflate(LONG* dX, LONG* dy) override;
    STDMETHODIMP Fill(LONG hDC, LONG* Color, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Draw(LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                      LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) override;
    STDMETHODIMP DrawRound(LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                           LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) override;
    STDMETHODIMP FitToDC(LONG hDC, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FitToWindow(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP FitToClientWindow(LONG hWnd, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PushState(VARIANT_BOOL* pRet) override;
    STDMETHODIMP PopState(VARIANT_BOOL* pRet) override;
    STDMETHODIMP ClearStack() override;
    STDMETHODIMP IsVisible(LONG hDC, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PointInMe(POINTAPI* pPOINT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PointInMe2(LONG* X, LONG* Y, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Clone(_Rectangle** pRet) override;
    STDMETHODIMP DrawEdge(LONG hDC, EdgeStyleConstants* EdgeStyle, EdgeModeConstants* EdgeMode, LONG* pRet) override;
    STDMETHODIMP DrawFocusRect(LONG hDC, LONG* pRet) override;
    STDMETHODIMP Deflate(LONG* dX, LONG* dy) override;
    STDMETHODIMP DrawText(LONG hDC, BSTR* Text, DrawTextFormatConstants* wFormat, LONG* pRet) override;
    STDMETHODIMP Overlaps(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Overlaps2(_Rectangle* other, VARIANT_BOOL* pRet) override;
    STDMETHODIMP DrawEllipse(LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                             LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) override;
    STDMETHODIMP Equals(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Equals2(_Rectangle* other, VARIANT_BOOL* pRet) override;
    STDMETHODIMP putref_Tag(VARIANT* Tag) override;
    STDMETHODIMP DrawGradient(LONG hDC, LONG* StartColor, LONG* EndColor, VARIANT_BOOL* Vertical) override;
    STDMETHODIMP ScaleRectangle(float* Zoom) override;
    STDMETHODIMP get_MidX(LONG* pRet) override;
    STDMETHODIMP get_MidY(LONG* pRet) override;
    STDMETHODIMP get_MidPoint(POINTAPI* pRet) override;
    STDMETHODIMP Peek(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP OverlapsHoriz(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP OverlapsHoriz2(_Rectangle* other, VARIANT_BOOL* pRet) override;
    STDMETHODIMP OverlapsVert(TOVA_RECT* pRECT, VARIANT_BOOL* pRet) override;
    STDMETHODIMP OverlapsVert2(_Rectangle* other, VARIANT_BOOL* pRet) override;

private:
    friend class Object<Rectangle, _Rectangle>;
    Rectangle() = default;

    // Applies `move` to the edges and raises Changed once if any edge moved.
    template <class F>
    void change(F&& move);
    HRESULT drawShape(int shape, LONG hDC, LONG* BorderColor, PenStyleConstants* BorderStyle, LONG* BorderWidth,
                      LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch);

    TOVA_RECT edges_{0, 0, 0, 0};
    std::vector<TOVA_RECT> stack_;   // saved edges, newest last
    Variant tag_;
};

}  // namespace tova
