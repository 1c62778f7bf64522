// Plane in space, n . x + d = 0 with the normal n of unit length.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"

class ZuLine3d;

class ZU_API ZuPlane3d {
 public:
  // n is normalised, d is stored as it is.
  ZuPlane3d(const ZuVector3d& n, double d);
  // Through p; n is normalised and reversed where it faces away from the origin.
  //
  // Required: the stored distance is |p|, the length of the vector from the origin to p. It is the
  // plane's distance only when p is the foot point of the origin; callers pass that point.
  ZuPlane3d(const ZuPoint3d& p, const ZuVector3d& n);
  // Through p with the normal b x a, in this order; otherwise as the form above.
  ZuPlane3d(const ZuPoint3d& p, const ZuVector3d& a, const ZuVector3d& b);
  // Through three points, by the plane fit: the order of the points gives the side of the normal.
  // Normal and distance are zero where two of the points are one (to 1e-10 in each coordinate), or
  // p3 is seen from p1 less than 9e-4 rad off the line through p2.
  ZuPlane3d(const ZuPoint3d& p1, const ZuPoint3d& p2, const ZuPoint3d& p3);

  const ZuVector3d& GetNorm() const { return m_vNorm; }
  double GetDist() const { return m_dDist; }
  void SetNorm(const ZuVector3d& n);
  void SetDist(double d) { m_dDist = d; }

  // Signed distance, positive on the side of the normal.
  double Dist(const ZuPoint3d& p) const;
  // The foot point of p.
  ZuPoint3d Projection(const ZuPoint3d& p) const;

  // Meets a line: 0 and p; 1, p untouched, for a line parallel to the plane (|n . direction| <
  // 1e-6).
  int Intersect(const ZuLine3d& line, ZuPoint3d& p) const;

  // Meets another plane: 0 and the line's direction and start; -1 when the normals are equal or
  // opposed to 1e-10 rad, the line untouched, or when no start point can be fixed, the direction
  // written.
  //
  // Required: the start point in z = 0 comes from a determinant that holds the constant 21.0 in
  // place of a normal component. The direction is reliable; applications that stored start points
  // expect these.
  int Intersect(const ZuPlane3d& plane, ZuLine3d& line) const;

 protected:
  ZuVector3d m_vNorm;
  double m_dDist = 0.0;
};
