// Wave sound through the media control interface. A hidden message window
// stands in for the host form of a multimedia control: it receives the
// completion notification of an asynchronous play and then stops and closes
// the device, so that every play releases the device without the caller's help.
#pragma once

#include "../frame/library_frame.h"

#include <string>

namespace tova {
namespace sound {

// True when the system has at least one wave output device.
bool canPlayWaveForms();

class Player {
public:
    Player();
    ~Player();   // stops and closes, as StopSound
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Stop, close, open the file as wave audio, check that it can play, play.
    // Asynchronous: returns at once, the device closes when the sound ends.
    // Otherwise returns when the sound has ended. False when the file cannot
    // be played (the device then stays open until the next command).
    bool play(const std::wstring& file, bool asynchronous);
    // Closes the device (which stops a sound that plays).
    void stop();

    bool ready() const { return wnd_ != nullptr; }
    const std::wstring& lastCommand() const { return lastCommand_; }

private:
    static LRESULT CALLBACK proc(HWND wnd, UINT msg, WPARAM wParam, LPARAM lParam);
    // One command with notify off and wait on, then the pending messages once.
    void run(const wchar_t* verb);
    DWORD send(const std::wstring& command, bool notify);
    void completed(WPARAM flags, LPARAM device);

    HWND wnd_ = nullptr;
    std::wstring alias_;
    std::wstring lastCommand_;
};

}  // namespace sound
}  // namespace tova
