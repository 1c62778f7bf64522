// The rotation of a pose as a matrix, row by row: p = R q + t.
#pragma once

#include "zu/exchange/e57_file.h"

namespace zu::internal {

inline void RotationOf(const ZuE57Pose& pose, double* R) {
  const auto [w, x, y, z] = pose.adRotation;
  const double ad[] = {
      1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y - w * z),       2.0 * (x * z + w * y),
      2.0 * (x * y + w * z),       1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z - w * x),
      2.0 * (x * z - w * y),       2.0 * (y * z + w * x),       1.0 - 2.0 * (x * x + y * y)};
  for (int i = 0; i < 9; ++i) R[i] = ad[i];
}

}  // namespace zu::internal
