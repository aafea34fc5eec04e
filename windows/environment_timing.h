// Names of the computer and the user, the process's environment, clocks,
// beeps and the system's error texts.
#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace tova {

namespace environment {

std::wstring computerName(long format);   // error 5 for a format outside 0 ... 7
std::wstring userName();
// "" with LastDllError 203 when unset.
std::wstring variable(const std::wstring& name);
// A null value removes the variable.
bool setVariable(const std::wstring& name, const std::wstring* value);
std::wstring expand(const std::wstring& text);
// Name and value of each variable, without the hidden "=C:" entries.
std::vector<std::pair<std::wstring, std::wstring>> variables();

}  // namespace environment

namespace timing {

double tickCount();
double performanceCounter();
double performanceFrequency();
// The counter in milliseconds, for stopwatches.
double milliseconds();
bool beep(long frequency, long duration);   // error 5 outside 37 ... 32767 Hz or for a negative duration
bool messageBeep(long soundType);           // error 5 for a sound it does not know
std::wstring errorText(long code, long languageId);

}  // namespace timing

}  // namespace tova
