// Sorting of arrays held in Variants, in place (the work behind SortMethods).
#pragma once

#include "../frame/library_frame.h"

namespace tova {
namespace sorting {

// Each takes the caller's Variant as it arrives (it may hold the array by
// reference) and returns false, changing nothing, when it holds no array.
// Run-time errors of the sort itself (9, 6, 13) are raised.
bool shellSort(VARIANT* array);
bool shellSortByColumn(VARIANT* array, long column);
// numEls and descending may be missing (VT_ERROR / DISP_E_PARAMNOTFOUND) or null.
bool quickSort(VARIANT* array, const VARIANT* numEls, const VARIANT* descending);

}  // namespace sorting
}  // namespace tova
