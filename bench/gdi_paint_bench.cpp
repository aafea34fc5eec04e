// Our own pixel arithmetic next to what GDI offers on the same surface, in one
// run: a full-screen (1920 x 1080) two-colour gradient against GradientFill
// and a constant-alpha fill against AlphaBlend, both on a 32-bit DIB section
// in a memory DC; colourising a 12-megapixel 24-bit DIB against memcpy of the
// same buffer. Ratios above 1 mean ours takes longer. Each figure is the best
// of several runs.
//   gdi_paint_bench [RUNS]     (default 7)

#include "bench/clock.h"
#include "graphics/colourise.h"
#include "graphics/gradient_fills.h"
#include "graphics/work_area.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace tova;

namespace {

void ratio(const char* ours, double oursSeconds, const char* theirs, double theirsSeconds) {
    printf("  %-34s %8.2f ms   %-30s %8.2f ms   ratio %5.2f\n", ours, oursSeconds * 1e3, theirs, theirsSeconds * 1e3,
           oursSeconds / theirsSeconds);
}

}  // namespace

int main(int argc, char** argv) {
    const int runs = argc > 1 ? atoi(argv[1]) : 7;
    const int w = 1920, h = 1080;
    Surface32 screen(w, h), source(w, h);
    if (!screen.ok() || !source.ok()) return 1;
    printf("gdi_paint_bench: %d x %d surface, best of %d runs\n", w, h, runs);
    const RECT all{0, 0, w, h};

    for (gradients::Direction d : {gradients::Direction::Horizontal, gradients::Direction::Vertical}) {
        const bool across = d == gradients::Direction::Horizontal;
        const double ours = bestSeconds(runs, [&] {
            drawLinearGradient(screen.dc(), all, RGB(10, 20, 30), RGB(250, 200, 100), d);
            GdiFlush();
        });
        TRIVERTEX v[2] = {{0, 0, 10 << 8, 20 << 8, 30 << 8, 0}, {w, h, 250 << 8, 200 << 8, 100 << 8, 0}};
        GRADIENT_RECT gr{0, 1};
        bool filled = true;
        const double gdi = bestSeconds(runs, [&] {
            filled = GradientFill(screen.dc(), v, 2, &gr, 1, across ? GRADIENT_FILL_RECT_H : GRADIENT_FILL_RECT_V) &&
                     filled;
            GdiFlush();
        });
        if (!filled) printf("  (GradientFill failed)\n");
        ratio(across ? "DrawLinearGradient horizontal" : "DrawLinearGradient vertical", ours,
              across ? "GradientFill RECT_H" : "GradientFill RECT_V", gdi);
    }

    {
        const double ours = bestSeconds(runs, [&] {
            drawAlphaFill(screen.dc(), all, RGB(200, 100, 50), 100);
            GdiFlush();
        });
        // GDI's way: a solid source of the same size blended at a constant alpha.
        const gradients::Pixels32 s = source.pixels();
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) s.row(y)[x] = 0x00C86432u;
        BLENDFUNCTION f{AC_SRC_OVER, 0, 100, 0};
        const double gdi = bestSeconds(runs, [&] {
            AlphaBlend(screen.dc(), 0, 0, w, h, source.dc(), 0, 0, w, h, f);
            GdiFlush();
        });
        ratio("DrawAlphaFill (read, blend, write)", ours, "AlphaBlend, constant alpha", gdi);
    }

    {
        // 4000 x 3000, 24 bits: 12 megapixels in 36 MB.
        const int cw = 4000, ch = 3000;
        const size_t stride = static_cast<size_t>(cw) * 3;
        std::vector<uint8_t> a(stride * ch), b(stride * ch);
        for (size_t i = 0; i < a.size(); ++i) a[i] = static_cast<uint8_t>(i * 2654435761u >> 24);
        memcpy(b.data(), a.data(), a.size());  // touched before timing
        const colourise::PixelRows px{a.data(), static_cast<ptrdiff_t>(stride), cw, ch, 3};
        const double copy = bestSeconds(runs, [&] { memcpy(b.data(), a.data(), a.size()); });
        const double colourised = bestSeconds(runs, [&] { colourise::colourise(px, colour::Rgb{200, 60, 20}, 255); });
        ratio("ColouriseDIB 12 MP, Amount 255", colourised, "memcpy of the same 36 MB", copy);
        const double half = bestSeconds(runs, [&] { colourise::colourise(px, colour::Rgb{200, 60, 20}, 128); });
        ratio("ColouriseDIB 12 MP, Amount 128", half, "memcpy of the same 36 MB", copy);
        const double grey = bestSeconds(runs, [&] { colourise::greyscale(px, 255); });
        ratio("GreyscaleDIB 12 MP", grey, "memcpy of the same 36 MB", copy);
    }
    return 0;
}
