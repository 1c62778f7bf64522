// Rows of ASCII files.
#include <utility>

#include "zu/cloud/internal/ply_rows.h"

namespace {

// Takes the next token of a line; false, and the token empty at the end of the line, without one.
bool NextToken(const char** pp, const char* pEnd, ZuTextToken* pToken) {
  const char* p = *pp;
  while (p != pEnd && ZuPlyDelimiter()(*p)) ++p;
  pToken->pBegin = p;
  while (p != pEnd && !ZuPlyDelimiter()(*p)) ++p;
  pToken->pEnd = *pp = p;
  return pToken->pBegin != p;
}

}  // namespace

// Goes to the next line with anything in it; false at the end of the file.
bool ZuPlyRows::NextTextRow() {
  while (const char* pEnd = ZuNextLine(m_source, m_progress, kZuPlyLongestLine)) {
    m_line.Set(m_source.Begin(), pEnd, pEnd != m_source.End());
    m_source.SetBegin(pEnd + 1);
    const char* p = m_line.Begin();
    while (p != m_line.End() && ZuPlyDelimiter()(*p)) ++p;
    if (p != m_line.End()) return true;
  }
  return false;
}

bool ZuPlyRows::TakeTextRow(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  Values v{};
  Columns columns{};
  const char* p = m_line.Begin();
  const char* const pEnd = m_line.End();
  ZuTextToken token = {};
  for (std::size_t i = 0; i < vertex.properties.size(); ++i) {
    const ZuPlyProperty& property = vertex.properties[i];
    const eZuPlyField eField = m_layout.fields[i];
    if (!NextToken(&p, pEnd, &token)) {
      return m_line.Wrong(token.pBegin, {"the line ends before the value of " + property.strName,
                                         m_layout.strColumns});
    }
    double dValue = 0.0;
    if ((eField != eZuPlyNoField || property.IsList()) && !m_line.TakeNumber(token, &dValue)) {
      ZuTextFault fault = m_line.WhyNot(token);
      fault.m_strText += ", for " + property.strName;
      return m_line.Wrong(token.pBegin, std::move(fault));
    }
    if (eField != eZuPlyNoField) {
      v[eField] = dValue;
      columns[eField] = m_line.ColumnOf(token.pBegin);
    }
    if (!property.IsList()) continue;
    for (double d = 0.0; d < dValue; d += 1.0) {
      if (!NextToken(&p, pEnd, &token)) {
        return m_line.Wrong(token.pBegin,
                            {"the list " + property.strName + " has too few values", ""});
      }
    }
  }
  if (NextToken(&p, pEnd, &token)) {
    m_surplus.Add(m_line.GetNumber(), m_line.ColumnOf(token.pBegin));
  }
  AddPoint(v, columns, feed);
  return true;
}

bool ZuPlyRows::ReadTextRows(const ZuPlyElement& vertex, ZuPointFeed& feed) {
  for (std::uint64_t i = 0; i < vertex.uRows; ++i) {
    if (!NextTextRow()) return Cut(vertex, i);
    const bool bGoOn = TakeTextRow(vertex, feed);
    if (i == 0) m_findings.m_Dialect.SetDelimiter(m_line.GetText());
    if (!bGoOn) return false;
  }
  return true;
}
