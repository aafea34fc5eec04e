// BMP file images as CPictureByteArray receives them: any bytes. A layout the
// reader accepts lies wholly inside the bytes (every pixel row and colour is
// read here, so a step outside is caught), and an image the writer makes is
// read back with the same size and pixels.
#include "fuzz.h"
#include "graphics/bmp_format.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    tova::bmp::Layout l;
    if (tova::bmp::read(data, size, l)) {
        require(l.pixels >= data && l.pixels + l.stride * l.height <= data + size, "pixels inside the bytes");
        require(!l.colours || l.colours + l.colourCount * 4 <= data + size, "colours inside the bytes");
        unsigned sum = 0;
        for (size_t i = 0; i < l.stride * l.height; ++i) sum += l.pixels[i];
        for (size_t i = 0; i < l.colourCount * 4; ++i) sum += l.colours[i];
        volatile unsigned sink = sum;  // the reads stay
        (void)sink;
    }
    FuzzedDataProvider in(data, size);
    const int w = in.ConsumeIntegralInRange(1, 40), h = in.ConsumeIntegralInRange(1, 40);
    std::vector<uint8_t> image = in.ConsumeBytes<uint8_t>(static_cast<size_t>(w) * h * 3);
    image.resize(static_cast<size_t>(w) * h * 3);
    const std::vector<uint8_t> file = tova::bmp::write24(image.data(), w * 3, w, h);
    tova::bmp::Layout back;
    require(tova::bmp::read(file.data(), file.size(), back), "a written image reads");
    require(back.width == w && back.height == h && back.bitsPerPixel == 24 && back.bottomUp, "same size");
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w * 3; ++x)
            require(back.pixels[(h - 1 - y) * back.stride + x] == image[y * w * 3 + x], "same pixels");
    return 0;
}
