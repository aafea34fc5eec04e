#include "bmp_format.h"

#include <cstring>

namespace tova::bmp {

namespace {

template <class T>
T get(const uint8_t* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
void put(std::vector<uint8_t>& out, size_t at, T v) {
    std::memcpy(out.data() + at, &v, sizeof v);
}

constexpr size_t kFileHeader = 14, kInfoHeader = 40;
constexpr uint32_t kRgb = 0, kBitFields = 3;

}  // namespace

bool read(const uint8_t* data, size_t size, Layout& out) {
    if (!data || size < kFileHeader + kInfoHeader || data[0] != 'B' || data[1] != 'M') return false;
    const uint32_t offBits = get<uint32_t>(data + 10);
    const uint32_t headerSize = get<uint32_t>(data + 14);
    if (headerSize < kInfoHeader || headerSize > size - kFileHeader) return false;
    const uint8_t* h = data + kFileHeader;
    const int32_t width = get<int32_t>(h + 4), height = get<int32_t>(h + 8);
    const uint16_t planes = get<uint16_t>(h + 12), bpp = get<uint16_t>(h + 14);
    const uint32_t compression = get<uint32_t>(h + 16), used = get<uint32_t>(h + 32);
    const long long w = width, ht = height < 0 ? -static_cast<long long>(height) : height;
    if (w < 1 || ht < 1 || w * ht > kMaxPixels || planes != 1) return false;
    if (bpp != 1 && bpp != 4 && bpp != 8 && bpp != 16 && bpp != 24 && bpp != 32) return false;
    const bool fields = compression == kBitFields;
    if (compression != kRgb && !(fields && (bpp == 16 || bpp == 32))) return false;
    const size_t colours = bpp <= 8 ? (used ? used : (1u << bpp)) : 0;
    if (bpp <= 8 && colours > (1u << bpp)) return false;
    // Masks follow a 40-byte header; larger headers hold them inside.
    const size_t masksAfter = fields && headerSize == kInfoHeader ? 12 : 0;
    const size_t infoBytes = headerSize + masksAfter + colours * 4;
    if (infoBytes > size - kFileHeader) return false;
    const size_t stride = ((static_cast<size_t>(w) * bpp + 31) / 32) * 4;
    const size_t pixelBytes = stride * static_cast<size_t>(ht);
    if (offBits < kFileHeader + infoBytes || offBits > size || pixelBytes > size - offBits) return false;
    out.width = static_cast<int>(w);
    out.height = static_cast<int>(ht);
    out.bottomUp = height > 0;
    out.bitsPerPixel = bpp;
    out.bitFields = fields;
    out.header = h;
    out.masks = fields ? h + kInfoHeader : nullptr;
    out.colours = colours ? h + headerSize + masksAfter : nullptr;
    out.colourCount = colours;
    out.pixels = data + offBits;
    out.stride = stride;
    return true;
}

std::vector<uint8_t> write24(const uint8_t* top, ptrdiff_t stride, int width, int height) {
    const size_t rowBytes = ((static_cast<size_t>(width) * 3 + 3) / 4) * 4;
    const size_t offBits = kFileHeader + kInfoHeader;
    std::vector<uint8_t> out(offBits + rowBytes * height, 0);
    out[0] = 'B', out[1] = 'M';
    put<uint32_t>(out, 2, static_cast<uint32_t>(out.size()));
    put<uint32_t>(out, 10, static_cast<uint32_t>(offBits));
    put<uint32_t>(out, 14, static_cast<uint32_t>(kInfoHeader));
    put<int32_t>(out, 18, width);
    put<int32_t>(out, 22, height);  // positive: bottom-up
    put<uint16_t>(out, 26, 1);
    put<uint16_t>(out, 28, 24);
    put<uint32_t>(out, 34, static_cast<uint32_t>(rowBytes * height));
    for (int y = 0; y < height; ++y)
        std::memcpy(out.data() + offBits + (height - 1 - y) * rowBytes, top + y * stride, static_cast<size_t>(width) * 3);
    return out;
}

}  // namespace tova::bmp
