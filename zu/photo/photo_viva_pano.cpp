// Pictures on a sphere or cylinder about the projection centre.
#include "zu/photo/photo_viva_pano.h"

#include <cmath>
#include <numbers>

// The unit image vector (sphere), or that of length 1 in the plane of the horizon (cylinder), in
// object space.
void ZuPhoto::SurfaceVector(double x, double y, double* v) const {
  const double r = std::fabs(m_Camera.m_dC);
  const bool bSphere = m_iPanorama == eZuPanoramaSphere;
  const double dFlat = bSphere ? std::cos(y / r) : 1.0;
  const double u[3] = {std::sin(x / r) * dFlat, bSphere ? std::sin(y / r) : y / r,
                       -std::cos(x / r) * dFlat};
  const double* R = m_RotAOR.GetData();
  for (int i = 0; i < 3; ++i) v[i] = R[3 * i] * u[0] + R[3 * i + 1] * u[1] + R[3 * i + 2] * u[2];
}

bool ZuPhoto::ToSurface(double* x, double* y, double* z) const {
  const double* R = m_RotAOR.GetData();
  const double d[3] = {*x - m_PosAOR[1], *y - m_PosAOR[2], *z - m_PosAOR[3]};
  double u[3];
  for (int i = 0; i < 3; ++i) u[i] = R[i] * d[0] + R[3 + i] * d[1] + R[6 + i] * d[2];
  const double dFlat = std::hypot(u[0], u[2]);
  const bool bSphere = m_iPanorama == eZuPanoramaSphere;
  if (!std::isfinite(dFlat + u[1]) || (dFlat == 0.0 && (u[1] == 0.0 || !bSphere))) return false;
  const double r = std::fabs(m_Camera.m_dC);
  *x = r * std::atan2(u[0], -u[2]);
  *y = r * (bSphere ? std::atan2(u[1], dFlat) : u[1] / dFlat);
  *z = 0.0;
  return true;
}

bool ZuPhoto::IsInRoundView(const ZuPoint& point) const {
  ZuPoint adjusted(point);
  if (!ToSurface(&adjusted.m_dX, &adjusted.m_dY, &adjusted.m_dZ)) return false;
  ZuRegion region(GetBikoRegion());
  region.Sort();
  const double dTurn = 2.0 * std::numbers::pi * std::fabs(m_Camera.m_dC);
  for (const double dShift : {0.0, -dTurn, dTurn}) {
    ZuPoint biko(adjusted);
    biko.m_dX += dShift;
    ConvertBiko(&biko, eAdjustedToBiko);
    if (region.Overlap(biko)) return true;
  }
  return false;
}
