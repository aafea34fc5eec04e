#include "points.h"

#include "../text/dictionary.h"
#include "polygon.h"

#include <ntsecapi.h>

#include <algorithm>

namespace tova {

const ClassIdentity Point::kClass = {L"Point", &CLSID_Point, &IID__Point, nullptr};
const ClassIdentity Points::kClass = {L"Points", &CLSID_Points, &IID__Points, nullptr};

namespace {

// Asked of an object to learn whether it is one of our points; never published.
const IID kPointImplementation = {0x638dee95, 0x7b98, 0x480c, {0xb3, 0x08, 0x60, 0x26, 0xb2, 0x61, 0xbe, 0xa5}};

// New version-4 GUIDs from the system's random generator, fetched in batches:
// a polygon of 100,000 vertices is cloned in milliseconds, not one system call
// per vertex.
class KeySource {
public:
    PointKey next() {
        if (used_ == kBatch) refill();
        PointKey k = batch_[used_++];
        k.high = (k.high & ~0xF000ull) | 0x4000ull;                       // version 4
        k.low = (k.low & 0x3FFFFFFFFFFFFFFFull) | 0x8000000000000000ull;  // RFC 4122 variant
        return k;
    }

private:
    static constexpr size_t kBatch = 256;
    void refill() {
        if (!RtlGenRandom(batch_, sizeof batch_)) {
            // Never seen; a GUID from the platform keeps the keys unique all the same.
            for (PointKey& k : batch_) {
                GUID g;
                CoCreateGuid(&g);
                k.high = (uint64_t(g.Data1) << 32) | (uint64_t(g.Data2) << 16) | g.Data3;
                k.low = 0;
                for (unsigned char b : g.Data4) k.low = (k.low << 8) | b;
            }
        }
        used_ = 0;
    }
    PointKey batch_[kBatch];
    size_t used_ = kBatch;
};

thread_local KeySource keys;

int hexDigit(wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    return -1;
}

// A key as text: exactly 32 hexadecimal digits, either case (the list compares
// keys as text, ignoring case).
bool parseKey(BSTR text, PointKey& key) {
    if (SysStringLen(text) != 32) return false;
    uint64_t part[2] = {0, 0};
    for (int i = 0; i < 32; ++i) {
        int d = hexDigit(text[i]);
        if (d < 0) return false;
        part[i / 16] = (part[i / 16] << 4) | static_cast<uint64_t>(d);
    }
    key.high = part[0];
    key.low = part[1];
    return true;
}

// Rounded to a whole number (ties to even) and back: a point reports its
// previous coordinates as whole numbers even when they were fractional.
double whole(double v) { return static_cast<double>(roundToLong(v)); }

}  // namespace

// ===================================================================== Point

Point::Point() : key_(keys.next()) {}

Point::~Point() = default;

Point* Point::from(IUnknown* any) {
    if (!any) return nullptr;
    void* p = nullptr;
    if (FAILED(any->QueryInterface(kPointImplementation, &p)) || !p) return nullptr;
    Point* point = static_cast<Point*>(p);
    point->Release();  // the caller's reference keeps it alive
    return point;
}

void* Point::queryOther(REFIID riid) { return riid == kPointImplementation ? this : nullptr; }

std::wstring Point::keyText() const {
    static const wchar_t digits[] = L"0123456789ABCDEF";
    std::wstring s(32, L'0');
    for (int i = 0; i < 16; ++i) {
        s[i] = digits[(key_.high >> (60 - 4 * i)) & 0xF];
        s[16 + i] = digits[(key_.low >> (60 - 4 * i)) & 0xF];
    }
    return s;
}

STDMETHODIMP Point::get_Index(LONG* pRet) {
    return guard([&] {
        Polygon* p = owner();
        *required(pRet) = p && list_ && list_ == p->list() ? static_cast<LONG>(position_ + 1) : 0;
    });
}

STDMETHODIMP Point::put_Index(LONG* Index) {
    return guard([&] {
        long position = *required(Index);
        if (Polygon* p = owner()) p->list()->move(this, position);
    });
}

STDMETHODIMP Point::get_X(DOUBLE* pRet) { return guard([&] { *required(pRet) = x_; }); }
STDMETHODIMP Point::get_Y(DOUBLE* pRet) { return guard([&] { *required(pRet) = y_; }); }

STDMETHODIMP Point::put_X(DOUBLE* X) {
    return guard([&] {
        double v = *required(X);
        if (v == x_) return;
        double previous = x_;
        x_ = v;
        // The coordinate not assigned passes its current value as its previous one.
        if (Polygon* p = owner()) p->pointChanged(this, whole(previous), whole(y_));
    });
}

STDMETHODIMP Point::put_Y(DOUBLE* Y) {
    return guard([&] {
        double v = *required(Y);
        if (v == y_) return;
        double previous = y_;
        y_ = v;
        if (Polygon* p = owner()) p->pointChanged(this, whole(x_), whole(previous));
    });
}

// ==================================================================== Points

Points::~Points() { removeAll(); }

Point* Points::append(ComPtr<Point> point) {
    Point* p = point.detach();
    p->list_ = this;
    p->position_ = order_.size();
    order_.push_back(p);
    if (keyed_) byKey_.emplace(p->key_, p);
    return p;
}

void Points::renumber(size_t from, size_t to) {
    for (size_t i = from; i < to; ++i) order_[i]->position_ = i;
}

void Points::erase(size_t position) {
    Point* p = order_[position];
    order_.erase(order_.begin() + static_cast<ptrdiff_t>(position));
    renumber(position, order_.size());
    if (keyed_) byKey_.erase(p->key_);
    p->list_ = nullptr;  // it keeps its owner: it still reports to the polygon
    p->Release();
}

void Points::removeAll() {
    std::vector<Point*> gone;
    gone.swap(order_);
    byKey_.clear();
    keyed_ = false;
    for (Point* p : gone) p->list_ = nullptr;
    // Released last: a point's end may run client code through its owner's sinks.
    for (Point* p : gone) p->Release();
}

void Points::notifyAll() {
    if (Polygon* p = owner_ ? owner_->polygon : nullptr) p->allChanged();
}

Point* Points::find(const PointKey& key) {
    if (!keyed_) {
        byKey_.reserve(order_.size());
        for (Point* p : order_) byKey_.emplace(p->key_, p);
        keyed_ = true;
    }
    auto it = byKey_.find(key);
    return it == byKey_.end() ? nullptr : it->second;
}

Point* Points::select(const VARIANT& index) {
    dictionary::Selector s = dictionary::select(index);
    PointKey key;
    if (s.kind == dictionary::Selector::kKey) return parseKey(s.key, key) ? find(key) : nullptr;
    if (s.kind == dictionary::Selector::kPosition && s.position >= 1 &&
        static_cast<size_t>(s.position) <= order_.size())
        return order_[static_cast<size_t>(s.position) - 1];
    return nullptr;
}

bool Points::move(Point* point, long position) {
    if (!point || point->list_ != this || position < 1 || static_cast<size_t>(position) > order_.size()) return false;
    const size_t from = point->position_, to = static_cast<size_t>(position) - 1;
    auto at = order_.begin();
    if (from < to)
        std::rotate(at + static_cast<ptrdiff_t>(from), at + static_cast<ptrdiff_t>(from) + 1,
                    at + static_cast<ptrdiff_t>(to) + 1);
    else if (to < from)
        std::rotate(at + static_cast<ptrdiff_t>(to), at + static_cast<ptrdiff_t>(from),
                    at + static_cast<ptrdiff_t>(from) + 1);
    renumber(std::min(from, to), std::max(from, to) + 1);
    return true;
}

void Points::load(const std::vector<POINTAPI>& set) {
    removeAll();
    order_.reserve(set.size());
    for (const POINTAPI& v : set) {
        ComPtr<Point> p = Point::make();
        p->place(v.X, v.Y);
        p->owner_ = owner_;
        append(std::move(p));
    }
}

STDMETHODIMP Points::Add(VARIANT* BeforeIndex, DOUBLE* X, DOUBLE* Y, _Point** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        ComPtr<Point> made = Point::make();
        // Placed before it has an owner: adding never notifies.
        made->place(X ? *X : 0.0, Y ? *Y : 0.0);
        made->owner_ = owner_;
        Point* p = append(made);
        if (!isMissing(BeforeIndex)) {
            // A key gives that point's position, anything else is read as a
            // position; the new point takes it and the one there follows it.
            Point* there = select(*BeforeIndex);
            if (there) move(p, static_cast<long>(there->position_ + 1));
        }
        p->AddRef();
        *pRet = p;
    });
}

STDMETHODIMP Points::get_Item(VARIANT* Index, _Point** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        if (Point* p = select(*required(Index))) {
            p->AddRef();
            *pRet = p;
        }
    });
}

STDMETHODIMP Points::get_Count(LONG* pRet) {
    return guard([&] { *required(pRet) = static_cast<LONG>(order_.size()); });
}

STDMETHODIMP Points::Remove(VARIANT* Index) {
    return guard([&] {
        IUnknown* object = nullptr;
        if (Index && dictionary::objectOf(*Index, object)) {
            // A point is removed by its key; Nothing or another object removes nothing.
            Point* p = Point::from(object);
            if (p && p->list_ == this) erase(p->position_);
        } else if (Index) {
            if (Point* p = select(*Index)) erase(p->position_);
        }
        // Reported even when nothing was removed.
        notifyAll();
    });
}

STDMETHODIMP Points::Clear() {
    return guard([&] {
        removeAll();
        notifyAll();
    });
}

}  // namespace tova
