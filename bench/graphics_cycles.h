// Create/use/destroy cycles of each graphics class, success and failure paths,
// and the process's GDI object count and private memory around them. Shared
// by bench/graphics_leaks.cpp (many cycles, figures) and
// tests/graphics_leak_test.cpp (fewer cycles, a pass or a failure).
#pragma once

#include "frame/typelib.h"
#include "frame/values.h"

#include <psapi.h>

#include <cstdint>
#include <string>
#include <vector>

namespace cycles {

using tova::Bstr;
using tova::ComPtr;
using tova::Variant;

// Makes an object of a class: through the DLL or the linked-in library.
using Creator = HRESULT (*)(REFCLSID, REFIID, void**);

template <class I>
ComPtr<I> make(Creator creator, REFCLSID clsid, REFIID iid) {
    ComPtr<I> p;
    creator(clsid, iid, p.putVoid());
    return p;
}

// GDI objects of this process. Wine answers GetGuiResources with 0; it also
// accepts a handle's 16-bit index alone, so its live objects are counted by
// asking for the type of every index.
inline DWORD gdiObjects() {
    DWORD n = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (n) return n;
    DWORD count = 0;
    for (ULONG_PTR h = 1; h < 0x10000; ++h)
        if (GetObjectType(reinterpret_cast<HGDIOBJ>(h))) ++count;
    return count;
}

inline long long privateBytes() {
    PROCESS_MEMORY_COUNTERS_EX m{};
    m.cb = sizeof m;
    if (!GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&m), sizeof m))
        return -1;
    // Wine fills in only the page-file figure, which is the private commit as well.
    return static_cast<long long>(m.PrivateUsage ? m.PrivateUsage : m.PagefileUsage);
}

