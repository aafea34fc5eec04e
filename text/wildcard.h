// The wildcard pattern language of IsLike: ? * # [list] [!list], ranges, no
// implicit leading or trailing wildcard.
//
// Details the language leaves open, decided here:
// - Characters are UTF-16 code units: ? matches one code unit, # only 0-9.
// - A range runs from its first bound to its second; a reversed range ([z-a])
//   makes the pattern invalid (93), like an unclosed bracket. "Reversed" is
//   judged by the same order the mode matches with (code units, or the locale's
//   case-insensitive collation), so [a-Z] is invalid case-sensitively but a valid
//   range case-insensitively.
// - A list is read left to right: a character followed by "-" and one more
//   character forms a range; every other character, "-" included, is itself
//   (so [-a], [a-], [!-a] and [a-c-e] all hold a plain "-").
// - [] matches the empty string; [!] (nothing excluded) matches any one character.
// - Case-insensitive: text and pattern are upper-cased once with the user
//   locale's case mapping and then compared exactly; ranges are compared with
//   the user locale's collation, ignoring case.
// The pattern is checked whole before any matching, so an invalid pattern
// raises 93 whatever the text.
#pragma once

#include <cstddef>
#include <memory>

namespace tova {

namespace wildcard {
// A UTF-16 code unit: wchar_t on Windows, char16_t elsewhere, so that the
// native sanitizer build (tests/native) runs the matcher the DLL runs.
#ifdef _WIN32
using Unit = wchar_t;
#else
using Unit = char16_t;
#endif
}  // namespace wildcard

// True when the whole `text` matches the whole `pattern`; case-insensitive under
// the user locale's text comparison when `ignoreCase`. Raises 93 for a pattern
// with an unclosed bracket or a reversed range.
bool isLike(const wildcard::Unit* text, size_t textLength, const wildcard::Unit* pattern, size_t patternLength,
            bool ignoreCase);

// A pattern compiled once for many texts (a folder search tries every file name
// against the same criteria). The constructor raises 93 for an invalid pattern.
// matches() keeps a cache of collation results: one object serves one thread.
class WildcardPattern {
public:
    WildcardPattern(const wildcard::Unit* pattern, size_t patternLength, bool ignoreCase);
    ~WildcardPattern();
    WildcardPattern(WildcardPattern&&) noexcept;
    WildcardPattern& operator=(WildcardPattern&&) noexcept;

    bool matches(const wildcard::Unit* text, size_t textLength) const;

    struct Compiled;

private:
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace tova
