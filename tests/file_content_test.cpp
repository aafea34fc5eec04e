// FileMethods content members: the encoding layer directly (every encoding
// byte-exact both ways, Auto detection, invalid UTF-8, refusals, lines), then
// the members on files: text, lines, appends, counts, byte slices,
// comparison and digests.
#include "file_fixtures.h"

#include "files/text_encoding.h"

#include <psapi.h>
#include <winioctl.h>

using namespace test;
using namespace tova::files;

namespace {

std::string hex(const char* h) {
    std::string out;
    for (; h[0] && h[1]; h += (h[2] == ' ' ? 3 : 2)) out += static_cast<char>(std::stoi(std::string(h, 2), nullptr, 16));
    return out;
}

// Text with a character of every UTF-8 length, a surrogate pair, NUL and every break.
const std::wstring kText(L"A\u00E9\u20AC\u65E5\u672C\U0001F600\0\r\nb\rc\n", 14);

struct Encoded {
    long encoding;
    std::string bytes;   // with the mark the encoding writes
};

const Encoded kEncoded[] = {
    {tovaEncodingUTF8, hex("41C3A9E282ACE697A5E69CACF09F9880000D0A620D630A")},
    {tovaEncodingUTF8BOM, hex("EFBBBF41C3A9E282ACE697A5E69CACF09F9880000D0A620D630A")},
    {tovaEncodingUTF16, hex("FFFE4100E900AC20E5652C673DD800DE00000D000A0062000D0063000A00")},
    {tovaEncodingUTF16BE, hex("FEFF004100E920AC65E5672CD83DDE000000000D000A0062000D0063000A")},
};

TEST(TextEncoding, EveryUnicodeEncodingIsByteExactBothWays) {
    for (const Encoded& e : kEncoded) {
        std::string bytes;
        EXPECT_TRUE(encodeText(kText, e.encoding, true, bytes)) << e.encoding;
        EXPECT_EQ(e.bytes, bytes) << e.encoding;
        EXPECT_EQ(kText, decodeText(e.bytes.data(), e.bytes.size(), e.encoding)) << e.encoding;
        EXPECT_EQ(kText, decodeText(e.bytes.data(), e.bytes.size(), tovaEncodingAuto)) << "Auto " << e.encoding;
    }
}

TEST(TextEncoding, CodePagesHoldWhatTheyCanAndRefuseTheRest) {
    if (GetACP() != 1252 || (GetOEMCP() != 437 && GetOEMCP() != 850)) GTEST_SKIP() << "needs code pages 1252 and 437/850";
    const struct {
        long encoding;
        std::wstring text;
        const char* bytes;   // nullptr: refused
    } cases[] = {
        {tovaEncodingANSI, std::wstring(L"A\u00E9\u20AC\0\r\n", 6), "41E98000" "0D0A"},
        {tovaEncodingOEM, L"A\u00E9\r", "41820D"},
        {tovaEncodingANSI, L"\u03A9", nullptr},        // no best fit to "O", no "?"
        {tovaEncodingANSI, L"\u65E5", nullptr},
        {tovaEncodingOEM, L"\u20AC", nullptr},
        {tovaEncodingUTF8, L"a\xD800", nullptr},       // a lone surrogate
        {tovaEncodingUTF8, L"\xDC00" L"a", nullptr},
    };
    for (const auto& c : cases) {
        std::string bytes;
        EXPECT_EQ(c.bytes != nullptr, encodeText(c.text, c.encoding, true, bytes)) << c.encoding;
        if (!c.bytes) continue;
        EXPECT_EQ(hex(c.bytes), bytes);
        EXPECT_EQ(c.text, decodeText(bytes.data(), bytes.size(), c.encoding));
    }
}

TEST(TextEncoding, DecodingDetectsAndReplaces) {
    const struct {
        const char* bytes;
        long encoding;
        std::wstring text;
    } cases[] = {
        {"636166E9", tovaEncodingAuto, L"caf\u00E9"},                  // lone E9: not UTF-8, so ANSI
        {"636166C3A9", tovaEncodingAuto, L"caf\u00E9"},                // BOM-less UTF-8
        {"", tovaEncodingAuto, L""},
        {"EFBBBF", tovaEncodingAuto, L""},
        {"61E962", tovaEncodingUTF8, L"a\uFFFDb"},
        {"F09F98", tovaEncodingUTF8, L"\uFFFD"},                       // cut off: one replacement
        {"EDA080", tovaEncodingUTF8, L"\uFFFD\uFFFD\uFFFD"},           // an encoded surrogate
        {"C0AF41", tovaEncodingUTF8, L"\uFFFD\uFFFDA"},                // overlong
        {"F4908080", tovaEncodingUTF8, L"\uFFFD\uFFFD\uFFFD\uFFFD"},   // beyond U+10FFFF
        {"EFBBBF61", tovaEncodingUTF8, L"a"},                          // a named encoding skips its own mark
        {"FFFE6100", tovaEncodingUTF16BE, L"\uFFFE\u6100"},            // ... and only its own
        {"610062", tovaEncodingUTF16, L"a\uFFFD"},                      // an odd last byte
        {"FEFF0062", tovaEncodingAuto, L"b"},
    };
    for (const auto& c : cases) {
        const std::string b = hex(c.bytes);
        EXPECT_EQ(c.text, decodeText(b.data(), b.size(), c.encoding)) << c.bytes;
    }
}

TEST(TextEncoding, Utf8CheckAcrossPieces) {
    const struct {
        const char* bytes;
        bool valid;
    } cases[] = {{"F09F9880E282AC41", true}, {"41E962", false}, {"41F09F98", false}, {"", true}, {"EDA080", false}};
    for (const auto& c : cases) {
        const std::string b = hex(c.bytes);
        for (size_t cut = 0; cut <= b.size(); ++cut)
            for (size_t cut2 = cut; cut2 <= b.size(); ++cut2) {
                Utf8Check check;
                check.add(b.data(), cut);
                check.add(b.data() + cut, cut2 - cut);
                check.add(b.data() + cut2, b.size() - cut2);
                EXPECT_EQ(c.valid, check.valid()) << c.bytes << " cut at " << cut << ", " << cut2;
            }
    }
}

TEST(TextEncoding, LinesSplitAndCountAlike) {
    const struct {
        std::wstring text;
        std::vector<std::wstring> lines;
    } cases[] = {
        {L"", {}},
        {L"a", {L"a"}},
        {L"a\r\n", {L"a"}},
        {L"\n\n", {L"", L""}},
        {L"a\rb", {L"a", L"b"}},
        {L"a\r\n\r\nb\n\rc", {L"a", L"", L"b", L"", L"c"}},
        {std::wstring(L"\0", 1), {std::wstring(L"\0", 1)}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.lines, splitLines(c.text));
        LineCounter counter;
        for (wchar_t u : c.text) counter.add(u);
        EXPECT_EQ(static_cast<long long>(c.lines.size()), counter.lines());
    }
}

// ---------------------------------------------------------------- the members

class Content : public ::testing::Test {
protected:
    FileScratch dir{L"tova_content_"};
    ComPtr<_FileMethods> fm = fileMethods();

