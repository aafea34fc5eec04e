// MiscMethods' message pump, value helpers, exact rounding, modulo, element
// counts, ids and stopwatch.
#include "api_support.h"
#include "window_support.h"


using namespace test;

namespace {

ComPtr<_MiscMethods> misc() { return create<_MiscMethods>(CLSID_MiscMethods, IID__MiscMethods); }

VARIANT vNull() {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_NULL;
    return v;
}

int ticks = 0;
void CALLBACK countTick(HWND, UINT, UINT_PTR, DWORD) { ++ticks; }

TEST(MiscPump, DoEventsAndWaitWithEventsDispatchButPauseDoesNot) {
    auto m = misc();
    ASSERT_TRUE(m);
    pump(20);
    TestWindow w;
    pump(20);
    for (int i = 0; i < 3; ++i) PostMessageW(w.hwnd(), WM_USER + 1, 0, 0);
    LONG n = -1;
    m->DoEvents(&n);
    EXPECT_EQ(3, n);
    m->DoEvents(&n);
    EXPECT_EQ(0, n);

    PostMessageW(w.hwnd(), WM_USER + 1, 0, 0);
    PostQuitMessage(9);
    VARIANT_BOOL ok = VARIANT_TRUE;
    m->WaitWithEvents(50, &ok);
    EXPECT_FALSE(ok) << "a WM_QUIT ends the wait";
    MSG msg;
    ASSERT_TRUE(PeekMessageW(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "and stays queued";
    EXPECT_EQ(9u, msg.wParam);

    const UINT_PTR timer = SetTimer(nullptr, 0, 20, countTick);
    ticks = 0;
    m->WaitWithEvents(200, &ok);
    EXPECT_TRUE(ok);
    EXPECT_GE(ticks, 5);
    EXPECT_LE(ticks, 20);
    ticks = 0;
    LONG ms = 200;
    m->Pause(&ms);
    EXPECT_EQ(0, ticks);
    KillTimer(nullptr, timer);
    pump(30);
}

TEST(MiscValues, IIfNullToValueSafeDivideAndClamp) {
    auto m = misc();
    Variant r, one(1L), two(2L), x(L"x");
    m->IIf(vNull(), one, two, &r);
    EXPECT_EQ(2, V_I4(&r));
    m->IIf(Variant(-1L), one, two, &r);
    EXPECT_EQ(1, V_I4(&r));
    m->IIf(Variant(L"True"), one, two, &r);
    EXPECT_EQ(1, V_I4(&r));
    EXPECT_EQ(13, errorNumber(m->IIf(x, one, two, r.put())));
    auto rect = newRectangle();
    m->IIf(one, vObject(rect.get()), two, r.put());
    ASSERT_EQ(VT_DISPATCH, V_VT(&r));
    EXPECT_EQ(static_cast<IDispatch*>(rect.get()), V_DISPATCH(&r)) << "objects come back identical";

    m->NullToValue(vNull(), two, r.put());
    EXPECT_EQ(2, V_I4(&r));
    m->NullToValue(Variant(), vMissing(), r.put());
    EXPECT_EQ(VT_EMPTY, V_VT(&r));
    m->NullToValue(x, two, r.put());
    EXPECT_EQ(VT_BSTR, V_VT(&r));

    m->SafeDivide(one, Variant(4L), vMissing(), r.put());
    EXPECT_EQ(VT_R8, V_VT(&r));
    EXPECT_EQ(0.25, V_R8(&r));
    m->SafeDivide(one, Variant(0L), vMissing(), r.put());
    EXPECT_EQ(0, V_I4(&r));
    m->SafeDivide(one, Variant(0.0), vNull(), r.put());
    EXPECT_EQ(VT_NULL, V_VT(&r));
    m->SafeDivide(vNull(), one, vMissing(), r.put());
    EXPECT_EQ(VT_NULL, V_VT(&r));
    EXPECT_EQ(13, errorNumber(m->SafeDivide(x, one, vMissing(), r.put())));

    double d = 0;
    m->Clamp(5, 0, 3, &d);
    EXPECT_EQ(3, d);
    m->Clamp(-5, 0, 3, &d);
    EXPECT_EQ(0, d);
    EXPECT_EQ(5, errorNumber(m->Clamp(1, 3, 0, &d)));
}

// A Variant array of Variants.
Variant variants(std::vector<Variant> items, LONG lower = 0) {
    SAFEARRAYBOUND b{static_cast<ULONG>(items.size()), lower};
    SAFEARRAY* sa = SafeArrayCreate(VT_VARIANT, 1, &b);
    for (LONG i = 0; i < static_cast<LONG>(items.size()); ++i) {
        LONG at = lower + i;
        SafeArrayPutElement(sa, &at, &items[i]);
    }
    Variant v;
    V_VT(&v) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&v) = sa;
    return v;
}

TEST(MiscValues, MinOfMaxOfAndArrayCount) {
    auto m = misc();
    Variant nul;
    V_VT(&nul) = VT_NULL;
    Variant list = variants({Variant(3L), Variant(1.5), nul, Variant(2L)});
    Variant r;
    m->MinOf(list, &r);
    ASSERT_EQ(VT_R8, V_VT(&r)) << "in its own type";
    EXPECT_EQ(1.5, V_R8(&r));
    m->MaxOf(list, r.put());
    EXPECT_EQ(VT_I4, V_VT(&r));
    EXPECT_EQ(3, V_I4(&r));
    m->MinOf(variants({}), r.put());
    EXPECT_EQ(VT_NULL, V_VT(&r));
    m->MaxOf(variants({Variant(L"b"), Variant(L"c"), Variant(L"a")}), r.put());
    EXPECT_EQ(std::wstring(L"c"), V_BSTR(&r));
    EXPECT_EQ(13, errorNumber(m->MinOf(variants({Variant(1L), Variant(L"a")}), r.put())));
    m->MaxOf(Variant(7L), r.put());
    EXPECT_EQ(7, V_I4(&r)) << "a single value is its own extreme";

    // A typed 2-D array: all dimensions count.
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {5, 0}};
    SAFEARRAY* grid = SafeArrayCreate(VT_I2, 2, bounds);
    LONG at[2] = {1, 4};
    SHORT big = 99;
    SafeArrayPutElement(grid, at, &big);
    Variant g;
    V_VT(&g) = VT_ARRAY | VT_I2;
    V_ARRAY(&g) = grid;
    m->MaxOf(g, r.put());
    EXPECT_EQ(VT_I2, V_VT(&r));
    EXPECT_EQ(99, V_I2(&r));

    LONG n = -1;
    m->ArrayCount(g, 1, &n);
    EXPECT_EQ(2, n);
    m->ArrayCount(g, 2, &n);
    EXPECT_EQ(5, n);
    m->ArrayCount(g, 3, &n);
    EXPECT_EQ(0, n);
    m->ArrayCount(Variant(), 1, &n);
    EXPECT_EQ(0, n);
    m->ArrayCount(variants({}), 1, &n);
    EXPECT_EQ(0, n);
    m->ArrayCount(variants({Variant(1L)}, 5), 1, &n);
    EXPECT_EQ(1, n);
}

double rounded(_MiscMethods* m, double v, long decimals, RoundingModeConstants mode) {
    Variant r;
    EXPECT_EQ(S_OK, m->RoundNumber(Variant(v), decimals, mode, &r));
    EXPECT_EQ(VT_R8, V_VT(&r));
    return V_R8(&r);
}

TEST(MiscRounding, DecimalDigitsInEveryMode) {
    auto m = misc();
    struct Case {
        double value;
        long decimals;
        RoundingModeConstants mode;
        double expected;
    };
    const Case cases[] = {
        {2.5, 0, tovaRoundHalfAwayFromZero, 3},   {-2.5, 0, tovaRoundHalfAwayFromZero, -3},
        {2.5, 0, tovaRoundHalfEven, 2},           {3.5, 0, tovaRoundHalfEven, 4},
        {2.675, 2, tovaRoundHalfAwayFromZero, 2.68}, {2.665, 2, tovaRoundHalfEven, 2.66},
        {1234.5, -2, tovaRoundHalfAwayFromZero, 1200}, {-1.1, 0, tovaRoundDown, -2},
        {-1.1, 0, tovaRoundUp, -1},               {-1.9, 0, tovaRoundTowardZero, -1},
        {-2.5, 0, tovaRoundHalfUp, -2},           {2.5, 0, tovaRoundHalfUp, 3},
        {0.4, 0, tovaRoundHalfAwayFromZero, 0},   {9.995, 2, tovaRoundHalfAwayFromZero, 10},
        {1e300, 2, tovaRoundHalfEven, 1e300},     {0.1 + 0.2, 20, tovaRoundHalfEven, 0.1 + 0.2},
        {123456789012.345, 2, tovaRoundHalfEven, 123456789012.34}, {5e-30, 28, tovaRoundUp, 1e-28},
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.expected, rounded(m.get(), c.value, c.decimals, c.mode))
            << c.value << " to " << c.decimals << " in mode " << c.mode;

    Variant cy, r;
    V_VT(&cy) = VT_CY;
    V_CY(&cy).int64 = 23450;   // 2.345
    m->RoundNumber(cy, 2, tovaRoundHalfEven, &r);
    ASSERT_EQ(VT_CY, V_VT(&r)) << "Currency stays Currency";
    EXPECT_EQ(23400, V_CY(&r).int64);
    Variant dec;
    VarDecFromStr(const_cast<OLECHAR*>(L"-12.345678901234567890123"), LOCALE_INVARIANT, 0, &V_DECIMAL(&dec));
    V_VT(&dec) = VT_DECIMAL;
    m->RoundNumber(dec, 20, tovaRoundHalfAwayFromZero, r.put());
    ASSERT_EQ(VT_DECIMAL, V_VT(&r));
    Bstr text;
    VarBstrFromDec(&V_DECIMAL(&r), LOCALE_INVARIANT, 0, text.put());
    EXPECT_EQ(L"-12.34567890123456789012", text.str());
    m->RoundNumber(Variant(L"2.5"), 0, tovaRoundHalfEven, r.put());
    EXPECT_EQ(2.0, V_R8(&r));
    m->RoundNumber(vNull(), 0, tovaRoundHalfEven, r.put());
    EXPECT_EQ(VT_NULL, V_VT(&r));
    EXPECT_EQ(5, errorNumber(m->RoundNumber(Variant(1.0), 29, tovaRoundHalfEven, r.put())));
    EXPECT_EQ(5, errorNumber(m->RoundNumber(Variant(1.0), 0, static_cast<RoundingModeConstants>(6), r.put())));
    EXPECT_EQ(13, errorNumber(m->RoundNumber(Variant(L"x"), 0, tovaRoundHalfEven, r.put())));
}

TEST(MiscValues, ModuloIdsAndStopwatch) {
    auto m = misc();
    double r = 0;
    const double cases[][3] = {{7.5, 2, 1.5}, {-1, 24, 23}, {5.5, -2, -0.5}, {1e12 + 1, 2, 1}, {-4, 2, 0}};
    for (const auto& c : cases) {
        m->Modulo(c[0], c[1], &r);
        EXPECT_EQ(c[2], r) << c[0] << " mod " << c[1];
    }
    EXPECT_EQ(11, errorNumber(m->Modulo(1, 0, &r)));

    LONG id = 0;
    m->CurrentProcessId(&id);
    EXPECT_EQ(static_cast<LONG>(GetCurrentProcessId()), id);
    m->CurrentThreadId(&id);
    EXPECT_EQ(static_cast<LONG>(GetCurrentThreadId()), id);

    double start = 0, elapsed = 0;
    m->StartStopwatch(&start);
    LONG ms = 50;
    m->Pause(&ms);
    m->ReadStopwatch(start, &elapsed);
    EXPECT_GE(elapsed, 45);
    EXPECT_LE(elapsed, 500);
}

}  // namespace
