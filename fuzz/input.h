// The input of a fuzz target, as text and as a file.
//
// A plain file of samples/ is a good input of every target that reads files: what a target can
// choose beside the bytes, it derives from them.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temp_file.h"
#include "zu/foundation/logger.h"
#include "zu/foundation/reader.h"

// What a target holds to be true of any input.
inline void Require(bool bGood) {
  if (!bGood) std::abort();
}

// The same number, or both none; a zero keeps its sign.
inline bool IsSame(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

class Input {
 public:
  Input(const std::uint8_t* pData, std::size_t uSize)
      : m_text(reinterpret_cast<const char*>(pData), uSize) {}

  std::string_view Text() const { return m_text; }

  // A file of the input, in the place of the one before.
  const char* Path() const { return Path(m_text); }
  static const char* Path(std::string_view text) {
    static const TempFile file;
    file.Write(text);
    return file.Path();
  }

  // A second file, for what is written.
  static const char* OutputPath() {
    static const TempFile file;
    return file.Path();
  }

  // The last byte. Text files end with a line end, which is an option like any other; a byte behind
  // it changes the option and little else.
  unsigned Option() const {
    return m_text.empty() ? 0U : static_cast<unsigned char>(m_text.back());
  }

 private:
  std::string_view m_text;
};

// Counts the faults of a reader, and goes on behind them.
struct FaultCounter : public LinkHdl {
  long Count(ZuReader*) {
    ++m_iFaults;
    return 1;
  }
  int m_iFaults = 0;
};

// Keeps what the application's logger is given.
struct LogLines : public ZuLogger {
  LogLines() : ZuLogger(2) {}
  int Log(int, const wchar_t* szText) override {
    lines.emplace_back(szText);
    return 0;
  }
  std::vector<std::wstring> lines;
};

// The log of a reader's errors tells their number and the line and status of each.
inline void CheckErrorLog(ZuReader& reader) {
  const int iCount = reader.GetReadErrorCount();
  if (iCount > 20) return;
  ZuMasterLogger master;
  LogLines log;
  master.SetFormat(L"$mesg");
  master.AddLogger(&log);
  ZuApplicationLogger::RegisterMasterLogger(&master);
  reader.LogErrorsToApplicationLogger();
  ZuApplicationLogger::RegisterMasterLogger(nullptr);
  Require(log.lines.size() == (iCount == 0 ? 0U : static_cast<std::size_t>(iCount) + 1U));
  std::size_t i = 0;
  for (const ZuReaderError* p = reader.GetReaderErrorList().First(); p != nullptr; p = p->Next()) {
    char szLine[100];
    const int n = std::snprintf(szLine, sizeof(szLine), " - Line: %06u, Status: %s", p->m_uLine,
                                GetZuParserStatusText(p->m_eStatus));
    Require(log.lines[++i] == std::wstring(szLine, szLine + n));
  }
}

// Runs a reader with these keywords over a file. With bGoOn it goes on behind faults.
template <std::size_t N>
void ReadKeywords(const char* szPath, ZuReaderObject (&keywords)[N], bool bGoOn) {
  FaultCounter faults;
  ZuReader reader(szPath);
  if (bGoOn) reader.SetParserErrorHdl(Link(&faults, &FaultCounter::Count));
  for (ZuReaderObject& keyword : keywords) reader.RegisterObject(keyword);
  Require(reader.DoProcess(false) == 1);
  CheckErrorLog(reader);
}
