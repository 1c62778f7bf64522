#include "point_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <unordered_set>
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
void ReadInSlices(const ColumnTable& table, ProgressLine* pProgress, PointLines* pLines,
                  std::string* pText, PointReader* pReader) {
  for (size_t uBegin = 0; uBegin < pText->size();) {
    const size_t uLineEnd = pText->find('\n', std::min(uBegin + kSlice, pText->size()));
    const size_t uEnd = uLineEnd == std::string::npos ? pText->size() : uLineEnd + 1;
    pLines->Check(pText->data() + uBegin, pText->data() + uEnd);
    pReader->ReadText(std::string_view(pText->data() + uBegin, uEnd - uBegin), table);
    uBegin = uEnd;
    pProgress->Update(static_cast<double>(uEnd) / static_cast<double>(pText->size()));
  }
}

[[noreturn]] void FailReading(const std::string& strPath) {
  throw CommandError(kBadInput,
                     NameInMessages(strPath) + ": cannot be read (" + std::strerror(errno) + ")");
}

void ReadAll(int fd, const std::string& strPath, std::string* pText) {
  struct stat status = {};
  if (fstat(fd, &status) != 0) FailReading(strPath);
  size_t uFilled = 0;
  // One byte more than the file has, so that its end is seen without growing.
  pText->resize(S_ISREG(status.st_mode) ? static_cast<size_t>(status.st_size) + 1 : 1 << 16);
  for (;;) {
    const ssize_t n = read(fd, pText->data() + uFilled, pText->size() - uFilled);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) FailReading(strPath);
    if (n == 0) break;
    uFilled += static_cast<size_t>(n);
    if (uFilled == pText->size()) pText->resize(2 * pText->size());
  }
  pText->resize(uFilled);
}

void WarnOfDoubleIds(const std::string& strName, const ZuPointList& points,
                     const Context& context) {
  std::unordered_set<unsigned> seen;
  for (const ZuPoint* pPoint = points.First(); pPoint != nullptr; pPoint = pPoint->Next()) {
    if (seen.insert(pPoint->GetId()).second) continue;
    context.Warn(strName + ": point " + PointLabel(*pPoint) + " stands more than once");
    return;
  }
}

}  // namespace

void AddColumnsOption(Options& options, std::string* pColumns) {
  options.Option("--columns", "NAMES", pColumns,
                 "columns of the coordinate files, of: id name idname flag code codenum photo "
                 "camera x y z dx dy dz red1 red2 red3 color nimo vx vy vz skip");
}

std::string NameInMessages(const std::string& strPath) {
  return strPath == "-" ? "standard input" : strPath;
}

void ReadPoints(const std::string& strPath, const std::string& strColumns, Context& context,
                ZuPointList* pPoints) {
  if (!HasIdColumn(ParseColumns(strColumns))) {
    throw CommandError(kUsage, "--columns: \"" + strColumns +
                                   "\" has no column for the id; add id, or idname for names");
  }
  ReadPointsOrRows(strPath, strColumns, context, pPoints);
}

void ReadPointsOrRows(const std::string& strPath, const std::string& strColumns, Context& context,
                      ZuPointList* pPoints) {
  const std::vector<eZuPointRWMask> columns = ParseColumns(strColumns);
  const std::string strName = NameInMessages(strPath);
  std::string strText = ReadWholeFile(strPath);
  if (strText.compare(0, 3, "\xEF\xBB\xBF") == 0) strText.erase(0, 3);
  PointLines lines(strName, strColumns, columns);
  PointReader reader;
  {
    ProgressLine progress("reading " + strName, context.IsQuiet());
    ReadInSlices(TableOf(columns), &progress, &lines, &strText, &reader);
  }
  if (reader.Count() == 0) {
    const char* const szHint =
        "\nids are whole numbers other than 0; for names as ids give --columns idname,...";
    throw CommandError(kBadInput, strName + ": holds no point that the columns " + strColumns +
                                      " fit" + (HasIdColumn(columns) ? szHint : ""));
  }
  if (lines.SkippedLines() > 0) {
    context.Warn(strName + ":" + std::to_string(lines.FirstSkippedLine()) + ": no id; " +
                 std::to_string(lines.SkippedLines()) + " such lines passed over");
  }
  pPoints->SetMask(TableOf(columns));
  reader.MoveTo(pPoints);
  if (!reader.HasEntry(eZuPointRWPhoto)) WarnOfDoubleIds(strName, *pPoints, context);
}

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
  pPoints->Write(pOutput->Stream());
  if (pPoints->Count() > 0) pOutput->Stream() << '\n';
}

std::string PointLabel(const ZuPoint& point) {
  const std::string strName = point.GetName().chars();
  return strName.empty() ? std::to_string(point.GetId()) : strName;
}

std::string ReadWholeFile(const std::string& strPath) {
  std::string strText;
  if (strPath == "-") {
    ReadAll(STDIN_FILENO, strPath, &strText);
    return strText;
  }
  const int fd = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) FailReading(strPath);
  const auto closeDescriptor = [](const int* pDescriptor) { close(*pDescriptor); };
  const std::unique_ptr<const int, decltype(closeDescriptor)> pGuard(&fd, closeDescriptor);
  ReadAll(fd, strPath, &strText);
  return strText;
}

}  // namespace cli
