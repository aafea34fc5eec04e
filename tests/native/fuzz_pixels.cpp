// The pixel routines of the DIB classes on plain buffers of random sizes, row
// paddings and directions (negative strides for bottom-up memory). Each buffer
// ends exactly after its last pixel, so a step past it is caught, and its
// padding is marked to show that nothing between the rows is written.
// Premultiplying gives the same with every instruction set; resampling copies
// at the same size and keeps a uniform colour at any size; random fills keep
// their promises on grey, blue and alpha.
#include "fuzz.h"
#include "graphics/pixels.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

namespace {

namespace px = tova::pixels;
constexpr uint8_t kMark = 0xA5;

struct Rows {
    int width, height, bpp, padding;
    bool bottomUp;
    std::vector<uint8_t> memory;

    Rows(FuzzedDataProvider& in, int bpp_) : bpp(bpp_) {
        width = in.ConsumeIntegralInRange(1, 300);
        height = std::min(in.ConsumeIntegralInRange(1, 300), 30000 / width);
        padding = in.ConsumeIntegralInRange(0, 5);
        bottomUp = in.ConsumeBool();
        memory.assign(static_cast<size_t>(row()) * (height - 1) + width * bpp, kMark);
    }
    ptrdiff_t row() const { return static_cast<ptrdiff_t>(width) * bpp + padding; }
    ptrdiff_t stride() const { return bottomUp ? -row() : row(); }
    uint8_t* first() { return memory.data() + (bottomUp ? row() * (height - 1) : 0); }
    uint8_t* pixel(int x, int y) { return first() + y * stride() + x * bpp; }
    bool paddingUntouched() const {
        for (size_t i = 0; i < memory.size(); ++i)
            if (static_cast<ptrdiff_t>(i % row()) >= width * bpp && memory[i] != kMark) return false;
        return true;
    }
    void fill(FuzzedDataProvider& in) {
        const std::vector<uint8_t> bytes = in.ConsumeBytes<uint8_t>(64);
        size_t k = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width * bpp; ++x) pixel(0, y)[x] = bytes.empty() ? 0 : bytes[k++ % bytes.size()];
    }
};

void premultiply(FuzzedDataProvider& in) {
    Rows best(in, 4);
    best.fill(in);
    Rows sse2 = best, scalar = best;
    px::premultiplyAlphaWith(px::Simd::Best, best.first(), best.stride(), best.width, best.height);
    px::premultiplyAlphaWith(px::Simd::Sse2, sse2.first(), sse2.stride(), sse2.width, sse2.height);
    px::premultiplyAlphaWith(px::Simd::Scalar, scalar.first(), scalar.stride(), scalar.width, scalar.height);
    require(best.memory == scalar.memory && sse2.memory == scalar.memory, "every instruction set agrees");
    require(scalar.paddingUntouched(), "premultiplying leaves the padding");
}

void resample(FuzzedDataProvider& in) {
    const int bpp = in.ConsumeBool() ? 4 : 3;
    const bool sameSize = in.ConsumeBool();
    Rows src(in, bpp);
    Rows dst = sameSize ? src : Rows(in, bpp);
    if (sameSize) dst.bottomUp = in.ConsumeBool();
    const bool uniform = in.ConsumeBool();
    if (uniform) {
        const uint8_t colour[4] = {in.ConsumeIntegral<uint8_t>(), in.ConsumeIntegral<uint8_t>(),
                                   in.ConsumeIntegral<uint8_t>(), in.ConsumeIntegral<uint8_t>()};
        for (int y = 0; y < src.height; ++y)
            for (int x = 0; x < src.width; ++x) std::copy(colour, colour + bpp, src.pixel(x, y));
    } else {
        src.fill(in);
    }
    px::resample(src.first(), src.stride(), src.width, src.height, dst.first(), dst.stride(), dst.width,
                 dst.height, bpp);
    require(dst.paddingUntouched(), "resampling leaves the padding");
    for (int y = 0; y < dst.height; ++y) {
        for (int x = 0; x < dst.width; ++x) {
            const uint8_t* from = sameSize ? src.pixel(x, y) : uniform ? src.pixel(0, 0) : nullptr;
            if (from) require(std::equal(from, from + bpp, dst.pixel(x, y)), "copies and uniform colours stay");
        }
    }
}

void randomise(FuzzedDataProvider& in) {
    const int bpp = in.ConsumeBool() ? 4 : 3;
    const bool grey = in.ConsumeBool();
    Rows rows(in, bpp);
    px::randomise(rows.first(), rows.stride(), rows.width, rows.height, bpp, grey, in.ConsumeIntegral<uint64_t>());
    require(rows.paddingUntouched(), "random fills leave the padding");
    for (int y = 0; y < rows.height; ++y) {
        for (int x = 0; x < rows.width; ++x) {
            const uint8_t* p = rows.pixel(x, y);
            require(grey ? p[0] == p[1] && p[1] == p[2] : p[0] == 0, "grey is grey, colour has no blue");
            require(bpp == 3 || p[3] == kMark, "alpha is left as it was");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0: premultiply(in); break;
    case 1: resample(in); break;
    default: randomise(in); break;
    }
    return 0;
}
