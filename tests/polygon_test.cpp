// Polygon, Points and Point through their vtables, as an early-bound client
// uses them: vertex editing, the Changed reports, whole-polygon operations,
// saved states, lifetime and drawing.
#include "support.h"

#include <cmath>

using namespace test;

namespace {

const double kPi = 3.14159265358979323846;

// What one Changed carried.
struct Change {
    IDispatch* point;  // identity only; the sink's copy keeps it alive
    double prevX, prevY;
    bool all;
};

struct ChangeLog : Sink {
    std::vector<Change> changes() const {
        std::vector<Change> out;
        for (const Call& c : calls) {
            EXPECT_EQ(1, c.id);
            EXPECT_EQ(4u, c.args.size());
            const VARIANT& p = c.args[0];
            out.push_back({V_VT(&p) == VT_DISPATCH ? V_DISPATCH(&p) : nullptr, V_R8(&c.args[1]), V_R8(&c.args[2]),
                           V_BOOL(&c.args[3]) != VARIANT_FALSE});
        }
        return out;
    }
    // Exactly one report, for all points.
    void expectOneAllPoints(const char* what) {
        auto c = changes();
        ASSERT_EQ(1u, c.size()) << what;
        EXPECT_EQ(nullptr, c[0].point) << what;
        EXPECT_EQ(0.0, c[0].prevX);
        EXPECT_EQ(0.0, c[0].prevY);
        EXPECT_TRUE(c[0].all);
        calls.clear();
    }
};

ComPtr<_Polygon> newPolygon() { return create<_Polygon>(CLSID_Polygon, IID__Polygon); }

class PolygonTest : public ::testing::Test {
protected:
    void SetUp() override {
        poly = newPolygon();
        ASSERT_TRUE(poly);
        ASSERT_EQ(S_OK, poly->get_Points(pts.put()));
        log.connect(poly.get(), DIID___Polygon);
    }
    void TearDown() override { log.disconnect(); }

    ComPtr<_Point> add(double x, double y, VARIANT before = vMissing()) {
        ComPtr<_Point> p;
        EXPECT_EQ(S_OK, pts->Add(&before, &x, &y, p.put()));
        return p;
    }
    void addAll(std::initializer_list<std::pair<double, double>> vs) {
        for (auto& v : vs) add(v.first, v.second);
    }
    ComPtr<_Point> item(VARIANT index) {
        ComPtr<_Point> p;
        EXPECT_EQ(S_OK, pts->get_Item(&index, p.put()));
        return p;
    }
    ComPtr<_Point> at(long i) { return item(vLong(i)); }
    long count() {
        long n = -1;
        pts->get_Count(&n);
        return n;
    }
    static double X(_Point* p) { double v = NAN; p->get_X(&v); return v; }
    static double Y(_Point* p) { double v = NAN; p->get_Y(&v); return v; }
    static long index(_Point* p) { long v = -1; p->get_Index(&v); return v; }
    void expectVertices(std::initializer_list<std::pair<double, double>> vs) {
        ASSERT_EQ(static_cast<long>(vs.size()), count());
        long i = 1;
        for (auto& v : vs) {
            ComPtr<_Point> p = at(i++);
            EXPECT_NEAR(v.first, X(p.get()), 1e-9) << "vertex " << i - 1;
            EXPECT_NEAR(v.second, Y(p.get()), 1e-9) << "vertex " << i - 1;
        }
    }
    bool push() { VARIANT_BOOL b = 0; poly->PushState(&b); return b != 0; }
    bool pop() { VARIANT_BOOL b = 0; poly->PopState(&b); return b != 0; }

    ComPtr<_Polygon> poly;
    ComPtr<_Points> pts;
    ChangeLog log;
};

}  // namespace

// ------------------------------------------------------------------ Points

TEST_F(PolygonTest, AddingPlacesPointsWithoutReporting) {
    ComPtr<_Point> p = add(1.5, 2.5);
    EXPECT_EQ(1, count());
    EXPECT_EQ(1.5, X(at(1).get()));
    EXPECT_EQ(2.5, Y(at(1).get()));
    EXPECT_EQ(1, index(p.get()));

    ComPtr<_Point> omitted;
    VARIANT missing = vMissing();
    ASSERT_EQ(S_OK, pts->Add(&missing, nullptr, nullptr, omitted.put()));
    EXPECT_EQ(0.0, X(omitted.get()));
    EXPECT_TRUE(log.calls.empty()) << "adding never reports";
}

