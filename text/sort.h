// Sorting of arrays held in Variants, in place (the work behind SortMethods).
#pragma once

#include "../frame/library_frame.h"

#include <cstdint>

namespace tova {
namespace sorting {

// Each takes the caller's Variant as it arrives (it may hold the array by
// reference) and returns false, changing nothing, when it holds no array.
// Run-time errors of the sort itself (9, 6, 13) are raised.
bool shellSort(VARIANT* array);
bool shellSortByColumn(VARIANT* array, long column);
// numEls and descending may be missing (VT_ERROR / DISP_E_PARAMNOTFOUND) or null.
bool quickSort(VARIANT* array, const VARIANT* numEls, const VARIANT* descending);

// ------------------------------------------------------------ comparing values
//
// Elements compare as the automation runtime's comparison operators compare
// two Variants: numbers numerically, texts by their UTF-16 code units (a
// shorter text that starts the longer one is the smaller), a text against a
// number numerically when the text reads as a number (else the text is the
// greater), Empty as 0 or "". Results are VARCMP_LT, VARCMP_EQ, VARCMP_GT, or
// VARCMP_NULL when either side is Null (no ordering test is then true). Values
// that cannot be compared (objects, arrays, errors) raise 13.
int compare(const VARIANT& a, const VARIANT& b);

inline int compareLongs(LONG a, LONG b) { return a == b ? VARCMP_EQ : a < b ? VARCMP_LT : VARCMP_GT; }
// NaN compares greater than anything, as the runtime has it.
inline int compareNumbers(double a, double b) { return a == b ? VARCMP_EQ : a < b ? VARCMP_LT : VARCMP_GT; }

inline UINT textLength(BSTR s) { return s ? reinterpret_cast<const UINT*>(s)[-1] / sizeof(OLECHAR) : 0; }
inline int compareTexts(const OLECHAR* a, UINT na, const OLECHAR* b, UINT nb) {
    const UINT n = na < nb ? na : nb;
    for (UINT k = 0; k < n; ++k)
        if (a[k] != b[k]) return a[k] < b[k] ? VARCMP_LT : VARCMP_GT;
    return na == nb ? VARCMP_EQ : na < nb ? VARCMP_LT : VARCMP_GT;
}
inline int compareTexts(BSTR a, BSTR b) { return compareTexts(a, textLength(a), b, textLength(b)); }

namespace detail {
int compareOther(const VARIANT& a, const VARIANT& b);
// The key the quicksort compares the text of a Long or Double by, when that
// text is one the library writes itself (false otherwise): keys order as the
// texts' first sixteen characters do.
bool numberTextKey(const VARIANT& number, uint64_t* key);
}

// Same-typed Longs, Doubles and Strings, the common case, compare here.
inline int compare(const VARIANT& a, const VARIANT& b) {
    if (V_VT(&a) == V_VT(&b)) {
        switch (V_VT(&a)) {
        case VT_I4: return compareLongs(V_I4(&a), V_I4(&b));
        case VT_R8: return compareNumbers(V_R8(&a), V_R8(&b));
        case VT_BSTR: return compareTexts(V_BSTR(&a), V_BSTR(&b));
        default: break;
        }
    }
    return detail::compareOther(a, b);
}

// ------------------------------------------------------------- text of values

// The text the runtime's conversion to String gives for `value` (user locale,
// no flags), as a new BSTR; raises as that conversion would (94 for Null).
BSTR toText(const VARIANT& value);
// The Double the runtime reads from `text` (user locale); false when the text
// does not read as a number.
bool readNumber(BSTR text, double* value);

}  // namespace sorting
}  // namespace tova
