#include "zu/project/finding_list.h"

#include <algorithm>
#include <tuple>

void ZuFindingList::Add(ZuFinding finding) {
  if (++m_auCount[finding.m_eSeverity] <= kKept) m_aFindings.push_back(std::move(finding));
}

void ZuFindingList::Clear() { *this = ZuFindingList(); }

void ZuFindingList::Sort() {
  std::stable_sort(m_aFindings.begin(), m_aFindings.end(),
                   [](const ZuFinding& a, const ZuFinding& b) {
                     return std::tie(a.m_uLine, a.m_uColumn) < std::tie(b.m_uLine, b.m_uColumn);
                   });
}
