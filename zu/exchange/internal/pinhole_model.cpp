#include "zu/exchange/internal/pinhole_model.h"

#include <algorithm>
#include <cmath>

namespace zu::internal {

namespace {

constexpr double kUnprojected = 1e-10;  // accepted distance from the pixel [px]
constexpr int kUnprojectSteps = 60;
constexpr int kUnprojectHalvings = 30;
constexpr double kSlopeStep = 1e-6;  // of the numeric derivative [-]

PlaneVector ThroughLens(const PinholeModel& model, PlaneVector n) {
  const double r = std::hypot(n.x, n.y);
  if (model.eLens == Lens::Perspective || r == 0.0) return n;
  double f = std::atan(r) / r;
  if (model.eLens == Lens::FieldOfView) {
    const double w = model.dFieldOfView;
    f = w == 0.0 ? 1.0 : std::atan(2.0 * r * std::tan(0.5 * w)) / (w * r);
  }
  return {f * n.x, f * n.y};
}

PlaneVector Distorted(const PinholeModel& model, PlaneVector n) {
  const auto& [k1, k2, k3, k4, k5, k6, k7] = model.k;
  const double r2 = n.x * n.x + n.y * n.y;
  const double dRadial =
      (1.0 + r2 * (k1 + r2 * (k2 + r2 * (k3 + r2 * k7)))) / (1.0 + r2 * (k4 + r2 * (k5 + r2 * k6)));
  const auto& [p1, p2] = model.p;
  const auto& s = model.s;
  const double xy = 2.0 * n.x * n.y;
  const double f = 1.0 + r2 * (model.q[0] + r2 * model.q[1]);
  return {n.x * dRadial + f * (p1 * xy + p2 * (r2 + 2.0 * n.x * n.x)) + r2 * (s[0] + r2 * s[1]),
          n.y * dRadial + f * (p2 * xy + p1 * (r2 + 2.0 * n.y * n.y)) + r2 * (s[2] + r2 * s[3])};
}

// On the image plane turned by Ry(tau_y) Rx(tau_x), both of them left-handed, seen from the centre
// along its normal.
PlaneVector Tilted(const PinholeModel& model, PlaneVector n) {
  if (model.tau[0] == 0.0 && model.tau[1] == 0.0) return n;
  const double sx = std::sin(model.tau[0]), cx = std::cos(model.tau[0]);
  const double sy = std::sin(model.tau[1]), cy = std::cos(model.tau[1]);
  const double x = cy * n.x + sy * sx * n.y - sy * cx;
  const double y = cx * n.y + sx;
  const double z = sy * n.x - cy * sx * n.y + cy * cx;
  return {(cy * cx * x + sy * cx * z) / z, (cy * cx * y - sx * z) / z};
}

}  // namespace

ZuPixel PinholeModel::Project(PlaneVector n) const {
  const PlaneVector d = Tilted(*this, Distorted(*this, ThroughLens(*this, n)));
  return ZuPixel(fx * d.x + skew * d.y + cx, fy * d.y + cy);
}

bool PinholeModel::Unproject(ZuPixel pixel, PlaneVector* pN) const {
  const auto Off = [&](PlaneVector n) {
    const ZuPixel at = Project(n);
    return PlaneVector{at.x - pixel.x, at.y - pixel.y};
  };
  PlaneVector n{0.0, (pixel.y - cy) / fy};
  n.x = (pixel.x - cx - skew * n.y) / fx;
  if (eLens == Lens::Equidistant) {  // the polynomial aside
    const double r = std::hypot(n.x, n.y), f = r > 0.0 ? std::tan(std::min(r, 1.5)) / r : 1.0;
    n = {f * n.x, f * n.y};
  }
  PlaneVector off = Off(n);
  for (int i = 0; i < kUnprojectSteps; ++i) {
    const double dOff = std::hypot(off.x, off.y);
    if (dOff < kUnprojected) {
      *pN = n;
      return true;
    }
    const double h = kSlopeStep * (1.0 + std::hypot(n.x, n.y));
    const PlaneVector ax = Off({n.x + h, n.y}), bx = Off({n.x - h, n.y});
    const PlaneVector ay = Off({n.x, n.y + h}), by = Off({n.x, n.y - h});
    const double a = (ax.x - bx.x) / (2.0 * h), b = (ay.x - by.x) / (2.0 * h);
    const double c = (ax.y - bx.y) / (2.0 * h), d = (ay.y - by.y) / (2.0 * h);
    const double dDet = a * d - b * c;
    const PlaneVector step{(d * off.x - b * off.y) / dDet, (a * off.y - c * off.x) / dDet};
    // A negative determinant is beyond the fold of the distortion.
    if (!(dDet > 0.0) || !std::isfinite(step.x) || !std::isfinite(step.y)) return false;
    double f = 1.0;
    PlaneVector next{}, nextOff{};
    for (int j = 0; j < kUnprojectHalvings; ++j, f *= 0.5) {
      next = {n.x - f * step.x, n.y - f * step.y};
      nextOff = Off(next);
      if (std::hypot(nextOff.x, nextOff.y) < dOff) break;
    }
    if (!(std::hypot(nextOff.x, nextOff.y) < dOff)) {  // rounding alone is left
      *pN = n;
      return dOff < 1e3 * kUnprojected;
    }
    n = next;
    off = nextOff;
  }
  return false;
}

bool PinholeModel::IsBrown() const {
  PinholeModel brown = *this;
  brown.eLens = Lens::Perspective;
  brown.k = {k[0], k[1], k[2], 0.0, 0.0, 0.0, 0.0};
  brown.q = {};
  brown.s = {};
  brown.tau = {};
  brown.dFieldOfView = 0.0;
  return brown == *this;
}

bool PinholeModel::IsFinite() const {
  double dSum =
      fx + fy + skew + cx + cy + dFieldOfView + tau[0] + tau[1] + p[0] + p[1] + q[0] + q[1];
  for (const double d : k) dSum += d;
  for (const double d : s) dSum += d;
  return std::isfinite(dSum);
}

}  // namespace zu::internal
