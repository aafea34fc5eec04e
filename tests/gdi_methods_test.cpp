// GDIMethods beyond the shapes: lines, polygons, gradients, alpha fills,
// pattern fills, frames, GDI objects, regions and colours, read back pixel by
// pixel from a 32-bit canvas filled with the sentinel RGB(1, 2, 3).
#include "support.h"

#include "bench/graphics_cycles.h"

#include <array>

using namespace test;

namespace {

const COLORREF kSentinel = RGB(1, 2, 3);
const HRESULT kFive = static_cast<HRESULT>(0x800A0005);
const COLORREF kRed = RGB(255, 0, 0), kBlue = RGB(0, 0, 255), kWhite = RGB(255, 255, 255);

// A Variant array of POINTAPI records (the record type read from a Rectangle's MidPoint).
Variant pointRecords(std::initializer_list<POINTAPI> points) {
    static IRecordInfo* info = [] {
        IRecordInfo* r = nullptr;
        ComPtr<IDispatch> d = newRectangle().as<IDispatch>(IID_IDispatch);
        CallResult c;
        call(c, d.get(), L"MidPoint", DISPATCH_PROPERTYGET, {});
        if (V_VT(&c.value) == VT_RECORD) r = V_RECORDINFO(&c.value), r->AddRef();
        return r;
    }();
    Variant v;
    SAFEARRAY* sa = SafeArrayCreateVectorEx(VT_RECORD, 0, static_cast<ULONG>(points.size()), info);
    POINTAPI* p = nullptr;
    SafeArrayAccessData(sa, reinterpret_cast<void**>(&p));
    for (const POINTAPI& q : points) *p++ = q;
    SafeArrayUnaccessData(sa);
    V_VT(&v) = VT_ARRAY | VT_RECORD;
    V_ARRAY(&v) = sa;
    return v;
}

// Everything a drawing member must leave as it found it.
struct DcState {
    HGDIOBJ pen, brush, font, bitmap;
    COLORREF back, text;
    int backMode, rop2, fillMode, stretchMode;
    POINT origin, position;
    RECT clip;
    int clipKind;
    explicit DcState(HDC dc) {
        pen = GetCurrentObject(dc, OBJ_PEN), brush = GetCurrentObject(dc, OBJ_BRUSH);
        font = GetCurrentObject(dc, OBJ_FONT), bitmap = GetCurrentObject(dc, OBJ_BITMAP);
        back = GetBkColor(dc), text = GetTextColor(dc), backMode = GetBkMode(dc), rop2 = GetROP2(dc);
        fillMode = GetPolyFillMode(dc), stretchMode = GetStretchBltMode(dc);
        GetBrushOrgEx(dc, &origin);
        GetCurrentPositionEx(dc, &position);
        clipKind = GetClipBox(dc, &clip);
    }
    bool operator==(const DcState& o) const {
        return pen == o.pen && brush == o.brush && font == o.font && bitmap == o.bitmap && back == o.back &&
               text == o.text && backMode == o.backMode && rop2 == o.rop2 && fillMode == o.fillMode &&
               stretchMode == o.stretchMode && origin.x == o.origin.x && origin.y == o.origin.y &&
               position.x == o.position.x && position.y == o.position.y && EqualRect(&clip, &o.clip) &&
               clipKind == o.clipKind;
    }
};

class GDIMethodsTest : public ::testing::Test {
protected:
    void SetUp() override {
        gdi = create<_GDIMethods>(CLSID_GDIMethods, IID__GDIMethods);
        ASSERT_TRUE(gdi);
    }
    ComPtr<_GDIMethods> gdi;
    VARIANT_BOOL ok = VARIANT_FALSE;
};

// A canvas's pixels as one vector, to compare whole drawings.
std::vector<COLORREF> pixels(const Canvas& c, int w, int h) {
    std::vector<COLORREF> v;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) v.push_back(c.pixel(x, y));
    return v;
}

}  // namespace

