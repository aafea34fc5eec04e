// Keyboard state, the pointer's position and the clipboard's text. The
// clipboard is shared by every program: a busy one is retried for a short,
// bounded time instead of failing at the first refusal.
#pragma once

#include <windows.h>

#include <string>

namespace tova {

namespace input {

// Virtual-key codes outside 1 ... 254 raise 5.
bool isKeyDown(long virtualKey);
bool isKeyToggled(long virtualKey);
bool setKeyToggle(long virtualKey, bool on);
long shiftState();
// Screen coordinates, or client coordinates of `wnd` when it is not 0; false
// (1400) for a handle that is no window.
bool cursorPosition(HWND wnd, POINT& out);
bool setCursorPosition(HWND wnd, POINT at);

}  // namespace input

namespace clipboard {

std::wstring text();
bool setText(const std::wstring& text);
bool clear();

}  // namespace clipboard

}  // namespace tova
