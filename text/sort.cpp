// Sorting of arrays held in Variants, in place.
//
// The three sorts run their loops step for step as the library always has,
// bounds handling included: every element access is checked, and an index the
// array does not have raises 9 exactly where the loops reach it. The quicksort's
// pivot and exchange temporary are text, so an element that passes through the
// temporary comes back as text (arrays of Variants) or is converted back to the
// element type (typed arrays).
//
// For speed the array is locked once and its data indexed directly, Variants
// are moved by their bits rather than copied, same-typed Longs, Doubles and
// Strings compare inline, and Longs and Doubles are turned into text (and that
// text back into numbers) by our own code wherever that gives exactly what the
// runtime gives (text/number_text). The quicksort of an array of Variants
// holding only numbers runs apart, in the array's own memory (text/number_sort).

#include "sort.h"

#include "number_sort.h"
#include "number_text.h"
#include "sort_parts.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace tova {
namespace sorting {
namespace {

// -------------------------------------------------------------------- elements

size_t elementSize(VARTYPE vt) {
    switch (vt) {
    case VT_DECIMAL: return sizeof(DECIMAL);
    case VT_VARIANT: return sizeof(VARIANT);
    default: return scalarBytes(vt);
    }
}

// A typed element seen as a Variant, without owning what it refers to.
VARIANT viewOf(VARTYPE vt, const void* p) {
    if (vt == VT_VARIANT) return *static_cast<const VARIANT*>(p);
    VARIANT v;
    VariantInit(&v);
    if (vt == VT_DECIMAL) {
        std::memcpy(&V_DECIMAL(&v), p, sizeof(DECIMAL));
    } else {
        const size_t size = elementSize(vt);
        if (!size) raise(kTypeMismatch);  // records: no value a comparison could use
        std::memcpy(&V_UI1(&v), p, size);
    }
    V_VT(&v) = vt;
    return v;
}

// element = value, as the runtime assigns: a copy, converted to the element type.
void writeElement(VARTYPE vt, void* p, const VARIANT& value) {
    Variant copy;
    if (vt == VT_VARIANT) {
        const HRESULT hr = VariantCopy(&copy, const_cast<VARIANT*>(&value));
        if (FAILED(hr)) raiseFailed(hr);
        VariantClear(static_cast<VARIANT*>(p));
        copy.detachTo(static_cast<VARIANT*>(p));
        return;
    }
    VARIANT scratch;
    const VARIANT& v = dereferenced(value, scratch);
    HRESULT hr;
    if (V_VT(&v) == vt) {
        hr = VariantCopy(&copy, const_cast<VARIANT*>(&v));
    } else {
        if (V_VT(&v) == VT_NULL) raise(kInvalidUseOfNull);
        hr = VariantChangeTypeEx(&copy, const_cast<VARIANT*>(&v), kLocale, 0, vt);
    }
    if (FAILED(hr)) raiseFailed(hr);
    VARIANT old = viewOf(vt, p);
    VariantClear(&old);  // a string freed, an object released
    if (vt == VT_DECIMAL) {
        DECIMAL d = V_DECIMAL(&copy);
        d.wReserved = 0;
        std::memcpy(p, &d, sizeof d);
    } else {
        std::memcpy(p, &V_UI1(&copy), elementSize(vt));
    }
    V_VT(&copy) = VT_EMPTY;  // what it held now belongs to the element
}

// A copy of an element as a Variant.
void readElement(VARTYPE vt, const void* p, Variant& out) {
    VARIANT e = viewOf(vt, p);
    const HRESULT hr = VariantCopy(out.put(), &e);
    if (FAILED(hr)) raiseFailed(hr);
}

// The elements reachable by one index: all of a one-dimensional array, none of
// any other (a single index fails on those).
template <class T>
struct Elements {
    T* base;
    int64_t lb;
    uint64_t count;

    T& at(int64_t index) const {
        const uint64_t k = static_cast<uint64_t>(index - lb);
        if (k >= count) raiseIndex(index);
        return base[k];
    }
};

// Texts compare mostly on a key of their first eight code units, kept for each
// element in a parallel array that moves with the elements: the strings
// themselves, scattered over the heap, are read only when two keys agree. The
// key packs a unit per byte, zero-padded (a text that ends first is the
// smaller); a unit of 0xFF or more is packed as 0xFF and ends the key, so that
// keys that differ always order as their texts do.
inline uint64_t prefixOf(const OLECHAR* s, UINT n) {
    uint64_t k = 0;
    UINT i = 0;
    for (; i < 8 && i < n; ++i) {
        if (s[i] >= 0xFF) {  // 0xFF stands for every unit from there up; what follows is unknown
            k = (k << 8) | 0xFF;
            ++i;
            break;
        }
        k = (k << 8) | s[i];
    }
    return i < 8 ? k << (8 * (8 - i)) : k;
}
inline uint64_t prefixOf(BSTR s) { return prefixOf(s, textLength(s)); }

inline int comparePrefixed(uint64_t ka, BSTR a, uint64_t kb, BSTR b) {
    if (ka != kb) return ka < kb ? kLT : kGT;
    return compareTexts(a, b);
}

// --------------------------------------------------------------------- pivots

// The quicksort's pivot: an element's text, its key, and the number that text
// reads as. A string element's text is read only when needed: most partitions
// are small, and the string is elsewhere on the heap.
class Pivot {
public:
    explicit Pivot(const Numbers& nums) : nums_(nums) {}
    ~Pivot() {
        if (owned_) SysFreeString(owned_);
    }
    Pivot(const Pivot&) = delete;
    Pivot& operator=(const Pivot&) = delete;

