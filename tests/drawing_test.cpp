// The drawing routines of GDIMethods and APIMethods on real device contexts.
#include "support.h"

using namespace test;

namespace {

const long kWindowText = static_cast<long>(0x80000008);
const long kWindow = static_cast<long>(0x80000005);

class DrawingTest : public ::testing::Test {
protected:
    void SetUp() override {
        gdi = create<_GDIMethods>(CLSID_GDIMethods, IID__GDIMethods);
        api = create<_APIMethods>(CLSID_APIMethods, IID__APIMethods);
        ASSERT_TRUE(gdi && api);
    }
    ComPtr<_GDIMethods> gdi;
    ComPtr<_APIMethods> api;
};

}  // namespace

TEST_F(DrawingTest, RectangleBorderAndFill) {
    Canvas c(40, 40, RGB(0, 0, 0));
    VARIANT_BOOL ok;
    ASSERT_EQ(S_OK, gdi->DrawRectangle(c.handle(), 5, 5, 25, 25, RGB(255, 0, 0), PS_INSIDEFRAME, 2, RGB(0, 0, 255),
                                       BS_SOLID, HS_CROSS, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(255, 0, 0), c.pixel(5, 5));
    EXPECT_EQ(RGB(255, 0, 0), c.pixel(6, 6)) << "two pixels wide, inside the frame";
    EXPECT_EQ(RGB(0, 0, 255), c.pixel(15, 15));
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(25, 25)) << "right and bottom exclusive";
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(30, 30));
}

TEST_F(DrawingTest, OmittedColoursAreTheSystemTextAndWindowColours) {
    Canvas c(30, 30, RGB(1, 2, 3));
    VARIANT_BOOL ok;
    gdi->DrawRectangle(c.handle(), 0, 0, 20, 20, kWindowText, PS_SOLID, 1, kWindow, BS_SOLID, HS_CROSS, &ok);
    EXPECT_EQ(GetSysColor(COLOR_WINDOWTEXT), c.pixel(0, 0));
    EXPECT_EQ(GetSysColor(COLOR_WINDOW), c.pixel(10, 10));
}

TEST_F(DrawingTest, HollowAndHatchedBrushesAndNullPen) {
    Canvas c(40, 40, RGB(9, 9, 9));
    VARIANT_BOOL ok;
    gdi->DrawRectangle(c.handle(), 0, 0, 20, 20, RGB(255, 255, 255), PS_SOLID, 1, RGB(0, 255, 0), BS_NULL,
                       HS_CROSS, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(9, 9, 9), c.pixel(10, 10)) << "a hollow brush leaves the inside";
    EXPECT_EQ(RGB(255, 255, 255), c.pixel(0, 10));

    gdi->DrawRectangle(c.handle(), 20, 20, 40, 40, RGB(255, 255, 255), PS_NULL, 1, RGB(0, 255, 0), BS_HATCHED,
                       HS_CROSS, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    int hatched = 0;
    for (int x = 21; x < 39; ++x)
        for (int y = 21; y < 39; ++y) hatched += c.pixel(x, y) == RGB(0, 255, 0);
    EXPECT_GT(hatched, 20) << "hatch lines in the back colour";
    EXPECT_LT(hatched, 18 * 18) << "but not a solid fill";
}

TEST_F(DrawingTest, BadStylesRaiseFiveAndNoDeviceContextIsFalse) {
    Canvas c(10, 10);
    VARIANT_BOOL ok = VARIANT_TRUE;
    const HRESULT five = static_cast<HRESULT>(0x800A0005);
    EXPECT_EQ(five, gdi->DrawRectangle(c.handle(), 0, 0, 5, 5, 0, static_cast<PenStyleConstants>(7), 1, 0, BS_SOLID,
                                       HS_CROSS, &ok));
    EXPECT_EQ(five, gdi->DrawRectangle(c.handle(), 0, 0, 5, 5, 0, PS_SOLID, -1, 0, BS_SOLID, HS_CROSS, &ok));
    EXPECT_EQ(five, gdi->DrawRectangle(c.handle(), 0, 0, 5, 5, 0, PS_SOLID, 1, 0, BS_PATTERN, HS_CROSS, &ok));
    EXPECT_EQ(five, gdi->DrawRectangle(c.handle(), 0, 0, 5, 5, 0, PS_SOLID, 1, 0, BS_HATCHED,
                                       static_cast<HatchStyleConstants>(6), &ok));
    EXPECT_EQ(five, gdi->DrawEllipse(c.handle(), 0, 0, 5, 5, static_cast<long>(0x800000FF), PS_SOLID, 1, 0,
                                     BS_SOLID, HS_CROSS, &ok))
        << "no such system colour";
    EXPECT_EQ(S_OK, gdi->DrawRectangle(0, 0, 0, 5, 5, 0, PS_SOLID, 1, 0, BS_SOLID, HS_CROSS, &ok));
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(S_OK, gdi->DrawRoundRect(reinterpret_cast<LONG_PTR>(GetStockObject(BLACK_PEN)) & 0xFFFFFFFF, 0, 0, 5,
                                       5, 0, PS_SOLID, 1, 0, BS_SOLID, HS_CROSS, 4, 4, &ok))
        << "a handle that is no device context";
    EXPECT_EQ(VARIANT_FALSE, ok);
}

TEST_F(DrawingTest, RoundRectAndEllipseSpareTheCorners) {
    Canvas c(60, 30, RGB(0, 0, 0));
    VARIANT_BOOL ok;
    gdi->DrawRoundRect(c.handle(), 0, 0, 30, 30, RGB(255, 0, 0), PS_SOLID, 1, RGB(0, 255, 0), BS_SOLID, HS_CROSS,
                       16, 16, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(0, 0));
    EXPECT_EQ(RGB(255, 0, 0), c.pixel(15, 0));
    EXPECT_EQ(RGB(0, 255, 0), c.pixel(15, 15));
    gdi->DrawEllipse(c.handle(), 30, 0, 60, 30, RGB(255, 0, 0), PS_SOLID, 1, RGB(0, 0, 255), BS_SOLID, HS_CROSS,
                     &ok);
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(31, 1));
    EXPECT_EQ(RGB(0, 0, 255), c.pixel(45, 15));
}

