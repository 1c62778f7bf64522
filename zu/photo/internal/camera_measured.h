// The camera models from the corrected image point to the measured one, exact, with derivatives.
//
//   mode 0      measured = h + q r / |q|         with r (1 - d(r)) = |q|, the distance that is
//   measured mode 2      measured = h + q (1 + d + f / |q|) + t                    d, f, t taken at
//   q mode 3      measured = q
//
// q = (x, y) is the corrected point, h the principal point, d the radial, f the affinity and t the
// tangential term of ZuCamera. What adjusts by least squares and what converts use these same
// lines, so that both mean the same camera. Mode 1 has no such form: its inverse is a search.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/photo/internal/camera_kernel.h"

namespace camera_measured {

enum Parameter : int { eC, eXh, eYh, eA1, eA2, eA3, eB1, eB2, eC1, eC2, kParameters };

// Of the measured point (rows: x, y).
struct Derivative {
  double point[2][2];  // to the corrected point
  // To the parameters, the ray kept: a change of c moves the corrected point by q / c.
  double parameter[2][kParameters];
};

// Square of the distance from the distortion centre at which r (1 - d(r)) stops growing: the
// smallest positive root of k - 3 a1 s - 5 a2 s^2 with k = 1 + a1 r0^2 + a2 r0^4. Infinite without
// one, 0 where the map folds at its centre.
inline double FoldSquare(const ZuCamera& camera) {
  const double s0 = camera.m_dR0 * camera.m_dR0;
  const double k = 1.0 + camera.m_dA1 * s0 + camera.m_dA2 * s0 * s0;
  if (!(k > 0.0)) return 0.0;
  const double b = 3.0 * camera.m_dA1, a = 5.0 * camera.m_dA2;
  const double dDiscriminant = b * b + 4.0 * a * k;
  if (dDiscriminant < 0.0) return std::numeric_limits<double>::infinity();
  // k / s = (b + sqrt(b^2 + 4 a k)) / 2 of the smallest positive s.
  const double dRoot = std::sqrt(dDiscriminant);
  const double dInverse = b < 0.0 ? 2.0 * a * k / (dRoot - b) : 0.5 * (b + dRoot);
  return dInverse > 0.0 ? k / dInverse : std::numeric_limits<double>::infinity();
}

// The root of r (1 - d(r)) = dTarget up to the fold: Newton's method within a shrinking bracket, to
// the last bits. Negative when the target lies beyond, or so far out that no root is found.
inline double MeasuredRadius(const ZuCamera& camera, double dTarget) {
  const auto forward = [&](double r) { return r * (1.0 - camera_kernel::Radial2(camera, r)); };
  double dLow = 0.0, dHigh = std::sqrt(FoldSquare(camera));
  if (!(dTarget >= 0.0) || std::isinf(dTarget) || !(dHigh > 0.0)) return -1.0;
  if (std::isinf(dHigh)) {  // grows without end: at least as k r
    dHigh = std::max(dTarget, std::numeric_limits<double>::min());
    while (forward(dHigh) < dTarget) dHigh *= 2.0;
  }
  if (!(dTarget <= forward(dHigh))) return -1.0;
  double r = std::min(dTarget, dHigh);
  for (int n = 0; n < 200; ++n) {
    const double e = forward(r) - dTarget;
    (e > 0.0 ? dHigh : dLow) = r;
    const double dSlope = 1.0 - camera_kernel::Radial2(camera, r) -
                          r * r * (2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * r * r);
    double dNext = r - e / dSlope;
    if (std::fabs(dNext - r) <= 2e-16 * r) return dNext;
    if (!(dNext > dLow && dNext < dHigh)) dNext = 0.5 * (dLow + dHigh);
    if (dNext == r) return r;
    r = dNext;
  }
  return -1.0;
}

// Column of a change of c: the corrected point moves along itself.
inline void FillConstant(const ZuCamera& camera, double x, double y, Derivative* p) {
  for (int i = 0; i < 2; ++i) {
    p->parameter[i][eC] = (p->point[i][0] * x + p->point[i][1] * y) / camera.m_dC;
  }
}

inline bool MeasuredRadial(const ZuCamera& camera, double x, double y, double* mx, double* my,
                           Derivative* p) {
  const double dTarget = camera_kernel::Radius(x, y);
  const double r = MeasuredRadius(camera, dTarget);
  if (!(r >= 0.0)) return false;
  const double d = camera_kernel::Radial2(camera, r);
  const double k = 1.0 / (1.0 - d);  // r / |q|, also at the centre
  *mx = x * k + camera.m_dXh;
  *my = y * k + camera.m_dYh;
  if (p == nullptr) return true;
  const double s = r * r, s0 = camera.m_dR0 * camera.m_dR0;
  const double dSlope = 1.0 - d - s * (2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * s);
  const double u[2] = {dTarget > 0.0 ? x / dTarget : 0.0, dTarget > 0.0 ? y / dTarget : 0.0};
  *p = {};
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      p->point[i][j] = (i == j ? k : 0.0) + u[i] * u[j] * (1.0 / dSlope - k);
    }
    p->parameter[i][eXh + i] = 1.0;
    p->parameter[i][eA1] = u[i] * r * (s - s0) / dSlope;
    p->parameter[i][eA2] = u[i] * r * (s * s - s0 * s0) / dSlope;
  }
  FillConstant(camera, x, y, p);
  return true;
}

