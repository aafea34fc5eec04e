// Tables of the JPEG standard and the 8x8 transforms. Both transforms use the
// Loeffler-Ligtenberg-Moschytz factorisation in 13-bit fixed point, eight
// columns at a time in SSE2 registers: rotations are pairs of 16-bit inputs
// multiplied and summed into 32 bits by pmaddwd, so every product keeps its
// full precision and the result matches an exact integer implementation.
#include "jpeg_internal.h"

#include <emmintrin.h>

#include <array>

namespace tova::jpeg::detail {

namespace {

constexpr std::array<uint8_t, 80> makeZigzag() {
    std::array<uint8_t, 80> z{};
    int k = 0;
    for (int s = 0; s < 15; ++s) {  // anti-diagonals, alternating direction
        for (int i = 0; i <= s; ++i) {
            int row = (s % 2 == 0) ? s - i : i;
            int col = s - row;
            if (row < 8 && col < 8) z[k++] = static_cast<uint8_t>(row * 8 + col);
        }
    }
    for (; k < 80; ++k) z[k] = 64;
    return z;
}
constexpr std::array<uint8_t, 80> kZigzagArray = makeZigzag();
static_assert(kZigzagArray[2] == 8 && kZigzagArray[3] == 16 && kZigzagArray[63] == 63, "zig-zag order");

HuffTable makeTable(const uint8_t (&counts)[16], const uint8_t* head, int headCount, bool ac) {
    HuffTable s{};
    for (int i = 0; i < 16; ++i) s.bits[i + 1] = counts[i];
    for (int i = 0; i < headCount; ++i) s.values[i] = head[i];
    s.count = headCount;
    if (ac) {
        // The longest codes of the example AC tables carry every remaining
        // run/size symbol in ascending order.
        for (int v = 0; v < 256; ++v) {
            int size = v & 15;
            if (size < 1 || size > 10) continue;
            bool listed = false;
            for (int i = 0; i < headCount; ++i) listed |= head[i] == v;
            if (!listed) s.values[s.count++] = static_cast<uint8_t>(v);
        }
    }
    return s;
}

const HuffTable* buildTables() {
    static const uint8_t dcLumaBits[16] = {0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0};
    static const uint8_t dcChromaBits[16] = {0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0};
    static const uint8_t dcValues[12] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    static const uint8_t acLumaBits[16] = {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 125};
    static const uint8_t acLumaHead[] = {0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31,
                                         0x41, 0x06, 0x13, 0x51, 0x61, 0x07, 0x22, 0x71, 0x14, 0x32,
                                         0x81, 0x91, 0xa1, 0x08, 0x23, 0x42, 0xb1, 0xc1, 0x15, 0x52,
                                         0xd1, 0xf0, 0x24, 0x33, 0x62, 0x72, 0x82};
    static const uint8_t acChromaBits[16] = {0, 2, 1, 2, 4, 4, 3, 4, 7, 5, 4, 4, 0, 1, 2, 119};
    static const uint8_t acChromaHead[] = {0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12,
                                           0x41, 0x51, 0x07, 0x61, 0x71, 0x13, 0x22, 0x32, 0x81, 0x08, 0x14,
                                           0x42, 0x91, 0xa1, 0xb1, 0xc1, 0x09, 0x23, 0x33, 0x52, 0xf0, 0x15,
                                           0x62, 0x72, 0xd1, 0x0a, 0x16, 0x24, 0x34, 0xe1, 0x25, 0xf1};
    static HuffTable tables[4] = {
        makeTable(dcLumaBits, dcValues, 12, false),
        makeTable(dcChromaBits, dcValues, 12, false),
        makeTable(acLumaBits, acLumaHead, sizeof acLumaHead, true),
        makeTable(acChromaBits, acChromaHead, sizeof acChromaHead, true),
    };
    return tables;
}

// ------------------------------------------------------------ fixed point
constexpr int kConstBits = 13;
constexpr int kPass1Bits = 2;
constexpr int16_t fix(double x) { return static_cast<int16_t>(x * (1 << kConstBits) + (x < 0 ? -0.5 : 0.5)); }
constexpr int16_t c298 = fix(0.298631336), c390 = fix(0.390180644), c541 = fix(0.541196100),
                  c765 = fix(0.765366865), c899 = fix(0.899976223), c1175 = fix(1.175875602),
                  c1501 = fix(1.501321110), c1847 = fix(1.847759065), c1961 = fix(1.961570560),
                  c2053 = fix(2.053119869), c2562 = fix(2.562915447), c3072 = fix(3.072711026);

inline __m128i pair(int16_t a, int16_t b) {
    return _mm_set_epi16(b, a, b, a, b, a, b, a);
}

inline void transpose(__m128i v[8]) {
    __m128i a0 = _mm_unpacklo_epi16(v[0], v[1]), a1 = _mm_unpackhi_epi16(v[0], v[1]);
    __m128i a2 = _mm_unpacklo_epi16(v[2], v[3]), a3 = _mm_unpackhi_epi16(v[2], v[3]);
    __m128i a4 = _mm_unpacklo_epi16(v[4], v[5]), a5 = _mm_unpackhi_epi16(v[4], v[5]);
    __m128i a6 = _mm_unpacklo_epi16(v[6], v[7]), a7 = _mm_unpackhi_epi16(v[6], v[7]);
    __m128i b0 = _mm_unpacklo_epi32(a0, a2), b1 = _mm_unpackhi_epi32(a0, a2);
    __m128i b2 = _mm_unpacklo_epi32(a1, a3), b3 = _mm_unpackhi_epi32(a1, a3);
    __m128i b4 = _mm_unpacklo_epi32(a4, a6), b5 = _mm_unpackhi_epi32(a4, a6);
    __m128i b6 = _mm_unpacklo_epi32(a5, a7), b7 = _mm_unpackhi_epi32(a5, a7);
    v[0] = _mm_unpacklo_epi64(b0, b4);
    v[1] = _mm_unpackhi_epi64(b0, b4);
    v[2] = _mm_unpacklo_epi64(b1, b5);
    v[3] = _mm_unpackhi_epi64(b1, b5);
    v[4] = _mm_unpacklo_epi64(b2, b6);
    v[5] = _mm_unpackhi_epi64(b2, b6);
    v[6] = _mm_unpacklo_epi64(b3, b7);
    v[7] = _mm_unpackhi_epi64(b3, b7);
}

// 32-bit halves of eight lanes.
struct Wide {
    __m128i lo, hi;
};
inline Wide madd(__m128i a, __m128i b, __m128i k) {
    return {_mm_madd_epi16(_mm_unpacklo_epi16(a, b), k), _mm_madd_epi16(_mm_unpackhi_epi16(a, b), k)};
}
inline Wide add(Wide a, Wide b) { return {_mm_add_epi32(a.lo, b.lo), _mm_add_epi32(a.hi, b.hi)}; }
inline Wide sub(Wide a, Wide b) { return {_mm_sub_epi32(a.lo, b.lo), _mm_sub_epi32(a.hi, b.hi)}; }
template <int Shift>
inline __m128i narrow(Wide a, __m128i bias) {
    return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(a.lo, bias), Shift),
                           _mm_srai_epi32(_mm_add_epi32(a.hi, bias), Shift));
}

