#include "colour_math.h"

#include <algorithm>
#include <cmath>

namespace tova::colour {

long roundHalfAway(double v) { return static_cast<long>(v < 0 ? -std::floor(-v + 0.5) : std::floor(v + 0.5)); }

Hsl toHsl(Rgb c) {
    const double r = c.r / 255.0, g = c.g / 255.0, b = c.b / 255.0;
    const double hi = std::max({r, g, b}), lo = std::min({r, g, b});
    Hsl out;
    out.l = (hi + lo) / 2;
    const double d = hi - lo;
    if (d == 0) return out;
    out.s = out.l <= 0.5 ? d / (hi + lo) : d / (2 - hi - lo);
    double h;
    if (hi == r)
        h = (g - b) / d + (g < b ? 6 : 0);
    else if (hi == g)
        h = (b - r) / d + 2;
    else
        h = (r - g) / d + 4;
    out.h = h * 60;
    if (out.h >= 360) out.h -= 360;
    return out;
}

namespace {

double hueChannel(double p, double q, double t) {
    if (t < 0) t += 1;
    if (t > 1) t -= 1;
    if (t < 1.0 / 6) return p + (q - p) * 6 * t;
    if (t < 0.5) return q;
    if (t < 2.0 / 3) return p + (q - p) * (2.0 / 3 - t) * 6;
    return p;
}

int channel(double v) { return static_cast<int>(std::clamp(roundHalfAway(255 * v), 0L, 255L)); }

}  // namespace

Rgb fromHsl(Hsl c) {
    if (c.s == 0) {
        int v = channel(c.l);
        return Rgb{v, v, v};
    }
    double h = std::fmod(c.h, 360.0);
    if (h < 0) h += 360;
    const double t = h / 360;
    const double q = c.l < 0.5 ? c.l * (1 + c.s) : c.l + c.s - c.l * c.s;
    const double p = 2 * c.l - q;
    return Rgb{channel(hueChannel(p, q, t + 1.0 / 3)), channel(hueChannel(p, q, t)),
               channel(hueChannel(p, q, t - 1.0 / 3))};
}

Rgb mix(Rgb c1, Rgb c2, int amount) {
    // round(c1 + (c2 - c1) a / 255) = (255 c1 + (c2 - c1) a) / 255, rounded: both are non-negative.
    auto one = [amount](int a, int b) { return static_cast<int>(roundDiv(255 * a + (b - a) * amount, 255)); };
    return Rgb{one(c1.r, c2.r), one(c1.g, c2.g), one(c1.b, c2.b)};
}

}  // namespace tova::colour
