// The portable pixel arithmetic, linked in directly: the vector path of the
// alpha fill against the scalar one and the formula for every destination
// value and opacity, and the ramps' rounding.
#include <gtest/gtest.h>

#include "graphics/alpha_fill.h"
#include "graphics/colourise.h"

#include <vector>

using namespace tova;

TEST(PixelCore, AlphaFillVectorAndScalarMatchTheFormulaEverywhere) {
    // One row per opacity, one pixel per destination value (with a non-zero alpha byte to keep).
    const colour::Rgb c{200, 7, 131};
    std::vector<uint32_t> simd(256 * 256), scalar;
    for (int a = 0; a < 256; ++a)
        for (int d = 0; d < 256; ++d) simd[a * 256 + d] = 0x5A000000u | d << 16 | (255 - d) << 8 | d;
    scalar = simd;
    for (int a = 0; a < 256; ++a) {
        alpha::fillWith(alpha::Simd::Best, gradients::Pixels32{&simd[a * 256], 256, 256, 1}, c, a);
        alpha::fillWith(alpha::Simd::Scalar, gradients::Pixels32{&scalar[a * 256], 256, 256, 1}, c, a);
    }
    ASSERT_EQ(scalar, simd);
    for (int a = 0; a < 256; ++a)
        for (int d = 0; d < 256; ++d) {
            const uint32_t p = simd[a * 256 + d];
            ASSERT_EQ((c.r * a + d * (255 - a) + 127) / 255, static_cast<int>((p >> 16) & 0xFF)) << a << " " << d;
            ASSERT_EQ((c.g * a + (255 - d) * (255 - a) + 127) / 255, static_cast<int>((p >> 8) & 0xFF));
            ASSERT_EQ(0x5Au, p >> 24);
        }
}

TEST(PixelCore, RampsRoundHalvesUpAndEndExactly) {
    EXPECT_EQ((std::vector<uint8_t>{0, 128, 255}), gradients::ramp(0, 255, 2));
    EXPECT_EQ((std::vector<uint8_t>{255, 128, 0}), gradients::ramp(255, 0, 2)) << "the value 127.5 rounds up either way";
    EXPECT_EQ((std::vector<uint8_t>{9}), gradients::ramp(9, 200, 0));
    const auto long_ = gradients::ramp(3, 250, 99999);
    EXPECT_EQ(3, long_.front());
    EXPECT_EQ(250, long_.back());
}

TEST(PixelCore, ColouringTwentyFourBitRowsLeavesThePadding) {
    // Two rows of 3 pixels with 3 padding bytes each.
    std::vector<uint8_t> rows(24, 0xEE);
    colourise::PixelRows px{rows.data(), 12, 3, 2, 3};
    colourise::invert(px);
    colourise::sepia(px, 255);
    colourise::greyscale(px, 255);
    for (int y = 0; y < 2; ++y)
        for (int i = 9; i < 12; ++i) EXPECT_EQ(0xEE, rows[y * 12 + i]);
}
