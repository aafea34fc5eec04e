#include "polygon.h"

#include "../graphics/gdi_draw.h"
#include "rectangle.h"
#include "tag.h"

#include <cmath>

namespace tova {

const ClassIdentity Polygon::kClass = {L"Polygon", &CLSID_Polygon, &IID__Polygon, &DIID___Polygon};

HRESULT createPolygon(REFIID riid, void** ppv) { return Polygon::create(riid, ppv); }

namespace {

constexpr DISPID kChanged = 1;

template <class T>
T valueOr(const T* p, T fallback) { return p ? *p : fallback; }

// Vertex sums for the mean; an empty polygon's centre is the origin.
void centreOf(const std::vector<Point*>& vertices, double& cx, double& cy) {
    double sx = 0, sy = 0;
    for (const Point* p : vertices) {
        sx += p->x();
        sy += p->y();
    }
    const double n = static_cast<double>(vertices.size());
    cx = vertices.empty() ? 0.0 : sx / n;
    cy = vertices.empty() ? 0.0 : sy / n;
}

}  // namespace

Polygon::Polygon() : self_(std::make_shared<OwnerCell>()), points_(Points::make()) {
    self_->polygon = this;
    points_->setOwner(self_);
}

// The list and the points may outlive the polygon (a client holds them): from
// now on they work alone.
Polygon::~Polygon() { self_->polygon = nullptr; }

// ------------------------------------------------------------ notification

void Polygon::pointChanged(Point* point, double prevX, double prevY) {
    if (!hasSinks()) return;
    ComPtr<Polygon> alive(this);  // a handler may drop the client's last reference
    EventArgs args;
    args.val(static_cast<IDispatch*>(point)).val(prevX).val(prevY).valBool(VARIANT_FALSE);
    raiseEvent(kChanged, args);
}

void Polygon::allChanged() {
    if (!hasSinks()) return;
    ComPtr<Polygon> alive(this);
    EventArgs args;
    args.val(static_cast<IDispatch*>(nullptr)).val(0.0).val(0.0).valBool(VARIANT_TRUE);
    raiseEvent(kChanged, args);
}

template <class F>
void Polygon::transform(F&& move) {
    for (Point* p : points_->vertices()) {
        double x = p->x(), y = p->y();
        move(x, y);
        p->place(x, y);
    }
    // Reported even for an empty polygon: one report per operation, always.
    allChanged();
}

std::vector<POINTAPI> Polygon::wholeVertices() const {
    const std::vector<Point*>& v = points_->vertices();
    std::vector<POINTAPI> set(v.size());
    for (size_t i = 0; i < v.size(); ++i) set[i] = POINTAPI{roundToLong(v[i]->x()), roundToLong(v[i]->y())};
    return set;
}

// ---------------------------------------------------------------- members

STDMETHODIMP Polygon::get_Points(_Points** pRet) {
    return guard([&] {
        *required(pRet) = points_.get();
        points_->AddRef();
    });
}

STDMETHODIMP Polygon::get_CentrePoint(_Point** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        double cx, cy;
        centreOf(points_->vertices(), cx, cy);
        ComPtr<Point> p = Point::make();  // not listed and without owner
        p->place(cx, cy);
        *pRet = p.detach();
    });
}

STDMETHODIMP Polygon::get_Rectangle(_Rectangle** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        TOVA_RECT r{0, 0, 0, 0};
        bool first = true;
        for (const Point* p : points_->vertices()) {
            const double x = p->x(), y = p->y();
            if (first) {
                r.Left = r.Right = roundToLong(x);
                r.Top = r.Bottom = roundToLong(y);
                first = false;
                continue;
            }
            // The unrounded coordinate against the whole-number edge; the edge
            // takes the rounded value, so the extreme vertices lie on it.
            if (x < r.Left) r.Left = roundToLong(x);
            if (x > r.Right) r.Right = roundToLong(x);
            if (y < r.Top) r.Top = roundToLong(y);
            if (y > r.Bottom) r.Bottom = roundToLong(y);
        }
        ComPtr<Rectangle> rect = Rectangle::make();
        HRESULT hr = rect->SetRectangle(&r);
        if (FAILED(hr)) throw Raised{hr};
        *pRet = rect.detach();
    });
}

STDMETHODIMP Polygon::get_Tag(VARIANT* pRet) { return guard([&] { readTag(tag_, pRet); }); }
STDMETHODIMP Polygon::put_Tag(VARIANT* Tag) { return guard([&] { storeTag(tag_, Tag); }); }
STDMETHODIMP Polygon::putref_Tag(VARIANT* Tag) { return put_Tag(Tag); }

