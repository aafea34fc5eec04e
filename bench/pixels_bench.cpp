// Speed of the pixel work of the DIB classes on a 4096 x 4096 picture, next
// to a plain memcpy of the same buffer in the same run: PreMultiplyAlpha
// (32-bit pixels, in place), RandomiseBits (24-bit) and Resample (24-bit, to a
// smaller and a larger size). Each figure is the best of several runs over
// buffers touched beforehand (fresh memory is slow to touch on these machines).
// Bandwidth is the picture's bytes over the time taken (for Resample: the
// source picture's bytes).
//   pixels_bench [SIZE]     (default 4096)

#include "bench/clock.h"
#include "graphics/alpha_dib_section.h"
#include "graphics/dib_section.h"
#include "graphics/pixels.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace tova;

namespace {

constexpr int kRuns = 5;

void row(const char* what, double bytes, double seconds, double memcpySeconds) {
    printf("  %-44s %8.1f ms  %6.2f GB/s  %5.0f%% of memcpy\n", what, seconds * 1e3, bytes / seconds / 1e9,
           100.0 * memcpySeconds / seconds);
}

}  // namespace

int main(int argc, char** argv) {
    const int n = argc > 1 ? atoi(argv[1]) : 4096;
    if (n < 16) return 2;
    const size_t px = static_cast<size_t>(n) * n;
    printf("pixels_bench: %d x %d (best of %d runs)\n", n, n, kRuns);

    // ---- 32-bit: premultiplying alpha
    std::vector<uint8_t> a(px * 4), b(px * 4);
    pixels::randomise(a.data(), n * 4, n, n, 4, false, 1);
    for (size_t i = 3; i < a.size(); i += 4) a[i] = static_cast<uint8_t>(i * 7);
    std::memcpy(b.data(), a.data(), a.size());
    double copy32 = bestSeconds(kRuns, [&] { std::memcpy(b.data(), a.data(), a.size()); });
    printf("32-bit picture, %.0f MB\n", a.size() / 1e6);
    row("memcpy", static_cast<double>(a.size()), copy32, copy32);
    double pre = bestSeconds(kRuns, [&] { pixels::premultiplyAlpha(b.data(), n * 4, n, n); });
    row("PreMultiplyAlpha (pixel routine)", static_cast<double>(a.size()), pre, copy32);

    // The member itself, on the class's own DIB section memory.
    {
        ComPtr<tova::AlphaDIBSection> dib = tova::AlphaDIBSection::make();
        VARIANT_BOOL ok = VARIANT_FALSE;
        dib->Create(n, n, &ok);
        if (ok) {
            dib->RandomiseBits(VARIANT_FALSE);
            double member = bestSeconds(kRuns, [&] { dib->PreMultiplyAlpha(); });
            row("AlphaDIBSection.PreMultiplyAlpha", static_cast<double>(a.size()), member, copy32);
            double random = bestSeconds(kRuns, [&] { dib->RandomiseBits(VARIANT_FALSE); });
            row("AlphaDIBSection.RandomiseBits", static_cast<double>(a.size()), random, copy32);
        }
    }
    a = std::vector<uint8_t>();
    b = std::vector<uint8_t>();

    // ---- 24-bit: random fills and resampling
    const int line = ((n + 1) * 3) & ~3;
    std::vector<uint8_t> c(static_cast<size_t>(line) * n), d(c.size());
    pixels::randomise(c.data(), line, n, n, 3, false, 2);
    std::memcpy(d.data(), c.data(), c.size());
    double copy24 = bestSeconds(kRuns, [&] { std::memcpy(d.data(), c.data(), c.size()); });
    printf("24-bit picture, %.0f MB\n", c.size() / 1e6);
    row("memcpy", static_cast<double>(c.size()), copy24, copy24);
    double rndColour = bestSeconds(kRuns, [&] { pixels::randomise(d.data(), line, n, n, 3, false, 3); });
    row("RandomiseBits (colour: blue 0, green, red)", static_cast<double>(c.size()), rndColour, copy24);
    double rndGrey = bestSeconds(kRuns, [&] { pixels::randomise(d.data(), line, n, n, 3, true, 4); });
    row("RandomiseBits (grey)", static_cast<double>(c.size()), rndGrey, copy24);
    {
        ComPtr<tova::DIBSection> dib = tova::DIBSection::make();
        VARIANT_BOOL ok = VARIANT_FALSE;
        dib->Create(n, n, &ok);
        if (ok) {
            double member = bestSeconds(kRuns, [&] { dib->RandomiseBits(VARIANT_FALSE); });
            row("DIBSection.RandomiseBits", static_cast<double>(c.size()), member, copy24);
        }
    }
    pixels::randomise(c.data(), line, n, n, 3, true, 5);
    for (int target : {n * 3 / 4, n * 5 / 4}) {
        const int tline = ((target + 1) * 3) & ~3;
        std::vector<uint8_t> out(static_cast<size_t>(tline) * target);
        std::memset(out.data(), 0, out.size());
        double t = bestSeconds(kRuns, [&] {
            pixels::resample(c.data(), line, n, n, out.data(), tline, target, target, 3);
        });
        char what[64];
        snprintf(what, sizeof what, "Resample to %d x %d (%.0f MP/s out)", target, target,
                 static_cast<double>(target) * target / t / 1e6);
        row(what, static_cast<double>(c.size()), t, copy24);
    }
    {
        ComPtr<tova::DIBSection> dib = tova::DIBSection::make();
        VARIANT_BOOL ok = VARIANT_FALSE;
        dib->Create(n, n, &ok);
        if (ok) {
            dib->RandomiseBits(VARIANT_TRUE);
            double t = bestSeconds(kRuns, [&] {
                ComPtr<_DIBSection> r;
                dib->Resample(n * 3 / 4, n * 3 / 4, r.put());
            });
            row("DIBSection.Resample to 3/4 (with a new DIB)", static_cast<double>(c.size()), t, copy24);
            double same = bestSeconds(kRuns, [&] {
                ComPtr<_DIBSection> r;
                dib->Resample(n, n, r.put());
            });
            row("DIBSection.Resample, same size (a blit)", static_cast<double>(c.size()), same, copy24);
        }
    }
    return 0;
}
