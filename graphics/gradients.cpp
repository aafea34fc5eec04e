#include "gradients.h"

#include <algorithm>
#include <cmath>

namespace tova::gradients {

using colour::Rgb;

Positions::Positions(Direction d, int width, int height) : direction_(d), height_(height) {
    switch (d) {
    case Direction::Horizontal: last_ = width - 1; break;
    case Direction::Vertical: last_ = height - 1; break;
    default: last_ = width + height - 2; break;
    }
    if (last_ < 0) last_ = 0;
}

int Positions::rowStart(int y) const {
    switch (direction_) {
    case Direction::Horizontal: return 0;
    case Direction::Vertical: return y;
    case Direction::DiagonalDown: return y;
    case Direction::DiagonalUp: return height_ - 1 - y;
    }
    return 0;
}

std::vector<uint8_t> ramp(int start, int end, int last) {
    std::vector<uint8_t> v(static_cast<size_t>(last) + 1);
    const int64_t den = last > 0 ? last : 1;
    for (int p = 0; p <= last; ++p)
        v[p] = static_cast<uint8_t>(colour::roundDiv(int64_t(start) * den + int64_t(end - start) * p, den));
    return v;
}

void linear(const Pixels32& px, Rgb start, Rgb end, Direction direction) {
    Positions pos(direction, px.fullWidth(), px.fullHeight());
    const int last = pos.last();
    auto r = ramp(start.r, end.r, last), g = ramp(start.g, end.g, last), b = ramp(start.b, end.b, last);
    std::vector<uint32_t> table(static_cast<size_t>(last) + 1);
    for (int p = 0; p <= last; ++p) table[p] = colour::toPixel(Rgb{r[p], g[p], b[p]});
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        const int s = pos.rowStart(y + px.y0) + px.x0 * pos.step();
        if (pos.step() == 0)
            std::fill(row, row + px.width, table[s]);
        else
            std::copy(table.begin() + s, table.begin() + s + px.width, row);
    }
}

void corner(const Pixels32& px, Rgb tl, Rgb tr, Rgb bl, Rgb br) {
    // Bilinear in u = x / U, v = y / V, rounded once: the weights are integers over U * V.
    const int64_t U = std::max(px.fullWidth() - 1, 1), V = std::max(px.fullHeight() - 1, 1);
    const int64_t den = U * V;
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        const int64_t wy = y + px.y0, wy0 = V - wy;
        const int64_t lr = tl.r * wy0 + bl.r * wy, lg = tl.g * wy0 + bl.g * wy, lb = tl.b * wy0 + bl.b * wy;
        const int64_t rr = tr.r * wy0 + br.r * wy, rg = tr.g * wy0 + br.g * wy, rb = tr.b * wy0 + br.b * wy;
        for (int x = 0; x < px.width; ++x) {
            const int64_t wx = x + px.x0, wx0 = U - wx;
            Rgb c{int(colour::roundDiv(lr * wx0 + rr * wx, den)), int(colour::roundDiv(lg * wx0 + rg * wx, den)),
                  int(colour::roundDiv(lb * wx0 + rb * wx, den))};
            row[x] = colour::toPixel(c);
        }
    }
}

void radial(const Pixels32& px, Rgb centre, Rgb outer) {
    const double cx = (px.fullWidth() - 1) / 2.0, cy = (px.fullHeight() - 1) / 2.0;
    const double rx = px.fullWidth() / 2.0, ry = px.fullHeight() / 2.0;
    auto channel = [](int s, int e, double t) { return static_cast<int>(colour::roundHalfAway(s + (e - s) * t)); };
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        const double dy = (y + px.y0 - cy) / ry, dy2 = dy * dy;
        for (int x = 0; x < px.width; ++x) {
            const double dx = (x + px.x0 - cx) / rx;
            const double t = std::min(1.0, std::sqrt(dx * dx + dy2));
            row[x] = colour::toPixel(Rgb{channel(centre.r, outer.r, t), channel(centre.g, outer.g, t),
                                         channel(centre.b, outer.b, t)});
        }
    }
}

}  // namespace tova::gradients
