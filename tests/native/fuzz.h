// What the fuzz targets share: a broken promise aborts, so libFuzzer counts it
// as a finding and keeps the input that caused it.
#pragma once

#include <cstdio>
#include <cstdlib>

inline void require(bool ok, const char* promise) {
    if (ok) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}
