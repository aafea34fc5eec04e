// The system's common dialogs, modal to an owner window and running their own
// message loop (the thread's timers keep ticking). Cancel leaves LastDllError
// 0; a dialog that fails sets its CommDlgExtendedError code; an owner that is
// no window gives 1400 before anything opens.
#pragma once

#include <ocidl.h>
#include <olectl.h>
#include <windows.h>

#include <string>
#include <vector>

namespace tova::dialogs {

struct FileOptions {
    std::wstring filter;            // "Text|*.txt|All|*.*"; an odd number of parts raises 5
    std::wstring initialFolder, title, fileName, defaultExtension;
    HWND owner = nullptr;
    long flags = 0;                 // OFN_ values; hook and template flags are ignored
    long filterIndex = 1;           // 1-based, in and (after OK) out
};

enum class FileDialog { open, openMany, save };
// The Open or Save As dialog: the chosen full paths (one unless openMany),
// none on Cancel or failure; options.filterIndex is the filter chosen.
std::vector<std::wstring> fileDialog(FileOptions& options, FileDialog kind);

// The folder picker; "" on Cancel or for an item that is no folder on disk.
std::wstring browseForFolder(const std::wstring& title, const std::wstring& initialFolder, HWND owner, long flags,
                             const std::wstring& caption);

// The colour dialog from an OLE colour (5 for none); the choice, -1 on Cancel.
// Custom colours are kept for the process.
long chooseColor(long initial, HWND owner, bool fullOpen);

// The font dialog from `font`; OK writes the choice into it (and the colour
// into *color when given). False on Cancel or failure.
bool chooseFont(IFont* font, HWND owner, long* color);

}  // namespace tova::dialogs
