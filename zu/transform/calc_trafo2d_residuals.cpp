// Residuals of a plane transformation, and the type that a list of points allows.
#include <cmath>

#include "zu/foundation/sort_helper.h"
#include "zu/rectify/region.h"
#include "zu/transform/calc_trafo2d.h"

namespace {

constexpr int kHasResidual = 0x20;          // flag bit of a point
constexpr int kPolynomialPoints = 12;       // more than these, well spread, for a polynomial
constexpr double kCentreInset = 1.0 / 3.0;  // of the half width and the half height

}  // namespace

// Zeroes all residuals, calls atPartner(point, dx, dy) for each point with a partner and keeps the
// root mean squares and the worst id.
template <class Point>
void ZuCalcTrafo2D::WalkResiduals(const ZuPointList* pList, Point&& atPartner) {
  double dSumX = 0.0, dSumY = 0.0, dWorst = 0.0;
  int n = 0;
  m_uMaxError = 0;
  const ZuSortHelper<ZuPoint> partners(m_pPPList);
  for (ZuPoint* p = pList != nullptr ? pList->First() : nullptr; p != nullptr; p = p->Next()) {
    p->m_dRedu1 = p->m_dRedu2 = p->m_dRedu3 = 0.0;
    const ZuPoint* pPartner = partners.Find(p->GetId());
    if (pPartner == nullptr) continue;
    double x = p->m_dX, y = p->m_dY;
    Transform(&x, &y);
    const double dx = x - pPartner->m_dX, dy = y - pPartner->m_dY;
    dSumX += dx * dx;
    dSumY += dy * dy;
    ++n;
    p->SetFlag(kHasResidual);
    const bool bWorst = dx * dx + dy * dy > dWorst;
    if (bWorst) {
      dWorst = dx * dx + dy * dy;
      m_uMaxError = p->GetId();
    }
    atPartner(p, dx, dy, bWorst);
  }
  m_dResidualX = n > 0 ? std::sqrt(dSumX / n) : 0.0;
  m_dResidualY = n > 0 ? std::sqrt(dSumY / n) : 0.0;
}

bool ZuCalcTrafo2D::CalcResiduals(ZuPointList* pList) {
  WalkResiduals(pList != nullptr ? pList : m_pActList, [](ZuPoint* p, double dx, double dy, bool) {
    p->m_dRedu1 = dx;
    p->m_dRedu2 = dy;
  });
  return true;
}

bool ZuCalcTrafo2D::CalcResiduals(double& dMaxX, double& dMaxY, int& iWithin, double dTolerance,
                                  const ZuPointList* pList) {
  dMaxX = dMaxY = 0.0;
  iWithin = 0;
  WalkResiduals(pList != nullptr ? pList : m_pActList,
                [&](ZuPoint*, double dx, double dy, bool bWorst) {
                  if (bWorst) {
                    dMaxX = dx;
                    dMaxY = dy;
                  }
                  if (dx * dx + dy * dy < dTolerance * dTolerance) ++iWithin;
                });
  return true;
}

eZuTrafo2DType ZuCalcTrafo2D::SuggestTrafoByPointsNbr(ZuPointList* pList) {
  if (pList == nullptr) pList = m_pActList;
  if (pList == nullptr || !pList->CountMoreThan(1)) return eZuTrafo2DNone;
  if (!pList->CountMoreThan(2)) return eZuTrafo2DHelmert;
  if (!pList->CountMoreThan(3)) return eZuTrafo2DAffin;
  if (!pList->CountMoreThan(9)) return eZuTrafo2DProjektiv;
  return eZuTrafo2DPolynomial;
}

eZuTrafo2DType ZuCalcTrafo2D::SuggestTrafoByDistrib(const ZuRegion& region, ZuPointList* pList) {
  if (pList == nullptr) pList = m_pActList;
  const eZuTrafo2DType eByNumber = SuggestTrafoByPointsNbr(pList);
  if (eByNumber != eZuTrafo2DProjektiv && eByNumber != eZuTrafo2DPolynomial) return eByNumber;

  ZuRegion sorted(region);
  sorted.Sort();
  const double x0 = sorted.Left(), x1 = sorted.Right(), y0 = sorted.Bottom(), y1 = sorted.Top();
  const double xc = 0.5 * (x0 + x1), yc = 0.5 * (y0 + y1);
  const double dInX = kCentreInset * 0.5 * (x1 - x0), dInY = kCentreInset * 0.5 * (y1 - y0);
  // The first area that holds a point is marked by it.
  const ZuRegion areas[] = {{x0 + dInX, y0 + dInY, x1 - dInX, y1 - dInY},
                            {x0, y0, xc, yc},
                            {xc, y0, x1, yc},
                            {xc, yc, x1, y1},
                            {x0, yc, xc, y1}};
  bool marked[std::size(areas)] = {};
  for (const ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
    for (size_t i = 0; i < std::size(areas); ++i) {
      if (!areas[i].Overlap(p)) continue;
      marked[i] = true;
      break;
    }
  }
  for (const bool bMarked : marked) {
    if (!bMarked) return eZuTrafo2DAffin;
  }
  return pList->CountMoreThan(kPolynomialPoints) ? eZuTrafo2DPolynomial : eZuTrafo2DProjektiv;
}
