#include "keyword_walk.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <unordered_map>

#include "number_text.h"

namespace cli {

namespace {

constexpr size_t kTextShown = 40;                    // characters of the file in a message
constexpr int kCoefficients[] = {0, 4, 6, 8, 20};    // of a plane transformation, by type
constexpr int kCoefficientsOlder[] = {8, 6, 4, 20};  // by code of the older form
constexpr int kNoType = -1;

std::string Shown(std::string_view text) {
  return "\"" + std::string(text.substr(0, kTextShown)) +
         (text.size() > kTextShown ? "...\"" : "\"");
}

// Of 32 bits.
bool ParseWhole(std::string_view text, int* piValue) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  const char* const pEnd = text.data() + text.size();
  const auto result = std::from_chars(text.data(), pEnd, *piValue);
  return result.ec == std::errc() && result.ptr == pEnd;
}

bool IsNumber(std::string_view text) {
  double dValue = 0.0;
  return ParseNumber(text, &dValue);
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
      return "a whole number";
    case 'n':
      return "a finite number";
    default:
      return "a \"text\"";
  }
}

// What would be right in the place of a word that should be a number.
std::string RightNumber(char cKind, std::string_view text) {
  std::string strPoint(text);
  const size_t uComma = strPoint.find(',');
  if (uComma == std::string::npos) return NameOf(cKind);
  strPoint[uComma] = '.';
  return IsNumber(strPoint) ? strPoint : "numbers with blanks between them";
}

// Letters to exchange, add or drop, and neighbours to swap, until one word is the other; case apart
// (F. J. Damerau: A technique for computer detection and correction of spelling errors, 1964).
size_t Distance(std::string_view a, std::string_view b) {
  const auto same = [](char x, char y) { return (x | 0x20) == (y | 0x20); };
  std::vector<size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t uExchange = last[j - 1] + (same(a[i - 1], b[j - 1]) ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, uExchange});
      if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before = last;
    last = row;
  }
  return last[b.size()];
}

const KeywordRule* FindRule(const KeywordRule* pRules, std::string_view keyword) {
  for (; pRules->szKeyword != nullptr; ++pRules) {
    if (keyword == pRules->szKeyword) return pRules;
  }
  return nullptr;
}

// The keyword that an unknown one is spelt nearly like: one letter off, two where it is long.
// Blocks may stand several times; other keywords that the block has are not meant.
std::string Nearest(const KeywordRule* pRules, const KeywordBlock& block,
                    std::string_view written) {
  std::string strNearest;
  size_t uLeast = written.size() < 5 ? 2 : 3;
  if (written.size() > kTextShown) return strNearest;
  for (; pRules->szKeyword != nullptr; ++pRules) {
    const size_t uDistance = Distance(written, pRules->szKeyword);
    const size_t uLength = std::max(written.size(), std::strlen(pRules->szKeyword));
    if (uDistance >= uLeast || uDistance >= uLength) continue;
    if (pRules->szValues != nullptr && block.Has(pRules->szKeyword)) continue;
    uLeast = uDistance;
    strNearest = pRules->szKeyword;
  }
  return strNearest;
}

bool EndsInsideWord(const std::string& strPath) {
  std::ifstream stream(strPath, std::ios::binary | std::ios::ate);
  if (!stream || stream.tellg() <= 0) return false;
  stream.seekg(-1, std::ios::end);
  return std::strchr(" \t\r\n{}\"", stream.get()) == nullptr;
}

}  // namespace

unsigned KeywordWalk::Parser::Column() const {
  const bool bMark = m_Status.m_uLine == 1 && std::strncmp(m_acLine, "\xEF\xBB\xBF", 3) == 0;
  const auto nOffset = m_pToken - m_acLine - (bMark ? 3 : 0);
  return static_cast<unsigned>(nOffset) + (m_Token.m_eType == eZuTokenString ? 0 : 1);
}

KeywordWalk::KeywordWalk(const std::string& strPath, bool bPartial, KeywordText* pText)
    : m_stream(strPath, std::ios::binary),
      m_result(*pText),
      m_bPartial(bPartial),
      m_bEndsOpen(EndsInsideWord(strPath)) {}

void KeywordWalk::TopLevel(const KeywordRule* pRules) {
  KeywordBlock top;
  Next();
  Items(pRules, &top, true);
  m_result.m_blocks = std::move(top.blocks);
}

void KeywordWalk::Next(bool bTell) {
  const eZuParserStatus eFault = m_parser.ReadToken(m_stream);
  const ZuParserToken& token = m_parser.GetToken();
  m_eType = token.m_eType;
  m_text = token.m_szText;
  if (m_eType != eZuTokenString) m_text = m_text.substr(0, m_text.find('}', 1));
  m_place = {m_parser.GetStatus().m_uLine, m_eType == eZuTokenEof ? 0 : m_parser.Column()};
  if (eFault == ParserErrorStream) {
    Error({m_place.uLine, 0}, "", "cannot be read on", "lines of at most 8511 characters");
  } else if (eFault == ParserErrorUnterminatedString && bTell && !IsLastLine()) {
    Error(m_place, "", "a text is not closed", "\"text\" on one line");
  }
}

