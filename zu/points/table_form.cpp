// What the first lines of a table tell.
#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>

#include "zu/points/column_names.h"
#include "zu/points/column_titles.h"
#include "zu/points/internal/table_text.h"

namespace {

constexpr std::uint64_t kTitleLines = 100;  // in which titles are looked for
constexpr std::array<char, 5> kDelimiters = {'\t', ';', '|', ',', '\0'};

bool IsCoordinate(eZuPointRWMask eColumn) {
  return eColumn >= eZuPointRWX && eColumn <= eZuPointRWZ;
}

bool IsComment(std::string_view line) {
  const std::string_view text = ZuTrimmed(line);
  return text.empty() || text[0] == '#' || text[0] == '%' || text.substr(0, 2) == "//";
}

// Two numbers next to each other, as "3 May 2024" has not.
bool HasPoint(std::string_view line, char cTold) {
  const char szDelimiters[] = {' ', '\t', ';', ',', '|', cTold, '\0'};
  ZuLineFields words;
  ZuSplitLoosely(line, szDelimiters, &words);
  const auto both = [](std::string_view a, std::string_view b) {
    return ZuIsNumberlike(a) && ZuIsNumberlike(b);
  };
  return !IsComment(line) && std::adjacent_find(words.begin(), words.end(), both) != words.end();
}

std::string_view WithoutMark(std::string_view line) {
  line = ZuTrimmed(line);
  const std::size_t u = line.find_first_not_of("#/%");
  return u == line.npos ? line.substr(0, 0) : ZuTrimmed(line.substr(u));
}

struct Titles {
  std::vector<eZuPointRWMask> columns;
  std::vector<std::string> titles;
  std::string strUnit;
};

// "X [mm]" between blanks is one title.
std::vector<std::string> TitlesOf(std::string_view line, char cDelimiter) {
  ZuLineFields fields;
  ZuSplitTable(cDelimiter, line, &fields);
  std::vector<std::string> titles;
  for (const std::string_view field : fields) {
    const bool bUnit = !field.empty() && (field[0] == '[' || field[0] == '(');
    if (cDelimiter == '\0' && bUnit && !titles.empty()) {
      titles.back().append(" ").append(field);
    } else {
      titles.emplace_back(field);
    }
  }
  return titles;
}

// Points have one id or name at least, which may be either where there is one alone.
void JoinIdAndName(std::vector<eZuPointRWMask>* pColumns) {
  const auto id = std::find(pColumns->begin(), pColumns->end(), eZuPointRWId);
  const auto name = std::find(pColumns->begin(), pColumns->end(), eZuPointRWName);
  if (id != pColumns->end() && name != pColumns->end()) return;
  if (id != pColumns->end()) *id = eZuPointRWIdName;
  if (name != pColumns->end()) *name = eZuPointRWIdName;
}

// False where they are no titles of a table of points.
bool ReadTitles(std::string_view line, char cDelimiter, const ZuTableOptions& options,
                Titles* pTitles) {
  *pTitles = {};
  pTitles->titles = TitlesOf(line, cDelimiter);
  std::size_t uCoordinates = 0;
  for (const std::string& strTitle : pTitles->titles) {
    if (ZuIsNumberlike(strTitle)) return false;
    const ZuColumnTitle title = options.m_pfnTitle(strTitle);
    auto& columns = pTitles->columns;
    const bool bNew = std::find(columns.begin(), columns.end(), title.m_eColumn) == columns.end();
    columns.push_back(bNew ? title.m_eColumn : eZuPointRWSkip);
    if (!bNew || !IsCoordinate(title.m_eColumn)) continue;
    ++uCoordinates;
    if (uCoordinates == 1) pTitles->strUnit = title.m_strUnit;
  }
  JoinIdAndName(&pTitles->columns);
  return uCoordinates > 1;
}

// A title for each field, numbers where coordinates are. A name may be several words between
// blanks, and a line between other delimiters may be cut: its own place tells that.
bool FitsPoint(const Titles& titles, char cDelimiter, std::string_view line) {
  ZuLineFields fields;
  ZuSplitTable(cDelimiter, line, &fields);
  const std::size_t uTitles = titles.columns.size();
  while (fields.size() > uTitles && fields.back().empty()) fields.pop_back();
  const auto isName = [](eZuPointRWMask e) { return e == eZuPointRWIdName || e == eZuPointRWName; };
  const auto name = std::find_if(titles.columns.begin(), titles.columns.end(), isName);
  if (cDelimiter == '\0' && fields.size() > uTitles && name != titles.columns.end()) {
    const auto first = fields.begin() + (name - titles.columns.begin());
    fields.erase(first, first + static_cast<std::ptrdiff_t>(fields.size() - uTitles));
  }
  if (fields.size() > uTitles || fields.size() < (cDelimiter == '\0' ? uTitles : 2)) return false;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (!IsCoordinate(titles.columns[i]) || fields[i].empty()) continue;
    if (!ZuIsNumberlike(fields[i])) return false;
  }
  return true;
}

enum class Fit { NoTitles, Misfit, Good };

