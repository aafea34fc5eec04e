// Rectangle through its vtable, as an early-bound client uses it.
#include "support.h"

using namespace test;

namespace {

struct Edges {
    long l, t, r, b;
};

Edges edges(_Rectangle* r) {
    TOVA_RECT rc{};
    r->get_RECT(&rc);
    return {rc.Left, rc.Top, rc.Right, rc.Bottom};
}

void set(_Rectangle* r, long l, long t, long rt, long b) { r->SetRectangle3(&l, &t, &rt, &b); }

bool operator==(const Edges& a, const Edges& b) { return a.l == b.l && a.t == b.t && a.r == b.r && a.b == b.b; }
std::ostream& operator<<(std::ostream& o, const Edges& e) {
    return o << "(" << e.l << ", " << e.t << ", " << e.r << ", " << e.b << ")";
}

// Records the previous edges each Changed carries.
struct ChangeLog : Sink {
    std::vector<Edges> previous() const {
        std::vector<Edges> out;
        for (const Call& c : calls) {
            EXPECT_EQ(1, c.id);
            const VARIANT& v = c.args.at(0);
            EXPECT_EQ(VT_RECORD, V_VT(&v));
            auto* p = static_cast<const LONG*>(V_RECORD(&v));
            out.push_back({p[0], p[1], p[2], p[3]});
        }
        return out;
    }
};

class RectangleTest : public ::testing::Test {
protected:
    void SetUp() override {
        r = newRectangle();
        ASSERT_TRUE(r);
        log.connect(r.get(), DIID___Rectangle);
    }
    void TearDown() override { log.disconnect(); }
    size_t events() const { return log.calls.size(); }

    ComPtr<_Rectangle> r;
    ChangeLog log;
};

}  // namespace

TEST_F(RectangleTest, StartsEmptyAndSettersMoveSingleEdges) {
    EXPECT_EQ((Edges{0, 0, 0, 0}), edges(r.get()));
    long v = 10;
    r->put_Right(&v);
    v = 4;
    r->put_Left(&v);
    v = 3;
    r->put_Top(&v);
    v = 9;
    r->put_Bottom(&v);
    EXPECT_EQ((Edges{4, 3, 10, 9}), edges(r.get())) << "setting Left keeps Right";
    LONG w, h;
    r->get_Width(&w);
    r->get_Height(&h);
    EXPECT_EQ(6, w);
    EXPECT_EQ(6, h);
    EXPECT_EQ(4u, events());
    EXPECT_EQ((Edges{0, 0, 10, 0}), log.previous()[1]);
}

TEST_F(RectangleTest, ChangedOnlyWhenAnEdgeMoves) {
    set(r.get(), 1, 2, 3, 4);
    ASSERT_EQ(1u, events());
    long same = 1;
    r->put_Left(&same);
    long zero = 0;
    r->Offset(&zero, &zero);
    set(r.get(), 1, 2, 3, 4);
    EXPECT_EQ(1u, events()) << "no edge moved";

    long negative = -1;
    r->put_Width(&negative);
    r->put_Height(&negative);
    EXPECT_EQ((Edges{1, 2, 3, 4}), edges(r.get()));
    EXPECT_EQ(1u, events()) << "negative sizes are ignored";

    long two = 2;
    r->put_Width(&two);  // Right already is Left + 2
    EXPECT_EQ(1u, events());
    r->put_Width(&zero);
    EXPECT_EQ((Edges{1, 2, 1, 4}), edges(r.get()));
    EXPECT_EQ(2u, events());
}

TEST_F(RectangleTest, OneEventPerCallWithThePreviousEdges) {
    set(r.get(), 0, 0, 10, 10);
    long dx = 5, dy = 7;
    r->Offset(&dx, &dy);
    r->Inflate(&dx, &dy);
    r->Deflate(&dx, &dy);
    r->Reset();
    std::vector<Edges> prev = log.previous();
    ASSERT_EQ(5u, prev.size());
    EXPECT_EQ((Edges{0, 0, 0, 0}), prev[0]);
    EXPECT_EQ((Edges{0, 0, 10, 10}), prev[1]);
    EXPECT_EQ((Edges{5, 7, 15, 17}), prev[2]);
    EXPECT_EQ((Edges{0, 0, 20, 24}), prev[3]);
    EXPECT_EQ((Edges{5, 7, 15, 17}), prev[4]);
    EXPECT_EQ((Edges{0, 0, 0, 0}), edges(r.get()));
}