// One inverse 1-D pass along the vector index, in place.
template <int Shift>
inline void idctPass(__m128i v[8], __m128i bias) {
    // Even part.
    Wide t3 = madd(v[2], v[6], pair(c541 + c765, c541));
    Wide t2 = madd(v[2], v[6], pair(c541, c541 - c1847));
    Wide t0 = madd(v[0], v[4], pair(1 << kConstBits, 1 << kConstBits));
    Wide t1 = madd(v[0], v[4], pair(1 << kConstBits, -(1 << kConstBits)));
    Wide t10 = add(t0, t3), t13 = sub(t0, t3), t11 = add(t1, t2), t12 = sub(t1, t2);
    // Odd part: inputs 7, 5, 3, 1.
    __m128i s73 = _mm_add_epi16(v[7], v[3]), s51 = _mm_add_epi16(v[5], v[1]);
    Wide z3 = madd(s73, s51, pair(c1175 - c1961, c1175));
    Wide z4 = madd(s73, s51, pair(c1175, c1175 - c390));
    Wide o0 = add(madd(v[7], v[1], pair(c298 - c899, -c899)), z3);
    Wide o3 = add(madd(v[7], v[1], pair(-c899, c1501 - c899)), z4);
    Wide o1 = add(madd(v[5], v[3], pair(c2053 - c2562, -c2562)), z4);
    Wide o2 = add(madd(v[5], v[3], pair(-c2562, c3072 - c2562)), z3);
    v[0] = narrow<Shift>(add(t10, o3), bias);
    v[7] = narrow<Shift>(sub(t10, o3), bias);
    v[1] = narrow<Shift>(add(t11, o2), bias);
    v[6] = narrow<Shift>(sub(t11, o2), bias);
    v[2] = narrow<Shift>(add(t12, o1), bias);
    v[5] = narrow<Shift>(sub(t12, o1), bias);
    v[3] = narrow<Shift>(add(t13, o0), bias);
    v[4] = narrow<Shift>(sub(t13, o0), bias);
}

