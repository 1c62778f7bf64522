// What resection and intersection are made of: image points with their accuracy, and poses with
// theirs.
#pragma once

#include <array>

#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

// A measured image point, in the camera's image system (Biko) [mm].
struct ZuImageObservation {
  unsigned uId = 0;
  double x = 0.0, y = 0.0;
  // Variances and covariance [mm^2]; both variances 0: not told, an option takes their place.
  double dVarianceX = 0.0, dVarianceY = 0.0, dCovariance = 0.0;
};

// Where a photo stands. The six parameters of its covariance are small rotations d about the image
// axes (R becomes R exp[d]) [rad] and the position.
struct ZuPose {
  ZuMatrix rotation = ZuMatrix(3, 3);   // image system to object space
  ZuVector position = ZuVector(3);      // projection centre
  std::array<double, 36> covariance{};  // 6 x 6, row by row; zeros: none
};
