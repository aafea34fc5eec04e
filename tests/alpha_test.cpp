// AlphaDIBSection through the DLL, and the pixel routines it shares with
// DIBSection, linked in directly.
#include "support.h"

#include "graphics/pixels.h"

#include <cmath>
#include <vector>

using namespace test;

namespace {

ComPtr<_AlphaDIBSection> newAlpha() { return create<_AlphaDIBSection>(CLSID_AlphaDIBSection, IID__AlphaDIBSection); }

ComPtr<_AlphaDIBSection> alphaOf(long w, long h) {
    return createDib<_AlphaDIBSection>(CLSID_AlphaDIBSection, IID__AlphaDIBSection, w, h);
}

// Pixel (x, y) from the top as 0xAARRGGBB, in memory.
DWORD* at(_AlphaDIBSection* d, int x, int y) {
    LONG w = 0, h = 0;
    d->get_Width(&w);
    d->get_Height(&h);
    GdiFlush();
    return reinterpret_cast<DWORD*>(dibBits(d)) + (h - 1 - y) * w + x;
}

void fillAll(_AlphaDIBSection* d, int w, int h, DWORD argb) {
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) *at(d, x, y) = argb;
}

LONG handleOf(_AlphaDIBSection* d) {
    LONG v = 0;
    d->get_hDib(&v);
    return v;
}

std::wstring tempPath(const wchar_t* name) {
    wchar_t dir[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    return std::wstring(dir) + L"tova_alpha_" + std::to_wstring(GetCurrentProcessId()) + L"_" + name;
}

}  // namespace

// ------------------------------------------------------------ pixel routines

TEST(Pixels, PremultiplyTruncatesForEveryValueAndAlpha) {
    // Every (value, alpha) pair, in rows of odd widths so that both the wide
    // and the one-pixel paths run.
    for (auto simd : {tova::pixels::Simd::Best, tova::pixels::Simd::Sse2, tova::pixels::Simd::Scalar})
    for (int width : {1, 3, 4, 7, 9, 64, 257}) {
        std::vector<uint8_t> px(static_cast<size_t>(width) * 4);
        for (int a = 0; a < 256; ++a)
            for (int v0 = 0; v0 < 256; v0 += width) {
                for (int i = 0; i < width; ++i) {
                    int v = (v0 + i) & 255;
                    px[i * 4] = static_cast<uint8_t>(v), px[i * 4 + 1] = static_cast<uint8_t>(255 - v);
                    px[i * 4 + 2] = static_cast<uint8_t>(v ^ 0x5A), px[i * 4 + 3] = static_cast<uint8_t>(a);
                }
                tova::pixels::premultiplyAlphaWith(simd, px.data(), 0, width, 1);
                for (int i = 0; i < width; ++i) {
                    int v = (v0 + i) & 255;
                    ASSERT_EQ(v * a / 255, px[i * 4]) << "v " << v << " a " << a << " width " << width;
                    ASSERT_EQ((255 - v) * a / 255, px[i * 4 + 1]);
                    ASSERT_EQ((v ^ 0x5A) * a / 255, px[i * 4 + 2]);
                    ASSERT_EQ(a, px[i * 4 + 3]);
                }
            }
    }
}

TEST(Pixels, RandomBytesRoundHalfToEven) {
    EXPECT_EQ(0, tova::pixels::Random::byteOf(0));
    EXPECT_EQ(255, tova::pixels::Random::byteOf(0xFFFF));
    // 0.5 / 255 of the way is a tie between 0 and 1: it goes to 0.
    EXPECT_EQ(0, tova::pixels::Random::byteOf(128));
    EXPECT_EQ(1, tova::pixels::Random::byteOf(129));
    for (uint32_t u = 0; u < 65536; u += 97) {
        double exact = u / 65536.0 * 255.0;
        EXPECT_LE(std::abs(tova::pixels::Random::byteOf(u) - exact), 0.5 + 1e-9);
    }
}

