// Speed of the wildcard matcher: a "*word*" scan over a long text, and patterns
// that make backtracking matchers take exponential time.
#include "text/wildcard.h"

#include "frame/errors.h"

#include <windows.h>

#include <algorithm>
#include "clock.h"

#include <cstdio>
#include <random>
#include <string>

namespace {

bool like(const std::wstring& text, const std::wstring& pattern, bool ignoreCase) {
    return tova::isLike(text.data(), text.size(), pattern.data(), pattern.size(), ignoreCase);
}

// Best time of a few runs, in seconds.

// Words that share letters with "word" without containing it, so the scan's
// candidate filter has work to do.
std::wstring makeText(size_t length) {
    const wchar_t* words[] = {L"world", L"worm", L"ward", L"wood", L"the", L"quick", L"brown", L"fox",
                              L"drowned", L"Words", L"over", L"lazy", L"dog", L"\u00E9t\u00E9", L"d", L"w"};
    std::mt19937 rng(7);
    std::wstring text;
    text.reserve(length + 16);
    while (text.size() < length) {
        text += words[rng() % 16];
        text += rng() % 8 ? L' ' : L'\n';
    }
    text.resize(length);
    for (size_t i = 0; i + 4 <= text.size(); ++i)  // "Words" has "word" case-insensitively
        if (_wcsnicmp(&text[i], L"word", 4) == 0) text[i + 1] = L'a';
    return text;
}

}  // namespace

int main() {
    const size_t kChars = 10u * 1000 * 1000;
    std::wstring miss = makeText(kChars);
    std::wstring hit = miss;
    hit.replace(kChars - kChars / 100, 4, L"word");  // found only near the end
    const std::wstring pattern = L"*word*";

    std::printf("Text: %zu characters (%.1f MB as UTF-16)\n", kChars, kChars * 2 / 1e6);
    double slowest = 0;
    for (bool ic : {false, true}) {
        for (const std::wstring* text : {&hit, &miss}) {
            bool result = false;
            double t = bestSeconds(5, [&] { result = like(*text, pattern, ic); });
            double mchars = kChars / t / 1e6;
            std::printf("  *word* %-16s %-5s: %7.2f ms, %8.0f M chars/s = %8.0f MB/s UTF-16\n",
                        ic ? "case-insensitive" : "case-sensitive", result ? "match" : "miss", t * 1e3, mchars,
                        mchars * 2);
            slowest = std::max(slowest, t);
        }
    }

    // Texts of 100,000 characters, patterns of 20 stars that fail at the end.
    struct Case {
        const char* name;
        std::wstring text, pattern;
        bool ignoreCase;
    };
    const std::wstring as(100000, L'a');
    auto repeat = [](const std::wstring& s, int n) {
        std::wstring r;
        for (int k = 0; k < n; ++k) r += s;
        return r;
    };
    Case cases[] = {
        {"(*a)x20 b", as, repeat(L"*a", 20) + L"b", false},
        {"(*a)x19 *b*", as, repeat(L"*a", 19) + L"*b*", false},
        {"(*a)x18 *a?a?..b*", as, repeat(L"*a", 18) + L"*" + repeat(L"a?", 9) + L"b*", false},
        {"(*a)x19 *aaa..b*", as, repeat(L"*a", 19) + L"*" + std::wstring(40, L'a') + L"b*", false},
        {"(*[a-c])x18 *[a-c]?..[d-e]* CI", as, repeat(L"*[a-c]", 18) + L"*" + repeat(L"[a-c]?", 9) + L"[d-e]*",
         true},
        {"(*?)x19 *#*", as, repeat(L"*?", 19) + L"*#*", false},
    };
    double worst = 0;
    for (const Case& c : cases) {
        bool result = true;
        double t = bestSeconds(3, [&] { result = like(c.text, c.pattern, c.ignoreCase); });
        std::printf("  worst case %-32s: %8.3f ms (%s)\n", c.name, t * 1e3, result ? "match?!" : "no match");
        worst = std::max(worst, t);
    }

    // Many short calls, as a folder search makes them.
    const std::wstring name = L"Quarterly Report 2023.DOCX";
    const std::wstring shortPattern = L"*report*.doc?";
    int count = 0;
    const int kCalls = 200000;
    double t = bestSeconds(1, [&] {
        for (int k = 0; k < kCalls; ++k) count += like(name, shortPattern, true);
    });
    std::printf("  short calls (case-insensitive, compiled each call): %.0f ns per call\n", t / kCalls * 1e9);
    tova::WildcardPattern compiled(shortPattern.data(), shortPattern.size(), true);
    t = bestSeconds(1, [&] {
        for (int k = 0; k < kCalls; ++k) count += compiled.matches(name.data(), name.size());
    });
    std::printf("  short calls (case-insensitive, compiled once): %.0f ns per call (%d)\n", t / kCalls * 1e9, count);

    std::printf("IsLike *word*: %.0f MB/s (goal >= 100)\n", kChars / slowest / 1e6);
    std::printf("IsLike worst case: %.3f ms (goal: milliseconds)\n", worst * 1e3);
    return 0;
}
