// Late binding: what script hosts and VB-style clients send through IDispatch.
#include "support.h"

using namespace test;

namespace {

class DispatchTest : public ::testing::Test {
protected:
    void SetUp() override {
        rect = newRectangle();
        ASSERT_TRUE(rect);
        d = rect.as<IDispatch>(IID_IDispatch);
    }
    std::vector<long> edges() {
        TOVA_RECT rc{};
        rect->get_RECT(&rc);
        return {rc.Left, rc.Top, rc.Right, rc.Bottom};
    }
    void setEdges(long l, long t, long r, long b) { rect->SetRectangle3(&l, &t, &r, &b); }

    ComPtr<_Rectangle> rect;
    ComPtr<IDispatch> d;
};

using Longs = std::vector<long>;

}  // namespace

TEST_F(DispatchTest, NamesAreCaseInsensitiveAndUnknownNamesFail) {
    EXPECT_EQ(dispid(d.get(), L"OffSet"), dispid(d.get(), L"offset"));
    EXPECT_EQ(2, dispid(d.get(), L"LEFT"));
    LPOLESTR name = const_cast<LPOLESTR>(L"NoSuchMember");
    DISPID id;
    EXPECT_EQ(DISP_E_UNKNOWNNAME, d->GetIDsOfNames(IID_NULL, &name, 1, 0, &id));
    CallResult c;
    DISPPARAMS none{};
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, d->Invoke(999, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr));

    ComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, d->GetTypeInfo(0, 0, info.put()));
    UINT count = 0;
    d->GetTypeInfoCount(&count);
    EXPECT_EQ(1u, count);
}

TEST_F(DispatchTest, PropertiesGetAndPutWithCoercion) {
    EXPECT_EQ(S_OK, put(d.get(), L"Left", vLong(7)));
    EXPECT_EQ(S_OK, put(d.get(), L"Right", vDouble(2.5)));  // to Long, ties to even
    Variant text(L"12");
    EXPECT_EQ(S_OK, put(d.get(), L"Bottom", text));
    EXPECT_EQ((Longs{7, 0, 2, 12}), edges());

    CallResult c;
    call(c, d.get(), L"Width", DISPATCH_PROPERTYGET | DISPATCH_METHOD, {});
    ASSERT_EQ(S_OK, c.hr);
    EXPECT_EQ(VT_I4, V_VT(&c.value));
    EXPECT_EQ(-5, V_I4(&c.value));

    Variant bad(L"abc");
    DISPID id = dispid(d.get(), L"Top"), putId = DISPID_PROPERTYPUT;
    DISPPARAMS dp{&bad, &putId, 1, 1};
    UINT argErr = 99;
    EXPECT_EQ(DISP_E_TYPEMISMATCH, d->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYPUT, &dp, nullptr, nullptr, &argErr));
    EXPECT_EQ(0u, argErr);

    CallResult b;
    call(b, d.get(), L"PushState", DISPATCH_METHOD, {});
    ASSERT_EQ(VT_BOOL, V_VT(&b.value));
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&b.value)) << "Boolean true is -1";
}

TEST_F(DispatchTest, ByReferenceVariantsAreWrittenBackOnlyWhenChanged) {
    // A script variable holding text stays text when the member only reads it.
    Variant l(L"1"), t(2L), r(3.0), b(4L);
    CallResult c;
    call(c, d.get(), L"SetRectangle3", DISPATCH_METHOD, {vRef(&l), vRef(&t), vRef(&r), vRef(&b)});
    ASSERT_EQ(S_OK, c.hr);
    EXPECT_EQ((Longs{1, 2, 3, 4}), edges());
    EXPECT_EQ(VT_BSTR, V_VT(&l));
    EXPECT_EQ(VT_R8, V_VT(&r));

    // DrawText with DT_CALCRECT changes the text only with DT_MODIFYSTRING: the
    // by-reference string written back is the shortened one.
    Canvas canvas(300, 50);
    setEdges(0, 0, 40, 20);
    Variant text(L"A rather long line of text that cannot fit");
    Variant format(static_cast<long>(DT_END_ELLIPSIS | DT_MODIFYSTRING | DT_SINGLELINE));
    CallResult dt;
    call(dt, d.get(), L"DrawText", DISPATCH_METHOD, {vLong(canvas.handle()), vRef(&text), vRef(&format)});
    ASSERT_EQ(S_OK, dt.hr);
    ASSERT_EQ(VT_BSTR, V_VT(&text));
    EXPECT_NE(nullptr, wcsstr(V_BSTR(&text), L"...")) << "shortened text reaches the caller's variable";

    // A typed by-reference Long (VB's ByRef Long) is passed straight through.
    long x = 5, y = 5;
    CallResult p;
    setEdges(0, 0, 10, 10);
    call(p, d.get(), L"PointInMe2", DISPATCH_METHOD, {vLongRef(&x), vLongRef(&y)});
    ASSERT_EQ(S_OK, p.hr);
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&p.value));
}

