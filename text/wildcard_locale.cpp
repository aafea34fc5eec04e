// The user locale's case mapping and collation for the wildcard matcher.

#include "wildcard_locale.h"

#include <windows.h>

#include <cstring>

namespace tova::wildcard {

void upperCase(const wchar_t* src, size_t len, wchar_t* dst) {
    int got = LCMapStringW(LOCALE_USER_DEFAULT, LCMAP_UPPERCASE, src, static_cast<int>(len), dst,
                           static_cast<int>(len));
    if (got != static_cast<int>(len)) {
        std::memcpy(dst, src, len * sizeof(wchar_t));
        CharUpperBuffW(dst, static_cast<DWORD>(len));
    }
}

// Taken from the platform once per thread and user locale.
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
        upperCase(all, 256, table.map);
        table.lcid = lcid;
    }
    return table.map;
}

// The user locale's collation; code units if the platform refuses.
int collate(wchar_t a, wchar_t b) {
    int r = CompareStringW(LOCALE_USER_DEFAULT, NORM_IGNORECASE, &a, 1, &b, 1);
    if (r == 0) return int(a) - int(b);
    return r - CSTR_EQUAL;
}

}  // namespace tova::wildcard
