// The string module (paths, text, character classes, Variants, resource
// strings, settings files) and StringMethods through the DLL.
#include "support.h"

#include "frame/errors.h"
#include "text/strings.h"

#include <string>
#include <vector>

using namespace tova;
using namespace tova::strings;
using test::CallResult;

namespace {

const HRESULT kError5 = errorResult(kInvalidArgument);

std::wstring str(const VARIANT& v) { return V_VT(&v) == VT_BSTR && V_BSTR(&v) ? V_BSTR(&v) : L""; }
VARIANT_BOOL boolOf(const VARIANT& v) { return V_VT(&v) == VT_BOOL ? V_BOOL(&v) : 12345; }
long longOf(const VARIANT& v) { return V_VT(&v) == VT_I4 ? V_I4(&v) : 12345; }

Variant typed(VARTYPE vt) {
    Variant v;
    V_VT(&v) = vt;
    return v;
}

Variant missing() {
    Variant v;
    *static_cast<VARIANT*>(&v) = test::vMissing();
    return v;
}

// A one-dimensional array of `vt` from `lower`; the items are converted to vt.
Variant array(VARTYPE vt, std::vector<Variant> items, long lower = 0) {
    SAFEARRAYBOUND b{static_cast<ULONG>(items.size()), lower};
    Variant v = typed(VT_ARRAY | vt);
    V_ARRAY(&v) = SafeArrayCreate(vt, 1, &b);
    for (LONG i = 0; i < static_cast<LONG>(items.size()); ++i) {
        Variant c;
        LONG index = lower + i;
        if (vt != VT_VARIANT) VariantChangeType(&c, &items[i], 0, vt);
        SafeArrayPutElement(V_ARRAY(&v), &index,
                            vt == VT_VARIANT ? static_cast<void*>(&items[i])
                            : vt == VT_BSTR  ? static_cast<void*>(V_BSTR(&c))
                                             : &V_I4(&c));
    }
    return v;
}

Variant texts(std::initializer_list<const wchar_t*> items, long lower = 0) {
    std::vector<Variant> v;
    for (const wchar_t* s : items) v.emplace_back(s);
    return array(VT_BSTR, std::move(v), lower);
}

Variant longs(std::initializer_list<long> items, long lower = 0) {
    std::vector<Variant> v;
    for (long x : items) v.emplace_back(x);
    return array(VT_I4, std::move(v), lower);
}

// The elements of a zero-based array of Strings or Variants holding Strings.
std::vector<std::wstring> textsOf(SAFEARRAY* sa) {
    std::vector<std::wstring> out;
    LONG lb = 1, ub = -1;
    SafeArrayGetLBound(sa, 1, &lb);
    SafeArrayGetUBound(sa, 1, &ub);
    EXPECT_EQ(0, lb);
    VARTYPE vt = VT_EMPTY;
    SafeArrayGetVartype(sa, &vt);
    for (LONG i = lb; i <= ub; ++i) {
        Variant e;
        SafeArrayGetElement(sa, &i, vt == VT_VARIANT ? static_cast<void*>(&e) : &V_BSTR(&e));
        out.push_back(V_BSTR(&e) ? V_BSTR(&e) : L"");
    }
    return out;
}

// A settings file in the temporary folder, deleted at the end of the test.
struct TempIni {
    std::wstring path;
    explicit TempIni(const char* content) {
        static int counter = 0;
        wchar_t dir[MAX_PATH];
        GetTempPathW(MAX_PATH, dir);
        path = std::wstring(dir) + L"tova_strings_" + std::to_wstring(GetCurrentProcessId()) + L"_" +
               std::to_wstring(++counter) + L".ini";
        HANDLE f = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        WriteFile(f, content, static_cast<DWORD>(strlen(content)), &written, nullptr);
        CloseHandle(f);
    }
    ~TempIni() { DeleteFileW(path.c_str()); }
};

// A resource reader: ReadString(ResourceID, LocaleID) by name. Id 1 gives a text
// with placeholders, id 2 fails with run-time error 321, id 3 with 0x80040201;
// the rest give "id/locale".
class Reader : public IDispatch {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
        *ppv = riid == IID_IUnknown || riid == IID_IDispatch ? this : nullptr;
        return *ppv ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }   // lives on the test's stack
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* id) override {
        *id = _wcsicmp(names[0], L"ReadString") == 0 ? 7 : DISPID_UNKNOWN;
        return *id == 7 ? S_OK : DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT* result, EXCEPINFO* ex,
                        UINT*) override {
        if (id != 7 || p->cArgs != 2) return DISP_E_BADPARAMCOUNT;
        const long resource = V_I4(&p->rgvarg[1]), locale = V_I4(&p->rgvarg[0]);
        if (resource == 2 || resource == 3) {
            ex->scode = resource == 2 ? MAKE_HRESULT(1, FACILITY_CONTROL, 321) : static_cast<HRESULT>(0x80040201);
            ex->bstrSource = SysAllocString(L"Reader");
            ex->bstrDescription = SysAllocString(L"no such string");
            return DISP_E_EXCEPTION;
        }
        Variant(resource == 1 ? L"Hello <APPTITLE><CR>"
                              : (std::to_wstring(resource) + L"/" + std::to_wstring(locale)).c_str())
            .detachTo(result);
        return S_OK;
    }
};

}  // namespace

