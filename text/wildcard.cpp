// Wildcard matching without backtracking blow-up.
//
// The pattern is compiled into elements that each match exactly one character
// (literal, ?, #, a bracket list), cut into segments at the stars. Then:
// the first segment must match at the start, the last at the end, and every
// segment in between is taken at its leftmost place after the previous one.
// Taking the leftmost place is never wrong (a later place leaves less text to
// the rest), so no star is ever retried: O(text * pattern) at worst, and a
// plain search for segments that are literal text.

#include "wildcard.h"

#include "../frame/error_codes.h"
#include "wildcard_locale.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tova {

using wildcard::Unit;
using wildcard::collate;

static_assert(sizeof(Unit) == 2, "the matcher works on UTF-16 code units");

namespace {

constexpr size_t npos = static_cast<size_t>(-1);

// ------------------------------------------------------------ case folding

// Upper-cases n code units of src into dst: Latin-1 through the table, runs of
// other characters through the locale.
void foldCase(const Unit* src, size_t n, Unit* dst) {
    const Unit* upper = wildcard::latin1Upper();
    constexpr size_t kMaxRun = size_t(1) << 28;
    size_t i = 0;
    while (i < n) {
        if (src[i] < 256) {
            dst[i] = upper[src[i]];
            ++i;
            continue;
        }
        size_t end = i + 1;
        while (end < n && src[end] >= 256 && end - i < kMaxRun) ++end;
        // Never split a surrogate pair between two calls.
        if (end < n && end - i > 1 && src[end - 1] >= 0xD800 && src[end - 1] <= 0xDBFF) --end;
        wildcard::upperCase(src + i, end - i, dst + i);
        i = end;
    }
}

// ------------------------------------------------------------ literal search

// First position where needle[0..m) starts in hay[0..n), or npos; m >= 1.
// Candidates are filtered on the needle's first and last characters.
size_t findRun(const Unit* hay, size_t n, const Unit* needle, size_t m) {
    if (n < m) return npos;
    const Unit first = needle[0], last = needle[m - 1];
    const size_t lastStart = n - m;
    size_t i = 0;
#if defined(__SSE2__)
    const __m128i vFirst = _mm_set1_epi16(static_cast<short>(first));
    const __m128i vLast = _mm_set1_epi16(static_cast<short>(last));
    for (; i + 8 <= lastStart + 1; i += 8) {
        __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hay + i));
        __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(hay + i + m - 1));
        unsigned mask = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi16(a, vFirst), _mm_cmpeq_epi16(b, vLast))));
        while (mask) {
            size_t pos = i + static_cast<size_t>(__builtin_ctz(mask)) / 2;
            if (m <= 2 || std::memcmp(hay + pos + 1, needle + 1, (m - 2) * sizeof(Unit)) == 0) return pos;
            mask &= mask - 1;  // each 16-bit lane sets two mask bits
            mask &= mask - 1;
        }
    }
#endif
    for (; i <= lastStart; ++i) {
        if (hay[i] == first && hay[i + m - 1] == last &&
            (m <= 2 || std::memcmp(hay + i + 1, needle + 1, (m - 2) * sizeof(Unit)) == 0))
            return i;
    }
    return npos;
}

// ------------------------------------------------------------ bracket lists

struct Range {
    Unit lo, hi;
};

class CharClass {
public:
    CharClass(bool negate, bool ignoreCase) : negate_(negate), ignoreCase_(ignoreCase) {}

    void addSingle(Unit c) {
        if (ignoreCase_) {
            if (c < 256) setLow(c);
            else wideSingles_.push_back(c);
        } else {
            addCodeUnits(c, c);
        }
    }
    void addRange(Unit lo, Unit hi) {
        if (ignoreCase_) {
            collated_.push_back({lo, hi});
        } else {
            addCodeUnits(lo, hi);
        }
    }
    void prepareCache() {
        if (!collated_.empty()) {
            lowCache_.assign(256, kUnknown);
            for (auto& slot : wideCache_) slot = {0, kUnknown};
        }
    }

    // `c` is already case-folded in case-insensitive mode.
    bool matches(Unit c) const { return contains(c) != negate_; }

private:
    enum : unsigned char { kUnknown, kOut, kIn };
    struct Slot {
        Unit key;
        unsigned char state;
    };

