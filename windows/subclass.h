// The subclassing engine: clients implementing _ISubclass receive the messages
// of a window they attached to, before, instead of or after the window's
// previous procedure. Everything the window procedure needs lives on the window
// itself, in window properties named from decimal numbers:
//   "H"          the previous window procedure       (H = the handle as a Long)
//   "CH"         attachments on the window, over all messages
//   "H#MC"       clients attached to message M
//   "H#M#i"      the i-th client's object address, i = 1 ... count
// The engine keeps no reference to a client between messages; a client must
// detach before it ends.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {

class SubclassDatabase;

namespace subclass {

// Error numbers of the engine (raised as 0x80040000 | number).
enum : long {
    kCantSubclass = 13081,
    kAlreadyHandled = 13082,
    kInvalidWindow = 13083,
    kExternalWindow = 13084,
};

// Attaches `client` to `message` of `wnd`; raises the errors above.
void attach(_ISubclass* client, HWND wnd, long message);
// Detaches it; never raises.
void detach(_ISubclass* client, HWND wnd, long message);

// The message being dispatched to a client on this thread (the last one after dispatch).
long currentMessage();
// Calls the previous procedure of the window being dispatched on this thread.
LRESULT callOldWindowProc(HWND wnd, UINT message, WPARAM wParam, LPARAM lParam);
// Whether the window belongs to this process.
bool isWindowLocal(HWND wnd);
// The thread's catalogue, created on first use.
SubclassDatabase* catalogue();

// Property names as the engine writes them, for whoever inspects a window.
std::string windowKey(HWND wnd);                                 // "H"
std::string windowCountKey(HWND wnd);                            // "CH"
std::string messageCountKey(HWND wnd, long message);             // "H#MC"
std::string clientKey(HWND wnd, long message, long index);       // "H#M#i"

}  // namespace subclass
}  // namespace tova
