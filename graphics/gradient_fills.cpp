#include "gradient_fills.h"

#include "alpha_fill.h"
#include "work_area.h"

namespace tova {

using colour::fromColorRef;
using gradients::Pixels32;

namespace {

bool empty(const RECT& r) { return r.right <= r.left || r.bottom <= r.top; }
int width(const RECT& r) { return r.right - r.left; }
int height(const RECT& r) { return r.bottom - r.top; }

// Opaque pixels need no reading: computed in the work bitmap, copied out.
template <class F>
bool paintOpaque(HDC dc, const RECT& r, F&& fill) {
    if (!dc || empty(r)) return false;
    Surface32 s(width(r), height(r));
    if (!s.ok()) return false;
    fill(s.pixels());
    return writeSurface(dc, r.left, r.top, s);
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
    return paintOpaque(dc, r, [&](const Pixels32& px) {
        gradients::linear(px, fromColorRef(start), fromColorRef(end), d);
    });
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
    return editArea(dc, r.left, r.top, width(r), height(r),
                    [&](const Pixels32& px) { alpha::fill(px, c, opacity); });
}

bool drawAlphaGradient(HDC dc, const RECT& r, COLORREF start, COLORREF end, int startOpacity, int endOpacity,
                       gradients::Direction d) {
    if (!dc || empty(r)) return false;
    const colour::Rgb s = fromColorRef(start), e = fromColorRef(end);
    if (!readableDc(dc))
        return blendUnreadable(dc, r, [&](const Pixels32& px) { gradients::linear(px, s, e, d); },
                               alpha::Opacity(startOpacity, endOpacity, d, width(r), height(r)));
    return editArea(dc, r.left, r.top, width(r), height(r), [&](const Pixels32& px) {
        alpha::fillGraded(px, s, e, startOpacity, endOpacity, d);
    });
}

}  // namespace tova
