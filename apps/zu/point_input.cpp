#include "point_input.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "exit_code.h"
#include "point_columns.h"
#include "point_lines.h"
#include "progress_line.h"

namespace cli {
namespace {

constexpr size_t kSlice = 4 << 20;  // bytes of a file checked and read in one go

// Reads from memory what ReadFile reads from a file, so that a pipe is read once only.
class PointReader : public ZuPointList {
 public:
  // Without a column for the id the points are numbered from 1 in the order of their lines.
  void ReadText(std::string_view text, const ColumnTable& table) {
    if (text.empty()) return;
    if (!table.HasEntry(eZuPointRWId) && !table.HasEntry(eZuPointRWIdName)) {
      return ReadRows(text, table);
    }
    const auto closeFile = [](FILE* pFile) { std::fclose(pFile); };
    const std::unique_ptr<FILE, decltype(closeFile)> pFile(
        fmemopen(const_cast<char*>(text.data()), text.size(), "rb"), closeFile);
    if (pFile == nullptr) throw CommandError(kBadInput, "zu: out of memory");
    ReadFile(pFile.get(), table);
  }

 private:
  void ReadRows(std::string_view text, const ColumnTable& table) {
    for (size_t uBegin = 0; uBegin < text.size();) {
      const size_t uEnd = std::min(text.find('\n', uBegin), text.size());
      ZuPoint point;
      if (point.Read(std::string(text.substr(uBegin, uEnd - uBegin)).c_str(), table) > 0) {
        point.SetId(++m_uRows);
        Add(point);
      }
      uBegin = uEnd + 1;
    }
  }

  unsigned m_uRows = 0;
};

// Checks and reads the text in slices of whole lines.
void ReadInSlices(const ColumnTable& table, std::string_view text, ProgressLine* pProgress,
                  PointLines* pLines, PointReader* pReader) {
  for (size_t uBegin = 0; uBegin < text.size();) {
    const size_t uLineEnd = text.find('\n', std::min(uBegin + kSlice, text.size()));
    const size_t uEnd = uLineEnd == text.npos ? text.size() : uLineEnd + 1;
    pReader->ReadText(pLines->Take(text.substr(uBegin, uEnd - uBegin)), table);
    uBegin = uEnd;
    pProgress->Update(static_cast<double>(uEnd) / static_cast<double>(text.size()));
  }
}

Duplicates DuplicatesOf(const PointFormat& format) {
  if (format.strDuplicates == "first") return eDuplicatesFirst;
  if (format.strDuplicates == "last") return eDuplicatesLast;
  return format.strDuplicates == "mean" ? eDuplicatesMean : eDuplicatesError;
}

void CheckCoordinates(const PointFormat& format) {
  const std::vector<eZuPointRWMask> columns = ParseColumns(format.strColumns);
  for (const char* pc = format.szCoordinates; *pc != '\0'; ++pc) {
    const eZuPointRWMask eColumn = *pc == 'x'   ? eZuPointRWX
                                   : *pc == 'y' ? eZuPointRWY
                                                : eZuPointRWZ;
    if (std::find(columns.begin(), columns.end(), eColumn) != columns.end()) continue;
    throw CommandError(kUsage, "--columns: \"" + format.strColumns + "\" has no column " + *pc +
                                   ", which the command computes with");
  }
}

void CheckIdColumn(const std::string& strColumns) {
  if (HasIdColumn(ParseColumns(strColumns))) return;
  throw CommandError(kUsage, "--columns: \"" + strColumns +
                                 "\" has no column for the id; add id, or idname for names");
}

void ReadRows(const InputFile& file, const PointFormat& format, Context& context,
              ZuPointList* pPoints) {
  const std::string& strColumns = format.strColumns;
  const std::vector<eZuPointRWMask> columns = ParseColumns(strColumns);
  const std::string strText = file.Text();
  std::string_view text = strText;
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  PointLines lines(file.Name(), strColumns, columns);
  PointReader reader;
  {
    ProgressLine progress("reading " + file.Name(), context.IsQuiet());
    ReadInSlices(TableOf(columns), text, &progress, &lines, &reader);
  }
  if (reader.Count() == 0) {
    throw CommandError(
        kBadInput, file.Name() + ": holds no point; lines of " + strColumns + " would be right");
  }
  reader.SetMask(TableOf(columns));
  if (!reader.HasEntry(eZuPointRWPhoto)) {
    JoinDuplicates(file.Name(), lines.Lines(), DuplicatesOf(format), context, &reader);
  }
  pPoints->SetMask(TableOf(columns));
  reader.MoveTo(pPoints);
}

}  // namespace

void AddColumnsOption(Options& options, std::string* pColumns) {
  options.Option("--columns", "NAMES", pColumns,
                 "columns of the coordinate files, of: id name idname flag code codenum photo "
                 "camera x y z dx dy dz red1 red2 red3 color nimo vx vy vz skip");
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

void ReadPointsOrRows(const std::string& strPath, const std::string& strColumns, Context& context,
                      ZuPointList* pPoints) {
  ReadPointsOrRows(strPath, PointFormat{strColumns, "error", ""}, context, pPoints);
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
  std::vector<eZuPointRWMask> columns;
  for (eZuPointRWMask eColumn : ParseColumns(strColumns)) {
    if (eColumn == eZuPointRWSkip) continue;
    columns.push_back(eColumn == eZuPointRWIdName ? eZuPointRWName : eColumn);
    if (eColumn != eZuPointRWIdName) continue;
    for (ZuPoint* pPoint = pPoints->First(); pPoint != nullptr; pPoint = pPoint->Next()) {
      pPoint->SetName(PointLabel(*pPoint).c_str());
    }
  }
  pPoints->SetMask(TableOf(columns));
  DropSignsOfZero(pPoints);
  pPoints->Write(pOutput->Stream());
  if (pPoints->Count() > 0) pOutput->Stream() << '\n';
}

std::string ReadWholeFile(const std::string& strPath) {
  return InputFile(strPath, "a file").Text();
}

}  // namespace cli
