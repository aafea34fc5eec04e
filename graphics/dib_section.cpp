#include "dib_section.h"

namespace tova {

const ClassIdentity DIBSection::kClass = {L"DIBSection", &CLSID_DIBSection, &IID__DIBSection, nullptr};

HRESULT createDIBSection(REFIID riid, void** ppv) { return DIBSection::create(riid, ppv); }

STDMETHODIMP DIBSection::CopyToClipboard(VARIANT_BOOL bAsDIB, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        // As a DIB, nothing is offered and the result is False: the format is
        // declared but deliberately not provided.
        if (fromVB(bAsDIB) || !dib_.dc()) return;
        ScreenDc desktop(GetDesktopWindow());
        HBITMAP bitmap = desktop.get() ? CreateCompatibleBitmap(desktop.get(), dib_.width(), dib_.height()) : nullptr;
        if (!bitmap) return;
        {
            MemoryDc work(desktop.get());
            Selection in(work.get(), bitmap);
            if (work.get() && in.ok()) dib_.paintPicture(work.get(), 0, 0, -1, -1, 0, 0, SRCCOPY);
        }
        bool placed = false;
        if (OpenClipboard(nullptr)) {
            EmptyClipboard();
            placed = SetClipboardData(CF_BITMAP, bitmap) != nullptr;  // the clipboard owns it now
            CloseClipboard();
        }
        if (!placed) DeleteObject(bitmap);
        *pRet = toVB(placed);
    });
}

STDMETHODIMP DIBSection::CreateDIB(LONG lHDC, LONG lWidth, LONG lHeight, LONG* hDib, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(hDib);
        required(pRet);
        HBITMAP dib = dib_.createDib(toHandle<HDC>(lHDC), lWidth, lHeight);
        *hDib = fromHandle(dib);
        *pRet = toVB(dib != nullptr);
    });
}

STDMETHODIMP DIBSection::CreateFromPicture(IPictureDisp** picThis, VARIANT* pRet) {
    return guard([&] {
        VariantInit(required(pRet));  // always Empty: callers check hDib or Width
        IPictureDisp* disp = required(picThis) ? *picThis : nullptr;
        if (!disp) return;
        ComPtr<IPicture> picture = ComPtr<IPictureDisp>(disp).as<IPicture>(IID_IPicture);
        OLE_HANDLE h = 0;
        if (picture) picture->get_Handle(&h);
        dib_.createFromBitmap(reinterpret_cast<HBITMAP>(static_cast<ULONG_PTR>(h)));
    });
}

STDMETHODIMP DIBSection::Create(LONG lWidth, LONG lHeight, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(dib_.create(lWidth, lHeight)); });
}

STDMETHODIMP DIBSection::get_BytesPerScanLine(LONG* pRet) {
    return guard([&] { *required(pRet) = dib_.bytesPerScanLine(); });
}
STDMETHODIMP DIBSection::get_Width(LONG* pRet) { return guard([&] { *required(pRet) = dib_.width(); }); }
STDMETHODIMP DIBSection::get_Height(LONG* pRet) { return guard([&] { *required(pRet) = dib_.height(); }); }

STDMETHODIMP DIBSection::LoadPictureBlt(LONG lHDC, LONG lSrcLeft, LONG lSrcTop, LONG lSrcWidth, LONG lSrcHeight,
                                        LONG eRop) {
    return guard([&] {
        dib_.loadPictureBlt(toHandle<HDC>(lHDC), lSrcLeft, lSrcTop, lSrcWidth, lSrcHeight, static_cast<DWORD>(eRop));
    });
}

STDMETHODIMP DIBSection::PaintPicture(LONG lHDC, LONG lDestLeft, LONG lDestTop, LONG lDestWidth, LONG lDestHeight,
                                      LONG lSrcLeft, LONG lSrcTop, LONG eRop) {
    return guard([&] {
        dib_.paintPicture(toHandle<HDC>(lHDC), lDestLeft, lDestTop, lDestWidth, lDestHeight, lSrcLeft, lSrcTop,
                          static_cast<DWORD>(eRop));
    });
}

STDMETHODIMP DIBSection::get_Picture(IPictureDisp** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (!dib_.dc() || dib_.width() < 1 || dib_.height() < 1) return;
        *pRet = pictureOf(compatibleCopy(dib_.dc(), dib_.width(), dib_.height(), nullptr)).detach();
    });
}

STDMETHODIMP DIBSection::get_hDC(LONG* pRet) { return guard([&] { *required(pRet) = fromHandle(dib_.dc()); }); }
STDMETHODIMP DIBSection::get_hDib(LONG* pRet) { return guard([&] { *required(pRet) = fromHandle(dib_.dib()); }); }

STDMETHODIMP DIBSection::get_DIBSectionBitsPtr(PtrLong* pRet) {
    return guard([&] { *required(pRet) = static_cast<PtrLong>(reinterpret_cast<LONG_PTR>(dib_.bitsPointer())); });
}

STDMETHODIMP DIBSection::RandomiseBits(VARIANT_BOOL bGray) {
    return guard([&] { dib_.randomise(fromVB(bGray)); });
}

STDMETHODIMP DIBSection::ClearUp() {
    return guard([&] { dib_.clearUp(); });
}

STDMETHODIMP DIBSection::Resample(LONG lNewHeight, LONG lNewWidth, _DIBSection** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        ComPtr<DIBSection> result = DIBSection::make();
        if (!result->dib_.create(lNewWidth, lNewHeight)) return;
        dib_.resampleInto(result->dib_);
        *pRet = result.detach();
    });
}

}  // namespace tova
