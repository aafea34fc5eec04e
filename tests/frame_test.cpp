// The frame as clients meet it: the type library, class factories, unloading,
// class information, error reporting and connection points.
#include "support.h"

#include "frame/type_desc.h"

using namespace test;
using tova::FuncDesc;
using tova::TypeAttr;

namespace {

ComPtr<ITypeLib> loadLibrary() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(library(), path, MAX_PATH);
    ComPtr<ITypeLib> lib;
    LoadTypeLibEx(path, REGKIND_NONE, lib.put());
    return lib;
}

ComPtr<ITypeInfo> typeNamed(ITypeLib* lib, const wchar_t* name) {
    for (UINT i = 0; i < lib->GetTypeInfoCount(); ++i) {
        Bstr n;
        lib->GetDocumentation(i, n.put(), nullptr, nullptr, nullptr);
        if (n.str() == name) {
            ComPtr<ITypeInfo> t;
            lib->GetTypeInfo(i, t.put());
            return t;
        }
    }
    return {};
}

long enumValue(ITypeLib* lib, const wchar_t* enumName, const wchar_t* member) {
    ComPtr<ITypeInfo> t = typeNamed(lib, enumName);
    if (!t) return 0x7fffffff;
    TYPEATTR* ta;
    t->GetTypeAttr(&ta);
    long value = 0x7fffffff;
    for (UINT i = 0; i < ta->cVars; ++i) {
        VARDESC* vd;
        t->GetVarDesc(i, &vd);
        Bstr n;
        UINT c;
        t->GetNames(vd->memid, n.put(), 1, &c);
        if (n.str() == member) value = V_I4(vd->lpvarValue);
        t->ReleaseVarDesc(vd);
    }
    t->ReleaseTypeAttr(ta);
    return value;
}

using DllCanUnloadNowFn = HRESULT(STDAPICALLTYPE*)();

}  // namespace

TEST(TypeLibrary, NameVersionAndHelpString) {
    ComPtr<ITypeLib> lib = loadLibrary();
    ASSERT_TRUE(lib);
    TLIBATTR* attr;
    ASSERT_EQ(S_OK, lib->GetLibAttr(&attr));
    EXPECT_EQ(LIBID_TOVA32, attr->guid);
    EXPECT_EQ(1, attr->wMajorVerNum);
    EXPECT_EQ(22, attr->wMinorVerNum);
    lib->ReleaseTLibAttr(attr);
    Bstr name, help;
    lib->GetDocumentation(-1, name.put(), help.put(), nullptr, nullptr);
    EXPECT_EQ(L"TOVA32", name.str());
    EXPECT_EQ(L"-> Keld Core 2.0.x Runtime ActiveX Library", help.str());
}

TEST(TypeLibrary, RecordsKeepTheWin32Layout) {
    ComPtr<ITypeLib> lib = loadLibrary();
    for (auto [name, size, fields] : {std::make_tuple(L"RECT", 16u, 4u), std::make_tuple(L"POINTAPI", 8u, 2u)}) {
        ComPtr<ITypeInfo> t = typeNamed(lib.get(), name);
        ASSERT_TRUE(t) << name;
        TYPEATTR* ta;
        t->GetTypeAttr(&ta);
        EXPECT_EQ(TKIND_RECORD, ta->typekind);
        EXPECT_EQ(size, ta->cbSizeInstance);
        EXPECT_EQ(fields, ta->cVars);
        EXPECT_NE(GUID_NULL, ta->guid) << "records carry a GUID of their own";
        t->ReleaseTypeAttr(ta);
    }
}

