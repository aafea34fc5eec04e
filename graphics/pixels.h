// Work on raw pixel memory shared by the DIB classes: premultiplying alpha,
// random fills and resampling. Nothing here knows GDI or COM, so the routines
// are tested and measured on plain buffers.
//
// Rows are addressed as base + y * stride (stride in bytes, may be negative);
// pixels are 3 bytes (blue, green, red) or 4 bytes (blue, green, red, alpha).
#pragma once

#include <cstddef>
#include <cstdint>

namespace tova::pixels {

// blue, green, red = value * alpha / 255, truncated; alpha unchanged.
void premultiplyAlpha(uint8_t* base, ptrdiff_t stride, int width, int height);

// The instruction sets premultiplyAlpha chooses from (the best the processor
// has); the tests run each.
enum class Simd { Best, Sse2, Scalar };
void premultiplyAlphaWith(Simd simd, uint8_t* base, ptrdiff_t stride, int width, int height);

// A small, fast generator; any seed (0 included) gives a usable sequence.
class Random {
public:
    explicit Random(uint64_t seed);
    uint64_t next();
    // A value in [0, 1) times 255, rounded to the nearest byte (ties to even),
    // taken 16 bits at a time from next().
    static uint8_t byteOf(uint32_t sixteenBits);

private:
    uint64_t state_;
};

// Fills every pixel: with grey, one random value for blue, green and red;
// otherwise blue 0 and green and red each random. Alpha bytes (4-byte pixels)
// are left as they are.
void randomise(uint8_t* base, ptrdiff_t stride, int width, int height, int bytesPerPixel, bool grey,
               uint64_t seed);

// Bilinear scaling of every channel from the source to the destination
// (pixel centres aligned, edges clamped). Same sizes give an exact copy.
void resample(const uint8_t* src, ptrdiff_t srcStride, int srcWidth, int srcHeight, uint8_t* dst,
              ptrdiff_t dstStride, int dstWidth, int dstHeight, int bytesPerPixel);

}  // namespace tova::pixels
