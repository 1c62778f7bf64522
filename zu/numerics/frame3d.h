// An origin with three axis vectors. The axes need be neither of unit length nor perpendicular.
#pragma once

#include "zu/export.h"
#include "zu/numerics/point3d.h"

class ZU_API ZuFrame3d {
 public:
  // The world frame.
  constexpr ZuFrame3d()
      : m_v1(ZuVector3d::XAxis), m_v2(ZuVector3d::YAxis), m_v3(ZuVector3d::ZAxis) {}
  constexpr ZuFrame3d(const ZuPoint3d& origin, const ZuVector3d& v1, const ZuVector3d& v2,
                      const ZuVector3d& v3)
      : m_ptOrigin(origin), m_v1(v1), m_v2(v2), m_v3(v3) {}

  constexpr const ZuPoint3d& Origin() const { return m_ptOrigin; }
  constexpr const ZuVector3d& v1() const { return m_v1; }
  constexpr const ZuVector3d& v2() const { return m_v2; }
  constexpr const ZuVector3d& v3() const { return m_v3; }
  ZuPoint3d& Origin() { return m_ptOrigin; }
  ZuVector3d& v1() { return m_v1; }
  ZuVector3d& v2() { return m_v2; }
  ZuVector3d& v3() { return m_v3; }

 protected:
  ZuPoint3d m_ptOrigin;
  ZuVector3d m_v1;
  ZuVector3d m_v2;
  ZuVector3d m_v3;
};
