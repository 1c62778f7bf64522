// Vector in space with a homogeneous fourth component of 0: a map of ZuAffinMap3d turns it and does
// not move it.
//
// A plain value without checks: a division by a zero length gives numbers that are not finite.
#pragma once

#include <cmath>

#include "zu/export.h"
#include "zu/numerics/mmatrix.h"

class ZuFrame3d;
class ZuPoint3d;

class ZU_API ZuVector3d : public _MVector {
 public:
  // The zero vector.
  constexpr ZuVector3d() : _MVector(0.0, 0.0, 0.0, 0.0) {}
  constexpr ZuVector3d(double dX, double dY, double dZ) : _MVector(0.0, dX, dY, dZ) {}
  // The vector with the coordinates dX, dY, dZ in the axes of the frame; the frame's origin takes
  // no part.
  ZuVector3d(const ZuFrame3d& frame, double dX, double dY, double dZ);

  // Componentwise; w of a new vector is 0, w of a changed one stays.
  ZuVector3d operator+(const ZuVector3d& v) const { return ZuVector3d(x + v.x, y + v.y, z + v.z); }
  ZuVector3d operator-(const ZuVector3d& v) const { return ZuVector3d(x - v.x, y - v.y, z - v.z); }
  ZuVector3d operator-() const { return ZuVector3d(-x, -y, -z); }
  ZuVector3d& operator+=(const ZuVector3d& v);
  ZuVector3d& operator-=(const ZuVector3d& v);
  ZuVector3d operator/(double d) const { return ZuVector3d(x / d, y / d, z / d); }
  ZuVector3d& operator/=(double d);
  ZuVector3d& operator*=(double d);

  // Cross product, this x v.
  ZuVector3d operator%(const ZuVector3d& v) const;
  ZuVector3d& operator%=(const ZuVector3d& v) { return *this = *this % v; }

  double Norm() const { return std::sqrt(x * x + y * y + z * z); }

  // Divides by the length and returns this vector.
  ZuVector3d& Normalize() { return *this /= Norm(); }

  // acos(a . b / (|a| |b|)) in radians.
  //
  // Required: the quotient is not clamped. Rounding on parallel vectors may give NaN, and callers
  // test for it.
  double Angle(const ZuVector3d& v) const;

  // All three components are below e in size.
  bool IsDegenerate(double e) const;
  // 1 - e <= length <= 1 + e.
  bool IsNormalized(double e) const;
  // |this . v| < e, a bound on the product and not on the angle.
  bool IsPerpendicular(const ZuVector3d& v, double e) const;
  // Both squared lengths reach e and so does the angle in radians. Opposed vectors count as
  // independent.
  bool IsLinearIndependent(const ZuVector3d& v, double e) const;

  // The same coordinates with w = 1.
  ZuPoint3d AsPoint() const;

  // Constants of the compiler: there before any object of static storage is made.
  static const ZuVector3d XAxis;
  static const ZuVector3d YAxis;
  static const ZuVector3d ZAxis;
};

inline constexpr ZuVector3d ZuVector3d::XAxis(1.0, 0.0, 0.0);
inline constexpr ZuVector3d ZuVector3d::YAxis(0.0, 1.0, 0.0);
inline constexpr ZuVector3d ZuVector3d::ZAxis(0.0, 0.0, 1.0);

inline ZuVector3d& ZuVector3d::operator+=(const ZuVector3d& v) {
  x += v.x;
  y += v.y;
  z += v.z;
  return *this;
}

inline ZuVector3d& ZuVector3d::operator-=(const ZuVector3d& v) {
  x -= v.x;
  y -= v.y;
  z -= v.z;
  return *this;
}

inline ZuVector3d& ZuVector3d::operator*=(double d) {
  x *= d;
  y *= d;
  z *= d;
  return *this;
}

inline ZuVector3d& ZuVector3d::operator/=(double d) {
  x /= d;
  y /= d;
  z /= d;
  return *this;
}

inline ZuVector3d ZuVector3d::operator%(const ZuVector3d& v) const {
  return ZuVector3d(y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x);
}

inline ZuVector3d operator*(const ZuVector3d& v, double d) {
  return ZuVector3d(v.x * d, v.y * d, v.z * d);
}
inline ZuVector3d operator*(double d, const ZuVector3d& v) {
  return ZuVector3d(d * v.x, d * v.y, d * v.z);
}
// Scalar product of x, y, z.
inline double operator*(const ZuVector3d& a, const ZuVector3d& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline double Norm(const ZuVector3d& v) { return v.Norm(); }
inline ZuVector3d Normalized(const ZuVector3d& v) { return v / v.Norm(); }
inline double Angle(const ZuVector3d& a, const ZuVector3d& b) { return a.Angle(b); }
