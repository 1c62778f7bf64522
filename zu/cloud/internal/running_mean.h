// A running mean for a loop over many points: the numbers of ZuCenterPoint3d::Add, bit for bit. The
// chain of a product, a sum and a quotient from one point to the next bounds the loop; so the
// counts are doubles, and x and y share one division.
#pragma once

#include "zu/numerics/center_point3d.h"

class ZuRunningMean : private ZuCenterPoint3d {
 public:
  explicit ZuRunningMean(const ZuCenterPoint3d& center = ZuCenterPoint3d())
      : ZuCenterPoint3d(center), m_xy{m_dX, m_dY}, m_z(m_dZ), m_dCount(m_iCount) {}

  void Add(double dX, double dY, double dZ) {
    const double dNew = m_dCount + 1.0;
    m_xy = (m_dCount * m_xy + Pair{dX, dY}) / dNew;
    m_z = (m_dCount * m_z + dZ) / dNew;
    m_dCount = dNew;
  }

  ZuCenterPoint3d Center() const {
    ZuRunningMean result(*this);
    result.m_dX = m_xy[0];
    result.m_dY = m_xy[1];
    result.m_dZ = m_z;
    result.m_iCount = static_cast<int>(m_dCount);
    return result;
  }

 private:
  typedef double Pair __attribute__((vector_size(16)));

  Pair m_xy;
  double m_z;
  double m_dCount;  // whole numbers, exact far beyond the points there can be
};