TEST_F(GDIMethodsTest, LinesLeaveOutTheirLastPointAndTheCurrentPosition) {
    Canvas a(16, 4), b(16, 4);
    MoveToEx(a.dc(), 7, 3, nullptr);
    ASSERT_EQ(S_OK, gdi->DrawLine(a.handle(), 0, 0, 10, 0, kRed, PS_SOLID, 1, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    for (int x = 0; x < 10; ++x) EXPECT_EQ(kRed, a.pixel(x, 0)) << x;
    EXPECT_EQ(kSentinel, a.pixel(10, 0));
    POINT p{};
    GetCurrentPositionEx(a.dc(), &p);
    EXPECT_EQ(7, p.x);
    POINTAPI from{0, 0}, to{10, 0};
    gdi->DrawLine2(b.handle(), &from, &to, kRed, PS_SOLID, 1, &ok);
    EXPECT_EQ(pixels(a, 16, 4), pixels(b, 16, 4));

    Canvas c(16, 16);
    Variant zigzag = longArray({0, 0, 10, 0, 10, 10});
    gdi->DrawPolyline(c.handle(), &zigzag, kBlue, PS_SOLID, 1, &ok);
    EXPECT_EQ(kBlue, c.pixel(5, 0));
    EXPECT_EQ(kBlue, c.pixel(10, 5));
    EXPECT_EQ(kSentinel, c.pixel(10, 10));
}

TEST_F(GDIMethodsTest, PolygonsFromRecordsOrNumbersAndTheirFillModes) {
    Canvas a(24, 24), b(24, 24);
    Variant flat = longArray({0, 0, 20, 0, 0, 20});
    Variant records = pointRecords({{0, 0}, {20, 0}, {0, 20}});
    ASSERT_EQ(S_OK, gdi->DrawPolygon(a.handle(), &flat, kRed, PS_SOLID, 1, kBlue, BS_SOLID, HS_CROSS, ALTERNATE, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    gdi->DrawPolygon(b.handle(), &records, kRed, PS_SOLID, 1, kBlue, BS_SOLID, HS_CROSS, ALTERNATE, &ok);
    EXPECT_EQ(kBlue, a.pixel(3, 3));
    EXPECT_EQ(kSentinel, a.pixel(18, 18));
    EXPECT_EQ(pixels(a, 24, 24), pixels(b, 24, 24));

    // A five-pointed star: its centre is inside only when winding.
    Variant star = longArray({20, 0, 32, 38, 0, 14, 40, 14, 8, 38});
    Canvas alt(41, 41), wind(41, 41);
    gdi->DrawPolygon(alt.handle(), &star, kBlue, PS_NULL, 1, kRed, BS_SOLID, HS_CROSS, ALTERNATE, &ok);
    gdi->DrawPolygon(wind.handle(), &star, kBlue, PS_NULL, 1, kRed, BS_SOLID, HS_CROSS, WINDING, &ok);
    EXPECT_EQ(kSentinel, alt.pixel(20, 20));
    EXPECT_EQ(kRed, wind.pixel(20, 20));

    Variant five = longArray({0, 0, 20, 0, 0}), two = longArray({0, 0, 20, 0});
    Canvas none(8, 8);
    EXPECT_EQ(kFive, gdi->DrawPolygon(none.handle(), &five, 0, PS_SOLID, 1, 0, BS_SOLID, HS_CROSS, ALTERNATE, &ok));
    EXPECT_EQ(kFive, gdi->DrawPolygon(none.handle(), &two, 0, PS_SOLID, 1, 0, BS_SOLID, HS_CROSS, ALTERNATE, &ok));
    EXPECT_EQ(kFive, gdi->DrawPolygon(none.handle(), &flat, 0, PS_SOLID, 1, 0, BS_SOLID, HS_CROSS,
                                      static_cast<PolyFillModeConstants>(3), &ok));
    EXPECT_EQ(kSentinel, none.pixel(1, 1));
}

TEST_F(GDIMethodsTest, LinearGradientsHaveExactPixels) {
    Canvas c(256, 1);
    ASSERT_EQ(S_OK, gdi->DrawLinearGradient(c.handle(), 0, 0, 256, 1, 0, kWhite, tovaGradientHorizontal, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    for (int x = 0; x < 256; ++x) EXPECT_EQ(RGB(x, x, x), c.pixel(x, 0)) << x;

    Canvas three(3, 1);
    gdi->DrawLinearGradient(three.handle(), 0, 0, 3, 1, 0, kWhite, tovaGradientHorizontal, &ok);
    EXPECT_EQ(RGB(128, 128, 128), three.pixel(1, 0)) << "127.5 rounds up";
    EXPECT_EQ(kWhite, three.pixel(2, 0));

    // 5 x 5 black to white: vertical by rows, diagonals by x + y (or x + 4 - y) over 8.
    struct Case {
        GradientDirectionConstants d;
        int x, y, expected;
    } cases[] = {{tovaGradientVertical, 3, 0, 0},      {tovaGradientVertical, 0, 2, 128},
                 {tovaGradientVertical, 1, 4, 255},    {tovaGradientDiagonalDown, 0, 0, 0},
                 {tovaGradientDiagonalDown, 4, 4, 255}, {tovaGradientDiagonalDown, 4, 0, 128},
                 {tovaGradientDiagonalUp, 0, 4, 0},     {tovaGradientDiagonalUp, 4, 0, 255},
                 {tovaGradientDiagonalUp, 0, 3, 32}};
    for (const Case& k : cases) {
        Canvas s(5, 5);
        TOVA_RECT r{0, 0, 5, 5};
        gdi->DrawLinearGradient2(s.handle(), &r, 0, kWhite, k.d, &ok);
        EXPECT_EQ(RGB(k.expected, k.expected, k.expected), s.pixel(k.x, k.y)) << k.d << " at " << k.x << "," << k.y;
    }
    // Only the visible part is computed, band by band (300 x 300 takes two), with
    // its place in the whole area.
    Canvas part(300, 300);
    gdi->DrawLinearGradient(part.handle(), -2, 0, 3, 1, 0, kWhite, tovaGradientHorizontal, &ok);
    EXPECT_EQ(RGB(128, 128, 128), part.pixel(0, 0));
    EXPECT_EQ(RGB(191, 191, 191), part.pixel(1, 0));
    gdi->DrawLinearGradient(part.handle(), 0, 0, 300, 300, 0, kWhite, tovaGradientVertical, &ok);
    for (int y = 0; y < 300; y += 23) {
        const int v = (2 * 255 * y + 299) / (2 * 299);
        EXPECT_EQ(RGB(v, v, v), part.pixel(2, y)) << y;
    }
    gdi->DrawLinearGradient(part.handle(), 0, 0, 300, 300, 0, kWhite, tovaGradientHorizontal, &ok);
    for (int x = 0; x < 300; x += 37) EXPECT_EQ(part.pixel(x, 0), part.pixel(x, 299)) << "a repeated band, " << x;

    Canvas one(2, 2);
    gdi->DrawLinearGradient(one.handle(), 0, 0, 1, 1, kRed, kBlue, tovaGradientDiagonalUp, &ok);
    EXPECT_EQ(kRed, one.pixel(0, 0)) << "a single pixel has the start colour";
    EXPECT_EQ(kSentinel, one.pixel(1, 1));
    gdi->DrawLinearGradient(one.handle(), 0, 0, 0, 1, kRed, kBlue, tovaGradientHorizontal, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "empty area";
}

TEST_F(GDIMethodsTest, CornerAndRadialGradients) {
    Canvas c(3, 3);
    ASSERT_EQ(S_OK, gdi->DrawCornerGradient(c.handle(), 0, 0, 3, 3, kRed, RGB(0, 255, 0), kBlue, kWhite, &ok));
    EXPECT_EQ(kRed, c.pixel(0, 0));
    EXPECT_EQ(RGB(0, 255, 0), c.pixel(2, 0));
    EXPECT_EQ(kBlue, c.pixel(0, 2));
    EXPECT_EQ(kWhite, c.pixel(2, 2));
    EXPECT_EQ(RGB(128, 128, 128), c.pixel(1, 1)) << "the mean (127.5 each) rounded once";

    Canvas r(5, 5);
    TOVA_RECT all{0, 0, 5, 5};
    ASSERT_EQ(S_OK, gdi->DrawRadialGradient2(r.handle(), &all, kWhite, 0, &ok));
    EXPECT_EQ(kWhite, r.pixel(2, 2));
    EXPECT_EQ(RGB(0, 0, 0), r.pixel(0, 0));
    EXPECT_EQ(RGB(0, 0, 0), r.pixel(4, 4));
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) {
            EXPECT_EQ(r.pixel(x, y), r.pixel(4 - x, y));
            EXPECT_EQ(r.pixel(x, y), r.pixel(x, 4 - y));
        }
}

TEST_F(GDIMethodsTest, AlphaFillsBlendWithTheFixedArithmetic) {
    struct Case {
        BYTE opacity;
        int expected;
    } cases[] = {{128, 127}, {0, 255}, {255, 0}, {1, 254}};
    for (const Case& k : cases) {
        Canvas c(7, 2, kWhite);  // odd width: the vector loop and its tail
        ASSERT_EQ(S_OK, gdi->DrawAlphaFill(c.handle(), 0, 0, 7, 2, 0, k.opacity, &ok));
        EXPECT_EQ(VARIANT_TRUE, ok);
        for (int x = 0; x < 7; ++x) EXPECT_EQ(RGB(k.expected, k.expected, k.expected), c.pixel(x, 1)) << x;
    }
    // A DC that cannot be read (a metafile) gets the fill through AlphaBlend: within 1.
    HDC meta = CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    ASSERT_EQ(S_OK, gdi->DrawAlphaFill(tova::fromHandle(meta), 0, 0, 4, 4, 0, 128, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    HENHMETAFILE recorded = CloseEnhMetaFile(meta);
    Canvas played(4, 4, kWhite);
    const RECT frame{0, 0, 4, 4};
    PlayEnhMetaFile(played.dc(), recorded, &frame);
    DeleteEnhMetaFile(recorded);
    EXPECT_NEAR(127, GetRValue(played.pixel(2, 2)), 1);

    Canvas g(256, 2, kWhite);
    TOVA_RECT r{0, 0, 256, 2};
    ASSERT_EQ(S_OK, gdi->DrawAlphaGradient2(g.handle(), &r, 0, 0, 0, 255, tovaGradientHorizontal, &ok));
    for (int x = 0; x < 256; ++x) {
        const int v = (255 * (255 - x) + 127) / 255;
        EXPECT_EQ(RGB(v, v, v), g.pixel(x, 1)) << x;
    }
}

TEST_F(GDIMethodsTest, HatchPatternAndFrames) {
    Canvas h(16, 16);
    ASSERT_EQ(S_OK, gdi->FillHatched(h.handle(), 0, 0, 16, 16, HS_HORIZONTAL, kRed, kBlue, &ok));
    int redRows = 0;
    for (int y = 0; y < 16; ++y) {
        const COLORREF first = h.pixel(0, y);
        for (int x = 0; x < 16; ++x) EXPECT_EQ(first, h.pixel(x, y));
        redRows += first == kRed;
        EXPECT_TRUE(first == kRed || first == kBlue);
    }
    EXPECT_EQ(2, redRows) << "one row in eight";
    Canvas t(16, 16);
    TOVA_RECT all{0, 0, 16, 16};
    gdi->FillHatched2(t.handle(), &all, HS_HORIZONTAL, kRed, -1, &ok);
    for (int y = 0; y < 16; ++y) EXPECT_TRUE(t.pixel(3, y) == kRed || t.pixel(3, y) == kSentinel);

    // A 2 x 2 checker from two fills that meet at x = 5: no seam.
    Canvas src(2, 2);
    SetPixel(src.dc(), 0, 0, kRed), SetPixel(src.dc(), 1, 1, kRed);
    SetPixel(src.dc(), 1, 0, kBlue), SetPixel(src.dc(), 0, 1, kBlue);
    HBITMAP checker = static_cast<HBITMAP>(GetCurrentObject(src.dc(), OBJ_BITMAP));
    Canvas p(10, 6);
    const LONG bm = tova::fromHandle(checker);
    gdi->FillPattern(p.handle(), 0, 0, 5, 6, bm, 1, 0, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    TOVA_RECT right{5, 0, 10, 6};
    gdi->FillPattern2(p.handle(), &right, bm, 1, 0, &ok);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 10; ++x)
            EXPECT_EQ(((x - 1) % 2 + 2) % 2 == y % 2 ? kRed : kBlue, p.pixel(x, y)) << x << "," << y;

    Canvas f(12, 12);
    ASSERT_EQ(S_OK, gdi->DrawFrame3D(f.handle(), 0, 0, 10, 10, tovaFrameRaised, 1, kWhite, kBlue, &ok));
    EXPECT_EQ(kWhite, f.pixel(0, 0));
    EXPECT_EQ(kBlue, f.pixel(9, 0));
    EXPECT_EQ(kBlue, f.pixel(0, 9));
    EXPECT_EQ(kBlue, f.pixel(9, 9));
    EXPECT_EQ(kSentinel, f.pixel(1, 1));
    TOVA_RECT box{0, 0, 10, 10};
    gdi->DrawFrame3D2(f.handle(), &box, tovaFrameSunken, 1, kWhite, kBlue, &ok);
    EXPECT_EQ(kBlue, f.pixel(0, 0));
    EXPECT_EQ(kWhite, f.pixel(9, 9));
    gdi->DrawFrame3D(f.handle(), 0, 0, 10, 10, tovaFrameEtched, 1, kWhite, kBlue, &ok);
    EXPECT_EQ(kBlue, f.pixel(0, 0)) << "etched: the outer ring sunken";
    EXPECT_EQ(kWhite, f.pixel(1, 1)) << "the inner ring raised";
    EXPECT_EQ(kSentinel, f.pixel(2, 2));
    EXPECT_EQ(kFive, gdi->DrawFrame3D(f.handle(), 0, 0, 10, 10, tovaFrameRaised, 0, kWhite, kBlue, &ok));
}

TEST_F(GDIMethodsTest, DrawingMembersLeaveTheDcAsFound) {
    Canvas c(40, 40);
    HDC dc = c.dc();
    MoveToEx(dc, 3, 4, nullptr);
    SetBkColor(dc, RGB(9, 8, 7));
    SetBrushOrgEx(dc, 1, 1, nullptr);
    HRGN clip = CreateRectRgn(0, 0, 30, 30);
    SelectClipRgn(dc, clip);
    DeleteObject(clip);
    const DcState before(dc);
    const LONG h = c.handle();
    Variant tri = longArray({0, 0, 20, 0, 0, 20});
    TOVA_RECT r{2, 2, 20, 20};
    LONG rgn = 0;
    Canvas patternSource(2, 2);
    const LONG bmp = tova::fromHandle(GetCurrentObject(patternSource.dc(), OBJ_BITMAP));
    gdi->DrawLine(h, 0, 0, 9, 9, kRed, PS_DASH, 1, &ok);
    gdi->DrawPolyline(h, &tri, kRed, PS_SOLID, 2, &ok);
    gdi->DrawPolygon(h, &tri, kRed, PS_SOLID, 1, kBlue, BS_HATCHED, HS_CROSS, WINDING, &ok);
    gdi->DrawLinearGradient2(h, &r, kRed, kBlue, tovaGradientDiagonalDown, &ok);
    gdi->DrawCornerGradient2(h, &r, kRed, kBlue, kRed, kBlue, &ok);
    gdi->DrawRadialGradient2(h, &r, kRed, kBlue, &ok);
    gdi->DrawAlphaFill2(h, &r, kRed, 100, &ok);
    gdi->DrawAlphaGradient2(h, &r, kRed, kBlue, 10, 200, tovaGradientVertical, &ok);
    gdi->FillHatched2(h, &r, HS_DIAGCROSS, kRed, -1, &ok);
    gdi->FillPattern2(h, &r, bmp, 3, 3, &ok);
    gdi->DrawFrame3D2(h, &r, tovaFrameBump, 2, kRed, kBlue, &ok);
    gdi->CreateRegion(0, 0, 9, 9, tovaRegionEllipse, 0, 0, &rgn);
    gdi->FillRegion(h, rgn, kRed, kBlue, 2, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    gdi->DeleteGDIObject(rgn, &ok);
    EXPECT_TRUE(before == DcState(dc));
}

TEST_F(GDIMethodsTest, CreatedObjectsAreTheCallersAndDeleteFreesThem) {
    ComPtr<IFontDisp> std;
    FONTDESC fd{sizeof fd, const_cast<LPOLESTR>(L"Arial"), {{90000, 0}}, FW_BOLD, ANSI_CHARSET, TRUE, FALSE, FALSE};
    ASSERT_EQ(S_OK, OleCreateFontIndirect(&fd, IID_IFontDisp, std.putVoid()));
    Bstr face(L"Arial");
    Variant angle(45.0);
    LONG pen = 0, brush = 0, font = 0, font2 = 0, hollow = 0;
    auto makeAll = [&] {
        gdi->CreatePen(kRed, PS_DASH, 1, &pen);
        gdi->CreateBrush(kBlue, BS_HATCHED, HS_DIAGCROSS, 0, &brush);
        gdi->CreateFont(face.get(), 12, VARIANT_TRUE, VARIANT_FALSE, VARIANT_TRUE, VARIANT_FALSE, angle, 0, &font);
        gdi->CreateFont2(std.get(), vMissing(), 0, &font2);
    };
    auto deleteAll = [&] {
        for (LONG h : {pen, brush, font, font2}) {
            gdi->DeleteGDIObject(h, &ok);
            EXPECT_EQ(VARIANT_TRUE, ok);
        }
    };
    makeAll();  // the first fonts of a process leave caches behind
    deleteAll();
    const DWORD start = cycles::gdiObjects();
    makeAll();
    EXPECT_EQ(start + 4, cycles::gdiObjects()) << "one object each";

    LOGPEN lp{};
    ASSERT_TRUE(GetObjectW(tova::toHandle<HPEN>(pen), sizeof lp, &lp));
    EXPECT_EQ(kRed, lp.lopnColor);
    EXPECT_EQ(PS_DASH, static_cast<int>(lp.lopnStyle));
    LOGBRUSH lb{};
    ASSERT_TRUE(GetObjectW(tova::toHandle<HBRUSH>(brush), sizeof lb, &lb));
    EXPECT_EQ(static_cast<UINT>(BS_HATCHED), lb.lbStyle);
    EXPECT_EQ(static_cast<ULONG_PTR>(HS_DIAGCROSS), lb.lbHatch);
    LOGFONTW lf{};
    ASSERT_TRUE(GetObjectW(tova::toHandle<HFONT>(font), sizeof lf, &lf));
    HDC screen = GetDC(nullptr);
    EXPECT_EQ(-MulDiv(12, GetDeviceCaps(screen, LOGPIXELSY), 72), lf.lfHeight);
    ReleaseDC(nullptr, screen);
    EXPECT_EQ(700, lf.lfWeight);
    EXPECT_EQ(450, lf.lfEscapement);
    EXPECT_TRUE(lf.lfUnderline);
    ASSERT_TRUE(GetObjectW(tova::toHandle<HFONT>(font2), sizeof lf, &lf));
    EXPECT_EQ(FW_BOLD, lf.lfWeight);
    EXPECT_TRUE(lf.lfItalic);
    EXPECT_EQ(0, lf.lfEscapement);

    deleteAll();
    EXPECT_EQ(start, cycles::gdiObjects());
    gdi->CreateBrush(0, BS_NULL, HS_CROSS, 0, &hollow);
    EXPECT_EQ(tova::fromHandle(GetStockObject(NULL_BRUSH)), hollow);
    gdi->DeleteGDIObject(hollow, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "stock objects are left alone";
    EXPECT_NE(0u, GetObjectType(GetStockObject(NULL_BRUSH)));
    gdi->DeleteGDIObject(0, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
}

TEST_F(GDIMethodsTest, Regions) {
    LONG e = 0, box = 0, both = 0;
    gdi->CreateRegion(0, 0, 10, 10, tovaRegionEllipse, 16, 16, &e);
    ASSERT_NE(0, e);
    EXPECT_TRUE(PtInRegion(tova::toHandle<HRGN>(e), 5, 5));
    EXPECT_FALSE(PtInRegion(tova::toHandle<HRGN>(e), 0, 0));

    // A 4 x 4 bitmap framed in the transparent colour: the region is its inside.
    Canvas b(4, 4, kWhite);
    for (int y = 1; y < 3; ++y)
        for (int x = 1; x < 3; ++x) SetPixel(b.dc(), x, y, kRed);
    const LONG bitmap = tova::fromHandle(GetCurrentObject(b.dc(), OBJ_BITMAP));
    for (LONG key : {-1L, static_cast<LONG>(kWhite)}) {
        ASSERT_EQ(S_OK, gdi->CreateRegionFromBitmap(bitmap, key, &box));
        RECT bounds{};
        EXPECT_EQ(SIMPLEREGION, GetRgnBox(tova::toHandle<HRGN>(box), &bounds));
        EXPECT_TRUE(EqualRect(&bounds, std::array<RECT, 1>{RECT{1, 1, 3, 3}}.data())) << bounds.left << "," << bounds.top
                                                                             << "," << bounds.right << "," << bounds.bottom;
        gdi->DeleteGDIObject(box, &ok);
    }
    Variant tri = longArray({0, 0, 20, 0, 0, 20});
    LONG poly = 0;
    gdi->CreatePolygonRegion(&tri, ALTERNATE, &poly);
    gdi->CombineRegions(e, poly, RGN_DIFF, &both);
    EXPECT_FALSE(PtInRegion(tova::toHandle<HRGN>(both), 2, 2));
    EXPECT_TRUE(PtInRegion(tova::toHandle<HRGN>(e), 2, 5)) << "the inputs stay as they were";
    EXPECT_TRUE(PtInRegion(tova::toHandle<HRGN>(poly), 2, 2));
    EXPECT_EQ(kFive, gdi->CombineRegions(e, 0, RGN_AND, &both));
    EXPECT_EQ(S_OK, gdi->CombineRegions(e, 0, RGN_COPY, &box)) << "RGN_COPY does not look at the second";

    Canvas c(12, 12);
    ASSERT_EQ(S_OK, gdi->FillRegion(c.handle(), e, kRed, -1, 1, &ok));
    EXPECT_EQ(kRed, c.pixel(5, 5));
    EXPECT_EQ(kSentinel, c.pixel(0, 0));
    for (LONG h : {e, poly, both, box}) gdi->DeleteGDIObject(h, &ok);
}

TEST_F(GDIMethodsTest, ColourHelpers) {
    LONG v = 0;
    gdi->TranslateColor(static_cast<LONG>(0x80000005), &v);
    EXPECT_EQ(static_cast<LONG>(GetSysColor(COLOR_WINDOW)), v);
    gdi->TranslateColor(static_cast<LONG>(0x800000FF), &v);
    EXPECT_EQ(-1, v);
    gdi->BlendColors(0, static_cast<LONG>(kWhite), 128, &v);
    EXPECT_EQ(0x808080, v);
    double h = -1, s = -1, l = -1;
    gdi->ColorToHSL(static_cast<LONG>(kRed), &h, &s, &l);
    EXPECT_EQ(0, h);
    EXPECT_EQ(1, s);
    EXPECT_EQ(0.5, l);
    for (int r = 0; r < 256; r += 17)
        for (int g = 0; g < 256; g += 17)
            for (int b = 0; b < 256; b += 17) {
                gdi->ColorToHSL(static_cast<LONG>(RGB(r, g, b)), &h, &s, &l);
                gdi->HSLToColor(h, s, l, &v);
                ASSERT_EQ(static_cast<LONG>(RGB(r, g, b)), v) << r << "," << g << "," << b;
            }
    gdi->HSLToColor(360 + 120, 1, 0.5, &v);
    EXPECT_EQ(static_cast<LONG>(RGB(0, 255, 0)), v) << "hue modulo 360";
    EXPECT_EQ(kFive, gdi->HSLToColor(0, 1.5, 0.5, &v));
}

TEST_F(GDIMethodsTest, BadArgumentsRaiseFiveAndDrawNothingWithoutADcFalse) {
    Canvas c(8, 8);
    const LONG dc = c.handle();
    const LONG notColour = static_cast<LONG>(0x800000FF);
    Variant tri = longArray({0, 0, 5, 0, 0, 5});
    TOVA_RECT r{0, 0, 8, 8};
    LONG out = 0;
    const HRESULT bad[] = {
        gdi->DrawLine(dc, 0, 0, 5, 5, notColour, PS_SOLID, 1, &ok),
        gdi->DrawLine(dc, 0, 0, 5, 5, 0, static_cast<PenStyleConstants>(9), 1, &ok),
        gdi->DrawLine(dc, 0, 0, 5, 5, 0, PS_SOLID, -1, &ok),
        gdi->DrawLinearGradient2(dc, &r, notColour, 0, tovaGradientHorizontal, &ok),
        gdi->DrawLinearGradient2(dc, &r, 0, 0, static_cast<GradientDirectionConstants>(4), &ok),
        gdi->DrawCornerGradient2(dc, &r, 0, 0, 0, notColour, &ok),
        gdi->DrawRadialGradient2(dc, &r, notColour, 0, &ok),
        gdi->DrawAlphaFill2(dc, &r, notColour, 5, &ok),
        gdi->DrawAlphaGradient2(dc, &r, 0, 0, 0, 0, static_cast<GradientDirectionConstants>(-1), &ok),
        gdi->FillHatched2(dc, &r, static_cast<HatchStyleConstants>(6), 0, -1, &ok),
        gdi->FillPattern2(dc, &r, dc, 0, 0, &ok),
        gdi->DrawFrame3D2(dc, &r, static_cast<Frame3DStyleConstants>(4), 1, 0, 0, &ok),
        gdi->CreatePen(notColour, PS_SOLID, 1, &out),
        gdi->CreateBrush(0, BS_DIBPATTERN, HS_CROSS, 0, &out),
        gdi->CreateBrush(0, BS_PATTERN, HS_CROSS, 0, &out),
        gdi->CreateFont(Bstr(L"").get(), 10, 0, 0, 0, 0, vMissing(), 0, &out),
        gdi->CreateFont(Bstr(L"Arial").get(), 0, 0, 0, 0, 0, vMissing(), 0, &out),
        gdi->CreateFont2(nullptr, vMissing(), 0, &out),
        gdi->CreateRegion(0, 0, 5, 5, static_cast<RegionShapeConstants>(3), 0, 0, &out),
        gdi->CreatePolygonRegion(&tri, static_cast<PolyFillModeConstants>(0), &out),
        gdi->CreateRegionFromBitmap(0, -1, &out),
        gdi->CombineRegions(0, 0, static_cast<RegionCombineConstants>(6), &out),
        gdi->FillRegion(dc, 0, 0, -1, 1, &ok),
    };
    for (size_t i = 0; i < sizeof bad / sizeof bad[0]; ++i) EXPECT_EQ(kFive, bad[i]) << "case " << i;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) ASSERT_EQ(kSentinel, c.pixel(x, y));

    Variant angle(L"steep");
    EXPECT_EQ(static_cast<HRESULT>(0x800A000D),
              gdi->CreateFont(Bstr(L"Arial").get(), 10, 0, 0, 0, 0, angle, 0, &out))
        << "an angle that is no number";

    ok = VARIANT_TRUE;
    gdi->DrawLine(0, 0, 0, 5, 5, 0, PS_SOLID, 1, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    ok = VARIANT_TRUE;
    gdi->DrawLinearGradient(0, 0, 0, 5, 5, 0, 0, tovaGradientHorizontal, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    ok = VARIANT_TRUE;
    gdi->DrawAlphaFill(0, 0, 0, 5, 5, 0, 9, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
}
