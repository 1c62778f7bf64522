// The values of keywords, held against their rules.
#include <cstring>
#include <unordered_map>

#include "zu/foundation/number_text.h"
#include "zu/project/internal/keyword_walk.h"

namespace zu::internal {

namespace {

constexpr int kCoefficients[] = {0, 4, 6, 8, 20};    // of a plane transformation, by type
constexpr int kCoefficientsOlder[] = {8, 6, 4, 20};  // by code of the older form
constexpr int kNoType = -1;

bool IsNumber(std::string_view text) {
  double dValue = 0.0;
  return ZuParseNumber(text, &dValue);
}

bool BeginsAsNumber(std::string_view text) {
  return !text.empty() && std::strchr("+-.,0123456789", text[0]) != nullptr &&
         text.find_first_of("0123456789") != std::string_view::npos;
}

const char* NameOf(char cKind) {
  switch (cKind) {
    case 'u':
      return "a whole number from 1 to 4294967295";
    case 'i':
    case 'k':
      return "a whole number";
    case 'n':
      return "a finite number";
    default:
      return "a \"text\"";
  }
}

std::string WhatOf(const KeywordRule& rule) {
  return rule.szKeyword[0] != 0 ? rule.szKeyword : "the block";
}

// What would be right in the place of a word that should be a number.
std::string RightNumber(char cKind, std::string_view text) {
  std::string strPoint(text);
  const size_t uComma = strPoint.find(',');
  if (uComma == std::string::npos) return NameOf(cKind);
  strPoint[uComma] = '.';
  return IsNumber(strPoint) ? strPoint : "numbers with blanks between them";
}

}  // namespace

// The values of a keyword, or its block; false where there are none. Ids and rows are those of
// pBlock.
bool KeywordWalk::Values(const KeywordRule& rule, ZuKeywordBlock* pItem, ZuKeywordBlock* pBlock) {
  const Place place = {pItem->m_uLine, pItem->m_uColumn};
  const bool bBraces = m_eType == eZuTokenBlockOpen;
  const bool bRows = rule.szValues != nullptr && std::strchr("([", rule.szValues[0]) != nullptr;
  if (m_eType == eZuTokenEof) {
    m_bCut = true;
    return false;
  }
  if (!bBraces && (rule.szValues == nullptr || bRows)) {
    Error(place, rule.szKeyword, std::string(rule.szKeyword) + " without its block",
          std::string(rule.szKeyword) + " { ... }");
    return false;
  }
  if (bBraces) Next();
  bool bWhole = true;
  if (rule.szValues == nullptr) {
    Items(rule.pBlock, pItem, false);
  } else if (bRows) {
    Rows(rule, pBlock);
  } else if (rule.szValues[0] == '*') {
    Anything(bBraces);
  } else {
    bWhole = Pattern(rule, place, pBlock);
  }
  if (bBraces) {
    if (!bWhole) SkipToBlockEnd();
    EndOfBlock(rule);
  } else if (!bWhole) {
    if (!IsEnd() && !IsKeyword()) Next();  // the wrong value
    while (!IsEnd() && m_eType != eZuTokenKeyword) Next();
  }
  return true;
}

void KeywordWalk::Anything(bool bBlock) {
  for (int iOpen = 0; m_eType != eZuTokenEof; Next()) {
    if (m_eType == eZuTokenBlockOpen) ++iOpen;
    if (m_eType == eZuTokenBlockClose && iOpen-- == 0) return;
    if (!bBlock && iOpen == 0 && IsKeyword()) return;
    if (m_eType == eZuTokenString || !BeginsAsNumber(m_text) || IsNumber(m_text)) continue;
    Error(m_place, "", ZuQuoted(m_text) + " is no number", RightNumber('n', m_text));
  }
}

KeywordWalk::eValue KeywordWalk::Value(char cKind, const char* szKeyword, unsigned* puId) {
  if (IsEnd() || m_eType == eZuTokenBlockOpen || IsKeyword()) return eValueMissing;
  const bool bText = m_eType == eZuTokenString;
  unsigned uId = 0;
  int iWhole = 0;
  const bool bGood = cKind == 't'                   ? bText
                     : bText                        ? false
                     : cKind == 'n'                 ? IsNumber(m_text)
                     : cKind == 'i' || cKind == 'k' ? ZuParseWhole(m_text, &iWhole)
                                                    : ZuParseId(m_text, &uId);
  if (!bGood) {
    const std::string strWhat = cKind == 'u' ? "id" : cKind == 'n' ? "number" : NameOf(cKind) + 2;
    Error(m_place, szKeyword, ZuQuoted(m_text) + " is no " + strWhat,
          cKind == 't' ? NameOf(cKind) : RightNumber(cKind, m_text));
    return eValueWrong;
  }
  if (puId != nullptr && cKind == 'u') *puId = uId;
  if (puId != nullptr && cKind == 'k') *puId = static_cast<unsigned>(iWhole);
  Next();
  return eValueTaken;
}

// False: the values end early, or one is wrong; told.
bool KeywordWalk::Pattern(const KeywordRule& rule, Place place, ZuKeywordBlock* pBlock) {
  int iGiven = 0;
  for (const char* p = rule.szValues; *p != 0; ++p) {
    if (*p == ' ') continue;
    if (*p == 'M' || *p == 'V') return Shape(p, rule, place);
    if (*p == 'F' || *p == 'G') {
      if (!Trafo(*p == 'G', rule, place)) return false;
      continue;
    }
    const bool bOptional = *p == '?';
    if (bOptional) ++p;
    switch (Value(*p, rule.szKeyword, pBlock->m_uId == 0 ? &pBlock->m_uId : nullptr)) {
      case eValueTaken:
        ++iGiven;
        break;
      case eValueWrong:
        return false;
      case eValueMissing:
        if (bOptional) break;
        if (m_eType == eZuTokenEof) return false;
        Error(place, rule.szKeyword,
              WhatOf(rule) + " ends after " + std::to_string(iGiven) +
                  (iGiven == 1 ? " value" : " values"),
              std::string(NameOf(*p)) + " more");
        return false;
    }
  }
  return true;
}

bool KeywordWalk::Numbers(int n, const KeywordRule& rule, Place place, const std::string& strWhat) {
  for (int i = 0; i < n; ++i) {
    switch (Value('n', rule.szKeyword)) {
      case eValueTaken:
        break;
      case eValueMissing:
        if (m_eType != eZuTokenEof) {
          Error(place, rule.szKeyword,
                std::string(rule.szKeyword) + " has " + std::to_string(i) + " of " +
                    std::to_string(n) + " " + strWhat,
                "all " + std::to_string(n));
        }
        return false;
      case eValueWrong:
        return false;
    }
  }
  return true;
}

// "M33" or "V3".
bool KeywordWalk::Shape(const char* szShape, const KeywordRule& rule, Place place) {
  int iElements = 1;
  std::string strIs, strRight;
  for (const char* p = szShape + 1; *p != 0; ++p) {
    const Place size = m_place;
    const std::string strGiven(m_text);
    if (Value('i', rule.szKeyword) != eValueTaken) {
      if (m_eType != eZuTokenEof && IsEnd()) {
        Error(size, rule.szKeyword, std::string(rule.szKeyword) + " without its size", szShape + 1);
      }
      return false;
    }
    strIs += (strIs.empty() ? "" : "x") + strGiven;
    strRight += (strRight.empty() ? "" : "x") + std::string(1, *p);
    iElements *= *p - '0';
  }
  if (strIs == strRight) return Numbers(iElements, rule, place, "elements");
  Error(place, rule.szKeyword, std::string(rule.szKeyword) + " of " + strIs + " elements",
        strRight + " elements");
  return false;
}

bool KeywordWalk::Trafo(bool bOlder, const KeywordRule& rule, Place place) {
  const Place type = m_place;
  int iType = kNoType;
  ZuParseWhole(m_text, &iType);
  switch (Value('i', rule.szKeyword)) {
    case eValueTaken:
      break;
    case eValueMissing:
      if (m_eType != eZuTokenEof) {
        Error(place, rule.szKeyword, std::string(rule.szKeyword) + " is empty",
              "a type and its coefficients");
      }
      return false;
    case eValueWrong:
      return false;
  }
  const int* const pTable = bOlder ? kCoefficientsOlder : kCoefficients;
  const int iTypes =
      static_cast<int>(bOlder ? std::size(kCoefficientsOlder) : std::size(kCoefficients));
  if (iType < 0 || iType >= iTypes) {
    if (bOlder) return true;  // other codes mean that there is none
    Error(type, rule.szKeyword,
          std::string(rule.szKeyword) + ": type " + std::to_string(iType) +
              " is no plane transformation",
          "1 Helmert, 2 affine, 3 projective or 4 polynomial");
    return false;
  }
  return Numbers(pTable[iType], rule, place, "coefficients");
}

void KeywordWalk::Rows(const KeywordRule& rule, ZuKeywordBlock* pBlock) {
  const std::string strKinds(rule.szValues + 1, std::strlen(rule.szValues) - 2);
  std::unordered_map<unsigned, unsigned> lines;
  ZuFileComment whose;
  whose.m_strKeyword = rule.szKeyword;
  whose.m_uNumber = m_uNumber;
  GiveOpen(whose, &pBlock->m_comments);
  const bool bPoints = rule.szValues[0] == '(';
  bool bWhole = false;
  while (!IsEnd()) {
    if (m_eType == eZuTokenBlockOpen) {
      Stray();
      continue;
    }
    const Place row = m_place;
    unsigned uId = 0;
    const size_t uComments = pBlock->m_comments.size();
    ++whose.m_uRow;
    GiveAbove(whose, &pBlock->m_comments);
    bWhole = Row(strKinds, rule, &uId);
    GiveBehind(whose, &pBlock->m_comments);
    for (size_t u = uComments; u < pBlock->m_comments.size(); ++u) {
      pBlock->m_comments[u].m_uId = uId;
    }
    if (!bWhole || !bPoints) continue;
    pBlock->m_rows.push_back({row.uLine, row.uColumn});
    const auto [place, bFirst] = lines.emplace(uId, row.uLine);
    if (!bFirst) pBlock->m_doubled.push_back({uId, row.uLine, place->second, row.uColumn});
  }
  whose.m_uRow = 0;
  GiveEnd(whose, &pBlock->m_comments);
  if (!bPoints) return;
  pBlock->m_bLastRowCut = m_eType == eZuTokenEof && bWhole && m_bEndsOpen;
}

// One row, or what of it stands on its line.
bool KeywordWalk::Row(const std::string& strKinds, const KeywordRule& rule, unsigned* puId) {
  const Place place = m_place;
  for (size_t i = 0; i < strKinds.size(); ++i) {
    const bool bLineEnds = i > 0 && (IsEnd() || m_place.uLine != place.uLine);
    if (!bLineEnds) {
      const eValue eTaken = Value(strKinds[i], rule.szKeyword, puId);
      if (eTaken == eValueTaken) continue;
      if (eTaken == eValueMissing && m_eType == eZuTokenKeyword) {
        Error(m_place, rule.szKeyword, ZuQuoted(m_text) + " stands in a row", "numbers");
      }
      while (!IsEnd() && m_eType != eZuTokenBlockOpen && m_place.uLine == place.uLine) Next();
      return false;
    }
    if (m_eType == eZuTokenEof) return false;
    Error(place, rule.szKeyword,
          "row of point " + std::to_string(*puId) + " ends after " + std::to_string(i) + " of " +
              std::to_string(strKinds.size()) + " values",
          strKinds.size() == 3 ? "id x y on one line" : "all values on one line");
    return false;
  }
  return true;
}

}  // namespace zu::internal
