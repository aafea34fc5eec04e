#include "message_pump.h"

#include "environment_timing.h"

#include <windows.h>

#include <cmath>

namespace tova::pump {

namespace {

// Dispatches up to `limit` messages; false when it met a WM_QUIT.
bool dispatch(long limit, long& count) {
    MSG m;
    while (count < limit && PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
        if (m.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(m.wParam));
            return false;
        }
        TranslateMessage(&m);
        DispatchMessageW(&m);
        ++count;
    }
    return true;
}

}  // namespace

long doEvents() {
    long count = 0;
    dispatch(10000, count);
    return count;
}

bool waitWithEvents(long milliseconds) {
    const double end = timing::milliseconds() + (milliseconds > 0 ? milliseconds : 0);
    for (;;) {
        // A bounded batch, so that a window flooding its own queue cannot
        // hold the wait beyond its time.
        long count = 0;
        if (!dispatch(10000, count)) return false;
        const double left = end - timing::milliseconds();
        if (left <= 0) return true;
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(std::ceil(left)), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

}  // namespace tova::pump
