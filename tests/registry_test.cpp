// RegistryMethods through the DLL, early and late bound, under a test key of
// HKEY_CURRENT_USER that every test removes again. The platform's own registry
// functions check what the members wrote.
#include "support.h"

#include <cstring>
#include <map>

using namespace test;

namespace {

using Strings = std::vector<std::wstring>;
using Bytes = std::vector<unsigned char>;

constexpr RootKeyTypeEnum kUser = tovaRootKey_HKEY_CURRENT_USER;

// The test key, named after the process so that parallel runs keep apart.
std::wstring testKey() { return L"Software\\TOVA200 tests\\registry " + std::to_wstring(GetCurrentProcessId()); }

class RegistryTest : public ::testing::Test {
protected:
    void SetUp() override {
        reg = create<_RegistryMethods>(CLSID_RegistryMethods, IID__RegistryMethods);
        ASSERT_TRUE(reg);
        RegDeleteTreeW(HKEY_CURRENT_USER, testKey().c_str());
    }
    void TearDown() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, testKey().c_str());
        RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\TOVA200 tests");   // when no other run uses it
    }

    static std::wstring key(const std::wstring& rel = L"") { return rel.empty() ? testKey() : testKey() + L"\\" + rel; }

    // Writes a value with the platform's functions.
    static void write(const std::wstring& k, const wchar_t* name, DWORD type, const void* data, DWORD size) {
        HKEY h = nullptr;
        ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CURRENT_USER, key(k).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                                 nullptr, &h, nullptr));
        EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(h, name, 0, type, static_cast<const BYTE*>(data), size));
        RegCloseKey(h);
    }
    static void writeDword(const wchar_t* name, DWORD v) { write(L"", name, REG_DWORD, &v, 4); }
    static void writeText(const std::wstring& k, const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) {
        write(k, name, type, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    }
    // Reads a value with the platform's functions; type 0 when it is not there.
    static Bytes read(const std::wstring& k, const wchar_t* name, DWORD* type = nullptr) {
        Bytes out(70000);
        DWORD size = static_cast<DWORD>(out.size()), t = 0;
        if (RegGetValueW(HKEY_CURRENT_USER, key(k).c_str(), name, RRF_RT_ANY | RRF_NOEXPAND, &t, out.data(), &size) !=
            ERROR_SUCCESS)
            size = 0, t = 0;
        out.resize(size);
        if (type) *type = t;
        return out;
    }
    static bool exists(const std::wstring& k) {
        HKEY h = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, key(k).c_str(), 0, KEY_READ, &h) != ERROR_SUCCESS) return false;
        RegCloseKey(h);
        return true;
    }

    // The members with plain C++ values.
    bool updateKey(const std::wstring& k, const std::wstring& name, const std::wstring& value,
                   RootKeyTypeEnum root = kUser) {
        Bstr a(k), b(name), c(value);
        BSTR pa = a.get(), pb = b.get(), pc = c.get();
        VARIANT_BOOL r = 1;
        EXPECT_EQ(S_OK, reg->UpdateKey(root, &pa, &pb, &pc, &r));
        return r == VARIANT_TRUE;
    }
    std::wstring getKeyValue(const std::wstring& k, const std::wstring& name, VARIANT* def = nullptr,
                             HRESULT expected = S_OK) {
        Bstr a(k), b(name), out;
        BSTR pa = a.get(), pb = b.get();
        EXPECT_EQ(expected, reg->GetKeyValue(kUser, &pa, &pb, def, out.put()));
        return out.str();
    }
    bool updateKeyEx(const std::wstring& k, const std::wstring& name, const Bytes& bytes) {
        SAFEARRAY* sa = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
        if (!bytes.empty()) std::memcpy(sa->pvData, bytes.data(), bytes.size());
        Bstr a(k), b(name);
        BSTR pa = a.get(), pb = b.get();
        VARIANT_BOOL r = 1;
        EXPECT_EQ(S_OK, reg->UpdateKeyEx(kUser, &pa, &pb, &sa, &r));
        SafeArrayDestroy(sa);
        return r == VARIANT_TRUE;
    }
    // GetKeyValueEx into `*array` (which the caller owns and may preset).
    bool getKeyValueEx(const std::wstring& k, const std::wstring& name, SAFEARRAY** array) {
        Bstr a(k), b(name);
        BSTR pa = a.get(), pb = b.get();
        VARIANT_BOOL r = 1;
        EXPECT_EQ(S_OK, reg->GetKeyValueEx(kUser, &pa, &pb, array, &r));
        return r == VARIANT_TRUE;
    }
    static Bytes bytesOf(SAFEARRAY* sa, LONG* lower = nullptr) {
        if (!sa) return {};
        LONG lb = 0, ub = -1;
        SafeArrayGetLBound(sa, 1, &lb);
        SafeArrayGetUBound(sa, 1, &ub);
        if (lower) *lower = lb;
        const auto* p = static_cast<const unsigned char*>(sa->pvData);
        return Bytes(p, p + (ub - lb + 1));
    }
    bool deleteKeyValue(const std::wstring& k, const std::wstring& name) {
        Bstr a(k), b(name);
        BSTR pa = a.get(), pb = b.get();
        VARIANT_BOOL r = 1;
        EXPECT_EQ(S_OK, reg->DeleteKeyValue(kUser, &pa, &pb, &r));
        return r == VARIANT_TRUE;
    }
    template <class M>
    bool onKey(M member, const std::wstring& k) {
        Bstr a(k);
        BSTR pa = a.get();
        VARIANT_BOOL r = 1;
        EXPECT_EQ(S_OK, (reg.get()->*member)(kUser, &pa, &r));
        return r == VARIANT_TRUE;
    }
    template <class M>
    Variant listOf(M member, const std::wstring& k) {
        Bstr a(k);
        BSTR pa = a.get();
        Variant r;
        EXPECT_EQ(S_OK, (reg.get()->*member)(kUser, &pa, &r));
        return r;
    }

    ComPtr<_RegistryMethods> reg;
};

