// The wildcard matcher behind IsLike under the user locale: case-insensitive
// matching, and a comparison with a naive recursive matcher. The language
// itself, by code unit, is in wildcard_core_test.cpp.
#include "support.h"

#include "tests/raises.h"
#include "text/wildcard.h"

#include <random>
#include <string>

namespace {

bool like(const std::wstring& text, const std::wstring& pattern, bool ignoreCase = false) {
    return tova::isLike(text.data(), text.size(), pattern.data(), pattern.size(), ignoreCase);
}

TEST(Wildcard, CaseInsensitive) {
    // Reversed ranges (error 93) are judged by the collation: a before Z.
    EXPECT_EQ(raisedCode([] { like(L"x", L"[z-a]", true); }), 93);
    EXPECT_EQ(raisedCode([] { like(L"x", L"[a-Z]", true); }), 0);
    EXPECT_TRUE(like(L"ABC", L"a*", true));
    EXPECT_FALSE(like(L"ABC", L"a*", false));
    EXPECT_TRUE(like(L"\u00E9t\u00E9", L"\u00C9T\u00C9", true));  // été / ÉTÉ
    EXPECT_FALSE(like(L"\u00E9t\u00E9", L"\u00C9T\u00C9", false));
    EXPECT_TRUE(like(L"\u00E9", L"[\u00C9]", true));
    EXPECT_TRUE(like(L"\u00FF", L"[\u0178]", true));  // ÿ / Ÿ: the fold leaves Latin-1
    EXPECT_TRUE(like(L"M", L"[a-z]", true));
    EXPECT_TRUE(like(L"m", L"[a-Z]", true));
    EXPECT_FALSE(like(L"M", L"[!a-z]", true));
    // Ranges follow the collation: é sorts between e and f; _ before letters.
    EXPECT_TRUE(like(L"\u00E9", L"[a-f]", true));
    EXPECT_FALSE(like(L"\u00E9", L"[a-f]", false));
    EXPECT_FALSE(like(L"_", L"[A-z]", true));
    EXPECT_TRUE(like(L"_", L"[A-z]", false));
    // Ranges beyond Latin-1 too; 世 shares Ж's slot in the collation cache.
    tova::WildcardPattern cyrillic(L"[\u0430-\u044F]", 5, true);  // а-я
    EXPECT_TRUE(cyrillic.matches(L"\u0436", 1));   // ж
    EXPECT_TRUE(cyrillic.matches(L"\u0416", 1));   // Ж
    EXPECT_FALSE(cyrillic.matches(L"\u4E16", 1));  // 世
    // A compiled pattern keeps its collation cache across texts.
    tova::WildcardPattern p(L"*.[b-d]?t", 9, true);
    EXPECT_TRUE(p.matches(L"NOTES.CAT", 9));
    EXPECT_TRUE(p.matches(L"x.\u00C7at", 5));  // Ç sorts with c
    EXPECT_FALSE(p.matches(L"notes.txt", 9));
}

// ---- comparison with a naive matcher: the pattern language read literally.

enum Result { kNo, kYes, kBad };

bool inList(wchar_t c, const std::wstring& list, bool ic) {
    for (size_t i = 0; i < list.size();) {
        if (i + 2 < list.size() && list[i + 1] == L'-') {
            wchar_t lo = list[i], hi = list[i + 2];
            auto cmp = [&](wchar_t a, wchar_t b) {
                return ic ? CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, &a, 1, &b, 1) - CSTR_EQUAL
                          : int(a) - int(b);
            };
            if (cmp(lo, c) <= 0 && cmp(c, hi) <= 0) return true;
            i += 3;
        } else {
            if (ic ? towupper(list[i]) == towupper(c) : list[i] == c) return true;
            ++i;
        }
    }
    return false;
}

