#include "alpha_dib_section.h"

#include "pixels.h"

#include <cstring>
#include <string>

namespace tova {

const ClassIdentity AlphaDIBSection::kClass = {L"AlphaDIBSection", &CLSID_AlphaDIBSection, &IID__AlphaDIBSection,
                                               nullptr};

HRESULT createAlphaDIBSection(REFIID riid, void** ppv) { return AlphaDIBSection::create(riid, ppv); }

namespace {

// Video for Windows' DrawDib, loaded on first use so that the library does
// not import it; it stays loaded for the life of the process.
struct DrawDibApi {
    HANDLE(WINAPI* open)() = nullptr;
    BOOL(WINAPI* close)(HANDLE) = nullptr;
    BOOL(WINAPI* draw)(HANDLE, HDC, int, int, int, int, BITMAPINFOHEADER*, void*, int, int, int, int, UINT) = nullptr;
    bool ok() const { return open && close && draw; }
};

const DrawDibApi& drawDibApi() {
    static const DrawDibApi api = [] {
        DrawDibApi a;
        if (HMODULE m = LoadLibraryW(L"msvfw32.dll")) {
            a.open = reinterpret_cast<decltype(a.open)>(reinterpret_cast<void*>(GetProcAddress(m, "DrawDibOpen")));
            a.close = reinterpret_cast<decltype(a.close)>(reinterpret_cast<void*>(GetProcAddress(m, "DrawDibClose")));
            a.draw = reinterpret_cast<decltype(a.draw)>(reinterpret_cast<void*>(GetProcAddress(m, "DrawDibDraw")));
        }
        return a;
    }();
    return api;
}

int screenBitsPerPixel() {
    HDC ic = CreateICA("DISPLAY", nullptr, nullptr, nullptr);
    if (!ic) return 0;
    int bits = GetDeviceCaps(ic, BITSPIXEL);
    DeleteDC(ic);
    return bits;
}

}  // namespace

bool alphaBlendSupported() {
    OSVERSIONINFOA v{};
    v.dwOSVersionInfoSize = sizeof v;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    if (!GetVersionExA(&v)) return false;
#pragma GCC diagnostic pop
    bool version = false;
    if (v.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS) version = v.dwMajorVersion >= 4 && v.dwMinorVersion >= 10;
    else if (v.dwPlatformId == VER_PLATFORM_WIN32_NT) version = v.dwMajorVersion >= 5;
    return version && screenBitsPerPixel() >= 16;
}

// ------------------------------------------------------------- lifetime

bool AlphaDIBSection::build(long width, long height) {
    const bool drawDib = drawDib_ != nullptr;
    clearUp();
    if (!dib_.create(width, height)) return false;
    // The DrawDib choice survives re-creation.
    if (drawDib) openDrawDib();
    return true;
}

void AlphaDIBSection::clearUp() {
    dib_.clearUp();
    closeDrawDib();
    drawDib_ = nullptr;
    drawDibClosed_ = false;
}

void AlphaDIBSection::openDrawDib() {
    if (drawDib_) return;
    const DrawDibApi& api = drawDibApi();
    if (api.ok()) drawDib_ = api.open();
    drawDibClosed_ = false;
}

void AlphaDIBSection::closeDrawDib() {
    if (drawDib_ && !drawDibClosed_) drawDibApi().close(drawDib_);
    drawDibClosed_ = drawDib_ != nullptr;
}

STDMETHODIMP AlphaDIBSection::get_UseDrawDib(VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(drawDib_ != nullptr); });
}

STDMETHODIMP AlphaDIBSection::put_UseDrawDib(VARIANT_BOOL v) {
    return guard([&] {
        if (fromVB(v)) openDrawDib();
        else closeDrawDib();
    });
}

STDMETHODIMP AlphaDIBSection::Create(LONG lWidth, LONG lHeight, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(build(lWidth, lHeight)); });
}

STDMETHODIMP AlphaDIBSection::CreateDIB(LONG lHDC, LONG lWidth, LONG lHeight, LONG* hDib, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(hDib);
        required(pRet);
        HBITMAP dib = dib_.createDib(toHandle<HDC>(lHDC), lWidth, lHeight);
        *hDib = fromHandle(dib);
        *pRet = toVB(dib != nullptr);
    });
}

