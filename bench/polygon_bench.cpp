// A polygon of 100,000 vertices: whole-polygon operations, saved states,
// cloning, and reading every vertex through Points(i).X, all through the
// vtable as an early-bound client calls them. Best of five runs each.
#include "bench/clock.h"
#include "geometry/polygon.h"

#include <algorithm>
#include <cstdio>
#include <vector>

using tova::ComPtr;

namespace tova {
HRESULT createPolygon(REFIID riid, void** ppv);
}

namespace {

constexpr long kVertices = 100000;

void report(const char* what, double seconds, double goalMs) {
    std::printf("%-34s %8.2f ms   (goal %5.0f ms)%s\n", what, seconds * 1000, goalMs,
                seconds * 1000 <= goalMs ? "" : "   MISSED");
}

}  // namespace

int main() {
    CoInitialize(nullptr);
    {
        ComPtr<_Polygon> poly;
        tova::createPolygon(IID__Polygon, poly.putVoid());
        ComPtr<_Points> pts;
        poly->get_Points(pts.put());

        VARIANT missing;
        VariantInit(&missing);
        V_VT(&missing) = VT_ERROR;
        V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
        double t0 = benchSeconds();
        for (long i = 0; i < kVertices; ++i) {
            double x = i % 1000 + 0.25, y = i / 1000 + 0.75;
            ComPtr<_Point> p;
            pts->Add(&missing, &x, &y, p.put());
        }
        std::printf("Points.Add x %ld                  %8.2f ms\n", kVertices, (benchSeconds() - t0) * 1000);

        double angle = 0.001, dx = 0.5, dy = 0.5;
        report("Rotate", bestSeconds(5, [&] { poly->Rotate(&angle, nullptr, nullptr); }), 20);
        report("Offset", bestSeconds(5, [&] { poly->Offset(&dx, &dy); }), 20);
        report("Inflate", bestSeconds(5, [&] { poly->Inflate(&dx, &dy); }), 20);
        report("CentrePoint", bestSeconds(5, [&] { ComPtr<_Point> c; poly->get_CentrePoint(c.put()); }), 20);
        report("Rectangle", bestSeconds(5, [&] { ComPtr<_Rectangle> r; poly->get_Rectangle(r.put()); }), 20);
        VARIANT_BOOL ok;
        report("PushState", bestSeconds(5, [&] { poly->PushState(&ok); poly->ClearStack(); }), 20);
        poly->PushState(&ok);
        report("PopState", bestSeconds(5, [&] { poly->PopState(&ok); poly->PushState(&ok); }), 20);
        report("Clone", bestSeconds(5, [&] { ComPtr<_Polygon> c; poly->Clone(c.put()); }), 20);
        report("Clone and release", bestSeconds(5, [&] { ComPtr<_Polygon> c; poly->Clone(c.put()); c.reset(); }), 20);

        // Where Clone's time goes: making and ending 100,000 points alone.
        report("100,000 points made and ended", bestSeconds(5, [&] {
                   std::vector<ComPtr<tova::Point>> made(kVertices);
                   for (auto& p : made) p = tova::Point::make();
               }),
               20);

        double sum = 0;
        report("Points(i).X for every vertex", bestSeconds(5, [&] {
                   long n = 0;
                   pts->get_Count(&n);
                   VARIANT index;
                   VariantInit(&index);
                   V_VT(&index) = VT_I4;
                   for (long i = 1; i <= n; ++i) {
                       V_I4(&index) = i;
                       ComPtr<_Point> p;
                       pts->get_Item(&index, p.put());
                       double x;
                       p->get_X(&x);
                       sum += x;
                   }
               }),
               100);
        std::printf("(checksum %.1f)\n", sum);
    }
    CoUninitialize();
    return 0;
}
