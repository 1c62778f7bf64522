#include "keyword_text.h"

#include <algorithm>
#include <iterator>

#include "keyword_walk.h"

namespace cli {

unsigned KeywordBlock::LineOf(const std::string& strWanted) const {
  const auto found = keywords.find(strWanted);
  return found != keywords.end() ? found->second : 0;
}

const KeywordBlock::Unknown* KeywordBlock::MeantAs(const std::string& strWanted) const {
  for (const Unknown& word : unknown) {
    if (word.strMeant == strWanted) return &word;
  }
  return nullptr;
}

const KeywordBlock* KeywordBlock::Find(const std::string& strWanted) const {
  const auto found = std::find_if(blocks.rbegin(), blocks.rend(), [&](const KeywordBlock& block) {
    return block.strKeyword == strWanted;
  });
  return found != blocks.rend() ? &*found : nullptr;
}

KeywordText::KeywordText(const std::string& strPath, const KeywordRule* pRules, bool bPartial) {
  KeywordWalk(strPath, bPartial, this).TopLevel(pRules);
}

bool KeywordText::IsSkipped(unsigned uLine) const {
  const auto next = m_skipped.upper_bound(uLine);
  return next != m_skipped.begin() && std::prev(next)->second >= uLine;
}

void KeywordText::Add(Finding finding) {
  size_t& uCount = finding.eLevel == eSeverityError ? m_uErrors : m_uWarnings;
  if (++uCount <= kKept) m_findings.push_back(std::move(finding));
}

}  // namespace cli
