// The titles that programs give the columns of tables of points, in English and German.
#pragma once

#include <string>
#include <string_view>

#include "zu/export.h"
#include "zu/points/format_table.h"

// What a title of a column tells.
struct ZuColumnTitle {
  // eZuPointRWId for numbers of points, eZuPointRWName for names; eZuPointRWSkip for a title that
  // is none of those known.
  eZuPointRWMask m_eColumn = eZuPointRWSkip;
  std::string m_strUnit;  // in brackets behind it, "mm"; empty: not told
};

// The column of a title, in any case, with a unit in brackets: "X", "Easting (m)", "Hochwert [mm]",
// "Point ID", "dx" of an accuracy. East is x, north y, height z.
ZU_API ZuColumnTitle FindZuColumnTitle(std::string_view title);

// Some line of the text, the first bytes of a file, names two coordinates.
ZU_API bool ZuHasColumnTitles(std::string_view head);

// A title as titles are compared: small letters and digits alone, umlauts as two letters.
ZU_API std::string ZuFoldedTitle(std::string_view title);

// The length of a unit in metres: "mm", "cm", "dm", "m", "km", "um", "ft", "in"; 0 for any other.
ZU_API double GetZuUnitLength(std::string_view unit);
