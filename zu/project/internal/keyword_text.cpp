#include "zu/project/internal/keyword_text.h"

#include <iterator>

#include "zu/project/internal/keyword_walk.h"

namespace zu::internal {

KeywordText::KeywordText(std::string_view text, const std::string& strFile,
                         const KeywordRule* pRules, bool bPartial)
    : m_strFile(strFile) {
  KeywordWalk(text, bPartial, this).TopLevel(pRules);
}

bool KeywordText::IsSkipped(unsigned uLine) const {
  const auto next = m_skipped.upper_bound(uLine);
  return next != m_skipped.begin() && std::prev(next)->second >= uLine;
}

void KeywordText::Add(eZuSeverity eSeverity, unsigned uLine, unsigned uColumn,
                      const std::string& strKeyword, const std::string& strText,
                      const std::string& strRight) {
  m_Findings.Add({m_strFile, uLine, uColumn, eSeverity, strKeyword, strText, strRight});
}

}  // namespace zu::internal
