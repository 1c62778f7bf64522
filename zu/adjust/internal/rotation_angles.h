// The angles a, b, c of R = Ry(b) Rx(a) Rz(c) and how they follow small rotations about the image
// axes, R exp[w].
#pragma once

#include <algorithm>
#include <array>
#include <cmath>

namespace zu::internal {

// R row by row.
inline std::array<double, 3> AnglesOf(const std::array<double, 9>& r) {
  return {std::asin(std::clamp(-r[5], -1.0, 1.0)), std::atan2(r[2], r[8]), std::atan2(r[3], r[4])};
}

// Derivatives of a, b, c (rows) by w, row by row; false at a = +-pi/2, where b and c are one.
inline bool AngleSlope(const std::array<double, 9>& r, std::array<double, 9>* pSlope) {
  // The columns of R [w] for w along each axis: dR by w_x, w_y, w_z.
  const auto d = [&](size_t i, size_t k, size_t w) {
    const size_t u = (k + 1) % 3, v = (k + 2) % 3;  // w x e_k = w_v e_u - w_u e_v
    return (w == v ? r[3 * i + u] : 0.0) - (w == u ? r[3 * i + v] : 0.0);
  };
  const double ca2 = r[2] * r[2] + r[8] * r[8];
  for (size_t w = 0; w < 3; ++w) {
    (*pSlope)[w] = -d(1, 2, w) / std::sqrt(ca2);
    (*pSlope)[3 + w] = (r[8] * d(0, 2, w) - r[2] * d(2, 2, w)) / ca2;
    (*pSlope)[6 + w] = (r[4] * d(1, 0, w) - r[3] * d(1, 1, w)) / ca2;
  }
  return ca2 > 1e-20;
}

}  // namespace zu::internal
