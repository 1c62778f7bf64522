#include "zu/numerics/line2d.h"

#include <algorithm>

#include "zu/points/point.h"

namespace {

// Below this sine of their angle two lines of the plane run parallel [-].
constexpr double kParallel2d = 1e-6;
// Parallel lines are one where their distance is no more than this share of the coordinates [-].
constexpr double kSameLine = 1e-10;
// What a segment reaches beyond its ends, in its length [-].
constexpr double kBeyondEnd = 1e-12;

bool IsBetween(double t, double dLength) {
  return -kBeyondEnd * dLength <= t && t <= (1.0 + kBeyondEnd) * dLength;
}

}  // namespace

ZuPoint2d::ZuPoint2d(const ZuPoint& point) : x(point.m_dX), y(point.m_dY) {}

ZuLine2d::ZuLine2d(const ZuPoint2d& start, const ZuVector2d& v)
    : m_ptStart(start), m_vDirection(Normalized(v)) {
  m_ptEnd = m_ptStart + m_vDirection;
}

ZuLine2d::ZuLine2d(const ZuPoint2d& start, const ZuPoint2d& end)
    : m_ptStart(start), m_ptEnd(end), m_vDirection(Normalized(end - start)) {}

void ZuLine2d::setEnd(const ZuPoint2d& end) {
  m_ptEnd = end;
  m_vDirection = Normalized(end - m_ptStart);
}

eLineMeet ZuLine2d::Meet(const ZuLine2d& line, double* pdT, double* pdU) const {
  const ZuVector2d r = line.m_ptStart - m_ptStart;
  const double dSin = m_vDirection % line.m_vDirection;
  const auto isUnit = [](const ZuVector2d& v) { return v.IsNormalized(1e-6); };
  if (!isUnit(m_vDirection) || !isUnit(line.m_vDirection) || !std::isfinite(r.x + r.y)) {
    return eLineMeetDegenerate;
  }
  if (std::fabs(dSin) < kParallel2d) {
    double dSize = 0.0;
    for (const ZuPoint2d* p : {&m_ptStart, &m_ptEnd, &line.m_ptStart, &line.m_ptEnd}) {
      dSize = std::max({dSize, std::fabs(p->x), std::fabs(p->y)});
    }
    return getNormDistance(line.m_ptStart) <= kSameLine * dSize ? eLineMeetSame : eLineMeetParallel;
  }
  *pdT = r % line.m_vDirection / dSin;
  *pdU = r % m_vDirection / dSin;
  return std::isfinite(*pdT + *pdU) ? eLineMeetPoint : eLineMeetDegenerate;
}

eLineMeet ZuLine2d::Intersect(const ZuLine2d& line, ZuPoint2d& p) const {
  double t = 0.0, u = 0.0;
  const eLineMeet eMeet = Meet(line, &t, &u);
  if (eMeet == eLineMeetPoint) p = Evaluate(t);
  return eMeet;
}

eLineMeet ZuLine2d::IntersectSegment(const ZuLine2d& line, ZuPoint2d& p) const {
  double t = 0.0, u = 0.0;
  const eLineMeet eMeet = Meet(line, &t, &u);
  if (eMeet != eLineMeetPoint) return eMeet;
  if (!IsBetween(t, getLength()) || !IsBetween(u, line.getLength())) return eLineMeetOutside;
  p = Evaluate(t);
  return eLineMeetPoint;
}

bool ZuLine2d::getClosestPointTo(const ZuPoint2d& q, ZuPoint2d& foot, bool bInfinite) const {
  const double t = getParameter(q);
  foot = Evaluate(t);
  return bInfinite || (0.0 <= t && t <= getLength());
}

double ZuLine2d::getNormDistance(const ZuPoint2d& q, ZuPoint2d& foot) const {
  foot = Projection(q);
  return getNormDistance(q);
}

double ZuLine2d::getNormDistance(const ZuPoint2d& q, bool& bInside) const {
  ZuPoint2d foot;
  bInside = getClosestPointTo(q, foot, false);
  return getNormDistance(q);
}

double ZuLine2d::getSegmentDistance(const ZuPoint2d& q) const {
  const double t = getParameter(q);
  if (t <= 0.0) return q.Distance(m_ptStart);
  return t >= getLength() ? q.Distance(m_ptEnd) : getNormDistance(q);
}
