// The library's own JPEG codec: baseline, progressive and grey decoding into
// 24-bit BGR pixels, and baseline encoding at a quality the caller controls.
// It knows nothing of GDI or COM; the JPEG members of the graphics classes
// wrap it. Every input is untrusted: a malformed, truncated or hostile stream
// makes these functions return false, never read or write out of bounds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tova::jpeg {

struct Info {
    int width = 0;
    int height = 0;
    int components = 0;  // 1 (grey) or 3 (colour)
    bool progressive = false;
};

// Reads the frame header only.
bool readInfo(const uint8_t* data, size_t size, Info& info);

// Every block of a Huffman-coded JPEG costs at least one bit, so a stream
// cannot describe more than about 512 pixels per byte. A header claiming far
// more is hostile or truncated; refusing it before allocating keeps a few
// bytes from making us allocate gigabytes.
inline bool plausible(const Info& info, size_t size) {
    const unsigned long long pixels = static_cast<unsigned long long>(info.width) * info.height;
    return info.width > 0 && info.height > 0 && pixels / 1024 <= size;
}

// Decodes the whole image. Row y (0 = top) is written to dst + y * stride as
// width BGR triples; stride may be negative for bottom-up DIB memory. width
// and height must be those readInfo reported. Grey images give equal blue,
// green and red.
bool decode(const uint8_t* data, size_t size, uint8_t* dst, ptrdiff_t stride, int width, int height);

// Encodes width x height BGR pixels (row y at src + y * stride) as a baseline
// JFIF stream at quality 1..100 (values outside are clamped).
bool encode(const uint8_t* src, ptrdiff_t stride, int width, int height, int quality, std::vector<uint8_t>& out);

}  // namespace tova::jpeg
