#include "html_table.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "svg.h"

namespace cli {

namespace {

// Characters of the numbers of a row that a narrow screen has room for in the size of the text.
constexpr size_t kNarrow = 24;
// Widest column of names that a table leaves whole [ch].
constexpr size_t kNameRoom = 18;

// Text as the content of a style sheet's string: whatever could end it is written as a number.
std::string CssText(const std::string& strText) {
  std::string strResult;
  for (const char c : strText) {
    const auto u = static_cast<unsigned char>(c);
    const bool bPlain = u >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                        (c >= '0' && c <= '9') || c == ' ' || c == '[' || c == ']';
    char szCode[8];
    std::snprintf(szCode, sizeof szCode, "\\%06x", u);
    strResult += bPlain ? std::string(1, c) : szCode;
  }
  return strResult;
}

}  // namespace

HtmlTable::HtmlTable(const char* szId, std::vector<Column> columns)
    : m_strId(szId), m_columns(std::move(columns)), m_longest(m_columns.size(), 0) {}

void HtmlTable::AddRow(const std::vector<std::string>& cells, bool bTotal) {
  m_strRows += bTotal ? "<tr class='all'>" : "<tr>";
  for (size_t i = 0; i < m_columns.size(); ++i) {
    m_strRows += m_columns[i].bLeft ? "<td class='l'>" : "<td>";
    m_strRows += (i < cells.size() ? XmlText(cells[i]) : "-") + "</td>";
    if (i < cells.size()) m_longest[i] = std::max(m_longest[i], cells[i].size());
  }
  m_strRows += "</tr>\n";
}

std::string HtmlTable::Html() const {
  const bool bWide = m_columns.size() > 4;
  std::string strHead, strTitles;
  size_t uNumbers = 0;
  for (size_t i = 0; i < m_columns.size(); ++i) {
    // Names and paths may be broken anywhere; short ones need not be.
    const bool bLeft = m_columns[i].bLeft;
    const size_t uRoom = std::min(m_longest[i] + 2, kNameRoom);
    strHead +=
        (bLeft ? "<th class='l' style='min-width:" + std::to_string(uRoom) + "ch'>" : "<th>") +
        XmlText(m_columns[i].strTitle) + "</th>";
    if (!bLeft) uNumbers += m_longest[i];
    strTitles += "#" + m_strId + " td:nth-child(" + std::to_string(i + 1) + ")::before{content:\"" +
                 CssText(m_columns[i].strTitle) + "\"}\n";
  }
  return (bWide ? "<style>@media(max-width:640px){\n" + strTitles + "}</style>\n" : "") +
         "<table id='" + m_strId + "'" +
         (bWide                ? " class='wide'"
          : uNumbers > kNarrow ? " class='tight'"
                               : "") +
         "><thead><tr>" + strHead + "</tr></thead>\n<tbody>\n" + m_strRows + "</tbody></table>\n";
}

const char* HtmlTableStyle() {
  return R"(
table{border-collapse:collapse;margin:.4em 0;font-variant-numeric:tabular-nums}
th,td{padding:.2em .6em;text-align:right;border-bottom:1px solid var(--line)}
th{background:var(--head);vertical-align:bottom;font-weight:600}
td.l,th.l{text-align:left;min-width:2.6em}td.l{overflow-wrap:anywhere}
tr.all td{font-weight:bold;border-top:2px solid var(--soft)}
@media(max-width:640px){table.wide,table.wide tbody{display:block}table.wide thead{display:none}
table.wide tr{display:flex;flex-wrap:wrap;padding:.4em 0;border-bottom:1px solid var(--line)}
table.wide td{flex:1 0 22%;box-sizing:border-box;border:0;text-align:left;padding:.1em .3em}
table.tight{font-size:12px}table.tight th,table.tight td{padding:.25em .3em}
table.wide td::before{display:block;font-size:11px;font-weight:normal;color:var(--soft)}}
@media print{tr{break-inside:avoid}thead{display:table-header-group}}
)";
}

}  // namespace cli