TEST(Pixels, ResampleKeepsConstantsAndEdges) {
    std::vector<uint8_t> src(5 * 3 * 4, 77), dst(11 * 7 * 4, 0);
    tova::pixels::resample(src.data(), 5 * 4, 5, 3, dst.data(), 11 * 4, 11, 7, 4);
    for (uint8_t b : dst) ASSERT_EQ(77, b) << "a constant picture stays constant";
    std::vector<uint8_t> down(2 * 2 * 3, 0);
    std::vector<uint8_t> ramp(8 * 8 * 3);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            for (int c = 0; c < 3; ++c) ramp[(y * 8 + x) * 3 + c] = static_cast<uint8_t>(x * 30);
    tova::pixels::resample(ramp.data(), 24, 8, 8, down.data(), 6, 2, 2, 3);
    EXPECT_NEAR(down[0], 45, 1) << "the average of source columns 1 and 2";
    EXPECT_NEAR(down[3], 165, 1);
}

// ------------------------------------------------------------ AlphaDIBSection

TEST(AlphaDIBSection, LayoutAndPreMultiply) {
    auto d = alphaOf(3, 2);
    ASSERT_TRUE(d);
    LONG v = 0;
    d->get_BytesPerScanLine(&v);
    EXPECT_EQ(12, v);
    DIBSECTION ds{};
    ASSERT_EQ(static_cast<int>(sizeof ds), GetObjectW(tova::toHandle<HBITMAP>(handleOf(d.get())), sizeof ds, &ds));
    EXPECT_EQ(32, ds.dsBm.bmBitsPixel);
    EXPECT_EQ(2, ds.dsBmih.biHeight);

    // Blue 200, green 100, red 50 at alpha 128; then opaque and clear pixels.
    *at(d.get(), 0, 0) = 0x803264C8;
    *at(d.get(), 1, 0) = 0xFF3264C8;
    *at(d.get(), 2, 0) = 0x003264C8;
    ASSERT_EQ(S_OK, d->PreMultiplyAlpha());
    EXPECT_EQ(0x80193264u, *at(d.get(), 0, 0)) << "(200, 100, 50, 128) -> (100, 50, 25, 128)";
    EXPECT_EQ(0xFF3264C8u, *at(d.get(), 1, 0)) << "alpha 255 changes nothing";
    EXPECT_EQ(0x00000000u, *at(d.get(), 2, 0)) << "alpha 0 clears the colour";
    d->PreMultiplyAlpha();
    EXPECT_EQ(0x800C1932u, *at(d.get(), 0, 0)) << "not idempotent: darker again";
}

TEST(AlphaDIBSection, UseDrawDibStaysTrueUntilClearUp) {
    auto d = newAlpha();
    VARIANT_BOOL use = VARIANT_TRUE;
    d->get_UseDrawDib(&use);
    EXPECT_EQ(VARIANT_FALSE, use);
    d->put_UseDrawDib(VARIANT_TRUE);
    d->get_UseDrawDib(&use);
    EXPECT_EQ(VARIANT_TRUE, use);
    VARIANT_BOOL ok;
    d->Create(4, 4, &ok);
    d->get_UseDrawDib(&use);
    EXPECT_EQ(VARIANT_TRUE, use) << "Create keeps it on";
    d->put_UseDrawDib(VARIANT_FALSE);
    d->get_UseDrawDib(&use);
    EXPECT_EQ(VARIANT_TRUE, use) << "closed, but still reads True";
    d->ClearUp();
    d->get_UseDrawDib(&use);
    EXPECT_EQ(VARIANT_FALSE, use);
}

TEST(AlphaDIBSection, PaintPictureWithAndWithoutDrawDib) {
    auto d = alphaOf(4, 4);
    ASSERT_TRUE(d);
    fillAll(d.get(), 4, 4, 0xFF00C864);  // red 0, green 200, blue 100
    *at(d.get(), 0, 0) = 0xFFFF0000;
    Canvas plain(8, 8, RGB(0, 0, 0));
    d->PaintPicture(plain.handle(), 1, 1, -1, -1, 0, 0, NOTSRCCOPY);
    EXPECT_EQ(RGB(0, 255, 255), plain.pixel(1, 1)) << "BitBlt honours the raster operation";
    EXPECT_EQ(RGB(255, 55, 155), plain.pixel(4, 4));

    d->put_UseDrawDib(VARIANT_TRUE);
    Canvas drawn(8, 8, RGB(0, 0, 0));
    d->PaintPicture(drawn.handle(), 1, 1, -1, -1, 0, 0, NOTSRCCOPY);
    EXPECT_EQ(RGB(255, 0, 0), drawn.pixel(1, 1)) << "DrawDib ignores eRop and paints upright";
    EXPECT_EQ(RGB(0, 200, 100), drawn.pixel(4, 4));
    EXPECT_EQ(RGB(0, 0, 0), drawn.pixel(5, 5));

    d->put_UseDrawDib(VARIANT_FALSE);
    Canvas closed(8, 8, RGB(0, 0, 0));
    d->PaintPicture(closed.handle(), 0, 0, -1, -1, 0, 0, SRCCOPY);
    EXPECT_EQ(RGB(0, 0, 0), closed.pixel(1, 1)) << "a closed DrawDib handle paints nothing until ClearUp";
}