// ------------------------------------------------------------------ paths

TEST(Paths, DriveAndPath) {
    EXPECT_EQ(L"C", fileDrive(L"C:\\a\\b.txt"));
    EXPECT_EQ(L"", fileDrive(L"\\\\server\\share"));
    EXPECT_EQ(L"C:\\a", filePath(L"C:\\a\\b.txt"));
    EXPECT_EQ(L"C:\\a", filePath(L"C:\\a\\"));
    EXPECT_EQ(L"", filePath(L"\\x"));
    EXPECT_EQ(L"", filePath(L""));
    EXPECT_EQ(kError5, guard([] { filePath(L"readme.txt"); })) << "no backslash: deliberately unguarded";
}

TEST(Paths, TitleExtensionAndBackup) {
    EXPECT_EQ(L"b.txt", fileTitle(L"C:\\a\\b.txt", true));
    EXPECT_EQ(L"a", fileTitle(L"C:\\x\\a.b.c", false)) << "cut at the first dot";
    EXPECT_EQ(L"", fileTitle(L".profile", false));
    EXPECT_EQ(L"", fileTitle(L"C:\\x\\", true));
    EXPECT_EQ(L"C:\\readme", fileExtension(L"C:\\readme")) << "no dot: the whole string";
    EXPECT_EQ(L"d\\file", fileExtension(L"C:\\dir.d\\file")) << "the last dot anywhere";
    EXPECT_EQ(L"report.BAK", backupFilename(L"C:\\data\\report.txt", L"BAK"));
    EXPECT_EQ(L"report.old", backupFilename(L"C:\\data\\report.txt", L".old"));
    EXPECT_EQ(L"report", backupFilename(L"C:\\data\\report.txt", L""));
    EXPECT_EQ(L"", backupFilename(L"", L"BAK"));
}

TEST(Paths, TrimDirString) {
    const std::wstring path = L"C:\\Program Files\\Tools\\data\\report.txt";
    EXPECT_EQ(L"C:\\...\\report.txt", trimDirString(path, 20));
    EXPECT_EQ(path, trimDirString(path, static_cast<long>(path.size()))) << "not longer: unchanged";
    EXPECT_EQ(L"C:\\...\\a.txt", trimDirString(L"C:\\a.txt", 3)) << "the title is kept whole";
    // Ending in "\": the last MaxLength - 6 characters are searched.
    EXPECT_EQ(L"C:\\...\\", trimDirString(L"C:\\aaaa\\bbbb\\", 10));
    EXPECT_EQ(L"C:\\...\\bbbb\\", trimDirString(L"C:\\aaaa\\bbbb\\", 12));
    EXPECT_EQ(L"C:\\...", trimDirString(L"C:\\aaaa\\bbbb\\", 3));
    EXPECT_EQ(L"abc...", trimDirString(L"abcdefgh", 3)) << "no backslash at all";
    EXPECT_EQ(L"", trimDirString(L"", -1));
}

