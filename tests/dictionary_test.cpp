// Positional access to the scripting Dictionary: the module directly, then the
// class through the DLL, early and late bound.
#include "support.h"

#include "text/dictionary.h"

using namespace test;
namespace dict = tova::dictionary;

namespace {

using Strings = std::vector<std::wstring>;

// An object whose default property is 42.
class Valued : public IDispatch {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        *ppv = riid == IID_IUnknown || riid == IID_IDispatch ? static_cast<IDispatch*>(this) : nullptr;
        if (*ppv) AddRef();
        return *ppv ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs; }
    STDMETHODIMP_(ULONG) Release() override { return --refs; }  // lives on the test's stack
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* r, EXCEPINFO*, UINT*) override {
        if (id != DISPID_VALUE) return DISP_E_MEMBERNOTFOUND;
        if (r) { VariantInit(r); V_VT(r) = VT_I4; V_I4(r) = 42; }
        return S_OK;
    }
    ULONG refs = 1;
};

// A dictionary reachable only by name: hides the dictionary's own interface so
// that the module falls back to late binding.
class ByNameOnly : public Valued {
public:
    explicit ByNameOnly(IDispatch* inner) : inner_(inner) {}
    STDMETHODIMP GetIDsOfNames(REFIID r, LPOLESTR* n, UINT c, LCID l, DISPID* ids) override {
        return inner_->GetIDsOfNames(r, n, c, l, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID r, LCID l, WORD f, DISPPARAMS* p, VARIANT* v, EXCEPINFO* e,
                        UINT* a) override {
        ++calls;
        return inner_->Invoke(id, r, l, f, p, v, e, a);
    }
    int calls = 0;

private:
    IDispatch* inner_;
};

VARTYPE typeOf(const Variant& v) { return V_VT(&v); }
long asLong(const Variant& v) { return V_VT(&v) == VT_I4 ? V_I4(&v) : -1; }

Strings keysOf(IDispatch* d) {
    CallResult c;
    call(c, d, L"Keys", DISPATCH_METHOD, {});
    Strings out;
    if (!(V_VT(&c.value) & VT_ARRAY)) return out;
    SAFEARRAY* sa = V_ARRAY(&c.value);
    LONG lb = 0, ub = -1;
    SafeArrayGetLBound(sa, 1, &lb);
    SafeArrayGetUBound(sa, 1, &ub);
    for (LONG i = lb; i <= ub; ++i) {
        Variant e;
        SafeArrayGetElement(sa, &i, &e);
        VariantChangeType(&e, &e, 0, VT_BSTR);
        out.push_back(V_BSTR(&e) ? V_BSTR(&e) : L"");
    }
    return out;
}

class DictionaryTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(d = dict::create(dict::kTextCompare)); }
    void fill(const Strings& keys) {
        long n = 0;
        for (const auto& k : keys) ASSERT_TRUE(dict::add(d.get(), k, Variant(++n * 10)));
    }
    long longItem(const wchar_t* key) { return asLong(dict::item(d.get(), std::wstring(key))); }
    ComPtr<IDispatch> d;
};

}  // namespace