// One forward 1-D pass along the vector index, in place. Outputs 0 and 4 are
// scaled by 2^kPass1Bits on the first pass and descaled by it on the second.
template <bool First>
inline void fdctPass(__m128i v[8]) {
    __m128i t0 = _mm_add_epi16(v[0], v[7]), t7 = _mm_sub_epi16(v[0], v[7]);
    __m128i t1 = _mm_add_epi16(v[1], v[6]), t6 = _mm_sub_epi16(v[1], v[6]);
    __m128i t2 = _mm_add_epi16(v[2], v[5]), t5 = _mm_sub_epi16(v[2], v[5]);
    __m128i t3 = _mm_add_epi16(v[3], v[4]), t4 = _mm_sub_epi16(v[3], v[4]);
    __m128i t10 = _mm_add_epi16(t0, t3), t13 = _mm_sub_epi16(t0, t3);
    __m128i t11 = _mm_add_epi16(t1, t2), t12 = _mm_sub_epi16(t1, t2);
    constexpr int shift = First ? kConstBits - kPass1Bits : kConstBits + kPass1Bits;
    const __m128i bias = _mm_set1_epi32(1 << (shift - 1));
    if (First) {
        v[0] = _mm_slli_epi16(_mm_add_epi16(t10, t11), kPass1Bits);
        v[4] = _mm_slli_epi16(_mm_sub_epi16(t10, t11), kPass1Bits);
    } else {
        const __m128i r = _mm_set1_epi16(1 << (kPass1Bits - 1));
        v[0] = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(t10, t11), r), kPass1Bits);
        v[4] = _mm_srai_epi16(_mm_add_epi16(_mm_sub_epi16(t10, t11), r), kPass1Bits);
    }
    v[2] = narrow<shift>(madd(t13, t12, pair(c541 + c765, c541)), bias);
    v[6] = narrow<shift>(madd(t13, t12, pair(c541, c541 - c1847)), bias);
    __m128i z3 = _mm_add_epi16(t4, t6), z4 = _mm_add_epi16(t5, t7);
    Wide z3r = madd(z3, z4, pair(c1175 - c1961, c1175));
    Wide z4r = madd(z3, z4, pair(c1175, c1175 - c390));
    v[7] = narrow<shift>(add(madd(t4, t7, pair(c298 - c899, -c899)), z3r), bias);
    v[1] = narrow<shift>(add(madd(t4, t7, pair(-c899, c1501 - c899)), z4r), bias);
    v[5] = narrow<shift>(add(madd(t5, t6, pair(c2053 - c2562, -c2562)), z4r), bias);
    v[3] = narrow<shift>(add(madd(t5, t6, pair(-c2562, c3072 - c2562)), z3r), bias);
}

}  // namespace