bool naive(const wchar_t* t, const wchar_t* p, bool ic) {
    if (!*p) return !*t;
    if (*p == L'*') return naive(t, p + 1, ic) || (*t && naive(t + 1, p, ic));
    if (*p == L'[') {
        const wchar_t* close = wcschr(p, L']');
        std::wstring list(p + 1, close);
        if (list.empty()) return naive(t, close + 1, ic);
        bool negate = list[0] == L'!';
        if (negate) list.erase(0, 1);
        return *t && inList(*t, list, ic) != negate && naive(t + 1, close + 1, ic);
    }
    if (!*t) return false;
    bool ok = *p == L'?' || (*p == L'#' ? iswdigit(*t) : ic ? towupper(*p) == towupper(*t) : *p == *t);
    return ok && naive(t + 1, p + 1, ic);
}

Result naiveLike(const std::wstring& t, const std::wstring& p, bool ic) {
    for (size_t i = 0; i < p.size(); ++i) {
        if (p[i] != L'[') continue;
        size_t close = p.find(L']', i);
        if (close == std::wstring::npos) return kBad;
        for (size_t k = i + 1 + (p[i + 1] == L'!'); k + 2 < close;) {
            if (p[k + 1] != L'-') { ++k; continue; }
            wchar_t lo = p[k], hi = p[k + 2];
            if (ic ? CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, &lo, 1, &hi, 1) == CSTR_GREATER_THAN : lo > hi)
                return kBad;
            k += 3;
        }
        i = close;
    }
    return naive(t.c_str(), p.c_str(), ic) ? kYes : kNo;
}

TEST(Wildcard, AgreesWithNaiveMatcher) {
    const std::wstring textChars = L"abcAB019-!*?#[]:/";
    const std::wstring patternChars = L"abAB01:-!*?#[]**??[[]";
    std::mt19937 rng(20240611);
    int cases = 0, matched = 0;
    for (int n = 0; n < 4000; ++n) {
        std::wstring t, p;
        for (size_t k = rng() % 14; k--;) t += textChars[rng() % textChars.size()];
        for (size_t k = rng() % 9; k--;) p += patternChars[rng() % patternChars.size()];
        for (bool ic : {false, true}) {
            Result expected = naiveLike(t, p, ic);
            bool got = false;
            long error = raisedCode([&] { got = like(t, p, ic); });
            Result actual = error == 93 ? kBad : error ? Result(-1) : got ? kYes : kNo;
            ASSERT_EQ(actual, expected) << "text '" << std::string(t.begin(), t.end()) << "' pattern '"
                                        << std::string(p.begin(), p.end()) << "' ignoreCase " << ic;
            ++cases;
            matched += expected == kYes;
        }
    }
    EXPECT_GT(matched, cases / 50);  // the random cases are not all failures
}

// Long texts are case-folded a window at a time: hits across a window's edge
// must still be found.
TEST(Wildcard, LongTextsFoldedInWindows) {
    for (size_t at = 16370; at < 16400; ++at) {
        std::wstring text(40000, L'x');
        text.replace(at, 4, L"WoRd");
        EXPECT_TRUE(like(text, L"*word*", true)) << at;
        EXPECT_TRUE(like(text, L"*w?r[a-d]*", true)) << at;
        EXPECT_TRUE(like(text, L"x*WORD*x", true)) << at;
        EXPECT_FALSE(like(text, L"*word*word*", true)) << at;
        text.replace(at + 16383, 4, L"word");
        EXPECT_TRUE(like(text, L"*word*wo?d*", true)) << at;
    }
}

TEST(Wildcard, LongTextsStayFast) {
    std::wstring text(100000, L'a');
    std::wstring pattern;
    for (int k = 0; k < 20; ++k) pattern += L"*a";
    pattern += L"b";
    DWORD start = GetTickCount();
    EXPECT_FALSE(like(text, pattern));
    EXPECT_FALSE(like(text, pattern + L"*", true));
    EXPECT_TRUE(like(text + L"b", pattern));
    EXPECT_LT(GetTickCount() - start, 1000u);
}

}  // namespace
