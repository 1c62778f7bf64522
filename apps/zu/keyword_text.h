// The look at the text of a keyword file beside the reader of its records.
//
// Records take what they can use and go on: a missing value is 0.0, "182,9437" is 182, a misspelt
// keyword is skipped. For a result that somebody relies on that is not enough, so every token is
// held against the rules of its block first, and whatever differs becomes a finding with its place.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "finding.h"

namespace cli {

// The values of a keyword, one character each; blanks separate for the eye only:
//   u  id, a whole number from 1 to 4294967295      i  whole number of 32 bits
//   n  number, finite                               t  "text"
//   ?  the value behind it may be missing
//   M33  a matrix: its rows and columns, then its elements        V3  a vector alike
//   F  plane transformation: type and coefficients                G  its older form
//   (unn)  any number of rows, each on a line of its own
//   *  anything; what begins as a number must be one
// A keyword's values may stand in braces or not. The keyword "" is a block without keyword.
struct KeywordRule {
  const char* szKeyword;
  const char* szValues;                 // null for a block of keywords
  const KeywordRule* pBlock = nullptr;  // its rules; the last one has a null keyword
  bool bVital = false;  // misspelt, with a block, it is an error: all of the block would be lost
};

// A block of keywords as it stands in the file.
struct KeywordBlock {
  struct Unknown {
    unsigned uLine, uColumn;
    std::string strWritten, strMeant;  // strMeant: a keyword that is missing and spelt nearly so
  };
  struct Row {
    unsigned uId, uLine, uFirstLine;
  };

  // Line of a keyword's first place, 0 where it does not stand.
  unsigned LineOf(const std::string& strWanted) const;
  bool Has(const std::string& strWanted) const { return LineOf(strWanted) != 0; }
  // The unknown keyword that was meant as this one; null without.
  const Unknown* MeantAs(const std::string& strWanted) const;
  // The last inner block of that keyword; null without.
  const KeywordBlock* Find(const std::string& strWanted) const;

  std::string strKeyword;
  unsigned uLine = 0, uColumn = 0;
  unsigned uId = 0;                          // the first id among its values
  std::map<std::string, unsigned> keywords;  // known ones, with their first lines
  std::vector<Unknown> unknown;
  std::vector<KeywordBlock> blocks;
  std::vector<Row> doubled;  // rows whose id stood before
  bool bCut = false;         // the file ends inside
  bool bLastRowCut = false;  // and perhaps inside the last number of its last row
};

class KeywordText {
 public:
  static constexpr size_t kKept = 100;

  // Looks through the file. Time grows with its size; the first kKept findings of each kind are
  // kept, the others counted. A file that ends inside a block is an error, with bPartial a warning.
  KeywordText(const std::string& strPath, const KeywordRule* pRules, bool bPartial);

  const std::vector<Finding>& Findings() const { return m_findings; }
  size_t Errors() const { return m_uErrors; }
  size_t Warnings() const { return m_uWarnings; }
  void Add(Finding finding);

  // The top-level blocks of keywords in the order of the file.
  const std::vector<KeywordBlock>& Blocks() const { return m_blocks; }
  // No block of a known keyword stands at the top level: this is another kind of file.
  bool IsForeign() const { return !m_bKnown; }
  // The line stands inside a block of an unknown keyword, which is not looked into.
  bool IsSkipped(unsigned uLine) const;

 private:
  friend class KeywordWalk;

  std::vector<Finding> m_findings;
  size_t m_uErrors = 0, m_uWarnings = 0;
  std::vector<KeywordBlock> m_blocks;
  std::map<unsigned, unsigned> m_skipped;  // first and last line of unknown blocks
  bool m_bKnown = false;
};

}  // namespace cli
