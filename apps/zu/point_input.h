// Coordinate files on the command line: --columns, reading with checks, writing.
//
// A file whose points would have to be invented is refused, unless --tolerant leaves its wrong
// lines out.
#pragma once

#include <string>

#include "context.h"
#include "input_file.h"
#include "options.h"
#include "point_names.h"
#include "zu/points/point_list.h"

namespace cli {

// How the coordinate files of a command are read.
struct PointFormat {
  std::string strColumns = "id,x,y,z";
  std::string strDuplicates = "error";
  const char* szCoordinates = "xyz";  // those that the command computes with
};

// Declares --columns and --duplicates.
void AddPointOptions(Options& options, PointFormat* pFormat);
// Declares --columns; its default is what *pColumns holds, "id,x,y,z" as a rule.
void AddColumnsOption(Options& options, std::string* pColumns);

// Appends the points of a coordinate file or pipe (input_file.h), as ZuReadCoordinates reads them;
// findings become warnings.
//
// Throws CommandError (bad input) naming file, line and column: input missing or unreadable, no
// point in it, what ends a strict reading, a point that stands twice (unless there is a column for
// the photo, or the format tells what counts); or (usage) if there is no column for a coordinate
// that the command needs, or for the id: points without one are not kept by coordinate files.
void ReadPoints(const std::string& strPath, const PointFormat& format, Context& context,
                ZuPointList* pPoints);
// The same with those columns, whichever they are.
void ReadPoints(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointList* pPoints);

// The same of an input that was opened before.
void ReadPoints(const InputFile& file, const std::string& strColumns, Context& context,
                ZuPointList* pPoints);

// The same for a command that needs no ids: without a column for the id the points are numbered
// from 1 in the order of their lines.
void ReadPointsOrRows(const std::string& strPath, const PointFormat& format, Context& context,
                      ZuPointList* pPoints);
void ReadPointsOrRows(const InputFile& file, const std::string& strColumns, Context& context,
                      ZuPointList* pPoints);

// Writes the points so that ReadPoints with the same columns reads them again. Where the column is
// idname, a point without name gets its id as name.
void WritePoints(ZuPointList* pPoints, const std::string& strColumns, OutputFile* pOutput);

// The whole of an input. Throws CommandError (bad input).
std::string ReadWholeFile(const std::string& strPath);

}  // namespace cli
