#include "zu/project/keyword_block.h"

#include <algorithm>

ZuKeywordPlace ZuKeywordBlock::PlaceOf(const std::string& strWanted) const {
  const auto found = m_keywords.find(strWanted);
  return found != m_keywords.end() ? found->second : ZuKeywordPlace();
}

const ZuUnknownKeyword* ZuKeywordBlock::MeantAs(const std::string& strWanted) const {
  for (const ZuUnknownKeyword& word : m_unknown) {
    if (word.m_strMeant == strWanted) return &word;
  }
  return nullptr;
}

const ZuKeywordBlock* ZuKeywordBlock::Find(const std::string& strWanted) const {
  const auto found =
      std::find_if(m_blocks.rbegin(), m_blocks.rend(),
                   [&](const ZuKeywordBlock& block) { return block.m_strKeyword == strWanted; });
  return found != m_blocks.rend() ? &*found : nullptr;
}
