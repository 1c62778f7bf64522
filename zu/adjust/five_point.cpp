#include "zu/adjust/internal/five_point.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "zu/adjust/internal/dense_cholesky.h"
#include "zu/adjust/internal/real_eigen.h"
#include "zu/adjust/internal/small_matrix.h"

namespace zu::internal {

namespace {

// Polynomials in x, y, z of degree 3 at most, by powers: the ten of degree 3 first, then 2, 1, 0.
constexpr size_t kTerms = 20;
constexpr size_t kRows = 10;
constexpr int kPowers[kTerms][3] = {{3, 0, 0}, {2, 1, 0}, {2, 0, 1}, {1, 2, 0}, {1, 1, 1},
                                    {1, 0, 2}, {0, 3, 0}, {0, 2, 1}, {0, 1, 2}, {0, 0, 3},
                                    {2, 0, 0}, {1, 1, 0}, {1, 0, 1}, {0, 2, 0}, {0, 1, 1},
                                    {0, 0, 2}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};
using Polynomial = std::array<double, kTerms>;
using Space = std::array<std::array<double, 9>, 4>;  // four matrices by rows

using TermTable = std::array<std::array<int, kTerms>, kTerms>;

// The term of each product of two, -1 beyond degree 3.
TermTable ProductTerms() {
  TermTable table{};
  for (size_t i = 0; i < kTerms; ++i) {
    for (size_t j = 0; j < kTerms; ++j) {
      table[i][j] = -1;
      for (size_t k = 0; k < kTerms; ++k) {
        bool bSame = true;
        for (int n = 0; n < 3; ++n) {
          bSame = bSame && kPowers[i][n] + kPowers[j][n] == kPowers[k][n];
        }
        if (bSame) table[i][j] = static_cast<int>(k);
      }
    }
  }
  return table;
}

Polynomial operator*(const Polynomial& a, const Polynomial& b) {
  static const TermTable terms = ProductTerms();
  Polynomial product{};
  for (size_t i = 0; i < kTerms; ++i) {
    if (a[i] == 0.0) continue;
    for (size_t j = 0; j < kTerms; ++j) {
      if (terms[i][j] >= 0) product[static_cast<size_t>(terms[i][j])] += a[i] * b[j];
    }
  }
  return product;
}

Polynomial Sum(const Polynomial& a, const Polynomial& b, double dFactor = 1.0) {
  Polynomial sum = a;
  for (size_t i = 0; i < kTerms; ++i) sum[i] += dFactor * b[i];
  return sum;
}

// Four orthonormal vectors normal to the five rows d1 d2', by Householder's reflections of the
// columns that these rows are.
Space NullSpace(const double first[5][3], const double second[5][3]) {
  double q[5][9];
  for (size_t n = 0; n < 5; ++n) {
    for (size_t i = 0; i < 9; ++i) q[n][i] = first[n][i / 3] * second[n][i % 3];
  }
  const auto reflect = [](const double* v, size_t uFrom, double* p) {
    double s = 0.0;
    for (size_t i = uFrom; i < 9; ++i) s += v[i] * p[i];
    for (size_t i = uFrom; i < 9; ++i) p[i] -= 2.0 * s * v[i];
  };
  for (size_t n = 0; n < 5; ++n) {
    double* const v = q[n];
    double s = 0.0;
    for (size_t i = n; i < 9; ++i) s += v[i] * v[i];
    v[n] += v[n] < 0.0 ? -std::sqrt(s) : std::sqrt(s);
    s = 0.0;
    for (size_t i = n; i < 9; ++i) s += v[i] * v[i];
    const double dLength = std::sqrt(s);
    for (size_t i = n; i < 9; ++i) v[i] = dLength > 0.0 ? v[i] / dLength : 0.0;
    for (size_t k = n + 1; k < 5; ++k) reflect(v, n, q[k]);
  }
  Space space{};
  for (size_t k = 0; k < 4; ++k) {
    space[k][5 + k] = 1.0;
    for (size_t n = 5; n-- > 0;) reflect(q[n], n, space[k].data());
  }
  return space;
}

// The ten cubic equations of E = x X + y Y + z Z + W: det E = 0, 2 E E' E = trace(E E') E.
std::array<Polynomial, kRows> Equations(const Space& space) {
  Polynomial e[3][3];
  for (size_t i = 0; i < 9; ++i) {
    Polynomial& p = e[i / 3][i % 3] = Polynomial{};
    for (size_t k = 0; k < 4; ++k) p[16 + k] = space[k][i];
  }
  Polynomial square[3][3], trace{};  // E E'
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      square[i][j] = Sum(Sum(e[i][0] * e[j][0], e[i][1] * e[j][1]), e[i][2] * e[j][2]);
    }
    trace = Sum(trace, square[i][i]);
  }
  std::array<Polynomial, kRows> rows{};
  const auto minor = [&](int a, int b) { return Sum(e[1][a] * e[2][b], e[1][b] * e[2][a], -1.0); };
  rows[0] = Sum(Sum(e[0][0] * minor(1, 2), e[0][1] * minor(2, 0)), e[0][2] * minor(0, 1));
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      const Polynomial p =
          Sum(Sum(square[i][0] * e[0][j], square[i][1] * e[1][j]), square[i][2] * e[2][j]);
      rows[1 + 3 * i + j] = Sum(Sum(p, p), trace * e[i][j], -1.0);
    }
  }
  return rows;
}

