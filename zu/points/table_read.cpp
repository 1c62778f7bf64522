#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "zu/foundation/number_text.h"
#include "zu/points/column_names.h"
#include "zu/points/column_titles.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/internal/read_rows.h"
#include "zu/points/internal/table_text.h"
#include "zu/points/table.h"

namespace {

bool ReadWholeTable(std::FILE* pFile, std::string* pText) {
  char acBlock[65536];
  for (std::size_t n; (n = std::fread(acBlock, 1, sizeof acBlock, pFile)) > 0;) {
    pText->append(acBlock, n);
  }
  return std::ferror(pFile) == 0;
}

int DecimalsOf(std::string_view field, char cDecimal) {
  const std::size_t u = field.find(cDecimal);
  if (u == field.npos) return 0;
  const std::size_t uEnd = std::min(field.find_first_not_of("0123456789", u + 1), field.size());
  return static_cast<int>(std::min<std::size_t>(uEnd - u - 1, 15));
}

// The most digits behind a decimal point of any number.
int MostDecimals(std::string_view text) {
  int iDecimals = 0;
  for (std::size_t u = text.find('.'); u != text.npos; u = text.find('.', u + 1)) {
    iDecimals = std::max(iDecimals, DecimalsOf(text.substr(u, 20), '.'));
  }
  return iDecimals;
}

// Makes lines that ZuReadCoordinates takes of those of a table, each in its place and every
// character in its column, so that findings have the places of the file.
class Rows {
 public:
  Rows(const ZuTableOptions& options, ZuTableForm* pForm, std::string* pText)
      : m_options(options), m_form(*pForm), m_text(*pText) {
    if (options.m_bDecimalComma) m_cDecimal = ',';
    // Without titles decimal commas must be told.
    if (m_cDecimal == 0 && (m_form.m_uTitleLine == 0 || m_form.m_cDelimiter == ',')) {
      m_cDecimal = '.';
    }
  }

  // False where a number has the other decimal mark: the text ends above it, with a fault, or a
  // tolerant reading leaves the line out.
  void Run(eZuReadMode eMode, ZuReadFindings* pFindings) {
    const std::string strText(m_text);  // the lines are parts of it
    ZuTextLines lines(strText);
    for (std::string_view line; lines.Next(&line);) {
      m_uPlace = static_cast<std::size_t>(line.data() - strText.data());
      ZuTextFault fault;
      const std::size_t uAt = Take(line, lines.GetNumber(), &fault);
      if (uAt == line.npos) continue;
      if (eMode == eZuReadTolerant) {
        Blank(line.size());
        pFindings->AddDroppedLine(lines.GetNumber(), uAt + 1, fault.m_strText, fault.m_strRight);
        continue;
      }
      m_text.resize(m_uPlace);
      m_fault = {lines.GetNumber(), uAt + 1};
      m_why = std::move(fault);
      break;
    }
    if (m_cDecimal == ',') m_form.m_cDecimal = ',';
  }

  void AddFault(ZuReadFindings* pFindings) const {
    if (m_fault.first == 0) return;
    pFindings->Add(eZuReadFault, m_fault.first, m_fault.second, m_why.m_strText, m_why.m_strRight);
  }

 private:
  void Blank(std::size_t uCount) { std::fill_n(m_text.begin() + Offset(0), uCount, ' '); }
  std::ptrdiff_t Offset(std::size_t u) const { return static_cast<std::ptrdiff_t>(m_uPlace + u); }

  // The place of what is wrong in the line; npos for nothing.
  std::size_t Take(std::string_view line, std::uint64_t uLine, ZuTextFault* pFault) {
    if (uLine <= m_options.m_uSkipLines || uLine <= m_form.m_uTitleLine) {
      Blank(line.size());
      return line.npos;
    }
    const std::size_t uText = line.find_first_not_of(" \t");
    if (uText == line.npos || line[uText] == '#') return line.npos;
    if (m_form.m_uTitleLine > 0 && (line[uText] == '%' || line.substr(uText, 2) == "//")) {
      m_text[m_uPlace + uText] = '#';
      return line.npos;
    }
    ZuSplitTable(m_form.m_cDelimiter, line, &m_fields);
    // Spreadsheets write rows of nothing but delimiters.
    if (std::all_of(m_fields.begin(), m_fields.end(), [](auto f) { return f.empty(); })) {
      Blank(line.size());
      return line.npos;
    }
    const std::size_t uWrong = TakeNumbers(line, pFault);
    if (uWrong == line.npos && m_form.m_cDelimiter != '\0') Divide(line);
    return uWrong;
  }

