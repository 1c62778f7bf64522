// Triangles in space and their intersection with a ray: meet the plane, then solve for the edge
// coordinates s, t of the point (Dan Sunday, Intersections of Rays, Segments, Planes and Triangles
// in 3D, 2001).
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"

class ZuLine3d;

class ZU_API ZuTrinagle3d {
 public:
  // All corners at the origin.
  ZuTrinagle3d() = default;
  ZuTrinagle3d(const ZuPoint3d& a, const ZuPoint3d& b, const ZuPoint3d& c)
      : m_ptA(a), m_ptB(b), m_ptC(c) {}
  virtual ~ZuTrinagle3d() = default;
  ZuTrinagle3d(const ZuTrinagle3d&) = default;
  ZuTrinagle3d& operator=(const ZuTrinagle3d&) = default;

  const ZuPoint3d& A() const { return m_ptA; }
  const ZuPoint3d& B() const { return m_ptB; }
  const ZuPoint3d& C() const { return m_ptC; }
  ZuPoint3d& A() { return m_ptA; }
  ZuPoint3d& B() { return m_ptB; }
  ZuPoint3d& C() { return m_ptC; }

  // Meets the line, taken as a ray from its start. Edges belong to the triangle.
  //   1   hit; p, and *t (the distance from the start) unless t is null
  //   0   no hit; p is written where the ray meets the plane outside the triangle, else untouched
  //   2   the line lies in the plane, exactly; p untouched
  //  -1   the triangle is degenerate: all components of its normal are below 1e-6; p untouched
  int Intersect(const ZuLine3d& line, ZuPoint3d& p, double* t) const;

 protected:
  ZuPoint3d m_ptA;
  ZuPoint3d m_ptB;
  ZuPoint3d m_ptC;
};

// A triangle with its edges and normal computed once, for many rays.
class ZU_API ZuTrinagle3d_uvn {
 public:
  explicit ZuTrinagle3d_uvn(const ZuTrinagle3d& triangle);

  const ZuPoint3d& A() const { return m_ptA; }
  const ZuPoint3d& B() const { return m_ptB; }
  const ZuPoint3d& C() const { return m_ptC; }
  // The edges b - a and c - a and their cross product.
  const ZuVector3d& U() const { return m_vU; }
  const ZuVector3d& V() const { return m_vV; }
  const ZuVector3d& N() const { return m_vN; }

  // All components of the normal are below 1e-6.
  bool IsDegenerate() const;

  // As ZuTrinagle3d::Intersect.
  int Intersect(const ZuLine3d& line, ZuPoint3d& p, double* t) const;

 protected:
  ZuPoint3d m_ptA;
  ZuPoint3d m_ptB;
  ZuPoint3d m_ptC;
  ZuVector3d m_vU;
  ZuVector3d m_vV;
  ZuVector3d m_vN;
};
