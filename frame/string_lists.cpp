#include "string_lists.h"

#include "errors.h"

namespace tova {

namespace {

// Fills the array in place: a listing of many thousand names pays one
// allocation per name. make(i) gives the i-th string, null when memory ran out.
template <class Make>
void fill(size_t count, Make&& make, VARIANT* out) {
    SafeArray sa(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(count)));
    if (!sa.get()) raise(kOutOfMemory);
    if (count) {
        ArrayData data(sa.get());
        if (!data.locked()) raise(kOutOfMemory);
        VARIANT* slots = static_cast<VARIANT*>(data.data());   // created Empty
        for (size_t i = 0; i < count; ++i) {
            BSTR b = make(i);
            if (!b) raise(kOutOfMemory);   // the array, destroyed, frees those already set
            V_VT(&slots[i]) = VT_BSTR;
            V_BSTR(&slots[i]) = b;
        }
    }
    VariantInit(out);
    V_VT(out) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(out) = sa.detach();
}

}  // namespace

void toVariantArray(const std::vector<std::wstring>& items, VARIANT* out) {
    // The length is kept, so a NUL inside a line survives.
    fill(items.size(), [&](size_t i) { return SysAllocStringLen(items[i].data(), static_cast<UINT>(items[i].size())); },
         out);
}

void toVariantArray(std::vector<Bstr>& items, VARIANT* out) {
    fill(items.size(), [&](size_t i) { return items[i].detach(); }, out);
}

}  // namespace tova
