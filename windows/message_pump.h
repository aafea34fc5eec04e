// Message pumping for hosts without a DoEvents of their own: the thread's
// waiting messages dispatched now, or for a time, so that timers and windows
// of the thread keep working while a script waits. A WM_QUIT ends either and
// is posted again, so that the host's own loop still sees it.
#pragma once

#include <windows.h>

namespace tova::pump {

// Dispatches what waits now, at most 10,000 messages; returns how many.
long doEvents();
// Waits `milliseconds` while dispatching; false when a WM_QUIT ended the wait.
bool waitWithEvents(long milliseconds);

// How a wait for an object ended.
enum class Wait { signalled, timedOut, quit, failed };
// Waits up to `milliseconds` (INFINITE: no limit) for `object` to be
// signalled, dispatching the thread's messages meanwhile when `dispatching`.
// Without dispatching it is a plain wait (quit never ends it).
Wait waitFor(HANDLE object, DWORD milliseconds, bool dispatching);

}  // namespace tova::pump
