// What the constructions of this folder share.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "zu/cad/cad_fit.h"
#include "zu/numerics/internal/small_normals.h"
#include "zu/numerics/point2d.h"

namespace zu::internal {

inline constexpr double kTurn = 2.0 * std::numbers::pi;

// An angle as 0 to 2 pi.
inline double Positive(double dAngle) {
  const double d = std::fmod(dAngle, kTurn);
  return d < 0.0 ? d + kTurn : d;
}

inline bool AreFinite(const std::vector<ZuPoint2d>& points) {
  return std::all_of(points.begin(), points.end(), [](const ZuPoint2d& p) { return p.IsFinite(); });
}

// The mean of points and their extent, the largest distance from it.
struct CadReduction {
  ZuPoint2d centre;
  double dExtent = 0.0;

  explicit CadReduction(const std::vector<ZuPoint2d>& points) {
    const double n = static_cast<double>(points.size());
    if (points.empty()) return;
    ZuVector2d sum;
    for (const ZuPoint2d& p : points) sum += p - points[0];
    centre = points[0] + sum / n;
    for (const ZuPoint2d& p : points) dExtent = std::max(dExtent, p.Distance(centre));
  }
};

// Figures of residuals; dSigma: the standard deviation told, 0: none.
template <class Residuals>
void SetFigures(const Residuals& residuals, int iUnknowns, double dSigma, ZuCadFit* pFit) {
  double dSquares = 0.0;
  pFit->dLargest = 0.0;
  for (const double d : residuals) {
    dSquares += d * d;
    pFit->dLargest = std::max(pFit->dLargest, std::fabs(d));
  }
  const int n = static_cast<int>(residuals.size());
  pFit->iRedundancy = n - iUnknowns;
  pFit->dSigma0 = pFit->iRedundancy > 0 ? std::sqrt(dSquares / pFit->iRedundancy) : 0.0;
  pFit->dSigma = dSigma > 0.0 ? dSigma : pFit->dSigma0;
  pFit->dRms = n > 0 ? std::sqrt(dSquares / n) : 0.0;
}

inline eCadStatus StatusOf(Search search, eCadStatus eOpen) {
  switch (search) {
    case Search::Found:
      return eCadOk;
    case Search::Open:
      return eOpen;
    case Search::NotFinite:
      return eCadNotFinite;
    case Search::Lost:
      break;
  }
  return eCadNotConverged;
}

}  // namespace zu::internal
