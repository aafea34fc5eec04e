// The cipher module: hexadecimal encoding, random strings and the text cipher,
// all on ANSI code-page codes. The Windows build and the native sanitizer build
// (tests/native, Latin-1 for a code page) both run it.
#include <gtest/gtest.h>

#include "tests/raises.h"
#include "text/cipher.h"
#include "text/cipher_platform.h"

#include <set>

using namespace tova;
using namespace tova::cipher;

namespace {

wchar_t chr(int code) { return ansi().chr[code]; }

int asc(wchar_t c) {
    unsigned char code;
    toCodes(&c, 1, &code);
    return code;
}

// Ciphertext uses every code; only a single-byte code page has a character for each.
#define NEEDS_SINGLE_BYTE_CODE_PAGE() \
    if (!ansi().singleByte) GTEST_SKIP() << "a double-byte code page has no character for some codes"

std::wstring allCodes() {
    std::wstring s;
    for (int code = 0; code < 256; ++code) s.push_back(chr(code));
    return s;
}

// One round of the cipher written out plainly, keys as long as the text.
std::wstring oneRound(const std::wstring& text, const std::wstring& a, const std::wstring& b) {
    std::wstring out;
    for (size_t i = 0; i < text.size(); ++i) out.push_back(chr((asc(text[i]) + asc(a[i]) + asc(b[i])) % 256));
    return out;
}

}  // namespace

TEST(Hexise, TwoUpperCaseDigitsPerCodeAndBack) {
    EXPECT_EQ(L"4142", hexise(L"AB"));
    EXPECT_EQ(L"AB", dehexise(L"4142"));
    EXPECT_EQ(L"", hexise(L""));
    EXPECT_EQ(L"", dehexise(L""));
    EXPECT_EQ(L"000AFF", hexise(std::wstring{chr(0), chr(10), chr(255)}));
    EXPECT_EQ(L"J\x4", dehexise(L"4a4")) << "lower-case digits; an odd final digit is read alone";
    if (ansi().singleByte) EXPECT_EQ(allCodes(), dehexise(hexise(allCodes()))) << "every code survives";
}

TEST(Hexise, ABadPairIsATypeMismatch) {
    for (const wchar_t* bad : {L"1G", L"41 1", L"4142-1", L"Z", L"\xFF21\x31"})
        EXPECT_EQ(kTypeMismatch, raisedCode([&] { dehexise(bad); })) << bad;
}

TEST(Cipher, EncryptAddsBothKeyCodesPerRound) {
    std::wstring a = L"B", b = L"C";
    EXPECT_EQ(std::wstring(1, chr(198)), encrypt(L"A", a, b, 1));
    EXPECT_EQ(L"K", encrypt(L"A", a, b, 2)) << "(198 + 133) mod 256 = 75";
    EXPECT_EQ(L"A", decrypt(L"K", a, b, 2));
    NEEDS_SINGLE_BYTE_CODE_PAGE();
    EXPECT_EQ(L"A", decrypt(std::wstring(1, chr(198)), a, b, 1));

    std::wstring text, ka = L"key", kb = L"Another";
    while (text.size() < 20000) text += L"The quick brown fox, \xE9t\xE9 \x20AC 42!";  // across chunks
    std::wstring expected = text;
    for (int level = 1; level <= 3; ++level) {
        std::wstring ra = ka, rb = kb;
        while (ra.size() < text.size()) ra += ra;
        while (rb.size() < text.size()) rb += rb;
        expected = oneRound(expected, ra, rb);
        std::wstring ca = ka, cb = kb;
        EXPECT_EQ(expected, encrypt(text, ca, cb, level)) << level;
        EXPECT_EQ(ra, ca) << "keys doubled and written back";
        EXPECT_EQ(rb, cb);
    }
}

TEST(Cipher, DecryptUndoesEncryptAtTheSameLevel) {
    NEEDS_SINGLE_BYTE_CODE_PAGE();
    const std::wstring text = allCodes() + L"Plain text, twice: plain text.";
    for (long level : {1L, 2L, 3L, 7L, 255L, 256L, 257L, 1000000L}) {
        std::wstring a = L"xyz", b = L"Q", a2 = a, b2 = b;
        std::wstring secret = encrypt(text, a, b, level);
        EXPECT_EQ(level % 256 != 0, secret != text) << level;
        EXPECT_EQ(text, decrypt(secret, a2, b2, level)) << level;
        EXPECT_EQ(a, a2);
        EXPECT_GE(a2.size(), text.size());
        EXPECT_LT(a2.size(), 2 * text.size());
        EXPECT_EQ(std::wstring(b2.size(), L'Q'), b2);
        EXPECT_GE(b2.size(), text.size());
    }
    std::wstring a = L"xyz", b = L"Q";
    decrypt(L"0123456789", a, b, 1);
    EXPECT_EQ(L"xyzxyzxyzxyz", a) << "10 characters need 12";
    std::wstring same = L"k";
    EXPECT_EQ(L"ab", decrypt(encrypt(L"ab", same, same, 2), same, same, 2)) << "one variable for both keys";
    EXPECT_EQ(L"kk", same);
}

