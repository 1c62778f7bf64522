#include "zu/points/internal/coordinate_rows.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <utility>

#include "zu/foundation/internal/characters.h"
#include "zu/points/internal/line_reader.h"

using zu::internal::IsDigit;

namespace {

bool ParseWhole(std::string_view text, long long* piValue) {
  const char* const pEnd = text.data() + text.size();
  const auto result = std::from_chars(text.data(), pEnd, *piValue);
  return !text.empty() && result.ec == std::errc() && result.ptr == pEnd;
}

// "-4.5", "3rd", ".5": text that starts as a number does.
bool IsNumberlike(std::string_view field) {
  const std::size_t u = field.find_first_not_of("+-.");
  return u < field.size() && IsDigit(field[u]);
}

}  // namespace

ZuCoordinateRows::ZuCoordinateRows(const TZuFormatTable<eZuPointRWMask>& columns,
                                   ZuReadFindings& findings, eZuReadMode eMode)
    : m_strColumns(GetZuColumnNames(columns)),
      m_findings(findings),
      m_eMode(eMode),
      m_cDecimal(eMode == eZuReadStrict ? '.' : '\0') {
  for (int i = 0; columns[i] != eZuPointRWEnd; ++i) {
    const bool bName = columns[i] == eZuPointRWName || columns[i] == eZuPointRWIdName;
    if (bName) m_iNameColumn = i;
    m_columns.push_back(columns[i]);
    m_texts.push_back(GetZuColumnText(columns[i]));
  }
  m_findings.m_Dialect.m_strForm = "coordinates";
  m_findings.m_Dialect.m_strColumns = m_strColumns;
  for (char& c : m_findings.m_Dialect.m_strColumns) c = c == ',' ? ' ' : c;
}

ZuCoordinateRows::eRow ZuCoordinateRows::Take(std::string_view line, std::uint64_t uLine,
                                              bool bEnds) {
  m_pLine = line.data();
  m_uLine = uLine;
  line = ZuTrimmed(line);
  if (line.empty()) return eRowNone;
  if (line[0] == '#') {
    m_comments.Add(uLine, 0);
    return eRowNone;
  }
  switch (Judge(line)) {
    case ePoint:
      if (m_uPoints++ == 0) m_findings.m_Dialect.SetDelimiter(line);
      return eRowPoint;
    case eTitle:
      AddTitle(line);
      return eRowNone;
    case eWrong:
      return Tell(bEnds);
    default:
      return eRowNone;
  }
}

ZuCoordinateRows::eRow ZuCoordinateRows::TakeTooLong(std::uint64_t uBytes, std::uint64_t uLine,
                                                     bool bEnds) {
  m_uLine = uLine;
  Wrong(nullptr, -1,
        {"the line has " + std::to_string(uBytes) + " bytes",
         "at most " + std::to_string(ZuLineReader::kMaxLine)});
  return Tell(bEnds);
}

ZuCoordinateRows::eRow ZuCoordinateRows::Tell(bool bEnds) {
  const std::uint64_t uColumn = ColumnOf(m_pFault);
  const char* const szName =
      m_iFaultColumn < 0 ? nullptr
                         : GetZuColumnName(m_columns[static_cast<std::size_t>(m_iFaultColumn)]);
  std::string strKeyword = szName != nullptr ? szName : "";
  // The last line of a good file may have no end either.
  if (!bEnds && m_bShort) {
    m_findings.Add(eZuReadCut, m_uLine, uColumn,
                   "the file ends within a line: " + m_fault.m_strText, m_fault.m_strRight,
                   std::move(strKeyword));
    return eRowEnd;
  }
  if (m_eMode == eZuReadTolerant) {
    m_findings.AddDroppedLine(m_uLine, uColumn, m_fault.m_strText, m_fault.m_strRight,
                              std::move(strKeyword));
    return eRowNone;
  }
  m_findings.Add(eZuReadFault, m_uLine, uColumn, m_fault.m_strText, m_fault.m_strRight,
                 std::move(strKeyword));
  return eRowEnd;
}

void ZuCoordinateRows::AddTitle(std::string_view line) {
  if (m_uPoints == 0) {
    m_titles.Add(m_uLine, 0);
    m_findings.m_Dialect.m_strHeader = line.substr(0, 80);
    return;
  }
  m_findings.AddDroppedLine(m_uLine, 0, "the line is no point, but a title", "# in front of it");
}