    // Text of a string element: exchanges move that string but never free it.
    void borrow(BSTR s, uint64_t key) {
        text_ = s ? s : L"";
        bstr_ = s;
        key_ = key;
        measured_ = false;
    }
    void borrow(BSTR s) {
        borrow(s, 0);
        key_ = prefixOf(text_, length());
    }
    void own(BSTR s) {
        owned_ = s;
        borrow(s);
    }
    // Text written into buffer().
    wchar_t* buffer() { return buf_; }
    void buffered(UINT n) {
        buf_[n] = 0;
        text_ = buf_;
        length_ = n;
        key_ = prefixOf(text_, length_);
    }
    void knownNumber(double v) {
        state_ = kNumber;
        number_ = v;
    }
    void knownNoNumber() { state_ = kNoNumber; }

    const wchar_t* text() const { return text_; }
    UINT length() {
        if (!measured_) {
            length_ = textLength(bstr_);
            measured_ = true;
        }
        return length_;
    }
    uint64_t key() const { return key_; }
    // An element's text against the pivot's.
    int against(uint64_t key, BSTR s) {
        if (key != key_) return key < key_ ? kLT : kGT;
        // The scan from below meets the pivot's own element in every
        // partition: no need to fetch that string from the heap.
        if (s == bstr_ && s) return kEQ;
        return compareTexts(s, textLength(s), text_, length());
    }
    bool number(double& v) {
        if (state_ == kUnknown) state_ = numberOfText(text_, length(), nums_, number_) ? kNumber : kNoNumber;
        v = number_;
        return state_ == kNumber;
    }
    // The text as a String Variant, for the runtime's own comparison.
    const VARIANT& variant() {
        if (!bstr_) bstr_ = owned_ = newText(text_, length());
        VariantInit(&var_);
        V_VT(&var_) = VT_BSTR;
        V_BSTR(&var_) = bstr_;
        return var_;
    }

private:
    enum State { kUnknown, kNumber, kNoNumber };
    const Numbers& nums_;
    const wchar_t* text_ = L"";
    UINT length_ = 0;
    bool measured_ = true;
    BSTR bstr_ = nullptr;
    BSTR owned_ = nullptr;
    State state_ = kUnknown;
    double number_ = 0;
    uint64_t key_ = 0;
    wchar_t buf_[48];
    VARIANT var_;
};

// An element (a Variant) against the text pivot.
inline int againstPivot(const VARIANT& e, Pivot& p) {
    double n;
    switch (V_VT(&e)) {
    case VT_BSTR: return p.against(prefixOf(V_BSTR(&e)), V_BSTR(&e));
    case VT_I4: return p.number(n) ? compareNumbers(V_I4(&e), n) : kLT;
    case VT_R8: return p.number(n) ? compareNumbers(V_R8(&e), n) : kLT;
    default: return detail::compareOther(e, p.variant());
    }
}

// The pivot of a typed array of numbers: only the number its text reads as matters.
struct NumberPivot {
    explicit NumberPivot(const Numbers&) {}
    bool isNumber = false;
    double value = 0;
    int against(double e) const { return isNumber ? compareNumbers(e, value) : kLT; }
};

// ------------------------------------------------------------------------ ops
//
// What the sorts do to elements, per kind of array. Shell sort: take(i) holds
// element i (for moving kinds its slot is then a hole that shift() and put()
// refill), abandon() puts the array back as a copying sort leaves it when an
// error cuts an insertion short (the element being inserted lost, its last
// shifted neighbour doubled). Quicksort: exchange(i, j) is
// "t = text(a(i)): a(i) = a(j): a(j) = t", place(i, j, hi) is
// "t = text(a(j)): a(j) = a(i): a(i) = a(hi): a(hi) = t".

// Arrays of Variants: values move by their bits.
struct VariantOps {
    Elements<VARIANT> a;
    const Numbers& nums;
    uint64_t* keys;  // prefixes of the String elements, or null

    uint64_t& key(int64_t k) const { return keys[k - a.lb]; }

