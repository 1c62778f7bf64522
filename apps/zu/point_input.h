// Coordinate files on the command line: --columns, reading with checks, writing.
//
// A file whose points would have to be invented is refused, unless --tolerant leaves its wrong
// lines out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "context.h"
#include "input_file.h"
#include "options.h"
#include "point_names.h"
#include "zu/points/point_list.h"
#include "zu/points/table.h"

namespace cli {

// How the coordinate files of a command are read and written.
struct PointFormat {
  std::string strToldColumns;     // empty: found
  std::string strControlColumns;  // of the second file, where they are told apart
  // Those of the first file that was read; accuracies that a further one tells are among them.
  mutable std::string strColumns;
  std::string strDuplicates = "error";
  const char* szCoordinates = "xyz";  // those that the command computes with
  std::string strDelimiter;
  bool bDecimalComma = false;
  unsigned uSkipLines = 0;
  int iDecimals = -1;                       // of numbers in result files; -1: not told
  mutable std::optional<ZuTableForm> form;  // of the first file that was read
};

// Declares --columns, --duplicates, --delimiter, --decimal-comma, --skip-lines and --decimals.
void AddPointOptions(Options& options, PointFormat* pFormat);
// Declares --decimals.
void AddDecimals(Options& options, int* pDecimals);
// Declares --control-columns beside them.
void AddControlColumns(Options& options, PointFormat* pFormat);
// Declares --columns.
void AddColumnsOption(Options& options, std::string* pColumns);

// Appends the points of a coordinate file, table or GSI file, or of a pipe (input_file.h), as
// ZuReadTable and ZuReadGsi read them; findings become warnings. Lengths come in the unit of the
// first file, where both tell theirs.
//
// Throws CommandError (bad input) naming file, line and column: input missing or unreadable, no
// point in it, what ends a strict reading, a point that stands twice (unless there is a column for
// the photo, or the format tells what counts); or (usage) if there is no column for a coordinate
// that the command needs, or for the id: points without one are not kept by coordinate files.
void ReadPoints(const std::string& strPath, const PointFormat& format, Context& context,
                ZuPointList* pPoints);
// The same of the second file of a command.
void ReadControlPoints(const std::string& strPath, const PointFormat& format, Context& context,
                       ZuPointList* pPoints);
// The same of an input that was opened before.
void ReadPoints(const InputFile& file, const PointFormat& format, Context& context,
                ZuPointList* pPoints);

// How a table is to be read, as the options tell it; strColumns empty: its columns are found.
ZuTableOptions TableOptions(const PointFormat& format, const std::string& strColumns, bool bIds);
// Throws CommandError (bad input) for a fault that an option mends, with the option.
void CheckTableFaults(const ZuReadFindings& findings, const InputFile& file);
// Tells what was found of a table, where a reader would not take it for granted, and its unit.
void TellTable(const ZuTableForm& form, const std::string& strColumns, const std::string& strName,
               Context& context);

// A GSI file, or a table whose titles tell its columns.
bool TellsItsColumns(const InputFile& file);

// The same of a coordinate file with those columns, whichever they are.
void ReadPoints(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointList* pPoints);

// The same for a command that needs no ids: without a column for the id the points are numbered
// from 1 in the order of their lines.
void ReadPointsOrRows(const std::string& strPath, const PointFormat& format, Context& context,
                      ZuPointList* pPoints);
void ReadPointsOrRows(const InputFile& file, const PointFormat& format, Context& context,
                      ZuPointList* pPoints);
void ReadPointsOrRows(const InputFile& file, const std::string& strColumns, Context& context,
                      ZuPointList* pPoints);

// Writes the points in the form of the first file that was read: a table stays one, with its
// titles, delimiter and decimal mark. Where that is a coordinate file, what stands behind its
// digits by a million times is 0.
void WritePoints(ZuPointList* pPoints, const PointFormat& format, OutputFile* pOutput);

constexpr char kPointsWithSd[] = "id,x,y,z,dx,dy,dz";

// Writes the points so that ReadPoints with the same columns reads them again; iDecimals below 0:
// all digits. Where the column is idname, a point without name is written by its id.
void WritePoints(ZuPointList* pPoints, const std::string& strColumns, OutputFile* pOutput,
                 int iDecimals = -1);

// Writes points that the command made, in columns of its own: with titles, delimiter and decimal
// mark where the first file that was read was a table. All digits, unless decimals are told.
void WriteNewPoints(const ZuPointList& points, std::vector<eZuPointRWMask> columns,
                    const PointFormat& format, OutputFile* pOutput);

// The whole of an input. Throws CommandError (bad input).
std::string ReadWholeFile(const std::string& strPath);

}  // namespace cli
