// Pose of a photo from three points: all solutions.
#pragma once

#include <vector>

#include "zu/adjust/internal/image_ray.h"

namespace zu::internal {

// Squares of the sides that a solution fails to meet, over the largest [-].
inline constexpr double kExactPose = 1e-10;

// Of three directions (unit vectors, image system) and the three object points on them, up to four
// poses with all points before the camera, each exact to rounding; none for points on one line,
// equal points or equal directions. With a larger tolerance also what is nearly a solution, as two
// that noise made complex. J. A. Grunert, "Das Pothenotische Problem in erweiterter Gestalt", 1841,
// in the form of R. Haralick, C. Lee, K. Ottenberg, M. Noelle, "Review and analysis of solutions of
// the three point perspective pose estimation problem", 1994; its roots are finished by Newton's
// method on the three distances.
std::vector<Pose> SolveThreePoints(const double directions[3][3], const double points[3][3],
                                   double dTolerance = kExactPose);

}  // namespace zu::internal
