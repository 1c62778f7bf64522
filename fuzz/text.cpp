// Bytes as text, converted to wide characters and back and cut into lines, as a program over
// Strings, as lines of a measurement log, of names and of conditions, and as a position system.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "fuzz/string_program.h"
#include "zu/foundation/crc32.h"
#include "zu/foundation/unicode.h"
#include "zu/geo/position_system.h"
#include "zu/points/name_line.h"
#include "zu/project/measurement_log.h"
#include "zu/transform/condition_line.h"

namespace {

// What came through once comes through again.
void CheckUnicode(std::string const& text) {
  const AnsiToUni wide(text);
  const UniToAnsi narrow(wide());
  const AnsiToUni again(narrow());
  Require((wide() == nullptr) == (again() == nullptr));
  if (wide()) Require(std::wstring_view(wide()) == again());
}

void CheckLines(std::string const& text) {
  std::istringstream stream(text);
  String line;
  std::size_t n = 0;
  while (!stream.eof()) n += static_cast<std::size_t>(readline(stream, line)) + 1;
  Require(n == text.size() + 1);
}

// What a line gives, written again, gives the same.
bool CheckLogLine(std::string const& line) {
  ZuLoggedMeasurement m, again;
  if (!ZuParseLogLine(line, &m)) return false;
  Require(ZuIsLoggable(m) && ZuParseLogLine(ZuLogLine(m), &again));
  Require(ZuLogLine(again) == ZuLogLine(m) && again.m_strWho == m.m_strWho);
  return true;
}

// Each line with the check sum that it lacks, and all of them as a file.
void CheckLog(std::string const& text) {
  std::istringstream stream(text);
  std::string log;
  for (std::string line; std::getline(stream, line);) {
    char sum[16];
    std::snprintf(sum, sizeof(sum), " %08x", ZuCalcCRC32(line.data(), line.size()));
    if (CheckLogLine(line + sum)) log += line + sum + '\n';
  }
  auto const reading = ZuReadMeasurementLog(Input::Path(log));
  Require(reading.m_Findings.IsEmpty());
  Require(reading.m_Measurements.size() ==
          static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n')));
  ZuReadMeasurementLog(Input::Path(text));
}

// Lines that name points, as breaklines and conditions do.
void CheckNameLine(std::string const& line) {
  std::vector<std::string> words, again;
  if (!ZuParseNameLine(line, &words)) return;
  Require(ZuParseNameLine(ZuNameLine(words), &again) && again == words);
  ZuConditionLine condition, back;
  if (!ZuParseConditionLine(line, &condition)) return;
  Require(ZuParseConditionLine(ZuConditionLineText(condition), &back));
  Require(back.kind == condition.kind && back.points == condition.points);
  Require(back.dValue == condition.dValue && condition.dValue > 0.0);
}

void CheckPositionSystem(std::string const& line) {
  ZuPositionSystem system, again;
  if (!ZuParsePositionSystem(line, &system)) return;
  Require(system.IsValid());
  const std::string text = ZuPositionSystemText(system);
  Require(ZuParsePositionSystem(text, &again) && ZuPositionSystemText(again) == text);
}

void CheckOtherLines(std::string const& text) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    CheckNameLine(line);
    CheckPositionSystem(line);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pData, std::size_t nSize) {
  const std::string text(reinterpret_cast<char const*>(pData), nSize);
  CheckUnicode(text);
  StringProgram(text).Run();
  CheckLines(text);
  CheckLog(text);
  CheckOtherLines(text);
  return 0;
}
