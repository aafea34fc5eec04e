// Edges, text and gradients: the drawing work behind APIMethods.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {

// Win32 DrawEdge; BF_MONO arrives sign-extended and is masked to the 16 bits
// the platform knows. With BF_ADJUST `edges` is shrunk. Returns the platform's
// result, 0 without a device context.
long drawEdge(HDC dc, RECT& edges, long edgeStyle, long edgeMode);

// Win32 DrawText. With DT_CALCRECT `edges` is measured, with DT_MODIFYSTRING
// `text` receives the shortened string. Returns the text height, 0 on failure
// or without a device context (then nothing changes).
long drawText(HDC dc, std::wstring& text, RECT& edges, long format);

// Fills `edges` with a linear gradient from `start` to `end` (OLE_COLORs),
// left to right or top to bottom. False when the device context is 0, the
// rectangle is empty or the platform fails; raises 5 for a colour that is not one.
bool drawGradient(HDC dc, const RECT& edges, long start, long end, bool vertical);

}  // namespace tova
