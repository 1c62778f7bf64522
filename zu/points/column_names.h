// The names of columns in option values, reports and messages: "id,x,y,z".
#pragma once

#include <string>
#include <string_view>

#include "zu/export.h"
#include "zu/points/format_table.h"

// "id", "name", "idname", "flag", "code", "codenum", "photo", "camera", "x", "y", "z", "dx", "dy",
// "dz", "red1", "red2", "red3", "color", "nimo", "vx", "vy", "vz", "skip"; null for a column
// without a name.
ZU_API const char* GetZuColumnName(eZuPointRWMask eColumn);
// The column of a name; eZuPointRWEnd for a text that is none.
ZU_API eZuPointRWMask FindZuColumn(std::string_view name);
// All names, between blanks.
ZU_API std::string GetZuColumnNames();
// Those of a table, between commas; "?" for a column without a name.
ZU_API std::string GetZuColumnNames(const TZuFormatTable<eZuPointRWMask>& table);

// What the text of a column must be to be taken as it stands.
enum eZuColumnText : int {
  eZuColumnAny,
  eZuColumnId,     // a whole number from 1 to 4294967295
  eZuColumnWhole,  // a whole number
  eZuColumnNumber  // a finite decimal number
};
ZU_API eZuColumnText GetZuColumnText(eZuPointRWMask eColumn);