Strings stringsOf(const VARIANT& v) {
    Strings out;
    EXPECT_EQ(VT_ARRAY | VT_BSTR, V_VT(&v));
    if (V_VT(&v) != (VT_ARRAY | VT_BSTR)) return out;
    LONG lb = 1, ub = 0;
    SafeArrayGetLBound(V_ARRAY(&v), 1, &lb);
    SafeArrayGetUBound(V_ARRAY(&v), 1, &ub);
    EXPECT_EQ(0, lb);
    for (LONG i = lb; i <= ub; ++i) {
        BSTR b = nullptr;
        SafeArrayGetElement(V_ARRAY(&v), &i, &b);
        out.push_back(b ? b : L"");
        SysFreeString(b);
    }
    return out;
}

}  // namespace

// ------------------------------------------------------------------ text values

TEST_F(RegistryTest, UpdateKeyCreatesTheKeyAndStoresTextWithoutItsNul) {
    ASSERT_TRUE(updateKey(key(L"a\\b"), L"Name", L"Hello, world"));
    DWORD type = 0;
    Bytes data = read(L"a\\b", L"Name", &type);
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), type);
    const std::wstring text(reinterpret_cast<const wchar_t*>(data.data()), data.size() / 2);
    EXPECT_EQ(L"Hello, world", text.substr(0, text.find(L'\0')));
    EXPECT_EQ(L"Hello, world", getKeyValue(key(L"a\\b"), L"Name"));

    // Overwritten, then deleted by an empty text, which is True also when nothing was there.
    EXPECT_TRUE(updateKey(key(L"a\\b"), L"Name", L"second"));
    EXPECT_EQ(L"second", getKeyValue(key(L"a\\b"), L"Name"));
    EXPECT_TRUE(updateKey(key(L"a\\b"), L"Name", L""));
    EXPECT_EQ(0u, read(L"a\\b", L"Name").size());
    EXPECT_TRUE(updateKey(key(L"a\\b"), L"Name", L""));
    EXPECT_TRUE(updateKey(key(L"not there"), L"Name", L""));
    EXPECT_FALSE(exists(L"not there")) << "deleting creates no key";
}

