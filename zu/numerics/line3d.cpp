#include "zu/numerics/line3d.h"

#include "zu/numerics/bounding_box3d.h"
#include "zu/numerics/internal/closest_points.h"

namespace {

// The cosine of this angle bounds the sine between two lines that still have a meeting point [rad].
constexpr double kParallelAngle = 1.5533430342749532;  // 89 degrees
// Below this distance a point lies on the line [unit of the coordinates].
constexpr double kOnLine = 1e-10;

}  // namespace

ZuLine3d::ZuLine3d(const ZuPoint3d& start, const ZuVector3d& v)
    : m_pStart(start), m_vDirection(Normalized(v)) {
  m_pEnd = m_pStart + m_vDirection;
}

ZuLine3d::ZuLine3d(const ZuPoint3d& start, const ZuPoint3d& end)
    : m_pStart(start), m_pEnd(end), m_vDirection(Normalized(end - start)) {}

void ZuLine3d::setDirection(const ZuVector3d& v) { m_vDirection = Normalized(v); }

void ZuLine3d::setEnd(const ZuPoint3d& end) {
  m_pEnd = end;
  m_vDirection = Normalized(end - m_pStart);
}

ZuPoint3d ZuLine3d::Evaluate(double t) const { return m_pStart + t * m_vDirection; }

double ZuLine3d::Intersect(const ZuLine3d& line, ZuPoint3d& p) const {
  const ZuVector3d a = Normalized(m_vDirection);
  const ZuVector3d b = Normalized(line.m_vDirection);
  const ZuVector3d c = a % b;
  if (!(c.Norm() > std::cos(kParallelAngle))) return -1.0;

  double t = 0.0, u = 0.0;
  if (!ZuSolveClosestPoints(c, a, b, line.m_pStart - m_pStart, &t, &u)) return -1.0;
  const ZuPoint3d p1 = m_pStart + t * a;
  const ZuPoint3d p2 = line.m_pStart + u * b;
  p = p1.MiddlePoint(p2);
  return p1.Distance(p2);
}

bool ZuLine3d::getClosestPointTo(const ZuPoint3d& q, ZuPoint3d& foot, bool bInfinite) const {
  const double t = (q - m_pStart) * m_vDirection;
  foot = Evaluate(t);
  return bInfinite || (0.0 <= t && t <= getLength());
}

double ZuLine3d::getNormDistance(const ZuPoint3d& q) const {
  return ((q - m_pStart) % m_vDirection).Norm();
}

double ZuLine3d::getNormDistance(const ZuPoint3d& q, ZuPoint3d& foot) const {
  const double dDistance = getNormDistance(q);
  getClosestPointTo(q, foot, true);
  return dDistance;
}

double ZuLine3d::getNormDistance(const ZuPoint3d& q, bool& bInside) const {
  ZuPoint3d foot;
  const double dDistance = getNormDistance(q, foot);
  bInside = ZuBoundingBox3d(m_pStart, m_pEnd).IsInBox(foot);
  return dDistance;
}

bool ZuLine3d::getDistAtPoint(const ZuPoint3d& q, double& t) const {
  t = (q - m_pStart) * m_vDirection;
  return getNormDistance(q) < kOnLine;
}