TEST_F(DictionaryTest, KeySelectsByPositionOrExistingString) {
    fill({L"a", L"b", L"c"});
    EXPECT_EQ(L"a", dict::key(d.get(), 1));
    EXPECT_EQ(L"c", dict::key(d.get(), 3));
    EXPECT_EQ(L"", dict::key(d.get(), 0));
    EXPECT_EQ(L"", dict::key(d.get(), 4));  // Count + 1
    EXPECT_EQ(L"", dict::key(d.get(), -1));
    EXPECT_EQ(L"b", dict::key(d.get(), Variant(L"b")));
    EXPECT_EQ(L"B", dict::key(d.get(), Variant(L"B")));  // the String itself (text mode finds it)
    EXPECT_EQ(L"", dict::key(d.get(), Variant(L"zz")));
    // Numbers of any type, rounded to even; a String is always a key, never a position.
    EXPECT_EQ(L"b", dict::key(d.get(), Variant(2.5)));
    EXPECT_EQ(L"", dict::key(d.get(), Variant(3.5)));
    EXPECT_EQ(L"c", dict::key(d.get(), Variant(2.6)));
    EXPECT_EQ(L"", dict::key(d.get(), Variant(L"2")));
    Variant cy;
    V_VT(&cy) = VT_CY;
    V_CY(&cy).int64 = 30000;  // 3.0000
    EXPECT_EQ(L"c", dict::key(d.get(), cy));
    // By reference, as late-bound callers pass them.
    long two = 2;
    Variant one(1L);
    EXPECT_EQ(L"a", dict::key(d.get(), vRef(&one)));
    EXPECT_EQ(L"b", dict::key(d.get(), vLongRef(&two)));
    // Values that read as no position.
    Variant empty, null, boolean, array = longArray({1});
    V_VT(&null) = VT_NULL;
    V_VT(&boolean) = VT_BOOL;
    V_BOOL(&boolean) = VARIANT_TRUE;
    for (const VARIANT* v : {&empty, &null, &boolean, &array}) EXPECT_EQ(L"", dict::key(d.get(), *v));
    // A numeric key at a position comes back as its text.
    CallResult r;
    call(r, d.get(), L"Add", DISPATCH_METHOD, {one, vLong(5)});
    EXPECT_EQ(L"1", dict::key(d.get(), 4));
}

TEST_F(DictionaryTest, IndexFollowsCompareMode) {
    fill({L"alpha", L"Beta", L"gamma"});
    EXPECT_EQ(2, dict::index(d.get(), L"beta"));  // text mode
    EXPECT_EQ(3, dict::index(d.get(), L"GAMMA"));
    EXPECT_EQ(0, dict::index(d.get(), L""));
    EXPECT_EQ(0, dict::index(d.get(), L"delta"));
    EXPECT_EQ(2, dict::index(d.get(), Variant(2L)));
    EXPECT_EQ(0, dict::index(d.get(), Variant(4L)));
    EXPECT_EQ(0, dict::index(d.get(), Variant(0L)));

    ComPtr<IDispatch> binary = dict::create(dict::kBinaryCompare);
    dict::add(binary.get(), L"x", Variant(1L));
    dict::add(binary.get(), L"Beta", Variant(2L));
    dict::add(binary.get(), L"beta", Variant(3L));
    EXPECT_EQ(0, dict::index(binary.get(), L"BETA"));
    EXPECT_EQ(2, dict::index(binary.get(), L"Beta"));
    EXPECT_EQ(3, dict::index(binary.get(), L"beta"));
}

TEST_F(DictionaryTest, ObjectDictionaryIsDecidedByTheFirstItem) {
    Valued obj;
    EXPECT_FALSE(dict::isObjectDictionary(d.get()));  // empty
    dict::add(d.get(), L"n", Variant(1L));
    dict::add(d.get(), L"o", vObject(&obj));
    EXPECT_FALSE(dict::isObjectDictionary(d.get()));

    ComPtr<IDispatch> objects = dict::create();
    dict::add(objects.get(), L"o", vObject(&obj));
    dict::add(objects.get(), L"n", Variant(1L));
    EXPECT_TRUE(dict::isObjectDictionary(objects.get()));
    ComPtr<IDispatch> nothing = dict::create();
    dict::add(nothing.get(), L"none", vObject(nullptr));
    EXPECT_TRUE(dict::isObjectDictionary(nothing.get()));
    // Every dictionary lets go of the object before it leaves the stack.
    objects.reset();
    d.reset();
    EXPECT_EQ(1u, obj.refs);
}

