// Intersection: an object point from its rays in two or more oriented photos.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/adjust/image_observation.h"
#include "zu/adjust/point_test.h"

class ZuCamera;

// The image point in one photo; its uId names the photo in tests and sentences. The camera must
// outlive the call; its mode is 0, 2 or 3.
struct ZuIntersectionRay {
  const ZuCamera* pCamera = nullptr;
  ZuPose pose;  // its covariance counts, as independent of that of the other photos
  ZuImageObservation image;
};

struct ZuIntersectionOptions {
  ZuTestOptions tests;        // with bSnoop rays that do not fit are set aside, of three and more
  double dSigma = 0.001;      // of image coordinates without variances [mm]
  bool bSigmaGiven = false;   // the standard deviations are the user's: sigma0 1 unless told
  double dLeastAngle = 1e-4;  // between two rays [rad]; below it nothing is intersected
};

struct ZuIntersectionResult {
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strWhy;  // a sentence where the status is not good
  ZuVector position = ZuVector(3);
  std::array<double, 9> covariance{};  // 3 x 3, row by row
  double dAngle = 0.0;                 // largest between two rays used, 0 to pi / 2 [rad]
  double dSigma0 = 1.0;                // of the covariance [-]
  ZuSigmaKind sigmaKind = ZuSigmaKind::APriori;
  int iRedundancy = 0;
  int iRays = 0;  // used
  // Of each ray, in the order given; residuals are adjusted less measured [mm].
  std::vector<ZuPointTest> tests;
};

// Least squares over the measured coordinates, started where the rays come closest to each other.
// Not good where fewer than two rays are left, all rays are parallel (rank defect), the point lies
// behind a photo (not converged), or a number is not finite. The order of the rays changes nothing.
ZU_ADJUST_API ZuIntersectionResult ZuIntersectRays(const std::vector<ZuIntersectionRay>& rays,
                                                   const ZuIntersectionOptions& options = {});
