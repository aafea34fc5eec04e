// JPEG decoder: sequential and progressive Huffman-coded 8-bit frames with one
// or three components. A sequential frame whose first scan holds every
// component is decoded block by block straight into sample planes; every other
// frame (progressive, or sequential with one scan per component) collects its
// coefficients first. The planes are then upsampled (the usual triangle filter
// for 2:1 ratios) and converted to BGR rows.
//
// Hostile input: every length is checked against the buffer, the entropy
// decoder reads zeros past the end of its data and the image is rejected when
// it used them, and each progressive scan must add new bits to its
// coefficients, which bounds the work any stream can ask for.
#include "jpeg_codec.h"

#include "jpeg_internal.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace tova::jpeg {

namespace {

using namespace detail;

// Larger images are refused: their planes and coefficients would not fit a
// 32-bit process next to the caller's bitmap.
constexpr int64_t kMaxPixels = 100000000;
constexpr int kMaxComponents = 3;

// ------------------------------------------------------------------ Huffman
constexpr int kFastBits = 9;

struct Huffman {
    bool defined = false;
    uint16_t fast[1 << kFastBits];  // (length << 8) | symbol; 0 when the code is longer
    // Run, value and total length of AC codes whose magnitude bits fit the
    // lookahead too; length 0 when not.
    struct FastAC {
        int16_t value;
        uint8_t run;
        uint8_t length;
    } fastAC[1 << kFastBits];
    int32_t maxCode[18];
    int32_t offset[18];  // value index = code + offset[length]
    uint8_t values[256];

    bool build(const uint8_t* bits, const uint8_t* vals, int count) {
        std::memset(fast, 0, sizeof fast);
        std::memset(fastAC, 0, sizeof fastAC);
        std::memcpy(values, vals, count);
        int code = 0, k = 0;
        for (int len = 1; len <= 16; ++len) {
            offset[len] = k - code;
            for (int i = 0; i < bits[len]; ++i, ++code, ++k) {
                if (code >= (1 << len)) return false;  // over-subscribed code lengths
                if (len <= kFastBits) {
                    int shift = kFastBits - len;
                    for (int j = 0; j < (1 << shift); ++j)
                        fast[(code << shift) | j] = static_cast<uint16_t>((len << 8) | vals[k]);
                }
            }
            maxCode[len] = bits[len] ? code - 1 : -1;
            code <<= 1;
        }
        maxCode[17] = 0x7fffffff;
        // Codes with their magnitude bits inside the lookahead.
        for (int j = 0; j < (1 << kFastBits); ++j) {
            if (!fast[j]) continue;
            int len = fast[j] >> 8, rs = fast[j] & 255, size = rs & 15;
            if (size == 0 || len + size > kFastBits) continue;
            int v = (j >> (kFastBits - len - size)) & ((1 << size) - 1);
            if (v < (1 << (size - 1))) v -= (1 << size) - 1;
            fastAC[j] = {static_cast<int16_t>(v), static_cast<uint8_t>(rs >> 4), static_cast<uint8_t>(len + size)};
        }
        defined = true;
        return true;
    }
};

// ---------------------------------------------------------------- bit reader
// Bits are kept left-aligned in a 64-bit word. At a marker (or the end of the
// data) the reader supplies zero bytes and counts them, so a decode that ran
// out of data can be told from one that did not.
struct BitReader {
    const uint8_t* pos = nullptr;
    const uint8_t* end = nullptr;
    uint64_t buf = 0;
    int count = 0;
    int padBits = 0;

