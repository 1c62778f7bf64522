#include "zu/foundation/debug_logger.h"

#include <sstream>
#include <string>

#include "zu/foundation/internal/state_file.h"

namespace {

constinit ZuZuvoDebugLogger* theLogger = nullptr;

}  // namespace

int ZuZuvoDebugLogger::Log(int iLevel, wchar_t const* szText) {
  std::ostringstream line;
  line.imbue(std::locale::classic());
  line << iLevel << " : " << static_cast<void const*>(szText) << '\n';
  zu::internal::AppendToStateFile("ZuvoProtokoll.log", line.str());
  return 0;
}

void InstallZuvoDebugLogger() {
  ZuMasterLogger* const pMaster = ZuApplicationLogger::GetMasterLogger();
  if (pMaster == nullptr || theLogger != nullptr) return;
  theLogger = new ZuZuvoDebugLogger;
  pMaster->AddLogger(theLogger);
  ZuApplicationLogger::LogText(4, L"InstallZuvoDebugLogger()");
}

void UninstallZuvoDebugLogger() {
  ZuMasterLogger* const pMaster = ZuApplicationLogger::GetMasterLogger();
  if (pMaster == nullptr || theLogger == nullptr) return;
  ZuApplicationLogger::LogText(4, L"UninstallZuvoDebugLogger()");
  pMaster->SubtractLogger(theLogger);
  delete theLogger;
  theLogger = nullptr;
}

bool IsZuvoDebugLoggerInstalled() { return theLogger != nullptr; }
