// InvAdjustExact: the inverse of the forward map without a table.
//
// Newton's method on the forward map, started from the closed form of the model where there is
// one, with steps halved until the residual falls (J. E. Dennis, R. B. Schnabel: Numerical Methods
// for Unconstrained Optimization and Nonlinear Equations, 1983, chapter 6).
#include <algorithm>
#include <cmath>

#include "zu/photo/camera.h"
#include "zu/photo/internal/camera_kernel.h"

namespace {

using camera_kernel::HalfWidth;

constexpr double kResidual = 1e-10;  // accepted distance in the forward map [mm]
constexpr double kBorder = 1e-9;     // rounding of a point on the border of the valid image [mm]
constexpr int kNewtonRounds = 60;
constexpr int kHalvings = 30;
constexpr double kStep = 1e-6;     // of a difference quotient [mm]
constexpr int kRadiusSteps = 256;  // samples of the search for the valid radius
constexpr double kCapReach = 3.0;  // corrected over measured distances of the search, mode 2
constexpr int kRadiusBisections = 60;

struct Vec2 {
  double x, y;
};

double Length(Vec2 v) { return std::hypot(v.x, v.y); }

bool HasForwardMap(const ZuCamera& camera) {
  return camera.m_iMode == eCameraModeZuvo || camera.m_iMode == eCameraModeViva ||
         camera.m_iMode == eCameraModeCap;
}

// Positive while the forward map is one to one at the distance r from the distortion centre. Modes
// 0 and 1: the determinant of its derivative, in the least favourable direction of the offset
// between the two principal points. Mode 2, r taken at the corrected position: how far the
// correction is from folding the image (g' > 0), and from stopping the fixed point (its factor
// below 1).
double Margin(const ZuCamera& camera, double r) {
  const double r2 = r * r;
  const double dSlope = r * (2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * r2);  // d'(r), two terms
  if (camera.m_iMode == eCameraModeCap) {
    const double d = camera_kernel::Radial3(camera, r);
    const double dSlope3 = dSlope + 6.0 * camera.m_dA3 * r2 * r2 * r;
    const double dOther =
        std::hypot(camera.m_dB1, camera.m_dB2) + 6.0 * r * std::hypot(camera.m_dC1, camera.m_dC2);
    const double dStretch = d + r * dSlope3;
    return std::min({1.0 + d - dOther, 1.0 + dStretch - dOther,
                     1.0 - std::max(std::fabs(d), std::fabs(dStretch)) - dOther});
  }
  const double d = camera_kernel::Radial2(camera, r);
  double dOffset = 0.0;
  if (camera.m_iMode == eCameraModeViva) {
    dOffset = std::hypot(camera.m_dXhViva - camera.m_dXh, camera.m_dYhViva - camera.m_dYh);
  }
  return std::min(1.0 - d, 1.0 - d - r * dSlope - std::fabs(dSlope) * dOffset);
}

// Newton's method for forward(p) = target from the given start.
class Newton {
 public:
  Newton(const ZuCamera& camera, Vec2 target) : m_camera(camera), m_target(target) {}

  // True with the point in *p when the residual got small enough.
  bool Solve(Vec2* p) const {
    Vec2 residual = Residual(*p);
    for (int n = 0; n < kNewtonRounds; ++n) {
      const double dLength = Length(residual);
      if (!(dLength > 0.0)) break;
      Vec2 next, nextResidual;
      if (!Step(*p, residual, &next, &nextResidual)) break;  // no step lowers it any more
      *p = next;
      residual = nextResidual;
    }
    return Length(residual) <= kResidual;
  }

 private:
  Vec2 Residual(Vec2 p) const {
    m_camera.Adjust(&p.x, &p.y);
    return {p.x - m_target.x, p.y - m_target.y};
  }

  // One Newton step, halved until the residual is below the former one.
  bool Step(Vec2 p, Vec2 residual, Vec2* pNext, Vec2* pNextResidual) const {
    const Vec2 dx = Difference({p.x + kStep, p.y}, {p.x - kStep, p.y});
    const Vec2 dy = Difference({p.x, p.y + kStep}, {p.x, p.y - kStep});
    const double dDet = dx.x * dy.y - dy.x * dx.y;
    Vec2 step{(dy.y * residual.x - dy.x * residual.y) / dDet,
              (dx.x * residual.y - dx.y * residual.x) / dDet};
    const double dLength = Length(residual);
    for (int n = 0; n < kHalvings; ++n) {
      *pNext = {p.x - step.x, p.y - step.y};
      *pNextResidual = Residual(*pNext);
      if (Length(*pNextResidual) < dLength) return true;
      step = {0.5 * step.x, 0.5 * step.y};
    }
    return false;
  }

  Vec2 Difference(Vec2 a, Vec2 b) const {
    m_camera.Adjust(&a.x, &a.y);
    m_camera.Adjust(&b.x, &b.y);
    return {(a.x - b.x) / (2.0 * kStep), (a.y - b.y) / (2.0 * kStep)};
  }

