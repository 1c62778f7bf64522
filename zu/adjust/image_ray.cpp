#include "zu/adjust/internal/image_ray.h"

#include <cmath>

#include "zu/photo/internal/camera_measured.h"

namespace zu::internal {

bool Project(const ZuCamera& camera, const Pose& pose, const double P[3], double m[2],
             ImageSlope* pSlope) {
  const auto v = ToImage(pose, P);
  if (!(v[2] < 0.0)) return false;
  const double c = std::fabs(camera.m_dC);
  const double x = -c * v[0] / v[2], y = -c * v[1] / v[2];
  camera_measured::Derivative derivative;
  if (!camera_measured::Measured(camera, x, y, &m[0], &m[1],
                                 pSlope != nullptr ? &derivative : nullptr)) {
    return false;
  }
  if (!std::isfinite(m[0]) || !std::isfinite(m[1])) return false;
  if (pSlope == nullptr) return true;
  const double dScale = -c / v[2];
  for (int i = 0; i < 2; ++i) {
    // To the image vector: (x, y) = -c (v1, v2) / v3.
    const double* d = derivative.point[i];
    const double g[3] = {dScale * d[0], dScale * d[1], -(d[0] * x + d[1] * y) / v[2]};
    // dv = v x w for R exp[w], g . dv = (g x v) . w; and R' (dP - dX0).
    pSlope->pose[i][0] = g[1] * v[2] - g[2] * v[1];
    pSlope->pose[i][1] = g[2] * v[0] - g[0] * v[2];
    pSlope->pose[i][2] = g[0] * v[1] - g[1] * v[0];
    for (int j = 0; j < 3; ++j) {
      double s = 0.0;
      for (int k = 0; k < 3; ++k) s += g[k] * pose.R[static_cast<size_t>(3 * j + k)];
      pSlope->point[i][j] = s;
      pSlope->pose[i][3 + j] = -s;
    }
  }
  return true;
}

bool ImageDirection(const ZuCamera& camera, double x, double y, double v[3]) {
  if (camera.AdjustExact(&x, &y) != eCameraInverseOk) return false;
  const double c = std::fabs(camera.m_dC), dLength = std::sqrt(x * x + y * y + c * c);
  if (!(c > 0.0) || !std::isfinite(dLength)) return false;
  v[0] = x / dLength;
  v[1] = y / dLength;
  v[2] = -c / dLength;
  return true;
}

void MovePose(const double adStep[kPose], Pose* pPose) {
  const double* w = adStep;
  const double a = std::sqrt(w[0] * w[0] + w[1] * w[1] + w[2] * w[2]);
  const double s = a < 1e-8 ? 1.0 : std::sin(a) / a;
  const double h = a < 1e-8 ? 0.5 : 2.0 * std::sin(0.5 * a) * std::sin(0.5 * a) / (a * a);
  const double W[9] = {0.0, -w[2], w[1], w[2], 0.0, -w[0], -w[1], w[0], 0.0};
  double E[9];
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const double dSquare = w[i] * w[j] - (i == j ? a * a : 0.0);
      E[3 * i + j] = (i == j ? 1.0 : 0.0) + s * W[3 * i + j] + h * dSquare;
    }
  }
  const auto R = pPose->R;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      pPose->R[3 * i + j] = R[3 * i] * E[j] + R[3 * i + 1] * E[3 + j] + R[3 * i + 2] * E[6 + j];
    }
    pPose->X0[i] += adStep[3 + i];
  }
}

std::array<double, 3> ToImage(const Pose& pose, const double P[3]) {
  const double d[3] = {P[0] - pose.X0[0], P[1] - pose.X0[1], P[2] - pose.X0[2]};
  std::array<double, 3> v{};
  for (size_t i = 0; i < 3; ++i) {
    v[i] = pose.R[i] * d[0] + pose.R[3 + i] * d[1] + pose.R[6 + i] * d[2];
  }
  return v;
}

std::array<double, 3> Direction(const Pose& pose, const double v[3]) {
  std::array<double, 3> d{};
  for (size_t i = 0; i < 3; ++i) {
    d[i] = pose.R[3 * i] * v[0] + pose.R[3 * i + 1] * v[1] + pose.R[3 * i + 2] * v[2];
  }
  return d;
}

std::array<double, 3> ToObject(const Pose& pose, const double v[3]) {
  auto d = Direction(pose, v);
  for (size_t i = 0; i < 3; ++i) d[i] += pose.X0[i];
  return d;
}

}  // namespace zu::internal
