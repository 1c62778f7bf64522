#include "zu/adjust/internal/fit_shape.h"

#include <Eigen/Dense>
#include <cmath>

#include "zu/adjust/internal/dense_cholesky.h"

namespace zu::internal {
namespace {

constexpr double kSpan = 1e-12;    // sine or share of the extent below which nothing is spanned [-]
constexpr double kFarthest = 1e6;  // radius over the extent: beyond it a sphere is a plane [-]

Vector3 MeanOf(std::span<const Vector3> points) {
  Vector3 mean = Vector3::Zero();
  for (const Vector3& x : points) mean += x;
  return mean / static_cast<double>(points.size());
}

template <int N>
struct EigenPairs {
  Eigen::Matrix<double, N, 1> values;   // ascending
  Eigen::Matrix<double, N, N> vectors;  // columns
};

template <int N>
EigenPairs<N> EigenPairsOf(const Eigen::Matrix<double, N, N>& symmetric) {
  EigenPairs<N> pairs;
  Eigen::Matrix<double, N, N> rows;
  SymmetricEigen(N, symmetric.data(), pairs.values.data(), rows.data());
  pairs.vectors = rows.transpose();
  return pairs;
}

// Directions of the scatter about the mean, the widest first, and the root mean squares along them.
// The second round forms the sums along the directions of the first, so that what is thin keeps its
// digits.
struct Axes {
  Vector3 mean;
  Eigen::Matrix3d directions;
  Vector3 extents;
};

Axes AxesOf(std::span<const Vector3> points) {
  Axes axes = {MeanOf(points), Eigen::Matrix3d::Identity(), Vector3::Zero()};
  for (int iRound = 0; iRound < 3; ++iRound) {
    Vector3 drift = Vector3::Zero();
    Eigen::Matrix3d sums = Eigen::Matrix3d::Zero();
    for (const Vector3& x : points) {
      const Vector3 d = axes.directions.transpose() * (x - axes.mean);
      drift += d;
      sums += d * d.transpose();
    }
    const double n = static_cast<double>(points.size());
    axes.mean += axes.directions * (drift / n);
    // Of a scale of its own on each axis the thin ones are as exact as the wide ones.
    if (!sums.allFinite()) {  // no axes
      axes.extents.setZero();
      break;
    }
    const EigenPairs<3> pairs = EigenPairsOf<3>(sums / n);
    axes.directions = (axes.directions * pairs.vectors.rowwise().reverse()).eval();
    axes.extents = pairs.values.reverse().cwiseMax(0.0).cwiseSqrt();
  }
  return axes;
}

// Circle through the points of the plane in the algebraic sense (I. Kasa, "A circle fitting
// procedure and its error analysis", 1976), of the sphere likewise.
template <int N>
bool CenterOf(std::span<const Eigen::Matrix<double, N, 1>> points,
              Eigen::Matrix<double, N, 1>* pCenter, double* pdRadius) {
  using Vector = Eigen::Matrix<double, N, 1>;
  const double n = static_cast<double>(points.size());
  Vector mean = Vector::Zero();
  for (const Vector& x : points) mean += x;
  mean /= n;
  Eigen::Matrix<double, N, N> sums = Eigen::Matrix<double, N, N>::Zero();
  Vector right = Vector::Zero();
  double dMean = 0.0;
  for (const Vector& x : points) dMean += (x - mean).squaredNorm();
  dMean /= n;
  for (const Vector& x : points) {
    const Vector d = x - mean;
    sums += d * d.transpose();
    right += d * (d.squaredNorm() - dMean);
  }
  const auto [values, vectors] = EigenPairsOf<N>(sums);
  if (!(values[0] > kSpan * kSpan * values[N - 1]) || !(values[N - 1] > 0.0)) return false;
  const Vector center = 0.5 * (vectors * (vectors.transpose() * right).cwiseQuotient(values));
  *pdRadius = std::sqrt(center.squaredNorm() + dMean);
  *pCenter = mean + center;
  return std::isfinite(*pdRadius) && *pdRadius < kFarthest;
}

}  // namespace

int FitShape::ParameterCount() const {
  switch (m_kind) {
    case FitKind::kPlane:
      return 3;
    case FitKind::kCylinder:
      return 5;
    default:
      return 4;
  }
}

int FitShape::SampleSize() const {
  switch (m_kind) {
    case FitKind::kLine:
      return 2;
    case FitKind::kSphere:
      return 4;
    default:
      return 3;
  }
}

void FitShape::SetDirection(const Vector3& n) {
  m_n = n.normalized();
  // The axis that is farthest from n; so that the frame depends on n alone.
  int iAxis = 0;
  m_n.cwiseAbs().minCoeff(&iAxis);
  m_e1 = (Vector3::Unit(iAxis) - m_n[iAxis] * m_n).normalized();
  m_e2 = m_n.cross(m_e1);
}

void FitShape::Flip() {
  m_n = -m_n;
  m_e2 = -m_e2;
  m_dHeight = -m_dHeight;
}

bool FitShape::FromSample(std::span<const Vector3> points, const Vector3& axis) {
  if (m_kind == FitKind::kPlane) {
    const Vector3 a = points[1] - points[0], b = points[2] - points[0];
    const Vector3 n = a.cross(b);
    if (!(n.norm() > kSpan * a.norm() * b.norm())) return false;
    SetDirection(n);
    m_dHeight = m_n.dot(points[0]);
    return true;
  }
  return FromPoints(points, axis);
}

bool FitShape::FromPoints(std::span<const Vector3> points, const Vector3& axis) {
  switch (m_kind) {
    case FitKind::kPlane:
    case FitKind::kLine: {
      const bool bPlane = m_kind == FitKind::kPlane;
      const Axes axes = AxesOf(points);
      if (!(axes.extents[bPlane ? 1 : 0] > kSpan * axes.extents[0])) return false;
      SetDirection(axes.directions.col(bPlane ? 2 : 0));
      m_dHeight = m_n.dot(axes.mean);
      m_point = axes.mean - m_dHeight * m_n;
      return true;
    }
    case FitKind::kSphere:
      return CenterOf<3>(points, &m_point, &m_dRadius);
    default: {
      SetDirection(axis);
      std::vector<Eigen::Vector2d> flat;
      flat.reserve(points.size());
      for (const Vector3& x : points) flat.emplace_back(m_e1.dot(x), m_e2.dot(x));
      Eigen::Vector2d center;
      if (!CenterOf<2>(flat, &center, &m_dRadius)) return false;
      m_point = center[0] * m_e1 + center[1] * m_e2;
      return true;
    }
  }
}

double FitShape::Distance(const Vector3& x) const {
  switch (m_kind) {
    case FitKind::kPlane:
      return m_n.dot(x) - m_dHeight;
    case FitKind::kSphere:
      return (x - m_point).norm() - m_dRadius;
    default: {
      const Vector3 d = x - m_point;
      const double dOff = std::hypot(m_e1.dot(d), m_e2.dot(d));
      return m_kind == FitKind::kLine ? dOff : dOff - m_dRadius;
    }
  }
}

bool FitShape::Linearize(const Vector3& x, Row* pRow) const {
  const Vector3 d = x - m_point;
  switch (m_kind) {
    case FitKind::kPlane:
      pRow->w[0] = m_n.dot(x) - m_dHeight;
      pRow->B.row(0) = m_n.transpose();
      pRow->A.row(0).head<3>() << m_e1.dot(x), m_e2.dot(x), -1.0;
      return true;
    case FitKind::kLine: {
      const double t = m_n.dot(d);
      pRow->w << m_e1.dot(d), m_e2.dot(d);
      pRow->B << m_e1.transpose(), m_e2.transpose();
      pRow->A.leftCols<4>() << -t, 0.0, -1.0, 0.0, 0.0, -t, 0.0, -1.0;
      return true;
    }
    case FitKind::kSphere: {
      const double dLength = d.norm();
      if (!(dLength > 0.0)) return false;
      pRow->w[0] = dLength - m_dRadius;
      pRow->B.row(0) = d.transpose() / dLength;
      pRow->A.row(0).head<4>() << -d.transpose() / dLength, -1.0;
      return true;
    }
    default: {
      const double t = m_n.dot(d), p = m_e1.dot(d), q = m_e2.dot(d), dLength = std::hypot(p, q);
      if (!(dLength > 0.0)) return false;
      const double c = p / dLength, s = q / dLength;
      pRow->w[0] = dLength - m_dRadius;
      pRow->B.row(0) = (c * m_e1 + s * m_e2).transpose();
      pRow->A.row(0) << -t * c, -t * s, -c, -s, -1.0;
      return true;
    }
  }
}

void FitShape::Tilt(double a, double b) {
  const Vector3 n = (m_n + a * m_e1 + b * m_e2).normalized();
  // The least turn that carries the old direction to the new one, so that e1 and e2 do not spin.
  m_e1 = (m_e1 - m_e1.dot(n) * n).normalized();
  m_n = n;
  m_e2 = m_n.cross(m_e1);
}

void FitShape::Update(const Parameters& dx) {
  switch (m_kind) {
    case FitKind::kPlane: {
      const Vector3 foot = m_dHeight * m_n;
      Tilt(dx[0], dx[1]);
      m_dHeight = m_n.dot(foot) + dx[2];
      break;
    }
    case FitKind::kSphere:
      m_point += dx.head<3>();
      m_dRadius += dx[3];
      break;
    default:
      m_point += dx[2] * m_e1 + dx[3] * m_e2;
      Tilt(dx[0], dx[1]);
      m_point -= m_n.dot(m_point) * m_n;
      if (m_kind == FitKind::kCylinder) m_dRadius += dx[4];
  }
}

Vector3 FitShape::Point() const {
  return m_kind == FitKind::kPlane ? Vector3(m_dHeight * m_n) : m_point;
}

}  // namespace zu::internal
