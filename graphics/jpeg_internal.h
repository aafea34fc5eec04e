// Pieces the JPEG decoder and encoder share: the zig-zag order, the example
// quantisation and Huffman tables of the JPEG standard (Annex K), and the
// 8x8 transforms (jpeg_dct.cpp).
#pragma once

#include <cstddef>
#include <cstdint>

namespace tova::jpeg::detail {

// Natural (row-major) index of the k-th coefficient in zig-zag order. Entries
// 64..79 send a run that overshoots the block to a scratch slot at index 64,
// so a corrupt run never writes outside a 65-entry block.
extern const uint8_t kZigzag[80];

extern const uint8_t kStdLumaQuant[64];    // natural order
extern const uint8_t kStdChromaQuant[64];  // natural order

struct HuffTable {
    uint8_t bits[17];  // bits[n]: number of codes of length n (bits[0] unused)
    uint8_t values[256];
    int count;
};
// Luminance DC, chrominance DC, luminance AC, chrominance AC.
const HuffTable& stdHuffman(int which);

// Inverse DCT of one block of quantised coefficients (natural order) with the
// quantisation table (natural order), writing 8 rows of 8 samples.
void idct8x8(const int16_t* coef, const uint16_t* quant, uint8_t* out, ptrdiff_t stride);
// The same for a block whose only non-zero coefficient is DC.
void idctDC(int dc, uint16_t quant, uint8_t* out, ptrdiff_t stride);

// Forward DCT of 8 rows of 8 samples, quantised with reciprocal divisors
// (1 / (8 q) in natural order) and clamped to the baseline range.
void fdctQuant8x8(const uint8_t* in, ptrdiff_t stride, const float* reciprocal, int16_t* out);

}  // namespace tova::jpeg::detail
