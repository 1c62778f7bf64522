#include "zu/adjust/internal/resection_fit.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>

namespace zu::internal {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr int kDescents = 60;
constexpr double kFlat = 1e-9;  // relative fall of the squares that ends the descent

GroupEquation PoseEquation() {
  GroupEquation equation;
  equation.A.assign(static_cast<size_t>(kMaxGroup * kPose), 0.0);
  return equation;
}

}  // namespace

bool FitPoint::IsUsable(const ZuCamera& camera, const ZuResectionPoint& point) {
  const ZuImageObservation& image = point.image;
  double v[3];
  double dSum =
      point.X + point.Y + point.Z + image.dVarianceX + image.dVarianceY + image.dCovariance;
  for (const double d : point.objectCovariance) dSum += d;
  return std::isfinite(dSum) && ImageDirection(camera, image.x, image.y, v);
}

FitPoint::FitPoint(const ZuCamera& camera, const ZuResectionPoint& point, double dSigma)
    : m{point.image.x, point.image.y},
      Q{point.image.dVarianceX, point.image.dCovariance, point.image.dVarianceY},
      P{point.X, point.Y, point.Z} {
  if (!(Q[0] > 0.0) || !(Q[2] > 0.0)) {
    Q[0] = Q[2] = dSigma * dSigma;
    Q[1] = 0.0;
  }
  std::copy(point.objectCovariance.begin(), point.objectCovariance.end(), C);
  ImageDirection(camera, m[0], m[1], direction);
}

void ResectionFit::Linearize(int iGroup, GroupEquation* pEquation) const {
  const FitPoint& p = points[static_cast<size_t>(iGroup)];
  pEquation->m = 2;
  double m[2];
  ImageSlope slope;
  if (!Project(camera, pose, p.P, m, &slope)) {
    pEquation->w[0] = pEquation->w[1] = std::numeric_limits<double>::quiet_NaN();
    std::fill(pEquation->A.begin(), pEquation->A.end(), 0.0);
  } else {
    for (int i = 0; i < 2; ++i) {
      pEquation->w[i] = m[i] - p.m[i];
      for (int j = 0; j < kPose; ++j) {
        pEquation->A[static_cast<size_t>(i * kPose + j)] = slope.pose[i][j];
      }
    }
  }
  double* M = pEquation->M;
  M[0] = p.Q[0];
  M[1] = M[2] = p.Q[1];
  M[3] = p.Q[2];
  if (!std::isfinite(pEquation->w[0])) return;
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      for (int k = 0; k < 9; ++k) {
        M[2 * i + j] += slope.point[i][k / 3] * p.C[k] * slope.point[j][k % 3];
      }
    }
  }
}

double ResectionFit::Square(const Pose& at, size_t i) const {
  const FitPoint& p = points[i];
  double m[2];
  if (!Project(camera, at, p.P, m, nullptr)) return kNever;
  const double dx = m[0] - p.m[0], dy = m[1] - p.m[1];
  return 0.5 * (dx * dx / p.Q[0] + dy * dy / p.Q[2]);
}

double ResectionFit::Squares(const Pose& at) const {
  double dSum = 0.0;
  for (size_t i = 0; i < points.size(); ++i) {
    if (used[i]) dSum += 2.0 * Square(at, i);
  }
  return dSum;
}

double ResectionFit::Distance(const Pose& at) const {
  double dSum = 0.0;
  int n = 0;
  for (size_t i = 0; i < points.size(); ++i) {
    if (!used[i]) continue;
    const auto v = ToImage(at, points[i].P);
    dSum += std::hypot(v[0], v[1], v[2]);
    ++n;
  }
  return n > 0 ? dSum / n : 1.0;
}

// The step (w, dX0) as a turn of the object by w about its centre and a shift of that centre in the
// image system, t to t + dt: the same to first order, dt = -R' dX0 - w x t, and bent less, since a
// turn about a far photo moves the object on a long arc.
Pose ResectionFit::Orbited(const double adStep[kPose]) const {
  using Vec = Eigen::Vector3d;
  using Matrix = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
  Vec centre = Vec::Zero();
  double n = 0.0;
  for (size_t i = 0; i < points.size(); ++i) {
    if (!used[i]) continue;
    centre += Eigen::Map<const Vec>(points[i].P);
    n += 1.0;
  }
  centre /= n;
  const Eigen::Map<const Matrix> R(pose.R.data());
  const Eigen::Map<const Vec> X0(pose.X0.data()), w(adStep), dX0(adStep + 3);
  const Vec t = R.transpose() * (centre - X0);
  const Vec tMoved = t - R.transpose() * dX0 - w.cross(t);
  Pose moved = pose;
  const double turn[kPose] = {w[0], w[1], w[2], 0.0, 0.0, 0.0};
  MovePose(turn, &moved);
  Eigen::Map<Vec>(moved.X0.data()) = centre - Eigen::Map<const Matrix>(moved.R.data()) * tMoved;
  return moved;
}

double ResectionFit::Change(const double adStep[kPose]) const {
  const Pose moved = Orbited(adStep);
  GroupEquation equation = PoseEquation();
  double dSum = 0.0;
  for (size_t i = 0; i < points.size(); ++i) {
    double b[2];
    if (!used[i]) continue;
    Linearize(static_cast<int>(i), &equation);
    if (!Project(camera, moved, points[i].P, b, nullptr)) return kNever;
    const Eigen::Map<const Eigen::Matrix2d> M(equation.M);
    const Eigen::Vector2d d(b[0] - points[i].m[0] - equation.w[0],
                            b[1] - points[i].m[1] - equation.w[1]);
    dSum += d.dot(M.inverse() * d);
  }
  return std::sqrt(dSum);
}

void ResectionFit::Descend() {
  using Normal = Eigen::Matrix<double, 6, 6>;
  double dSquares = Squares(pose), dDamping = 1e-3;
  GroupEquation equation = PoseEquation();
  for (int n = 0; n < kDescents && std::isfinite(dSquares); ++n) {
    Normal N = Normal::Zero();
    Eigen::Matrix<double, 6, 1> h = Eigen::Matrix<double, 6, 1>::Zero();
    for (int i = 0; i < Groups(); ++i) {
      if (!IsUsed(i)) continue;
      Linearize(i, &equation);
      const Eigen::Map<const Eigen::Matrix<double, 2, 6, Eigen::RowMajor>> A(equation.A.data());
      const FitPoint& p = points[static_cast<size_t>(i)];
      const Eigen::Vector2d weights(1.0 / p.Q[0], 1.0 / p.Q[2]);
      N += A.transpose() * weights.asDiagonal() * A;
      h += A.transpose() * weights.asDiagonal() * Eigen::Vector2d(equation.w[0], equation.w[1]);
    }
    double dNext = kNever;
    for (int k = 0; k < 12 && !(dNext < dSquares); ++k, dDamping *= 10.0) {
      const Normal damped = N + Normal(dDamping * N.diagonal().asDiagonal());
      const Eigen::Matrix<double, 6, 1> step = -damped.ldlt().solve(h);
      Pose next = pose;
      MovePose(step.data(), &next);
      dNext = Squares(next);
      if (dNext < dSquares) pose = next;
    }
    if (!(dNext < dSquares * (1.0 - kFlat))) return;
    dSquares = dNext;
    dDamping *= 1e-3;
  }
}

}  // namespace zu::internal
