#include "subclass.h"

#include "subclassing.h"

#include "../frame/thread_slot.h"

#include <cstdio>

namespace tova {
namespace subclass {

namespace {

// Per-thread state: the message and previous procedure of the client call in
// progress (kept after it ends) and the catalogue, created on first use.
struct ThreadState {
    long message = 0;
    WNDPROC previous = nullptr;
    ComPtr<SubclassDatabase> catalogue;
};
ThreadSlot<ThreadState> state;

// Handles are 32-bit significant: the name uses the Long a client sees.
long handleNumber(HWND wnd) { return fromHandle(wnd); }

// Property names are built in a small buffer: the window procedure builds
// several per message and must not allocate.
struct Name {
    char text[64];
    const char* c_str() const { return text; }
};

Name windowName(long h) {
    Name n;
    std::snprintf(n.text, sizeof n.text, "%ld", h);
    return n;
}
Name windowCountName(long h) {
    Name n;
    std::snprintf(n.text, sizeof n.text, "C%ld", h);
    return n;
}
Name messageCountName(long h, long m) {
    Name n;
    std::snprintf(n.text, sizeof n.text, "%ld#%ldC", h, m);
    return n;
}
Name clientName(long h, long m, long i) {
    Name n;
    std::snprintf(n.text, sizeof n.text, "%ld#%ld#%ld", h, m, i);
    return n;
}

// Numbers and addresses are stored as the property's handle value.
LONG_PTR readProp(HWND wnd, const Name& name) {
    return reinterpret_cast<LONG_PTR>(GetPropA(wnd, name.c_str()));
}
BOOL writeProp(HWND wnd, const Name& name, LONG_PTR value) {
    return SetPropA(wnd, name.c_str(), reinterpret_cast<HANDLE>(value));
}
long readCount(HWND wnd, const Name& name) { return static_cast<long>(readProp(wnd, name)); }

// Errors of the engine carry the library's name and the procedure's.
[[noreturn]] void fail(long code) {
    static const wchar_t kSource[] = L"TOVA200.WindowProc";
    const wchar_t* text = nullptr;
    switch (code) {
    case kCantSubclass: text = L"Can't subclass window"; break;
    case kAlreadyHandled: text = L"Message already handled by another class"; break;
    case kInvalidWindow: text = L"Invalid window"; break;
    case kExternalWindow: text = L"Can't modify external window"; break;
    default: break;
    }
    raise(code, kSource, code > 1000 ? text : L"");
}

LRESULT callPrevious(WNDPROC prev, HWND wnd, UINT m, WPARAM w, LPARAM l) {
    // A window whose procedure record was removed behind the engine's back
    // still gets default processing rather than a call through null.
    if (!prev) return DefWindowProcA(wnd, m, w, l);
    return CallWindowProcA(prev, wnd, m, w, l);
}

// Calls one client, holding exactly one reference for the call. A client that
// fails its calls is not guarded: its result counts as 0 and dispatch goes on.
LRESULT CALLBACK engineProc(HWND wnd, UINT msg, WPARAM wParam, LPARAM lParam) {
    const long h = handleNumber(wnd);
    const long m = static_cast<long>(msg);
    WNDPROC prev = reinterpret_cast<WNDPROC>(readProp(wnd, windowName(h)));
    const long n = readCount(wnd, messageCountName(h, m));
    if (n < 1) return callPrevious(prev, wnd, msg, wParam, lParam);

    LRESULT result = 0;
    bool called = false;
    ThreadState& st = state.get();
    for (long i = 1; i <= n; ++i) {
        auto* p = reinterpret_cast<_ISubclass*>(readProp(wnd, clientName(h, m, i)));
        if (!p) {
            result = callPrevious(prev, wnd, msg, wParam, lParam);
            continue;
        }
        ComPtr<_ISubclass> client(p);
        st.message = m;
        st.previous = prev;
        if (i == 1) {
            MessageResponseConstants response = tovaMessageResponseConsume;
            if (SUCCEEDED(client->get_MessageResponse(&response)) &&
                response == tovaMessageResponsePreprocess && !called) {
                callPrevious(prev, wnd, msg, wParam, lParam);
                called = true;
            }
        }
        LONG_PTR value = 0;
        if (FAILED(client->WindowProc(h, m, wParam, lParam, &value))) value = 0;
        result = value;
        if (i == n) {
            MessageResponseConstants response = tovaMessageResponseConsume;
            if (SUCCEEDED(client->get_MessageResponse(&response)) &&
                response == tovaMessageResponsePostProcess && !called) {
                result = callPrevious(prev, wnd, msg, wParam, lParam);
                called = true;
            }
        }
    }
    return result;
}

}  // namespace

std::string windowKey(HWND wnd) { return windowName(handleNumber(wnd)).text; }
std::string windowCountKey(HWND wnd) { return windowCountName(handleNumber(wnd)).text; }
std::string messageCountKey(HWND wnd, long message) { return messageCountName(handleNumber(wnd), message).text; }
std::string clientKey(HWND wnd, long message, long index) {
    return clientName(handleNumber(wnd), message, index).text;
}

SubclassDatabase* catalogue() {
    ThreadState& st = state.get();
    if (!st.catalogue) st.catalogue = SubclassDatabase::make();
    return st.catalogue.get();
}

long currentMessage() {
    const ThreadState* st = state.find();
    return st ? st->message : 0;
}

LRESULT callOldWindowProc(HWND wnd, UINT message, WPARAM wParam, LPARAM lParam) {
    const ThreadState* st = state.find();
    if (!st || !st->previous) return 0;   // nothing dispatched on this thread yet
    return CallWindowProcA(st->previous, wnd, message, wParam, lParam);
}

bool isWindowLocal(HWND wnd) {
    DWORD pid = 0;
    GetWindowThreadProcessId(wnd, &pid);
    return pid == GetCurrentProcessId();
}

void attach(_ISubclass* client, HWND wnd, long message) {
    if (!IsWindow(wnd)) fail(kInvalidWindow);
    if (!isWindowLocal(wnd)) fail(kExternalWindow);
    if (!client) raise(kObjectNotSet);
    const long h = handleNumber(wnd);
    const auto address = reinterpret_cast<LONG_PTR>(client);

    const Name countName = windowCountName(h);
    const long count = readCount(wnd, countName);
    if (count != 0) {
        writeProp(wnd, countName, count + 1);
    } else {
        LONG_PTR prev = SetWindowLongPtrA(wnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&engineProc));
        if (prev == 0) fail(kCantSubclass);
        writeProp(wnd, windowName(h), prev);
        writeProp(wnd, countName, 1);
    }

