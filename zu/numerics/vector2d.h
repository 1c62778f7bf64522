// Vector in the plane. A plain value without checks: a division by a zero length gives numbers that
// are not finite.
#pragma once

#include <cmath>

#include "zu/export.h"

class ZuPoint2d;

class ZU_API ZuVector2d {
 public:
  // The zero vector.
  constexpr ZuVector2d() = default;
  constexpr ZuVector2d(double dX, double dY) : x(dX), y(dY) {}

  constexpr ZuVector2d operator+(const ZuVector2d& v) const { return {x + v.x, y + v.y}; }
  constexpr ZuVector2d operator-(const ZuVector2d& v) const { return {x - v.x, y - v.y}; }
  constexpr ZuVector2d operator-() const { return {-x, -y}; }
  constexpr ZuVector2d operator/(double d) const { return {x / d, y / d}; }
  constexpr ZuVector2d& operator+=(const ZuVector2d& v) { return *this = *this + v; }
  constexpr ZuVector2d& operator-=(const ZuVector2d& v) { return *this = *this - v; }
  constexpr ZuVector2d& operator/=(double d) { return *this = *this / d; }
  constexpr ZuVector2d& operator*=(double d);

  // x1 y2 - y1 x2, the third component of the cross product in space: positive where v lies to the
  // left of this vector.
  constexpr double operator%(const ZuVector2d& v) const { return x * v.y - y * v.x; }

  // The length; of huge and tiny vectors, too.
  double Norm() const { return std::hypot(x, y); }

  // Divides by the length and returns this vector.
  ZuVector2d& Normalize() { return *this /= Norm(); }

  // A quarter turn to the left.
  constexpr ZuVector2d Normal() const { return {-y, x}; }

  // From 0 to pi [rad], exact also for nearly parallel vectors; 0 with a zero vector.
  double Angle(const ZuVector2d& v) const {
    return std::atan2(std::fabs(*this % v), x * v.x + y * v.y);
  }
  // From the x axis, to the left positive, -pi to pi [rad].
  double Direction() const { return std::atan2(y, x); }
  static ZuVector2d FromDirection(double dAngle) { return {std::cos(dAngle), std::sin(dAngle)}; }

  // Both components are below e in size.
  bool IsDegenerate(double e) const { return std::fabs(x) < e && std::fabs(y) < e; }
  // 1 - e <= length <= 1 + e.
  bool IsNormalized(double e) const;
  // |this . v| < e, a bound on the product and not on the angle.
  bool IsPerpendicular(const ZuVector2d& v, double e) const {
    return std::fabs(x * v.x + y * v.y) < e;
  }
  // Both squared lengths reach e and so does the angle in radians. Opposed vectors count as
  // independent, as in space.
  bool IsLinearIndependent(const ZuVector2d& v, double e) const;

  // The same coordinates.
  constexpr ZuPoint2d AsPoint() const;

  // Constants of the compiler: there before any object of static storage is made.
  static const ZuVector2d XAxis;
  static const ZuVector2d YAxis;

 public:
  double x = 0.0;
  double y = 0.0;
};

inline constexpr ZuVector2d ZuVector2d::XAxis(1.0, 0.0);
inline constexpr ZuVector2d ZuVector2d::YAxis(0.0, 1.0);

constexpr ZuVector2d operator*(const ZuVector2d& v, double d) { return {v.x * d, v.y * d}; }
constexpr ZuVector2d operator*(double d, const ZuVector2d& v) { return {d * v.x, d * v.y}; }
// Scalar product.
constexpr double operator*(const ZuVector2d& a, const ZuVector2d& b) {
  return a.x * b.x + a.y * b.y;
}

constexpr ZuVector2d& ZuVector2d::operator*=(double d) { return *this = *this * d; }

inline bool ZuVector2d::IsNormalized(double e) const {
  const double dLength = Norm();
  return 1.0 - e <= dLength && dLength <= 1.0 + e;
}

inline bool ZuVector2d::IsLinearIndependent(const ZuVector2d& v, double e) const {
  return *this * *this >= e && v * v >= e && Angle(v) >= e;
}

inline double Norm(const ZuVector2d& v) { return v.Norm(); }
inline ZuVector2d Normalized(const ZuVector2d& v) { return v / v.Norm(); }
inline double Angle(const ZuVector2d& a, const ZuVector2d& b) { return a.Angle(b); }
