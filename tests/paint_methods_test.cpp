// PaintMethods' effects, placement, pictures and icons, in-place colourising
// and byte arrays, read back pixel by pixel from a 32-bit canvas filled with
// the sentinel RGB(1, 2, 3).
#include "support.h"

#include <cmath>
#include <cstdlib>
#include <functional>

using namespace test;

namespace {

const COLORREF kSentinel = RGB(1, 2, 3);
const HRESULT kFive = static_cast<HRESULT>(0x800A0005), k481 = static_cast<HRESULT>(0x800A01E1);
const COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255), kBlack = 0;

// A 32-bit top-down DIB section with pixels from `colour` (alpha from `alpha`).
HBITMAP dib32(int w, int h, const std::function<COLORREF(int, int)>& colour,
              const std::function<int(int, int)>& alpha = nullptr) {
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = w;
    bi.bmiHeader.biHeight = -h;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 32;
    DWORD* bits = nullptr;
    HBITMAP b = CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits), nullptr, 0);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const COLORREF c = colour(x, y);
            const DWORD a = alpha ? alpha(x, y) : 0;
            bits[y * w + x] = a << 24 | GetRValue(c) << 16 | GetGValue(c) << 8 | GetBValue(c);
        }
    return b;
}

ComPtr<IPictureDisp> wrap(HANDLE h, UINT type) {
    PICTDESC d{};
    d.cbSizeofstruct = sizeof d;
    d.picType = type;
    if (type == PICTYPE_BITMAP) d.bmp.hbitmap = static_cast<HBITMAP>(h);
    else d.icon.hicon = static_cast<HICON>(h);
    ComPtr<IPictureDisp> p;
    OleCreatePictureIndirect(&d, IID_IPictureDisp, TRUE, p.putVoid());
    return p;
}

ComPtr<IPictureDisp> picture(int w, int h, const std::function<COLORREF(int, int)>& colour) {
    return wrap(dib32(w, h, colour), PICTYPE_BITMAP);
}

ComPtr<IPictureDisp> solid(int w, int h, COLORREF c) { return picture(w, h, [c](int, int) { return c; }); }

// A 16 x 16 icon of `colour`, with per-pixel alpha when `alpha` is given;
// without, its mask leaves out the right half when `halfMasked`.
HICON icon(COLORREF colour, const std::function<int(int, int)>& alpha = nullptr, bool halfMasked = false) {
    ICONINFO ii{};
    ii.fIcon = TRUE;
    ii.hbmColor = dib32(16, 16, [colour](int, int) { return colour; }, alpha ? alpha : [](int, int) { return 0; });
    ii.hbmMask = CreateBitmap(16, 16, 1, 1, nullptr);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, ii.hbmMask);
    PatBlt(dc, 0, 0, 16, 16, BLACKNESS);  // black mask: every pixel painted
    if (halfMasked) PatBlt(dc, 8, 0, 8, 16, WHITENESS);
    SelectObject(dc, old);
    DeleteDC(dc);
    HICON i = CreateIconIndirect(&ii);
    DeleteObject(ii.hbmColor);
    DeleteObject(ii.hbmMask);
    return i;
}

class PaintMethodsTest : public ::testing::Test {
protected:
    void SetUp() override {
        paint = create<_PaintMethods>(CLSID_PaintMethods, IID__PaintMethods);
        ASSERT_TRUE(paint);
    }
    ComPtr<_PaintMethods> paint;
    VARIANT_BOOL ok = VARIANT_FALSE;
};

}  // namespace

