// The frame's own routines, linked in directly: error numbers, the boundary
// that turns raised errors into HRESULTs, and the automation conversions.
#include "support.h"

#include "frame/errors.h"
#include "geometry/rect_math.h"

using namespace tova;

TEST(Errors, LibraryCodesCombineWithTheBaseAndSmallCodesStayStandard) {
    EXPECT_EQ(-2147207853L, static_cast<long>(errorResult(13651)));
    EXPECT_EQ(static_cast<HRESULT>(0x80043554), errorResult(13652));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), errorResult(5)) << "run-time error 5";
    EXPECT_EQ(static_cast<HRESULT>(0x800A03E8), errorResult(1000)) << "the last standard number";
    EXPECT_EQ(static_cast<HRESULT>(0x800403E9), errorResult(1001));
}

TEST(Errors, GuardReportsWhatWasRaisedWithSourceAndDescription) {
    HRESULT hr = guard([] { raise(13651, L"TOVA200", L"Too Many Timers"); });
    EXPECT_EQ(static_cast<HRESULT>(0x80043553), hr);
    test::ErrorText e = test::lastError();
    EXPECT_EQ(L"TOVA200", e.source);
    EXPECT_EQ(L"Too Many Timers", e.description);

    EXPECT_EQ(static_cast<HRESULT>(0x800A0011), guard([] { raise(kCannotPerform, L"TOVA200.cDIBSection"); }));
    EXPECT_EQ(L"TOVA200.cDIBSection", test::lastError().source);

    EXPECT_EQ(E_OUTOFMEMORY, guard([] { throw std::bad_alloc(); }));
    EXPECT_EQ(S_OK, guard([] {}));
}

TEST(Conversions, LongFromDoubleRoundsHalfToEvenAndBooleanTrueIsMinusOne) {
    EXPECT_EQ(2, roundToLong(2.5));
    EXPECT_EQ(4, roundToLong(3.5));
    EXPECT_EQ(-2, roundToLong(-2.5));
    EXPECT_EQ(-3, roundToLong(-2.6));
    EXPECT_EQ(0, roundToLong(std::nan("")));
    EXPECT_EQ(2147483647L, roundToLong(1e12));
    EXPECT_EQ(-1, static_cast<int>(toVB(true)));
    EXPECT_TRUE(fromVB(1)) << "any non-zero value counts as true";
    EXPECT_EQ(-1, fromHandle(toHandle<HWND>(-1)));
}

TEST(RectMath, ScaleComputesEveryEdgeBeforeWriting) {
    TOVA_RECT r{1, 3, 5, 7};
    EXPECT_TRUE(rect::scale(r, 0.5f));
    EXPECT_EQ(0, r.Left);
    EXPECT_EQ(2, r.Top);
    EXPECT_EQ(2, r.Right);
    EXPECT_EQ(4, r.Bottom);
    TOVA_RECT big{1, 1, 2147483000, 1};
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), guard([&] { rect::scale(big, 2.0f); }));
    EXPECT_EQ(1, big.Left) << "nothing written when an edge overflows";
}
