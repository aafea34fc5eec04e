// Quicksort of numbers in place.
//
// An array of Variants holding only Longs, or only Doubles whose text is ours
// to write, is the common case and the costly one: the quicksort turns nearly
// every element into a String as it moves. So the passes run in the array's
// own memory, each element's place holding its number or, once the element
// has gone through the text temporary, what its text is written from and a
// key that orders as that text does; the Strings are made in one last pass.
// The comparisons and exchanges are those of the quicksort in text/sort.cpp,
// with no heap traffic inside the loops and no string read back from the heap.

#include "number_sort.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tova {
namespace sorting {
namespace {

// A number's text packed four bits a character, the first character highest:
// 0 past the end, then '-', the separator and the digits ranked as their code
// units rank, so keys order as the texts do. Sixteen characters fit: all of a
// Long's text, most of a Double's.
class TextPacking {
public:
    explicit TextPacking(wchar_t separator) {
        if (separator < L'-') rankSep_ = 1, rankMinus_ = 2, rankZero_ = 3;
        else if (separator < L'0') rankMinus_ = 1, rankSep_ = 2, rankZero_ = 3;
        else rankMinus_ = 1, rankZero_ = 2, rankSep_ = 12;
    }
    // The key of a Long's text.
    uint64_t pack(LONG v) const {
        const uint32_t u = v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
        const uint64_t digits = (bcd8(u / 100000000) << 32) | bcd8(u % 100000000);
        int n = 16;  // digits, leading zeros not counted
        while (n > 1 && !(digits >> (4 * (n - 1)))) --n;
        uint64_t k = (digits + rankZero_ * (kOnes >> (4 * (16 - n)))) << (4 * (16 - n));
        if (v < 0) k = (static_cast<uint64_t>(rankMinus_) << 60) | (k >> 4);
        return k;
    }

    // The key of the text formatDigits writes, made from the digits' BCD
    // rather than the characters: this runs for nearly every element.
    uint64_t pack(uint64_t q, int e, bool negative) const {
        if (q == 0) return static_cast<uint64_t>(rankZero_) << 60;  // "0"
        const uint64_t bcd = bcd15(q);
        int zeros = 0;  // trailing zero digits
        while (!((bcd >> (4 * zeros)) & 0xF)) ++zeros;
        // The 15 digits as ranks, the first in the top nibble.
        uint64_t k = (bcd + rankZero_ * (kOnes >> 4)) << 4;
        const int whole = e >= 0 ? e + 1 : 0;     // digits before the separator
        const bool fraction = 14 - zeros >= whole;  // a nonzero digit after it
        const int kept = fraction ? 15 - zeros : whole;
        k &= ~0ULL << (64 - 4 * kept);
        if (e >= 0) {
            if (fraction) {  // the separator after the whole digits
                const uint64_t high = k & (~0ULL << (64 - 4 * whole));
                k = high | (static_cast<uint64_t>(rankSep_) << (60 - 4 * whole)) | ((k & ~high) >> 4);
            }
        } else {  // "0", the separator, -e - 1 zeros, then the digits
            for (int z = e + 1; z < 0; ++z) k = (static_cast<uint64_t>(rankZero_) << 60) | (k >> 4);
            k = (static_cast<uint64_t>(rankZero_) << 60) | (static_cast<uint64_t>(rankSep_) << 56) | (k >> 8);
        }
        if (negative) k = (static_cast<uint64_t>(rankMinus_) << 60) | (k >> 4);
        return k;
    }

private:
    static constexpr uint64_t kOnes = 0x1111111111111111ULL;

