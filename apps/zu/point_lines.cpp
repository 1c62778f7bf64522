#include "point_lines.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "exit_code.h"
#include "number_text.h"
#include "point_columns.h"

namespace cli {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kDelimiters = " \t;,";
constexpr size_t kLongestLine = 1999;  // bytes that the library takes as one line

std::string_view Trimmed(std::string_view text) {
  const size_t uFirst = text.find_first_not_of(kBlanks);
  if (uFirst == text.npos) return {};
  return text.substr(uFirst, text.find_last_not_of(kBlanks) + 1 - uFirst);
}

bool IsWhole(std::string_view text) {
  long long iValue = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), iValue);
  return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// As the library does: runs of delimiters count once, a field that starts with '"' ends at the
// next.
std::vector<std::string_view> SplitLoosely(std::string_view line) {
  std::vector<std::string_view> fields;
  for (size_t u = line.find_first_not_of(kDelimiters); u < line.size();
       u = line.find_first_not_of(kDelimiters, u)) {
    const bool bQuoted = line[u] == '"';
    if (bQuoted) ++u;
    const size_t uEnd =
        std::min(bQuoted ? line.find('"', u) : line.find_first_of(kDelimiters, u), line.size());
    fields.push_back(line.substr(u, uEnd - u));
    u = bQuoted ? uEnd + 1 : uEnd;
    if (u >= line.size()) break;
  }
  return fields;
}

// By one delimiter alone: blanks around a field go, a field that starts with '"' ends at the next.
// Runs of tabs count once, since they align columns.
std::vector<std::string_view> SplitBy(char cDelimiter, std::string_view line) {
  std::vector<std::string_view> fields;
  for (size_t u = 0; u <= line.size();) {
    const size_t uFirst = std::min(line.find_first_not_of(' ', u), line.size());
    const bool bQuoted = uFirst < line.size() && line[uFirst] == '"';
    const size_t uClosed = bQuoted ? std::min(line.find('"', uFirst + 1), line.size()) : uFirst;
    size_t uEnd = std::min(line.find(cDelimiter, uClosed), line.size());
    fields.push_back(bQuoted ? line.substr(uFirst + 1, uClosed - uFirst - 1)
                             : Trimmed(line.substr(u, uEnd - u)));
    while (cDelimiter == '\t' && uEnd + 1 < line.size() && line[uEnd + 1] == '\t') ++uEnd;
    u = uEnd + 1;
  }
  return fields;
}

char DividerOf(std::string_view line) {
  for (const char c : {';', '\t', ','}) {
    if (line.find(c) != line.npos) return c;
  }
  return '\0';
}

}  // namespace

PointLines::PointLines(std::string strPath, std::string strColumns,
                       const std::vector<eZuPointRWMask>& columns)
    : m_strPath(std::move(strPath)), m_strColumns(std::move(strColumns)), m_columns(columns) {
  for (size_t i = 0; i < columns.size(); ++i) {
    const bool bName = columns[i] == eZuPointRWName || columns[i] == eZuPointRWIdName;
    if (bName) m_iNameColumn = static_cast<int>(i);
  }
}

std::string PointLines::Take(std::string_view text) {
  std::string strOut;
  strOut.reserve(text.size() + 1);
  for (size_t uBegin = 0; uBegin < text.size();) {
    const size_t uEnd = std::min(text.find('\n', uBegin), text.size());
    std::string_view line = text.substr(uBegin, uEnd - uBegin);
    line = line.substr(0, line.find('\0'));
    while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    ++m_iLine;
    const std::string_view trimmed = Trimmed(line);
    if (!trimmed.empty() && trimmed[0] != '#') TakeLine(trimmed, &strOut);
    uBegin = uEnd + 1;
  }
  return strOut;
}