    void start(const uint8_t* p, const uint8_t* e) {
        pos = p;
        end = e;
        buf = 0;
        count = 0;
        padBits = 0;
    }
    void refill() {
        // Fast path: eight bytes without 0xFF need no unstuffing.
        if (end - pos >= 8) {
            uint64_t w;
            std::memcpy(&w, pos, 8);
            uint64_t inv = ~w;
            if (!((inv - 0x0101010101010101ull) & ~inv & 0x8080808080808080ull)) {
                int take = (63 - count) >> 3;
                for (int i = 0; i < take; ++i) {
                    buf |= static_cast<uint64_t>(pos[i]) << (56 - count);
                    count += 8;
                }
                pos += take;
                return;
            }
        }
        while (count <= 56) {
            uint32_t b = 0;
            if (pos < end) {
                b = *pos;
                if (b == 0xFF) {
                    if (end - pos >= 2 && pos[1] == 0) {
                        pos += 2;
                    } else {
                        b = 0;  // a marker: stay in front of it
                        padBits += 8;
                    }
                } else {
                    ++pos;
                }
            } else {
                padBits += 8;
            }
            buf |= static_cast<uint64_t>(b) << (56 - count);
            count += 8;
        }
    }
    void ensure() {
        if (count < 32) refill();
    }
    // Whether bits the data did not hold were consumed.
    bool overrun() const { return count < padBits; }
    uint32_t peek(int n) const { return static_cast<uint32_t>(buf >> (64 - n)); }
    void skip(int n) {
        buf <<= n;
        count -= n;
    }
    uint32_t bits(int n) {  // 1 <= n <= 16, after ensure()
        uint32_t v = peek(n);
        skip(n);
        return v;
    }
    int bit() {
        if (count < 1) refill();
        int v = static_cast<int>(buf >> 63);
        skip(1);
        return v;
    }
    int extend(int size) {  // size 1..15, after ensure()
        int v = static_cast<int>(bits(size));
        return v < (1 << (size - 1)) ? v - (1 << size) + 1 : v;
    }
    // Decodes one symbol; -1 for a code the table does not hold.
    int decode(const Huffman& h) {
        ensure();
        uint32_t f = h.fast[peek(kFastBits)];
        if (f) {
            skip(static_cast<int>(f >> 8));
            return static_cast<int>(f & 255);
        }
        for (int len = kFastBits + 1; len <= 16; ++len) {
            int32_t code = static_cast<int32_t>(peek(len));
            if (code <= h.maxCode[len]) {
                skip(len);
                return h.values[code + h.offset[len]];
            }
        }
        return -1;
    }
};

// ------------------------------------------------------------------- frame
struct Component {
    int id = 0;
    int h = 1, v = 1;
    int tq = 0;
    int width = 0, height = 0;        // samples
    int blocksW = 0, blocksH = 0;     // blocks holding samples
    int allocW = 0, allocH = 0;       // blocks covered by whole MCUs
    std::unique_ptr<int16_t[]> coef;  // allocW * allocH blocks, when collected
    // Samples of three MCU rows in a ring (8 * v rows each, allocW * 8
    // wide): output lags decoding by one MCU row, so the upsampler sees the
    // rows above and below the one it works on.
    std::unique_ptr<uint8_t[]> plane;
    ptrdiff_t planeStride = 0;
    int stripRows = 8;
    int dcTable = 0, acTable = 0;
    int pred = 0;
    int8_t bitState[64];  // lowest bit received so far per coefficient; -1 none
    bool scanned = false;
};

// ---------------------------------------------------------- upsampling
// Row y of component c at full resolution, in `tmp` when it has to be made.
struct Upsampler {
    const Component* c;
    int hmax, vmax, width;
    enum Kind { Direct, H2V1, H2V2, H1V2, Nearest } kind;
    std::unique_ptr<uint8_t[]> tmp;
    std::unique_ptr<int[]> columns;  // source column per output column, for Nearest
    std::unique_ptr<uint16_t[]> wide;

    Upsampler(const Component& comp, int hm, int vm, int w) : c(&comp), hmax(hm), vmax(vm), width(w) {
        if (c->h == hmax && c->v == vmax) kind = Direct;
        else if (2 * c->h == hmax && c->v == vmax) kind = H2V1;
        else if (2 * c->h == hmax && 2 * c->v == vmax) kind = H2V2;
        else if (c->h == hmax && 2 * c->v == vmax) kind = H1V2;
        else kind = Nearest;
        tmp.reset(new uint8_t[static_cast<size_t>(width) + 64]);
        wide.reset(new uint16_t[static_cast<size_t>(c->width) + 16]);
        if (kind == Nearest) {
            columns.reset(new int[width]);
            for (int x = 0; x < width; ++x)
                columns[x] = std::min(static_cast<int>(static_cast<int64_t>(x) * c->h / hmax), c->width - 1);
        }
    }
    const uint8_t* srcRow(int cy) const {
        cy = std::max(0, std::min(cy, c->height - 1));
        int strip = (cy / c->stripRows) % 3;
        return c->plane.get() + static_cast<ptrdiff_t>(strip * c->stripRows + cy % c->stripRows) * c->planeStride;
    }