    void setLow(unsigned c) { low_[c >> 5] |= uint32_t(1) << (c & 31); }
    bool testLow(unsigned c) const { return (low_[c >> 5] >> (c & 31)) & 1; }

    void addCodeUnits(Unit lo, Unit hi) {
        for (unsigned c = lo; c <= hi && c < 256; ++c) setLow(c);
        if (hi >= 256) wideRanges_.push_back({lo < 256 ? Unit(256) : lo, hi});
    }

    bool contains(Unit c) const {
        if (c < 256) {
            if (testLow(c)) return true;
            if (collated_.empty()) return false;
            unsigned char& state = lowCache_[c];
            if (state == kUnknown) state = inCollatedRange(c) ? kIn : kOut;
            return state == kIn;
        }
        for (const Range& r : wideRanges_)
            if (c >= r.lo && c <= r.hi) return true;
        for (Unit s : wideSingles_)
            if (c == s) return true;
        if (collated_.empty()) return false;
        Slot& slot = wideCache_[c & (kWideSlots - 1)];
        if (slot.state == kUnknown || slot.key != c) slot = {c, inCollatedRange(c) ? kIn : kOut};
        return slot.state == kIn;
    }

    // The slow path: case-insensitive ranges under the locale's collation.
    bool inCollatedRange(Unit c) const {
        for (const Range& r : collated_)
            if (collate(r.lo, c) <= 0 && collate(c, r.hi) <= 0) return true;
        return false;
    }

    static constexpr size_t kWideSlots = 64;
    bool negate_;
    bool ignoreCase_;
    uint32_t low_[8] = {};             // members below 256 (case-insensitive: singles only)
    std::vector<Range> wideRanges_;    // case-sensitive members from 256 up
    std::vector<Unit> wideSingles_; // case-insensitive singles from 256 up
    std::vector<Range> collated_;      // case-insensitive ranges
    mutable std::vector<unsigned char> lowCache_;
    mutable Slot wideCache_[kWideSlots] = {};
};

// ------------------------------------------------------------ the compiled pattern

enum class Kind : unsigned char { Literal, Any, Digit, Class };

struct Element {
    Kind kind;
    Unit ch;       // Literal: the character (case-folded when ignoring case)
    uint32_t list;    // Class: index into the lists
};

// Room for a known number of items, inline when few: compiling a short pattern
// should not cost a heap allocation per array.
template <class T, size_t N>
class Storage {
public:
    Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;
    void reserve(size_t capacity) {
        if (capacity > N) {
            heap_.reset(new T[capacity]);
            data_ = heap_.get();
        }
    }
    void push_back(const T& item) { data_[size_++] = item; }
    void pop_back() { --size_; }
    size_t size() const { return size_; }
    T* data() { return data_; }
    const T* data() const { return data_; }
    const T& operator[](size_t i) const { return data_[i]; }
    const T& front() const { return data_[0]; }
    const T& back() const { return data_[size_ - 1]; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + size_; }

private:
    T local_[N];
    std::unique_ptr<T[]> heap_;
    T* data_ = local_;
    size_t size_ = 0;
};

struct Segment {
    size_t begin, length;     // elements [begin, begin + length)
    bool literal;             // only literal elements: searched as text
    size_t runOffset, runLength;  // its longest literal run, to search for
};

}  // namespace

struct WildcardPattern::Compiled {
    bool ignoreCase;
    bool star = false;                // segments are separated by stars
    bool needsText = false;           // some element looks at the character
    Storage<Element, 32> elements;
    Storage<Unit, 32> chars;       // elements' characters, contiguous, for literal runs
    std::vector<CharClass> lists;
    Storage<Segment, 8> segments;
    size_t longestSegment = 0;

    Compiled(const Unit* pattern, size_t n, bool ic);
    bool matches(const Unit* text, size_t n) const;

private:
    void parseList(const Unit* p, size_t n, bool ic);
    void closeSegment(size_t begin);
    bool matchAt(const Segment& s, const Unit* t) const;
    size_t find(const Segment& s, const Unit* t, size_t from, size_t end) const;
    template <class View>
    bool run(size_t n, const View& view) const;
};

