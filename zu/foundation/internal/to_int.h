// Doubles as integers.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace zu::internal {

// Without its fraction, limited to what an int holds; NaN gives 0.
inline int ToInt(double d) {
  using Limits = std::numeric_limits<int>;
  if (std::isnan(d)) return 0;
  return static_cast<int>(
      std::clamp(d, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

}  // namespace zu::internal