TEST_F(DictionaryTest, ItemsReadByReferenceOrByValue) {
    Valued obj;
    // Object dictionary: the same object back; a non-object item cannot be taken by reference.
    dict::add(d.get(), L"o", vObject(&obj));
    dict::add(d.get(), L"n", Variant(7L));
    Variant first = dict::item(d.get(), 1L);
    ASSERT_EQ(VT_DISPATCH, V_VT(&first));
    EXPECT_EQ(static_cast<IDispatch*>(&obj), V_DISPATCH(&first));
    EXPECT_EQ(VT_EMPTY, typeOf(dict::item(d.get(), L"n")));

    // Value dictionary: an object item reads as its default value.
    ComPtr<IDispatch> values = dict::create();
    dict::add(values.get(), L"n", Variant(7L));
    dict::add(values.get(), L"o", vObject(&obj));
    dict::add(values.get(), L"s", Variant(L"text"));
    Variant v = dict::item(values.get(), L"o");
    EXPECT_EQ(VT_I4, V_VT(&v));
    EXPECT_EQ(42, V_I4(&v));
    Variant s = dict::item(values.get(), Variant(3.0));
    ASSERT_EQ(VT_BSTR, V_VT(&s));
    EXPECT_STREQ(L"text", V_BSTR(&s));
    ComPtr<IDispatch> nested = dict::create();  // no default value without an argument
    dict::add(values.get(), L"d", vObject(nested.get()));
    EXPECT_EQ(VT_EMPTY, typeOf(dict::item(values.get(), L"d")));

    // Reading never adds: a missing key, and a numeric key reached by position.
    Variant one(1L);
    CallResult r;
    call(r, values.get(), L"Add", DISPATCH_METHOD, {one, vLong(5)});
    EXPECT_EQ(VT_EMPTY, typeOf(dict::item(values.get(), L"missing")));
    EXPECT_EQ(VT_EMPTY, typeOf(dict::item(values.get(), 5L)));
    EXPECT_EQ(5, dict::count(values.get()));
    first.clear();
    values.reset();
    d.reset();
    EXPECT_EQ(1u, obj.refs);
}

TEST_F(DictionaryTest, SetItemReplacesButNeverAdds) {
    Valued obj;
    EXPECT_FALSE(dict::setItem(d.get(), Variant(L"a"), Variant(1L)));  // empty dictionary
    fill({L"a", L"b"});
    EXPECT_TRUE(dict::setItem(d.get(), Variant(2L), Variant(99L)));
    EXPECT_EQ(99, longItem(L"b"));
    EXPECT_TRUE(dict::setItem(d.get(), Variant(L"A"), Variant(5L)));  // text mode
    EXPECT_EQ(5, longItem(L"a"));
    EXPECT_FALSE(dict::setItem(d.get(), Variant(L"c"), Variant(1L)));
    EXPECT_FALSE(dict::setItem(d.get(), Variant(3L), Variant(1L)));
    EXPECT_EQ((Strings{L"a", L"b"}), keysOf(d.get()));
    // An object goes in by reference: the dictionary holds the object itself.
    EXPECT_TRUE(dict::setItem(d.get(), Variant(1L), vObject(&obj)));
    Variant back = dict::item(d.get(), L"a");
    ASSERT_EQ(VT_DISPATCH, V_VT(&back));
    EXPECT_EQ(static_cast<IDispatch*>(&obj), V_DISPATCH(&back));
    back.clear();
    d.reset();
    EXPECT_EQ(1u, obj.refs);
}

TEST_F(DictionaryTest, ChangeKeyRenamesInPlace) {
    fill({L"a", L"b", L"c"});
    EXPECT_TRUE(dict::changeKey(d.get(), L"a", L"x"));
    EXPECT_TRUE(dict::changeKey(d.get(), L"b", L"y"));
    EXPECT_EQ((Strings{L"x", L"y", L"c"}), keysOf(d.get()));
    EXPECT_EQ(10, longItem(L"x"));
    EXPECT_EQ(20, longItem(L"y"));
    // Refused: the new key exists (in text mode also in another case), the old one does not, empty names.
    EXPECT_FALSE(dict::changeKey(d.get(), L"x", L"c"));
    EXPECT_FALSE(dict::changeKey(d.get(), L"x", L"C"));
    EXPECT_FALSE(dict::changeKey(d.get(), L"nope", L"z"));
    EXPECT_FALSE(dict::changeKey(d.get(), L"", L"z"));
    EXPECT_FALSE(dict::changeKey(d.get(), L"x", L""));
    EXPECT_EQ((Strings{L"x", L"y", L"c"}), keysOf(d.get()));
    EXPECT_EQ(10, longItem(L"x"));
}

