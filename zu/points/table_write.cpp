#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <ostream>
#include <string>

#include "zu/foundation/numbers.h"
#include "zu/points/column_names.h"
#include "zu/points/internal/columns.h"
#include "zu/points/table.h"

namespace {

constexpr int kMoreDecimals = 3;  // than the table had
constexpr int kLeastDecimals = 4;
constexpr int kMostDecimals = 17;

template <class Number>
std::string TableNumber(Number dValue, char cDecimal, int iDecimals) {
  if (!std::isfinite(dValue)) return std::isnan(dValue) ? "nan" : dValue < 0 ? "-inf" : "inf";
  std::array<char, 400> acText;
  char* const pEnd = iDecimals == kZuAllDecimals
                         ? std::to_chars(acText.data(), acText.data() + acText.size(), dValue,
                                         std::chars_format::fixed)
                               .ptr
                         : ZuFormatFixed(acText.data(), static_cast<double>(dValue), iDecimals);
  std::string strText(acText.data(), pEnd);
  if (strText[0] == '-' && strText.find_first_of("123456789") == strText.npos) strText.erase(0, 1);
  std::replace(strText.begin(), strText.end(), '.', cDecimal);
  return strText;
}

std::string TableText(const std::string& strText, char cDelimiter) {
  const char szSpecial[] = {'"', cDelimiter == '\0' ? ' ' : cDelimiter, '\t', '\0'};
  const bool bQuotes = strText.empty() || strText.find_first_of(szSpecial) != strText.npos ||
                       strText.front() == ' ' || strText.back() == ' ' || strText[0] == '#';
  return bQuotes ? '"' + strText + '"' : strText;
}

std::string NameOrId(const ZuPoint& point) {
  const std::string strName = point.GetName().chars();
  return strName.empty() ? std::to_string(point.GetId()) : strName;
}

std::string TableField(const ZuPoint& point, const ZuColumn& column, const ZuTableForm& form,
                       int iDecimals) {
  switch (column.eKind) {
    case eZuColumnKind::Id:
      return std::to_string(point.GetId());
    case eZuColumnKind::IdName:
      return TableText(NameOrId(point), form.m_cDelimiter);
    case eZuColumnKind::Name:
      return TableText(point.GetName().chars(), form.m_cDelimiter);
    case eZuColumnKind::Flag:
      return std::to_string(point.GetFlag());
    case eZuColumnKind::Code:
      return point.GetControlFlagsAs123();
    case eZuColumnKind::Short:
      return std::to_string(point.*column.pShort);
    case eZuColumnKind::Int:
      return std::to_string(point.*column.pInt);
    case eZuColumnKind::Key:
      return std::to_string(static_cast<unsigned>(point.*column.pInt));
    case eZuColumnKind::Double:
      return TableNumber(point.*column.pDouble, form.m_cDecimal, iDecimals);
    case eZuColumnKind::Float:
      return TableNumber(point.*column.pFloat, form.m_cDecimal, iDecimals);
    default:
      return "";
  }
}

}  // namespace

void ZuWriteTable(std::ostream& stream, const ZuPointList& points, const ZuTableForm& form,
                  int iDecimals) {
  if (iDecimals < 0 && iDecimals != kZuAllDecimals) {
    iDecimals = std::max(form.m_iDecimals + kMoreDecimals, kLeastDecimals);
  }
  iDecimals = std::min(iDecimals, kMostDecimals);
  const char cDelimiter = form.m_cDelimiter == '\0' ? ' ' : form.m_cDelimiter;
  const char* const szEnd = form.m_bCarriageReturns ? "\r\n" : "\n";
  std::string strLine;
  const auto end = [&] {
    stream << strLine << szEnd;
    strLine.clear();
  };
  if (form.m_bByteOrderMark) stream << "\xEF\xBB\xBF";
  const auto isLeftOut = [&form](std::size_t i) { return form.m_aColumns[i] == eZuPointRWSkip; };
  for (std::size_t i = 0; i < form.m_aTitles.size(); ++i) {
    if (isLeftOut(i)) continue;
    if (!strLine.empty()) strLine += cDelimiter;
    strLine += TableText(form.m_aTitles[i], form.m_cDelimiter);
  }
  if (!form.m_aTitles.empty()) end();
  for (const ZuPoint* p = points.First(); p != nullptr && stream.good(); p = p->Next()) {
    bool bFirst = true;
    for (std::size_t i = 0; i < form.m_aColumns.size(); ++i) {
      if (isLeftOut(i)) continue;
      if (!bFirst) strLine += cDelimiter;
      bFirst = false;
      strLine += TableField(*p, ZuFindColumn(form.m_aColumns[i]), form, iDecimals);
    }
    end();
  }
}
