// JPEG encoder: baseline JFIF, YCbCr with both chroma planes halved in each
// direction (4:2:0), the example tables of the standard scaled by quality the
// customary way, and the example Huffman tables (one pass, no statistics).
#include "jpeg_codec.h"

#include "jpeg_internal.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace tova::jpeg {

namespace {

using namespace detail;

struct HuffCodes {
    uint16_t code[256];
    uint8_t size[256];
    void build(const HuffTable& s) {
        std::memset(size, 0, sizeof size);
        int c = 0, k = 0;
        for (int len = 1; len <= 16; ++len) {
            for (int i = 0; i < s.bits[len]; ++i, ++k, ++c) {
                code[s.values[k]] = static_cast<uint16_t>(c);
                size[s.values[k]] = static_cast<uint8_t>(len);
            }
            c <<= 1;
        }
    }
};

// Entropy-coded bytes with 0xFF stuffing, 32 bits at a time.
struct BitWriter {
    uint8_t* out;
    uint64_t acc = 0;
    int nbits = 0;

    void put(uint32_t bits, int n) {
        acc = (acc << n) | bits;
        nbits += n;
        if (nbits >= 32) {
            nbits -= 32;
            uint32_t w = static_cast<uint32_t>(acc >> nbits);
            if (!((~w - 0x01010101u) & w & 0x80808080u)) {  // no 0xFF byte
                out[0] = static_cast<uint8_t>(w >> 24);
                out[1] = static_cast<uint8_t>(w >> 16);
                out[2] = static_cast<uint8_t>(w >> 8);
                out[3] = static_cast<uint8_t>(w);
                out += 4;
            } else {
                for (int s = 24; s >= 0; s -= 8) {
                    uint8_t b = static_cast<uint8_t>(w >> s);
                    *out++ = b;
                    if (b == 0xFF) *out++ = 0;
                }
            }
        }
    }
    void flush() {
        int pad = (8 - nbits % 8) % 8;
        if (pad) put((1u << pad) - 1, pad);  // pad with one bits
        while (nbits > 0) {
            nbits -= 8;
            uint8_t b = static_cast<uint8_t>(acc >> nbits);
            *out++ = b;
            if (b == 0xFF) *out++ = 0;
        }
    }
};

inline int category(int v) {
    unsigned a = static_cast<unsigned>(v < 0 ? -v : v);
    return a ? 32 - __builtin_clz(a) : 0;
}

void encodeBlock(BitWriter& w, const int16_t* q, int& lastDC, const HuffCodes& dc, const HuffCodes& ac) {
    int diff = q[0] - lastDC;
    lastDC = q[0];
    int n = category(diff);
    w.put(dc.code[n], dc.size[n]);
    if (n) w.put(static_cast<uint32_t>(diff < 0 ? diff - 1 : diff) & ((1u << n) - 1), n);

    alignas(16) int16_t zz[64];
    for (int k = 0; k < 64; ++k) zz[k] = q[kZigzag[k]];
    // Bit k set when coefficient k (zig-zag order) is non-zero.
    uint64_t mask = 0;
    const __m128i zero = _mm_setzero_si128();
    for (int i = 0; i < 4; ++i) {
        __m128i a = _mm_load_si128(reinterpret_cast<const __m128i*>(zz + 16 * i));
        __m128i b = _mm_load_si128(reinterpret_cast<const __m128i*>(zz + 16 * i + 8));
        __m128i z = _mm_packs_epi16(_mm_cmpeq_epi16(a, zero), _mm_cmpeq_epi16(b, zero));
        mask |= static_cast<uint64_t>(static_cast<uint16_t>(~_mm_movemask_epi8(z))) << (16 * i);
    }
    mask &= ~1ull;
    int last = 0;
    while (mask) {
        int k = __builtin_ctzll(mask);
        mask &= mask - 1;
        int run = k - last - 1;
        while (run >= 16) {
            w.put(ac.code[0xF0], ac.size[0xF0]);
            run -= 16;
        }
        int v = zz[k];
        int s = category(v);
        int rs = (run << 4) | s;
        w.put(ac.code[rs], ac.size[rs]);
        w.put(static_cast<uint32_t>(v < 0 ? v - 1 : v) & ((1u << s) - 1), s);
        last = k;
    }
    if (last != 63) w.put(ac.code[0], ac.size[0]);
}

// Luma and full-resolution chroma of four pixels from four 32-bit loads.
inline void convert4(const uint8_t* p, uint8_t* y, uint8_t* cb, uint8_t* cr) {
    uint32_t a, b, c, d;
    std::memcpy(&a, p, 4);
    std::memcpy(&b, p + 3, 4);
    std::memcpy(&c, p + 6, 4);
    std::memcpy(&d, p + 9, 4);
    __m128i px = _mm_setr_epi32(static_cast<int>(a), static_cast<int>(b), static_cast<int>(c), static_cast<int>(d));
    __m128i br = _mm_and_si128(px, _mm_set1_epi32(0x00FF00FF));                    // B | R << 16
    __m128i g = _mm_and_si128(_mm_srli_epi32(px, 8), _mm_set1_epi32(0x000000FF));  // G
    // 15-bit coefficients, so that B and R share one pmaddwd in signed lanes.
    const __m128i kYbr = _mm_set_epi16(9798, 3736, 9798, 3736, 9798, 3736, 9798, 3736);
    const __m128i kYg = _mm_set_epi16(0, 19235, 0, 19235, 0, 19235, 0, 19235);
    const __m128i kCbbr = _mm_set_epi16(-5529, 16384, -5529, 16384, -5529, 16384, -5529, 16384);
    const __m128i kCbg = _mm_set_epi16(0, -10855, 0, -10855, 0, -10855, 0, -10855);
    const __m128i kCrbr = _mm_set_epi16(16384, -2664, 16384, -2664, 16384, -2664, 16384, -2664);
    const __m128i kCrg = _mm_set_epi16(0, -13720, 0, -13720, 0, -13720, 0, -13720);
    const __m128i roundY = _mm_set1_epi32(1 << 14);
    const __m128i roundC = _mm_set1_epi32((128 << 15) + (1 << 14) - 1);
    __m128i yy = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(br, kYbr), _mm_madd_epi16(g, kYg)), roundY), 15);
    __m128i u = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(br, kCbbr), _mm_madd_epi16(g, kCbg)), roundC), 15);
    __m128i v = _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(_mm_madd_epi16(br, kCrbr), _mm_madd_epi16(g, kCrg)), roundC), 15);
    __m128i y16 = _mm_packs_epi32(yy, u);
    __m128i c16 = _mm_packs_epi32(v, v);
    __m128i y8 = _mm_packus_epi16(y16, c16);  // y0..3 cb0..3 cr0..3 cr0..3
    uint32_t out[4];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), y8);
    std::memcpy(y, &out[0], 4);
    std::memcpy(cb, &out[1], 4);
    std::memcpy(cr, &out[2], 4);
}

