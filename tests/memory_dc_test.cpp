// MemoryDC, GDIMethods.CreateMemoryDC and PaintMethods through the DLL.
#include "support.h"

using namespace test;

namespace {

ComPtr<_MemoryDC> newMemoryDC() { return create<_MemoryDC>(CLSID_MemoryDC, IID__MemoryDC); }

ComPtr<_MemoryDC> surface(long w, long h) {
    auto m = newMemoryDC();
    VARIANT_BOOL ok = VARIANT_FALSE;
    VARIANT_BOOL force = VARIANT_TRUE;
    if (m) m->SetDimensions(&w, &h, &force, &ok);
    return ok ? m : ComPtr<_MemoryDC>();
}

HDC dcOf(_MemoryDC* m) {
    LONG h = 0;
    m->get_hDC(&h);
    return tova::toHandle<HDC>(h);
}

LONG pixel(_MemoryDC* m, long x, long y) {
    LONG c = 0;
    m->GetPixel(&x, &y, &c);
    return c;
}

void fill(_MemoryDC* m, RECT r, COLORREF c) {
    TOVA_RECT t = tova::fromWin32(r);
    LONG color = static_cast<LONG>(c);
    m->Fill(&t, &color);
}

// The surface as a picture, and the pixel of a bitmap picture.
COLORREF picturePixel(IPictureDisp* pic, int x, int y) {
    ComPtr<IPicture> p = ComPtr<IPictureDisp>(pic).as<IPicture>(IID_IPicture);
    OLE_HANDLE h = 0;
    p->get_Handle(&h);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, reinterpret_cast<HBITMAP>(static_cast<ULONG_PTR>(h)));
    COLORREF c = GetPixel(dc, x, y);
    SelectObject(dc, old);
    DeleteDC(dc);
    return c;
}

}  // namespace

