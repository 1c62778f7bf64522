#include "zu/adjust/internal/dense_cholesky.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace zu::internal {

namespace {

using Eigen::Map;
using Eigen::MatrixXd;
using Eigen::VectorXd;

}  // namespace

void DenseCholesky::SetZero(int n) {
  m_n = n;
  m_a.assign(static_cast<size_t>(n) * static_cast<size_t>(n), 0.0);
}

bool DenseCholesky::Factorise() {
  if (m_n == 0) return true;
  Map<MatrixXd> a(m_a.data(), m_n, m_n);
  const Eigen::LLT<Eigen::Ref<MatrixXd>> llt(a);
  return llt.info() == Eigen::Success;
}

void DenseCholesky::Solve(double* px) const {
  if (m_n == 0) return;
  const Map<const MatrixXd> l(m_a.data(), m_n, m_n);
  Map<VectorXd> x(px, m_n);
  l.triangularView<Eigen::Lower>().solveInPlace(x);
  l.triangularView<Eigen::Lower>().adjoint().solveInPlace(x);
}

std::vector<double> DenseCholesky::Inverse() const {
  std::vector<double> result(m_a.size());
  if (m_n == 0) return result;
  const Map<const MatrixXd> l(m_a.data(), m_n, m_n);
  Map<MatrixXd> x(result.data(), m_n, m_n);
  x.setIdentity();
  l.triangularView<Eigen::Lower>().solveInPlace(x);
  l.triangularView<Eigen::Lower>().adjoint().solveInPlace(x);
  return result;
}

void SymmetricEigen(int n, const double* pMatrix, double* pValues, double* pVectors) {
  const size_t u = static_cast<size_t>(n);
  std::vector<double> a(pMatrix, pMatrix + u * u), v(u * u, 0.0);
  for (size_t i = 0; i < u; ++i) v[u * i + i] = 1.0;
  double dPrevious = std::numeric_limits<double>::infinity();
  for (int iSweep = 0; iSweep < 60; ++iSweep) {
    double dOff = 0.0, dAll = 0.0;
    for (size_t i = 0; i < u; ++i) {
      for (size_t k = 0; k < u; ++k) (i == k ? dAll : dOff) += a[u * i + k] * a[u * i + k];
    }
    if (!(dOff > 1e-40 * (dAll + dOff))) break;
    // Rounding that the last sweep left as it was.
    if (dOff < 1e-28 * dAll && dOff > 0.5 * dPrevious) break;
    dPrevious = dOff;
    for (size_t p = 0; p + 1 < u; ++p) {
      for (size_t q = p + 1; q < u; ++q) {
        if (a[u * p + q] == 0.0) continue;
        const double dTheta = (a[u * q + q] - a[u * p + p]) / (2.0 * a[u * p + q]);
        const double t = std::copysign(1.0, dTheta) / (std::fabs(dTheta) + std::hypot(dTheta, 1.0));
        const double c = 1.0 / std::hypot(t, 1.0), s = t * c;
        for (size_t k = 0; k < u; ++k) {
          const double x = a[u * k + p], y = a[u * k + q];
          a[u * k + p] = c * x - s * y;
          a[u * k + q] = s * x + c * y;
        }
        for (size_t k = 0; k < u; ++k) {
          const double x = a[u * p + k], y = a[u * q + k];
          a[u * p + k] = c * x - s * y;
          a[u * q + k] = s * x + c * y;
          const double f = v[u * k + p], g = v[u * k + q];
          v[u * k + p] = c * f - s * g;
          v[u * k + q] = s * f + c * g;
        }
      }
    }
  }
  std::vector<size_t> order(u);
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(),
            [&](size_t i, size_t k) { return a[u * i + i] < a[u * k + k]; });
  for (size_t k = 0; k < u; ++k) {
    pValues[k] = a[u * order[k] + order[k]];
    for (size_t i = 0; i < u; ++i) pVectors[u * i + k] = v[u * i + order[k]];
  }
}

bool InvertSquare(int n, const double* pMatrix, double* pInverse) {
  const size_t u = static_cast<size_t>(n);
  std::vector<double> a(pMatrix, pMatrix + u * u);
  double dLargest = 0.0;
  for (const double d : a) dLargest = std::max(dLargest, std::fabs(d));
  std::fill(pInverse, pInverse + u * u, 0.0);
  for (size_t i = 0; i < u; ++i) pInverse[u * i + i] = 1.0;
  for (size_t k = 0; k < u; ++k) {
    size_t uPivot = k;
    for (size_t i = k + 1; i < u; ++i) {
      if (std::fabs(a[u * i + k]) > std::fabs(a[u * uPivot + k])) uPivot = i;
    }
    const double dPivot = a[u * uPivot + k];
    if (!(std::fabs(dPivot) > 1e-13 * dLargest)) return false;
    for (size_t j = 0; j < u; ++j) {
      std::swap(a[u * k + j], a[u * uPivot + j]);
      std::swap(pInverse[u * k + j], pInverse[u * uPivot + j]);
    }
    for (size_t j = 0; j < u; ++j) {
      a[u * k + j] /= dPivot;
      pInverse[u * k + j] /= dPivot;
    }
    for (size_t i = 0; i < u; ++i) {
      const double f = a[u * i + k];
      if (i == k || f == 0.0) continue;
      for (size_t j = 0; j < u; ++j) {
        a[u * i + j] -= f * a[u * k + j];
        pInverse[u * i + j] -= f * pInverse[u * k + j];
      }
    }
  }
  return true;
}

}  // namespace zu::internal
