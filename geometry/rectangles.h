// Rectangles: an ordered list of Rectangle objects, created here or adopted.
// Identity, not equal edges, decides whether two entries are the same.
#pragma once

#include "../frame/library_frame.h"

#include <vector>

namespace tova {

class Rectangles final : public Object<Rectangles, _Rectangles> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP Exists(_Rectangle* Rectangle, VARIANT_BOOL* pRet) override;
    STDMETHODIMP Add(TOVA_RECT* pRECT, VARIANT* Tag, _Rectangle** pRet) override;
    STDMETHODIMP Add2(VARIANT* Tag, _Rectangle** pRet) override;
    STDMETHODIMP AddObject(_Rectangle* Rectangle, VARIANT_BOOL* pRet) override;
    STDMETHODIMP get_Item(LONG* Index, _Rectangle** pRet) override;
    STDMETHODIMP get_Count(LONG* pRet) override;
    STDMETHODIMP Remove(LONG* Index) override;
    STDMETHODIMP RemoveObject(_Rectangle* Rectangle) override;
    STDMETHODIMP Clear() override;

private:
    friend class Object<Rectangles, _Rectangles>;
    Rectangles() = default;

    struct Entry {
        ComPtr<_Rectangle> rectangle;
        ComPtr<IUnknown> identity;  // the object's IUnknown, which decides sameness
    };
    static ComPtr<IUnknown> identityOf(_Rectangle* r);
    long find(IUnknown* identity) const;  // 0-based, -1 when absent
    _Rectangle* append(_Rectangle* r);
    size_t checkedPosition(LONG* Index) const;

    std::vector<Entry> list_;
};

}  // namespace tova