TEST_F(DispatchTest, OmittedOptionalArgumentsTakeTheirDefaults) {
    setEdges(0, 0, 10, 10);
    CallResult none;
    call(none, d.get(), L"Offset", DISPATCH_METHOD, {});
    EXPECT_EQ(S_OK, none.hr);
    EXPECT_EQ((Longs{0, 0, 10, 10}), edges());

    CallResult missing;
    call(missing, d.get(), L"Offset", DISPATCH_METHOD, {vMissing(), vLong(5)});
    EXPECT_EQ(S_OK, missing.hr);
    EXPECT_EQ((Longs{0, 5, 10, 15}), edges());

    CallResult named;
    call(named, d.get(), L"Inflate", DISPATCH_METHOD, {vLong(2)}, {L"dy"});
    EXPECT_EQ(S_OK, named.hr);
    EXPECT_EQ((Longs{0, 3, 10, 17}), edges());

    // Draw with the hDC only: every style from the type library's defaults.
    Canvas canvas(20, 20, RGB(1, 2, 3));
    setEdges(2, 2, 18, 18);
    CallResult draw;
    call(draw, d.get(), L"Draw", DISPATCH_METHOD, {vLong(canvas.handle())});
    EXPECT_EQ(S_OK, draw.hr);
    EXPECT_EQ(GetSysColor(COLOR_WINDOWTEXT), canvas.pixel(2, 2));
    EXPECT_EQ(GetSysColor(COLOR_WINDOW), canvas.pixel(10, 10));

    CallResult tooFew;
    call(tooFew, d.get(), L"SetRectangle3", DISPATCH_METHOD, {vLong(1), vLong(2)});
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, tooFew.hr);
    CallResult tooMany;
    call(tooMany, d.get(), L"Reset", DISPATCH_METHOD, {vLong(1)});
    EXPECT_EQ(DISP_E_BADPARAMCOUNT, tooMany.hr);
    CallResult hole;
    call(hole, d.get(), L"SetRectangle3", DISPATCH_METHOD, {vLong(1), vMissing(), vLong(3), vLong(4)});
    EXPECT_EQ(DISP_E_PARAMNOTOPTIONAL, hole.hr);
}

TEST_F(DispatchTest, RecordsTravelAsRecordsOrArrays) {
    setEdges(1, 2, 3, 4);
    CallResult got;
    call(got, d.get(), L"RECT", DISPATCH_PROPERTYGET, {});
    ASSERT_EQ(S_OK, got.hr);
    ASSERT_EQ(VT_RECORD, V_VT(&got.value));
    auto* fields = static_cast<LONG*>(V_RECORD(&got.value));
    EXPECT_EQ(1, fields[0]);
    EXPECT_EQ(4, fields[3]);

    // The record a property returned goes back in as it is (a script variable holding it).
    fields[0] = 0;
    CallResult set;
    call(set, d.get(), L"SetRectangle", DISPATCH_METHOD, {vRef(&got.value)});
    ASSERT_EQ(S_OK, set.hr);
    EXPECT_EQ((Longs{0, 2, 3, 4}), edges());

    // Arrays of numbers stand in for records.
    Variant four = longArray({10, 20, 30, 40});
    CallResult arr;
    call(arr, d.get(), L"SetRectangle", DISPATCH_METHOD, {vRef(&four)});
    ASSERT_EQ(S_OK, arr.hr);
    EXPECT_EQ((Longs{10, 20, 30, 40}), edges());
    Variant point = longArray({15, 25});
    CallResult in;
    call(in, d.get(), L"PointInMe", DISPATCH_METHOD, {point});
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&in.value));
    Variant three = longArray({1, 2, 3});
    CallResult wrong;
    call(wrong, d.get(), L"SetRectangle", DISPATCH_METHOD, {vRef(&three)});
    EXPECT_EQ(DISP_E_TYPEMISMATCH, wrong.hr);
    CallResult text;
    Variant str(L"1,2,3,4");
    call(text, d.get(), L"Equals", DISPATCH_METHOD, {str});
    EXPECT_EQ(DISP_E_TYPEMISMATCH, text.hr);

    // Written back: into an array the caller passed, or as a new array into an Empty variable.
    VARIANT_BOOL ok;
    rect->PushState(&ok);
    Variant empty;
    CallResult peek;
    call(peek, d.get(), L"Peek", DISPATCH_METHOD, {vRef(&empty)});
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&peek.value));
    EXPECT_EQ((Longs{10, 20, 30, 40}), arrayLongs(empty));
    Variant target = longArray({0, 0, 0, 0});
    CallResult peek2;
    call(peek2, d.get(), L"Peek", DISPATCH_METHOD, {vRef(&target)});
    EXPECT_EQ((Longs{10, 20, 30, 40}), arrayLongs(target));
    Variant byValue = longArray({0, 0, 0, 0});
    CallResult peek4;
    call(peek4, d.get(), L"Peek", DISPATCH_METHOD, {byValue});
    EXPECT_EQ((Longs{0, 0, 0, 0}), arrayLongs(byValue)) << "an array passed by value stays the caller's";

    // A VB-style by-reference record is filled in place.
    TOVA_RECT byRef{};
    VARIANT rec;
    VariantInit(&rec);
    V_VT(&rec) = VT_RECORD | VT_BYREF;
    V_RECORD(&rec) = &byRef;
    V_RECORDINFO(&rec) = rectInfo();
    CallResult peek3;
    call(peek3, d.get(), L"Peek", DISPATCH_METHOD, {rec});
    EXPECT_EQ(30, byRef.Right);

    CallResult mid;
    call(mid, d.get(), L"MidPoint", DISPATCH_PROPERTYGET, {});
    ASSERT_EQ(VT_RECORD, V_VT(&mid.value));
    EXPECT_EQ(20, static_cast<LONG*>(V_RECORD(&mid.value))[0]);
}

