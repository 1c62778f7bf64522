#include "zu/photo/photo_viva_pano.h"

#include <cmath>
#include <numbers>

#include "zu/numerics/line3d.h"

namespace {

bool IsFromObject(eConvertBikoMode eMode) {
  return eMode == eObjectToAdjusted || eMode == eObjectToBiko || eMode == eObjectToDigi;
}

}  // namespace

// The unit image vector (sphere), or that of length 1 in the plane of the horizon (cylinder), in
// object space.
void ZuPhotoVivaPano::SurfaceVector(double x, double y, double* v) const {
  const double r = std::fabs(m_Camera.m_dC);
  const bool bSphere = m_iPanorama == eZuPanoramaSphere;
  const double dFlat = bSphere ? std::cos(y / r) : 1.0;
  const double u[3] = {std::sin(x / r) * dFlat, bSphere ? std::sin(y / r) : y / r,
                       -std::cos(x / r) * dFlat};
  const double* R = m_RotAOR.GetData();
  for (int i = 0; i < 3; ++i) v[i] = R[3 * i] * u[0] + R[3 * i + 1] * u[1] + R[3 * i + 2] * u[2];
}

// From object space to adjusted coordinates.
bool ZuPhotoVivaPano::ToSurface(ZuPoint* p) const {
  const double* R = m_RotAOR.GetData();
  const double d[3] = {p->m_dX - m_PosAOR[1], p->m_dY - m_PosAOR[2], p->m_dZ - m_PosAOR[3]};
  double u[3];
  for (int i = 0; i < 3; ++i) u[i] = R[i] * d[0] + R[3 + i] * d[1] + R[6 + i] * d[2];
  const double dFlat = std::hypot(u[0], u[2]);
  const bool bSphere = m_iPanorama == eZuPanoramaSphere;
  if (!std::isfinite(dFlat + u[1]) || (dFlat == 0.0 && (u[1] == 0.0 || !bSphere))) return false;
  const double r = std::fabs(m_Camera.m_dC);
  p->m_dX = r * std::atan2(u[0], -u[2]);
  p->m_dY = r * (bSphere ? std::atan2(u[1], dFlat) : u[1] / dFlat);
  p->m_dZ = 0.0;
  return true;
}

void ZuPhotoVivaPano::CalcRay(ZuLine3d& line, const ZuPoint* pAdjusted) const {
  if (!IsRound()) return ZuPhoto::CalcRay(line, pAdjusted);
  SetRayStart(line);
  double v[3];
  SurfaceVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
  line.setDirection(ZuVector3d(v[0], v[1], v[2]));
}

void ZuPhotoVivaPano::CalcRayDirection(ZuLine3d& line, double x, double y) const {
  if (!IsRound()) return ZuPhoto::CalcRayDirection(line, x, y);
  double z = 0.0, v[3];
  m_BikoTransform->Transform(&x, &y, &z);
  SurfaceVector(x, y, v);
  line.setDirection(ZuVector3d(v[0], v[1], v[2]));
}

bool ZuPhotoVivaPano::CalcRayEndPoint(double& x, double& y, double& z, const ZuPoint* pAdjusted,
                                      const double& dDistance) const {
  if (!IsRound()) return ZuPhoto::CalcRayEndPoint(x, y, z, pAdjusted, dDistance);
  const double d = dDistance;  // may be one of the outputs
  double v[3];
  SurfaceVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
  const double dLength = std::hypot(v[0], v[1], v[2]);
  x = m_PosAOR[1] + d * (v[0] / dLength);
  y = m_PosAOR[2] + d * (v[1] / dLength);
  z = m_PosAOR[3] + d * (v[2] / dLength);
  return true;
}

bool ZuPhotoVivaPano::CalcRayEndPoint(ZuPoint* pResult, const ZuPoint* pAdjusted,
                                      const double& dDistance) const {
  return CalcRayEndPoint(pResult->m_dX, pResult->m_dY, pResult->m_dZ, pAdjusted, dDistance);
}

bool ZuPhotoVivaPano::CalcSip(ZuPoint* pResult, const ZuPlane& plane, const ZuPoint* pAdjusted) {
  if (!IsRound()) return ZuPhoto::CalcSip(pResult, plane, pAdjusted);
  if (!m_bOriented) {
    m_iSipError = eZuSipNoOrientation;
  } else if (plane.IsValid() == 0) {
    m_iSipError = eZuSipNoPlane;
  } else if (pAdjusted == nullptr) {
    m_iSipError = eZuSipNoPoint;
  } else {
    const double n[3] = {plane.A(), plane.B(), plane.C()};
    double v[3], dHeight = plane.D(), dSlope = 0.0;
    SurfaceVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
    for (int i = 0; i < 3; ++i) {
      dHeight += n[i] * m_PosAOR[i + 1];
      dSlope += n[i] * v[i];
    }
    const double t = -dHeight / dSlope;
    const double p[3] = {m_PosAOR[1] + t * v[0], m_PosAOR[2] + t * v[1], m_PosAOR[3] + t * v[2]};
    if (t >= 0.0 && std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2])) {
      pResult->m_dX = p[0];
      pResult->m_dY = p[1];
      pResult->m_dZ = p[2];
      return true;
    }
    m_iSipError = eZuSipNoPoint;
  }
  return false;
}

bool ZuPhotoVivaPano::CalcSip(ZuPoint* pResult, const ZuPlane& plane, unsigned int uImoId,
                              bool bAdjusted) {
  const ZuPoint* pImo = FindImo(uImoId);
  if (pImo == nullptr) {
    m_iSipError = eZuSipNoPoint;
    return false;
  }
  pResult->SetId(pImo->GetId());
  ZuPoint copy(*pImo);
  if (!bAdjusted) ConvertBiko(&copy, eBikoToAdjusted);
  return CalcSip(pResult, plane, &copy);
}

bool ZuPhotoVivaPano::ConvertBiko(ZuPoint* pPoint, eConvertBikoMode eMode) const {
  if (!IsRound() || !IsFromObject(eMode)) return ZuPhoto::ConvertBiko(pPoint, eMode);
  if (!ToSurface(pPoint)) return false;
  if (eMode == eObjectToAdjusted) return true;
  return ZuPhoto::ConvertBiko(pPoint, eMode == eObjectToBiko ? eAdjustedToBiko : eAdjustedToDigi);
}

void ZuPhotoVivaPano::ConvertList(ZuPointList* pList, eConvertBikoMode eMode) const {
  if (!IsRound() || !IsFromObject(eMode)) return ZuPhoto::ConvertList(pList, eMode);
  if (pList == nullptr) return;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) ConvertBiko(p, eMode);
}

bool ZuPhotoVivaPano::IsInPhotoView(const ZuPoint& point, bool bCheckDirection) const {
  if (!IsRound()) return ZuPhoto::IsInPhotoView(point, bCheckDirection);
  ZuPoint adjusted(point);
  if (!IsActive() || !m_bOriented || !ToSurface(&adjusted)) return false;
  ZuRegion region(GetBikoRegion());
  region.Sort();
  const double dTurn = 2.0 * std::numbers::pi * std::fabs(m_Camera.m_dC);
  for (const double dShift : {0.0, -dTurn, dTurn}) {
    ZuPoint biko(adjusted);
    biko.m_dX += dShift;
    ZuPhoto::ConvertBiko(&biko, eAdjustedToBiko);
    if (region.Overlap(biko)) return true;
  }
  return false;
}
