// What --columns names.
#pragma once

#include <string>

#include "zu/points/format_table.h"

namespace cli {

using ColumnTable = TZuFormatTable<eZuPointRWMask>;

// The columns that "id,x,y,z" names, in its order. Throws CommandError (usage) for an unknown name
// and for one that stands twice, skip excepted.
ColumnTable ParseColumns(const std::string& strColumns);

}  // namespace cli
