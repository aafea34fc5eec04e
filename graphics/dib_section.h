// DIBSection: a 24-bit device-independent bitmap with direct access to its
// pixel memory (bottom-up rows of BytesPerScanLine bytes, blue-green-red),
// selected into a memory DC of its own. JPEGMethods loads into and saves from it.
#pragma once

#include "bitmaps.h"
#include "dib.h"

namespace tova {

class DIBSection final : public Object<DIBSection, _DIBSection> {
public:
    static const ClassIdentity kClass;

    const Dib& dib() const { return dib_; }
    Dib& dib() { return dib_; }

    STDMETHODIMP CopyToClipboard(VARIANT_BOOL bAsDIB, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CreateDIB(LONG lHDC, LONG lWidth, LONG lHeight, LONG* hDib, VARIANT_BOOL* pRet) override;
    STDMETHODIMP CreateFromPicture(IPictureDisp** picThis, VARIANT* pRet) override;
    STDMETHODIMP Create(LONG lWidth, LONG lHeight, VARIANT_BOOL* pRet) override;
    STDMETHODIMP get_BytesPerScanLine(LONG* pRet) override;
    STDMETHODIMP get_Width(LONG* pRet) override;
    STDMETHODIMP get_Height(LONG* pRet) override;
    STDMETHODIMP LoadPictureBlt(LONG lHDC, LONG lSrcLeft, LONG lSrcTop, LONG lSrcWidth, LONG lSrcHeight,
                                LONG eRop) override;
    STDMETHODIMP PaintPicture(LONG lHDC, LONG lDestLeft, LONG lDestTop, LONG lDestWidth, LONG lDestHeight,
                              LONG lSrcLeft, LONG lSrcTop, LONG eRop) override;
    STDMETHODIMP get_Picture(IPictureDisp** pRet) override;
    STDMETHODIMP get_hDC(LONG* pRet) override;
    STDMETHODIMP get_hDib(LONG* pRet) override;
    STDMETHODIMP get_DIBSectionBitsPtr(PtrLong* pRet) override;
    STDMETHODIMP RandomiseBits(VARIANT_BOOL bGray) override;
    STDMETHODIMP ClearUp() override;
    STDMETHODIMP Resample(LONG lNewHeight, LONG lNewWidth, _DIBSection** pRet) override;

private:
    friend class Object<DIBSection, _DIBSection>;
    DIBSection() : dib_(24) {}

    Dib dib_;
};

}  // namespace tova