TEST(TypeLibrary, SharedEnumerationsHaveTheirPublishedValues) {
    ComPtr<ITypeLib> lib = loadLibrary();
    EXPECT_EQ(-32768, enumValue(lib.get(), L"EdgeModeConstants", L"BF_MONO"));
    EXPECT_EQ(28, enumValue(lib.get(), L"EdgeModeConstants", L"BF_DIAGONAL_ENDBOTTOMRIGHT"));
    EXPECT_EQ(1, enumValue(lib.get(), L"BrushStyleConstants", L"BS_HOLLOW"));
    EXPECT_EQ(6, enumValue(lib.get(), L"PenStyleConstants", L"PS_INSIDEFRAME"));
    EXPECT_EQ(5, enumValue(lib.get(), L"HatchStyleConstants", L"HS_DIAGCROSS"));
    EXPECT_EQ(9, enumValue(lib.get(), L"EdgeStyleConstants", L"EDGE_BUMP"));
    // The device-technology members collide with the format flags, as published.
    EXPECT_EQ(1, enumValue(lib.get(), L"DrawTextFormatConstants", L"DT_RASDISPLAY"));
    EXPECT_EQ(1, enumValue(lib.get(), L"DrawTextFormatConstants", L"DT_CENTER"));
    EXPECT_EQ(262144, enumValue(lib.get(), L"DrawTextFormatConstants", L"DT_WORD_ELLIPSIS"));
    EXPECT_EQ(4, enumValue(lib.get(), L"StretchBltModeConstants", L"tovaStretchBltModeHalfTone"));
    EXPECT_EQ(-1, enumValue(lib.get(), L"SystemPlatformConstants", L"tovaPlatformUnknown"));
    EXPECT_EQ(7, enumValue(lib.get(), L"SystemTypeConstants", L"tovaOSWindowsXP"));
    EXPECT_EQ(1, enumValue(lib.get(), L"MiscConstants", L"UNITY"));
    EXPECT_EQ(1, enumValue(lib.get(), L"ComparisonConstants", L"tovaCompareText"));
}

TEST(TypeLibrary, RectangleMembersInSlotOrderWithDefaults) {
    ComPtr<ITypeLib> lib = loadLibrary();
    ComPtr<ITypeInfo> t;
    ASSERT_EQ(S_OK, lib->GetTypeInfoOfGuid(IID__Rectangle, t.put()));
    HREFTYPE h;
    ComPtr<ITypeInfo> vt;
    if (SUCCEEDED(t->GetRefTypeOfImplType(-1, &h))) t->GetRefTypeInfo(h, vt.put());
    if (!vt) vt = t;
    TYPEATTR* ta;
    vt->GetTypeAttr(&ta);
    const wchar_t* expected[] = {L"RECT", L"Left", L"Left", L"Top", L"Top", L"Right", L"Right", L"Bottom", L"Bottom",
                                 L"Width", L"Width", L"Height", L"Height", L"Tag", L"Tag", L"SetRectangle"};
    ASSERT_EQ(55, ta->cFuncs);
    for (UINT i = 0; i < ta->cFuncs; ++i) {
        FUNCDESC* fd;
        vt->GetFuncDesc(i, &fd);
        Bstr n;
        UINT c;
        vt->GetNames(fd->memid, n.put(), 1, &c);
        if (i < sizeof expected / sizeof *expected) EXPECT_EQ(expected[i], n.str()) << "slot " << i;
        EXPECT_EQ(static_cast<SHORT>((7 + i) * sizeof(void*)), fd->oVft) << "slot " << i;
        if (n.str() == L"Draw") {
            // BorderColor, BorderStyle, BorderWidth, BackColor, BackStyle, Hatch
            const long defaults[] = {static_cast<long>(0x80000008), 0, 1, static_cast<long>(0x80000005), 0, 4};
            ASSERT_EQ(7, fd->cParams);
            for (int p = 1; p < 7; ++p) {
                const PARAMDESC& pd = fd->lprgelemdescParam[p].paramdesc;
                ASSERT_TRUE(pd.wParamFlags & PARAMFLAG_FHASDEFAULT) << p;
                EXPECT_EQ(defaults[p - 1], V_I4(&pd.pparamdescex->varDefaultValue)) << p;
            }
        }
        vt->ReleaseFuncDesc(fd);
    }
    vt->ReleaseTypeAttr(ta);

    Bstr help;
    DISPID pushState = dispid(newRectangle().as<IDispatch>(IID_IDispatch).get(), L"PushState");
    t->GetDocumentation(pushState, nullptr, help.put(), nullptr, nullptr);
    EXPECT_EQ(L"Places the current rectangle dimensions onto an internal FIFO based stack.", help.str());
}