TEST_F(RectangleTest, HandlerSeesAllEdgesChangedAndMayReenter) {
    std::vector<Edges> seen;
    log.handler = [&](DISPID, DISPPARAMS*) {
        seen.push_back(edges(r.get()));
        if (seen.size() == 1) {
            long l = 100;
            r->put_Left(&l);  // nested Changed before the outer call returns
        }
    };
    set(r.get(), 1, 2, 3, 4);
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ((Edges{1, 2, 3, 4}), seen[0]);
    EXPECT_EQ((Edges{100, 2, 3, 4}), seen[1]);
    EXPECT_EQ((Edges{1, 2, 3, 4}), log.previous()[1]);
}

TEST_F(RectangleTest, SetRectangleVariants) {
    TOVA_RECT rc{1, 2, 3, 4};
    r->SetRectangle(&rc);
    EXPECT_EQ((Edges{1, 2, 3, 4}), edges(r.get()));

    long l = 10, t = 10, w = -5, h = 20;
    r->SetRectangle4(&l, &t, &w, &h);
    EXPECT_EQ((Edges{1, 2, 3, 4}), edges(r.get())) << "not even Left and Top change";
    w = 5;
    r->SetRectangle4(&l, &t, &w, &h);
    EXPECT_EQ((Edges{10, 10, 15, 30}), edges(r.get()));

    ComPtr<_Rectangle> other = newRectangle();
    set(other.get(), 7, 8, 9, 10);
    r->SetRectangle2(other.get());
    EXPECT_EQ((Edges{7, 8, 9, 10}), edges(r.get()));
    size_t before = events();
    EXPECT_EQ(S_OK, r->SetRectangle2(nullptr));
    EXPECT_EQ(before, events()) << "no object, nothing happens";
}

TEST_F(RectangleTest, StackIsLastInFirstOut) {
    VARIANT_BOOL ok;
    TOVA_RECT peek{9, 9, 9, 9};
    EXPECT_EQ(S_OK, r->Peek(&peek, &ok));
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(0, peek.Left + peek.Top + peek.Right + peek.Bottom) << "an empty stack zeroes the argument";

    for (long i = 1; i <= 3; ++i) {
        set(r.get(), i, i, i, i);
        r->PushState(&ok);
        EXPECT_EQ(VARIANT_TRUE, ok);
    }
    r->Peek(&peek, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(3, peek.Left);

    size_t before = events();
    r->PopState(&ok);  // C equals the current edges: no event
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(before, events());
    r->PopState(&ok);
    EXPECT_EQ((Edges{2, 2, 2, 2}), edges(r.get()));
    r->PopState(&ok);
    EXPECT_EQ((Edges{1, 1, 1, 1}), edges(r.get()));
    r->PopState(&ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "a fourth pop finds nothing";
    EXPECT_EQ((Edges{1, 1, 1, 1}), edges(r.get()));

    r->PushState(&ok);
    r->ClearStack();
    r->PopState(&ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
}

TEST_F(RectangleTest, PopRaisesWhileTheEntryIsStillOnTheStack) {
    VARIANT_BOOL ok;
    set(r.get(), 5, 5, 5, 5);
    r->PushState(&ok);
    set(r.get(), 0, 0, 0, 0);
    VARIANT_BOOL peeked = VARIANT_FALSE;
    log.handler = [&](DISPID, DISPPARAMS*) {
        TOVA_RECT p;
        r->Peek(&p, &peeked);
    };
    r->PopState(&ok);
    EXPECT_EQ(VARIANT_TRUE, peeked);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), r->Peek(nullptr, &ok)) << "a null record is an invalid argument";
    TOVA_RECT p;
    r->Peek(&p, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
}

TEST_F(RectangleTest, MidPointsRoundHalfToEven) {
    struct Case { long l, r, mid; } cases[] = {{0, 5, 2}, {0, 7, 4}, {-3, 0, -2}, {1, 2, 2}, {2, 3, 2},
                                               {-2147483647 - 1, 2147483647, 0}};
    for (const Case& c : cases) {
        set(r.get(), c.l, c.l, c.r, c.r);
        LONG x, y;
        POINTAPI p;
        r->get_MidX(&x);
        r->get_MidY(&y);
        r->get_MidPoint(&p);
        EXPECT_EQ(c.mid, x) << c.l << ".." << c.r;
        EXPECT_EQ(c.mid, y);
        EXPECT_EQ(c.mid, p.X);
        EXPECT_EQ(c.mid, p.Y);
    }
}

TEST_F(RectangleTest, ScaleRectangleRoundsEachEdgeHalfToEven) {
    set(r.get(), 1, 3, 5, 7);
    float zoom = 0.5f;
    r->ScaleRectangle(&zoom);
    EXPECT_EQ((Edges{0, 2, 2, 4}), edges(r.get()));
    EXPECT_EQ(2u, events()) << "one event for the whole scale";

    for (float bad : {0.0f, -1.0f, std::nanf("")}) {
        r->ScaleRectangle(&bad);
        EXPECT_EQ((Edges{0, 2, 2, 4}), edges(r.get()));
    }
    EXPECT_EQ(2u, events());

    set(r.get(), 0, 0, 2000000000, 10);
    float big = 4.0f;
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006), r->ScaleRectangle(&big)) << "overflow is error 6";
    EXPECT_EQ((Edges{0, 0, 2000000000, 10}), edges(r.get()));
}

