#include "point_names.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "exit_code.h"
#include "text_table.h"

namespace cli {
namespace {

std::string NameOf(const ZuPoint& point) { return point.GetName().chars(); }

// The points of a list by what they are known by. In a file with a column for the id this is unique
// beside the name.
class Known {
 public:
  explicit Known(bool bIdColumn) : m_bIdColumn(bIdColumn) {}

  // The index that the point was first added with, or i.
  size_t Add(const ZuPoint& point, size_t i) {
    const std::string strName = NameOf(point);
    size_t uFirst = i;
    if (!strName.empty()) uFirst = m_names.emplace(strName, i).first->second;
    if (strName.empty() || m_bIdColumn) {
      uFirst = std::min(uFirst, m_ids.emplace(point.GetId(), i).first->second);
    }
    return uFirst;
  }

 private:
  bool m_bIdColumn;
  std::unordered_map<std::string, size_t> m_names;
  std::unordered_map<unsigned, size_t> m_ids;
};

struct Sum {
  ZuPoint point;
  int iCount = 0;
};

constexpr const char* kCounts[] = {"", "the first counts", "the last counts", "the mean counts"};

// Common ids of two lists, in the making.
class IdGiver {
 public:
  IdGiver(const ZuPointList& a, const ZuPointList* pB)
      : m_bIdColumn(a.GetMask().HasEntry(eZuPointRWId)) {
    for (const ZuPointList* pList : {&a, pB}) {
      if (pList == nullptr) continue;
      for (const ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
        m_used.insert(p->GetId());
        m_bNames = m_bNames || !p->GetName().empty();
      }
    }
  }

  // Without names ids are what they should be.
  bool HasNames() const { return m_bNames; }
  bool HasIdColumn() const { return m_bIdColumn; }

  // Points without name keep their number, and names take what is left; where the file gives names
  // their ids, these come first. Once for each list, in the same order.
  void Give(bool bNamed, ZuPointList* pList) {
    std::unordered_set<unsigned>& taken = m_taken[pList];
    for (ZuPoint* p = pList->First(); p != nullptr; p = p->Next()) {
      const std::string strName = NameOf(*p);
      if (strName.empty() == bNamed) continue;
      p->SetId(bNamed ? IdOfName(strName, p->GetId()) : IdOfNumber(p->GetId(), taken));
      taken.insert(p->GetId());
    }
  }

 private:
  unsigned IdOfName(const std::string& strName, unsigned uId) {
    const auto known = m_names.find(strName);
    if (known != m_names.end()) return known->second;
    return m_names[strName] = m_owned.insert(uId).second ? uId : Fresh();
  }

  unsigned IdOfNumber(unsigned uId, const std::unordered_set<unsigned>& taken) {
    const auto known = m_numbers.find(uId);
    if (known != m_numbers.end()) return known->second;
    const bool bFree = m_owned.insert(uId).second;
    if (bFree) return m_numbers[uId] = uId;
    if (m_bIdColumn && taken.count(uId) == 0) return uId;  // the named one of the other list
    return m_numbers[uId] = Fresh();
  }

  unsigned Fresh() {
    while (!m_used.insert(++m_uLast).second) {
    }
    m_owned.insert(m_uLast);
    return m_uLast;
  }

