// The shape that most of the points agree on, however the others lie.
#pragma once

#include <cstdint>
#include <vector>

#include "zu/adjust/internal/fit_shape.h"

namespace zu::internal {

// What an estimate starts from.
struct FitStart {
  FitShape shape;
  std::vector<char> agrees;  // by point
  bool bFound = false;
};

// Samples of as many points as determine the shape, all of them where they are few, else drawn by
// place from the seed; a cylinder in many directions. The smallest median of the distances tells
// the scale of the noise (P. Rousseeuw, "Least median of squares regression", 1984), the sum of the
// distances cut at 2.5 times that scale tells the sample (P. Torr and A. Zisserman, "MLESAC", 2000)
// and its points, the least squares of these points the shape, until the points stay the same.
// Up to half of the points may be anywhere; the chance that no sample was free of them is below
// 1e-8 for plane, line and sphere.
//
// sigmas: standard deviation of each point, or empty where nothing is known of them; dRounding: a
// distance below it is none. Bits depend on points and seed alone.
FitStart FindShape(FitKind kind, const std::vector<Vector3>& points,
                   const std::vector<double>& sigmas, double dRounding, std::uint64_t uSeed);

}  // namespace zu::internal
