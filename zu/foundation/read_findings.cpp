#include "zu/foundation/read_findings.h"

#include <algorithm>
#include <utility>

namespace {

eZuSeverity SeverityOf(eZuReadKind eKind) {
  if (eKind == eZuReadNote) return eZuSeverityNote;
  return eKind < eZuReadCut ? eZuSeverityWarning : eZuSeverityError;
}

const char* TextOf(eZuDelimiter eDelimiter) {
  constexpr const char* kTexts[] = {nullptr,          "between blanks",     "between tabs",
                                    "between commas", "between semicolons", "delimiters mixed"};
  return kTexts[eDelimiter];
}

const char* TextOf(eZuLineEnds eLineEnds) {
  constexpr const char* kTexts[] = {nullptr, "line ends LF", "line ends CR LF", "line ends mixed"};
  return kTexts[eLineEnds];
}

}  // namespace

void ZuReadDialect::SetDelimiter(std::string_view line) {
  unsigned int uSeen = 0;
  bool bQuoted = false;
  for (const char c : line) {
    bQuoted = bQuoted != (c == '"');
    if (bQuoted) continue;
    uSeen |= c == ' ' ? 1u : c == '\t' ? 2u : c == ',' ? 4u : c == ';' ? 8u : 0u;
  }
  if (m_cDecimal == ',') uSeen &= ~4u;
  // Blanks beside another delimiter align columns.
  if ((uSeen & ~1u) != 0) uSeen &= ~1u;
  m_eDelimiter = uSeen == 1   ? eZuDelimiterBlank
                 : uSeen == 2 ? eZuDelimiterTab
                 : uSeen == 4 ? eZuDelimiterComma
                 : uSeen == 8 ? eZuDelimiterSemicolon
                 : uSeen == 0 ? eZuDelimiterNone
                              : eZuDelimiterMixed;
}

std::string ZuReadDialect::GetText() const {
  std::string strText = m_strForm;
  const auto add = [&strText](const std::string& strPart) {
    if (!strPart.empty()) strText += (strText.empty() ? "" : ", ") + strPart;
  };
  if (!m_strColumns.empty()) add("columns " + m_strColumns);
  if (m_eDelimiter != eZuDelimiterNone) add(TextOf(m_eDelimiter));
  if (m_cDecimal == ',') add("decimal comma");
  if (m_eLineEnds != eZuLineEndsNone) add(TextOf(m_eLineEnds));
  if (m_bByteOrderMark) add("byte order mark");
  if (!m_strHeader.empty()) add("header \"" + m_strHeader + "\"");
  return strText;
}

void ZuReadFindings::Add(eZuReadKind eKind, std::uint64_t uLine, std::uint64_t uColumn,
                         std::string strText, std::string strRight, std::string strKeyword) {
  ZuReadFinding finding;
  finding.m_uLine = uLine;
  finding.m_uColumn = uColumn;
  finding.m_eSeverity = SeverityOf(eKind);
  finding.m_strKeyword = std::move(strKeyword);
  finding.m_strText = std::move(strText);
  finding.m_strRight = std::move(strRight);
  finding.m_eKind = eKind;
  m_aFindings.push_back(std::move(finding));
}

void ZuReadFindings::AddDroppedLine(std::uint64_t uLine, std::uint64_t uColumn, std::string strText,
                                    std::string strRight, std::string strKeyword) {
  if (++m_uDroppedLines > MostLinesTold) return;
  Add(eZuReadDropped, uLine, uColumn, std::move(strText), std::move(strRight),
      std::move(strKeyword));
}

void ZuReadFindings::EndDroppedLines() {
  if (m_uDroppedLines <= MostLinesTold) return;
  Add(eZuReadDropped, 0, 0,
      std::to_string(m_uDroppedLines - MostLinesTold) + " more lines that are no points");
}

void ZuReadFindings::AddMemoryEnded() noexcept {
  m_bMemoryEnded = true;
  try {
    Add(eZuReadFault, 0, 0, "memory ended; what was read until then is there");
  } catch (...) {
    // The flag tells.
  }
}

const ZuReadFinding* ZuReadFindings::First(eZuReadKind eKind) const {
  const auto found = std::find_if(m_aFindings.begin(), m_aFindings.end(),
                                  [eKind](const auto& f) { return f.m_eKind == eKind; });
  return found == m_aFindings.end() ? nullptr : &*found;
}

const ZuReadFinding* ZuReadFindings::FirstOf(eZuSeverity eAtLeast) const {
  const auto found = std::find_if(m_aFindings.begin(), m_aFindings.end(),
                                  [eAtLeast](const auto& f) { return f.m_eSeverity >= eAtLeast; });
  return found == m_aFindings.end() ? nullptr : &*found;
}
