// Lists of strings handed to automation clients: zero-based Variant arrays,
// which every script engine can index.
#pragma once

#include "values.h"

#include <string>
#include <vector>

namespace tova {

// A zero-based Variant array of Strings (no elements for an empty list);
// raises 7 when memory runs out.
void toVariantArray(const std::vector<std::wstring>& items, VARIANT* out);
// The same from strings already made, moved into the array.
void toVariantArray(std::vector<Bstr>& items, VARIANT* out);

}  // namespace tova
