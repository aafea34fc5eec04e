// The wildcard matcher's pattern language, compared by code unit: what needs no
// locale, so the Windows build and the native sanitizer build both run it.
#include <gtest/gtest.h>

#include "tests/raises.h"
#include "text/wildcard.h"

#include <string>

namespace {

using Units = std::basic_string<tova::wildcard::Unit>;

Units units(std::u16string_view s) { return Units(s.begin(), s.end()); }

bool like(std::u16string_view text, std::u16string_view pattern) {
    const Units t = units(text), p = units(pattern);
    return tova::isLike(t.data(), t.size(), p.data(), p.size(), false);
}

long patternError(std::u16string_view pattern, std::u16string_view text = u"x") {
    return raisedCode([&] { like(text, pattern); });
}

TEST(Wildcard, EmptyTextAndPattern) {
    EXPECT_TRUE(like(u"", u""));
    EXPECT_TRUE(like(u"", u"*"));
    EXPECT_TRUE(like(u"", u"***"));
    EXPECT_FALSE(like(u"", u"?"));
    EXPECT_FALSE(like(u"", u"#"));
    EXPECT_FALSE(like(u"a", u""));
    EXPECT_TRUE(like(u"", u"[]"));
    EXPECT_TRUE(like(u"ab", u"a[]b"));
    EXPECT_TRUE(like(u"ab", u"*[]*[]b"));
}

TEST(Wildcard, WholeTextNoImplicitStar) {
    EXPECT_TRUE(like(u"abc", u"abc"));
    EXPECT_FALSE(like(u"abcd", u"abc"));
    EXPECT_FALSE(like(u"xabc", u"abc"));
    EXPECT_TRUE(like(u"abc", u"a?c"));
    EXPECT_TRUE(like(u"a7c", u"a#c"));
    EXPECT_FALSE(like(u"abc", u"a#c"));
    EXPECT_TRUE(like(u"report.txt", u"*.txt"));
    EXPECT_TRUE(like(u"aXbYc", u"a*b*c"));
    EXPECT_FALSE(like(u"aXbYcd", u"a*b*c"));
    EXPECT_TRUE(like(u"abab", u"*ab"));   // the last segment anchors at the end
    EXPECT_FALSE(like(u"ab", u"ab*ab"));  // segments may not overlap
}

TEST(Wildcard, LiteralsInBrackets) {
    EXPECT_TRUE(like(u"a*c", u"a[*]c"));
    EXPECT_FALSE(like(u"abc", u"a[*]c"));
    EXPECT_TRUE(like(u"?", u"[?]"));
    EXPECT_FALSE(like(u"x", u"[?]"));
    EXPECT_TRUE(like(u"#", u"[#]"));
    EXPECT_FALSE(like(u"5", u"[#]"));
    EXPECT_TRUE(like(u"[", u"[[]"));
    EXPECT_TRUE(like(u"]", u"]"));           // ] outside brackets is itself
    EXPECT_TRUE(like(u"]", u"[]]"));         // the list ends at the first ]: [] then ]
    EXPECT_TRUE(like(u"a]", u"[a-c]]"));
}

TEST(Wildcard, ListsRangesAndNegation) {
    EXPECT_TRUE(like(u"q", u"[a-zA-Z0-9_]"));
    EXPECT_TRUE(like(u"_", u"[a-zA-Z0-9_]"));
    EXPECT_FALSE(like(u"-", u"[a-zA-Z0-9_]"));
    EXPECT_TRUE(like(u"c", u"[a-c]"));
    EXPECT_FALSE(like(u"d", u"[a-c]"));
    EXPECT_FALSE(like(u"b", u"[!a-c]"));
    EXPECT_TRUE(like(u"d", u"[!a-c]"));
    EXPECT_TRUE(like(u"-", u"[a-]"));
    EXPECT_TRUE(like(u"-", u"[-a]"));
    EXPECT_FALSE(like(u"-", u"[!-]"));
    EXPECT_FALSE(like(u"b", u"[a-]"));
    EXPECT_TRUE(like(u"-", u"[a-c-e]"));     // a - after a finished range is itself
    EXPECT_FALSE(like(u"d", u"[a-c-e]"));
    EXPECT_TRUE(like(u"!", u"[a!]"));        // ! is itself unless first
    EXPECT_FALSE(like(u"!", u"[!!]"));
    EXPECT_TRUE(like(u"x", u"[!]"));         // nothing excluded: any one character
    EXPECT_FALSE(like(u"", u"[!]"));
    EXPECT_TRUE(like(u"\u0416", u"[\u0410-\u042F]"));  // code-unit ranges above Latin-1
    EXPECT_FALSE(like(u"\u0436", u"[\u0410-\u042F]"));
}

TEST(Wildcard, InvalidPatternRaises93) {
    EXPECT_EQ(patternError(u"["), 93);
    EXPECT_EQ(patternError(u"a[bc"), 93);
    EXPECT_EQ(patternError(u"[!"), 93);
    // Checked before matching: the text fails on its first character.
    EXPECT_EQ(patternError(u"b*[", u"abc"), 93);
    EXPECT_EQ(patternError(u"[z-a]"), 93);
    EXPECT_EQ(patternError(u"[a-Z]"), 93);  // code units: 'a' > 'Z'
    EXPECT_EQ(patternError(u"[a-a]"), 0);
    EXPECT_EQ(patternError(u"]["), 93);
}

}  // namespace
