// The distortion formulas of the camera models as plain inline functions, shared by the forward
// map, the inverse table, the exact inverse and the tests of what a camera is meant for. Lengths
// mm. Sums stand in the order of the models' definition: the table, the forward map and stored
// results agree to the last bit only so.
#pragma once

#include <cmath>

#include "zu/photo/camera.h"

namespace camera_kernel {

inline double Radius(double x, double y) { return std::sqrt(x * x + y * y); }

// d(r) of two terms; the caller sees to r = 0.
inline double Radial2(const ZuCamera& camera, double r) {
  const double r2 = r * r;
  const double r02 = camera.m_dR0 * camera.m_dR0;
  return camera.m_dA2 * (r2 * r2 - r02 * r02) + camera.m_dA1 * (r2 - r02);
}

inline double Radial3(const ZuCamera& camera, double r) {
  const double r2 = r * r;
  const double r02 = camera.m_dR0 * camera.m_dR0;
  return camera.m_dA2 * (r2 * r2 - r02 * r02) + camera.m_dA1 * (r2 - r02) +
         camera.m_dA3 * (r2 * r2 * r2 - r02 * r02 * r02);
}

inline void Tangential(const ZuCamera& camera, double x, double y, double r, double* dx,
                       double* dy) {
  *dx = (2.0 * x * x + r * r) * camera.m_dC1 + 2.0 * camera.m_dC2 * x * y;
  *dy = (2.0 * y * y + r * r) * camera.m_dC2 + 2.0 * camera.m_dC1 * x * y;
}

// Correction (dx, dy) of the full model at (x, y); returns its squared length.
inline double FullCorrection(const ZuCamera& camera, double x, double y, double* dx, double* dy) {
  const double r = Radius(x, y);
  const double d = r == 0.0 ? 0.0 : Radial3(camera, r);
  double tx, ty;
  Tangential(camera, x, y, r, &tx, &ty);
  const double f = camera.m_dB1 * x + camera.m_dB2 * y;
  const double q = r == 0.0 ? 1.0 : r;
  *dx = -(x * f / q + x * d + tx);
  *dy = -(y * f / q + y * d + ty);
  return *dx * *dx + *dy * *dy;
}

constexpr double kDefaultReach = 30.0;  // half-width of a camera without RM and r0 [mm]

// Half-width of the square of measured coordinates that a camera is meant for [mm].
inline double HalfWidth(const ZuCamera& camera) {
  if (camera.m_dRMax != 0.0) return std::fabs(camera.m_dRMax);
  if (camera.m_dR0 != 0.0) return ZuCamera::kTableReach * std::fabs(camera.m_dR0);
  return kDefaultReach;
}

}  // namespace camera_kernel
