#include "point_columns.h"

#include <algorithm>
#include <vector>

#include "exit_code.h"
#include "zu/points/column_names.h"

namespace cli {

ColumnTable ParseColumns(const std::string& strColumns) {
  std::vector<eZuPointRWMask> columns;
  for (size_t uBegin = 0; uBegin <= strColumns.size();) {
    const size_t uEnd = std::min(strColumns.find(',', uBegin), strColumns.size());
    const std::string strName = strColumns.substr(uBegin, uEnd - uBegin);
    const eZuPointRWMask eColumn = FindZuColumn(strName);
    if (eColumn == eZuPointRWEnd) {
      throw CommandError(kUsage, "--columns: \"" + strName + "\" is no column; the columns are " +
                                     GetZuColumnNames());
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
