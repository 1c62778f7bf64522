#include "zu/foundation/logger.h"
#include "zu/foundation/reader.h"

void ZuReader::LogErrorsToApplicationLogger() const {
  if (m_ErrorList.IsEmpty()) return;
  ZuApplicationLogger::Log(2, L" %d Read Error(s) in %s:", GetReadErrorCount(),
                           m_strFileName.chars());
  for (ZuReaderError const* p = m_ErrorList.First(); p != nullptr; p = p->Next()) {
    ZuApplicationLogger::Log(2, L" - Line: %06u, Status: %s", p->m_uLine,
                             GetZuParserStatusText(p->m_eStatus));
  }
}