// ------------------------------------------------------------------ text

TEST(Text, ProperCaseFormatHexAccessKey) {
    EXPECT_EQ(L"Hello World", properCase(L"hELLO wORLD"));
    EXPECT_EQ(L"O'neil-smith Jr", properCase(L"o'neil-smith jr")) << "only spaces start words";
    EXPECT_EQ(L"\x00C9t\x00E9 \x00C0", properCase(L"\x00C9T\x00C9 \x00E0")) << "locale case mapping";
    EXPECT_EQ(kError5, guard([] { properCase(L""); }));
    EXPECT_EQ(kError5, guard([] { properCase(L"abc "); }));

    EXPECT_EQ(L"000000FF", formatHex(255, 8));
    EXPECT_EQ(L"FF", formatHex(255, 0));
    EXPECT_EQ(L"FFFFFFFF", formatHex(-1, 4)) << "two's complement";
    EXPECT_EQ(L"12345", formatHex(74565, 2)) << "never truncates";

    EXPECT_EQ(L"A", accessKey(L"Save &As"));
    EXPECT_EQ(L"", accessKey(L"Fish && Chips"));
    EXPECT_EQ(L"F", accessKey(L"&Open &File")) << "the last marker wins";
    EXPECT_EQ(L"x", accessKey(L"E&xit&")) << "a trailing & is skipped";
    EXPECT_EQ(L"b", accessKey(L"&&a&b")) << "as it stands";
}

// ------------------------------------------------------------------ character classes

TEST(CharacterClasses, SetsAndCase) {
    EXPECT_FALSE(isCharset(L"a", L"ABC", 0));
    EXPECT_TRUE(isCharset(L"a", L"ABC", 1));
    EXPECT_TRUE(isCharset(L"Bxyz", L"ABC", 0)) << "only the first character counts";
    EXPECT_FALSE(isCharset(L"", L"ABC", 0));
    EXPECT_FALSE(isCharset(L"a", L"", 1));
    EXPECT_FALSE(isCharset(L"a", L"a", 2)) << "unknown comparison";
    EXPECT_TRUE(isAlpha(L"q"));
    EXPECT_FALSE(isAlpha(L"\x00E9")) << "A-Z and a-z only";
    EXPECT_FALSE(isDigit(L"\x0663"));
    EXPECT_TRUE(isHexDigit(L"f"));
    EXPECT_FALSE(isHexDigit(L"g"));
    EXPECT_TRUE(isAlphaDigit(L"z") && isAlphaDigit(L"0"));
    EXPECT_FALSE(isAlphaDigit(L"_"));
    for (const wchar_t* s : {L" ", L"\t", L"\r", L"\n", L"\v", L"\f"}) EXPECT_TRUE(isSpace(s));
    EXPECT_FALSE(isSpace(L""));
    EXPECT_FALSE(isSpace(L"\x00A0"));
    EXPECT_TRUE(isLowerCase(L"a"));
    EXPECT_FALSE(isLowerCase(L"A"));
    EXPECT_FALSE(isUpperCase(L"\x00E9"));
    for (const wchar_t* s : {L"1", L"#", L""}) EXPECT_TRUE(isLowerCase(s) && isUpperCase(s)) << "no case: both";
    // These depend on the wildcard matcher.
    EXPECT_TRUE(strings::isLike(L"ABC", L"a*", 1));
    EXPECT_FALSE(strings::isLike(L"ABC", L"a*", 0));
}

