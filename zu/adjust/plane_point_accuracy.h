// How well a point is known that the ray of one measured pixel meets on a plane.
//
//   pixel --pre, main--> image point --camera--> corrected --R, X0--> ray --n X + D = 0--> point
//
// Covariances are carried along this chain by its analytic derivatives, to the first order: of the
// pixel, of the camera's parameters and the orientation with their correlations, of the plane. The
// parts are independent of each other. Of points of one photo the errors of camera, orientation and
// plane are common: the difference of two neighbours is known better than either.
//
// Sources: K.-R. Koch, "Parameter estimation and hypothesis testing in linear models", 1999
// (propagation); E. M. Mikhail, J. S. Bethel, J. C. McGlone, "Introduction to modern
// photogrammetry", 2001 (single ray with a surface).
#pragma once

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "zu/adjust/export.h"
#include "zu/adjust/fit_primitives.h"
#include "zu/adjust/network.h"

class ZuPhoto;
class ZuPoint;
class ZuProject;

struct ZuPlanePointOptions {
  // Standard deviation of a measured coordinate that tells none of its own, along both axes; in
  // pixels, or in mm on the image plane.
  double dSigma = 0.1;
  bool bSigmaInPixels = true;
  bool bFlip = false;  // y of the pixels counts the other way
};

// The chain of one measurement with its numbers. Covariances of a plane vector are xx, xy, yy.
struct ZuPlanePointAccuracy {
  double adPixelSd[2] = {};                       // [px]; 0 where dSigma is in mm
  double adPre[2] = {};                           // behind the first plane transformation
  double adImage[2] = {}, adImageCov[3] = {};     // Biko [mm], of the pixel alone
  double adAdjusted[2] = {}, adPixelCov[3] = {};  // corrected [mm], of the pixel alone
  double adAdjustedCov[3] = {};                   // with the parameters of the camera [mm^2]
  double adDirection[3] = {};                     // of the ray in object space, length 1
  double dDistance = 0.0;                         // from the projection centre to the point
  double dIncidence = 0.0;                        // between ray and plane, 0 to pi/2 [rad]
  double dPlaneSd = 0.0;                          // of the plane at the point, along its normal
  double adPoint[3] = {};                         // object space
  double adCov[9] = {};                           // of the point, 3 x 3 by rows
  // Standard deviation of the position, sqrt(xx + yy + zz), from each part alone. Camera and
  // orientation are correlated: only the square of dPose, of both together, adds to the others'.
  double dPixel = 0.0, dCamera = 0.0, dOrientation = 0.0, dPose = 0.0, dPlane = 0.0;

  double Sd(int iAxis) const { return std::sqrt(adCov[4 * iAxis]); }
};

// Of all points of a photo. The project's COVARIANCE blocks tell the accuracy of camera and
// orientation; what they do not tell counts as known exactly. The photo and the project stay as
// they are while this is used.
class ZU_ADJUST_API ZuPlanePointChain {
 public:
  // pFit tells the accuracy of the plane; null, or a fit that is not good: known exactly.
  ZuPlanePointChain(const ZuProject& project, const ZuPhoto& photo, const ZuPlane& plane,
                    const ZuPlaneFit* pFit, const ZuPlanePointOptions& options);

  // Standard deviation of a coordinate of the projection centre (iAxis 0 to 2) or of a small
  // rotation about an image axis (3 to 5); 0 where nothing is told.
  double OrientationSd(int iAxis) const;
  // What the project tells of camera and orientation.
  bool HasOrientation() const { return m_bOrientation; }
  bool HasCamera() const { return !m_parameters.empty(); }
  // Of the camera, by name, in the order of their covariance.
  std::vector<std::string> Parameters() const;

  // `pixel` is as measured, with its standard deviations in m_dDX and m_dDY, 0 for "not told".
  // False, outputs undefined: the camera's model is not one to one there, the ray is parallel to
  // the plane or meets it behind the camera, the numbers are not finite.
  bool Of(const ZuPoint& pixel, ZuPlanePointAccuracy* pAccuracy) const;

  // Derivatives of a corrected point, row by row: to the measured one, and to the parameters of the
  // camera by ZuNetworkParameter, the ray's third component kept at -|c|.
  struct Corrected {
    double point[2][2] = {};
    double parameter[2][ZuNetworkParameters] = {};
  };

 private:
  struct Ray;
  void TakeCovariance(const ZuProject& project);
  double PlaneVariance(const double* pPoint) const;
  bool Correct(const ZuPoint& pixel, Corrected* pSlope, ZuPlanePointAccuracy* p) const;
  bool Meet(Ray* pRay, ZuPlanePointAccuracy* p) const;
  void AddPixel(const Ray& ray, ZuPlanePointAccuracy* p) const;
  void AddPose(const Ray& ray, const Corrected& slope, ZuPlanePointAccuracy* p) const;
  void AddPlane(const Ray& ray, ZuPlanePointAccuracy* p) const;

  const ZuPhoto& m_photo;
  ZuPlanePointOptions m_options;
  double m_adNormal[3] = {}, m_dD = 0.0;
  const ZuPlaneFit* m_pFit;
  bool m_bOrientation = false;
  std::vector<int> m_parameters;
  std::vector<double> m_cov;  // position, small rotation, parameters of the camera; by rows
};
