#include "zu/adjust/internal/five_point.h"

#include <Eigen/Dense>
#include <Eigen/Eigenvalues>
#include <array>
#include <cmath>

namespace zu::internal {

namespace {

using Matrix3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Vec = Eigen::Vector3d;

// Polynomials in x, y, z of degree 3 at most, by powers: the ten of degree 3 first, then 2, 1, 0.
constexpr int kTerms = 20;
constexpr int kPowers[kTerms][3] = {{3, 0, 0}, {2, 1, 0}, {2, 0, 1}, {1, 2, 0}, {1, 1, 1},
                                    {1, 0, 2}, {0, 3, 0}, {0, 2, 1}, {0, 1, 2}, {0, 0, 3},
                                    {2, 0, 0}, {1, 1, 0}, {1, 0, 1}, {0, 2, 0}, {0, 1, 1},
                                    {0, 0, 2}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}};
using Polynomial = std::array<double, kTerms>;

using TermTable = std::array<std::array<int, kTerms>, kTerms>;

// The term of each product of two, -1 beyond degree 3.
TermTable ProductTerms() {
  TermTable table{};
  for (size_t i = 0; i < kTerms; ++i) {
    for (size_t j = 0; j < kTerms; ++j) {
      table[i][j] = -1;
      for (int k = 0; k < kTerms; ++k) {
        bool bSame = true;
        for (int n = 0; n < 3; ++n) {
          bSame = bSame && kPowers[i][n] + kPowers[j][n] == kPowers[k][n];
        }
        if (bSame) table[i][j] = k;
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

// The ten cubic equations of E = x X + y Y + z Z + W: det E = 0, 2 E E' E = trace(E E') E.
Eigen::Matrix<double, 10, kTerms> Equations(const Eigen::Matrix<double, 9, 4>& space) {
  Polynomial e[3][3];
  for (int i = 0; i < 9; ++i) {
    Polynomial& p = e[i / 3][i % 3] = Polynomial{};
    for (int k = 0; k < 4; ++k) p[static_cast<size_t>(16 + k)] = space(i, k);
  }
  Polynomial square[3][3], trace{};  // E E'
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      square[i][j] = Sum(Sum(e[i][0] * e[j][0], e[i][1] * e[j][1]), e[i][2] * e[j][2]);
    }
    trace = Sum(trace, square[i][i]);
  }
  Eigen::Matrix<double, 10, kTerms> rows;
  const auto put = [&](int iRow, const Polynomial& p) {
    rows.row(iRow) = Eigen::Map<const Eigen::Matrix<double, 1, kTerms>>(p.data());
  };
  const auto minor = [&](int a, int b) { return Sum(e[1][a] * e[2][b], e[1][b] * e[2][a], -1.0); };
  put(0, Sum(Sum(e[0][0] * minor(1, 2), e[0][1] * minor(2, 0)), e[0][2] * minor(0, 1)));
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      Polynomial p =
          Sum(Sum(square[i][0] * e[0][j], square[i][1] * e[1][j]), square[i][2] * e[2][j]);
      put(1 + 3 * i + j, Sum(Sum(p, p), trace * e[i][j], -1.0));
    }
  }
  return rows;
}

// The pose of an essential matrix, of four, that has all points before both photos.
bool PoseOf(const Matrix3& E, const double first[5][3], const double second[5][3], Pose* pPose) {
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(E, Eigen::ComputeFullU | Eigen::ComputeFullV);
  Eigen::Matrix3d U = svd.matrixU(), V = svd.matrixV();
  if (U.determinant() < 0.0) U.col(2) = -U.col(2);
  if (V.determinant() < 0.0) V.col(2) = -V.col(2);
  for (const double dTurn : {1.0, -1.0}) {
    Eigen::Matrix3d W;
    W << 0.0, -dTurn, 0.0, dTurn, 0.0, 0.0, 0.0, 0.0, 1.0;
    const Matrix3 R = U * W * V.transpose();
    for (const double dSign : {1.0, -1.0}) {
      const Vec t = dSign * U.col(2);
      Pose pose;
      Eigen::Map<Matrix3>(pose.R.data()) = R;
      Eigen::Map<Vec>(pose.X0.data()) = t;
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
  const Eigen::Map<const Vec> a(d1), b(turned.data()), t(second.X0.data());
  // a p - b q = t in the sense of least squares.
  const double c = a.dot(b), dSine2 = a.cross(b).squaredNorm();
  if (!(dSine2 > 1e-20)) return false;
  *pdFirst = (a.dot(t) - c * b.dot(t)) / dSine2;
  *pdSecond = (c * a.dot(t) - b.dot(t)) / dSine2;
  return true;
}

std::vector<Pose> SolveFivePoints(const double first[5][3], const double second[5][3]) {
  Eigen::Matrix<double, 5, 9> Q;
  for (int n = 0; n < 5; ++n) {
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) Q(n, 3 * i + j) = first[n][i] * second[n][j];
    }
  }
  const Eigen::JacobiSVD<Eigen::Matrix<double, 5, 9>> svd(Q, Eigen::ComputeFullV);
  const Eigen::Matrix<double, 9, 4> space = svd.matrixV().rightCols<4>();
  const Eigen::Matrix<double, 10, kTerms> rows = Equations(space);
  const Eigen::Matrix<double, 10, 10> cubic = rows.leftCols<10>();
  const Eigen::PartialPivLU<Eigen::Matrix<double, 10, 10>> lu(cubic);
  const Eigen::Matrix<double, 10, 10> B = lu.solve(rows.rightCols<10>());
  // Multiplication by x over the terms of degree 2 and less.
  Eigen::Matrix<double, 10, 10> action = Eigen::Matrix<double, 10, 10>::Zero();
  action.topRows<6>() = -B.topRows<6>();
  action(6, 0) = action(7, 1) = action(8, 2) = action(9, 6) = 1.0;
  std::vector<Pose> poses;
  if (!action.allFinite()) return poses;
  const Eigen::EigenSolver<Eigen::Matrix<double, 10, 10>> eigen(action);
  if (eigen.info() != Eigen::Success) return poses;
  for (int k = 0; k < 10; ++k) {
    if (std::fabs(eigen.eigenvalues()[k].imag()) > 1e-8) continue;
    const Eigen::Matrix<double, 10, 1> v = eigen.eigenvectors().col(k).real();
    const Eigen::Vector4d weights(v[6], v[7], v[8], v[9]);
    Eigen::Matrix<double, 9, 1> e = space * weights;
    const double dLength = e.norm();
    if (!(dLength > 0.0) || !std::isfinite(dLength)) continue;
    e /= dLength;
    Pose pose;
    if (PoseOf(Eigen::Map<const Matrix3>(e.data()), first, second, &pose)) poses.push_back(pose);
  }
  return poses;
}

}  // namespace zu::internal
