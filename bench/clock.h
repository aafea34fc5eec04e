// The benchmarks' clock: seconds from the performance counter.
#pragma once

#include <windows.h>

inline double benchSeconds() {
    static const double ticksPerSecond = [] {
        LARGE_INTEGER f;
        QueryPerformanceFrequency(&f);
        return static_cast<double>(f.QuadPart);
    }();
    LARGE_INTEGER t;
    QueryPerformanceCounter(&t);
    return static_cast<double>(t.QuadPart) / ticksPerSecond;
}
