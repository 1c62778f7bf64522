// Whether all elements are numbers.
#pragma once

#include <algorithm>
#include <cmath>

#include "zu/numerics/matrix.h"
#include "zu/numerics/vector.h"

namespace zu::internal {

inline bool AreFinite(const double* pdValues, int n) {
  return std::all_of(pdValues, pdValues + n, [](double d) { return std::isfinite(d); });
}
inline bool AreFinite(const ZuVector& v) { return AreFinite(v.GetData(), v.GetSize()); }
inline bool AreFinite(const ZuMatrix& m) {
  return AreFinite(m.GetData(), m.GetZeilen() * m.GetSpalten());
}

}  // namespace zu::internal
