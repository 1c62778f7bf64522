// The names of --columns and what stands behind them.
#pragma once

#include <string>
#include <vector>

#include "zu/points/format_table.h"

namespace cli {

using ColumnTable = TZuFormatTable<eZuPointRWMask>;

// The columns that "id,x,y,z" names, in its order. Throws CommandError (usage) for an unknown name
// and for one that stands twice, skip excepted.
std::vector<eZuPointRWMask> ParseColumns(const std::string& strColumns);

// There is a column id or idname.
bool HasIdColumn(const std::vector<eZuPointRWMask>& columns);

ColumnTable TableOf(const std::vector<eZuPointRWMask>& columns);

// The name in --columns; null for a column without one.
const char* ColumnName(eZuPointRWMask eColumn);

// What the text of a column must be.
enum ColumnKind { eTextColumn, eIdColumn, eWholeColumn, eNumberColumn };
ColumnKind KindOf(eZuPointRWMask eColumn);

}  // namespace cli
