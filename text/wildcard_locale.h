// What the wildcard matcher asks of the locale when it ignores case. The
// Windows build answers with the user locale (wildcard_locale.cpp); the native
// sanitizer build (tests/native) with a plain ASCII stand-in.
#pragma once

#include "wildcard.h"

#include <cstddef>

namespace tova::wildcard {

// The locale's upper case of the code units 0..255, as a table: the matcher
// folds Latin-1 itself, one platform call per character would cost more than
// the whole match.
const Unit* latin1Upper();

// Upper-cases n code units with the locale's case mapping. The mapping is one
// to one, so positions stay where they were.
void upperCase(const Unit* src, size_t n, Unit* dst);

// <0, 0, >0 as a sorts before, with or after b, ignoring case.
int collate(Unit a, Unit b);

}  // namespace tova::wildcard
