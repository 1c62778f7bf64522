// AdjustExact and InvAdjustExact: the camera models both ways without a table and without the stop
// rule of the quick forward map.
//
// What has no closed form is found by Newton's method with the models' own derivatives, its steps
// halved until the residual falls (J. E. Dennis, R. B. Schnabel: Numerical Methods for
// Unconstrained Optimization and Nonlinear Equations, 1983, chapter 6). A map is one to one on a
// disk where the symmetric part of its derivative is positive definite, the disk being convex
// (D. Gale, H. Nikaido: The Jacobian matrix and global univalence of mappings, 1965).
#include <algorithm>
#include <cmath>
#include <limits>

#include "zu/photo/camera.h"
#include "zu/photo/internal/camera_kernel.h"
#include "zu/photo/internal/camera_measured.h"

namespace {

using camera_kernel::HalfWidth;

constexpr double kResidual = 1e-12;  // accepted distance in the map that is inverted [mm]
constexpr double kBorder = 1e-9;     // rounding of a point on the border of the valid image [mm]
constexpr int kNewtonRounds = 60;
constexpr int kHalvings = 30;
constexpr int kRadiusSteps = 256;  // samples of the search for the valid radius
constexpr double kCapReach = 3.0;  // corrected over measured distances of the search, mode 2
constexpr int kRadiusBisections = 60;
// Largest eigenvalue of the symmetric part of d(q (b . q) / |q|) / dq, over |b|.
constexpr double kAffinity = 1.1180339887498949;  // sqrt(5) / 2

struct Vec2 {
  double x, y;
};

double Length(Vec2 v) { return std::hypot(v.x, v.y); }

bool HasForwardMap(const ZuCamera& camera) {
  return camera.m_iMode == eCameraModeZuvo || camera.m_iMode == eCameraModeViva ||
         camera.m_iMode == eCameraModeCap;
}

// Distance of the two principal points of mode 1.
double CentreOffset(const ZuCamera& camera) {
  if (camera.m_iMode != eCameraModeViva) return 0.0;
  return std::hypot(camera.m_dXhViva - camera.m_dXh, camera.m_dYhViva - camera.m_dYh);
}

// Positive where the derivative of the model at the distance r from the distortion centre has a
// positive symmetric part in every direction. Modes 0 and 1: of the forward map, r measured. Mode
// 2: of the map from corrected to measured points, r corrected.
double Slope(const ZuCamera& camera, double r) {
  const double r2 = r * r;
  const double dSlope = r * (2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * r2);  // d'(r), two terms
  if (camera.m_iMode == eCameraModeCap) {
    const double d = camera_kernel::Radial3(camera, r);
    const double dSlope3 = dSlope + 6.0 * camera.m_dA3 * r2 * r2 * r;
    const double dOther = kAffinity * std::hypot(camera.m_dB1, camera.m_dB2) +
                          6.0 * r * std::hypot(camera.m_dC1, camera.m_dC2);
    return std::min(1.0 + d, 1.0 + d + r * dSlope3) - dOther;
  }
  const double d = camera_kernel::Radial2(camera, r);
  return std::min(1.0 - d, 1.0 - d - r * dSlope - std::fabs(dSlope) * CentreOffset(camera));
}

// The slope bounded from below over all distances up to r: coefficients that lower it count with
// their largest power.
double LeastSlope(const ZuCamera& camera, double r) {
  const double s = r * r, s0 = camera.m_dR0 * camera.m_dR0;
  const double dSign = camera.m_iMode == eCameraModeCap ? 1.0 : -1.0;
  const double a1 = dSign * camera.m_dA1, a2 = dSign * camera.m_dA2;
  const double a3 = camera.m_iMode == eCameraModeCap ? camera.m_dA3 : 0.0;
  const double dPolynomial = 1.0 - a1 * s0 - a2 * s0 * s0 - a3 * s0 * s0 * s0 +
                             3.0 * std::min(a1, 0.0) * s + 5.0 * std::min(a2, 0.0) * s * s +
                             7.0 * std::min(a3, 0.0) * s * s * s;
  if (camera.m_iMode == eCameraModeCap) {
    return dPolynomial - kAffinity * std::hypot(camera.m_dB1, camera.m_dB2) -
           6.0 * r * std::hypot(camera.m_dC1, camera.m_dC2);
  }
  return dPolynomial - CentreOffset(camera) * r * (2.0 * std::fabs(a1) + 4.0 * std::fabs(a2) * s);
}

// The model is one to one on the disk of radius r (see Slope). The bound answers for nearly every
// camera and point.
bool IsOneToOne(const ZuCamera& camera, double r) {
  if (!std::isfinite(r)) return false;
  if (LeastSlope(camera, r) > 0.0) return true;
  if (camera.m_iMode == eCameraModeZuvo) return r * r < camera_measured::FoldSquare(camera);
  for (int n = 0; n <= kRadiusSteps; ++n) {
    if (!(Slope(camera, r * n / kRadiusSteps) > 0.0)) return false;
  }
  return true;
}

// As Slope; in mode 2 also how far the correction is from stopping the fixed point of Adjust, whose
// factor must stay below 1.
double Margin(const ZuCamera& camera, double r) {
  const double dSlope = Slope(camera, r);
  if (camera.m_iMode != eCameraModeCap) return dSlope;
  const double r2 = r * r;
  const double d = camera_kernel::Radial3(camera, r);
  const double dStretch =
      d + r2 * (2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * r2 + 6.0 * camera.m_dA3 * r2 * r2);
  const double dOther =
      std::hypot(camera.m_dB1, camera.m_dB2) + 6.0 * r * std::hypot(camera.m_dC1, camera.m_dC2);
  return std::min(dSlope, 1.0 - std::max(std::fabs(d), std::fabs(dStretch)) - dOther);
}

// A map of the plane and its derivative at a point.
struct Mapped {
  Vec2 value;
  double adSlope[2][2];
};

// Mode 1 from measured to corrected: w (1 - d(|v|)), w and v from the two principal points.
Mapped VivaForward(const ZuCamera& camera, Vec2 p) {
  const double v[2] = {p.x - camera.m_dXh, p.y - camera.m_dYh};
  const double w[2] = {p.x - camera.m_dXhViva, p.y - camera.m_dYhViva};
  const double s = v[0] * v[0] + v[1] * v[1];
  const double d = camera_kernel::Radial2(camera, std::sqrt(s));
  const double dCurve = 2.0 * camera.m_dA1 + 4.0 * camera.m_dA2 * s;
  Mapped mapped{};
  camera.Adjust(&p.x, &p.y);
  mapped.value = p;
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) {
      mapped.adSlope[i][j] = (i == j ? 1.0 - d : 0.0) - w[i] * v[j] * dCurve;
    }
  }
  return mapped;
}