    // Horizontal triangle filter of 16-bit sums s[0..n) (scaled by `scale`,
    // 4 for one row, 16 for two) into 2n output samples.
    void horizontal(const uint16_t* s, int n, int shift, int biasEven, int biasOdd, uint8_t* out) {
        if (n == 1) {
            out[0] = out[1] = static_cast<uint8_t>((4 * s[0] + biasEven) >> shift);
            return;
        }
        int i = 0;
        out[0] = static_cast<uint8_t>((4 * s[0] + biasEven) >> shift);
        out[1] = static_cast<uint8_t>((3 * s[0] + s[1] + biasOdd) >> shift);
        i = 1;
        const __m128i three = _mm_set1_epi16(3);
        const __m128i be = _mm_set1_epi16(static_cast<short>(biasEven)), bo = _mm_set1_epi16(static_cast<short>(biasOdd));
        for (; i + 9 <= n; i += 8) {
            __m128i cur = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
            __m128i prev = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i - 1));
            __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 1));
            __m128i c3 = _mm_mullo_epi16(cur, three);
            __m128i even = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(c3, prev), be), shift);
            __m128i odd = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(c3, next), bo), shift);
            __m128i lo = _mm_unpacklo_epi16(even, odd), hi = _mm_unpackhi_epi16(even, odd);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 2 * i), _mm_packus_epi16(lo, hi));
        }
        for (; i < n - 1; ++i) {
            out[2 * i] = static_cast<uint8_t>((3 * s[i] + s[i - 1] + biasEven) >> shift);
            out[2 * i + 1] = static_cast<uint8_t>((3 * s[i] + s[i + 1] + biasOdd) >> shift);
        }
        out[2 * i] = static_cast<uint8_t>((3 * s[i] + s[i - 1] + biasEven) >> shift);
        out[2 * i + 1] = static_cast<uint8_t>((4 * s[i] + biasOdd) >> shift);
    }

    const uint8_t* row(int y) {
        switch (kind) {
        case Direct:
            return srcRow(y);
        case H2V1: {
            const uint8_t* r = srcRow(y);
            for (int i = 0; i < c->width; ++i) wide[i] = r[i];
            horizontal(wide.get(), c->width, 2, 1, 2, tmp.get());
            return tmp.get();
        }
        case H2V2: {
            int cy = y >> 1;
            const uint8_t* nr = srcRow(cy);
            const uint8_t* fr = srcRow((y & 1) ? cy + 1 : cy - 1);
            int i = 0;
            const __m128i zero = _mm_setzero_si128(), three = _mm_set1_epi16(3);
            for (; i + 8 <= c->width; i += 8) {
                __m128i a = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(nr + i)), zero);
                __m128i b = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(fr + i)), zero);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(wide.get() + i), _mm_add_epi16(_mm_mullo_epi16(a, three), b));
            }
            for (; i < c->width; ++i) wide[i] = static_cast<uint16_t>(3 * nr[i] + fr[i]);
            horizontal(wide.get(), c->width, 4, 8, 7, tmp.get());
            return tmp.get();
        }
        case H1V2: {
            int cy = y >> 1;
            const uint8_t* nr = srcRow(cy);
            const uint8_t* fr = srcRow((y & 1) ? cy + 1 : cy - 1);
            for (int i = 0; i < width; ++i) tmp[i] = static_cast<uint8_t>((3 * nr[i] + fr[i] + 1 + (y & 1)) >> 2);
            return tmp.get();
        }
        default: {
            const uint8_t* r = srcRow(static_cast<int>(static_cast<int64_t>(y) * c->v / vmax));
            for (int x = 0; x < width; ++x) tmp[x] = r[columns[x]];
            return tmp.get();
        }
        }
    }
};

// ------------------------------------------------------ colour conversion
// Stores four BGRX pixels of `px` as 12 bytes at out; writes 2 bytes beyond.
inline void store4(uint8_t* out, __m128i px) {
    __m128i lo = _mm_and_si128(px, _mm_set_epi32(0, 0xFFFFFF, 0, 0xFFFFFF));
    __m128i hi = _mm_and_si128(_mm_srli_epi64(px, 8), _mm_set_epi32(0xFFFF, static_cast<int>(0xFF000000), 0xFFFF,
                                                                     static_cast<int>(0xFF000000)));
    __m128i packed = _mm_or_si128(lo, hi);  // two 6-byte groups
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), packed);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 6), _mm_srli_si128(packed, 8));
}

inline void storeBGR8(uint8_t* out, __m128i b, __m128i g, __m128i r) {
    __m128i bg = _mm_unpacklo_epi8(b, g);
    __m128i r0 = _mm_unpacklo_epi8(r, _mm_setzero_si128());
    store4(out, _mm_unpacklo_epi16(bg, r0));
    store4(out + 12, _mm_unpackhi_epi16(bg, r0));
}

inline uint8_t clamp255(int v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v); }

// Y, Cb, Cr to B, G, R with 14-bit coefficients.
constexpr int kCrR = 22970, kCbG = -5638, kCrG = -11700, kCbB = 29032;

void yccRow(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* out, int width) {
    int x = 0;
    const __m128i zero = _mm_setzero_si128(), c128 = _mm_set1_epi16(128);
    const __m128i kR = _mm_set_epi16(kCrR, 0, kCrR, 0, kCrR, 0, kCrR, 0);
    const __m128i kG = _mm_set_epi16(kCrG, kCbG, kCrG, kCbG, kCrG, kCbG, kCrG, kCbG);
    const __m128i kB = _mm_set_epi16(0, kCbB, 0, kCbB, 0, kCbB, 0, kCbB);
    const __m128i round = _mm_set1_epi32(1 << 13);
    for (; x + 8 < width; x += 8) {  // the stores run 2 bytes ahead: keep a pixel in reserve
        __m128i yy = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(y + x)), zero);
        __m128i u = _mm_sub_epi16(_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cb + x)), zero), c128);
        __m128i v = _mm_sub_epi16(_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(cr + x)), zero), c128);
        __m128i uvlo = _mm_unpacklo_epi16(u, v), uvhi = _mm_unpackhi_epi16(u, v);
        auto term = [&](__m128i k) {
            __m128i lo = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(uvlo, k), round), 14);
            __m128i hi = _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(uvhi, k), round), 14);
            return _mm_add_epi16(yy, _mm_packs_epi32(lo, hi));
        };
        __m128i r = _mm_packus_epi16(term(kR), zero);
        __m128i g = _mm_packus_epi16(term(kG), zero);
        __m128i b = _mm_packus_epi16(term(kB), zero);
        storeBGR8(out + 3 * x, b, g, r);
    }
    for (; x < width; ++x) {
        int u = cb[x] - 128, v = cr[x] - 128;
        out[3 * x] = clamp255(y[x] + ((kCbB * u + (1 << 13)) >> 14));
        out[3 * x + 1] = clamp255(y[x] + ((kCbG * u + kCrG * v + (1 << 13)) >> 14));
        out[3 * x + 2] = clamp255(y[x] + ((kCrR * v + (1 << 13)) >> 14));
    }
}

