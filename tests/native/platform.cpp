#include "platform.h"

#include "frame/error_codes.h"
#include "text/cipher_platform.h"
#include "text/wildcard_locale.h"

#include <array>
#include <ctime>

namespace tova {

void raise(long code, const wchar_t*, const wchar_t*) { throw native::Raised{code}; }

namespace wildcard {

const Unit* latin1Upper() {
    static const auto table = [] {
        std::array<Unit, 256> t;
        for (unsigned c = 0; c < 256; ++c) t[c] = Unit(c >= 'a' && c <= 'z' ? c - 32 : c);
        return t;
    }();
    return table.data();
}

void upperCase(const Unit* src, size_t n, Unit* dst) {
    for (size_t i = 0; i < n; ++i) dst[i] = src[i] < 256 ? latin1Upper()[src[i]] : src[i];
}

int collate(Unit a, Unit b) {
    upperCase(&a, 1, &a);
    upperCase(&b, 1, &b);
    return int(a) - int(b);
}

}  // namespace wildcard

namespace cipher {

const CodePage& ansi() {
    static const CodePage page = [] {
        CodePage p;
        for (int code = 0; code < 256; ++code) p.chr[code] = static_cast<wchar_t>(code);
        return p;
    }();
    return page;
}

void toCodes(const wchar_t* text, size_t n, unsigned char* out, std::vector<size_t>* missing) {
    for (size_t i = 0; i < n; ++i) {
        const bool has = static_cast<unsigned long>(text[i]) < 256;
        out[i] = has ? static_cast<unsigned char>(text[i]) : ansi().replacement;
        if (!has && missing) missing->push_back(i);
    }
}

double timer() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local;
    localtime_r(&now.tv_sec, &local);
    double seconds = local.tm_hour * 3600.0 + local.tm_min * 60.0 + local.tm_sec + now.tv_nsec / 1e9;
    return static_cast<float>(seconds);
}

}  // namespace cipher
}  // namespace tova
