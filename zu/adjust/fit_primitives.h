// Plane, line, sphere and cylinder fitted to points, with what is known of them.
//
// Orthogonal distances with the weights of the points (general case of least squares, as in
// K.-R. Koch, "Parameter estimation and hypothesis testing in linear models", 1999), from a start
// that half of the points cannot disturb. Coordinates are reduced to their centre and extent;
// points are taken in the order of their coordinates, so that the order given changes no bit. Cost:
// some ten passes over the points, one for each point set aside of 300 and fewer.
//
// A rank defect is told where the points span nothing (singular to 1e-9 of the extent), or so
// little that the standard deviation of an angle exceeds 0.3 rad, of a radius half the radius.
// Points without redundancy of which nothing is told must spread over 1e-6 of their extent.
//
// On any status but good only fit.eStatus and fit.strFree mean something.
#pragma once

#include "zu/adjust/export.h"
#include "zu/adjust/fit_result.h"
#include "zu/numerics/line3d.h"
#include "zu/rectify/plane.h"

struct ZuPlaneFit {
  ZuFitResult fit;
  // Unit normal, its largest component positive (of equal ones the last).
  ZuPlane plane;
  double adSd[4] = {};    // of A, B, C, D
  double adCov[16] = {};  // of A, B, C, D, by rows
  // The same plane as n . (x - centre) = height, which keeps the digits that D loses far from the
  // origin; sd of the height, that is of the plane at the centre along its normal.
  double adCentre[3] = {};
  double dHeight = 0.0, dHeightSd = 0.0;
};

struct ZuLineFit {
  ZuFitResult fit;
  // From the first to the last of the points' feet; the largest component of the direction
  // positive.
  ZuLine3d line;
  // Of the line's point nearest to the centre of the points, then of the direction, by rows.
  double adPoint[3] = {};
  double adCov[36] = {};
};

struct ZuSphereFit {
  ZuFitResult fit;
  double adCentre[3] = {};
  double dRadius = 0.0;
  double adCov[16] = {};  // of centre and radius, by rows
};

struct ZuCylinderFit {
  ZuFitResult fit;
  ZuLine3d axis;  // as the line of ZuLineFit
  double dRadius = 0.0;
  double adPoint[3] = {};
  double adCov[49] = {};  // of point, direction and radius, by rows
};

ZU_ADJUST_API ZuPlaneFit ZuFitPlane(const std::vector<ZuFitPoint>& points,
                                    const ZuFitOptions& options = {});
ZU_ADJUST_API ZuLineFit ZuFitLine(const std::vector<ZuFitPoint>& points,
                                  const ZuFitOptions& options = {});
ZU_ADJUST_API ZuSphereFit ZuFitSphere(const std::vector<ZuFitPoint>& points,
                                      const ZuFitOptions& options = {});
// From five points on; the start looks in 7 degree steps over the half sphere and along pairs of
// points for the direction of the axis.
ZU_ADJUST_API ZuCylinderFit ZuFitCylinder(const std::vector<ZuFitPoint>& points,
                                          const ZuFitOptions& options = {});
