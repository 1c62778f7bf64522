// What an adjustment tells about a group of observations that belong to one point: the x and y of
// an image point, the discrepancy of a common point in space, the distance of a scanned point from
// a plane.
#pragma once

#include <limits>

// One group of m = 1, 2 or 3 observations, arrays by axis; elements from m on are 0. With e the
// misclosure of the group, its sign told by what is adjusted, M its covariance before the
// adjustment and Qee after it, both for sigma0 = 1.
struct ZuPointTest {
  unsigned uId = 0;
  int iDimension = 0;  // m
  bool bUsed = true;   // false: set aside; e is then the misclosure against the others

  double adResidual[3] = {};    // e [unit of the observation]
  double adResidualSd[3] = {};  // its standard deviation [the same]

  // Redundancy numbers, the share of an error that shows in its own residual: diagonal of Qee M^-1,
  // from 0 (the observation alone decides) to 1. Where M correlates the axes single ones may lie
  // beyond; the sum over all groups is the redundancy always. 0 for a group that is set aside.
  double adRedundancy[3] = {};

  // Standardised by axis, w (a priori) or tau (a posteriori): M^-1 e over its standard deviation,
  // which is e over its own where M is diagonal. 0 where the redundancy vanishes.
  double adW[3] = {};

  // Smallest error by axis that its test finds [unit of the observation]; infinite where the
  // redundancy vanishes.
  double adNabla[3] = {};

  // External reliability by axis: the effect of an error of that size on any result, in standard
  // deviations of that result, at most [-]; infinite where the redundancy vanishes.
  double adEffect[3] = {};

  // The misclosure that the others predict: as if the adjustment had been made without this group
  // [unit of the observation]; NaN where they do not decide it.
  double adLeaveOneOut[3] = {};

  // Group test T and its limit; infinite where the redundancy allows no test.
  double dTest = 0.0;
  double dLimit = std::numeric_limits<double>::infinity();

  // An error of each axis, the others free of it, shows to the least redundancy number at least:
  // (M^-1 Qee M^-1) over M^-1 on the diagonals, the number itself where M is diagonal.
  bool bControlled = false;

  double Redundancy() const { return adRedundancy[0] + adRedundancy[1] + adRedundancy[2]; }
  bool IsRejected() const { return dTest > dLimit; }
};
