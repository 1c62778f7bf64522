// PTS files as laser scanning programs exchange them: strictly read, with all levels of intensity.
//
//   3                                    the number of points, on a line of its own
//   12.5 7.25 -1.0 130 255 128 0         x y z [intensity] [red green blue]
//   ...
//
// ZuPointCloudContainer::ReadPtsFile takes any text as points and squeezes intensities of 0 to 255
// into 17 levels; the reader here refuses what is no number, and the writer gives back what was
// read. One thread at a time for one container.
#pragma once

#include <cstdio>

#include "zu/cloud/cloud_reading.h"
#include "zu/export.h"

class ZuPointCloudContainer;

// Reads all blocks of a PTS file, or lines of x y z without a count, into one new cloud.
//
// Lines have 3, 4, 6 or 7 numbers as above; of 5 and of more than 7 the first three count. All
// lines of a block have the same number. A strict reading ends, with a fault that names line and
// column, at the first line that is not so: text, decimal commas, missing numbers. A tolerant one
// leaves that line out, with the same words, and goes on; where the first fraction of the file
// stands behind a decimal comma, all of them do. Fewer points than a count announces, or a last
// line that ends within a point, are told as a cut. Empty lines and lines that start with '#' are
// passed over; colours are limited to 0 to 255.
//
// The scale of the intensities is the first of these that holds all of them: -2000 to 2000 where
// any is below 0; 0 to 1, taken as 0 to 65535, where any is a fraction; 0 to 255; 0 to 65535.
//
// Takes linear time and the memory of the points. Stopped by the progress handler, it ends with a
// cut. Throws nothing: without memory the points read until then stay, with a fault.
ZU_API ZuCloudReading ZuReadPts(std::FILE* fp, ZuPointCloudContainer& clouds,
                                eZuReadMode eMode = eZuReadStrict);
ZU_API ZuCloudReading ZuReadPts(const char* szPath, ZuPointCloudContainer& clouds,
                                eZuReadMode eMode = eZuReadStrict);

// The columns to write.
enum eZuPtsDialect : int {
  eZuPtsAuto,       // those of which any point has something
  eZuPtsPlain,      // x y z
  eZuPtsIntensity,  // x y z intensity
  eZuPtsRgb         // x y z intensity red green blue
};

struct ZuPtsOptions {
  eZuPtsDialect m_eDialect = eZuPtsAuto;
  // eZuIntensityNone counts as 0 to 255.
  eZuIntensityScale m_eIntensity = eZuIntensity255;
  bool m_bWithCount = true;  // false: the lines alone, as files of x y z have them
};

// Writes the points of all clouds, coordinates with the digits that read back to the same double.
// False when the file cannot be opened, not all bytes could be written, or the progress handler
// wanted no more.
ZU_API bool ZuWritePts(std::FILE* fp, const ZuPointCloudContainer& clouds,
                       const ZuPtsOptions& options);
ZU_API bool ZuWritePts(const char* szPath, const ZuPointCloudContainer& clouds,
                       const ZuPtsOptions& options);