TEST_F(PaintMethodsTest, MaskedDisabledEmbossedShadowed) {
    auto red = solid(4, 4, kRed);
    auto mask = picture(4, 4, [](int x, int y) { return x == 1 && y == 1 ? kWhite : kBlack; });
    Canvas m(12, 12);
    ASSERT_EQ(S_OK, paint->StretchPaintMaskedStdPic(m.handle(), 0, 0, 0, 0, red.get(), mask.get(), 0, 0, 0, 0, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(kSentinel, m.pixel(1, 1));
    EXPECT_EQ(kRed, m.pixel(0, 0));
    EXPECT_EQ(kRed, m.pixel(3, 3));
    EXPECT_EQ(kSentinel, m.pixel(4, 4));
    paint->StretchPaintMaskedStdPic(m.handle(), 4, 4, 8, 8, red.get(), mask.get(), 0, 0, 0, 0, &ok);
    for (int y = 6; y < 8; ++y)
        for (int x = 6; x < 8; ++x) EXPECT_EQ(kSentinel, m.pixel(x, y)) << "stretched twice: a 2 x 2 hole";
    EXPECT_EQ(kRed, m.pixel(8, 8));

    auto redWithBlue = picture(3, 1, [](int x, int) { return x == 1 ? kBlue : kRed; });
    Canvas d(3, 1);
    paint->StretchPaintDisabledStdPic(d.handle(), 0, 0, 0, 0, redWithBlue.get(), static_cast<LONG>(kBlue), 128, 0, 0,
                                      0, 0, &ok);
    EXPECT_EQ(RGB(165, 165, 165), d.pixel(0, 0));
    EXPECT_EQ(kSentinel, d.pixel(1, 0)) << "left out";

    auto dot = picture(5, 5, [](int x, int y) { return x == 2 && y == 2 ? kBlack : kWhite; });
    Canvas e(16, 16);
    paint->StretchPaintEmbossedStdPic(e.handle(), 8, 8, 0, 0, dot.get(), -1, static_cast<LONG>(kWhite),
                                      static_cast<LONG>(kBlue), 0, 0, 0, 0, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    int changed = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) changed += e.pixel(x, y) != kSentinel;
    EXPECT_EQ(kBlue, e.pixel(10, 10));
    EXPECT_EQ(kWhite, e.pixel(11, 11));
    EXPECT_EQ(2, changed) << "nothing else";

    Canvas s(10, 10);
    paint->StretchPaintShadowedStdPic(s.handle(), 2, 2, 0, 0, red.get(), -1, static_cast<LONG>(kBlue), 2, 3, 255, 0,
                                      0, 0, 0, &ok);
    EXPECT_EQ(kRed, s.pixel(2, 2));
    EXPECT_EQ(kRed, s.pixel(5, 5));
    EXPECT_EQ(kBlue, s.pixel(7, 8)) << "the silhouette at the offset";
    EXPECT_EQ(kSentinel, s.pixel(1, 1));
    EXPECT_EQ(kSentinel, s.pixel(8, 4));
}

TEST_F(PaintMethodsTest, AlphaGradientAndColourised) {
    auto black = solid(4, 4, kBlack);
    Canvas a(4, 4, kWhite);
    paint->StretchPaintAlphaStdPic(a.handle(), 0, 0, 0, 0, black.get(), 128, -1, VARIANT_FALSE, 0, 0, 0, 0, &ok);
    EXPECT_EQ(RGB(127, 127, 127), a.pixel(2, 2));

    // 32-bit bitmap with premultiplied alpha graded across: the premultiplied formula per column.
    auto graded = wrap(dib32(16, 1, [](int x, int) { return RGB(x * 17, 0, 0); }, [](int x, int) { return x * 17; }),
                       PICTYPE_BITMAP);
    Canvas g(16, 1, kWhite);
    paint->StretchPaintAlphaStdPic(g.handle(), 0, 0, 0, 0, graded.get(), 200, -1, VARIANT_TRUE, 0, 0, 0, 0, &ok);
    for (int x = 0; x < 16; ++x) {
        const int pa = x * 17, a = (pa * 200 + 127) / 255;
        EXPECT_EQ(RGB((pa * 200 + 255 * (255 - a) + 127) / 255, (255 * (255 - a) + 127) / 255,
                      (255 * (255 - a) + 127) / 255),
                  g.pixel(x, 0))
            << x;
    }

    // An icon with graded alpha keeps its own transparency (Wine's render may differ by 1).
    HICON fading = icon(kRed, [](int x, int) { return x * 17; });
    auto fadingPicture = wrap(fading, PICTYPE_ICON);
    Canvas i(16, 16, kWhite);
    paint->StretchPaintAlphaStdPic(i.handle(), 0, 0, 0, 0, fadingPicture.get(), 255, -1, VARIANT_FALSE, 0, 0, 0, 0,
                                   &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    for (int x = 0; x < 16; ++x) {
        EXPECT_EQ(255, GetRValue(i.pixel(x, 8)));
        EXPECT_NEAR(255 - x * 17, GetGValue(i.pixel(x, 8)), 1) << x;
    }

    // Pixels an icon's mask leaves out stay as they were under every effect.
    auto half = wrap(icon(kRed, nullptr, true), PICTYPE_ICON);
    Canvas m(16, 16);
    paint->StretchPaintAlphaStdPic(m.handle(), 0, 0, 0, 0, half.get(), 128, -1, VARIANT_FALSE, 0, 0, 0, 0, &ok);
    EXPECT_EQ(RGB((255 * 128 + 1 * 127 + 127) / 255, (2 * 127 + 127) / 255, (3 * 127 + 127) / 255), m.pixel(3, 3));
    EXPECT_EQ(kSentinel, m.pixel(12, 3));

    Canvas h(256, 1, kWhite);
    auto blackRow = solid(256, 1, kBlack);
    paint->StretchPaintAlphaGradientStdPic(h.handle(), 0, 0, 0, 0, blackRow.get(), 0, 255, tovaGradientHorizontal, -1,
                                           0, 0, 0, 0, &ok);
    for (int x = 0; x < 256; x += 15) EXPECT_EQ(RGB(255 - x, 255 - x, 255 - x), h.pixel(x, 0)) << x;

    auto greys = picture(3, 1, [](int x, int) { return x == 0 ? kBlack : x == 1 ? kWhite : RGB(128, 128, 128); });
    Canvas c(3, 1), n(3, 1);
    paint->StretchPaintColourisedStdPic(c.handle(), 0, 0, 0, 0, greys.get(), static_cast<LONG>(kRed), 255, -1, 0, 0, 0,
                                        0, &ok);
    EXPECT_EQ(kBlack, c.pixel(0, 0));
    EXPECT_EQ(kWhite, c.pixel(1, 0));
    EXPECT_EQ(RGB(255, 1, 1), c.pixel(2, 0));
    paint->StretchPaintColourisedStdPic(c.handle(), 0, 0, 0, 0, greys.get(), static_cast<LONG>(kRed), 0, -1, 0, 0, 0,
                                        0, &ok);
    paint->StretchPaintNormalStdPic(n.handle(), 0, 0, 0, 0, greys.get(), 0, 0, 0, 0, &ok);
    for (int x = 0; x < 3; ++x) EXPECT_EQ(n.pixel(x, 0), c.pixel(x, 0)) << "Amount 0 paints the picture as it is";
}

TEST_F(PaintMethodsTest, TiledCentredFitted) {
    auto tile = picture(3, 2, [](int x, int y) { return RGB(x * 80, y * 80, 7); });
    Canvas t(9, 7);
    ASSERT_EQ(S_OK, paint->PaintTiledStdPic(t.handle(), 1, 1, 7, 5, tile.get(), 1, -1, -1, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) {
            const bool inside = x >= 1 && x < 8 && y >= 1 && y < 6;
            const int px = ((x - 1 - 1) % 3 + 3) % 3, py = ((y - 1 + 1) % 2 + 2) % 2;
            EXPECT_EQ(inside ? RGB(px * 80, py * 80, 7) : kSentinel, t.pixel(x, y)) << x << "," << y;
        }

    auto three = solid(3, 3, kRed);
    Canvas c(10, 10);
    paint->PaintCentredStdPic(c.handle(), 0, 0, 10, 10, three.get(), -1, &ok);
    EXPECT_EQ(kSentinel, c.pixel(2, 3));
    EXPECT_EQ(kRed, c.pixel(3, 3));
    EXPECT_EQ(kRed, c.pixel(5, 5));
    EXPECT_EQ(kSentinel, c.pixel(6, 6));

    auto wide = solid(4, 2, kBlue);
    struct Case {
        PictureFitConstants fit;
        int firstRow, lastRow, firstColumn;
    } cases[] = {{tovaFitInside, 2, 7, 0}, {tovaFitCover, 0, 10, 0}, {tovaFitShrinkOnly, 4, 6, 3}};
    for (const Case& k : cases) {
        Canvas f(10, 10);
        paint->PaintFittedStdPic(f.handle(), 0, 0, 10, 10, wide.get(), k.fit, -1, &ok);
        EXPECT_EQ(VARIANT_TRUE, ok);
        for (int y = 0; y < 10; ++y)
            EXPECT_EQ(y >= k.firstRow && y < k.lastRow ? kBlue : kSentinel, f.pixel(k.firstColumn, y))
                << k.fit << " row " << y;
        EXPECT_EQ(k.firstColumn ? kSentinel : kBlue, f.pixel(0, 5));
    }
}

TEST_F(PaintMethodsTest, PicturesFromDcsAndHandlesAndIcons) {
    Canvas c(20, 10);
    for (int x = 0; x < 10; ++x) SetPixel(c.dc(), x, x, RGB(x * 20, 50, 60));
    ComPtr<IPictureDisp> p;
    ASSERT_EQ(S_OK, paint->PictureFromDC(c.handle(), 0, 0, 10, 10, p.put()));
    ASSERT_TRUE(p);
    paint->StretchPaintNormalStdPic(c.handle(), 10, 0, 0, 0, p.get(), 0, 0, 0, 0, &ok);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) ASSERT_EQ(c.pixel(x, y), c.pixel(x + 10, y));
    LONG w = 0, h = 0;
    paint->PictureDimensions(p.get(), &w, &h, &ok);
    EXPECT_EQ(10, w);
    EXPECT_EQ(10, h);

    HBITMAP mine = dib32(2, 2, [](int, int) { return kRed; });
    ComPtr<IPictureDisp> copy;
    paint->PictureFromHandle(tova::fromHandle(mine), tovaPictureBitmap, VARIANT_FALSE, copy.put());
    DeleteObject(mine);
    Canvas d(2, 2);
    paint->StretchPaintNormalStdPic(d.handle(), 0, 0, 0, 0, copy.get(), 0, 0, 0, 0, &ok);
    EXPECT_EQ(kRed, d.pixel(1, 1)) << "the copy outlives the caller's handle";

    HICON red = icon(kRed);
    Canvas i(20, 20);
    ASSERT_EQ(S_OK, paint->PaintIcon(i.handle(), 2, 2, tova::fromHandle(red), 0, 0, VARIANT_FALSE, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(kRed, i.pixel(2, 2));
    EXPECT_EQ(kRed, i.pixel(17, 17));
    EXPECT_EQ(kSentinel, i.pixel(18, 18));
    paint->PaintIcon(i.handle(), 0, 0, tova::fromHandle(red), 8, 8, VARIANT_TRUE, &ok);
    EXPECT_EQ(RGB(165, 165, 165), i.pixel(4, 4)) << "greyed like a disabled picture";
    EXPECT_EQ(kRed, i.pixel(9, 9));
    ComPtr<IPictureDisp> iconPicture;
    paint->PictureFromHandle(tova::fromHandle(red), tovaPictureIcon, VARIANT_TRUE, iconPicture.put());
    ASSERT_TRUE(iconPicture) << "owns the icon now";
}

TEST_F(PaintMethodsTest, ColourisingSectionsInPlace) {
    struct Case {
        const char* name;
        std::function<void(IDispatch*)> apply;
        COLORREF expected;
    } cases[] = {
        {"grey", [&](IDispatch* s) { paint->GreyscaleDIB(s, 255); }, RGB(123, 123, 123)},
        {"half grey", [&](IDispatch* s) { paint->GreyscaleDIB(s, 128); }, RGB(67, 161, 77)},
        {"invert", [&](IDispatch* s) { paint->InvertDIB(s); }, RGB(245, 55, 225)},
        {"sepia", [&](IDispatch* s) { paint->SepiaDIB(s, 255); },
         RGB(std::min(255, (3930 + 153800 + 5670) / 1000), (3490 + 137200 + 5040) / 1000, (2720 + 106800 + 3930) / 1000)},
        {"tint", [&](IDispatch* s) { paint->TintDIB(s, static_cast<LONG>(kWhite), 255); }, kWhite},
        {"neutral adjust", [&](IDispatch* s) { paint->AdjustDIB(s, 0, 0, vMissing()); }, RGB(10, 200, 30)},
        {"brighter", [&](IDispatch* s) { paint->AdjustDIB(s, 100, 0, vDouble(1)); }, RGB(110, 255, 130)},
        {"contrast", [&](IDispatch* s) { paint->AdjustDIB(s, 0, 50, vMissing()); }, RGB(0, 236, 0)},
        {"gamma", [&](IDispatch* s) { paint->AdjustDIB(s, 0, 0, vDouble(2)); },
         RGB(std::lround(255 * std::sqrt(10 / 255.0)), std::lround(255 * std::sqrt(200 / 255.0)),
             std::lround(255 * std::sqrt(30 / 255.0)))},
        {"colourise blue", [&](IDispatch* s) { paint->ColouriseDIB(s, static_cast<LONG>(kBlue), 255); },
         RGB(0, 0, 246)},
    };
    for (const Case& k : cases) {
        auto d = createDib<_DIBSection>(CLSID_DIBSection, IID__DIBSection, 3, 2);
        auto a = createDib<_AlphaDIBSection>(CLSID_AlphaDIBSection, IID__AlphaDIBSection, 3, 2);
        ASSERT_TRUE(d && a);
        uint8_t* db = dibBits(d.get());
        uint8_t* ab = dibBits(a.get());
        for (int i = 0; i < 2; ++i) {
            LONG stride = 0;
            d->get_BytesPerScanLine(&stride);
            for (int x = 0; x < 3; ++x) {
                uint8_t* p = db + i * stride + 3 * x;
                p[0] = 30, p[1] = 200, p[2] = 10;
                uint8_t* q = ab + i * 12 + 4 * x;
                q[0] = 30, q[1] = 200, q[2] = 10, q[3] = 77;
            }
        }
        k.apply(ComPtr<_DIBSection>(d).as<IDispatch>(IID_IDispatch).get());
        k.apply(ComPtr<_AlphaDIBSection>(a).as<IDispatch>(IID_IDispatch).get());
        EXPECT_EQ(k.expected, RGB(db[2], db[1], db[0])) << k.name;
        EXPECT_EQ(k.expected, RGB(ab[2 + 12], ab[1 + 12], ab[0 + 12])) << k.name << " (alpha section)";
        EXPECT_EQ(77, ab[3]) << k.name << ": alpha left alone";
    }
    auto d = createDib<_DIBSection>(CLSID_DIBSection, IID__DIBSection, 4, 4);
    LONG count = 0;
    paint->ReplaceColorDIB(ComPtr<_DIBSection>(d).as<IDispatch>(IID_IDispatch).get(), 0x010101, kRed, 1, &count);
    EXPECT_EQ(16, count) << "a new section is black, within 1 of RGB(1, 1, 1)";
    EXPECT_EQ(0, dibBits(d.get())[0]);
    EXPECT_EQ(255, dibBits(d.get())[2]);
}

TEST_F(PaintMethodsTest, PictureByteArraysRoundTrip) {
    auto original = picture(7, 5, [](int x, int y) { return RGB(x * 30, y * 50, 200 - x * y * 5); });
    for (CPictureByteArrayConversionConstants format : {tovaPictureConvBMP, tovaPictureConvJPEG}) {
        Variant src(static_cast<IDispatch*>(original.get())), bytes;
        ASSERT_EQ(S_OK, paint->CPictureByteArray(src, format, 95, bytes.put()));
        ASSERT_EQ(VT_ARRAY | VT_UI1, V_VT(&bytes));
        const uint8_t* b = static_cast<const uint8_t*>(V_ARRAY(&bytes)->pvData);
        EXPECT_EQ(format == tovaPictureConvBMP ? 'B' : 0xFF, b[0]);
        Variant back;
        ASSERT_EQ(S_OK, paint->CPictureByteArray(bytes, tovaPictureConvBMP, 90, back.put()));
        ASSERT_EQ(VT_DISPATCH, V_VT(&back));
        Canvas a(7, 5), c(7, 5);
        paint->StretchPaintNormalStdPic(a.handle(), 0, 0, 0, 0, original.get(), 0, 0, 0, 0, &ok);
        paint->StretchPaintNormalStdPic(c.handle(), 0, 0, 0, 0, reinterpret_cast<IPictureDisp*>(V_DISPATCH(&back)), 0,
                                        0, 0, 0, &ok);
        long error = 0;
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 7; ++x) {
                const COLORREF p = a.pixel(x, y), q = c.pixel(x, y);
                error += std::abs(GetRValue(p) - GetRValue(q)) + std::abs(GetGValue(p) - GetGValue(q)) +
                         std::abs(GetBValue(p) - GetBValue(q));
            }
        if (format == tovaPictureConvBMP)
            EXPECT_EQ(0, error) << "a BMP image is exact";
        else
            EXPECT_LT(error / (7 * 5 * 3), 12) << "a JPEG image is close";
    }
    // An 8-bit top-down file with a palette of three colours, made by hand.
    const uint8_t pal8[] = {'B', 'M', 0x4E, 0, 0, 0, 0, 0, 0, 0, 0x42, 0, 0, 0,               // file header
                            40, 0, 0, 0, 4, 0, 0, 0, 0xFD, 0xFF, 0xFF, 0xFF, 1, 0, 8, 0,      // 4 x -3, 8 bits
                            0, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0,
                            0, 0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 0,                        // black, white, red
                            0, 1, 2, 1, 2, 2, 2, 2, 0, 0, 0, 0};
    Variant file;
    V_VT(&file) = VT_ARRAY | VT_UI1;
    V_ARRAY(&file) = SafeArrayCreateVector(VT_UI1, 0, sizeof pal8);
    memcpy(V_ARRAY(&file)->pvData, pal8, sizeof pal8);
    Variant fromFile;
    ASSERT_EQ(S_OK, paint->CPictureByteArray(file, tovaPictureConvBMP, 90, fromFile.put()));
    Canvas p8(4, 3);
    paint->StretchPaintNormalStdPic(p8.handle(), 0, 0, 0, 0, reinterpret_cast<IPictureDisp*>(V_DISPATCH(&fromFile)), 0,
                                    0, 0, 0, &ok);
    EXPECT_EQ(kWhite, p8.pixel(1, 0)) << "top-down: the first row in the file is the top";
    EXPECT_EQ(kRed, p8.pixel(2, 0));
    EXPECT_EQ(kRed, p8.pixel(0, 1));
    EXPECT_EQ(kBlack, p8.pixel(3, 2));

    Variant junk = longArray({1, 2, 3}), out;
    SAFEARRAY* raw = SafeArrayCreateVector(VT_UI1, 0, 64);
    Variant bytes;
    V_VT(&bytes) = VT_ARRAY | VT_UI1;
    V_ARRAY(&bytes) = raw;
    static_cast<uint8_t*>(raw->pvData)[0] = 'B', static_cast<uint8_t*>(raw->pvData)[1] = 'M';
    EXPECT_EQ(k481, paint->CPictureByteArray(bytes, tovaPictureConvBMP, 90, out.put())) << "a broken header";
    EXPECT_EQ(kFive, paint->CPictureByteArray(junk, tovaPictureConvBMP, 90, out.put()));
    Variant pic(static_cast<IDispatch*>(original.get()));
    EXPECT_EQ(kFive, paint->CPictureByteArray(pic, static_cast<CPictureByteArrayConversionConstants>(2), 90, out.put()));
    EXPECT_EQ(kFive, paint->CPictureByteArray(pic, tovaPictureConvJPEG, 0, out.put()));
    EXPECT_EQ(k481, paint->CPictureByteArray(Variant(static_cast<IDispatch*>(nullptr)), tovaPictureConvBMP, 90,
                                             out.put()));
}

TEST_F(PaintMethodsTest, BadArgumentsRaiseAndNoDcIsFalse) {
    Canvas c(8, 8);
    const LONG dc = c.handle();
    auto pic = solid(4, 4, kRed), small = solid(2, 2, kRed);
    const LONG notColour = static_cast<LONG>(0x800000FF);
    auto dib = create<_DIBSection>(CLSID_DIBSection, IID__DIBSection);  // without a DIB
    ComPtr<IDispatch> noDib = dib.as<IDispatch>(IID_IDispatch);
    ComPtr<IDispatch> notSection = newRectangle().as<IDispatch>(IID_IDispatch);
    auto section = createDib<_DIBSection>(CLSID_DIBSection, IID__DIBSection, 2, 2);
    ComPtr<IDispatch> good = section.as<IDispatch>(IID_IDispatch);
    ComPtr<IPictureDisp> none;
    LONG n = 0;
    struct Case {
        HRESULT expected, got;
    } cases[] = {
        {k481, paint->StretchPaintDisabledStdPic(dc, 0, 0, 0, 0, nullptr, -1, 128, 0, 0, 0, 0, &ok)},
        {k481, paint->StretchPaintMaskedStdPic(dc, 0, 0, 0, 0, pic.get(), nullptr, 0, 0, 0, 0, &ok)},
        {kFive, paint->StretchPaintMaskedStdPic(dc, 0, 0, 0, 0, pic.get(), small.get(), 0, 0, 0, 0, &ok)},
        {kFive, paint->StretchPaintEmbossedStdPic(dc, 0, 0, -1, 0, pic.get(), -1, 0, 0, 0, 0, 0, 0, &ok)},
        {kFive, paint->StretchPaintShadowedStdPic(dc, 0, 0, 0, 0, pic.get(), -1, notColour, 2, 2, 9, 0, 0, 0, 0, &ok)},
        {kFive, paint->StretchPaintAlphaStdPic(dc, 0, 0, 0, 0, pic.get(), 9, notColour, 0, 0, 0, 0, 0, &ok)},
        {kFive, paint->StretchPaintAlphaGradientStdPic(dc, 0, 0, 0, 0, pic.get(), 0, 9,
                                                       static_cast<GradientDirectionConstants>(7), -1, 0, 0, 0, 0, &ok)},
        {kFive, paint->StretchPaintColourisedStdPic(dc, 0, 0, 0, 0, pic.get(), notColour, 9, -1, 0, 0, 0, 0, &ok)},
        {kFive, paint->PaintTiledStdPic(dc, 0, 0, -4, 4, pic.get(), 0, 0, -1, &ok)},
        {k481, paint->PaintCentredStdPic(dc, 0, 0, 4, 4, nullptr, -1, &ok)},
        {kFive, paint->PaintFittedStdPic(dc, 0, 0, 4, 4, pic.get(), static_cast<PictureFitConstants>(3), -1, &ok)},
        {kFive, paint->PictureFromDC(dc, 0, 0, 0, 4, none.put())},
        {kFive, paint->PictureFromHandle(dc, tovaPictureBitmap, VARIANT_FALSE, none.put())},
        {kFive, paint->PictureFromHandle(0, static_cast<PictureHandleTypeConstants>(2), VARIANT_FALSE, none.put())},
        {kFive, paint->PaintIcon(dc, 0, 0, dc, 0, 0, VARIANT_FALSE, &ok)},
        {k481, paint->PictureDimensions(nullptr, &n, &n, &ok)},
        {k481, paint->GreyscaleDIB(nullptr, 255)},
        {k481, paint->InvertDIB(noDib.get())},
        {k481, paint->SepiaDIB(notSection.get(), 255)},
        {kFive, paint->TintDIB(good.get(), notColour, 9)},
        {kFive, paint->AdjustDIB(good.get(), 256, 0, vMissing())},
        {kFive, paint->AdjustDIB(good.get(), 0, -101, vMissing())},
        {kFive, paint->AdjustDIB(good.get(), 0, 0, vDouble(0.05))},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) EXPECT_EQ(cases[i].expected, cases[i].got) << i;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(kSentinel, c.pixel(x, y));

    ok = VARIANT_TRUE;
    paint->StretchPaintAlphaStdPic(0, 0, 0, 0, 0, pic.get(), 9, -1, 0, 0, 0, 0, 0, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    ok = VARIANT_TRUE;
    paint->PaintTiledStdPic(0, 0, 0, 4, 4, pic.get(), 0, 0, -1, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    paint->PictureFromDC(0, 0, 0, 4, 4, none.put());
    EXPECT_FALSE(none);
}
