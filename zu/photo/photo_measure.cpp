// What was measured on a photo: its three point lists, their conversion and statistics.
#include <algorithm>
#include <cmath>
#include <memory>

#include "zu/foundation/internal/without_memory.h"
#include "zu/photo/photo.h"

// While points may be deleted the id indexes know none, for observers too that are called
// meanwhile. Those that stood on their list are built anew at the end.
class ZuPhoto::IndexPause {
 public:
  explicit IndexPause(ZuPhoto* pPhoto)
      : m_indexes{{&pPhoto->m_ImoSorted, pPhoto->m_ImoSorted.GetList()},
                  {&pPhoto->m_MeasureSorted, pPhoto->m_MeasureSorted.GetList()}} {
    for (const Index& index : m_indexes) index.pIndex->Set(nullptr);
  }
  IndexPause(const IndexPause&) = delete;
  IndexPause& operator=(const IndexPause&) = delete;

  ~IndexPause() {
    for (const Index& index : m_indexes) {
      if (index.pList == nullptr) continue;
      const auto build = [&index] { return index.pIndex->Set(index.pList), true; };
      if (!zu::internal::OrWithoutMemory(build, false)) index.pIndex->Set(nullptr);
    }
  }

 private:
  struct Index {
    ZuSortHelper<ZuPoint>* pIndex;
    const TZuListHeader<ZuPoint>* pList;
  };

  const Index m_indexes[2];
};

ZuPoint* ZuPhoto::Prepare(ZuPoint* pPoint, eConvertBikoMode eMode) const {
  ConvertBiko(pPoint, eMode);
  pPoint->m_iPhoto = static_cast<int>(m_uId);
  return pPoint;
}

// On the heap, for a list to own.
ZuPoint* ZuPhoto::PreparedCopy(const ZuPoint& point, eConvertBikoMode eMode) const {
  auto pCopy = std::make_unique<ZuPoint>(point);
  Prepare(pCopy.get(), eMode);
  return pCopy.release();
}

ZuPoint* ZuPhoto::ReplaceIn(ZuPointList& list, ZuPoint* pPoint) {
  const bool bIndexed = m_ImoSorted.Count() + m_MeasureSorted.Count() > 0;
  if (!bIndexed || list.Find(pPoint->GetId(), 0, nullptr) == nullptr) return list.Replace(pPoint);
  const IndexPause pause(this);
  return list.Replace(pPoint);
}

ZuPoint* ZuPhoto::AddImo(ZuPoint* pPoint, eConvertBikoMode eMode) {
  return pPoint != nullptr ? ReplaceIn(m_ImoList, Prepare(pPoint, eMode)) : nullptr;
}

ZuPoint* ZuPhoto::AddImo(const ZuPoint& point, eConvertBikoMode eMode) {
  return ReplaceIn(m_ImoList, PreparedCopy(point, eMode));
}

ZuPoint* ZuPhoto::AddImoFast(ZuPoint* pPoint, eConvertBikoMode eMode) {
  return pPoint != nullptr ? m_ImoList.Add(Prepare(pPoint, eMode)) : nullptr;
}

ZuPoint* ZuPhoto::AddImoFast(const ZuPoint& point, eConvertBikoMode eMode) {
  return m_ImoList.Add(PreparedCopy(point, eMode));
}

ZuPoint* ZuPhoto::AddMeasure(ZuPoint* pPoint, eConvertBikoMode eMode) {
  return pPoint != nullptr ? ReplaceIn(m_MeasureList, Prepare(pPoint, eMode)) : nullptr;
}

ZuPoint* ZuPhoto::AddMeasure(const ZuPoint& point, eConvertBikoMode eMode) {
  return ReplaceIn(m_MeasureList, PreparedCopy(point, eMode));
}

void ZuPhoto::DestroyImo() {
  const IndexPause pause(this);
  m_ImoList.Destroy();
}

void ZuPhoto::DestroyMeasure() {
  const IndexPause pause(this);
  m_MeasureList.Destroy();
}

// Nothing is told to observers about an id that is not there.
ZuPoint* ZuPhoto::SubtractFrom(ZuPointList& list, unsigned int uId) {
  ZuPoint* p = list.Find(uId, 0, nullptr);
  return p != nullptr ? list.Subtract(p) : nullptr;
}

