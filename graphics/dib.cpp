#include "dib.h"

#include "bitmaps.h"
#include "pixels.h"

#include <atomic>

namespace tova {

long Dib::bytesPerScanLine() const {
    const long w = header_.biWidth;
    if (bitsPerPixel_ == 32) return 4 * w;
    return ((w + 1) * 3) & ~3L;  // 3 * w rounded up to a multiple of 4
}

HBITMAP Dib::createDib(HDC dc, long width, long height) {
    header_ = BITMAPINFOHEADER{};
    header_.biSize = sizeof header_;
    header_.biWidth = width;
    header_.biHeight = height;  // positive: rows bottom-up
    header_.biPlanes = 1;
    header_.biBitCount = static_cast<WORD>(bitsPerPixel_);
    header_.biCompression = BI_RGB;
    bits_ = nullptr;
    // Sizes the platform would misread (negative heights flip the rows) or
    // whose image size does not fit the header's 32 bits.
    if (width < 1 || height < 1) return nullptr;
    const long long line = bitsPerPixel_ == 32 ? 4LL * width : ((width + 1LL) * 3) & ~3LL;
    if (line * height > 0x7FFFFFFFLL) return nullptr;
    header_.biSizeImage = static_cast<DWORD>(line * height);
    void* bits = nullptr;
    HBITMAP dib = CreateDIBSection(dc, reinterpret_cast<BITMAPINFO*>(&header_), DIB_RGB_COLORS, &bits, nullptr, 0);
    bits_ = dib ? bits : nullptr;
    return dib;
}

bool Dib::create(long width, long height) {
    clearUp();
    dc_ = CreateCompatibleDC(nullptr);
    if (!dc_) return false;
    HBITMAP dib = createDib(dc_, width, height);
    HGDIOBJ previous = dib ? SelectObject(dc_, dib) : nullptr;
    if (!previous || previous == HGDI_ERROR) {
        if (dib) DeleteObject(dib);
        DeleteDC(dc_);
        dc_ = nullptr;
        bits_ = nullptr;
        return false;
    }
    dib_ = dib;
    previous_ = previous;
    return true;
}

void Dib::clearUp() {
    if (dc_) {
        if (dib_) {
            SelectObject(dc_, previous_);
            DeleteObject(dib_);
        }
        DeleteDC(dc_);
    }
    // The header keeps its last width and height.
    dc_ = nullptr;
    dib_ = nullptr;
    previous_ = nullptr;
    bits_ = nullptr;
}

HBITMAP Dib::extract() {
    HBITMAP dib = dib_;
    if (dc_) {
        if (dib_) SelectObject(dc_, previous_);
        DeleteDC(dc_);
    }
    dc_ = nullptr;
    dib_ = nullptr;
    previous_ = nullptr;
    bits_ = nullptr;
    return dib;
}

Dib::Pixels Dib::pixels() const {
    Pixels p;
    DIBSECTION ds{};
    if (!dib_ || GetObjectW(dib_, sizeof ds, &ds) != sizeof ds || !ds.dsBm.bmBits) return p;
    if (ds.dsBm.bmBitsPixel != bitsPerPixel_) return p;
    GdiFlush();  // drawing queued on the DC lands in memory first
    uint8_t* bits = static_cast<uint8_t*>(ds.dsBm.bmBits);
    const ptrdiff_t line = ds.dsBm.bmWidthBytes;
    p.width = ds.dsBm.bmWidth;
    p.height = ds.dsBm.bmHeight;
    if (ds.dsBmih.biHeight > 0) {
        p.top = bits + (p.height - 1) * line;
        p.stride = -line;
    } else {
        p.top = bits;
        p.stride = line;
    }
    return p;
}

void Dib::loadPictureBlt(HDC source, long left, long top, long width, long height, DWORD rop) {
    if (!dc_) return;
    const long w = width < 0 ? header_.biWidth : width;
    const long h = height < 0 ? header_.biHeight : height;
    BitBlt(dc_, 0, 0, w, h, source, left, top, rop);
}

void Dib::paintPicture(HDC dest, long left, long top, long width, long height, long srcLeft, long srcTop,
                       DWORD rop) {
    if (!dc_) return;
    const long w = width < 0 ? header_.biWidth : width;
    const long h = height < 0 ? header_.biHeight : height;
    BitBlt(dest, left, top, w, h, dc_, srcLeft, srcTop, rop);
}

void Dib::createFromBitmap(HBITMAP bitmap) {
    BITMAP bm{};
    if (!bitmap || !GetObjectW(bitmap, sizeof bm, &bm)) bm = BITMAP{};
    if (!create(bm.bmWidth, bm.bmHeight)) return;
    ScreenDc desktop(GetDesktopWindow());
    MemoryDc source(desktop.get());
    if (source.get()) {
        Selection in(source.get(), bitmap);
        if (in.ok()) {
            loadPictureBlt(source.get(), 0, 0, -1, -1, SRCCOPY);
            return;
        }
    }
    // Selected in some other DC: read its pixels instead.
    BITMAPINFOHEADER h = header_;
    GetDIBits(desktop.get(), bitmap, 0, static_cast<UINT>(bm.bmHeight), bits_, reinterpret_cast<BITMAPINFO*>(&h),
              DIB_RGB_COLORS);
}

void Dib::randomise(bool grey) {
    Pixels p = pixels();
    if (!p) return;
    // Seeded from the clock, as a timer seed would be; the counter keeps two
    // calls within one clock tick apart.
    static std::atomic<uint64_t> calls{0};
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    SYSTEMTIME t;
    GetLocalTime(&t);
    uint64_t seed = (static_cast<uint64_t>(((t.wHour * 60 + t.wMinute) * 60 + t.wSecond) * 1000 + t.wMilliseconds) << 32) ^
                    static_cast<uint64_t>(now.QuadPart) ^ (++calls * 0x9E3779B97F4A7C15ull);
    pixels::randomise(p.top, p.stride, p.width, p.height, bitsPerPixel_ / 8, grey, seed);
}

void Dib::resampleInto(Dib& target) const {
    if (target.width() == width() && target.height() == height()) {
        target.loadPictureBlt(dc_, 0, 0, -1, -1, SRCCOPY);
        return;
    }
    Pixels from = pixels(), to = target.pixels();
    if (!from || !to || target.bitsPerPixel_ != bitsPerPixel_) return;
    pixels::resample(from.top, from.stride, from.width, from.height, to.top, to.stride, to.width, to.height,
                     bitsPerPixel_ / 8);
}

}  // namespace tova