  bool m_bIdColumn;
  bool m_bNames = false;
  unsigned m_uLast = 0;
  std::unordered_set<unsigned> m_used;   // by any point of the files, or given anew
  std::unordered_set<unsigned> m_owned;  // by a name or a number
  std::unordered_map<std::string, unsigned> m_names;
  std::unordered_map<unsigned, unsigned> m_numbers;
  std::unordered_map<const ZuPointList*, std::unordered_set<unsigned>> m_taken;
};

}  // namespace

void JoinDuplicates(const std::string& strFile, const std::vector<std::uint64_t>& lines,
                    Duplicates eDuplicates, Context& context, ZuPointList* pPoints) {
  Known known(pPoints->GetMask().HasEntry(eZuPointRWId));
  std::vector<ZuPoint*> points;
  std::vector<size_t> places;  // of the point that each is taken together with
  std::unordered_map<size_t, Sum> sums;
  std::string strFirst;
  long long iDropped = 0;
  size_t i = 0;
  for (ZuPoint *p = pPoints->First(), *pNext = nullptr; p != nullptr; p = pNext, ++i) {
    pNext = p->Next();
    points.push_back(p);
    const size_t uKnown = known.Add(*p, i);
    const size_t uFirst = uKnown == i ? i : places[uKnown];
    places.push_back(uFirst);
    if (uFirst == i) continue;
    const std::string strLines =
        "lines " + std::to_string(lines[uFirst]) + " and " + std::to_string(lines[i]);
    if (eDuplicates == eDuplicatesError) {
      throw CommandError(kBadInput, strFile + ":" + std::to_string(lines[i]) + ": point " +
                                        PointLabel(*p) + " stands in " + strLines +
                                        "; once would be right,\nor --duplicates first, last or "
                                        "mean where the command has it");
    }
    if (iDropped++ == 0) strFirst = PointLabel(*p) + " in " + strLines;
    Sum& sum = sums[uFirst];
    if (sum.iCount++ == 0) sum = {*points[uFirst], 2};
    sum.point = sum.point + *p;
    if (eDuplicates == eDuplicatesLast) *points[uFirst] = *p;
    const std::unique_ptr<ZuPoint> pEnd(pPoints->Subtract(p));
  }
  if (iDropped == 0) return;
  for (const auto& [uFirst, sum] : sums) {
    if (eDuplicates != eDuplicatesMean) break;
    points[uFirst]->m_dX = sum.point.m_dX / sum.iCount;
    points[uFirst]->m_dY = sum.point.m_dY / sum.iCount;
    points[uFirst]->m_dZ = sum.point.m_dZ / sum.iCount;
  }
  context.WarnAlways(strFile + ": " + Counted(static_cast<long long>(sums.size()), "point") +
                     " more than once, the first " + strFirst + "; " + kCounts[eDuplicates]);
}

void GiveCommonIds(const std::string& strFileB, Context& context, ZuPointList* pA,
                   ZuPointList* pB) {
  IdGiver ids(*pA, pB);
  if (!ids.HasNames()) return;
  std::vector<unsigned> former;
  for (const ZuPoint* p = pB != nullptr ? pB->First() : nullptr; p != nullptr; p = p->Next()) {
    former.push_back(p->GetId());
  }
  for (const bool bNamed : {ids.HasIdColumn(), !ids.HasIdColumn()}) {
    ids.Give(bNamed, pA);
    if (pB != nullptr) ids.Give(bNamed, pB);
  }
  if (!ids.HasIdColumn() || pB == nullptr) return;
  long long iChanged = 0;
  std::string strFirst;
  size_t i = 0;
  for (const ZuPoint* p = pB->First(); p != nullptr; p = p->Next(), ++i) {
    if (p->GetId() == former[i] || iChanged++ > 0) continue;
    strFirst =
        PointLabel(*p) + " from " + std::to_string(former[i]) + " to " + std::to_string(p->GetId());
  }
  if (iChanged > 0) {
    context.WarnAlways(strFileB + ": points are matched by name; " + Counted(iChanged, "id") +
                       " changed, the first of point " + strFirst);
  }
}

std::string PointLabel(const ZuPoint& point) {
  const std::string strName = NameOf(point);
  return strName.empty() ? std::to_string(point.GetId()) : strName;
}

Json JsonLabel(const ZuPoint& point) {
  const std::string strName = NameOf(point);
  return strName.empty() ? Json(point.GetId()) : Json(strName);
}

Json JsonLabels(const std::vector<const ZuPoint*>& points) {
  Json labels = Json::array();
  for (const ZuPoint* p : points) labels.push_back(JsonLabel(*p));
  return labels;
}

std::string LabelOf(unsigned uId, const ZuPointList& points) {
  const ZuPoint* const pPoint = points.Find(uId);
  return pPoint != nullptr ? PointLabel(*pPoint) : std::to_string(uId);
}

}  // namespace cli
