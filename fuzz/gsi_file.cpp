// A GSI file of a total station. What was read, written in words of every unit, reads back.
#include <cmath>
#include <cstdio>

#include "fuzz/points_use.h"
#include "zu/points/gsi_survey.h"

namespace {

// The data of a word: a whole number of steps.
struct Unit {
  char cCode;
  double dStepsPerUnit, dMetres;
};
constexpr Unit kUnits[] = {
    {'0', 1e3, 1.0}, {'1', 1e3, 0.3048}, {'6', 1e4, 1.0}, {'7', 1e4, 0.3048}, {'8', 1e5, 1.0}};
constexpr double kMostSteps = 9e15;  // every whole number up to here is a double

// The whole number of steps nearest to the value, NaN where a word has no room for it.
double Steps(double d, const Unit& unit) {
  const double dSteps = std::nearbyint(d / unit.dMetres * unit.dStepsPerUnit);
  return std::fabs(dSteps) <= kMostSteps ? dSteps : std::nan("");
}

std::string Word(const char* szIndex, char cUnit, bool bMinus, const std::string& strData) {
  return std::string(szIndex) + "..0" + cUnit + (bMinus ? '-' : '+') +
         std::string(16 - strData.size(), '0') + strData + ' ';
}

std::string PointWord(const ZuPoint& point) {
  std::string strText(point.GetName().chars());
  if (strText.empty()) strText = std::to_string(point.GetId());
  // Where there is room a minus stands among the data: zeros behind it would be lost otherwise.
  const bool bMinus = strText.size() > 16;
  if (bMinus) strText.erase(0, 1);
  return Word("11", '0', bMinus, strText);
}

// Words 81 to 83, and what must come back; empty where there is no room.
std::string CoordinateWords(const ZuPoint& point, const Unit& unit, ZuPoint* pExpected) {
  const char* const aszIndices[] = {"81", "82", "83"};
  const double adValues[] = {point.m_dX, point.m_dY, point.m_dZ};
  double* const apdExpected[] = {&pExpected->m_dX, &pExpected->m_dY, &pExpected->m_dZ};
  std::string strWords;
  for (const int i : {2, 0, 1}) {  // the order of words means nothing
    const double dSteps = Steps(adValues[i], unit);
    if (std::isnan(dSteps)) return std::string();
    char szData[32];
    std::snprintf(szData, sizeof(szData), "%.0f", std::fabs(dSteps));
    strWords += Word(aszIndices[i], unit.cCode, dSteps < 0.0, szData);
    *apdExpected[i] = dSteps / unit.dStepsPerUnit * unit.dMetres;
  }
  return strWords;
}

void CheckRoundTrip(const ZuPointList& list) {
  std::string strFile;
  ZuPointList expected;
  for (const ZuPoint* p = list.First(); p != nullptr; p = p->Next()) {
    ZuPoint point(*p);
    const std::string strWords =
        CoordinateWords(*p, kUnits[expected.Count() % std::size(kUnits)], &point);
    if (strWords.empty()) continue;
    strFile += '*' + PointWord(*p) + strWords + '\n';
    expected.Add(point);
  }
  ZuPointList again;
  Require(again.ReadGsiFile(Input::Path(strFile)) == expected.Count());
  RequireSamePoints(expected, again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uSize) {
  const Input input(pData, uSize);
  ZuPointList list, twice;
  const int iCount = list.ReadGsiFile(input.Path());
  Require(iCount == list.Count());
  UsePoints(list);
  CheckRoundTrip(list);
  twice.ReadGsiFile(input.Path());
  Require(twice.ReadGsiFile(input.Path()) == 2 * iCount);
  // Tolerantly read, no line that the other way takes is lost, and no other one taken.
  ZuPointList tolerant, strict;
  const ZuCoordinateReading all = ZuReadGsi(input.Path(), tolerant, eZuReadTolerant);
  Require(all.m_aLines.size() == static_cast<std::size_t>(iCount));
  RequireSamePoints(list, tolerant);
  const bool bWhole = ZuReadGsi(input.Path(), strict).m_Findings.IsWhole();
  Require(strict.Count() <= iCount && (!bWhole || strict.Count() == iCount));
  // With measurements: the points oriented by themselves, with deviations, each with its line.
  ZuGsiOptions options;
  options.m_bMeasured = (input.Option() & 1) != 0;
  options.m_pKnown = &list;
  options.m_dSigmaDirection = options.m_dSigmaDistance = 1e-3;
  ZuPointList measured;
  const ZuGsiReading reading = ZuReadGsiPoints(input.Path(), options, measured, eZuReadTolerant);
  Require(reading.m_aLines.size() == static_cast<std::size_t>(measured.Count()));
  UsePoints(measured);
  return 0;
}
