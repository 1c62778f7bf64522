#include "zu/cad/rectangle.h"

#include "zu/cad/internal/cad_numbers.h"
#include "zu/cad/internal/scatter.h"

namespace {

using zu::internal::CadReduction;
using zu::internal::Scatter;

// A point on a side: 0 and 2 run along the direction of the rectangle, 1 and 3 across it.
struct OnSide {
  ZuVector2d p;  // reduced
  int iSide;
};

struct Sides {
  ZuVector2d along;          // direction of sides 0 and 2
  double adAt[4] = {};       // of 0 and 2 across it, of 1 and 3 along it
  double dPreference = 0.0;  // by how much the direction is better than the worst, of their sum [-]
  double dSquares = 0.0;

  double Of(const OnSide& o) const {
    return (o.iSide % 2 == 0 ? along % o.p : along * o.p) - adAt[o.iSide];
  }
};

// The best sides. False: one of them has no point.
bool FitSides(const std::vector<OnSide>& points, Sides* pSides) {
  double adCount[4] = {};
  ZuVector2d aMean[4];
  for (const OnSide& o : points) {
    aMean[o.iSide] += o.p;
    ++adCount[o.iSide];
  }
  for (int k = 0; k < 4; ++k) {
    if (adCount[k] == 0.0) return false;
    aMean[k] /= adCount[k];
  }
  Scatter sum;  // points of sides 1 and 3 turned by a quarter, so that all run along
  for (const OnSide& o : points) {
    const ZuVector2d d = o.p - aMean[o.iSide];
    const ZuVector2d q = o.iSide % 2 == 0 ? d : -d.Normal();
    sum.xx += q.x * q.x;
    sum.yy += q.y * q.y;
    sum.xy += q.x * q.y;
  }
  const double dLarge = sum.Large();
  pSides->along = sum.Along();
  pSides->dSquares = sum.Small();
  pSides->dPreference = dLarge > 0.0 ? (dLarge - pSides->dSquares) / dLarge : 0.0;
  for (int k = 0; k < 4; ++k) {
    pSides->adAt[k] = k % 2 == 0 ? pSides->along % aMean[k] : pSides->along * aMean[k];
  }
  return true;
}

ZuCadRectangle NoRectangle(eCadStatus eStatus) {
  ZuCadRectangle result;
  result.fit.eStatus = eStatus;
  return result;
}

// The rectangle of its sides, side 0 from corner 0 to corner 1.
void MakeRectangle(const Sides& sides, const CadReduction& reduction, ZuCadRectangle* pResult) {
  const ZuVector2d u = sides.along, v = u.Normal();
  const int aiAlong[] = {3, 1, 1, 3}, aiAcross[] = {0, 0, 2, 2};  // the sides that meet in a corner
  for (int k = 0; k < 4; ++k) {
    pResult->corners.push_back(reduction.centre +
                               reduction.dExtent *
                                   (sides.adAt[aiAlong[k]] * u + sides.adAt[aiAcross[k]] * v));
  }
  pResult->ptCentre = pResult->corners[0].MiddlePoint(pResult->corners[2]);
  const ZuVector2d side = pResult->corners[1] - pResult->corners[0];
  pResult->dDirection = (side * u < 0.0 ? -u : u).Direction();
  pResult->dWidth = reduction.dExtent * std::fabs(sides.adAt[1] - sides.adAt[3]);
  pResult->dHeight = reduction.dExtent * std::fabs(sides.adAt[2] - sides.adAt[0]);
}

// Unknowns: direction and the four sides. False: something is open.
bool SetDeviations(const std::vector<OnSide>& points, const Sides& sides, double dExtent,
                   ZuCadRectangle* pResult) {
  zu::internal::SmallNormals<5> normals;
  for (const OnSide& o : points) {
    double a[5] = {o.iSide % 2 == 0 ? -(sides.along * o.p) : sides.along % o.p};
    a[1 + o.iSide] = -1.0;
    normals.Add(a, 0.0);
  }
  double x[5], q[25];
  if (!normals.Solve(x)) return false;
  normals.Invert(q);
  const auto sd = [&](int i, int k) {
    return pResult->fit.dSigma * std::sqrt(q[6 * i] + q[6 * k] - 2.0 * q[5 * i + k]);
  };
  pResult->dDirectionSd = pResult->fit.dSigma / dExtent * std::sqrt(q[0]);
  pResult->dWidthSd = sd(2, 4);
  pResult->dHeightSd = sd(1, 3);
  return true;
}

ZuCadRectangle Checked(ZuCadRectangle result, const std::vector<OnSide>& points, const Sides& sides,
                       double dExtent) {
  if (!(result.dWidth > kZuCadSmall * dExtent) || !(result.dHeight > kZuCadSmall * dExtent)) {
    return NoRectangle(eCadCollinear);
  }
  if (!SetDeviations(points, sides, dExtent, &result)) return NoRectangle(eCadUndetermined);
  if (!zu::internal::AreFinite(result.corners)) return NoRectangle(eCadNotFinite);
  result.fit.eStatus = eCadOk;
  return result;
}

// Puts each point on the side of a box that is closest to it. True: some point changed its side.
bool AssignSides(const ZuVector2d& along, const double* adAt, std::vector<OnSide>* pPoints) {
  bool bChanged = false;
  for (OnSide& o : *pPoints) {
    int iBest = 0;
    double dBest = std::numeric_limits<double>::infinity();
    for (int k = 0; k < 4; ++k) {
      const double d = std::fabs((k % 2 == 0 ? along % o.p : along * o.p) - adAt[k]);
      if (d >= dBest) continue;
      dBest = d;
      iBest = k;
    }
    bChanged |= iBest != o.iSide;
    o.iSide = iBest;
  }
  return bChanged;
}

// The sides that start with the box of the points in that direction and end where no point changes.
bool SettleSides(double dDirection, std::vector<OnSide>* pPoints, Sides* pSides) {
  constexpr int kMostRounds = 30;
  const double dInfinite = std::numeric_limits<double>::infinity();
  pSides->along = ZuVector2d::FromDirection(dDirection);
  double* const adAt = pSides->adAt;
  adAt[0] = adAt[3] = dInfinite;
  adAt[1] = adAt[2] = -dInfinite;
  for (const OnSide& o : *pPoints) {
    const double x = pSides->along * o.p, y = pSides->along % o.p;
    adAt[0] = std::min(adAt[0], y);
    adAt[2] = std::max(adAt[2], y);
    adAt[1] = std::max(adAt[1], x);
    adAt[3] = std::min(adAt[3], x);
  }
  AssignSides(pSides->along, adAt, pPoints);
  for (int i = 0; i < kMostRounds; ++i) {
    if (!FitSides(*pPoints, pSides)) return false;
    if (!AssignSides(pSides->along, adAt, pPoints)) return true;
  }
  return true;
}

// Turns the sides so that side 0 is the lower one, within 45 degrees of the x axis.
void LayLevel(std::vector<OnSide>* pPoints, Sides* pSides) {
  while (!(pSides->along.x > 0.0 && pSides->along.y > -pSides->along.x &&
           pSides->along.y <= pSides->along.x)) {
    // Side 1, which runs across, is the new side 0.
    pSides->along = pSides->along.Normal();
    const double d = pSides->adAt[0];
    pSides->adAt[0] = -pSides->adAt[1];
    pSides->adAt[1] = pSides->adAt[2];
    pSides->adAt[2] = -pSides->adAt[3];
    pSides->adAt[3] = d;
    for (OnSide& o : *pPoints) o.iSide = (o.iSide + 3) % 4;
  }
}

}  // namespace