    unsigned rankMinus_, rankSep_, rankZero_;
};

// The key of an element that is still a number is at or above kNumber: no
// text packs to one (no character has rank 15). Below that mark it may carry
// what the number's text will be written from.
constexpr uint64_t kNumber = 0xFULL << 60;
inline bool isNumber(uint64_t key) { return key >= kNumber; }

// Longs: the number is all its text needs.
struct LongTexts {
    using Value = LONG;
    // The cell of an element; false when it is not a number of this kind, ours to write.
    static bool take(const VARIANT& v, const Numbers& nums, uint64_t& key, Value& x) {
        if (V_VT(&v) != VT_I4 || !nums.ownLong) return false;
        key = kNumber;
        x = V_I4(&v);
        return true;
    }
    static void number(VARIANT& v, Value x) {
        V_VT(&v) = VT_I4;
        V_I4(&v) = x;
    }
    static double numberOf(Value x) { return x; }
    static double numberOr0(Value x, bool number) { return number ? x : 0; }
    // A number's cell turned to text: returns its key (a Long's value stays).
    static uint64_t toText(uint64_t, Value& x, const TextPacking& packing) { return packing.pack(x); }
    // The text of a text cell.
    static UINT write(Value x, const Numbers&, wchar_t* out) { return formatLong(x, out); }
    static double readBackNumber(uint64_t, Value x, const Numbers&) { return x; }
    static double readBackText(Value x, const Numbers&) { return x; }
    static void textAsNumber(VARIANT& v, Value x, const Numbers&) { number(v, x); }
    static bool sameText(Value a, Value b) { return a == b; }
};

// Doubles: the digits of a number's text are worked out once, when the cell
// is made, and kept under the mark of its key; once text, the cell keeps them
// in place of the Double, which no longer matters (the text reads back as
// another number).
struct DoubleTexts {
    union Value {
        double x;         // while a number
        uint64_t digits;  // as text: q in bits 0-49, e + 4 in bits 50-54, the sign in bit 55
    };
    static bool take(const VARIANT& v, const Numbers& nums, uint64_t& key, Value& x) {
        if (V_VT(&v) != VT_R8 || !nums.ownText || !nums.ownRead) return false;
        const double d = V_R8(&v);
        uint64_t q = 0;
        int e = 0;
        if (d != 0 ? !significantDigits(d, q, e) : std::signbit(d)) return false;  // "0" is q = 0, e = 0
        key = kNumber | q | (static_cast<uint64_t>(e + 4) << 50) | (static_cast<uint64_t>(d < 0) << 55);
        x.x = d;
        return true;
    }
    static void number(VARIANT& v, Value x) {
        V_VT(&v) = VT_R8;
        V_R8(&v) = x.x;
    }
    static double numberOf(Value x) { return x.x; }
    // Without a branch, and without reading a text cell's digits as a Double
    // (a denormal, slow where the x87 loads it).
    static double numberOr0(Value x, bool number) {
        Value v;
        v.digits = number ? x.digits : 0;
        return v.x;
    }
    static uint64_t toText(uint64_t key, Value& x, const TextPacking& packing) {
        x.digits = key & ~kNumber;
        return packing.pack(q(x), e(x), negative(x));
    }
    static uint64_t q(Value x) { return x.digits & ((1ULL << 50) - 1); }
    static int e(Value x) { return static_cast<int>((x.digits >> 50) & 31) - 4; }
    static bool negative(Value x) { return (x.digits >> 55) & 1; }
    static UINT write(Value x, const Numbers& nums, wchar_t* out) {
        return formatDigits(q(x), e(x), negative(x), nums.sep, out);
    }
    static double readBackNumber(uint64_t key, Value, const Numbers& nums) {
        Value t;
        t.digits = key & ~kNumber;
        return readBackText(t, nums);
    }
    static double readBackText(Value x, const Numbers& nums) { return readBack(q(x), e(x), negative(x), nums); }
    static void textAsNumber(VARIANT& v, Value x, const Numbers& nums) {
        V_VT(&v) = VT_R8;
        V_R8(&v) = readBackText(x, nums);
    }
    static bool sameText(Value a, Value b) { return a.digits == b.digits; }
};

template <class Texts>
class NumberCells {
    using Value = typename Texts::Value;
    struct Contents {
        uint64_t key;  // at or above kNumber while a number, else the key of its text
        Value value;
    };
    union Cell {
        Contents c;
        VARIANT v;
    };
    static_assert(sizeof(Cell) == sizeof(VARIANT), "a cell is a Variant's place");

public:
    NumberCells(VARIANT* v, int64_t lb, uint64_t count, const Numbers& nums)
        : cells_(reinterpret_cast<Cell*>(v) - lb), lb_(lb), ub_(lb + static_cast<int64_t>(count) - 1), nums_(nums),
          packing_(nums.sep) {}

    // True, with every element a cell, when they are all numbers of the kind,
    // ours to write; false, changing nothing, when they are not.
    bool take() {
        for (int64_t k = lb_; k <= ub_; ++k) {
            uint64_t key;
            Value x;
            if (!Texts::take(cells_[k].v, nums_, key, x)) {
                while (--k >= lb_) Texts::number(cells_[k].v, cells_[k].c.value);
                return false;
            }
            cells_[k].c = Contents{key, x};
        }
        return true;
    }
    // Each element back from its cell: the number, or a String of its text.
    // When memory runs out the rest hold the numbers their texts read as, and
    // false is returned.
    bool give() noexcept {
        bool complete = true;
        for (int64_t k = lb_; k <= ub_; ++k) {
            const Contents c = cells_[k].c;
            VARIANT& v = cells_[k].v;
            VariantInit(&v);
            if (isNumber(c.key)) {
                Texts::number(v, c.value);
                continue;
            }
            wchar_t buf[48];
            BSTR text = complete ? SysAllocStringLen(buf, Texts::write(c.value, nums_, buf)) : nullptr;
            if (text) {
                V_VT(&v) = VT_BSTR;
                V_BSTR(&v) = text;
            } else {
                complete = false;
                Texts::textAsNumber(v, c.value, nums_);
            }
        }
        return complete;
    }