TEST_F(DictionaryTest, ChangeIndexMovesOneEntry) {
    fill({L"a", L"b", L"c", L"d", L"e"});
    EXPECT_TRUE(dict::changeIndex(d.get(), L"e", 1));  // last to first
    EXPECT_EQ((Strings{L"e", L"a", L"b", L"c", L"d"}), keysOf(d.get()));
    EXPECT_TRUE(dict::changeIndex(d.get(), L"E", 5));  // to the end; any case finds it
    EXPECT_EQ((Strings{L"a", L"b", L"c", L"d", L"e"}), keysOf(d.get()));
    EXPECT_TRUE(dict::changeIndex(d.get(), L"a", 3));  // towards the end: the others shift up
    EXPECT_EQ((Strings{L"b", L"c", L"a", L"d", L"e"}), keysOf(d.get()));
    EXPECT_TRUE(dict::changeIndex(d.get(), L"d", 2));
    EXPECT_EQ((Strings{L"b", L"d", L"c", L"a", L"e"}), keysOf(d.get()));
    EXPECT_TRUE(dict::changeIndex(d.get(), L"d", 2));  // already there
    EXPECT_FALSE(dict::changeIndex(d.get(), L"d", 6));  // Count + 1
    EXPECT_FALSE(dict::changeIndex(d.get(), L"d", 0));
    EXPECT_FALSE(dict::changeIndex(d.get(), L"zz", 1));
    EXPECT_FALSE(dict::changeIndex(d.get(), L"", 1));
    EXPECT_EQ((Strings{L"b", L"d", L"c", L"a", L"e"}), keysOf(d.get()));
    for (auto [k, v] : {std::pair{L"a", 10}, {L"b", 20}, {L"c", 30}, {L"d", 40}, {L"e", 50}})
        EXPECT_EQ(v, longItem(k)) << k;

    // Found ignoring case even in a binary dictionary: the first such key moves.
    ComPtr<IDispatch> binary = dict::create(dict::kBinaryCompare);
    for (const wchar_t* k : {L"a", L"A", L"b"}) dict::add(binary.get(), k, Variant(1L));
    EXPECT_TRUE(dict::changeIndex(binary.get(), L"A", 3));
    EXPECT_EQ((Strings{L"A", L"b", L"a"}), keysOf(binary.get()));

    // Object items keep their identity through both ways of moving.
    Valued p, q, r;
    ComPtr<IDispatch> objects = dict::create();
    dict::add(objects.get(), L"p", vObject(&p));
    dict::add(objects.get(), L"q", vObject(&q));
    dict::add(objects.get(), L"r", vObject(&r));
    EXPECT_TRUE(dict::changeIndex(objects.get(), L"p", 3));
    EXPECT_TRUE(dict::changeIndex(objects.get(), L"r", 1));
    EXPECT_EQ((Strings{L"r", L"q", L"p"}), keysOf(objects.get()));
    Variant first = dict::item(objects.get(), 1L);
    EXPECT_EQ(static_cast<IDispatch*>(&r), V_DISPATCH(&first));
    first.clear();
    objects.reset();
    EXPECT_EQ(3u, p.refs + q.refs + r.refs);
}

TEST_F(DictionaryTest, CountExistsRemove) {
    fill({L"a", L"b", L"c"});
    EXPECT_EQ(3, dict::count(d.get()));
    EXPECT_TRUE(dict::exists(d.get(), L"B"));
    EXPECT_FALSE(dict::exists(d.get(), L"z"));
    EXPECT_TRUE(dict::remove(d.get(), Variant(2L)));
    EXPECT_TRUE(dict::remove(d.get(), Variant(L"C")));
    EXPECT_FALSE(dict::remove(d.get(), Variant(L"z")));
    EXPECT_FALSE(dict::remove(d.get(), Variant(2L)));
    EXPECT_EQ((Strings{L"a"}), keysOf(d.get()));
    // A numeric key at a position: its text is no key, so nothing goes yet the answer is True.
    Variant seven(7L);
    CallResult r;
    call(r, d.get(), L"Add", DISPATCH_METHOD, {seven, vLong(1)});
    EXPECT_TRUE(dict::remove(d.get(), Variant(2L)));
    EXPECT_EQ(2, dict::count(d.get()));
}

