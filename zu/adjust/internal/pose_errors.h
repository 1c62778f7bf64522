// What the errors of orientations and cameras do to an intersected point.
#pragma once

#include <array>
#include <vector>

#include "zu/adjust/internal/image_ray.h"
#include "zu/project/covariance.h"

class ZuPhoto;

namespace zu::internal {

// A photo as its project tells it. It stays where it is while this is used.
struct UnsurePhoto {
  UnsurePhoto(const ZuPhoto& photo, const ZuCovarianceList& list);
  bool IsTold() const { return !parameters.empty() || bOrientation; }

  const ZuCamera* pCamera;
  Pose pose;
  unsigned uPhoto = 0;
  unsigned uCamera = 0;  // whose errors other photos share; 0: its own
  bool bOrientation = false;
  std::vector<int> parameters;  // of the camera, by number
  // By rows: X0, small rotations about the image axes, parameters of the camera.
  std::vector<double> covariance;
  // Slope of the orientation by the camera, 6 rows: their covariance times the inverse of the
  // camera's.
  std::vector<double> byCamera;
};

struct UnsureRay {
  const UnsurePhoto* pPhoto;
  double adWeight[4];  // inverse of the covariance of the image point, 2 x 2 [1/mm^2]
};

// Adds to the 3 x 3 covariance of a point, which is that of its image points alone, what the errors
// of its photos make of it: to the first order of the adjustment that weighs the image points
// alone. Photos whose covariance with each other is not told have what their camera makes common.
// False where no covariance comes out: a matrix of the list is none.
bool AddPoseErrors(const ZuCovarianceList& list, const std::vector<UnsureRay>& rays,
                   const std::array<double, 3>& position, std::array<double, 9>* pCovariance);

}  // namespace zu::internal