STDMETHODIMP AlphaDIBSection::CreateFromHBitmap(LONG hBmp, VARIANT* pRet) {
    return guard([&] {
        VariantInit(required(pRet));  // always Empty
        // As Create: the DrawDib choice survives, unless creation fails.
        const bool drawDib = drawDib_ != nullptr;
        clearUp();
        // The platform's blit converts to 32 bits; alpha is whatever it leaves.
        dib_.createFromBitmap(toHandle<HBITMAP>(hBmp));
        if (dib_.dib() && drawDib) openDrawDib();
    });
}

STDMETHODIMP AlphaDIBSection::CreateFromPicture(IPictureDisp* picThis, VARIANT* pRet) {
    OLE_HANDLE h = 0;
    if (picThis) {
        ComPtr<IPicture> picture = ComPtr<IPictureDisp>(picThis).as<IPicture>(IID_IPicture);
        if (picture) picture->get_Handle(&h);
    }
    return CreateFromHBitmap(static_cast<LONG>(h), pRet);
}

// ----------------------------------------------------------------- facts

STDMETHODIMP AlphaDIBSection::get_BytesPerScanLine(LONG* pRet) {
    return guard([&] { *required(pRet) = dib_.bytesPerScanLine(); });
}
STDMETHODIMP AlphaDIBSection::get_Width(LONG* pRet) { return guard([&] { *required(pRet) = dib_.width(); }); }
STDMETHODIMP AlphaDIBSection::get_Height(LONG* pRet) { return guard([&] { *required(pRet) = dib_.height(); }); }
STDMETHODIMP AlphaDIBSection::get_hDC(LONG* pRet) { return guard([&] { *required(pRet) = fromHandle(dib_.dc()); }); }
STDMETHODIMP AlphaDIBSection::get_hDib(LONG* pRet) {
    return guard([&] { *required(pRet) = fromHandle(dib_.dib()); });
}
STDMETHODIMP AlphaDIBSection::get_DIBSectionBitsPtr(PtrLong* pRet) {
    return guard([&] { *required(pRet) = static_cast<PtrLong>(reinterpret_cast<LONG_PTR>(dib_.bitsPointer())); });
}

// ---------------------------------------------------------------- pixels

STDMETHODIMP AlphaDIBSection::PreMultiplyAlpha() {
    return guard([&] {
        Dib::Pixels p = dib_.pixels();
        if (p) pixels::premultiplyAlpha(p.top, p.stride, p.width, p.height);
    });
}

STDMETHODIMP AlphaDIBSection::RandomiseBits(VARIANT_BOOL bGray) {
    return guard([&] { dib_.randomise(fromVB(bGray)); });
}

STDMETHODIMP AlphaDIBSection::LoadPictureBlt(LONG lHDC, LONG lSrcLeft, LONG lSrcTop, LONG lSrcWidth,
                                             LONG lSrcHeight, LONG eRop) {
    return guard([&] {
        dib_.loadPictureBlt(toHandle<HDC>(lHDC), lSrcLeft, lSrcTop, lSrcWidth, lSrcHeight, static_cast<DWORD>(eRop));
    });
}

STDMETHODIMP AlphaDIBSection::ClearUp() {
    return guard([&] { clearUp(); });
}

STDMETHODIMP AlphaDIBSection::ExtractDib(LONG* pRet) {
    return guard([&] { *required(pRet) = fromHandle(dib_.extract()); });
}

STDMETHODIMP AlphaDIBSection::get_Picture(IPictureDisp** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (!dib_.dib()) return;
        Dib copy(32);
        if (!copy.create(dib_.width(), dib_.height())) return;
        copy.loadPictureBlt(dib_.dc(), 0, 0, -1, -1, SRCCOPY);
        // The picture holds the 32-bit DIB itself.
        *pRet = pictureOf(copy.extract()).detach();
    });
}

STDMETHODIMP AlphaDIBSection::Resample(LONG lNewHeight, LONG lNewWidth, _AlphaDIBSection** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        ComPtr<AlphaDIBSection> result = AlphaDIBSection::make();
        if (!result->build(lNewWidth, lNewHeight)) return;
        dib_.resampleInto(result->dib_);
        *pRet = result.detach();
    });
}

// -------------------------------------------------------------- painting

