// The Tag property of the geometry classes: client data of any kind.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

inline void readTag(const Variant& tag, VARIANT* out) {
    VariantInit(required(out));
    if (FAILED(VariantCopy(out, const_cast<Variant*>(&tag)))) raise(kOutOfMemory);
}

// Let stores a copy of the value; an object given to let is stored by
// reference, as set does, so that hosts without a set statement can tag objects.
inline void storeTag(Variant& tag, VARIANT* value) {
    Variant copy;
    HRESULT hr = VariantCopyInd(&copy, required(value));
    if (FAILED(hr)) raise(hr == DISP_E_BADVARTYPE ? kTypeMismatch : kOutOfMemory);
    tag = std::move(copy);
}

}  // namespace tova