// Mode 2 from corrected to measured, the latter less the principal point.
Mapped CapBackward(const ZuCamera& camera, Vec2 q) {
  Mapped mapped{};
  double dx, dy;
  camera_kernel::FullCorrection(camera, q.x, q.y, &dx, &dy);
  mapped.value = {q.x - dx, q.y - dy};
  camera_measured::CapSlope(camera, q.x, q.y, mapped.adSlope);
  return mapped;
}

// Newton's method for map(p) = target from *p on, until no step lowers the residual; p stays on the
// disk of radius dReach about (0, 0). True when the residual got small enough.
template <typename Map>
bool SolveNewton(const Map& map, Vec2 target, double dReach, Vec2* p) {
  Mapped at = map(*p);
  Vec2 residual{at.value.x - target.x, at.value.y - target.y};
  for (int n = 0; n < kNewtonRounds && Length(residual) > 0.0; ++n) {
    const auto& J = at.adSlope;
    const double dDet = J[0][0] * J[1][1] - J[0][1] * J[1][0];
    Vec2 step{(J[1][1] * residual.x - J[0][1] * residual.y) / dDet,
              (J[0][0] * residual.y - J[1][0] * residual.x) / dDet};
    bool bLower = false;
    for (int k = 0; k < kHalvings && !bLower; ++k) {
      const Vec2 next{p->x - step.x, p->y - step.y};
      const Mapped atNext = map(next);
      const Vec2 nextResidual{atNext.value.x - target.x, atNext.value.y - target.y};
      bLower = Length(nextResidual) < Length(residual) && Length(next) <= dReach;
      if (bLower) {
        *p = next;
        at = atNext;
        residual = nextResidual;
      }
      step = {0.5 * step.x, 0.5 * step.y};
    }
    if (!bLower) break;
  }
  return Length(residual) <= kResidual;
}

