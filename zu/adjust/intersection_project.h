// Object points of a project: every point measured in two or more of its oriented photos.
#pragma once

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/adjust/point_test.h"

class ZuProject;

struct ZuProjectIntersectionOptions {
  // Standard deviation of a measured coordinate, along both axes; in pixels, or in mm. It counts
  // for pixels without one of their own.
  double dSigma = 0.1;
  bool bSigmaInPixels = true;
  // The standard deviations are the user's: sigma0 is 1. Else one sigma0 of all points, from the
  // residuals of all their rays, scales them.
  bool bSigmaGiven = false;
  ZuTestOptions tests;  // with bSnoop rays that do not fit are set aside, of three and more
};

struct ZuIntersectedRay {
  unsigned uPhoto = 0;
  std::array<double, 2> adResidualPixels{};  // adjusted less measured, axes of the pixels [px]
  ZuPointTest test;                          // its residuals in mm, y up
};

struct ZuIntersectedPoint {
  unsigned uId = 0;
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strWhy;  // a sentence where the status is not good
  std::array<double, 3> position{};
  std::array<double, 9> covariance{};  // 3 x 3, row by row
  int iRays = 0;                       // used
  double dAngle = 0.0;                 // largest between two of them, 0 to pi / 2 [rad]
  std::vector<ZuIntersectedRay> rays;  // by photo

  bool IsGood() const { return status == ZuAdjustStatus::Good; }
  double Sd(int iAxis) const { return std::sqrt(covariance[static_cast<size_t>(4 * iAxis)]); }
};

struct ZU_ADJUST_API ZuProjectIntersection {
  double dSigma0 = 1.0;  // of the covariances
  ZuSigmaKind sigmaKind = ZuSigmaKind::APriori;
  int iRedundancy = 0;                     // of all points together
  double dRmsPixels = 0.0;                 // of the lengths of the residuals of the rays used
  int iUnsurePhotos = 0;                   // with a COVARIANCE block of theirs
  std::vector<ZuIntersectedPoint> points;  // by id
  std::vector<std::string> warnings;       // photos that are left out, and why

  int CountGood() const;
};

// The order of photos and points in the project changes nothing. Photos that lack an orientation,
// a camera of mode 0, 2 or 3, or the way from pixels to mm are left out, image points that are
// measured twice in a photo, too.
//
// The position and its tests follow from the image points alone. The covariance holds what the
// project's COVARIANCE blocks tell of orientations and cameras, the correlations of photos with
// each other included; what they do not tell counts as exact. It is that of a point that took no
// part in the adjustment behind these blocks; of one that did, a little too large. Cost: linear in
// the rays, with covariances quadratic in those of each point.
ZU_ADJUST_API ZuProjectIntersection
ZuIntersectProject(const ZuProject& project, const ZuProjectIntersectionOptions& options = {});
