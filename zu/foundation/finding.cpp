#include "zu/foundation/finding.h"

const char* GetZuSeverityText(eZuSeverity eSeverity) {
  switch (eSeverity) {
    case eZuSeverityNote:
      return "note";
    case eZuSeverityWarning:
      return "warning";
    default:
      return "error";
  }
}

std::string GetZuFindingPlace(const ZuFinding& finding) {
  std::string strPlace = finding.m_strFile;
  if (finding.m_uLine == 0) return strPlace;
  strPlace += (strPlace.empty() ? "" : ":") + std::to_string(finding.m_uLine);
  if (finding.m_uColumn > 0) strPlace += ":" + std::to_string(finding.m_uColumn);
  return strPlace;
}

std::string GetZuFindingText(const ZuFinding& finding) {
  if (finding.m_strRight.empty()) return finding.m_strText;
  return finding.m_strText + "; " + finding.m_strRight + " would be right";
}

std::string GetZuFindingLine(const ZuFinding& finding) {
  const std::string strPlace = GetZuFindingPlace(finding);
  return strPlace + (strPlace.empty() ? "" : ": ") + GetZuSeverityText(finding.m_eSeverity) + ": " +
         GetZuFindingText(finding);
}