void rgbRow(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* out, int width) {
    int x = 0;
    for (; x + 8 < width; x += 8) {
        storeBGR8(out + 3 * x, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(b + x)),
                  _mm_loadl_epi64(reinterpret_cast<const __m128i*>(g + x)),
                  _mm_loadl_epi64(reinterpret_cast<const __m128i*>(r + x)));
    }
    for (; x < width; ++x) {
        out[3 * x] = b[x];
        out[3 * x + 1] = g[x];
        out[3 * x + 2] = r[x];
    }
}

void greyRow(const uint8_t* y, uint8_t* out, int width) { rgbRow(y, y, y, out, width); }

struct Decoder {
    const uint8_t* data;
    const uint8_t* end;
    const uint8_t* p;

    uint16_t quant[4][64];  // natural order
    bool quantDefined[4] = {};
    Huffman dc[4], ac[4];
    int restartInterval = 0;
    bool adobe = false;
    int adobeTransform = -1;

    bool frameSeen = false;
    bool progressive = false;
    int width = 0, height = 0;
    int ncomp = 0;
    Component comp[kMaxComponents];
    int hmax = 1, vmax = 1;
    int mcusX = 0, mcusY = 0;
    bool collecting = false;  // coefficients kept until the end
    bool imageDone = false;
    int scansDecoded = 0;

    // Output: rows of the expected size, or none when only the header is read.
    uint8_t* dst = nullptr;
    ptrdiff_t stride = 0;
    int expectWidth = 0, expectHeight = 0;
    std::unique_ptr<Upsampler> up[kMaxComponents];
    bool rgb = false;

    // Scan state.
    int scanComp[kMaxComponents];
    int scanCount = 0;
    int ss = 0, se = 63, ah = 0, al = 0;
    int eobrun = 0;
    BitReader br;

    Decoder(const uint8_t* d, size_t size) : data(d), end(d + size), p(d) {}

    bool u16(int& v) {
        if (end - p < 2) return false;
        v = (p[0] << 8) | p[1];
        p += 2;
        return true;
    }

    // Next marker code, skipping fill bytes; -1 at the end of the data.
    int nextMarker() {
        while (p < end && *p != 0xFF) ++p;  // tolerate stray bytes between segments
        while (p < end && *p == 0xFF) ++p;
        if (p >= end) return -1;
        return *p++;
    }

    bool readFrame(int marker) {
        if (frameSeen) return false;
        frameSeen = true;
        progressive = marker == 0xC2;
        int len;
        if (!u16(len) || len < 8 || end - p < len - 2) return false;
        const uint8_t* s = p;
        p += len - 2;
        if (s[0] != 8) return false;  // 8-bit samples only
        height = (s[1] << 8) | s[2];
        width = (s[3] << 8) | s[4];
        ncomp = s[5];
        if (width < 1 || height < 1) return false;  // a height given later (DNL) is not supported
        if (dst && (width != expectWidth || height != expectHeight)) return false;
        if (static_cast<int64_t>(width) * height > kMaxPixels) return false;
        if (ncomp != 1 && ncomp != 3) return false;
        if (len != 8 + 3 * ncomp) return false;
        for (int i = 0; i < ncomp; ++i) {
            Component& c = comp[i];
            c.id = s[6 + 3 * i];
            c.h = s[7 + 3 * i] >> 4;
            c.v = s[7 + 3 * i] & 15;
            c.tq = s[8 + 3 * i];
            if (c.h < 1 || c.h > 4 || c.v < 1 || c.v > 4 || c.tq > 3) return false;
            for (int j = 0; j < i; ++j)
                if (comp[j].id == c.id) return false;
        }
        // A single component is always coded block by block.
        if (ncomp == 1) comp[0].h = comp[0].v = 1;
        hmax = vmax = 1;
        for (int i = 0; i < ncomp; ++i) {
            hmax = std::max(hmax, comp[i].h);
            vmax = std::max(vmax, comp[i].v);
        }
        mcusX = (width + 8 * hmax - 1) / (8 * hmax);
        mcusY = (height + 8 * vmax - 1) / (8 * vmax);
        for (int i = 0; i < ncomp; ++i) {
            Component& c = comp[i];
            c.width = (width * c.h + hmax - 1) / hmax;
            c.height = (height * c.v + vmax - 1) / vmax;
            c.blocksW = (c.width + 7) / 8;
            c.blocksH = (c.height + 7) / 8;
            c.allocW = mcusX * c.h;
            c.allocH = mcusY * c.v;
            std::memset(c.bitState, -1, sizeof c.bitState);
        }
        return true;
    }

