// The look at the text of a keyword file beside the reader of its records.
//
// Records take what they can use and go on: a missing value is 0.0, "182,9437" is 182, a misspelt
// keyword is skipped. For a result that somebody relies on that is not enough, so every token is
// held against the rules of its block first, and whatever differs becomes a finding with its place.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "zu/project/finding_list.h"
#include "zu/project/internal/keyword_rule.h"
#include "zu/project/keyword_block.h"

namespace zu::internal {

class KeywordText {
 public:
  // Nothing, of which nothing is known.
  KeywordText() = default;
  // Looks through the text; strFile is the file of the findings. Time grows with its size. A text
  // that ends inside a block is an error, with bPartial a warning.
  KeywordText(std::string_view text, const std::string& strFile, const KeywordRule* pRules,
              bool bPartial);

  ZuFindingList& Findings() { return m_Findings; }
  const ZuFindingList& Findings() const { return m_Findings; }
  void Add(eZuSeverity eSeverity, unsigned uLine, unsigned uColumn, const std::string& strKeyword,
           const std::string& strText, const std::string& strRight);

  // What stands at the top level, in the order of the file: known keywords as blocks, with or
  // without keywords inside, and unknown ones.
  const ZuKeywordBlock& Top() const { return m_Top; }
  const std::vector<ZuKeywordBlock>& Blocks() const { return m_Top.m_blocks; }
  // No block of a known keyword stands at the top level: this is another kind of file.
  bool IsForeign() const { return !m_bKnown; }
  // The file ends inside its last block.
  bool IsCut() const { return !Blocks().empty() && Blocks().back().m_bCut; }
  // The line stands inside a block of an unknown keyword, which is not looked into.
  bool IsSkipped(unsigned uLine) const;

 private:
  friend class KeywordWalk;

  std::string m_strFile;
  ZuFindingList m_Findings;
  ZuKeywordBlock m_Top;
  std::map<unsigned, unsigned> m_skipped;  // first and last line of unknown blocks
  bool m_bKnown = false;
};

}  // namespace zu::internal