TEST_F(RectangleTest, PointTestIsHalfOpen) {
    set(r.get(), 10, 20, 30, 40);
    VARIANT_BOOL in;
    auto at = [&](long x, long y) {
        r->PointInMe2(&x, &y, &in);
        return in;
    };
    EXPECT_EQ(VARIANT_TRUE, at(10, 20)) << "left and top edges are inside";
    EXPECT_EQ(VARIANT_FALSE, at(30, 20)) << "the right edge is outside";
    EXPECT_EQ(VARIANT_FALSE, at(10, 40)) << "the bottom edge is outside";
    EXPECT_EQ(VARIANT_TRUE, at(29, 39));
    POINTAPI p{15, 25};
    r->PointInMe(&p, &in);
    EXPECT_EQ(VARIANT_TRUE, in);
    EXPECT_EQ(-1, static_cast<int>(in)) << "true is -1";

    set(r.get(), 30, 20, 10, 40);  // inverted: contains nothing
    EXPECT_EQ(VARIANT_FALSE, at(15, 25));
}

TEST_F(RectangleTest, OverlapTestsUseClosedIntervals) {
    set(r.get(), 0, 0, 10, 10);
    TOVA_RECT touching{10, 0, 20, 10}, apart{11, 0, 20, 10}, inside{2, 2, 3, 3}, around{-5, -5, 50, 50};
    VARIANT_BOOL res;
    r->OverlapsHoriz(&touching, &res);
    EXPECT_EQ(VARIANT_TRUE, res) << "rectangles that touch overlap";
    r->Overlaps(&touching, &res);
    EXPECT_EQ(VARIANT_TRUE, res);
    r->Overlaps(&apart, &res);
    EXPECT_EQ(VARIANT_FALSE, res);
    r->OverlapsVert(&apart, &res);
    EXPECT_EQ(VARIANT_TRUE, res);
    r->Overlaps(&inside, &res);
    EXPECT_EQ(VARIANT_TRUE, res);
    r->Overlaps(&around, &res);
    EXPECT_EQ(VARIANT_TRUE, res);

    // Inverted rectangles are compared literally, clause by clause: [10, 0]
    // against [20, 5] overlaps once normalised, but no clause holds.
    set(r.get(), 10, 0, 0, 10);
    TOVA_RECT b{2, 0, 8, 10};
    r->OverlapsHoriz(&b, &res);
    EXPECT_EQ(VARIANT_TRUE, res) << "the containment clause";
    TOVA_RECT c{20, 0, 5, 10};
    r->OverlapsHoriz(&c, &res);
    EXPECT_EQ(VARIANT_FALSE, res);

    ComPtr<_Rectangle> other = newRectangle();
    set(other.get(), 5, 5, 6, 6);
    set(r.get(), 0, 0, 10, 10);
    r->Overlaps2(other.get(), &res);
    EXPECT_EQ(VARIANT_TRUE, res);
    for (auto f : {&_Rectangle::Overlaps2, &_Rectangle::OverlapsHoriz2, &_Rectangle::OverlapsVert2}) {
        res = VARIANT_TRUE;
        EXPECT_EQ(S_OK, (r.get()->*f)(nullptr, &res));
        EXPECT_EQ(VARIANT_FALSE, res) << "no object gives False";
    }
}

