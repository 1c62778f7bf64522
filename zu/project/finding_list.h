// The findings of one file: the first hundred of each severity, and the number of all.
#pragma once

#include <cstddef>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/finding.h"

class ZU_API ZuFindingList {
 public:
  static constexpr std::size_t kKept = 100;  // of each severity

  void Add(ZuFinding finding);
  void Clear();
  // By line and column; findings of one place stay in the order in which they were met.
  void Sort();

  const std::vector<ZuFinding>& GetFindings() const { return m_aFindings; }
  // Of all, kept or not.
  std::size_t GetErrorCount() const { return m_auCount[eZuSeverityError]; }
  std::size_t GetWarningCount() const { return m_auCount[eZuSeverityWarning]; }

  std::vector<ZuFinding>::const_iterator begin() const { return m_aFindings.begin(); }
  std::vector<ZuFinding>::const_iterator end() const { return m_aFindings.end(); }

 private:
  std::vector<ZuFinding> m_aFindings;
  std::size_t m_auCount[eZuSeverityError + 1] = {};
};
