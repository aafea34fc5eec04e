#include "api_draw.h"

#include "../graphics/gdi_draw.h"

#include <vector>

namespace tova {

// Without a device context the platform's answers are not to be trusted (some
// runtimes report success or measure garbage): both routines report failure.
long drawEdge(HDC dc, RECT& edges, long edgeStyle, long edgeMode) {
    if (!dc) return 0;
    return ::DrawEdge(dc, &edges, static_cast<UINT>(edgeStyle), static_cast<UINT>(edgeMode) & 0xFFFFu);
}

long drawText(HDC dc, std::wstring& text, RECT& edges, long format) {
    if (!dc) return 0;
    const UINT flags = static_cast<UINT>(format);
    // The platform may write up to four characters more when it shortens the text.
    std::vector<wchar_t> buffer(text.begin(), text.end());
    buffer.resize(text.size() + 5, L'\0');
    int n = ::DrawTextW(dc, buffer.data(), static_cast<int>(text.size()), &edges, flags);
    if (flags & DT_MODIFYSTRING) text.assign(buffer.data());
    return n;
}

bool drawGradient(HDC dc, const RECT& r, long start, long end, bool vertical) {
    const long from = translateColor(start), to = translateColor(end);
    if (from == -1 || to == -1) raise(kInvalidArgument);
    if (!dc) return false;
    const long length = vertical ? r.bottom - r.top : r.right - r.left;
    if (length <= 0 || (vertical ? r.right <= r.left : r.bottom <= r.top)) return false;

    // Channel value at step i of length - 1, rounded to nearest.
    auto mix = [&](long i) -> COLORREF {
        if (length == 1) return static_cast<COLORREF>(from);
        const long den = length - 1;
        COLORREF c = 0;
        for (int shift = 0; shift <= 16; shift += 8) {
            long a = (from >> shift) & 0xFF, b = (to >> shift) & 0xFF;
            long num = (b - a) * i;
            long step = num >= 0 ? (2 * num + den) / (2 * den) : -((-2 * num + den) / (2 * den));
            c |= static_cast<COLORREF>(a + step) << shift;
        }
        return c;
    };

    // One brush per band of equal colour.
    long bandStart = 0;
    COLORREF bandColor = mix(0);
    for (long i = 1; i <= length; ++i) {
        COLORREF c = i < length ? mix(i) : ~bandColor;
        if (c == bandColor) continue;
        RECT band = vertical ? RECT{r.left, r.top + bandStart, r.right, r.top + i}
                             : RECT{r.left + bandStart, r.top, r.left + i, r.bottom};
        Brush brush(CreateSolidBrush(bandColor));
        if (!brush || !FillRect(dc, &band, brush.get())) return false;
        bandStart = i;
        bandColor = c;
    }
    return true;
}

}  // namespace tova
