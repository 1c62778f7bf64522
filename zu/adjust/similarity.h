// Similarity transformation of space from common points, by least squares with the accuracies of
// both lists, and how sure it is.
//
//   target = s R (source - xs) + xt       s scale, R rotation, xs and xt the centres
//
// Observations are the coordinates of the common points in both lists (the general case of least
// squares). The start is the closed form of the weighted points (S. Umeyama, "Least-squares
// estimation of transformation parameters between two point patterns", 1991); then steps to
// convergence. All sums are formed with coordinates reduced by their centre, in the order of the
// ids: the order of the points in their lists changes nothing.
//
// Standard deviations hold the sigma0 that the result names. Lengths have the unit of the target
// unless told otherwise, angles are radians.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/adjust/point_test.h"
#include "zu/foundation/sort_helper.h"
#include "zu/points/point.h"
#include "zu/points/point_list.h"
#include "zu/transform/trafo3d_data.h"

enum class ZuSimilarityKind {
  Similarity,  // 7 parameters: shift, scale, rotation
  Rigid,       // 6: scale 1
  Levelled,    // 4: scale 1, turned about the z axis only
  Shift        // 3: scale 1, not turned
};

// The covariance of one point of a list, of its coordinates x, y, z, row by row.
struct ZuPointCovariance {
  unsigned uId = 0;
  double ad[9] = {};
};

struct ZuSimilarityOptions {
  ZuSimilarityKind kind = ZuSimilarityKind::Similarity;
  ZuTestOptions tests;

  // Standard deviation of the coordinates whose point does not tell its own (m_dDX, m_dDY, m_dDZ; 0
  // is not told) [unit of its list]; 0 where none is known. Then, in a list some of whose
  // coordinates are told, the others take their root mean square; a list without any is exact
  // beside one with; and of two lists without any the target's coordinates have 1.
  double dSigmaSource = 0.0;
  double dSigmaTarget = 0.0;

  // Covariances that stand before all that; in any order.
  std::vector<ZuPointCovariance> sourceCovariances, targetCovariances;

  // Ids of points that the adjustment begins without. With snooping those that fit the others come
  // back; else they stay aside, tested against the others.
  std::vector<unsigned> startAside;
};

// A common point. The misclosure e of its test is target minus transformed source, by axis of the
// target; an error of the target's coordinate has its sign, one of the source's the other.
struct ZuSimilarityPoint : ZuPointTest {
  double adSourceResidual[3] = {};  // adjusted minus observed [unit of the source]
  double adTargetResidual[3] = {};  // adjusted minus observed
  double adCarried[9] = {};         // covariance of the transformed source point, row by row
};

struct ZuSetAside {
  unsigned uId = 0;
  double dTest = 0.0;      // group test T when it was set aside
  double dLimit = 0.0;     // of that test
  double adError[3] = {};  // target minus transformed source, by the final result
};

class ZU_ADJUST_API ZuSimilarityResult {
 public:
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  // Why there is no good result, one sentence without a full stop; empty where there is one.
  std::string strReason;
  // Of a rank defect, what is free: "rotation about the line through points 3, 7 and 12".
  std::string strFreeDirection;
  std::vector<std::string> warnings;

  ZuSimilarityKind kind = ZuSimilarityKind::Similarity;
  ZuTrafo3dData trafo;

  // Covariance of shift x, y, z of xt, scale, and the small rotation vector w (R becomes R exp[w]),
  // 7 x 7 row by row, 0 for what is fixed.
  double adCovariance[49] = {};
  double dCondition = 0.0;  // smallest over largest eigenvalue of the scaled normal matrix
  int iSteps = 0;

  int iRedundancy = 0;
  ZuSigmaKind sigmaKind = ZuSigmaKind::APriori;  // of dSigma0
  double dSigma0 = 1.0;                          // what standard deviations and tests are scaled by
  double dSigmaPosteriori = 0.0;                 // 0 without redundancy
  bool bSigmaFits = true;    // a posteriori agrees with 1 at 95 %; true where nothing was given
  bool bSigmaGiven = false;  // standard deviations came with the points or by option
  double dTestLimit = 0.0;   // of |w|, or |tau| where sigma0 is a posteriori; may be infinite

  std::vector<ZuSimilarityPoint> points;  // the common points by id
  std::vector<ZuSetAside> setAside;       // in the order of setting aside
  std::vector<unsigned> notControlled;    // ids of used points with too little redundancy

  bool IsGood() const { return status == ZuAdjustStatus::Good; }
  int Used() const { return static_cast<int>(points.size() - setAside.size()); }
  // The common point of that id; null if there is none.
  const ZuSimilarityPoint* Find(unsigned uId) const;

  // The angles of MakeRotMatrix(y, x, z): values and their covariance, 3 x 3 in the order x, y, z;
  // the derivatives of the angles by w too, if they are asked for. False where the angle about x is
  // within 1e-8 of a right one: the others have no covariance then, all of it and the derivatives
  // are 0; the values make the matrix again.
  bool Angles(double* pdAngles, double* pdCovariance, double* pdDerivatives = nullptr) const;

  // Covariance of the transformed point whose own covariance in the source is given (3 x 3, null:
  // exact), for a point that took no part in the adjustment.
  void CarriedCovariance(const ZuPoint& source, const double* pdOwn, double* pdCovariance) const;

  // Transforms the points of a list in place: coordinates, and in the accuracies their standard
  // deviations, of common points with the part they had in the result. The accuracies of others
  // take in their own, where they have one.
  void Carry(ZuPointList* pPoints) const;

  // Of a coordinate that is not told, before it is scaled by sigma0 [unit of its list, squared].
  double dOwnVariance = 0.0;  // of the source
  double dOwnTargetVariance = 0.0;
};

// Adjusts the points of `source` onto those of the same id in `target`; id 0 has no partner, and of
// equal ids the first of a list counts. Parameters are whole only with the status good. Time grows
// linearly with the points, plus the sorting by id where they are not in that order.
ZU_ADJUST_API ZuSimilarityResult ZuAdjustSimilarity(const ZuSortHelper<ZuPoint>& target,
                                                    const ZuPointList& source,
                                                    const ZuSimilarityOptions& options);
ZU_ADJUST_API ZuSimilarityResult ZuAdjustSimilarity(const ZuPointList& target,
                                                    const ZuPointList& source,
                                                    const ZuSimilarityOptions& options);
