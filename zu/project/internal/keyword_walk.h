// One walk over the tokens of a keyword file.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "zu/foundation/parser.h"
#include "zu/project/internal/keyword_text.h"
#include "zu/project/internal/text_buffer.h"

namespace zu::internal {

class KeywordWalk {
 public:
  KeywordWalk(std::string_view text, bool bPartial, KeywordText* pText);

  void TopLevel(const KeywordRule* pRules);

 private:
  // The library's tokens with their columns.
  class Parser : public ZuParser {
   public:
    // From 1, in bytes; a byte order mark counts none.
    unsigned Column() const;
    // Bytes of the line up to the end of the token in hand.
    size_t End() const { return static_cast<size_t>(m_pCursor - m_acLine); }
    size_t Begin() const;
  };
  struct Place {
    unsigned uLine, uColumn;
  };
  enum eValue { eValueTaken, eValueMissing, eValueWrong };

  // The token in hand is the next one to be looked at.
  void Next(bool bTell = true);
  bool IsEnd() const { return m_eType == eZuTokenEof || m_eType == eZuTokenBlockClose; }
  bool IsLastLine();
  bool IsKeyword() const;    // of the present block
  bool HasKeywords() const;  // the present block
  size_t LineStart() const { return m_lineStarts[m_place.uLine - 1]; }

  // How often each keyword stands in a block.
  using Counts = std::map<const KeywordRule*, unsigned>;

  void Items(const KeywordRule* pRules, ZuKeywordBlock* pBlock, bool bTop);
  void Item(ZuKeywordBlock* pBlock, bool bTop, Counts* pCounts);
  void UnnamedItem(ZuKeywordBlock* pBlock);
  void UnknownItem(ZuKeywordBlock* pBlock);
  void SkipUnknownValue();
  void TellFaultyWord();
  void Stray();
  void SkipBlock();
  void SkipToBlockEnd();
  void EndOfBlock(const KeywordRule& rule);

  bool Values(const KeywordRule& rule, ZuKeywordBlock* pItem, ZuKeywordBlock* pBlock);
  void Anything(bool bBlock);
  bool Pattern(const KeywordRule& rule, Place place, ZuKeywordBlock* pBlock);
  bool Numbers(int n, const KeywordRule& rule, Place place, const std::string& strWhat);
  bool Shape(const char* szShape, const KeywordRule& rule, Place place);
  bool Trafo(bool bOlder, const KeywordRule& rule, Place place);
  void Rows(const KeywordRule& rule, ZuKeywordBlock* pBlock);
  bool Row(const std::string& strKinds, const KeywordRule& rule, unsigned* puId);
  // Takes a value; one of the wrong kind stays in hand and is told.
  eValue Value(char cKind, const char* szKeyword, unsigned* puId = nullptr);

  // Comments that were met and belong to nothing yet.
  struct Comment {
    size_t uAt;      // offset
    bool bSameLine;  // as the token before it
    std::string_view text;
  };
  using Comments = std::vector<ZuFileComment>;

  void FindComments(size_t uEnd);
  void Give(ZuFileComment comment, eZuCommentPlace ePlace, size_t uCount, Comments* pComments);
  void GiveAbove(const ZuFileComment& whose, Comments* pComments) {
    Give(whose, eZuCommentAbove, m_comments.size(), pComments);
  }
  void GiveOpen(const ZuFileComment& whose, Comments* pComments) {
    Give(whose, eZuCommentOpen, IsCommentOnLine() ? 1 : 0, pComments);
  }
  void GiveEnd(const ZuFileComment& whose, Comments* pComments) {
    Give(whose, eZuCommentEnd, m_comments.size(), pComments);
  }
  void GiveBehind(const ZuFileComment& whose, Comments* pComments);
  // Behind the token before the one in hand.
  std::vector<Comment>::const_iterator FirstBehind() const;
  bool IsCommentOnLine() const { return !m_comments.empty() && m_comments.front().bSameLine; }

  void Add(eZuSeverity eSeverity, Place place, const char* szKeyword, const std::string& strText,
           const std::string& strRight);
  void Error(Place place, const char* szKeyword, const std::string& strText,
             const std::string& strRight) {
    Add(eZuSeverityError, place, szKeyword, strText, strRight);
  }

  std::string_view m_whole;
  std::vector<size_t> m_lineStarts;  // offsets
  TextBuffer m_buffer;
  std::istream m_stream;
  Parser m_parser;
  KeywordText& m_result;
  const KeywordRule* m_pRules = nullptr;  // of the present block
  const char* m_szLast = "";              // the last known keyword in it
  unsigned m_uNumber = 1;                 // of those of its name in it
  std::vector<Comment> m_comments;
  eZuTokentype m_eType = eZuTokenEof;
  bool m_bFaulty = false;  // the token in hand: a word with letters that begins with none
  std::string_view m_text;
  Place m_place = {0, 0};
  size_t m_uEnd = 0;  // offset behind the last token that was left
  bool m_bCut = false;
  bool m_bPartial;
  bool m_bEndsOpen;  // the file's last byte may be the middle of a word
};

}  // namespace zu::internal
