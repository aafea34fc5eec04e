// The system's ANSI code page and local time, for the cipher module.

#include "cipher_platform.h"

#include <windows.h>

#include <algorithm>

namespace tova {
namespace cipher {

namespace {

// The code of one character; false when it has no single-byte code.
bool codeOf(wchar_t c, unsigned char& code) {
    char bytes[4];
    if (WideCharToMultiByte(CP_ACP, 0, &c, 1, bytes, sizeof bytes, nullptr, nullptr) != 1) return false;
    code = static_cast<unsigned char>(bytes[0]);
    return true;
}

}  // namespace

const CodePage& ansi() {
    static const CodePage page = [] {
        CodePage p;
        CPINFOEXW info{};
        wchar_t fallback = L'?';
        if (GetCPInfoExW(CP_ACP, 0, &info)) {
            p.singleByte = info.MaxCharSize == 1;
            p.replacement = info.DefaultChar[0];
            fallback = info.UnicodeDefaultChar;
        }
        // One byte at a time: in a double-byte code page a lead byte on its own
        // is what the platform makes of it, not the start of a pair.
        for (int code = 0; code < 256; ++code) {
            char byte = static_cast<char>(code);
            wchar_t w;
            p.chr[code] = MultiByteToWideChar(CP_ACP, 0, &byte, 1, &w, 1) == 1 ? w : fallback;
        }
        return p;
    }();
    return page;
}

// A single-byte code page converts whole chunks at once; a chunk that does not
// come out one byte per character (a surrogate pair, say) and every chunk of a
// double-byte code page goes one character at a time.
void toCodes(const wchar_t* text, size_t n, unsigned char* out, std::vector<size_t>* missing) {
    const CodePage& page = ansi();
    const size_t kMost = size_t{1} << 24;  // keeps the counts within an int
    for (size_t start = 0; start < n; start += kMost) {
        int count = static_cast<int>(std::min(kMost, n - start));
        if (page.singleByte &&
            WideCharToMultiByte(CP_ACP, 0, text + start, count, reinterpret_cast<char*>(out + start), count,
                                nullptr, nullptr) == count)
            continue;
        for (size_t i = start; i < start + static_cast<size_t>(count); ++i) {
            if (!codeOf(text[i], out[i])) {
                out[i] = page.replacement;
                if (missing) missing->push_back(i);
            }
        }
    }
}

double timer() {
    SYSTEMTIME t;
    GetLocalTime(&t);
    double seconds = t.wHour * 3600.0 + t.wMinute * 60.0 + t.wSecond + t.wMilliseconds / 1000.0;
    return static_cast<float>(seconds);
}

}  // namespace cipher
}  // namespace tova
