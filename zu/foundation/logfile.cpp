#include "zu/foundation/logfile.h"

#include <ctime>
#include <locale>
#include <string>

ZuLogfile::ZuLogfile() { imbue(std::locale::classic()); }

ZuLogfile::ZuLogfile(char const* szName, int) {
  imbue(std::locale::classic());
  OpenFile(szName);
}

void ZuLogfile::OpenFile(char const* szName) {
  // Opening sets the fail bit or clears the state.
  if (szName) {
    open(szName, std::ios::out | std::ios::app);
  } else {
    setstate(std::ios::failbit);
  }
  WriteSmallHeader();
}

void ZuLogfile::WriteSmallHeader() {
  const std::time_t now = std::time(nullptr);
  char szTime[32] = "\n";
#if defined(_WIN32)
  ctime_s(szTime, sizeof(szTime), &now);
#else
  ctime_r(&now, szTime);
#endif
  *this << std::string(132, '/') << "\n//  " << szTime << "//  ";
}