TEST_F(PolygonTest, AddBeforeAPositionOrAKey) {
    ComPtr<_Point> a = add(1, 1), b = add(2, 2), c = add(3, 3);
    ComPtr<_Point> first = add(5, 5, vLong(1));
    EXPECT_EQ(1, index(first.get()));
    EXPECT_EQ(2, index(a.get())) << "the former first point follows the new one";
    EXPECT_EQ(4, index(c.get()));

    // Out of range: the new point stays last.
    ComPtr<_Point> last = add(6, 6, vLong(99));
    EXPECT_EQ(5, index(last.get()));
    ComPtr<_Point> zero = add(7, 7, vLong(0));
    EXPECT_EQ(6, index(zero.get()));
    // Count + 1 after adding is the new point's own place.
    ComPtr<_Point> own = add(8, 8, vLong(7));
    EXPECT_EQ(7, index(own.get()));
    // A String that is no key moves nothing.
    ComPtr<_Point> unknown = add(9, 9, Variant(L"3"));
    EXPECT_EQ(8, index(unknown.get()));
    EXPECT_TRUE(log.calls.empty());
}

TEST_F(PolygonTest, IndexLetMovesAndShiftsTheOthers) {
    ComPtr<_Point> a = add(1, 1), b = add(2, 2), c = add(3, 3), d = add(4, 4);
    long to = 1;
    d->put_Index(&to);
    EXPECT_EQ(1, index(d.get()));
    EXPECT_EQ(2, index(a.get()));
    EXPECT_EQ(4, index(c.get()));
    to = 3;
    d->put_Index(&to);  // towards the end: the ones in between move up
    EXPECT_EQ(1, index(a.get()));
    EXPECT_EQ(2, index(b.get()));
    EXPECT_EQ(3, index(d.get()));
    EXPECT_EQ(4, index(c.get()));
    for (long bad : {0L, 5L, -1L}) {
        d->put_Index(&bad);
        EXPECT_EQ(3, index(d.get())) << bad;
    }
    EXPECT_EQ(3.0, X(at(4).get())) << "Item follows the order";
    EXPECT_EQ(4.0, X(at(3).get()));
    EXPECT_TRUE(log.calls.empty()) << "moving never reports";
}

TEST_F(PolygonTest, ItemSelectsByPositionReadAsANumber) {
    addAll({{1, 1}, {2, 2}, {3, 3}});
    EXPECT_EQ(2.0, X(item(vDouble(2.4)).get()));
    EXPECT_EQ(2.0, X(item(vDouble(2.5)).get())) << "ties to even";
    long three = 3;
    EXPECT_EQ(3.0, X(item(vLongRef(&three)).get()));
    EXPECT_FALSE(item(vLong(0)));
    EXPECT_FALSE(item(vLong(4)));
    EXPECT_FALSE(item(Variant(L"2"))) << "a String is a key";
    EXPECT_FALSE(item(Variant(L"")));
    VARIANT empty;
    VariantInit(&empty);
    EXPECT_FALSE(item(empty)) << "Empty reads as position 0";
}

TEST_F(PolygonTest, CoordinateChangesReportRoundedPreviousValues) {
    ComPtr<_Point> p = add(1.5, 2.5);
    double v = 3;
    p->put_X(&v);
    auto c = log.changes();
    ASSERT_EQ(1u, c.size());
    EXPECT_EQ(ComPtr<IDispatch>(p.get()).get(), c[0].point);
    EXPECT_EQ(2.0, c[0].prevX) << "1.5 rounds to even";
    EXPECT_EQ(2.0, c[0].prevY) << "the unchanged coordinate passes its current value, rounded";
    EXPECT_FALSE(c[0].all);
    log.calls.clear();

    p->put_X(&v);
    EXPECT_TRUE(log.calls.empty()) << "the same value changes nothing";

    v = -7.25;
    p->put_Y(&v);
    c = log.changes();
    ASSERT_EQ(1u, c.size());
    EXPECT_EQ(3.0, c[0].prevX);
    EXPECT_EQ(2.0, c[0].prevY) << "2.5 rounds to 2";
    EXPECT_EQ(-7.25, Y(p.get()));
}