const uint8_t kZigzag[80] = {
#define Z(i) kZigzagArray[i]
    Z(0),  Z(1),  Z(2),  Z(3),  Z(4),  Z(5),  Z(6),  Z(7),  Z(8),  Z(9),  Z(10), Z(11), Z(12), Z(13), Z(14), Z(15),
    Z(16), Z(17), Z(18), Z(19), Z(20), Z(21), Z(22), Z(23), Z(24), Z(25), Z(26), Z(27), Z(28), Z(29), Z(30), Z(31),
    Z(32), Z(33), Z(34), Z(35), Z(36), Z(37), Z(38), Z(39), Z(40), Z(41), Z(42), Z(43), Z(44), Z(45), Z(46), Z(47),
    Z(48), Z(49), Z(50), Z(51), Z(52), Z(53), Z(54), Z(55), Z(56), Z(57), Z(58), Z(59), Z(60), Z(61), Z(62), Z(63),
    Z(64), Z(65), Z(66), Z(67), Z(68), Z(69), Z(70), Z(71), Z(72), Z(73), Z(74), Z(75), Z(76), Z(77), Z(78), Z(79),
#undef Z
};

const uint8_t kStdLumaQuant[64] = {
    16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
    14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
    18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
    49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
const uint8_t kStdChromaQuant[64] = {
    17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
    99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

const HuffTable& stdHuffman(int which) {
    static const HuffTable* tables = buildTables();
    return tables[which];
}

void idct8x8(const int16_t* coef, const uint16_t* quant, uint8_t* out, ptrdiff_t stride) {
    __m128i v[8];
    for (int i = 0; i < 8; ++i) {
        __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(coef + 8 * i));
        __m128i q = _mm_loadu_si128(reinterpret_cast<const __m128i*>(quant + 8 * i));
        v[i] = _mm_mullo_epi16(c, q);
    }
    idctPass<kConstBits - kPass1Bits>(v, _mm_set1_epi32(1 << (kConstBits - kPass1Bits - 1)));
    transpose(v);
    // The level shift of +128 rides on the rounding bias of the second pass.
    constexpr int shift2 = kConstBits + kPass1Bits + 3;
    idctPass<shift2>(v, _mm_set1_epi32((1 << (shift2 - 1)) + (128 << shift2)));
    transpose(v);
    for (int i = 0; i < 8; i += 2) {
        __m128i p = _mm_packus_epi16(v[i], v[i + 1]);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i * stride), p);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + (i + 1) * stride), _mm_srli_si128(p, 8));
    }
}

void idctDC(int dc, uint16_t quant, uint8_t* out, ptrdiff_t stride) {
    int v = ((dc * quant + 4) >> 3) + 128;  // arithmetic shift of a negative value: floor, as in the full path
    v = v < 0 ? 0 : v > 255 ? 255 : v;
    __m128i p = _mm_set1_epi8(static_cast<char>(v));
    for (int i = 0; i < 8; ++i) _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i * stride), p);
}

void fdctQuant8x8(const uint8_t* in, ptrdiff_t stride, const float* reciprocal, int16_t* out) {
    __m128i v[8];
    const __m128i zero = _mm_setzero_si128(), center = _mm_set1_epi16(128);
    for (int i = 0; i < 8; ++i) {
        __m128i p = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i * stride));
        v[i] = _mm_sub_epi16(_mm_unpacklo_epi8(p, zero), center);
    }
    fdctPass<true>(v);
    transpose(v);
    fdctPass<false>(v);
    transpose(v);
    const __m128i lim = _mm_set1_epi16(1023);
    const __m128i nlim = _mm_set1_epi16(-1023);
    for (int i = 0; i < 8; ++i) {
        __m128i lo = _mm_srai_epi32(_mm_unpacklo_epi16(v[i], v[i]), 16);
        __m128i hi = _mm_srai_epi32(_mm_unpackhi_epi16(v[i], v[i]), 16);
        __m128 flo = _mm_mul_ps(_mm_cvtepi32_ps(lo), _mm_loadu_ps(reciprocal + 8 * i));
        __m128 fhi = _mm_mul_ps(_mm_cvtepi32_ps(hi), _mm_loadu_ps(reciprocal + 8 * i + 4));
        __m128i q = _mm_packs_epi32(_mm_cvtps_epi32(flo), _mm_cvtps_epi32(fhi));
        q = _mm_max_epi16(_mm_min_epi16(q, lim), nlim);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8 * i), q);
    }
}

}  // namespace tova::jpeg::detail