    struct Held {
        VARIANT v;
        uint64_t key;
    };
    Held take(int64_t i) const {
        const VARIANT& e = a.at(i);
        return {e, keys ? key(i) : 0};
    }
    int compareHeld(int64_t k, const Held& h) const {
        const VARIANT& e = a.at(k);
        if (keys && V_VT(&e) == VT_BSTR && V_VT(&h.v) == VT_BSTR)
            return comparePrefixed(key(k), V_BSTR(&e), h.key, V_BSTR(&h.v));
        return compare(e, h.v);
    }
    void shift(int64_t to, int64_t from) const {
        a.at(to) = a.at(from);
        if (keys) key(to) = key(from);
    }
    void put(int64_t j, const Held& h) const {
        a.at(j) = h.v;
        if (keys) key(j) = h.key;
    }
    void abandon(int64_t hole, int64_t i, int64_t h, Held& held) const noexcept {
        if (hole == i) return;  // the held value is still element i's own
        VARIANT& dst = a.base[hole - a.lb];
        VariantInit(&dst);  // its bits live on, one gap up
        if (FAILED(VariantCopy(&dst, &a.base[hole + h - a.lb]))) VariantInit(&dst);
        VariantClear(&held.v);
    }
    void compareSelf(int64_t i) const {
        const VARIANT& e = a.at(i);
        if (V_VT(&e) != VT_I4 && V_VT(&e) != VT_R8 && V_VT(&e) != VT_BSTR) compare(e, e);
    }

    using Pivot = sorting::Pivot;
    void pivotOf(int64_t k, Pivot& p) const {
        const VARIANT& e = a.at(k);
        switch (V_VT(&e)) {
        case VT_BSTR:
            if (keys) p.borrow(V_BSTR(&e), key(k)); else p.borrow(V_BSTR(&e));
            return;
        case VT_I4:
            if (nums.ownLong) {
                p.buffered(formatLong(V_I4(&e), p.buffer()));
                p.knownNumber(V_I4(&e));
                return;
            }
            break;
        case VT_R8: {
            const double x = V_R8(&e);
            uint64_t q;
            int d;
            if (nums.ownText && nums.ownRead && x != 0 && significantDigits(x, q, d)) {
                p.buffered(formatDigits(q, d, x < 0, nums.sep, p.buffer()));
                p.knownNumber(readBack(q, d, x < 0, nums));
                return;
            }
            break;
        }
        default:
            break;
        }
        p.own(textOf(e, nums));
    }
    int againstPivot(int64_t k, Pivot& p) const {
        const VARIANT& e = a.at(k);
        if (V_VT(&e) == VT_BSTR && keys) return p.against(key(k), V_BSTR(&e));
        return sorting::againstPivot(e, p);
    }

    // The text of element k and its key, leaving the element with nothing of
    // its own (it is overwritten next).
    struct Text {
        BSTR s;
        uint64_t key;
    };
    Text takeText(int64_t k) const {
        VARIANT& e = a.at(k);
        BSTR s;
        switch (V_VT(&e)) {
        case VT_BSTR: return {V_BSTR(&e), keys ? key(k) : 0};
        case VT_I4: s = textOfLong(V_I4(&e), nums); break;
        case VT_R8: s = textOfDouble(V_R8(&e), nums); break;
        default:
            s = textOf(e, nums);
            VariantClear(&e);
            break;
        }
        return {s, keys ? prefixOf(s) : 0};  // a new string, still in cache
    }
    void store(int64_t k, const Text& t) const {
        VARIANT& e = a.at(k);
        V_VT(&e) = VT_BSTR;
        V_BSTR(&e) = t.s;
        if (keys) key(k) = t.key;
    }
    void exchange(int64_t i, int64_t j) const {
        a.at(j);
        const Text t = takeText(i);
        if (i != j) shift(i, j);
        store(j, t);
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        a.at(i);
        a.at(hi);
        const Text t = takeText(j);
        if (j != i) shift(j, i);
        if (i != hi) shift(i, hi);
        store(hi, t);
    }
};

// Typed arrays of Longs: a Long's text reads back as the same Long, so
// exchanges just move values.
struct LongOps {
    Elements<LONG> a;
    const Numbers& nums;

    using Held = LONG;
    LONG take(int64_t i) const { return a.at(i); }
    int compareHeld(int64_t k, LONG v) const { return compareLongs(a.at(k), v); }
    void shift(int64_t to, int64_t from) const { a.at(to) = a.at(from); }
    void put(int64_t j, LONG v) const { a.at(j) = v; }
    void abandon(int64_t, int64_t, int64_t, LONG) const noexcept {}
    void compareSelf(int64_t i) const { a.at(i); }

    using Pivot = NumberPivot;
    void pivotOf(int64_t k, Pivot& p) const {
        const LONG v = a.at(k);
        if (nums.ownLong) {
            p.isNumber = true;
            p.value = v;
        } else {
            Bstr t = Bstr::attach(textOfLong(v, nums));
            p.isNumber = numberOfText(t.get(), t.length(), nums, p.value);
        }
    }
    int againstPivot(int64_t k, const Pivot& p) const { return p.against(a.at(k)); }