    // The body of a segment whose length comes next: [s, e), with p moved past it.
    bool segment(const uint8_t*& s, const uint8_t*& e) {
        int len;
        if (!u16(len) || len < 2 || end - p < len - 2) return false;
        s = p;
        e = p + len - 2;
        p = e;
        return true;
    }

    bool readQuant() {
        const uint8_t *s, *e;
        if (!segment(s, e)) return false;
        while (s < e) {
            int pq = *s >> 4, tq = *s & 15;
            ++s;
            if (tq > 3 || pq > 1 || e - s < 64 * (pq + 1)) return false;
            for (int k = 0; k < 64; ++k) {
                int q = pq ? (s[2 * k] << 8) | s[2 * k + 1] : s[k];
                quant[tq][kZigzag[k]] = static_cast<uint16_t>(q);
            }
            s += 64 * (pq + 1);
            quantDefined[tq] = true;
        }
        return true;
    }

    bool readHuffman() {
        const uint8_t *s, *e;
        if (!segment(s, e)) return false;
        while (s < e) {
            if (e - s < 17) return false;
            int tc = *s >> 4, th = *s & 15;
            if (tc > 1 || th > 3) return false;
            uint8_t bits[17] = {0};
            int count = 0;
            for (int i = 1; i <= 16; ++i) count += bits[i] = s[i];
            s += 17;
            if (count > 256 || e - s < count) return false;
            if (!(tc ? ac[th] : dc[th]).build(bits, s, count)) return false;
            s += count;
        }
        return true;
    }

    bool readRestart() {
        int len;
        if (!u16(len) || len != 4 || !u16(restartInterval)) return false;
        return true;
    }

    bool skipSegment(int marker) {
        int len;
        if (!u16(len) || len < 2 || end - p < len - 2) return false;
        // Adobe's segment says whether three components are YCbCr or RGB.
        if (marker == 0xEE && len >= 14 && std::memcmp(p, "Adobe", 5) == 0) {
            adobe = true;
            adobeTransform = p[11];
        }
        p += len - 2;
        return true;
    }

    // ------------------------------------------------------------ entropy
    bool decodeBaselineBlock(Component& c, int16_t* blk, bool& acPresent) {
        const Huffman& dch = dc[c.dcTable];
        const Huffman& ach = ac[c.acTable];
        int s = br.decode(dch);
        if (s < 0 || s > 15) return false;
        int diff = s ? br.extend(s) : 0;
        c.pred = static_cast<int16_t>(c.pred + diff);
        blk[0] = static_cast<int16_t>(c.pred);
        bool any = false;
        for (int k = 1; k < 64;) {
            br.ensure();
            const Huffman::FastAC& f = ach.fastAC[br.peek(kFastBits)];
            if (f.length) {
                k += f.run;
                blk[kZigzag[k]] = f.value;
                br.skip(f.length);
                any = true;
                ++k;
                continue;
            }
            int rs = br.decode(ach);
            if (rs < 0) return false;
            int r = rs >> 4, sz = rs & 15;
            if (sz) {
                k += r;
                blk[kZigzag[k]] = static_cast<int16_t>(br.extend(sz));  // a run past 63 lands in the scratch slot
                any = true;
                ++k;
            } else {
                if (r != 15) break;
                k += 16;
            }
        }
        acPresent = any;
        return true;
    }

    bool decodeDCFirst(Component& c, int16_t* blk) {
        int s = br.decode(dc[c.dcTable]);
        if (s < 0 || s > 15) return false;
        int diff = s ? br.extend(s) : 0;
        c.pred = static_cast<int16_t>(c.pred + diff);
        blk[0] = static_cast<int16_t>(c.pred * (1 << al));
        return true;
    }

    bool decodeDCRefine(int16_t* blk) {
        if (br.bit()) blk[0] = static_cast<int16_t>(blk[0] | (1 << al));
        return true;
    }

    bool decodeACFirst(Component& c, int16_t* blk) {
        if (eobrun > 0) {
            --eobrun;
            return true;
        }
        const Huffman& h = ac[c.acTable];
        for (int k = ss; k <= se;) {
            int rs = br.decode(h);
            if (rs < 0) return false;
            int r = rs >> 4, s = rs & 15;
            if (s) {
                k += r;
                if (k > 63) return false;
                blk[kZigzag[k]] = static_cast<int16_t>(br.extend(s) * (1 << al));
                ++k;
            } else if (r == 15) {
                k += 16;
            } else {
                eobrun = (1 << r) - 1;
                if (r) {
                    br.ensure();
                    eobrun += static_cast<int>(br.bits(r));
                }
                break;
            }
        }
        return true;
    }

