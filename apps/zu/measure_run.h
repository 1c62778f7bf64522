// The road of one measurement: measured pixels of oriented photos met with a plane, and compared
// with check points.
#pragma once

#include <string>
#include <vector>

#include "context.h"
#include "project.h"
#include "zu/rectify/plane.h"

namespace cli {

struct MeasuredPoint {
  unsigned uId = 0;
  double px = 0.0, py = 0.0;            // measured [pixels]
  double x = 0.0, y = 0.0, z = 0.0;     // met with the plane, object space
  bool bChecked = false;                // there is a check point of the id
  double dx = 0.0, dy = 0.0, dz = 0.0;  // met less check point
  double rx = 0.0, ry = 0.0;            // the same in the image, measured less check point [pixels]

  double Length() const;
};

struct MeasuredPhoto {
  const ZuPhoto* pPhoto = nullptr;
  std::vector<MeasuredPoint> points;
  int iChecked = 0;
  double dRms = 0.0, dRmsX = 0.0, dRmsY = 0.0, dRmsZ = 0.0;  // of the checked points
  const MeasuredPoint* pWorst = nullptr;                     // null without a checked point
};

struct Measurement {
  ZuPlane plane;
  int iPlanePoints = 0;
  double dSigma0 = 0.0;          // quality figures of the fit
  double dPlaneDeviation = 0.0;  // longest distance of a point from the plane
  std::vector<MeasuredPhoto> photos;
  int iPoints = 0, iChecked = 0, iNotMet = 0;
  double dRms = 0.0, dRmsX = 0.0, dRmsY = 0.0, dRmsZ = 0.0;
  const MeasuredPhoto* pWorstPhoto = nullptr;
};

// Fits the plane to planePoints and meets every measurement of every oriented photo with it.
// Photos that are not oriented and measurements whose ray does not meet the plane are left out with
// a warning. Throws CommandError (undetermined) where no plane fits, or nothing is to be met.
Measurement MeasureProject(Project& project, ZuPointList& planePoints, const ZuPointList& check,
                           bool bFlip, Context& context);

}  // namespace cli