// Multiplication by x over the terms of degree 2 and less, 10 x 10 by rows. False where the cubic
// terms do not follow from these.
bool MultiplicationByX(const std::array<Polynomial, kRows>& rows, double* pAction) {
  double cubic[100], inverse[100];
  for (size_t i = 0; i < kRows; ++i) std::copy_n(rows[i].data(), kRows, cubic + kRows * i);
  if (!InvertSquare(static_cast<int>(kRows), cubic, inverse)) return false;
  std::fill_n(pAction, 100, 0.0);
  for (size_t i = 0; i < 6; ++i) {
    for (size_t k = 0; k < kRows; ++k) {
      for (size_t j = 0; j < kRows; ++j) {
        pAction[kRows * i + j] -= inverse[kRows * i + k] * rows[k][kRows + j];
      }
    }
  }
  pAction[60] = pAction[71] = pAction[82] = pAction[96] = 1.0;
  return std::all_of(pAction, pAction + 100, [](double d) { return std::isfinite(d); });
}

// The pose of an essential matrix E = [t] R, of four, that has all points before both photos. With
// t of length 1, R = cof(E) - [t] E, or with the other sign that of -E (B. K. P. Horn, "Recovering
// baseline and orientation from essential matrix", 1990).
bool PoseOf(const double* E, const double first[5][3], const double second[5][3], Pose* pPose) {
  double columns[3][3], cross[3][3], cofactors[3][3], t[3] = {}, dLongest = 0.0;
  for (int k = 0; k < 3; ++k) {
    for (int i = 0; i < 3; ++i) columns[k][i] = E[3 * i + k];
  }
  for (int k = 0; k < 3; ++k) {
    Cross3(columns[(k + 1) % 3], columns[(k + 2) % 3], cross[k]);
    for (int i = 0; i < 3; ++i) cofactors[i][k] = cross[k][i];
    const double dLength = std::sqrt(Dot3(cross[k], cross[k]));
    if (!(dLength > dLongest)) continue;
    dLongest = dLength;
    for (int i = 0; i < 3; ++i) t[i] = cross[k][i] / dLength;
  }
  if (!(dLongest > 0.0)) return false;
  double s = 0.0;  // E E' = s (1 - t t'), trace 2 s
  for (int i = 0; i < 9; ++i) s += 0.5 * E[i] * E[i];
  for (const double dTurn : {1.0, -1.0}) {
    Pose pose;
    for (int k = 0; k < 3; ++k) {
      double turned[3];
      Cross3(t, columns[k], turned);
      for (int i = 0; i < 3; ++i) {
        pose.R[static_cast<size_t>(3 * i + k)] =
            cofactors[i][k] / s - dTurn * turned[i] / std::sqrt(s);
      }
    }
    double* const r = pose.R.data();  // orthonormal beyond the accuracy of E
    const double dFirst = std::sqrt(Dot3(r, r));
    for (int i = 0; i < 3; ++i) r[i] /= dFirst;
    const double dAlong = Dot3(r, r + 3);
    for (int i = 0; i < 3; ++i) r[3 + i] -= dAlong * r[i];
    const double dSecond = std::sqrt(Dot3(r + 3, r + 3));
    for (int i = 0; i < 3; ++i) r[3 + i] /= dSecond;
    Cross3(r, r + 3, r + 6);
    for (const double dSign : {1.0, -1.0}) {
      for (size_t i = 0; i < 3; ++i) pose.X0[i] = dSign * t[i];
      bool bBefore = true;
      for (int i = 0; i < 5 && bBefore; ++i) {
        double a = 0.0, b = 0.0;
        bBefore = RayDepths(pose, first[i], second[i], &a, &b) && a > 0.0 && b > 0.0;
      }
      if (!bBefore) continue;
      *pPose = pose;
      return true;
    }
  }
  return false;
}

}  // namespace

bool RayDepths(const Pose& second, const double d1[3], const double d2[3], double* pdFirst,
               double* pdSecond) {
  const auto turned = Direction(second, d2);
  const double *const b = turned.data(), *const t = second.X0.data();
  double across[3];
  Cross3(d1, b, across);
  // d1 p - b q = t in the sense of least squares.
  const double c = Dot3(d1, b), dSine2 = Dot3(across, across);
  if (!(dSine2 > 1e-20)) return false;
  *pdFirst = (Dot3(d1, t) - c * Dot3(b, t)) / dSine2;
  *pdSecond = (c * Dot3(d1, t) - Dot3(b, t)) / dSine2;
  return true;
}

std::vector<Pose> SolveFivePoints(const double first[5][3], const double second[5][3]) {
  const Space space = NullSpace(first, second);
  double action[100];
  std::vector<Pose> poses;
  if (!MultiplicationByX(Equations(space), action)) return poses;
  double values[kRows];
  const int n = RealEigenvalues(static_cast<int>(kRows), action, values);
  for (int k = 0; k < n; ++k) {
    double v[kRows], e[9] = {}, dSquares = 0.0;
    Eigenvector(static_cast<int>(kRows), action, values[k], v);
    for (size_t i = 0; i < 9; ++i) {
      for (size_t j = 0; j < 4; ++j) e[i] += space[j][i] * v[6 + j];
      dSquares += e[i] * e[i];
    }
    if (!(dSquares > 0.0) || !std::isfinite(dSquares)) continue;
    for (double& d : e) d /= std::sqrt(dSquares);
    Pose pose;
    if (PoseOf(e, first, second, &pose)) poses.push_back(pose);
  }
  return poses;
}

}  // namespace zu::internal