TEST_F(RegistryTest, EmptyNamesTouchNothing) {
    EXPECT_FALSE(updateKey(L"", L"Name", L"x"));
    EXPECT_FALSE(updateKey(key(L"k"), L"", L"x"));
    EXPECT_FALSE(exists(L"k"));
    writeText(L"", L"", L"default value");
    EXPECT_EQ(L"", getKeyValue(key(), L""));
    EXPECT_FALSE(deleteKeyValue(key(), L""));
    EXPECT_FALSE(deleteKeyValue(L"", L"Name"));
    EXPECT_FALSE(updateKeyEx(key(), L"", {1, 2}));
    EXPECT_FALSE(onKey(&_RegistryMethods::DeleteKey, L""));
    EXPECT_FALSE(onKey(&_RegistryMethods::DeleteAllKeyValues, L""));
    EXPECT_EQ(L"default value", std::wstring(reinterpret_cast<const wchar_t*>(read(L"", L"").data())));
}

TEST_F(RegistryTest, GetKeyValueGivesTheDefaultAsTextWhenItCannotRead) {
    updateKey(key(), L"present", L"here");
    Variant number(42L), text(L"fallback"), real(2.5);
    EXPECT_EQ(L"", getKeyValue(key(), L"absent"));
    EXPECT_EQ(L"42", getKeyValue(key(), L"absent", &number));
    EXPECT_EQ(L"fallback", getKeyValue(key(L"no key"), L"absent", &text));
    EXPECT_EQ(L"fallback", getKeyValue(key(), L"", &text));
    EXPECT_EQ(L"2.5", getKeyValue(key(), L"absent", &real));
    EXPECT_EQ(L"here", getKeyValue(key(), L"present", &text));

    // A binary value and a text longer than the 1024-byte buffer read as the default.
    Bytes bin{1, 2, 3};
    write(L"", L"binary", REG_BINARY, bin.data(), 3);
    EXPECT_EQ(L"fallback", getKeyValue(key(), L"binary", &text));
    updateKey(key(), L"long", std::wstring(1500, L'x'));
    EXPECT_EQ(L"fallback", getKeyValue(key(), L"long", &text));
    updateKey(key(), L"fits", std::wstring(1000, L'y'));
    EXPECT_EQ(std::wstring(1000, L'y'), getKeyValue(key(), L"fits"));

    // Defaults that have no text are the conversion's errors.
    Variant null;
    V_VT(&null) = VT_NULL;
    getKeyValue(key(), L"absent", &null, MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, 94));
}

TEST_F(RegistryTest, GetKeyValueRendersNumbersFromTheirBytes) {
    writeDword(L"d42", 42);
    writeDword(L"d261", 261);
    writeDword(L"d0", 0);
    writeDword(L"d256", 256);
    writeDword(L"big", 0x12345678);
    writeDword(L"all", 0xFFFFFFFF);
    EXPECT_EQ(L"42", getKeyValue(key(), L"d42"));
    EXPECT_EQ(L"21", getKeyValue(key(), L"d261")) << "0x105: the byte 01 loses its leading zero";
    EXPECT_EQ(L"0", getKeyValue(key(), L"d0"));
    EXPECT_EQ(L"0", getKeyValue(key(), L"d256")) << "the text ends at the zero low byte";
    EXPECT_EQ(L"305419896", getKeyValue(key(), L"big"));
    EXPECT_EQ(L"-1", getKeyValue(key(), L"all"));

    writeText(L"", L"expand", L"%TEMP%\\x", REG_EXPAND_SZ);
    EXPECT_EQ(L"%TEMP%\\x", getKeyValue(key(), L"expand")) << "not expanded";
}

// ------------------------------------------------------------------ bytes