void PointLines::TakeLine(std::string_view line, std::string* pOut) {
  if (line.size() > kLongestLine) {
    Fail("the line has " + std::to_string(line.size()) + " bytes, at most " +
         std::to_string(kLongestLine) + " would be right");
  }
  const char cDivider = DividerOf(line);
  Fields loose = SplitLoosely(line);
  if (loose.empty()) return;
  const Fields divided = cDivider != '\0' ? SplitBy(cDivider, line) : Fields();
  const bool bDivided = divided.size() >= m_columns.size() && Fits(divided);
  if (cDivider == ',' || !bDivided) CheckDecimalComma(line);
  const bool bLoose = Fits(loose);
  if (!bDivided && HasGap(divided)) FailFields(divided);
  if (bDivided) {
    if (bLoose && cDivider == ',') CheckTwoReadings(divided, loose);
    return Append(divided, pOut);
  }
  if (bLoose) {
    CheckWords(false, loose.size());
    return Append(loose, pOut);
  }
  Fields joined;
  if (TakeName(loose, &joined)) {
    CheckWords(true, joined.size());
    return Append(joined, pOut);
  }
  const Fields& meant = divided.size() >= m_columns.size() ? divided : loose;
  if (!IsTitle(meant)) FailFields(meant);
}

// The words of one line with as many of them as a name as there are too many.
bool PointLines::TakeName(const Fields& words, Fields* pFields) const {
  if (m_iNameColumn < 0 || words.size() <= m_columns.size()) return false;
  const size_t uName = static_cast<size_t>(m_iNameColumn);
  const size_t uLast = uName + words.size() - m_columns.size();
  const char* const pBegin = words[uName].data();
  const char* const pEnd = words[uLast].data() + words[uLast].size();
  const std::string_view name(pBegin, static_cast<size_t>(pEnd - pBegin));
  if (name.find_first_of("\";,") != name.npos) return false;
  pFields->assign(words.begin(), words.begin() + m_iNameColumn);
  pFields->push_back(name);
  pFields->insert(pFields->end(), words.begin() + static_cast<std::ptrdiff_t>(uLast) + 1,
                  words.end());
  return Fits(*pFields);
}

bool PointLines::FieldFits(size_t i, std::string_view field) const {
  unsigned uId = 0;
  double dValue = 0.0;
  switch (KindOf(m_columns[i])) {
    case eIdColumn:
      return ParseId(field, &uId);
    case eWholeColumn:
      return IsWhole(field);
    case eNumberColumn:
      return ParseNumber(field, &dValue);
    default:
      return m_columns[i] != eZuPointRWIdName || !field.empty();
  }
}

bool PointLines::Fits(const Fields& fields) const {
  if (fields.size() < m_columns.size()) return false;
  for (size_t i = 0; i < m_columns.size(); ++i) {
    if (!FieldFits(i, fields[i])) return false;
  }
  return true;
}

// "4;;2;3;4" has no x; without its empty field it would be read as a whole point.
bool PointLines::HasGap(const Fields& fields) const {
  for (size_t i = 0; fields.size() >= m_columns.size() && i < m_columns.size(); ++i) {
    if (fields[i].empty() && KindOf(m_columns[i]) != eTextColumn) return true;
  }
  return false;
}

// A line without an id that is no point with a wrong one either: not all of its numbers are there,
// and none of them where the id starts as a number does.
bool PointLines::IsTitle(const Fields& fields) const {
  bool bId = true, bNumberlike = false, bAll = true, bAny = false;
  for (size_t i = 0; i < m_columns.size(); ++i) {
    const bool bFits = i < fields.size() && FieldFits(i, fields[i]);
    if (KindOf(m_columns[i]) == eIdColumn) {
      bId = bFits;
      const size_t uSign = i < fields.size() ? fields[i].find_first_not_of("+-.") : 0;
      bNumberlike = i < fields.size() && uSign < fields[i].size() && fields[i][uSign] >= '0' &&
                    fields[i][uSign] <= '9';
    } else if (KindOf(m_columns[i]) != eTextColumn) {
      bAll = bAll && bFits;
      bAny = bAny || bFits;
    }
  }
  return !bId && !bAll && !(bNumberlike && bAny);
}

