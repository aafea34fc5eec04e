// SortMethods: global helpers that sort arrays held in Variants, in place.
#pragma once

#include "../frame/library_frame.h"

namespace tova {

class SortMethods final : public Object<SortMethods, _SortMethods> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP ShellSortArray(VARIANT* vArray, VARIANT_BOOL* pRet) override;
    STDMETHODIMP ShellSortArrayEx(VARIANT* vArray, LONG Column, VARIANT_BOOL* pRet) override;
    STDMETHODIMP QuickSortArray(VARIANT* Arr, VARIANT numEls, VARIANT Descending, VARIANT_BOOL* pRet) override;

private:
    friend class Object<SortMethods, _SortMethods>;
    SortMethods() = default;
};

}  // namespace tova
