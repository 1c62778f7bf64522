// PTS text, line by line, held to its format.
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "zu/cloud/internal/line_source.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/raw_values.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/internal/strict_number.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/cloud/pts_file.h"
#include "zu/foundation/progress.h"

namespace {

using Source = ZuLineSource<ZuStdioInput>;

constexpr std::size_t kLongestLine = 64 * 1024;  // bytes
constexpr std::size_t kMostTokens = 7;           // tokens that have a meaning
constexpr std::uint64_t kLeastLine = 6;          // bytes of the shortest point: "1 1 1\n"

// How often something was met, and where first.
struct Tally {
  std::uint64_t uCount = 0;
  std::uint64_t uLine = 0;
  void Add(std::uint64_t uAtLine) {
    if (uCount++ == 0) uLine = uAtLine;
  }
};

class PtsReader {
 public:
  PtsReader(ZuPointFeed& feed, ZuCloudReading& reading)
      : m_feed(feed), m_findings(reading.m_Findings), m_eIntensity(reading.m_eIntensity) {}

  void Run(Source& source, ZuProgress& progress);

  // Gives the points what only the whole file tells, and reports what was counted.
  void Finish();

 private:
  bool TakeLine(const char* pBegin, const char* pEnd, std::uint64_t uRest);
  bool TakeCount(const ZuTextToken& token, std::uint64_t uRest);
  bool TakePoint(const ZuTextToken* pTokens, std::size_t uCount);
  void EndBlock(bool bEndOfFile);
  // Always false, as the end of reading is.
  bool Fault(const char* pAt, std::string strText);
  void Report(eZuCloudFinding eKind, const Tally& tally, const char* szWhat) {
    if (tally.uCount == 0) return;
    m_findings.Add(eKind, tally.uLine, 0, std::to_string(tally.uCount) + szWhat);
  }

  ZuPointFeed& m_feed;
  ZuCloudFindings& m_findings;
  eZuIntensityScale& m_eIntensity;
  ZuRawIntensities m_intensities;

