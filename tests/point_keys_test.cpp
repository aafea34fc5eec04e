// The keys of a polygon's points, which only the library itself sees.
#include <gtest/gtest.h>

#include "geometry/polygon.h"

#include <set>

using tova::ComPtr;
using tova::Variant;

TEST(PointKeys, AreNewGuidsOf32HexDigitsThatSelectTheirPoint) {
    ComPtr<tova::Polygon> poly = tova::Polygon::make();
    tova::Points* pts = poly->list();
    std::set<std::wstring> seen;
    for (int i = 0; i < 2000; ++i) {
        ComPtr<_Point> p;
        VARIANT missing;
        VariantInit(&missing);
        V_VT(&missing) = VT_ERROR;
        V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
        double x = i, y = -i;
        ASSERT_EQ(S_OK, pts->Add(&missing, &x, &y, p.put()));
    }
    for (tova::Point* p : pts->vertices()) {
        std::wstring k = p->keyText();
        ASSERT_EQ(32u, k.size());
        EXPECT_EQ(std::wstring::npos, k.find_first_not_of(L"0123456789ABCDEF")) << k;
        EXPECT_EQ(L'4', k[12]) << "a version-4 GUID";
        EXPECT_TRUE(seen.insert(k).second) << "two points share key " << std::string(k.begin(), k.end());
    }
    // Item(key) finds the point, in either case; the text of a position does not.
    tova::Point* tenth = pts->vertices()[9];
    Variant key(tenth->keyText().c_str());
    EXPECT_EQ(tenth, pts->select(key));
    std::wstring lower = tenth->keyText();
    for (wchar_t& c : lower) c = static_cast<wchar_t>(towlower(c));
    EXPECT_EQ(tenth, pts->select(Variant(lower.c_str())));
    EXPECT_EQ(nullptr, pts->select(Variant(L"10")));

    // Before a key: the new point takes the keyed point's place.
    Variant before(tenth->keyText().c_str());
    ComPtr<_Point> p;
    double x = 0.5, y = 0.5;
    ASSERT_EQ(S_OK, pts->Add(&before, &x, &y, p.put()));
    long index = 0;
    p->get_Index(&index);
    EXPECT_EQ(10, index);
    tenth->get_Index(&index);
    EXPECT_EQ(11, index);
    EXPECT_EQ(tenth, pts->select(key)) << "the key index follows moves";

    // Removing by key, after the index was built, keeps it right.
    ASSERT_EQ(S_OK, pts->Remove(&key));
    EXPECT_EQ(nullptr, pts->select(key));
    EXPECT_EQ(2000u, pts->size());
}
