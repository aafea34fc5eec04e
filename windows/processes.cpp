#include "processes.h"

#include "last_error.h"
#include "message_pump.h"
#include "../frame/errors.h"
#include "../frame/thread_slot.h"
#include "../frame/values.h"

#include <map>
#include <utility>
#include <vector>

namespace tova::processes {

namespace {

// The processes this thread started and has not yet seen end, by id.
ThreadSlot<std::map<DWORD, ObjectHandle>> started;

DWORD waitTime(long timeout) {
    if (timeout < -1) raise(kInvalidArgument);
    return timeout == -1 ? INFINITE : static_cast<DWORD>(timeout);
}

// CreateProcessW for a command line; the process handle, or none with the
// start error recorded.
ObjectHandle start(const std::wstring& commandLine, int showCmd, const std::wstring& folder, DWORD& id) {
    // CreateProcessW may write into the command line.
    std::vector<wchar_t> line(commandLine.begin(), commandLine.end());
    line.push_back(L'\0');
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESHOWWINDOW;
    si.wShowWindow = static_cast<WORD>(showCmd);
    PROCESS_INFORMATION pi{};
    if (commandLine.empty()) {
        lastError::set(ERROR_INVALID_PARAMETER);
        return ObjectHandle();
    }
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        folder.empty() ? nullptr : folder.c_str(), &si, &pi)) {
        lastError::failed();
        return ObjectHandle();
    }
    ObjectHandle thread(pi.hThread);
    id = pi.dwProcessId;
    return ObjectHandle(pi.hProcess);
}

// Waits for `process`; true with the exit code once it ended.
bool finish(HANDLE process, const WaitOptions& wait, long& exitCode) {
    switch (pump::waitFor(process, waitTime(wait.timeout), wait.pumpMessages)) {
    case pump::Wait::signalled: {
        DWORD code = 0;
        if (!GetExitCodeProcess(process, &code)) return lastError::failed();
        exitCode = static_cast<long>(code);
        return true;
    }
    case pump::Wait::timedOut:
    case pump::Wait::quit:   // the host is closing: it should not be held
        exitCode = STILL_ACTIVE;
        lastError::set(STILL_ACTIVE);
        return false;
    default:
        return lastError::failed();
    }
}

}  // namespace

int checkedShowCommand(long showCmd) {
    if (showCmd < SW_HIDE || showCmd > SW_FORCEMINIMIZE) raise(kInvalidArgument);
    return static_cast<int>(showCmd);
}

bool runAndWait(const std::wstring& commandLine, int showCmd, const std::wstring& folder, const WaitOptions& wait,
                long& exitCode) {
    waitTime(wait.timeout);   // a bad time-out raises before anything starts
    DWORD id = 0;
    ObjectHandle process = start(commandLine, showCmd, folder, id);
    return process.get() && finish(process.get(), wait, exitCode);
}

unsigned long run(const std::wstring& commandLine, int showCmd, const std::wstring& folder) {
    DWORD id = 0;
    ObjectHandle process = start(commandLine, showCmd, folder, id);
    if (!process.get()) return 0;
    started.get()[id] = std::move(process);
    return id;
}

bool waitFor(unsigned long id, const WaitOptions& wait, long& exitCode) {
    waitTime(wait.timeout);
    if (auto* own = started.find()) {
        const auto mine = own->find(id);
        if (mine != own->end()) {
            // Out of the table while waiting: a timer callback waiting for the
            // same process meanwhile must not close the handle under us.
            ObjectHandle process = std::move(mine->second);
            own->erase(mine);
            const bool ended = finish(process.get(), wait, exitCode);
            if (!ended) started.get()[id] = std::move(process);
            return ended;
        }
    }
    ObjectHandle other(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    if (!other.get()) other = ObjectHandle(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE, id));
    if (!other.get()) return lastError::failed(ERROR_INVALID_PARAMETER);
    return finish(other.get(), wait, exitCode);
}

}  // namespace tova::processes
