// Plane transformations adjusted with the accuracies of both lists, with what is known of them.
//
//   congruence, Helmert   X = a0 + a1 x - a3 y    Y = a2 + a3 x + a1 y    (congruence: a1^2 + a3^2
//   = 1) affine                X = a0 + a1 x + a2 y    Y = a3 + a4 x + a5 y projective            X
//   = (a0 x + a1 y + a2) / w    Y = (a3 x + a4 y + a5) / w,  w = a6 x + a7 y + 1 polynomial X = sum
//   of a0..a9, Y = sum of a10..a19, each times
//                         1, x, y, x^2, xy, y^2, x^3, x^2 y, x y^2, y^3
//
// in coordinates less the centres of both lists, so that seven-digit coordinates keep every digit.
// General case of least squares: observations on both sides, covariances kept whole; source points
// of which nothing is told are exact. Cost: some passes over the points, one adjustment for each
// point set aside.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/adjust/point_test.h"
#include "zu/transform/trafo2d.h"

enum class ZuTrafo2dKind { Congruence, Helmert, Affine, Projective, Polynomial };

// A point of both lists. Covariances 2 x 2 by rows; all 0: not told.
struct ZuTrafo2dPair {
  unsigned uId = 0;
  double adSource[2] = {}, adTarget[2] = {};
  double adSourceCov[4] = {}, adTargetCov[4] = {};
};

struct ZuTrafo2dOptions {
  // Standard deviation of target coordinates of pairs that tell nothing; 0: not told. Where no pair
  // tells anything all weights are equal.
  double dSigma = 0.0;
  ZuTestOptions tests;
};

struct ZU_ADJUST_API ZuTrafo2dFit {
  ZuAdjustStatus eStatus = ZuAdjustStatus::TooFew;
  std::string strFree;  // what no point decides; empty but for a rank defect
  ZuTrafo2dKind kind = ZuTrafo2dKind::Helmert;
  int iRedundancy = 0;
  // A factor to the standard deviations told; where none were told the standard deviation of a
  // target coordinate. A posteriori; 1 without redundancy.
  double dSigma0 = 1.0;
  bool bSigmaTold = false;
  ZuSigmaKind sigmaOfTests = ZuSigmaKind::APriori;    // never Automatic
  ZuSigmaKind sigmaOfResults = ZuSigmaKind::APriori;  // never Automatic
  double dCondition = 0.0;
  int iSetAside = 0;

  double adSourceCentre[2] = {}, adTargetCentre[2] = {};
  std::vector<double> coefficients;  // a0.. for coordinates less the centres
  std::vector<double> covariance;    // of these, by rows

  // In the order of the pairs. Residuals of a test: transformed source less target.
  std::vector<ZuPointTest> points;

  // Carries a point over. pdCov: 2 x 2 covariance of the source point on entry (zeros: exact), of
  // the carried point on return, with that of the parameters; null: not wanted.
  void Transform(double* x, double* y, double* pdCov = nullptr) const;

  // The same for coordinates as they are, with the digits that are lost there.
  ZuTrafo2d Uncentred() const;
};

// On any status but good only eStatus and strFree mean something. Singular is a normal matrix with
// a smallest over largest eigenvalue below 1e-12, coordinates over their extents.
ZU_ADJUST_API ZuTrafo2dFit ZuFitTrafo2d(ZuTrafo2dKind kind, const std::vector<ZuTrafo2dPair>& pairs,
                                        const ZuTrafo2dOptions& options = {});
