#include "point_columns.h"

#include <algorithm>
#include <cstring>

#include "exit_code.h"

namespace cli {
namespace {

struct NamedColumn {
  const char* szName;
  eZuPointRWMask eColumn;
  ColumnKind kind;
};

constexpr NamedColumn kColumns[] = {
    {"id", eZuPointRWId, eIdColumn},           {"name", eZuPointRWName, eTextColumn},
    {"idname", eZuPointRWIdName, eTextColumn}, {"flag", eZuPointRWFlag, eWholeColumn},
    {"code", eZuPointRWCode, eTextColumn},     {"codenum", eZuPointRWCodeNum, eWholeColumn},
    {"photo", eZuPointRWPhoto, eWholeColumn},  {"camera", eZuPointRWCamera, eWholeColumn},
    {"x", eZuPointRWX, eNumberColumn},         {"y", eZuPointRWY, eNumberColumn},
    {"z", eZuPointRWZ, eNumberColumn},         {"dx", eZuPointRWDX, eNumberColumn},
    {"dy", eZuPointRWDY, eNumberColumn},       {"dz", eZuPointRWDZ, eNumberColumn},
    {"red1", eZuPointRWRedu1, eNumberColumn},  {"red2", eZuPointRWRedu2, eNumberColumn},
    {"red3", eZuPointRWRedu3, eNumberColumn},  {"color", eZuPointRWColor, eWholeColumn},
    {"nimo", eZuPointRWNImo, eWholeColumn},    {"vx", eZuPointRWVX, eNumberColumn},
    {"vy", eZuPointRWVY, eNumberColumn},       {"vz", eZuPointRWVZ, eNumberColumn},
    {"skip", eZuPointRWSkip, eTextColumn},
};

const NamedColumn* FindByName(const std::string& strName) {
  const auto* pEnd = std::end(kColumns);
  const auto* pFound = std::find_if(
      std::begin(kColumns), pEnd, [&strName](const NamedColumn& c) { return strName == c.szName; });
  return pFound == pEnd ? nullptr : pFound;
}

const NamedColumn* FindByColumn(eZuPointRWMask eColumn) {
  const auto* pEnd = std::end(kColumns);
  const auto* pFound = std::find_if(
      std::begin(kColumns), pEnd, [eColumn](const NamedColumn& c) { return eColumn == c.eColumn; });
  return pFound == pEnd ? nullptr : pFound;
}

[[noreturn]] void RefuseName(const std::string& strName) {
  std::string strText = "--columns: \"" + strName + "\" is no column; the columns are";
  for (const auto& column : kColumns) strText.append(" ").append(column.szName);
  throw CommandError(kUsage, strText);
}

}  // namespace

std::vector<eZuPointRWMask> ParseColumns(const std::string& strColumns) {
  std::vector<eZuPointRWMask> columns;
  for (size_t uBegin = 0; uBegin <= strColumns.size();) {
    const size_t uEnd = std::min(strColumns.find(',', uBegin), strColumns.size());
    const std::string strName = strColumns.substr(uBegin, uEnd - uBegin);
    const NamedColumn* pColumn = FindByName(strName);
    if (pColumn == nullptr) RefuseName(strName);
    if (pColumn->eColumn != eZuPointRWSkip &&
        std::find(columns.begin(), columns.end(), pColumn->eColumn) != columns.end()) {
      throw CommandError(kUsage, "--columns: \"" + strName + "\" stands twice in " + strColumns);
    }
    columns.push_back(pColumn->eColumn);
    uBegin = uEnd + 1;
  }
  return columns;
}

bool HasIdColumn(const std::vector<eZuPointRWMask>& columns) {
  return std::any_of(columns.begin(), columns.end(), [](eZuPointRWMask eColumn) {
    return eColumn == eZuPointRWId || eColumn == eZuPointRWIdName;
  });
}

ColumnTable TableOf(const std::vector<eZuPointRWMask>& columns) {
  std::vector<eZuPointRWMask> ended = columns;
  ended.push_back(eZuPointRWEnd);
  return ColumnTable(ended.data());
}

const char* ColumnName(eZuPointRWMask eColumn) {
  const NamedColumn* pColumn = FindByColumn(eColumn);
  return pColumn == nullptr ? nullptr : pColumn->szName;
}

ColumnKind KindOf(eZuPointRWMask eColumn) {
  const NamedColumn* pColumn = FindByColumn(eColumn);
  return pColumn == nullptr ? eTextColumn : pColumn->kind;
}

}  // namespace cli
