// Alpha blending with the fixed arithmetic of colour_math.h: a colour over an
// area at constant or graded opacity, and a premultiplied layer over an area.
// Destination alpha bytes are kept. Portable (SSE2 where the compiler has it).
#pragma once

#include "gradients.h"

namespace tova::alpha {

using gradients::Direction;
using gradients::Pixels32;

// The opacity of each pixel: constant, or graded from one value to another
// along a direction of a w x h area.
class Opacity {
public:
    explicit Opacity(int constant) : ramp_(1, static_cast<uint8_t>(constant)), pos_(Direction::Vertical, 1, 1) {}
    Opacity(int start, int end, Direction d, int width, int height)
        : ramp_(gradients::ramp(start, end, gradients::Positions(d, width, height).last())),
          pos_(d, width, height), graded_(true) {}
    int at(int x, int y) const { return graded_ ? ramp_[pos_.rowStart(y) + x * pos_.step()] : ramp_[0]; }

private:
    std::vector<uint8_t> ramp_;
    gradients::Positions pos_;
    bool graded_ = false;
};

// Blends `c` over every pixel at `opacity`.
void fill(const Pixels32& px, colour::Rgb c, int opacity);
// The same with the instruction set chosen; the tests compare them.
enum class Simd { Best, Scalar };
void fillWith(Simd simd, const Pixels32& px, colour::Rgb c, int opacity);

// Colour and opacity graded together along `direction`.
void fillGraded(const Pixels32& px, colour::Rgb start, colour::Rgb end, int startOpacity, int endOpacity,
                Direction direction);

// Premultiplied `layer` (same size as `px`; alpha in the top byte) over `px`.
void composite(const Pixels32& px, const Pixels32& layer, const Opacity& opacity);

}  // namespace tova::alpha