TEST(AlphaDIBSection, AlphaPaintPictureBlends) {
    auto d = alphaOf(4, 4);
    ASSERT_TRUE(d);
    fillAll(d.get(), 4, 4, 0x80640000);  // red 200 at alpha 128, premultiplied: red 100
    *at(d.get(), 0, 0) = 0x00000000;     // fully transparent
    Canvas c(6, 6, RGB(0, 0, 200));
    ASSERT_EQ(S_OK, d->AlphaPaintPicture(c.handle(), 1, 1, -1, -1, 0, 0, 255, VARIANT_TRUE));
    EXPECT_EQ(RGB(0, 0, 200), c.pixel(1, 1)) << "alpha 0 shows the destination";
    EXPECT_NEAR(GetRValue(c.pixel(3, 3)), 100, 2);
    EXPECT_NEAR(GetBValue(c.pixel(3, 3)), 100, 2);
    EXPECT_EQ(RGB(0, 0, 200), c.pixel(5, 5));

    // Late-bound with everything after the DC left out: constant alpha 255, per-pixel alpha on.
    ComPtr<IDispatch> disp = d.as<IDispatch>(IID_IDispatch);
    Canvas s(6, 6, RGB(0, 0, 200));
    CallResult r;
    call(r, disp.get(), L"AlphaPaintPicture", DISPATCH_METHOD, {vLong(s.handle())});
    EXPECT_EQ(S_OK, r.hr);
    EXPECT_EQ(RGB(0, 0, 200), s.pixel(0, 0));
    EXPECT_NEAR(GetRValue(s.pixel(2, 2)), 100, 2);
}

TEST(AlphaDIBSection, ExtractDibHandsTheDibOver) {
    HBITMAP dib = nullptr;
    {
        auto d = alphaOf(5, 3);
        ASSERT_TRUE(d);
        LONG h = 0;
        ASSERT_EQ(S_OK, d->ExtractDib(&h));
        dib = tova::toHandle<HBITMAP>(h);
        EXPECT_NE(nullptr, dib);
        EXPECT_EQ(0, handleOf(d.get()));
        LONG dc = -1;
        d->get_hDC(&dc);
        EXPECT_EQ(0, dc);
        LONG w = 0;
        d->get_Width(&w);
        EXPECT_EQ(5, w) << "the header keeps the size";
    }
    EXPECT_EQ(static_cast<DWORD>(OBJ_BITMAP), GetObjectType(dib)) << "still valid after the object went";
    DeleteObject(dib);
}

TEST(AlphaDIBSection, PictureHoldsA32BitDib) {
    auto d = alphaOf(4, 2);
    ASSERT_TRUE(d);
    fillAll(d.get(), 4, 2, 0x7F102030);
    ComPtr<IPictureDisp> pic;
    d->get_Picture(pic.put());
    ASSERT_TRUE(pic);
    OLE_HANDLE h = 0;
    pic.as<IPicture>(IID_IPicture)->get_Handle(&h);
    DIBSECTION ds{};
    ASSERT_EQ(static_cast<int>(sizeof ds),
              GetObjectW(reinterpret_cast<HBITMAP>(static_cast<ULONG_PTR>(h)), sizeof ds, &ds));
    EXPECT_EQ(32, ds.dsBm.bmBitsPixel);
    EXPECT_EQ(0x7F102030u, static_cast<DWORD*>(ds.dsBm.bmBits)[0]);

    auto e = newAlpha();
    Variant result;
    e->CreateFromPicture(pic.get(), &result);
    EXPECT_EQ(VT_EMPTY, V_VT(&result));
    LONG w = 0;
    e->get_Width(&w);
    EXPECT_EQ(4, w);
    EXPECT_EQ(0x102030u, *at(e.get(), 2, 1) & 0xFFFFFF);
    e->CreateFromHBitmap(0, result.put());
    EXPECT_EQ(VT_EMPTY, V_VT(&result));
    EXPECT_EQ(0, handleOf(e.get())) << "a failed creation leaves no DIB";
    auto none = newAlpha();
    none->get_Picture(pic.put());
    EXPECT_FALSE(pic);
}