TEST_F(DrawingTest, GradientRunsFromStartToEndColour) {
    Canvas c(101, 50, RGB(0, 0, 0));
    long l = 0, t = 0, r = 101, b = 20;
    VARIANT_BOOL ok;
    ASSERT_EQ(S_OK, api->DrawGradient(c.handle(), &l, &t, &r, &b, RGB(0, 0, 0), RGB(200, 100, 0), VARIANT_FALSE, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(0, 10));
    EXPECT_EQ(RGB(100, 50, 0), c.pixel(50, 10)) << "half way";
    EXPECT_EQ(RGB(200, 100, 0), c.pixel(100, 10));
    for (int x = 1; x < 101; ++x) EXPECT_GE(GetRValue(c.pixel(x, 5)), GetRValue(c.pixel(x - 1, 5)));
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(50, 20)) << "below the rectangle";

    t = 20;
    b = 50;
    api->DrawGradient(c.handle(), &l, &t, &r, &b, RGB(255, 255, 255), RGB(0, 0, 0), VARIANT_TRUE, &ok);
    EXPECT_EQ(RGB(255, 255, 255), c.pixel(70, 20));
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(70, 49));
    EXPECT_EQ(c.pixel(0, 35), c.pixel(100, 35)) << "vertical: rows are uniform";

    long e = 5;
    api->DrawGradient(c.handle(), &e, &t, &e, &b, 0, 0, VARIANT_FALSE, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "an empty rectangle draws nothing";
    api->DrawGradient(0, &l, &t, &r, &b, 0, 0, VARIANT_FALSE, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
}

TEST_F(DrawingTest, EdgeAdjustsTheRecordAndAcceptsMono) {
    Canvas c(50, 50);
    TOVA_RECT rc{0, 0, 50, 50};
    LONG result = 0;
    ASSERT_EQ(S_OK, api->DrawEdge(c.handle(), &rc, EDGE_SUNKEN, static_cast<EdgeModeConstants>(BF_RECT | BF_ADJUST),
                                  &result));
    EXPECT_NE(0, result);
    EXPECT_EQ(2, rc.Left) << "shrunk by the two-pixel edge";
    EXPECT_EQ(48, rc.Right);
    TOVA_RECT mono{0, 0, 20, 20};
    api->DrawEdge(c.handle(), &mono, EDGE_RAISED, static_cast<EdgeModeConstants>(BF_RECT | BF_MONO), &result);
    EXPECT_NE(0, result) << "BF_MONO as published, sign-extended";
}

TEST_F(DrawingTest, TextMeasuresAndShortens) {
    Canvas c(200, 60);
    BSTR text = SysAllocString(L"Measure me");
    TOVA_RECT rc{0, 0, 0, 0};
    LONG height = 0;
    ASSERT_EQ(S_OK, api->DrawText(c.handle(), &text, &rc, static_cast<DrawTextFormatConstants>(DT_CALCRECT | DT_SINGLELINE),
                                  &height));
    EXPECT_GT(height, 0);
    EXPECT_GT(rc.Right, 0);
    EXPECT_STREQ(L"Measure me", text) << "the text stays without DT_MODIFYSTRING";

    TOVA_RECT narrow{0, 0, 30, 20};
    api->DrawText(c.handle(), &text, &narrow,
                  static_cast<DrawTextFormatConstants>(DT_SINGLELINE | DT_END_ELLIPSIS | DT_MODIFYSTRING), &height);
    EXPECT_NE(nullptr, wcsstr(text, L"...")) << "shortened text written back";

    TOVA_RECT untouched{1, 2, 3, 4};
    EXPECT_EQ(S_OK, api->DrawText(0, &text, &untouched, DT_CALCRECT, &height));
    EXPECT_EQ(0, height) << "no device context, nothing measured";
    EXPECT_EQ(3, untouched.Right);
    EXPECT_EQ(S_OK, api->DrawEdge(0, &untouched, EDGE_RAISED, static_cast<EdgeModeConstants>(BF_RECT | BF_ADJUST), &height));
    EXPECT_EQ(0, height);
    EXPECT_EQ(1, untouched.Left);

    BSTR empty = nullptr;  // a null string is the empty string
    TOVA_RECT any{0, 0, 10, 10};
    EXPECT_EQ(S_OK, api->DrawText(c.handle(), &empty, &any, DT_LEFT, &height));
    SysFreeString(empty);
    SysFreeString(text);
}
