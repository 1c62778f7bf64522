// Coordinate files held to their columns: what ZuPointList::ReadFile takes as it comes is looked at
// line by line, and what was made of the file is told.
//
//   1 4157222.543 664789.307 4774952.099
//   2;4149043.336;688836.443;4778632.188
//
// ZuPointList::ReadFile takes text that is no number as 0 and drops lines without an id in silence.
#pragma once

#include <cstdint>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/read_findings.h"
#include "zu/points/point_list.h"

struct ZuCoordinateReading {
  ZuReadFindings m_Findings;
  std::vector<std::uint64_t> m_aLines;  // of each point that was read, from 1
};

// Appends the points of a coordinate file; the columns become those of the list. Without a column
// for the id the points are numbered from 1 in the order of their lines.
//
// Fields stand between ';', tabs or commas, whichever a line has (in this order), so that a name
// may hold blanks, or else between all of these and blanks. Each column needs a field that is what
// its name says; fields behind the columns are left out, with a note. Passed over, with a note, are
// comments (#) and titles above the points. Reading ends with a fault that names line and column,
// or tolerantly goes on behind the line, where a field is missing or empty, no finite number or no
// id from 1 to 4294967295, where a line can be read in two ways or is longer than 1999 bytes. A
// tolerant reading takes decimal commas where the first fraction of the file has one and the
// commas do not separate fields. A title among the points, a whole number outside 32 bits and a
// last line that ends within a point are told.
//
// Takes linear time and the memory of the points. Stopped by the progress handler, it ends with a
// cut. Throws nothing: without memory the points read until then stay, with a fault.
ZU_API ZuCoordinateReading ZuReadCoordinates(const char* szPath,
                                             const TZuFormatTable<eZuPointRWMask>& columns,
                                             ZuPointList& points,
                                             eZuReadMode eMode = eZuReadStrict);

// Appends the points of a GSI file of a total station as ZuPointList::ReadGsiFile does. A damaged
// line ends the reading with a fault at its first damaged word, or tolerantly is left out; a line
// without point number or coordinates, as measurements are, is a note.
ZU_API ZuCoordinateReading ZuReadGsi(const char* szPath, ZuPointList& points,
                                     eZuReadMode eMode = eZuReadStrict);
