#include "zu/foundation/parser.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <istream>
#include <limits>

char const* GetZuParserStatusText(eZuParserStatus eStatus) {
  static constexpr char const* kTexts[] = {
      "ParserStatusOK",           "ParserStatusEOF",
      "ParserErrorStream",        "ParserErrorUnterminatedString",
      "ParserErrorInvalidNumber", "ParserErrorNotSpecifiedToken"};
  const int i = eStatus;
  return i >= 0 && i < static_cast<int>(std::size(kTexts)) ? kTexts[i] : "ParserStatus??";
}

unsigned int ZuParserToken::GetId() const {
  if (m_eType != eZuTokenInt) return 0;
  if (m_iValue != std::numeric_limits<int>::max()) return static_cast<unsigned int>(m_iValue);
  char const* const pDigits = m_szText + (*m_szText == '+' ? 1 : 0);
  unsigned int uId = std::numeric_limits<unsigned int>::max();
  std::from_chars(pDigits, pDigits + std::strlen(pDigits), uId);  // too large: leaves it
  return uId;
}

ZuParser::ZuParser() : m_pToken(m_acLine), m_pCursor(m_acLine) { m_acLine[0] = 0; }

ZuParser::~ZuParser() = default;

ZuParserToken const& ZuParser::ParseForToken(std::istream& stream) {
  RaisePending();
  ReadToken(stream);
  RaisePending();
  return m_Token;
}

ZuParserToken const& ZuParser::Fetch(std::istream& stream) {
  if (!m_bSkipNextParse) return ParseForToken(stream);
  m_bSkipNextParse = false;
  m_bUnused = false;
  RaisePending();
  return m_Token;
}

ZuParserToken const& ZuParser::FetchUnread(std::istream& stream) {
  if (!m_bSkipNextParse) ReadToken(stream);
  m_bSkipNextParse = false;
  m_bUnused = false;
  DropPending();
  return m_Token;
}

void ZuParser::MoveOn(std::istream& stream) {
  if (m_bSkipNextParse) {
    m_bSkipNextParse = false;
    return;
  }
  RaisePending();
  ReadToken(stream);
  m_bUnused = true;
}

eZuParserStatus ZuParser::ReadToken(std::istream& stream) {
  ++m_uMoveCount;
  m_bUnused = false;
  m_bFaultPending = false;
  while (!Tokenize()) {
    m_eEnd = ReadLine(stream);
    if (m_eEnd == ParserStatusOK) continue;
    m_Token = ZuParserToken{};
    m_Token.m_eType = eZuTokenEof;
    m_iTokenDepth = m_iDepth;
    m_Status.m_eStatus = m_eEnd;
    m_bFaultPending = m_eEnd == ParserErrorStream;
    return m_eEnd;
  }
  return m_bFaultPending ? m_Status.m_eStatus : ParserStatusOK;
}

ZuParserToken const& ZuParser::GetToken(eZuTokentype eType) {
  RaisePending();
  if (m_Token.m_eType == eType) return m_Token;
  if (eType == eZuTokenFloat && m_Token.IsFloat()) return m_Token;
  if (eType != eZuTokenNumber) RaiseMisfit();
  if (!m_Token.IsNumber()) Raise(ParserErrorNotSpecifiedToken);
  return m_Token;
}

void ZuParser::SkipLine() {
  m_cSaved = 0;
  m_pCursor += std::strlen(m_pCursor);
}

void ZuParser::DropPending() {
  if (!m_bFaultPending) return;
  if (m_eEnd == ParserErrorStream) ThrowPending();
  m_bFaultPending = false;
  m_Status.m_eStatus = m_eEnd;
}

void ZuParser::ThrowPending() {
  m_bFaultPending = false;
  throw m_Status;
}

void ZuParser::Raise(eZuParserStatus eStatus) {
  m_Status.m_eStatus = eStatus;
  throw m_Status;
}

void ZuParser::RaiseMisfit() {
  if (m_Token.m_eType == eZuTokenEof && m_eEnd != ParserStatusOK) Raise(m_eEnd);
  Raise(ParserErrorNotSpecifiedToken);
}

// A line of the stream into the buffer; on failure the buffer is empty.
eZuParserStatus ZuParser::ReadLine(std::istream& stream) {
  m_cSaved = 0;
  m_pCursor = m_acLine;
  const bool bGood = stream.good();
  if (bGood) stream.getline(m_acLine, kBufferSize);
  const bool bFailed = stream.bad() || (stream.fail() && !stream.eof());
  if (bFailed || !bGood || stream.fail()) {
    if (bFailed && bGood && stream.gcount() > 0) ++m_Status.m_uLine;  // the line is too long
    m_acLine[0] = 0;
    return bFailed ? ParserErrorStream : ParserStatusEOF;
  }

  // The count holds the line end where there is one, and NUL bytes inside the line.
  std::streamsize nLength = stream.gcount() - (stream.eof() ? 0 : 1);
  while (nLength > 0 && m_acLine[nLength - 1] == '\r') m_acLine[--nLength] = 0;
  if (m_Status.m_uLine == 0 && std::strncmp(m_acLine, "\xEF\xBB\xBF", 3) == 0) {
    m_pCursor += 3;
    nLength -= 3;
  }
  // Required: a line that does not fit the buffer is a failure of the stream. What stood before it
  // is kept; a reader that went on inside such a line would take its pieces for items.
  ++m_Status.m_uLine;
  if (nLength >= kLineSize) {
    *m_pCursor = 0;
    stream.setstate(std::ios::badbit);
    return ParserErrorStream;
  }
  return ParserStatusOK;
}
