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
    return waitFor(nullptr, milliseconds > 0 ? static_cast<DWORD>(milliseconds) : 0, true) != Wait::quit;
}

Wait waitFor(HANDLE object, DWORD milliseconds, bool dispatching) {
    const DWORD handles = object ? 1 : 0;
    if (!dispatching) {
        switch (WaitForSingleObject(object, milliseconds)) {
        case WAIT_OBJECT_0: return Wait::signalled;
        case WAIT_TIMEOUT: return Wait::timedOut;
        default: return Wait::failed;
        }
    }
    const bool forever = milliseconds == INFINITE;
    const double end = timing::milliseconds() + (forever ? 0 : milliseconds);
    for (;;) {
        // A bounded batch, so that a window flooding its own queue cannot
        // hold the wait beyond its time.
        long count = 0;
        if (!dispatch(10000, count)) return Wait::quit;
        if (object && WaitForSingleObject(object, 0) == WAIT_OBJECT_0) return Wait::signalled;
        const double left = forever ? 0 : end - timing::milliseconds();
        if (!forever && left <= 0) return object ? Wait::timedOut : Wait::signalled;
        const DWORD r = MsgWaitForMultipleObjectsEx(handles, object ? &object : nullptr,
                                                    forever ? INFINITE : static_cast<DWORD>(std::ceil(left)),
                                                    QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (r == WAIT_FAILED) return Wait::failed;
        if (object && r == WAIT_OBJECT_0) return Wait::signalled;
    }
}

}  // namespace tova::pump