  std::size_t TakeNumbers(std::string_view line, ZuTextFault* pFault) {
    // Names between blanks may be several words.
    const bool bWords = m_form.m_cDelimiter == '\0';
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
      const bool bColumn = i < m_form.m_aColumns.size();
      const bool bNumber = bColumn && GetZuColumnText(m_form.m_aColumns[i]) == eZuColumnNumber;
      if (!bNumber && !(bWords && ZuHasDecimalComma(m_fields[i]))) continue;
      const auto uAt = static_cast<std::size_t>(m_fields[i].data() - line.data());
      if (!TakeNumber(m_fields[i], uAt, pFault)) return uAt;
    }
    return line.npos;
  }

  bool TakeNumber(std::string_view field, std::size_t uAt, ZuTextFault* pFault) {
    const std::size_t uMark = field.find_first_of(".,");
    if (uMark == field.npos) return true;
    double dValue = 0.0;
    const bool bComma = ZuHasDecimalComma(field);
    if (!bComma && !ZuParseNumber(field, &dValue)) return true;  // is told behind this
    if (m_cDecimal == 0) m_cDecimal = bComma ? ',' : '.';
    m_form.m_iDecimals = std::max(m_form.m_iDecimals, DecimalsOf(field, field[uMark]));
    if (bComma && m_cDecimal == ',') m_text[m_uPlace + uAt + uMark] = '.';
    if (bComma || m_cDecimal == '.') return true;
    *pFault = ZuWhyNoCommaNumber(field);
    return false;
  }

  // Between ';', which separate names with blanks and empty fields.
  void Divide(std::string_view line) {
    bool bQuoted = false;
    for (std::size_t u = 0; u < line.size(); ++u) {
      if (line[u] == '"') bQuoted = !bQuoted;
      if (!bQuoted && line[u] == m_form.m_cDelimiter) m_text[m_uPlace + u] = ';';
    }
  }

  const ZuTableOptions& m_options;
  ZuTableForm& m_form;
  std::string& m_text;
  char m_cDecimal = 0;  // 0: no fraction was met
  std::size_t m_uPlace = 0;
  ZuLineFields m_fields;
  std::pair<std::uint64_t, std::uint64_t> m_fault;  // line and column
  ZuTextFault m_why;
};

eZuDelimiter DelimiterOf(char cDelimiter) {
  switch (cDelimiter) {
    case '\0':
      return eZuDelimiterBlank;
    case '\t':
      return eZuDelimiterTab;
    case ',':
      return eZuDelimiterComma;
    case ';':
      return eZuDelimiterSemicolon;
    default:
      return eZuDelimiterMixed;
  }
}

struct UnitFactor {
  double ZuPoint::*pValue;
  double dFactor;
};

// Of columns with a unit of their own, which are brought to that of the coordinates.
std::vector<UnitFactor> UnitFactors(const ZuTableForm& form) {
  std::vector<UnitFactor> factors;
  const double dUnit = GetZuUnitLength(form.m_strUnit);
  for (std::size_t i = 0; i < form.m_aTitles.size() && dUnit > 0.0; ++i) {
    const double dOwn = GetZuUnitLength(FindZuColumnTitle(form.m_aTitles[i]).m_strUnit);
    const int iColumn = form.m_aColumns[i] - eZuPointRWX;
    if (dOwn == 0.0 || dOwn == dUnit || iColumn < 0 || iColumn > 5) continue;
    double ZuPoint::*const pValues[] = {&ZuPoint::m_dX,  &ZuPoint::m_dY,  &ZuPoint::m_dZ,
                                        &ZuPoint::m_dDX, &ZuPoint::m_dDY, &ZuPoint::m_dDZ};
    factors.push_back({pValues[iColumn], dOwn / dUnit});
  }
  return factors;
}

