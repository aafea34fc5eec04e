#include "pixels.h"

#include <algorithm>
#include <cstring>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace tova::pixels {

// --------------------------------------------------------------- premultiply

namespace {

// x / 255 for 0 <= x < 65536, exactly (checked for every x by the tests).
inline unsigned divide255(unsigned x) { return (x * 0x8081u) >> 23; }

void premultiplyTail(uint8_t* p, size_t count) {
    for (size_t i = 0; i < count; ++i, p += 4) {
        unsigned a = p[3];
        p[0] = static_cast<uint8_t>(divide255(p[0] * a));
        p[1] = static_cast<uint8_t>(divide255(p[1] * a));
        p[2] = static_cast<uint8_t>(divide255(p[2] * a));
    }
}

#ifdef __SSE2__
// 4 pixels at a time: widen to 16 bits, multiply by the pixel's alpha, divide
// by 255 exactly (x * 0x8081 >> 23), narrow, and keep the alpha bytes.
void premultiplySse2(uint8_t* p, size_t count) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i magic = _mm_set1_epi16(static_cast<short>(0x8081));
    const __m128i alphaMask = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        __m128i px = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i * 4));
        __m128i lo = _mm_unpacklo_epi8(px, zero);
        __m128i hi = _mm_unpackhi_epi8(px, zero);
        __m128i alo = _mm_shufflehi_epi16(_mm_shufflelo_epi16(lo, 0xFF), 0xFF);
        __m128i ahi = _mm_shufflehi_epi16(_mm_shufflelo_epi16(hi, 0xFF), 0xFF);
        lo = _mm_srli_epi16(_mm_mulhi_epu16(_mm_mullo_epi16(lo, alo), magic), 7);
        hi = _mm_srli_epi16(_mm_mulhi_epu16(_mm_mullo_epi16(hi, ahi), magic), 7);
        __m128i out = _mm_packus_epi16(lo, hi);
        out = _mm_or_si128(_mm_andnot_si128(alphaMask, out), _mm_and_si128(alphaMask, px));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + i * 4), out);
    }
    premultiplyTail(p + i * 4, count - i);
}
#endif

#if defined(__x86_64__) || defined(__i386__)
// The same 8 pixels at a time, where the processor has AVX2.
__attribute__((target("avx2"))) void premultiplyAvx2(uint8_t* p, size_t count) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i magic = _mm256_set1_epi16(static_cast<short>(0x8081));
    const __m256i alphaMask = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
    const __m256i spread = _mm256_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15,
                                            6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15);
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        __m256i px = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i * 4));
        __m256i lo = _mm256_unpacklo_epi8(px, zero);
        __m256i hi = _mm256_unpackhi_epi8(px, zero);
        __m256i alo = _mm256_shuffle_epi8(lo, spread);
        __m256i ahi = _mm256_shuffle_epi8(hi, spread);
        lo = _mm256_srli_epi16(_mm256_mulhi_epu16(_mm256_mullo_epi16(lo, alo), magic), 7);
        hi = _mm256_srli_epi16(_mm256_mulhi_epu16(_mm256_mullo_epi16(hi, ahi), magic), 7);
        __m256i out = _mm256_packus_epi16(lo, hi);  // per 128-bit lane, matching the unpacks
        out = _mm256_blendv_epi8(out, px, alphaMask);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + i * 4), out);
    }
    premultiplyTail(p + i * 4, count - i);
}

bool hasAvx2() {
    static const bool has = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return has;
}
#endif

void premultiplyRun(Simd simd, uint8_t* p, size_t count) {
#if defined(__x86_64__) || defined(__i386__)
    if (simd == Simd::Best && hasAvx2()) return premultiplyAvx2(p, count);
#endif
#ifdef __SSE2__
    if (simd != Simd::Scalar) return premultiplySse2(p, count);
#endif
    premultiplyTail(p, count);
}

}  // namespace

void premultiplyAlpha(uint8_t* base, ptrdiff_t stride, int width, int height) {
    premultiplyAlphaWith(Simd::Best, base, stride, width, height);
}

void premultiplyAlphaWith(Simd simd, uint8_t* base, ptrdiff_t stride, int width, int height) {
    if (!base || width <= 0 || height <= 0) return;
    // Rows in ascending memory order (bottom-up DIBs come with a negative
    // stride); contiguous rows as one run.
    if (stride < 0) {
        base += (height - 1) * stride;
        stride = -stride;
    }
    if (stride == static_cast<ptrdiff_t>(width) * 4) {
        premultiplyRun(simd, base, static_cast<size_t>(width) * height);
        return;
    }
    for (int y = 0; y < height; ++y) premultiplyRun(simd, base + y * stride, static_cast<size_t>(width));
}

// -------------------------------------------------------------------- random

Random::Random(uint64_t seed) : state_(seed) {}

// splitmix64: every state gives a well-mixed output, seed 0 included.
uint64_t Random::next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

uint8_t Random::byteOf(uint32_t u) {
    uint32_t v = (u & 0xFFFFu) * 255u;       // 255 * (u / 65536), in 1/65536 units
    uint32_t q = (v + 0x8000u) >> 16;
    if ((v & 0xFFFFu) == 0x8000u) q &= ~1u;  // a tie rounds to the even byte
    return static_cast<uint8_t>(q);
}