    bool decodeACRefine(Component& c, int16_t* blk) {
        const int p1 = 1 << al, m1 = -p1;
        int k = ss;
        if (eobrun == 0) {
            const Huffman& h = ac[c.acTable];
            for (; k <= se; ++k) {
                int rs = br.decode(h);
                if (rs < 0) return false;
                int r = rs >> 4, s = rs & 15;
                int value = 0;
                if (s) {
                    if (s != 1) return false;
                    value = br.bit() ? p1 : m1;
                } else if (r != 15) {
                    eobrun = 1 << r;
                    if (r) {
                        br.ensure();
                        eobrun += static_cast<int>(br.bits(r));
                    }
                    break;
                }
                // Walk over r zero coefficients, refining the non-zero ones met
                // on the way; the new coefficient goes to the next zero.
                for (; k <= se; ++k) {
                    int16_t& x = blk[kZigzag[k]];
                    if (x) {
                        if (br.bit() && !(x & p1)) x = static_cast<int16_t>(x + (x >= 0 ? p1 : m1));
                    } else {
                        if (r == 0) break;
                        --r;
                    }
                }
                if (value) {
                    if (k > se) return false;
                    blk[kZigzag[k]] = static_cast<int16_t>(value);
                }
            }
        }
        if (eobrun > 0) {
            for (; k <= se; ++k) {
                int16_t& x = blk[kZigzag[k]];
                if (x && br.bit() && !(x & p1)) x = static_cast<int16_t>(x + (x >= 0 ? p1 : m1));
            }
            --eobrun;
        }
        return true;
    }

    // -------------------------------------------------------------- scans
    // Moves past a restart marker and resets the decoder state.
    bool restart() {
        if (br.overrun()) return false;
        p = br.pos;
        while (p < end && *p != 0xFF) ++p;  // padding the decoder did not need
        while (p < end && *p == 0xFF) ++p;
        if (p >= end || *p < 0xD0 || *p > 0xD7) return false;
        ++p;
        br.start(p, end);
        for (int i = 0; i < ncomp; ++i) comp[i].pred = 0;
        eobrun = 0;
        return true;
    }

    // Calls f(component, blockX, blockY) for each block of the scan in order.
    template <class F>
    bool forEachBlock(F&& f) {
        return forEachBlock(f, [](int) {});
    }
    // The same, calling rowDone(m) after each row of MCUs.
    template <class F, class R>
    bool forEachBlock(F&& f, R&& rowDone) {
        int left = restartInterval;
        if (scanCount == 1) {
            Component& c = comp[scanComp[0]];
            for (int by = 0; by < c.blocksH; ++by) {
                for (int bx = 0; bx < c.blocksW; ++bx) {
                    if (restartInterval) {
                        if (left == 0) {
                            if (!restart()) return false;
                            left = restartInterval;
                        }
                        --left;
                    }
                    if (!f(c, bx, by)) return false;
                }
                if (br.overrun()) return false;
                rowDone(by);
            }
            return !br.overrun();
        }
        for (int my = 0; my < mcusY; ++my) {
            for (int mx = 0; mx < mcusX; ++mx) {
                if (restartInterval) {
                    if (left == 0) {
                        if (!restart()) return false;
                        left = restartInterval;
                    }
                    --left;
                }
                for (int i = 0; i < scanCount; ++i) {
                    Component& c = comp[scanComp[i]];
                    for (int y = 0; y < c.v; ++y)
                        for (int x = 0; x < c.h; ++x)
                            if (!f(c, mx * c.h + x, my * c.v + y)) return false;
                }
            }
            if (br.overrun()) return false;
            rowDone(my);
        }
        return !br.overrun();
    }

    static int16_t* blockAt(Component& c, int bx, int by) {
        return c.coef.get() + (static_cast<size_t>(by) * c.allocW + bx) * 64;
    }

    bool allocatePlanes() {
        for (int i = 0; i < ncomp; ++i) {
            Component& c = comp[i];
            if (!quantDefined[c.tq]) return false;
            c.planeStride = static_cast<ptrdiff_t>(c.allocW) * 8;
            c.stripRows = 8 * c.v;
            c.plane.reset(new uint8_t[static_cast<size_t>(c.planeStride) * c.stripRows * 3]);
        }
        if (dst) {
            for (int i = 0; i < ncomp; ++i) up[i].reset(new Upsampler(comp[i], hmax, vmax, width));
            // Three components are YCbCr unless an Adobe segment says RGB, or
            // the component identifiers spell it.
            rgb = ncomp == 3 && (adobe ? adobeTransform == 0 : (comp[0].id == 'R' && comp[1].id == 'G' && comp[2].id == 'B'));
        }
        return true;
    }

    uint8_t* stripBlock(Component& c, int bx, int by) {
        int row = (by % (3 * c.v)) * 8;  // block rows of three MCU rows
        return c.plane.get() + static_cast<ptrdiff_t>(row) * c.planeStride + bx * 8;
    }

    // Converts the image rows of MCU row m, whose strip and both neighbours
    // are decoded.
    void emit(int m) {
        int y0 = m * 8 * vmax, y1 = std::min(height, y0 + 8 * vmax);
        for (int y = y0; y < y1; ++y) {
            uint8_t* out = dst + y * stride;
            if (ncomp == 1) {
                greyRow(up[0]->row(y), out, width);
                continue;
            }
            const uint8_t* a = up[0]->row(y);
            const uint8_t* b = up[1]->row(y);
            const uint8_t* c = up[2]->row(y);
            if (rgb)
                rgbRow(a, b, c, out, width);
            else
                yccRow(a, b, c, out, width);
        }
    }

