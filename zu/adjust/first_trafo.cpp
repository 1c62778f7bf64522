#include "zu/adjust/first_trafo.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "zu/foundation/sort_helper.h"
#include "zu/photo/photo.h"
#include "zu/photo/reseau_file.h"

namespace {

constexpr short kCornerCode = 2;   // of a corner of the picture among the crosses
constexpr int kInverseGrid = 12;   // points along a side for the inverse of a polynomial
constexpr double kHalfStep = 0.5;  // of the difference quotient of a pre-transformation [pixels]

struct PreSystem {
  explicit PreSystem(const ZuPhoto& photo)
      : trafo(photo.GetReseauPreTrafo()), bNone(trafo.GetType() == eZuTrafo2DNone) {}

  void Transform(double* x, double* y) const {
    if (!bNone) trafo.Transform(x, y);
  }

  // J diag(sx^2, sy^2) J^T, by rows.
  void Covariance(double x, double y, double sx, double sy, double* pdCov) const {
    double J[2][2];
    for (int k = 0; k < 2; ++k) {
      double xm = x - (k == 0 ? kHalfStep : 0.0), ym = y - (k == 1 ? kHalfStep : 0.0);
      double xp = x + (k == 0 ? kHalfStep : 0.0), yp = y + (k == 1 ? kHalfStep : 0.0);
      Transform(&xm, &ym);
      Transform(&xp, &yp);
      J[0][k] = (xp - xm) / (2.0 * kHalfStep);
      J[1][k] = (yp - ym) / (2.0 * kHalfStep);
    }
    const double vx = sx * sx, vy = sy * sy;
    for (int i = 0; i < 2; ++i) {
      for (int j = 0; j < 2; ++j)
        pdCov[2 * i + j] = J[i][0] * vx * J[j][0] + J[i][1] * vy * J[j][1];
    }
  }

  const ZuReseauTrafo& trafo;
  bool bNone;
};

ZuTrafo2dPair PairOf(const ZuPoint& pixel, const ZuPoint& cross, const PreSystem& pre,
                     double dPixelSigma) {
  ZuTrafo2dPair pair;
  pair.uId = pixel.GetId();
  pair.adSource[0] = pixel.m_dX;
  pair.adSource[1] = pixel.m_dY;
  const double sx = pixel.m_dDX > 0.0 ? pixel.m_dDX : dPixelSigma;
  const double sy = pixel.m_dDY > 0.0 ? pixel.m_dDY : dPixelSigma;
  if (sx > 0.0 && sy > 0.0) pre.Covariance(pixel.m_dX, pixel.m_dY, sx, sy, pair.adSourceCov);
  pre.Transform(&pair.adSource[0], &pair.adSource[1]);
  pair.adTarget[0] = cross.m_dX;
  pair.adTarget[1] = cross.m_dY;
  return pair;
}

// The picture in the pre-system, or where crosses were measured if it is larger.
struct Extent {
  double x1 = HUGE_VAL, y1 = HUGE_VAL, x2 = -HUGE_VAL, y2 = -HUGE_VAL;

  void Add(double x, double y) {
    x1 = std::min(x1, x), x2 = std::max(x2, x);
    y1 = std::min(y1, y), y2 = std::max(y2, y);
  }
};

Extent PictureOf(const ZuPhoto& photo, const PreSystem& pre,
                 const std::vector<ZuTrafo2dPair>& pairs) {
  Extent extent;
  for (const ZuTrafo2dPair& pair : pairs) extent.Add(pair.adSource[0], pair.adSource[1]);
  const ZuRegion& digi = photo.GetDigiRegion();
  if (digi.Width() == 0.0 || digi.Height() == 0.0) return extent;
  for (double x : {digi.Left(), digi.Right()}) {
    for (double y : {digi.Bottom(), digi.Top()}) {
      double u = x, v = y;
      pre.Transform(&u, &v);
      if (std::isfinite(u) && std::isfinite(v)) extent.Add(u, v);
    }
  }
  return extent;
}

void FitInverse(const Extent& extent, ZuFirstTrafo* pFirst) {
  std::vector<ZuTrafo2dPair> pairs;
  for (int i = 0; i < kInverseGrid; ++i) {
    for (int j = 0; j < kInverseGrid; ++j) {
      ZuTrafo2dPair pair;
      pair.adTarget[0] = extent.x1 + (extent.x2 - extent.x1) * i / (kInverseGrid - 1);
      pair.adTarget[1] = extent.y1 + (extent.y2 - extent.y1) * j / (kInverseGrid - 1);
      pair.adSource[0] = pair.adTarget[0];
      pair.adSource[1] = pair.adTarget[1];
      pFirst->fit.Transform(&pair.adSource[0], &pair.adSource[1]);
      pair.uId = static_cast<unsigned>(pairs.size() + 1);
      pairs.push_back(pair);
    }
  }
  const ZuTrafo2dFit back = ZuFitTrafo2d(ZuTrafo2dKind::Polynomial, pairs);
  if (back.eStatus != ZuAdjustStatus::Good) {
    pFirst->fit.eStatus = back.eStatus;
    return;
  }
  pFirst->inverse = back.Uncentred();
  for (const ZuPointTest& point : back.points) {
    pFirst->dInverseError =
        std::max(pFirst->dInverseError, std::hypot(point.adResidual[0], point.adResidual[1]));
  }
}

}  // namespace

ZuFirstTrafo ZuFitFirstTrafo(const ZuPhoto& photo, const ZuPointList& pixels,
                             const ZuReseauFile& reseau, const ZuFirstTrafoOptions& options) {
  ZuFirstTrafo first;
  if (options.kind == ZuTrafo2dKind::Congruence) return first;
  const PreSystem pre(photo);
  const ZuSortHelper<ZuPoint> crosses(&reseau.GetCrossList());
  std::vector<ZuTrafo2dPair> pairs;
  std::set<unsigned> seen;
  for (const ZuPoint* p = pixels.First(); p != nullptr; p = p->Next()) {
    if (!seen.insert(p->GetId()).second) continue;
    const ZuPoint* pCross = crosses.Find(p->GetId());
    if (pCross == nullptr) {
      first.notNominal.push_back(p->GetId());
      continue;
    }
    pairs.push_back(PairOf(*p, *pCross, pre, options.dPixelSigma));
    first.common.push_back(p->GetId());
  }
  for (const ZuPoint* p = reseau.GetCrossList().First(); p != nullptr; p = p->Next()) {
    if (p->m_sControl == kCornerCode || seen.count(p->GetId()) > 0) continue;
    first.notMeasured.push_back(p->GetId());
  }
  ZuTrafo2dOptions fitOptions;
  fitOptions.tests = options.tests;
  first.fit = ZuFitTrafo2d(options.kind, pairs, fitOptions);
  if (first.IsGood() && options.kind == ZuTrafo2dKind::Polynomial) {
    FitInverse(PictureOf(photo, pre, pairs), &first);
  }
  return first;
}

bool ZuStoreFirstTrafo(const ZuFirstTrafo& first, const ZuReseauFile& reseau, ZuPhoto* pPhoto) {
  if (!first.IsGood()) return false;
  pPhoto->SetReseauMainTrafo(first.fit.Uncentred());
  if (first.fit.kind == ZuTrafo2dKind::Polynomial) pPhoto->SetPolyInvTrafo(first.inverse);
  pPhoto->SetReseauData(ZuReseauDataDesc(&reseau));
  pPhoto->CalcBikoRegionFromDigiRegion();
  return true;
}
