// JPEG encode then decode: the decoder reads whatever the encoder writes, at
// the size it was given, and a smooth picture comes back close to itself. The
// picture blends a 3 x 3 grid of colours from the input, 32 pixels apart (any
// closer and the chroma the encoder averages over 2 x 2 pixels differs too
// much), with a little noise.
#include "fuzz.h"
#include "graphics/jpeg_codec.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    namespace jpeg = tova::jpeg;
    FuzzedDataProvider in(data, size);
    const int width = in.ConsumeIntegralInRange(1, 200);
    const int height = in.ConsumeIntegralInRange(1, 200);
    const int quality = in.ConsumeIntegralInRange(50, 100);
    const int noise = in.ConsumeIntegralInRange(0, 8);
    uint8_t grid[3][3][3];
    for (auto& r : grid)
        for (auto& cell : r)
            for (uint8_t& c : cell) c = in.ConsumeIntegral<uint8_t>();
    uint32_t seed = in.ConsumeIntegral<uint32_t>();

    std::vector<uint8_t> image(3 * static_cast<size_t>(width) * height);
    for (int y = 0; y < height; ++y) {
        const double gy = std::min(y / 32.0, 2.0);
        const int y0 = gy >= 2 ? 1 : static_cast<int>(gy);
        for (int x = 0; x < width; ++x) {
            const double gx = std::min(x / 32.0, 2.0);
            const int x0 = gx >= 2 ? 1 : static_cast<int>(gx);
            const double fy = gy - y0, fx = gx - x0;
            for (int c = 0; c < 3; ++c) {
                double v = (1 - fy) * ((1 - fx) * grid[y0][x0][c] + fx * grid[y0][x0 + 1][c]) +
                           fy * ((1 - fx) * grid[y0 + 1][x0][c] + fx * grid[y0 + 1][x0 + 1][c]);
                seed = seed * 1664525u + 1013904223u;
                v += noise ? static_cast<int>(seed >> 24) % (2 * noise + 1) - noise : 0;
                image[3 * (static_cast<size_t>(y) * width + x) + c] = v < 0 ? 0 : v > 255 ? 255 : uint8_t(v + 0.5);
            }
        }
    }

    std::vector<uint8_t> stream;
    require(jpeg::encode(image.data(), 3 * width, width, height, quality, stream), "encode succeeds");
    jpeg::Info info;
    require(jpeg::readInfo(stream.data(), stream.size(), info) && info.width == width && info.height == height,
            "the decoder reads the encoder's frame header");
    std::vector<uint8_t> back(image.size());
    require(jpeg::decode(stream.data(), stream.size(), back.data(), 3 * width, width, height),
            "the decoder reads the encoder's stream");
    double error = 0;
    for (size_t i = 0; i < image.size(); ++i) error += std::abs(int(image[i]) - int(back[i]));
    error /= image.size();
    // A few levels. The floor is the chroma the encoder averages over 2 x 2
    // pixels: tiny pictures of saturated colours lose up to about 4 that way
    // even at quality 100 (so does the reference encoder and decoder the unit
    // tests compare with); quantisation and noise add the rest. Wrong blocks
    // or colours cost tens of levels.
    require(error <= 5.5 + (100 - quality) / 20.0 + noise / 2.0, "the picture comes back close to itself");
    return 0;
}
