// What was measured on a photo: its three point lists, their conversion and statistics.
#include <algorithm>
#include <cmath>
#include <memory>

#include "zu/photo/photo.h"

ZuPoint* ZuPhoto::AddImo(ZuPoint* pPoint, eConvertBikoMode eMode) {
  if (pPoint == nullptr) return nullptr;
  ConvertBiko(pPoint, eMode);
  pPoint->m_iPhoto = static_cast<int>(m_uId);
  return m_ImoList.Replace(pPoint);
}

ZuPoint* ZuPhoto::AddImo(const ZuPoint& point, eConvertBikoMode eMode) {
  return AddImo(new ZuPoint(point), eMode);
}

ZuPoint* ZuPhoto::AddImoFast(ZuPoint* pPoint, eConvertBikoMode eMode) {
  if (pPoint == nullptr) return nullptr;
  ConvertBiko(pPoint, eMode);
  pPoint->m_iPhoto = static_cast<int>(m_uId);
  return m_ImoList.Add(pPoint);
}

ZuPoint* ZuPhoto::AddImoFast(const ZuPoint& point, eConvertBikoMode eMode) {
  return AddImoFast(new ZuPoint(point), eMode);
}

ZuPoint* ZuPhoto::AddMeasure(ZuPoint* pPoint, eConvertBikoMode eMode) {
  if (pPoint == nullptr) return nullptr;
  ConvertBiko(pPoint, eMode);
  pPoint->m_iPhoto = static_cast<int>(m_uId);
  return m_MeasureList.Replace(pPoint);
}

ZuPoint* ZuPhoto::AddMeasure(const ZuPoint& point, eConvertBikoMode eMode) {
  return AddMeasure(new ZuPoint(point), eMode);
}

// Nothing is told to observers about an id that is not there.
ZuPoint* ZuPhoto::SubtractFrom(ZuPointList& list, unsigned int uId) {
  ZuPoint* p = list.Find(uId, 0, nullptr);
  return p != nullptr ? list.Subtract(p) : nullptr;
}

void ZuPhoto::MoveImoToMeasure(unsigned int uId, eConvertBikoMode eMode) {
  AddMeasure(SubtractImo(uId), eMode);
}

void ZuPhoto::MoveMeasureToImo(unsigned int uId, eConvertBikoMode eMode) {
  AddImo(SubtractMeasure(uId), eMode);
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