    // The quicksort's passes (quickPasses in text/sort.cpp) over the cells.
    void sort(int64_t lo, int64_t hi, Direction& direction) {
        quickRanges(lo, hi, [&](int64_t lo, int64_t hi) {
            at(hi);  // the pivot is read before Descending is first converted
            return direction.descending() ? partition<true>(lo, hi) : partition<false>(lo, hi);
        });
    }

private:
    // The pivot's cell, turned to text when a text is first compared with it,
    // and the number its text reads as, worked out when first needed.
    struct Pivot {
        Contents c;
        bool numberKnown;
        double number;
    };

    Contents& at(int64_t index) const {
        if (index < lb_ || index > ub_) raiseIndex(index);
        return cells_[index].c;
    }
    void toText(Contents& c) const {
        if (isNumber(c.key)) c.key = Texts::toText(c.key, c.value, packing_);
    }

    // An element against the pivot: -1, 0 or 1.
    int order(const Contents& e, Pivot& p) const {
        if (isNumber(e.key)) {
            if (p.numberKnown) {
                const double x = Texts::numberOf(e.value);
                return x < p.number ? -1 : x > p.number ? 1 : 0;
            }
        } else if (e.key != p.c.key && !isNumber(p.c.key)) {
            return e.key < p.c.key ? -1 : 1;
        }
        return settle(e, p);
    }
    // The rest of order(), kept out of the scanning loops.
    __attribute__((noinline)) int settle(const Contents& e, Pivot& p) const {
        if (isNumber(e.key)) {
            knowNumber(p);
            const double x = Texts::numberOf(e.value);
            return x < p.number ? -1 : x > p.number ? 1 : 0;
        }
        toText(p.c);
        if (e.key != p.c.key) return e.key < p.c.key ? -1 : 1;
        // Texts that agree in their first sixteen characters.
        if ((e.key & 0xF) == 0 || Texts::sameText(e.value, p.c.value)) return 0;
        wchar_t a[48], b[48];
        const int c = compareTexts(a, Texts::write(e.value, nums_, a), b, Texts::write(p.c.value, nums_, b));
        return c == kLT ? -1 : c == kGT ? 1 : 0;
    }
    void knowNumber(Pivot& p) const {
        if (p.numberKnown) return;
        p.number = isNumber(p.c.key) ? Texts::readBackNumber(p.c.key, p.c.value, nums_)
                                     : Texts::readBackText(p.c.value, nums_);
        p.numberKnown = true;
    }

    void exchange(int64_t i, int64_t j) {
        Contents t = cells_[i].c;
        toText(t);
        cells_[i].c = cells_[j].c;
        cells_[j].c = t;
    }

    // One partition of lo..hi, as quickPasses makes it; returns where the pivot went.
    template <bool Descending>
    int64_t partition(int64_t lo, int64_t hi) {
        Pivot p{cells_[hi].c, false, 0};  // hi checked by sort()
        constexpr int passed = Descending ? 1 : -1;  // what the scan from below passes over
        int64_t i = checkedLong(lo - 1), j = hi;
        if (hi - lo > kFewCells) exchangeInBlocks<Descending>(p, i, j);
        do {
            do ++i; while (order(at(i), p) == passed);
            do --j; while (order(cells_[j].c, p) == -passed && j != lo);  // j stays within lo..hi
            exchange(i, j);
        } while (j > i);
        Contents t = cells_[j].c;
        toText(t);
        cells_[j].c = cells_[i].c;
        cells_[i].c = cells_[hi].c;
        cells_[hi].c = t;
        return i;
    }

    // The scans' exchanges up to where they meet, made without a branch per
    // comparison (a mispredicted branch costs more than the comparison): a
    // block of untouched cells at each end is classified at once, the cells
    // where each scan would stop noted in order, and the k-th stop from below
    // exchanged with the k-th from above, just as the scans pair them. Until
    // the scans meet they see only cells no exchange has touched, so the
    // pairs are the same. i and j are left at the last pair exchanged; the
    // scans go on from there, across the meeting point, one cell at a time.
    static constexpr int kBlock = 64;
    static constexpr int kFewCells = 16;  // partitions this small are scanned a cell at a time

