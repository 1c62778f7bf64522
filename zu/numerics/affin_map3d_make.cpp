// The elementary maps and those derived from another map.
#include <cmath>

#include "zu/numerics/affin_map3d.h"

ZuAffinMap3d ZuAffinMap3d::GetScaleMap(const ZuAffinMap3d& m) {
  ZuPoint3d origin;
  ZuVector3d a, b, c;
  m.GetCoordSystem(origin, a, b, c);
  return Scale(a.Norm(), b.Norm(), c.Norm());
}

ZuAffinMap3d ZuAffinMap3d::NormalTransformMap(const ZuAffinMap3d& m) {
  ZuAffinMap3d block = m;
  for (int i = 0; i < 3; ++i) block[i][3] = 0.0;
  block.Invert();

  ZuAffinMap3d normals = block;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) normals[i][j] = block[j][i];
  }
  return normals;
}

ZuAffinMap3d ZuAffinMap3d::RotX(double dAngle) {
  ZuAffinMap3d m;
  m[1][1] = std::cos(dAngle);
  m[1][2] = -std::sin(dAngle);
  m[2][1] = std::sin(dAngle);
  m[2][2] = std::cos(dAngle);
  return m;
}

ZuAffinMap3d ZuAffinMap3d::RotY(double dAngle) {
  ZuAffinMap3d m;
  m[0][0] = std::cos(dAngle);
  m[0][2] = std::sin(dAngle);
  m[2][0] = -std::sin(dAngle);
  m[2][2] = std::cos(dAngle);
  return m;
}

ZuAffinMap3d ZuAffinMap3d::RotZ(double dAngle) {
  ZuAffinMap3d m;
  m[0][0] = std::cos(dAngle);
  m[0][1] = -std::sin(dAngle);
  m[1][0] = std::sin(dAngle);
  m[1][1] = std::cos(dAngle);
  return m;
}

ZuAffinMap3d ZuAffinMap3d::RotXYZ(double a, double b, double c) {
  return RotZ(c) * RotY(b) * RotX(a);
}

ZuAffinMap3d ZuAffinMap3d::Scale(double dX, double dY, double dZ) {
  ZuAffinMap3d m;
  m[0][0] = dX;
  m[1][1] = dY;
  m[2][2] = dZ;
  return m;
}

ZuAffinMap3d ZuAffinMap3d::Translate(double dX, double dY, double dZ) {
  ZuAffinMap3d m;
  m[0][3] = dX;
  m[1][3] = dY;
  m[2][3] = dZ;
  return m;
}

ZuAffinMap3d ZuAffinMap3d::Translate(const ZuVector3d& v) { return Translate(v.x, v.y, v.z); }
