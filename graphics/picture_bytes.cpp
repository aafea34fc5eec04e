#include "picture_bytes.h"

#include "bitmaps.h"
#include "bmp_format.h"
#include "jpeg_codec.h"
#include "pictures.h"
#include "work_area.h"

#include <cstring>

namespace tova {

namespace {

ComPtr<IPictureDisp> fromBmp(const uint8_t* data, size_t size) {
    bmp::Layout l;
    if (!bmp::read(data, size, l)) return nullptr;
    // A BITMAPINFO of our own: the 40-byte header, then masks or colours
    // (at most 3 masks or 256 colours, as the reader checked).
    struct {
        BITMAPINFOHEADER h;
        DWORD extra[3 + 256];
    } info{};
    std::memcpy(&info.h, l.header, sizeof info.h);
    info.h.biSize = sizeof info.h;
    info.h.biHeight = l.bottomUp ? l.height : -l.height;
    uint8_t* extra = reinterpret_cast<uint8_t*>(info.extra);
    if (l.bitFields) std::memcpy(extra, l.masks, 12);
    if (l.colourCount) std::memcpy(extra + (l.bitFields ? 12 : 0), l.colours, l.colourCount * 4);
    void* bits = nullptr;
    Bitmap dib(CreateDIBSection(nullptr, reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!dib || !bits) return nullptr;
    std::memcpy(bits, l.pixels, l.stride * static_cast<size_t>(l.height));
    return pictureOf(dib.release());
}

ComPtr<IPictureDisp> fromJpeg(const uint8_t* data, size_t size) {
    jpeg::Info info;
    if (!jpeg::readInfo(data, size, info) || !jpeg::plausible(info, size) ||
        static_cast<long long>(info.width) * info.height > bmp::kMaxPixels)
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
    // 24-bit rows, top first, for either encoder.
    const ptrdiff_t stride = static_cast<ptrdiff_t>(f.width) * 3;
    std::vector<uint8_t> rows(static_cast<size_t>(stride) * f.height);
    for (int y = 0; y < f.height; ++y) {
        uint8_t* d = rows.data() + y * stride;
        const uint32_t* p = px.row(y);
        for (int x = 0; x < f.width; ++x, d += 3) d[0] = uint8_t(p[x]), d[1] = uint8_t(p[x] >> 8), d[2] = uint8_t(p[x] >> 16);
    }
    if (format == PictureFormat::Jpeg) return jpeg::encode(rows.data(), stride, f.width, f.height, quality, out);
    out = bmp::write24(rows.data(), stride, f.width, f.height);
    return true;
}

ComPtr<IPictureDisp> pictureFromBytes(const uint8_t* data, size_t size) {
    if (!data || size < 4) return nullptr;
    if (data[0] == 'B' && data[1] == 'M') return fromBmp(data, size);
    if (data[0] == 0xFF && data[1] == 0xD8) return fromJpeg(data, size);
    return nullptr;
}

}  // namespace tova
