// PTS text: lines of x y z, with intensity and colour or without, told apart by their number of
// tokens. Lines and tokens are those of fgets with 1,000 bytes and of strtok at blank, tab,
// carriage return and line feed; numbers are those of atof and atoi. Nearly all lines are plain
// ones, which one pass takes apart; every other line goes the long way, with the same result.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "zu/cloud/internal/line_source.h"
#include "zu/cloud/internal/plain_scan.h"
#include "zu/cloud/internal/point_feed.h"
#include "zu/cloud/internal/pts_line.h"
#include "zu/cloud/internal/stdio_file.h"
#include "zu/cloud/internal/token_split.h"
#include "zu/cloud/point_cloud_container.h"
#include "zu/foundation/debug.h"
#include "zu/foundation/internal/without_memory.h"
#include "zu/foundation/locale.h"
#include "zu/foundation/profiler.h"

namespace {

using Source = ZuLineSource<ZuStdioInput>;

constexpr std::size_t kLine = 999;       // bytes of the longest line, its end included
constexpr std::size_t kMostTokens = 7;   // tokens that have a meaning
constexpr std::uint64_t kLeastLine = 6;  // bytes of the shortest line with a point: "1 1 1\n"

struct PointOnLine {
  double x, y, z;
  std::uint32_t uColor;
  void AddTo(ZuPointFeed& feed) const { feed.Add(x, y, z, uColor); }
};

// Takes the number at *pp, blanks in front of it; false unless a delimiter stands behind it.
[[gnu::always_inline]] inline bool TakeDouble(const char** pp, double* pdValue) {
  ZuPlainScan::Blanks(pp);
  return ZuPlainScan::Double(pp, pdValue) && ZuPtsDelimiter()(**pp);
}
[[gnu::always_inline]] inline bool TakeByte(const char** pp, std::uint32_t* puByte) {
  ZuPlainScan::Blanks(pp);
  return ZuPlainScan::Byte(pp, puByte) && ZuPtsDelimiter()(**pp);
}

// The line end at or behind the blanks at p; null when something else stands there.
[[gnu::always_inline]] inline const char* LineEndAt(const char* p) {
  if (*p == '\n') return p;
  ZuPlainScan::Blanks(&p);
  if (*p == '\r') ++p;
  return *p == '\n' ? p : nullptr;
}

// Reads a plain line of three, four, six or seven numbers; returns its line end, null for any other
// line.
const char* ReadPlainLine(const char* p, PointOnLine& point) {
  if (!TakeDouble(&p, &point.x) || !TakeDouble(&p, &point.y) || !TakeDouble(&p, &point.z)) {
    return nullptr;
  }
  if (const char* pEnd = LineEndAt(p)) {
    point.uColor = 0;
    return pEnd;
  }
  const char* pFourth = p;
  double dIntensity = 0.0;
  if (!TakeDouble(&p, &dIntensity)) return nullptr;
  if (const char* pEnd = LineEndAt(p)) {
    point.uColor = ZuPtsIntensityByte(dIntensity) << 24;
    return pEnd;
  }
  std::uint32_t uSecond, uThird, uFourth;
  if (!TakeByte(&p, &uSecond) || !TakeByte(&p, &uThird)) return nullptr;
  if (const char* pEnd = LineEndAt(p)) {
    std::uint32_t uFirst;
    if (!TakeByte(&pFourth, &uFirst)) return nullptr;
    point.uColor = uFirst | uSecond << 8 | uThird << 16;
    return pEnd;
  }
  if (!TakeByte(&p, &uFourth)) return nullptr;
  point.uColor = uSecond | uThird << 8 | uFourth << 16 | ZuPtsIntensityByte(dIntensity) << 24;
  return LineEndAt(p);
}

// Reads any line, [pBegin, pEnd) with its line end.
void ReadLine(const char* pBegin, const char* pEnd, std::uint64_t uRest, ZuPointFeed& feed) {
  // For strtok a text ends at its first NUL.
  const void* pNul = std::memchr(pBegin, '\0', static_cast<std::size_t>(pEnd - pBegin));
  if (pNul) pEnd = static_cast<const char*>(pNul);
  ZuTextToken t[kMostTokens];
  const std::size_t uCount = ZuSplitTokens(pBegin, pEnd, ZuPtsDelimiter(), t, kMostTokens);
  if (uCount == 1) {
    feed.Expect(static_cast<std::uint64_t>(std::max(0, t[0].AsInt())), uRest / kLeastLine + 1);
  }
  if (uCount < 3) return;
  PointOnLine point = {t[0].AsDouble(), t[1].AsDouble(), t[2].AsDouble(), 0};
  if (uCount == 4 || uCount == 7) point.uColor = ZuPtsIntensityByte(t[3].AsDouble()) << 24;
  if (uCount == 6 || uCount == 7) {
    const ZuTextToken* pColor = t + uCount - 3;
    point.uColor |= pColor[0].AsByte() | pColor[1].AsByte() << 8 | pColor[2].AsByte() << 16;
  }
  point.AddTo(feed);
}

void ReadPoints(Source& source, ZuPointFeed& feed, ZuProgress& progress) {
  PointOnLine point;
  for (;;) {
    const auto uInHand = static_cast<std::size_t>(source.End() - source.Begin());
    if (uInHand < kLine && !source.IsComplete() && !source.Refill(progress)) return;
    const char* const pBegin = source.Begin();
    if (pBegin == source.End()) return;
    const char* const pPlain = ReadPlainLine(pBegin, point);
    if (pPlain && static_cast<std::size_t>(pPlain - pBegin) < kLine) {
      point.AddTo(feed);
      source.SetBegin(pPlain + 1);
      continue;
    }
    const char* const pEnd = ZuFgetsEnd(pBegin, source.End());
    ReadLine(pBegin, pEnd, source.GetRest(), feed);
    source.SetBegin(pEnd);
  }
}

}  // namespace

ZuPointCloud* ZuPointCloudContainer::ReadPtsFile(std::FILE* fp) {
  if (!fp) return nullptr;
  ZuProfiler profiler("ReadPTS fp");
  ZuProgress progress("Reading PTS file");
  ZuPointCloud* pCloud = nullptr;
  try {
    const ZuCLocale locale;
    pCloud = AddCloud();
    ZuPointFeed feed(*pCloud);
    Source source(ZuStdioInput{fp}, ZuStdioRest(fp));
    ReadPoints(source, feed, progress);
  } catch (...) {
    dbgprintf("Error reading PTS: points read before memory ended are kept");
  }
  m_bStopped = progress.IsStopped();
  UpdateCenterAndBox(pCloud);
  return pCloud;
}

ZuPointCloud* ZuPointCloudContainer::ReadPtsFile(const char* szPath) {
  const auto read = [&] { return ReadPtsFile(ZuStdioFile(szPath, "rb").Get()); };
  return zu::internal::OrWithoutMemory<ZuPointCloud*>(read, nullptr);
}

ZuPointCloud* ZuPointCloudContainer::ReadPtsFile(const wchar_t* szPath) {
  ZuPointCloud* pCloud = nullptr;
  const auto read = [&] {
    pCloud = ReadPtsFile(ZuStdioFile(szPath, "rb").Get());
    if (pCloud) pCloud->SetName(ZuCloudName(szPath));
    return pCloud;
  };
  zu::internal::OrWithoutMemory(read, pCloud);
  return pCloud;  // also without the name
}
