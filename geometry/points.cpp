#include "points.h"

#include "../text/dictionary.h"
#include "polygon.h"

#include <ntsecapi.h>

#include <algorithm>
#include <atomic>

namespace tova {

const ClassIdentity Point::kClass = {L"Point", &CLSID_Point, &IID__Point, nullptr};
const ClassIdentity Points::kClass = {L"Points", &CLSID_Points, &IID__Points, nullptr};

namespace {

// Asked of an object to learn whether it is one of our points; never published.
const IID kPointImplementation = {0x638dee95, 0x7b98, 0x480c, {0xb3, 0x08, 0x60, 0x26, 0xb2, 0x61, 0xbe, 0xa5}};

// New version-4 GUIDs. The system's random generator costs a system call per
// batch of 16 bytes or so here; a per-thread xoshiro256** generator seeded from
// it draws a key in nanoseconds, so a polygon of 100,000 vertices is cloned
// in milliseconds, and 256 bits of state keep the keys apart.
class KeySource {
public:
    KeySource() {
        if (!RtlGenRandom(state_, sizeof state_)) {
            // Never seen; platform GUIDs seed the generator all the same.
            for (int i = 0; i < 4; i += 2) {
                GUID g;
                CoCreateGuid(&g);
                state_[i] = (uint64_t(g.Data1) << 32) | (uint64_t(g.Data2) << 16) | g.Data3;
                state_[i + 1] = 0;
                for (unsigned char b : g.Data4) state_[i + 1] = (state_[i + 1] << 8) | b;
            }
        }
        if (!(state_[0] | state_[1] | state_[2] | state_[3])) state_[0] = 1;
    }
    PointKey next() {
        PointKey k{draw(), draw()};
        k.high = (k.high & ~0xF000ull) | 0x4000ull;                       // version 4
        k.low = (k.low & 0x3FFFFFFFFFFFFFFFull) | 0x8000000000000000ull;  // RFC 4122 variant
        return k;
    }

private:
    static uint64_t rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    uint64_t draw() {
        uint64_t* s = state_;
        const uint64_t result = rotl(s[1] * 5, 7) * 9, t = s[1] << 17;
        s[2] ^= s[0];
        s[3] ^= s[1];
        s[1] ^= s[2];
        s[0] ^= s[3];
        s[2] ^= t;
        s[3] = rotl(s[3], 45);
        return result;
    }
    uint64_t state_[4];
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

// Fixed-size blocks for points, carved from slabs of 1,024. A freed block is
// reused by the next point; like the heap's own free lists, the slabs stay
// until the library unloads (a polygon popped or cloned again reuses them
// instead of paying for fresh pages). The heap here costs a microsecond a block.
class PointPool {
    // Points live in single-threaded apartments, so the lock is almost never
    // contended: a spin on one atomic flag costs a fraction of the platform's
    // slim reader/writer lock, which under Wine took half of a point's cost.
    class Guard {
    public:
        explicit Guard(std::atomic<bool>& busy) : busy_(busy) {
            while (busy_.exchange(true, std::memory_order_acquire))
                while (busy_.load(std::memory_order_relaxed)) YieldProcessor();
        }
        ~Guard() { busy_.store(false, std::memory_order_release); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        std::atomic<bool>& busy_;
    };

public:
    void* take(size_t size) {
        if (size > kBlock) return nullptr;
        Guard g(busy_);
        if (!free_) grow();
        Block* b = free_;
        if (b) free_ = b->next;
        return b;
    }
    void give(void* p) {
        if (!p) return;
        Guard g(busy_);
        Block* b = static_cast<Block*>(p);
        b->next = free_;
        free_ = b;
    }
    ~PointPool() {
        for (void* slab : slabs_) ::operator delete(slab);
    }

private:
    static constexpr size_t kBlock = 176;
    static constexpr size_t kPerSlab = 1024;
    union Block {
        Block* next;
        alignas(16) unsigned char bytes[kBlock];
    };
    void grow() {
        Block* slab = static_cast<Block*>(::operator new(sizeof(Block) * kPerSlab, std::nothrow));
        if (!slab) return;
        try {
            slabs_.push_back(slab);
        } catch (...) {
            ::operator delete(slab);
            return;
        }
        for (size_t i = kPerSlab; i-- > 0;) {
            slab[i].next = free_;
            free_ = &slab[i];
        }
    }
    std::atomic<bool> busy_{false};
    Block* free_ = nullptr;
    std::vector<void*> slabs_;
};

PointPool pool;

}  // namespace

static_assert(sizeof(Point) <= 176, "a point fits its pool block");

namespace {

// Rounded to a whole number (ties to even) and back: a point reports its
// previous coordinates as whole numbers even when they were fractional.
double whole(double v) { return static_cast<double>(roundToLong(v)); }

}  // namespace

// ===================================================================== Point

Point::Point() : key_(keys.next()) {}

void* Point::operator new(size_t size) {
    void* p = pool.take(size);
    if (!p) throw std::bad_alloc();
    return p;
}

void* Point::operator new(size_t size, const std::nothrow_t&) noexcept { return pool.take(size); }

void Point::operator delete(void* p) noexcept { pool.give(p); }

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