TEST(Cipher, IntoTheCallersBufferGivesTheSameResult) {
    NEEDS_SINGLE_BYTE_CODE_PAGE();
    const std::wstring text = L"Into a buffer of the caller's";
    std::wstring a = L"ab", b = L"cde", a2 = a, b2 = b;
    const Key ka{a.data(), a.size()}, kb{b.data(), b.size()};
    std::wstring buffer(text.size() + 1, L'#');
    EXPECT_EQ(text.size(), encrypt(text.data(), text.size(), ka, kb, 3, &buffer[0]));
    EXPECT_EQ(encrypt(text, a2, b2, 3) + L"#", buffer) << "nothing written past the text";
    EXPECT_EQ(text.size(), decrypt(buffer.data(), text.size(), ka, kb, 3, &buffer[0])) << "in place";
    EXPECT_EQ(text + L"#", buffer);

    // The keys the caller gets back: doubled from one period to the text's length.
    ASSERT_EQ(32u, doubledLength(a.size(), text.size()));
    std::wstring doubled(32, L'-');
    writeDoubled(ka, &doubled[0], doubled.size());
    EXPECT_EQ(a2, doubled);
    EXPECT_EQ(3u, doubledLength(3, 1)) << "a key longer than the text stays";
    EXPECT_EQ(48u, doubledLength(3, 29));
}

TEST(Cipher, LevelZeroAndEmptyKeys) {
    std::wstring a = L"", b = L"B";
    EXPECT_EQ(L"text", encrypt(L"text", a, b, 0));
    EXPECT_EQ(L"text", decrypt(L"text", a, b, -3));
    EXPECT_EQ(L"", encrypt(L"", a, b, 1)) << "nothing to lengthen the keys for";
    // Doubling an empty key would never end: refused, keys untouched.
    EXPECT_EQ(kInvalidArgument, raisedCode([&] { encrypt(L"text", a, b, 1); }));
    EXPECT_EQ(kInvalidArgument, raisedCode([&] { decrypt(L"text", b, a, 1); }));
    EXPECT_EQ(L"B", b);
}

TEST(Cipher, CharactersOutsideTheCodePageComeBackAsTheirReplacement) {
    NEEDS_SINGLE_BYTE_CODE_PAGE();
    const std::wstring text = L"a\x4E00z";  // a CJK ideograph, not in a single-byte code page
    std::wstring converted;
    for (wchar_t c : text) converted += chr(asc(c));
    std::wstring a = L"k", b = L"m";
    std::wstring back = decrypt(encrypt(text, a, b, 2), a, b, 2);
    EXPECT_NE(text, back);
    EXPECT_EQ(converted, back);
    EXPECT_EQ(hexise(converted), hexise(text));
}

TEST(Cipher, ADoubleByteCharacterHasNoCodeAndDecryptDropsIt) {
    if (ansi().singleByte) GTEST_SKIP() << "for double-byte code pages";
    const std::wstring text = L"zz\x4E00zz";
    EXPECT_EQ(L"7A7A3F7A7A", hexise(text));
    std::wstring a = L"\x1\x2", b = L"\x1";
    // The first round drops it; the other two see the later characters one place on.
    EXPECT_EQ(L"tqsr", decrypt(text, a, b, 3));
    EXPECT_EQ(L"tqsr", decrypt(decrypt(text, a, b, 1), a, b, 2));
}

TEST(RandomString, LengthsAndGroups) {
    EXPECT_EQ(10u, randomString(10, L"", 0).size());
    EXPECT_EQ(L"", randomString(0, L"", 0));
    EXPECT_EQ(L"", randomString(-5, L"-", 4));
    EXPECT_EQ(10u, randomString(10, L"", 4).size()) << "no delimiter, no groups";
    EXPECT_EQ(10u, randomString(10, L"-", -4).size()) << "a negative frequency counts as 0";
    EXPECT_EQ(4u, randomString(0, L"-", 4).size()) << "always one group more";

    std::wstring s = randomString(10, L"-", 4);
    ASSERT_EQ(14u, s.size());
    EXPECT_EQ(L'-', s[4]);
    EXPECT_EQ(L'-', s[9]);
    s = randomString(32, L"::", 8);
    ASSERT_EQ(40u + 4 * 2, s.size());
    for (size_t at : {8u, 18u, 28u, 38u}) EXPECT_EQ(L"::", s.substr(at, 2)) << at;

    std::wstring codes = allCodes();
    for (wchar_t c : randomString(200, L"", 0)) EXPECT_NE(std::wstring::npos, codes.find(c));
    EXPECT_EQ(kOutOfMemory, raisedCode([] { randomString(2147483647L, L"--", 1); }));
}

TEST(RandomString, EachCodeIsSeededFromTheTimerAlone) {
    EXPECT_EQ(randomCode(43200.5), randomCode(43200.5)) << "the same tick draws the same code";
    std::set<int> seen;
    for (int ms = 0; ms < 20000; ++ms) {
        int code = randomCode(static_cast<float>(30000.0 + ms / 1000.0));
        ASSERT_GE(code, 0);
        ASSERT_LE(code, 255);
        seen.insert(code);
    }
    EXPECT_EQ(256u, seen.size()) << "every code turns up";
}

#ifdef _WIN32
// The code page the module works with is the one the platform converts with.
TEST(CodePage, IsThePlatformsAnsiCodePage) {
    CPINFO info{};
    ASSERT_TRUE(GetCPInfo(CP_ACP, &info));
    EXPECT_EQ(info.MaxCharSize == 1, ansi().singleByte);
    for (int code = 0; code < 256; ++code) {
        const char byte = static_cast<char>(code);
        wchar_t w = 0;
        if (MultiByteToWideChar(CP_ACP, 0, &byte, 1, &w, 1) == 1) EXPECT_EQ(w, chr(code)) << code;
        char back[4] = {};
        if (WideCharToMultiByte(CP_ACP, 0, &w, 1, back, sizeof back, nullptr, nullptr) == 1)
            EXPECT_EQ(static_cast<unsigned char>(back[0]), asc(w)) << code;
    }
}
#endif
