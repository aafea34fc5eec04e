// Other programs started and waited for: CreateProcessW with a show command
// and folder, waits that may keep the thread's messages flowing, and exit
// codes. Soft failures give false or 0 with LastDllError set.
#pragma once

#include <windows.h>

#include <string>

namespace tova::processes {

// How a caller waits: `timeout` in ms (-1 for no limit; other negative values
// raise 5) and whether the thread's messages are dispatched meanwhile.
struct WaitOptions {
    long timeout = -1;
    bool pumpMessages = false;
};

// Starts `commandLine` and waits. True when it ended, with its exit code in
// `exitCode`; false when it did not start (exitCode untouched, the start
// error kept) or still runs (exitCode and LastDllError STILL_ACTIVE, 259).
bool runAndWait(const std::wstring& commandLine, int showCmd, const std::wstring& folder, const WaitOptions& wait,
                long& exitCode);

// Starts `commandLine` without waiting; its process id, 0 on failure. The
// calling thread keeps the process handle until waitFor sees it end, so the
// id cannot be reused by another process meanwhile.
unsigned long run(const std::wstring& commandLine, int showCmd, const std::wstring& folder);

// Waits for the process `id` (one this thread started, or any other). As
// runAndWait; false with the platform's code for an unknown id.
bool waitFor(unsigned long id, const WaitOptions& wait, long& exitCode);

// Raises 5 unless `showCmd` is one of the SW_ values 0...11.
int checkedShowCommand(long showCmd);

}  // namespace tova::processes
