#include "zu/photo/camera.h"

#include <cmath>
#include <utility>

#include "zu/foundation/debug.h"
#include "zu/photo/internal/camera_kernel.h"
#include "zu/points/internal/flag_walk.h"
#include "zu/points/point.h"
#include "zu/points/point_list.h"

ZU_INSTANTIATE_LIST(ZuCamera);

namespace {

// Iteration of the CAP forward map: bound on the change of a squared length [mm^2], most rounds,
// and the damping that is tried last.
constexpr double kCapStop = 0.0001;
constexpr int kCapRounds = 40;
constexpr double kCapMaxDamping = 10.0;

// Table half-width of a total-station camera [mm].
constexpr double kVivaRMax = 8.0;

}  // namespace

ZuCamera::ZuCamera(unsigned int uId, double dC, double dXh, double dYh, double dA1, double dA2,
                   double dR0, const char* szName)
    : ZuListnode(uId, String(szName)),
      m_dC(dC),
      m_dXh(dXh),
      m_dYh(dYh),
      m_dA1(dA1),
      m_dA2(dA2),
      m_dR0(dR0) {}

ZuCamera::ZuCamera(ZuReaderObject* pObject, bool bFullData) {
  if (bFullData) {
    ReadFullData(pObject);
  } else {
    Read(pObject);
  }
}

ZuCamera::ZuCamera(const ZuCamera& other) : ZuListnode(), ZuFlag() { *this = other; }

ZuCamera::~ZuCamera() = default;

ZuCamera& ZuCamera::operator=(const ZuCamera& other) {
  ZuListnode::operator=(other);
  ZuFlag::operator=(other);
  m_dC = other.m_dC;
  m_dXh = other.m_dXh;
  m_dYh = other.m_dYh;
  m_dA1 = other.m_dA1;
  m_dA2 = other.m_dA2;
  m_dR0 = other.m_dR0;
  m_dCViva = other.m_dCViva;
  m_dXhViva = other.m_dXhViva;
  m_dYhViva = other.m_dYhViva;
  m_dA3 = other.m_dA3;
  m_dC1 = other.m_dC1;
  m_dC2 = other.m_dC2;
  m_dB1 = other.m_dB1;
  m_dB2 = other.m_dB2;
  m_dRMax = other.m_dRMax;
  m_iMode = other.m_iMode;
  m_dLastInX = m_dLastInY = m_dLastOutX = m_dLastOutY = 0.0;
  return *this;
}

ZuCamera* ZuCamera::First(int iMask) { return zu::internal::FlagFirst(this, iMask); }

ZuCamera* ZuCamera::Next(int iMask) { return zu::internal::FlagNext(this, iMask); }

ZuCamera* ZuCamera::Previous(int iMask) { return zu::internal::FlagPrevious(this, iMask); }

double ZuCamera::Calc_r(const double& x, const double& y) const {
  return camera_kernel::Radius(x, y);
}

double ZuCamera::CalcdrA1A2(const double& r) const {
  return r == 0.0 ? 0.0 : camera_kernel::Radial2(*this, r);
}

double ZuCamera::CalcdrA1A2(const double& x, const double& y) const {
  return CalcdrA1A2(Calc_r(x, y));
}

double ZuCamera::CalcdrA1A2A3(const double& r) const {
  return r == 0.0 ? 0.0 : camera_kernel::Radial3(*this, r);
}

double ZuCamera::CalcdrA1A2A3(const double& x, const double& y) const {
  return CalcdrA1A2A3(Calc_r(x, y));
}

double ZuCamera::CalcdrAffin(const double& x, const double& y) const {
  return m_dB1 * x + m_dB2 * y;
}

void ZuCamera::CalcTanDistort(double& dx, double& dy, const double& x, const double& y,
                              const double& r) const {
  double tx, ty;  // dx, dy may be the same objects as x, y
  camera_kernel::Tangential(*this, x, y, r, &tx, &ty);
  dx = tx;
  dy = ty;
}

double ZuCamera::CalcDistortA1A2(double& dx, double& dy, const double& x, const double& y) const {
  const double x0 = x, y0 = y;
  const double d = CalcdrA1A2(x0, y0);
  dx = -x0 * d;
  dy = -y0 * d;
  return d;
}

double ZuCamera::CalcDistortA1A2A3B1B2C1C2(double& dx, double& dy, const double& x,
                                           const double& y) const {
  double cx, cy;
  const double dSquare = camera_kernel::FullCorrection(*this, x, y, &cx, &cy);
  dx = cx;
  dy = cy;
  return dSquare;
}

double ZuCamera::Calcd(double x, double y) const {
  const double s = x * x + y * y;
  const double r02 = m_dR0 * m_dR0;
  return m_dA1 * s - m_dA1 * r02 + m_dA2 * (s * s) - m_dA2 * (r02 * r02);
}

double ZuCamera::Calc_drForGraph(const double& x, const double& y) const {
  if (m_iMode == eCameraModeZuvo || m_iMode == eCameraModeViva) return CalcdrA1A2(x, y);
  if (m_iMode != eCameraModeCap) return 0.0;
  double xAdjusted = x, yAdjusted = y;
  Adjust(&xAdjusted, &yAdjusted);
  const double dLength = Calc_r(xAdjusted - x, yAdjusted - y);
  return CalcdrA1A2A3(x, y) < 0.0 ? -dLength : dLength;
}

