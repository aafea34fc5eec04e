#include "alpha_fill.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tova::alpha {

using colour::blend;
using colour::Rgb;

namespace {

void fillScalar(const Pixels32& px, Rgb c, int a) {
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        for (int x = 0; x < px.width; ++x) {
            const uint32_t d = row[x];
            const Rgb e{blend(c.r, (d >> 16) & 0xFF, a), blend(c.g, (d >> 8) & 0xFF, a), blend(c.b, d & 0xFF, a)};
            row[x] = colour::toPixel(e, d >> 24);
        }
    }
}

#if defined(__SSE2__)
// Four pixels at a time in 16-bit lanes: d (255 - a) + (s a + 127) stays below
// 65536, and x \ 255 = ((x * 0x8081) >> 16) >> 7 for every such x.
void fillSse2(const Pixels32& px, Rgb c, int a) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i inv = _mm_set1_epi16(static_cast<short>(255 - a));
    const __m128i pre = _mm_setr_epi16(short(c.b * a + 127), short(c.g * a + 127), short(c.r * a + 127), 0,
                                       short(c.b * a + 127), short(c.g * a + 127), short(c.r * a + 127), 0);
    const __m128i magic = _mm_set1_epi16(static_cast<short>(0x8081));
    const __m128i alphaMask = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    auto half = [&](__m128i d16) {
        __m128i x = _mm_add_epi16(_mm_mullo_epi16(d16, inv), pre);
        return _mm_srli_epi16(_mm_mulhi_epu16(x, magic), 7);
    };
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        int x = 0;
        for (; x + 4 <= px.width; x += 4) {
            __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x));
            __m128i lo = half(_mm_unpacklo_epi8(d, zero)), hi = half(_mm_unpackhi_epi8(d, zero));
            __m128i r = _mm_packus_epi16(lo, hi);
            r = _mm_or_si128(_mm_andnot_si128(alphaMask, r), _mm_and_si128(alphaMask, d));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(row + x), r);
        }
        if (x < px.width) fillScalar(Pixels32{row + x, px.stride, px.width - x, 1}, c, a);
    }
}
#endif

}  // namespace

void fillWith(Simd simd, const Pixels32& px, Rgb c, int opacity) {
#if defined(__SSE2__)
    if (simd == Simd::Best) return fillSse2(px, c, opacity);
#endif
    fillScalar(px, c, opacity);
}

void fill(const Pixels32& px, Rgb c, int opacity) { fillWith(Simd::Best, px, c, opacity); }

void fillGraded(const Pixels32& px, Rgb start, Rgb end, int startOpacity, int endOpacity, Direction direction) {
    gradients::Positions pos(direction, px.fullWidth(), px.fullHeight());
    const int last = pos.last();
    const auto r = gradients::ramp(start.r, end.r, last), g = gradients::ramp(start.g, end.g, last),
               b = gradients::ramp(start.b, end.b, last), o = gradients::ramp(startOpacity, endOpacity, last);
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        int p = pos.rowStart(y + px.y0) + px.x0 * pos.step();
        for (int x = 0; x < px.width; ++x, p += pos.step()) {
            const uint32_t d = row[x];
            const int a = o[p];
            const Rgb e{blend(r[p], (d >> 16) & 0xFF, a), blend(g[p], (d >> 8) & 0xFF, a), blend(b[p], d & 0xFF, a)};
            row[x] = colour::toPixel(e, d >> 24);
        }
    }
}

void composite(const Pixels32& px, const Pixels32& layer, const Opacity& opacity) {
    using colour::blendPremultiplied;
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        const uint32_t* src = layer.row(y);
        for (int x = 0; x < px.width; ++x) {
            const uint32_t s = src[x], d = row[x];
            const int pa = s >> 24;
            if (pa == 0) continue;
            const int o = opacity.at(x, y);
            const Rgb e{blendPremultiplied((s >> 16) & 0xFF, pa, (d >> 16) & 0xFF, o),
                        blendPremultiplied((s >> 8) & 0xFF, pa, (d >> 8) & 0xFF, o),
                        blendPremultiplied(s & 0xFF, pa, d & 0xFF, o)};
            row[x] = colour::toPixel(e, d >> 24);
        }
    }
}

}  // namespace tova::alpha