// ------------------------------------------------------------------ Variants

TEST(Variants, BoundsAndTypes) {
    long l = 9, u = 9;
    Variant empty, null = typed(VT_NULL), number(5L), a = longs({1, 2, 3, 4}, 2), s(L"x"), sa = texts({L"a"});
    for (Variant* v : {&empty, &null, &number}) EXPECT_FALSE(getArrayBounds(v, l, u));
    EXPECT_TRUE(l == 0 && u == 0);
    EXPECT_TRUE(getArrayBounds(&a, l, u));
    EXPECT_TRUE(l == 2 && u == 5);
    SAFEARRAY* never = nullptr;  // a typed array variable never dimensioned, by reference
    VARIANT ref;
    V_VT(&ref) = VT_BYREF | VT_ARRAY | VT_I4;
    V_ARRAYREF(&ref) = &never;
    EXPECT_FALSE(getArrayBounds(&ref, l, u));

    VARIANT sRef = test::vRef(&s);
    EXPECT_TRUE(isString(&sRef));
    EXPECT_FALSE(isString(&sa)) << "an array of strings is not a string";
    EXPECT_TRUE(isVariantValid(&number, VT_I4, false, false));
    EXPECT_FALSE(isVariantValid(&number, VT_I2, false, false));
    EXPECT_FALSE(isVariantValid(&empty, VT_EMPTY, false, false));
    EXPECT_TRUE(isVariantValid(&empty, VT_EMPTY, false, true));
    EXPECT_FALSE(isVariantValid(&sa, VT_ARRAY | VT_BSTR, false, false));
    EXPECT_TRUE(isVariantValid(&sa, VT_ARRAY | VT_BSTR, true, false));
    EXPECT_FALSE(isVariantValid(&sa, VT_BSTR, true, false)) << "the array flag is part of the type";
    long x = 1;
    VARIANT byref = test::vLongRef(&x);
    EXPECT_TRUE(isVariantValid(&byref, VT_I4, false, false)) << "VT_BYREF is not";
    Variant gone = missing();
    EXPECT_FALSE(isVariantValid(&gone, VT_ERROR, true, true));
}

TEST(Variants, BinaryRecordSizes) {
    const std::pair<VARTYPE, long> scalars[] = {{VT_I2, 4},   {VT_I4, 6},    {VT_R4, 6},      {VT_R8, 10},
                                                {VT_CY, 10},  {VT_DATE, 10}, {VT_BOOL, 4},    {VT_UI1, 3},
                                                {VT_ERROR, 6}, {VT_DECIMAL, 16}, {VT_EMPTY, 0}, {VT_NULL, 0},
                                                {VT_UI4, 0}};
    for (auto [vt, size] : scalars) {
        Variant v = typed(vt);
        EXPECT_EQ(size, sizeOfVariant(&v)) << vt;
    }
    Variant abc(L"abc"), accent(L"\x00E9"), shortish(std::wstring(65534, L'x').c_str()),
        longer(std::wstring(65535, L'x').c_str());
    EXPECT_EQ(7, sizeOfVariant(&abc));
    EXPECT_EQ(5, sizeOfVariant(&accent)) << "one ANSI byte";
    EXPECT_EQ(2 + 2 + 65534, sizeOfVariant(&shortish));
    EXPECT_EQ(2 + 6 + 65535, sizeOfVariant(&longer)) << "FF FF and a 4-byte length";
    Reader reader;
    Variant object(static_cast<IDispatch*>(&reader));
    EXPECT_EQ(0, sizeOfVariant(&object)) << "the writer cannot write objects";
    long x = 1;
    VARIANT byref = test::vLongRef(&x);
    EXPECT_EQ(6, sizeOfVariant(&byref));

    Variant l = longs({1, 2, 3}), s = texts({L"ab", L""}), none = array(VT_I4, {}), never = typed(VT_ARRAY | VT_I4);
    EXPECT_EQ(2 + 2 + 8 + 12, sizeOfVariant(&l));
    EXPECT_EQ(2 + 2 + 8 + 4 + 2, sizeOfVariant(&s));
    EXPECT_EQ(2 + 2 + 8, sizeOfVariant(&none));
    EXPECT_EQ(4, sizeOfVariant(&never));
    std::vector<Variant> items(4);
    items[0] = Variant(1L);
    items[1] = Variant(L"ab");
    items[3] = longs({7});
    Variant v = array(VT_VARIANT, items);
    EXPECT_EQ(2 + 2 + 8 + 6 + 6 + 2 + (2 + 2 + 8 + 4), sizeOfVariant(&v)) << "each element with its tag";
    SAFEARRAYBOUND b[2] = {{2, 0}, {3, 1}};
    Variant twoD = typed(VT_ARRAY | VT_I2);
    V_ARRAY(&twoD) = SafeArrayCreate(VT_I2, 2, b);
    EXPECT_EQ(2 + 2 + 16 + 12, sizeOfVariant(&twoD));
    items[2] = object;
    Variant bad = array(VT_VARIANT, items);
    EXPECT_EQ(0, sizeOfVariant(&bad));
}

