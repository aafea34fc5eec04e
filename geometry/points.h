// Point and Points: the vertices of a polygon, edited one by one while the
// polygon hears of every change. Neither class is creatable: a polygon hands
// out its list and Points.Add makes the points.
//
// The list keeps the ordered-dictionary behaviour of the dictionary helpers
// (1-based positions, an index that is a key or a position, moves that shift
// the entries in between) on an index of its own, so that reaching a vertex
// by position or by key costs O(1) however long the polygon.
#pragma once

#include "../frame/library_frame.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace tova {

class Polygon;
class Points;

// The way back from a list and its points to their polygon. It does not keep
// the polygon alive (no reference cycle); the polygon empties it when it ends,
// so a list or point that outlives it works alone instead of calling freed memory.
struct OwnerCell {
    Polygon* polygon = nullptr;
};
using Owner = std::shared_ptr<OwnerCell>;

// A point's key: a new GUID, shown as 32 hexadecimal digits.
struct PointKey {
    uint64_t high = 0;
    uint64_t low = 0;
    bool operator==(const PointKey& o) const { return high == o.high && low == o.low; }
};

struct PointKeyHash {
    size_t operator()(const PointKey& k) const { return static_cast<size_t>(k.high ^ (k.low * 0x9E3779B97F4A7C15ull)); }
};

class Point final : public Object<Point, _Point> {
public:
    static const ClassIdentity kClass;

    // Our point behind any interface of it; null for other objects. Not counted.
    static Point* from(IUnknown* any);

    STDMETHODIMP get_Index(LONG* pRet) override;
    STDMETHODIMP put_Index(LONG* Index) override;
    STDMETHODIMP get_X(DOUBLE* pRet) override;
    STDMETHODIMP put_X(DOUBLE* X) override;
    STDMETHODIMP get_Y(DOUBLE* pRet) override;
    STDMETHODIMP put_Y(DOUBLE* Y) override;

    // ---- for the list and the polygon
    double x() const { return x_; }
    double y() const { return y_; }
    // Moves the point without telling anyone: whole-polygon operations report
    // once for all vertices.
    void place(double x, double y) { x_ = x; y_ = y; }
    const PointKey& key() const { return key_; }
    std::wstring keyText() const;
    void setOwner(Owner owner) { owner_ = std::move(owner); }
    Polygon* owner() const { return owner_ ? owner_->polygon : nullptr; }

    void* queryOther(REFIID riid);

    // Points come and go by the hundred thousand (Clone, PopState): they live
    // in slabs of their own instead of the process heap.
    static void* operator new(size_t size);
    static void* operator new(size_t size, const std::nothrow_t&) noexcept;
    static void operator delete(void* p) noexcept;

private:
    friend class Object<Point, _Point>;
    friend class Points;
    Point();
    ~Point() override;

    PointKey key_;
    double x_ = 0;
    double y_ = 0;
    Owner owner_;
    // Where the point is listed; the list holds the point and clears this
    // before it lets go.
    Points* list_ = nullptr;
    size_t position_ = 0;  // 0-based, valid while list_ is set
};

class Points final : public Object<Points, _Points> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP Add(VARIANT* BeforeIndex, DOUBLE* X, DOUBLE* Y, _Point** pRet) override;
    STDMETHODIMP get_Item(VARIANT* Index, _Point** pRet) override;
    STDMETHODIMP get_Count(LONG* pRet) override;
    STDMETHODIMP Remove(VARIANT* Index) override;
    STDMETHODIMP Clear() override;

    // ---- for the polygon and the points
    void setOwner(Owner owner) { owner_ = std::move(owner); }
    const Owner& owner() const { return owner_; }
    const std::vector<Point*>& vertices() const { return order_; }
    size_t size() const { return order_.size(); }
    // Replaces the vertices by new points at whole-number coordinates, without
    // notifying: the polygon reports the load itself.
    void load(const std::vector<POINTAPI>& set);
    // Removes every point without notifying.
    void removeAll();
    // The point an index selects (a key or a 1-based position); null if none.
    Point* select(const VARIANT& index);
    Point* find(const PointKey& key);
    // Moves the point to 1-based `position` (1..Count); false, leaving the
    // order alone, when it is not listed here or the position is out of range.
    bool move(Point* point, long position);

private:
    friend class Object<Points, _Points>;
    Points() = default;
    ~Points() override;

    Point* append(ComPtr<Point> point);
    void erase(size_t position);
    void renumber(size_t from, size_t to);
    void notifyAll();

    std::vector<Point*> order_;  // counted references, in list order
    // Key to point, built on the first lookup by key and kept up to date after.
    std::unordered_map<PointKey, Point*, PointKeyHash> byKey_;
    bool keyed_ = false;
    Owner owner_;
};

}  // namespace tova
