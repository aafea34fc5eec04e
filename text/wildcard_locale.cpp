// The user locale's case mapping and collation for the wildcard matcher.

#include "wildcard_locale.h"

#include <windows.h>

#include <cstring>

namespace tova::wildcard {

namespace {

// Upper-cases len code units with the user locale's case mapping. The mapping
// is one to one, so positions stay where they were.
void mapUpper(const wchar_t* src, size_t len, wchar_t* dst) {
    int got = LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_UPPERCASE, src, static_cast<int>(len), dst,
                           static_cast<int>(len));
    if (got != static_cast<int>(len)) {
        std::memcpy(dst, src, len * sizeof(wchar_t));
        CharUpperBuffW(dst, static_cast<DWORD>(len));
    }
}

// The same mapping for the first 256 code units, taken from the platform once
// per thread and user locale: one platform call per character of a long text
// would cost more than the whole match.
const wchar_t* latin1Upper() {
    struct Table {
        LCID lcid = 0;
        wchar_t map[256];
    };
    thread_local Table table;
    LCID lcid = GetUserDefaultLCID();
    if (table.lcid != lcid) {
        wchar_t all[256];
        for (unsigned c = 0; c < 256; ++c) all[c] = static_cast<wchar_t>(c);
        mapUpper(all, 256, table.map);
        table.lcid = lcid;
    }
    return table.map;
}

}  // namespace

// Latin-1 through the table, runs of other characters through the platform.
void foldCase(const wchar_t* src, size_t n, wchar_t* dst) {
    const wchar_t* upper = latin1Upper();
    constexpr size_t kMaxRun = size_t(1) << 28;
    size_t i = 0;
    while (i < n) {
        if (src[i] < 256) {
            dst[i] = upper[src[i]];
            ++i;
            continue;
        }
        size_t end = i + 1;
        while (end < n && src[end] >= 256 && end - i < kMaxRun) ++end;
        // Never split a surrogate pair between two calls.
        if (end < n && end - i > 1 && src[end - 1] >= 0xD800 && src[end - 1] <= 0xDBFF) --end;
        mapUpper(src + i, end - i, dst + i);
        i = end;
    }
}

// The user locale's collation; code units if the platform refuses.
int collate(wchar_t a, wchar_t b) {
    int r = CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, &a, 1, &b, 1);
    if (r == 0) return int(a) - int(b);
    return r - CSTR_EQUAL;
}

}  // namespace tova::wildcard
