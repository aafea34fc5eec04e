#include "text_encoding.h"

#include "../frame/library_frame.h"

#include <climits>
#include <cstring>
#include <utility>

namespace tova {
namespace files {

namespace {

const unsigned char kUtf8Bom[] = {0xEF, 0xBB, 0xBF};
const unsigned char kUtf16Bom[] = {0xFF, 0xFE};
const unsigned char kUtf16BeBom[] = {0xFE, 0xFF};

bool startsWith(const char* data, size_t size, const unsigned char* mark, size_t n) {
    return size >= n && std::memcmp(data, mark, n) == 0;
}

// One UTF-8 sequence at `p` (n > 0 bytes there): its length with the code
// point in `cp` when valid; 0 when valid so far but cut off by the end; -k for
// an invalid part of k bytes (the maximal part that could have begun a
// sequence, at least 1).
int sequence(const unsigned char* p, size_t n, unsigned& cp) {
    const unsigned c = p[0];
    if (c < 0x80) {
        cp = c;
        return 1;
    }
    int need;
    unsigned lo = 0x80, hi = 0xBF;
    if (c >= 0xC2 && c <= 0xDF) need = 1, cp = c & 0x1F;
    else if (c >= 0xE0 && c <= 0xEF) need = 2, cp = c & 0x0F, lo = c == 0xE0 ? 0xA0 : 0x80, hi = c == 0xED ? 0x9F : 0xBF;
    else if (c >= 0xF0 && c <= 0xF4) need = 3, cp = c & 0x07, lo = c == 0xF0 ? 0x90 : 0x80, hi = c == 0xF4 ? 0x8F : 0xBF;
    else return -1;
    for (int k = 1; k <= need; ++k) {
        if (static_cast<size_t>(k) >= n) return 0;
        const unsigned b = p[k];
        if (b < lo || b > hi) return -k;
        cp = (cp << 6) | (b & 0x3F);
        lo = 0x80, hi = 0xBF;
    }
    return need + 1;
}

// Returns whether the bytes were valid UTF-8.
bool decodeUtf8(const unsigned char* p, size_t n, std::wstring& out) {
    out.resize(n);   // never more units than bytes
    wchar_t* o = n ? &out[0] : nullptr;
    bool valid = true;
    size_t i = 0;
    while (i < n) {
        if (p[i] < 0x80) {
            *o++ = p[i++];
            continue;
        }
        unsigned cp = 0;
        const int len = sequence(p + i, n - i, cp);
        if (len <= 0) {
            *o++ = 0xFFFD;
            i += len == 0 ? n - i : static_cast<size_t>(-len);
            valid = false;
        } else {
            if (cp >= 0x10000) {
                cp -= 0x10000;
                *o++ = static_cast<wchar_t>(0xD800 + (cp >> 10));
                *o++ = static_cast<wchar_t>(0xDC00 + (cp & 0x3FF));
            } else {
                *o++ = static_cast<wchar_t>(cp);
            }
            i += static_cast<size_t>(len);
        }
    }
    out.resize(static_cast<size_t>(o - (n ? &out[0] : nullptr)));
    return valid;
}

// False for a lone surrogate, which UTF-8 cannot carry.
bool encodeUtf8(const std::wstring& text, std::string& out) {
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned c = text[i];
        if (c >= 0xD800 && c <= 0xDFFF) {
            if (c > 0xDBFF || i + 1 == text.size() || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) return false;
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return true;
}

std::wstring decodeCodePage(UINT codePage, const char* data, size_t size) {
    if (!size) return {};
    if (size > INT_MAX) raise(kOutOfMemory);
    const int n = MultiByteToWideChar(codePage, 0, data, static_cast<int>(size), nullptr, 0);
    if (n <= 0) raise(kOutOfMemory);
    std::wstring out(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(codePage, 0, data, static_cast<int>(size), &out[0], n);
    return out;
}

// The code page must hold every character: no default character, no best fit,
// and the bytes must read back as the text.
bool encodeCodePage(UINT codePage, const std::wstring& text, std::string& out) {
    if (codePage == CP_UTF8) return encodeUtf8(text, out);
    if (text.empty()) return true;
    if (text.size() > INT_MAX / 4) raise(kOutOfMemory);
    const int len = static_cast<int>(text.size());
    BOOL usedDefault = FALSE;
    const int n = WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, text.data(), len, nullptr, 0, nullptr, &usedDefault);
    if (n <= 0 || usedDefault) return false;
    const size_t at = out.size();
    out.resize(at + static_cast<size_t>(n));
    WideCharToMultiByte(codePage, WC_NO_BEST_FIT_CHARS, text.data(), len, &out[at], n, nullptr, &usedDefault);
    return !usedDefault && decodeCodePage(codePage, out.data() + at, static_cast<size_t>(n)) == text;
}

}  // namespace

long bomEncoding(const char* data, size_t size) {
    if (startsWith(data, size, kUtf8Bom, 3)) return tovaEncodingUTF8BOM;
    if (startsWith(data, size, kUtf16Bom, 2)) return tovaEncodingUTF16;
    if (startsWith(data, size, kUtf16BeBom, 2)) return tovaEncodingUTF16BE;
    return tovaEncodingAuto;
}

size_t bomLength(const char* data, size_t size, long encoding) {
    switch (encoding) {
    case tovaEncodingUTF8:
    case tovaEncodingUTF8BOM: return startsWith(data, size, kUtf8Bom, 3) ? 3 : 0;
    case tovaEncodingUTF16: return startsWith(data, size, kUtf16Bom, 2) ? 2 : 0;
    case tovaEncodingUTF16BE: return startsWith(data, size, kUtf16BeBom, 2) ? 2 : 0;
    default: return 0;
    }
}

void Utf8Check::add(const char* data, size_t size) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(data);
    unsigned cp;
    // First completes a sequence the previous piece cut off.
    while (valid_ && !tail_.empty() && size > 0) {
        tail_ += static_cast<char>(*p++);
        --size;
        const int len = sequence(reinterpret_cast<const unsigned char*>(tail_.data()), tail_.size(), cp);
        if (len < 0) valid_ = false;
        else if (len > 0) tail_.clear();
    }
    size_t i = 0;
    while (valid_ && i < size) {
        if (p[i] < 0x80) {
            ++i;
            continue;
        }
        const int len = sequence(p + i, size - i, cp);
        if (len < 0) {
            valid_ = false;
        } else if (len == 0) {
            tail_.assign(reinterpret_cast<const char*>(p + i), size - i);
            break;
        } else {
            i += static_cast<size_t>(len);
        }
    }
}

std::wstring decodeText(const char* data, size_t size, long encoding) {
    if (encoding == tovaEncodingAuto) {
        encoding = bomEncoding(data, size);
        if (encoding == tovaEncodingAuto) {
            std::wstring out;
            if (decodeUtf8(reinterpret_cast<const unsigned char*>(data), size, out)) return out;
            return decodeCodePage(CP_ACP, data, size);
        }
    }
    const size_t skip = bomLength(data, size, encoding);
    data += skip;
    size -= skip;
    switch (encoding) {
    case tovaEncodingUTF8:
    case tovaEncodingUTF8BOM: {
        std::wstring out;
        decodeUtf8(reinterpret_cast<const unsigned char*>(data), size, out);
        return out;
    }
    case tovaEncodingUTF16:
    case tovaEncodingUTF16BE: {
        std::wstring out(size / 2 + size % 2, L'\0');
        if (size / 2) std::memcpy(&out[0], data, size / 2 * 2);
        if (encoding == tovaEncodingUTF16BE)
            for (size_t i = 0; i < size / 2; ++i) out[i] = static_cast<wchar_t>((out[i] >> 8) | (out[i] << 8));
        if (size % 2) out.back() = 0xFFFD;
        return out;
    }
    case tovaEncodingOEM: return decodeCodePage(CP_OEMCP, data, size);
    default: return decodeCodePage(CP_ACP, data, size);
    }
}

bool encodeText(const std::wstring& text, long encoding, bool withBom, std::string& out) {
    out.clear();
    switch (encoding) {
    case tovaEncodingUTF8BOM:
        if (withBom) out.assign(reinterpret_cast<const char*>(kUtf8Bom), 3);
        // fall through
    case tovaEncodingUTF8:
        out.reserve(out.size() + text.size());
        return encodeUtf8(text, out);
    case tovaEncodingUTF16:
    case tovaEncodingUTF16BE: {
        const bool big = encoding == tovaEncodingUTF16BE;
        if (withBom) out.assign(reinterpret_cast<const char*>(big ? kUtf16BeBom : kUtf16Bom), 2);
        const size_t at = out.size();
        out.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
        if (big)
            for (size_t i = at; i < out.size(); i += 2) std::swap(out[i], out[i + 1]);
        return true;
    }
    case tovaEncodingOEM: return encodeCodePage(GetOEMCP(), text, out);
    default: return encodeCodePage(GetACP(), text, out);
    }
}

std::vector<std::wstring> splitLines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (c != L'\r' && c != L'\n') continue;
        lines.emplace_back(text, start, i - start);
        if (c == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n') ++i;
        start = i + 1;
    }
    if (start < text.size()) lines.emplace_back(text, start, text.size() - start);
    return lines;
}

}  // namespace files
}  // namespace tova
