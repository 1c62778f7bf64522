// Reading coordinate files that are open.
#pragma once

#include <cstdint>
#include <cstdio>

#include "zu/points/read_coordinates.h"

// As ZuReadCoordinates, of an open file of so many bytes; 0 where nobody knows. Lets std::bad_alloc
// out.
void ZuReadCoordinateRows(std::FILE* pFile, std::int64_t nSize,
                          const TZuFormatTable<eZuPointRWMask>& columns, ZuPointList& points,
                          eZuReadMode eMode, ZuCoordinateReading& reading);