TEST_F(DictionaryTest, NothingAndForeignObjectsGiveSoftResults) {
    Valued foreign;  // an object that is no dictionary
    for (IDispatch* x : {static_cast<IDispatch*>(nullptr), static_cast<IDispatch*>(&foreign)}) {
        Variant one(1L), a(L"a");
        EXPECT_EQ(L"", dict::key(x, one));
        EXPECT_EQ(0, dict::index(x, a));
        EXPECT_FALSE(dict::isObjectDictionary(x));
        EXPECT_EQ(VT_EMPTY, typeOf(dict::item(x, one)));
        EXPECT_FALSE(dict::setItem(x, one, one));
        EXPECT_FALSE(dict::changeKey(x, L"a", L"b"));
        EXPECT_FALSE(dict::changeIndex(x, L"a", 1));
        EXPECT_FALSE(dict::exists(x, L"a"));
        EXPECT_EQ(0, dict::count(x));
        EXPECT_FALSE(dict::remove(x, a));
        EXPECT_FALSE(dict::add(x, L"a", one));
    }
}

TEST_F(DictionaryTest, LateBoundDictionaryBehavesTheSame) {
    fill({L"a", L"b", L"c"});
    ByNameOnly byName(d.get());
    IDispatch* x = &byName;
    EXPECT_EQ(3, dict::count(x));
    EXPECT_EQ(L"b", dict::key(x, 2L));
    EXPECT_EQ(3, dict::index(x, L"C"));
    EXPECT_EQ(20, asLong(dict::item(x, L"b")));
    EXPECT_TRUE(dict::setItem(x, Variant(1L), Variant(11L)));
    EXPECT_TRUE(dict::changeKey(x, L"a", L"z"));
    EXPECT_TRUE(dict::changeIndex(x, L"c", 1));
    EXPECT_TRUE(dict::remove(x, Variant(L"b")));
    EXPECT_EQ((Strings{L"c", L"z"}), keysOf(d.get()));
    EXPECT_EQ(11, longItem(L"z"));
    EXPECT_GT(byName.calls, 10);
}

// ----------------------------------------------------------------- the class

TEST(DictionaryMethods, EarlyBound) {
    ComPtr<_DictionaryMethods> m = create<_DictionaryMethods>(CLSID_DictionaryMethods, IID__DictionaryMethods);
    ASSERT_TRUE(m);
    ComPtr<IDispatch> d, binary;
    ASSERT_EQ(S_OK, m->CreateDictionary(nullptr, d.put()));  // omitted: text mode
    LONG zero = 0;
    ASSERT_EQ(S_OK, m->CreateDictionary(&zero, binary.put()));
    ASSERT_TRUE(d && binary);
    Valued obj;
    dict::add(d.get(), L"a", vObject(&obj));
    dict::add(d.get(), L"b", vObject(nullptr));
    dict::add(binary.get(), L"a", Variant(1L));

    Variant two(2L), upperA(L"A");
    Bstr text;
    LONG n = 0;
    VARIANT_BOOL yes = VARIANT_FALSE;
    EXPECT_EQ(S_OK, m->GetKey(d.get(), &two, text.put()));
    EXPECT_EQ(L"b", text.str());
    EXPECT_EQ(S_OK, m->GetIndex(d.get(), &upperA, &n));
    EXPECT_EQ(1, n);
    EXPECT_EQ(S_OK, m->GetIndex(binary.get(), &upperA, &n));
    EXPECT_EQ(0, n);
    EXPECT_EQ(S_OK, m->IsObjectDictionary(d.get(), &yes));
    EXPECT_EQ(VARIANT_TRUE, yes);
    Variant item;
    EXPECT_EQ(S_OK, m->GetItem(d.get(), &upperA, &item));
    EXPECT_EQ(static_cast<IDispatch*>(&obj), V_DISPATCH(&item));
    Variant newItem = Variant(static_cast<IDispatch*>(&obj));
    EXPECT_EQ(S_OK, m->SetItem(d.get(), &two, &newItem, &yes));
    EXPECT_EQ(VARIANT_TRUE, yes);
    Bstr b(L"b"), c(L"c");
    BSTR from = b.get(), to = c.get();
    EXPECT_EQ(S_OK, m->ChangeKey(d.get(), &from, &to, &yes));
    EXPECT_EQ(VARIANT_TRUE, yes);
    LONG one = 1;
    EXPECT_EQ(S_OK, m->ChangeIndex(d.get(), &to, &one, &yes));
    EXPECT_EQ(VARIANT_TRUE, yes);
    EXPECT_EQ((Strings{L"c", L"a"}), keysOf(d.get()));
    EXPECT_EQ(S_OK, m->ItemExists(d.get(), &to, &yes));
    EXPECT_EQ(VARIANT_TRUE, yes);
    EXPECT_EQ(S_OK, m->RemoveItem(d.get(), &two, &yes));
    EXPECT_EQ(VARIANT_TRUE, yes);
    EXPECT_EQ(S_OK, m->GetCount(d.get(), &n));
    EXPECT_EQ(1, n);

    // Nothing: soft results, no error.
    EXPECT_EQ(S_OK, m->GetKey(nullptr, &two, text.put()));
    EXPECT_EQ(L"", text.str());
    EXPECT_EQ(S_OK, m->GetItem(nullptr, &two, item.put()));
    EXPECT_EQ(VT_EMPTY, V_VT(&item));
    EXPECT_EQ(S_OK, m->ChangeIndex(nullptr, &to, &one, &yes));
    EXPECT_EQ(VARIANT_FALSE, yes);
    item.clear();
    newItem.clear();
    d.reset();
    EXPECT_EQ(1u, obj.refs);
}