WildcardPattern::Compiled::Compiled(const Unit* pattern, size_t n, bool ic) : ignoreCase(ic) {
    // The whole pattern is compiled (and so checked) before anything is matched.
    // Structure is read from the pattern as given, characters from its folded
    // copy when ignoring case.
    const Unit* value = pattern;
    Unit local[64];
    std::unique_ptr<Unit[]> heap;
    if (ic && n) {
        Unit* folded = local;
        if (n > 64) {
            heap.reset(new Unit[n]);
            folded = heap.get();
        }
        foldCase(pattern, n, folded);
        value = folded;
    }
    size_t stars = 0;
    for (size_t i = 0; i < n; ++i) stars += pattern[i] == L'*';
    segments.reserve(stars + 1);
    elements.reserve(n);
    chars.reserve(n);
    size_t segmentBegin = 0;
    for (size_t i = 0; i < n;) {
        Unit c = pattern[i];
        if (c == L'*') {
            closeSegment(segmentBegin);
            segmentBegin = elements.size();
            star = true;
            while (i < n && pattern[i] == L'*') ++i;
            continue;
        }
        if (c == L'[') {
            size_t close = i + 1;
            while (close < n && pattern[close] != L']') ++close;
            if (close == n) raise(kInvalidPattern);
            parseList(value + i + 1, close - i - 1, ic);
            i = close + 1;
            continue;
        }
        Element e{Kind::Literal, value[i], 0};
        if (c == L'?') e.kind = Kind::Any;
        else if (c == L'#') e.kind = Kind::Digit;
        else needsText = true;
        elements.push_back(e);
        chars.push_back(e.ch);
        ++i;
    }
    closeSegment(segmentBegin);
    for (CharClass& list : lists) list.prepareCache();
}

// One bracket list without its brackets: p[0..n).
void WildcardPattern::Compiled::parseList(const Unit* p, size_t n, bool ic) {
    if (n == 0) return;  // [] matches the empty string: no element at all
    bool negate = p[0] == L'!';
    size_t i = negate ? 1 : 0;
    if (i == n) {  // [!]: nothing excluded, any one character
        elements.push_back({Kind::Any, L'?', 0});
        chars.push_back(L'?');
        return;
    }
    CharClass list(negate, ic);
    while (i < n) {
        Unit lo = p[i];
        if (i + 2 < n && p[i + 1] == L'-') {
            Unit hi = p[i + 2];
            if (ic ? collate(lo, hi) > 0 : lo > hi) raise(kInvalidPattern);
            list.addRange(lo, hi);
            i += 3;
        } else {
            list.addSingle(lo);
            ++i;
        }
    }
    elements.push_back({Kind::Class, L'[', static_cast<uint32_t>(lists.size())});
    chars.push_back(L'[');
    lists.push_back(std::move(list));
    needsText = true;
}

void WildcardPattern::Compiled::closeSegment(size_t begin) {
    Segment s{begin, elements.size() - begin, true, 0, 0};
    size_t run = 0;
    for (size_t k = 0; k < s.length; ++k) {
        if (elements[begin + k].kind == Kind::Literal) {
            if (++run > s.runLength) {
                s.runLength = run;
                s.runOffset = k + 1 - run;
            }
        } else {
            run = 0;
            s.literal = false;
        }
    }
    // An empty segment between two stars (from "*[]*") changes nothing: when a
    // star closes one, the previous empty middle segment can go. The first and
    // last segments stay even when empty: they anchor the ends.
    if (segments.size() >= 2 && segments.back().length == 0) segments.pop_back();
    segments.push_back(s);
    if (s.length > longestSegment) longestSegment = s.length;
}

bool WildcardPattern::Compiled::matchAt(const Segment& s, const Unit* t) const {
    const Element* e = elements.data() + s.begin;
    for (size_t k = 0; k < s.length; ++k) {
        const Unit c = t[k];
        switch (e[k].kind) {
        case Kind::Literal:
            if (c != e[k].ch) return false;
            break;
        case Kind::Any:
            break;
        case Kind::Digit:
            if (static_cast<unsigned>(c) - L'0' > 9u) return false;
            break;
        case Kind::Class:
            if (!lists[e[k].list].matches(c)) return false;
            break;
        }
    }
    return true;
}

