#include "point_input.h"

#include <vector>

#include "exit_code.h"
#include "point_columns.h"
#include "reading.h"
#include "zu/points/read_coordinates.h"

namespace cli {
namespace {

// A column for the id, which coordinate files need to keep their points.
bool HasIds(const ColumnTable& columns) {
  return columns.HasEntry(eZuPointRWId) || columns.HasEntry(eZuPointRWIdName);
}

Duplicates DuplicatesOf(const PointFormat& format) {
  if (format.strDuplicates == "first") return eDuplicatesFirst;
  if (format.strDuplicates == "last") return eDuplicatesLast;
  return format.strDuplicates == "mean" ? eDuplicatesMean : eDuplicatesError;
}

void CheckCoordinates(const PointFormat& format) {
  const ColumnTable columns = ParseColumns(format.strColumns);
  for (const char* pc = format.szCoordinates; *pc != '\0'; ++pc) {
    const eZuPointRWMask eColumn = *pc == 'x'   ? eZuPointRWX
                                   : *pc == 'y' ? eZuPointRWY
                                                : eZuPointRWZ;
    if (columns.HasEntry(eColumn)) continue;
    throw CommandError(kUsage, "--columns: \"" + format.strColumns + "\" has no column " + *pc +
                                   ", which the command computes with");
  }
}

void CheckIdColumn(const std::string& strColumns) {
  if (HasIds(ParseColumns(strColumns))) return;
  throw CommandError(kUsage, "--columns: \"" + strColumns +
                                 "\" has no column for the id; add id, or idname for names");
}

void ReadRows(const InputFile& file, const PointFormat& format, Context& context,
              ZuPointList* pPoints) {
  const ColumnTable columns = ParseColumns(format.strColumns);
  ZuPointList points;
  const ZuCoordinateReading reading =
      ZuReadCoordinates(file.Path().c_str(), columns, points, ReadMode(context));
  TellFindings(reading.m_Findings, file.Name(), false, "--tolerant takes what is there", context);
  if (points.Count() == 0) {
    throw CommandError(kBadInput, file.Name() + ": holds no point; lines of " + format.strColumns +
                                      " would be right");
  }
  if (!columns.HasEntry(eZuPointRWPhoto)) {
    JoinDuplicates(file.Name(), reading.m_aLines, DuplicatesOf(format), context, &points);
  }
  pPoints->SetMask(columns);
  points.MoveTo(pPoints);
}

}  // namespace

void AddColumnsOption(Options& options, std::string* pColumns) {
  options.Option("--columns", "NAMES", pColumns,
                 "columns of the coordinate files, of: id name idname flag code codenum photo "
                 "camera x y z dx dy dz red1 red2 red3 color nimo vx vy vz skip");
  options.Tolerant();
}

void AddPointOptions(Options& options, PointFormat* pFormat) {
  AddColumnsOption(options, &pFormat->strColumns);
  options.Choice("--duplicates", {"error", "first", "last", "mean"}, &pFormat->strDuplicates,
                 "what counts of a point that stands more than once in a file");
}

void ReadPoints(const std::string& strPath, const PointFormat& format, Context& context,
                ZuPointList* pPoints) {
  CheckIdColumn(format.strColumns);
  ReadPointsOrRows(strPath, format, context, pPoints);
}

void ReadPoints(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointList* pPoints) {
  ReadPoints(strPath, PointFormat{strColumns, "error", ""}, context, pPoints);
}

void ReadPoints(const InputFile& file, const std::string& strColumns, Context& context,
                ZuPointList* pPoints) {
  CheckIdColumn(strColumns);
  ReadRows(file, PointFormat{strColumns, "error", ""}, context, pPoints);
}

void ReadPointsOrRows(const std::string& strPath, const PointFormat& format, Context& context,
                      ZuPointList* pPoints) {
  CheckCoordinates(format);
  ReadRows(InputFile(strPath, "a coordinate file"), format, context, pPoints);
}

void ReadPointsOrRows(const InputFile& file, const std::string& strColumns, Context& context,
                      ZuPointList* pPoints) {
  ReadRows(file, PointFormat{strColumns, "error", ""}, context, pPoints);
}

namespace {

// A zero is written without a sign.
void DropSignsOfZero(ZuPointList* pPoints) {
  for (ZuPoint* p = pPoints->First(); p != nullptr; p = p->Next()) {
    for (double* pd : {&p->m_dX, &p->m_dY, &p->m_dZ, &p->m_dRedu1, &p->m_dRedu2, &p->m_dRedu3}) {
      *pd += 0.0;
    }
  }
}

}  // namespace

void WritePoints(ZuPointList* pPoints, const std::string& strColumns, OutputFile* pOutput) {
  const ColumnTable given = ParseColumns(strColumns);
  std::vector<eZuPointRWMask> columns;
  for (int i = 0; i < given.Size(); ++i) {
    const eZuPointRWMask eColumn = given[i];
    if (eColumn == eZuPointRWSkip) continue;
    columns.push_back(eColumn == eZuPointRWIdName ? eZuPointRWName : eColumn);
    if (eColumn != eZuPointRWIdName) continue;
    for (ZuPoint* pPoint = pPoints->First(); pPoint != nullptr; pPoint = pPoint->Next()) {
      pPoint->SetName(PointLabel(*pPoint).c_str());
    }
  }
  columns.push_back(eZuPointRWEnd);
  pPoints->SetMask(ColumnTable(columns.data()));
  DropSignsOfZero(pPoints);
  pPoints->Write(pOutput->Stream());
  if (pPoints->Count() > 0) pOutput->Stream() << '\n';
}

std::string ReadWholeFile(const std::string& strPath) {
  return InputFile(strPath, "a file").Text();
}

}  // namespace cli
