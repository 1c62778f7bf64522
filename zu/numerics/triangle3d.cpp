#include "zu/numerics/triangle3d.h"

#include "zu/numerics/line3d.h"

namespace {

// A normal with all components below this has no direction [square of the unit of the corners].
constexpr double kDegenerate = 1e-6;
// Below this |n . direction| a line runs parallel to the triangle [as above].
constexpr double kParallel = 1e-6;

}  // namespace

int ZuTrinagle3d::Intersect(const ZuLine3d& line, ZuPoint3d& p, double* t) const {
  return ZuTrinagle3d_uvn(*this).Intersect(line, p, t);
}

ZuTrinagle3d_uvn::ZuTrinagle3d_uvn(const ZuTrinagle3d& triangle)
    : m_ptA(triangle.A()),
      m_ptB(triangle.B()),
      m_ptC(triangle.C()),
      m_vU(m_ptB - m_ptA),
      m_vV(m_ptC - m_ptA),
      m_vN(m_vU % m_vV) {}

bool ZuTrinagle3d_uvn::IsDegenerate() const { return m_vN.IsDegenerate(kDegenerate); }

int ZuTrinagle3d_uvn::Intersect(const ZuLine3d& line, ZuPoint3d& p, double* t) const {
  if (IsDegenerate()) return -1;

  const double dNum = -(m_vN * (line.getStart() - m_ptA));
  const double dDen = m_vN * line.getDirection();
  if (std::fabs(dDen) < kParallel) return dNum == 0.0 ? 2 : 0;
  const double r = dNum / dDen;
  if (r < 0.0) return 0;
  p = line.Evaluate(r);

  // p = a + s u + q v
  const ZuVector3d w = p - m_ptA;
  const double uu = m_vU * m_vU, uv = m_vU * m_vV, vv = m_vV * m_vV;
  const double wu = w * m_vU, wv = w * m_vV;
  const double dDet = uv * uv - uu * vv;
  const double s = (uv * wv - vv * wu) / dDet;
  const double q = (uv * wu - uu * wv) / dDet;
  const bool bInside = s >= 0.0 && s <= 1.0 && q >= 0.0 && s + q <= 1.0;
  if (!bInside) return 0;
  if (t != nullptr) *t = r;
  return 1;
}
