// Orientation of the photos of a project without any approximation: by resection from known object
// points, photo by photo, and by intersection of the points between.
//
//   ZuProjectOrientation found = ZuOrientProject(&project, control, {}, options);
//   for (const ZuPhotoOrientation& photo : found.photos) {
//     if (!photo.IsGood()) show(photo.strWhy);
//   }
//
// Photos that see three or more control points stand first. The points that two oriented photos
// share are intersected and orient the next photos, until no photo is left that sees four of them.
// Where control leaves photos out, approximate coordinates take its place. Without either, two
// photos are oriented relative to each other and the rest to the points of these, in a frame of
// their own.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "zu/adjust/adjust_status.h"
#include "zu/adjust/adjust_test.h"
#include "zu/adjust/export.h"
#include "zu/adjust/image_observation.h"

class ZuPointList;
class ZuProject;

// By what a photo was oriented.
enum class ZuOrientationWay {
  None,            // it could not be found
  Kept,            // it was oriented already
  Control,         // resection from control points alone
  Points,          // resection from control and intersected points
  Approximations,  // resection with approximate coordinates
  Relative         // to the other photos alone: a free frame
};

// "control", "points", ...; static text.
ZU_ADJUST_API const char* ZuOrientationWayText(ZuOrientationWay eWay);

struct ZuPhotoOrientation {
  unsigned uId = 0;
  std::string strName;
  ZuOrientationWay eWay = ZuOrientationWay::None;
  ZuAdjustStatus status = ZuAdjustStatus::TooFew;
  std::string strWhy;              // a sentence where the status is not good
  int iMeasured = 0;               // image points that can be used
  int iKnown = 0;                  // of points whose position was known
  int iPoints = 0;                 // of them in the orientation
  double dRmsPixels = 0.0;         // of the lengths of their residuals
  double dSigma0 = 1.0;            // of the covariance
  ZuPose pose;                     // its covariance holds that of the points; zeros for a kept one
  std::array<double, 3> angles{};  // a, b, c of R = Ry(b) Rx(a) Rz(c)
  std::array<double, 3> anglesSd{};  // NaN at a = +-pi/2
  // Poses that fit as well as this one, as the second solution of a plane.
  std::vector<ZuPose> alternatives;

  bool IsGood() const { return status == ZuAdjustStatus::Good; }
};

struct ZuOrientationOptions {
  // Standard deviation of a measured coordinate, along both axes; in pixels, or in mm.
  double dSigma = 0.1;
  bool bSigmaInPixels = true;
  bool bSigmaGiven = false;  // it is the user's: sigma0 1, as the tests of ZuResect tell
  bool bAll = false;         // photos that are oriented already, too
  unsigned uSeed = 1;
};

struct ZU_ADJUST_API ZuProjectOrientation {
  // No known point took part: the centre of the points is the origin, their mean distance from it
  // 1, and z the direction of their least extent, towards the photos.
  bool bFree = false;
  std::vector<ZuPhotoOrientation> photos;  // those with measurements, in the order of the project

  int CountGood() const;
};

// Orients the photos that are not, and puts what was found into the project. Control as for
// ZuMakeNetwork, without its weights: points of all three coordinates take part, with the standard
// deviations m_dDX, m_dDY, m_dDZ. Approximations, and behind them the project's object points, are
// used for the photos that control leaves out. Image points measured twice in a photo take no part.
// The order of points and photos changes nothing but the order of the result.
//
// Cost with control that all photos see: that of ZuResect for each. Else rounds of resections and
// intersections, as many as photos in a chain at most; without any known point also a relative
// orientation of the pairs with the most points in common, and an adjustment after each round,
// whose time grows with the cube of the photos so far.
ZU_ADJUST_API ZuProjectOrientation ZuOrientProject(ZuProject* pProject, const ZuPointList& control,
                                                   const ZuPointList& approximations,
                                                   const ZuOrientationOptions& options = {});
