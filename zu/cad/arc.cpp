#include "zu/cad/arc.h"

#include "zu/cad/internal/cad_numbers.h"

namespace {

using zu::internal::kTurn;
using zu::internal::Positive;

constexpr double kChordRounding = 1e-12;  // a radius this share below half the chord is half of it
constexpr double kStraight = 1e8;         // radius over extent of points that stand in a line [-]

ZuCadArc Failed(eCadStatus eStatus) {
  ZuCadArc arc;
  arc.fit.eStatus = eStatus;
  return arc;
}

ZuCadArc Finished(ZuCadArc arc) {
  const double dSum = arc.ptCentre.x + arc.ptCentre.y + arc.dRadius + arc.dStart + arc.dSweep;
  if (!std::isfinite(dSum)) return Failed(eCadNotFinite);
  arc.fit.eStatus = eCadOk;
  return arc;
}

// Of two directions, from the first to the second by turning left, in (0, 2 pi].
double Left(double dFrom, double dTo) {
  const double d = Positive(dTo - dFrom);
  return d == 0.0 ? kTurn : d;
}

struct Moments {
  double xx = 0, yy = 0, xy = 0, xz = 0, yz = 0, zz = 0;
};

// Algebraic circle of points whose mean is the origin, after Taubin: the smallest root of the
// characteristic polynomial by Newton's method, which comes down on it from 0.
ZuVector2d AlgebraicCentre(const Moments& m) {
  const double z = m.xx + m.yy, dCov = m.xx * m.yy - m.xy * m.xy, dVar = m.zz - z * z;
  const double a3 = 4.0 * z, a2 = -3.0 * z * z - m.zz;
  const double a1 = dVar * z + 4.0 * dCov * z - m.xz * m.xz - m.yz * m.yz;
  const double a0 =
      m.xz * (m.xz * m.yy - m.yz * m.xy) + m.yz * (m.yz * m.xx - m.xz * m.xy) - dVar * dCov;
  double x = 0.0;
  for (int i = 0; i < 60; ++i) {
    const double dNext =
        x - (a0 + x * (a1 + x * (a2 + x * a3))) / (a1 + x * (2.0 * a2 + 3.0 * a3 * x));
    if (!std::isfinite(dNext) || dNext < x || dNext == x) break;
    x = dNext;
  }
  const double dDet = x * x - x * z + dCov;
  return {(m.xz * (m.yy - x) - m.yz * m.xy) / dDet / 2.0,
          (m.yz * (m.xx - x) - m.xz * m.xy) / dDet / 2.0};
}

// Unknowns: centre and radius of reduced points.
struct CircleModel {
  const std::vector<ZuPoint2d>& points;
  const zu::internal::CadReduction& reduction;

