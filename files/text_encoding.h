// Text and bytes in the encodings of TextEncodingConstants, apart from files:
// byte-order marks, UTF-8 validity, the ANSI fallback, and lines. The file
// members of text_files.cpp read and write through these.
#pragma once

#include "../frame/typelib.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tova {
namespace files {

// The encoding a byte-order mark at the start of `data` names (UTF8BOM,
// UTF16, UTF16BE), or Auto when there is none.
long bomEncoding(const char* data, size_t size);

// Bytes of `encoding`'s own mark at the start of `data` (0 when absent, and
// always for ANSI and OEM): a named encoding skips only its own mark.
size_t bomLength(const char* data, size_t size, long encoding);

// UTF-8 validity of a byte stream given in pieces, so that a file's encoding
// can be judged without holding it whole.
class Utf8Check {
public:
    void add(const char* data, size_t size);
    // True when everything added is valid UTF-8 (a sequence cut at the end is not).
    bool valid() const { return valid_ && tail_.empty(); }

private:
    std::string tail_;   // an incomplete sequence waiting for the next piece
    bool valid_ = true;
};

// `data` as text. Auto: a mark decides, else UTF-8 when valid, else ANSI. A
// named encoding skips its own mark; invalid UTF-8 gives one U+FFFD per
// maximal invalid part, an odd last byte of UTF-16 one U+FFFD.
std::wstring decodeText(const char* data, size_t size, long encoding);

// `text` in `encoding` (not Auto), with the mark when `withBom` and the
// encoding has one. False when the encoding cannot hold the text: a character
// outside the ANSI or OEM code page, or a lone surrogate for UTF-8.
bool encodeText(const std::wstring& text, long encoding, bool withBom, std::string& out);

// Lines by ReadTextLines's rule: CRLF, LF and CR each end one; a final break
// adds none, so "" has none.
std::vector<std::wstring> splitLines(const std::wstring& text);

// The same count over text given unit by unit (bytes or UTF-16 code units).
class LineCounter {
public:
    void add(unsigned unit) {
        if (unit == L'\n') {
            if (!afterCr_) ++breaks_;
            afterCr_ = open_ = false;
        } else if (unit == L'\r') {
            ++breaks_;
            afterCr_ = true;
            open_ = false;
        } else {
            afterCr_ = false;
            open_ = true;
        }
    }
    long long lines() const { return breaks_ + (open_ ? 1 : 0); }

private:
    long long breaks_ = 0;
    bool afterCr_ = false, open_ = false;
};

}  // namespace files
}  // namespace tova