void randomise(uint8_t* base, ptrdiff_t stride, int width, int height, int bytesPerPixel, bool grey,
               uint64_t seed) {
    if (!base || width <= 0 || height <= 0 || (bytesPerPixel != 3 && bytesPerPixel != 4)) return;
    Random rng(seed);
    const int bpp = bytesPerPixel;
    // Each draw of 64 bits gives four values: four grey pixels or two coloured ones.
    for (int y = 0; y < height; ++y) {
        uint8_t* p = base + y * stride;
        int x = 0;
        if (grey) {
            for (; x + 4 <= width; x += 4) {
                uint64_t r = rng.next();
                for (int k = 0; k < 4; ++k, p += bpp, r >>= 16) p[0] = p[1] = p[2] = Random::byteOf(static_cast<uint32_t>(r));
            }
            if (x < width) {
                uint64_t r = rng.next();
                for (; x < width; ++x, p += bpp, r >>= 16) p[0] = p[1] = p[2] = Random::byteOf(static_cast<uint32_t>(r));
            }
        } else {
            for (; x + 2 <= width; x += 2) {
                uint64_t r = rng.next();
                p[0] = 0;
                p[1] = Random::byteOf(static_cast<uint32_t>(r));
                p[2] = Random::byteOf(static_cast<uint32_t>(r >> 16));
                p[bpp] = 0;
                p[bpp + 1] = Random::byteOf(static_cast<uint32_t>(r >> 32));
                p[bpp + 2] = Random::byteOf(static_cast<uint32_t>(r >> 48));
                p += 2 * bpp;
            }
            if (x < width) {
                uint64_t r = rng.next();
                p[0] = 0;
                p[1] = Random::byteOf(static_cast<uint32_t>(r));
                p[2] = Random::byteOf(static_cast<uint32_t>(r >> 16));
            }
        }
    }
}

// ------------------------------------------------------------------ resample

namespace {

struct Tap {
    int first;   // first source index
    int second;  // second source index (equal to first at the edges)
    int weight;  // weight of the second, 0..256
};

// Source taps for each destination index, pixel centres aligned.
std::vector<Tap> taps(int srcSize, int dstSize) {
    std::vector<Tap> t(static_cast<size_t>(dstSize));
    const double scale = static_cast<double>(srcSize) / dstSize;
    for (int i = 0; i < dstSize; ++i) {
        double s = (i + 0.5) * scale - 0.5;
        if (s <= 0) { t[i] = {0, 0, 0}; continue; }
        int a = static_cast<int>(s);
        if (a >= srcSize - 1) { t[i] = {srcSize - 1, srcSize - 1, 0}; continue; }
        int w = static_cast<int>((s - a) * 256.0 + 0.5);
        if (w >= 256) { t[i] = {a + 1, a + 1, 0}; continue; }
        t[i] = {a, a + 1, w};
    }
    return t;
}

// One source row interpolated horizontally, in 1/256 units.
void horizontal(const uint8_t* row, const std::vector<Tap>& xs, int bpp, uint16_t* out) {
    const int n = static_cast<int>(xs.size());
    for (int x = 0; x < n; ++x) {
        const Tap& t = xs[x];
        const uint8_t* a = row + t.first * bpp;
        const uint8_t* b = row + t.second * bpp;
        const int wa = 256 - t.weight, wb = t.weight;
        for (int c = 0; c < bpp; ++c) out[x * bpp + c] = static_cast<uint16_t>(a[c] * wa + b[c] * wb);
    }
}

}  // namespace

void resample(const uint8_t* src, ptrdiff_t srcStride, int srcWidth, int srcHeight, uint8_t* dst,
              ptrdiff_t dstStride, int dstWidth, int dstHeight, int bpp) {
    if (!src || !dst || srcWidth <= 0 || srcHeight <= 0 || dstWidth <= 0 || dstHeight <= 0) return;
    if (bpp != 3 && bpp != 4) return;
    if (srcWidth == dstWidth && srcHeight == dstHeight) {
        for (int y = 0; y < dstHeight; ++y)
            std::memcpy(dst + y * dstStride, src + y * srcStride, static_cast<size_t>(dstWidth) * bpp);
        return;
    }
    const std::vector<Tap> xs = taps(srcWidth, dstWidth);
    const std::vector<Tap> ys = taps(srcHeight, dstHeight);
    const size_t rowValues = static_cast<size_t>(dstWidth) * bpp;
    // Two horizontally scaled source rows; consecutive destination rows mostly share them.
    std::vector<uint16_t> rowA(rowValues), rowB(rowValues);
    int haveA = -1, haveB = -1;
    for (int y = 0; y < dstHeight; ++y) {
        const Tap& t = ys[y];
        if (haveA != t.first) {
            if (haveB == t.first) { std::swap(rowA, rowB); std::swap(haveA, haveB); }
            else { horizontal(src + t.first * srcStride, xs, bpp, rowA.data()); haveA = t.first; }
        }
        if (haveB != t.second) {
            if (t.second == haveA) { rowB = rowA; }
            else horizontal(src + t.second * srcStride, xs, bpp, rowB.data());
            haveB = t.second;
        }
        uint8_t* out = dst + y * dstStride;
        const uint32_t wa = 256u - t.weight, wb = t.weight;
        const uint16_t* a = rowA.data();
        const uint16_t* b = rowB.data();
        for (size_t i = 0; i < rowValues; ++i) out[i] = static_cast<uint8_t>((a[i] * wa + b[i] * wb + 32768u) >> 16);
    }
}

}  // namespace tova::pixels
