// Reading coordinate files and tables point by point.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>

#include "zu/points/read_coordinates.h"
#include "zu/points/table.h"

// Takes the points of a file one after the other. A point that is left where it is is read over by
// the next one, so that files larger than a list of points can be walked.
using ZuPointTaker = std::function<void(std::unique_ptr<ZuPoint>&)>;

// Appends each point to a list, whose columns become those of the file.
ZuPointTaker ZuTakeInto(ZuPointList& points);

// As ZuReadCoordinates, of an open file of so many bytes; 0 where nobody knows. Lets std::bad_alloc
// out.
void ZuReadCoordinateRows(std::FILE* pFile, std::int64_t nSize,
                          const TZuFormatTable<eZuPointRWMask>& columns, const ZuPointTaker& take,
                          eZuReadMode eMode, ZuCoordinateReading& reading);

// As ZuReadTable. The form is there before the first point is given.
void ZuReadTableRows(const char* szPath, const ZuTableOptions& options, const ZuPointTaker& take,
                     eZuReadMode eMode, ZuTableReading& reading);
