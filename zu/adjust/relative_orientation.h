// Relative orientation: how the second of two photos stands to the first, from five or more points
// that both see and nothing else.
//
//   ZuRelativeResult pair = ZuOrientRelative(camera1, points1, camera2, points2);
//   if (pair.status == ZuAdjustStatus::Good) ... pair.pose   // in the system of the first photo
//
// Five points at a time give all their solutions (H. Stewenius, C. Engels, D. Nister, "Recent
// developments on direct relative orientation", 2006), also of a plane; the pose with the least
// median of the squared residuals is kept (P. Rousseeuw, "Least median of squares regression",
// 1984), and least squares over the points that agree with it ends it. The order of the points
// changes nothing, nor do threads: several may call it.
#pragma once

#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/export.h"
#include "zu/adjust/image_observation.h"

class ZuCamera;

struct ZuRelativeOptions {
  double dSigma = 0.001;  // of image coordinates without variances [mm]
  unsigned uSeed = 1;
  double dLeastAngle = 0.01;  // median angle of the rays below which there is no base [rad]
};

struct ZuRelativeResult {
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strWhy;  // a sentence where the status is not good
  // Of the second photo in the image system of the first: R maps its image vectors there, its
  // position has length 1. Without a covariance.
  ZuPose pose;
  // Other poses that agree as well, as the second solution of a plane.
  std::vector<ZuPose> alternatives;
  int iCommon = 0;                 // points in the domain of both cameras
  std::vector<unsigned> agreeing;  // their ids, ascending
  double dRms = 0.0;               // of their distances from the epipolar planes, in the image [mm]
  double dAngle = 0.0;             // median angle between the rays of a point [rad]
};

// Image points are matched by id; an id that stands twice in a list, and what is not finite, takes
// no part. Refused: fewer than five common points (too few), and rays so nearly parallel that the
// photos stand at one place (rank defect). Five points alone may leave several poses. Cost: linear
// in the common points; 150 samples of five, up to ten poses each, are held against all of them.
ZU_ADJUST_API ZuRelativeResult ZuOrientRelative(const ZuCamera& first,
                                                const std::vector<ZuImageObservation>& firstPoints,
                                                const ZuCamera& second,
                                                const std::vector<ZuImageObservation>& secondPoints,
                                                const ZuRelativeOptions& options = {});