// The corrected point of mode 2, target measured less the principal point. The plain start finds
// it for nearly every point; where Newton leaves the part of the plane on which the model is one to
// one, it starts again from the centre outwards and stays within that part.
eCameraInverse CapForward(const ZuCamera& camera, Vec2 target, Vec2* pCorrected) {
  const auto map = [&camera](Vec2 q) { return CapBackward(camera, q); };
  Vec2 q = map(target).value;
  q = {2.0 * target.x - q.x, 2.0 * target.y - q.y};
  constexpr double kEverywhere = std::numeric_limits<double>::infinity();
  if (!SolveNewton(map, target, kEverywhere, &q) || !IsOneToOne(camera, Length(q))) {
    double dLow = 0.0, dHigh = kCapReach * Length(target);
    if (!IsOneToOne(camera, dLow)) return eCameraInverseOutside;
    for (int n = 0; n < kRadiusBisections; ++n) {
      const double r = 0.5 * (dLow + dHigh);
      (IsOneToOne(camera, r) ? dLow : dHigh) = r;
    }
    q = {0.0, 0.0};
    if (!SolveNewton(map, target, dLow, &q)) return eCameraInverseOutside;
  }
  *pCorrected = q;
  return eCameraInverseOk;
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

eCameraInverse ZuCamera::AdjustExact(double* x, double* y) const {
  if (m_uId == 0) return eCameraInverseNoCamera;
  if (!HasForwardMap(*this) && m_iMode != eCameraModePinhole) return eCameraInverseNoModel;
  if (!std::isfinite(*x) || !std::isfinite(*y)) return eCameraInverseOutside;
  if (m_iMode == eCameraModePinhole) return eCameraInverseOk;
  const Vec2 p{*x - m_dXh, *y - m_dYh};
  Vec2 corrected{*x, *y};
  if (m_iMode == eCameraModeCap) {
    const eCameraInverse eStatus = CapForward(*this, p, &corrected);
    if (eStatus != eCameraInverseOk) return eStatus;
  } else {
    if (!IsOneToOne(*this, Length(p))) return eCameraInverseOutside;
    Adjust(&corrected.x, &corrected.y);
  }
  if (!std::isfinite(corrected.x) || !std::isfinite(corrected.y)) return eCameraInverseOutside;
  *x = corrected.x;
  *y = corrected.y;
  return eCameraInverseOk;
}

eCameraInverse ZuCamera::InvAdjustExact(double* x, double* y) const {
  if (m_uId == 0) return eCameraInverseNoCamera;
  if (!HasForwardMap(*this) && m_iMode != eCameraModePinhole) return eCameraInverseNoModel;
  const Vec2 target{*x, *y};
  if (!std::isfinite(target.x) || !std::isfinite(target.y)) return eCameraInverseOutside;
  if (m_iMode == eCameraModePinhole) return eCameraInverseOk;
  Vec2 p{target.x + m_dXhViva, target.y + m_dYhViva};
  if (m_iMode == eCameraModeViva) {
    const auto map = [this](Vec2 v) { return VivaForward(*this, v); };
    constexpr double kEverywhere = std::numeric_limits<double>::infinity();
    if (!SolveNewton(map, target, kEverywhere, &p)) return eCameraInverseNoConvergence;
    if (!IsOneToOne(*this, Length({p.x - m_dXh, p.y - m_dYh}))) return eCameraInverseOutside;
  } else {
    if (m_iMode == eCameraModeCap && !IsOneToOne(*this, Length(target))) {
      return eCameraInverseOutside;
    }
    if (!camera_measured::Measured(*this, target.x, target.y, &p.x, &p.y, nullptr)) {
      return eCameraInverseOutside;
    }
  }
  const double dHalfWidth = HalfWidth(*this);
  if (!(std::fabs(p.x) <= dHalfWidth + kBorder) || !(std::fabs(p.y) <= dHalfWidth + kBorder)) {
    return eCameraInverseOutside;
  }
  *x = p.x;
  *y = p.y;
  return eCameraInverseOk;
}
