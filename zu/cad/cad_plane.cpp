#include "zu/cad/cad_plane.h"

#include <cmath>

#include "zu/cad/cad_fit.h"
#include "zu/rectify/plane_frame.h"

ZuCadPlane ZuCadPlane::XY(double dHeight) {
  return ZuCadPlane(ZuFrame3d(ZuPoint3d(0.0, 0.0, dHeight), ZuVector3d::XAxis, ZuVector3d::YAxis,
                              ZuVector3d::ZAxis));
}

ZuCadPlane ZuCadPlane::XZ(double dHeight) {
  return ZuCadPlane(ZuFrame3d(ZuPoint3d(0.0, dHeight, 0.0), ZuVector3d::XAxis, ZuVector3d::ZAxis,
                              -ZuVector3d::YAxis));
}

ZuCadPlane ZuCadPlane::YZ(double dHeight) {
  return ZuCadPlane(ZuFrame3d(ZuPoint3d(dHeight, 0.0, 0.0), ZuVector3d::YAxis, ZuVector3d::ZAxis,
                              ZuVector3d::XAxis));
}

bool ZuCadPlane::Of(const ZuPlane& plane, ZuCadPlane* pPlane) {
  ZuMatrix map(4, 4);
  if (!ZuMakePlaneFrame(plane, &map)) return false;
  const auto axis = [&map](int k) { return ZuVector3d(map[1][k], map[2][k], map[3][k]); };
  if (axis(1) % axis(2) * axis(3) < 1.0 - 1e-9 || std::fabs(axis(1) * axis(2)) > 1e-9) {
    // The map of a level plane is not a rotation: x and y are those of space, the plane leans.
    const ZuVector3d n = Normalized(axis(1) % axis(2));
    const ZuVector3d u = Normalized(axis(1));
    *pPlane = ZuCadPlane(ZuFrame3d(axis(4).AsPoint(), u, n % u, n));
    return true;
  }
  *pPlane = ZuCadPlane(ZuFrame3d(axis(4).AsPoint(), axis(1), axis(2), axis(3)));
  return true;
}

bool ZuCadPlane::Through(const ZuPoint3d& a, const ZuPoint3d& b, const ZuPoint3d& c,
                         ZuCadPlane* pPlane) {
  const ZuVector3d x = b - a, n = x % (c - a);
  if (!(n.Norm() > kZuCadSmall * x.Norm() * (c - a).Norm()) || !std::isfinite(n.Norm())) {
    return false;
  }
  const ZuVector3d u = Normalized(x), w = Normalized(n);
  *pPlane = ZuCadPlane(ZuFrame3d(a, u, w % u, w));
  return true;
}

ZuPoint2d ZuCadPlane::ToPlane(const ZuPoint3d& p, double* pdHeight) const {
  const ZuVector3d d = p - m_frame.Origin();
  if (pdHeight != nullptr) *pdHeight = d * m_frame.v3();
  return {d * m_frame.v1(), d * m_frame.v2()};
}

ZuPoint3d ZuCadPlane::ToSpace(const ZuPoint2d& p, double dHeight) const {
  return m_frame.Origin() + p.x * m_frame.v1() + p.y * m_frame.v2() + dHeight * m_frame.v3();
}
