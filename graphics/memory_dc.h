// MemoryDC: one off-screen drawing surface, a memory DC compatible with the
// screen with a screen-compatible bitmap selected. Every member quietly does
// nothing without a surface; only the colour setters raise (for a value that
// is not a number).
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class MemoryDC final : public Object<MemoryDC, _MemoryDC> {
public:
    static const ClassIdentity kClass;

    // Builds a surface of width x height; false (and no surface) when it cannot.
    bool build(long width, long height);
    HDC dc() const { return dc_; }

    STDMETHODIMP get_hDC(LONG* pRet) override;
    STDMETHODIMP GetHandle(GDIObjectTypeConstants* ObjectType, LONG* pRet) override;
    STDMETHODIMP get_Picture(IPictureDisp** pRet) override;
    STDMETHODIMP get_Width(LONG* pRet) override;
    STDMETHODIMP get_Height(LONG* pRet) override;
    STDMETHODIMP SetDimensions(LONG* Width, LONG* Height, VARIANT_BOOL* ForceNewDC, VARIANT_BOOL* pRet) override;
    STDMETHODIMP get_BackMode(DeviceContextBackModeConstants* pRet) override;
    STDMETHODIMP put_BackMode(DeviceContextBackModeConstants BackMode) override;
    STDMETHODIMP get_StretchBltMode(StretchBltModeConstants* pRet) override;
    STDMETHODIMP put_StretchBltMode(StretchBltModeConstants StretchBltMode) override;
    STDMETHODIMP get_BackColor(VARIANT* pRet) override;
    STDMETHODIMP put_BackColor(VARIANT BackColor) override;
    STDMETHODIMP get_ForeColor(VARIANT* pRet) override;
    STDMETHODIMP put_ForeColor(VARIANT ForeColor) override;
    STDMETHODIMP SelectObject(LONG hObject, LONG* pRet) override;
    STDMETHODIMP CopyPicture(IPictureDisp* Picture, LONG X, LONG Y, LONG Width, LONG Height,
                             LONG TransparentColor) override;
    STDMETHODIMP TextWidth(BSTR* Text, LONG* pRet) override;
    STDMETHODIMP TextHeight(BSTR* Text, LONG* pRet) override;
    STDMETHODIMP TextDimensions(BSTR* Text, LONG* TextWidth, LONG* TextHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Clear() override;
    STDMETHODIMP Fill(TOVA_RECT* pRECT, LONG* Color) override;
    STDMETHODIMP get_CurrentX(LONG* pRet) override;
    STDMETHODIMP put_CurrentX(LONG CurrentX) override;
    STDMETHODIMP get_CurrentY(LONG* pRet) override;
    STDMETHODIMP put_CurrentY(LONG CurrentY) override;
    STDMETHODIMP get_ColorDepth(LONG* pRet) override;
    STDMETHODIMP GetPixel(LONG* X, LONG* Y, LONG* pRet) override;
    STDMETHODIMP GetPixel2(POINTAPI* pPOINT, LONG* pRet) override;
    STDMETHODIMP SetPixel(LONG* X, LONG* Y, LONG* Color, LONG* pRet) override;
    STDMETHODIMP SetPixel2(POINTAPI* pPOINT, LONG* Color, LONG* pRet) override;
    STDMETHODIMP get_Rectangle(_Rectangle** pRet) override;
    STDMETHODIMP AlphaBlend(LONG hDestDC, LONG DestX, LONG DestY, LONG DestWidth, LONG DestHeight, LONG SourceX,
                            LONG SourceY, LONG SourceWidth, LONG SourceHeight, unsigned char Opacity,
                            VARIANT_BOOL HasAlphaChannel, VARIANT_BOOL* pRet) override;

private:
    friend class Object<MemoryDC, _MemoryDC>;
    MemoryDC() = default;
    ~MemoryDC() override { destroy(); }

    void destroy();
    bool measure(BSTR text, SIZE& size) const;
    void fill(const RECT& r, COLORREF color);

    HDC dc_ = nullptr;
    HBITMAP surface_ = nullptr;
    // What the fresh DC held; selected back on destruction so that whatever
    // the client left selected comes out and is deleted.
    HGDIOBJ initialBitmap_ = nullptr, initialFont_ = nullptr, initialPen_ = nullptr, initialBrush_ = nullptr;
    long width_ = 0, height_ = 0;
};

}  // namespace tova
