#include "picture_bytes.h"

#include "bitmaps.h"
#include "jpeg_codec.h"
#include "pictures.h"
#include "work_area.h"

#include <cstring>

namespace tova {

namespace {

constexpr long long kMaxPixels = 1LL << 28;

template <class T>
void put(std::vector<uint8_t>& out, size_t at, T v) {
    std::memcpy(out.data() + at, &v, sizeof v);
}

template <class T>
T get(const uint8_t* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// Rows of 24-bit BGR pixels of the surface, bottom-up with 4-byte padding (as in a BMP).
std::vector<uint8_t> bottomUpBgr(const gradients::Pixels32& px, size_t stride) {
    std::vector<uint8_t> rows(stride * px.height);
    for (int y = 0; y < px.height; ++y) {
        uint8_t* d = rows.data() + (px.height - 1 - y) * stride;
        const uint32_t* s = px.row(y);
        for (int x = 0; x < px.width; ++x, d += 3) d[0] = uint8_t(s[x]), d[1] = uint8_t(s[x] >> 8), d[2] = uint8_t(s[x] >> 16);
    }
    return rows;
}

ComPtr<IPictureDisp> fromBmp(const uint8_t* data, size_t size) {
    if (size < 14 + 40) return nullptr;
    const uint32_t offBits = get<uint32_t>(data + 10);
    const uint32_t headerSize = get<uint32_t>(data + 14);
    if (headerSize < 40 || headerSize > size - 14) return nullptr;
    BITMAPINFOHEADER h;
    std::memcpy(&h, data + 14, sizeof h);
    const long long w = h.biWidth, ht = h.biHeight < 0 ? -static_cast<long long>(h.biHeight) : h.biHeight;
    const int bpp = h.biBitCount;
    if (w < 1 || ht < 1 || w * ht > kMaxPixels || h.biPlanes != 1) return nullptr;
    if (bpp != 1 && bpp != 4 && bpp != 8 && bpp != 16 && bpp != 24 && bpp != 32) return nullptr;
    const bool fields = h.biCompression == BI_BITFIELDS;
    if (h.biCompression != BI_RGB && !(fields && (bpp == 16 || bpp == 32))) return nullptr;
    size_t colours = bpp <= 8 ? (h.biClrUsed ? h.biClrUsed : (1u << bpp)) : 0;
    if (colours > (1u << (bpp <= 8 ? bpp : 0))) return nullptr;
    // Masks follow a 40-byte header; larger headers hold them inside.
    const size_t masks = fields && headerSize == 40 ? 12 : 0;
    const size_t infoBytes = headerSize + masks + colours * 4;
    if (infoBytes > size - 14) return nullptr;
    const size_t stride = ((static_cast<size_t>(w) * bpp + 31) / 32) * 4;
    const size_t pixelBytes = stride * static_cast<size_t>(ht);
    if (offBits < 14 + infoBytes || offBits > size || pixelBytes > size - offBits) return nullptr;
    // A BITMAPINFO of our own: the standard 40-byte header, then masks or colours.
    std::vector<uint8_t> info(40 + (fields ? 12 : 0) + colours * 4);
    std::memcpy(info.data(), data + 14, 40);
    reinterpret_cast<BITMAPINFOHEADER*>(info.data())->biSize = 40;
    if (fields) std::memcpy(info.data() + 40, data + 14 + 40, 12);
    if (colours) std::memcpy(info.data() + 40 + (fields ? 12 : 0), data + 14 + headerSize + masks, colours * 4);
    void* bits = nullptr;
    HBITMAP dib = CreateDIBSection(nullptr, reinterpret_cast<BITMAPINFO*>(info.data()), DIB_RGB_COLORS, &bits,
                                   nullptr, 0);
    if (!dib || !bits) {
        if (dib) DeleteObject(dib);
        return nullptr;
    }
    std::memcpy(bits, data + offBits, pixelBytes);
    return pictureOf(dib);
}

ComPtr<IPictureDisp> fromJpeg(const uint8_t* data, size_t size) {
    jpeg::Info info;
    if (!jpeg::readInfo(data, size, info) || info.width < 1 || info.height < 1 ||
        static_cast<long long>(info.width) * info.height > kMaxPixels)
        return nullptr;
    BITMAPINFO bi{};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = info.width;
    bi.bmiHeader.biHeight = -info.height;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    Bitmap dib(CreateDIBSection(nullptr, &bi, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!dib || !bits) return nullptr;
    const ptrdiff_t stride = ((static_cast<ptrdiff_t>(info.width) * 3 + 3) / 4) * 4;
    if (!jpeg::decode(data, size, static_cast<uint8_t*>(bits), stride, info.width, info.height)) return nullptr;
    return pictureOf(dib.release());
}

}  // namespace

bool pictureToBytes(IPictureDisp* picture, PictureFormat format, int quality, std::vector<uint8_t>& out) {
    PictureFacts f;
    if (!readPicture(picture, f)) return false;
    // Drawn over white at its own size: icons and metafiles have no background of their own.
    Surface32 s(f.width, f.height);
    if (!s.ok()) return false;
    const gradients::Pixels32 px = s.pixels();
    for (int y = 0; y < px.height; ++y) std::fill(px.row(y), px.row(y) + px.width, 0x00FFFFFFu);
    PaintRequest r;
    r.dc = s.dc();
    r.width = r.srcWidth = f.width;
    r.height = r.srcHeight = f.height;
    if (!paintResolved(f, r)) return false;
    GdiFlush();
    const size_t stride = ((static_cast<size_t>(f.width) * 3 + 3) / 4) * 4;
    std::vector<uint8_t> rows = bottomUpBgr(px, stride);
    if (format == PictureFormat::Jpeg) {
        // The codec takes rows top first: start at the last row in memory and step back.
        const uint8_t* top = rows.data() + (f.height - 1) * stride;
        return jpeg::encode(top, -static_cast<ptrdiff_t>(stride), f.width, f.height, quality, out);
    }
    const size_t offBits = 14 + 40;
    out.assign(offBits, 0);
    out[0] = 'B', out[1] = 'M';
    put<uint32_t>(out, 2, static_cast<uint32_t>(offBits + rows.size()));
    put<uint32_t>(out, 10, static_cast<uint32_t>(offBits));
    BITMAPINFOHEADER h{};
    h.biSize = 40;
    h.biWidth = f.width;
    h.biHeight = f.height;
    h.biPlanes = 1;
    h.biBitCount = 24;
    h.biCompression = BI_RGB;
    h.biSizeImage = static_cast<DWORD>(rows.size());
    std::memcpy(out.data() + 14, &h, sizeof h);
    out.insert(out.end(), rows.begin(), rows.end());
    return true;
}

ComPtr<IPictureDisp> pictureFromBytes(const uint8_t* data, size_t size) {
    if (!data || size < 4) return nullptr;
    if (data[0] == 'B' && data[1] == 'M') return fromBmp(data, size);
    if (data[0] == 0xFF && data[1] == 0xD8) return fromJpeg(data, size);
    return nullptr;
}

}  // namespace tova
