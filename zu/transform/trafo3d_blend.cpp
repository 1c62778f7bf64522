// The transformation that sorts points by their residuals and blends them with the control points.
#include <algorithm>

#include "zu/transform/internal/point_flags.h"
#include "zu/transform/trafo3d.h"

namespace {

// Stores the residuals control less transformed and moves the coordinates: to the control point's
// where that is its purpose, else a share of the way. Returns the squared length.
double Blend(const ZuPoint& control, double dBlend, ZuPoint* p) {
  const double dx = control.m_dX - p->m_dX;
  const double dy = control.m_dY - p->m_dY;
  const double dz = control.m_dZ - p->m_dZ;
  const auto blend = [dBlend](bool bControl, double dTransformed, double dControl) {
    return bControl ? dControl : (1.0 - dBlend) * dTransformed + dBlend * dControl;
  };
  p->m_dX = blend(control.IsXControlPoint() != 0, p->m_dX, control.m_dX);
  p->m_dY = blend(control.IsYControlPoint() != 0, p->m_dY, control.m_dY);
  p->m_dZ = blend(control.IsZControlPoint() != 0, p->m_dZ, control.m_dZ);
  p->SetControlFlags(control.m_sControl);
  p->m_dRedu1 = dx;
  p->m_dRedu2 = dy;
  p->m_dRedu3 = dz;
  return dx * dx + dy * dy + dz * dz;
}

}  // namespace

bool ZuTrafo3d::Transform(ZuPointList* pGood, ZuPointList* pBad, ZuPointList* pBadControl,
                          ZuPointList* pIn, double dTolerance, const ZuSortHelper<ZuPoint>& control,
                          double dBlend) {
  if (pGood == nullptr || pIn == nullptr) return false;
  dBlend = dBlend > 0.0 ? std::min(dBlend, 1.0) : 0.0;
  ResetResiduals();
  ResidualSums sums;
  const ZuMatrix map = GetAsMatrix();
  ZuPointList good, bad, badControl;  // of their own: a list of the caller may be the input
  while (ZuPoint* p = pIn->SubtractFirst()) {
    map.PTrans3D(p);
    p->m_dRedu1 = p->m_dRedu2 = p->m_dRedu3 = 0.0;
    const ZuPoint* pControl = p->GetId() != 0 ? control.Find(p->GetId()) : nullptr;
    const double r2 = pControl != nullptr ? Blend(*pControl, dBlend, p) : 0.0;
    p->SetFlag(kTransformed);
    NoteWorst(sums, p);
    if (r2 <= dTolerance * dTolerance) {
      AddResiduals(sums, *p);
      good.Add(p);
      continue;
    }
    p->SetFlag(kRejected);
    bad.Add(p);
    if (pControl != nullptr && pBadControl != nullptr) badControl.Add(*pControl);
  }
  FinishResiduals(sums);
  bad.MoveTo(pBad != nullptr ? pBad : pGood);
  badControl.MoveTo(pBadControl);
  good.MoveTo(pGood);
  return true;
}
