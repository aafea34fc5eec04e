// Finding windows (by exact title and class, by patterns, as lists of
// children or top-level windows) and sending or posting them messages, with a
// time limit where the caller asks for one.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tova::finding {

// "" means any title or class.
HWND find(HWND parent, HWND after, const std::wstring& title, const std::wstring& className, bool topLevel);
// Patterns of IsLike, case-insensitive; a parent of 0 searches top-level windows.
HWND findLike(const std::wstring& titlePattern, const std::wstring& classPattern, HWND parent);
bool children(HWND parent, const std::wstring& className, bool recursive, std::vector<HWND>& out);
std::vector<HWND> topLevel(DWORD processId, bool visibleOnly);

// Timeout 0: wait as long as it takes. A negative timeout raises 5.
LRESULT send(HWND wnd, UINT message, WPARAM w, LPARAM l, long timeout);
bool post(HWND wnd, UINT message, WPARAM w, LPARAM l);

}  // namespace tova::finding
