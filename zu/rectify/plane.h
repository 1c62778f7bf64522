// Named, identified plane A x + B y + C z + D = 0 in object space.
//
// The normal (A, B, C) need not have length 1: nothing normalises what is read or set. Planes made
// by ZuCalcPlane have unit length.
#pragma once

#include <iosfwd>

#include "zu/export.h"
#include "zu/foundation/listnode.h"
#include "zu/numerics/vector.h"
#include "zu/points/flag.h"

class ZuPoint;
class ZuReaderObject;

class ZU_API ZuPlane : public ZuListnode, public ZuFlag {
 public:
  // All zero, not valid.
  ZuPlane();
  // Id, name, flag word, normal and D; the copy stands in no list, an assigned plane stays in its
  // own.
  ZuPlane(const ZuPlane& plane);
  ZuPlane& operator=(const ZuPlane& plane);
  // Reads itself, see Read.
  explicit ZuPlane(ZuReaderObject* pObject);

  ZuPlane* Next() const { return static_cast<ZuPlane*>(m_pNext); }
  ZuPlane* Previous() const { return static_cast<ZuPlane*>(m_pPrev); }

  double A() const { return m_vNormal.GetElem(1); }
  double B() const { return m_vNormal.GetElem(2); }
  double C() const { return m_vNormal.GetElem(3); }
  double D() const { return m_dD; }
  double& A() { return m_vNormal[1]; }
  double& B() { return m_vNormal[2]; }
  double& C() { return m_vNormal[3]; }
  double& D() { return m_dD; }
  void Get(double* a, double* b, double* c, double* d) const;
  // normal: 3 elements.
  void Get(ZuVector* normal, double* d) const;

  // 0 when A, B and C are all exactly 0, else 1.
  int IsValid() const { return A() != 0.0 || B() != 0.0 || C() != 0.0; }

  // The flag word masked with 2: 0 or 2.
  int IsActive() const { return IsFlagSet(eZuFlagActive); }
  void SetActive(bool bActive);

  // Signed distance, divided by the length of the normal; positive on the side it points to. Not
  // finite for a zero normal.
  double Dist(double x, double y, double z) const;
  double Dist(const ZuPoint& point) const;
  // This D minus the other's when the planes are parallel, else 0.
  //
  // Required: the lengths of the normals take no part, also when they differ.
  double Dist(const ZuPlane& other) const;

  // A x + B y + C z + D, the distance for a normal of length 1.
  double FastDist(double x, double y, double z) const { return A() * x + B() * y + C() * z + m_dD; }
  double FastDist(const ZuPoint& point) const;

  // Angle of the normals, 0 to pi; opposed normals give pi.
  double CalcAngle(const ZuPlane& other) const;

  // The angle of the normals is at most 4e-7.
  //
  // Required: coincident planes with opposed normals are not parallel. The side that a plane faces
  // is part of its definition.
  bool IsParallel(const ZuPlane& other) const;

  // The angle of the normals is at least pi / 4 - 4e-7.
  //
  // Required: the bound is pi / 4. Any pair from 45 degrees on is steep enough to define a
  // direction, opposed normals included.
  bool IsNormal(const ZuPlane& other) const;

  // Meets another plane. point and direction: 3 elements. False: the planes are parallel, both
  // outputs untouched; or no point can be fixed, the direction written.
  //
  // Required: the point in z = 0 comes from a determinant that holds the constant 21.0 where the
  // other plane's B would stand; the other's B and both C are not read. Stored points were made
  // with it. Only the direction, of unit length, is geometrically general.
  bool CalcIntersection(ZuVector& point, ZuVector& direction, const ZuPlane& other) const;

  // A point of the plane on the axis that is closest to the normal; zeros for a zero normal. A tie
  // of the largest components goes to z, so that a normal such as (1, 1, 0) gives a result that is
  // not finite.
  ZuVector CalcPlaneVectorForSip() const;

  // X, Y, Z of result become p - n Dist(p), the foot point when the normal has length 1. False,
  // result untouched, for a zero normal.
  //
  // Required: the distance is already divided by |n| and n is not; the formula stands for any
  // normal.
  bool ProjectPoint(ZuPoint* result, const ZuPoint& p) const;

  // Changes the sign of all four coefficients; the normal before it goes to the debug output.
  void MirrorNormal();

  // Reads "id "name" A B C D" from the token in hand on; returns 1.
  int Read(ZuReaderObject* pObject);
  // Writes that row in one line, without the line end.
  std::ostream& Write(std::ostream& os) const;
  // The same values without columns, as Read takes them to the last bit; Write has 16 digits.
  std::ostream& Export(std::ostream& os) const;

 protected:
  ZuVector m_vNormal;  // A, B, C
  double m_dD = 0.0;
};

// Predicates for ZuTestFilter: the flag word of a plane masked with 1 and with 2. The object must
// be the ZuObject part of a ZuPlane.
ZU_API unsigned int IsPlaneFlagGuiSelect(const ZuObject* pObject);
ZU_API unsigned int IsPlaneFlagGuiCheckActive(const ZuObject* pObject);
