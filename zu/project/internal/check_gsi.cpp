#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "zu/foundation/number_text.h"
#include "zu/foundation/numbers.h"
#include "zu/points/read_coordinates.h"
#include "zu/project/internal/check_kinds.h"
#include "zu/project/internal/plausible.h"

namespace zu::internal {

namespace {

constexpr std::size_t kUnit = 5;  // places in a word
constexpr std::size_t kData = 7;
constexpr double kDecimals = 1e5;  // of the data of an angle

// By unit code: name and full circle.
struct AngleUnit {
  char cCode;
  const char* szName;
  double dCircle;
};
constexpr AngleUnit kAngleUnits[] = {
    {'2', "gon", 400.0}, {'3', "degrees", 360.0}, {'4', "degrees", 360.0}};

struct Angle {
  ZuKeywordPlace place;
  const AngleUnit* pUnit;
  double dValue;  // minutes and seconds stand behind the point in unit 4
};

// The horizontal direction (word 21) or the vertical angle (22); false for other words.
bool ToAngle(std::string_view word, Angle* pAngle) {
  const std::string_view index = word.substr(0, 2);
  if ((index != "21" && index != "22") || word.size() <= kData) return false;
  const auto* const pUnit =
      std::find_if(std::begin(kAngleUnits), std::end(kAngleUnits),
                   [&](const AngleUnit& u) { return u.cCode == word[kUnit]; });
  if (pUnit == std::end(kAngleUnits)) return false;
  const std::string_view data = word.substr(kData);
  pAngle->pUnit = pUnit;
  pAngle->dValue = ZuAtof(data.data(), data.data() + data.size()) / kDecimals;
  return true;
}

std::vector<Angle> Angles(std::string_view text) {
  std::vector<Angle> angles;
  unsigned uLine = 0;
  for (std::size_t uStart = 0; uStart < text.size();) {
    const std::size_t uEnd = std::min(text.find('\n', uStart), text.size());
    const std::string_view line = text.substr(uStart, uEnd - uStart);
    ++uLine;
    uStart = uEnd + 1;
    const std::size_t uFirst = line.substr(0, 1) == "*" ? 1 : 0;
    const std::size_t uLength = kData + (uFirst == 1 ? 16 : 8);
    for (std::size_t u = uFirst; u < line.size(); u += uLength + 1) {
      Angle angle{{uLine, static_cast<unsigned>(u) + 1}, nullptr, 0.0};
      if (ToAngle(line.substr(u, uLength), &angle)) angles.push_back(angle);
    }
  }
  return angles;
}

// Most angles tell the unit of the file.
void CheckAngles(std::string_view text, const std::string& strFile, ZuFindingList* pFindings) {
  const std::vector<Angle> angles = Angles(text);
  std::map<char, std::size_t> counts;
  for (const Angle& angle : angles) ++counts[angle.pUnit->cCode];
  const auto most =
      std::max_element(counts.begin(), counts.end(),
                       [](const auto& a, const auto& b) { return a.second < b.second; });
  for (const Angle& angle : angles) {
    const bool bOther = angle.pUnit->cCode != most->first;
    const bool bBeyond = angle.dValue >= angle.pUnit->dCircle;
    if (!bOther && !bBeyond) continue;
    pFindings->Add({strFile, angle.place.m_uLine, angle.place.m_uColumn, eZuSeverityWarning, "",
                    bOther ? std::string("an angle in ") + angle.pUnit->szName + " (unit " +
                                 angle.pUnit->cCode + "), which most others are not"
                           : std::string("an angle beyond a full circle in ") + angle.pUnit->szName,
                    bOther ? std::string("unit ") + most->first
                           : "the unit of the data: 2 gon, 3 degrees with decimals, 4 degrees, "
                             "minutes, seconds"});
  }
}

}  // namespace

void CheckGsi(const char* szPath, std::string_view text, ZuFindingList* pFindings) {
  ZuPointList points;
  const ZuCoordinateReading reading = ZuReadGsi(szPath, points, eZuReadTolerant);
  for (ZuFinding finding : reading.m_Findings) {
    finding.m_strFile = szPath;
    if (finding.m_eSeverity != eZuSeverityNote) pFindings->Add(std::move(finding));
  }
  std::vector<PlacedPoint> placed;
  for (const ZuPoint* p = points.First(); p != nullptr; p = p->Next()) {
    placed.push_back({p, {static_cast<unsigned>(reading.m_aLines[placed.size()]), 1}});
  }
  CheckUnits(placed, szPath, "point", pFindings);
  CheckAngles(text, szPath, pFindings);
}

}  // namespace zu::internal
