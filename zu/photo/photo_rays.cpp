// Rays of a photo and their intersection with a plane.
#include <cmath>
#include <limits>

#include "zu/cloud/scan_point3d.h"
#include "zu/numerics/line3d.h"
#include "zu/photo/photo.h"
#include "zu/rectify/internal/sip_point.h"

namespace {

// A plane prepared for many rays: normal, and the product w . n of the intersection, with w from
// the projection centre to a point of the plane.
struct SipPlane {
  SipPlane(const ZuPlane& plane, const double* X0) : a(plane.A()), b(plane.B()), c(plane.C()) {
    double q[3];
    ZuSipPoint(a, b, c, plane.D(), q);
    dHeight = (q[0] - X0[0]) * a + (q[1] - X0[1]) * b + (q[2] - X0[2]) * c;
    if (!std::isfinite(q[0]) || !std::isfinite(q[1]) || !std::isfinite(q[2])) {
      // The plane's point on an axis does not exist (a normal such as (1, 1, 0)): the same number.
      dHeight = -plane.D() - (a * X0[0] + b * X0[1] + c * X0[2]);
    }
  }

  double a, b, c, dHeight;
};

// X0 + t v, t = (w . n) / (v . n). bAhead: not finite where that lies behind X0.
ZuPoint3d Meet(const SipPlane& plane, const double* X0, const double* v, bool bAhead) {
  double t = plane.dHeight / (v[0] * plane.a + v[1] * plane.b + v[2] * plane.c);
  if (bAhead && t < 0.0) t = std::numeric_limits<double>::quiet_NaN();
  return ZuPoint3d(X0[0] + t * v[0], X0[1] + t * v[1], X0[2] + t * v[2]);
}

void Store(const ZuPoint3d& p, ZuPoint* pResult) {
  pResult->m_dX = p.x;
  pResult->m_dY = p.y;
  pResult->m_dZ = p.z;
}

// R (x, y, -|c|).
void Direction(const double* R, double x, double y, double c, double* v) {
  const double z = -std::fabs(c);
  v[0] = R[0] * x + R[1] * y + R[2] * z;
  v[1] = R[3] * x + R[4] * y + R[5] * z;
  v[2] = R[6] * x + R[7] * y + R[8] * z;
}

}  // namespace

void ZuPhoto::RayVector(double x, double y, double* v) const {
  if (IsRound()) return SurfaceVector(x, y, v);
  Direction(m_RotAOR.GetData(), x, y, m_Camera.m_dC, v);
}

void ZuPhoto::SetRayStart(ZuLine3d& line) const {
  line.getStart() = ZuPoint3d(m_PosAOR[1], m_PosAOR[2], m_PosAOR[3]);
}

void ZuPhoto::CalcRay(ZuLine3d& line, const ZuPoint* pAdjusted) const {
  SetRayStart(line);
  double v[3];
  RayVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
  line.setDirection(ZuVector3d(v[0], v[1], v[2]));
}

void ZuPhoto::CalcRayDirection(ZuLine3d& line, double x, double y) const {
  double z = 0.0, v[3];
  m_BikoTransform->Transform(&x, &y, &z);
  RayVector(x, y, v);
  line.setDirection(ZuVector3d(v[0], v[1], v[2]));
}

bool ZuPhoto::CalcRayEndPoint(double& x, double& y, double& z, const ZuPoint* pAdjusted,
                              const double& dDistance) const {
  const double d = dDistance;  // may be one of the outputs
  double v[3];
  RayVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
  const double dLength = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  x = m_PosAOR[1] + d * (v[0] / dLength);
  y = m_PosAOR[2] + d * (v[1] / dLength);
  z = m_PosAOR[3] + d * (v[2] / dLength);
  return true;
}

bool ZuPhoto::CalcRayEndPoint(ZuPoint* pResult, const ZuPoint* pAdjusted,
                              const double& dDistance) const {
  return CalcRayEndPoint(pResult->m_dX, pResult->m_dY, pResult->m_dZ, pAdjusted, dDistance);
}

bool ZuPhoto::CalcRayEndPoint(ZuScanPoint3d* pResult, const ZuPoint* pAdjusted,
                              const double& dDistance) const {
  return CalcRayEndPoint(pResult->x, pResult->y, pResult->z, pAdjusted, dDistance);
}

void ZuPhoto::CalcSipNoErrorCheck(ZuPoint* pResult, const ZuPlane& plane,
                                  const ZuPoint* pAdjusted) const {
  const double* X0 = m_PosAOR.GetData();
  double v[3];
  RayVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
  Store(Meet(SipPlane(plane, X0), X0, v, false), pResult);
}

bool ZuPhoto::CalcSip(ZuPoint* pResult, const ZuPlane& plane, const ZuPoint* pAdjusted) {
  if (!m_bOriented) {
    m_iSipError = eZuSipNoOrientation;
  } else if (plane.IsValid() == 0) {
    m_iSipError = eZuSipNoPlane;
  } else if (pAdjusted == nullptr) {
    m_iSipError = eZuSipNoPoint;
  } else {
    const double* X0 = m_PosAOR.GetData();
    double v[3];
    RayVector(pAdjusted->m_dX, pAdjusted->m_dY, v);
    const ZuPoint3d p = Meet(SipPlane(plane, X0), X0, v, IsRound());
    if (std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z)) {
      Store(p, pResult);
      return true;
    }
    m_iSipError = eZuSipNoPoint;
  }
  return false;
}

bool ZuPhoto::CalcSip(ZuPoint* pResult, const ZuPlane& plane, unsigned int uImoId, bool bAdjusted) {
  const ZuPoint* pImo = FindImo(uImoId);
  if (pImo == nullptr) {
    m_iSipError = eZuSipNoPoint;
    return false;
  }
  pResult->SetId(pImo->GetId());
  if (bAdjusted) return CalcSip(pResult, plane, pImo);
  ZuPoint copy(*pImo);
  ConvertBiko(&copy, eBikoToAdjusted);
  return CalcSip(pResult, plane, &copy);
}

int ZuPhoto::CalcSipList(ZuPointList* pList, const ZuPlane& plane, eConvertBikoMode eMode) {
  ZuPoint* p = pList != nullptr ? pList->First() : nullptr;
  if (p == nullptr || !m_bOriented || plane.IsValid() == 0) {
    ZuPoint none;
    CalcSip(&none, plane, p);  // tells why
    return 0;
  }
  const double* X0 = m_PosAOR.GetData();
  const SipPlane sip(plane, X0);
  const bool bAhead = IsRound();
  int n = 0;
  for (; p != nullptr; p = p->Next(), ++n) {
    ConvertBiko(p, eMode);
    double v[3];
    RayVector(p->m_dX, p->m_dY, v);
    Store(Meet(sip, X0, v, bAhead), p);
  }
  return n;
}