TEST_F(PolygonTest, RemovingAndClearingReportOnceEvenWhenNothingGoes) {
    ComPtr<_Point> a = add(1, 1), b = add(2, 2), c = add(3, 3);
    Variant unknownKey(L"0123456789ABCDEF0123456789ABCDEF");
    pts->Remove(&unknownKey);
    log.expectOneAllPoints("unknown key");
    EXPECT_EQ(3, count());

    VARIANT two = vLong(2);
    pts->Remove(&two);
    log.expectOneAllPoints("by position");
    EXPECT_EQ(2, count());
    EXPECT_EQ(0, index(b.get())) << "a removed point has no place";
    EXPECT_EQ(2, index(c.get()));

    VARIANT byObject = vObject(c.get());
    pts->Remove(&byObject);
    log.expectOneAllPoints("by object");
    EXPECT_EQ(1, count());

    VARIANT nothing = vObject(nullptr);
    pts->Remove(&nothing);
    log.expectOneAllPoints("Nothing");
    EXPECT_EQ(1, count());

    // A removed point still reports to the polygon it came from.
    double v = 10;
    b->put_X(&v);
    auto ch = log.changes();
    ASSERT_EQ(1u, ch.size());
    EXPECT_FALSE(ch[0].all);
    log.calls.clear();

    pts->Clear();
    log.expectOneAllPoints("clear");
    EXPECT_EQ(0, count());
    pts->Clear();
    log.expectOneAllPoints("clear of nothing");
}

TEST_F(PolygonTest, PointsAndListOutliveThePolygon) {
    ComPtr<_Point> p = add(1, 2);
    log.disconnect();
    poly.reset();  // the list and the point keep no reference to it
    double v = 5;
    EXPECT_EQ(S_OK, p->put_X(&v)) << "no owner left to report to";
    EXPECT_EQ(5.0, X(p.get()));
    EXPECT_EQ(0, index(p.get())) << "a point without owner has no position";
    long to = 1;
    EXPECT_EQ(S_OK, p->put_Index(&to));
    ComPtr<_Point> q = add(3, 4);
    EXPECT_EQ(2, count());
    VARIANT one = vLong(1);
    EXPECT_EQ(S_OK, pts->Remove(&one));
    EXPECT_EQ(S_OK, pts->Clear());
    EXPECT_EQ(0, count());
}

TEST_F(PolygonTest, ReleasingEverythingInAnyOrderFreesEverything) {
    // The library unloads only when no object of it is alive.
    using CanUnload = HRESULT(STDAPICALLTYPE*)();
    auto canUnload = reinterpret_cast<CanUnload>(GetProcAddress(library(), "DllCanUnloadNow"));
    ASSERT_TRUE(canUnload);
    ComPtr<_Point> p = add(1, 2);
    ComPtr<_Point> centre;
    poly->get_CentrePoint(centre.put());
    log.disconnect();
    poly.reset();
    p.reset();
    pts.reset();
    centre.reset();
    EXPECT_EQ(S_OK, canUnload());
}

// ---------------------------------------------------------------- Polygon

TEST_F(PolygonTest, CentrePointAndBoundingRectangle) {
    addAll({{0, 0}, {10, 0}, {0, 10}});
    ComPtr<_Point> c;
    ASSERT_EQ(S_OK, poly->get_CentrePoint(c.put()));
    EXPECT_NEAR(10.0 / 3, X(c.get()), 1e-12);
    EXPECT_NEAR(10.0 / 3, Y(c.get()), 1e-12);
    EXPECT_EQ(0, index(c.get())) << "the centre is not a vertex";
    EXPECT_EQ(3, count());

    ComPtr<_Rectangle> r;
    ASSERT_EQ(S_OK, poly->get_Rectangle(r.put()));
    TOVA_RECT e{};
    r->get_RECT(&e);
    EXPECT_EQ(0, e.Left);
    EXPECT_EQ(0, e.Top);
    EXPECT_EQ(10, e.Right) << "the extreme vertex itself, not one past it";
    EXPECT_EQ(10, e.Bottom);

    pts->Clear();
    addAll({{2.5, 7}, {3.5, -0.5}, {3, 1.5}});
    poly->get_Rectangle(r.put());
    r->get_RECT(&e);
    EXPECT_EQ(2, e.Left);
    EXPECT_EQ(4, e.Right);
    EXPECT_EQ(0, e.Top) << "-0.5 rounds to 0";
    EXPECT_EQ(7, e.Bottom);
    EXPECT_TRUE(log.changes().size() == 1) << "only the Clear reported";
}

TEST_F(PolygonTest, EmptyPolygonHasCentreAndRectangleAtTheOrigin) {
    ComPtr<_Point> c;
    poly->get_CentrePoint(c.put());
    EXPECT_EQ(0.0, X(c.get()));
    EXPECT_EQ(0.0, Y(c.get()));
    ComPtr<_Rectangle> r;
    poly->get_Rectangle(r.put());
    TOVA_RECT e{1, 1, 1, 1};
    r->get_RECT(&e);
    EXPECT_EQ(0, e.Left | e.Top | e.Right | e.Bottom);
}