STDMETHODIMP Polygon::Draw(LONG hDC, PenStyleConstants* BorderStyle, LONG* BorderColor, LONG* BorderWidth,
                           LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) {
    return guard([&] {
        const long width = valueOr<LONG>(BorderWidth, 1);
        const std::vector<POINTAPI> set = wholeVertices();
        // A width below 1 suppresses the fill as well.
        if (set.size() < 3 || hDC == 0 || width < 1) return;
        HDC dc = toHandle<HDC>(hDC);
        Pen pen(CreatePen(static_cast<int>(valueOr<PenStyleConstants>(BorderStyle, PS_SOLID)), static_cast<int>(width),
                          static_cast<COLORREF>(translateColor(valueOr<LONG>(BorderColor, 0)))));
        LOGBRUSH lb{static_cast<UINT>(valueOr<BrushStyleConstants>(BackStyle, BS_SOLID)),
                    static_cast<COLORREF>(translateColor(valueOr<LONG>(BackColor, 0))),
                    static_cast<ULONG_PTR>(valueOr<HatchStyleConstants>(Hatch, HS_CROSS))};
        Brush brush(CreateBrushIndirect(&lb));
        if (!pen || !brush) return;
        Selection penIn(dc, pen.get());
        if (!penIn.ok()) return;
        Selection brushIn(dc, brush.get());
        if (!brushIn.ok()) return;
        static_assert(sizeof(POINTAPI) == sizeof(POINT), "vertex records are Win32 points");
        ::Polygon(dc, reinterpret_cast<const POINT*>(set.data()), static_cast<int>(set.size()));
    });
}

STDMETHODIMP Polygon::Rotate(DOUBLE* RadianAngle, DOUBLE* CentreX, DOUBLE* CentreY) {
    return guard([&] {
        const double angle = *required(RadianAngle);
        // Omitted, the centre is the origin, not the centre point.
        const double cx = valueOr(CentreX, 0.0), cy = valueOr(CentreY, 0.0);
        const double c = std::cos(angle), s = std::sin(angle);
        transform([&](double& x, double& y) {
            const double dx = x - cx, dy = y - cy;
            x = dx * c + dy * s + cx;
            y = dy * c - dx * s + cy;
        });
    });
}

STDMETHODIMP Polygon::Offset(DOUBLE* dX, DOUBLE* dy) {
    return guard([&] {
        // The first amount moves both axes and dy is not used: clients rely on
        // this, so it stays.
        const double d = valueOr(dX, 0.0);
        transform([&](double& x, double& y) {
            x += d;
            y += d;
        });
    });
}

void Polygon::inflate(double dx, double dy) {
    double cx, cy;
    centreOf(points_->vertices(), cx, cy);
    transform([&](double& x, double& y) {
        if (x < cx) x -= dx;
        else if (x > cx) x += dx;
        if (y < cy) y -= dy;
        else if (y > cy) y += dy;
    });
}

STDMETHODIMP Polygon::Inflate(DOUBLE* dX, DOUBLE* dy) {
    return guard([&] { inflate(valueOr(dX, 0.0), valueOr(dy, 0.0)); });
}

STDMETHODIMP Polygon::Deflate(DOUBLE* dX, DOUBLE* dy) {
    return guard([&] { inflate(-valueOr(dX, 0.0), -valueOr(dy, 0.0)); });
}

STDMETHODIMP Polygon::PushState(VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        stack_.push_back(wholeVertices());
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP Polygon::PopState(VARIANT_BOOL* pRet) {
    return guard([&] {
        *required(pRet) = VARIANT_FALSE;
        if (stack_.empty()) return;
        std::vector<POINTAPI> set = std::move(stack_.back());
        stack_.pop_back();
        ComPtr<Polygon> alive(this);
        // Cleared and reported, then loaded with new points and reported again;
        // an empty saved set leaves the list empty with the same two reports.
        points_->removeAll();
        allChanged();
        points_->load(set);
        allChanged();
        *pRet = VARIANT_TRUE;
    });
}

STDMETHODIMP Polygon::ClearStack() {
    return guard([&] { std::vector<std::vector<POINTAPI>>().swap(stack_); });
}

STDMETHODIMP Polygon::Clone(_Polygon** pRet) {
    return guard([&] {
        *required(pRet) = nullptr;
        ComPtr<Polygon> copy = make();
        std::vector<POINTAPI> set = wholeVertices();
        // The new polygon has no sinks yet: loading it reports to nobody.
        if (!set.empty()) copy->points_->load(set);
        *pRet = copy.detach();
    });
}

}  // namespace tova
