#include "point_lists.h"

namespace tova {

namespace {

// {BFDE6351-7CD7-4B07-870C-4086AD336FE0}, the record POINTAPI (widl writes no constant for it).
const GUID kPointRecord = {0xBFDE6351, 0x7CD7, 0x4B07, {0x87, 0x0C, 0x40, 0x86, 0xAD, 0x33, 0x6F, 0xE0}};

bool isPointRecord(SAFEARRAY* a) {
    IRecordInfo* info = nullptr;
    if (FAILED(SafeArrayGetRecordInfo(a, &info)) || !info) return false;
    GUID g{};
    const bool ok = SUCCEEDED(info->GetGuid(&g)) && g == kPointRecord && a->cbElements == sizeof(POINTAPI);
    info->Release();
    return ok;
}

long number(SAFEARRAY* a, VARTYPE vt, LONG index) {
    Variant v;
    if (vt == VT_VARIANT) {
        if (FAILED(SafeArrayGetElement(a, &index, v.put()))) raise(kInvalidArgument);
    } else {
        if (!scalarBytes(vt) || vt == VT_BSTR || vt == VT_DISPATCH || vt == VT_UNKNOWN) raise(kInvalidArgument);
        V_VT(&v) = vt;
        if (FAILED(SafeArrayGetElement(a, &index, &V_UI1(&v)))) {
            V_VT(&v) = VT_EMPTY;
            raise(kInvalidArgument);
        }
    }
    Variant n;
    if (FAILED(VariantChangeType(n.put(), &v, 0, VT_I4))) raise(kInvalidArgument);
    return V_I4(&n);
}

}  // namespace

std::vector<POINT> pointList(const VARIANT* v, size_t minimum) {
    while (v && V_VT(v) == (VT_BYREF | VT_VARIANT)) v = V_VARIANTREF(v);
    if (!v || !(V_VT(v) & VT_ARRAY)) raise(kInvalidArgument);
    SAFEARRAY* a = arrayIn(*v);
    if (!a || SafeArrayGetDim(a) != 1) raise(kInvalidArgument);
    const VARTYPE vt = V_VT(v) & VT_TYPEMASK;
    LONG lo = 0, hi = -1;
    SafeArrayGetLBound(a, 1, &lo);
    SafeArrayGetUBound(a, 1, &hi);
    const long count = hi - lo + 1;
    std::vector<POINT> points;
    if (vt == VT_RECORD) {
        if (!isPointRecord(a)) raise(kInvalidArgument);
        ArrayData data(a);
        if (!data.locked()) raise(kInvalidArgument);
        const POINTAPI* p = static_cast<const POINTAPI*>(data.data());
        for (long i = 0; i < count; ++i) points.push_back(POINT{p[i].X, p[i].Y});
    } else {
        if (count % 2) raise(kInvalidArgument);
        for (long i = 0; i < count; i += 2) points.push_back(POINT{number(a, vt, lo + i), number(a, vt, lo + i + 1)});
    }
    if (points.size() < minimum) raise(kInvalidArgument);
    return points;
}

}  // namespace tova
