// What the sorting modules (text/sort, text/number_sort, text/number_text)
// share: results and error codes, the caller's arguments as the sorts read
// them, the locked array and the quicksort's ranges. Internal to the library.
#pragma once

#include "sort.h"

#include <climits>
#include <cstdint>

namespace tova {
namespace sorting {

constexpr int kLT = VARCMP_LT;
constexpr int kEQ = VARCMP_EQ;
constexpr int kGT = VARCMP_GT;
constexpr long kInvalidUseOfNull = 94;
constexpr long kArrayLocked = 10;
constexpr LCID kLocale = LOCALE_USER_DEFAULT;

inline bool atLeast(int c) { return c == kGT || c == kEQ; }  // >= (false for Null)
inline bool atMost(int c) { return c == kLT || c == kEQ; }   // <= (false for Null)

// ---------------------------------------------------------------------- errors

[[noreturn]] inline void raiseFailed(HRESULT hr) {
    if (hr == DISP_E_OVERFLOW) raise(kOverflow);
    if (hr == E_OUTOFMEMORY) raise(kOutOfMemory);
    raise(kTypeMismatch);
}

// An index the loops computed that the array does not have; overflow when
// the index no longer even fits a Long.
[[noreturn]] inline void raiseIndex(int64_t index) {
    raise(index > LONG_MAX || index < LONG_MIN ? kOverflow : kSubscriptOutOfRange);
}

inline int64_t checkedLong(int64_t v) {
    if (v > LONG_MAX || v < LONG_MIN) raise(kOverflow);
    return v;
}

// ------------------------------------------------------------------ arguments

// The value a by-reference Variant refers to, as a shallow view.
const VARIANT& dereferenced(const VARIANT& v, VARIANT& scratch);

// Descending, converted to a Boolean where the sort first tests it.
class Direction {
public:
    explicit Direction(const VARIANT* arg) : arg_(arg) {}
    bool descending() {
        if (!known_) {
            value_ = convert();
            known_ = true;
        }
        return value_;
    }

private:
    bool convert() const {
        if (!arg_) return false;
        VARIANT scratch;
        const VARIANT& v = dereferenced(*arg_, scratch);
        switch (V_VT(&v)) {
        case VT_ERROR:
            if (V_ERROR(&v) == DISP_E_PARAMNOTFOUND) return false;  // missing
            raise(kTypeMismatch);
        case VT_NULL: raise(kInvalidUseOfNull);
        case VT_BOOL: return V_BOOL(&v) != 0;
        default: break;
        }
        Variant b;
        const HRESULT hr = VariantChangeTypeEx(&b, const_cast<VARIANT*>(&v), kLocale, 0, VT_BOOL);
        if (FAILED(hr)) raiseFailed(hr);
        return V_BOOL(&b) != 0;
    }

    const VARIANT* arg_;
    bool known_ = false;
    bool value_ = false;
};

// ---------------------------------------------------------------- the arrays

struct Bounds {
    int64_t lb, ub;
    uint64_t count;  // elements one index reaches: 0 unless the array is one-dimensional
};

class Locked {
public:
    explicit Locked(SAFEARRAY* psa) : data_(psa) {
        if (!data_.locked()) raise(kArrayLocked);
    }
    BYTE* data() const { return static_cast<BYTE*>(data_.data()); }

private:
    ArrayData data_;
};

// The quicksort's ranges: `partition(lo, hi)` partitions one and returns
// where its pivot went; the larger side waits on a stack of 33 entries (entry
// 0 holds the whole range, pushes go to 1..32) while the smaller goes first.
template <class Partition>
void quickRanges(int64_t lo, int64_t hi, Partition&& partition) {
    int64_t pendingLo[33], pendingHi[33];
    int sp = 0;
    pendingLo[0] = lo;
    pendingHi[0] = hi;
    for (;;) {
        if (hi > lo) {
            const int64_t i = partition(lo, hi);
            if (++sp > 32) raise(kSubscriptOutOfRange);
            if (i - lo > hi - i) {
                pendingLo[sp] = lo;
                pendingHi[sp] = checkedLong(i - 1);
                lo = checkedLong(i + 1);
            } else {
                pendingLo[sp] = checkedLong(i + 1);
                pendingHi[sp] = hi;
                hi = checkedLong(i - 1);
            }
        } else {
            if (sp == 0) return;
            lo = pendingLo[sp];
            hi = pendingHi[sp];
            --sp;
        }
    }
}

}  // namespace sorting
}  // namespace tova