TEST_F(RectangleTest, EqualsAndEquals2) {
    set(r.get(), 1, 2, 3, 4);
    TOVA_RECT same{1, 2, 3, 4}, other{1, 2, 3, 5};
    VARIANT_BOOL res;
    r->Equals(&same, &res);
    EXPECT_EQ(VARIANT_TRUE, res);
    r->Equals(&other, &res);
    EXPECT_EQ(VARIANT_FALSE, res);
    ComPtr<_Rectangle> clone;
    r->Clone(clone.put());
    r->Equals2(clone.get(), &res);
    EXPECT_EQ(VARIANT_TRUE, res);
    EXPECT_EQ(static_cast<HRESULT>(0x800A005B), r->Equals2(nullptr, &res)) << "error 91, deliberately";
}

TEST_F(RectangleTest, CloneCopiesEdgesOnly) {
    set(r.get(), 1, 2, 3, 4);
    Variant tag(42L);
    r->put_Tag(&tag);
    VARIANT_BOOL ok;
    r->PushState(&ok);
    ComPtr<_Rectangle> clone;
    ASSERT_EQ(S_OK, r->Clone(clone.put()));
    EXPECT_EQ((Edges{1, 2, 3, 4}), edges(clone.get()));
    Variant cloneTag;
    clone->get_Tag(&cloneTag);
    EXPECT_EQ(VT_EMPTY, V_VT(&cloneTag));
    clone->PopState(&ok);
    EXPECT_EQ(VARIANT_FALSE, ok) << "the clone's stack starts empty";
}

TEST_F(RectangleTest, TagHoldsValuesAndObjects) {
    Variant got;
    r->get_Tag(&got);
    EXPECT_EQ(VT_EMPTY, V_VT(&got));

    Variant text(L"hello");
    r->put_Tag(&text);
    r->get_Tag(got.put());
    ASSERT_EQ(VT_BSTR, V_VT(&got));
    EXPECT_STREQ(L"hello", V_BSTR(&got));

    ComPtr<_Rectangle> other = newRectangle();
    Variant object(static_cast<IDispatch*>(other.get()));
    r->putref_Tag(&object);
    r->get_Tag(got.put());
    ASSERT_EQ(VT_DISPATCH, V_VT(&got));
    EXPECT_EQ(static_cast<IDispatch*>(other.get()), V_DISPATCH(&got)) << "the same object comes back";
    EXPECT_EQ(0u, events()) << "Tag raises nothing";
}

