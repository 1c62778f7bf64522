// What a reader of clouds met in a file that did not say all, or not what it should: the readers
// print nothing, they hand this out beside the points.
//
//   for (const ZuCloudFinding& finding : findings) show(finding.m_uLine, finding.m_strText);
//   if (!findings.IsWhole()) ...  // points are missing
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zu/export.h"

// In order of weight. The values are given out: append, never renumber.
enum eZuCloudFinding : int {
  eZuCloudAssumed,  // the file leaves it open, the reader chose
  eZuCloudDropped,  // something that a cloud cannot hold, or text without points
  eZuCloudClamped,  // a value outside its range, taken as the nearest one inside
  eZuCloudCut,      // less than the file announces: cut or damaged; what is complete is there
  eZuCloudFault     // not readable from here on; what stands before is there
};

struct ZuCloudFinding {
  eZuCloudFinding m_eKind = eZuCloudAssumed;
  std::uint64_t m_uLine = 0;    // the first line it stands in, from 1; 0: not in a line
  std::uint64_t m_uColumn = 0;  // the character of that line, from 1; 0: the line as a whole
  std::string m_strText;        // what is wrong, and what would be right; no line end
};

class ZU_API ZuCloudFindings {
 public:
  void Add(eZuCloudFinding eKind, std::uint64_t uLine, std::uint64_t uColumn, std::string strText);
  // A fault without a line: memory ended. Takes none itself if there is none.
  void AddMemoryEnded() noexcept;
  void Clear();

  // The first of a kind; null if there is none. Good until the next change.
  const ZuCloudFinding* First(eZuCloudFinding eKind) const;

  // Nothing is missing: no finding says that the file was cut or could not be read.
  bool IsWhole() const { return !m_bMemoryEnded && !First(eZuCloudCut) && !First(eZuCloudFault); }

  bool IsEmpty() const { return m_aFindings.empty() && !m_bMemoryEnded; }
  std::vector<ZuCloudFinding>::const_iterator begin() const { return m_aFindings.begin(); }
  std::vector<ZuCloudFinding>::const_iterator end() const { return m_aFindings.end(); }

 private:
  std::vector<ZuCloudFinding> m_aFindings;  // in the order in which they were met
  bool m_bMemoryEnded = false;
};
