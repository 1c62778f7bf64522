// The closed form from control points.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "zu/transform/internal/point_pair.h"
#include "zu/transform/internal/similarity.h"
#include "zu/transform/trafo3d.h"

using zu::internal::PointPair;
using zu::internal::PointPairs;

namespace {

// A centred coordinate below this is replaced by it, which keeps the products away from zero [unit
// of the coordinates].
constexpr double kLeastCoordinate = 1e-10;

// Least sum of the squared centred coordinates of a point set that has an extent [that unit,
// squared].
constexpr double kLeastSquares = 1e-10;

constexpr int kFirstRoom = 4096;  // pairs for which there is room before the first is found

PointPairs FindPairs(const ZuSortHelper<ZuPoint>& target, const ZuPointList* pSource) {
  PointPairs pairs;
  if (pSource == nullptr) return pairs;
  // Not more at once: a few points may be looked up in a large index.
  pairs.reserve(static_cast<std::size_t>(std::min(target.Count(), kFirstRoom)));
  for (ZuPoint* p = pSource->First(); p != nullptr; p = p->Next()) {
    if (p->GetId() == 0) continue;
    const ZuPoint* pTarget = target.Find(p->GetId());
    if (pTarget != nullptr) pairs.push_back({p, pTarget});
  }
  return pairs;
}

struct Centre {
  double x = 0.0, y = 0.0, z = 0.0;

  void Add(const ZuPoint& p) {
    x += p.m_dX;
    y += p.m_dY;
    z += p.m_dZ;
  }
  void Divide(double n) {
    x /= n;
    y /= n;
    z /= n;
  }
  void Store(ZuVector* pvCentre) const {
    pvCentre->SetElem(1, x);
    pvCentre->SetElem(2, y);
    pvCentre->SetElem(3, z);
  }
};

// Coordinate relative to the centre.
double Centred(double dValue, double dCentre) {
  const double d = dValue - dCentre;
  return std::fabs(d) < kLeastCoordinate ? kLeastCoordinate : d;
}

// Sums over the pairs: the squares of the source coordinates, point by point, and the products of
// target (row) and source (column).
struct Moments {
  double dSquares = 0.0;
  double adProducts[9] = {};
};

Moments SumMoments(const PointPairs& pairs, const Centre& source, const Centre& target) {
  Moments sums;
  for (const PointPair& pair : pairs) {
    const double a[] = {Centred(pair.pSource->m_dX, source.x),
                        Centred(pair.pSource->m_dY, source.y),
                        Centred(pair.pSource->m_dZ, source.z)};
    const double b[] = {Centred(pair.pTarget->m_dX, target.x),
                        Centred(pair.pTarget->m_dY, target.y),
                        Centred(pair.pTarget->m_dZ, target.z)};
    for (int i = 0; i < 3; ++i) {
      sums.dSquares += a[i] * a[i];
      for (int j = 0; j < 3; ++j) sums.adProducts[3 * i + j] += b[i] * a[j];
    }
  }
  return sums;
}

}  // namespace

bool ZuTrafo3d::CalcByControlPoints(const ZuSortHelper<ZuPoint>& target, const ZuPointList* pSource,
                                    int iMinPoints, bool bUnitScale) {
  m_eStatus = eTrafo3DTooFewPoints;
  m_iCommonPoints = 0;
  return CalcByPairs(FindPairs(target, pSource), iMinPoints, bUnitScale);
}

bool ZuTrafo3d::CalcByPairs(const PointPairs& pairs, int iMinPoints, bool bUnitScale) {
  m_eStatus = eTrafo3DTooFewPoints;
  m_iCommonPoints = static_cast<int>(pairs.size());
  if (m_iCommonPoints < iMinPoints) return false;

  m_eStatus = eTrafo3DNoSolution;
  if (pairs.empty()) return false;
  Centre sourceCentre, targetCentre;
  for (const PointPair& pair : pairs) {
    sourceCentre.Add(*pair.pSource);
    targetCentre.Add(*pair.pTarget);
  }
  sourceCentre.Divide(m_iCommonPoints);
  targetCentre.Divide(m_iCommonPoints);
  sourceCentre.Store(&m_vSource);
  targetCentre.Store(&m_vTarget);

  const Moments sums = SumMoments(pairs, sourceCentre, targetCentre);
  const double q = sums.dSquares;
  if (std::fabs(q) < kLeastSquares) return false;
  ZuMatrix m(sums.adProducts, 3, 3);
  m *= 1.0 / q;
  if (!zu::internal::CalcSimilarity(m, bUnitScale, &m_dScale, &m_mRot)) return false;
  m_eStatus = eTrafo3DOk;
  return true;
}

bool ZuTrafo3d::CalcByControlPoints(const ZuPointList* pTarget, const ZuPointList* pSource,
                                    int iMinPoints, bool bUnitScale) {
  return CalcByControlPoints(ZuSortHelper<ZuPoint>(pTarget), pSource, iMinPoints, bUnitScale);
}
