#include "zu/cad/sight_intersection.h"

#include "zu/cad/internal/cad_numbers.h"
#include "zu/cad/internal/sight_model.h"
#include "zu/numerics/line2d.h"

namespace {

using zu::internal::PositionModel;
using zu::internal::SmallNormals;

constexpr size_t kMostPairs = 12;    // sights whose pairs are tried as the start
constexpr double kTouching = 1e-12;  // circles that miss by this share of their size touch [-]

ZuCadPosition NoPosition(eCadStatus eStatus) {
  ZuCadPosition result;
  result.fit.eStatus = eStatus;
  return result;
}

// Up to two points of two lines of position, the one that bLeft takes first.
struct Crossing {
  eCadStatus eStatus = eCadNoIntersection;
  int n = 0;
  ZuPoint2d apt[2];

  void Add(const ZuPoint2d& p) {
    apt[n++] = p;
    eStatus = eCadOk;
  }
};

// On the line from a to b, and left and right of it. bNear: circles that do not meet give the point
// between them.
Crossing CrossCircles(const ZuCadSight& a, const ZuCadSight& b, bool bNear) {
  Crossing crossing;
  const ZuVector2d base = b.ptKnown - a.ptKnown;
  const double d = base.Norm(), r = a.dValue, s = b.dValue, dSize = std::max({d, r, s});
  if (!(d > kZuCadSmall * dSize)) {
    crossing.eStatus = eCadCoincident;
    return crossing;
  }
  const double dGap = std::max(d - (r + s), std::fabs(r - s) - d);
  if (dGap > kTouching * dSize && !bNear) return crossing;
  const double x = (d + (r - s) * ((r + s) / d)) * 0.5;
  const double dAbove = std::max(0.0, (r - x) * (r + x));
  const ZuPoint2d foot = a.ptKnown + x / d * base;
  const ZuVector2d side = std::sqrt(dAbove) / d * base.Normal();
  crossing.Add(foot + side);
  if (dAbove > 0.0 && std::fabs(dGap) > kTouching * dSize) crossing.Add(foot - side);
  return crossing;
}

Crossing CrossRayAndCircle(const ZuCadSight& ray, const ZuCadSight& circle, bool bNear) {
  Crossing crossing;
  const ZuVector2d v = ZuVector2d::FromDirection(ray.dValue);
  const ZuVector2d w = circle.ptKnown - ray.ptKnown;
  const double r = circle.dValue, dAside = v % w, dFoot = v * w;
  const double dSize = std::max(w.Norm(), r);
  if (std::fabs(dAside) - r > kTouching * dSize && !bNear) return crossing;
  const double dHalf = std::sqrt(std::max(0.0, (r - dAside) * (r + dAside)));
  for (const double t : {dFoot + dHalf, dFoot - dHalf}) {
    if (t > 0.0 && (crossing.n == 0 || dHalf > 0.0)) crossing.Add(ray.ptKnown + t * v);
  }
  return crossing;
}

Crossing CrossRays(const ZuCadSight& a, const ZuCadSight& b) {
  Crossing crossing;
  const ZuVector2d u = ZuVector2d::FromDirection(a.dValue), v = ZuVector2d::FromDirection(b.dValue);
  ZuPoint2d p;
  switch (ZuLine2d(a.ptKnown, u).Intersect(ZuLine2d(b.ptKnown, v), p)) {
    case eLineMeetPoint:
      if ((p - a.ptKnown) * u > 0.0 && (p - b.ptKnown) * v > 0.0) crossing.Add(p);
      break;
    case eLineMeetParallel:
      crossing.eStatus = eCadParallel;
      break;
    case eLineMeetSame:
      crossing.eStatus = eCadCollinear;
      break;
    default:
      crossing.eStatus = eCadNotFinite;
  }
  if (a.ptKnown.Distance(b.ptKnown) == 0.0) crossing = {eCadCoincident, 0, {}};
  return crossing;
}

Crossing Cross(const ZuCadSight& a, const ZuCadSight& b, bool bNear) {
  const bool bRayA = a.kind == ZuCadSight::eDirection, bRayB = b.kind == ZuCadSight::eDirection;
  if (bRayA && bRayB) return CrossRays(a, b);
  if (!bRayA && !bRayB) return CrossCircles(a, b, bNear);
  return bRayA ? CrossRayAndCircle(a, b, bNear) : CrossRayAndCircle(b, a, bNear);
}

// The point of two sights that fits all of them best.
eCadStatus FindStart(const std::vector<ZuCadSight>& sights, const PositionModel& model,
                     ZuPoint2d* pPoint) {
  double dBest = std::numeric_limits<double>::infinity();
  eCadStatus eStatus = eCadOk;
  const size_t n = std::min(sights.size(), kMostPairs);
  for (size_t i = 0; i < n; ++i) {
    for (size_t j = i + 1; j < n; ++j) {
      const Crossing crossing = Cross(sights[i], sights[j], true);
      if (crossing.n == 0 && eStatus == eCadOk) eStatus = crossing.eStatus;
      for (int k = 0; k < crossing.n; ++k) {
        const double d = model.SquaresAt(crossing.apt[k]);
        if (!(d < dBest)) continue;
        dBest = d;
        *pPoint = crossing.apt[k];
      }
    }
  }
  return std::isfinite(dBest) ? eCadOk : eStatus;
}

// The largest angle of two lines of position at p, up to a right one.
double BestAngle(const std::vector<ZuCadSight>& sights, const ZuPoint2d& p) {
  double dSine = 0.0;
  const size_t n = std::min(sights.size(), kMostPairs);
  const auto normal = [&](size_t i) {
    const ZuVector2d v = Normalized(p - sights[i].ptKnown);
    return sights[i].kind == ZuCadSight::eDirection ? v.Normal() : v;
  };
  for (size_t i = 0; i < n; ++i) {
    for (size_t j = i + 1; j < n; ++j) {
      const double d = std::fabs(normal(i) % normal(j));
      if (d > dSine) dSine = d;
    }
  }
  return std::asin(std::min(1.0, dSine));
}

eCadStatus CheckSights(const std::vector<ZuCadSight>& sights, size_t uLeast) {
  for (const ZuCadSight& s : sights) {
    if (!s.ptKnown.IsFinite() || !std::isfinite(s.dValue) || !std::isfinite(s.dSigma)) {
      return eCadNotFinite;
    }
    if (s.dSigma < 0.0 || (s.kind == ZuCadSight::eDistance && s.dValue < 0.0)) {
      return eCadNotFinite;
    }
  }
  return sights.size() < uLeast ? eCadTooFew : eCadOk;
}

// Residuals and figures at the result, x and y first; U: unknowns.
template <int U>
void Finish(const PositionModel& model, const std::vector<ZuCadSight>& sights,
            const SmallNormals<U>* pNormals, ZuCadPosition* pResult) {
  std::vector<double> weighted;
  for (size_t i = 0; i < sights.size(); ++i) {
    pResult->residuals.push_back(model.Residual(i, pResult->pt, pResult->dZero));
    weighted.push_back(pResult->residuals.back() / model.Sigma(i));
  }
  zu::internal::SetFigures(weighted, U, model.IsSigmaTold() ? 1.0 : 0.0, &pResult->fit);
  double adInverse[U * U] = {};
  if (pNormals != nullptr) pNormals->Invert(adInverse);
  double dSum = pResult->pt.x + pResult->pt.y + pResult->dZero;
  for (int i = 0; i < U; ++i) {
    for (int j = 0; j < U; ++j) {
      const double dUnit = (i < 2 ? model.Extent() : 1.0) * (j < 2 ? model.Extent() : 1.0);
      const double d = adInverse[i * U + j] * dUnit * pResult->fit.dSigma * pResult->fit.dSigma;
      pResult->adCov[3 * i + j] = d;
      dSum += d;
    }
  }
  pResult->fit.eStatus = std::isfinite(dSum) ? eCadOk : eCadNotFinite;
}

ZuCadPosition IntersectTwo(const std::vector<ZuCadSight>& sights, bool bLeft,
                           const PositionModel& model) {
  const Crossing crossing = Cross(sights[0], sights[1], false);
  if (crossing.n == 0) return NoPosition(crossing.eStatus);
  ZuCadPosition result;
  result.bOther = crossing.n == 2;
  const int iTaken = result.bOther && !bLeft ? 1 : 0;
  result.pt = crossing.apt[iTaken];
  if (result.bOther) result.ptOther = crossing.apt[1 - iTaken];
  result.dGeometry = BestAngle(sights, result.pt);
  SmallNormals<2> normals;
  double x[2], adStep[2];
  model.Reduce(result.pt, x);
  model(x, &normals);
  const bool bSolved = normals.Solve(adStep);
  if (!bSolved && model.IsSigmaTold()) return NoPosition(eCadUndetermined);
  Finish<2>(model, sights, bSolved ? &normals : nullptr, &result);
  return result;
}

// Directions to known points from the point: its solution for three of them, and how safe it is.
struct Triple {
  bool bGood = false;
  ZuPoint2d pt;
  double dGap = 0.0;
};

// The point of the circle through x, the middle point m and the point sought that is opposite to m:
// x is seen dAngle to the right of m.
ZuPoint2d Opposite(const ZuPoint2d& x, const ZuPoint2d& m, double dAngle) {
  return x + (m - x).Normal() * (std::cos(dAngle) / std::sin(dAngle));
}

// The gap of p from the circle through three points, in its radii; 1 where they stand in a line.
double GapOfCircle(const ZuPoint2d& a, const ZuPoint2d& b, const ZuPoint2d& c, const ZuPoint2d& p) {
  const ZuVector2d u = b - a, v = c - a;
  const double dCross = u % v;
  if (std::fabs(dCross) <= kZuCadSmall * u.Norm() * v.Norm()) return 1.0;
  const ZuVector2d m =
      ZuVector2d(u * u * v.y - v * v * u.y, v * v * u.x - u * u * v.x) / (2.0 * dCross);
  return std::fabs((p - a - m).Norm() / m.Norm() - 1.0);
}

eCadStatus SolveTriple(const ZuCadSight* const apSights[3], Triple* pTriple) {
  // The middle point is the one that is farthest from being seen in line with the others.
  int iMiddle = 0;
  double dBest = -1.0;
  for (int i = 0; i < 3; ++i) {
    const double a = std::sin(apSights[i]->dValue - apSights[(i + 1) % 3]->dValue);
    const double b = std::sin(apSights[i]->dValue - apSights[(i + 2) % 3]->dValue);
    const double d = std::min(std::fabs(a), std::fabs(b));
    if (d <= dBest) continue;
    dBest = d;
    iMiddle = i;
  }
  const ZuCadSight& m = *apSights[iMiddle];
  const ZuCadSight& a = *apSights[(iMiddle + 1) % 3];
  const ZuCadSight& b = *apSights[(iMiddle + 2) % 3];
  const double dSize = std::max({a.ptKnown.Distance(b.ptKnown), a.ptKnown.Distance(m.ptKnown),
                                 b.ptKnown.Distance(m.ptKnown)});
  for (int i = 0; i < 3; ++i) {
    const double d = apSights[i]->ptKnown.Distance(apSights[(i + 1) % 3]->ptKnown);
    if (!(d > kZuCadSmall * dSize)) return eCadCoincident;
  }
  if (!(dBest > kZuCadSmall)) return eCadCollinear;
  const ZuPoint2d d = Opposite(a.ptKnown, m.ptKnown, m.dValue - a.dValue);
  const ZuPoint2d e = Opposite(b.ptKnown, m.ptKnown, m.dValue - b.dValue);
  if (!(d.Distance(e) > kZuCadSmall * (d.Distance(m.ptKnown) + e.Distance(m.ptKnown)))) {
    return eCadDangerousCircle;
  }
  pTriple->pt = ZuLine2d(d, e).Projection(m.ptKnown);
  for (const ZuCadSight* p : {&a, &b, &m}) {
    if (!(pTriple->pt.Distance(p->ptKnown) > kZuCadSmall * dSize)) return eCadCoincident;
  }
  pTriple->dGap = GapOfCircle(a.ptKnown, b.ptKnown, m.ptKnown, pTriple->pt);
  pTriple->bGood = pTriple->dGap > 1e-6;
  return pTriple->bGood ? eCadOk : eCadDangerousCircle;
}

// Whether p sees the known points in these directions and not in their opposites.
bool SeesThem(const ZuCadSight* const apSights[3], const ZuPoint2d& p) {
  const auto turn = [&](int i) {
    return (apSights[i]->ptKnown - p).Direction() - apSights[i]->dValue;
  };
  for (int i = 1; i < 3; ++i) {
    if (std::fabs(std::remainder(turn(i) - turn(0), zu::internal::kTurn)) > 1.0) return false;
  }
  return true;
}

}  // namespace