ZuCoordinateRows::eJudgement ZuCoordinateRows::Judge(std::string_view line) {
  const char cDivider = ZuDividerOf(line);
  ZuSplitLoosely(line, kZuAnyDelimiter, &m_loose);
  if (m_loose.empty()) return eNothing;
  m_divided.clear();
  if (cDivider != '\0') ZuSplitBy(cDivider, line, &m_divided);
  const bool bDivided = Fits(m_divided);
  if ((cDivider == ',' || !bDivided) && !CheckDecimalComma(line)) {
    return TakeCommas(line, &m_words) ? Accept(m_words) : eWrong;
  }
  const bool bLoose = Fits(m_loose);
  // What stands in quotes is a name, whatever delimiters it holds.
  const bool bQuotes = line.find('"') != line.npos;
  if (!bDivided && !(bQuotes && bLoose) && HasGap(m_divided)) return WrongFields(m_divided);
  if (bDivided) {
    if (bLoose && cDivider == ',' && !CheckOneReading(m_divided, m_loose)) return eWrong;
    return Accept(m_divided);
  }
  if (bLoose) {
    return CheckWords(false, m_loose.size(), line.data()) ? Accept(m_loose) : eWrong;
  }
  if (TakeName(m_loose, &m_words)) {
    return CheckWords(true, m_words.size(), line.data()) ? Accept(m_words) : eWrong;
  }
  const ZuLineFields& meant = m_divided.size() >= m_columns.size() ? m_divided : m_loose;
  if (IsTitle(meant)) return eTitle;
  if (m_uPoints == 0 && !m_bHeader && IsHeader(meant)) {
    m_bHeader = true;
    return eTitle;
  }
  return WrongFields(meant);
}

// The words of one line with as many of them as a name as there are too many.
bool ZuCoordinateRows::TakeName(const ZuLineFields& words, ZuLineFields* pFields) const {
  if (m_iNameColumn < 0 || words.size() <= m_columns.size()) return false;
  const auto uName = static_cast<std::size_t>(m_iNameColumn);
  const std::size_t uLast = uName + words.size() - m_columns.size();
  const char* const pBegin = words[uName].data();
  const char* const pEnd = words[uLast].data() + words[uLast].size();
  const std::string_view name(pBegin, static_cast<std::size_t>(pEnd - pBegin));
  if (name.find_first_of("\";,") != name.npos) return false;
  pFields->assign(words.begin(), words.begin() + m_iNameColumn);
  pFields->push_back(name);
  pFields->insert(pFields->end(), words.begin() + static_cast<std::ptrdiff_t>(uLast) + 1,
                  words.end());
  return Fits(*pFields);
}

// A line between blanks with decimal commas, where the reading takes them.
bool ZuCoordinateRows::TakeCommas(std::string_view line, ZuLineFields* pFields) const {
  if (m_cDecimal == '.') return false;
  ZuSplitLoosely(line, kZuNoComma, pFields);
  for (std::string_view& word : *pFields) {
    while (!word.empty() && word.back() == ',') word.remove_suffix(1);
  }
  return Fits(*pFields);
}

bool ZuCoordinateRows::NumberFits(std::string_view field) const {
  double dValue = 0.0;
  if (ZuParseNumber(field, &dValue)) {
    return m_cDecimal != ',' || field.find('.') == field.npos;
  }
  return m_cDecimal != '.' && ZuParseCommaNumber(field, &dValue);
}

bool ZuCoordinateRows::FieldFits(std::size_t i, std::string_view field) const {
  unsigned int uId = 0;
  long long iWhole = 0;
  switch (TextOf(i)) {
    case eZuColumnId:
      return ZuParseId(field, &uId);
    case eZuColumnWhole:
      return ParseWhole(field, &iWhole);
    case eZuColumnNumber:
      return NumberFits(field);
    default:
      return m_columns[i] != eZuPointRWIdName || !field.empty();
  }
}

bool ZuCoordinateRows::Fits(const ZuLineFields& fields) const {
  if (fields.size() < m_columns.size()) return false;
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    if (!FieldFits(i, fields[i])) return false;
  }
  return true;
}

// "4;;2;3;4" has no x; without its empty field it would be read as a whole point.
bool ZuCoordinateRows::HasGap(const ZuLineFields& fields) const {
  for (std::size_t i = 0; fields.size() >= m_columns.size() && i < m_columns.size(); ++i) {
    if (fields[i].empty() && TextOf(i) != eZuColumnAny) return true;
  }
  return false;
}

