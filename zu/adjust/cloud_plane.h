// The best-fit plane of clouds, by orthogonal distances, all points with one weight: passes over
// the points and a few numbers beside them, for millions of points. ZuFitPlane (fit_primitives.h)
// tests each point and takes accuracies.
//
// Source: K. Pearson, "On lines and planes of closest fit to systems of points in space", 1901.
#pragma once

#include <cstddef>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/export.h"
#include "zu/cloud/scan_point3d.h"
#include "zu/rectify/plane.h"

struct ZuCloudPlane {
  ZuAdjustStatus eStatus = ZuAdjustStatus::TooFew;
  // The rest with a good status alone. The largest component of the normal is above 0.
  ZuPlane plane;
  double adCentre[3] = {};
  double adCov[16] = {};    // of A, B, C, D, by rows
  double adSpread[3] = {};  // root mean square of the coordinates less the centre along three axes
                            // at right angles, the shortest, that of the normal, first
  double dSigma0 = 0.0;     // of a distance; 0 for three points
  double dRms = 0.0, dLow = 0.0, dHigh = 0.0;  // of the signed distances
  size_t uPoints = 0, uFarthest = 0;           // uFarthest: counted over all clouds, from 0
  double dFarthest = 0.0;                      // its signed distance
};

// Points of all clouds in their order. Too few: fewer than three. Rank defect: in one place, on a
// line, or as far spread across the plane as along it. Any thread; the same bits on any number.
ZU_ADJUST_API ZuCloudPlane
ZuFitCloudPlane(const std::vector<const std::vector<ZuScanPoint3d>*>& clouds);
