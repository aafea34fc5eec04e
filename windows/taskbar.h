// The task bar as the shell reports it, through an app-bar query that tests
// can replace (a machine without a task bar answers nothing).
#pragma once

#include <windows.h>
#include <shellapi.h>

namespace tova::taskbar {

using AppBarQuery = UINT_PTR(WINAPI*)(DWORD, PAPPBARDATA);

// The query in use: the shell's own unless replaced. Returns the previous one.
AppBarQuery replaceQuery(AppBarQuery query);

bool rect(RECT& out);
long edge();   // -1 when no task bar answers
bool autoHide();

}  // namespace tova::taskbar
