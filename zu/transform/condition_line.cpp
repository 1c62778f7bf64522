#include "zu/transform/condition_line.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "zu/foundation/numbers.h"
#include "zu/foundation/strict_number.h"
#include "zu/points/name_line.h"

namespace {

constexpr const char* kConditionWords[] = {"",      "parallel", "right", "equal",
                                           "ratio", "length",   "xaxis"};

bool HasNumber(const ZuConditionLine& line) {
  return line.kind == ZuConditionLine::eRatio || line.kind == ZuConditionLine::eLength;
}

}  // namespace

ZuPlaneCondition ZuConditionLine::Condition(const std::array<size_t, 4>& numbers) const {
  ZuLenghtRatioConstraint made(numbers[0], numbers[1], numbers[2], numbers[3],
                               kind == eRatio ? dValue : 1.0);
  if (kind == eParallel) made.kind = ZuPlaneCondition::eParallel;
  if (kind == eRightAngle) made.kind = ZuPlaneCondition::eRightAngle;
  return made;
}

bool ZuParseConditionLine(std::string_view line, ZuConditionLine* pLine) {
  *pLine = ZuConditionLine();
  std::vector<std::string> words;
  if (!ZuParseNameLine(line, &words)) return false;
  if (words.empty()) return true;
  const auto* pWord =
      std::find(std::begin(kConditionWords) + 1, std::end(kConditionWords), words.front());
  if (pWord == std::end(kConditionWords)) return false;
  ZuConditionLine read;
  read.kind = static_cast<ZuConditionLine::eKind>(pWord - std::begin(kConditionWords));
  const auto uPoints = static_cast<size_t>(read.Points());
  if (words.size() != 1 + uPoints + (HasNumber(read) ? 1 : 0)) return false;
  if (HasNumber(read) && !(ZuParseNumber(words.back(), &read.dValue) && read.dValue > 0.0 &&
                           std::isfinite(read.dValue))) {
    return false;
  }
  std::copy_n(words.begin() + 1, uPoints, read.points.begin());
  *pLine = read;
  return true;
}

std::string ZuConditionLineText(const ZuConditionLine& line) {
  if (line.kind == ZuConditionLine::eNone) return "";
  std::vector<std::string> words = {kConditionWords[line.kind]};
  words.insert(words.end(), line.points.begin(), line.points.begin() + line.Points());
  if (HasNumber(line)) {
    char szNumber[kZuShortestSize];
    words.emplace_back(szNumber, ZuFormatShortest(szNumber, line.dValue));
  }
  return ZuNameLine(words);
}
