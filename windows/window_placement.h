// Where windows are and how they show: rectangles, moving and sizing, the
// restored rectangle, centring, topmost, flashing, show state, opacity.
// Every function checks its window first: no window gives false (or -1) with
// LastDllError 1400, and the caller's outputs stay as they were.
#pragma once

#include <windows.h>

namespace tova::placement {

// False (1400) for a handle that is no window.
bool isWindow(HWND wnd);
// The same, allowing none: an owner given as 0.
inline bool isWindowOrNone(HWND wnd) { return !wnd || isWindow(wnd); }

bool windowRect(HWND wnd, bool relativeToParent, RECT& out);
bool clientRect(HWND wnd, bool onScreen, RECT& out);
bool move(HWND wnd, const RECT& r, bool repaint);
bool setPosition(HWND wnd, long left, long top);
bool setSize(HWND wnd, long width, long height);

// The restored rectangle: Windows keeps a top-level window's in workspace
// coordinates (the work area's origin is 0, 0), callers see screen ones.
// `workOffset` is the work area's origin on the screen.
RECT workspaceToScreen(RECT r, POINT workOffset);
RECT screenToWorkspace(RECT r, POINT workOffset);
bool restoredRect(HWND wnd, RECT& out);
bool setRestoredRect(HWND wnd, const RECT& r);

bool centreOnScreen(HWND wnd);
bool centreOnOwner(HWND wnd, HWND owner);
// Where a rectangle of that size centred on `around` goes, moved inside
// `area` when it fits there.
POINT centredInside(const RECT& around, long width, long height, const RECT& area);

bool setTopmost(HWND wnd, bool onTop);
bool isTopmost(HWND wnd);
bool flash(HWND wnd, long flags, long count, long interval);
long showState(HWND wnd);
bool setShowState(HWND wnd, long showCmd);
bool setOpacity(HWND wnd, BYTE opacity);
long opacity(HWND wnd);
bool screenToClient(HWND wnd, POINT& p);
bool clientToScreen(HWND wnd, POINT& p);

// The work area of the monitor nearest a window (the primary one for none).
bool workArea(HWND wnd, RECT& out);

}  // namespace tova::placement
