#include "zu/numerics/center_point3d.h"

void ZuCenterPoint3d::Add(const ZuCenterPoint3d& other) {
  const double dThis = m_iCount;
  const double dOther = other.m_iCount;
  const double dSum = dThis + dOther;
  const double dTotal = dSum == 0.0 ? 1.0 : dSum;
  m_dX = (dThis * m_dX + dOther * other.m_dX) / dTotal;
  m_dY = (dThis * m_dY + dOther * other.m_dY) / dTotal;
  m_dZ = (dThis * m_dZ + dOther * other.m_dZ) / dTotal;
  m_iCount += other.m_iCount;
}

void ZuCenterPoint3d::Subtract(double dX, double dY, double dZ) {
  if (m_iCount <= 1) {
    Reset();
    return;
  }
  const double dOld = m_iCount;
  const double dNew = dOld - 1.0;
  m_dX = (dOld * m_dX - dX) / dNew;
  m_dY = (dOld * m_dY - dY) / dNew;
  m_dZ = (dOld * m_dZ - dZ) / dNew;
  --m_iCount;
}