    bool readScan() {
        if (!frameSeen || imageDone) return false;
        int len;
        if (!u16(len) || len < 6 || end - p < len - 2) return false;
        const uint8_t* s = p;
        p += len - 2;
        scanCount = s[0];
        if (scanCount < 1 || scanCount > ncomp || len != 6 + 2 * scanCount) return false;
        int blocksPerMCU = 0;
        for (int i = 0; i < scanCount; ++i) {
            int id = s[1 + 2 * i], tables = s[2 + 2 * i];
            int idx = -1;
            for (int j = 0; j < ncomp; ++j)
                if (comp[j].id == id) idx = j;
            if (idx < 0) return false;
            for (int j = 0; j < i; ++j)
                if (scanComp[j] == idx) return false;
            scanComp[i] = idx;
            comp[idx].dcTable = tables >> 4;
            comp[idx].acTable = tables & 15;
            if (comp[idx].dcTable > 3 || comp[idx].acTable > 3) return false;
            blocksPerMCU += comp[idx].h * comp[idx].v;
        }
        if (scanCount > 1 && blocksPerMCU > 10) return false;
        const uint8_t* tail = s + 1 + 2 * scanCount;
        ss = tail[0];
        se = tail[1];
        ah = tail[2] >> 4;
        al = tail[2] & 15;
        if (progressive) {
            if (ss > se || se > 63 || ah > 13 || al > 13) return false;
            if (ss == 0 && se != 0) return false;
            if (ss > 0 && scanCount != 1) return false;
            if (ah && al != ah - 1) return false;
        } else {
            ss = 0;
            se = 63;
            ah = al = 0;
        }
        // Tables this scan needs must be there.
        for (int i = 0; i < scanCount; ++i) {
            const Component& c = comp[scanComp[i]];
            bool needDC = !progressive || (ss == 0 && ah == 0);
            bool needAC = !progressive || ss > 0;
            if (needDC && !dc[c.dcTable].defined) return false;
            if (needAC && !ac[c.acTable].defined) return false;
        }

        if (scansDecoded == 0) {
            collecting = progressive || scanCount != ncomp;
            if (!allocatePlanes()) return false;
            if (collecting) {
                // Every block of a first scan costs at least one bit, so a
                // stream too short for this one cannot describe the image:
                // refuse it before allocating coefficients for all of it.
                int64_t blocks = 0;
                for (int i = 0; i < scanCount; ++i)
                    blocks += static_cast<int64_t>(comp[scanComp[i]].blocksW) * comp[scanComp[i]].blocksH;
                if ((end - p) * 8 < blocks) return false;
                for (int i = 0; i < ncomp; ++i) {
                    Component& c = comp[i];
                    size_t n = static_cast<size_t>(c.allocW) * c.allocH * 64;
                    c.coef.reset(new int16_t[n]);
                    std::memset(c.coef.get(), 0, n * sizeof(int16_t));
                }
            }
        }
        // Each scan must bring bits no earlier scan brought: this rejects
        // repeated scans, which could otherwise make the work unbounded.
        for (int i = 0; i < scanCount; ++i) {
            Component& c = comp[scanComp[i]];
            if (!progressive) {
                if (c.scanned) return false;
                c.scanned = true;
                continue;
            }
            for (int k = ss; k <= se; ++k) {
                int expected = ah ? ah : -1;
                if (c.bitState[k] != expected) return false;
                c.bitState[k] = static_cast<int8_t>(al);
            }
        }

        for (int i = 0; i < ncomp; ++i) comp[i].pred = 0;
        eobrun = 0;
        br.start(p, end);
        bool ok;
        if (!collecting) {
            alignas(16) int16_t blk[80];
            ok = forEachBlock(
                [&](Component& c, int bx, int by) {
                    std::memset(blk, 0, 64 * sizeof(int16_t));
                    bool acPresent;
                    if (!decodeBaselineBlock(c, blk, acPresent)) return false;
                    uint8_t* out = stripBlock(c, bx, by);
                    if (acPresent)
                        idct8x8(blk, quant[c.tq], out, c.planeStride);
                    else
                        idctDC(blk[0], quant[c.tq][0], out, c.planeStride);
                    return true;
                },
                [&](int m) {
                    if (dst && m > 0) emit(m - 1);
                });
            if (ok) {
                if (dst) emit(mcusY - 1);
                imageDone = true;
            }
        } else if (!progressive) {
            ok = forEachBlock([&](Component& c, int bx, int by) {
                int16_t* blk = blockAt(c, bx, by);
                int16_t scratch[80];
                std::memcpy(scratch, blk, 64 * sizeof(int16_t));
                bool acPresent;
                if (!decodeBaselineBlock(c, scratch, acPresent)) return false;
                std::memcpy(blk, scratch, 64 * sizeof(int16_t));
                return true;
            });
        } else if (ss == 0) {
            ok = ah == 0 ? forEachBlock([&](Component& c, int bx, int by) { return decodeDCFirst(c, blockAt(c, bx, by)); })
                         : forEachBlock([&](Component& c, int bx, int by) { return decodeDCRefine(blockAt(c, bx, by)); });
        } else {
            ok = ah == 0 ? forEachBlock([&](Component& c, int bx, int by) { return decodeACFirst(c, blockAt(c, bx, by)); })
                         : forEachBlock([&](Component& c, int bx, int by) { return decodeACRefine(c, blockAt(c, bx, by)); });
        }
        if (!ok) return false;
        ++scansDecoded;
        p = br.pos;  // the next marker search starts where the entropy data ended
        if (collecting && !progressive) {
            bool all = true;
            for (int i = 0; i < ncomp; ++i) all &= comp[i].scanned;
            if (all) imageDone = true;
        }
        return true;
    }

