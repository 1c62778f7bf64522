#include "zu/foundation/read_faults.h"

#include "zu/foundation/reader.h"

void ZuReadFaults::Begin() {
  m_aFaults.clear();
  m_bBegun = true;
  m_aFaults.reserve(1);  // the first fault is noted without memory too
}

void ZuReadFaults::Follow(ZuReader* pReader) {
  pReader->SetParserErrorHdl(Link(this, &ZuReadFaults::Note));
  m_bBegun = false;
}

long ZuReadFaults::Note(ZuReader* pReader) {
  m_aFaults.push_back(*pReader->GetReaderErrorList().Last());
  return 0;
}

ZuParserStatus ZuReadFaults::Get(int i) const {
  if (i < 0 || i >= GetCount()) return {};
  return m_bBegun ? ZuParserStatus{0, 0, ParserErrorStream} : m_aFaults[static_cast<size_t>(i)];
}
