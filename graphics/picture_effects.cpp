#include "picture_effects.h"

#include "alpha_fill.h"
#include "colourise.h"
#include "work_area.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace tova {

using gradients::Pixels32;

namespace {

// A layer placed at (dx, dy) of the composed area, blended at `opacity`.
struct Placed {
    const Surface32* layer;
    int dx, dy;
    alpha::Opacity opacity;
};

// Blends the layers in order over the w x h area of dc at (x, y).
bool compose(HDC dc, long x, long y, int w, int h, const std::vector<Placed>& layers) {
    if (readableDc(dc)) {
        return editArea(dc, x, y, w, h, [&](const Pixels32& px) {
            for (const Placed& p : layers) {
                const Pixels32 l = p.layer->pixels();
                const Pixels32 target{px.row(p.dy) + p.dx, px.stride, l.width, l.height};
                alpha::composite(target, l, p.opacity);
            }
        });
    }
    // Printers and metafiles: each layer scaled by its opacity, through AlphaBlend.
    for (const Placed& p : layers) {
        const Pixels32 l = p.layer->pixels();
        for (int j = 0; j < l.height; ++j)
            for (int i = 0; i < l.width; ++i) {
                uint32_t& v = l.row(j)[i];
                const int o = p.opacity.at(i, j);
                if (o == 255) continue;
                uint32_t out = 0;
                for (int shift = 0; shift < 32; shift += 8) out |= ((((v >> shift) & 0xFF) * o + 127) / 255) << shift;
                v = out;
            }
        if (!platformBlend(dc, x + p.dx, y + p.dy, *p.layer)) return false;
    }
    return true;
}

// The picture read, the request resolved and the picture rasterised.
struct Prepared {
    PictureFacts facts;
    PaintRequest request;
    std::unique_ptr<Surface32> layer;
};

PaintFailure prepare(IPictureDisp* picture, const PaintRequest& request, bool alphaChannel, Prepared& p) {
    if (!readPicture(picture, p.facts)) return PaintFailure::BadPicture;
    p.request = request;
    PaintFailure f = resolve(p.facts, p.request);
    if (f != PaintFailure::None) return f;
    if (!p.request.dc) return PaintFailure::Platform;
    p.layer.reset(new Surface32(p.request.width, p.request.height));
    return rasterise(p.facts, p.request, alphaChannel, *p.layer) ? PaintFailure::None : PaintFailure::Platform;
}

PaintFailure result(bool ok) { return ok ? PaintFailure::None : PaintFailure::Platform; }

// The layer's colours, un-premultiplied, changed by `change`, premultiplied again.
template <class F>
void recolour(const Surface32& layer, F&& change) {
    const Pixels32 px = layer.pixels();
    auto each = [&](auto f) {
        for (int y = 0; y < px.height; ++y)
            for (uint32_t *p = px.row(y), *e = p + px.width; p < e; ++p) f(*p);
    };
    each([](uint32_t& v) {
        const uint32_t a = v >> 24;
        if (a == 0 || a == 255) return;
        uint32_t out = a << 24;
        for (int s = 0; s < 24; s += 8) out |= std::min<uint32_t>(255, (((v >> s) & 0xFF) * 255 + a / 2) / a) << s;
        v = out;
    });
    change(colourise::PixelRows{reinterpret_cast<uint8_t*>(px.top), px.stride * 4, px.width, px.height, 4});
    each([](uint32_t& v) {
        const uint32_t a = v >> 24;
        if (a == 255) return;
        uint32_t out = a << 24;
        for (int s = 0; s < 24; s += 8) out |= ((((v >> s) & 0xFF) * a + 127) / 255) << s;
        v = out;
    });
}

// Every covered pixel of `from` becomes `c`, opaque, at (dx, dy) in `to`.
void silhouette(const Surface32& from, Surface32& to, colour::Rgb c, int dx, int dy, bool inkOnly) {
    to.clear();
    const Pixels32 s = from.pixels(), t = to.pixels();
    const uint32_t ink = colour::toPixel(c, 255);
    for (int y = 0; y < s.height; ++y)
        for (int x = 0; x < s.width; ++x) {
            const uint32_t v = s.row(y)[x];
            const uint32_t a = v >> 24;
            if (!a || (inkOnly && v == 0xFFFFFFFFu)) continue;
            const int tx = x + dx, ty = y + dy;
            if (tx >= 0 && ty >= 0 && tx < t.width && ty < t.height) t.row(ty)[tx] = inkOnly ? ink : colour::toPixel(
                colour::Rgb{int(c.r * a / 255), int(c.g * a / 255), int(c.b * a / 255)}, a);
        }
}

}  // namespace

PaintFailure paintMasked(IPictureDisp* picture, IPictureDisp* mask, const PaintRequest& request) {
    PictureFacts m;
    if (!readPicture(mask, m)) return PaintFailure::BadPicture;
    Prepared p;
    PaintFailure f = prepare(picture, request, false, p);
    if (f == PaintFailure::None &&
        (m.width < p.request.srcX + p.request.srcWidth || m.height < p.request.srcY + p.request.srcHeight))
        return PaintFailure::BadArgument;
    if (f != PaintFailure::None) return f;
    PaintRequest plain = p.request;
    plain.transparent = false;
    Surface32 maskLayer(p.layer->width(), p.layer->height());
    if (!rasterise(m, plain, false, maskLayer)) return PaintFailure::Platform;
    const Pixels32 px = p.layer->pixels(), mk = maskLayer.pixels();
    for (int y = 0; y < px.height; ++y)
        for (int x = 0; x < px.width; ++x) {
            const colour::Rgb c = colour::fromPixel(mk.row(y)[x]);
            if (colour::luminance(c.r, c.g, c.b) >= 128) px.row(y)[x] = 0;
        }
    const PaintRequest& r = p.request;
    return result(composeLayer(r.dc, r.x, r.y, *p.layer));
}

