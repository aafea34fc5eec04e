#include "rectangles.h"

#include "rectangle.h"

namespace tova {

const ClassIdentity Rectangles::kClass = {L"Rectangles", &CLSID_Rectangles, &IID__Rectangles, nullptr};

HRESULT createRectangles(REFIID riid, void** ppv) { return Rectangles::create(riid, ppv); }

ComPtr<IUnknown> Rectangles::identityOf(_Rectangle* r) {
    ComPtr<IUnknown> u;
    if (r) r->QueryInterface(IID_IUnknown, u.putVoid());
    return u;
}

long Rectangles::find(IUnknown* identity) const {
    for (size_t i = 0; i < list_.size(); ++i)
        if (list_[i].identity.get() == identity) return static_cast<long>(i);
    return -1;
}

_Rectangle* Rectangles::append(_Rectangle* r) {
    list_.push_back(Entry{ComPtr<_Rectangle>(r), identityOf(r)});
    return r;
}

// A position outside 1..Count is the collection's "Subscript out of range".
size_t Rectangles::checkedPosition(LONG* Index) const {
    const long i = *required(Index);
    if (i < 1 || static_cast<size_t>(i) > list_.size()) raise(kSubscriptOutOfRange);
    return static_cast<size_t>(i) - 1;
}

STDMETHODIMP Rectangles::Exists(_Rectangle* Rectangle, VARIANT_BOOL* pRet) {
    return guard([&] {
        ComPtr<IUnknown> id = identityOf(Rectangle);
        *required(pRet) = toVB(id && find(id.get()) >= 0);
    });
}

STDMETHODIMP Rectangles::Add(TOVA_RECT* pRECT, VARIANT* Tag, _Rectangle** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        TOVA_RECT edges = *required(pRECT);
        ComPtr<Rectangle> r = Rectangle::make();
        // A new rectangle has no sinks: its Changed reaches nobody.
        HRESULT hr = r->SetRectangle(&edges);
        if (SUCCEEDED(hr) && !isMissing(Tag)) hr = r->put_Tag(Tag);
        if (FAILED(hr)) throw Raised{hr};
        append(r.get())->AddRef();
        *pRet = r.get();
    });
}

STDMETHODIMP Rectangles::Add2(VARIANT* Tag, _Rectangle** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        ComPtr<Rectangle> r = Rectangle::make();
        if (!isMissing(Tag)) {
            HRESULT hr = r->put_Tag(Tag);
            if (FAILED(hr)) throw Raised{hr};
        }
        append(r.get())->AddRef();
        *pRet = r.get();
    });
}

STDMETHODIMP Rectangles::AddObject(_Rectangle* Rectangle, VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        ComPtr<IUnknown> id = identityOf(Rectangle);
        if (!id || find(id.get()) >= 0) return;
        append(Rectangle);
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP Rectangles::get_Item(LONG* Index, _Rectangle** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        _Rectangle* r = list_[checkedPosition(Index)].rectangle.get();
        if (r) r->AddRef();
        *pRet = r;
    });
}

STDMETHODIMP Rectangles::get_Count(LONG* pRet) {
    return guard([&] { *required(pRet) = static_cast<LONG>(list_.size()); });
}

STDMETHODIMP Rectangles::Remove(LONG* Index) {
    return guard([&] {
        size_t at = checkedPosition(Index);
        Entry gone = std::move(list_[at]);  // released after the list is consistent
        list_.erase(list_.begin() + static_cast<ptrdiff_t>(at));
    });
}

STDMETHODIMP Rectangles::RemoveObject(_Rectangle* Rectangle) {
    return guard([&] {
        ComPtr<IUnknown> id = identityOf(Rectangle);
        if (!id) return;
        // From the end: the last entry that is this object goes.
        for (size_t i = list_.size(); i-- > 0;) {
            if (list_[i].identity.get() != id.get()) continue;
            Entry gone = std::move(list_[i]);
            list_.erase(list_.begin() + static_cast<ptrdiff_t>(i));
            return;
        }
    });
}

STDMETHODIMP Rectangles::Clear() {
    return guard([&] {
        std::vector<Entry> gone;
        gone.swap(list_);
    });
}

}  // namespace tova