double ZuCamera::GetXhYhRadius() const {
  return std::sqrt(m_dYhViva * m_dYhViva + m_dXhViva * m_dXhViva) +
         std::sqrt(m_dYh * m_dYh + m_dXh * m_dXh);
}

void ZuCamera::SetTs15(double c, double xh, double yh) {
  m_dCViva = c;
  m_dXhViva = xh;
  m_dYhViva = yh;
  m_iMode = eCameraModeViva;
  m_dRMax = kVivaRMax;
  std::swap(m_dC, m_dCViva);
}

bool ZuCamera::Adjust(double* x, double* y) const {
  if (m_uId == 0) return false;
  switch (m_iMode) {
    case eCameraModeZuvo: {
      const double xr = *x - m_dXh, yr = *y - m_dYh;
      const double r = camera_kernel::Radius(xr, yr);
      const double d = r == 0.0 ? 0.0 : camera_kernel::Radial2(*this, r);
      *x = xr - xr * d;
      *y = yr - yr * d;
      return true;
    }
    case eCameraModeViva: {
      const double r = camera_kernel::Radius(*x - m_dXh, *y - m_dYh);
      const double d = r == 0.0 ? 0.0 : camera_kernel::Radial2(*this, r);
      const double xr = *x - m_dXhViva, yr = *y - m_dYhViva;
      *x = xr - xr * d;
      *y = yr - yr * d;
      return true;
    }
    case eCameraModeCap:
      AdjustCap(x, y);
      return true;
    default:
      return false;
  }
}

// The model gives the correction at the corrected position; the damped fixed point of
// (DX, DY) = D(x' + DX, y' + DY) finds it. The point that a damping is tried on is the point of the
// next round, so its correction is carried over.
void ZuCamera::AdjustCap(double* x, double* y) const {
  const double xr = *x - m_dXh, yr = *y - m_dYh;
  double DX, DY;
  double fPrev = camera_kernel::FullCorrection(*this, xr, yr, &DX, &DY);
  double dDelta0 = 0.0;
  double cx, cy;
  double f1 = camera_kernel::FullCorrection(*this, xr + DX, yr + DY, &cx, &cy);
  for (int n = 1;; ++n) {
    const double dDelta = std::fabs(std::fabs(fPrev) - std::fabs(f1));
    if (dDelta0 == 0.0) dDelta0 = dDelta;

    double j = 1.0;
    double nx, ny, f2;
    double DXj, DYj;
    for (;;) {
      DXj = (j * DX + cx) / (j + 1.0);
      DYj = (j * DY + cy) / (j + 1.0);
      f2 = camera_kernel::FullCorrection(*this, xr + DXj, yr + DYj, &nx, &ny);
      if (dDelta > std::fabs(std::fabs(f2) - std::fabs(f1))) break;
      j = j + 1.0;
      if (j < kCapMaxDamping) continue;
      DXj = (j * DX + cx) / (j + 1.0);
      DYj = (j * DY + cy) / (j + 1.0);
      f2 = camera_kernel::FullCorrection(*this, xr + DXj, yr + DYj, &nx, &ny);
      break;
    }
    DX = DXj;
    DY = DYj;
    if (std::fabs(dDelta) <= kCapStop || n >= kCapRounds ||
        !(std::fabs(2.0 * dDelta0) > std::fabs(dDelta))) {
      break;
    }
    fPrev = f1;
    f1 = f2;
    cx = nx;
    cy = ny;
  }
  *x = xr + DX;
  *y = yr + DY;
}

bool ZuCamera::Adjust(ZuPoint* pPoint) const { return Adjust(&pPoint->m_dX, &pPoint->m_dY); }

bool ZuCamera::Adjust(ZuPointList* pList) const {
  if (pList == nullptr) return false;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) Adjust(p);
  return true;
}

bool ZuCamera::InvAdjust(ZuPoint* pPoint) const { return InvAdjust(&pPoint->m_dX, &pPoint->m_dY); }

bool ZuCamera::InvAdjust(ZuPointList* pList) const {
  if (pList == nullptr) return false;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) InvAdjust(p);
  return true;
}

void ZuCamera::DbgPrintf(const char* szPrefix) {
  if (szPrefix == nullptr) szPrefix = "";
  switch (m_iMode) {
    case eCameraModePinhole:
      dbgprintf("%s Pinhole c %.4f", szPrefix, m_dC);
      break;
    case eCameraModeZuvo:
      dbgprintf("%s Zuvo c %.4f, xh %.4f, yh %.4f, a1 %.4f, a2 %.4f, r0 %.4f", szPrefix, m_dC,
                m_dXh, m_dYh, m_dA1, m_dA2, m_dR0);
      break;
    case eCameraModeViva:
      dbgprintf(
          "%s Viva c %.4f, xh %.4f, yh %.4f, a1 %.4f, a2 %.4f, r0 %.4f | cViva %.4f, xhViva "
          "%.4f, yhViva %.4f",
          szPrefix, m_dC, m_dXh, m_dYh, m_dA1, m_dA2, m_dR0, m_dCViva, m_dXhViva, m_dYhViva);
      break;
    case eCameraModeCap:
      dbgprintf(
          "%s CAP c %.4f, xh %.4f, yh %.4f, a1 %.4f, a2 %.4f a3 %.4f, r0 %.1f, c1 %.4f, c2 %.4f, "
          "b1 %.4f, b2 %.4f",
          szPrefix, m_dC, m_dXh, m_dYh, m_dA1, m_dA2, m_dA3, m_dR0, m_dC1, m_dC2, m_dB1, m_dB2);
      break;
    default:
      break;
  }
}
