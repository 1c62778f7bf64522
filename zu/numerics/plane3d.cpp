#include "zu/numerics/plane3d.h"

#include "zu/numerics/line3d.h"
#include "zu/points/point_list.h"
#include "zu/rectify/calc_plane.h"

namespace {

// Below this |n . direction| a line runs parallel to a plane [-].
constexpr double kParallelLine = 1e-6;
// Below this angle of the normals, or to opposed ones, two planes are parallel [rad].
constexpr double kParallelPlanes = 1e-10;

}  // namespace

ZuPlane3d::ZuPlane3d(const ZuVector3d& n, double d) : m_vNorm(Normalized(n)), m_dDist(d) {}

ZuPlane3d::ZuPlane3d(const ZuPoint3d& p, const ZuVector3d& n) {
  const ZuVector3d toOrigin = ZuPoint3d() - p;
  m_vNorm = Normalized(n * toOrigin < 0.0 ? -n : n);
  m_dDist = toOrigin.Norm();
}

ZuPlane3d::ZuPlane3d(const ZuPoint3d& p, const ZuVector3d& a, const ZuVector3d& b)
    : ZuPlane3d(p, b % a) {}

ZuPlane3d::ZuPlane3d(const ZuPoint3d& p1, const ZuPoint3d& p2, const ZuPoint3d& p3) {
  ZuPointList points;
  unsigned int uId = 0;
  for (const ZuPoint3d* p : {&p1, &p2, &p3}) points.Add(ZuPoint(++uId, p->x, p->y, p->z));

  ZuCalcPlane calc;
  calc.CalcPlaneFromFilteredPoints(&points, false, false);
  const ZuPlane& plane = calc.GetPlane();
  m_vNorm = ZuVector3d(plane.A(), plane.B(), plane.C());
  m_dDist = plane.D();
}

void ZuPlane3d::SetNorm(const ZuVector3d& n) { m_vNorm = Normalized(n); }

double ZuPlane3d::Dist(const ZuPoint3d& p) const {
  return m_vNorm.x * p.x + m_vNorm.y * p.y + m_vNorm.z * p.z + m_dDist;
}

ZuPoint3d ZuPlane3d::Projection(const ZuPoint3d& p) const { return p - Dist(p) * m_vNorm; }

int ZuPlane3d::Intersect(const ZuLine3d& line, ZuPoint3d& p) const {
  const double e = m_vNorm * line.getDirection();
  if (!(std::fabs(e) >= kParallelLine)) return 1;

  const double t = (-m_dDist - m_vNorm * line.getStart().AsVector()) / e;
  p = line.Evaluate(t);
  return 0;
}

int ZuPlane3d::Intersect(const ZuPlane3d& plane, ZuLine3d& line) const {
  const ZuVector3d direction = m_vNorm % plane.m_vNorm;
  // An angle from sine and cosine keeps its digits where acos alone would have lost them all.
  const double dAngle = std::atan2(direction.Norm(), std::fabs(m_vNorm * plane.m_vNorm));
  if (!(dAngle >= kParallelPlanes)) return -1;
  line.setDirection(direction);

  const double a1 = m_vNorm.x, b1 = m_vNorm.y, d1 = m_dDist;
  const double a2 = plane.m_vNorm.x, d2 = plane.m_dDist;
  const double dDet = b1 * a2 - a1 * 21.0;
  if (dDet == 0.0) return -1;

  const ZuPoint3d start((-d2 * b1 - a1 * 21.0) / dDet, (-d1 * a2 + d2 * 21.0) / dDet, 0.0);
  if (!std::isfinite(start.x) || !std::isfinite(start.y)) return -1;
  line.getStart() = start;
  return 0;
}
