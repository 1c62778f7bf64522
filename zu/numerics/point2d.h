// Point in the plane. Point minus point is a vector, point plus vector a point.
#pragma once

#include "zu/export.h"
#include "zu/numerics/vector2d.h"

class ZuPoint;

class ZU_API ZuPoint2d {
 public:
  // The origin.
  constexpr ZuPoint2d() = default;
  constexpr ZuPoint2d(double dX, double dY) : x(dX), y(dY) {}
  // X and Y of a point record.
  explicit ZuPoint2d(const ZuPoint& point);

  constexpr ZuPoint2d operator+(const ZuVector2d& v) const { return {x + v.x, y + v.y}; }
  constexpr ZuPoint2d operator-(const ZuVector2d& v) const { return {x - v.x, y - v.y}; }
  constexpr ZuVector2d operator-(const ZuPoint2d& p) const { return {x - p.x, y - p.y}; }
  constexpr ZuPoint2d& operator+=(const ZuVector2d& v) { return *this = *this + v; }
  constexpr ZuPoint2d& operator-=(const ZuVector2d& v) { return *this = *this - v; }

  double Distance(const ZuPoint2d& p) const { return (*this - p).Norm(); }
  // The squared distance.
  constexpr double Distance2(const ZuPoint2d& p) const { return (*this - p) * (*this - p); }
  constexpr ZuPoint2d MiddlePoint(const ZuPoint2d& p) const {
    return {(x + p.x) * 0.5, (y + p.y) * 0.5};
  }

  // The same coordinates.
  constexpr ZuVector2d AsVector() const { return {x, y}; }
  bool IsFinite() const { return std::isfinite(x) && std::isfinite(y); }

  static const ZuPoint2d origin;  // a constant of the compiler

 public:
  double x = 0.0;
  double y = 0.0;
};

inline constexpr ZuPoint2d ZuPoint2d::origin;

constexpr ZuPoint2d ZuVector2d::AsPoint() const { return {x, y}; }