    const Name clientsName = messageCountName(h, message);
    const long n = readCount(wnd, clientsName);
    for (long i = 1; i <= n; ++i)
        // Deliberately not undone: the window-wide count raised above stays
        // raised when the same client attaches twice.
        if (readProp(wnd, clientName(h, message, i)) == address) fail(kAlreadyHandled);

    writeProp(wnd, clientsName, n + 1);
    if (!writeProp(wnd, clientName(h, message, n + 1), address)) return;
    catalogue()->add(address, h, message);
}

void forget(LONG_PTR address, long h, long message) {
    SubclassDatabase* db = catalogue();
    if (SubclassRecord* r = db->find(address, h, message)) db->remove(r);
}

void detach(_ISubclass* client, HWND wnd, long message) {
    const long h = handleNumber(wnd);
    const auto address = reinterpret_cast<LONG_PTR>(client);

    const Name countName = windowCountName(h);
    const long count = readCount(wnd, countName);
    if (count == 1) {
        const Name prevName = windowName(h);
        LONG_PTR prev = readProp(wnd, prevName);
        if (prev) SetWindowLongPtrA(wnd, GWLP_WNDPROC, prev);
        RemovePropA(wnd, prevName.c_str());
        RemovePropA(wnd, countName.c_str());
    } else {
        // A window never subclassed is left holding -1: deliberate, as attach
        // then balances it.
        writeProp(wnd, countName, count - 1);
    }

    const Name clientsName = messageCountName(h, message);
    const long n = readCount(wnd, clientsName);
    if (n < 1) {
        // A destroyed window took its properties along: its record would
        // otherwise stay in the catalogue for good.
        if (!IsWindow(wnd)) forget(address, h, message);
        return;
    }
    long k = 0;
    for (long i = 1; i <= n && !k; ++i)
        if (readProp(wnd, clientName(h, message, i)) == address) k = i;
    if (k)
        for (long i = k + 1; i <= n; ++i) writeProp(wnd, clientName(h, message, i - 1), readProp(wnd, clientName(h, message, i)));
    // Without a match the last client goes: detaching an object that was never
    // attached removes the last one. Deliberate; callers depend on it.
    RemovePropA(wnd, clientName(h, message, n).c_str());
    writeProp(wnd, clientsName, n - 1);

    forget(address, h, message);
}

}  // namespace subclass
}  // namespace tova
