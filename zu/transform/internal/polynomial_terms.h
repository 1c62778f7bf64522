// The terms of the complete plane polynomial of degree three, in the order of its coefficients.
#pragma once

constexpr int kPolynomialTerms = 10;

inline void PolynomialTerms(double x, double y, double* pTerms) {
  const double xx = x * x, xy = x * y, yy = y * y;
  const double values[kPolynomialTerms] = {1.0, x, y, xx, xy, yy, xx * x, xx * y, x * yy, yy * y};
  for (int i = 0; i < kPolynomialTerms; ++i) pTerms[i] = values[i];
}
