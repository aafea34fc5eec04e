// JPEG encode of random pixels at random sizes, row strides (padded, bottom-up)
// and qualities, including qualities outside 1..100. The source holds exactly
// the rows the stride reaches, so a read past the image is caught; the stream
// must come out whole and describe the image.
#include "fuzz.h"
#include "graphics/jpeg_codec.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    namespace jpeg = tova::jpeg;
    FuzzedDataProvider in(data, size);
    const int width = in.ConsumeIntegralInRange(1, 1024);
    const int height = std::min(in.ConsumeIntegralInRange(1, 1024), (1 << 16) / width);
    const int quality = in.ConsumeIntegralInRange(-50, 150);
    const int padding = in.ConsumeIntegralInRange(0, 9);
    const bool bottomUp = in.ConsumeBool();
    const std::vector<uint8_t> pattern = in.ConsumeRemainingBytes<uint8_t>();

    const ptrdiff_t row = 3 * static_cast<ptrdiff_t>(width) + padding;
    std::vector<uint8_t> src(static_cast<size_t>(row) * (height - 1) + 3 * width);
    for (size_t i = 0; i < src.size() && !pattern.empty(); ++i) src[i] = pattern[i % pattern.size()];
    const uint8_t* first = bottomUp ? src.data() + row * (height - 1) : src.data();

    std::vector<uint8_t> out;
    require(jpeg::encode(first, bottomUp ? -row : row, width, height, quality, out), "encode succeeds");
    require(out.size() >= 4 && out[0] == 0xFF && out[1] == 0xD8 && out[out.size() - 2] == 0xFF &&
                out.back() == 0xD9,
            "the stream runs from SOI to EOI");
    jpeg::Info info;
    require(jpeg::readInfo(out.data(), out.size(), info), "the stream can be read");
    require(info.width == width && info.height == height && info.components == 3 && !info.progressive,
            "the frame header describes the image");
    return 0;
}