    template <bool Descending>
    void exchangeInBlocks(Pivot& p, int64_t& i, int64_t& j) {
        knowNumber(p);
        toText(p.c);
        const double pivotNumber = p.number;
        const uint64_t key = p.c.key;
        constexpr int passed = Descending ? 1 : -1;
        // Whether each scan stops at cell k, 1 or 0; false when a text agrees
        // with the pivot's in the first sixteen characters (order() decides).
        auto classify = [&](int64_t k, bool fromBelow, unsigned& stop) {
            const Contents& e = cells_[k].c;
            const bool number = isNumber(e.key);
            const double x = Texts::numberOr0(e.value, number);
            const bool less = number ? x < pivotNumber : e.key < key;
            const bool more = number ? x > pivotNumber : e.key > key;
            stop = fromBelow != Descending ? !less : !more;
            return number | (e.key != key) | ((e.key & 0xF) == 0);
        };
        // Notes the stops among `size` cells from `start`, one way, in scan order.
        auto note = [&](int64_t start, int64_t size, int step, bool fromBelow, uint8_t* at) {
            int found = 0;
            bool plain = true;
            for (int k = 0; k < size; ++k) {
                unsigned stop;
                plain &= classify(start + step * k, fromBelow, stop);
                at[found] = static_cast<uint8_t>(k);
                found += stop;
            }
            if (plain) return found;
            found = 0;
            const int goesOn = fromBelow ? passed : -passed;
            for (int k = 0; k < size; ++k)
                if (order(cells_[start + step * k].c, p) != goesOn) at[found++] = static_cast<uint8_t>(k);
            return found;
        };
        uint8_t below[kBlock], above[kBlock];  // offsets of the stops from each block's start
        int inBelow = 0, inAbove = 0, firstBelow = 0, firstAbove = 0;
        int64_t belowStart = 0, aboveStart = 0;
        int64_t from = i + 1, to = j - 1;  // the cells not yet classified
        for (;;) {
            if (inBelow == 0) {
                const int64_t left = to - from + 1;
                if (left <= 0) break;
                // Both ends empty: each takes at most half of what is left.
                const int64_t size = std::min<int64_t>(kBlock, inAbove ? left : (left + 1) / 2);
                belowStart = from;
                firstBelow = 0;
                inBelow = note(from, size, 1, true, below);
                from += size;
            }
            if (inAbove == 0) {
                const int64_t left = to - from + 1;
                if (left <= 0) break;
                const int64_t size = std::min<int64_t>(kBlock, left);
                aboveStart = to;
                firstAbove = 0;
                inAbove = note(to, size, -1, false, above);
                to -= size;
            }
            const int pairs = inBelow < inAbove ? inBelow : inAbove;
            for (int k = 0; k < pairs; ++k)
                exchange(belowStart + below[firstBelow + k], aboveStart - above[firstAbove + k]);
            if (pairs) {
                i = belowStart + below[firstBelow + pairs - 1];
                j = aboveStart - above[firstAbove + pairs - 1];
            }
            inBelow -= pairs;
            inAbove -= pairs;
            firstBelow += pairs;
            firstAbove += pairs;
        }
    }

    Cell* cells_;  // indexed by the array's own indexes
    int64_t lb_, ub_;
    const Numbers& nums_;
    TextPacking packing_;
};

template <class Texts>
bool quickSortCells(VARIANT* v, const Bounds& b, int64_t hi, Direction& direction, const Numbers& nums) {
    NumberCells<Texts> cells(v, b.lb, b.count, nums);
    if (!cells.take()) return false;
    try {
        cells.sort(b.lb, hi, direction);
    } catch (...) {
        cells.give();  // the array as the error left it
        throw;
    }
    if (!cells.give()) raise(kOutOfMemory);
    return true;
}

}  // namespace

bool quickSortNumbers(SAFEARRAY* psa, VARTYPE vt, const Bounds& b, int64_t hi, Direction& direction,
                      const Numbers& nums) {
    if (vt != VT_VARIANT || b.count < 2 || hi <= b.lb) return false;
    Locked lock(psa);
    VARIANT* v = reinterpret_cast<VARIANT*>(lock.data());
    switch (V_VT(v)) {
    case VT_I4: return quickSortCells<LongTexts>(v, b, hi, direction, nums);
    case VT_R8: return quickSortCells<DoubleTexts>(v, b, hi, direction, nums);
    default: return false;
    }
}

namespace detail {

bool numberTextKey(const VARIANT& number, uint64_t* key) {
    const Numbers nums = numbers();
    const TextPacking packing(nums.sep);
    uint64_t mark;
    LongTexts::Value l;
    DoubleTexts::Value d;
    if (LongTexts::take(number, nums, mark, l)) *key = LongTexts::toText(mark, l, packing);
    else if (DoubleTexts::take(number, nums, mark, d)) *key = DoubleTexts::toText(mark, d, packing);
    else return false;
    return true;
}

}  // namespace detail

}  // namespace sorting
}  // namespace tova
