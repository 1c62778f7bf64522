#include <algorithm>
#include <cmath>
#include <numbers>

#include "zu/numerics/matrix.h"

namespace {

// Length of the sum of two unit axes above which they look the same way [-]: about 89.5 degrees.
constexpr double kSameDirection = 1.42;

// Angle below which the third point of a frame lies on the line of the two others [rad].
constexpr double kCollinear = 1e-10;

// Cosine of the angle about X below which the axes of Y and Z are one [-].
constexpr double kGimbalLock = 1e-8;

// Image of (0, 0, 1) under a 3x3 matrix.
ZuVector ThirdAxis(const ZuMatrix& m) { return m * ZuVector(0.0, 0.0, 1.0); }

// b - a over three elements.
ZuVector Difference(const ZuVector& b, const ZuVector& a) {
  return ZuVector(b[1] - a[1], b[2] - a[2], b[3] - a[3]);
}

}  // namespace

ZuMatrix& ZuMatrix::MakeRotMatrix(double a, double b, double c) {
  const double sa = std::sin(a), ca = std::cos(a);
  const double sb = std::sin(b), cb = std::cos(b);
  const double sc = std::sin(c), cc = std::cos(c);
  ZuMatrix& r = *this;
  r[1][1] = sb * sa * sc + cc * ca;
  r[1][2] = sb * sa * cc - sc * ca;
  r[1][3] = cb * sa;
  r[2][1] = cb * sc;
  r[2][2] = cb * cc;
  r[2][3] = -sb;
  r[3][1] = sb * ca * sc - cc * sa;
  r[3][2] = sb * ca * cc + sc * sa;
  r[3][3] = cb * ca;
  return r;
}

ZuMatrix& ZuMatrix::MakeRotMatrix(const ZuVector& a, const ZuVector& b, const ZuVector& c,
                                  bool* pbOk) {
  if (pbOk != nullptr) *pbOk = false;
  ZuVector x = Difference(b, a);
  ZuVector y = Difference(c, a);
  if (x.Abs() == 0.0 || y.Abs() == 0.0) return *this;
  x.Normalize();
  y.Normalize();
  y = y - x * (x * y);
  // Of collinear points rounding is left, or nothing; of coordinates that are no numbers neither.
  if (!(y.Abs() >= kCollinear)) return *this;
  y.Normalize();
  ZuVector z = x % y;
  if (z.Abs() == 0.0 || !std::isfinite(z.Abs())) return *this;
  z.Normalize();
  SetRow(1, x);
  SetRow(2, y);
  SetRow(3, z);
  if (pbOk != nullptr) *pbOk = true;
  return *this;
}

void ZuMatrix::GetRotAngles(double* pdX, double* pdY, double* pdZ) const {
  const ZuMatrix& r = *this;
  double dX = std::asin(std::clamp(-r[2][3], -1.0, 1.0));  // rounding may have left the range
  const double c = std::cos(dX);
  // Required: the angle is turned over by its cosine before Y and Z are taken with the cosine of
  // the principal value.
  if (dX > 0.0 && c < 0.0) dX = std::numbers::pi - dX;
  if (dX < 0.0 && std::cos(dX) < 0.0) dX = -std::numbers::pi - dX;
  *pdX = dX;
  if (std::fabs(c) < kGimbalLock) {
    *pdY = std::atan2(-r[3][1], r[1][1]);
    *pdZ = 0.0;
    return;
  }
  *pdY = std::atan2(r[1][3] / c, r[3][3] / c);
  *pdZ = std::atan2(r[2][1] / c, r[2][2] / c);
}

ZuMatrix& ZuMatrix::RotXAxis(double t) {
  SetIdent();
  ZuMatrix& r = *this;
  r[2][2] = std::cos(t);
  r[2][3] = -std::sin(t);
  r[3][2] = std::sin(t);
  r[3][3] = std::cos(t);
  return r;
}

ZuMatrix& ZuMatrix::RotYAxis(double t) {
  SetIdent();
  ZuMatrix& r = *this;
  r[1][1] = std::cos(t);
  r[1][3] = std::sin(t);
  r[3][1] = -std::sin(t);
  r[3][3] = std::cos(t);
  return r;
}

ZuMatrix& ZuMatrix::RotZAxis(double t) {
  SetIdent();
  ZuMatrix& r = *this;
  r[1][1] = std::cos(t);
  r[1][2] = -std::sin(t);
  r[2][1] = std::sin(t);
  r[2][2] = std::cos(t);
  return r;
}

double ZuMatrix::CalcAngle(const ZuMatrix& other) const {
  const ZuVector a = ThirdAxis(*this).Normalize();
  const ZuVector b = ThirdAxis(other).Normalize();
  double d = a * b;
  if (d >= 1.0) return 0.0;
  if (d < -1.0) d = -1.0;  // opposed axes: rounding must not lead outside the arc cosine
  return std::acos(d);
}

bool ZuMatrix::IsLookingInSameDirection(const ZuMatrix& other) const {
  return (ThirdAxis(*this) + ThirdAxis(other)).Abs() > kSameDirection;
}
