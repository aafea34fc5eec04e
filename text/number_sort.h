// The quicksort of an array of Variants that holds only numbers, run in the
// array's own memory (text/number_sort.cpp). Internal to the library.
#pragma once

#include "number_text.h"
#include "sort_parts.h"

#include <cstdint>

namespace tova {
namespace sorting {

// QuickSortArray over b.lb..hi of an array of Variants holding only Longs, or
// only Doubles whose text is ours to write: the same comparisons, exchanges,
// errors and result as the quicksort on the elements themselves. False,
// changing nothing, when the array is not of that kind.
bool quickSortNumbers(SAFEARRAY* psa, VARTYPE vt, const Bounds& b, int64_t hi, Direction& direction,
                      const Numbers& nums);

}  // namespace sorting
}  // namespace tova
