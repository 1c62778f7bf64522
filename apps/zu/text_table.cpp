#include "text_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <utility>

#include "table_decimals.h"

namespace cli {

std::string Fixed(double dValue, int iDecimals) {
  if (!std::isfinite(dValue)) return "-";
  char szBuffer[400];  // 309 digits before the point at most
  const auto result = std::to_chars(szBuffer, szBuffer + sizeof(szBuffer), dValue,
                                    std::chars_format::fixed, std::min(iDecimals, 40));
  const std::string strText(szBuffer, result.ptr);
  const bool bZero = strText.find_first_of("123456789") == std::string::npos;
  return bZero && strText[0] == '-' ? strText.substr(1) : strText;
}

std::string Counted(long long iCount, const std::string& strOne) {
  return Counted(iCount, strOne, strOne + "s");
}

std::string Counted(long long iCount, const std::string& strOne, const std::string& strMany) {
  return std::to_string(iCount) + " " + (iCount == 1 ? strOne : strMany);
}

int DecimalsFor(double dLargest) {
  if (!(dLargest > 0.0) || !std::isfinite(dLargest)) return TableDecimals(4);
  return TableDecimals(
      std::clamp(4 - static_cast<int>(std::floor(std::log10(dLargest))) - 1, 4, 12));
}

std::string Shortest(double dValue) {
  if (!std::isfinite(dValue)) return "-";
  char szBuffer[400];
  const auto result =
      std::to_chars(szBuffer, szBuffer + sizeof(szBuffer), dValue + 0.0, std::chars_format::fixed);
  return std::string(szBuffer, result.ptr);
}

std::string Angle(double dRadians) {
  return Fixed(dRadians * 200.0 / std::numbers::pi, 7) + " gon  " +
         Fixed(dRadians * 180.0 / std::numbers::pi, 7) + " deg";
}

void TextTable::AddColumn(const std::string& strTitle, eAlign align) {
  m_columns.push_back({strTitle, align});
}

void TextTable::AddRow(std::vector<std::string> cells) {
  cells.resize(m_columns.size());
  m_rows.push_back(std::move(cells));
}

void TextTable::Write(std::ostream& stream) const {
  std::vector<std::string> titles;
  std::vector<size_t> widths;
  for (size_t i = 0; i < m_columns.size(); ++i) {
    titles.push_back(m_columns[i].strTitle);
    widths.push_back(titles.back().size());
    for (const auto& row : m_rows) widths[i] = std::max(widths[i], row[i].size());
  }
  WriteRow(titles, widths, stream);
  for (const auto& row : m_rows) WriteRow(row, widths, stream);
}

void TextTable::WriteRow(const std::vector<std::string>& cells, const std::vector<size_t>& widths,
                         std::ostream& stream) const {
  std::string strLine;
  for (size_t i = 0; i < m_columns.size(); ++i) {
    const std::string strFill(widths[i] - cells[i].size(), ' ');
    if (i > 0) strLine += "  ";
    strLine += m_columns[i].align == eLeft ? cells[i] + strFill : strFill + cells[i];
  }
  strLine.erase(strLine.find_last_not_of(' ') + 1);
  stream << strLine << '\n';
}

}  // namespace cli
