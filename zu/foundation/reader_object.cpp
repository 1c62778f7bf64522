#include "zu/foundation/reader_object.h"

#include <cstring>

#include "zu/foundation/reader.h"

ZuReaderObject::ZuReaderObject() : ZuReaderObject(Link()) {}

ZuReaderObject::ZuReaderObject(Link const& link) : ZuReaderObject("_NOT_DEFINED", link) {}

ZuReaderObject::ZuReaderObject(char const* szKeyword, Link const& link)
    : ZuReaderObject(szKeyword, link, Link()) {}

ZuReaderObject::ZuReaderObject(char const* szKeyword, Link const& link, Link const& link2)
    : ZuReaderObject(szKeyword, eZuTokenOther, nullptr, false) {
  m_Link = link;
  m_Link2 = link2;
}

ZuReaderObject::ZuReaderObject(char const* szKeyword, int* piTarget)
    : ZuReaderObject(szKeyword, eZuTokenInt, piTarget, false) {}

ZuReaderObject::ZuReaderObject(char const* szKeyword, unsigned int* puTarget)
    : ZuReaderObject(szKeyword, eZuTokenInt, puTarget, false) {
  m_bUnsigned = true;
}

ZuReaderObject::ZuReaderObject(char const* szKeyword, double* pdTarget)
    : ZuReaderObject(szKeyword, eZuTokenNumber, pdTarget, false) {}

ZuReaderObject::ZuReaderObject(char const* szKeyword, String* pstrTarget)
    : ZuReaderObject(szKeyword, eZuTokenString, pstrTarget, false) {}

ZuReaderObject::ZuReaderObject(char const* szKeyword, bool* pbTarget)
    : ZuReaderObject(szKeyword, eZuTokenInt, pbTarget, true) {}

ZuReaderObject::ZuReaderObject(char const* szKeyword, eZuTokentype eType, void* pData, bool bBool)
    : m_pData(pData), m_eType(eType), m_bBool(bBool) {
  std::size_t n = szKeyword != nullptr ? std::strlen(szKeyword) : 0;
  m_bCut = n > kKeywordSize;
  if (m_bCut) n = kKeywordSize;
  if (n > 0) std::memcpy(m_szKeyword, szKeyword, n);
  m_szKeyword[n] = 0;
}

ZuReaderObject* ZuReaderObject::RegisterObject(ZuReaderObject& object) {
  return m_pReader != nullptr ? m_pReader->RegisterObject(object) : nullptr;
}

int ZuReaderObject::DoProcess() {
  if (m_pReader == nullptr) return 0;
  m_pReader->GetParser().SkipNextParse(true);
  return m_pReader->DoProcess(false);
}

bool ZuReaderObject::IsKeyword(char const* szKeyword) const {
  return m_bCut ? std::strncmp(m_szKeyword, szKeyword, kKeywordSize) == 0
                : std::strcmp(m_szKeyword, szKeyword) == 0;
}

ZuParser& ZuReaderObject::GetStreamParser() const { return m_pReader->GetParser(); }

void ZuReaderObject::KeywordFound() {
  ZuParser& parser = GetStreamParser();
  switch (m_eType) {
    case eZuTokenInt: {
      const int iValue = parser.GetTokenInt();
      if (m_pData == nullptr) break;
      if (m_bBool) {
        *static_cast<bool*>(m_pData) = iValue != 0;
      } else if (m_bUnsigned) {
        *static_cast<unsigned int*>(m_pData) = parser.GetTokenId();
      } else {
        *static_cast<int*>(m_pData) = iValue;
      }
      break;
    }
    case eZuTokenNumber: {
      const double dValue = parser.GetTokenNumber();
      if (m_pData != nullptr) *static_cast<double*>(m_pData) = dValue;
      break;
    }
    case eZuTokenString: {
      char const* szValue = parser.GetTokenString();
      if (m_pData != nullptr) *static_cast<String*>(m_pData) = szValue;
      break;
    }
    default:
      m_Link.Call(this);
  }
}

void ZuReaderObject::Move() { GetStreamParser().MoveOn(m_pReader->GetStream()); }

int ZuReaderObject::TakeInt() {
  const int iValue = GetStreamParser().GetTokenInt();
  Move();
  return iValue;
}

unsigned int ZuReaderObject::TakeId() {
  const unsigned int uValue = GetStreamParser().GetTokenId();
  Move();
  return uValue;
}

double ZuReaderObject::TakeNumber() {
  const double dValue = GetStreamParser().GetTokenNumber();
  Move();
  return dValue;
}

String ZuReaderObject::TakeString() {
  String strValue(GetStreamParser().GetTokenString());
  Move();
  return strValue;
}

double ZuReaderObject::TakeValue() {
  GetStreamParser().RaisePending();
  if (IsBlockOpen() || IsEndOfRows()) return 0.0;
  const double dValue = Token().GetNumber();
  Move();
  return dValue;
}

void ZuReaderObject::Skip() {
  ZuParser& parser = GetStreamParser();
  parser.RaisePending();
  if (IsBlockOpen() || IsEndOfRows()) parser.RaiseMisfit();
  Move();
}

void ZuReaderObject::SkipNumbers() {
  GetStreamParser().RaisePending();
  while (Token().IsNumber()) Move();
}

void ZuReaderObject::TakeBlockOpen() {
  GetStreamParser().GetToken(eZuTokenBlockOpen);
  Move();
}

void ZuReaderObject::TakeBlockClose() {
  GetStreamParser().GetToken(eZuTokenBlockClose);
  Move();
}

void ZuReaderObject::TakeRestOfBlock() {
  ZuParser& parser = GetStreamParser();
  parser.DropPending();
  for (std::int64_t nOpen = 1; !(IsBlockClose() && nOpen == 1);) {
    if (IsEndOfFile()) parser.RaiseMisfit();
    nOpen += IsBlockOpen() ? 1 : IsBlockClose() ? -1 : 0;
    parser.FetchUnread(m_pReader->GetStream());
  }
  Move();
}

bool ZuReaderObject::EndsRows(ZuParserStatus const& status) {
  if (status.m_eStatus == ParserErrorStream || !IsEndOfRows()) return false;
  ZuParser& parser = GetStreamParser();
  parser.SetStatus(parser.GetEnd());
  return true;
}

unsigned int ZuReaderObject::GetLine() const { return GetStreamParser().GetStatus().m_uLine; }

void ZuReaderObject::AddShapeError() { AddShapeError(GetLine()); }

void ZuReaderObject::AddShapeError(unsigned int uLine) {
  m_pReader->AddError(ParserErrorInvalidNumber, uLine);
}
