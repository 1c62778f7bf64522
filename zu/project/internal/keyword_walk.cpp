#include "zu/project/internal/keyword_walk.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "zu/foundation/number_text.h"

namespace zu::internal {

namespace {

constexpr size_t kTextShown = 40;  // bytes of the file in a message

// Offsets of the lines of a text.
std::vector<size_t> LineStarts(std::string_view text) {
  std::vector<size_t> starts = {0};
  for (size_t u = text.find('\n'); u != text.npos; u = text.find('\n', u + 1)) {
    starts.push_back(u + 1);
  }
  return starts;
}

}  // namespace

size_t KeywordWalk::Parser::Begin() const {
  return static_cast<size_t>(m_pToken - m_acLine) - (m_Token.m_eType == eZuTokenString ? 1 : 0);
}

unsigned KeywordWalk::Parser::Column() const {
  const bool bMark = m_Status.m_uLine == 1 && std::strncmp(m_acLine, "\xEF\xBB\xBF", 3) == 0;
  return static_cast<unsigned>(Begin()) + 1 - (bMark ? 3 : 0);
}

KeywordWalk::KeywordWalk(std::string_view text, bool bPartial, KeywordText* pText)
    : m_whole(text),
      m_lineStarts(LineStarts(text)),
      m_buffer(text),
      m_stream(&m_buffer),
      m_result(*pText),
      m_bPartial(bPartial),
      m_bEndsOpen(!text.empty() && std::strchr(" \t\r\n{}\"", text.back()) == nullptr) {}

void KeywordWalk::TopLevel(const KeywordRule* pRules) {
  Next();
  Items(pRules, &m_result.m_Top, true);
}

void KeywordWalk::Next(bool bTell) {
  const bool bFirst = m_place.uLine == 0;
  if (!bFirst && m_eType == eZuTokenEof) return;
  if (!bFirst) m_uEnd = LineStart() + m_parser.End();
  const eZuParserStatus eFault = m_parser.ReadToken(m_stream);
  const ZuParserToken& token = m_parser.GetToken();
  m_eType = token.m_eType;
  m_bFaulty = eFault == ParserErrorInvalidNumber;
  m_text = token.m_szText;
  if (m_eType != eZuTokenString) m_text = m_text.substr(0, m_text.find('}', 1));
  m_place = {m_parser.GetStatus().m_uLine, m_eType == eZuTokenEof ? 0 : m_parser.Column()};
  if (eFault != ParserErrorStream) {
    FindComments(m_eType == eZuTokenEof ? m_whole.size() : LineStart() + m_parser.Begin());
  }
  if (eFault == ParserErrorStream) {
    Error({m_place.uLine, 0}, "", "cannot be read on", "lines of at most 8511 characters");
  } else if (eFault == ParserErrorUnterminatedString && bTell && !IsLastLine()) {
    Error(m_place, "", "a text is not closed", "\"text\" on one line");
  }
}

// Between two tokens stand blanks and comments alone.
void KeywordWalk::FindComments(size_t uEnd) {
  if (uEnd <= m_uEnd) return;
  const std::string_view between = m_whole.substr(m_uEnd, uEnd - m_uEnd);
  bool bSameLine = m_uEnd > 0;
  for (size_t u = between.find_first_of(";!\n"); u != between.npos;
       u = between.find_first_of(";!\n", u)) {
    if (between[u] == '\n') {
      bSameLine = false;
      ++u;
      continue;
    }
    const std::string_view text = between.substr(u, between.find('\n', u) - u);
    const size_t uLength = text.find_last_not_of(" \t\r") + 1;
    m_comments.push_back({m_uEnd + u, bSameLine, text.substr(0, uLength)});
    u += text.size();
  }
}

// The first ones, in their order.
void KeywordWalk::Give(ZuFileComment comment, eZuCommentPlace ePlace, size_t uCount,
                       Comments* pComments) {
  if (uCount == 0) return;
  comment.m_ePlace = ePlace;
  const auto pEnd = m_comments.begin() + static_cast<std::ptrdiff_t>(uCount);
  for (auto p = m_comments.begin(); p != pEnd; ++p) {
    comment.m_strText = p->text;
    pComments->push_back(comment);
  }
  m_comments.erase(m_comments.begin(), pEnd);
}

std::vector<KeywordWalk::Comment>::const_iterator KeywordWalk::FirstBehind() const {
  return std::find_if(m_comments.begin(), m_comments.end(),
                      [this](const Comment& comment) { return comment.uAt >= m_uEnd; });
}

// Of what ends with the token before the one in hand: comments inside, which have no place of their
// own, then one at its end.
void KeywordWalk::GiveBehind(const ZuFileComment& whose, Comments* pComments) {
  const auto uInside = static_cast<size_t>(FirstBehind() - m_comments.begin());
  Give(whose, eZuCommentAbove, uInside, pComments);
  Give(whose, eZuCommentBehind, IsCommentOnLine() ? 1 : 0, pComments);
}

// A text that the end of the file leaves open is cut, and told as that.
bool KeywordWalk::IsLastLine() { return m_stream.peek() == std::istream::traits_type::eof(); }

bool KeywordWalk::HasKeywords() const {
  const KeywordRule* p = m_pRules;
  while (p->szKeyword != nullptr && std::isalpha(static_cast<unsigned char>(*p->szKeyword)) == 0)
    ++p;
  return p->szKeyword != nullptr;
}

bool KeywordWalk::IsKeyword() const {
  return m_eType == eZuTokenKeyword && FindRule(m_pRules, m_text) != nullptr;
}

void KeywordWalk::Add(eZuSeverity eSeverity, Place place, const char* szKeyword,
                      const std::string& strText, const std::string& strRight) {
  m_result.Add(eSeverity, place.uLine, place.uColumn, szKeyword, strText, strRight);
}

// Keywords with their values up to the } of their block, which stays in hand.
void KeywordWalk::Items(const KeywordRule* pRules, ZuKeywordBlock* pBlock, bool bTop) {
  const KeywordRule* const pOuter = m_pRules;
  const char* const szOuterLast = m_szLast;
  m_pRules = pRules;
  m_szLast = "";
  Counts counts;
  if (!bTop) GiveOpen({}, &pBlock->m_comments);
  while (m_eType != eZuTokenEof && (bTop || m_eType != eZuTokenBlockClose)) {
    if (m_eType == eZuTokenBlockClose) {
      Error(m_place, "", "a } without its {", "one } for each {");
      Next();
    } else if (m_eType == eZuTokenKeyword && HasKeywords()) {
      Item(pBlock, bTop, &counts);
    } else if (m_eType == eZuTokenBlockOpen && FindRule(pRules, "") != nullptr) {
      UnnamedItem(pBlock);
    } else if (m_eType == eZuTokenString && FindRule(pRules, "\"") != nullptr &&
               pBlock->m_blocks.empty()) {
      Next();
    } else {
      Stray();
    }
  }
  GiveEnd({}, &pBlock->m_comments);
  m_pRules = pOuter;
  m_szLast = szOuterLast;
}

void KeywordWalk::Item(ZuKeywordBlock* pBlock, bool bTop, Counts* pCounts) {
  const KeywordRule* pRule = FindRule(m_pRules, m_text);
  if (pRule == nullptr) return UnknownItem(pBlock);
  ZuKeywordBlock item;
  item.m_strKeyword = pRule->szKeyword;
  item.m_uLine = m_place.uLine;
  item.m_uColumn = m_place.uColumn;
  item.m_uToken = m_parser.GetStatus().m_uTokenCount;
  const Place place = m_place;
  m_szLast = pRule->szKeyword;
  m_uNumber = bTop ? 1 : ++(*pCounts)[pRule];
  const bool bOwn = bTop || pRule->szValues == nullptr;  // comments stand in the item
  ZuFileComment whose;
  if (!bOwn) {
    whose.m_strKeyword = pRule->szKeyword;
    whose.m_uNumber = m_uNumber;
  }
  GiveAbove(whose, bOwn ? &item.m_comments : &pBlock->m_comments);
  pBlock->m_keywords.emplace(pRule->szKeyword, ZuKeywordPlace{place.uLine, place.uColumn});
  Next();
  if (bTop && m_eType == eZuTokenBlockOpen) m_result.m_bKnown = true;
  const bool bTaken = Values(*pRule, &item, bTop ? &item : pBlock);
  item.m_bCut = m_bCut;
  GiveBehind(whose, bOwn ? &item.m_comments : &pBlock->m_comments);
  if (bTaken && (bTop || pRule->szValues == nullptr)) pBlock->m_blocks.push_back(std::move(item));
  if (!bTop || !m_bCut) return;
  Add(m_bPartial ? eZuSeverityWarning : eZuSeverityError, place, pRule->szKeyword,
      std::string("the file ends inside ") + pRule->szKeyword + " { ... }",
      m_bPartial ? "" : "the whole file");
  m_bCut = false;
}

// A block without keyword.
void KeywordWalk::UnnamedItem(ZuKeywordBlock* pBlock) {
  m_result.m_bKnown = true;
  ZuKeywordBlock item;
  item.m_uLine = m_place.uLine;
  item.m_uColumn = m_place.uColumn;
  item.m_uToken = m_parser.GetStatus().m_uTokenCount;
  const Place place = m_place;
  if (Values(*UnnamedRule(m_pRules, pBlock->m_blocks.size()), &item, &item)) {
    pBlock->m_blocks.push_back(std::move(item));
  }
  if (m_bCut) Error(place, "", "the file ends inside { ... }", "the whole file");
  m_bCut = false;
}

void KeywordWalk::UnknownItem(ZuKeywordBlock* pBlock) {
  const KeywordRule* pMeant = NearestRule(m_pRules, *pBlock, m_text);
  ZuUnknownKeyword word;
  word.m_uLine = m_place.uLine;
  word.m_uColumn = m_place.uColumn;
  word.m_strWritten = m_text.substr(0, kTextShown);
  if (pMeant != nullptr) word.m_strMeant = pMeant->szKeyword;
  word.m_strAfter = m_szLast;
  GiveAbove({}, &word.m_comments);
  const size_t uBegin = LineStart() + m_parser.Begin();
  TellFaultyWord();
  const bool bTold = m_bFaulty;
  Next();
  const bool bLost = pMeant != nullptr && pMeant->bVital && m_eType == eZuTokenBlockOpen;
  if (!bTold) {
    Add(bLost ? eZuSeverityError : eZuSeverityWarning, {word.m_uLine, word.m_uColumn},
        word.m_strWritten.c_str(), "unknown keyword " + word.m_strWritten + " skipped",
        word.m_strMeant);
  }
  SkipUnknownValue();
  word.m_strText = m_whole.substr(uBegin, m_uEnd - uBegin);
  // What stands inside is part of the text.
  m_comments.erase(m_comments.begin(), FirstBehind());
  GiveBehind({}, &word.m_comments);
  pBlock->m_unknown.push_back(std::move(word));
}

// What follows an unknown keyword: its block, or one token.
void KeywordWalk::SkipUnknownValue() {
  if (m_eType == eZuTokenBlockOpen) {
    SkipBlock();
  } else if (!IsEnd()) {
    TellFaultyWord();
    Next();
  }
}

// The records end at such a word. Told here, since an unknown block on its line hides what the
// reader of the records tells, by lines alone.
void KeywordWalk::TellFaultyWord() {
  if (m_bFaulty) {
    Error(m_place, "", ZuQuoted(m_text) + " stands here", "a keyword, a number or a \"text\"");
  }
}

// What stands where a keyword should.
void KeywordWalk::Stray() {
  const bool bBlock = m_eType == eZuTokenBlockOpen;
  Error(m_place, "", (bBlock ? "a block" : ZuQuoted(m_text)) + " stands here",
        HasKeywords() ? "a keyword" : "a block { ... }");
  if (bBlock) return SkipBlock();
  Next();
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

// Values that a newer writer added are dropped by the records.
void KeywordWalk::EndOfBlock(const KeywordRule& rule) {
  if (!IsEnd()) {
    Add(eZuSeverityWarning, m_place, rule.szKeyword,
        (rule.szKeyword[0] != 0 ? std::string(rule.szKeyword) + ": " : "") +
            "further values, from " + ZuQuoted(m_text) + " on, dropped",
        "");
    SkipToBlockEnd();
  }
  if (m_eType == eZuTokenEof) m_bCut = true;
  if (m_eType == eZuTokenBlockClose) Next();
}

}  // namespace zu::internal