    // The Long that text(v) is stored back as.
    LONG back(BSTR text) const {
        LONG r;
        const HRESULT hr = VarI4FromStr(text, kLocale, 0, &r);
        if (FAILED(hr)) raiseFailed(hr);
        return r;
    }
    void exchange(int64_t i, int64_t j) const {
        LONG& ei = a.at(i);
        LONG& ej = a.at(j);
        if (nums.ownLong) {
            const LONG t = ei;
            ei = ej;
            ej = t;
            return;
        }
        Bstr t = Bstr::attach(textOfLong(ei, nums));
        ei = ej;
        ej = back(t.get());
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        LONG& ej = a.at(j);
        LONG& ei = a.at(i);
        LONG& eh = a.at(hi);
        if (nums.ownLong) {
            const LONG t = ej;
            ej = ei;
            ei = eh;
            eh = t;
            return;
        }
        Bstr t = Bstr::attach(textOfLong(ej, nums));
        ej = ei;
        ei = eh;
        eh = back(t.get());
    }
};

// Typed arrays of Doubles: what passes through the text temporary comes back
// rounded to the 15 digits of its text.
struct DoubleOps {
    Elements<double> a;
    const Numbers& nums;

    using Held = double;
    double take(int64_t i) const { return a.at(i); }
    int compareHeld(int64_t k, double v) const { return compareNumbers(a.at(k), v); }
    void shift(int64_t to, int64_t from) const { a.at(to) = a.at(from); }
    void put(int64_t j, double v) const { a.at(j) = v; }
    void abandon(int64_t, int64_t, int64_t, double) const noexcept {}
    void compareSelf(int64_t i) const { a.at(i); }

    using Pivot = NumberPivot;
    void pivotOf(int64_t k, Pivot& p) const { p.isNumber = throughText(a.at(k), nums, p.value); }
    int againstPivot(int64_t k, const Pivot& p) const { return p.against(a.at(k)); }

    void exchange(int64_t i, int64_t j) const {
        double& ei = a.at(i);
        double& ej = a.at(j);
        double t;
        const bool number = throughText(ei, nums, t);
        ei = ej;
        if (!number) raise(kTypeMismatch);  // a text that is no number does not go into a Double
        ej = t;
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        double& ej = a.at(j);
        double& ei = a.at(i);
        double& eh = a.at(hi);
        double t;
        const bool number = throughText(ej, nums, t);
        ej = ei;
        ei = eh;
        if (!number) raise(kTypeMismatch);
        eh = t;
    }
};

// Typed arrays of Strings: a string's text is itself, so exchanges move pointers.
struct StringOps {
    Elements<BSTR> a;
    const Numbers& nums;
    uint64_t* keys;  // prefixes, or null

    uint64_t& key(int64_t k) const { return keys[k - a.lb]; }

    struct Held {
        BSTR s;
        uint64_t key;
    };
    Held take(int64_t i) const { return {a.at(i), keys ? key(i) : 0}; }
    int compareHeld(int64_t k, const Held& h) const {
        BSTR e = a.at(k);
        if (keys) return comparePrefixed(key(k), e, h.key, h.s);
        return compareTexts(e, h.s);
    }
    void shift(int64_t to, int64_t from) const {
        a.at(to) = a.at(from);
        if (keys) key(to) = key(from);
    }
    void put(int64_t j, const Held& h) const {
        a.at(j) = h.s;
        if (keys) key(j) = h.key;
    }
    void abandon(int64_t hole, int64_t i, int64_t h, Held& held) const noexcept {
        if (hole == i) return;
        BSTR up = a.base[hole + h - a.lb];
        a.base[hole - a.lb] = up ? SysAllocStringLen(up, textLength(up)) : nullptr;
        SysFreeString(held.s);
    }
    void compareSelf(int64_t i) const { a.at(i); }

    using Pivot = sorting::Pivot;
    void pivotOf(int64_t k, Pivot& p) const {
        if (keys) p.borrow(a.at(k), key(k)); else p.borrow(a.at(k));
    }
    int againstPivot(int64_t k, Pivot& p) const {
        BSTR e = a.at(k);
        return p.against(keys ? key(k) : prefixOf(e), e);
    }
    void exchange(int64_t i, int64_t j) const {
        a.at(i);
        a.at(j);
        if (i == j) return;
        const Held t = take(i);
        shift(i, j);
        put(j, t);
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        a.at(i);
        a.at(hi);
        const Held t = take(j);
        if (j != i) shift(j, i);
        if (i != hi) shift(i, hi);
        put(hi, t);
    }
};

// Any other typed array: each step copies and converts as the runtime assigns.
struct GenericOps {
    BYTE* base;
    int64_t lb;
    uint64_t count;
    VARTYPE vt;
    size_t size;
    const Numbers& nums;

    void* at(int64_t index) const {
        const uint64_t k = static_cast<uint64_t>(index - lb);
        if (k >= count) raiseIndex(index);
        return base + k * size;
    }
    VARIANT view(int64_t k) const { return viewOf(vt, at(k)); }

