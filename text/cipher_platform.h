// What the cipher module asks of the platform: the ANSI code page, both ways,
// and the clock random strings are seeded from. The Windows build answers with
// the system's code page and local time (cipher_platform.cpp); the native
// sanitizer build (tests/native) with Latin-1 and the C library's clock.
#pragma once

#include <cstddef>
#include <vector>

namespace tova {
namespace cipher {

struct CodePage {
    bool singleByte = true;
    unsigned char replacement = '?';  // the code a character without one gets
    wchar_t chr[256];                 // the character of each code
};

// Read once: the code page does not change while the process runs.
const CodePage& ansi();

// The codes of text[0, n) into `out` (n bytes). Characters without a code get
// the replacement code; their positions go to `missing` when it is given.
void toCodes(const wchar_t* text, std::size_t n, unsigned char* out, std::vector<std::size_t>* missing = nullptr);

// Seconds since midnight, local time, in single precision like the runtime's Timer.
double timer();

}  // namespace cipher
}  // namespace tova
