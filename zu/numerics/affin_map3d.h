// Affine map of space, a value: sixteen doubles row by row, the translation in column 4, points and
// vectors as columns multiplied from the right. Indices count from 0.
//
//   | a00 a01 a02 tx |   | x |
//   | a10 a11 a12 ty | * | y |      w = 1 for a point, which moves; w = 0 for a vector,
//   | a20 a21 a22 tz |   | z |      which only turns
//   |  0   0   0   1 |   | w |
//
// Angles are radians. Static factories make the elementary maps.
#pragma once

#include "zu/export.h"
#include "zu/numerics/frame3d.h"
#include "zu/numerics/mmatrix.h"
#include "zu/numerics/point3d.h"

class ZuLine3d;

class ZU_API ZuAffinMap3d : public _MMatrix {
 public:
  // The identity.
  ZuAffinMap3d();
  // From coordinates in the frame to world coordinates.
  explicit ZuAffinMap3d(const ZuFrame3d& frame);
  // Map(to) * Inv(Map(from)): carries the first frame into the second.
  ZuAffinMap3d(const ZuFrame3d& from, const ZuFrame3d& to);

  // The product; m acts first.
  ZuAffinMap3d operator*(const ZuAffinMap3d& m) const;

  // First three rows times (x, y, z, w); w of the result is 1.
  ZuPoint3d operator*(const ZuPoint3d& p) const { return Transform(p); }
  ZuPoint3d Transform(const ZuPoint3d& p) const;
  // First three rows times (x, y, z, w); w of the result is 0.
  //
  // Required: the vector's own w takes part, so that one with w = 1 is moved.
  ZuVector3d operator*(const ZuVector3d& v) const { return Transform(v); }
  ZuVector3d Transform(const ZuVector3d& v) const;
  // Origin and axes mapped; w of the origin is 1, w of the axes 0.
  ZuFrame3d Transform(const ZuFrame3d& frame) const;
  // The line through both mapped points.
  ZuLine3d Transform(const ZuLine3d& line) const;

  // Inverts in place by the 3 x 3 block; the fourth row is not read and becomes (0, 0, 0, 1).
  // 0 when inverted; 1, and the map as it was, when the block's determinant is exactly 0.
  int Invert();
  static ZuAffinMap3d Inv(const ZuAffinMap3d& m);

  // Determinant of the 3 x 3 block.
  double Det() const;

  // Origin and axes of the system that this map carries the world system to: columns 4, 1, 2, 3.
  // Only x, y, z of the outputs are written.
  void GetCoordSystem(ZuPoint3d& o, ZuVector3d& a, ZuVector3d& b, ZuVector3d& c) const;

  // Angles from 0 to 2 pi read from the normalised rows of the block.
  //
  // Required: the angle about z is found only where the cosine of the second angle vanishes (below
  // 1e-6); every other rotation gives *pdZ = 0 and *pdX = asin of the first element of row 2. So
  // this is not the inverse of RotXYZ. Stored angles were made this way; ZuMatrix::GetRotAngles
  // decomposes fully.
  static void GetRotAngles(const ZuAffinMap3d& m, double* pdX, double* pdY, double* pdZ);

  // Diagonal map of the lengths of m's first three columns.
  static ZuAffinMap3d GetScaleMap(const ZuAffinMap3d& m);
  // The map for surface normals of bodies that m maps: inverse transposed block, no translation.
  static ZuAffinMap3d NormalTransformMap(const ZuAffinMap3d& m);

  // Right-handed rotations about the axes.
  static ZuAffinMap3d RotX(double dAngle);
  static ZuAffinMap3d RotY(double dAngle);
  static ZuAffinMap3d RotZ(double dAngle);
  // RotZ(c) * RotY(b) * RotX(a): about x first.
  static ZuAffinMap3d RotXYZ(double a, double b, double c);
  static ZuAffinMap3d Scale(double dX, double dY, double dZ);
  static ZuAffinMap3d Translate(double dX, double dY, double dZ);
  static ZuAffinMap3d Translate(const ZuVector3d& v);

 protected:
  // First three rows times *pIn; the fourth element is copied. The arguments may be the same
  // object.
  void Transformer(const _MVector* pIn, _MVector* pOut) const;
};

ZU_API double Det(ZuAffinMap3d& m);

// Map from an entity's own system with extrusion direction n to the world system, as drawing files
// define it by the arbitrary axis algorithm.
ZU_API ZuAffinMap3d MapEcsToWcs(const ZuVector3d& n);

// The point p + b / (a + b) (q - p); not finite for a + b = 0.
ZU_API ZuPoint3d AffinCombination(const ZuPoint3d& p, const ZuPoint3d& q, double a, double b);
