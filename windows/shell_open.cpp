#include "shell_open.h"

#include "last_error.h"
#include "window_placement.h"

#include <shellapi.h>
#include <shlwapi.h>

namespace tova::shell {

namespace {

const wchar_t* orNull(const std::wstring& s) { return s.empty() ? nullptr : s.c_str(); }

// The Win32 code for a shell result of 32 or less.
DWORD shellErrorCode(INT_PTR result) {
    switch (result) {
    case 0: return ERROR_NOT_ENOUGH_MEMORY;
    case SE_ERR_FNF: return ERROR_FILE_NOT_FOUND;
    case SE_ERR_PNF: return ERROR_PATH_NOT_FOUND;
    case SE_ERR_ACCESSDENIED: return ERROR_ACCESS_DENIED;
    case SE_ERR_OOM: return ERROR_NOT_ENOUGH_MEMORY;
    case ERROR_BAD_FORMAT: return ERROR_BAD_FORMAT;
    case SE_ERR_SHARE: return ERROR_SHARING_VIOLATION;
    case SE_ERR_ASSOCINCOMPLETE:
    case SE_ERR_NOASSOC: return ERROR_NO_ASSOCIATION;
    case SE_ERR_DDETIMEOUT:
    case SE_ERR_DDEFAIL:
    case SE_ERR_DDEBUSY: return ERROR_DDE_FAIL;
    case SE_ERR_DLLNOTFOUND: return ERROR_DLL_NOT_FOUND;
    default: return ERROR_GEN_FAILURE;
    }
}

}  // namespace

bool execute(const Open& what) {
    if (what.file.empty()) {
        lastError::set(ERROR_INVALID_PARAMETER);
        return false;
    }
    // An owner that is no window is a stale handle, not a reason to open ownerless.
    if (!placement::isWindowOrNone(what.owner)) return false;
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof info;
    // No message boxes of the shell's own: the caller gets the code instead.
    info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
    info.hwnd = what.owner;
    info.lpVerb = orNull(what.verb);
    info.lpFile = what.file.c_str();
    info.lpParameters = orNull(what.parameters);
    info.lpDirectory = orNull(what.folder);
    info.nShow = what.showCmd;
    SetLastError(0);
    if (ShellExecuteExW(&info)) return true;
    const INT_PTR result = reinterpret_cast<INT_PTR>(info.hInstApp);
    // The shell's own code is the reliable one: Wine leaves 193 in
    // GetLastError when it finds no association.
    if (result >= 0 && result <= 32) {
        lastError::set(shellErrorCode(result));
        return false;
    }
    return lastError::failed();
}

bool openDocument(const std::wstring& path, const std::wstring& verb, HWND owner) {
    if (path.empty() || GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        return lastError::failed(ERROR_FILE_NOT_FOUND);
    Open what;
    what.file = path;
    what.verb = verb;
    what.owner = owner;
    return execute(what);
}

bool openUrl(const std::wstring& url, HWND owner) {
    // A path or plain text would start a program or open a file: not a URL's job.
    if (url.empty() || !PathIsURLW(url.c_str())) {
        lastError::set(ERROR_INVALID_PARAMETER);
        return false;
    }
    Open what;
    what.file = url;
    what.owner = owner;
    return execute(what);
}

std::wstring findExecutable(const std::wstring& document) {
    if (document.empty()) {
        lastError::set(ERROR_FILE_NOT_FOUND);
        return {};
    }
    // FindExecutableW writes at most MAX_PATH characters.
    wchar_t program[MAX_PATH + 1] = {};
    const INT_PTR result = reinterpret_cast<INT_PTR>(FindExecutableW(document.c_str(), nullptr, program));
    if (result <= 32) {
        lastError::set(shellErrorCode(result));
        return {};
    }
    // Wine gives the command's bare program name when the association names
    // no folder; the caller wants the file, as Windows gives it.
    std::wstring found = program;
    if (found.find(L'\\') == std::wstring::npos) {
        wchar_t full[MAX_PATH + 1] = {};
        const DWORD n = SearchPathW(nullptr, found.c_str(), L".exe", MAX_PATH + 1, full, nullptr);
        if (n && n <= MAX_PATH) found = full;
    }
    return found;
}

}  // namespace tova::shell