inline void convert1(const uint8_t* p, uint8_t* y, uint8_t* cb, uint8_t* cr) {
    int b = p[0], g = p[1], r = p[2];
    *y = static_cast<uint8_t>((9798 * r + 19235 * g + 3736 * b + (1 << 14)) >> 15);
    *cb = static_cast<uint8_t>((-5529 * r - 10855 * g + 16384 * b + (128 << 15) + (1 << 14) - 1) >> 15);
    *cr = static_cast<uint8_t>((16384 * r - 13720 * g - 2664 * b + (128 << 15) + (1 << 14) - 1) >> 15);
}

void quantTable(const uint8_t* base, int quality, uint8_t* table) {
    int scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    for (int i = 0; i < 64; ++i) {
        int q = (base[i] * scale + 50) / 100;
        table[i] = static_cast<uint8_t>(q < 1 ? 1 : q > 255 ? 255 : q);
    }
}

void put16(std::vector<uint8_t>& o, int v) {
    o.push_back(static_cast<uint8_t>(v >> 8));
    o.push_back(static_cast<uint8_t>(v));
}

void writeHeaders(std::vector<uint8_t>& o, int width, int height, const uint8_t* ql, const uint8_t* qc) {
    static const uint8_t jfif[] = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0};
    o.insert(o.end(), jfif, jfif + sizeof jfif);
    o.push_back(0xFF);
    o.push_back(0xDB);
    put16(o, 2 + 2 * 65);
    for (int t = 0; t < 2; ++t) {
        o.push_back(static_cast<uint8_t>(t));
        const uint8_t* q = t ? qc : ql;
        for (int k = 0; k < 64; ++k) o.push_back(q[kZigzag[k]]);
    }
    o.push_back(0xFF);
    o.push_back(0xC0);
    put16(o, 17);
    o.push_back(8);
    put16(o, height);
    put16(o, width);
    o.push_back(3);
    static const uint8_t comps[] = {1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1};
    o.insert(o.end(), comps, comps + sizeof comps);
    o.push_back(0xFF);
    o.push_back(0xC4);
    int len = 2;
    for (int i = 0; i < 4; ++i) len += 17 + stdHuffman(i).count;
    put16(o, len);
    static const uint8_t classId[4] = {0x00, 0x01, 0x10, 0x11};
    for (int i = 0; i < 4; ++i) {
        const HuffTable& s = stdHuffman(i);
        o.push_back(classId[i]);
        o.insert(o.end(), s.bits + 1, s.bits + 17);
        o.insert(o.end(), s.values, s.values + s.count);
    }
    static const uint8_t sos[] = {0xFF, 0xDA, 0, 12, 3, 1, 0x00, 2, 0x11, 3, 0x11, 0, 63, 0};
    o.insert(o.end(), sos, sos + sizeof sos);
}

