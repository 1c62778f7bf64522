// The measurement log: an append-only text file of what was measured in photos, when and by whom.
//
//   ZuMeasurementLog log;
//   if (!log.Open("house.zulog")) ...
//   log.Append({{ZuLogTimeNow(), 3, 17, 1204.25, 873.5, "A. Meyer"}});
//
//   const ZuLogReading reading = ZuReadMeasurementLog("house.zulog", filter);
//   ZuReplayLog(reading.m_Measurements, eZuReplayLast, &project);
//
// A measurement is one line (log_line.h) with a check sum: what is cut or damaged loses itself and
// nothing else. Several writers may append to one file at once.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "zu/export.h"
#include "zu/foundation/read_findings.h"
#include "zu/project/log_line.h"

class ZuProject;

// The writing end. One thread at a time; other processes may have the file open, too.
class ZU_API ZuMeasurementLog {
 public:
  ZuMeasurementLog() = default;
  ~ZuMeasurementLog() { Close(); }
  ZuMeasurementLog(const ZuMeasurementLog&) = delete;
  ZuMeasurementLog& operator=(const ZuMeasurementLog&) = delete;

  // Opens the file behind its end, or creates it. False where that cannot be done, errno tells why.
  bool Open(const char* szPath);
  // Also by the destructor.
  void Close();
  bool IsOpen() const { return m_iFile >= 0; }

  // Adds the measurements in their order, as lines that stand together: one call of the system
  // appends them, so that lines of several writers on a local file system do not mix. A line that a
  // crash has cut at the end of the file is ended first. When it returns the system has the lines;
  // with bSync the disk has them, too, which costs some milliseconds. False where one is not
  // loggable (ZuIsLoggable), the file is not open, both with nothing written, or the system refuses
  // (errno tells why; what was written of the last line counts as cut).
  bool Append(const std::vector<ZuLoggedMeasurement>& measurements, bool bSync = true);

 private:
  int m_iFile = -1;
};

// What of a log is wanted: all that is not limited.
struct ZU_API ZuLogFilter {
  std::optional<std::int64_t> m_from, m_to;  // [from, to)
  std::set<unsigned> m_photos, m_points;     // empty: all
  std::optional<std::string> m_who;

  bool Takes(const ZuLoggedMeasurement& measurement) const;
};

struct ZuLogReading {
  std::vector<ZuLoggedMeasurement> m_Measurements;  // in the order of the file
  // A line that is no measurement is a warning with its number, a last one without end a cut.
  // Empty lines and those that begin with # are passed over.
  ZuReadFindings m_Findings;
};

// Reads what the filter takes. Linear time, and the memory of what is taken. Throws nothing:
// without memory the measurements read until then stay, with a fault.
ZU_API ZuLogReading ZuReadMeasurementLog(const char* szPath, const ZuLogFilter& filter = {});

enum eZuReplay : int {
  eZuReplayLast,  // of each point in a photo the latest, in place of what the project has
  eZuReplayAll    // every measurement, behind those of the project
};

struct ZuReplayResult {
  int m_iAdded = 0;     // measurements of points that the photo did not have
  int m_iReplaced = 0;  // in place of the project's, its standard deviations dropped
  int m_iLater = 0;     // not taken because a later one was
  std::map<unsigned, int> m_unknownPhotos;  // measurements of photos that the project lacks: left
};

// Applies measurements to a project, by their times; of equal times the later one in the list
// counts as later. All measurements of a point that the photo has more than once are replaced by
// the one. Takes n log n time.
ZU_API ZuReplayResult ZuReplayLog(const std::vector<ZuLoggedMeasurement>& measurements,
                                  eZuReplay eMode, ZuProject* pProject);
