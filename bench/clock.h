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

// This process's CPU time (user and kernel), in seconds: other programs on a
// shared machine disturb it less than the elapsed time.
inline double cpuSeconds() {
    FILETIME created, exited, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
    auto s = [](const FILETIME& f) {
        return static_cast<double>((static_cast<unsigned long long>(f.dwHighDateTime) << 32) | f.dwLowDateTime) / 1e7;
    };
    return s(kernel) + s(user);
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
