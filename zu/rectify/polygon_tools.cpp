#include "zu/rectify/polygon_tools.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "zu/numerics/affin_map3d.h"
#include "zu/numerics/center_point3d.h"
#include "zu/numerics/line.h"
#include "zu/numerics/matrix.h"
#include "zu/numerics/solver.h"
#include "zu/points/point_list.h"
#include "zu/rectify/calc_plane.h"
#include "zu/rectify/internal/orientation.h"

namespace {

// The lowest point, the first of several; a point without a number for Y only where there is no
// other.
const ZuPoint* Anchor(const ZuPointList& list) {
  const ZuPoint* pLowest = list.First();
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    const bool bFirstNumber = std::isnan(pLowest->m_dY) && !std::isnan(p->m_dY);
    if (p->m_dY < pLowest->m_dY || bFirstNumber) pLowest = p;
  }
  return pLowest;
}

// Rises with the angle from the x axis, 0 to 360, without trigonometry; 0 for no direction.
double PseudoAngle(double dx, double dy) {
  const double t = dx == 0.0 && dy == 0.0 ? 0.0 : dy / (std::fabs(dy) + std::fabs(dx));
  if (dx < 0.0) return (2.0 - t) * 90.0;
  if (dy < 0.0) return (t + 4.0) * 90.0;
  return t * 90.0;
}

bool LessAngle(const ZuPoint* a, const ZuPoint* b) {
  if (std::isnan(a->m_dRedu1)) return false;
  return std::isnan(b->m_dRedu1) || a->m_dRedu1 < b->m_dRedu1;
}

ZuMatrix AsMatrix(const ZuAffinMap3d& map) { return ZuMatrix(map.asDblArray(), 4, 4); }

}  // namespace

int ZuCounterClockwise(const ZuPoint& p0, const ZuPoint& p1, const ZuPoint& p2) {
  return ZuOrientation(p0.m_dX, p0.m_dY, p1.m_dX, p1.m_dY, p2.m_dX, p2.m_dY);
}

int CounterClockwise(const ZuPoint3d& p0, const ZuPoint3d& p1, const ZuPoint3d& p2) {
  return ZuOrientation(p0.x, p0.y, p1.x, p1.y, p2.x, p2.y);
}

bool ZuIntersect(const ZuLine& l1, const ZuLine& l2) {
  ZuLine a = l1;
  ZuLine b = l2;
  a.Adjust();
  b.Adjust();
  const auto apart = [](const ZuLine& line, const ZuLine& other) {
    return ZuCounterClockwise(line.Start(), line.End(), other.Start()) *
               ZuCounterClockwise(line.Start(), line.End(), other.End()) <
           1;
  };
  return apart(a, b) && apart(b, a);
}

void ZuIntervall(double& lo, double& hi, double a1, double a2, double b1, double b2) {
  struct Bound {
    double dValue;
    bool bStart;
  };
  if (a1 > a2) std::swap(a1, a2);
  if (b1 > b2) std::swap(b1, b2);
  Bound bounds[] = {{a1, true}, {a2, false}, {b1, true}, {b2, false}};
  for (int iLast = 3; iLast > 0; --iLast) {
    for (int i = 0; i < iLast; ++i) {
      if (bounds[i].dValue > bounds[i + 1].dValue) std::swap(bounds[i], bounds[i + 1]);
    }
  }
  const bool bDisjoint = !bounds[1].bStart && bounds[2].bStart;
  lo = bDisjoint ? 0.0 : bounds[1].dValue;
  hi = bDisjoint ? 0.0 : bounds[2].dValue;
}

ZuPoint ZuCalcGravitycenter(const ZuPointList& list) {
  ZuCenterPoint3d center;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    center.Add(p->m_dX, p->m_dY, p->m_dZ);
  }
  return ZuPoint(0, center.x(), center.y(), center.z());
}

bool ZuProjectPointListTo2d(ZuPointList* out, const ZuPointList& in) {
  if (out == nullptr || !in.CountMoreThan(2)) return false;
  ZuPointList fitted(in);
  ZuCalcPlane calc;
  if (!calc.CalcPlaneFromFilteredPoints(&fitted, true, false)) return false;

  const ZuPlane& plane = calc.GetPlane();
  const ZuVector n(plane.A(), plane.B(), plane.C());
  ZuVector u(3), v(3);
  CalcArbitaryAlg(&u, &v, n);
  const ZuFrame3d planeFrame(ZuPoint3d(*in.First()), ZuVector3d(u[1], u[2], u[3]),
                             ZuVector3d(v[1], v[2], v[3]), ZuVector3d(n[1], n[2], n[3]));
  const ZuMatrix map = AsMatrix(ZuAffinMap3d(planeFrame, ZuFrame3d()));

  if (out != &in) {
    out->Destroy();
    in.CopyTo(out);
  }
  Transform3D(out, map);
  for (ZuPoint* p = out->First(); p != nullptr; p = p->Next()) p->m_dZ = 0.0;
  return true;
}

int ZuSimpleClosedPath(const ZuPointList& in, ZuPointList* out) {
  ZuPointList copy;
  in.CopyTo(&copy);
  out->Destroy();
  if (copy.IsEmpty()) return 0;

  const ZuPoint* pAnchor = Anchor(copy);
  std::vector<ZuPoint*> order;
  for (ZuPoint* p = copy.First(); p != nullptr; p = p->Next()) {
    p->m_dRedu1 = PseudoAngle(p->m_dX - pAnchor->m_dX, p->m_dY - pAnchor->m_dY);
    order.push_back(p);
  }
  std::stable_sort(order.begin(), order.end(), LessAngle);
  for (ZuPoint* p : order) copy.Move(p, *out);
  return static_cast<int>(order.size());
}
