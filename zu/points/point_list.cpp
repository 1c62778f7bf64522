#include "zu/points/point_list.h"

#include <cmath>
#include <cstdint>
#include <memory>

#include "zu/foundation/debug.h"
#include "zu/foundation/reader_object.h"

ZuPointList::ZuPointList(const TZuFormatTable<eZuPointRWMask>& table)
    : TZuFormatTable<eZuPointRWMask>(table) {}

ZuPointList::ZuPointList(const String& strPath, const TZuFormatTable<eZuPointRWMask>& table) {
  ReadFile(strPath.chars(), table);
}

ZuPointList::ZuPointList(const ZuPointList& other)
    : TZuListHeader<ZuPoint>(other), TZuFormatTable<eZuPointRWMask>(other), LinkHdl(other) {}

ZuPointList& ZuPointList::operator=(const ZuPointList& other) {
  if (this == &other) return *this;
  TZuListHeader<ZuPoint>::operator=(other);
  SetMask(other);
  return *this;
}

void ZuPointList::SetMask(const TZuFormatTable<eZuPointRWMask>& table) {
  if (&table != this) TZuFormatTable<eZuPointRWMask>::operator=(table);
}

int ZuPointList::Read(ZuReaderObject* pObject) {
  const TZuFormatTable<eZuPointRWMask> table(*this);  // an observer may change that of the list
  const ZuParser& parser = pObject->GetStreamParser();
  pObject->ReadRows([&] {
    const std::uint64_t uBefore = parser.GetMoveCount();
    auto pPoint = std::make_unique<ZuPoint>(pObject, table);
    if (parser.GetMoveCount() != uBefore) Add(pPoint.release());
  });
  return 1;
}

ZuPoint* ZuPointList::Find(const String& strName) const { return Find(strName, true); }

ZuPoint* ZuPointList::Find(unsigned int uId, unsigned int uPhoto, ZuPoint* pStart) const {
  const auto isMatch = [&](const ZuPoint& p) {
    return p.m_uId == uId && (uPhoto == 0 || static_cast<unsigned int>(p.m_iPhoto) == uPhoto);
  };
  for (ZuPoint* p = pStart != nullptr ? pStart : First(); p != nullptr; p = p->Next()) {
    if (isMatch(*p)) return p;
  }
  for (ZuPoint* p = pStart; p != nullptr; p = p->Previous()) {
    if (isMatch(*p)) return p;
  }
  return nullptr;
}

ZuPoint* ZuPointList::FindInSortedList(unsigned int uId) const {
  for (ZuPoint* p = First(); p != nullptr && p->m_uId <= uId; p = p->Next()) {
    if (p->m_uId == uId) return p;
  }
  return nullptr;
}

ZuPoint* ZuPointList::FindNearest(const ZuPoint& point, double* pdDistance) const {
  ZuPoint* pNearest = nullptr;
  double dNearest = 0.0;
  for (ZuPoint* p = First(); p != nullptr; p = p->Next()) {
    const double dSq = p->DistanceSq(point);
    // A distance that is no number is farther than any other.
    if (pNearest == nullptr || dSq < dNearest || (std::isnan(dNearest) && !std::isnan(dSq))) {
      pNearest = p;
      dNearest = dSq;
    }
  }
  if (pNearest != nullptr && pdDistance != nullptr) *pdDistance = std::sqrt(dNearest);
  return pNearest;
}

bool ZuPointList::HasControlPoints() const {
  for (const ZuPoint* p = First(); p != nullptr; p = p->Next()) {
    if (p->m_sControl != 0) return true;
  }
  return false;
}

void ZuPointList::RemoveControlInformation() {
  for (ZuPoint* p = First(); p != nullptr; p = p->Next()) p->m_sControl = 0;
}

void ZuPointList::DbgPrintf(const char* szTitle) const {
  if (szTitle != nullptr) dbgprintf("%s:\n", szTitle);
  for (const ZuPoint* p = First(); p != nullptr; p = p->Next()) {
    p->DbgPrintf(nullptr);
    dbgprintf("\n");
  }
}

void ZuPointList::DbgPrintfId(const char* szTitle) const {
  if (szTitle != nullptr) dbgprintf("%s:\n", szTitle);
  for (const ZuPoint* p = First(); p != nullptr; p = p->Next()) dbgprintf("%u\n", p->m_uId);
}

ZU_INSTANTIATE_LIST(ZuPoint);