namespace {

// A late-bound call that must succeed; its result.
Variant run(IDispatch* x, const wchar_t* name, std::vector<VARIANT> args, WORD flags = DISPATCH_METHOD) {
    CallResult c;
    call(c, x, name, flags, std::move(args));
    EXPECT_EQ(S_OK, c.hr) << name;
    return Variant(c.value);
}

}  // namespace

TEST(DictionaryMethods, LateBound) {
    ComPtr<_DictionaryMethods> m = create<_DictionaryMethods>(CLSID_DictionaryMethods, IID__DictionaryMethods);
    ASSERT_TRUE(m);
    IDispatch* md = m.get();
    Variant made = run(md, L"CreateDictionary", {}), binary = run(md, L"CreateDictionary", {vLong(0)});
    ASSERT_EQ(VT_DISPATCH, V_VT(&made));
    ASSERT_EQ(VT_DISPATCH, V_VT(&binary));
    IDispatch* d = V_DISPATCH(&made);
    EXPECT_EQ(1, asLong(run(d, L"CompareMode", {}, DISPATCH_PROPERTYGET)));
    EXPECT_EQ(0, asLong(run(V_DISPATCH(&binary), L"CompareMode", {}, DISPATCH_PROPERTYGET)));
    for (const wchar_t* k : {L"a", L"b", L"c"}) {
        Variant key(k);
        run(d, L"Add", {key, vLong(1)});
    }

    // Script variables arrive by reference.
    Variant pos(2L), text3(L"3"), keyC(L"c"), target(1L);
    Variant key = run(md, L"GetKey", {vObject(d), vRef(&pos)});
    EXPECT_STREQ(L"b", V_BSTR(&key));
    key = run(md, L"GetKey", {vObject(d), vRef(&text3)});
    EXPECT_STREQ(L"", V_BSTR(&key));
    Variant moved = run(md, L"ChangeIndex", {vObject(d), vRef(&keyC), vRef(&target)});
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&moved));
    EXPECT_EQ((Strings{L"c", L"a", L"b"}), keysOf(d));
    EXPECT_EQ(1, asLong(run(md, L"GetIndex", {vObject(d), vRef(&keyC)})));

    // Nothing, Empty and Null as the dictionary: soft results.
    Variant empty, null;
    V_VT(&null) = VT_NULL;
    for (VARIANT v : {vObject(nullptr), static_cast<VARIANT>(empty), static_cast<VARIANT>(null)}) {
        EXPECT_EQ(0, asLong(run(md, L"GetCount", {v})));
        key = run(md, L"GetKey", {v, vRef(&pos)});
        EXPECT_STREQ(L"", V_BSTR(&key));
        EXPECT_EQ(VT_EMPTY, typeOf(run(md, L"GetItem", {v, vRef(&pos)})));
    }
}