// A text that the end of the file leaves open is cut, and told as that.
bool KeywordWalk::IsLastLine() { return m_stream.peek() == std::ifstream::traits_type::eof(); }

bool KeywordWalk::IsKeyword() const {
  return m_eType == eZuTokenKeyword && FindRule(m_pRules, m_text) != nullptr;
}

void KeywordWalk::Add(eSeverity eLevel, Place place, const char* szKeyword,
                      const std::string& strText, const std::string& strRight) {
  m_result.Add({eLevel, place.uLine, place.uColumn, szKeyword, strText, strRight});
}

// Keywords with their values up to the } of their block, which stays in hand.
void KeywordWalk::Items(const KeywordRule* pRules, KeywordBlock* pBlock, bool bTop) {
  const KeywordRule* const pOuter = m_pRules;
  m_pRules = pRules;
  while (m_eType != eZuTokenEof && (bTop || m_eType != eZuTokenBlockClose)) {
    if (m_eType == eZuTokenBlockClose) {
      Error(m_place, "", "a } without its {", "one } for each {");
      Next();
    } else if (m_eType == eZuTokenKeyword) {
      Item(pBlock, bTop);
    } else if (const KeywordRule* pRule = FindRule(pRules, "");
               pRule != nullptr && m_eType == eZuTokenBlockOpen) {
      m_result.m_bKnown = true;
      Values(*pRule, m_place, pBlock);
    } else {
      Stray();
    }
  }
  m_pRules = pOuter;
}

void KeywordWalk::Item(KeywordBlock* pBlock, bool bTop) {
  const KeywordRule* pRule = FindRule(m_pRules, m_text);
  if (pRule == nullptr) return UnknownItem(pBlock);
  const Place place = m_place;
  pBlock->keywords.emplace(pRule->szKeyword, place.uLine);
  Next();
  if (bTop && m_eType == eZuTokenBlockOpen) m_result.m_bKnown = true;
  Values(*pRule, place, pBlock);
  if (!bTop || !m_bCut) return;
  Add(m_bPartial ? eSeverityWarning : eSeverityError, place, pRule->szKeyword,
      std::string("the file ends inside ") + pRule->szKeyword + " { ... }",
      m_bPartial ? "" : "the whole file, or --partial for what is there");
  m_bCut = false;
}

void KeywordWalk::UnknownItem(KeywordBlock* pBlock) {
  const std::string strWritten(m_text.substr(0, kTextShown));
  const std::string strMeant = Nearest(m_pRules, *pBlock, m_text);
  if (pBlock->unknown.size() < KeywordText::kKept) {
    pBlock->unknown.push_back({m_place.uLine, m_place.uColumn, strWritten, strMeant});
  }
  const Place place = m_place;
  const KeywordRule* pMeant = FindRule(m_pRules, strMeant);
  Next();
  const bool bLost = pMeant != nullptr && pMeant->bVital && m_eType == eZuTokenBlockOpen;
  Add(bLost ? eSeverityError : eSeverityWarning, place, strWritten.c_str(),
      "unknown keyword " + strWritten + " skipped", strMeant);
  if (m_eType == eZuTokenBlockOpen) {
    SkipBlock();
  } else if (!IsEnd()) {
    Next();
  }
}

// What stands where a keyword should.
void KeywordWalk::Stray() {
  const bool bBlock = m_eType == eZuTokenBlockOpen;
  Error(m_place, "", (bBlock ? "a block" : Shown(m_text)) + " stands here", "a keyword");
  if (bBlock) return SkipBlock();
  while (!IsEnd() && m_eType != eZuTokenKeyword && m_eType != eZuTokenBlockOpen) Next();
}

// From a { in hand to behind its }. What stands inside is not looked at.
void KeywordWalk::SkipBlock() {
  const unsigned uFirst = m_place.uLine;
  Next(false);
  SkipToBlockEnd();
  unsigned& uLast = m_result.m_skipped[uFirst];
  uLast = std::max(uLast, m_place.uLine);
  if (m_eType == eZuTokenEof) m_bCut = true;
  if (m_eType == eZuTokenBlockClose) Next();
}

// To the } of the block in which the token in hand stands.
void KeywordWalk::SkipToBlockEnd() {
  for (int iOpen = 0; m_eType != eZuTokenEof; Next(false)) {
    if (m_eType == eZuTokenBlockOpen) ++iOpen;
    if (m_eType == eZuTokenBlockClose && iOpen-- == 0) return;
  }
}

