// The arithmetic every effect and gradient shares, so that the same inputs give
// the same pixels on every system: integer blends, luminance and HSL. Nothing
// here knows GDI or COM (tests/native builds it too).
//
// A pixel is a uint32_t 0xAARRGGBB, the byte order (blue, green, red, alpha)
// of 32-bit DIB memory; a colour argument is a COLORREF-like 0x00BBGGRR.
#pragma once

#include <cstdint>

namespace tova::colour {

struct Rgb {
    int r = 0, g = 0, b = 0;
};

inline Rgb fromColorRef(uint32_t c) { return Rgb{int(c & 0xFF), int((c >> 8) & 0xFF), int((c >> 16) & 0xFF)}; }
inline uint32_t toColorRef(Rgb c) { return uint32_t(c.r) | uint32_t(c.g) << 8 | uint32_t(c.b) << 16; }
inline uint32_t toPixel(Rgb c, uint32_t alpha = 0) {
    return uint32_t(c.b) | uint32_t(c.g) << 8 | uint32_t(c.r) << 16 | alpha << 24;
}
inline Rgb fromPixel(uint32_t p) { return Rgb{int((p >> 16) & 0xFF), int((p >> 8) & 0xFF), int(p & 0xFF)}; }

// (299 R + 587 G + 114 B) \ 1000.
inline int luminance(int r, int g, int b) { return (299 * r + 587 * g + 114 * b) / 1000; }

// s over d with alpha a: (s a + d (255 - a) + 127) \ 255.
inline int blend(int s, int d, int a) { return (s * a + d * (255 - a) + 127) / 255; }

// A premultiplied s (alpha pa) over d at constant opacity o:
// a = (pa o + 127) \ 255, result (s o + d (255 - a) + 127) \ 255.
inline int blendPremultiplied(int s, int pa, int d, int o) {
    int a = (pa * o + 127) / 255;
    return (s * o + d * (255 - a) + 127) / 255;
}

// Rounds a non-negative num / den to nearest, halves up (away from zero).
inline int64_t roundDiv(int64_t num, int64_t den) { return (2 * num + den) / (2 * den); }

// Round to nearest, halves away from zero.
long roundHalfAway(double v);

// Hue in degrees 0 <= h < 360 (0 for greys), saturation and lightness 0-1.
struct Hsl {
    double h = 0, s = 0, l = 0;
};
Hsl toHsl(Rgb c);
// Hue taken modulo 360; s and l are expected within 0-1.
Rgb fromHsl(Hsl c);

// Each channel round(c1 + (c2 - c1) amount / 255).
Rgb mix(Rgb c1, Rgb c2, int amount);

}  // namespace tova::colour
