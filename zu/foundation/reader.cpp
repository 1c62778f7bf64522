#include "zu/foundation/reader.h"

#include "zu/foundation/unicode.h"

ZuReader::ZuReader(char const* szPath) { Open(szPath); }

ZuReader::ZuReader(wchar_t const* szPath) {
  UniToAnsi path(szPath);
  Open(path());
}

ZuReader::~ZuReader() = default;

void ZuReader::Open(char const* szPath) {
  NewInstance();
  if (szPath == nullptr) {
    m_Stream.setstate(std::ios::failbit);
    return;
  }
  m_strFileName = szPath;
  m_Stream.open(szPath, std::ios::in | std::ios::binary);
}

long ZuReader::UnknownTokenFound() { return m_UnknownTokenHdl.Call(this); }

long ZuReader::ParserError() { return m_ParserErrorHdl.Call(this); }

ZuReaderObject* ZuReader::RegisterObject(ZuReaderObject& object) {
  ZuReaderObject* pCopy = new ZuReaderObject(object);
  pCopy->m_pReader = this;
  return m_pCurrentInstance->Add(pCopy);
}

void ZuReader::NewInstance() {
  m_pCurrentInstance = m_InstanceList.Add(new ZuReaderInstance(this));
}

void ZuReader::ReleaseInstance() {
  if (!m_InstanceList.CountMoreThan(1)) return;
  delete m_InstanceList.Subtract(m_pCurrentInstance);
  m_pCurrentInstance = m_InstanceList.Last();
}

ZuReaderObject* ZuReader::FindObject(char const* szKeyword) const {
  ZuReaderObject* pObject = m_pCurrentInstance->First();
  while (pObject != nullptr && !pObject->IsKeyword(szKeyword)) pObject = pObject->Next();
  return pObject;
}

void ZuReader::AddError(eZuParserStatus eStatus) {
  AddError(eStatus, m_Parser.GetStatus().m_uLine);
}

void ZuReader::AddError(eZuParserStatus eStatus, unsigned int uLine) {
  ZuParserStatus status = m_Parser.GetStatus();
  status.m_eStatus = eStatus;
  status.m_uLine = uLine;
  m_ErrorList.Add(new ZuReaderError(status));
}