// "P1 2 3 4 5,6,7" is a point with a remark, or one with a long name.
void PointLines::CheckTwoReadings(const Fields& divided, const Fields& loose) const {
  for (size_t i = 0; i < m_columns.size(); ++i) {
    if (KindOf(m_columns[i]) == eTextColumn || divided[i] == loose[i]) continue;
    Fail("the line can be read in two ways, by its commas or its blanks; \"" +
         std::string(divided[static_cast<size_t>(m_iNameColumn)].substr(0, 40)) +
         "\" with quotes as a name, or commas alone, would be right");
  }
}

// "Corner 3 1.0 2.0 3.0" is the name "Corner" with a number behind the coordinates, or the name
// "Corner 3"; where other lines of the file have names of several words, nobody can tell.
void PointLines::CheckWords(bool bJoined, size_t uFields) {
  if (m_iNameColumn < 0) return;
  if (bJoined && m_iJoined == 0) m_iJoined = m_iLine;
  if (!bJoined && uFields > m_columns.size() && m_iSurplus == 0) m_iSurplus = m_iLine;
  if (m_iJoined == 0 || m_iSurplus == 0) return;
  Fail("line " + std::to_string(m_iJoined) + " has a name of several words, line " +
       std::to_string(m_iSurplus) +
       " more fields than columns; names in quotes (\"Corner 3\") would be right");
}

// "7 12,5 3,25" would be read as four numbers. Beyond the columns a comma belongs to a remark.
void PointLines::CheckDecimalComma(std::string_view line) const {
  if (line.find(',') == line.npos || line.find_first_of(" \t;") == line.npos) return;
  size_t i = 0;
  for (size_t u = 0; i < m_columns.size() && u < line.size(); ++i) {
    u = line.find_first_not_of(" \t;", u);
    if (u == line.npos) return;
    if (line[u] == '"') return;
    const size_t uEnd = std::min(line.find_first_of(" \t;", u), line.size());
    std::string_view word = line.substr(u, uEnd - u);
    while (!word.empty() && word.back() == ',') word.remove_suffix(1);
    if (KindOf(m_columns[i]) != eTextColumn && HasDecimalComma(word)) {
      Fail(WhyNoNumber(word) + "; commas separate fields");
    }
    u = uEnd;
  }
}

void PointLines::FailFields(const Fields& fields) const {
  if (fields.size() < m_columns.size()) {
    Fail("the line has " + std::to_string(fields.size()) +
         (fields.size() == 1 ? " field" : " fields") + ", the columns " + m_strColumns + " need " +
         std::to_string(m_columns.size()));
  }
  for (size_t i = 0; i < m_columns.size(); ++i) {
    if (FieldFits(i, fields[i])) continue;
    const std::string strColumn = std::string("column ") + ColumnName(m_columns[i]) + ": ";
    if (fields[i].empty()) Fail(strColumn + "the field is empty");
    if (KindOf(m_columns[i]) == eNumberColumn) Fail(strColumn + WhyNoNumber(fields[i]));
    if (KindOf(m_columns[i]) == eWholeColumn) {
      Fail(strColumn + "\"" + std::string(fields[i].substr(0, 40)) + "\" is no whole number");
    }
    Fail(strColumn + WhyNoId(fields[i]) +
         "\nnames as ids are read with --columns idname,..., titles start with #");
  }
  Fail("the line does not fit the columns " + m_strColumns);
}

// Fields that the library would split, or not see, go in quotes.
void PointLines::Append(const Fields& fields, std::string* pOut) {
  for (size_t i = 0; i < m_columns.size(); ++i) {
    const std::string_view field = fields[i];
    const bool bQuotes = field.empty() || field.find_first_of(kDelimiters) != field.npos;
    if (bQuotes && field.find('"') != field.npos) {
      Fail(std::string("column ") + ColumnName(m_columns[i]) +
           ": a quote stands within the text; quotes around it alone would be right");
    }
    if (i > 0) *pOut += ' ';
    if (bQuotes) *pOut += '"';
    *pOut += field;
    if (bQuotes) *pOut += '"';
  }
  *pOut += '\n';
  m_lines.push_back(m_iLine);
}

void PointLines::Fail(const std::string& strWhat) const {
  throw CommandError(kBadInput, m_strPath + ":" + std::to_string(m_iLine) + ": " + strWhat);
}

}  // namespace cli
