#include "colourise.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tova::colourise {

using colour::blend;
using colour::Rgb;

namespace {

// Calls f(b, g, r) on every pixel's channel bytes.
template <class F>
void each(const PixelRows& px, F&& f) {
    const int n = px.bytesPerPixel;
    for (int y = 0; y < px.height; ++y) {
        uint8_t* p = px.top + y * px.stride;
        for (int x = 0; x < px.width; ++x, p += n) f(p[0], p[1], p[2]);
    }
}

// x \ 255 for 0 <= x < 65535 without a division.
inline uint32_t div255(uint32_t x) { return (x * 0x8081u) >> 23; }

// Each pixel becomes table[Y], blended over it by amount. Pixels are read into
// locals before anything is stored: stores through byte pointers may alias
// anything, and would make the compiler reload the tables for every pixel.
void byLuminance(const PixelRows& px, const Rgb (&table)[256], int amount) {
    uint32_t packed[256];
    for (int y = 0; y < 256; ++y) packed[y] = colour::toPixel(table[y]);
    const int n = px.bytesPerPixel, w = px.width;
    if (amount == 255) {
        for (int y = 0; y < px.height; ++y) {
            uint8_t* p = px.top + y * px.stride;
            for (int x = 0; x < w; ++x, p += n) {
                const uint32_t t = packed[colour::luminance(p[2], p[1], p[0])];
                p[0] = uint8_t(t), p[1] = uint8_t(t >> 8), p[2] = uint8_t(t >> 16);
            }
        }
        return;
    }
    // blend(t, d, a) = (t a + 127 + d (255 - a)) \ 255, the two products from tables.
    uint32_t mine[256], theirs[256];
    for (int v = 0; v < 256; ++v) mine[v] = v * amount + 127, theirs[v] = v * (255 - amount);
    for (int y = 0; y < px.height; ++y) {
        uint8_t* p = px.top + y * px.stride;
        for (int x = 0; x < w; ++x, p += n) {
            const uint32_t b = p[0], g = p[1], r = p[2];
            const uint32_t t = packed[colour::luminance(r, g, b)];
            p[0] = uint8_t(div255(mine[t & 0xFF] + theirs[b]));
            p[1] = uint8_t(div255(mine[(t >> 8) & 0xFF] + theirs[g]));
            p[2] = uint8_t(div255(mine[t >> 16] + theirs[r]));
        }
    }
}

}  // namespace

void greyscale(const PixelRows& px, int amount) {
    if (amount == 0) return;
    Rgb table[256];
    for (int y = 0; y < 256; ++y) table[y] = Rgb{y, y, y};
    byLuminance(px, table, amount);
}

void colourise(const PixelRows& px, Rgb c, int amount) {
    if (amount == 0) return;
    colour::Hsl hsl = colour::toHsl(c);
    Rgb table[256];
    for (int y = 0; y < 256; ++y) table[y] = colour::fromHsl(colour::Hsl{hsl.h, hsl.s, y / 255.0});
    byLuminance(px, table, amount);
}

void disable(const PixelRows& px, int lighten) {
    Rgb table[256];
    for (int y = 0; y < 256; ++y) {
        const int v = y + (255 - y) * lighten / 255;
        table[y] = Rgb{v, v, v};
    }
    byLuminance(px, table, 255);
}

void tint(const PixelRows& px, Rgb c, int amount) {
    if (amount == 0) return;
    // One table per channel: 256 blends instead of one per pixel.
    uint8_t tb[256], tg[256], tr[256];
    for (int v = 0; v < 256; ++v)
        tb[v] = uint8_t(blend(c.b, v, amount)), tg[v] = uint8_t(blend(c.g, v, amount)),
        tr[v] = uint8_t(blend(c.r, v, amount));
    each(px, [&](uint8_t& b, uint8_t& g, uint8_t& r) { b = tb[b], g = tg[g], r = tr[r]; });
}

void sepia(const PixelRows& px, int amount) {
    if (amount == 0) return;
    each(px, [&](uint8_t& b, uint8_t& g, uint8_t& r) {
        const int R = std::min(255, (393 * r + 769 * g + 189 * b) / 1000);
        const int G = std::min(255, (349 * r + 686 * g + 168 * b) / 1000);
        const int B = std::min(255, (272 * r + 534 * g + 131 * b) / 1000);
        b = uint8_t(blend(B, b, amount)), g = uint8_t(blend(G, g, amount)), r = uint8_t(blend(R, r, amount));
    });
}

void invert(const PixelRows& px) {
    if (px.bytesPerPixel == 4) {
        for (int y = 0; y < px.height; ++y) {
            uint32_t* p = reinterpret_cast<uint32_t*>(px.top + y * px.stride);
            for (int x = 0; x < px.width; ++x) p[x] ^= 0x00FFFFFFu;
        }
        return;
    }
    for (int y = 0; y < px.height; ++y) {
        uint8_t* p = px.top + y * px.stride;
        for (int i = 0, n = 3 * px.width; i < n; ++i) p[i] = uint8_t(~p[i]);
    }
}

void adjust(const PixelRows& px, int brightness, int contrast, double gamma) {
    uint8_t table[256];
    for (int v = 0; v < 256; ++v) {
        int c = std::clamp(v + brightness, 0, 255);
        c = std::clamp(static_cast<int>(colour::roundHalfAway((c - 128) * (100 + contrast) / 100.0)) + 128, 0, 255);
        c = std::clamp(static_cast<int>(colour::roundHalfAway(255 * std::pow(c / 255.0, 1 / gamma))), 0, 255);
        table[v] = uint8_t(c);
    }
    each(px, [&](uint8_t& b, uint8_t& g, uint8_t& r) { b = table[b], g = table[g], r = table[r]; });
}

long replace(const PixelRows& px, Rgb from, Rgb to, int tolerance) {
    long n = 0;
    each(px, [&](uint8_t& b, uint8_t& g, uint8_t& r) {
        if (std::abs(r - from.r) <= tolerance && std::abs(g - from.g) <= tolerance &&
            std::abs(b - from.b) <= tolerance) {
            b = uint8_t(to.b), g = uint8_t(to.g), r = uint8_t(to.r);
            ++n;
        }
    });
    return n;
}

}  // namespace tova::colourise