// ------------------------------------------------------------------ resource strings

TEST(ResourceStrings, IdentifiersAndPlaceholders) {
    Variant id(L"<NAME>"), value(L"Ann"), version = longs({1, 2});
    EXPECT_EQ(L"Hello Ann\r\n1.2", convResString(L"Hello <name><CR><version>", &id, &value, nullptr, &version));
    EXPECT_EQ(L"a\tb <cr> <tab>", convResString(L"a<TAB>b <cr> <tab>", nullptr, nullptr, nullptr, nullptr))
        << "<CR> and <TAB> are exact";
    Variant ids = texts({L"x", L"yy"}, 1), vals = texts({L"yy", L"z"}, 1), shifted = texts({L"1", L"2"});
    EXPECT_EQ(L"zz", convResString(L"xX", &ids, &vals, nullptr, nullptr)) << "in order, case-insensitive";
    EXPECT_EQ(L"xX", convResString(L"xX", &ids, &shifted, nullptr, nullptr)) << "bounds differ: nothing";
    Variant empty, gone = missing(), name(L"App"), number(5L), text(L"2.0");
    EXPECT_EQ(L"abc", convResString(L"abc", &empty, &value, nullptr, nullptr));
    EXPECT_EQ(L"abc", convResString(L"abc", &gone, &gone, &gone, &gone));
    EXPECT_EQ(L"App <Version>", convResString(L"<apptitle> <Version>", nullptr, nullptr, &name, &number));
    EXPECT_EQ(L"<APPTITLE> 2.0", convResString(L"<APPTITLE> <VERSION>", nullptr, nullptr, &number, &text));
    Variant null = typed(VT_NULL);
    EXPECT_EQ(errorResult(94), guard([&] { convResString(L"a", &null, &value, nullptr, nullptr); }));
    EXPECT_EQ(errorResult(kTypeMismatch), guard([&] { convResString(L"a", &ids, &value, nullptr, nullptr); }));
}

