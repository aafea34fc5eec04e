// The tip's picture: one 32-bit premultiplied surface, opaque inside the
// shape and clear outside, drawn the same for the popup and for DrawTip.
#pragma once

#include "tooltip_layout.h"

#include <cstdint>
#include <memory>

namespace tova::tip {

// A top-down 32-bit DIB section selected into a memory DC of its own.
class Surface {
public:
    explicit Surface(SIZE size);
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    bool ok() const { return bits_ != nullptr && selected_.ok(); }
    HDC dc() const { return dc_.get(); }
    uint32_t* bits() const { return bits_; }
    SIZE size() const { return size_; }

private:
    SIZE size_;
    uint32_t* bits_ = nullptr;
    MemoryDc dc_;
    Bitmap bitmap_;
    Selection selected_;
};

// The shape as a region in the window's coordinates: the body, and the stem of a balloon.
GdiObject<HRGN> shapeRegion(const Content& content, const Shape& shape, bool balloon);

// Paints the whole tip; null when the platform refuses a surface.
std::unique_ptr<Surface> render(const Look& look, const Fonts& fonts, const std::wstring& text,
                                const Content& content, const Shape& shape);

// Blends the surface over a DC at (x, y) with its pixel alpha: read, composed
// in memory, written back, so the result is the same on every system; a DC
// that cannot be read gets AlphaBlend instead.
bool compose(HDC dc, int x, int y, const Surface& surface);

// One channel of a premultiplied pixel s with alpha pa, at constant alpha o, over d.
inline uint8_t blendChannel(unsigned s, unsigned d, unsigned pa, unsigned o) {
    const unsigned a = (pa * o + 127) / 255;
    return static_cast<uint8_t>((s * o + d * (255 - a) + 127) / 255);
}

}  // namespace tova::tip
