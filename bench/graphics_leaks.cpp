// GDI objects and private memory of the process before and after many
// create/use/destroy cycles of each graphics class (success and failure paths,
// ExtractDib and handed-over objects included), with the time per cycle.
//   graphics_leaks [CYCLES [CLASS]]     (default 100000 cycles of every class)

#include "bench/graphics_cycles.h"
#include "frame/catalogue.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

HRESULT createLinked(REFCLSID clsid, REFIID iid, void** ppv) {
    const tova::ClassEntry* e = tova::findClass(clsid);
    return e ? e->create(iid, ppv) : CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace

int main(int argc, char** argv) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const long n = argc > 1 ? atol(argv[1]) : 100000;
    int failures = 0;
    {
        cycles::Cycles c(createLinked);
        printf("graphics_leaks: %ld cycles per class%s\n", n,
               c.jpeg.empty() ? " (JPEG codec cannot encode: JPEG failure paths only)" : "");
        printf("  %-16s %9s %9s %12s %14s\n", "class", "seconds", "us/cycle", "GDI objects", "private bytes");
        const char* only = argc > 2 ? argv[2] : nullptr;
        std::vector<cycles::Result> results;
        auto run = [&](const char* name, auto&& cycle) {
            if (!only || !strcmp(only, name)) results.push_back(cycles::measure(name, n, cycle));
        };
        run("MemoryDC", [&](long i) { c.memoryDC(i); });
        run("PaintMethods", [&](long i) { c.paintMethods(i); });
        run("Colourising", [&](long i) { c.colourising(i); });
        run("GDIMethods", [&](long i) { c.gdiMethods(i); });
        run("DIBSection", [&](long i) { c.dibSection(i); });
        run("JPEGMethods", [&](long i) { c.jpegMethods(i); });
        run("AlphaDIBSection", [&](long i) { c.alphaDIBSection(i); });
        for (const auto& r : results) {
            printf("  %-16s %9.2f %9.1f %+12ld %+14lld\n", r.name, r.seconds, r.seconds * 1e6 / r.cycles,
                   r.gdiDelta, r.memoryDelta);
            if (r.gdiDelta != 0) ++failures;
        }
        printf("GDI objects now %lu; private bytes %lld\n", cycles::gdiObjects(), cycles::privateBytes());
    }
    CoUninitialize();
    return failures ? 1 : 0;
}
