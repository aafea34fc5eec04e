// Rectangles: a list of rectangles where identity, not equal edges, decides.
#include "support.h"

using namespace test;

namespace {

class RectanglesTest : public ::testing::Test {
protected:
    void SetUp() override {
        list = create<_Rectangles>(CLSID_Rectangles, IID__Rectangles);
        ASSERT_TRUE(list);
    }
    long count() {
        long n = -1;
        list->get_Count(&n);
        return n;
    }
    ComPtr<_Rectangle> item(long i, HRESULT* hr = nullptr) {
        ComPtr<_Rectangle> r;
        HRESULT h = list->get_Item(&i, r.put());
        if (hr) *hr = h;
        return r;
    }
    ComPtr<_Rectangle> add(long l, long t, long r, long b) {
        TOVA_RECT e{l, t, r, b};
        ComPtr<_Rectangle> out;
        EXPECT_EQ(S_OK, list->Add(&e, nullptr, out.put()));
        return out;
    }
    bool exists(_Rectangle* r) {
        VARIANT_BOOL b = VARIANT_TRUE;
        list->Exists(r, &b);
        return b != 0;
    }
    ComPtr<_Rectangles> list;
};

bool same(IUnknown* a, IUnknown* b) {
    ComPtr<IUnknown> ua, ub;
    a->QueryInterface(IID_IUnknown, ua.putVoid());
    b->QueryInterface(IID_IUnknown, ub.putVoid());
    return ua.get() == ub.get();
}

}  // namespace

TEST_F(RectanglesTest, EqualEdgesAreStillDistinctEntries) {
    ComPtr<_Rectangle> a = add(1, 2, 3, 4), b = add(1, 2, 3, 4);
    EXPECT_EQ(2, count());
    EXPECT_TRUE(exists(a.get()));
    EXPECT_TRUE(same(item(1).get(), a.get()));
    list->RemoveObject(a.get());
    EXPECT_EQ(1, count());
    EXPECT_FALSE(exists(a.get()));
    EXPECT_TRUE(exists(b.get()));
    TOVA_RECT e{};
    item(1)->get_RECT(&e);
    EXPECT_EQ(3, e.Right);
}

TEST_F(RectanglesTest, AddObjectAdoptsOnce) {
    ComPtr<_Rectangle> r = newRectangle();
    VARIANT_BOOL ok = 0;
    list->AddObject(r.get(), &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    list->AddObject(r.get(), &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(1, count());
    list->AddObject(nullptr, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_FALSE(exists(nullptr));
    EXPECT_EQ(S_OK, list->RemoveObject(nullptr));
    ComPtr<_Rectangle> stranger = newRectangle();
    EXPECT_EQ(S_OK, list->RemoveObject(stranger.get()));
    EXPECT_EQ(1, count());
}

TEST_F(RectanglesTest, RemoveByPositionShiftsTheRest) {
    ComPtr<_Rectangle> a = add(0, 0, 1, 1), b = add(0, 0, 2, 2), c = add(0, 0, 3, 3);
    long one = 1;
    ASSERT_EQ(S_OK, list->Remove(&one));
    EXPECT_TRUE(same(item(1).get(), b.get()));
    EXPECT_TRUE(same(item(2).get(), c.get()));
    // Removed from the list, alive where it is still held.
    long right = 0;
    a->get_Right(&right);
    EXPECT_EQ(1, right);
}

TEST_F(RectanglesTest, PositionsOutsideTheListRaiseSubscriptOutOfRange) {
    add(0, 0, 1, 1);
    for (long bad : {0L, 2L, -1L}) {
        HRESULT hr = S_OK;
        EXPECT_FALSE(item(bad, &hr));
        EXPECT_EQ(static_cast<HRESULT>(0x800A0009), hr) << bad;
        long i = bad;
        EXPECT_EQ(static_cast<HRESULT>(0x800A0009), list->Remove(&i)) << bad;
        EXPECT_EQ(1, count()) << "nothing removed";
    }
    // Late bound, the client sees the standard message.
    CallResult r;
    call(r, ComPtr<IDispatch>(list.get()).get(), L"Item", DISPATCH_PROPERTYGET, {vLong(5)});
    EXPECT_EQ(DISP_E_EXCEPTION, r.hr);
    EXPECT_EQ(9, r.excep.scode == 0 ? r.excep.wCode : HRESULT_CODE(r.excep.scode));
    EXPECT_EQ(L"Subscript out of range", r.description());
}

TEST_F(RectanglesTest, AddTwoAndTags) {
    ComPtr<_Rectangle> r;
    VARIANT missing = vMissing();
    ASSERT_EQ(S_OK, list->Add2(&missing, r.put()));
    TOVA_RECT e{1, 1, 1, 1};
    r->get_RECT(&e);
    EXPECT_EQ(0, e.Left | e.Top | e.Right | e.Bottom);
    Variant tag;
    r->get_Tag(&tag);
    EXPECT_EQ(VT_EMPTY, V_VT(&tag));

    Variant label(L"first");
    TOVA_RECT edges{1, 2, 3, 4};
    ASSERT_EQ(S_OK, list->Add(&edges, &label, r.put()));
    r->get_Tag(&tag);
    EXPECT_EQ(std::wstring(L"first"), V_BSTR(&tag));
    ASSERT_EQ(S_OK, list->Add2(&label, r.put()));
    EXPECT_EQ(3, count());
}

TEST_F(RectanglesTest, ClearKeepsRectanglesHeldElsewhere) {
    ComPtr<_Rectangle> kept = add(5, 5, 6, 6);
    add(1, 1, 2, 2);
    ASSERT_EQ(S_OK, list->Clear());
    EXPECT_EQ(0, count());
    long left = 0;
    EXPECT_EQ(S_OK, kept->get_Left(&left));
    EXPECT_EQ(5, left);
    EXPECT_FALSE(exists(kept.get()));
}
