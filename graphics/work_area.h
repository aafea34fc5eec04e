// The 32-bit work bitmap in which gradients, alpha fills and picture effects
// compute their pixels: the destination area is read with BitBlt, changed by
// our own arithmetic and written back, so the result does not depend on how a
// driver stretches, dithers or blends.
#pragma once

#include "../frame/library_frame.h"
#include "gradients.h"

#include <functional>

namespace tova {

// A top-down 32-bit DIB section of its own, selected into a memory DC of its own.
class Surface32 {
public:
    Surface32(int width, int height);
    ~Surface32();
    Surface32(const Surface32&) = delete;
    Surface32& operator=(const Surface32&) = delete;
    bool ok() const { return bits_ != nullptr; }
    HDC dc() const { return dc_; }
    int width() const { return width_; }
    int height() const { return height_; }
    gradients::Pixels32 pixels() const { return gradients::Pixels32{bits_, width_, width_, height_}; }
    // Clears every byte (colour and alpha) to 0.
    void clear();

private:
    HDC dc_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
    uint32_t* bits_ = nullptr;
    int width_, height_;
};

// Areas larger than this many pixels are refused (False) rather than given a
// work bitmap the system may not have memory for.
constexpr long long kMaxWorkPixels = 64LL << 20;

// Whether dc's pixels can be read back (not a printer or a metafile).
bool readableDc(HDC dc);

// The part of `area` that dc can show (its clip box); false when none.
bool visiblePart(HDC dc, const RECT& area, RECT& visible);

// Reads the w x h area of dc at (x, y), lets `edit` change the pixels and
// writes them back. False when the area is empty or too large, or the DC
// cannot be read or written.
bool editArea(HDC dc, int x, int y, int w, int h, const std::function<void(const gradients::Pixels32&)>& edit);

// Reads, edits and writes back the visible part of `area` (right and bottom
// exclusive) in bands of rows: the work bitmap stays small enough for the
// processor's cache however large the area, and what the DC cannot show costs
// nothing. Each band's pixels carry their place in the whole area
// (Pixels32::x0, y0, areaWidth, areaHeight). True when nothing is visible.
bool editBands(HDC dc, const RECT& area, const std::function<void(const gradients::Pixels32&)>& edit);
// Fills the visible part of `area` band by band with what `fill` computes,
// without reading it. With `rowsAlike` one band is computed and repeated.
bool writeBands(HDC dc, const RECT& area, const std::function<void(const gradients::Pixels32&)>& fill,
                bool rowsAlike);

// Copies an opaque surface to dc at (x, y).
bool writeSurface(HDC dc, int x, int y, const Surface32& surface);

// Blends a premultiplied surface onto dc at (x, y) with the platform's
// AlphaBlend: for DCs that cannot be read (within 1 of our arithmetic).
bool platformBlend(HDC dc, int x, int y, const Surface32& layer);

}  // namespace tova
