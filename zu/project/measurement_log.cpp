#include "zu/project/measurement_log.h"

#include <new>

#include "zu/foundation/number_text.h"
#include "zu/points/internal/line_reader.h"
#include "zu/project/internal/append_file.h"

bool ZuMeasurementLog::Open(const char* szPath) {
  Close();
  m_iFile = zu::internal::OpenForAppending(szPath);
  return IsOpen();
}

void ZuMeasurementLog::Close() {
  if (m_iFile >= 0) zu::internal::CloseAppended(m_iFile);
  m_iFile = -1;
}

bool ZuMeasurementLog::Append(const std::vector<ZuLoggedMeasurement>& measurements, bool bSync) {
  if (!IsOpen()) return false;
  std::string strLines;
  for (const ZuLoggedMeasurement& m : measurements) {
    if (!ZuIsLoggable(m)) return false;
    strLines += ZuLogLine(m) + '\n';
  }
  if (strLines.empty()) return true;
  if (!zu::internal::EndsWithLineEnd(m_iFile)) strLines.insert(0, 1, '\n');
  return zu::internal::AppendBytes(m_iFile, strLines) &&
         (!bSync || zu::internal::SyncAppended(m_iFile));
}

bool ZuLogFilter::Takes(const ZuLoggedMeasurement& m) const {
  return (!m_from || m.m_iTime >= *m_from) && (!m_to || m.m_iTime < *m_to) &&
         (m_photos.empty() || m_photos.count(m.m_uPhoto) > 0) &&
         (m_points.empty() || m_points.count(m.m_uPoint) > 0) && (!m_who || m.m_strWho == *m_who);
}

namespace {

constexpr char kLogRight[] = "2026-11-22T16:28:30Z 3 17 1204.25 873.5 name and its check sum";

void ReadLogLines(ZuLineReader& lines, const ZuLogFilter& filter, ZuLogReading* pReading) {
  ZuReadFindings& findings = pReading->m_Findings;
  std::string_view line;
  ZuLoggedMeasurement m;
  m.m_uLine = 1;
  for (; lines.Next(&line); ++m.m_uLine) {
    if (lines.HasMorePieces()) {
      --m.m_uLine;
      continue;
    }
    if (lines.HasEnd()) findings.m_Dialect.AddLineEnd(lines.HasCarriageReturn());
    if (!lines.IsPiece() && (line.empty() || line.front() == '#')) continue;
    // A check sum that is right tells that a line is all there, with its end or without.
    if (!lines.IsPiece() && ZuParseLogLine(line, &m)) {
      if (filter.Takes(m)) pReading->m_Measurements.push_back(m);
    } else if (!lines.HasEnd()) {
      findings.Add(eZuReadCut, m.m_uLine, 0, "the last line is cut; its measurement is lost",
                   kLogRight);
    } else {
      findings.AddDroppedLine(m.m_uLine, 0, ZuQuoted(line) + " is no measurement, or damaged",
                              kLogRight);
    }
  }
  findings.m_Dialect.m_bByteOrderMark = lines.HasByteOrderMark();
  findings.EndDroppedLines();
}

}  // namespace

ZuLogReading ZuReadMeasurementLog(const char* szPath, const ZuLogFilter& filter) {
  ZuLogReading reading;
  try {
    reading.m_Findings.m_Dialect.m_strForm = "measurement log";
    const ZuOpenFile pFile = ZuOpenText(szPath);
    if (!pFile) {
      reading.m_Findings.Add(eZuReadFault, 0, 0, "cannot be opened");
      return reading;
    }
    ZuLineReader lines(pFile.get());
    ReadLogLines(lines, filter, &reading);
    if (std::ferror(pFile.get()) != 0) {
      reading.m_Findings.Add(eZuReadCut, 0, 0, "not all bytes could be read");
    }
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
