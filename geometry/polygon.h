// Polygon: an ordered ring of vertices with Double coordinates, kept in its
// Points list, with whole-polygon operations, a stack of saved vertex sets and
// drawing. Changed reports one vertex (a client assigned a point's X or Y) or
// all of them (once per whole-polygon operation, removal or clearing).
#pragma once

#include "points.h"

#include <vector>

namespace tova {

class Polygon final : public Object<Polygon, _Polygon> {
public:
    static const ClassIdentity kClass;

    STDMETHODIMP get_Points(_Points** pRet) override;
    STDMETHODIMP get_CentrePoint(_Point** pRet) override;
    STDMETHODIMP get_Rectangle(_Rectangle** pRet) override;
    STDMETHODIMP get_Tag(VARIANT* pRet) override;
    STDMETHODIMP put_Tag(VARIANT* Tag) override;
    STDMETHODIMP putref_Tag(VARIANT* Tag) override;
    STDMETHODIMP Draw(LONG hDC, PenStyleConstants* BorderStyle, LONG* BorderColor, LONG* BorderWidth,
                      LONG* BackColor, BrushStyleConstants* BackStyle, HatchStyleConstants* Hatch) override;
    STDMETHODIMP Rotate(DOUBLE* RadianAngle, DOUBLE* CentreX, DOUBLE* CentreY) override;
    STDMETHODIMP Offset(DOUBLE* dX, DOUBLE* dy) override;
    STDMETHODIMP Inflate(DOUBLE* dX, DOUBLE* dy) override;
    STDMETHODIMP Deflate(DOUBLE* dX, DOUBLE* dy) override;
    STDMETHODIMP PushState(VARIANT_BOOL* pRet) override;
    STDMETHODIMP PopState(VARIANT_BOOL* pRet) override;
    STDMETHODIMP ClearStack() override;
    STDMETHODIMP Clone(_Polygon** pRet) override;

    // ---- for the list and its points
    Points* list() const { return points_.get(); }
    void pointChanged(Point* point, double prevX, double prevY);
    void allChanged();

private:
    friend class Object<Polygon, _Polygon>;
    Polygon();
    ~Polygon() override;

    // The vertices as whole-number records (ties to even).
    std::vector<POINTAPI> wholeVertices() const;
    // Moves every vertex with `move(x, y)`, then reports all points once.
    template <class F>
    void transform(F&& move);
    void inflate(double dx, double dy);

    Owner self_;
    ComPtr<Points> points_;
    std::vector<std::vector<POINTAPI>> stack_;  // saved sets, newest last
    Variant tag_;
};

}  // namespace tova
