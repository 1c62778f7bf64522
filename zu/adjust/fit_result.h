// What fits of primitives (plane, line, sphere, cylinder) take and tell beside the shape.
//
// Points are moved as little as possible, in the sense of their covariances, onto the shape: the
// squares of the orthogonal distances become least where all weights are equal. A point has one
// condition, its signed distance from the surface; of the line two, along axes normal to it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/point_test.h"

struct ZuFitPoint {
  unsigned uId = 0;
  double adX[3] = {};
  // Covariance of the coordinates, 3 x 3 by rows. All 0: not told; a single coordinate without one
  // takes the mean of the others.
  double adCov[9] = {};
};

struct ZuFitOptions {
  // Standard deviation of the coordinates of points that do not tell theirs; 0: not told, they take
  // the mean of those that do. Where nothing is told all weights are equal.
  double dSigma = 0.0;
  // With bSnoop, as here, points beyond the limit are set aside, at most half of them.
  ZuTestOptions tests = {.bSnoop = true};
  std::uint64_t uSeed = 1;  // of the samples of the start
};

// A point after the fit. Lengths are in the unit of the coordinates.
struct ZuFittedPoint {
  bool bUsed = true;          // else set aside, and held against the fit of the others
  double adResidual[3] = {};  // adjusted minus observed
  double dDistance = 0.0;     // signed distance from the shape; of a line without sign
  ZuPointTest test;           // of the conditions
};

struct ZuFitResult {
  ZuAdjustStatus eStatus = ZuAdjustStatus::TooFew;
  std::string strFree;  // what no point decides, as "rotation about the line through points 3, 7
                        // and 12"; empty but for a rank defect
  std::vector<unsigned> freePoints;  // ids of the points that strFree ends with, in its order
  int iRedundancy = 0;
  // A factor to the standard deviations told; where none were told the standard deviation of a
  // coordinate. A posteriori; 1 without redundancy.
  double dSigma0 = 1.0;
  bool bSigmaTold = false;                            // some standard deviation was told
  ZuSigmaKind sigmaOfTests = ZuSigmaKind::APriori;    // never Automatic
  ZuSigmaKind sigmaOfResults = ZuSigmaKind::APriori;  // of covariances; never Automatic
  double dRms = 0.0;                                  // of the distances of the points used
  double dFlatness = 0.0;                             // from the lowest to the highest of them
  double dCondition = 0.0;  // smallest over largest eigenvalue of the normal matrix, lengths in
                            // extents of the points
  int iSetAside = 0;
  std::vector<ZuFittedPoint> points;  // in the order given
};
