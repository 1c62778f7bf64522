// What an application calls: selection of the points, definitions, results. The computation itself
// stands in calc_plane_fit.cpp.
#include "zu/rectify/calc_plane.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "zu/foundation/internal/valid_pointer.h"
#include "zu/foundation/logfile.h"
#include "zu/foundation/string.h"
#include "zu/points/filter.h"
#include "zu/rectify/internal/point_refill.h"

namespace {

// Sets the filter aside for its lifetime.
class FilterPause {
 public:
  explicit FilterPause(ZuFilter** ppFilter)
      : m_ppFilter(ppFilter), m_pFilter(std::exchange(*ppFilter, nullptr)) {}
  FilterPause(const FilterPause&) = delete;
  FilterPause& operator=(const FilterPause&) = delete;
  ~FilterPause() { *m_ppFilter = m_pFilter; }

 private:
  ZuFilter** m_ppFilter;
  ZuFilter* m_pFilter;
};

// Finds points by id; of equal ids the first in the list.
class PointsById {
 public:
  explicit PointsById(const ZuPointList& list) {
    for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
      m_points.emplace_back(p->GetId(), p);
    }
    const auto lessId = [](const Entry& a, const Entry& b) { return a.first < b.first; };
    if (!std::is_sorted(m_points.begin(), m_points.end(), lessId)) {
      std::stable_sort(m_points.begin(), m_points.end(), lessId);
    }
  }

  // Null if there is none. Asked for in ascending order, each answer is the neighbour of the last
  // one.
  const ZuPoint* Find(unsigned int uId) {
    if (m_uNext >= m_points.size() || m_points[m_uNext].first != uId ||
        (m_uNext > 0 && m_points[m_uNext - 1].first == uId)) {
      const auto it =
          std::lower_bound(m_points.begin(), m_points.end(), uId,
                           [](const Entry& entry, unsigned int u) { return entry.first < u; });
      m_uNext = static_cast<std::size_t>(it - m_points.begin());
      if (it == m_points.end() || it->first != uId) return nullptr;
    }
    return m_points[m_uNext++].second;
  }

 private:
  using Entry = std::pair<unsigned int, const ZuPoint*>;
  std::vector<Entry> m_points;
  std::size_t m_uNext = 0;
};

// Three points that span a coordinate plane, by mode; one point alone for any other mode.
void AddPointsOfParallel(ZuPointList* pPoints, int iMode) {
  pPoints->Add(ZuPoint(1, 0.0, 0.0, 0.0));
  switch (iMode) {
    case ZuCalcPlane::eParallelXY:
      pPoints->Add(ZuPoint(2, 1.0, 0.0, 0.0));
      pPoints->Add(ZuPoint(3, 0.0, 1.0, 0.0));
      break;
    case ZuCalcPlane::eParallelYZ:
      pPoints->Add(ZuPoint(2, 0.0, 1.0, 0.0));
      pPoints->Add(ZuPoint(3, 0.0, 0.0, 1.0));
      break;
    case ZuCalcPlane::eParallelXZ:
      pPoints->Add(ZuPoint(2, 1.0, 0.0, 0.0));
      pPoints->Add(ZuPoint(3, 0.0, 0.0, 1.0));
      break;
    default:
      break;
  }
}

}  // namespace

ZuCalcPlane::~ZuCalcPlane() = default;

bool ZuCalcPlane::CalcPlaneFromFilteredPoints(ZuPointList* pPoints, bool bWriteBack, bool bForce) {
  m_bForcePlane = bForce;
  CalcZuPlane(&m_filteredPoints, KeepFilteredPoints(pPoints));
  if (m_eStatus != StatusOk) return false;
  if (bWriteBack) {
    if (pPoints == nullptr) return false;
    WriteBackDeviations(pPoints);
  }
  return true;
}

int ZuCalcPlane::KeepFilteredPoints(ZuPointList* pPoints) {
  int n = 0;
  ZuPointRefill refill(&m_filteredPoints);
  if (IsValidPointer(pPoints)) {
    for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
      p->m_dDX = p->m_dDY = p->m_dDZ = 0.0;
      if (m_pCooFilter != nullptr && m_pCooFilter->Test(p) == 0) continue;
      refill.Append(*p);
      ++n;
    }
  }
  refill.Finish();
  return n;
}

void ZuCalcPlane::WriteBackDeviations(ZuPointList* pPoints) const {
  PointsById copies(m_filteredPoints);
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    const ZuPoint* pCopy = copies.Find(p->GetId());
    if (pCopy == nullptr) continue;
    p->m_dDX = pCopy->m_dDX;
    p->m_dDY = pCopy->m_dDY;
    p->m_dDZ = pCopy->m_dDZ;
  }
  pPoints->NotifyChanged(nullptr, nullptr);
}

bool ZuCalcPlane::CalcWithoutFilter(ZuPointList* pPoints) {
  const FilterPause pause(&m_pCooFilter);
  return CalcPlaneFromFilteredPoints(pPoints, true, false);
}

bool ZuCalcPlane::CalcParallelPlane(int iMode) {
  ZuPointList points;
  AddPointsOfParallel(&points, iMode);
  return CalcWithoutFilter(&points);
}

bool ZuCalcPlane::CalcNormalPlane(int iMode, const ZuPoint& p1, const ZuPoint& p2) {
  ZuCalcPlane parallel;
  parallel.CalcParallelPlane(iMode);
  return CalcNormalPlane(parallel.GetPlanePtr(), p1, p2);
}

bool ZuCalcPlane::CalcNormalPlane(const ZuPlane* pPlane, const ZuPoint& p1, const ZuPoint& p2) {
  if (pPlane == nullptr) return false;
  ZuPointList points;
  points.Add(p1);
  points.Add(p2);
  points.Add(ZuPoint(0, p1.m_dX + pPlane->A(), p1.m_dY + pPlane->B(), p1.m_dZ + pPlane->C()));
  return CalcWithoutFilter(&points);
}

void ZuCalcPlane::SetCooFilter(ZuFilter* pFilter) {
  if (pFilter == m_pCooFilter) return;
  m_pFilterOwner.reset(pFilter);
  m_pCooFilter = pFilter;
}

const char* ZuCalcPlane::GetZuPlaneStatusAsText() const {
  switch (m_eStatus) {
    case StatusOk:
      return "ZuCalcPlane::StatusOk";
    case TooLessPoints:
      return "ZuCalcPlane::TooLessPoints";
    case BadPointDistrib:
      return "ZuCalcPlane::BadPointDistrib";
    case BadApproximate:
      return "ZuCalcPlane::BadApproximate";
  }
  return "ZuCalcPlane::Unknown Status";
}

void ZuCalcPlane::WriteLogfile(ZuLogfile& log) {
  static constexpr eZuPointRWMask kColumns[] = {eZuPointRWId, eZuPointRWName, eZuPointRWX,
                                                eZuPointRWY,  eZuPointRWZ,    eZuPointRWDS,
                                                eZuPointRWEnd};
  m_filteredPoints.SetMask(kColumns);
  log << "3D PLANE DEFINITION\n\n\n" << m_filteredPoints.GetMask() << "\n";
  m_filteredPoints.Write(log);
  log << "\n\n";
}

void ZuCalcPlane::WriteLogfile(const String& strFileName) {
  ZuLogfile log(strFileName.chars());
  WriteLogfile(log);
}