TEST_F(DispatchTest, ObjectArgumentsAndTag) {
    ComPtr<_Rectangle> other = newRectangle();
    long l = 0, t = 0, r = 5, b = 5;
    other->SetRectangle3(&l, &t, &r, &b);
    CallResult set;
    call(set, d.get(), L"SetRectangle2", DISPATCH_METHOD, {vObject(other.as<IDispatch>(IID_IDispatch).get())});
    ASSERT_EQ(S_OK, set.hr);
    EXPECT_EQ((Longs{0, 0, 5, 5}), edges());

    CallResult nothing;
    call(nothing, d.get(), L"Overlaps2", DISPATCH_METHOD, {vObject(nullptr)});
    EXPECT_EQ(S_OK, nothing.hr);
    EXPECT_EQ(VARIANT_FALSE, V_BOOL(&nothing.value));
    CallResult notObject;
    call(notObject, d.get(), L"Overlaps2", DISPATCH_METHOD, {vLong(3)});
    EXPECT_EQ(DISP_E_TYPEMISMATCH, notObject.hr);

    // Set and let both keep an object; let keeps a value copy of anything else.
    EXPECT_EQ(S_OK, put(d.get(), L"Tag", vObject(other.as<IDispatch>(IID_IDispatch).get()), DISPATCH_PROPERTYPUTREF));
    CallResult tag;
    call(tag, d.get(), L"Tag", DISPATCH_PROPERTYGET, {});
    ASSERT_EQ(VT_DISPATCH, V_VT(&tag.value));
    EXPECT_EQ(S_OK, put(d.get(), L"Tag", vLong(9)));
    CallResult tag2;
    call(tag2, d.get(), L"Tag", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(9, V_I4(&tag2.value));

    CallResult clone;
    call(clone, d.get(), L"Clone", DISPATCH_METHOD, {});
    ASSERT_EQ(VT_DISPATCH, V_VT(&clone.value));
    CallResult eq;
    call(eq, d.get(), L"Equals2", DISPATCH_METHOD, {clone.value});
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&eq.value));
}

TEST_F(DispatchTest, ErrorsArriveAsExceptionInfo) {
    CallResult c;
    call(c, d.get(), L"Equals2", DISPATCH_METHOD, {vObject(nullptr)});
    ASSERT_EQ(DISP_E_EXCEPTION, c.hr);
    EXPECT_EQ(static_cast<HRESULT>(0x800A005B), c.excep.scode);
    EXPECT_EQ(0, c.excep.wCode);
    EXPECT_EQ(L"TOVA200", c.source());
    EXPECT_EQ(L"Object variable or With block variable not set", c.description());

    ComPtr<IDispatch> gdi = create<IDispatch>(CLSID_GDIMethods, IID_IDispatch);
    CallResult style;
    call(style, gdi.get(), L"DrawRectangle", DISPATCH_METHOD,
         {vLong(0), vLong(0), vLong(0), vLong(5), vLong(5), vMissing(), vLong(99)});
    ASSERT_EQ(DISP_E_EXCEPTION, style.hr);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), style.excep.scode) << "error 5";
}

