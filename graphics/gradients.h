// Gradients computed pixel by pixel with fixed integer arithmetic, so that
// every system shows the same pixels (GDI's GradientFill rounds and dithers as
// each driver likes). Portable: no GDI, no COM.
#pragma once

#include "colour_math.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tova::gradients {

// 32-bit pixels (0xAARRGGBB), row y at top + y * stride (stride in pixels).
struct Pixels32 {
    uint32_t* top = nullptr;
    ptrdiff_t stride = 0;
    int width = 0, height = 0;
    // Where these pixels lie in the whole area a gradient spans (a band of
    // it, say): offset and the area's size (0: these pixels are the area).
    int x0 = 0, y0 = 0, areaWidth = 0, areaHeight = 0;
    uint32_t* row(int y) const { return top + y * stride; }
    int fullWidth() const { return areaWidth ? areaWidth : width; }
    int fullHeight() const { return areaHeight ? areaHeight : height; }
};

enum class Direction { Horizontal, Vertical, DiagonalDown, DiagonalUp };

// Where pixel (x, y) of a w x h area lies along a direction: position
// rowStart(y) + x * step() out of 0 .. last() (t = position / last(), 0 when
// last() is 0).
class Positions {
public:
    Positions(Direction d, int width, int height);
    int last() const { return last_; }
    int step() const { return direction_ == Direction::Vertical ? 0 : 1; }
    int rowStart(int y) const;

private:
    Direction direction_;
    int height_, last_;
};

// round(start + (end - start) * p / last) for p = 0 .. last.
std::vector<uint8_t> ramp(int start, int end, int last);

// Opaque fills (alpha bytes 0, as GDI leaves them).
void linear(const Pixels32& px, colour::Rgb start, colour::Rgb end, Direction direction);
void corner(const Pixels32& px, colour::Rgb topLeft, colour::Rgb topRight, colour::Rgb bottomLeft,
            colour::Rgb bottomRight);
void radial(const Pixels32& px, colour::Rgb centre, colour::Rgb outer);

}  // namespace tova::gradients
