// Resection: the pose of a photo from three or more object points measured in it.
//
//   ZuResectionResult result = ZuResect(camera, points);
//   if (result.status == ZuAdjustStatus::Good) photo.SetRotAOR(result.pose.rotation), ...
//
// No approximation is needed. Three points at a time give all their solutions (Grunert 1841); the
// pose with the least median of the squared residuals is kept (P. Rousseeuw, "Least median of
// squares regression", 1984), and least squares over the points that agree with it ends it. All
// triples are tried of up to 10 points, of more 200 drawn by a counter from the seed, which miss a
// good one among half wrong points with a probability below 1e-11. Of more than 200 points 200
// judge first, and all of them the 20 best poses. The order of the points changes nothing, nor do
// threads: several may call it.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/adjust/image_observation.h"
#include "zu/adjust/point_test.h"

class ZuCamera;

struct ZuResectionPoint {
  ZuImageObservation image;
  double X = 0.0, Y = 0.0, Z = 0.0;          // object space
  std::array<double, 9> objectCovariance{};  // 3 x 3, row by row; zeros: exact
};

struct ZuResectionOptions {
  ZuTestOptions tests;
  double dSigma = 0.001;     // of image coordinates without variances [mm]
  bool bSigmaGiven = false;  // the standard deviations are the user's: sigma0 1 unless told
  unsigned uSeed = 1;
};

struct ZuResectionResult {
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strWhy;  // a sentence where the status is not good
  ZuPose pose;
  // Other poses that fit as well: of three points their further solutions, else the second solution
  // of a flat object (G. Schweighofer, A. Pinz, "Robust pose estimation from a planar target",
  // 2006) whose squares pass the F test at 5 % against those of the first, or, with standard
  // deviations given by the user, their own test of chi square.
  std::vector<ZuPose> alternatives;
  double dSigma0 = 1.0;  // of the covariances [-]
  ZuSigmaKind sigmaKind = ZuSigmaKind::APriori;
  int iRedundancy = 0;
  double dRms = 0.0;  // of the lengths of the residuals of the points used [mm]
  // Largest standard deviation of the position over the mean distance of the points [-].
  double dRelativeSd = 0.0;
  // Of each point, in the order given; residuals are adjusted less measured [mm]. Points beyond the
  // camera's model have bUsed false and a T of infinity.
  std::vector<ZuPointTest> tests;
};

// The camera's mode is 0, 2 or 3. A pose is refused (rank defect) where it is hardly decided: its
// position by no more than a tenth of the distance to the points, or in a direction in which the
// photo can move by three standard deviations without being seen to, as near the danger cylinder,
// where the first derivatives vanish. Cost: linear in the points beyond the 200 that judge.
ZU_ADJUST_API ZuResectionResult ZuResect(const ZuCamera& camera,
                                         const std::vector<ZuResectionPoint>& points,
                                         const ZuResectionOptions& options = {});
