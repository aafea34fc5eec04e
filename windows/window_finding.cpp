#include "window_finding.h"

#include "last_error.h"
#include "window_identity.h"
#include "window_placement.h"
#include "../frame/errors.h"
#include "../text/wildcard.h"

namespace tova::finding {

namespace {

const wchar_t* orNull(const std::wstring& s) { return s.empty() ? nullptr : s.c_str(); }

struct Collect {
    std::vector<HWND>* out;
    DWORD processId;
    bool visibleOnly;
};

BOOL CALLBACK collect(HWND wnd, LPARAM p) {
    Collect& c = *reinterpret_cast<Collect*>(p);
    if (c.processId) {
        DWORD pid = 0;
        GetWindowThreadProcessId(wnd, &pid);
        if (pid != c.processId) return TRUE;
    }
    if (c.visibleOnly && !IsWindowVisible(wnd)) return TRUE;
    c.out->push_back(wnd);
    return TRUE;
}

bool sameName(const std::wstring& a, const std::wstring& b) {
    return CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(), static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace

HWND find(HWND parent, HWND after, const std::wstring& title, const std::wstring& className, bool topLevel) {
    if ((parent && !placement::isWindow(parent)) || (after && !placement::isWindow(after))) return nullptr;
    HWND found = topLevel ? FindWindowW(orNull(className), orNull(title))
                          : FindWindowExW(parent, after, orNull(className), orNull(title));
    if (!found) lastError::failed(ERROR_FILE_NOT_FOUND);
    return found;
}

HWND findLike(const std::wstring& titlePattern, const std::wstring& classPattern, HWND parent) {
    // Both patterns are checked before any window is looked at: a bad one raises 93.
    const WildcardPattern title(titlePattern.data(), titlePattern.size(), true);
    const WildcardPattern cls(classPattern.data(), classPattern.size(), true);
    std::vector<HWND> candidates;
    if (parent) {
        if (!children(parent, L"", true, candidates)) return nullptr;
    } else {
        candidates = topLevel(0, false);
    }
    for (HWND w : candidates) {
        const std::wstring c = identity::className(w);
        if (!cls.matches(c.data(), c.size())) continue;
        const std::wstring t = identity::text(w);
        if (title.matches(t.data(), t.size())) {
            lastError::clear();
            return w;
        }
    }
    lastError::set(ERROR_FILE_NOT_FOUND);
    return nullptr;
}

bool children(HWND parent, const std::wstring& className, bool recursive, std::vector<HWND>& out) {
    if (!placement::isWindow(parent)) return false;
    std::vector<HWND> all;
    if (recursive) {
        Collect c{&all, 0, false};
        EnumChildWindows(parent, collect, reinterpret_cast<LPARAM>(&c));
    } else {
        for (HWND w = GetWindow(parent, GW_CHILD); w; w = GetWindow(w, GW_HWNDNEXT)) all.push_back(w);
    }
    for (HWND w : all)
        if (className.empty() || sameName(identity::className(w), className)) out.push_back(w);
    return true;
}

std::vector<HWND> topLevel(DWORD processId, bool visibleOnly) {
    std::vector<HWND> out;
    Collect c{&out, processId, visibleOnly};
    EnumWindows(collect, reinterpret_cast<LPARAM>(&c));
    return out;
}

LRESULT send(HWND wnd, UINT message, WPARAM w, LPARAM l, long timeout) {
    if (timeout < 0) raise(kInvalidArgument);
    if (!placement::isWindow(wnd)) return 0;
    if (timeout == 0) return SendMessageW(wnd, message, w, l);
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(wnd, message, w, l, SMTO_NORMAL, static_cast<UINT>(timeout), &result)) {
        lastError::failed(ERROR_TIMEOUT);
        return 0;
    }
    return static_cast<LRESULT>(result);
}

bool post(HWND wnd, UINT message, WPARAM w, LPARAM l) {
    if (wnd && !placement::isWindow(wnd)) return false;
    return PostMessageW(wnd, message, w, l) ? true : lastError::failed();
}

}  // namespace tova::finding
