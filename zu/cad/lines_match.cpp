#include "zu/cad/lines_match.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "zu/numerics/internal/closest_points.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
// A gap of at most this share of the shorter trimmed line is a small one [-].
constexpr double kSmallGap = 0.05;

// The end of the line a, b that stays when it is trimmed at m: the farther one, a in a tie.
const ZuPoint3d& Farther(const ZuPoint3d& a, const ZuPoint3d& b, const ZuPoint3d& m) {
  return m.Distance(b) <= m.Distance(a) ? a : b;
}

// The direction in which a line runs on past m: -1 towards a when m is no farther from a than from
// b.
double ExtendSign(const ZuPoint3d& a, const ZuPoint3d& b, const ZuPoint3d& m) {
  return m.Distance(a) <= m.Distance(b) ? -1.0 : 1.0;
}

// The foot point of m on the line through a with the unit direction d.
ZuPoint3d Project(const ZuPoint3d& a, const ZuVector3d& d, const ZuPoint3d& m) {
  const ZuVector3d v = m - a;
  const double dLength = v.Norm();
  if (dLength == 0.0) return a;  // no direction to m, which is its own foot point
  return a + (v / dLength * d) * dLength * d;
}

// The coordinate that a flat mode leaves out; null in space.
double* LeftOut(_MVector* p, eMatchMode mode) {
  switch (mode) {
    case eMatchModeXY:
      return &p->z;
    case eMatchModeXZ:
      return &p->y;
    case eMatchModeYZ:
      return &p->x;
    default:
      return nullptr;
  }
}

}  // namespace

ZuCad2LinesMatch::ZuCad2LinesMatch(const ZuPoint3d& a1, const ZuPoint3d& a2, const ZuPoint3d& b1,
                                   const ZuPoint3d& b2, double extend1, double extend2,
                                   double parallelAngle, eMatchMode mode)
    : m_ptLine1A(a1),
      m_ptLine1B(a2),
      m_ptLine2A(b1),
      m_ptLine2B(b2),
      m_dExtend1(extend1),
      m_dExtend2(extend2) {
  const double dSinLimit = std::cos((90.0 - parallelAngle) / 180.0 * kPi);

  double c1 = 0.0, c2 = 0.0;
  const bool bFlat = LeftOut(&m_ptLine1A, mode) != nullptr;
  if (bFlat) {
    c1 = *LeftOut(&m_ptLine1A, mode);
    c2 = *LeftOut(&m_ptLine2A, mode);
    for (ZuPoint3d* p : {&m_ptLine1A, &m_ptLine1B, &m_ptLine2A, &m_ptLine2B}) {
      *LeftOut(p, mode) = 0.0;
    }
  }
  m_bValid = Calc(dSinLimit);
  if (bFlat && m_bValid) {
    *LeftOut(&m_ptKeep1, mode) = c1;
    *LeftOut(&m_ptKeep2, mode) = c2;
    *LeftOut(&m_ptMatch1, mode) = *LeftOut(&m_ptMatch2, mode) = (c1 + c2) * 0.5;
  }
}

bool ZuCad2LinesMatch::Calc(double sinLimit) {
  m_bValid = false;
  m_bParallel = false;
  const ZuVector3d d1 = Normalized(m_ptLine1B - m_ptLine1A);
  const ZuVector3d d2 = Normalized(m_ptLine2B - m_ptLine2A);
  const ZuVector3d n = d1 % d2;
  return n.Norm() <= sinLimit ? CalcParallel(d1, d2) : CalcSkew(d1, d2, n);
}

bool ZuCad2LinesMatch::CalcSkew(const ZuVector3d& d1, const ZuVector3d& d2, const ZuVector3d& n) {
  double t = 0.0, u = 0.0;
  if (!ZuSolveClosestPoints(n, d1, d2, m_ptLine2A - m_ptLine1A, &t, &u)) return false;
  const ZuPoint3d m1 = m_ptLine1A + t * d1;
  const ZuPoint3d m2 = m_ptLine2A + u * d2;
  m_ptKeep1 = Farther(m_ptLine1A, m_ptLine1B, m1);
  m_ptKeep2 = Farther(m_ptLine2A, m_ptLine2B, m2);
  const double dSign1 = ExtendSign(m_ptLine1A, m_ptLine1B, m1);
  const double dSign2 = ExtendSign(m_ptLine2A, m_ptLine2B, m2);
  m_ptMatch1 = m_ptLine1A + (t + m_dExtend1 * dSign1) * d1;
  m_ptMatch2 = m_ptLine2A + (u + m_dExtend2 * dSign2) * d2;
  return true;
}

bool ZuCad2LinesMatch::CalcParallel(const ZuVector3d& d1, const ZuVector3d& d2) {
  struct Ends {
    const ZuPoint3d& p;
    const ZuPoint3d& q;
  };
  const Ends ends[] = {{m_ptLine1A, m_ptLine2A},
                       {m_ptLine1A, m_ptLine2B},
                       {m_ptLine1B, m_ptLine2A},
                       {m_ptLine1B, m_ptLine2B}};
  const Ends& nearest = *std::min_element(
      std::begin(ends), std::end(ends),
      [](const Ends& a, const Ends& b) { return a.p.Distance(a.q) < b.p.Distance(b.q); });
  const ZuPoint3d middle = nearest.p.MiddlePoint(nearest.q);

  m_ptMatch1 = Project(m_ptLine1A, d1, middle);
  m_ptMatch2 = Project(m_ptLine2A, d2, middle);
  m_ptKeep1 = Farther(m_ptLine1A, m_ptLine1B, m_ptMatch1);
  m_ptKeep2 = Farther(m_ptLine2A, m_ptLine2B, m_ptMatch2);
  m_bParallel = true;
  return true;
}

int ZuCad2LinesMatch::ValueDistance() const {
  const double dLength = std::min(m_ptKeep1.Distance(m_ptMatch1), m_ptKeep2.Distance(m_ptMatch2));
  const double dGap = Distance();
  if (dGap == 0.0 || dLength == 0.0) return 0;
  return dGap / dLength > kSmallGap ? 2 : 1;
}