void AlphaDIBSection::paint(HDC dc, long left, long top, long width, long height, long srcLeft, long srcTop,
                            DWORD rop) {
    const long w = width < 0 ? dib_.width() : width;
    const long h = height < 0 ? dib_.height() : height;
    if (!drawDib_) {
        if (dib_.dc()) BitBlt(dc, left, top, w, h, dib_.dc(), srcLeft, srcTop, rop);
        return;
    }
    // Through DrawDib the raster operation does not apply. A handle closed
    // by UseDrawDib = False paints nothing.
    Dib::Pixels p = dib_.pixels();
    if (drawDibClosed_ || !p) return;
    BITMAPINFOHEADER header = dib_.header();
    void* bits = p.stride < 0 ? p.top + (p.height - 1) * p.stride : p.top;
    drawDibApi().draw(drawDib_, dc, left, top, w, h, &header, bits, srcLeft, srcTop, w, h, 0);
}

STDMETHODIMP AlphaDIBSection::PaintPicture(LONG lHDC, LONG lDestLeft, LONG lDestTop, LONG lDestWidth,
                                           LONG lDestHeight, LONG lSrcLeft, LONG lSrcTop, LONG eRop) {
    return guard([&] {
        paint(toHandle<HDC>(lHDC), lDestLeft, lDestTop, lDestWidth, lDestHeight, lSrcLeft, lSrcTop,
              static_cast<DWORD>(eRop));
    });
}

STDMETHODIMP AlphaDIBSection::AlphaPaintPicture(LONG lHDC, LONG lDestLeft, LONG lDestTop, LONG lDestWidth,
                                                LONG lDestHeight, LONG lSrcLeft, LONG lSrcTop,
                                                unsigned char lConstantAlpha, VARIANT_BOOL bHasAlphaChannel) {
    return guard([&] {
        const long w = lDestWidth < 0 ? dib_.width() : lDestWidth;
        const long h = lDestHeight < 0 ? dib_.height() : lDestHeight;
        if (!alphaBlendSupported()) {
            // No blending here: an opaque copy.
            paint(toHandle<HDC>(lHDC), lDestLeft, lDestTop, w, h, lSrcLeft, lSrcTop, SRCCOPY);
            return;
        }
        BLENDFUNCTION blend{AC_SRC_OVER, 0, lConstantAlpha,
                            static_cast<BYTE>(fromVB(bHasAlphaChannel) ? AC_SRC_ALPHA : 0)};
        // A failed blend is not reported.
        ::AlphaBlend(toHandle<HDC>(lHDC), lDestLeft, lDestTop, w, h, dib_.dc(), lSrcLeft, lSrcTop, w, h, blend);
    });
}

// ------------------------------------------------------------------ files

STDMETHODIMP AlphaDIBSection::SavePicture(BSTR Filename, VARIANT_BOOL* pRet) {
    return guard([&] {
        required(pRet);
        *pRet = VARIANT_FALSE;
        FileHandle file(CreateFileW(Filename ? Filename : L"", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.ok()) {
            DWORD code = GetLastError();
            std::wstring source = std::wstring(kLibrarySource) + L".cDIBSection";
            std::wstring text = systemMessage(code);
            raise(kCannotPerform, source.c_str(), text.c_str());
        }
        const BITMAPINFOHEADER& info = dib_.header();
        const DWORD image = static_cast<DWORD>(dib_.bytesPerScanLine()) * static_cast<DWORD>(dib_.height() > 0 ? dib_.height() : 0);
        // File header, then 48 bytes: the information header and 8 zeros the
        // reader skips (the pixels start at offset 62).
        BITMAPFILEHEADER head{};
        head.bfType = 0x4D42;  // "BM"
        head.bfSize = image + 62;
        head.bfOffBits = 62;
        unsigned char middle[48] = {};
        BITMAPINFOHEADER written = info;
        written.biSizeImage = image;
        std::memcpy(middle, &written, sizeof written);
        auto put = [&](const void* data, DWORD size) {
            DWORD done = 0;
            return data && WriteFile(file.get(), data, size, &done, nullptr) && done == size;
        };
        Dib::Pixels p = dib_.pixels();
        const void* bits = p ? (p.stride < 0 ? p.top + (p.height - 1) * p.stride : p.top) : nullptr;
        bool ok = put(&head, 14) && put(middle, 48) && put(bits, image);
        *pRet = toVB(ok);
    });
}

}  // namespace tova
