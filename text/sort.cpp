#include "sort.h"

namespace tova {
namespace sorting {

bool shellSort(VARIANT*) { return false; }
bool shellSortByColumn(VARIANT*, long) { return false; }
bool quickSort(VARIANT*, const VARIANT*, const VARIANT*) { return false; }

}  // namespace sorting
}  // namespace tova
