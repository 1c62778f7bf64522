// Symmetric matrices of a few rows on plain arrays, row by row.
#pragma once

#include <cmath>

namespace zu::internal {

inline constexpr int kMaxGroup = 3;  // observations of a group at most

// The inverse of a symmetric positive definite m x m matrix, m <= kMaxGroup. False, output
// undefined, where it is not positive definite to rounding or not finite. *pInverse must not be a.
inline bool InvertSpd(int m, const double* a, double* pInverse) {
  double l[kMaxGroup][kMaxGroup];
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j <= i; ++j) {
      double s = a[i * m + j];
      for (int k = 0; k < j; ++k) s -= l[i][k] * l[j][k];
      if (i == j) {
        if (!(s > 1e-15 * a[i * m + i]) || !std::isfinite(s)) return false;
        l[i][i] = std::sqrt(s);
      } else {
        l[i][j] = s / l[j][j];
      }
    }
  }
  for (int i = 0; i < m; ++i) {  // L^-1 in place, lower triangle
    l[i][i] = 1.0 / l[i][i];
    for (int j = 0; j < i; ++j) {
      double s = 0.0;
      for (int k = j; k < i; ++k) s -= l[i][k] * l[k][j];
      l[i][j] = s * l[i][i];
    }
  }
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j <= i; ++j) {
      double s = 0.0;
      for (int k = i; k < m; ++k) s += l[k][i] * l[k][j];
      pInverse[i * m + j] = pInverse[j * m + i] = s;
    }
  }
  return true;
}

inline double Dot3(const double* a, const double* b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline void Cross3(const double* a, const double* b, double* pd) {
  pd[0] = a[1] * b[2] - a[2] * b[1];
  pd[1] = a[2] * b[0] - a[0] * b[2];
  pd[2] = a[0] * b[1] - a[1] * b[0];
}

// a b, 3 x 3.
inline void Multiply3(const double* a, const double* b, double* pd) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      pd[3 * i + j] = a[3 * i] * b[j] + a[3 * i + 1] * b[3 + j] + a[3 * i + 2] * b[6 + j];
    }
  }
}

}  // namespace zu::internal