bool encodeImpl(const uint8_t* src, ptrdiff_t stride, int width, int height, int quality, std::vector<uint8_t>& out) {
    quality = std::max(1, std::min(100, quality));
    uint8_t ql[64], qc[64];
    quantTable(kStdLumaQuant, quality, ql);
    quantTable(kStdChromaQuant, quality, qc);
    alignas(16) float rl[64], rc[64];
    for (int i = 0; i < 64; ++i) {
        rl[i] = 1.0f / (8 * ql[i]);
        rc[i] = 1.0f / (8 * qc[i]);
    }
    HuffCodes dcl, dcc, acl, acc;
    dcl.build(stdHuffman(0));
    dcc.build(stdHuffman(1));
    acl.build(stdHuffman(2));
    acc.build(stdHuffman(3));

    // Written straight into the caller's vector, reusing its capacity.
    std::vector<uint8_t>& o = out;
    o.clear();
    writeHeaders(o, width, height, ql, qc);

    const int mcusX = (width + 15) / 16, mcusY = (height + 15) / 16;
    const int pw = mcusX * 16;  // padded width
    std::unique_ptr<uint8_t[]> yp(new uint8_t[static_cast<size_t>(pw) * 16]);
    std::unique_ptr<uint8_t[]> cbFull(new uint8_t[static_cast<size_t>(pw) * 16]);
    std::unique_ptr<uint8_t[]> crFull(new uint8_t[static_cast<size_t>(pw) * 16]);
    const int cw = pw / 2;
    std::unique_ptr<uint8_t[]> cbp(new uint8_t[static_cast<size_t>(cw) * 8]);
    std::unique_ptr<uint8_t[]> crp(new uint8_t[static_cast<size_t>(cw) * 8]);
    // Worst case per MCU: six blocks of 64 codes of at most 27 bits, doubled by stuffing.
    const size_t rowBudget = static_cast<size_t>(mcusX) * 6 * 64 * 27 / 8 * 2 + 64;

    int lastY = 0, lastCb = 0, lastCr = 0;
    BitWriter w{nullptr};
    alignas(16) int16_t q[64];
    for (int my = 0; my < mcusY; ++my) {
        // Colour conversion of 16 rows, edges replicated.
        for (int r = 0; r < 16; ++r) {
            int sy = std::min(my * 16 + r, height - 1);
            const uint8_t* s = src + sy * stride;
            uint8_t* y = yp.get() + r * pw;
            uint8_t* cb = cbFull.get() + r * pw;
            uint8_t* cr = crFull.get() + r * pw;
            int x = 0;
            for (; x + 5 <= width; x += 4) convert4(s + 3 * x, y + x, cb + x, cr + x);  // loads one byte past pixel x+3
            for (; x < width; ++x) convert1(s + 3 * x, y + x, cb + x, cr + x);
            for (; x < pw; ++x) {
                y[x] = y[width - 1];
                cb[x] = cb[width - 1];
                cr[x] = cr[width - 1];
            }
        }
        // 2x2 averages with alternating rounding, so no bias accumulates.
        for (int r = 0; r < 8; ++r) {
            const uint8_t* b0 = cbFull.get() + 2 * r * pw;
            const uint8_t* r0 = crFull.get() + 2 * r * pw;
            uint8_t* bo = cbp.get() + r * cw;
            uint8_t* ro = crp.get() + r * cw;
            for (int x = 0; x < cw; ++x) {
                int bias = 1 + (x & 1);
                bo[x] = static_cast<uint8_t>((b0[2 * x] + b0[2 * x + 1] + b0[pw + 2 * x] + b0[pw + 2 * x + 1] + bias) >> 2);
                ro[x] = static_cast<uint8_t>((r0[2 * x] + r0[2 * x + 1] + r0[pw + 2 * x] + r0[pw + 2 * x + 1] + bias) >> 2);
            }
        }
        size_t used = w.out ? static_cast<size_t>(w.out - o.data()) : o.size();
        if (o.size() < used + rowBudget) o.resize(std::max(used + rowBudget, o.size() * 2));  // grows rarely: resizing zero-fills
        w.out = o.data() + used;
        for (int mx = 0; mx < mcusX; ++mx) {
            for (int b = 0; b < 4; ++b) {
                const uint8_t* blk = yp.get() + (b >> 1) * 8 * pw + mx * 16 + (b & 1) * 8;
                fdctQuant8x8(blk, pw, rl, q);
                encodeBlock(w, q, lastY, dcl, acl);
            }
            fdctQuant8x8(cbp.get() + mx * 8, cw, rc, q);
            encodeBlock(w, q, lastCb, dcc, acc);
            fdctQuant8x8(crp.get() + mx * 8, cw, rc, q);
            encodeBlock(w, q, lastCr, dcc, acc);
        }
    }
    size_t used = w.out ? static_cast<size_t>(w.out - o.data()) : o.size();
    if (o.size() < used + 16) o.resize(used + 16);
    w.out = o.data() + used;
    w.flush();
    used = static_cast<size_t>(w.out - o.data());
    o.resize(used);
    o.push_back(0xFF);
    o.push_back(0xD9);
    return true;
}

}  // namespace

bool encode(const uint8_t* src, ptrdiff_t stride, int width, int height, int quality, std::vector<uint8_t>& out) {
    if (!src || width < 1 || height < 1 || width > 65535 || height > 65535) return false;
    if (stride < 3 * static_cast<ptrdiff_t>(width) && -stride < 3 * static_cast<ptrdiff_t>(width)) return false;
    try {
        return encodeImpl(src, stride, width, height, quality, out);
    } catch (...) {
        out.clear();
        return false;  // out of memory
    }
}

}  // namespace tova::jpeg