  const char* m_pLine = nullptr;   // the line in hand
  std::uint64_t m_uLine = 0;       // its number
  bool m_bLineEnds = true;         // it has a line end
  std::uint64_t m_uCountLine = 0;  // where the block's count stands; 0: it has none
  std::uint64_t m_uAnnounced = 0;  // that count
  std::uint64_t m_uPoints = 0;     // of the block
  std::size_t m_uColumns = 0;      // of the block; 0 before its first point
  bool m_bFault = false;
  Tally m_comments, m_dropped, m_limitedColors, m_notFinite;
};

bool PtsReader::Fault(const char* pAt, std::string strText) {
  // A file that was cut ends within a line.
  const eZuCloudFinding eKind = m_bLineEnds ? eZuCloudFault : eZuCloudCut;
  if (!m_bLineEnds) strText = "the file ends within a line: " + strText;
  const std::uint64_t uColumn = pAt ? static_cast<std::uint64_t>(pAt - m_pLine) + 1 : 0;
  m_findings.Add(eKind, m_uLine, uColumn, std::move(strText));
  m_bFault = m_bLineEnds;
  return false;
}

void PtsReader::EndBlock(bool bEndOfFile) {
  if (m_uCountLine == 0 || m_uPoints == m_uAnnounced || m_bFault) return;
  const bool bFewer = m_uPoints < m_uAnnounced;
  m_findings.Add(bFewer ? eZuCloudCut : eZuCloudAssumed, m_uCountLine, 0,
                 std::to_string(m_uAnnounced) + " points are announced, " +
                     std::to_string(m_uPoints) +
                     (bFewer          ? bEndOfFile ? " are there" : " stand before the next count"
                      : m_uPoints > 0 ? " are there; all are taken"
                                      : " are there"));
}

bool PtsReader::TakeCount(const ZuTextToken& token, std::uint64_t uRest) {
  double dCount = 0.0;
  if (!ZuStrictNumber(token, &dCount)) return Fault(token.pBegin, ZuWhyNoNumber(token));
  // Up to 2^53 a double counts.
  if (!(dCount >= 0.0 && dCount <= 9007199254740992.0) || dCount != std::floor(dCount)) {
    return Fault(token.pBegin, "a number of points such as 1000, or x y z would be right");
  }
  EndBlock(false);
  m_uCountLine = m_uLine;
  m_uAnnounced = static_cast<std::uint64_t>(dCount);
  m_uPoints = 0;
  m_uColumns = 0;
  m_feed.Expect(m_uAnnounced, uRest / kLeastLine + 1);
  return true;
}

bool PtsReader::TakePoint(const ZuTextToken* pTokens, std::size_t uCount) {
  std::array<double, kMostTokens> v = {};
  const std::size_t uMeant = uCount == 5 || uCount > kMostTokens ? 3 : uCount;
  for (std::size_t i = 0; i < uMeant; ++i) {
    if (!ZuStrictNumber(pTokens[i], &v[i])) {
      return Fault(pTokens[i].pBegin, ZuWhyNoNumber(pTokens[i]));
    }
  }
  if (uCount < 3) return Fault(nullptr, "2 numbers; x y z would be right");
  if (m_uColumns != 0 && uCount != m_uColumns) {
    return Fault(nullptr, std::to_string(uCount) + " numbers, the lines before have " +
                              std::to_string(m_uColumns));
  }
  m_uColumns = uCount;
  ZuScanPoint3d p(v[0], v[1], v[2], 0);
  if (uMeant != uCount) m_dropped.Add(m_uLine);
  if (uMeant == 4 || uMeant == 7) m_intensities.Put(p, v[3]);
  if (uMeant >= 6) {
    std::uint64_t uLimited = 0;
    const double* const pColor = &v[uMeant - 3];
    p.SetColor(ZuRawColors::Byte(pColor[0], &uLimited) |
               ZuRawColors::Byte(pColor[1], &uLimited) << 8 |
               ZuRawColors::Byte(pColor[2], &uLimited) << 16);
    if (uLimited > 0) m_limitedColors.Add(m_uLine);
  }
  if (!std::isfinite(p.x + p.y + p.z)) m_notFinite.Add(m_uLine);
  m_feed.Add(p);
  ++m_uPoints;
  return true;
}

bool PtsReader::TakeLine(const char* pBegin, const char* pEnd, std::uint64_t uRest) {
  if (m_uLine == 1 && pEnd - pBegin >= 3 && std::memcmp(pBegin, "\xEF\xBB\xBF", 3) == 0) {
    pBegin += 3;
  }
  ZuTextToken t[kMostTokens];
  const std::size_t uCount = ZuSplitTokens(pBegin, pEnd, ZuPtsDelimiter(), t, kMostTokens);
  if (uCount == 0) return true;
  if (*t[0].pBegin == '#') {
    m_comments.Add(m_uLine);
    return true;
  }
  return uCount == 1 ? TakeCount(t[0], uRest) : TakePoint(t, uCount);
}

void PtsReader::Run(Source& source, ZuProgress& progress) {
  while (const char* pEnd = ZuNextLine(source, progress, kLongestLine)) {
    m_pLine = source.Begin();
    ++m_uLine;
    m_bLineEnds = pEnd != source.End();
    if (!TakeLine(m_pLine, pEnd, source.GetRest())) break;
    source.SetBegin(pEnd + 1);
  }
  if (!m_bFault && !source.IsComplete()) {
    if (progress.IsStopped()) {
      m_findings.Add(eZuCloudCut, m_uLine, 0, "reading was stopped here");
    } else {
      ++m_uLine;
      Fault(nullptr, "no line end within 65536 bytes; this is no PTS file");
    }
  }
  EndBlock(true);
}

void PtsReader::Finish() {
  m_eIntensity = m_intensities.Scale();
  Tally limited;
  limited.uCount = m_intensities.Settle(m_feed.GetAdded(), m_eIntensity);
  if (m_eIntensity == eZuIntensity65535 && m_intensities.IsUnit()) {
    m_findings.Add(eZuCloudAssumed, 0, 0, "intensities of 0 to 1 are taken as 0 to 65535");
  }
  Report(eZuCloudClamped, limited, " intensities are limited to their scale");
  Report(eZuCloudClamped, m_limitedColors, " colours are limited to 0 to 255");
  Report(eZuCloudDropped, m_dropped,
         " lines have 5 or more than 7 numbers: those behind x y z are left out");
  Report(eZuCloudDropped, m_comments, " comment lines are passed over");
  Report(eZuCloudAssumed, m_notFinite, " points have coordinates that are not finite");
}

void Read(std::FILE* fp, ZuPointCloudContainer& clouds, ZuCloudReading& reading) {
  ZuProgress progress("Reading PTS file");
  reading.m_pCloud = clouds.AddCloud();
  {
    ZuPointFeed feed(*reading.m_pCloud);
    PtsReader reader(feed, reading);
    try {
      Source source(ZuStdioInput{fp}, ZuStdioRest(fp));
      reader.Run(source, progress);
    } catch (const std::bad_alloc&) {
      reader.Finish();
      throw;
    }
    reader.Finish();
  }
  if (std::ferror(fp) != 0) {
    reading.m_Findings.Add(eZuCloudCut, 0, 0, "not all bytes could be read");
  }
}

}  // namespace

ZuCloudReading ZuReadPts(std::FILE* fp, ZuPointCloudContainer& clouds) {
  ZuCloudReading reading;
  if (!fp) return reading;
  try {
    Read(fp, clouds, reading);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  clouds.UpdateCenterAndBox(reading.m_pCloud);
  return reading;
}

ZuCloudReading ZuReadPts(const char* szPath, ZuPointCloudContainer& clouds) {
  ZuCloudReading reading;
  try {
    const ZuStdioFile file(szPath, "rb");
    if (!file.Get()) reading.m_Findings.Add(eZuCloudFault, 0, 0, "cannot be opened");
    if (file.Get()) reading = ZuReadPts(file.Get(), clouds);
  } catch (const std::bad_alloc&) {
    reading.m_Findings.AddMemoryEnded();
  }
  return reading;
}
