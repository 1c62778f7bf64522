#include "zu/points/internal/gsi_word.h"

#include <algorithm>
#include <array>
#include <utility>

#include "zu/foundation/alnum_id.h"
#include "zu/foundation/number_text.h"
#include "zu/foundation/numbers.h"

namespace zu::internal {

namespace {

struct LengthUnit {
  char cCode;
  std::size_t uDecimals;  // of the data
  eZuUnit eUnit;
};

constexpr LengthUnit kLengthUnits[] = {{'0', 3, eZuUnitMeter},
                                       {'1', 3, eZuUnitFoot},
                                       {'6', 4, eZuUnitMeter},
                                       {'7', 4, eZuUnitFoot},
                                       {'8', 5, eZuUnitMeter}};

}  // namespace

std::optional<double> GsiNumber(char cSign, std::string_view data, std::size_t uDecimals) {
  if (data.size() < uDecimals || data.size() > 16) return {};
  if (!std::all_of(data.begin(), data.end(), IsDigit)) return {};
  std::array<char, 20> acText;  // sign, 16 digits, point
  char* p = acText.data();
  *p++ = cSign;
  const std::size_t uWhole = data.size() - uDecimals;
  p = std::copy_n(data.begin(), uWhole, p);
  *p++ = '.';
  p = std::copy(data.begin() + static_cast<std::ptrdiff_t>(uWhole), data.end(), p);
  return ZuAtof(acText.data(), p);
}

std::optional<double> GsiLength(std::string_view word) {
  const auto* const pUnit =
      std::find_if(std::begin(kLengthUnits), std::end(kLengthUnits),
                   [&](const LengthUnit& u) { return u.cCode == word[kGsiUnit]; });
  if (pUnit == std::end(kLengthUnits)) return {};
  std::optional<double> value = GsiNumber(word[kGsiSign], word.substr(kGsiData), pUnit->uDecimals);
  if (value) ConvertUnit(&*value, pUnit->eUnit, eZuUnitMeter);
  return value;
}

std::string_view GsiTrimmed(std::string_view data) {
  while (!data.empty() && data.back() == ' ') data.remove_suffix(1);
  while (data.size() > 1 && (data.front() == '0' || data.front() == ' ')) data.remove_prefix(1);
  return data;
}

ZuPoint GsiPointOf(std::string_view text, const double (&adCoordinate)[3]) {
  // More digits than every Id may have make a name.
  constexpr std::size_t kIdDigits = 9;

  ZuPoint point(0, adCoordinate[0], adCoordinate[1], adCoordinate[2]);
  if (text.size() <= kIdDigits && std::all_of(text.begin(), text.end(), IsDigit)) {
    point.SetId(ZuAtou(text.data(), text.data() + text.size()));
  }
  if (point.GetId() != 0) return point;
  point.SetName(String(text.data(), static_cast<int>(text.size())));
  point.SetId(GetIdFromAlphaNumericString(point.GetName()));
  return point;
}

bool GsiTelling::Damaged(std::string_view line, const char* pDamage) {
  if (m_lines.HasMorePieces()) return true;
  Count();
  if (pDamage == nullptr) return Wrong(0, "the line is too long", "at most 1999 bytes");
  const auto uAt = static_cast<std::size_t>(pDamage - line.data());
  std::string strRight = "a word such as 81..00+00012345";
  return Wrong(uAt + 1, ZuQuoted(line.substr(uAt, 24)) + " is no word", std::move(strRight));
}

void GsiTelling::Count() {
  ++m_uLine;
  ZuReadDialect& dialect = m_findings.m_Dialect;
  if (m_lines.HasEnd()) dialect.AddLineEnd(m_lines.HasCarriageReturn());
  dialect.m_bByteOrderMark = m_lines.HasByteOrderMark();
}

bool GsiTelling::Wrong(std::uint64_t uColumn, std::string strText, std::string strRight) {
  if (m_eMode == eZuReadStrict) {
    m_findings.Add(eZuReadFault, m_uLine, uColumn, std::move(strText), std::move(strRight));
    return false;
  }
  m_findings.AddDroppedLine(m_uLine, uColumn, std::move(strText), std::move(strRight));
  return true;
}

}  // namespace zu::internal