    using Held = Variant;
    Variant take(int64_t i) const {
        Variant v;
        readElement(vt, at(i), v);
        return v;
    }
    int compareHeld(int64_t k, const Variant& v) const { return compare(view(k), v); }
    void shift(int64_t to, int64_t from) const {
        const VARIANT e = view(from);
        writeElement(vt, at(to), e);
    }
    void put(int64_t j, const Variant& v) const { writeElement(vt, at(j), v); }
    void abandon(int64_t, int64_t, int64_t, const Variant&) const noexcept {}
    void compareSelf(int64_t i) const {
        const VARIANT e = view(i);
        compare(e, e);
    }

    using Pivot = sorting::Pivot;
    void pivotOf(int64_t k, Pivot& p) const { p.own(textOf(view(k), nums)); }
    int againstPivot(int64_t k, Pivot& p) const { return sorting::againstPivot(view(k), p); }

    void storeText(int64_t k, BSTR t) const {
        VARIANT v;
        VariantInit(&v);
        V_VT(&v) = VT_BSTR;
        V_BSTR(&v) = t;
        writeElement(vt, at(k), v);
    }
    void exchange(int64_t i, int64_t j) const {
        Bstr t = Bstr::attach(textOf(view(i), nums));
        shift(i, j);
        storeText(j, t.get());
    }
    void place(int64_t i, int64_t j, int64_t hi) const {
        Bstr t = Bstr::attach(textOf(view(j), nums));
        shift(j, i);
        shift(i, hi);
        storeText(hi, t.get());
    }
};

// ------------------------------------------------------------------ the sorts

// The Shell sort's gap runs up from lb (h = 3h + 1 until it passes ub) and back
// down (h = h / 3 rounded to nearest, never a half), ending when it is lb again.
inline int64_t firstGap(int64_t lb, int64_t ub) {
    int64_t h = lb;
    do {
        h = checkedLong(3 * h + 1);  // a negative lb only ever goes down: overflow
    } while (h <= ub);
    return h;
}

template <class Ops>
void shellPasses(const Ops& ops, int64_t lb, int64_t ub) {
    int64_t h = firstGap(lb, ub);
    do {
        h = (h + 1) / 3;
        const int64_t start = checkedLong(lb + h);
        if (h == 0) {
            // Each element compared with itself: nothing moves, but what cannot
            // be compared still fails here.
            for (int64_t i = start; i <= ub; ++i) ops.compareSelf(i);
            continue;
        }
        int64_t i = start, j = 0;
        bool holding = false;
        typename Ops::Held v{};
        try {
            for (; i <= ub; ++i) {
                v = ops.take(i);
                holding = true;
                j = i;
                while (ops.compareHeld(j - h, v) == kGT) {
                    ops.shift(j, j - h);
                    j -= h;
                    if (j < h) break;  // the guard is j against h, not j - h against lb
                }
                ops.put(j, v);
                holding = false;
            }
        } catch (...) {
            if (holding) ops.abandon(j, i, h, v);
            throw;
        }
    } while (h != lb);
}

// Shell sort of a zero-based array whose elements are all Longs, all Doubles
// or all Strings: no comparison can fail and no index can leave the array, so
// the passes run over a compact copy of what the comparisons need (with each
// element's starting index), and the elements are put in the resulting order
// afterwards, each moved once. Same comparisons, same result, far less memory
// traffic than moving 16- or 24-byte Variants through the gaps.
template <class Entry, class Compare>
struct ProxyOps {
    Entry* p;
    Compare cmp;

