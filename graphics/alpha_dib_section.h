// AlphaDIBSection: the 32-bit sibling of DIBSection (blue, green, red, alpha
// per pixel) that premultiplies its colours, alpha-blends itself onto device
// contexts, paints through DrawDib on request, writes bitmap files and hands
// its DIB over.
#pragma once

#include "bitmaps.h"
#include "dib.h"

namespace tova {

// Whether this system can alpha-blend: the platform version and a screen of
// 16 bits per pixel or more.
bool alphaBlendSupported();

class AlphaDIBSection final : public Object<AlphaDIBSection, _AlphaDIBSection> {
public:
    static const ClassIdentity kClass;

    Dib& dib() { return dib_; }

    STDMETHODIMP get_UseDrawDib(VARIANT_BOOL* pRet) override;
    STDMETHODIMP put_UseDrawDib(VARIANT_BOOL UseDrawDib) override;
    STDMETHODIMP get_Picture(IPictureDisp** pRet) override;
    STDMETHODIMP CreateDIB(LONG lHDC, LONG lWidth, LONG lHeight, LONG* hDib, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CreateFromPicture(IPictureDisp* picThis, VARIANT* pRet) override;
    STDMETHODIMP CreateFromHBitmap(LONG hBmp, VARIANT* pRet) override;
    STDMETHODIMP Create(LONG lWidth, LONG lHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP get_BytesPerScanLine(LONG* pRet) override;
    STDMETHODIMP PreMultiplyAlpha() override;
    STDMETHODIMP get_Width(LONG* pRet) override;
    STDMETHODIMP get_Height(LONG* pRet) override;
    STDMETHODIMP LoadPictureBlt(LONG lHDC, LONG lSrcLeft, LONG lSrcTop, LONG lSrcWidth, LONG lSrcHeight,
                                LONG eRop) override;
    STDMETHODIMP SavePicture(BSTR Filename, VARIANT_BOOL* pRet) override;
    STDMETHODIMP PaintPicture(LONG lHDC, LONG lDestLeft, LONG lDestTop, LONG lDestWidth, LONG lDestHeight,
                              LONG lSrcLeft, LONG lSrcTop, LONG eRop) override;
    STDMETHODIMP AlphaPaintPicture(LONG lHDC, LONG lDestLeft, LONG lDestTop, LONG lDestWidth, LONG lDestHeight,
                                   LONG lSrcLeft, LONG lSrcTop, unsigned char lConstantAlpha,
                                   VARIANT_BOOL bHasAlphaChannel) override;
    STDMETHODIMP get_hDC(LONG* pRet) override;
    STDMETHODIMP get_hDib(LONG* pRet) override;
    STDMETHODIMP get_DIBSectionBitsPtr(PtrLong* pRet) override;
    STDMETHODIMP ExtractDib(LONG* pRet) override;
    STDMETHODIMP RandomiseBits(VARIANT_BOOL bGray) override;
    STDMETHODIMP ClearUp() override;
    STDMETHODIMP Resample(LONG lNewHeight, LONG lNewWidth, _AlphaDIBSection** pRet) override;

private:
    friend class Object<AlphaDIBSection, _AlphaDIBSection>;
    AlphaDIBSection() : dib_(32) {}
    ~AlphaDIBSection() override { clearUp(); }

    bool build(long width, long height);
    void clearUp();
    void openDrawDib();
    void closeDrawDib();
    void paint(HDC dc, long left, long top, long width, long height, long srcLeft, long srcTop, DWORD rop);

    Dib dib_;
    HANDLE drawDib_ = nullptr;
    // UseDrawDib = False closes the handle but keeps it, so the property
    // reads True until ClearUp (as designed); a closed one is never used again.
    bool drawDibClosed_ = false;
};

}  // namespace tova
