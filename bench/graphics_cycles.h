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

    explicit Cycles(Creator c) : creator(c) {
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

    void paintMethods(long) {
        auto p = make<_PaintMethods>(creator, CLSID_PaintMethods, IID__PaintMethods);
        VARIANT_BOOL ok;
        p->StretchPaintNormalStdPic(canvas.handle(), 0, 0, 40, 30, picture.get(), 0, 0, 0, 0, &ok);
        p->StretchPaintTransparentStdPic(canvas.handle(), 2, 2, 0, 0, picture.get(), 0, 0, 0, 0, 0, &ok);
        p->StretchPaintNormalStdPic(canvas.handle(), 0, 0, 0, 0, nullptr, 0, 0, 0, 0, &ok);  // error 481
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