PaintFailure paintDisabled(IPictureDisp* picture, const PaintRequest& request, int lighten) {
    Prepared p;
    PaintFailure f = prepare(picture, request, false, p);
    if (f != PaintFailure::None) return f;
    recolour(*p.layer, [&](const colourise::PixelRows& rows) { colourise::disable(rows, lighten); });
    const PaintRequest& r = p.request;
    return result(composeLayer(r.dc, r.x, r.y, *p.layer));
}

PaintFailure paintEmbossed(IPictureDisp* picture, const PaintRequest& request, COLORREF highlight,
                           COLORREF shadow) {
    Prepared p;
    PaintFailure f = prepare(picture, request, false, p);
    if (f != PaintFailure::None) return f;
    const PaintRequest& r = p.request;
    // One pixel more each way for the highlight below and right of the ink.
    Surface32 light(r.width + 1, r.height + 1), dark(r.width, r.height);
    if (!light.ok() || !dark.ok()) return PaintFailure::Platform;
    silhouette(*p.layer, light, colour::fromColorRef(highlight), 1, 1, true);
    silhouette(*p.layer, dark, colour::fromColorRef(shadow), 0, 0, true);
    return result(compose(r.dc, r.x, r.y, r.width + 1, r.height + 1,
                          {{&light, 0, 0, alpha::Opacity(255)}, {&dark, 0, 0, alpha::Opacity(255)}}));
}

PaintFailure paintShadowed(IPictureDisp* picture, const PaintRequest& request, COLORREF shadow, long offsetX,
                           long offsetY, int opacity) {
    Prepared p;
    PaintFailure f = prepare(picture, request, false, p);
    if (f != PaintFailure::None) return f;
    const PaintRequest& r = p.request;
    if (offsetX < -r.width || offsetX > r.width || offsetY < -r.height || offsetY > r.height) {
        // Apart from the picture: each in an area of its own.
        Surface32 s(r.width, r.height);
        if (!s.ok()) return PaintFailure::Platform;
        silhouette(*p.layer, s, colour::fromColorRef(shadow), 0, 0, false);
        return result(compose(r.dc, r.x + offsetX, r.y + offsetY, r.width, r.height,
                              {{&s, 0, 0, alpha::Opacity(opacity)}}) &&
                      composeLayer(r.dc, r.x, r.y, *p.layer));
    }
    // The area covering both: the picture at (px, py), its shadow moved by the offsets.
    const int left = static_cast<int>(std::min(0L, offsetX)), top = static_cast<int>(std::min(0L, offsetY));
    const int w = r.width + static_cast<int>(std::labs(offsetX)), h = r.height + static_cast<int>(std::labs(offsetY));
    Surface32 s(r.width, r.height);
    if (!s.ok()) return PaintFailure::Platform;
    silhouette(*p.layer, s, colour::fromColorRef(shadow), 0, 0, false);
    return result(compose(r.dc, r.x + left, r.y + top, w, h,
                          {{&s, static_cast<int>(offsetX) - left, static_cast<int>(offsetY) - top,
                            alpha::Opacity(opacity)},
                           {p.layer.get(), -left, -top, alpha::Opacity(255)}}));
}

PaintFailure paintAlpha(IPictureDisp* picture, const PaintRequest& request, int opacity, bool alphaChannel) {
    Prepared p;
    PaintFailure f = prepare(picture, request, alphaChannel, p);
    if (f != PaintFailure::None) return f;
    const PaintRequest& r = p.request;
    return result(compose(r.dc, r.x, r.y, r.width, r.height, {{p.layer.get(), 0, 0, alpha::Opacity(opacity)}}));
}

PaintFailure paintAlphaGradient(IPictureDisp* picture, const PaintRequest& request, int startOpacity,
                                int endOpacity, gradients::Direction direction) {
    Prepared p;
    PaintFailure f = prepare(picture, request, false, p);
    if (f != PaintFailure::None) return f;
    const PaintRequest& r = p.request;
    alpha::Opacity o(startOpacity, endOpacity, direction, r.width, r.height);
    return result(compose(r.dc, r.x, r.y, r.width, r.height, {{p.layer.get(), 0, 0, o}}));
}

PaintFailure paintColourised(IPictureDisp* picture, const PaintRequest& request, COLORREF color, int amount) {
    Prepared p;
    PaintFailure f = prepare(picture, request, false, p);
    if (f != PaintFailure::None) return f;
    recolour(*p.layer, [&](const colourise::PixelRows& rows) {
        colourise::colourise(rows, colour::fromColorRef(color), amount);
    });
    const PaintRequest& r = p.request;
    return result(composeLayer(r.dc, r.x, r.y, *p.layer));
}

bool composeLayer(HDC dc, long x, long y, Surface32& layer) {
    return compose(dc, x, y, layer.width(), layer.height(), {{&layer, 0, 0, alpha::Opacity(255)}});
}

bool paintIconDisabled(HDC dc, HICON icon, long x, long y, long w, long h) {
    Surface32 layer(w, h);
    if (!dc || !rasteriseDrawing([&](HDC to) { return DrawIconEx(to, 0, 0, icon, w, h, 0, nullptr, DI_NORMAL) != 0; },
                                 layer))
        return false;
    recolour(layer, [](const colourise::PixelRows& rows) { colourise::disable(rows, 128); });
    return compose(dc, x, y, w, h, {{&layer, 0, 0, alpha::Opacity(255)}});
}

}  // namespace tova