    // A member's String argument: a BSTR that lives as long as the helper's call.
    struct Path {
        Bstr b;
        BSTR p;
        explicit Path(const std::wstring& s) : b(s), p(b.get()) {}
        BSTR* operator&() { return &p; }
    };
    std::wstring at(const std::wstring& name) const { return name.empty() ? name : dir / name; }

    std::wstring readText(const std::wstring& name, long encoding = tovaEncodingAuto) {
        Path p(at(name));
        Bstr out;
        EXPECT_EQ(S_OK, fm->ReadTextFile(&p, static_cast<TextEncodingConstants>(encoding), out.put()));
        return out.str();
    }
    std::vector<std::wstring> readLines(const std::wstring& name) {
        Path p(at(name));
        Variant out;
        EXPECT_EQ(S_OK, fm->ReadTextLines(&p, tovaEncodingAuto, out.put()));
        return strings(out);
    }
    bool writeText(const std::wstring& name, const std::wstring& text, long encoding = tovaEncodingAuto,
                   bool overwrite = true) {
        Path p(at(name)), t(text);
        VARIANT_BOOL ok = VARIANT_FALSE;
        EXPECT_EQ(S_OK, fm->WriteTextFile(&p, &t, static_cast<TextEncodingConstants>(encoding), overwrite ? -1 : 0, &ok));
        return ok != 0;
    }
    bool append(const std::wstring& name, const std::wstring& text, long encoding = tovaEncodingAuto) {
        Path p(at(name)), t(text);
        VARIANT_BOOL ok = VARIANT_FALSE;
        EXPECT_EQ(S_OK, fm->AppendLine(&p, &t, static_cast<TextEncodingConstants>(encoding), &ok));
        return ok != 0;
    }
    long countLines(const std::wstring& name) {
        Path p(at(name));
        LONG n = -2;
        EXPECT_EQ(S_OK, fm->CountLines(&p, &n));
        return n;
    }
    // The bytes read, or "<Empty>".
    std::string readBinary(const std::wstring& name, double offset = 0, long length = -1) {
        Path p(at(name));
        Variant out;
        EXPECT_EQ(S_OK, fm->ReadBinaryFile(&p, Variant(offset), length, out.put()));
        if (V_VT(&out) == VT_EMPTY) return "<Empty>";
        EXPECT_EQ(VT_ARRAY | VT_UI1, V_VT(&out));
        LONG lo = 1, hi = -2;
        SafeArrayGetLBound(V_ARRAY(&out), 1, &lo);
        SafeArrayGetUBound(V_ARRAY(&out), 1, &hi);
        EXPECT_EQ(0, lo);
        tova::ArrayData data(V_ARRAY(&out));
        return std::string(static_cast<const char*>(data.data()), static_cast<size_t>(hi + 1));
    }
    HRESULT writeBinary(const std::wstring& name, VARIANT data, bool overwrite, bool& ok) {
        Path p(at(name));
        VARIANT_BOOL r = VARIANT_FALSE;
        const HRESULT hr = fm->WriteBinaryFile(&p, &data, overwrite ? -1 : 0, &r);
        ok = r != 0;
        return hr;
    }
    bool compare(const std::wstring& a, const std::wstring& b) {
        Path pa(at(a)), pb(at(b));
        VARIANT_BOOL same = VARIANT_TRUE;
        EXPECT_EQ(S_OK, fm->CompareFiles(&pa, &pb, &same));
        return same != 0;
    }
    std::wstring hash(const std::wstring& name, long algorithm) {
        Path p(at(name));
        Bstr out;
        EXPECT_EQ(S_OK, fm->GetFileHash(&p, static_cast<HashAlgorithmConstants>(algorithm), out.put()));
        return out.str();
    }
};

// 70,000 bytes (more than one 64 KB block), byte i = 7i + 3.
std::string fixedContent() {
    std::string s(70000, '\0');
    for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<char>(i * 7 + 3);
    return s;
}

// First, while the process's peak is still low: 100 MB are counted in blocks.
TEST_F(Content, CountLinesOf100MegabytesInLittleMemory) {
    const std::wstring big = FileScratch::long_(dir / L"big.txt");
    HANDLE h = CreateFileW(big.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, h);
    std::string line(99, 'x');
    line += '\n';
    std::string block;
    for (int i = 0; i < 10000; ++i) block += line;   // 1 MB
    DWORD written = 0;
    for (int i = 0; i < 100; ++i) WriteFile(h, block.data(), static_cast<DWORD>(block.size()), &written, nullptr);
    CloseHandle(h);
    PROCESS_MEMORY_COUNTERS before{}, after{};
    GetProcessMemoryInfo(GetCurrentProcess(), &before, sizeof before);
    EXPECT_EQ(1000000, countLines(L"big.txt"));
    GetProcessMemoryInfo(GetCurrentProcess(), &after, sizeof after);
    EXPECT_LT(after.PeakWorkingSetSize - before.PeakWorkingSetSize, 8u << 20);
}

TEST_F(Content, ReadsEveryEncodingAutoAndNamed) {
    for (const Encoded& e : kEncoded) {
        dir.file(L"t.txt", e.bytes);
        EXPECT_EQ(kText, readText(L"t.txt", e.encoding)) << e.encoding;
        EXPECT_EQ(kText, readText(L"t.txt")) << "Auto " << e.encoding;
        const std::vector<std::wstring> lines = {std::wstring(L"A\u00E9\u20AC\u65E5\u672C\U0001F600\0", 8), L"b", L"c"};
        EXPECT_EQ(lines, readLines(L"t.txt")) << e.encoding;
    }
    dir.file(L"lone.txt", hex("636166E9"));
    EXPECT_EQ(L"caf\u00E9", readText(L"lone.txt"));
}

TEST_F(Content, WritesEveryEncodingByteExact) {
    for (const Encoded& e : kEncoded) {
        EXPECT_TRUE(writeText(L"w.txt", kText, e.encoding)) << e.encoding;
        EXPECT_EQ(e.bytes, dir.bytes(L"w.txt")) << e.encoding;
    }
    EXPECT_EQ(0, dir.count(L"~tova"));
}

TEST_F(Content, AutoWriteKeepsTheOldEncoding) {
    const struct {
        const char* old;   // nullptr: no old file
        const char* written;
    } cases[] = {
        {nullptr, "C3A90D0A"},                  // new: UTF-8 without mark
        {"FFFE6100", "FFFEE9000D000A00"},       // UTF-16 stays UTF-16
        {"FEFF0061", "FEFF00E9000D000A"},
        {"EFBBBF61", "EFBBBFC3A90D0A"},
        {"61E9", "E90D0A"},                     // not UTF-8: ANSI
        {"61C3A9", "C3A90D0A"},
    };
    if (GetACP() != 1252) GTEST_SKIP() << "needs code page 1252";
    for (const auto& c : cases) {
        DeleteFileW((dir / L"a.txt").c_str());
        if (c.old) dir.file(L"a.txt", hex(c.old));
        EXPECT_TRUE(writeText(L"a.txt", L"\u00E9\r\n")) << (c.old ? c.old : "new");
        EXPECT_EQ(hex(c.written), dir.bytes(L"a.txt")) << (c.old ? c.old : "new");
    }
}

TEST_F(Content, WritesThatWouldLoseSomethingAreRefused) {
    if (GetACP() != 1252) GTEST_SKIP() << "needs code page 1252";
    dir.file(L"keep.txt", "old");
    EXPECT_FALSE(writeText(L"keep.txt", L"\u03A9", tovaEncodingANSI));
    EXPECT_FALSE(writeText(L"keep.txt", L"new", tovaEncodingUTF8, false));   // no overwrite
    dir.file(L"ro.txt", "old", FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(writeText(L"ro.txt", L"new"));
    EXPECT_FALSE(append(L"ro.txt", L"new"));
    EXPECT_FALSE(append(L"new.txt", L"\u03A9", tovaEncodingANSI));
    EXPECT_EQ("old", dir.bytes(L"keep.txt"));
    EXPECT_EQ("old", dir.bytes(L"ro.txt"));
    EXPECT_EQ("<missing>", dir.bytes(L"new.txt"));
    EXPECT_EQ(0, dir.count(L"~tova"));
}

TEST_F(Content, AppendLineEndsTheLastLineFirst) {
    const struct {
        const char* old;   // nullptr: no file
        long encoding;
        const char* after;
    } cases[] = {
        {"61", tovaEncodingAuto, "610D0A620D0A"},
        {"610D0A", tovaEncodingAuto, "610D0A620D0A"},
        {"610D", tovaEncodingAuto, "610D620D0A"},     // a CR ends a line too
        {"", tovaEncodingAuto, "620D0A"},
        {nullptr, tovaEncodingAuto, "620D0A"},
        {nullptr, tovaEncodingUTF16, "FFFE62000D000A00"},
        {nullptr, tovaEncodingUTF8BOM, "EFBBBF620D0A"},
        {"FFFE6100", tovaEncodingAuto, "FFFE61000D000A0062000D000A00"},
        {"FEFF0061000A", tovaEncodingAuto, "FEFF0061000A0062000D000A"},
        {"EFBBBF61", tovaEncodingUTF8BOM, "EFBBBF610D0A620D0A"},   // no second mark
    };
    for (const auto& c : cases) {
        DeleteFileW((dir / L"log.txt").c_str());
        if (c.old) dir.file(L"log.txt", hex(c.old));
        EXPECT_TRUE(append(L"log.txt", L"b", c.encoding)) << (c.old ? c.old : "new");
        EXPECT_EQ(hex(c.after), dir.bytes(L"log.txt")) << (c.old ? c.old : "new");
    }
}

TEST_F(Content, CountLinesAgreesWithReadTextLines) {
    const char* cases[] = {"", "61", "610D0A", "0A0A", "610D62", "EFBBBF", "FFFE", "FFFE61000D000A006200",
                           "FEFF0061000D", "FFFE610062", "E90D0A0D"};
    for (const char* c : cases) {
        dir.file(L"c.txt", hex(c));
        EXPECT_EQ(static_cast<long>(readLines(L"c.txt").size()), countLines(L"c.txt")) << c;
    }
    // A CRLF split by the 64 KB blocks is one break.
    dir.file(L"c.txt", std::string(65535, 'x') + "\r\ny");
    EXPECT_EQ(2, countLines(L"c.txt"));
    EXPECT_EQ(-1, countLines(L"missing.txt"));
}

TEST_F(Content, BinarySlices) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    Variant data;
    V_VT(&data) = VT_ARRAY | VT_UI1;
    SAFEARRAYBOUND bound = {256, 5};   // any lower bound
    V_ARRAY(&data) = SafeArrayCreate(VT_UI1, 1, &bound);
    {
        tova::ArrayData locked(V_ARRAY(&data));
        std::memcpy(locked.data(), all.data(), 256);
    }
    bool ok = false;
    EXPECT_EQ(S_OK, writeBinary(L"b.bin", data, true, ok));
    EXPECT_TRUE(ok);
    EXPECT_EQ(all, dir.bytes(L"b.bin"));
    EXPECT_EQ(S_OK, writeBinary(L"b.bin", data, false, ok));
    EXPECT_FALSE(ok);
    const struct {
        double offset;
        long length;
        std::string bytes;
    } cases[] = {
        {0, -1, all}, {0, 10, all.substr(0, 10)}, {250, -1, all.substr(250)}, {250, 100, all.substr(250)},
        {256, -1, ""}, {1000, 5, ""}, {10, 0, ""}, {3.9, 2, all.substr(3, 2)},
    };
    for (const auto& c : cases) EXPECT_EQ(c.bytes, readBinary(L"b.bin", c.offset, c.length)) << c.offset;
    EXPECT_EQ("<Empty>", readBinary(L"missing.bin"));
    EXPECT_EQ("<Empty>", readBinary(L""));
    dir.folder(L"sub");
    EXPECT_EQ("<Empty>", readBinary(L"sub"));
}

TEST_F(Content, BinarySliceBeyondFourGigabytes) {
    HANDLE h = CreateFileW((dir / L"huge.bin").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, h);
    DWORD ignored = 0;
    DeviceIoControl(h, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &ignored, nullptr);
    LARGE_INTEGER at;
    at.QuadPart = 5000000000LL;
    SetFilePointerEx(h, at, nullptr, FILE_BEGIN);
    DWORD written = 0;
    WriteFile(h, "tail", 4, &written, nullptr);
    CloseHandle(h);
    EXPECT_EQ("tail", readBinary(L"huge.bin", 5000000000.0));
    EXPECT_EQ(std::string("\0t", 2), readBinary(L"huge.bin", 4999999999.0, 2));
}

TEST_F(Content, ArgumentsOutsideTheirSetsRaise) {
    Path p(dir / L"x.bin");
    VARIANT_BOOL ok;
    Variant out;
    Bstr text;
    Variant longs = longArray({1, 2});
    const struct {
        HRESULT hr;
        long code;
    } cases[] = {
        {fm->WriteBinaryFile(&p, &longs, -1, &ok), 13},
        {fm->ReadBinaryFile(&p, Variant(-1.0), -1, out.put()), 5},
        {fm->ReadBinaryFile(&p, Variant(0.0), -2, out.put()), 5},
        {fm->ReadTextFile(&p, static_cast<TextEncodingConstants>(6), text.put()), 5},
        {fm->GetFileHash(&p, static_cast<HashAlgorithmConstants>(0), text.put()), 5},
    };
    for (const auto& c : cases) EXPECT_EQ(c.code, HRESULT_CODE(c.hr)) << c.code;
}

TEST_F(Content, EmptyPathsFailSoftly) {
    EXPECT_EQ(L"", readText(L""));
    EXPECT_EQ(std::vector<std::wstring>{L"<Empty>"}, readLines(L""));
    EXPECT_FALSE(writeText(L"", L"x"));
    EXPECT_FALSE(append(L"", L"x"));
    EXPECT_EQ(-1, countLines(L""));
    EXPECT_FALSE(compare(L"", L""));
    EXPECT_EQ(L"", hash(L"", tovaHashSHA256));
    EXPECT_EQ(std::vector<std::wstring>{L"<Empty>"}, readLines(L"missing.txt"));
}

// A device is no file: it might never end or make a read wait.
TEST_F(Content, DevicesAreNotRead) {
    const std::wstring nul = L"NUL";
    Path p(nul);
    LONG n = 0;
    EXPECT_EQ(S_OK, fm->CountLines(&p, &n));
    EXPECT_EQ(-1, n);
    Bstr digest;
    EXPECT_EQ(S_OK, fm->GetFileHash(&p, tovaHashMD5, digest.put()));
    EXPECT_EQ(L"", digest.str());
    VARIANT_BOOL ok = VARIANT_TRUE;
    Path t(L"x");
    EXPECT_EQ(S_OK, fm->AppendLine(&p, &t, tovaEncodingAuto, &ok));
    EXPECT_FALSE(ok);
}

TEST_F(Content, CompareFilesReadsPastTheFirstBlock) {
    const std::string content = fixedContent();
    std::string late = content;
    late[65537] ^= 1;
    dir.file(L"a", content).file(L"b", content).file(L"late", late).file(L"short", content.substr(1)).folder(L"sub");
    const struct {
        const wchar_t *a, *b;
        bool same;
    } cases[] = {
        {L"a", L"b", true}, {L"a", L"a", true}, {L"a", L"late", false}, {L"a", L"short", false},
        {L"a", L"missing", false}, {L"sub", L"sub", false},
    };
    for (const auto& c : cases) EXPECT_EQ(c.same, compare(c.a, c.b)) << c.a << " " << c.b;
}

TEST_F(Content, DigestsMatchTheCoreutils) {
    dir.file(L"fixed.bin", fixedContent()).file(L"empty.bin");
    // md5sum, sha1sum ... sha512sum of the same bytes, made on Linux.
    const struct {
        long algorithm;
        const wchar_t* name;
        const wchar_t* digest;
    } cases[] = {
        {tovaHashMD5, L"fixed.bin", L"85A28AEFE62FC7A11F4E1773D56BCEF0"},
        {tovaHashSHA1, L"fixed.bin", L"863B24F62F373AF00B95D8BDC22B0C5F91B3C70C"},
        {tovaHashSHA256, L"fixed.bin", L"9F6D8BB550591A5410AA72B997E7D49E3EED1CE025E83628ADDAF4382D2295BD"},
        {tovaHashSHA384, L"fixed.bin",
         L"8196D8D3024857CB30FF4F21D5660623120F3C7A8640E29D15014F19B90C9DDB3AF73A5DE8B0C2E6BBD861C7449DA936"},
        {tovaHashSHA512, L"fixed.bin",
         L"02A2E86D819F637E28297DF9C146177696E52DE0672968B79787EB63CE6CB30F530F66E5464ECC8958140E8C28351C2434F544220141515D545D646B55B3527A"},
        {tovaHashMD5, L"empty.bin", L"D41D8CD98F00B204E9800998ECF8427E"},
        {tovaHashSHA256, L"missing.bin", L""},
    };
    for (const auto& c : cases) EXPECT_EQ(c.digest, hash(c.name, c.algorithm)) << c.algorithm;
}

TEST_F(Content, LateBoundAsAScriptCalls) {
    dir.file(L"t.txt", "a\r\nb");
    Bstr path(dir / L"t.txt");
    Variant p;
    V_VT(&p) = VT_BSTR;
    V_BSTR(&p) = SysAllocString(path.get());
    CallResult r;
    call(r, fm.get(), L"ReadTextLines", DISPATCH_METHOD, {p});
    EXPECT_EQ(S_OK, r.hr);
    EXPECT_EQ((std::vector<std::wstring>{L"a", L"b"}), strings(r.value));
    CallResult n;
    call(n, fm.get(), L"CountLines", DISPATCH_METHOD, {p});
    EXPECT_EQ(VT_I4, V_VT(&n.value));
    EXPECT_EQ(2, V_I4(&n.value));
}

}  // namespace
