// One walk over the tokens of a keyword file.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "keyword_text.h"
#include "zu/foundation/parser.h"

namespace cli {

class KeywordWalk {
 public:
  KeywordWalk(const std::string& strPath, bool bPartial, KeywordText* pText);

  void TopLevel(const KeywordRule* pRules);

 private:
  // The library's tokens with their columns.
  class Parser : public ZuParser {
   public:
    unsigned Column() const;
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

  void Items(const KeywordRule* pRules, KeywordBlock* pBlock, bool bTop);
  void Item(KeywordBlock* pBlock, bool bTop);
  void UnknownItem(KeywordBlock* pBlock);
  void Stray();
  void SkipBlock();
  void SkipToBlockEnd();
  void EndOfBlock(const KeywordRule& rule);

  void Values(const KeywordRule& rule, Place place, KeywordBlock* pBlock);
  void Block(const KeywordRule& rule, Place place, KeywordBlock* pBlock);
  void Anything(bool bBlock);
  bool Pattern(const KeywordRule& rule, Place place, KeywordBlock* pBlock);
  bool Numbers(int n, const KeywordRule& rule, Place place, const std::string& strWhat);
  bool Shape(const char* szShape, const KeywordRule& rule, Place place);
  bool Trafo(bool bOlder, const KeywordRule& rule, Place place);
  void Rows(const KeywordRule& rule, KeywordBlock* pBlock);
  bool Row(const std::string& strKinds, const KeywordRule& rule, unsigned* puId);
  // Takes a value; one of the wrong kind stays in hand and is told.
  eValue Value(char cKind, const char* szKeyword, unsigned* puId = nullptr);

  void Add(eSeverity eLevel, Place place, const char* szKeyword, const std::string& strText,
           const std::string& strRight);
  void Error(Place place, const char* szKeyword, const std::string& strText,
             const std::string& strRight) {
    Add(eSeverityError, place, szKeyword, strText, strRight);
  }

  std::ifstream m_stream;
  Parser m_parser;
  KeywordText& m_result;
  const KeywordRule* m_pRules = nullptr;  // of the present block
  eZuTokentype m_eType = eZuTokenEof;
  std::string_view m_text;
  Place m_place = {0, 0};
  bool m_bCut = false;
  bool m_bPartial;
  bool m_bEndsOpen;  // the file's last byte may be the middle of a word
};

}  // namespace cli
