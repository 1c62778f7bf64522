// PTS text, line by line, held to its format.
#include <array>
#include <cmath>
#include <utility>

#include "zu/cloud/internal/line_source.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/raw_values.h"
#include "zu/cloud/internal/read_cloud_file.h"
#include "zu/cloud/internal/strict_number.h"
#include "zu/cloud/internal/text_line.h"
#include "zu/cloud/pts_file.h"
#include "zu/foundation/progress.h"

namespace {

using Source = ZuLineSource<ZuStdioInput>;

constexpr std::size_t kLongestLine = 64 * 1024;  // bytes
constexpr std::size_t kMostTokens = 7;           // tokens that have a meaning
constexpr std::uint64_t kLeastLine = 6;          // bytes of the shortest point: "1 1 1\n"

// The columns of a line with so many numbers.
const char* ColumnsOf(std::size_t uNumbers) {
  switch (uNumbers) {
    case 4:
      return "x y z intensity";
    case 6:
      return "x y z red green blue";
    case 7:
      return "x y z intensity red green blue";
    default:
      return "x y z";
  }
}

class PtsReader {
 public:
  PtsReader(ZuPointFeed& feed, ZuCloudReading& reading, eZuReadMode eMode)
      : m_feed(feed),
        m_findings(reading.m_Findings),
        m_eIntensity(reading.m_eIntensity),
        m_line(reading.m_Findings, eMode) {
    m_findings.m_Dialect.m_strForm = "XYZ";
  }

  void Run(Source& source, ZuProgress& progress);

  // Gives the points what only the whole file tells, and reports what was counted.
  void Finish();

 private:
  // Those below are false where the reading ends.
  bool TakeLine(std::uint64_t uRest);
  bool TakeCount(const ZuTextToken& token, std::uint64_t uRest);
  bool TakePoint(const ZuTextToken* pTokens, std::size_t uCount);
  bool Wrong(const char* pAt, ZuTextFault fault);

  void TakeColor(const ZuTextToken* pTokens, const double* pColor, ZuScanPoint3d& p);
  void EndBlock(bool bEndOfFile);

  ZuPointFeed& m_feed;
  ZuReadFindings& m_findings;
  eZuIntensityScale& m_eIntensity;
  ZuRawIntensities m_intensities;
  ZuTextLine m_line;  // the line in hand