// A conversion that throws leaves the point where it is, as it is.
void ZuPhoto::MoveConverted(ZuPointList& from, ZuPointList& to, unsigned int uId,
                            eConvertBikoMode eMode) {
  ZuPoint* p = from.Find(uId, 0, nullptr);
  if (p == nullptr) return;
  ZuPoint converted(*p);
  Prepare(&converted, eMode);
  from.Subtract(p);
  p->m_dX = converted.m_dX;
  p->m_dY = converted.m_dY;
  p->m_dZ = converted.m_dZ;
  p->m_iPhoto = converted.m_iPhoto;
  ReplaceIn(to, p);
}

void ZuPhoto::MoveImoToMeasure(unsigned int uId, eConvertBikoMode eMode) {
  MoveConverted(m_ImoList, m_MeasureList, uId, eMode);
}

void ZuPhoto::MoveMeasureToImo(unsigned int uId, eConvertBikoMode eMode) {
  MoveConverted(m_MeasureList, m_ImoList, uId, eMode);
}

void ZuPhoto::CopyImoToMeasure(unsigned int uId, eConvertBikoMode eMode) {
  const ZuPoint* p = FindImo(uId);
  if (p != nullptr) AddMeasure(*p, eMode);
}

void ZuPhoto::CopyMeasureToImo(unsigned int uId, eConvertBikoMode eMode) {
  const ZuPoint* p = FindMeasure(uId);
  if (p != nullptr) AddImo(*p, eMode);
}

void ZuPhoto::CopyImoTo(ZuPointList* pList) const {
  if (pList != nullptr) m_ImoList.CopyTo(pList);
}

void ZuPhoto::CopyMeasureTo(ZuPointList* pList) const {
  if (pList != nullptr) m_MeasureList.CopyTo(pList);
}

void ZuPhoto::SetPhotoIdTo(ZuPointList& list) {
  for (ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    p->m_iPhoto = static_cast<int>(m_uId);
    p->m_pParent = this;
  }
}

void ZuPhoto::SetPhotoIdToImoList() { SetPhotoIdTo(m_ImoList); }

void ZuPhoto::SetPhotoIdToMeasureList() { SetPhotoIdTo(m_MeasureList); }

bool ZuPhoto::ConvertBiko(ZuPoint* pPoint, eConvertBikoMode eMode) const {
  switch (eMode) {
    case eDigiToPre:
      m_PreTrafo->Transform(pPoint);
      return true;
    case eDigiToBiko:
      m_PreTrafo->Transform(pPoint);
      m_MainTrafo->Transform(pPoint);
      return true;
    case ePreToBiko:
      m_MainTrafo->Transform(pPoint);
      return true;
    case eDigiToAdjusted:
      m_PreTrafo->Transform(pPoint);
      m_MainTrafo->Transform(pPoint);
      m_Camera.Adjust(pPoint);
      return true;
    case eBikoToAdjusted:
      m_Camera.Adjust(pPoint);
      return true;
    case eAdjustedToBiko:
      m_Camera.InvAdjust(pPoint);
      return true;
    case eBikoToDigi:
    case ePreToDigi:
    case eBikoToPre:
    case eAdjustedToDigi:
    case eObjectToAdjusted:
    case eObjectToBiko:
    case eObjectToDigi:
      return ZuBikoTransform(this, eMode, false).Transform(pPoint);
    default:
      return true;
  }
}

void ZuPhoto::ConvertList(ZuPointList* pList, eConvertBikoMode eMode) const {
  ZuBikoTransform(this, eMode, false).Transform(pList);
}

void ZuPhoto::SetBikoTransform(eConvertBikoMode eMode, bool bFlipY) {
  m_BikoTransform.Own().Set(this, eMode, bFlipY);
}

void ZuPhoto::ResetImoStat() {
  m_iImoStatInside = m_iImoStatOutside = 0;
  m_dImoStatMax = m_dImoStatSum = 0.0;
}

void ZuPhoto::UpdateImoStat(double dx, double dy, double dTolerance) {
  const double r = std::sqrt(dx * dx + dy * dy);
  const double dLimit = GetPixelSize() * dTolerance;
  dLimit <= r ? ++m_iImoStatOutside : ++m_iImoStatInside;
  m_dImoStatSum += r;
  m_dImoStatMax = std::max(m_dImoStatMax, r);
}

void ZuPhoto::UpdateImoStatFromList(ZuPointList* pList, double dTolerance) {
  ResetImoStat();
  if (pList == nullptr) return;
  for (const ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
    UpdateImoStat(p->m_dRedu1, p->m_dRedu2, dTolerance);
  }
}
