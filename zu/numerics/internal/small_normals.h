// Normal equations of a few unknowns on plain arrays, and the search for a least sum of squares on
// them. Nothing here allocates.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace zu::internal {

// Below this share of its diagonal element a pivot counts as none [-]: observations that decide an
// unknown by less than 3e-7 of what the others leave to it.
inline constexpr double kLeastPivot = 1e-13;

template <int U>
class SmallNormals {
 public:
  void Clear() { *this = SmallNormals(); }

  // One observation a x = l with the weight p.
  void Add(const double* a, double l, double p = 1.0) {
    for (int i = 0; i < U; ++i) {
      for (int j = 0; j <= i; ++j) m_n[i][j] += p * a[i] * a[j];
      m_h[i] += p * a[i] * l;
    }
  }

  // Solves with the diagonal raised by dDamping of itself. False, x undefined: an unknown, or a
  // combination of some, that the observations leave open, or numbers that are not finite.
  bool Solve(double* x, double dDamping = 0.0) {
    for (int i = 0; i < U; ++i) m_s[i] = 1.0 / std::sqrt(m_n[i][i]);
    for (int i = 0; i < U; ++i) {
      for (int j = 0; j <= i; ++j) {
        double d = m_n[i][j] * m_s[i] * m_s[j] + (i == j ? dDamping : 0.0);
        for (int k = 0; k < j; ++k) d -= m_l[i][k] * m_l[j][k];
        if (i != j) {
          m_l[i][j] = d / m_l[j][j];
        } else {
          if (!(d > kLeastPivot) || !std::isfinite(d)) return false;
          m_l[i][i] = std::sqrt(d);
        }
      }
    }
    for (int i = 0; i < U; ++i) x[i] = m_h[i] * m_s[i];
    Substitute(x);
    for (int i = 0; i < U; ++i) x[i] *= m_s[i];
    return true;
  }

  // The inverse after a Solve without damping, U x U by rows.
  void Invert(double* pdInverse) const {
    for (int c = 0; c < U; ++c) {
      double adColumn[U] = {};
      adColumn[c] = m_s[c];
      Substitute(adColumn);
      for (int i = 0; i < U; ++i) pdInverse[i * U + c] = adColumn[i] * m_s[i];
    }
  }

 private:
  void Substitute(double* x) const {
    for (int i = 0; i < U; ++i) {
      for (int k = 0; k < i; ++k) x[i] -= m_l[i][k] * x[k];
      x[i] /= m_l[i][i];
    }
    for (int i = U - 1; i >= 0; --i) {
      for (int k = i + 1; k < U; ++k) x[i] -= m_l[k][i] * x[k];
      x[i] /= m_l[i][i];
    }
  }

  double m_n[U][U] = {}, m_h[U] = {};
  double m_l[U][U] = {}, m_s[U] = {};
};

enum class Search { Found, Open, Lost, NotFinite };

// Least sum of squares by Gauss-Newton steps, damped after K. Levenberg, "A method for the solution
// of certain non-linear problems in least squares", 1944, where one would lead uphill.
//
//   model(x, &normals)   adds the linear observations at x, with l = observed - computed, and
//                        returns the sum of the squares there; normals may be null
//
// x: unknowns of the order of 1, the start, then the result. Found: *pNormals is solved at the
// result; Open: something is not decided; Lost: no end after 200 steps.
template <int U, class Model>
Search Minimise(const Model& model, double* x, SmallNormals<U>* pNormals) {
  constexpr int kMostSteps = 200;
  constexpr double kUphill = 1.0 + 1e-10;  // of the sum of squares, within rounding
  constexpr double kStep = 1e-14;          // relative, that ends the search
  constexpr double kRoundingStep = 1e-7;   // relative, which rounding alone may make
  double dDamping = 0.0, dLast = std::numeric_limits<double>::infinity();
  for (int i = 0; i < kMostSteps; ++i) {
    double adStep[U], adNext[U];
    pNormals->Clear();
    const double dSquares = model(x, pNormals);
    if (!std::isfinite(dSquares)) return Search::NotFinite;
    if (!pNormals->Solve(adStep, dDamping)) return Search::Open;
    double dStep = 0.0, dSize = 1.0;
    for (int k = 0; k < U; ++k) {
      adNext[k] = x[k] + adStep[k];
      dStep = std::max(dStep, std::fabs(adStep[k]));
      dSize = std::max(dSize, std::fabs(x[k]));
    }
    if (!std::isfinite(dStep)) return Search::NotFinite;
    const bool bEnd = dStep <= kStep * dSize ||
                      (dDamping == 0.0 && dStep <= kRoundingStep * dSize && dStep >= 0.5 * dLast);
    if (bEnd && dDamping == 0.0) return Search::Found;
    const double dNext = model(adNext, static_cast<SmallNormals<U>*>(nullptr));
    if (dNext <= dSquares * kUphill + std::numeric_limits<double>::min()) {
      std::copy_n(adNext, U, x);
      dDamping = dDamping < 1e-6 ? 0.0 : dDamping * 0.1;
      dLast = dStep;
    } else {
      if (dStep <= kRoundingStep * dSize) return Search::Found;
      dDamping = dDamping == 0.0 ? 1e-3 : dDamping * 10.0;
      if (dDamping > 1e12) return Search::Lost;
    }
  }
  return Search::Lost;
}

}  // namespace zu::internal