TEST_F(RegistryTest, ByteValuesRoundTripAtEverySize) {
    for (size_t n : {size_t(1), size_t(5), size_t(1023), size_t(1024), size_t(1025), size_t(2000), size_t(65000)}) {
        Bytes data(n);
        for (size_t i = 0; i < n; ++i) data[i] = static_cast<unsigned char>(i * 7 + 3);
        ASSERT_TRUE(updateKeyEx(key(L"bin"), L"v", data)) << n;
        DWORD type = 0;
        EXPECT_EQ(data, read(L"bin", L"v", &type)) << n;
        EXPECT_EQ(static_cast<DWORD>(REG_BINARY), type);

        SAFEARRAY* out = nullptr;
        EXPECT_TRUE(getKeyValueEx(key(L"bin"), L"v", &out)) << n;
        LONG lb = -1;
        EXPECT_EQ(data, bytesOf(out, &lb)) << n;
        EXPECT_EQ(0, lb);
        SafeArrayDestroy(out);
    }
}

TEST_F(RegistryTest, GetKeyValueExLeavesTheArrayAsTheLastResizeLeftIt) {
    SAFEARRAY* mine = SafeArrayCreateVector(VT_UI1, 0, 3);
    static_cast<unsigned char*>(mine->pvData)[0] = 9;
    EXPECT_FALSE(getKeyValueEx(key(L"no key"), L"v", &mine));
    EXPECT_EQ((Bytes{9, 0, 0}), bytesOf(mine)) << "untouched when the key does not open";

    updateKey(key(), L"text", L"abc");
    EXPECT_FALSE(getKeyValueEx(key(), L"absent", &mine));
    EXPECT_EQ(Bytes(1024, 0), bytesOf(mine)) << "sized for the query that failed";

    EXPECT_TRUE(getKeyValueEx(key(), L"text", &mine)) << "any type reads as its bytes";
    Bytes text = bytesOf(mine);
    ASSERT_GE(text.size(), 3u);
    EXPECT_EQ((Bytes{'a', 'b', 'c'}), Bytes(text.begin(), text.begin() + 3));

    write(L"", L"empty", REG_BINARY, nullptr, 0);
    EXPECT_FALSE(getKeyValueEx(key(), L"empty", &mine)) << "an empty value is no data";
    SafeArrayDestroy(mine);
}

TEST_F(RegistryTest, EmptyOrUndimensionedByteArrays) {
    EXPECT_TRUE(updateKeyEx(key(), L"none", {}));
    DWORD type = 0;
    EXPECT_EQ(0u, read(L"", L"none", &type).size());
    EXPECT_EQ(static_cast<DWORD>(REG_BINARY), type);
    Bstr a(key()), b(L"x");
    BSTR pa = a.get(), pb = b.get();
    SAFEARRAY* never = nullptr;
    VARIANT_BOOL r = 1;
    EXPECT_EQ(S_OK, reg->UpdateKeyEx(kUser, &pa, &pb, &never, &r));
    EXPECT_EQ(VARIANT_FALSE, r);
}

// ------------------------------------------------------------------ enumerations

TEST_F(RegistryTest, GetAllSubKeysListsNamesOrNothing) {
    for (const wchar_t* k : {L"list\\gamma", L"list\\alpha", L"list\\beta\\deeper"}) updateKey(key(k), L"v", L"1");
    EXPECT_EQ((Strings{L"alpha", L"beta", L"gamma"}), stringsOf(listOf(&_RegistryMethods::GetAllSubKeys, key(L"list"))));

    Variant none = listOf(&_RegistryMethods::GetAllSubKeys, key(L"list\\alpha"));
    EXPECT_EQ(Strings{}, stringsOf(none)) << "a key without subkeys: an array without elements";
    Variant missing = listOf(&_RegistryMethods::GetAllSubKeys, key(L"missing"));
    EXPECT_EQ(VT_EMPTY, V_VT(&missing));
}

