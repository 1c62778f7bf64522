#include "zu/points/read_coordinates.h"

#include <filesystem>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>

#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/progress.h"
#include "zu/points/internal/coordinate_rows.h"
#include "zu/points/internal/line_reader.h"
#include "zu/points/internal/read_rows.h"

namespace {

using Table = TZuFormatTable<eZuPointRWMask>;

// Bytes of a file; 0 where nobody knows.
std::int64_t SizeOf(const char* szPath) {
  std::error_code error;
  const auto uSize = std::filesystem::file_size(szPath, error);
  return error ? 0 : static_cast<std::int64_t>(uSize);
}

class Reading {
 public:
  Reading(const Table& columns, const ZuPointTaker& take, eZuReadMode eMode,
          ZuCoordinateReading& reading)
      : m_columns(columns),
        m_take(take),
        m_reading(reading),
        m_rows(columns, reading.m_Findings, eMode),
        m_bIds(columns.HasEntry(eZuPointRWId) || columns.HasEntry(eZuPointRWIdName)) {}

  void Run(std::FILE* pFile, std::int64_t nSize);

 private:
  ZuCoordinateRows::eRow TakeLine(ZuLineReader& lines, std::string_view line);
  void AddPoint();

  const Table& m_columns;
  const ZuPointTaker& m_take;
  std::unique_ptr<ZuPoint> m_pPoint;  // the last one, where it was left
  ZuCoordinateReading& m_reading;
  ZuCoordinateRows m_rows;
  bool m_bIds;
  std::uint64_t m_uLine = 0;
  std::uint64_t m_uPieces = 0;  // bytes of the pieces of a line that is too long
};

ZuCoordinateRows::eRow Reading::TakeLine(ZuLineReader& lines, std::string_view line) {
  if (!lines.IsPiece()) return m_rows.Take(line, ++m_uLine, lines.HasEnd());
  m_uPieces += line.size();
  if (lines.HasMorePieces()) return ZuCoordinateRows::eRowNone;
  const std::uint64_t uBytes = m_uPieces;
  m_uPieces = 0;
  return m_rows.TakeTooLong(uBytes, ++m_uLine, lines.HasEnd());
}

void Reading::AddPoint() {
  if (!m_pPoint) m_pPoint = std::make_unique<ZuPoint>();
  m_pPoint->Read(m_rows.GetText().c_str(), m_columns);
  m_reading.m_aLines.push_back(m_uLine);
  if (!m_bIds) m_pPoint->SetId(static_cast<unsigned int>(m_reading.m_aLines.size()));
  m_take(m_pPoint);
}

void Reading::Run(std::FILE* pFile, std::int64_t nSize) {
  ZuProgress progress("Reading coordinate file");
  ZuReadDialect& dialect = m_reading.m_Findings.m_Dialect;
  ZuLineReader lines(pFile);
  std::string_view line;
  std::int64_t nDone = 0;
  while (lines.Next(&line)) {
    if (lines.HasEnd()) dialect.AddLineEnd(lines.HasCarriageReturn());
    const auto eRow = TakeLine(lines, line);
    if (eRow == ZuCoordinateRows::eRowEnd) break;
    if (eRow == ZuCoordinateRows::eRowPoint) AddPoint();
    nDone += static_cast<std::int64_t>(line.size()) + 1;
    if (progress.SetPosition(nDone, nSize > 0 ? nSize : 2 * nDone)) continue;
    m_reading.m_Findings.Add(eZuReadCut, m_uLine, 0, "reading was stopped here");
    break;
  }
  dialect.m_bByteOrderMark = lines.HasByteOrderMark();
  if (std::ferror(pFile) != 0) {
    m_reading.m_Findings.Add(eZuReadCut, 0, 0, "not all bytes could be read");
  }
  m_rows.Finish();
}

}  // namespace

void ZuReadCoordinateRows(std::FILE* pFile, std::int64_t nSize, const Table& columns,
                          const ZuPointTaker& take, eZuReadMode eMode,
                          ZuCoordinateReading& reading) {
  Reading(columns, take, eMode, reading).Run(pFile, nSize);
}

ZuPointTaker ZuTakeInto(ZuPointList& points) {
  return [&points](std::unique_ptr<ZuPoint>& pPoint) { points.Add(pPoint.release()); };
}

ZuCoordinateReading ZuReadCoordinates(const char* szPath, const Table& columns, ZuPointList& points,
                                      eZuReadMode eMode) {
  ZuCoordinateReading reading;
  try {
    points.SetMask(columns);
    const ZuOpenFile pFile = ZuOpenText(szPath);
    if (pFile) {
      Reading(columns, ZuTakeInto(points), eMode, reading).Run(pFile.get(), SizeOf(szPath));
    } else {
      reading.m_Findings.Add(eZuReadFault, 0, 0, "cannot be opened");
    }
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
