// The screen as the caller's process sees it (monitors, DPI, depth) and
// colours: OLE colours translated, split, made, blended and written as HTML.
#pragma once

#include <windows.h>

#include <string>

namespace tova {

namespace screen {

long metric(long index);
RECT virtualScreen();
// The monitor nearest a window, the primary one for none; false (1400) for a
// handle that is no window.
bool monitorRect(HWND wnd, RECT& out);
long dpi(bool vertical, HDC dc = nullptr);   // the screen's for no DC; 0 when it has none
long colorDepth();
long pointsToPixels(double points, bool vertical, HDC dc);

}  // namespace screen

namespace colours {

// RGB of an OLE colour; -1 for no colour.
long translate(long color, HPALETTE palette = nullptr);
long make(long red, long green, long blue);   // error 5 for a negative channel
long blend(long color1, long color2, double ratio);
long systemColour(long index);
std::wstring toHtml(long color);
long fromHtml(const std::wstring& text);

}  // namespace colours

}  // namespace tova
