// What the wildcard matcher asks of the locale when it ignores case. The
// Windows build answers with the user locale (wildcard_locale.cpp); the native
// sanitizer build (tests/native) with a plain ASCII stand-in.
#pragma once

#include "wildcard.h"

#include <cstddef>

namespace tova::wildcard {

// Upper-cases n code units of src into dst. The mapping is one to one, so
// positions stay where they were.
void foldCase(const Unit* src, size_t n, Unit* dst);

// <0, 0, >0 as a sorts before, with or after b, ignoring case.
int collate(Unit a, Unit b);

}  // namespace tova::wildcard
