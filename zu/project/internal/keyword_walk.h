// One walk over the tokens of a keyword file.
#pragma once

#include <istream>
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
  bool IsKeyword() const;  // of the present block
  size_t LineStart() const { return m_lineStarts[m_place.uLine - 1]; }

  void Items(const KeywordRule* pRules, ZuKeywordBlock* pBlock, bool bTop);
  void Item(ZuKeywordBlock* pBlock, bool bTop);
  void UnknownItem(ZuKeywordBlock* pBlock);
  void SkipUnknownValue();
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
  eZuTokentype m_eType = eZuTokenEof;
  std::string_view m_text;
  Place m_place = {0, 0};
  size_t m_uEnd = 0;  // offset behind the last token that was left
  bool m_bCut = false;
  bool m_bPartial;
  bool m_bEndsOpen;  // the file's last byte may be the middle of a word
};

}  // namespace zu::internal
