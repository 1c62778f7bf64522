// Tables of points as other programs write them: spreadsheets, total stations, GIS.
//
//   Punkt;Rechtswert [m];Hochwert [m];Hoehe [m]
//   Ecke 1;4157222,543;664789,307;4774952,099
//
// ZuReadCoordinates takes points in columns that are told. Here the first lines of the file tell
// them, with delimiter, decimal mark and encoding.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/points/column_titles.h"
#include "zu/points/read_coordinates.h"

enum eZuTextEncoding : int { eZuTextUtf8, eZuTextUtf16Le, eZuTextUtf16Be, eZuTextLatin1 };

// "UTF-8", "UTF-16", "Latin-1".
ZU_API const char* GetZuTextEncodingName(eZuTextEncoding eEncoding);

// What is told of a table; the rest is found.
struct ZuTableOptions {
  std::vector<eZuPointRWMask> m_aColumns;  // empty: by the titles or the first point
  char m_cDelimiter = '\0';                // ';', ',', a tab, a blank or another one; 0: found
  bool m_bDecimalComma = false;
  unsigned m_uSkipLines = 0;  // above the table
  bool m_bIds = true;         // false: points without a column for the id are welcome
  bool m_bHeights = true;     // false: points without z are
  // What the titles mean; a reader of more than points knows others.
  ZuColumnTitle (*m_pfnTitle)(std::string_view) = FindZuColumnTitle;
};

// How a table was read, and is to be written.
struct ZuTableForm {
  eZuTextEncoding m_eEncoding = eZuTextUtf8;
  bool m_bByteOrderMark = false;
  char m_cDelimiter = '\0';  // 0: blanks
  char m_cDecimal = '.';
  bool m_bCarriageReturns = false;
  int m_iDecimals = 0;             // the most digits behind a decimal mark
  std::uint64_t m_uTitleLine = 0;  // 0: no titles
  std::vector<eZuPointRWMask> m_aColumns;
  std::vector<std::string> m_aTitles;  // of the columns; none without titles
  std::string m_strUnit;               // of the coordinates; empty: not told
};

struct ZuTableReading : ZuCoordinateReading {
  ZuTableForm m_Form;
};

// Appends the points of a table; the columns become those of the list.
//
// Titles stand in the first line with at least two coordinates among its words (see
// FindZuColumnTitle), '#', '//' or '%' in front of it or not; titles that do not fit the first line
// of numbers are a fault, and passed over behind such a mark. Columns of another title are passed
// over. Of a column for numbers and one for names each is what it says; one alone tells points
// apart by id or name. Without titles the columns are "id,x,y,z", "idname,x,y,z" where the first
// field of the first point is no number, and "x,y,z" where three fields are there and no ids are
// needed; without heights no z. A blank between fields is part of a name where titles stand between
// other delimiters.
//
// Under titles the decimal mark is that of the first fraction where commas do not separate the
// fields; without, decimal commas must be told. A number with the other mark is a fault. UTF-16
// and, where bytes are no UTF-8, Latin-1 (Windows code page 1252) become UTF-8. Columns of one
// table with other units than its first coordinate are brought to that unit.
//
// Everything else is as ZuReadCoordinates has it. Needs memory for the text of the file beside the
// points.
ZU_API ZuTableReading ZuReadTable(const char* szPath, const ZuTableOptions& options,
                                  ZuPointList& points, eZuReadMode eMode = eZuReadStrict);

// As many decimals as each number needs to be read back.
constexpr int kZuAllDecimals = -2;

// Writes the points in the form of a table, titles first, numbers in fixed notation: with as many
// decimals as told or, for -1, three more than the table had, at least four. A column to pass over
// is left out, and a name is in quotes only where it needs them. The text is UTF-8.
ZU_API void ZuWriteTable(std::ostream& stream, const ZuPointList& points, const ZuTableForm& form,
                         int iDecimals = -1);
