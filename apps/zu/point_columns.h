// The names of --columns and what stands behind them.
#pragma once

#include <string>
#include <vector>

#include "zu/points/format_table.h"

namespace cli {

using ColumnTable = TZuFormatTable<eZuPointRWMask>;

// The columns that "id,x,y,z" names, in its order. Throws CommandError (usage) for an unknown name.
std::vector<eZuPointRWMask> ParseColumns(const std::string& strColumns);

// There is a column id or idname.
bool HasIdColumn(const std::vector<eZuPointRWMask>& columns);

ColumnTable TableOf(const std::vector<eZuPointRWMask>& columns);

// The name in --columns; null for a column without one.
const char* ColumnName(eZuPointRWMask eColumn);

// True for columns whose text must be a number.
bool IsNumberColumn(eZuPointRWMask eColumn);

}  // namespace cli