ZuCadRectangle ZuCadRectangle::ByCorners(const std::vector<ZuPoint2d>& corners, double dSigma) {
  if (!zu::internal::AreFinite(corners)) return NoRectangle(eCadNotFinite);
  if (corners.size() < 3) return NoRectangle(eCadTooFew);
  if (corners.size() > 4) return NoRectangle(eCadTooMany);
  const CadReduction reduction(corners);
  std::vector<OnSide> points;
  for (size_t k = 0; k < corners.size(); ++k) {
    const size_t uNext = (k + 1) % corners.size();
    const bool bSide = uNext != 0 || corners.size() == 4;
    if (bSide && !(corners[k].Distance(corners[uNext]) > kZuCadSmall * reduction.dExtent)) {
      return NoRectangle(eCadCoincident);
    }
    const ZuVector2d p = (corners[k] - reduction.centre) / reduction.dExtent;
    points.push_back({p, static_cast<int>(k)});
    points.push_back({p, static_cast<int>(k + 3) % 4});
  }
  Sides sides;
  if (!FitSides(points, &sides)) return NoRectangle(eCadUndetermined);
  if (sides.dPreference < kZuCadSmall) return NoRectangle(eCadUndetermined);
  ZuCadRectangle result;
  MakeRectangle(sides, reduction, &result);
  for (size_t k = 0; k < corners.size(); ++k) {
    const ZuVector2d v = result.corners[k] - corners[k];
    result.residuals.insert(result.residuals.end(), {v.x, v.y});
  }
  zu::internal::SetFigures(result.residuals, 5, dSigma, &result.fit);
  return Checked(std::move(result), points, sides, reduction.dExtent);
}

ZuCadRectangle ZuCadRectangle::ByOutline(const std::vector<ZuPoint2d>& outline, double dSigma) {
  if (!zu::internal::AreFinite(outline)) return NoRectangle(eCadNotFinite);
  if (outline.size() < 5) return NoRectangle(eCadTooFew);
  const CadReduction reduction(outline);
  if (!(reduction.dExtent > 0.0)) return NoRectangle(eCadCoincident);
  std::vector<OnSide> points, best;
  for (const ZuPoint2d& p : outline)
    points.push_back({(p - reduction.centre) / reduction.dExtent, 0});
  Sides sides, bestSides;
  bestSides.dSquares = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 90; ++i) {
    if (!SettleSides(i * std::numbers::pi / 180.0, &points, &sides)) continue;
    if (!(sides.dSquares < bestSides.dSquares) || sides.dPreference < kZuCadSmall) continue;
    bestSides = sides;
    best = points;
  }
  if (best.empty()) return NoRectangle(eCadUndetermined);
  LayLevel(&best, &bestSides);
  ZuCadRectangle result;
  MakeRectangle(bestSides, reduction, &result);
  for (const OnSide& o : best) {
    const double dOutside = o.iSide == 0 || o.iSide == 3 ? -1.0 : 1.0;
    result.residuals.push_back(dOutside * reduction.dExtent * bestSides.Of(o));
    result.sides.push_back(o.iSide);
  }
  zu::internal::SetFigures(result.residuals, 5, dSigma, &result.fit);
  return Checked(std::move(result), best, bestSides, reduction.dExtent);
}