TEST(AlphaDIBSection, SavePictureWritesA32BitBitmapFile) {
    auto d = alphaOf(3, 2);
    ASSERT_TRUE(d);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) *at(d.get(), x, y) = 0x80000000u | static_cast<DWORD>(y * 16 + x);
    std::wstring path = tempPath(L"saved.bmp");
    Bstr name(path.c_str());
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, d->SavePicture(name.get(), &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    HANDLE f = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, f);
    std::vector<uint8_t> data(200);
    DWORD got = 0;
    ReadFile(f, data.data(), 200, &got, nullptr);
    CloseHandle(f);
    DeleteFileW(path.c_str());
    ASSERT_EQ(62u + 24u, got);
    EXPECT_EQ('B', data[0]);
    EXPECT_EQ('M', data[1]);
    EXPECT_EQ(86u, *reinterpret_cast<DWORD*>(&data[2]));
    EXPECT_EQ(62u, *reinterpret_cast<DWORD*>(&data[10]));
    const BITMAPINFOHEADER* info = reinterpret_cast<BITMAPINFOHEADER*>(&data[14]);
    EXPECT_EQ(40u, info->biSize);
    EXPECT_EQ(3, info->biWidth);
    EXPECT_EQ(2, info->biHeight);
    EXPECT_EQ(32, info->biBitCount);
    EXPECT_EQ(24u, info->biSizeImage);
    for (int i = 54; i < 62; ++i) EXPECT_EQ(0, data[i]);
    EXPECT_EQ(0x80000010u, *reinterpret_cast<DWORD*>(&data[62])) << "bottom row first";
    EXPECT_EQ(0x80000002u, *reinterpret_cast<DWORD*>(&data[62 + 20]));

    // A file that cannot be created: error 17 with the system's message.
    Bstr bad(L"Z:\\no\\such\\folder\\x.bmp");
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0011), d->SavePicture(bad.get(), &ok));
    ErrorText e = lastError();
    EXPECT_EQ(L"TOVA200.cDIBSection", e.source);
    EXPECT_FALSE(e.description.empty());
    EXPECT_NE(L'\n', e.description.back());
}

TEST(AlphaDIBSection, ResampleAndRandomise) {
    auto d = alphaOf(6, 4);
    ASSERT_TRUE(d);
    fillAll(d.get(), 6, 4, 0x11000000);
    d->RandomiseBits(VARIANT_FALSE);
    int blue = 0, alphaKept = 0;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) {
            blue += *at(d.get(), x, y) & 0xFF;
            alphaKept += (*at(d.get(), x, y) >> 24) == 0x11;
        }
    EXPECT_EQ(0, blue);
    EXPECT_EQ(24, alphaKept) << "alpha bytes are left alone";

    ComPtr<_AlphaDIBSection> same;
    d->Resample(4, 6, same.put());
    ASSERT_TRUE(same);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x) EXPECT_EQ(*at(d.get(), x, y), *at(same.get(), x, y));
    ComPtr<_AlphaDIBSection> other;
    d->Resample(8, 3, other.put());
    ASSERT_TRUE(other);
    LONG w = 0, h = 0;
    other->get_Width(&w);
    other->get_Height(&h);
    EXPECT_EQ(3, w);
    EXPECT_EQ(8, h);
    EXPECT_EQ(0x11u, *at(other.get(), 1, 3) >> 24);
    ComPtr<_AlphaDIBSection> none;
    d->Resample(-1, 3, none.put());
    EXPECT_FALSE(none);
}
