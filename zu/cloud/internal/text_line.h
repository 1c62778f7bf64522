// The line in hand of a reader that holds a text to its format: where it stands, how its numbers
// are written, and what becomes of it when it is wrong.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "zu/cloud/internal/strict_number.h"
#include "zu/foundation/read_findings.h"

class ZuTextLine {
 public:
  ZuTextLine(ZuReadFindings& findings, eZuReadMode eMode)
      : m_findings(findings), m_eMode(eMode), m_cDecimal(eMode == eZuReadStrict ? '.' : '\0') {}

  // Goes on to the next line; bEnds: it has a line end, at pEnd.
  void Set(const char* pBegin, const char* pEnd, bool bEnds) {
    ++m_uNumber;
    m_bEnds = bEnds;
    if (m_uNumber == 1 && pEnd - pBegin >= 3 && std::memcmp(pBegin, "\xEF\xBB\xBF", 3) == 0) {
      pBegin += 3;
      m_findings.m_Dialect.m_bByteOrderMark = true;
    }
    m_pBegin = pBegin;
    const bool bCarriageReturn = pEnd > pBegin && pEnd[-1] == '\r';
    m_pEnd = bCarriageReturn ? pEnd - 1 : pEnd;
    if (bEnds) m_findings.m_Dialect.AddLineEnd(bCarriageReturn);
  }
  // The lines that another reader has taken.
  void SetNumber(std::uint64_t uNumber) { m_uNumber = uNumber; }

  const char* Begin() const { return m_pBegin; }
  const char* End() const { return m_pEnd; }
  std::string_view GetText() const {
    return {m_pBegin, static_cast<std::size_t>(m_pEnd - m_pBegin)};
  }
  std::uint64_t GetNumber() const { return m_uNumber; }
  std::uint64_t ColumnOf(const char* p) const {
    return p ? static_cast<std::uint64_t>(p - m_pBegin) + 1 : 0;
  }

  // A number of this line. The first one with a fraction tells whether all fractions of a tolerant
  // reading stand behind commas; one of 1,234.5 is never taken.
  [[gnu::always_inline]] bool TakeNumber(const ZuTextToken& token, double* pdValue) {
    if (m_cDecimal == '.') return ZuStrictNumber(token, pdValue);
    return TakeUndecided(token, pdValue);
  }

  // Why TakeNumber did not take it.
  ZuTextFault WhyNot(const ZuTextToken& token) const {
    double dValue = 0.0;
    if (m_cDecimal == ',' && ZuStrictNumber(token, &dValue)) {
      return ZuWhyNoCommaNumber(token.View());
    }
    return ZuWhyNoNumber(token);
  }

  // Tells that the line is no point, at pAt or, where that is null, as a whole; true if the reading
  // goes on all the same.
  bool Wrong(const char* pAt, ZuTextFault fault) {
    // A file that was cut ends within a line.
    if (!m_bEnds) {
      m_findings.Add(eZuReadCut, m_uNumber, ColumnOf(pAt),
                     "the file ends within a line: " + fault.m_strText,
                     std::move(fault.m_strRight));
      return false;
    }
    if (m_eMode == eZuReadTolerant) {
      m_findings.AddDroppedLine(m_uNumber, ColumnOf(pAt), std::move(fault.m_strText),
                                std::move(fault.m_strRight));
      return true;
    }
    m_findings.Add(eZuReadFault, m_uNumber, ColumnOf(pAt), std::move(fault.m_strText),
                   std::move(fault.m_strRight));
    m_bFault = true;
    return false;
  }

  // A fault of the line behind this one, which has no end.
  void FaultBehind(std::string strText) {
    m_findings.Add(eZuReadFault, m_uNumber + 1, 0, std::move(strText));
    m_bFault = true;
  }

  bool IsFault() const { return m_bFault; }

  // At the end of the reading.
  void Finish() {
    m_findings.EndDroppedLines();
    if (m_cDecimal != ',') return;
    m_findings.Add(eZuReadAssumed, m_uCommaLine, m_uCommaColumn,
                   "decimal commas are taken as decimal points");
  }

 private:
  bool TakeUndecided(const ZuTextToken& token, double* pdValue) {
    const std::string_view text = token.View();
    const bool bPoint = text.find('.') != text.npos;
    if (ZuStrictNumber(token, pdValue)) {
      if (bPoint && m_cDecimal == ',') return false;
      if (bPoint) m_cDecimal = '.';
      return true;
    }
    if (!ZuParseCommaNumber(text, pdValue)) return false;
    if (m_cDecimal != ',') {
      m_cDecimal = m_findings.m_Dialect.m_cDecimal = ',';
      m_uCommaLine = m_uNumber;
      m_uCommaColumn = ColumnOf(token.pBegin);
    }
    return true;
  }

  ZuReadFindings& m_findings;
  eZuReadMode m_eMode;
  char m_cDecimal;  // 0: no fraction was read yet
  const char* m_pBegin = nullptr;
  const char* m_pEnd = nullptr;
  std::uint64_t m_uNumber = 0;
  std::uint64_t m_uCommaLine = 0, m_uCommaColumn = 0;
  bool m_bEnds = true;
  bool m_bFault = false;
};
