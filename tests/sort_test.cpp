// The sorting module: the sorts' own quirks (bounds, text temporaries, partial
// sorts), arrays as callers pass them, element comparison, and random arrays
// checked against a plain model of the algorithms that uses only the runtime.
#include "support.h"

#include "frame/errors.h"
#include "text/sort.h"

#include <float.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

using namespace test;
using namespace tova::sorting;
using tova::guard;

namespace {

const LCID kLocale = LOCALE_USER_DEFAULT;
const HRESULT kError6 = tova::errorResult(6), kError9 = tova::errorResult(9), kError13 = tova::errorResult(13),
              kError94 = tova::errorResult(94);
using Spelled = std::vector<std::wstring>;

Variant L(long v) { return Variant(v); }
Variant D(double v) { return Variant(v); }
Variant S(const wchar_t* s) { return Variant(s); }
Variant bare(VARTYPE vt) {
    Variant v;
    V_VT(&v) = vt;
    return v;
}

// An array of Variants (vt VT_VARIANT) or of vt, values converted to it; `cols`
// > 0 makes it two-dimensional with the values row by row.
Variant array(const std::vector<Variant>& values, LONG lb = 0, VARTYPE vt = VT_VARIANT, ULONG cols = 0,
              LONG lbCol = 0) {
    const ULONG rows = cols ? static_cast<ULONG>(values.size()) / cols : static_cast<ULONG>(values.size());
    SAFEARRAYBOUND b[2] = {{rows, lb}, {cols, lbCol}};
    SAFEARRAY* sa = SafeArrayCreate(vt, cols ? 2 : 1, b);
    for (size_t k = 0; k < values.size(); ++k) {
        LONG index[2] = {lb + static_cast<LONG>(cols ? k / cols : k), lbCol + static_cast<LONG>(cols ? k % cols : 0)};
        Variant e;
        VariantChangeTypeEx(&e, const_cast<Variant*>(&values[k]), kLocale, 0, vt == VT_VARIANT ? V_VT(&values[k]) : vt);
        void* value = vt == VT_VARIANT ? static_cast<void*>(&e) : vt == VT_BSTR ? static_cast<void*>(V_BSTR(&e)) : &V_UI1(&e);
        SafeArrayPutElement(sa, index, value);
    }
    Variant v;
    V_VT(&v) = static_cast<VARTYPE>(VT_ARRAY | vt);
    V_ARRAY(&v) = sa;
    return v;
}

// A value as the tests spell it: 5 (Long), 5d (Double), '5' (String), 5i (Integer), Empty, Null, 2.5?6 (others).
std::wstring spell(const VARIANT& v) {
    if (V_VT(&v) == VT_BSTR) return L"'" + std::wstring(V_BSTR(&v), SysStringLen(V_BSTR(&v))) + L"'";
    if (V_VT(&v) == VT_EMPTY) return L"Empty";
    if (V_VT(&v) == VT_NULL) return L"Null";
    wchar_t buf[40];
    if (V_VT(&v) == VT_R8) return swprintf(buf, 40, L"%.17gd", V_R8(&v)), buf;
    Variant text;
    VariantChangeTypeEx(&text, const_cast<VARIANT*>(&v), kLocale, 0, VT_BSTR);
    const std::wstring suffix = V_VT(&v) == VT_I4 ? L"" : V_VT(&v) == VT_I2 ? L"i" : L"?" + std::to_wstring(V_VT(&v));
    return std::wstring(V_BSTR(&text)) + suffix;
}

Variant element(SAFEARRAY* sa, LONG* index) {
    VARTYPE vt;
    SafeArrayGetVartype(sa, &vt);
    Variant e;
    if (vt != VT_VARIANT) V_VT(&e) = vt;
    SafeArrayGetElement(sa, index,
                        vt == VT_VARIANT ? static_cast<void*>(&e) : vt == VT_BSTR ? static_cast<void*>(&V_BSTR(&e)) : &V_UI1(&e));
    return e;
}

// The elements (a two-dimensional array's row by row) of the array a Variant
// holds directly, by reference, or through a by-reference Variant.
Spelled contents(const VARIANT& holder) {
    const VARIANT* v = &holder;
    while (V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
    SAFEARRAY* sa = (V_VT(v) & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
    LONG lb, ub, lc = 0, uc = 0;
    SafeArrayGetLBound(sa, 1, &lb);
    SafeArrayGetUBound(sa, 1, &ub);
    if (SafeArrayGetDim(sa) == 2) SafeArrayGetLBound(sa, 2, &lc), SafeArrayGetUBound(sa, 2, &uc);
    Spelled out;
    for (LONG i = lb; i <= ub; ++i)
        for (LONG c = lc; c <= uc; ++c) {
            LONG index[2] = {i, c};
            out.push_back(spell(element(sa, index)));
        }
    return out;
}

bool quick(VARIANT& v, const VARIANT* numEls = nullptr, const VARIANT* desc = nullptr) {
    return quickSort(&v, numEls, desc);
}

// ------------------------------------------------- a plain model, runtime only

struct ModelError {
    long code;
};

int modelCompare(const VARIANT& a, const VARIANT& b) {
    if (V_VT(&a) == VT_BSTR && V_VT(&b) == VT_BSTR) {
        const std::wstring x(V_BSTR(&a), SysStringLen(V_BSTR(&a))), y(V_BSTR(&b), SysStringLen(V_BSTR(&b)));
        return x == y ? VARCMP_EQ : x < y ? VARCMP_LT : VARCMP_GT;
    }
    VARIANT l = a, r = b;  // a text reads as a number against a typed value
    if (V_VT(&a) == VT_BSTR) V_VT(&r) |= VT_RESERVED;
    else if (V_VT(&b) == VT_BSTR) V_VT(&l) |= VT_RESERVED;
    const HRESULT hr = VarCmp(&l, &r, kLocale, 0);
    if (FAILED(hr)) throw ModelError{13};
    return hr;
}
Variant modelText(const VARIANT& v) {
    if (V_VT(&v) == VT_NULL) throw ModelError{94};
    Variant t;
    if (FAILED(VariantChangeTypeEx(&t, const_cast<VARIANT*>(&v), kLocale, 0, VT_BSTR))) throw ModelError{13};
    return t;
}
std::wstring textOf(const VARIANT& v) {
    const Variant t = modelText(v);
    return std::wstring(V_BSTR(&t), SysStringLen(V_BSTR(&t)));
}

// The algorithms as written, on copies: a zero-based array of Variants, or of vt.
struct Model {
    std::vector<Variant> a;
    VARTYPE vt = VT_VARIANT;
    long code = 0;  // the error raised, if any

    Variant& at(long long k) {
        if (k < 0 || k >= static_cast<long long>(a.size())) throw ModelError{9};
        return a[static_cast<size_t>(k)];
    }
    void store(long long k, Variant v) {
        if (vt != VT_VARIANT && FAILED(VariantChangeTypeEx(&v, &v, kLocale, 0, vt))) throw ModelError{13};
        at(k) = v;
    }
    Model& shell() try {
        const long long ub = static_cast<long long>(a.size()) - 1;
        long long h = 0;
        do h = 3 * h + 1; while (h <= ub);
        do {
            h = std::llround(h / 3.0);
            for (long long i = h; i <= ub; ++i) {
                Variant v = at(i);
                long long j = i;
                while (modelCompare(at(j - h), v) == VARCMP_GT) {
                    at(j) = at(j - h);
                    if ((j -= h) < h) break;
                }
                at(j) = v;
            }
        } while (h != 0);
        return *this;
    } catch (const ModelError& e) {
        code = e.code;
        return *this;
    }
    Model& quick(bool desc) try {
        auto atLeast = [](int c, bool up) { return c == VARCMP_EQ || c == (up ? VARCMP_GT : VARCMP_LT); };
        long long lo = 0, hi = static_cast<long long>(a.size()) - 1, sl[33], sh[33];
        int sp = 0;
        for (;;) {
            if (hi > lo) {
                const Variant pivot = modelText(at(hi));
                long long i = lo - 1, j = hi;
                do {
                    do ++i; while (!atLeast(modelCompare(at(i), pivot), !desc));
                    do --j; while (!(atLeast(modelCompare(at(j), pivot), desc) | (j == lo)));
                    Variant t = modelText(at(i));
                    at(i) = at(j);
                    store(j, t);
                } while (j > i);
                Variant t = modelText(at(j));
                at(j) = at(i);
                at(i) = at(hi);
                store(hi, t);
                if (++sp > 32) throw ModelError{9};
                if (i - lo > hi - i) sl[sp] = lo, sh[sp] = i - 1, lo = i + 1;
                else sl[sp] = i + 1, sh[sp] = hi, hi = i - 1;
            } else {
                if (sp == 0) return *this;
                lo = sl[sp], hi = sh[sp], --sp;
            }
        }
    } catch (const ModelError& e) {
        code = e.code;
        return *this;
    }
    HRESULT hr() const { return code ? tova::errorResult(code) : S_OK; }
    Spelled spelled() const {
        Spelled out;
        for (const auto& v : a) out.push_back(spell(v));
        return out;
    }
};

// Random mixed values: Longs, Doubles, numeric and other Strings, now and then Empty or Null.
Variant randomValue(std::mt19937& rng, bool withNull) {
    static const wchar_t* texts[] = {L"a", L"B", L"ab", L"", L"10", L"9", L"2.5", L"-3", L"007", L"z9", L"Ab"};
    switch (rng() % 12) {
    case 0: case 1: case 2: return L(static_cast<long>(rng() % 21) - 10);
    case 3: case 4: return D((static_cast<int>(rng() % 81) - 40) / 4.0);
    case 5: return bare(withNull && rng() % 3 == 0 ? VT_NULL : VT_EMPTY);
    default: return S(texts[rng() % (sizeof texts / sizeof texts[0])]);
    }
}

}  // namespace

// ------------------------------------------------------------------ ShellSortArray

TEST(ShellSort, SortsZeroBasedArraysAndRefusesNonArrays) {
    Variant v = array({L(5), L(3), L(9), L(1)}), one = array({S(L"x")}), none = array({});
    EXPECT_TRUE(shellSort(&v));
    EXPECT_EQ((Spelled{L"1", L"3", L"5", L"9"}), contents(v));
    EXPECT_TRUE(shellSort(&one));
    EXPECT_EQ((Spelled{L"'x'"}), contents(one));
    EXPECT_TRUE(shellSort(&none));
    Variant empty, number = L(4), null = bare(VT_NULL);
    EXPECT_FALSE(shellSort(&empty));
    EXPECT_FALSE(shellSort(&number));
    EXPECT_FALSE(shellSort(&null));
    EXPECT_EQ(VT_I4, V_VT(&number));
    EXPECT_FALSE(shellSortByColumn(&empty, 0));
    EXPECT_FALSE(quick(number));
}

TEST(ShellSort, MixedVariantsCompareAsTheRuntimeDoes) {
    // Numeric texts against numbers numerically, other texts above numbers,
    // texts against texts by code unit; nothing changes type.
    Variant v = array({S(L"abc"), L(10), S(L"9"), D(2.5), S(L"B"), L(1)});
    EXPECT_TRUE(shellSort(&v));
    EXPECT_EQ((Spelled{L"1", L"2.5d", L"'9'", L"10", L"'B'", L"'abc'"}), contents(v));
    // A comparison with Null is never true: nothing moves past it.
    Variant n = array({L(3), bare(VT_NULL), L(1)});
    EXPECT_TRUE(shellSort(&n));
    EXPECT_EQ((Spelled{L"3", L"Null", L"1"}), contents(n));
}

TEST(ShellSort, LowerBoundsOtherThanZero) {
    // Lower bound 1: moving an element to the front reads index 0. The value
    // being inserted is lost and its shifted neighbour doubled, as a copying sort leaves it.
    Variant one = array({L(3), L(1)}, 1), ordered = array({L(1), L(2), L(3)}, 1);
    EXPECT_EQ(kError9, guard([&] { shellSort(&one); }));
    EXPECT_EQ((Spelled{L"3", L"3"}), contents(one));
    EXPECT_TRUE(shellSort(&ordered));  // nothing reaches the front: no error
    // Lower bound 2: the last pass has gap 2, so the array is only partly ordered.
    Variant two = array({L(1), L(3), L(2), L(4)}, 2);
    EXPECT_TRUE(shellSort(&two));
    EXPECT_EQ((Spelled{L"1", L"3", L"2", L"4"}), contents(two));
    // A negative lower bound: the gap seed runs down until it overflows.
    Variant negative = array({L(2), L(1)}, -1);
    EXPECT_EQ(kError6, guard([&] { shellSort(&negative); }));
    EXPECT_EQ((Spelled{L"2", L"1"}), contents(negative));
    // Typed arrays alike; a doubled String is a copy, not the same string twice.
    Variant typed = array({L(3), L(1)}, 1, VT_I4), texts = array({S(L"b"), S(L"a")}, 1, VT_BSTR),
            variants = array({S(L"b"), S(L"a")}, 1);
    EXPECT_EQ(kError9, guard([&] { shellSort(&typed); }));
    EXPECT_EQ(kError9, guard([&] { shellSort(&texts); }));
    EXPECT_EQ(kError9, guard([&] { shellSort(&variants); }));
    EXPECT_EQ((Spelled{L"'b'", L"'b'"}), contents(texts));
    EXPECT_EQ((Spelled{L"'b'", L"'b'"}), contents(variants));
    BSTR* s;
    VARIANT* v;
    SafeArrayAccessData(V_ARRAY(&texts), reinterpret_cast<void**>(&s));
    EXPECT_NE(s[0], s[1]);
    SafeArrayUnaccessData(V_ARRAY(&texts));
    SafeArrayAccessData(V_ARRAY(&variants), reinterpret_cast<void**>(&v));
    EXPECT_NE(V_BSTR(&v[0]), V_BSTR(&v[1]));
    SafeArrayUnaccessData(V_ARRAY(&variants));
}

TEST(ShellSort, ArraysAsCallersPassThem) {
    // Typed array variables passed by reference: sorted in the caller's array.
    Variant longs = array({L(2), L(3), L(1)}, 0, VT_I4), doubles = array({D(2), D(1)}, 0, VT_R8);
    SAFEARRAY* sa = V_ARRAY(&longs);
    VARIANT ref;
    V_VT(&ref) = VT_BYREF | VT_ARRAY | VT_I4;
    V_ARRAYREF(&ref) = &sa;
    EXPECT_TRUE(shellSort(&ref));
    EXPECT_EQ((Spelled{L"1", L"2", L"3"}), contents(longs));
    sa = V_ARRAY(&doubles);
    V_VT(&ref) = VT_BYREF | VT_ARRAY | VT_R8;
    EXPECT_TRUE(quick(ref));
    EXPECT_EQ((Spelled{L"1d", L"2d"}), contents(doubles));
    // A Variant by reference to a Variant holding the array.
    Variant target = array({S(L"b"), S(L"a")});
    VARIANT byref = vRef(&target);
    EXPECT_TRUE(shellSort(&byref));
    EXPECT_EQ((Spelled{L"'a'", L"'b'"}), contents(target));
    // An array never dimensioned has no bounds.
    SAFEARRAY* none = nullptr;
    V_ARRAYREF(&ref) = &none;
    EXPECT_EQ(kError9, guard([&] { shellSort(&ref); }));
}

TEST(ShellSort, OtherElementTypesAndFailures) {
    Variant integers = array({L(30), L(-2), L(7)}, 0, VT_I2), money = array({D(2.5), D(-1), D(0.25)}, 0, VT_CY);
    EXPECT_TRUE(shellSort(&integers));
    EXPECT_EQ((Spelled{L"-2i", L"7i", L"30i"}), contents(integers));
    EXPECT_TRUE(shellSort(&money));
    EXPECT_EQ((Spelled{L"-1?6", L"0.25?6", L"2.5?6"}), contents(money));
    // An object cannot be compared: 13, even alone in the array (compared with itself).
    ComPtr<_Rectangle> r = newRectangle();
    ASSERT_TRUE(r);
    Variant objects = array({Variant(static_cast<IDispatch*>(r.get()))});
    EXPECT_EQ(kError13, guard([&] { shellSort(&objects); }));
    // A two-dimensional array: its single index fails.
    Variant matrix = array({L(1), L(2), L(3), L(4)}, 0, VT_VARIANT, 2);
    EXPECT_EQ(kError9, guard([&] { shellSort(&matrix); }));
}

// ---------------------------------------------------------------- ShellSortArrayEx

TEST(ShellSortByColumn, MovesWholeRowsByTheirKey) {
    Variant m = array({L(3), S(L"c"), D(0.5), L(1), S(L"b"), D(1.5), L(2), S(L"a"), D(2.5)}, 0, VT_VARIANT, 3);
    EXPECT_TRUE(shellSortByColumn(&m, 0));
    EXPECT_EQ((Spelled{L"1", L"'b'", L"1.5d", L"2", L"'a'", L"2.5d", L"3", L"'c'", L"0.5d"}), contents(m));
    EXPECT_TRUE(shellSortByColumn(&m, 1));
    EXPECT_EQ((Spelled{L"2", L"'a'", L"2.5d", L"1", L"'b'", L"1.5d", L"3", L"'c'", L"0.5d"}), contents(m));
    // Typed, with columns numbered from 5.
    Variant t = array({L(9), L(1), L(4), L(2), L(7), L(3)}, 0, VT_I4, 2, 5);
    EXPECT_TRUE(shellSortByColumn(&t, 5));
    EXPECT_EQ((Spelled{L"4", L"2", L"7", L"3", L"9", L"1"}), contents(t));
}

TEST(ShellSortByColumn, ColumnOutsideTheSecondDimensionIsFalse) {
    Variant m = array({L(2), L(0), L(1), L(0)}, 0, VT_VARIANT, 2, 1);
    EXPECT_FALSE(shellSortByColumn(&m, 3));  // one past the upper bound
    EXPECT_FALSE(shellSortByColumn(&m, 0));  // below the lower bound
    EXPECT_EQ((Spelled{L"2", L"0", L"1", L"0"}), contents(m));
    Variant flat = array({L(2), L(1)});
    EXPECT_FALSE(shellSortByColumn(&flat, 0));
    EXPECT_EQ((Spelled{L"2", L"1"}), contents(flat));
    // Rows numbered from 1: the same index-0 failure as the one-dimensional sort.
    Variant one = array({L(2), L(1)}, 1, VT_VARIANT, 1);
    EXPECT_EQ(kError9, guard([&] { shellSortByColumn(&one, 0); }));
}

// ------------------------------------------------------------------ QuickSortArray

TEST(QuickSort, ExchangedElementsComeBackAsText) {
    Variant v = array({L(3), L(1), L(2)}), yes = bare(VT_BOOL);
    V_BOOL(&yes) = VARIANT_TRUE;
    EXPECT_TRUE(quick(v, nullptr, &yes));
    // The values descend; what went through the text temporary is now a String.
    EXPECT_EQ((Spelled{L"3", L"2", L"'1'"}), contents(v));
    Variant a = array({L(10), L(9), L(5), L(20)});
    EXPECT_TRUE(quick(a));
    EXPECT_EQ((Spelled{L"5", L"9", L"'10'", L"'20'"}), contents(a));
}

TEST(QuickSort, NumElsIsTheLastIndexSorted) {
    Variant v = array({L(5), L(4), L(3), L(2), L(1)});
    const Variant one = L(1);
    EXPECT_TRUE(quick(v, &one));
    EXPECT_EQ((Spelled{L"4", L"'5'", L"3", L"2", L"1"}), contents(v));
    // Converted to a Long (1.5 rounds to 2); Null cannot be; past the upper
    // bound the pivot read fails; nothing to sort reads nothing.
    Variant w = array({L(3), L(2), L(1)});
    const Variant text = S(L"1.5"), null = bare(VT_NULL), beyond = L(3), negative = L(-4);
    EXPECT_TRUE(quick(w, &text));
    EXPECT_EQ((Spelled{L"1", L"2", L"'3'"}), contents(w));
    EXPECT_EQ(kError94, guard([&] { quick(w, &null); }));
    EXPECT_EQ(kError9, guard([&] { quick(w, &beyond); }));
    // The pivot is read before Descending is converted (all Longs, all Strings).
    const Variant notABoolean = S(L"neither");
    for (Variant numbers : {array({L(3), L(2), L(1)}), array({S(L"c"), S(L"b"), S(L"a")})}) {
        EXPECT_EQ(kError9, guard([&] { quick(numbers, &beyond, &notABoolean); }));
        EXPECT_EQ(kError13, guard([&] { quick(numbers, nullptr, &notABoolean); }));
    }
    EXPECT_TRUE(quick(w, &negative));
    // Descending as text, numEls missing.
    Variant d = array({L(1), L(2)});
    const Variant trueText = S(L"True");
    const VARIANT missing = vMissing();
    EXPECT_TRUE(quick(d, &missing, &trueText));
    EXPECT_EQ((Spelled{L"2", L"'1'"}), contents(d));
}

TEST(QuickSort, TypedArraysConvertTheTextBack) {
    Variant longs = array({L(30), L(-2), L(7), L(7), L(0)}, 0, VT_I4);
    EXPECT_TRUE(quick(longs));
    EXPECT_EQ((Spelled{L"-2", L"0", L"7", L"7", L"30"}), contents(longs));
    // A Double that went through text is rounded to its 15 digits.
    Variant doubles = array({D(0.1 + 0.2), D(0.1)}, 0, VT_R8);
    EXPECT_TRUE(quick(doubles));
    EXPECT_EQ((Spelled{L"0.10000000000000001d", L"0.29999999999999999d"}), contents(doubles));
    Variant texts = array({S(L"b"), S(L"B"), S(L"a"), S(L""), S(L"ab")}, 0, VT_BSTR);
    EXPECT_TRUE(quick(texts));
    EXPECT_EQ((Spelled{L"''", L"'B'", L"'a'", L"'ab'", L"'b'"}), contents(texts));
    Variant integers = array({L(3), L(1), L(2)}, 0, VT_I2);
    EXPECT_TRUE(quick(integers));
    EXPECT_EQ((Spelled{L"1i", L"2i", L"3i"}), contents(integers));
}

TEST(QuickSort, FailuresOfTheAlgorithm) {
    // 2/3 reads back from its text as 0.666666666666667, above itself: the scan
    // for an element not below the pivot runs past the end.
    Variant doubles = array({D(0.5), D(2.0 / 3)}, 0, VT_R8);
    EXPECT_EQ(kError9, guard([&] { quick(doubles); }));
    // Null as the pivot cannot be text; Null elsewhere is only never matched.
    Variant nullPivot = array({L(1), bare(VT_NULL)}), nullFirst = array({bare(VT_NULL), L(1)});
    EXPECT_EQ(kError94, guard([&] { quick(nullPivot); }));
    EXPECT_TRUE(quick(nullFirst));
    EXPECT_EQ((Spelled{L"Null", L"'1'"}), contents(nullFirst));
    // Objects cannot be compared with the text pivot.
    ComPtr<_Rectangle> r = newRectangle();
    ASSERT_TRUE(r);
    Variant objects = array({Variant(static_cast<IDispatch*>(r.get())), L(1)});
    EXPECT_EQ(kError13, guard([&] { quick(objects); }));
}

// ------------------------------------------------------------- comparing, text

TEST(Compare, RuntimeRules) {
    EXPECT_EQ(VARCMP_GT, compare(L(10), S(L"9")));  // numerically
    EXPECT_EQ(VARCMP_EQ, compare(D(2.5), S(L"2.5")));
    EXPECT_EQ(VARCMP_LT, compare(L(10), S(L"9x")));  // not a number: the text is greater
    EXPECT_EQ(VARCMP_LT, compare(S(L"10"), S(L"9")));  // texts by code unit
    EXPECT_EQ(VARCMP_LT, compare(S(L"B"), S(L"a")));
    EXPECT_EQ(VARCMP_LT, compare(S(L"ab"), S(L"ab\x0100")));
    EXPECT_EQ(VARCMP_LT, compare(bare(VT_EMPTY), L(1)));
    EXPECT_EQ(VARCMP_NULL, compare(bare(VT_NULL), L(1)));
    Variant target = L(5);
    EXPECT_EQ(VARCMP_EQ, compare(vRef(&target), D(5)));
    EXPECT_EQ(kError13, guard([] { compare(bare(VT_ERROR), L(1)); }));
}

TEST(Text, OurConversionsMatchTheRuntime) {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> mantissa(1, 10);
    for (int k = 0; k < 20000; ++k) {
        double x = mantissa(rng) * std::pow(10.0, static_cast<int>(rng() % 26) - 8) * (rng() % 2 ? -1 : 1);
        if (k % 4 == 0) {  // a 16th significant digit of 5: near the 15th digit's rounding tie
            wchar_t buf[48];
            swprintf(buf, 48, L"%lld5e%d", static_cast<long long>(rng() % 900000000000000ULL + 100000000000000ULL),
                     static_cast<int>(rng() % 26) - 23);
            x = wcstod(buf, nullptr);
        }
        if (k % 7 == 0) x = static_cast<double>(static_cast<long long>(rng() % 2000000000) - 1000000000);
        Variant v = D(x), theirs, l = L(static_cast<long>(rng())), lt;
        ASSERT_EQ(S_OK, VariantChangeTypeEx(&theirs, &v, kLocale, 0, VT_BSTR));
        ASSERT_EQ(std::wstring(V_BSTR(&theirs)), tova::Bstr::attach(toText(v)).str()) << x;
        double read = 0, runtime = 0;
        ASSERT_EQ(SUCCEEDED(VarR8FromStr(V_BSTR(&theirs), kLocale, 0, &runtime)), readNumber(V_BSTR(&theirs), &read));
        ASSERT_EQ(0, std::memcmp(&read, &runtime, sizeof read)) << V_BSTR(&theirs);
        VariantChangeTypeEx(&lt, &l, kLocale, 0, VT_BSTR);
        ASSERT_EQ(std::wstring(V_BSTR(&lt)), tova::Bstr::attach(toText(l)).str());
    }
    for (int k = 0; k < 5000; ++k) {  // plain decimals as users write them: leading and trailing zeros
        std::wstring t = rng() % 4 ? L"" : L"-";
        for (int d = 0, n = 1 + static_cast<int>(rng() % 16); d < n; ++d) t += static_cast<wchar_t>(L'0' + rng() % 10);
        if (rng() % 4) {
            t += L'.';
            for (int d = 0, n = 1 + static_cast<int>(rng() % 18); d < n; ++d) t += static_cast<wchar_t>(L'0' + rng() % 10);
        }
        tova::Bstr text(t);
        double read = 0, runtime = 0;
        ASSERT_EQ(SUCCEEDED(VarR8FromStr(text.get(), kLocale, 0, &runtime)), readNumber(text.get(), &read)) << t;
        ASSERT_EQ(0, std::memcmp(&read, &runtime, sizeof read)) << t;
    }
    tova::Bstr abc(L"12abc"), spaced(L" 12 ");
    double d = 0;
    EXPECT_FALSE(readNumber(abc.get(), &d));
    EXPECT_TRUE(readNumber(spaced.get(), &d));
    EXPECT_EQ(12, d);
    EXPECT_EQ(kError94, guard([] { SysFreeString(toText(bare(VT_NULL))); }));
}

// The runtimes scale the digits they read in double or in the x87's extended
// precision, by bitness; a host may lower the x87's precision on top. Each
// setting is checked anew, and our reading follows the runtime's in all.
TEST(Text, ReadingFollowsTheRuntimeInEveryPrecision) {
    const unsigned int saved = _controlfp(0, 0);
    for (unsigned int precision : {_PC_64, _PC_53, _PC_24, _PC_64}) {
        _controlfp(precision, _MCW_PC);
        for (const wchar_t* t : {L"-0.965794467176789", L"-6158.17756745596", L"2.30258509299405", L"0.1"}) {
            tova::Bstr text(t);
            double ours = 0, runtime = 0;
            ASSERT_TRUE(readNumber(text.get(), &ours));
            ASSERT_EQ(S_OK, VarR8FromStr(text.get(), kLocale, 0, &runtime));
            EXPECT_EQ(0, std::memcmp(&ours, &runtime, sizeof ours)) << t << " precision " << precision;
        }
    }
    _controlfp(saved, _MCW_PC);
}

TEST(Text, NumberKeysOrderAsTheirTexts) {
    // Sorted by key, neighbours' texts (their first sixteen characters) come
    // in order, equal exactly where the keys are.
    std::mt19937_64 rng(23);
    std::vector<Variant> numbers = {L(0), L(7), L(-7), L(10), L(LONG_MIN), L(LONG_MAX), L(-1), D(0), D(100), D(1e14),
                                    D(123.5), D(-0.5), D(0.000123456789012345), D(99999999999999.9), D(1.0 / 3)};
    for (int k = 0; k < 3000; ++k) {
        if (k % 3 == 0) {
            numbers.push_back(L(static_cast<long>(rng())));
        } else {
            const double mantissa = 1 + static_cast<double>(rng() % 1000000000) / 1e9 * 9;
            const double x = mantissa * std::pow(10.0, static_cast<int>(rng() % 19) - 4) * (rng() % 2 ? -1 : 1);
            numbers.push_back(D(k % 3 == 1 ? x : std::round(x * 1000) / 1000));
        }
    }
    std::vector<std::pair<uint64_t, std::wstring>> keyed;
    for (const Variant& n : numbers) {
        uint64_t key;
        if (!detail::numberTextKey(n, &key)) continue;
        keyed.emplace_back(key, textOf(n).substr(0, 16));
    }
    ASSERT_GT(keyed.size(), 2900u);
    std::sort(keyed.begin(), keyed.end());
    for (size_t k = 1; k < keyed.size(); ++k) {
        const auto& a = keyed[k - 1];
        const auto& b = keyed[k];
        if (a.first == b.first) ASSERT_EQ(a.second, b.second);
        else ASSERT_LT(a.second, b.second) << std::hex << a.first << " " << b.first;
    }
}

// ------------------------------------------------------------------- at random

TEST(Random, MixedVariantsAgreeWithThePlainModel) {
    std::mt19937 rng(11);
    for (int round = 0; round < 300; ++round) {
        std::vector<Variant> values;
        for (size_t k = 0, n = 1 + rng() % 40; k < n; ++k) values.push_back(randomValue(rng, round % 5 == 0));
        const bool desc = rng() % 2;
        const Variant d = L(desc);
        Variant shell = array(values), quickly = array(values);
        const Model s = Model{values}.shell(), q = Model{values}.quick(desc);
        ASSERT_EQ(s.hr(), guard([&] { shellSort(&shell); })) << round;
        ASSERT_EQ(s.spelled(), contents(shell)) << round;
        ASSERT_EQ(q.hr(), guard([&] { quick(quickly, nullptr, &d); })) << round;
        ASSERT_EQ(q.spelled(), contents(quickly)) << round;
    }
}

TEST(Random, TypedDoublesAgreeWithThePlainModel) {
    // Full-precision values: what goes through text comes back rounded, and now
    // and then the scan runs off the end (error 9).
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> u(-100, 100);
    int failures = 0;
    for (int round = 0; round < 200; ++round) {
        std::vector<Variant> values;
        for (size_t k = 0, n = 2 + rng() % 30; k < n; ++k)
            values.push_back(D(rng() % 3 ? u(rng) : static_cast<double>(rng() % 7) / 3));
        const Model model = Model{values, VT_R8}.quick(round % 2);
        failures += model.code != 0;
        Variant v = array(values, 0, VT_R8);
        const Variant d = L(round % 2);
        ASSERT_EQ(model.hr(), guard([&] { quick(v, nullptr, &d); })) << round;
        ASSERT_EQ(model.spelled(), contents(v)) << round;
    }
    EXPECT_GT(failures, 0);
}

TEST(Random, VariantNumbersAgreeWithThePlainModel) {
    // Arrays of Variants that are all Longs or all Doubles are sorted in their
    // own memory, long partitions a block at a time. Values crowd together so
    // that texts agree in long prefixes; full-precision Doubles read back as
    // other numbers and now and then run the scan off the end (error 9); an
    // odd value out (a Double among Longs, -0 or an exponent among Doubles)
    // sends the array the general way.
    std::mt19937_64 rng(17);
    int failures = 0;
    for (int round = 0; round < 100; ++round) {
        const bool doubles = round % 2, desc = (round / 2) % 2, small = round < 50;
        const size_t n = small ? 2 + rng() % 6 : 100 + rng() % 1500;
        const int flavour = small ? 2 : (round / 4) % 3;
        std::vector<Variant> values;
        for (size_t k = 0; k < n; ++k) {
            if (!doubles) {
                const long spread = flavour == 0 ? 1000 : flavour == 1 ? 2000000000 : 30;
                long v = static_cast<long>(rng() % static_cast<unsigned long>(spread)) - spread / 2;
                if (rng() % 50 == 0) v = rng() % 2 ? LONG_MIN : LONG_MAX;
                values.push_back(L(v));
            } else if (flavour == 0) {
                // Sixteen characters and more in common: -123456.789012xyz.
                values.push_back(D(-123456.789012 - static_cast<double>(rng() % 1000) * 1e-9));
            } else if (flavour == 1) {
                values.push_back(D((static_cast<double>(rng() % 2000001) - 1e6) / 997));
            } else {
                values.push_back(D(rng() % 4 == 0 ? 0.0 : static_cast<double>(rng() % 200) / 3 - 30));
            }
        }
        if (round % 10 == 9) values[rng() % n] = doubles ? (round % 20 == 9 ? D(-0.0) : D(1e300)) : D(2.5);
        Variant v = array(values, round % 3 == 0 ? -7 : 0);  // the bounds move, nothing else changes
        const Variant d = L(desc);
        const Model model = Model{values}.quick(desc);
        failures += model.code != 0;
        ASSERT_EQ(model.hr(), guard([&] { quick(v, nullptr, &d); })) << round;
        ASSERT_EQ(model.spelled(), contents(v)) << round;
    }
    EXPECT_GT(failures, 0);
}

TEST(Random, LargeArraysComeOutInOrder) {
    std::mt19937 rng(5);
    std::vector<Variant> longs, doubles, texts;
    for (size_t k = 0; k < 20000; ++k) {
        longs.push_back(L(static_cast<long>(rng() % 100000) - 50000));
        doubles.push_back(D((static_cast<double>(rng() % 2000000000) - 1e9) / 1000));  // texts read back exactly
        std::wstring s(1 + rng() % 6, L'a');
        for (auto& c : s) c = L"aAzZ0\x00e9\x4e2d"[rng() % 7];  // units above 0xFF end the sort keys
        texts.push_back(S(s.c_str()));
    }
    const std::vector<Variant>* data[] = {&longs, &doubles, &texts};
    for (VARTYPE vt : {VT_VARIANT, VT_I4, VT_R8, VT_BSTR})
        for (int k = 0; k < 3; ++k)
            for (bool quickly : {false, true}) {
                if (vt != VT_VARIANT && vt != (k == 0 ? VT_I4 : k == 1 ? VT_R8 : VT_BSTR)) continue;
                if (vt == VT_VARIANT && quickly && k < 2) {
                    // Numbers turn into text as they move: no numeric order, but
                    // exactly what the plain model does.
                    std::vector<Variant> part(data[k]->begin(), data[k]->begin() + 3000);
                    Variant mine = array(part);
                    ASSERT_TRUE(quick(mine));
                    ASSERT_EQ(Model{part}.quick(false).spelled(), contents(mine)) << k;
                    continue;
                }
                Variant v = array(*data[k], 0, vt);
                ASSERT_TRUE(quickly ? quick(v) : shellSort(&v)) << vt << " " << k;
                Spelled in, out;
                Variant previous;
                for (LONG i = 0; i < 20000; ++i) {
                    const Variant e = element(V_ARRAY(&v), &i);
                    if (i) ASSERT_NE(VARCMP_GT, modelCompare(previous, e)) << vt << " " << k << " at " << i;
                    in.push_back(textOf((*data[k])[i]));
                    out.push_back(textOf(e));
                    previous = e;
                }
                std::sort(in.begin(), in.end());  // the same values as went in
                std::sort(out.begin(), out.end());
                ASSERT_EQ(in, out) << vt << " " << k;
            }
}
