// What a window is: its text and class, its family (parent, owner), process
// and thread, styles, and the foreground. Texts of other processes' windows
// are asked for with a time limit, so a hung window cannot hang the caller.
#pragma once

#include <windows.h>

#include <string>

namespace tova::identity {

// The text of a window of any process; "" on failure (1460 when it did not answer in time).
std::wstring text(HWND wnd);
bool setText(HWND wnd, const std::wstring& text);
std::wstring className(HWND wnd);
HWND parent(HWND wnd);   // 0 for top-level windows
HWND owner(HWND wnd);
bool setParent(HWND wnd, HWND newParent);
long styles(HWND wnd, bool extended);
bool modifyStyles(HWND wnd, long remove, long add, bool extended);
bool bringToFront(HWND wnd);

}  // namespace tova::identity