TEST_F(PolygonTest, WholePolygonOperationsReportOnce) {
    addAll({{10, 0}, {0, 0}});
    double angle = kPi / 2;
    poly->Rotate(&angle, nullptr, nullptr);
    log.expectOneAllPoints("rotate");
    expectVertices({{0, -10}, {0, 0}});

    double cx = 5, cy = 5;
    angle = kPi;
    poly->Rotate(&angle, &cx, &cy);
    log.expectOneAllPoints("rotate about a centre");
    expectVertices({{10, 20}, {10, 10}});

    double dx = 5, dy = 100;
    poly->Offset(&dx, &dy);
    log.expectOneAllPoints("offset");
    expectVertices({{15, 25}, {15, 15}}) ;

    pts->Clear();
    log.calls.clear();
    addAll({{0, 0}, {10, 0}, {10, 10}, {0, 10}, {5, 0}});
    // Centre (5, 4): the vertex on x = 5 stays on that axis.
    dx = 1;
    dy = 1;
    poly->Inflate(&dx, &dy);
    log.expectOneAllPoints("inflate");
    expectVertices({{-1, -1}, {11, -1}, {11, 11}, {-1, 11}, {5, -1}});
    poly->Deflate(&dx, &dy);
    log.expectOneAllPoints("deflate");
    expectVertices({{0, 0}, {10, 0}, {10, 10}, {0, 10}, {5, 0}});

    dx = 7;
    poly->Deflate(&dx, &dx);  // carried across the centre
    log.expectOneAllPoints("deflate past the centre");
    expectVertices({{7, 7}, {3, 7}, {3, 3}, {7, 3}, {5, 7}});
}

TEST_F(PolygonTest, OperationsOnAnEmptyPolygonStillReportOnce) {
    double a = 1;
    poly->Rotate(&a, nullptr, nullptr);
    log.expectOneAllPoints("rotate");
    poly->Offset(&a, &a);
    log.expectOneAllPoints("offset");
    poly->Inflate(&a, &a);
    log.expectOneAllPoints("inflate");
}

TEST_F(PolygonTest, SavedStatesAreWholeNumbersRestoredLastInFirstOut) {
    ComPtr<_Point> p = add(1.5, 2.5);
    add(-0.5, 3.49);
    EXPECT_TRUE(push());
    double x = 1.4, y = 2.6;
    p->put_X(&x);
    p->put_Y(&y);
    EXPECT_TRUE(push());
    log.calls.clear();

    EXPECT_TRUE(pop());
    auto c = log.changes();
    ASSERT_EQ(2u, c.size()) << "cleared, then loaded";
    EXPECT_TRUE(c[0].all && c[1].all);
    log.calls.clear();
    expectVertices({{1, 3}, {0, 3}});
    EXPECT_EQ(0, index(p.get())) << "the list holds new points";

    EXPECT_TRUE(pop());
    expectVertices({{2, 2}, {0, 3}});
    log.calls.clear();
    EXPECT_FALSE(pop()) << "nothing left";
    EXPECT_TRUE(log.calls.empty());

    push();
    push();
    poly->ClearStack();
    EXPECT_FALSE(pop());
}

TEST_F(PolygonTest, PoppingASetSavedEmptyEmptiesTheList) {
    EXPECT_TRUE(push());
    addAll({{1, 1}, {2, 2}});
    EXPECT_TRUE(pop());
    EXPECT_EQ(0, count());
    EXPECT_EQ(2u, log.changes().size());
}

TEST_F(PolygonTest, CloneHasRoundedVerticesAndNothingElse) {
    addAll({{0.5, 1.5}, {2.5, -3.7}});
    VARIANT tag = vLong(42);
    poly->put_Tag(&tag);
    push();
    ComPtr<_Polygon> copy;
    ASSERT_EQ(S_OK, poly->Clone(copy.put()));
    ComPtr<_Points> cp;
    copy->get_Points(cp.put());
    long n = 0;
    cp->get_Count(&n);
    ASSERT_EQ(2, n);
    VARIANT two = vLong(2);
    ComPtr<_Point> v;
    cp->get_Item(&two, v.put());
    EXPECT_EQ(2.0, X(v.get()));
    EXPECT_EQ(-4.0, Y(v.get()));
    EXPECT_EQ(2, index(v.get()));
    VARIANT_BOOL popped = VARIANT_TRUE;
    copy->PopState(&popped);
    EXPECT_EQ(VARIANT_FALSE, popped) << "the stack is not copied";
    Variant t;
    copy->get_Tag(&t);
    EXPECT_EQ(VT_EMPTY, V_VT(&t));
    EXPECT_TRUE(log.calls.empty()) << "cloning changes nothing here";

    ComPtr<_Polygon> empty = newPolygon(), emptyCopy;
    ASSERT_EQ(S_OK, empty->Clone(emptyCopy.put()));
    EXPECT_TRUE(emptyCopy);
}

