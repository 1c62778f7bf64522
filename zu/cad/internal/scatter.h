// Second moments of points of the plane about their mean.
#pragma once

#include "zu/cad/internal/cad_numbers.h"

namespace zu::internal {

struct Scatter {
  ZuPoint2d centre;
  double xx = 0.0, yy = 0.0, xy = 0.0;  // sums, not means

  Scatter() = default;
  Scatter(const ZuPoint2d* pPoints, size_t n) {
    ZuVector2d sum;
    for (size_t i = 0; i < n; ++i) sum += pPoints[i] - pPoints[0];
    centre = pPoints[0] + sum / static_cast<double>(n);
    for (size_t i = 0; i < n; ++i) {
      const ZuVector2d d = pPoints[i] - centre;
      xx += d.x * d.x;
      yy += d.y * d.y;
      xy += d.x * d.y;
    }
  }

  double Large() const { return 0.5 * (xx + yy) + std::hypot(0.5 * (xx - yy), xy); }
  double Small() const {
    const double dLarge = Large();
    return dLarge > 0.0 ? std::max(0.0, (xx * yy - xy * xy) / dLarge) : 0.0;
  }
  // Unit vector of the larger axis, towards positive x.
  ZuVector2d Along() const {
    return ZuVector2d::FromDirection(0.5 * std::atan2(2.0 * xy, xx - yy));
  }
};

}  // namespace zu::internal
