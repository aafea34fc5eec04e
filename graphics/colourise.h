// Colour operations on pixel memory in place: greyscale, colourise, tint,
// sepia, invert, brightness/contrast/gamma and colour replacement, with the
// fixed arithmetic of colour_math.h. Pixels are 3 bytes (blue, green, red) or
// 4 (alpha last, never changed). Portable: no GDI, no COM.
#pragma once

#include "colour_math.h"

#include <cstddef>
#include <cstdint>

namespace tova::colourise {

struct PixelRows {
    uint8_t* top = nullptr;  // row y at top + y * stride
    ptrdiff_t stride = 0;
    int width = 0, height = 0;
    int bytesPerPixel = 3;
};

// (Y, Y, Y) blended over each pixel by amount.
void greyscale(const PixelRows& px, int amount);
// Hue and saturation of `c`, lightness Y / 255, blended by amount.
void colourise(const PixelRows& px, colour::Rgb c, int amount);
// `c` blended over each pixel at amount.
void tint(const PixelRows& px, colour::Rgb c, int amount);
// The sepia matrix, each channel at most 255, blended by amount.
void sepia(const PixelRows& px, int amount);
// 255 - c.
void invert(const PixelRows& px);
// c + brightness, then round((c - 128) (100 + contrast) / 100) + 128, then
// round(255 (c / 255)^(1 / gamma)), each clamped to 0-255: one table for all channels.
void adjust(const PixelRows& px, int brightness, int contrast, double gamma);
// Pixels within `tolerance` of `from` in every channel become `to`; returns how many.
long replace(const PixelRows& px, colour::Rgb from, colour::Rgb to, int tolerance);
// Greyed as a disabled picture: Y + (255 - Y) lighten \ 255.
void disable(const PixelRows& px, int lighten);

}  // namespace tova::colourise
