// Point in space with a homogeneous fourth component of 1: a map of ZuAffinMap3d turns and moves
// it. Point minus point is a vector, point plus vector a point.
#pragma once

#include "zu/export.h"
#include "zu/numerics/vector3d.h"

class ZuAffinMap3d;
class ZuFrame3d;
class ZuPoint;

class ZU_API ZuPoint3d : public _MVector {
 public:
  // The origin.
  constexpr ZuPoint3d() : _MVector(1.0, 0.0, 0.0, 0.0) {}
  constexpr ZuPoint3d(double dX, double dY, double dZ) : _MVector(1.0, dX, dY, dZ) {}
  // The coordinate of a point record.
  explicit ZuPoint3d(const ZuPoint& point);
  // The point with the coordinates dX, dY, dZ in the frame.
  ZuPoint3d(const ZuFrame3d& frame, double dX, double dY, double dZ);

  ZuPoint3d operator+(const ZuVector3d& v) const { return ZuPoint3d(x + v.x, y + v.y, z + v.z); }
  ZuPoint3d operator-(const ZuVector3d& v) const { return ZuPoint3d(x - v.x, y - v.y, z - v.z); }
  ZuVector3d operator-(const ZuPoint3d& p) const { return ZuVector3d(x - p.x, y - p.y, z - p.z); }
  // w stays.
  ZuPoint3d& operator+=(const ZuVector3d& v);
  ZuPoint3d& operator-=(const ZuVector3d& v);

  double Distance(const ZuPoint3d& p) const { return std::sqrt(Distance2(p)); }
  // The squared distance.
  double Distance2(const ZuPoint3d& p) const;
  ZuPoint3d MiddlePoint(const ZuPoint3d& p) const;

  // The same coordinates with w = 0.
  ZuVector3d AsVector() const { return ZuVector3d(x, y, z); }

  // Replaces this point by the first three rows of the map times (x, y, z, w), sets w to 1 and
  // returns this point. The fourth row takes no part.
  ZuPoint3d& Transform(const ZuAffinMap3d& map);

  static const ZuPoint3d origin;  // a constant of the compiler, as the axes of ZuVector3d
};

inline constexpr ZuPoint3d ZuPoint3d::origin;

inline ZuPoint3d& ZuPoint3d::operator+=(const ZuVector3d& v) {
  x += v.x;
  y += v.y;
  z += v.z;
  return *this;
}

inline ZuPoint3d& ZuPoint3d::operator-=(const ZuVector3d& v) {
  x -= v.x;
  y -= v.y;
  z -= v.z;
  return *this;
}

inline double ZuPoint3d::Distance2(const ZuPoint3d& p) const {
  const double dX = x - p.x;
  const double dY = y - p.y;
  const double dZ = z - p.z;
  return dX * dX + dY * dY + dZ * dZ;
}

inline ZuPoint3d ZuPoint3d::MiddlePoint(const ZuPoint3d& p) const {
  return ZuPoint3d((x + p.x) * 0.5, (y + p.y) * 0.5, (z + p.z) * 0.5);
}

inline ZuPoint3d ZuVector3d::AsPoint() const { return ZuPoint3d(x, y, z); }