Fit TakeTitles(std::string_view line, std::string_view firstPoint, const ZuTableOptions& options,
               ZuTableForm* pForm) {
  const char cTold = options.m_cDelimiter;
  Fit fit = Fit::NoTitles;
  const std::string_view text = WithoutMark(line);
  for (const char cDelimiter : kDelimiters) {
    if (cTold != '\0' && cDelimiter != (cTold == ' ' ? '\0' : cTold)) continue;
    if (cDelimiter != '\0' && text.find(cDelimiter) == text.npos) continue;
    Titles titles;
    if (!ReadTitles(text, cDelimiter, options, &titles)) continue;
    if (!FitsPoint(titles, cDelimiter, firstPoint)) {
      if (!IsComment(line)) fit = Fit::Misfit;
      continue;
    }
    while (titles.columns.back() == eZuPointRWSkip) titles.columns.pop_back();
    titles.titles.resize(titles.columns.size());
    pForm->m_cDelimiter = cDelimiter;
    pForm->m_aColumns = std::move(titles.columns);
    pForm->m_aTitles = std::move(titles.titles);
    pForm->m_strUnit = std::move(titles.strUnit);
    return Fit::Good;
  }
  return fit;
}

// Without titles the first point tells.
void ColumnsOfPoint(std::string_view line, const ZuTableOptions& options, ZuTableForm* pForm) {
  ZuLineFields fields;
  ZuSplitTable(pForm->m_cDelimiter, line, &fields);
  // Commas of a remark behind fields between blanks.
  ZuLineFields words;
  ZuSplitLoosely(line.substr(0, line.find(',')), kZuNoComma, &words);
  if (pForm->m_cDelimiter == ',' && (fields.size() < 3 || words.size() > 2)) {
    pForm->m_cDelimiter = '\0';
    ZuSplitLoosely(line, kZuAnyDelimiter, &fields);
  }
  const auto isNumber = [&fields](std::size_t i) {
    return i < fields.size() && ZuIsNumberlike(fields[i]);
  };
  pForm->m_aColumns = {eZuPointRWId, eZuPointRWX, eZuPointRWY};
  if (options.m_bHeights) pForm->m_aColumns.push_back(eZuPointRWZ);
  if (options.m_bHeights && !options.m_bIds && fields.size() == 3 && isNumber(0) && isNumber(1) &&
      isNumber(2)) {
    pForm->m_aColumns.erase(pForm->m_aColumns.begin());
  } else if (!fields.empty() && !isNumber(0) &&
             (isNumber(pForm->m_aColumns.size() - 1) || isNumber(fields.size() - 1))) {
    pForm->m_aColumns[0] = eZuPointRWIdName;
  }
}

}  // namespace

void ZuSplitTable(char cDelimiter, std::string_view line, ZuLineFields* pFields) {
  if (cDelimiter == '\0' || cDelimiter == ' ') {
    ZuSplitLoosely(line, " \t", pFields);
    return;
  }
  // Each tab counts, as other programs write them.
  pFields->clear();
  for (std::size_t u = 0; u <= line.size();) {
    const std::size_t uFirst = std::min(line.find_first_not_of(' ', u), line.size());
    const bool bQuoted = uFirst < line.size() && line[uFirst] == '"';
    const std::size_t uClosed =
        bQuoted ? std::min(line.find('"', uFirst + 1), line.size()) : uFirst;
    const std::size_t uEnd = std::min(line.find(cDelimiter, uClosed), line.size());
    pFields->push_back(bQuoted ? line.substr(uFirst + 1, uClosed - uFirst - 1)
                               : ZuTrimmed(line.substr(u, uEnd - u)));
    u = uEnd + 1;
  }
}

bool ZuFindTableForm(std::string_view text, const ZuTableOptions& options, ZuTableForm* pForm) {
  std::vector<std::pair<std::uint64_t, std::string_view>> above;
  ZuTextLines lines(text);
  std::string_view line, point;
  while (point.empty() && lines.Next(&line)) {
    if (lines.GetNumber() == 1) pForm->m_bCarriageReturns = text.find("\r\n") < line.size() + 1;
    if (lines.GetNumber() <= options.m_uSkipLines) continue;
    if (HasPoint(line, options.m_cDelimiter)) {
      point = line;
    } else if (above.size() < kTitleLines) {
      above.emplace_back(lines.GetNumber(), line);
    }
  }
  if (options.m_aColumns.empty()) {
    for (auto i = above.rbegin(); i != above.rend(); ++i) {
      const Fit fit = TakeTitles(i->second, point, options, pForm);
      if (fit == Fit::NoTitles) continue;
      pForm->m_uTitleLine = i->first;
      return fit == Fit::Good;
    }
  }
  const char cFound = ZuDividerOf(point);
  pForm->m_cDelimiter = options.m_cDelimiter == ' '                ? '\0'
                        : options.m_cDelimiter != '\0'             ? options.m_cDelimiter
                        : options.m_bDecimalComma && cFound == ',' ? '\0'
                                                                   : cFound;
  if (options.m_aColumns.empty()) {
    ColumnsOfPoint(point, options, pForm);
  } else {
    pForm->m_aColumns = options.m_aColumns;
  }
  return true;
}
