// JPEG decode of any bytes: frame header, tables, scans, progressive
// refinement and restart markers all come from the input. The pixel buffer is
// exactly the image, with no slack, so a write past its last row is caught.
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
    const ptrdiff_t row = 3 * static_cast<ptrdiff_t>(info.width);
    std::vector<uint8_t> pixels(static_cast<size_t>(row) * info.height);
    // Both row orders, chosen by something the search can change.
    const bool bottomUp = size & 1;
    uint8_t* first = bottomUp ? pixels.data() + row * (info.height - 1) : pixels.data();
    jpeg::decode(data, size, first, bottomUp ? -row : row, info.width, info.height);
    // A size other than the frame's is refused before anything is written.
    require(!jpeg::decode(data, size, pixels.data(), row, info.width - 1, info.height), "a wrong width is refused");
    return 0;
}