  double operator()(const double* x, zu::internal::SmallNormals<3>* pNormals) const {
    double dSquares = 0.0;
    for (const ZuPoint2d& p : points) {
      const ZuVector2d d = (p - reduction.centre) / reduction.dExtent - ZuVector2d(x[0], x[1]);
      const double dLength = d.Norm(), v = dLength - x[2];
      dSquares += v * v;
      const double a[] = {-d.x / dLength, -d.y / dLength, -1.0};
      if (pNormals != nullptr && dLength > 0.0) pNormals->Add(a, -v);
    }
    return dSquares;
  }
};

// The part of the circle that holds all points.
void CoverPoints(const std::vector<ZuPoint2d>& points, ZuCadArc* pArc) {
  std::vector<double> directions;
  directions.reserve(points.size());
  for (const ZuPoint2d& p : points) directions.push_back((p - pArc->ptCentre).Direction());
  const double dFirst = directions.front();
  std::sort(directions.begin(), directions.end());
  double dGap = -1.0;
  size_t uBehind = 0;  // the direction that ends the widest gap
  for (size_t i = 0; i < directions.size(); ++i) {
    const size_t uNext = (i + 1) % directions.size();
    const double d = directions[uNext] - directions[i] + (uNext == 0 ? kTurn : 0.0);
    if (d <= dGap) continue;
    dGap = d;
    uBehind = uNext;
  }
  pArc->dStart = directions[uBehind];
  pArc->dSweep = kTurn - dGap;
  if (Positive(dFirst - pArc->dStart) <= 0.5 * pArc->dSweep) return;
  pArc->dStart += pArc->dSweep;
  pArc->dSweep = -pArc->dSweep;
}

// Whether the points are apart in two directions.
eCadStatus SpreadOf(const std::vector<ZuPoint2d>& points,
                    const zu::internal::CadReduction& reduction) {
  double dNearest = 0.0;
  for (const ZuPoint2d& p : points) {
    dNearest = std::max({dNearest, std::fabs(p.x), std::fabs(p.y)});
  }
  if (!(reduction.dExtent > 1e-15 * dNearest)) return eCadCoincident;
  ZuVector2d farthest;
  for (const ZuPoint2d& p : points) {
    const ZuVector2d d = p - points[0];
    if (d * d > farthest * farthest) farthest = d;
  }
  const double dLength = farthest.Norm();
  double dHeight = 0.0;
  for (const ZuPoint2d& p : points) {
    dHeight = std::max(dHeight, std::fabs(farthest % (p - points[0])) / dLength);
  }
  return dHeight > kZuCadSmall * dLength ? eCadOk : eCadCollinear;
}

bool IsSamePoint(const ZuPoint2d& a, const ZuPoint2d& b, double dExtent) {
  return !(a.Distance(b) > kZuCadSmall * dExtent);
}

}  // namespace

ZuCadArc ZuCadArc::ByThreePoints(const ZuPoint2d& a, const ZuPoint2d& b, const ZuPoint2d& c) {
  if (!a.IsFinite() || !b.IsFinite() || !c.IsFinite()) return Failed(eCadNotFinite);
  const ZuVector2d u = b - a, v = c - a;
  const double dExtent = std::max({u.Norm(), v.Norm(), (c - b).Norm()});
  if (IsSamePoint(a, b, dExtent) || IsSamePoint(b, c, dExtent) || IsSamePoint(a, c, dExtent)) {
    return Failed(eCadCoincident);
  }
  const double dCross = u % v;
  if (!(std::fabs(dCross) > kZuCadSmall * dExtent * dExtent)) return Failed(eCadCollinear);
  // The centre is as far from b and c as from a: u . m = u . u / 2, v . m = v . v / 2.
  const ZuVector2d m =
      ZuVector2d(u * u * v.y - v * v * u.y, v * v * u.x - u * u * v.x) / (2.0 * dCross);
  ZuCadArc arc;
  arc.ptCentre = a + m;
  arc.dRadius = m.Norm();
  arc.dStart = (-m).Direction();
  const double dEnd = (v - m).Direction();
  arc.dSweep = dCross > 0.0 ? Left(arc.dStart, dEnd) : -Left(dEnd, arc.dStart);
  arc.distances.assign(3, 0.0);
  return Finished(arc);
}

ZuCadArc ZuCadArc::ByRadius(const ZuPoint2d& a, const ZuPoint2d& b, double dRadius, bool bLeft,
                            bool bLong) {
  const ZuVector2d chord = b - a;
  const double dHalf = 0.5 * chord.Norm();
  if (!std::isfinite(dHalf) || !std::isfinite(dRadius)) return Failed(eCadNotFinite);
  if (!(dHalf > 0.0)) return Failed(eCadCoincident);
  if (!(dRadius >= dHalf * (1.0 - kChordRounding))) return Failed(eCadNoIntersection);
  const double dOver = std::max(0.0, (dRadius - dHalf) * (dRadius + dHalf));
  const ZuVector2d side = (bLeft ? 1.0 : -1.0) * chord.Normal() / (2.0 * dHalf);
  ZuCadArc arc;
  arc.ptCentre = a.MiddlePoint(b) + std::sqrt(dOver) * side;
  arc.dRadius = std::max(dRadius, dHalf);
  arc.dStart = (a - arc.ptCentre).Direction();
  const double dShort = 2.0 * std::asin(std::min(1.0, dHalf / arc.dRadius));
  arc.dSweep = (bLeft ? 1.0 : -1.0) * (bLong ? dShort - kTurn : dShort);
  arc.distances.assign(2, 0.0);
  return Finished(arc);
}