TEST_F(PolygonTest, TagKeepsValuesAndObjects) {
    Variant t;
    poly->get_Tag(&t);
    EXPECT_EQ(VT_EMPTY, V_VT(&t));
    Variant s(L"label");
    poly->put_Tag(&s);
    poly->get_Tag(&t);
    EXPECT_EQ(std::wstring(L"label"), V_BSTR(&t));
    ComPtr<_Rectangle> r = newRectangle();
    VARIANT o = vObject(r.get());
    poly->putref_Tag(&o);
    poly->get_Tag(&t);
    ASSERT_EQ(VT_DISPATCH, V_VT(&t));
    EXPECT_EQ(ComPtr<IDispatch>(r.get()).get(), V_DISPATCH(&t)) << "by reference";
}

TEST_F(PolygonTest, DrawFillsAndOutlines) {
    addAll({{2, 2}, {30, 2}, {30, 30}, {2, 30}});
    Canvas c(40, 40, RGB(0, 0, 0));
    PenStyleConstants solid = PS_SOLID;
    long border = RGB(255, 0, 0), width = 1, back = RGB(0, 0, 255);
    BrushStyleConstants fill = BS_SOLID;
    HatchStyleConstants hatch = HS_CROSS;
    ASSERT_EQ(S_OK, poly->Draw(c.handle(), &solid, &border, &width, &back, &fill, &hatch));
    EXPECT_EQ(RGB(255, 0, 0), c.pixel(2, 2));
    EXPECT_EQ(RGB(255, 0, 0), c.pixel(30, 15)) << "the outline is closed";
    EXPECT_EQ(RGB(0, 0, 255), c.pixel(15, 15));
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(35, 35));
    EXPECT_TRUE(log.calls.empty());

    // Omitted colours are black.
    Canvas d(40, 40, RGB(9, 9, 9));
    poly->Draw(d.handle(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(RGB(0, 0, 0), d.pixel(15, 15));
}

TEST_F(PolygonTest, DrawNeedsThreeVerticesADeviceContextAndABorder) {
    Canvas c(40, 40, RGB(9, 9, 9));
    long back = RGB(0, 0, 255), width = 1;
    addAll({{2, 2}, {30, 2}});
    poly->Draw(c.handle(), nullptr, nullptr, &width, &back, nullptr, nullptr);
    EXPECT_EQ(RGB(9, 9, 9), c.pixel(2, 2)) << "two vertices";
    add(2, 30);
    width = 0;
    poly->Draw(c.handle(), nullptr, nullptr, &width, &back, nullptr, nullptr);
    EXPECT_EQ(RGB(9, 9, 9), c.pixel(5, 5)) << "no border, no fill either";
    width = 1;
    EXPECT_EQ(S_OK, poly->Draw(0, nullptr, nullptr, &width, &back, nullptr, nullptr));
    poly->Draw(c.handle(), nullptr, nullptr, &width, &back, nullptr, nullptr);
    EXPECT_EQ(RGB(0, 0, 255), c.pixel(5, 5));
}

TEST_F(PolygonTest, LateBoundClientsUseDefaultsAndTheDefaultMember) {
    ComPtr<IDispatch> d(pts.get());
    CallResult r;
    call(r, d.get(), L"Add", DISPATCH_METHOD, {vDouble(4), vDouble(5)}, {L"X", L"Y"});
    ASSERT_EQ(S_OK, r.hr);
    CallResult item;
    call(item, d.get(), L"Item", DISPATCH_PROPERTYGET, {vLong(1)});
    ASSERT_EQ(S_OK, item.hr);
    ASSERT_EQ(VT_DISPATCH, V_VT(&item.value));
    CallResult x;
    call(x, V_DISPATCH(&item.value), L"X", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(4.0, V_R8(&x.value));

    CallResult rot;
    call(rot, ComPtr<IDispatch>(poly.get()).get(), L"Rotate", DISPATCH_METHOD, {vDouble(kPi)});
    ASSERT_EQ(S_OK, rot.hr) << "the centre may be left out";
    EXPECT_NEAR(-4.0, X(at(1).get()), 1e-9);
}