  std::uint64_t m_uCountLine = 0;  // where the block's count stands; 0: it has none
  std::uint64_t m_uAnnounced = 0;  // that count
  std::uint64_t m_uRows = 0;       // of the block, also those that are no points
  std::size_t m_uColumns = 0;      // of the block; 0 before its first point
  ZuTally m_comments, m_dropped, m_limitedColors, m_notFinite;
};

// A line that is no point is a row of its block all the same.
bool PtsReader::Wrong(const char* pAt, ZuTextFault fault) {
  ++m_uRows;
  return m_line.Wrong(pAt, std::move(fault));
}

void PtsReader::EndBlock(bool bEndOfFile) {
  if (m_uCountLine == 0 || m_uRows == m_uAnnounced || m_line.IsFault()) return;
  const bool bFewer = m_uRows < m_uAnnounced;
  m_findings.Add(bFewer ? eZuReadCut : eZuReadAssumed, m_uCountLine, 0,
                 std::to_string(m_uAnnounced) + " points are announced, " +
                     std::to_string(m_uRows) +
                     (bFewer        ? bEndOfFile ? " are there" : " stand before the next count"
                      : m_uRows > 0 ? " are there; all are taken"
                                    : " are there"));
}

bool PtsReader::TakeCount(const ZuTextToken& token, std::uint64_t uRest) {
  double dCount = 0.0;
  if (!ZuStrictNumber(token, &dCount)) return Wrong(token.pBegin, ZuWhyNoNumber(token));
  // Up to 2^53 a double counts.
  if (!(dCount >= 0.0 && dCount <= 9007199254740992.0) || dCount != std::floor(dCount)) {
    return Wrong(token.pBegin,
                 {"a number stands alone", "a number of points such as 1000, or x y z"});
  }
  EndBlock(false);
  if (m_uCountLine == 0) m_findings.m_Dialect.m_strHeader = token.View();
  m_findings.m_Dialect.m_strForm = "PTS";
  m_uCountLine = m_line.GetNumber();
  m_uAnnounced = static_cast<std::uint64_t>(dCount);
  m_uRows = 0;
  m_uColumns = 0;
  m_feed.Expect(m_uAnnounced, uRest / kLeastLine + 1);
  return true;
}

void PtsReader::TakeColor(const ZuTextToken* pTokens, const double* pColor, ZuScanPoint3d& p) {
  std::uint32_t uColor = 0;
  std::uint64_t uLimited = 0;
  for (int i = 0; i < 3; ++i) {
    const std::uint64_t uBefore = uLimited;
    uColor |= ZuRawColors::Byte(pColor[i], &uLimited) << (8 * i);
    if (uLimited == 1 && uBefore == 0) {
      m_limitedColors.Add(m_line.GetNumber(), m_line.ColumnOf(pTokens[i].pBegin));
    }
  }
  p.SetColor(uColor);
}

bool PtsReader::TakePoint(const ZuTextToken* pTokens, std::size_t uCount) {
  std::array<double, kMostTokens> v = {};
  const std::size_t uMeant = uCount == 5 || uCount > kMostTokens ? 3 : uCount;
  for (std::size_t i = 0; i < uMeant; ++i) {
    if (!m_line.TakeNumber(pTokens[i], &v[i])) {
      return Wrong(pTokens[i].pBegin, m_line.WhyNot(pTokens[i]));
    }
  }
  if (uCount < 3) return Wrong(nullptr, {"2 numbers", "x y z"});
  if (m_uColumns != 0 && uCount != m_uColumns) {
    return Wrong(nullptr, {std::to_string(uCount) + " numbers, the lines before have " +
                               std::to_string(m_uColumns),
                           ColumnsOf(m_uColumns)});
  }
  if (m_uColumns == 0) {
    m_findings.m_Dialect.m_strColumns = ColumnsOf(uCount);
    m_findings.m_Dialect.SetDelimiter(m_line.GetText());
  }
  m_uColumns = uCount;
  ZuScanPoint3d p(v[0], v[1], v[2], 0);
  if (uMeant != uCount) m_dropped.Add(m_line.GetNumber(), m_line.ColumnOf(pTokens[3].pBegin));
  if (uMeant == 4 || uMeant == 7) {
    m_intensities.Put(p, v[3], m_line.GetNumber(), m_line.ColumnOf(pTokens[3].pBegin));
  }
  if (uMeant >= 6) TakeColor(pTokens + uMeant - 3, &v[uMeant - 3], p);
  if (!std::isfinite(p.x + p.y + p.z)) m_notFinite.Add(m_line.GetNumber());
  m_feed.Add(p);
  ++m_uRows;
  return true;
}

bool PtsReader::TakeLine(std::uint64_t uRest) {
  ZuTextToken t[kMostTokens];
  const std::size_t uCount =
      ZuSplitTokens(m_line.Begin(), m_line.End(), ZuPtsDelimiter(), t, kMostTokens);
  if (uCount == 0) return true;
  if (*t[0].pBegin == '#') {
    m_comments.Add(m_line.GetNumber());
    return true;
  }
  return uCount == 1 ? TakeCount(t[0], uRest) : TakePoint(t, uCount);
}

void PtsReader::Run(Source& source, ZuProgress& progress) {
  while (const char* pEnd = ZuNextLine(source, progress, kLongestLine)) {
    m_line.Set(source.Begin(), pEnd, pEnd != source.End());
    if (!TakeLine(source.GetRest())) break;
    source.SetBegin(pEnd + 1);
  }
  if (!m_line.IsFault() && !source.IsComplete()) {
    if (progress.IsStopped()) {
      m_findings.Add(eZuReadCut, m_line.GetNumber(), 0, "reading was stopped here");
    } else {
      m_line.FaultBehind("no line end within 65536 bytes; this is no PTS file");
    }
  }
  EndBlock(true);
}

void PtsReader::Finish() {
  m_eIntensity = m_intensities.Scale();
  const ZuTally limited = m_intensities.Settle(m_feed.GetAdded(), m_eIntensity);
  if (m_eIntensity == eZuIntensity65535 && m_intensities.IsUnit()) {
    m_findings.Add(eZuReadAssumed, 0, 0, "intensities of 0 to 1 are taken as 0 to 65535");
  }
  m_findings.m_uClampedValues = limited.uCount + m_limitedColors.uCount;
  limited.Tell(eZuReadClamped, "intensities limited to their scale", m_findings);
  m_limitedColors.Tell(eZuReadClamped, "colours limited to 0 to 255", m_findings);
  m_dropped.Tell(eZuReadDropped,
                 "lines with 5 or more than 7 numbers, of which those behind x y z are left out",
                 m_findings);
  m_comments.Tell(eZuReadNote, "comment lines passed over", m_findings);
  m_notFinite.Tell(eZuReadAssumed, "points with coordinates that are not finite", m_findings);
  m_line.Finish();
}

// Reads an open file into a new cloud.
class Reading {
 public:
  Reading(ZuPointCloudContainer& clouds, eZuReadMode eMode) : m_clouds(clouds), m_eMode(eMode) {}

  void operator()(std::FILE* fp, ZuCloudReading& reading) const {
    ZuProgress progress("Reading PTS file");
    reading.m_pCloud = m_clouds.AddCloud();
    ZuPointFeed feed(*reading.m_pCloud);
    PtsReader reader(feed, reading, m_eMode);
    ZuRunAndFinish(reader, [&] {
      Source source(ZuStdioInput{fp}, ZuStdioRest(fp));
      reader.Run(source, progress);
    });
  }

 private:
  ZuPointCloudContainer& m_clouds;
  eZuReadMode m_eMode;
};

}  // namespace

ZuCloudReading ZuReadPts(std::FILE* fp, ZuPointCloudContainer& clouds, eZuReadMode eMode) {
  return ZuReadCloudStream(fp, clouds, Reading(clouds, eMode));
}

ZuCloudReading ZuReadPts(const char* szPath, ZuPointCloudContainer& clouds, eZuReadMode eMode) {
  return ZuReadCloudFile(szPath, clouds, Reading(clouds, eMode));
}
