#include "zu/foundation/measure_unit.h"

#include <array>
#include <cmath>
#include <numbers>

#include "zu/foundation/numbers.h"
#include "zu/foundation/strict_number.h"

const std::vector<ZuMeasureUnit>& ZuMeasureUnits() {
  using std::numbers::pi;
  static const std::vector<ZuMeasureUnit> theUnits = {
      {"um", eZuQuantityLength, 1e6, 1.0},        {"mm", eZuQuantityLength, 1000.0, 1.0},
      {"cm", eZuQuantityLength, 100.0, 1.0},      {"dm", eZuQuantityLength, 10.0, 1.0},
      {"m", eZuQuantityLength, 1.0, 1.0},         {"km", eZuQuantityLength, 1.0, 1000.0},
      {"in", eZuQuantityLength, 10000.0, 254.0},  {"ft", eZuQuantityLength, 10000.0, 3048.0},
      {"rad", eZuQuantityAngle, 1.0, 1.0},        {"mrad", eZuQuantityAngle, 1000.0, 1.0},
      {"deg", eZuQuantityAngle, 180.0, pi},       {"arcmin", eZuQuantityAngle, 10800.0, pi},
      {"arcsec", eZuQuantityAngle, 648000.0, pi}, {"gon", eZuQuantityAngle, 200.0, pi},
      {"mgon", eZuQuantityAngle, 200000.0, pi},   {"mil", eZuQuantityAngle, 3200.0, pi}};
  return theUnits;
}

const ZuMeasureUnit* ZuFindMeasureUnit(std::string_view text) {
  for (const ZuMeasureUnit& unit : ZuMeasureUnits()) {
    if (text == unit.m_szText) return &unit;
  }
  return nullptr;
}

double ZuFromUnit(double dValue, const ZuMeasureUnit& unit) {
  return dValue * unit.m_dAre / unit.m_dMany;
}

double ZuToUnit(double dBase, const ZuMeasureUnit& unit) {
  return dBase * unit.m_dMany / unit.m_dAre;
}

namespace {

std::string_view WithoutBlanks(std::string_view text) {
  constexpr char kBlanks[] = " \t\r\n";
  const std::size_t uFirst = text.find_first_not_of(kBlanks);
  if (uFirst == text.npos) return {};
  return text.substr(uFirst, text.find_last_not_of(kBlanks) - uFirst + 1);
}

}  // namespace

bool ZuParseMeasure(std::string_view text, eZuQuantity eQuantity, double* pdBase,
                    const char* szDefault) {
  text = WithoutBlanks(text);
  // The unit is the letters at the end.
  std::size_t uUnit = text.size();
  while (uUnit > 0 && text[uUnit - 1] >= 'a' && text[uUnit - 1] <= 'z') --uUnit;
  std::string_view name = text.substr(uUnit);
  if (name.empty() && szDefault != nullptr) name = szDefault;
  const ZuMeasureUnit* const pUnit = ZuFindMeasureUnit(name);
  double dValue = 0.0;
  if (pUnit == nullptr || pUnit->m_eQuantity != eQuantity ||
      !ZuParseNumber(WithoutBlanks(text.substr(0, uUnit)), &dValue)) {
    return false;
  }
  dValue = ZuFromUnit(dValue, *pUnit);
  if (!std::isfinite(dValue)) return false;
  *pdBase = dValue;
  return true;
}

std::string ZuMeasureText(double dBase, const ZuMeasureUnit& unit) {
  std::array<char, kZuShortestSize> acText;
  char* const pEnd = ZuFormatShortest(acText.data(), ZuToUnit(dBase, unit));
  return std::string(acText.data(), pEnd) + ' ' + unit.m_szText;
}