ZuCadPosition ZuCadIntersect(const std::vector<ZuCadSight>& sights, bool bLeft) {
  const eCadStatus eInput = CheckSights(sights, 2);
  if (eInput != eCadOk) return NoPosition(eInput);
  const PositionModel model(sights, false);
  if (sights.size() == 2) return IntersectTwo(sights, bLeft, model);
  ZuCadPosition result;
  const eCadStatus eStart = FindStart(sights, model, &result.pt);
  if (eStart != eCadOk) return NoPosition(eStart);
  double x[2];
  model.Reduce(result.pt, x);
  SmallNormals<2> normals;
  const eCadStatus eStatus =
      zu::internal::StatusOf(zu::internal::Minimise<2>(model, x, &normals), eCadUndetermined);
  if (eStatus != eCadOk) return NoPosition(eStatus);
  result.pt = model.PointOf(x);
  result.dGeometry = BestAngle(sights, result.pt);
  Finish<2>(model, sights, &normals, &result);
  for (size_t i = 0; i < sights.size(); ++i) {
    if (sights[i].kind == ZuCadSight::eDirection && std::fabs(result.residuals[i]) > 1.5) {
      return NoPosition(eCadNoIntersection);
    }
  }
  return result;
}

ZuCadPosition ZuCadResect(const std::vector<ZuCadSight>& sights) {
  const eCadStatus eInput = CheckSights(sights, 3);
  if (eInput != eCadOk) return NoPosition(eInput);
  Triple best;
  eCadStatus eStatus = eCadOk;
  const size_t n = std::min(sights.size(), kMostPairs);
  for (size_t i = 0; i < n; ++i) {
    for (size_t j = i + 1; j < n; ++j) {
      for (size_t k = j + 1; k < n; ++k) {
        const ZuCadSight* const apSights[] = {&sights[i], &sights[j], &sights[k]};
        Triple triple;
        eCadStatus eTriple = SolveTriple(apSights, &triple);
        if (eTriple == eCadOk && !SeesThem(apSights, triple.pt)) eTriple = eCadNoIntersection;
        if (eTriple != eCadOk && eStatus == eCadOk) eStatus = eTriple;
        if (eTriple == eCadOk && triple.dGap > best.dGap) best = triple;
      }
    }
  }
  if (!best.bGood) return NoPosition(eStatus);
  const PositionModel model(sights, true);
  ZuCadPosition result;
  double x[3];
  model.Reduce(best.pt, x);
  x[2] = (sights[0].ptKnown - best.pt).Direction() - sights[0].dValue;
  SmallNormals<3> normals;
  eStatus =
      zu::internal::StatusOf(zu::internal::Minimise<3>(model, x, &normals), eCadDangerousCircle);
  if (eStatus != eCadOk) return NoPosition(eStatus);
  result.pt = model.PointOf(x);
  result.dZero = zu::internal::Positive(x[2]);
  result.dGeometry = best.dGap;
  Finish<3>(model, sights, &normals, &result);
  return result;
}