    using Held = Entry;
    Entry take(int64_t i) const { return p[i]; }
    int compareHeld(int64_t k, const Entry& v) const { return cmp(p[k], v); }
    void shift(int64_t to, int64_t from) const { p[to] = p[from]; }
    void put(int64_t j, const Entry& v) const { p[j] = v; }
    void abandon(int64_t, int64_t, int64_t, const Entry&) const noexcept {}
    void compareSelf(int64_t) const {}
};
template <class Entry, class Compare>
ProxyOps<Entry, Compare> proxyOps(Entry* p, Compare cmp) {
    return {p, cmp};
}

template <class T>
std::unique_ptr<T[]> spare(uint64_t n) {
    return std::unique_ptr<T[]>(new (std::nothrow) T[static_cast<size_t>(n)]);
}

// Position k takes the Variant that was at order[k]: each cycle followed once.
void applyOrder(VARIANT* v, uint32_t* order, uint64_t n) {
    for (uint64_t start = 0; start < n; ++start) {
        if (order[start] == start) continue;
        const VARIANT first = v[start];
        uint64_t k = start;
        for (;;) {
            const uint64_t from = order[k];
            order[k] = static_cast<uint32_t>(k);
            if (from == start) {
                v[k] = first;
                break;
            }
            v[k] = v[from];
            k = from;
        }
    }
}

template <class Entry, class Compare>
void shellOverProxies(Entry* p, uint64_t n, Compare cmp) {
    shellPasses(proxyOps(p, cmp), 0, static_cast<int64_t>(n) - 1);
}

struct NumberEntry {
    double value;
    uint32_t index;
};
struct KeyEntry {
    uint64_t key;
    uint32_t index;
};
struct TextEntry {
    uint64_t key;
    BSTR text;
};

// False when the array is not of that kind (or memory is short): then the
// sort runs directly on the elements.
bool shellByProxy(BYTE* data, VARTYPE vt, uint64_t n) {
    if (n < 2 || n > UINT32_MAX) return false;
    if (vt == VT_BSTR) {
        BSTR* s = reinterpret_cast<BSTR*>(data);
        auto p = spare<TextEntry>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = {prefixOf(s[k]), s[k]};
        shellOverProxies(p.get(), n, [](const TextEntry& a, const TextEntry& b) {
            return comparePrefixed(a.key, a.text, b.key, b.text);
        });
        for (uint64_t k = 0; k < n; ++k) s[k] = p[k].text;
        return true;
    }
    if (vt != VT_VARIANT) return false;
    VARIANT* v = reinterpret_cast<VARIANT*>(data);
    const VARTYPE kind = V_VT(&v[0]);
    if (kind != VT_I4 && kind != VT_R8 && kind != VT_BSTR) return false;
    for (uint64_t k = 1; k < n; ++k)
        if (V_VT(&v[k]) != kind) return false;
    auto order = spare<uint32_t>(n);
    if (!order) return false;
    if (kind == VT_I4) {
        // The value, made unsigned-ordered, over the index.
        auto p = spare<uint64_t>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = (uint64_t(uint32_t(V_I4(&v[k])) ^ 0x80000000u) << 32) | k;
        shellOverProxies(p.get(), n, [](uint64_t a, uint64_t b) {
            return (a >> 32) == (b >> 32) ? kEQ : (a >> 32) < (b >> 32) ? kLT : kGT;
        });
        for (uint64_t k = 0; k < n; ++k) order[k] = static_cast<uint32_t>(p[k]);
    } else if (kind == VT_R8) {
        auto p = spare<NumberEntry>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = {V_R8(&v[k]), static_cast<uint32_t>(k)};
        shellOverProxies(p.get(), n,
                         [](const NumberEntry& a, const NumberEntry& b) { return compareNumbers(a.value, b.value); });
        for (uint64_t k = 0; k < n; ++k) order[k] = p[k].index;
    } else {
        auto p = spare<KeyEntry>(n);
        if (!p) return false;
        for (uint64_t k = 0; k < n; ++k) p[k] = {prefixOf(V_BSTR(&v[k])), static_cast<uint32_t>(k)};
        shellOverProxies(p.get(), n, [v](const KeyEntry& a, const KeyEntry& b) {
            if (a.key != b.key) return a.key < b.key ? kLT : kGT;
            return compareTexts(V_BSTR(&v[a.index]), V_BSTR(&v[b.index]));
        });
        for (uint64_t k = 0; k < n; ++k) order[k] = p[k].index;
    }
    applyOrder(v, order.get(), n);
    return true;
}

template <class Ops>
void quickPasses(const Ops& ops, int64_t lo, int64_t hi, Direction& direction) {
    quickRanges(lo, hi, [&](int64_t lo, int64_t hi) {
        typename Ops::Pivot pivot(ops.nums);
        ops.pivotOf(hi, pivot);
        const bool descending = direction.descending();
        int64_t i = checkedLong(lo - 1), j = hi;
        // Both sides of "j = lo Or ..." are evaluated: no short circuit.
        if (!descending) {
            do {
                do ++i; while (!atLeast(ops.againstPivot(i, pivot)));
                do --j; while (!(atMost(ops.againstPivot(j, pivot)) | (j == lo)));
                ops.exchange(i, j);
            } while (j > i);
        } else {
            do {
                do ++i; while (!atMost(ops.againstPivot(i, pivot)));
                do --j; while (!(atLeast(ops.againstPivot(j, pivot)) | (j == lo)));
                ops.exchange(i, j);
            } while (j > i);
        }
        ops.place(i, j, hi);
        return i;
    });
}

// --------------------------------------------------------------- the arrays

// The caller's array, however the Variant holds it; null when it holds none.
SAFEARRAY* arrayOf(VARIANT* v, VARTYPE& vt) {
    for (int depth = 0; v && V_VT(v) == (VT_BYREF | VT_VARIANT) && depth < 16; ++depth) v = V_VARIANTREF(v);
    if (!v || !(V_VT(v) & VT_ARRAY)) return nullptr;
    vt = V_VT(v) & VT_TYPEMASK;
    SAFEARRAY* psa = (V_VT(v) & VT_BYREF) ? (V_ARRAYREF(v) ? *V_ARRAYREF(v) : nullptr) : V_ARRAY(v);
    // An array never dimensioned has no bounds to read.
    if (!psa || psa->cDims == 0) raise(kSubscriptOutOfRange);
    if (vt != VT_RECORD && elementSize(vt) != psa->cbElements) raise(kTypeMismatch);
    return psa;
}

Bounds firstDimension(const SAFEARRAY* psa) {
    const SAFEARRAYBOUND& d = psa->rgsabound[psa->cDims - 1];  // stored last to first
    const int64_t lb = d.lLbound;
    return {lb, checkedLong(lb + static_cast<int64_t>(d.cElements) - 1), psa->cDims == 1 ? d.cElements : 0u};
}

// Prefixes of the String elements, when there are any to compare: null when
// memory is short (texts are then compared from the start).
std::unique_ptr<uint64_t[]> prefixes(const VARIANT* v, uint64_t count, bool always) {
    bool any = always;
    for (uint64_t k = 0; k < count && !any; ++k) any = V_VT(&v[k]) == VT_BSTR;
    if (!any || !count) return nullptr;
    std::unique_ptr<uint64_t[]> keys(new (std::nothrow) uint64_t[count]);
    if (keys)
        for (uint64_t k = 0; k < count; ++k) keys[k] = V_VT(&v[k]) == VT_BSTR ? prefixOf(V_BSTR(&v[k])) : 0;
    return keys;
}
std::unique_ptr<uint64_t[]> prefixes(const BSTR* s, uint64_t count) {
    if (!count) return nullptr;
    std::unique_ptr<uint64_t[]> keys(new (std::nothrow) uint64_t[count]);
    if (keys)
        for (uint64_t k = 0; k < count; ++k) keys[k] = prefixOf(s[k]);
    return keys;
}

// Runs `run` with the ops for the array's element type. `quick`: the
// quicksort, which turns elements into Strings as it goes.
template <class Run>
void withOps(SAFEARRAY* psa, VARTYPE vt, const Bounds& b, const Numbers& nums, bool quick, Run&& run) {
    Locked lock(psa);
    BYTE* data = lock.data();
    switch (vt) {
    case VT_VARIANT: {
        auto* v = reinterpret_cast<VARIANT*>(data);
        const auto keys = prefixes(v, b.count, quick);
        run(VariantOps{{v, b.lb, b.count}, nums, keys.get()});
        break;
    }
    case VT_I4: run(LongOps{{reinterpret_cast<LONG*>(data), b.lb, b.count}, nums}); break;
    case VT_R8: run(DoubleOps{{reinterpret_cast<double*>(data), b.lb, b.count}, nums}); break;
    case VT_BSTR: {
        auto* s = reinterpret_cast<BSTR*>(data);
        const auto keys = prefixes(s, b.count);
        run(StringOps{{s, b.lb, b.count}, nums, keys.get()});
        break;
    }
    default: run(GenericOps{data, b.lb, b.count, vt, psa->cbElements, nums}); break;
    }
}

bool missing(const VARIANT* v) {
    if (!v) return true;
    VARIANT scratch;
    const VARIANT& d = dereferenced(*v, scratch);
    return V_VT(&d) == VT_ERROR && V_ERROR(&d) == DISP_E_PARAMNOTFOUND;
}

// numEls as a Long.
int64_t lastIndex(const VARIANT& arg) {
    VARIANT scratch;
    const VARIANT& v = dereferenced(arg, scratch);
    switch (V_VT(&v)) {
    case VT_I4: return V_I4(&v);
    case VT_NULL: raise(kInvalidUseOfNull);
    case VT_ERROR: raise(kTypeMismatch);
    default: break;
    }
    Variant l;
    const HRESULT hr = VariantChangeTypeEx(&l, const_cast<VARIANT*>(&v), kLocale, 0, VT_I4);
    if (FAILED(hr)) raiseFailed(hr);
    return V_I4(&l);
}

}  // namespace

// The value a by-reference Variant refers to, as a shallow view.
const VARIANT& dereferenced(const VARIANT& v, VARIANT& scratch) {
    const VARIANT* p = &v;
    while (V_VT(p) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(p)) p = V_VARIANTREF(p);
    if (!(V_VT(p) & VT_BYREF) || (V_VT(p) & VT_ARRAY)) return *p;
    const VARTYPE vt = V_VT(p) & ~VT_BYREF;
    VariantInit(&scratch);
    switch (vt) {
    case VT_I1: case VT_UI1: V_UI1(&scratch) = *V_UI1REF(p); break;
    case VT_I2: case VT_UI2: case VT_BOOL: V_UI2(&scratch) = *V_UI2REF(p); break;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_R4: case VT_ERROR: V_UI4(&scratch) = *V_UI4REF(p); break;
    case VT_I8: case VT_UI8: case VT_R8: case VT_CY: case VT_DATE: V_UI8(&scratch) = *V_UI8REF(p); break;
    case VT_BSTR: V_BSTR(&scratch) = *V_BSTRREF(p); break;
    case VT_DISPATCH: V_DISPATCH(&scratch) = *V_DISPATCHREF(p); break;
    case VT_UNKNOWN: V_UNKNOWN(&scratch) = *V_UNKNOWNREF(p); break;
    case VT_DECIMAL: V_DECIMAL(&scratch) = *V_DECIMALREF(p); break;
    default: return *p;  // left to the runtime, which refuses it
    }
    V_VT(&scratch) = vt;
    return scratch;
}

// ------------------------------------------------------------------ compare

namespace detail {

int compareOther(const VARIANT& left, const VARIANT& right) {
    VARIANT sa, sb;
    const VARIANT& a = dereferenced(left, sa);
    const VARIANT& b = dereferenced(right, sb);
    const VARTYPE ta = V_VT(&a), tb = V_VT(&b);
    if ((ta == VT_I4 || ta == VT_R8) && (tb == VT_I4 || tb == VT_R8))
        return compareNumbers(ta == VT_I4 ? V_I4(&a) : V_R8(&a), tb == VT_I4 ? V_I4(&b) : V_R8(&b));
    if (ta == VT_BSTR && tb == VT_BSTR) return compareTexts(V_BSTR(&a), V_BSTR(&b));
    // A text against anything else: the runtime reads the text as a number when
    // the other side is marked as a typed value (VT_RESERVED), else the text
    // would simply be the greater.
    VARIANT l = a, r = b;
    if (ta == VT_BSTR) V_VT(&r) |= VT_RESERVED;
    else if (tb == VT_BSTR) V_VT(&l) |= VT_RESERVED;
    const HRESULT hr = VarCmp(&l, &r, kLocale, 0);
    if (FAILED(hr)) raise(kTypeMismatch);
    return hr;
}

}  // namespace detail

// -------------------------------------------------------------------- sorts

bool shellSort(VARIANT* array) {
    VARTYPE vt;
    SAFEARRAY* psa = arrayOf(array, vt);
    if (!psa) return false;
    const Bounds b = firstDimension(psa);
    if (b.lb == 0) {
        Locked lock(psa);
        if (shellByProxy(lock.data(), vt, b.count)) return true;
    }
    withOps(psa, vt, b, Numbers{}, false, [&](const auto& ops) { shellPasses(ops, b.lb, b.ub); });
    return true;
}

bool shellSortByColumn(VARIANT* array, long column) {
    VARTYPE vt;
    SAFEARRAY* psa = arrayOf(array, vt);
    if (!psa || psa->cDims != 2) return false;
    const SAFEARRAYBOUND& rows = psa->rgsabound[1];  // dimension 1 (stored last to first)
    const SAFEARRAYBOUND& cols = psa->rgsabound[0];  // dimension 2
    const int64_t lb = rows.lLbound, ub = checkedLong(lb + static_cast<int64_t>(rows.cElements) - 1);
    const int64_t lc = cols.lLbound, nc = cols.cElements;
    if (column < lc || column >= lc + nc) return false;

    Locked lock(psa);
    BYTE* data = lock.data();
    const size_t size = psa->cbElements;
    const uint64_t nr = rows.cElements;
    // Element (r, c): the first index runs fastest.
    auto cell = [&](int64_t r, int64_t c) -> void* {
        const uint64_t k = static_cast<uint64_t>(r - lb);
        if (k >= nr) raiseIndex(r);
        return data + (k + static_cast<uint64_t>(c - lc) * nr) * size;
    };

    std::vector<Variant> saved(static_cast<size_t>(nc));
    int64_t h = firstGap(lb, ub);
    do {
        h = (h + 1) / 3;
        const int64_t start = checkedLong(lb + h);
        for (int64_t i = start; i <= ub; ++i) {
            if (h == 0) {  // every row in place: only the comparison can fail
                const VARIANT e = viewOf(vt, cell(i, column));
                compare(e, e);
                continue;
            }
            for (int64_t c = 0; c < nc; ++c) readElement(vt, cell(i, lc + c), saved[static_cast<size_t>(c)]);
            const Variant& key = saved[static_cast<size_t>(column - lc)];
            int64_t j = i;
            while (compare(viewOf(vt, cell(j - h, column)), key) == kGT) {
                for (int64_t c = 0; c < nc; ++c) {
                    const VARIANT e = viewOf(vt, cell(j - h, lc + c));
                    writeElement(vt, cell(j, lc + c), e);
                }
                j -= h;
                if (j < h) break;
            }
            for (int64_t c = 0; c < nc; ++c) writeElement(vt, cell(j, lc + c), saved[static_cast<size_t>(c)]);
        }
    } while (h != lb);
    return true;
}

bool quickSort(VARIANT* array, const VARIANT* numEls, const VARIANT* descending) {
    VARTYPE vt;
    SAFEARRAY* psa = arrayOf(array, vt);
    if (!psa) return false;
    const Bounds b = firstDimension(psa);
    const int64_t hi = missing(numEls) ? b.ub : lastIndex(*numEls);
    Direction direction(missing(descending) ? nullptr : descending);
    const Numbers nums = numbers();
    if (quickSortNumbers(psa, vt, b, hi, direction, nums)) return true;
    withOps(psa, vt, b, nums, true, [&](const auto& ops) { quickPasses(ops, b.lb, hi, direction); });
    return true;
}

}  // namespace sorting
}  // namespace tova
