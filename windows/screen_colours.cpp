#include "screen_colours.h"

#include "last_error.h"
#include "window_placement.h"
#include "../frame/errors.h"
#include "../frame/values.h"

#include <ole2.h>
#include <olectl.h>

#include <cmath>
#include <cwctype>

namespace tova {

namespace screen {

long metric(long index) { return GetSystemMetrics(index); }

RECT virtualScreen() {
    const long left = GetSystemMetrics(SM_XVIRTUALSCREEN), top = GetSystemMetrics(SM_YVIRTUALSCREEN);
    return RECT{left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN), top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
}

bool monitorRect(HWND wnd, RECT& out) {
    if (wnd && !placement::isWindow(wnd)) return false;
    HMONITOR m = wnd ? MonitorFromWindow(wnd, MONITOR_DEFAULTTONEAREST) : MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY);
    MONITORINFO info = {};
    info.cbSize = sizeof info;
    if (!m || !GetMonitorInfoW(m, &info)) return lastError::failed();
    out = info.rcMonitor;
    return true;
}

long dpi(bool vertical, HDC dc) {
    if (dc) return GetDeviceCaps(dc, vertical ? LOGPIXELSY : LOGPIXELSX);
    WindowDc screen(nullptr);
    if (!screen.get()) return lastError::failed(), 0;
    return GetDeviceCaps(screen.get(), vertical ? LOGPIXELSY : LOGPIXELSX);
}

long colorDepth() {
    WindowDc screen(nullptr);
    if (!screen.get()) return lastError::failed(), 0;
    return GetDeviceCaps(screen.get(), BITSPIXEL) * GetDeviceCaps(screen.get(), PLANES);
}

long pointsToPixels(double points, bool vertical, HDC dc) {
    const long d = dpi(vertical, dc);
    if (d <= 0) return lastError::set(ERROR_INVALID_HANDLE), 0;
    const double pixels = std::round(points * d / 72.0);   // half away from zero
    if (!(std::fabs(pixels) < 2147483647.0)) raise(kOverflow);
    return static_cast<long>(pixels);
}

}  // namespace screen

namespace colours {

long translate(long color, HPALETTE palette) {
    COLORREF rgb = 0;
    const HRESULT hr = OleTranslateColor(static_cast<OLE_COLOR>(color), palette, &rgb);
    if (FAILED(hr)) return lastError::set(hr), -1;
    return static_cast<long>(rgb);
}

long make(long red, long green, long blue) {
    if (red < 0 || green < 0 || blue < 0) raise(kInvalidArgument);
    auto channel = [](long v) { return v > 255 ? 255L : v; };
    return channel(red) | (channel(green) << 8) | (channel(blue) << 16);
}

long blend(long color1, long color2, double ratio) {
    if (!(ratio >= 0.0 && ratio <= 1.0)) raise(kInvalidArgument);
    const long a = translate(color1), b = translate(color2);
    if (a < 0 || b < 0) return -1;
    long out = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const long ca = (a >> shift) & 0xFF, cb = (b >> shift) & 0xFF;
        out |= static_cast<long>(std::round(ca + (cb - ca) * ratio)) << shift;
    }
    return out;
}

long systemColour(long index) {
    const long i = (static_cast<unsigned long>(index) & 0xFFFFFF00u) == 0x80000000u ? (index & 0xFF) : index;
    // The brush tells whether the system has the colour at all.
    if (i < 0 || i > 0xFF || !GetSysColorBrush(i)) return lastError::set(ERROR_INVALID_INDEX), -1;
    return static_cast<long>(GetSysColor(i));
}

std::wstring toHtml(long color) {
    const long rgb = translate(color);
    if (rgb < 0) return {};
    wchar_t text[8];
    swprintf(text, 8, L"#%02X%02X%02X", static_cast<unsigned>(rgb & 0xFF), static_cast<unsigned>((rgb >> 8) & 0xFF),
             static_cast<unsigned>((rgb >> 16) & 0xFF));
    return text;
}

long fromHtml(const std::wstring& text) {
    if ((text.size() != 7 && text.size() != 4) || text[0] != L'#') return lastError::set(ERROR_INVALID_DATA), -1;
    long digits[6];
    for (size_t i = 1; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (!std::iswxdigit(c) || c > 0x7F) return lastError::set(ERROR_INVALID_DATA), -1;
        digits[i - 1] = c <= L'9' ? c - L'0' : (std::towlower(c) - L'a' + 10);
    }
    long r, g, b;
    if (text.size() == 4) {
        r = digits[0] * 17, g = digits[1] * 17, b = digits[2] * 17;
    } else {
        r = digits[0] * 16 + digits[1], g = digits[2] * 16 + digits[3], b = digits[4] * 16 + digits[5];
    }
    return r | (g << 8) | (b << 16);
}

}  // namespace colours

}  // namespace tova
