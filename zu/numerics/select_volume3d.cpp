#include "zu/numerics/select_volume3d.h"

bool Zu3dSelectVolume::IsInSelectRange(double dX, double dY, double dZ) const {
  if (!IsModePyramid()) return false;
  const double x = dX - m_pEye.x;
  const double y = dY - m_pEye.y;
  const double z = dZ - m_pEye.z;
  for (const ZuPlane& plane : m_Planes) {
    if (!(plane.FastDist(x, y, z) >= 0.0)) return false;
  }
  return true;
}
