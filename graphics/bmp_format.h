// BMP file images read and written without GDI: the header fields of a byte
// array checked against its size before anything is read (the bytes are
// untrusted), and 24-bit images written. Portable (tests/native fuzzes it).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tova::bmp {

// Where the parts of a valid file image lie inside its bytes.
struct Layout {
    int width = 0, height = 0;      // pixels; height positive
    bool bottomUp = true;
    int bitsPerPixel = 0;           // 1, 4, 8, 16, 24 or 32
    bool bitFields = false;         // 16 or 32 bits with three colour masks
    const uint8_t* header = nullptr;  // the 40 bytes of BITMAPINFOHEADER
    const uint8_t* masks = nullptr;   // 12 bytes when bitFields
    const uint8_t* colours = nullptr; // colourCount quads (blue, green, red, 0)
    size_t colourCount = 0;
    const uint8_t* pixels = nullptr;
    size_t stride = 0;              // bytes per row, a multiple of 4
};

// Images with more pixels than this are refused.
constexpr long long kMaxPixels = 1LL << 28;

// False for anything but an uncompressed (or bit-field) BMP whose every part
// lies inside the `size` bytes at `data`.
bool read(const uint8_t* data, size_t size, Layout& out);

// A 24-bit bottom-up file image of w x h blue-green-red pixels, row y (0 =
// top) at top + y * stride.
std::vector<uint8_t> write24(const uint8_t* top, ptrdiff_t stride, int width, int height);

}  // namespace tova::bmp
