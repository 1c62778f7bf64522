// The names of --columns and what stands behind them.
#pragma once

#include <string>
#include <vector>

#include "zu/points/format_table.h"

namespace cli {

using ColumnTable = TZuFormatTable<eZuPointRWMask>;

// The columns that "id,x,y,z" names, in its order. Throws CommandError (usage) for an unknown name,
// and if there is neither id nor idname: points without an id are not kept by coordinate files.
std::vector<eZuPointRWMask> ParseColumns(const std::string& strColumns);

ColumnTable TableOf(const std::vector<eZuPointRWMask>& columns);

// The name in --columns; null for a column without one.
const char* ColumnName(eZuPointRWMask eColumn);

// True for columns whose text must be a number.
bool IsNumberColumn(eZuPointRWMask eColumn);

}  // namespace cli
