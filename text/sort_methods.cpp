#include "sort_methods.h"

#include "sort.h"

namespace tova {

const ClassIdentity SortMethods::kClass = {L"SortMethods", &CLSID_SortMethods, &IID__SortMethods, nullptr};

HRESULT createSortMethods(REFIID riid, void** ppv) { return SortMethods::create(riid, ppv); }

STDMETHODIMP SortMethods::ShellSortArray(VARIANT* vArray, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(sorting::shellSort(required(vArray))); });
}

STDMETHODIMP SortMethods::ShellSortArrayEx(VARIANT* vArray, LONG Column, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(sorting::shellSortByColumn(required(vArray), Column)); });
}

STDMETHODIMP SortMethods::QuickSortArray(VARIANT* Arr, VARIANT numEls, VARIANT Descending, VARIANT_BOOL* pRet) {
    return guard([&] { *required(pRet) = toVB(sorting::quickSort(required(Arr), &numEls, &Descending)); });
}

}  // namespace tova
