// Speed of the sorts on a million elements, next to std::sort over the same
// data with the same element comparison, in the same run.
//
// Each kind of data: arrays of Variants holding Longs, Doubles and Strings, and
// typed arrays of the same. QuickSortArray also turns every element that moves
// through its text temporary into text (or back into the element type), which
// std::sort does not have to do.

#include "text/sort.h"

#include "bench/clock.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace tova;

namespace {

constexpr ULONG kCount = 1000000;
double secondsOf(const std::function<void()>& f) { return bestSeconds(1, f); }

enum class Kind { Long, Double, String };
const char* nameOf(Kind k) { return k == Kind::Long ? "Long" : k == Kind::Double ? "Double" : "String"; }

// The same random values for every kind of array.
struct Data {
    std::vector<LONG> longs;
    std::vector<double> doubles;
    std::vector<std::wstring> strings;
};

Data makeData() {
    std::mt19937_64 rng(20240611);
    Data d;
    std::uniform_int_distribution<LONG> l(0, 999999999);
    std::uniform_real_distribution<double> r(-1e6, 1e6);
    std::uniform_int_distribution<int> len(8, 16), letter(0, 51);
    d.longs.resize(kCount);
    d.doubles.resize(kCount);
    d.strings.resize(kCount);
    for (ULONG k = 0; k < kCount; ++k) {
        d.longs[k] = l(rng);
        d.doubles[k] = r(rng);
        std::wstring s(static_cast<size_t>(len(rng)), L'a');
        for (auto& c : s) {
            const int x = letter(rng);
            c = static_cast<wchar_t>(x < 26 ? L'a' + x : L'A' + x - 26);
        }
        d.strings[k] = s;
    }
    return d;
}

// A fresh array holding the data: Variants (typed == false) or typed elements.
SAFEARRAY* makeArray(const Data& d, Kind kind, bool typed) {
    const VARTYPE element = kind == Kind::Long ? VT_I4 : kind == Kind::Double ? VT_R8 : VT_BSTR;
    SAFEARRAY* psa = SafeArrayCreateVector(typed ? element : VT_VARIANT, 0, kCount);
    ArrayData lock(psa);
    for (ULONG k = 0; k < kCount; ++k) {
        if (typed) {
            if (kind == Kind::Long) static_cast<LONG*>(lock.data())[k] = d.longs[k];
            else if (kind == Kind::Double) static_cast<double*>(lock.data())[k] = d.doubles[k];
            else static_cast<BSTR*>(lock.data())[k] = SysAllocStringLen(d.strings[k].data(), static_cast<UINT>(d.strings[k].size()));
        } else {
            VARIANT& v = static_cast<VARIANT*>(lock.data())[k];
            V_VT(&v) = element;
            if (kind == Kind::Long) V_I4(&v) = d.longs[k];
            else if (kind == Kind::Double) V_R8(&v) = d.doubles[k];
            else V_BSTR(&v) = SysAllocStringLen(d.strings[k].data(), static_cast<UINT>(d.strings[k].size()));
        }
    }
    return psa;
}

// std::sort over the array's values (moved bits, as the sorts move them).
double standardSort(SAFEARRAY* psa, Kind kind, bool typed) {
    ArrayData lock(psa);
    if (!typed) {
        const auto* p = static_cast<const VARIANT*>(lock.data());
        std::vector<VARIANT> v(p, p + kCount);
        return secondsOf([&] {
            std::sort(v.begin(), v.end(),
                      [](const VARIANT& a, const VARIANT& b) { return sorting::compare(a, b) == VARCMP_LT; });
        });
    }
    if (kind == Kind::Long) {
        const auto* p = static_cast<const LONG*>(lock.data());
        std::vector<LONG> v(p, p + kCount);
        return secondsOf([&] {
            std::sort(v.begin(), v.end(), [](LONG a, LONG b) { return sorting::compareLongs(a, b) == VARCMP_LT; });
        });
    }
    if (kind == Kind::Double) {
        const auto* p = static_cast<const double*>(lock.data());
        std::vector<double> v(p, p + kCount);
        return secondsOf([&] {
            std::sort(v.begin(), v.end(),
                      [](double a, double b) { return sorting::compareNumbers(a, b) == VARCMP_LT; });
        });
    }
    const auto* p = static_cast<const BSTR*>(lock.data());
    std::vector<BSTR> v(p, p + kCount);
    return secondsOf([&] {
        std::sort(v.begin(), v.end(), [](BSTR a, BSTR b) { return sorting::compareTexts(a, b) == VARCMP_LT; });
    });
}

// One of our sorts on a fresh copy of the array, held in a Variant as a caller passes it.
double ourSort(SAFEARRAY* master, bool typed, bool quick) {
    SAFEARRAY* copy = nullptr;
    SafeArrayCopy(master, &copy);
    VARTYPE element = VT_VARIANT;
    if (typed) SafeArrayGetVartype(copy, &element);
    Variant v;
    V_VT(&v) = static_cast<VARTYPE>(VT_ARRAY | element);
    V_ARRAY(&v) = copy;
    bool ok = false;
    const double s = secondsOf([&] { ok = quick ? sorting::quickSort(&v, nullptr, nullptr) : sorting::shellSort(&v); });
    if (!ok) std::printf("  (the sort returned False)\n");
    return s;
}

// What making the Strings costs alone: a million of them, as long as the
// texts of the Longs (9 characters) and Doubles (17) above, made and freed
// twice; the second time is timed.
void stringsAlone() {
    std::vector<BSTR> strings(kCount);
    for (UINT length : {9u, 17u}) {
        double allocation = 0;
        for (int round = 0; round < 2; ++round) {
            allocation = secondsOf([&] {
                for (ULONG k = 0; k < kCount; ++k) strings[k] = SysAllocStringLen(L"-123456.789012345", length);
            });
            for (BSTR b : strings) SysFreeString(b);
        }
        std::printf("%lu Strings of %u characters made alone: %.3f s\n", kCount, length, allocation);
    }
}

void table(const Data& data) {
    std::vector<std::string> summary;
    for (bool typed : {false, true}) {
        for (Kind kind : {Kind::Long, Kind::Double, Kind::String}) {
            const std::string label = std::string(typed ? "typed array of " : "Variant array of ") + nameOf(kind);
            SAFEARRAY* master = makeArray(data, kind, typed);
            const double standard = std::min(standardSort(master, kind, typed), standardSort(master, kind, typed));
            const double shell = std::min(ourSort(master, typed, false), ourSort(master, typed, false));
            const double quick = std::min(ourSort(master, typed, true), ourSort(master, typed, true));
            SafeArrayDestroy(master);
            std::printf("%-26s std::sort %.3f  ShellSortArray %.3f  QuickSortArray %.3f\n", label.c_str(), standard,
                        shell, quick);
            char line[200];
            std::snprintf(line, sizeof line, "%-26s ShellSortArray / std::sort = %.2f (goal <= 3)", label.c_str(),
                          shell / standard);
            summary.push_back(line);
            std::snprintf(line, sizeof line, "%-26s QuickSortArray / std::sort = %.2f (goal <= 4)", label.c_str(),
                          quick / standard);
            summary.push_back(line);
        }
    }
    for (const auto& s : summary) std::printf("%s\n", s.c_str());
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::printf("Sorting %lu elements (seconds per sort, best of two)\n", kCount);
    const Data data = makeData();
    // QuickSortArray makes about a million Strings for an array of Variant
    // numbers, and how fast the system's allocator makes them depends on the
    // heap's history: under Wine a heap that has not yet grown hands back the
    // pages it frees and takes new ones for the next burst, and touching new
    // pages can cost more than the sort. So the table is made twice: in a
    // fresh process, and once a million Strings of mixed lengths have been
    // made and freed, as in an application that has run for a while.
    std::printf("\nIn a fresh process:\n");
    table(data);
    {
        std::mt19937 rng(7);
        std::vector<BSTR> strings(kCount);
        for (auto& b : strings) b = SysAllocStringLen(L"abcdefghijklmnop", 8 + rng() % 9);
        for (BSTR b : strings) SysFreeString(b);
    }
    std::printf("\nOnce the heap has grown:\n");
    table(data);
    std::printf("\n");
    stringsAlone();
    CoUninitialize();
    return 0;
}
