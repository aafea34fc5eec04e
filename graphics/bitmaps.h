// What the graphics classes share: pictures made from bitmaps, device-dependent
// copies of a surface, and the address-sized Long of the type library.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {

// The C++ type of LONG_PTR_T in the type library (an address as a Long).
#ifdef _WIN64
using PtrLong = hyper;
#else
using PtrLong = LONG;
#endif

// Hands `bitmap` to a new picture that owns it. On failure the bitmap is
// deleted and the result is empty.
ComPtr<IPictureDisp> pictureOf(HBITMAP bitmap);

// A bitmap compatible with `format` (the screen when it is null) holding a
// copy of the width x height pixels of `dc` at (0, 0); nullptr on failure. A
// DC with a DIB section selected would make the copy a DIB section too.
HBITMAP compatibleCopy(HDC dc, int width, int height, HDC format);

// The system's message text for an error code, without the trailing line break.
std::wstring systemMessage(DWORD code);

// Owner of a DC handed out by GetDC.
using ScreenDc = WindowDc;

}  // namespace tova
