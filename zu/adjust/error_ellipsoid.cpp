#include "zu/adjust/error_ellipsoid.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/adjust/adjust_test.h"
#include "zu/adjust/internal/dense_cholesky.h"

ZuErrorEllipsoid ZuMakeErrorEllipsoid(const std::array<double, 6>& covariance, int iRedundancy,
                                      double dProbability) {
  ZuErrorEllipsoid ellipsoid;
  ellipsoid.adDirections = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
  const auto& q = covariance;
  if (!std::all_of(q.begin(), q.end(), [](double d) { return std::isfinite(d); })) {
    ellipsoid.adAxes.fill(std::numeric_limits<double>::quiet_NaN());
    return ellipsoid;
  }
  const double dRadius = iRedundancy > 0
                             ? std::sqrt(3.0 * ZuNewGroupLimit(1.0 - dProbability, 3, iRedundancy))
                             : ZuConfidenceRadius(dProbability, 3);
  const double matrix[9] = {q[0], q[3], q[4], q[3], q[1], q[5], q[4], q[5], q[2]};
  double values[3], vectors[9];
  zu::internal::SymmetricEigen(3, matrix, values, vectors);
  for (std::size_t i = 0; i < 3; ++i) {
    const std::size_t uColumn = 2 - i;  // they ascend
    ellipsoid.adAxes[i] = dRadius * std::sqrt(std::max(0.0, values[uColumn]));
    auto& direction = ellipsoid.adDirections[i];
    for (std::size_t k = 0; k < 3; ++k) direction[k] = vectors[3 * k + uColumn];
    const double dLargest =
        *std::max_element(direction.begin(), direction.end(),
                          [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    if (dLargest < 0.0) {
      for (double& d : direction) d = -d;
    }
  }
  const auto& [a, b, c] = ellipsoid.adDirections;
  const double dVolume = c[0] * (a[1] * b[2] - a[2] * b[1]) + c[1] * (a[2] * b[0] - a[0] * b[2]) +
                         c[2] * (a[0] * b[1] - a[1] * b[0]);
  if (dVolume < 0.0) {
    for (double& d : ellipsoid.adDirections[2]) d = -d;
  }
  return ellipsoid;
}