// The leftmost start p in [from, end - length] where segment s matches t, or npos.
size_t WildcardPattern::Compiled::find(const Segment& s, const Unit* t, size_t from, size_t end) const {
    if (end < from || end - from < s.length) return npos;
    if (s.length == 0) return from;
    if (s.literal) {
        size_t r = findRun(t + from, end - from, chars.data() + s.begin, s.length);
        return r == npos ? npos : from + r;
    }
    const size_t lastStart = end - s.length;
    if (s.runLength == 0) {
        for (size_t p = from; p <= lastStart; ++p)
            if (matchAt(s, t + p)) return p;
        return npos;
    }
    // Search for the longest literal run, then check the rest around it.
    const Unit* run = chars.data() + s.begin + s.runOffset;
    size_t p = from;
    while (p <= lastStart) {
        // The run starts at p + runOffset; it must end before lastStart + runOffset + runLength.
        size_t r = findRun(t + p + s.runOffset, lastStart - p + s.runLength, run, s.runLength);
        if (r == npos) return npos;
        p += r;
        if (matchAt(s, t + p)) return p;
        ++p;
    }
    return npos;
}

namespace {

// The text as the matcher reads it: view(from, to) gives the characters
// [from, to), at most `span` of them at a time, valid until the next call.
struct DirectView {
    const Unit* text;
    static constexpr size_t span = npos;
    const Unit* operator()(size_t from, size_t) const { return text + from; }
};

// Case folding in windows: a long text is never copied whole (a fresh buffer
// the size of the text costs more to touch than the whole match).
struct FoldingView {
    const Unit* text;
    Unit* buffer;
    size_t span;
    const Unit* operator()(size_t from, size_t to) const {
        foldCase(text + from, to - from, buffer);
        return buffer;
    }
};

}  // namespace

template <class View>
bool WildcardPattern::Compiled::run(size_t n, const View& view) const {
    const Segment& first = segments.front();
    if (!matchAt(first, view(0, first.length))) return false;
    if (!star) return true;
    const Segment& last = segments.back();
    if (!matchAt(last, view(n - last.length, n))) return false;
    size_t pos = first.length, end = n - last.length;
    for (size_t k = 1; k + 1 < segments.size(); ++k) {
        const Segment& s = segments[k];
        // Leftmost place of s in [pos, end), one view at a time; consecutive
        // views overlap by s.length - 1 so that no place is missed.
        size_t start = pos, found = npos;
        while (end - start >= s.length) {
            size_t stop = end - start <= view.span ? end : start + view.span;
            size_t r = find(s, view(start, stop), 0, stop - start);
            if (r != npos) {
                found = start + r;
                break;
            }
            if (stop == end) break;
            start = stop - s.length + 1;
        }
        if (found == npos) return false;
        pos = found + s.length;
    }
    return true;
}

bool WildcardPattern::Compiled::matches(const Unit* text, size_t n) const {
    // Cheap length checks before any case folding.
    size_t fixed = 0;
    for (const Segment& s : segments) fixed += s.length;
    if (star ? n < fixed : n != fixed) return false;
    if (!ignoreCase || !needsText || n == 0) return run(n, DirectView{text});

    // Short texts are folded whole, long ones a window at a time.
    constexpr size_t kWindow = 16384;
    Unit local[256];
    std::unique_ptr<Unit[]> heap;
    Unit* buffer = local;
    if (n > 256) {
        heap.reset(new Unit[n <= kWindow ? n : kWindow + longestSegment]);
        buffer = heap.get();
    }
    if (n <= kWindow) {
        foldCase(text, n, buffer);
        return run(n, DirectView{buffer});
    }
    return run(n, FoldingView{text, buffer, kWindow + longestSegment});
}

WildcardPattern::WildcardPattern(const Unit* pattern, size_t patternLength, bool ignoreCase)
    : compiled_(new Compiled(pattern, patternLength, ignoreCase)) {}
WildcardPattern::~WildcardPattern() = default;
WildcardPattern::WildcardPattern(WildcardPattern&&) noexcept = default;
WildcardPattern& WildcardPattern::operator=(WildcardPattern&&) noexcept = default;

bool WildcardPattern::matches(const Unit* text, size_t textLength) const {
    return compiled_->matches(text, textLength);
}

bool isLike(const Unit* text, size_t textLength, const Unit* pattern, size_t patternLength, bool ignoreCase) {
    // The commonest patterns never need a compiled form.
    if (patternLength == 1 && pattern[0] == L'*') return true;
    if (patternLength == 0) return textLength == 0;
    WildcardPattern::Compiled compiled(pattern, patternLength, ignoreCase);
    return compiled.matches(text, textLength);
}

}  // namespace tova