// A line without an id that is no point with a wrong one either: not all of its numbers are there,
// and none of them where the id starts as a number does.
bool ZuCoordinateRows::IsTitle(const ZuLineFields& fields) const {
  bool bId = true, bNumberlike = false, bAll = true, bAny = false;
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    const bool bFits = i < fields.size() && FieldFits(i, fields[i]);
    if (TextOf(i) == eZuColumnId) {
      bId = bFits;
      bNumberlike = i < fields.size() && IsNumberlike(fields[i]);
    } else if (TextOf(i) != eZuColumnAny) {
      bAll = bAll && bFits;
      bAny = bAny || bFits;
    }
  }
  return !bId && !bAll && !(bNumberlike && bAny);
}

// The names of the columns: a word for each, and none that starts as a number does.
bool ZuCoordinateRows::IsHeader(const ZuLineFields& fields) const {
  if (fields.size() < m_columns.size()) return false;
  return std::none_of(fields.begin(), fields.end(),
                      [](std::string_view f) { return f.empty() || IsNumberlike(f); });
}

// "P1 2 3 4 5,6,7" is a point with a remark, or one with a long name.
bool ZuCoordinateRows::CheckOneReading(const ZuLineFields& divided, const ZuLineFields& loose) {
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    if (TextOf(i) == eZuColumnAny || divided[i] == loose[i]) continue;
    const std::string_view name = divided[static_cast<std::size_t>(m_iNameColumn)];
    Wrong(name.data(), m_iNameColumn,
          {"the line can be read in two ways, by its commas or its blanks",
           ZuQuoted(name) + " with quotes as a name, or commas alone,"});
    return false;
  }
  return true;
}

// "Corner 3 1.0 2.0 3.0" is the name "Corner" with a number behind the coordinates, or the name
// "Corner 3"; where other lines of the file have names of several words, nobody can tell.
bool ZuCoordinateRows::CheckWords(bool bJoined, std::size_t uFields, const char* pAt) {
  if (m_iNameColumn < 0) return true;
  Counted joined = m_joined, surplus = m_surplus;
  if (bJoined) joined.Add(m_uLine, 0);
  if (!bJoined && uFields > m_columns.size()) surplus.Add(m_uLine, 0);
  if (joined.uCount > 0 && surplus.uCount > 0) {
    Wrong(pAt, m_iNameColumn,
          {"line " + std::to_string(joined.uLine) + " has a name of several words, line " +
               std::to_string(surplus.uLine) + " more fields than columns",
           "names in quotes (\"Corner 3\")"});
    return false;
  }
  m_joined = joined;
  return true;
}

// "7 12,5 3,25" would be read as four numbers. Beyond the columns a comma belongs to a remark.
bool ZuCoordinateRows::CheckDecimalComma(std::string_view line) {
  if (line.find(',') == line.npos || line.find_first_of(kZuNoComma) == line.npos) return true;
  std::size_t u = 0;
  for (std::size_t i = 0; i < m_columns.size() && u < line.size(); ++i) {
    u = line.find_first_not_of(kZuNoComma, u);
    if (u == line.npos || line[u] == '"') return true;
    const std::size_t uEnd = std::min(line.find_first_of(kZuNoComma, u), line.size());
    std::string_view word = line.substr(u, uEnd - u);
    while (!word.empty() && word.back() == ',') word.remove_suffix(1);
    if (TextOf(i) != eZuColumnAny && ZuHasDecimalComma(word)) {
      Wrong(word.data(), static_cast<int>(i), ZuWhyNoNumber(word));
      return false;
    }
    u = uEnd;
  }
  return true;
}

ZuCoordinateRows::eJudgement ZuCoordinateRows::Wrong(const char* pAt, int iColumn,
                                                     ZuTextFault fault) {
  m_bShort = false;
  m_pFault = pAt;
  m_iFaultColumn = iColumn;
  m_fault = std::move(fault);
  return eWrong;
}

ZuCoordinateRows::eJudgement ZuCoordinateRows::WrongFields(const ZuLineFields& fields) {
  if (fields.size() < m_columns.size()) {
    const std::string_view last = fields.back();
    Wrong(last.data() + last.size(), -1,
          {"the line has " + std::to_string(fields.size()) +
               (fields.size() == 1 ? " field" : " fields") + ", the columns " + m_strColumns +
               " need " + std::to_string(m_columns.size()),
           ""});
    m_bShort = true;
    return eWrong;
  }
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    if (!FieldFits(i, fields[i])) return WrongField(i, fields[i]);
  }
  return Wrong(nullptr, -1, {"the line does not fit the columns " + m_strColumns, ""});
}

