#include "zu/cloud/point_cloud.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "zu/points/internal/flag_walk.h"

const char* const ZuPointCloud::gpDesc = "ZuPointCloud";

ZuPointCloud::ZuPointCloud() { SetFlag(2); }

ZuPointCloud::ZuPointCloud(const ZuPointCloud& other)
    : ZuListnode(other),
      ZuFlag(other),
      ZuStandardNotifier(),
      m_aPoints(other.m_aPoints),
      m_aUndo(other.m_aUndo),
      m_Box(other.m_Box),
      m_SelBox(other.m_SelBox),
      m_Center(other.m_Center),
      m_aAux(other.m_aAux),
      m_pEye(other.m_pEye),
      m_Header(other.m_Header),
      m_uWord1(other.m_uWord1),
      m_uWord2(other.m_uWord2) {}

ZuPointCloud& ZuPointCloud::operator=(const ZuPointCloud& other) {
  if (this == &other) return *this;
  ZuListnode::operator=(other);
  ZuFlag::operator=(other);
  m_aPoints = other.m_aPoints;
  m_aUndo = other.m_aUndo;
  m_Box = other.m_Box;
  m_SelBox = other.m_SelBox;
  m_Center = other.m_Center;
  m_aAux = other.m_aAux;
  m_pEye = other.m_pEye;
  m_Header = other.m_Header;
  m_uWord1 = other.m_uWord1;
  m_uWord2 = other.m_uWord2;
  return *this;
}

ZuPointCloud::~ZuPointCloud() = default;

void ZuPointCloud::NotifyChanged(void* pHint, ZuObserver* pSkip) {
  ZuNotifyEvent event;
  event.m_eType = eZuNotifyChanged;
  event.m_pSource = this;
  event.m_pItem = pHint;
  NotifyObservers(&event, pSkip);
}

ZuPointCloud* ZuPointCloud::cast(const ZuObject* pObject) {
  return static_cast<ZuPointCloud*>(const_cast<ZuObject*>(pObject));
}

ZuPointCloud* ZuPointCloud::First(int iMask) { return zu::internal::FlagFirst(this, iMask); }

ZuPointCloud* ZuPointCloud::Next(int iMask) const {
  return zu::internal::FlagNext(const_cast<ZuPointCloud*>(this), iMask);
}

ZuPointCloud* ZuPointCloud::Previous(int iMask) const {
  return zu::internal::FlagPrevious(const_cast<ZuPointCloud*>(this), iMask);
}

void ZuPointCloud::AddPoint(const ZuScanPoint3d& p) {
  m_aPoints.push_back(p);
  const ZuScanPoint3d& added = m_aPoints.back();  // p may have been one of this cloud's points
  m_Center.Add(added.x, added.y, added.z);
  m_Box.Update(added.x, added.y, added.z);
  if (added.IsSelected()) m_SelBox.Update(added.x, added.y, added.z);
}

void ZuPointCloud::Reserve(unsigned int uCount) {
  const std::uint64_t uTotal = static_cast<std::uint64_t>(m_aPoints.size()) + uCount;
  if (uTotal > MaxPoints) throw std::length_error("vector<T> too long");
  m_aPoints.reserve(uTotal);
}

void ZuPointCloud::Insert(const ZuPointCloud* pOther) {
  if (!pOther) return;
  const std::size_t uCount = pOther->m_aPoints.size();
  const std::size_t uNeed = m_aPoints.size() + uCount, uRoom = m_aPoints.capacity();
  if (uNeed > uRoom) m_aPoints.reserve(std::max(uNeed, std::min(2 * uRoom, m_aPoints.max_size())));
  // By index and copied: the other cloud may be this one.
  for (std::size_t i = 0; i < uCount; ++i) m_aPoints.push_back(ZuScanPoint3d(pOther->m_aPoints[i]));
  const ZuCenterPoint3d center = pOther->m_Center;
  const ZuBoundingBox3d box = pOther->m_Box, selBox = pOther->m_SelBox;
  m_Center.Add(center);
  m_Box.Union(box);
  m_SelBox.Union(selBox);
}

void ZuPointCloud::CountNormals(unsigned int& uWithNormal, unsigned int& uTotal) const {
  uWithNormal = uTotal = 0;
  for (const ZuScanPoint3d& p : m_aPoints) {
    uWithNormal += p.HasNormVector() ? 1 : 0;
    ++uTotal;
  }
}