TEST_F(DispatchTest, EventsCarryTheRecordByReference) {
    Sink sink;
    sink.connect(rect.get(), DIID___Rectangle);
    VARTYPE seenType = VT_EMPTY;
    sink.handler = [&](DISPID, DISPPARAMS* p) { seenType = V_VT(&p->rgvarg[0]); };
    setEdges(1, 2, 3, 4);
    ASSERT_EQ(1u, sink.calls.size());
    EXPECT_EQ(VT_RECORD | VT_BYREF, seenType);
    CallResult set;
    call(set, d.get(), L"SetRectangle3", DISPATCH_METHOD, {vLong(5), vLong(6), vLong(7), vLong(8)});
    ASSERT_EQ(2u, sink.calls.size());
    auto* prev = static_cast<LONG*>(V_RECORD(&sink.calls[1].args[0]));
    EXPECT_EQ(1, prev[0]);
    EXPECT_EQ(4, prev[3]);
}

namespace {

VARIANT vTyped(VARTYPE vt, double value) {
    VARIANT v;
    VariantInit(&v);
    Variant d(value);
    VariantChangeType(&v, &d, 0, vt);
    return v;
}

double doubleOf(const VARIANT& v) {
    Variant d;
    return SUCCEEDED(VariantChangeType(&d, const_cast<VARIANT*>(&v), 0, VT_R8)) ? V_R8(&d) : -1e300;
}

}  // namespace