ZuCoordinateRows::eJudgement ZuCoordinateRows::WrongField(std::size_t i, std::string_view field) {
  ZuTextFault fault;
  double dValue = 0.0;
  if (field.empty()) {
    fault = {"the field is empty", ""};
  } else if (TextOf(i) == eZuColumnNumber && ZuParseNumber(field, &dValue)) {
    fault = ZuWhyNoCommaNumber(field);
  } else if (TextOf(i) == eZuColumnNumber) {
    fault = ZuWhyNoNumber(field);
  } else if (TextOf(i) == eZuColumnWhole) {
    fault = {ZuQuoted(field) + " is no whole number", "one such as 12"};
  } else {
    fault = ZuWhyNoId(field);
  }
  const char* const szName = GetZuColumnName(m_columns[i]);
  if (szName != nullptr) fault.m_strText = std::string("column ") + szName + ": " + fault.m_strText;
  return Wrong(field.data(), static_cast<int>(i), std::move(fault));
}

void ZuCoordinateRows::NoteDecimal(std::string_view field) {
  if (m_cDecimal == '.' || field.find_first_of(".,") == field.npos) return;
  m_cDecimal = field.find(',') != field.npos ? ',' : '.';
  m_findings.m_Dialect.m_cDecimal = m_cDecimal;
  if (m_cDecimal == ',') m_commas.Add(m_uLine, ColumnOf(field.data()));
}

// Whole numbers are kept in 32 bits, where they end at the nearest one.
void ZuCoordinateRows::NoteLimit(std::size_t i, std::string_view field) {
  long long iValue = 0;
  if (!ParseWhole(field, &iValue)) return;
  const bool bKey = m_columns[i] == eZuPointRWPhoto || m_columns[i] == eZuPointRWCamera;
  const long long iMost =
      bKey ? std::numeric_limits<unsigned int>::max() : std::numeric_limits<int>::max();
  if (iValue >= std::numeric_limits<int>::min() && iValue <= iMost) return;
  ++m_findings.m_uClampedValues;
  m_findings.Add(eZuReadClamped, m_uLine, ColumnOf(field.data()),
                 "column " + std::string(GetZuColumnName(m_columns[i])) + ": " + ZuQuoted(field) +
                     " is limited to 32 bits",
                 "", GetZuColumnName(m_columns[i]));
}

// Fields that would be split, or not be seen, go in quotes.
ZuCoordinateRows::eJudgement ZuCoordinateRows::Accept(const ZuLineFields& fields) {
  m_strText.clear();
  for (std::size_t i = 0; i < m_columns.size(); ++i) {
    const std::string_view field = fields[i];
    if (TextOf(i) == eZuColumnNumber) NoteDecimal(field);
    if (TextOf(i) == eZuColumnWhole) NoteLimit(i, field);
    const std::size_t uBegin = m_strText.size() + (i > 0 ? 1 : 0);
    if (i > 0) m_strText += ' ';
    if (TextOf(i) == eZuColumnNumber) {
      m_strText += field;
      const std::size_t uComma = m_strText.find(',', uBegin);
      if (uComma != m_strText.npos) m_strText[uComma] = '.';
      continue;
    }
    const bool bQuotes = field.empty() || field.find_first_of(kZuAnyDelimiter) != field.npos;
    if (bQuotes && field.find('"') != field.npos) {
      return Wrong(field.data(), static_cast<int>(i),
                   {"a quote stands within the text", "quotes around it alone"});
    }
    if (bQuotes) m_strText += '"';
    m_strText += field;
    if (bQuotes) m_strText += '"';
  }
  if (fields.size() > m_columns.size()) {
    m_surplus.Add(m_uLine, ColumnOf(fields[m_columns.size()].data()));
  }
  return ePoint;
}

void ZuCoordinateRows::Finish() {
  const auto note = [this](eZuReadKind eKind, const Counted& counted, const char* szWhat) {
    if (counted.uCount == 0) return;
    m_findings.Add(eKind, counted.uLine, counted.uColumn,
                   szWhat + (": " + std::to_string(counted.uCount)));
  };
  note(eZuReadNote, m_comments, "comment lines passed over");
  note(eZuReadNote, m_titles, "title lines above the points passed over");
  note(eZuReadNote, m_surplus,
       "lines with more fields than columns, of which those behind are left out");
  note(eZuReadNote, m_joined, "lines with a name of several words between blanks");
  if (m_commas.uCount > 0) {
    m_findings.Add(eZuReadAssumed, m_commas.uLine, m_commas.uColumn,
                   "decimal commas are taken as decimal points");
  }
  m_findings.EndDroppedLines();
}