ZuCadArc ZuCadArc::ByCentre(const ZuPoint2d& centre, const ZuPoint2d& a, const ZuPoint2d& b,
                            bool bCounterClockwise) {
  const ZuVector2d u = a - centre, v = b - centre;
  const double dExtent = std::max(u.Norm(), v.Norm());
  if (!std::isfinite(dExtent)) return Failed(eCadNotFinite);
  if (IsSamePoint(a, centre, dExtent) || IsSamePoint(b, centre, dExtent)) {
    return Failed(eCadCoincident);
  }
  ZuCadArc arc;
  arc.ptCentre = centre;
  arc.dRadius = u.Norm();
  arc.dStart = u.Direction();
  const double dEnd = v.Direction();
  arc.dSweep = bCounterClockwise ? Left(arc.dStart, dEnd) : -Left(dEnd, arc.dStart);
  arc.distances = {0.0, v.Norm() - arc.dRadius};
  zu::internal::SetFigures(arc.distances, 2, 0.0, &arc.fit);
  return Finished(arc);
}

ZuCadArc ZuCadArc::BestFit(const std::vector<ZuPoint2d>& points, double dSigma) {
  if (!zu::internal::AreFinite(points)) return Failed(eCadNotFinite);
  if (points.size() < 3) return Failed(eCadTooFew);
  const zu::internal::CadReduction reduction(points);
  const eCadStatus eSpread = SpreadOf(points, reduction);
  if (eSpread != eCadOk) return Failed(eSpread);

  const double dExtent = reduction.dExtent, n = static_cast<double>(points.size());
  Moments m;
  for (const ZuPoint2d& p : points) {
    const ZuVector2d d = (p - reduction.centre) / dExtent;
    const double z = d * d;
    m.xx += d.x * d.x / n;
    m.yy += d.y * d.y / n;
    m.xy += d.x * d.y / n;
    m.xz += d.x * z / n;
    m.yz += d.y * z / n;
    m.zz += z * z / n;
  }
  const ZuVector2d start = AlgebraicCentre(m);
  double x[] = {start.x, start.y, std::sqrt(start * start + m.xx + m.yy)};
  if (!(x[2] < kStraight)) return Failed(eCadCollinear);
  zu::internal::SmallNormals<3> normals;
  const zu::internal::Search search =
      zu::internal::Minimise<3>(CircleModel{points, reduction}, x, &normals);
  const eCadStatus eStatus = zu::internal::StatusOf(search, eCadCollinear);
  if (eStatus != eCadOk) return Failed(eStatus);
  if (!(x[2] < kStraight)) return Failed(eCadCollinear);

  ZuCadArc arc;
  arc.ptCentre = reduction.centre + dExtent * ZuVector2d(x[0], x[1]);
  arc.dRadius = dExtent * x[2];
  arc.distances.reserve(points.size());
  for (const ZuPoint2d& p : points) arc.distances.push_back(arc.Dist(p));
  zu::internal::SetFigures(arc.distances, 3, dSigma, &arc.fit);
  normals.Invert(arc.adCov);
  for (double& d : arc.adCov) d *= arc.fit.dSigma * arc.fit.dSigma;
  CoverPoints(points, &arc);
  return Finished(arc);
}

ZuPoint2d ZuCadArc::Evaluate(double dPart) const {
  return ptCentre + dRadius * ZuVector2d::FromDirection(dStart + dPart * dSweep);
}

double ZuCadArc::Length() const { return dRadius * std::fabs(dSweep); }

double ZuCadArc::Rise() const {
  const double s = std::sin(0.25 * dSweep);
  return 2.0 * dRadius * s * s;
}