// Every shape of argument the type library declares, with values whose every
// byte matters: on 32-bit a Variant by value is four stack words and a Double
// two, on 64-bit a Variant is passed by pointer. A word too few or too many
// shows as a wrong value or a wrong result.
TEST(DispatchConventions, EveryArgumentShapeArrivesWhole) {
    // Variants by value, with payloads of 2, 4 and 8 bytes, given or left out.
    ComPtr<IDispatch> sort = create<IDispatch>(CLSID_SortMethods, IID_IDispatch);
    for (VARTYPE last : {VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE}) {
        Variant numbers = longArray({1, 3, 5, 4, 2});
        CallResult quick;
        call(quick, sort.get(), L"QuickSortArray", DISPATCH_METHOD, {vRef(&numbers), vTyped(last, 2), vTyped(VT_BOOL, -1)});
        ASSERT_EQ(S_OK, quick.hr) << last;
        EXPECT_EQ(VARIANT_TRUE, V_BOOL(&quick.value));
        EXPECT_EQ((Longs{5, 3, 1, 4, 2}), arrayLongs(numbers)) << "indices 0 to 2, descending: " << last;
        CallResult rest;
        call(rest, sort.get(), L"QuickSortArray", DISPATCH_METHOD, {vRef(&numbers), vMissing(), vTyped(last, 0)});
        EXPECT_EQ((Longs{1, 2, 3, 4, 5}), arrayLongs(numbers)) << "all, ascending: " << last;
    }
    ComPtr<IDispatch> surface = create<IDispatch>(CLSID_MemoryDC, IID_IDispatch);
    CallResult made;
    call(made, surface.get(), L"SetDimensions", DISPATCH_METHOD, {vLong(4), vLong(4)});
    ASSERT_EQ(VARIANT_TRUE, V_BOOL(&made.value));
    for (VARTYPE vt : {VT_I4, VT_R8, VT_CY, VT_DATE}) {
        EXPECT_EQ(S_OK, put(surface.get(), L"BackColor", vTyped(vt, 197121))) << vt;
        CallResult back;
        call(back, surface.get(), L"BackColor", DISPATCH_PROPERTYGET, {});
        EXPECT_EQ(197121, doubleOf(back.value)) << vt;
    }

    // Singles by reference: converted from any number, kept in single precision.
    ComPtr<IDispatch> rect = newRectangle().as<IDispatch>(IID_IDispatch);
    for (VARTYPE vt : {VT_R4, VT_R8, VT_CY, VT_BSTR}) {
        CallResult set, scale, edges;
        call(set, rect.get(), L"SetRectangle3", DISPATCH_METHOD, {vLong(5), vLong(25), vLong(35), vLong(45)});
        VARIANT zoom = vTyped(vt, 0.1);
        call(scale, rect.get(), L"ScaleRectangle", DISPATCH_METHOD, {zoom});
        VariantClear(&zoom);
        ASSERT_EQ(S_OK, scale.hr) << vt;
        std::vector<long> got;
        for (const wchar_t* edge : {L"Left", L"Top", L"Right", L"Bottom"}) {
            CallResult e;
            call(e, rect.get(), edge, DISPATCH_PROPERTYGET, {});
            got.push_back(V_I4(&e.value));
        }
        // Each product in single precision, then ties to even: 0.5 -> 0, 2.5 -> 2, 4.5 -> 4.
        EXPECT_EQ((Longs{0, 2, 4, 4}), got) << vt;
    }

    // Doubles by reference, given in other types or left out, and written back.
    ComPtr<IDispatch> polygon = create<IDispatch>(CLSID_Polygon, IID_IDispatch);
    CallResult points;
    call(points, polygon.get(), L"Points", DISPATCH_PROPERTYGET, {});
    ASSERT_EQ(VT_DISPATCH, V_VT(&points.value));
    for (VARTYPE vt : {VT_R8, VT_R4, VT_CY, VT_DATE, VT_BSTR}) {
        VARIANT x = vTyped(vt, 2.5);
        CallResult added;
        call(added, V_DISPATCH(&points.value), L"Add", DISPATCH_METHOD, {vMissing(), x});
        VariantClear(&x);
        ASSERT_EQ(VT_DISPATCH, V_VT(&added.value)) << vt;
        CallResult px, py;
        call(px, V_DISPATCH(&added.value), L"X", DISPATCH_PROPERTYGET, {});
        call(py, V_DISPATCH(&added.value), L"Y", DISPATCH_PROPERTYGET, {});
        EXPECT_EQ(2.5, V_R8(&px.value)) << vt;
        EXPECT_EQ(0, V_R8(&py.value)) << vt;
    }
    double dx = 1.25;
    VARIANT dxRef;
    VariantInit(&dxRef);
    V_VT(&dxRef) = VT_BYREF | VT_R8;
    V_R8REF(&dxRef) = &dx;
    CallResult offset;
    call(offset, polygon.get(), L"Offset", DISPATCH_METHOD, {dxRef});
    ASSERT_EQ(S_OK, offset.hr);
    CallResult first, item;
    call(first, V_DISPATCH(&points.value), L"Item", DISPATCH_PROPERTYGET, {vLong(1)});
    ASSERT_EQ(VT_DISPATCH, V_VT(&first.value));
    call(item, V_DISPATCH(&first.value), L"X", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(3.75, V_R8(&item.value));
    EXPECT_EQ(1.25, dx);
}

TEST(DispatchConventions, VariantsByValueTypedReferencesAndLeftOutReferences) {
    // Optional Variants by value, left out or given: passed as the platform's
    // calling convention wants them (by pointer on 64-bit).
    ComPtr<IDispatch> sort = create<IDispatch>(CLSID_SortMethods, IID_IDispatch);
    Variant numbers = longArray({3, 1, 2});
    CallResult quick;
    call(quick, sort.get(), L"QuickSortArray", DISPATCH_METHOD, {vRef(&numbers), vMissing(), vLong(-1)});
    ASSERT_EQ(S_OK, quick.hr);
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&quick.value));
    EXPECT_EQ((Longs{3, 2, 1}), arrayLongs(numbers));

    // A typed array variable by reference (VB's Dim a() As Long) is sorted where it is.
    SAFEARRAYBOUND b{4, 0};
    SAFEARRAY* typed = SafeArrayCreate(VT_I4, 1, &b);
    long values[] = {9, 4, 7, 1};
    for (LONG i = 0; i < 4; ++i) SafeArrayPutElement(typed, &i, &values[i]);
    VARIANT byRef;
    VariantInit(&byRef);
    V_VT(&byRef) = VT_BYREF | VT_ARRAY | VT_I4;
    V_ARRAYREF(&byRef) = &typed;
    CallResult shell;
    call(shell, sort.get(), L"ShellSortArray", DISPATCH_METHOD, {byRef});
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&shell.value));
    long first = 0, last = 0;
    LONG i0 = 0, i3 = 3;
    SafeArrayGetElement(typed, &i0, &first);
    SafeArrayGetElement(typed, &i3, &last);
    EXPECT_EQ(1, first);
    EXPECT_EQ(9, last);
    SafeArrayDestroy(typed);

    // A String by reference left out arrives as null: here "no delimiter".
    ComPtr<IDispatch> cipher = create<IDispatch>(CLSID_EncryptMethods, IID_IDispatch);
    CallResult random;
    call(random, cipher.get(), L"GenerateRandomString", DISPATCH_METHOD, {vLong(10)});
    ASSERT_EQ(VT_BSTR, V_VT(&random.value));
    EXPECT_EQ(10u, SysStringLen(V_BSTR(&random.value)));
}
