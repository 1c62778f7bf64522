// Relative pose of two photos from five directions each: all solutions.
#pragma once

#include <vector>

#include "zu/adjust/internal/image_ray.h"

namespace zu::internal {

// The poses of the second photo in the system of the first, position of length 1, in which all
// five points lie before both photos: those of up to ten essential matrices E = [t] R with
// d1' E d2 = 0. Directions are unit vectors of the two image systems. H. Stewenius, C. Engels,
// D. Nister, "Recent developments on direct relative orientation", 2006.
std::vector<Pose> SolveFivePoints(const double first[5][3], const double second[5][3]);

// Distances along the rays d1 and R d2 to where they come closest, the second photo at t; false for
// parallel ones.
bool RayDepths(const Pose& second, const double d1[3], const double d2[3], double* pdFirst,
               double* pdSecond);

}  // namespace zu::internal