TEST_F(RectangleTest, FitToDcWindowAndClient) {
    Canvas canvas(37, 23);
    VARIANT_BOOL ok;
    set(r.get(), 5, 5, 6, 6);
    r->FitToDC(canvas.handle(), &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ((Edges{0, 0, 37, 23}), edges(r.get()));
    r->FitToDC(0, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);

    HWND wnd = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 40, 50, 200, 100, nullptr, nullptr,
                               nullptr, nullptr);
    ASSERT_NE(nullptr, wnd);
    long handle = static_cast<long>(reinterpret_cast<LONG_PTR>(wnd));
    RECT wr, cr;
    GetWindowRect(wnd, &wr);
    GetClientRect(wnd, &cr);
    r->FitToWindow(handle, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ((Edges{wr.left, wr.top, wr.right, wr.bottom}), edges(r.get()));
    r->FitToClientWindow(handle, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ((Edges{0, 0, cr.right, cr.bottom}), edges(r.get()));
    DestroyWindow(wnd);

    size_t before = events();
    r->FitToWindow(handle, &ok);  // destroyed: the edges stay
    EXPECT_EQ(VARIANT_FALSE, ok);
    r->FitToClientWindow(0, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(before, events());
}

TEST_F(RectangleTest, FillUsesTheColourAsItStands) {
    Canvas canvas(20, 20, RGB(0, 0, 0));
    set(r.get(), 2, 2, 6, 6);
    long color = RGB(200, 10, 20);
    VARIANT_BOOL ok;
    r->Fill(canvas.handle(), &color, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(200, 10, 20), canvas.pixel(2, 2));
    EXPECT_EQ(RGB(200, 10, 20), canvas.pixel(5, 5));
    EXPECT_EQ(RGB(0, 0, 0), canvas.pixel(6, 6)) << "right and bottom edges are excluded";
    r->Fill(0, &color, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
}

TEST_F(RectangleTest, DrawingMembersDrawWithinTheEdges) {
    Canvas canvas(60, 60, RGB(0, 0, 0));
    set(r.get(), 10, 10, 30, 30);
    const size_t setting = events();
    long border = RGB(255, 0, 0), back = RGB(0, 255, 0);
    PenStyleConstants pen = PS_SOLID;
    long width = 1;
    BrushStyleConstants brush = BS_SOLID;
    HatchStyleConstants hatch = HS_CROSS;
    EXPECT_EQ(S_OK, r->Draw(canvas.handle(), &border, &pen, &width, &back, &brush, &hatch));
    EXPECT_EQ(RGB(255, 0, 0), canvas.pixel(10, 10));
    EXPECT_EQ(RGB(255, 0, 0), canvas.pixel(29, 29));
    EXPECT_EQ(RGB(0, 255, 0), canvas.pixel(20, 20));
    EXPECT_EQ(RGB(0, 0, 0), canvas.pixel(30, 30));

    set(r.get(), 35, 35, 55, 55);
    EXPECT_EQ(S_OK, r->DrawEllipse(canvas.handle(), &border, &pen, &width, &back, &brush, &hatch));
    EXPECT_EQ(RGB(0, 255, 0), canvas.pixel(45, 45));
    EXPECT_EQ(RGB(0, 0, 0), canvas.pixel(35, 35)) << "the ellipse leaves the corner";
    EXPECT_EQ(S_OK, r->DrawRound(canvas.handle(), &border, &pen, &width, &back, &brush, &hatch));

    PenStyleConstants badPen = static_cast<PenStyleConstants>(42);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), r->Draw(canvas.handle(), &border, &badPen, &width, &back, &brush, &hatch));
    EXPECT_EQ(setting + 1, events()) << "drawing raises nothing; only the second set did";
}

TEST_F(RectangleTest, DrawTextMeasuresAndRaisesChanged) {
    Canvas canvas(200, 100);
    set(r.get(), 0, 0, 1, 1);
    Bstr text(L"Hello, world");
    BSTR b = text.detach();
    DrawTextFormatConstants format = static_cast<DrawTextFormatConstants>(DT_CALCRECT | DT_SINGLELINE);
    LONG height = 0;
    ASSERT_EQ(S_OK, r->DrawText(canvas.handle(), &b, &format, &height));
    SysFreeString(b);
    Edges e = edges(r.get());
    EXPECT_GT(height, 0);
    EXPECT_EQ(height, e.b - e.t);
    EXPECT_GT(e.r, 1) << "measured to the text's width";
    EXPECT_EQ(2u, events());
}

TEST_F(RectangleTest, EdgesFocusVisibilityAndGradientLeaveTheEdges) {
    Canvas canvas(50, 50, RGB(0, 0, 0));
    set(r.get(), 5, 5, 45, 45);
    EdgeStyleConstants style = EDGE_RAISED;
    EdgeModeConstants mode = static_cast<EdgeModeConstants>(BF_RECT | BF_ADJUST);
    LONG result = 0;
    r->DrawEdge(canvas.handle(), &style, &mode, &result);
    EXPECT_NE(0, result);
    EXPECT_EQ((Edges{5, 5, 45, 45}), edges(r.get())) << "BF_ADJUST works on a copy";
    r->DrawFocusRect(canvas.handle(), &result);
    EXPECT_NE(0, result);
    VARIANT_BOOL visible;
    r->IsVisible(canvas.handle(), &visible);
    EXPECT_EQ(VARIANT_TRUE, visible);
    set(r.get(), 100, 100, 120, 120);
    r->IsVisible(canvas.handle(), &visible);
    EXPECT_EQ(VARIANT_FALSE, visible);
    r->IsVisible(0, &visible);
    EXPECT_EQ(VARIANT_FALSE, visible);

    set(r.get(), 0, 0, 50, 10);
    size_t before = events();
    long start = RGB(0, 0, 0), end = RGB(0, 0, 255);
    VARIANT_BOOL vertical = VARIANT_FALSE;
    r->DrawGradient(canvas.handle(), &start, &end, &vertical);
    EXPECT_EQ(RGB(0, 0, 0), canvas.pixel(0, 5));
    EXPECT_EQ(RGB(0, 0, 255), canvas.pixel(49, 5));
    EXPECT_EQ(before, events());
}