TEST_F(RegistryTest, GetAllKeyValuesGivesNamesAndDataOfEveryType) {
    updateKey(key(), L"text", L"hello");
    writeText(L"", L"expand", L"%PATH%", REG_EXPAND_SZ);
    Bytes bin{0, 1, 255};
    write(L"", L"binary", REG_BINARY, bin.data(), 3);
    Bytes large(3000, 0xAB);
    write(L"", L"large", REG_BINARY, large.data(), 3000);
    writeDword(L"number", 261);
    const wchar_t multi[] = L"one\0two\0";
    write(L"", L"multi", REG_MULTI_SZ, multi, sizeof multi);
    unsigned long long q = 0x0102030405060708ULL;
    write(L"", L"qword", REG_QWORD, &q, 8);
    write(L"", L"nodata", REG_BINARY, nullptr, 0);

    Variant all = listOf(&_RegistryMethods::GetAllKeyValues, key());
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&all));
    SAFEARRAY* sa = V_ARRAY(&all);
    ASSERT_EQ(2u, SafeArrayGetDim(sa));
    LONG lb1, ub1, lb2, ub2;
    SafeArrayGetLBound(sa, 1, &lb1);
    SafeArrayGetUBound(sa, 1, &ub1);
    SafeArrayGetLBound(sa, 2, &lb2);
    SafeArrayGetUBound(sa, 2, &ub2);
    EXPECT_EQ(0, lb1);
    EXPECT_EQ(1, ub1) << "first index: 0 names, 1 data";
    EXPECT_EQ(0, lb2);
    EXPECT_EQ(6, ub2) << "seven values with data; the empty one is left out";

    std::map<std::wstring, Variant> byName;
    for (LONG i = lb2; i <= ub2; ++i) {
        Variant name, data;
        LONG at[2] = {0, i};
        SafeArrayGetElement(sa, at, &name);
        at[0] = 1;
        SafeArrayGetElement(sa, at, &data);
        ASSERT_EQ(VT_BSTR, V_VT(&name));
        byName[V_BSTR(&name)] = data;
    }
    ASSERT_EQ(7u, byName.size());
    EXPECT_EQ(L"hello", std::wstring(V_BSTR(&byName[L"text"])));
    EXPECT_EQ(L"%PATH%", std::wstring(V_BSTR(&byName[L"expand"])));
    ASSERT_EQ(VT_ARRAY | VT_UI1, V_VT(&byName[L"binary"]));
    EXPECT_EQ(bin, bytesOf(V_ARRAY(&byName[L"binary"])));
    EXPECT_EQ(large, bytesOf(V_ARRAY(&byName[L"large"]))) << "data beyond the 1024-byte buffer";
    ASSERT_EQ(VT_I4, V_VT(&byName[L"number"]));
    EXPECT_EQ(261, V_I4(&byName[L"number"])) << "numbers are true numbers here";
    EXPECT_EQ((Strings{L"one", L"two"}), stringsOf(byName[L"multi"]));
    ASSERT_EQ(VT_ARRAY | VT_UI1, V_VT(&byName[L"qword"]));
    EXPECT_EQ((Bytes{8, 7, 6, 5, 4, 3, 2, 1}), bytesOf(V_ARRAY(&byName[L"qword"])));

    Variant empty = listOf(&_RegistryMethods::GetAllKeyValues, key(L"no values"));
    EXPECT_EQ(VT_EMPTY, V_VT(&empty));
    updateKey(key(L"no values\\child"), L"v", L"1");
    empty = listOf(&_RegistryMethods::GetAllKeyValues, key(L"no values"));
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&empty));
    SafeArrayGetUBound(V_ARRAY(&empty), 2, &ub2);
    EXPECT_EQ(-1, ub2);
}

// ------------------------------------------------------------------ deleting

TEST_F(RegistryTest, DeleteAllKeyValuesDeletesEveryNamedValue) {
    for (const wchar_t* n : {L"one", L"two", L"three"}) updateKey(key(L"k"), n, L"x");
    writeText(L"k", L"", L"unnamed");
    updateKey(key(L"k\\child"), L"v", L"1");
    EXPECT_TRUE(onKey(&_RegistryMethods::DeleteAllKeyValues, key(L"k")));
    for (const wchar_t* n : {L"one", L"two", L"three"}) EXPECT_EQ(0u, read(L"k", n).size()) << n;
    EXPECT_FALSE(read(L"k", L"").empty()) << "the default value has no name and stays";
    EXPECT_TRUE(exists(L"k\\child"));
    EXPECT_FALSE(read(L"k\\child", L"v").empty()) << "subkeys keep theirs";
    EXPECT_FALSE(onKey(&_RegistryMethods::DeleteAllKeyValues, key(L"missing")));
}