// A 32-bit canvas the cycles draw on, made once.
struct Canvas {
    HDC dc = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;
    Canvas() {
        BITMAPINFO bi{};
        bi.bmiHeader.biSize = sizeof bi.bmiHeader;
        bi.bmiHeader.biWidth = 64;
        bi.bmiHeader.biHeight = 64;
        bi.bmiHeader.biPlanes = 1;
        bi.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        bitmap = CreateDIBSection(dc, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, bitmap);
    }
    ~Canvas() {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    long handle() const { return tova::fromHandle(dc); }
};

inline std::wstring tempFile(const wchar_t* name) {
    wchar_t dir[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    return std::wstring(dir) + L"tova_cycles_" + std::to_wstring(GetCurrentProcessId()) + L"_" + name;
}

// One cycle of each class. `i` is the cycle number: rarer work (files) runs
// every so often.
struct Cycles {
    Creator creator;
    Canvas canvas;
    ComPtr<IPictureDisp> picture;  // a bitmap picture the cycles paint
    std::vector<uint8_t> jpeg;     // a valid JPEG when the codec encodes, else empty

    HICON icon = nullptr;                // a 16 x 16 icon the cycles paint
    ComPtr<IPictureDisp> iconPicture;    // a picture of a copy of it
    HBITMAP pattern = nullptr;           // a small bitmap for patterns and regions

    ~Cycles() {
        DestroyIcon(icon);
        DeleteObject(pattern);
    }

    explicit Cycles(Creator c) : creator(c) {
        pattern = CreateBitmap(4, 4, 1, 32, nullptr);
        ICONINFO ii{TRUE, 0, 0, CreateBitmap(16, 16, 1, 1, nullptr), CreateBitmap(16, 16, 1, 32, nullptr)};
        icon = CreateIconIndirect(&ii);
        DeleteObject(ii.hbmMask);
        DeleteObject(ii.hbmColor);
        auto paint = make<_PaintMethods>(creator, CLSID_PaintMethods, IID__PaintMethods);
        paint->PictureFromHandle(tova::fromHandle(icon), tovaPictureIcon, VARIANT_FALSE, iconPicture.put());
        auto m = make<_MemoryDC>(creator, CLSID_MemoryDC, IID__MemoryDC);
        long w = 24, h = 16;
        VARIANT_BOOL ok, force = VARIANT_TRUE;
        m->SetDimensions(&w, &h, &force, &ok);
        m->get_Picture(picture.put());
        auto d = make<_DIBSection>(creator, CLSID_DIBSection, IID__DIBSection);
        auto j = make<_JPEGMethods>(creator, CLSID_JPEGMethods, IID__JPEGMethods);
        d->Create(32, 24, &ok);
        d->RandomiseBits(VARIANT_FALSE);
        std::vector<uint8_t> buf(1 << 16);
        LONG size = static_cast<LONG>(buf.size());
        _DIBSection* s = d.get();
        j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(buf.data()), &size, 75, &ok);
        if (ok) jpeg.assign(buf.begin(), buf.begin() + size);
    }

    void memoryDC(long i) {
        auto m = make<_MemoryDC>(creator, CLSID_MemoryDC, IID__MemoryDC);
        long w = 32 + i % 7, h = 24;
        VARIANT_BOOL ok;
        m->SetDimensions(&w, &h, nullptr, &ok);
        m->put_BackColor(Variant(static_cast<long>(RGB(1, 2, 3))));
        m->Clear();
        // Handed over: deleted with the surface.
        LONG old = 0;
        m->SelectObject(tova::fromHandle(CreateSolidBrush(RGB(9, 9, 9))), &old);
        m->SelectObject(tova::fromHandle(CreatePen(PS_SOLID, 2, RGB(9, 9, 9))), &old);
        Bstr text(L"Cycle");
        BSTR t = text.get();
        LONG tw = 0;
        m->TextWidth(&t, &tw);
        ComPtr<IPictureDisp> pic;
        m->get_Picture(pic.put());
        ComPtr<_Rectangle> r;
        m->get_Rectangle(r.put());
        m->CopyPicture(picture.get(), 1, 1, 0, 0, -1);
        m->CopyPicture(picture.get(), 1, 1, 10, 10, static_cast<LONG>(RGB(1, 2, 3)));
        m->AlphaBlend(canvas.handle(), 0, 0, 0, 0, 0, 0, 0, 0, 128, VARIANT_FALSE, &ok);
        // Failure paths: a size below 1 destroys; the factory refuses one.
        long zero = 0;
        m->SetDimensions(&zero, &h, nullptr, &ok);
        auto gdi = make<_GDIMethods>(creator, CLSID_GDIMethods, IID__GDIMethods);
        ComPtr<_MemoryDC> none;
        gdi->CreateMemoryDC(0, 5, -1, -1, none.put());
        gdi->CreateMemoryDC(8, 8, RGB(255, 255, 255), RGB(0, 0, 0), none.put());
    }

    void paintMethods(long i) {
        auto p = make<_PaintMethods>(creator, CLSID_PaintMethods, IID__PaintMethods);
        VARIANT_BOOL ok;
        const LONG dc = canvas.handle();
        IPictureDisp* pic = picture.get();
        IPictureDisp* ico = iconPicture.get();
        p->StretchPaintNormalStdPic(dc, 0, 0, 40, 30, pic, 0, 0, 0, 0, &ok);
        p->StretchPaintTransparentStdPic(dc, 2, 2, 0, 0, pic, 0, 0, 0, 0, 0, &ok);
        p->StretchPaintNormalStdPic(dc, 0, 0, 0, 0, nullptr, 0, 0, 0, 0, &ok);  // error 481
        // Effects on a bitmap and an icon, then their failure paths.
        p->StretchPaintMaskedStdPic(dc, 0, 0, 30, 20, pic, pic, 0, 0, 0, 0, &ok);
        p->StretchPaintDisabledStdPic(dc, 1, 1, 0, 0, i % 2 ? pic : ico, 0, 128, 0, 0, 0, 0, &ok);
        p->StretchPaintEmbossedStdPic(dc, 2, 2, 0, 0, pic, -1, 0xFFFFFF, 0, 0, 0, 0, 0, &ok);
        p->StretchPaintShadowedStdPic(dc, 3, 3, 0, 0, ico, -1, 0, 2 + i % 40, 2, 128, 0, 0, 0, 0, &ok);
        p->StretchPaintAlphaStdPic(dc, 0, 0, 20, 20, pic, 100, -1, VARIANT_TRUE, 0, 0, 0, 0, &ok);
        p->StretchPaintAlphaGradientStdPic(dc, 0, 0, 0, 0, ico, 0, 255, tovaGradientDiagonalUp, -1, 0, 0, 0, 0, &ok);
        p->StretchPaintColourisedStdPic(dc, 0, 0, 0, 0, pic, 0xFF, 200, 0x010203, 0, 0, 0, 0, &ok);
        p->StretchPaintColourisedStdPic(0, 0, 0, 0, 0, pic, 0xFF, 200, -1, 0, 0, 0, 0, &ok);        // no DC
        p->StretchPaintMaskedStdPic(dc, 0, 0, 0, 0, pic, ico, 0, 0, 0, 0, &ok);                   // error 5
        p->StretchPaintAlphaStdPic(dc, 0, 0, -1, 0, pic, 1, -1, VARIANT_FALSE, 0, 0, 0, 0, &ok);  // error 5
        // Placement, pictures and icons.
        p->PaintTiledStdPic(dc, 0, 0, 64, 64, pic, i % 7, -3, -1, &ok);
        p->PaintCentredStdPic(dc, 0, 0, 10, 10, ico, 0, &ok);
        p->PaintFittedStdPic(dc, 0, 0, 64, 20, pic, static_cast<PictureFitConstants>(i % 3), -1, &ok);
        ComPtr<IPictureDisp> made;
        p->PictureFromDC(dc, 0, 0, 16, 16, made.put());
        TOVA_RECT r{0, 0, 8, 8};
        p->PictureFromDC2(0, &r, made.put());
        p->PictureFromHandle(tova::fromHandle(pattern), tovaPictureBitmap, VARIANT_FALSE, made.put());
        p->PictureFromHandle(tova::fromHandle(CopyIcon(icon)), tovaPictureIcon, VARIANT_TRUE, made.put());
        LONG w = 0, h = 0;
        p->PictureDimensions(ico, &w, &h, &ok);
        p->PaintIcon(dc, 0, 0, tova::fromHandle(icon), 0, 0, i % 2 ? VARIANT_TRUE : VARIANT_FALSE, &ok);
        // Byte arrays both ways, and bytes that are no picture.
        Variant bytes, back;
        p->CPictureByteArray(Variant(static_cast<IDispatch*>(i % 2 ? pic : ico)),
                             i % 3 ? tovaPictureConvBMP : tovaPictureConvJPEG, 80, bytes.put());
        p->CPictureByteArray(bytes, tovaPictureConvBMP, 90, back.put());
        if (V_VT(&bytes) == (VT_ARRAY | VT_UI1)) static_cast<uint8_t*>(V_ARRAY(&bytes)->pvData)[2] ^= 0x55;
        p->CPictureByteArray(bytes, tovaPictureConvBMP, 90, back.put());
    }

    void colourising(long i) {
        auto p = make<_PaintMethods>(creator, CLSID_PaintMethods, IID__PaintMethods);
        auto d = make<_DIBSection>(creator, CLSID_DIBSection, IID__DIBSection);
        auto a = make<_AlphaDIBSection>(creator, CLSID_AlphaDIBSection, IID__AlphaDIBSection);
        VARIANT_BOOL ok;
        d->Create(24, 16, &ok);
        a->Create(16, 24, &ok);
        ComPtr<IDispatch> s = i % 2 ? d.as<IDispatch>(IID_IDispatch) : a.as<IDispatch>(IID_IDispatch);
        p->GreyscaleDIB(s.get(), 200);
        p->ColouriseDIB(s.get(), 0x00FF00, 255);
        p->TintDIB(s.get(), 0xFF, 100);
        p->SepiaDIB(s.get(), 255);
        p->InvertDIB(s.get());
        p->AdjustDIB(s.get(), 10, -20, Variant(1.5));
        LONG n = 0;
        p->ReplaceColorDIB(s.get(), 0, 0xFFFFFF, 3, &n);
        p->AdjustDIB(s.get(), 300, 0, Variant(1.0));  // error 5
        p->InvertDIB(nullptr);                        // error 481
    }

    void gdiMethods(long i) {
        auto g = make<_GDIMethods>(creator, CLSID_GDIMethods, IID__GDIMethods);
        VARIANT_BOOL ok;
        const LONG dc = canvas.handle();
        TOVA_RECT r{1, 1, 40 + i % 5, 30};
        POINTAPI a{0, 0}, b{30, 20};
        Variant points;
        {
            SAFEARRAY* sa = SafeArrayCreateVector(VT_I4, 0, 6);
            LONG* v = static_cast<LONG*>(sa->pvData);
            v[0] = 0, v[1] = 0, v[2] = 30, v[3] = 5, v[4] = 10, v[5] = 40;
            V_VT(&points) = VT_ARRAY | VT_I4;
            V_ARRAY(&points) = sa;
        }
        g->DrawLine(dc, 0, 0, 50, 50, 0xFF, PS_DOT, 1, &ok);
        g->DrawLine2(dc, &a, &b, 0xFF, PS_SOLID, 3, &ok);
        g->DrawPolyline(dc, &points, 0xFF00, PS_SOLID, 1, &ok);
        g->DrawPolygon(dc, &points, 0, PS_SOLID, 1, 0xFF, BS_HATCHED, HS_BDIAGONAL, WINDING, &ok);
        g->DrawLinearGradient2(dc, &r, 0, 0xFFFFFF, static_cast<GradientDirectionConstants>(i % 4), &ok);
        g->DrawCornerGradient2(dc, &r, 0, 0xFF, 0xFF00, 0xFF0000, &ok);
        g->DrawRadialGradient2(dc, &r, 0xFFFFFF, 0, &ok);
        g->DrawAlphaFill2(dc, &r, 0xFF, static_cast<BYTE>(i), &ok);
        g->DrawAlphaGradient2(dc, &r, 0, 0xFF, 0, 255, tovaGradientVertical, &ok);
        g->FillHatched2(dc, &r, HS_CROSS, 0xFF, i % 2 ? -1 : 0xFFFFFF, &ok);
        g->FillPattern2(dc, &r, tova::fromHandle(pattern), i, -i, &ok);
        g->DrawFrame3D2(dc, &r, static_cast<Frame3DStyleConstants>(i % 4), 2, static_cast<LONG>(0x80000014),
                        static_cast<LONG>(0x80000010), &ok);
        g->DrawLinearGradient(0, 0, 0, 9, 9, 0, 0, tovaGradientHorizontal, &ok);  // no DC
        g->DrawAlphaFill(dc, 0, 0, 9, 9, static_cast<LONG>(0x800000FF), 9, &ok);  // error 5
        // Objects made for the caller and freed by the caller.
        LONG h[7] = {};
        Bstr face(L"Arial");
        g->CreatePen(0xFF, PS_DASH, 1, &h[0]);
        g->CreateBrush(0xFF, i % 2 ? BS_SOLID : BS_PATTERN, HS_CROSS, tova::fromHandle(pattern), &h[1]);
        g->CreateFont(face.get(), 9.5f, VARIANT_TRUE, 0, 0, 0, Variant(30.0), 0, &h[2]);
        g->CreateRegion(0, 0, 20, 20, static_cast<RegionShapeConstants>(i % 3), 6, 6, &h[3]);
        g->CreatePolygonRegion(&points, ALTERNATE, &h[4]);
        g->CreateRegionFromBitmap(tova::fromHandle(pattern), -1, &h[5]);
        g->CombineRegions(h[3], h[4], static_cast<RegionCombineConstants>(1 + i % 5), &h[6]);
        g->FillRegion(dc, h[6], 0xFF, 0, 2, &ok);
        for (LONG x : h) g->DeleteGDIObject(x, &ok);
        g->CreateFont(face.get(), -1, 0, 0, 0, 0, Variant(0.0), 0, &h[0]);  // error 5
        LONG c = 0;
        double hh, ss, ll;
        g->BlendColors(0xFF, 0xFF00, 100, &c);
        g->ColorToHSL(c, &hh, &ss, &ll);
        g->HSLToColor(hh, ss, ll, &c);
    }

    void dibSection(long i) {
        auto d = make<_DIBSection>(creator, CLSID_DIBSection, IID__DIBSection);
        VARIANT_BOOL ok;
        d->Create(40 + i % 5, 30, &ok);
        d->RandomiseBits(VARIANT_FALSE);
        d->PaintPicture(canvas.handle(), 0, 0, -1, -1, 0, 0, SRCCOPY);
        d->LoadPictureBlt(canvas.handle(), 0, 0, -1, -1, SRCCOPY);
        ComPtr<IPictureDisp> pic;
        d->get_Picture(pic.put());
        auto e = make<_DIBSection>(creator, CLSID_DIBSection, IID__DIBSection);
        Variant empty;
        IPictureDisp* raw = pic.get();
        e->CreateFromPicture(&raw, &empty);
        ComPtr<_DIBSection> r;
        e->Resample(20, 25, r.put());
        d->CopyToClipboard(VARIANT_TRUE, &ok);
        LONG handle = 0;
        d->CreateDIB(0, 8, 8, &handle, &ok);  // the caller's to delete
        DeleteObject(tova::toHandle<HBITMAP>(handle));
        d->ClearUp();
        d->Create(0, 0, &ok);  // failure path
    }

    void jpegMethods(long i) {
        auto j = make<_JPEGMethods>(creator, CLSID_JPEGMethods, IID__JPEGMethods);
        auto d = make<_DIBSection>(creator, CLSID_DIBSection, IID__DIBSection);
        VARIANT_BOOL ok;
        _DIBSection* s = d.get();
        static const uint8_t junk[] = {0xFF, 0xD8, 0xFF, 0xC0, 0x00, 0x11, 8, 0, 16, 0, 16, 3, 1, 0x22, 0, 2};
        j->LoadJPGFromPtr(&s, reinterpret_cast<LONG_PTR>(junk), sizeof junk, &ok);
        Bstr missing(L"Z:\\no\\such\\file.jpg");
        BSTR m = missing.get();
        j->LoadJPG(&s, &m, &ok);
        d->Create(16, 16, &ok);
        uint8_t small[16];
        LONG size = sizeof small;
        j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(small), &size, 90, &ok);
        if (!jpeg.empty()) {
            j->LoadJPGFromPtr(&s, reinterpret_cast<LONG_PTR>(jpeg.data()), static_cast<LONG>(jpeg.size()), &ok);
            std::vector<uint8_t> out(1 << 16);
            size = static_cast<LONG>(out.size());
            j->SaveJPGToPtr(&s, reinterpret_cast<LONG_PTR>(out.data()), &size, 50, &ok);
            if (i % 100 == 0) {
                Bstr file(tempFile(L"cycle.jpg").c_str());
                BSTR f = file.get();
                j->SaveJPG(&s, &f, 80, &ok);
                j->LoadJPG(&s, &f, &ok);
                DeleteFileW(file.get());
            }
        }
    }

