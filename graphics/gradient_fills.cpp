#include "gradient_fills.h"

#include "alpha_fill.h"
#include "work_area.h"

namespace tova {

using colour::fromColorRef;
using gradients::Pixels32;

namespace {

// Gradients keep a value per position along the area: areas are limited to
// 2^24 pixels each way (far beyond any device), so those tables stay small.
constexpr long long kMaxSide = 1 << 24;
bool empty(const RECT& r) {
    const long long w = static_cast<long long>(r.right) - r.left, h = static_cast<long long>(r.bottom) - r.top;
    return w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide;
}
int width(const RECT& r) { return r.right - r.left; }
int height(const RECT& r) { return r.bottom - r.top; }

// Opaque pixels need no reading: computed band by band, copied out.
template <class F>
bool paintOpaque(HDC dc, const RECT& r, F&& fill, bool rowsAlike = false) {
    if (!dc || empty(r)) return false;
    return writeBands(dc, r, fill, rowsAlike);
}

// A DC that cannot be read gets the fill as a premultiplied layer for AlphaBlend.
bool blendUnreadable(HDC dc, const RECT& r, const std::function<void(const Pixels32&)>& colours,
                     const alpha::Opacity& opacity) {
    Surface32 layer(width(r), height(r));
    if (!layer.ok()) return false;
    const Pixels32 px = layer.pixels();
    colours(px);
    for (int y = 0; y < px.height; ++y) {
        uint32_t* row = px.row(y);
        for (int x = 0; x < px.width; ++x) {
            const int o = opacity.at(x, y);
            const colour::Rgb c = colour::fromPixel(row[x]);
            auto pm = [o](int v) { return (v * o + 127) / 255; };
            row[x] = colour::toPixel(colour::Rgb{pm(c.r), pm(c.g), pm(c.b)}, static_cast<uint32_t>(o));
        }
    }
    return platformBlend(dc, r.left, r.top, layer);
}

}  // namespace

bool drawLinearGradient(HDC dc, const RECT& r, COLORREF start, COLORREF end, gradients::Direction d) {
    return paintOpaque(
        dc, r, [&](const Pixels32& px) { gradients::linear(px, fromColorRef(start), fromColorRef(end), d); },
        d == gradients::Direction::Horizontal);
}

bool drawCornerGradient(HDC dc, const RECT& r, COLORREF tl, COLORREF tr, COLORREF bl, COLORREF br) {
    return paintOpaque(dc, r, [&](const Pixels32& px) {
        gradients::corner(px, fromColorRef(tl), fromColorRef(tr), fromColorRef(bl), fromColorRef(br));
    });
}

bool drawRadialGradient(HDC dc, const RECT& r, COLORREF centre, COLORREF outer) {
    return paintOpaque(dc, r, [&](const Pixels32& px) {
        gradients::radial(px, fromColorRef(centre), fromColorRef(outer));
    });
}

bool drawAlphaFill(HDC dc, const RECT& r, COLORREF color, int opacity) {
    if (!dc || empty(r)) return false;
    const colour::Rgb c = fromColorRef(color);
    if (!readableDc(dc))
        return blendUnreadable(dc, r, [&](const Pixels32& px) { gradients::linear(px, c, c, {}); },
                               alpha::Opacity(opacity));
    return editBands(dc, r, [&](const Pixels32& px) { alpha::fill(px, c, opacity); });
}

bool drawAlphaGradient(HDC dc, const RECT& r, COLORREF start, COLORREF end, int startOpacity, int endOpacity,
                       gradients::Direction d) {
    if (!dc || empty(r)) return false;
    const colour::Rgb s = fromColorRef(start), e = fromColorRef(end);
    if (!readableDc(dc))
        return blendUnreadable(dc, r, [&](const Pixels32& px) { gradients::linear(px, s, e, d); },
                               alpha::Opacity(startOpacity, endOpacity, d, width(r), height(r)));
    return editBands(dc, r, [&](const Pixels32& px) {
        alpha::fillGraded(px, s, e, startOpacity, endOpacity, d);
    });
}

}  // namespace tova