TEST_F(RegistryTest, DeleteKeyAndDeleteKeyValue) {
    updateKey(key(L"leaf"), L"v", L"1");
    updateKey(key(L"leaf"), L"w", L"2");
    EXPECT_TRUE(deleteKeyValue(key(L"leaf"), L"v"));
    EXPECT_FALSE(deleteKeyValue(key(L"leaf"), L"v")) << "already gone";
    EXPECT_FALSE(deleteKeyValue(key(L"missing"), L"v"));
    EXPECT_EQ(L"2", getKeyValue(key(L"leaf"), L"w"));
    EXPECT_TRUE(onKey(&_RegistryMethods::DeleteKey, key(L"leaf")));
    EXPECT_FALSE(exists(L"leaf"));
    EXPECT_FALSE(onKey(&_RegistryMethods::DeleteKey, key(L"leaf")));
}

// Where the process cannot count its handles (Wine), a new handle takes the
// lowest free slot: a handle left open by the members shows as a higher one.
unsigned long long handleMark() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count) return count;
    HANDLE probe = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(probe);
    return reinterpret_cast<ULONG_PTR>(probe);
}

TEST_F(RegistryTest, NoMemberLeavesAHandleOpen) {
    auto everyMember = [&] {
        updateKey(key(L"h"), L"v", L"x");
        getKeyValue(key(L"h"), L"v");
        getKeyValue(key(L"h"), L"absent");
        updateKeyEx(key(L"h"), L"b", {1, 2, 3});
        SAFEARRAY* out = nullptr;
        getKeyValueEx(key(L"h"), L"b", &out);
        SafeArrayDestroy(out);
        getKeyValueEx(key(L"h"), L"absent", &out);
        SafeArrayDestroy(out);
        listOf(&_RegistryMethods::GetAllSubKeys, key());
        listOf(&_RegistryMethods::GetAllKeyValues, key(L"h"));
        deleteKeyValue(key(L"h"), L"b");
        onKey(&_RegistryMethods::DeleteAllKeyValues, key(L"h"));
        onKey(&_RegistryMethods::DeleteKey, key(L"h"));
    };
    everyMember();   // whatever the platform opens once for good
    const unsigned long long before = handleMark();
    for (int i = 0; i < 20; ++i) everyMember();
    EXPECT_EQ(before, handleMark());
}

// ------------------------------------------------------------------ late bound

TEST_F(RegistryTest, LateBoundAsScriptsCallIt) {
    ComPtr<IDispatch> d = reg.as<IDispatch>(IID_IDispatch);
    Variant k(key(L"script").c_str()), name(L"bytes"), values = longArray({1, 2, 250});
    CallResult put;
    call(put, d.get(), L"UpdateKeyEx", DISPATCH_METHOD,
         {vLong(static_cast<long>(kUser)), vRef(&k), vRef(&name), vRef(&values)});
    ASSERT_EQ(S_OK, put.hr);
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&put.value));

    Variant got;   // an Empty variable receives the bytes
    CallResult get;
    call(get, d.get(), L"GetKeyValueEx", DISPATCH_METHOD,
         {vLong(static_cast<long>(kUser)), vRef(&k), vRef(&name), vRef(&got)});
    ASSERT_EQ(S_OK, get.hr);
    EXPECT_EQ(VARIANT_TRUE, V_BOOL(&get.value));
    EXPECT_EQ((std::vector<long>{1, 2, 250}), arrayLongs(got));

    CallResult text;
    Variant missing(L"absent");
    call(text, d.get(), L"GetKeyValue", DISPATCH_METHOD, {vLong(static_cast<long>(kUser)), vRef(&k), vRef(&missing)});
    ASSERT_EQ(S_OK, text.hr);
    EXPECT_EQ(VT_BSTR, V_VT(&text.value));
    EXPECT_EQ(0u, SysStringLen(V_BSTR(&text.value)));
}
