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

// The best time of `runs` calls of f, in seconds.
template <class F>
double bestSeconds(int runs, F&& f) {
    double best = 1e300;
    for (int r = 0; r < runs; ++r) {
        const double start = benchSeconds();
        f();
        const double t = benchSeconds() - start;
        if (t < best) best = t;
    }
    return best;
}
