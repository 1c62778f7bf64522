#include "point_lines.h"

#include <algorithm>
#include <utility>

#include "exit_code.h"
#include "point_columns.h"
#include "zu/foundation/numbers.h"

namespace cli {
namespace {

constexpr std::string_view kDelimiters = " \t;,";
constexpr size_t kLongestLine = 1999;  // bytes that the library takes as one line

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The whole field is a number.
bool IsNumber(std::string_view field) {
  const char* pEnd = field.data() + field.size();
  const char* pStop = field.data();
  ZuAtof(field.data(), pEnd, &pStop);
  return pStop == pEnd && !field.empty();
}

}  // namespace

PointLines::PointLines(std::string strPath, std::string strColumns,
                       const std::vector<eZuPointRWMask>& columns)
    : m_strPath(std::move(strPath)), m_strColumns(std::move(strColumns)), m_columns(columns) {}

void PointLines::Check(char* pBegin, char* pEnd) {
  while (pBegin < pEnd) {
    char* const pLineEnd = std::find(pBegin, pEnd, '\n');
    std::string_view line(pBegin, static_cast<size_t>(pLineEnd - pBegin));
    line = line.substr(0, line.find('\0'));
    while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++m_iLine;
    const size_t uFirst = line.find_first_not_of(" \t");
    if (uFirst != line.npos && line[uFirst] == '#') {
      std::fill(pBegin, pLineEnd, ' ');
    } else {
      CheckLine(line);
    }
    pBegin = pLineEnd == pEnd ? pEnd : pLineEnd + 1;
  }
}

void PointLines::CheckLine(std::string_view line) {
  if (line.size() > kLongestLine) {
    Fail("the line has " + std::to_string(line.size()) + " bytes, at most " +
         std::to_string(kLongestLine) + " would be right");
  }
  Split(line);
  if (m_fields.empty()) return;
  if (HasId()) {
    CheckDecimalComma(line);
    CheckFields();
  } else if (std::count_if(m_fields.begin(), m_fields.end(), IsNumber) >= 2) {
    if (m_iSkipped++ == 0) m_iFirstSkipped = m_iLine;
  }
}

// As the library does: runs of delimiters count once, a field that starts with '"' ends at the
// next.
void PointLines::Split(std::string_view line) {
  m_fields.clear();
  for (size_t u = line.find_first_not_of(kDelimiters); u != line.npos && u < line.size();
       u = line.find_first_not_of(kDelimiters, u)) {
    const bool bQuoted = line[u] == '"';
    if (bQuoted) ++u;
    const size_t uEnd =
        std::min(bQuoted ? line.find('"', u) : line.find_first_of(kDelimiters, u), line.size());
    m_fields.push_back(line.substr(u, uEnd - u));
    u = bQuoted ? uEnd + 1 : uEnd;
    if (u > line.size() || m_fields.size() > m_columns.size()) break;
  }
}

bool PointLines::HasId() const {
  if (!HasIdColumn(m_columns)) return true;  // the place in the file is the id
  for (size_t i = 0; i < std::min(m_fields.size(), m_columns.size()); ++i) {
    if (m_columns[i] == eZuPointRWIdName && !m_fields[i].empty()) return true;
    if (m_columns[i] != eZuPointRWId) continue;
    if (ZuAtoi(m_fields[i].data(), m_fields[i].data() + m_fields[i].size()) != 0) return true;
  }
  return false;
}

void PointLines::CheckFields() const {
  if (m_fields.size() < m_columns.size()) {
    Fail("the line has " + std::to_string(m_fields.size()) + " fields, the columns " +
         m_strColumns + " need " + std::to_string(m_columns.size()));
  }
  for (size_t i = 0; i < m_columns.size(); ++i) {
    if (!IsNumberColumn(m_columns[i]) || IsNumber(m_fields[i])) continue;
    Fail("\"" + std::string(m_fields[i].substr(0, 40)) + "\" in column " +
         ColumnName(m_columns[i]) + " is no number, one such as 12.345 would be right");
  }
}

// "7 12,5 3,25" would be read as four numbers: a comma between digits beside another delimiter.
void PointLines::CheckDecimalComma(std::string_view line) const {
  bool bComma = false;
  bool bOther = false;
  for (size_t i = 1; i + 1 < line.size(); ++i) {
    const bool bBetween = IsDigit(line[i - 1]) && IsDigit(line[i + 1]);
    bComma = bComma || (line[i] == ',' && bBetween);
    bOther = bOther || line[i] == ';' ||
             ((line[i] == ' ' || line[i] == '\t') && line[i - 1] != ',' && line[i + 1] != ',');
  }
  if (bComma && bOther && m_fields.size() > m_columns.size()) {
    Fail("the line has decimal commas, which separate fields; points would be right");
  }
}

void PointLines::Fail(const std::string& strWhat) const {
  throw CommandError(kBadInput, m_strPath + ":" + std::to_string(m_iLine) + ": " + strWhat);
}

}  // namespace cli