    // Reads segments until the image is complete. With `headerOnly`, stops
    // after the frame header.
    bool parse(bool headerOnly) {
        if (end - p < 2 || p[0] != 0xFF || p[1] != 0xD8) return false;
        p += 2;
        for (;;) {
            int m = nextMarker();
            if (m < 0 || m == 0xD9) break;
            switch (m) {
            case 0xC0: case 0xC1: case 0xC2:
                if (!readFrame(m)) return false;
                if (headerOnly) return true;
                break;
            case 0xC3: case 0xC5: case 0xC6: case 0xC7: case 0xC9: case 0xCA: case 0xCB:
            case 0xCD: case 0xCE: case 0xCF:
                return false;  // lossless, hierarchical and arithmetic-coded frames
            case 0xC4:
                if (!readHuffman()) return false;
                break;
            case 0xDB:
                if (!readQuant()) return false;
                break;
            case 0xDD:
                if (!readRestart()) return false;
                break;
            case 0xDA:
                if (!readScan()) return false;
                if (imageDone) return true;
                break;
            case 0xD0: case 0xD1: case 0xD2: case 0xD3: case 0xD4: case 0xD5: case 0xD6: case 0xD7:
            case 0x01:
                break;  // stray markers without a length
            case 0x00:
                break;  // stuffed byte outside a scan: skip it
            default:
                if (!skipSegment(m)) return false;
                break;
            }
        }
        if (headerOnly) return false;
        // A progressive stream may end after any complete scan.
        return frameSeen && (imageDone || (progressive && scansDecoded > 0));
    }

    // ------------------------------------------------------------- output
    // Transforms the collected coefficients MCU row by MCU row and emits them.
    void outputCollected() {
        for (int m = 0; m < mcusY; ++m) {
            transformRow(m);
            if (m > 0) emit(m - 1);
        }
        emit(mcusY - 1);
    }
    void transformRow(int m) {
        for (int i = 0; i < ncomp; ++i) {
            Component& c = comp[i];
            const uint16_t* q = quant[c.tq];
            for (int by = m * c.v; by < (m + 1) * c.v; ++by) {
                for (int bx = 0; bx < c.allocW; ++bx) {
                    const int16_t* blk = blockAt(c, bx, by);
                    uint8_t* out = stripBlock(c, bx, by);
                    __m128i any = _mm_setzero_si128();
                    for (int j = 0; j < 8; ++j)
                        any = _mm_or_si128(any, _mm_loadu_si128(reinterpret_cast<const __m128i*>(blk + 8 * j)));
                    // Ignore the DC lane when asking whether any AC is non-zero.
                    any = _mm_and_si128(any, _mm_set_epi16(-1, -1, -1, -1, -1, -1, -1, 0));
                    if (_mm_movemask_epi8(_mm_cmpeq_epi8(any, _mm_setzero_si128())) == 0xFFFF)
                        idctDC(blk[0], q[0], out, c.planeStride);
                    else
                        idct8x8(blk, q, out, c.planeStride);
                }
            }
        }
    }
};


bool decodeImpl(const uint8_t* data, size_t size, uint8_t* dst, ptrdiff_t stride, int width, int height) {
    std::unique_ptr<Decoder> d(new Decoder(data, size));
    d->dst = dst;
    d->stride = stride;
    d->expectWidth = width;
    d->expectHeight = height;
    if (!d->parse(false)) return false;
    if (d->collecting) d->outputCollected();
    return true;
}

}  // namespace

bool readInfo(const uint8_t* data, size_t size, Info& info) {
    if (!data) return false;
    try {
        std::unique_ptr<Decoder> d(new Decoder(data, size));
        if (!d->parse(true)) return false;
        info.width = d->width;
        info.height = d->height;
        info.components = d->ncomp;
        info.progressive = d->progressive;
        return true;
    } catch (...) {
        return false;  // out of memory
    }
}

bool decode(const uint8_t* data, size_t size, uint8_t* dst, ptrdiff_t stride, int width, int height) {
    if (!data || !dst || width < 1 || height < 1) return false;
    if (stride < 3 * static_cast<ptrdiff_t>(width) && -stride < 3 * static_cast<ptrdiff_t>(width)) return false;
    try {
        return decodeImpl(data, size, dst, stride, width, height);
    } catch (...) {
        return false;  // out of memory
    }
}

}  // namespace tova::jpeg
