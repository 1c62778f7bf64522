// Matrices and vectors as Eigen's, and random ones, for tests that compare with a second method.
#pragma once

#include <Eigen/Dense>
#include <random>

#include "zu/numerics/matrix.h"

inline Eigen::MatrixXd ToEigen(const ZuMatrix& m) {
  return Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>(
      m.GetData(), m.GetZeilen(), m.GetSpalten());
}

inline Eigen::VectorXd ToEigen(const ZuVector& v) {
  return Eigen::Map<const Eigen::VectorXd>(v.GetData(), v.GetSize());
}

// Elements between -1 and 1.
inline ZuMatrix RandomMatrix(std::mt19937_64& rng, int iRows, int iCols) {
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  ZuMatrix m(iRows, iCols);
  for (int i = 1; i <= iRows; ++i) {
    for (int j = 1; j <= iCols; ++j) m[i][j] = element(rng);
  }
  return m;
}

inline ZuVector RandomVector(std::mt19937_64& rng, int n) {
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  ZuVector v(n);
  for (int i = 1; i <= n; ++i) v[i] = element(rng);
  return v;
}

// A rotation by up to half a turn about a random axis.
inline Eigen::Matrix3d RandomRotation(std::mt19937_64& rng) {
  std::normal_distribution<double> component;
  Eigen::Quaterniond q(component(rng), component(rng), component(rng), component(rng));
  return q.normalized().toRotationMatrix();
}

// Largest difference of two matrices of one shape.
template <class A, class B>
double MaxDifference(const A& a, const B& b) {
  return (a - b).cwiseAbs().maxCoeff();
}