TEST(ResourceStrings, FromModuleFilesAndHandles) {
    const wchar_t* file = L"C:\\windows\\system32\\user32.dll";
    HMODULE m = LoadLibraryExW(file, nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    ASSERT_TRUE(m);
    // The platform's reading of the first string that is not first in its block of 16.
    long id = 1;
    wchar_t buf[512];
    int n = 0;
    for (; id < 65536; ++id)
        if (id % 16 && (n = LoadStringW(m, static_cast<UINT>(id), buf, 512)) > 0) break;
    ASSERT_GT(n, 0);
    const std::wstring expected(buf, n);
    EXPECT_EQ(expected, loadStringResource(m, id, 0));
    EXPECT_EQ(L"", loadStringResource(m, 65535, 0));

    Variant name(file), find(expected.substr(0, 1).c_str()), with(L"<>");
    EXPECT_EQ(expected, readResString(id, 1033, &name, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(L"<>" + expected.substr(1), readResString(id, 0, &name, &find, &with, nullptr, nullptr));
    Variant handle = typed(VT_I8);  // above 4 GB in a 64-bit process
    V_I8(&handle) = reinterpret_cast<LONG_PTR>(m);
    EXPECT_EQ(expected, readResString(id, 0, &handle, nullptr, nullptr, nullptr, nullptr));
    FreeLibrary(m);
    Variant nowhere(L"C:\\no\\such\\file.dll"), none(L""), null = typed(VT_NULL), empty, arr = longs({1});
    for (Variant* source : {&nowhere, &none, &null, &empty, &arr})
        EXPECT_EQ(L"", readResString(id, 0, source, &find, &with, nullptr, nullptr));
}

TEST(ResourceStrings, FromAReaderObject) {
    Reader reader;
    Variant source(static_cast<IDispatch*>(&reader)), app(L"Demo"), nothing(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(L"Hello Demo\r\n", readResString(1, 0, &source, nullptr, nullptr, &app, nullptr));
    EXPECT_EQ(L"5/1033", readResString(5, 1033, &source, nullptr, nullptr, nullptr, nullptr)) << "id, locale";
    EXPECT_EQ(errorResult(321), guard([&] { readResString(2, 0, &source, nullptr, nullptr, nullptr, nullptr); }));
    EXPECT_EQ(L"Reader", test::lastError().source) << "the reader's error passes through";
    EXPECT_EQ(static_cast<HRESULT>(0x80040201),
              guard([&] { readResString(3, 0, &source, nullptr, nullptr, nullptr, nullptr); }));
    EXPECT_EQ(L"no such string", test::lastError().description);
    EXPECT_EQ(L"", readResString(1, 0, &nothing, nullptr, nullptr, nullptr, nullptr));
}

// ------------------------------------------------------------------ settings files

TEST(SettingsFiles, StringsAndIntegers) {
    TempIni ini("[s]\r\nname=Ann\r\nn=42\r\nword=abc\r\n");
    EXPECT_EQ(L"Ann", iniReadString(ini.path, L"s", L"name", L"d"));
    EXPECT_EQ(L"d", iniReadString(ini.path, L"s", L"missing", L"d"));
    EXPECT_EQ(L"", iniReadString(ini.path, L"", L"name", L"d")) << "an empty name: the empty result";
    EXPECT_EQ(42, iniReadInteger(ini.path, L"s", L"n", 7));
    EXPECT_EQ(-3, iniReadInteger(ini.path, L"s", L"missing", -3));
    EXPECT_EQ(0, iniReadInteger(ini.path, L"s", L"word", 7)) << "not a number";
    EXPECT_EQ(7, iniReadInteger(L"", L"s", L"n", 7));

    EXPECT_TRUE(iniWriteString(ini.path, L"t", L"k", L"caf\x00E9"));
    EXPECT_EQ(L"caf\x00E9", iniReadString(ini.path, L"t", L"k", L"")) << "through the ANSI code page";
    EXPECT_TRUE(iniWriteString(ini.path, L"t", L"k", L""));
    EXPECT_EQ(L"", iniReadString(ini.path, L"t", L"k", L"gone")) << "an empty value keeps the key";
    EXPECT_FALSE(iniWriteString(ini.path, L"t", L"", L"v"));
    const std::wstring longValue(1500, L'v');
    EXPECT_TRUE(iniWriteString(ini.path, L"t", L"long", longValue));
    EXPECT_EQ(longValue.substr(0, 1023), iniReadString(ini.path, L"t", L"long", L""));
}

TEST(SettingsFiles, ReadSection) {
    TempIni ini("[s]\r\na=1\r\n;note\r\nb=x=y\r\nbare\r\n[empty]\r\n");
    SAFEARRAY* keys = SafeArrayCreateVector(VT_BSTR, 0, 5);  // erased first
    SAFEARRAY* values = nullptr;
    EXPECT_TRUE(iniReadSection(ini.path, L"s", &keys, &values));
    // Wine's profile functions leave ";note" out of the section (elsewhere it is a
    // line without "=", "" in both arrays at its index); "bare" shows that case.
    EXPECT_EQ((std::vector<std::wstring>{L"a", L"b", L""}), textsOf(keys));
    EXPECT_EQ((std::vector<std::wstring>{L"1", L"x=y", L""}), textsOf(values));
    EXPECT_FALSE(iniReadSection(ini.path, L"empty", &keys, &values));
    EXPECT_TRUE(keys == nullptr && values == nullptr) << "erased";
}

TEST(SettingsFiles, WriteSectionRoundTrip) {
    TempIni ini("[s]\r\nold=1\r\n");
    Variant keys = texts({L"a", L"b"}, 1), values = texts({L"1", L"x=y", L"extra"}, 1);
    EXPECT_TRUE(iniWriteSection(ini.path, L"s", &keys, &values));
    SAFEARRAY *k = nullptr, *v = nullptr;
    EXPECT_TRUE(iniReadSection(ini.path, L"s", &k, &v));
    EXPECT_EQ((std::vector<std::wstring>{L"a", L"b"}), textsOf(k)) << "the whole section replaced";
    EXPECT_EQ((std::vector<std::wstring>{L"1", L"x=y"}), textsOf(v));
    SafeArrayDestroy(k);
    SafeArrayDestroy(v);

    Variant one(L"solo"), num(5L), twoKeys = texts({L"a", L"b"}), offset = texts({L"1", L"2"}, 1);
    EXPECT_TRUE(iniWriteSection(ini.path, L"t", &one, &num)) << "single values wrapped into arrays";
    EXPECT_EQ(L"5", iniReadString(ini.path, L"t", L"solo", L""));
    EXPECT_FALSE(iniWriteSection(ini.path, L"u", &twoKeys, &one)) << "fewer values than keys";
    EXPECT_EQ(L"-", iniReadString(ini.path, L"u", L"a", L"-")) << "nothing written";
    EXPECT_EQ(errorResult(kSubscriptOutOfRange), guard([&] { iniWriteSection(ini.path, L"u", &twoKeys, &offset); }))
        << "values are read at the keys' indices";
    Reader reader;
    Variant object(static_cast<IDispatch*>(&reader));
    EXPECT_EQ(errorResult(kTypeMismatch), guard([&] { iniWriteSection(ini.path, L"u", &one, &object); }));
}

// ------------------------------------------------------------------ through the DLL

class StringMethodsClass : public ::testing::Test {
protected:
    void SetUp() override {
        object = test::create<_StringMethods>(CLSID_StringMethods, IID__StringMethods);
        ASSERT_TRUE(object);
        object->QueryInterface(IID_IDispatch, dispatch.putVoid());
    }
    Variant call(const wchar_t* name, std::vector<VARIANT> args, HRESULT expected = S_OK) {
        CallResult r;
        test::call(r, dispatch.get(), name, DISPATCH_METHOD, std::move(args));
        EXPECT_EQ(expected, r.hr) << name;
        if (r.hr == DISP_E_EXCEPTION) EXPECT_EQ(kError5, r.excep.scode);
        return std::move(r.value);
    }
    ComPtr<_StringMethods> object;
    ComPtr<IDispatch> dispatch;
};

TEST_F(StringMethodsClass, ConvertStringWritesBack) {
    Bstr text(L"hello wide world"), result;
    BSTR own = text.detach();
    EXPECT_EQ(S_OK, object->ConvertString(&own, result.put()));
    text = Bstr::attach(own);  // the member replaced the caller's string
    EXPECT_EQ(L"Hello Wide World", text.str());
    EXPECT_EQ(L"Hello Wide World", result.str());
    Bstr bad(L"trailing ");
    BSTR raw = bad.get();
    EXPECT_EQ(kError5, object->ConvertString(&raw, result.put()));
    EXPECT_EQ(L"trailing ", std::wstring(raw)) << "unchanged on failure";
    EXPECT_EQ(L"TOVA200", test::lastError().source);

    Variant variable(L"late bound"), empty(L"");
    call(L"ConvertString", {test::vRef(&variable)});
    EXPECT_EQ(L"Late Bound", std::wstring(V_BSTR(&variable)));
    call(L"ConvertString", {test::vRef(&empty)}, DISP_E_EXCEPTION);
    call(L"GetFilePath", {Variant(L"x")}, DISP_E_EXCEPTION);
}

TEST_F(StringMethodsClass, OptionalArgumentsLeftOut) {
    Variant report(L"C:\\data\\report.txt"), none(L"");
    EXPECT_EQ(L"report.BAK", str(call(L"GetBackupFilename", {report}))) << "BAK";
    EXPECT_EQ(L"report.BAK", str(call(L"GetBackupFilename", {report, test::vMissing()})));
    EXPECT_EQ(L"report", str(call(L"GetBackupFilename", {report, none})));
    Bstr early;
    EXPECT_EQ(S_OK, object->GetBackupFilename(&V_BSTR(&report), nullptr, early.put()));
    EXPECT_EQ(L"report.BAK", early.str());
    // IsLike compares as text unless told otherwise (depends on the wildcard matcher); IsCharset exactly.
    Variant abc(L"ABC"), pattern(L"a*"), a(L"a");
    EXPECT_EQ(VARIANT_TRUE, boolOf(call(L"IsLike", {abc, pattern})));
    EXPECT_EQ(VARIANT_FALSE, boolOf(call(L"IsLike", {abc, pattern, test::vLong(0)})));
    EXPECT_EQ(VARIANT_FALSE, boolOf(call(L"IsCharset", {a, abc})));
}

TEST_F(StringMethodsClass, SettingsAndVariantsThroughScriptVariables) {
    TempIni ini("[s]\r\na=1\r\nb=2\r\n");
    Variant file(ini.path.c_str()), section(L"s"), keys, values;
    EXPECT_EQ(VARIANT_TRUE, boolOf(call(L"INIReadSection", {file, section, test::vRef(&keys), test::vRef(&values)})));
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&keys)) << "Empty variables receive Variant arrays";
    EXPECT_EQ((std::vector<std::wstring>{L"a", L"b"}), textsOf(V_ARRAY(&keys)));
    EXPECT_EQ((std::vector<std::wstring>{L"1", L"2"}), textsOf(V_ARRAY(&values)));

    Variant newKeys = texts({L"x"}), newValues = longs({9}), x(L"x");
    EXPECT_EQ(VARIANT_TRUE,
              boolOf(call(L"INIWriteSection", {file, section, test::vRef(&newKeys), test::vRef(&newValues)})));
    EXPECT_EQ(L"9", str(call(L"INIReadString", {file, section, x})));
    EXPECT_EQ(-1, longOf(call(L"INIReadInteger", {file, section, Variant(L"a"), test::vLong(-1)})))
        << "the old keys are gone";

    Variant arr = longs({1, 2});
    EXPECT_EQ(2 + 2 + 8 + 8, longOf(call(L"SizeOfVariant", {test::vRef(&arr)})));
    EXPECT_EQ(VARIANT_TRUE,
              boolOf(call(L"IsVariantValid", {test::vRef(&arr), test::vLong(VT_ARRAY | VT_I4), test::vLong(-1)})));
}