// Derivative of q (1 + d + f / |q|) + t to q, row by row.
inline void CapSlope(const ZuCamera& camera, double x, double y, double adSlope[2][2]) {
  const double s = x * x + y * y, r = std::sqrt(s);
  const double d = camera_kernel::Radial3(camera, r);
  const double dCurve = 2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * s + 6.0 * camera.m_dA3 * s * s;
  const double f = camera.m_dB1 * x + camera.m_dB2 * y;
  const double q[2] = {x, y}, b[2] = {camera.m_dB1, camera.m_dB2};
  const double u[2] = {r > 0.0 ? x / r : 0.0, r > 0.0 ? y / r : 0.0};
  const double dAlong = r > 0.0 ? f / r : 0.0;
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      adSlope[i][j] = (i == j ? 1.0 + d + dAlong : 0.0) + q[i] * q[j] * dCurve + u[i] * b[j] -
                      dAlong * u[i] * u[j];
    }
  }
  const double dCross = 2.0 * (camera.m_dC1 * y + camera.m_dC2 * x);
  adSlope[0][0] += 6.0 * camera.m_dC1 * x + 2.0 * camera.m_dC2 * y;
  adSlope[0][1] += dCross;
  adSlope[1][0] += dCross;
  adSlope[1][1] += 2.0 * camera.m_dC1 * x + 6.0 * camera.m_dC2 * y;
}

inline bool MeasuredCap(const ZuCamera& camera, double x, double y, double* mx, double* my,
                        Derivative* p) {
  double dx, dy;
  camera_kernel::FullCorrection(camera, x, y, &dx, &dy);
  *mx = camera.m_dXh + (x - dx);
  *my = camera.m_dYh + (y - dy);
  if (p == nullptr) return true;
  *p = {};
  CapSlope(camera, x, y, p->point);
  const double s = x * x + y * y, r = std::sqrt(s), s0 = camera.m_dR0 * camera.m_dR0;
  const double q[2] = {x, y};
  for (int i = 0; i < 2; ++i) {
    p->parameter[i][eXh + i] = 1.0;
    p->parameter[i][eA1] = q[i] * (s - s0);
    p->parameter[i][eA2] = q[i] * (s * s - s0 * s0);
    p->parameter[i][eA3] = q[i] * (s * s * s - s0 * s0 * s0);
    p->parameter[i][eB1] = r > 0.0 ? q[i] * x / r : 0.0;
    p->parameter[i][eB2] = r > 0.0 ? q[i] * y / r : 0.0;
    p->parameter[i][eC1] = 2.0 * x * q[i] + (i == 0 ? s : 0.0);
    p->parameter[i][eC2] = 2.0 * y * q[i] + (i == 1 ? s : 0.0);
  }
  FillConstant(camera, x, y, p);
  return true;
}

// The measured point of the corrected one (x, y); with p its derivatives. False, nothing written:
// mode 1, an unknown mode, a corrected point beyond the fold of mode 0. Mode 2 is evaluated
// wherever it is asked; whether it is one to one there, ZuCamera::InvAdjustExact tells.
inline bool Measured(const ZuCamera& camera, double x, double y, double* mx, double* my,
                     Derivative* p) {
  switch (camera.m_iMode) {
    case eCameraModeZuvo:
      return MeasuredRadial(camera, x, y, mx, my, p);
    case eCameraModeCap:
      return MeasuredCap(camera, x, y, mx, my, p);
    case eCameraModePinhole:
      *mx = x;
      *my = y;
      if (p != nullptr) {
        *p = {};
        p->point[0][0] = p->point[1][1] = 1.0;
        FillConstant(camera, x, y, p);
      }
      return true;
    default:
      return false;
  }
}

}  // namespace camera_measured
