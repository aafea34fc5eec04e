#include "section_pixels.h"

namespace tova {

namespace {

// Read from the DIB itself, not from the section's properties, so that a
// section in any state can never lead to a write outside its memory.
template <class I>
bool readSection(IDispatch* object, REFIID iid, int bitsPerPixel, colourise::PixelRows& out) {
    ComPtr<I> s = ComPtr<IDispatch>(object).as<I>(iid);
    if (!s) return false;
    LONG handle = 0;
    DIBSECTION ds{};
    if (FAILED(s->get_hDib(&handle)) || !handle ||
        GetObjectW(toHandle<HBITMAP>(handle), sizeof ds, &ds) != sizeof ds || !ds.dsBm.bmBits ||
        ds.dsBm.bmBitsPixel != bitsPerPixel)
        raise(kInvalidPicture);
    uint8_t* bits = static_cast<uint8_t*>(ds.dsBm.bmBits);
    const ptrdiff_t stride = ds.dsBm.bmWidthBytes;
    out.width = ds.dsBm.bmWidth;
    out.height = ds.dsBm.bmHeight;
    out.bytesPerPixel = bitsPerPixel / 8;
    const bool bottomUp = ds.dsBmih.biHeight > 0;  // the top row is then the last in memory
    out.top = bottomUp ? bits + (out.height - 1) * stride : bits;
    out.stride = bottomUp ? -stride : stride;
    return true;
}

}  // namespace

colourise::PixelRows sectionPixels(IDispatch* section) {
    colourise::PixelRows px;
    if (!section) raise(kInvalidPicture);
    GdiFlush();  // drawing still queued for the section lands first
    if (readSection<_DIBSection>(section, IID__DIBSection, 24, px)) return px;
    if (readSection<_AlphaDIBSection>(section, IID__AlphaDIBSection, 32, px)) return px;
    raise(kInvalidPicture);
}

}  // namespace tova
