// The ellipsoid that holds a point with a given probability.
#pragma once

#include <array>

#include "zu/adjust/export.h"

struct ZuErrorEllipsoid {
  std::array<double, 3> adAxes{};                       // half axes, the longest first
  std::array<std::array<double, 3>, 3> adDirections{};  // unit vectors of them, right-handed
};

// From the covariance xx yy zz xy xz yz of a point, in its unit. iRedundancy is that of the sigma0
// which the covariance holds, 0 for sigma0 a priori: then the squared radius is a quantile of chi
// squared with three degrees of freedom, else three times one of F(3, r). A coordinate that is
// fixed has variance 0 and a half axis 0; half axes are NaN where the covariance is not finite. Of
// each direction the largest component is positive; the third may be turned to make them
// right-handed.
ZU_ADJUST_API ZuErrorEllipsoid ZuMakeErrorEllipsoid(const std::array<double, 6>& covariance,
                                                    int iRedundancy, double dProbability = 0.95);