void Tell(const ZuTableForm& form, ZuReadDialect* pDialect) {
  if (pDialect->m_eDelimiter != eZuDelimiterNone) {
    pDialect->m_eDelimiter = DelimiterOf(form.m_cDelimiter);
  }
  pDialect->m_cDecimal = form.m_cDecimal;
  pDialect->m_bByteOrderMark = form.m_bByteOrderMark;
  if (form.m_eEncoding != eZuTextUtf8) {
    pDialect->m_strForm += std::string(" in ") + GetZuTextEncodingName(form.m_eEncoding);
  }
  if (form.m_aTitles.empty()) return;
  pDialect->m_strHeader.clear();
  for (const std::string& strTitle : form.m_aTitles) {
    pDialect->m_strHeader += (pDialect->m_strHeader.empty() ? "" : " ") + strTitle;
  }
}

void ReadText(std::string text, const ZuTableOptions& options, const ZuPointTaker& take,
              eZuReadMode eMode, ZuTableReading* pReading) {
  ZuTableForm& form = pReading->m_Form;
  ZuDecodeTable(&text, &form);
  if (!ZuFindTableForm(text, options, &form)) {
    pReading->m_Findings.Add(eZuReadFault, form.m_uTitleLine, 0,
                             "the titles do not fit the first line of numbers",
                             "a title for each of its fields");
    return;
  }
  std::vector<eZuPointRWMask> columns = form.m_aColumns;
  columns.push_back(eZuPointRWEnd);
  const TZuFormatTable<eZuPointRWMask> table(columns.data());

  Rows rows(options, &form, &text);
  const bool bTold = form.m_uTitleLine > 0 || options.m_bDecimalComma ||
                     options.m_cDelimiter != '\0' || options.m_uSkipLines > 0;
  // Otherwise the lines are as ZuReadCoordinates takes them.
  if (bTold) {
    rows.Run(eMode, &pReading->m_Findings);
  } else {
    form.m_iDecimals = MostDecimals(text);
  }
  if (!text.empty()) {
    const ZuOpenFile pText(fmemopen(text.data(), text.size(), "r"));
    if (!pText) throw std::bad_alloc();
    const auto nSize = static_cast<std::int64_t>(text.size());
    const std::vector<UnitFactor> factors = UnitFactors(form);
    const ZuPointTaker takeInUnit = [&](std::unique_ptr<ZuPoint>& pPoint) {
      for (const UnitFactor& factor : factors) *pPoint.*factor.pValue *= factor.dFactor;
      take(pPoint);
    };
    ZuReadCoordinateRows(pText.get(), nSize, table, factors.empty() ? take : takeInUnit, eMode,
                         *pReading);
  }
  rows.AddFault(&pReading->m_Findings);
  if (bTold) Tell(form, &pReading->m_Findings.m_Dialect);
  if (!bTold && form.m_eEncoding != eZuTextUtf8) {
    pReading->m_Findings.m_Dialect.m_strForm +=
        std::string(" in ") + GetZuTextEncodingName(form.m_eEncoding);
  }
  pReading->m_Findings.m_Dialect.m_bByteOrderMark = form.m_bByteOrderMark;
}

}  // namespace

void ZuReadTableRows(const char* szPath, const ZuTableOptions& options, const ZuPointTaker& take,
                     eZuReadMode eMode, ZuTableReading& reading) {
  try {
    const ZuOpenFile pFile = ZuOpenText(szPath);
    std::string text;
    if (!pFile) {
      reading.m_Findings.Add(eZuReadFault, 0, 0, "cannot be opened");
      return;
    }
    if (!ReadWholeTable(pFile.get(), &text)) {
      reading.m_Findings.Add(eZuReadCut, 0, 0, "not all bytes could be read");
    }
    ReadText(std::move(text), options, take, eMode, &reading);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
}

ZuTableReading ZuReadTable(const char* szPath, const ZuTableOptions& options, ZuPointList& points,
                           eZuReadMode eMode) {
  ZuTableReading reading;
  ZuReadTableRows(szPath, options, ZuTakeInto(points), eMode, reading);
  std::vector<eZuPointRWMask> columns = reading.m_Form.m_aColumns;
  if (columns.empty()) return reading;
  columns.push_back(eZuPointRWEnd);
  points.SetMask(TZuFormatTable<eZuPointRWMask>(columns.data()));
  return reading;
}
