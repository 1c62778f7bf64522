#include <algorithm>
#include <utility>

#include "zu/foundation/internal/without_memory.h"
#include "zu/project/measurement_log.h"
#include "zu/project/project.h"

namespace {

using LoggedPoint = std::pair<unsigned, unsigned>;  // photo, point

// The measurements of a photo as they are before the replay; the first of each id stays in the map.
class ReplayRows {
 public:
  explicit ReplayRows(ZuPointList* pRows) : m_pRows(pRows) {
    for (ZuPoint* p = pRows->First(); p != nullptr; p = p->Next()) m_rows[p->GetId()].push_back(p);
  }

  // False: the point came in.
  bool Replace(const ZuLoggedMeasurement& m) {
    std::vector<ZuPoint*>& same = m_rows[m.m_uPoint];
    if (same.empty()) {
      Add(m);
      return false;
    }
    ZuPoint& row = *same.front();
    row.m_dX = m.m_dX;
    row.m_dY = m.m_dY;
    row.m_dDX = row.m_dDY = 0.0;
    for (std::size_t u = 1; u < same.size(); ++u) delete m_pRows->Subtract(same[u]);
    same.resize(1);
    return true;
  }
  void Add(const ZuLoggedMeasurement& m) {
    zu::internal::Taken(m_pRows->Add(ZuPoint(m.m_uPoint, m.m_dX, m.m_dY)));
  }

 private:
  ZuPointList* m_pRows;
  std::map<unsigned, std::vector<ZuPoint*>> m_rows;
};

}  // namespace

ZuReplayResult ZuReplayLog(const std::vector<ZuLoggedMeasurement>& measurements, eZuReplay eMode,
                           ZuProject* pProject) {
  ZuReplayResult result;
  std::set<unsigned> photos;
  for (const ZuPhoto* p = pProject->PhotoList().First(); p != nullptr; p = p->Next()) {
    photos.insert(p->GetId());
  }
  std::vector<const ZuLoggedMeasurement*> taken;
  for (const ZuLoggedMeasurement& m : measurements) {
    if (photos.count(m.m_uPhoto) > 0) {
      taken.push_back(&m);
    } else {
      ++result.m_unknownPhotos[m.m_uPhoto];
    }
  }
  std::stable_sort(taken.begin(), taken.end(),
                   [](const auto* a, const auto* b) { return a->m_iTime < b->m_iTime; });
  std::map<LoggedPoint, const ZuLoggedMeasurement*> last;
  for (const ZuLoggedMeasurement* p : taken) last[{p->m_uPhoto, p->m_uPoint}] = p;

  std::map<unsigned, ReplayRows> rows;
  for (const ZuLoggedMeasurement* p : taken) {
    ReplayRows& ofPhoto =
        rows.try_emplace(p->m_uPhoto, &pProject->Measurements(p->m_uPhoto)).first->second;
    if (eMode == eZuReplayAll) {
      ofPhoto.Add(*p);
      ++result.m_iAdded;
    } else if (last[{p->m_uPhoto, p->m_uPoint}] != p) {
      ++result.m_iLater;
    } else if (ofPhoto.Replace(*p)) {
      ++result.m_iReplaced;
    } else {
      ++result.m_iAdded;
    }
  }
  return result;
}