void KeywordWalk::Values(const KeywordRule& rule, Place place, KeywordBlock* pBlock) {
  const bool bBraces = m_eType == eZuTokenBlockOpen;
  const bool bRows = rule.szValues != nullptr && rule.szValues[0] == '(';
  if (m_eType == eZuTokenEof) {
    m_bCut = true;
    return;
  }
  if (!bBraces && (rule.szValues == nullptr || bRows)) {
    Error(place, rule.szKeyword, std::string(rule.szKeyword) + " without its block",
          std::string(rule.szKeyword) + " { ... }");
    return;
  }
  if (bBraces) Next();
  if (rule.szValues == nullptr) return Block(rule, place, pBlock);
  bool bWhole = true;
  if (bRows) {
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
    while (!IsEnd() && m_eType != eZuTokenKeyword) Next();
  }
}

void KeywordWalk::Block(const KeywordRule& rule, Place place, KeywordBlock* pBlock) {
  KeywordBlock block;
  block.strKeyword = rule.szKeyword;
  block.uLine = place.uLine;
  block.uColumn = place.uColumn;
  Items(rule.pBlock, &block, false);
  EndOfBlock(rule);
  block.bCut = m_bCut;
  pBlock->blocks.push_back(std::move(block));
}

// Values that a newer writer added are dropped by the records.
void KeywordWalk::EndOfBlock(const KeywordRule& rule) {
  if (!IsEnd()) {
    Add(eSeverityWarning, m_place, rule.szKeyword,
        std::string(rule.szKeyword) + ": further values, from " + Shown(m_text) + " on, dropped",
        "");
    SkipToBlockEnd();
  }
  if (m_eType == eZuTokenEof) m_bCut = true;
  if (m_eType == eZuTokenBlockClose) Next();
}

void KeywordWalk::Anything(bool bBlock) {
  for (int iOpen = 0; m_eType != eZuTokenEof; Next()) {
    if (m_eType == eZuTokenBlockOpen) ++iOpen;
    if (m_eType == eZuTokenBlockClose && iOpen-- == 0) return;
    if (!bBlock && iOpen == 0 && IsKeyword()) return;
    if (m_eType == eZuTokenString || !BeginsAsNumber(m_text) || IsNumber(m_text)) continue;
    Error(m_place, "", Shown(m_text) + " is no number", RightNumber('n', m_text));
  }
}

KeywordWalk::eValue KeywordWalk::Value(char cKind, const char* szKeyword, unsigned* puId) {
  if (IsEnd() || m_eType == eZuTokenBlockOpen || IsKeyword()) return eValueMissing;
  const bool bText = m_eType == eZuTokenString;
  unsigned uId = 0;
  int iWhole = 0;
  const bool bGood = cKind == 't'   ? bText
                     : bText        ? false
                     : cKind == 'n' ? IsNumber(m_text)
                     : cKind == 'i' ? ParseWhole(m_text, &iWhole)
                                    : ParseId(m_text, &uId);
  if (!bGood) {
    const std::string strWhat = cKind == 'u' ? "id" : cKind == 'n' ? "number" : NameOf(cKind) + 2;
    Error(m_place, szKeyword, Shown(m_text) + " is no " + strWhat,
          cKind == 't' ? NameOf(cKind) : RightNumber(cKind, m_text));
    return eValueWrong;
  }
  if (puId != nullptr && cKind == 'u') *puId = uId;
  Next();
  return eValueTaken;
}

// False: the values end early, or one is wrong; told.
bool KeywordWalk::Pattern(const KeywordRule& rule, Place place, KeywordBlock* pBlock) {
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
    switch (Value(*p, rule.szKeyword, pBlock->uId == 0 ? &pBlock->uId : nullptr)) {
      case eValueTaken:
        ++iGiven;
        break;
      case eValueWrong:
        return false;
      case eValueMissing:
        if (bOptional) break;
        if (m_eType == eZuTokenEof) return false;
        Error(place, rule.szKeyword,
              std::string(rule.szKeyword) + " ends after " + std::to_string(iGiven) +
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
  ParseWhole(m_text, &iType);
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

void KeywordWalk::Rows(const KeywordRule& rule, KeywordBlock* pBlock) {
  const std::string strKinds(rule.szValues + 1, std::strlen(rule.szValues) - 2);
  std::unordered_map<unsigned, unsigned> lines;
  bool bWhole = false;
  while (!IsEnd()) {
    if (m_eType == eZuTokenBlockOpen) {
      Stray();
      continue;
    }
    const unsigned uLine = m_place.uLine;
    unsigned uId = 0;
    bWhole = Row(strKinds, rule, &uId);
    if (!bWhole) continue;
    const auto [place, bFirst] = lines.emplace(uId, uLine);
    if (!bFirst) pBlock->doubled.push_back({uId, uLine, place->second});
  }
  pBlock->bLastRowCut = m_eType == eZuTokenEof && bWhole && m_bEndsOpen;
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
        Error(m_place, rule.szKeyword, Shown(m_text) + " stands in a row", "numbers");
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

}  // namespace cli
