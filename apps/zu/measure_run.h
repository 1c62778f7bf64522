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

// Root mean squares over the checked points.
struct Quality {
  int iChecked = 0;
  double dRms = 0.0, dRmsX = 0.0, dRmsY = 0.0, dRmsZ = 0.0;
  double dRmsPixels = 0.0;
};

struct MeasuredPhoto : Quality {
  const ZuPhoto* pPhoto = nullptr;
  std::vector<MeasuredPoint> points;
  const MeasuredPoint* pWorst = nullptr;  // null without a checked point
};

struct LeftOutPhoto {
  unsigned uPhoto;
  size_t uMeasurements;
  std::string strWhy;  // "is not oriented: ... would be right"
};

struct RefusedPoint {
  unsigned uPhoto, uId;
  std::string strWhy;  // "its ray is parallel to the plane"
};

struct Measurement : Quality {
  ZuPlane plane;
  int iPlanePoints = 0;
  double dSigma0 = 0.0;          // quality figures of the fit
  double dPlaneDeviation = 0.0;  // longest distance of a point from the plane
  std::vector<MeasuredPhoto> photos;
  int iPoints = 0;
  std::vector<LeftOutPhoto> leftOut;
  std::vector<RefusedPoint> refused;
  const MeasuredPhoto* pWorstPhoto = nullptr;
};

// Fits the plane to planePoints and meets every measurement of every photo with it. Left out, each
// with its reason: photos that lack orientation, camera or the way from pixels to mm; measurements
// whose id stands twice in the photo, that lie outside the image or where the camera's model is not
// one to one, whose ray is parallel to the plane or meets it behind the camera. Throws CommandError
// (undetermined) where no plane fits, or nothing is left. bFlip: y of the pixels is turned.
// bLibrary: corrected by ZuCamera::Adjust, otherwise exactly. bQuiet: no progress line.
Measurement MeasureProject(Project& project, ZuPointList& planePoints, const ZuPointList& check,
                           bool bFlip, bool bLibrary, bool bQuiet);

// What was left out, with the reasons, on standard error.
void WarnOf(const Measurement& result, const Context& context);

}  // namespace cli
