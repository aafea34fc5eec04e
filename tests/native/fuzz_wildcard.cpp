// The wildcard matcher against a reference read straight from the pattern
// language: the pattern parsed token by token, checked whole, and matched by
// dynamic programming over (token, text position). Every pattern and text must
// get the same answer, error 93 included, in both comparison modes (the native
// locale folds ASCII). On request the text is repeated past the matcher's
// case-folding window and must still agree, in time linear in the text (timed
// against the reference, whose work is).
//
// Input: a flags byte (1: ignore case, 2: also the long text), then the
// pattern, a tab, the text. Bytes from 0x80 stand for code units spread over
// the whole 16-bit range.
#include "fuzz.h"
#include "platform.h"
#include "text/wildcard.h"
#include "text/wildcard_locale.h"

#include <chrono>
#include <string>
#include <vector>

namespace {

using tova::wildcard::Unit;
using Units = std::basic_string<Unit>;

Unit fold(Unit c) {
    Unit f;
    tova::wildcard::upperCase(&c, 1, &f);
    return f;
}

struct Token {
    enum Kind { kStar, kAny, kDigit, kLiteral, kList } kind;
    Unit ch = 0;
    bool negate = false;
    Units singles, los, his;
};

// The tokens of a valid pattern; false for an invalid one.
bool parse(const Units& p, bool ic, std::vector<Token>& tokens) {
    for (size_t i = 0; i < p.size(); ++i) {
        switch (p[i]) {
        case u'*': tokens.push_back({Token::kStar}); continue;
        case u'?': tokens.push_back({Token::kAny}); continue;
        case u'#': tokens.push_back({Token::kDigit}); continue;
        case u'[': break;
        default: tokens.push_back({Token::kLiteral, p[i]}); continue;
        }
        const size_t close = p.find(u']', i);
        if (close == Units::npos) return false;
        const Units list = p.substr(i + 1, close - i - 1);
        i = close;
        if (list.empty()) continue;  // matches the empty string
        Token t{Token::kList};
        t.negate = list[0] == u'!';
        size_t k = t.negate ? 1 : 0;
        if (k == list.size()) {  // nothing excluded
            tokens.push_back({Token::kAny});
            continue;
        }
        while (k < list.size()) {
            if (k + 2 < list.size() && list[k + 1] == u'-') {
                const Unit lo = list[k], hi = list[k + 2];
                if (ic ? tova::wildcard::collate(lo, hi) > 0 : lo > hi) return false;
                t.los += lo;
                t.his += hi;
                k += 3;
            } else {
                t.singles += list[k++];
            }
        }
        tokens.push_back(t);
    }
    return true;
}

// The reference is not what is under test, and comparison tracing in its
// inner loops would cost most of the fuzzer's time.
#define NOT_STEERED __attribute__((no_sanitize("coverage")))

NOT_STEERED bool matchesOne(const Token& t, Unit c, bool ic) {
    switch (t.kind) {
    case Token::kAny: return true;
    case Token::kDigit: return c >= u'0' && c <= u'9';
    case Token::kLiteral: return ic ? fold(t.ch) == fold(c) : t.ch == c;
    default: break;
    }
    bool in = false;
    for (Unit s : t.singles) in |= ic ? fold(s) == fold(c) : s == c;
    for (size_t r = 0; r < t.los.size(); ++r)
        in |= ic ? tova::wildcard::collate(t.los[r], c) <= 0 && tova::wildcard::collate(c, t.his[r]) <= 0
                 : t.los[r] <= c && c <= t.his[r];
    return in != t.negate;
}

// Whether `text` repeated to n code units matches: the tokens' verdicts on
// each distinct position of the text are worked out once.
NOT_STEERED bool reference(const std::vector<Token>& tokens, const Units& text, size_t n, bool ic) {
    // reach[j]: the tokens so far can match the first j code units.
    std::vector<char> reach(n + 1, 0), next(n + 1), fits(text.size());
    reach[0] = 1;
    for (const Token& t : tokens) {
        for (size_t k = 0; k < text.size(); ++k) fits[k] = t.kind == Token::kStar || matchesOne(t, text[k], ic);
        char any = 0;
        for (size_t j = 0; j <= n; ++j) {
            if (t.kind == Token::kStar) {
                next[j] = any |= reach[j];
            } else {
                next[j] = j > 0 && reach[j - 1] && fits[(j - 1) % text.size()];
            }
        }
        reach.swap(next);
    }
    return reach.back();
}

// 0: no match, 1: match, 93: invalid pattern.
long like(const Units& text, const Units& pattern, bool ic) {
    try {
        tova::WildcardPattern compiled(pattern.data(), pattern.size(), ic);
        const bool once = tova::isLike(text.data(), text.size(), pattern.data(), pattern.size(), ic);
        require(once == compiled.matches(text.data(), text.size()), "isLike agrees with a compiled pattern");
        return once;
    } catch (const tova::native::Raised& e) {
        return e.code;
    }
}

Units units(const uint8_t* p, size_t n, size_t most) {
    Units out;
    for (size_t i = 0; i < n && out.size() < most; ++i)
        out += p[i] < 0x80 ? Unit(p[i]) : Unit(0x80 + (p[i] - 0x80) * 509);
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const bool ic = data[0] & 1, longText = data[0] & 2;
    const uint8_t* rest = data + 1;
    const size_t n = size - 1;
    size_t tab = 0;
    while (tab < n && rest[tab] != '\t') ++tab;
    const Units pattern = units(rest, tab, 64);
    const Units text = tab < n ? units(rest + tab + 1, n - tab - 1, 512) : Units();

    std::vector<Token> tokens;
    const long expected = parse(pattern, ic, tokens) ? reference(tokens, text, text.size(), ic) : 93;
    require(like(text, pattern, ic) == expected, "the matcher agrees with the reference");
    if (!longText || expected == 93 || text.empty()) return 0;

    // Past the 16384 code units the matcher case-folds at a time.
    Units repeated = text;
    while (repeated.size() < 17000) repeated += repeated;
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const long got = like(repeated, pattern, ic);
    const auto middle = Clock::now();
    require(got == reference(tokens, text, repeated.size(), ic), "the matcher agrees with the reference on a long text");
    // The reference's work is linear in the text; a matcher that retried its
    // stars would be hundreds of times slower than it here, not a few.
    const double matcher = std::chrono::duration<double>(middle - start).count();
    const double linear = std::chrono::duration<double>(Clock::now() - middle).count();
    require(matcher < 4 * linear + 0.1, "matching time stays linear in the text");
    return 0;
}
