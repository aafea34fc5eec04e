// The wildcard pattern language of IsLike: ? * # [list] [!list], ranges, no
// implicit leading or trailing wildcard.
#pragma once

#include <cstddef>

namespace tova {

// True when the whole `text` matches the whole `pattern`; case-insensitive under
// the user locale's text comparison when `ignoreCase`. Raises 93 for a pattern
// with an unclosed bracket.
bool isLike(const wchar_t* text, size_t textLength, const wchar_t* pattern, size_t patternLength, bool ignoreCase);

}  // namespace tova