TEST(TypeLibrary, EveryTypeAndMemberCarriesAHelpString) {
    ComPtr<ITypeLib> lib = loadLibrary();
    ASSERT_TRUE(lib);
    std::wstring missing;
    UINT checked = 0;
    for (UINT i = 0; i < lib->GetTypeInfoCount(); ++i) {
        Bstr typeName, typeHelp;
        lib->GetDocumentation(i, typeName.put(), typeHelp.put(), nullptr, nullptr);
        if (!typeHelp.length()) missing += L" " + typeName.str();
        ComPtr<ITypeInfo> t;
        ASSERT_EQ(S_OK, lib->GetTypeInfo(i, t.put()));
        // A dual interface is checked in its vtable view: the members it
        // declares itself, without IDispatch's.
        ComPtr<ITypeInfo> view = t;
        HREFTYPE h;
        if (TypeAttr(t.get()).attr->wTypeFlags & TYPEFLAG_FDUAL && SUCCEEDED(t->GetRefTypeOfImplType(-1, &h)))
            t->GetRefTypeInfo(h, view.put());
        ASSERT_TRUE(view);
        TypeAttr ta(view.get());
        for (UINT f = 0; f < ta.attr->cFuncs; ++f) {
            FuncDesc fd(view.get(), f);
            Bstr name, help;
            view->GetDocumentation(fd.desc->memid, name.put(), help.put(), nullptr, nullptr);
            ++checked;
            if (!help.length()) missing += L" " + typeName.str() + L"." + name.str();
        }
    }
    EXPECT_GT(checked, 250u);
    EXPECT_TRUE(missing.empty()) << "without a help string:" << missing;
}

TEST(ClassFactory, CreatesEveryRegisteredClassAndRefusesOthers) {
    EXPECT_TRUE(create<_Rectangle>(CLSID_Rectangle, IID__Rectangle));
    EXPECT_TRUE(create<_GDIMethods>(CLSID_GDIMethods, IID__GDIMethods));
    EXPECT_TRUE(create<_APIMethods>(CLSID_APIMethods, IID__APIMethods));
    EXPECT_FALSE(create<IUnknown>(IID__Rectangle, IID_IUnknown)) << "an interface ID is no class";

    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto get = reinterpret_cast<GetClassObject>(GetProcAddress(library(), "DllGetClassObject"));
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, get(CLSID_Rectangle, IID_IClassFactory, factory.putVoid()));
    ComPtr<IUnknown> outer = newRectangle().as<IUnknown>(IID_IUnknown), inner;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(outer.get(), IID_IUnknown, inner.putVoid()));
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, get(GUID_NULL, IID_IClassFactory, factory.putVoid()));
}

TEST(Module, CanUnloadOnlyWithoutObjectsAndLocks) {
    auto canUnload = reinterpret_cast<DllCanUnloadNowFn>(GetProcAddress(library(), "DllCanUnloadNow"));
    ASSERT_EQ(S_OK, canUnload());
    {
        ComPtr<_Rectangle> r = newRectangle();
        ComPtr<_Rectangle> clone;
        r->Clone(clone.put());
        EXPECT_EQ(S_FALSE, canUnload());
        r.reset();
        EXPECT_EQ(S_FALSE, canUnload()) << "the clone is alive";
    }
    EXPECT_EQ(S_OK, canUnload());

    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto get = reinterpret_cast<GetClassObject>(GetProcAddress(library(), "DllGetClassObject"));
    ComPtr<IClassFactory> factory;
    get(CLSID_Rectangle, IID_IClassFactory, factory.putVoid());
    factory->LockServer(TRUE);
    factory.reset();
    EXPECT_EQ(S_FALSE, canUnload());
    get(CLSID_Rectangle, IID_IClassFactory, factory.putVoid());
    factory->LockServer(FALSE);
    factory.reset();
    EXPECT_EQ(S_OK, canUnload());
}

TEST(ClassInfo, ProvidesCoclassAndDefaultSource) {
    ComPtr<IProvideClassInfo2> info = newRectangle().as<IProvideClassInfo2>(IID_IProvideClassInfo2);
    ASSERT_TRUE(info);
    ComPtr<ITypeInfo> coclass;
    ASSERT_EQ(S_OK, info->GetClassInfo(coclass.put()));
    TYPEATTR* ta;
    coclass->GetTypeAttr(&ta);
    EXPECT_EQ(TKIND_COCLASS, ta->typekind);
    EXPECT_EQ(CLSID_Rectangle, ta->guid);
    coclass->ReleaseTypeAttr(ta);
    GUID source;
    ASSERT_EQ(S_OK, info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source));
    EXPECT_EQ(DIID___Rectangle, source);

    ComPtr<IProvideClassInfo2> gdi =
        create<_GDIMethods>(CLSID_GDIMethods, IID__GDIMethods).as<IProvideClassInfo2>(IID_IProvideClassInfo2);
    EXPECT_EQ(E_INVALIDARG, gdi->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &source)) << "no events";
    EXPECT_FALSE(gdi.as<IConnectionPointContainer>(IID_IConnectionPointContainer));
}