TEST(MemoryDC, WithoutSurfaceEverythingIsNeutral) {
    auto m = newMemoryDC();
    ASSERT_TRUE(m);
    LONG v = -1;
    m->get_hDC(&v);
    EXPECT_EQ(0, v);
    m->get_Width(&v);
    EXPECT_EQ(0, v);
    Variant back;
    m->get_BackColor(&back);
    EXPECT_EQ(VT_NULL, V_VT(&back)) << "Null, not 0";
    ComPtr<IPictureDisp> pic;
    m->get_Picture(pic.put());
    EXPECT_FALSE(pic);
    ComPtr<_Rectangle> r;
    m->get_Rectangle(r.put());
    EXPECT_FALSE(r);
    Bstr text(L"abc");
    LONG w = 5, h = 5;
    VARIANT_BOOL ok = VARIANT_TRUE;
    BSTR t = text.get();
    m->TextDimensions(&t, &w, &h, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(0, w);
    EXPECT_EQ(0, h);
    EXPECT_EQ(0, pixel(m.get(), 0, 0));
    DeviceContextBackModeConstants mode;
    m->get_BackMode(&mode);
    EXPECT_EQ(0, mode);
    m->AlphaBlend(0, 0, 0, 0, 0, 0, 0, 0, 0, 255, VARIANT_FALSE, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    EXPECT_EQ(S_OK, m->Clear());
    GDIObjectTypeConstants font = tovaGDIObjectFont;
    m->GetHandle(&font, &v);
    EXPECT_EQ(0, v);
}

TEST(MemoryDC, SetDimensionsBuildsRebuildsAndDestroys) {
    auto m = newMemoryDC();
    long w = 20, h = 10;
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, m->SetDimensions(&w, &h, nullptr, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    LONG v = 0;
    m->get_Width(&v);
    EXPECT_EQ(20, v);
    m->get_Height(&v);
    EXPECT_EQ(10, v);
    DeviceContextBackModeConstants mode;
    m->get_BackMode(&mode);
    EXPECT_EQ(tovaDCBackModeTransparent, mode) << "a new surface draws text transparently";
    StretchBltModeConstants stretch;
    m->get_StretchBltMode(&stretch);
    EXPECT_EQ(tovaStretchBltModeColorOnColor, stretch);
    m->get_ColorDepth(&v);
    EXPECT_GE(v, 8);

    // Same size without forcing: the surface and its content stay.
    fill(m.get(), RECT{0, 0, 20, 10}, RGB(255, 255, 255));
    HDC before = dcOf(m.get());
    VARIANT_BOOL no = VARIANT_FALSE;
    m->SetDimensions(&w, &h, &no, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(before, dcOf(m.get()));
    EXPECT_EQ(static_cast<LONG>(RGB(255, 255, 255)), pixel(m.get(), 3, 3));
    // Omitted ForceNewDC re-creates: the content is gone.
    m->SetDimensions(&w, &h, nullptr, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_NE(static_cast<LONG>(RGB(255, 255, 255)), pixel(m.get(), 3, 3));
    // A new size never keeps the old pixels.
    fill(m.get(), RECT{0, 0, 20, 10}, RGB(255, 255, 255));
    long w2 = 30;
    m->SetDimensions(&w2, &h, &no, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_NE(static_cast<LONG>(RGB(255, 255, 255)), pixel(m.get(), 3, 3));

    long zero = 0;
    m->SetDimensions(&zero, &h, nullptr, &ok);
    EXPECT_EQ(VARIANT_FALSE, ok);
    m->get_Width(&v);
    EXPECT_EQ(0, v);
    m->get_Height(&v);
    EXPECT_EQ(0, v);
    m->get_hDC(&v);
    EXPECT_EQ(0, v);
}

TEST(MemoryDC, ObjectsLeftSelectedAreDeletedWithTheSurface) {
    HBRUSH brush = CreateSolidBrush(RGB(1, 2, 3));
    HPEN pen = CreatePen(PS_SOLID, 3, RGB(4, 5, 6));
    HFONT font = CreateFontW(20, 0, 0, 0, FW_BOLD, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"Arial");
    {
        auto m = surface(10, 10);
        ASSERT_TRUE(m);
        LONG old = 0;
        m->SelectObject(tova::fromHandle(brush), &old);
        EXPECT_NE(0, old);
        m->SelectObject(tova::fromHandle(pen), &old);
        m->SelectObject(tova::fromHandle(font), &old);
        GDIObjectTypeConstants kind = tovaGDIObjectFont;
        LONG current = 0;
        m->GetHandle(&kind, &current);
        EXPECT_EQ(tova::fromHandle(font), current);
        kind = tovaGDIObjectBrush;
        m->GetHandle(&kind, &current);
        EXPECT_EQ(tova::fromHandle(brush), current);
        kind = tovaGDIObjectUnknown;
        m->GetHandle(&kind, &current);
        EXPECT_EQ(0, current);
        kind = static_cast<GDIObjectTypeConstants>(99);
        m->GetHandle(&kind, &current);
        EXPECT_EQ(0, current);
        EXPECT_EQ(static_cast<DWORD>(OBJ_BRUSH), GetObjectType(brush));
    }
    EXPECT_EQ(0u, GetObjectType(brush)) << "the brush went with the surface";
    EXPECT_EQ(0u, GetObjectType(pen));
    EXPECT_EQ(0u, GetObjectType(font));
}

TEST(MemoryDC, ColoursAreVariants) {
    auto m = surface(10, 10);
    ASSERT_TRUE(m);
    ASSERT_EQ(S_OK, m->put_BackColor(vLong(RGB(10, 20, 30))));
    Variant back;
    m->get_BackColor(&back);
    EXPECT_EQ(VT_I4, V_VT(&back));
    EXPECT_EQ(static_cast<LONG>(RGB(10, 20, 30)), V_I4(&back));
    VARIANT null;
    VariantInit(&null);
    V_VT(&null) = VT_NULL;
    EXPECT_EQ(S_OK, m->put_BackColor(null)) << "Null is ignored";
    m->get_BackColor(back.put());
    EXPECT_EQ(static_cast<LONG>(RGB(10, 20, 30)), V_I4(&back));
    Variant text(L"not a colour");
    EXPECT_EQ(static_cast<HRESULT>(0x800A000D), m->put_ForeColor(text)) << "type mismatch";
    Variant number(L"255");
    EXPECT_EQ(S_OK, m->put_ForeColor(number));
    Variant fore;
    m->get_ForeColor(&fore);
    EXPECT_EQ(255, V_I4(&fore));

    // From a script, by name.
    ComPtr<IDispatch> d = m.as<IDispatch>(IID_IDispatch);
    EXPECT_EQ(S_OK, put(d.get(), L"BackColor", vLong(RGB(1, 2, 3))));
    CallResult r;
    call(r, d.get(), L"BackColor", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(static_cast<LONG>(RGB(1, 2, 3)), V_I4(&r.value));
}

TEST(MemoryDC, ClearFillAndPixels) {
    auto m = surface(20, 20);
    ASSERT_TRUE(m);
    m->put_BackColor(vLong(RGB(10, 20, 30)));
    m->Clear();
    EXPECT_EQ(static_cast<LONG>(RGB(10, 20, 30)), pixel(m.get(), 0, 0));
    EXPECT_EQ(static_cast<LONG>(RGB(10, 20, 30)), pixel(m.get(), 19, 19));
    fill(m.get(), RECT{5, 5, 10, 10}, RGB(200, 0, 0));
    EXPECT_EQ(static_cast<LONG>(RGB(200, 0, 0)), pixel(m.get(), 5, 5));
    EXPECT_EQ(static_cast<LONG>(RGB(200, 0, 0)), pixel(m.get(), 9, 9));
    EXPECT_EQ(static_cast<LONG>(RGB(10, 20, 30)), pixel(m.get(), 10, 10)) << "right and bottom exclusive";

    long x = 3, y = 4, color = RGB(0, 255, 0);
    LONG set = 0;
    m->SetPixel(&x, &y, &color, &set);
    EXPECT_EQ(color, set);
    POINTAPI p{3, 4};
    LONG got = 0;
    m->GetPixel2(&p, &got);
    EXPECT_EQ(color, got);
    POINTAPI q{7, 1};
    long blue = RGB(0, 0, 255);
    m->SetPixel2(&q, &blue, &set);
    EXPECT_EQ(blue, pixel(m.get(), 7, 1));
    EXPECT_EQ(-1, pixel(m.get(), 50, 50)) << "outside the surface: CLR_INVALID";
}

TEST(MemoryDC, TextMeasurement) {
    auto m = surface(50, 20);
    ASSERT_TRUE(m);
    Bstr empty(L"");
    LONG w = 9, h = 9;
    VARIANT_BOOL ok = VARIANT_FALSE;
    BSTR e = empty.get();
    m->TextDimensions(&e, &w, &h, &ok);
    EXPECT_EQ(VARIANT_TRUE, ok) << "a surface exists";
    EXPECT_EQ(0, w);
    EXPECT_EQ(0, h);
    Bstr hello(L"Hello");
    BSTR t = hello.get();
    m->TextDimensions(&t, &w, &h, &ok);
    EXPECT_GT(w, 0);
    EXPECT_GT(h, 0);
    LONG w2 = 0, h2 = 0;
    m->TextWidth(&t, &w2);
    m->TextHeight(&t, &h2);
    EXPECT_EQ(w, w2);
    EXPECT_EQ(h, h2);
    Bstr longer(L"Hello, world");
    BSTR l = longer.get();
    m->TextWidth(&l, &w2);
    EXPECT_GT(w2, w);
    EXPECT_EQ(S_OK, m->TextDimensions(&t, nullptr, nullptr, &ok)) << "outputs may be left out";
}

TEST(MemoryDC, CurrentPosition) {
    auto m = surface(10, 10);
    ASSERT_TRUE(m);
    m->put_CurrentX(7);
    m->put_CurrentY(9);
    LONG x = 0, y = 0;
    m->get_CurrentX(&x);
    m->get_CurrentY(&y);
    EXPECT_EQ(7, x);
    EXPECT_EQ(9, y);
}

TEST(MemoryDC, PictureIsANewCopyAndRectangleFits) {
    auto m = surface(16, 12);
    ASSERT_TRUE(m);
    fill(m.get(), RECT{0, 0, 16, 12}, RGB(0, 0, 255));
    fill(m.get(), RECT{0, 0, 4, 4}, RGB(255, 0, 0));
    ComPtr<IPictureDisp> a, b;
    m->get_Picture(a.put());
    m->get_Picture(b.put());
    ASSERT_TRUE(a && b);
    ComPtr<IPicture> pa = a.as<IPicture>(IID_IPicture), pb = b.as<IPicture>(IID_IPicture);
    OLE_HANDLE ha = 0, hb = 0;
    pa->get_Handle(&ha);
    pb->get_Handle(&hb);
    EXPECT_NE(ha, hb) << "each call makes a new picture";
    SHORT type = 0;
    pa->get_Type(&type);
    EXPECT_EQ(PICTYPE_BITMAP, type);
    EXPECT_EQ(RGB(255, 0, 0), picturePixel(a.get(), 1, 1));
    EXPECT_EQ(RGB(0, 0, 255), picturePixel(a.get(), 10, 10));
    fill(m.get(), RECT{0, 0, 16, 12}, RGB(0, 255, 0));
    EXPECT_EQ(RGB(255, 0, 0), picturePixel(a.get(), 1, 1)) << "the picture owns its own copy";

    ComPtr<_Rectangle> r;
    m->get_Rectangle(r.put());
    ASSERT_TRUE(r);
    LONG v = 0;
    r->get_Width(&v);
    EXPECT_EQ(16, v);
    r->get_Height(&v);
    EXPECT_EQ(12, v);
    r->get_Left(&v);
    EXPECT_EQ(0, v);
}

TEST(MemoryDC, AlphaBlendDefaultsToTheWholeSurface) {
    auto m = surface(10, 8);
    ASSERT_TRUE(m);
    fill(m.get(), RECT{0, 0, 10, 8}, RGB(200, 0, 0));
    Canvas c(20, 20, RGB(0, 0, 200));
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, m->AlphaBlend(c.handle(), 2, 3, 0, 0, 0, 0, 0, 0, 255, VARIANT_FALSE, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(200, 0, 0), c.pixel(2, 3));
    EXPECT_EQ(RGB(200, 0, 0), c.pixel(11, 10)) << "10 x 8 from (2, 3)";
    EXPECT_EQ(RGB(0, 0, 200), c.pixel(12, 3));
    EXPECT_EQ(RGB(0, 0, 200), c.pixel(2, 11));

    Canvas half(10, 10, RGB(0, 0, 200));
    m->AlphaBlend(half.handle(), 0, 0, 0, 0, 0, 0, 0, 0, 128, VARIANT_FALSE, &ok);
    EXPECT_NEAR(GetRValue(half.pixel(5, 5)), 100, 2);
    EXPECT_NEAR(GetBValue(half.pixel(5, 5)), 100, 2);

    Canvas none(10, 10, RGB(0, 0, 200));
    m->AlphaBlend(none.handle(), 0, 0, 0, 0, 0, 0, 0, 0, 0, VARIANT_FALSE, &ok);
    EXPECT_EQ(RGB(0, 0, 200), none.pixel(5, 5)) << "Opacity 0 blends nothing visible";

    Canvas stretched(30, 30, RGB(0, 0, 0));
    m->AlphaBlend(stretched.handle(), 0, 0, 20, 16, 0, 0, 0, 0, 255, VARIANT_FALSE, &ok);
    EXPECT_EQ(RGB(200, 0, 0), stretched.pixel(19, 15));
    EXPECT_EQ(RGB(0, 0, 0), stretched.pixel(21, 17));
}

TEST(MemoryDC, CopyPictureThroughPaintMethods) {
    auto source = surface(6, 4);
    ASSERT_TRUE(source);
    fill(source.get(), RECT{0, 0, 6, 4}, RGB(0, 128, 0));
    fill(source.get(), RECT{0, 0, 3, 4}, RGB(255, 0, 255));
    ComPtr<IPictureDisp> pic;
    source->get_Picture(pic.put());
    ASSERT_TRUE(pic);

    auto m = surface(20, 20);
    ASSERT_TRUE(m);
    fill(m.get(), RECT{0, 0, 20, 20}, RGB(0, 0, 0));
    EXPECT_EQ(S_OK, m->CopyPicture(pic.get(), 1, 1, 0, 0, -1));
    EXPECT_EQ(static_cast<LONG>(RGB(255, 0, 255)), pixel(m.get(), 1, 1));
    EXPECT_EQ(static_cast<LONG>(RGB(0, 128, 0)), pixel(m.get(), 6, 4)) << "own size 6 x 4";
    EXPECT_EQ(static_cast<LONG>(RGB(0, 0, 0)), pixel(m.get(), 7, 5));

    fill(m.get(), RECT{0, 0, 20, 20}, RGB(0, 0, 0));
    m->CopyPicture(pic.get(), 0, 0, 12, 8, -1);
    EXPECT_EQ(static_cast<LONG>(RGB(0, 128, 0)), pixel(m.get(), 11, 7)) << "stretched to 12 x 8";

    fill(m.get(), RECT{0, 0, 20, 20}, RGB(0, 0, 0));
    m->CopyPicture(pic.get(), 0, 0, 0, 0, RGB(255, 0, 255));
    EXPECT_EQ(static_cast<LONG>(RGB(0, 0, 0)), pixel(m.get(), 1, 1)) << "the transparent colour is left out";
    EXPECT_EQ(static_cast<LONG>(RGB(0, 128, 0)), pixel(m.get(), 4, 1));

    EXPECT_EQ(S_OK, m->CopyPicture(nullptr, 0, 0, 0, 0, -1)) << "Nothing is ignored";
    auto none = newMemoryDC();
    EXPECT_EQ(S_OK, none->CopyPicture(pic.get(), 0, 0, 0, 0, -1)) << "no surface: nothing happens";
}

TEST(PaintMethods, PaintsSourceRectanglesAndReportsBadPictures) {
    auto paint = create<_PaintMethods>(CLSID_PaintMethods, IID__PaintMethods);
    ASSERT_TRUE(paint);
    auto source = surface(4, 4);
    fill(source.get(), RECT{0, 0, 4, 4}, RGB(10, 10, 10));
    fill(source.get(), RECT{2, 2, 4, 4}, RGB(250, 0, 0));
    ComPtr<IPictureDisp> pic;
    source->get_Picture(pic.put());
    Canvas c(10, 10, RGB(0, 0, 0));
    VARIANT_BOOL ok = VARIANT_FALSE;
    ASSERT_EQ(S_OK, paint->StretchPaintNormalStdPic(c.handle(), 0, 0, 4, 4, pic.get(), 2, 2, 2, 2, &ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_EQ(RGB(250, 0, 0), c.pixel(0, 0)) << "the source's lower right quarter, stretched";
    EXPECT_EQ(RGB(250, 0, 0), c.pixel(3, 3));
    EXPECT_EQ(RGB(0, 0, 0), c.pixel(4, 4));

    EXPECT_EQ(static_cast<HRESULT>(0x800A01E1), paint->StretchPaintNormalStdPic(c.handle(), 0, 0, 0, 0, nullptr, 0, 0,
                                                                             0, 0, &ok))
        << "481: invalid picture";
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005),
              paint->StretchPaintNormalStdPic(c.handle(), 0, 0, -1, 0, pic.get(), 0, 0, 0, 0, &ok));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005),
              paint->StretchPaintTransparentStdPic(c.handle(), 0, 0, 0, 0, pic.get(), static_cast<LONG>(0xFF000000),
                                                   0, 0, 0, 0, &ok))
        << "not a colour";
    ok = VARIANT_TRUE;
    EXPECT_EQ(S_OK, paint->StretchPaintNormalStdPic(0, 0, 0, 0, 0, pic.get(), 0, 0, 0, 0, &ok));
    EXPECT_EQ(VARIANT_FALSE, ok) << "a platform failure is a False result";

    // Left-out optional arguments from a script.
    ComPtr<IDispatch> d = paint.as<IDispatch>(IID_IDispatch);
    Canvas s(10, 10, RGB(0, 0, 0));
    CallResult r;
    call(r, d.get(), L"StretchPaintTransparentStdPic", DISPATCH_METHOD,
         {vLong(s.handle()), vLong(1), vLong(1), vLong(0), vLong(0), vObject(pic.get()), vLong(RGB(10, 10, 10))});
    EXPECT_EQ(S_OK, r.hr);
    EXPECT_EQ(RGB(0, 0, 0), s.pixel(1, 1));
    EXPECT_EQ(RGB(250, 0, 0), s.pixel(3, 3));
}

TEST(GDIMethods, CreateMemoryDC) {
    auto gdi = create<_GDIMethods>(CLSID_GDIMethods, IID__GDIMethods);
    ASSERT_TRUE(gdi);
    ComPtr<_MemoryDC> m;
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), gdi->CreateMemoryDC(0, 10, -1, -1, m.put()));
    EXPECT_FALSE(m);
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), gdi->CreateMemoryDC(10, -3, -1, -1, m.put()));

    ASSERT_EQ(S_OK, gdi->CreateMemoryDC(10, 10, RGB(255, 255, 255), -1, m.put()));
    ASSERT_TRUE(m);
    EXPECT_EQ(static_cast<LONG>(RGB(255, 255, 255)), pixel(m.get(), 9, 9)) << "a given back colour clears";

    ASSERT_EQ(S_OK, gdi->CreateMemoryDC(10, 10, -1, -1, m.put()));
    EXPECT_NE(static_cast<LONG>(RGB(255, 255, 255)), pixel(m.get(), 9, 9)) << "no back colour: not cleared";

    // System colours are translated by the factory.
    ASSERT_EQ(S_OK, gdi->CreateMemoryDC(4, 4, static_cast<LONG>(0x80000005), static_cast<LONG>(0x80000008), m.put()));
    EXPECT_EQ(static_cast<LONG>(GetSysColor(COLOR_WINDOW)), pixel(m.get(), 0, 0));
    Variant fore;
    m->get_ForeColor(&fore);
    EXPECT_EQ(static_cast<LONG>(GetSysColor(COLOR_WINDOWTEXT)), V_I4(&fore));

    // Late-bound with the colours left out.
    ComPtr<IDispatch> d = gdi.as<IDispatch>(IID_IDispatch);
    CallResult r;
    call(r, d.get(), L"CreateMemoryDC", DISPATCH_METHOD, {vLong(3), vLong(2)});
    ASSERT_EQ(S_OK, r.hr);
    ASSERT_EQ(VT_DISPATCH, V_VT(&r.value));
    CallResult w;
    call(w, V_DISPATCH(&r.value), L"Width", DISPATCH_PROPERTYGET, {});
    EXPECT_EQ(3, V_I4(&w.value));
    CallResult bad;
    call(bad, d.get(), L"CreateMemoryDC", DISPATCH_METHOD, {vLong(0), vLong(2)});
    EXPECT_EQ(DISP_E_EXCEPTION, bad.hr);
    EXPECT_EQ(5, bad.excep.scode == 0 ? bad.excep.wCode : static_cast<WORD>(HRESULT_CODE(bad.excep.scode)));
}
