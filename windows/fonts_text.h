// Fonts for hosts that have no font API: StdFont objects made from names,
// GDI fonts and system fonts, the installed families, and text measured
// exactly as DrawText draws it (tabs expanded, & shown as itself).
#pragma once

#include "../frame/values.h"

#include <ocidl.h>
#include <olectl.h>

#include <string>
#include <vector>

namespace tova::fonts {

// Pixels per logical inch of the screen's height; 96 without a screen.
long screenDpi();

// Width of the widest line, or height of all lines, of `text` in `font` (the
// system's message font for none); 0 for "".
long measure(const std::wstring& text, IFont* font, bool height);
long measure(HDC dc, const std::wstring& text, bool height);

// Installed families of a character set (DEFAULT_CHARSET: all), each once,
// sorted, without the vertical "@" forms.
std::vector<std::wstring> familyNames(bool fixedPitchOnly, long charset);
bool exists(const std::wstring& family);

// A new GDI font like `font`, sized for `dc` (the screen for none); the caller deletes it.
HFONT createHandle(IFont* font, HDC dc);
ComPtr<IFontDisp> create(const std::wstring& face, double points, bool bold, bool italic, bool underline,
                         bool strikethrough);
ComPtr<IFontDisp> fromHandle(HFONT font);
// Caption 0, small caption 1, menu 2, status 3, message 4, icon titles 5; raises 5 for another.
ComPtr<IFontDisp> systemFont(long which);
bool deleteObject(HGDIOBJ object);

}  // namespace tova::fonts