TEST(Errors, StandardErrorReachesVtableAndDispatchCallers) {
    ComPtr<_Rectangle> r = newRectangle();
    ASSERT_EQ(S_OK, r.as<ISupportErrorInfo>(IID_ISupportErrorInfo)->InterfaceSupportsErrorInfo(IID__Rectangle));

    VARIANT_BOOL result;
    HRESULT hr = r->Equals2(nullptr, &result);
    EXPECT_EQ(static_cast<HRESULT>(0x800A005B), hr) << "run-time error 91";
    ErrorText e = lastError();
    EXPECT_EQ(L"TOVA200", e.source);
    EXPECT_EQ(L"Object variable or With block variable not set", e.description);

    CallResult c;
    call(c, r.as<IDispatch>(IID_IDispatch).get(), L"Equals2", DISPATCH_METHOD, {vObject(nullptr)});
    EXPECT_EQ(DISP_E_EXCEPTION, c.hr);
    EXPECT_EQ(static_cast<HRESULT>(0x800A005B), c.excep.scode);
    EXPECT_EQ(L"TOVA200", c.source());
    EXPECT_FALSE(c.description().empty());
}

TEST(ConnectionPoints, AdviseEnumerateUnadvise) {
    ComPtr<_Rectangle> r = newRectangle();
    ComPtr<IConnectionPointContainer> cpc = r.as<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ASSERT_TRUE(cpc);

    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, cpc->EnumConnectionPoints(points.put()));
    IConnectionPoint* p[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(S_FALSE, points->Next(2, p, &fetched));
    ASSERT_EQ(1u, fetched);
    IID iid;
    p[0]->GetConnectionInterface(&iid);
    EXPECT_EQ(DIID___Rectangle, iid);
    p[0]->Release();

    ComPtr<IConnectionPoint> none;
    EXPECT_EQ(CONNECT_E_NOCONNECTION, cpc->FindConnectionPoint(IID_IDispatch, none.put()));

    Sink a, b;
    a.connect(r.get(), DIID___Rectangle);
    b.connect(r.get(), DIID___Rectangle);
    ComPtr<IConnectionPoint> cp;
    cpc->FindConnectionPoint(DIID___Rectangle, cp.put());
    ComPtr<IEnumConnections> conns;
    ASSERT_EQ(S_OK, cp->EnumConnections(conns.put()));
    CONNECTDATA cd[3];
    conns->Next(3, cd, &fetched);
    EXPECT_EQ(2u, fetched);
    for (ULONG i = 0; i < fetched; ++i) cd[i].pUnk->Release();
    EXPECT_EQ(CONNECT_E_NOCONNECTION, cp->Unadvise(12345));

    long left = 5;
    r->put_Left(&left);
    EXPECT_EQ(1u, a.calls.size());
    EXPECT_EQ(1u, b.calls.size()) << "every sink hears the event";
    a.disconnect();
    left = 6;
    r->put_Left(&left);
    EXPECT_EQ(1u, a.calls.size());
    EXPECT_EQ(2u, b.calls.size());
}

TEST(ConnectionPoints, ObjectReleasedInsideItsHandlerLivesUntilTheRaiseReturns) {
    auto canUnload = reinterpret_cast<DllCanUnloadNowFn>(GetProcAddress(library(), "DllCanUnloadNow"));
    _Rectangle* raw = newRectangle().detach();
    Sink sink;
    sink.connect(raw, DIID___Rectangle);
    bool released = false;
    sink.handler = [&](DISPID, DISPPARAMS*) {
        if (released) return;
        released = true;
        sink.disconnect();
        raw->Release();  // the client's last reference
    };
    long left = 1;
    EXPECT_EQ(S_OK, raw->put_Left(&left));
    EXPECT_TRUE(released);
    EXPECT_EQ(S_OK, canUnload()) << "gone once the raising call returned";

    // PopState still works on its stack after the handler let go.
    raw = newRectangle().detach();
    VARIANT_BOOL ok;
    raw->PushState(&ok);
    raw->put_Left(&left);
    released = false;
    sink.connect(raw, DIID___Rectangle);
    EXPECT_EQ(S_OK, raw->PopState(&ok));
    EXPECT_EQ(VARIANT_TRUE, ok);
    EXPECT_TRUE(released);
    EXPECT_EQ(S_OK, canUnload());
}