    void alphaDIBSection(long i) {
        auto a = make<_AlphaDIBSection>(creator, CLSID_AlphaDIBSection, IID__AlphaDIBSection);
        VARIANT_BOOL ok;
        a->put_UseDrawDib(VARIANT_TRUE);
        a->Create(32, 20 + i % 3, &ok);
        a->RandomiseBits(VARIANT_TRUE);
        a->PreMultiplyAlpha();
        a->PaintPicture(canvas.handle(), 0, 0, -1, -1, 0, 0, SRCCOPY);
        a->put_UseDrawDib(VARIANT_FALSE);
        a->AlphaPaintPicture(canvas.handle(), 0, 0, -1, -1, 0, 0, 200, VARIANT_TRUE);
        ComPtr<IPictureDisp> pic;
        a->get_Picture(pic.put());
        auto b = make<_AlphaDIBSection>(creator, CLSID_AlphaDIBSection, IID__AlphaDIBSection);
        Variant empty;
        b->CreateFromPicture(pic.get(), &empty);
        ComPtr<_AlphaDIBSection> r;
        b->Resample(10, 12, r.put());
        LONG dib = 0;
        b->ExtractDib(&dib);  // handed over: ours to delete
        DeleteObject(tova::toHandle<HBITMAP>(dib));
        Bstr bad(L"Z:\\no\\such\\folder\\x.bmp");
        a->SavePicture(bad.get(), &ok);  // error 17
        if (i % 100 == 0) {
            Bstr file(tempFile(L"cycle.bmp").c_str());
            a->SavePicture(file.get(), &ok);
            DeleteFileW(file.get());
        }
    }
};

struct Result {
    const char* name;
    long cycles;
    double seconds;
    long gdiDelta;
    long long memoryDelta;
};

// Warms up, then runs `count` cycles of `which` and reports the differences.
template <class F>
Result measure(const char* name, long count, F&& cycle) {
    for (long i = 0; i < 200; ++i) cycle(i);
    SetErrorInfo(0, nullptr);
    const DWORD gdi0 = gdiObjects();
    const long long mem0 = privateBytes();
    LARGE_INTEGER f, t0, t1;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&t0);
    for (long i = 0; i < count; ++i) cycle(i);
    QueryPerformanceCounter(&t1);
    SetErrorInfo(0, nullptr);
    Result r{name, count, static_cast<double>(t1.QuadPart - t0.QuadPart) / f.QuadPart,
             static_cast<long>(gdiObjects()) - static_cast<long>(gdi0), privateBytes() - mem0};
    return r;
}

}  // namespace cycles
