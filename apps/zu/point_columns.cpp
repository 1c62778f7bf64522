#include "point_columns.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "exit_code.h"
#include "nearest_word.h"
#include "zu/points/column_names.h"
#include "zu/points/column_titles.h"

namespace cli {
namespace {

// By spelling, or as other programs call it.
std::string NearestColumn(const std::string& strName) {
  const eZuPointRWMask eTitle = FindZuColumnTitle(strName).m_eColumn;
  if (eTitle != eZuPointRWSkip) return GetZuColumnName(eTitle);
  std::vector<std::string> names;
  std::istringstream stream(GetZuColumnNames());
  for (std::string strWord; stream >> strWord;) names.push_back(strWord);
  return NearestWord(strName, names);
}

}  // namespace

ColumnTable ParseColumns(const std::string& strColumns) {
  std::vector<eZuPointRWMask> columns;
  for (size_t uBegin = 0; uBegin <= strColumns.size();) {
    const size_t uEnd = std::min(strColumns.find(',', uBegin), strColumns.size());
    const std::string strName = strColumns.substr(uBegin, uEnd - uBegin);
    const eZuPointRWMask eColumn = FindZuColumn(strName);
    if (eColumn == eZuPointRWEnd) {
      const std::string strNearest = NearestColumn(strName);
      throw CommandError(kUsage,
                         "--columns: \"" + strName + "\" is no column" +
                             (strNearest.empty() ? "" : "; did you mean " + strNearest + "?") +
                             "\nthe columns are " + GetZuColumnNames());
    }
    if (eColumn != eZuPointRWSkip &&
        std::find(columns.begin(), columns.end(), eColumn) != columns.end()) {
      throw CommandError(kUsage, "--columns: \"" + strName + "\" stands twice in " + strColumns);
    }
    columns.push_back(eColumn);
    uBegin = uEnd + 1;
  }
  columns.push_back(eZuPointRWEnd);
  return ColumnTable(columns.data());
}

}  // namespace cli