  const ZuCamera& m_camera;
  Vec2 m_target;
};

// The root of r (1 - d(r)) = dTarget in [0, dReach], where the left side grows: Newton, kept within
// a shrinking bracket. Negative when the target lies beyond.
double SolveRadius(const ZuCamera& camera, double dTarget, double dReach) {
  const auto forward = [&](double r) { return r * (1.0 - camera_kernel::Radial2(camera, r)); };
  double dLow = 0.0, dHigh = dReach;
  if (!(dTarget <= forward(dHigh))) return -1.0;
  double r = std::min(dTarget, dHigh);
  for (int n = 0; n < 200 && dLow < dHigh; ++n) {
    const double e = forward(r) - dTarget;
    (e > 0.0 ? dHigh : dLow) = r;
    const double dSlope = 1.0 - camera_kernel::Radial2(camera, r) -
                          r * r * (2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * r * r);
    double dNext = r - e / dSlope;
    if (!(dNext > dLow && dNext < dHigh)) dNext = 0.5 * (dLow + dHigh);
    if (dNext == r) break;
    r = dNext;
  }
  return r;
}

// Where the search of mode 1 and 2 starts. Mode 2: the measured point is the corrected one less
// its correction, up to the stop rule of the forward map.
Vec2 Start(const ZuCamera& camera, Vec2 target) {
  if (camera.m_iMode == eCameraModeCap) {
    double dx, dy;
    camera_kernel::FullCorrection(camera, target.x, target.y, &dx, &dy);
    return {target.x - dx + camera.m_dXh, target.y - dy + camera.m_dYh};
  }
  return {target.x + camera.m_dXhViva, target.y + camera.m_dYhViva};
}

// Mode 2 stops its iteration by a rule, so its forward map has small steps where the number of
// rounds changes, and Newton can get stuck before one. Starts around the closed form reach the
// pieces beside it.
bool SolveWithNeighbours(const Newton& newton, Vec2 start, Vec2* p) {
  *p = start;
  if (newton.Solve(p)) return true;
  for (double dRadius = 1e-4; dRadius < 1.0; dRadius *= 3.0) {
    for (int n = 0; n < 8; ++n) {
      const double dAngle = n * (std::acos(-1.0) / 4.0);
      *p = {start.x + dRadius * std::cos(dAngle), start.y + dRadius * std::sin(dAngle)};
      if (newton.Solve(p)) return true;
    }
  }
  return false;
}

}  // namespace

const char* GetCameraInverseText(eCameraInverse eStatus) {
  switch (eStatus) {
    case eCameraInverseOk:
      return "ok";
    case eCameraInverseNoCamera:
      return "no camera";
    case eCameraInverseNoModel:
      return "no forward model";
    case eCameraInverseOutside:
      return "outside the valid image";
    case eCameraInverseNoConvergence:
      return "no inverse found";
  }
  return "unknown";
}

double ZuCamera::GetValidRadius(double dSearch) const {
  if (!HasForwardMap(*this)) return 0.0;
  const double dReach = dSearch > 0.0 ? dSearch : HalfWidth(*this);
  if (!std::isfinite(dReach) || !(Margin(*this, 0.0) > 0.0)) return 0.0;
  // The margin of mode 2 is over corrected distances q, of which the measured one is q (1 + d(q)).
  const auto measured = [this](double r) {
    return m_iMode == eCameraModeCap ? r * (1.0 + camera_kernel::Radial3(*this, r)) : r;
  };
  const double dFarthest = m_iMode == eCameraModeCap ? kCapReach * dReach : dReach;
  double dLow = 0.0, dHigh = dFarthest;
  bool bBounded = false;
  for (int n = 1; n <= kRadiusSteps && !bBounded && measured(dLow) < dReach; ++n) {
    const double r = dFarthest * n / kRadiusSteps;
    bBounded = !(Margin(*this, r) > 0.0);
    (bBounded ? dHigh : dLow) = r;
  }
  for (int n = 0; bBounded && n < kRadiusBisections; ++n) {
    const double r = 0.5 * (dLow + dHigh);
    (Margin(*this, r) > 0.0 ? dLow : dHigh) = r;
  }
  return std::min(dReach, measured(dLow));
}

eCameraInverse ZuCamera::InvAdjustExact(double* x, double* y) const {
  if (m_uId == 0) return eCameraInverseNoCamera;
  if (!HasForwardMap(*this)) return eCameraInverseNoModel;
  if (!std::isfinite(*x) || !std::isfinite(*y)) return eCameraInverseOutside;
  return InvAdjustExactImpl(x, y);
}

eCameraInverse ZuCamera::InvAdjustExactImpl(double* x, double* y) const {
  const double dHalfWidth = HalfWidth(*this);
  // The square's corners seen from the distortion centre.
  const double dCorner = std::hypot(dHalfWidth + std::fabs(m_dXh), dHalfWidth + std::fabs(m_dYh));
  const double dValid = GetValidRadius(dCorner + kBorder);
  const Vec2 target{*x, *y};
  Vec2 p{};
  if (m_iMode == eCameraModeZuvo) {
    const double dTarget = Length(target);
    const double r = SolveRadius(*this, dTarget, dValid);
    if (r < 0.0) return eCameraInverseOutside;
    const double dFactor = dTarget == 0.0 ? 0.0 : r / dTarget;
    p = {target.x * dFactor + m_dXh, target.y * dFactor + m_dYh};
    Vec2 check = p;
    Adjust(&check.x, &check.y);
    if (!(Length({check.x - target.x, check.y - target.y}) <= kResidual)) {
      return eCameraInverseNoConvergence;
    }
  } else if (!SolveWithNeighbours(Newton(*this, target), Start(*this, target), &p)) {
    return eCameraInverseNoConvergence;
  }
  if (!(std::fabs(p.x) <= dHalfWidth + kBorder) || !(std::fabs(p.y) <= dHalfWidth + kBorder) ||
      !(Length({p.x - m_dXh, p.y - m_dYh}) <= dValid + kBorder)) {
    return eCameraInverseOutside;
  }
  *x = p.x;
  *y = p.y;
  return eCameraInverseOk;
}
