// JPEG decode of any bytes: frame header, tables, scans, progressive
// refinement and restart markers all come from the input. The pixel buffer
// ends exactly after the image's last pixel, so a write past it is caught, and
// the padding between rows is marked to show that nothing is written there.
#include "fuzz.h"
#include "graphics/jpeg_codec.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    namespace jpeg = tova::jpeg;
    jpeg::Info info;
    if (!jpeg::readInfo(data, size, info)) return 0;
    require(info.width > 0 && info.height > 0, "readInfo reports a size");
    // Large frames are legal but only slow down the search.
    if (static_cast<int64_t>(info.width) * info.height > (int64_t{1} << 22)) return 0;
    // Both row orders and a few paddings, chosen by what the search can change.
    const bool bottomUp = size & 1;
    const int padding = (size >> 1) & 3;
    const ptrdiff_t row = 3 * static_cast<ptrdiff_t>(info.width) + padding;
    constexpr uint8_t kMark = 0xA5;
    std::vector<uint8_t> pixels(static_cast<size_t>(row) * (info.height - 1) + 3 * info.width, kMark);
    uint8_t* first = bottomUp ? pixels.data() + row * (info.height - 1) : pixels.data();
    jpeg::decode(data, size, first, bottomUp ? -row : row, info.width, info.height);
    for (int y = 0; padding && y + 1 < info.height; ++y)
        for (int k = 1; k <= padding; ++k) require(pixels[(y + 1) * row - k] == kMark, "rows end at their width");
    // A size other than the frame's is refused.
    require(!jpeg::decode(data, size, pixels.data(), row, info.width - 1, info.height), "a wrong width is refused");
    return 0;
}
