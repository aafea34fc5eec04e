// No GDI object and no memory left behind by the graphics classes: a few
// thousand create/use/destroy cycles of each through the DLL (the benchmark
// bench/graphics_leaks runs 100,000).
#include "support.h"

#include "bench/graphics_cycles.h"

using namespace test;

namespace {

HRESULT createFromDll(REFCLSID clsid, REFIID iid, void** ppv) {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto get = reinterpret_cast<GetClassObject>(GetProcAddress(library(), "DllGetClassObject"));
    ComPtr<IClassFactory> factory;
    if (!get || FAILED(get(clsid, IID_IClassFactory, factory.putVoid()))) return CLASS_E_CLASSNOTAVAILABLE;
    return factory->CreateInstance(nullptr, iid, ppv);
}

constexpr long kCycles = 3000;
// Heap noise allowance: far below a leak of 64 bytes per cycle.
constexpr long long kMemorySlack = 128 * 1024;

void expectClean(const cycles::Result& r) {
    EXPECT_EQ(0, r.gdiDelta) << r.name << ": GDI objects after " << r.cycles << " cycles";
    EXPECT_LT(r.memoryDelta, kMemorySlack) << r.name << ": private bytes after " << r.cycles << " cycles";
}

class Leaks : public ::testing::Test {
protected:
    static cycles::Cycles& c() {
        static cycles::Cycles instance(createFromDll);
        return instance;
    }
};

}  // namespace

TEST_F(Leaks, CountingSeesNewObjects) {
    DWORD before = cycles::gdiObjects();
    HBRUSH b[5];
    for (auto& h : b) h = CreateSolidBrush(RGB(1, 2, 3));
    EXPECT_EQ(before + 5, cycles::gdiObjects());
    for (auto h : b) DeleteObject(h);
    EXPECT_EQ(before, cycles::gdiObjects());

    long long mem = cycles::privateBytes();
    ASSERT_GT(mem, 0);
    void* block = VirtualAlloc(nullptr, 4 << 20, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    memset(block, 1, 4 << 20);
    EXPECT_GE(cycles::privateBytes() - mem, 4 << 20);
    VirtualFree(block, 0, MEM_RELEASE);
}

TEST_F(Leaks, MemoryDC) { expectClean(cycles::measure("MemoryDC", kCycles, [](long i) { c().memoryDC(i); })); }
TEST_F(Leaks, PaintMethods) {
    expectClean(cycles::measure("PaintMethods", kCycles, [](long i) { c().paintMethods(i); }));
}
TEST_F(Leaks, PaintMethodsColourising) {
    expectClean(cycles::measure("Colourising", kCycles, [](long i) { c().colourising(i); }));
}
TEST_F(Leaks, GDIMethods) { expectClean(cycles::measure("GDIMethods", kCycles, [](long i) { c().gdiMethods(i); })); }
TEST_F(Leaks, DIBSection) { expectClean(cycles::measure("DIBSection", kCycles, [](long i) { c().dibSection(i); })); }
TEST_F(Leaks, JPEGMethods) {
    expectClean(cycles::measure("JPEGMethods", kCycles, [](long i) { c().jpegMethods(i); }));
}
TEST_F(Leaks, AlphaDIBSection) {
    expectClean(cycles::measure("AlphaDIBSection", kCycles, [](long i) { c().alphaDIBSection(i); }));
}
