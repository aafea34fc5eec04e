#include "taskbar.h"

#include "last_error.h"

#include <atomic>

namespace tova::taskbar {

namespace {

std::atomic<AppBarQuery> current{&SHAppBarMessage};

bool position(APPBARDATA& bar) {
    bar = {};
    bar.cbSize = sizeof bar;
    if (current.load()(ABM_GETTASKBARPOS, &bar)) return true;
    lastError::set(ERROR_NOT_FOUND);
    return false;
}

}  // namespace

AppBarQuery replaceQuery(AppBarQuery query) { return current.exchange(query ? query : &SHAppBarMessage); }

bool rect(RECT& out) {
    APPBARDATA bar;
    if (!position(bar)) return false;
    out = bar.rc;
    return true;
}

long edge() {
    APPBARDATA bar;
    return position(bar) ? static_cast<long>(bar.uEdge) : -1;
}

bool autoHide() {
    APPBARDATA bar = {};
    bar.cbSize = sizeof bar;
    return (current.load()(ABM_GETSTATE, &bar) & ABS_AUTOHIDE) != 0;
}

}  // namespace tova::taskbar
