// Transforming point lists, with residuals from control points.
#include <algorithm>
#include <cmath>
#include <vector>

#include "zu/transform/internal/point_flags.h"
#include "zu/transform/trafo3d.h"

namespace {

// Residuals control - transformed and, axis by axis, the coordinates of a control point.
void TakeControl(const ZuPoint& control, ZuPoint* pPoint) {
  pPoint->m_dRedu1 = control.m_dX - pPoint->m_dX;
  pPoint->m_dRedu2 = control.m_dY - pPoint->m_dY;
  pPoint->m_dRedu3 = control.m_dZ - pPoint->m_dZ;
  if (control.IsXControlPoint()) pPoint->m_dX = control.m_dX;
  if (control.IsYControlPoint()) pPoint->m_dY = control.m_dY;
  if (control.IsZControlPoint()) pPoint->m_dZ = control.m_dZ;
}

void ClearResiduals(ZuPoint* pPoint) {
  pPoint->m_dRedu1 = pPoint->m_dRedu2 = pPoint->m_dRedu3 = 0.0;
}

// Ascending ids; points of one id keep their order.
void SortById(ZuPointList* pList) {
  std::vector<ZuPoint*> points;
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) points.push_back(p);
  const auto ById = [](const ZuPoint* a, const ZuPoint* b) { return a->GetId() < b->GetId(); };
  if (std::is_sorted(points.begin(), points.end(), ById)) return;
  std::stable_sort(points.begin(), points.end(), ById);
  pList->SubtractAll();
  for (ZuPoint* p : points) pList->Add(p);
}

// Which ids found a partner.
class UsedIds {
 public:
  explicit UsedIds(std::vector<unsigned int>& ids) : m_Ids(ids) {
    if (!std::is_sorted(m_Ids.begin(), m_Ids.end())) std::sort(m_Ids.begin(), m_Ids.end());
  }
  bool Has(unsigned int uId) const { return std::binary_search(m_Ids.begin(), m_Ids.end(), uId); }

 private:
  std::vector<unsigned int>& m_Ids;
};

// Puts the result into the list of the caller, sorted if wanted.
void HandOver(ZuPointList& result, bool bSort, ZuPointList& out) {
  if (bSort) SortById(&result);
  out.Destroy();
  result.MoveTo(&out);
}

}  // namespace

void ZuTrafo3d::ResetResiduals() {
  m_dRmsX = m_dRmsY = m_dRmsZ = 0.0;
  m_iResidualCount = 0;
  m_pMaxResidualPoint = nullptr;
}

void ZuTrafo3d::AddResiduals(ResidualSums& sums, const ZuPoint& point) {
  sums.dX += point.m_dRedu1 * point.m_dRedu1;
  sums.dY += point.m_dRedu2 * point.m_dRedu2;
  sums.dZ += point.m_dRedu3 * point.m_dRedu3;
  ++m_iResidualCount;
}

void ZuTrafo3d::NoteWorst(ResidualSums& sums, ZuPoint* pPoint) {
  const double dSquare = pPoint->m_dRedu1 * pPoint->m_dRedu1 + pPoint->m_dRedu2 * pPoint->m_dRedu2 +
                         pPoint->m_dRedu3 * pPoint->m_dRedu3;
  if (dSquare > sums.dMax) {
    sums.dMax = dSquare;
    m_pMaxResidualPoint = pPoint;
  }
}

void ZuTrafo3d::FinishResiduals(const ResidualSums& sums) {
  if (m_iResidualCount == 0) m_iResidualCount = 1;
  m_dRmsX = std::sqrt(sums.dX / m_iResidualCount);
  m_dRmsY = std::sqrt(sums.dY / m_iResidualCount);
  m_dRmsZ = std::sqrt(sums.dZ / m_iResidualCount);
}

void ZuTrafo3d::TransformPoints(ZuPointList& out, const ZuPointList& in,
                                const ZuSortHelper<ZuPoint>& control,
                                std::vector<unsigned int>& usedIds) {
  ResetResiduals();
  ResidualSums sums;
  const ZuMatrix map = GetAsMatrix();
  for (const ZuPoint* pIn = in.First(); pIn != nullptr; pIn = pIn->Next()) {
    ZuPoint* p = out.Add(new ZuPoint(*pIn));
    map.PTrans3D(p);
    ClearResiduals(p);
    const ZuPoint* pControl = p->GetId() != 0 ? control.Find(p->GetId()) : nullptr;
    if (pControl != nullptr) {
      TakeControl(*pControl, p);
      usedIds.push_back(p->GetId());
    }
    p->SetFlag(kTransformed);
    AddResiduals(sums, *p);
    NoteWorst(sums, p);
  }
  FinishResiduals(sums);
}

bool ZuTrafo3d::Transform(ZuPointList& out, const ZuPointList& in,
                          const ZuSortHelper<ZuPoint>& control, bool bSort) {
  ZuPointList result;  // of its own: `out` may be one of the other lists
  std::vector<unsigned int> ids;
  TransformPoints(result, in, control, ids);
  const UsedIds used(ids);
  for (const ZuPoint* p : control) {
    if (!used.Has(p->GetId())) result.Add(new ZuPoint(*p));
  }
  HandOver(result, bSort, out);
  return true;
}

bool ZuTrafo3d::Transform(ZuPointList& out, const ZuPointList& in, const ZuPointList* pControl,
                          bool bSort) {
  ZuPointList result;
  std::vector<unsigned int> ids;
  TransformPoints(result, in, ZuSortHelper<ZuPoint>(pControl), ids);
  const UsedIds used(ids);
  for (const ZuPoint* p = pControl != nullptr ? pControl->First() : nullptr; p != nullptr;
       p = p->Next()) {
    if (!used.Has(p->GetId())) result.Add(new ZuPoint(*p));
  }
  HandOver(result, bSort, out);
  return true;
}

bool ZuTrafo3d::InPlaceTransform(ZuPointList* pList) const {
  if (pList == nullptr) return false;
  const ZuMatrix map = GetAsMatrix();
  for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
    p->ClearFlag(kTransformed | kRejected);
    map.PTrans3D(p);
    ClearResiduals(p);
  }
  return true;
}
